// The part of the preferences that chooses the colours of the windows.
#pragma once

#include <QWidget>

class QComboBox;

class ThemeSection : public QWidget {
public:
    explicit ThemeSection(QWidget* parent = nullptr);

private:
    QComboBox* choice;
};
