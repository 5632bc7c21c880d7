// The manual in a window of its own, with its links and pictures.
#pragma once

#include <QDialog>

class ManualWindow : public QDialog {
public:
    ManualWindow(const QString& page, QWidget* parent);
};

// Its first page where the program is installed, or among the sources of a program that was built there, as seen from
// the program's folder. Empty: nowhere.
QString ManualPage(const QString& program_folder);
// Stays open beside the work. Tells where the manual is missing.
void ShowManual(QWidget* parent);
