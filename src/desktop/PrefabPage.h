// The prefab page of the library window: custom brushes with their pictures, and prefabs with their descriptions.
#pragma once

#include <QWidget>

#include "commands/MainFrame.h"
#include "desktop/ThumbnailList.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

class PrefabPage : public QWidget {
public:
    PrefabPage(CMainFrame& main_frame, QWidget* parent = nullptr);
    void Refresh();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void FillTree();
    void FillList();
    void ChooseInTree(const QTreeWidgetItem* item);
    void ShowChosen();
    void Save();

    PrefabDlg& page;
    ThumbnailModel model;
    ThumbnailView* list;
    std::vector<int> files; // of the list's rows: indices of the page's list
    QTreeWidget* tree;
    QLineEdit* filter;
    QLabel* description;
    QPushButton *save, *make_directory;
};
