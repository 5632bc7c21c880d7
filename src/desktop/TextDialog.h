// A text to read and to copy from, such as the level summary.
#pragma once

#include <string>

#include <QDialog>

class TextDialog : public QDialog {
public:
    TextDialog(const std::string& text, const std::string& title, QWidget* parent);
};

// Shows it until it is closed.
void RunTextDialog(QWidget* parent, const std::string& text, const std::string& title);
