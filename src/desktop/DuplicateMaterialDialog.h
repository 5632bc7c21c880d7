// Asks under which name, and with which images, a material is copied.
#pragma once

#include <array>

#include <QDialog>

#include "pages/DupMatName.h"

class QComboBox;
class QLineEdit;
class TextureDlg;

class DuplicateMaterialDialog : public QDialog {
public:
    DuplicateMaterialDialog(TextureDlg& texture_page, DupMatName& asked, QWidget* parent);

protected:
    void accept() override; // stays open where the copy is refused

private:
    TextureDlg& page;
    DupMatName& question;
    QComboBox* directory;
    QLineEdit* name;
    std::array<QComboBox*, 4> texture_class{};
    std::array<QLineEdit*, 4> texture_name{};
};

// Copies the chosen material. False after Cancel.
bool RunDuplicateMaterial(QWidget* parent, TextureDlg& page);
