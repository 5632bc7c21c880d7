// Chooses a file of the data root, with the packed libraries laid over it.
#pragma once

#include <optional>
#include <string>

#include <QDialog>

#include "pages/MyFileDialog.h"

class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

class FileChooserDialog : public QDialog {
public:
    FileChooserDialog(MyFileDialog& chooser, QWidget* parent);

private:
    void FillFolders();
    void FillFiles();
    void TakeFile();

    MyFileDialog& dialog;
    QTreeWidget* folders;
    QTreeWidget* files;
    QLineEdit* filter;
    QPushButton* ok;
};

// The chosen path. Nothing after Cancel.
std::optional<std::string> RunFileChooser(QWidget* parent, const std::string& root, const std::string& default_dir,
                                          const std::string& pattern);
