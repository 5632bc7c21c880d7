// The texture page of the library window: the materials as a tree and pictures, and the mapping of what is selected.
#pragma once

#include <vector>

#include <QWidget>

#include "commands/MainFrame.h"
#include "desktop/LazyRefresh.h"
#include "desktop/ThumbnailList.h"

class NumberField;
class QCheckBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

class TexturePage : public QWidget, public EditorListener {
public:
    TexturePage(CMainFrame& main_frame, QWidget* parent = nullptr);
    ~TexturePage() override;
    void Refresh();

    void SurfaceSelectionChanged() override { news.Request(); }
    void MaterialPicked(const std::string&, const std::string&) override;
    void WorldReplaced() override;
    void ViewChanged(int view) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    enum class Shown { Classes, Used, All };

    QWidget* MakeLibrary();
    QWidget* MakeChosen();
    QWidget* MakeMapping();
    QPushButton* MakeButton(const QString& text, const QString& tip, std::function<void()> action);
    void FillTree();
    void ChooseInTree(const QTreeWidgetItem* item);
    void FillList();
    ThumbnailRow RowOf(const MaterialItem& item) const;
    void Choose(int row);
    void Apply();
    void ShowChosen();
    void ShowMapping();

    CInterface& editor;
    TextureDlg& page;
    LazyRefresh news;
    std::atomic<bool> list_is_old = false, was_picked = false;
    Shown shown = Shown::Classes;
    std::vector<std::string> classes; // chosen in the tree: one, or those of a group
    std::vector<MaterialItem> items;  // of the list's rows
    ThumbnailModel model;
    ThumbnailView* list;
    QTreeWidget* tree;
    QLineEdit* search;
    QLabel *chosen, *surface;
    QCheckBox *paint_on_click, *locked;
    QPushButton *mask, *flip_u, *flip_v, *paste;
    NumberField *shift_u, *shift_v, *scale_u, *scale_v, *rotation, *fit_u, *fit_v;
};
