// The small windows beside the main window. Each follows the level while it is open; Escape closes it. One with an
// object name opens where it was closed.
#pragma once

#include <QWidget>

#include "commands/MainFrame.h"
#include "desktop/LazyRefresh.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QListView;
class QStringListModel;
class QTreeWidget;
class QTreeWidgetItem;

class ToolWindow : public QWidget, public EditorListener {
public:
    ToolWindow(CMainFrame& main_frame, QWidget* parent);
    ~ToolWindow() override;

    void WorldReplaced() override { news.Request(); }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    virtual void Refresh() = 0;

    CMainFrame& frame;
    CInterface& editor;
    LazyRefresh news; // leads to Refresh while the window is shown

private:
    bool was_placed = false; // since it was made
};

// "Undo Buffer (%d + %d)": what can be undone, oldest first, a line, and what can be done again, next first. A double
// click on an entry goes to the level as it was just after that step.
class UndoWindow : public ToolWindow {
public:
    UndoWindow(CMainFrame& main_frame, QWidget* parent);
    void WalkTo(int row);

    void UndoListsChanged() override { news.Request(); }

protected:
    void Refresh() override;

private:
    QListWidget* list;
};

// The level's objects by name or type. A double click selects one.
class NamedObjectsWindow : public ToolWindow {
public:
    NamedObjectsWindow(CMainFrame& main_frame, QWidget* parent);

    void SelectionChanged() override { news.Request(); }
    void EntityTypesChanged() override { news.Request(); }
    void LibraryWindowChanged() override { news.Request(); }

protected:
    void Refresh() override;
    void closeEvent(QCloseEvent* event) override;

private:
    DlgNamedObjList& Objects();
    void ChooseRow(int row);

    QLineEdit* filter;
    QComboBox* sort;
    QCheckBox* ignore;
    QListView* list;
    QStringListModel* lines;
};

// Entity types, to hide and show. It opens where it was closed.
class ExtendedSelectWindow : public ToolWindow {
public:
    ExtendedSelectWindow(CMainFrame& main_frame, QWidget* parent);

    void SelectionChanged() override { news.Request(); }
    void EntityTypesChanged() override { news.Request(); }
    void LibraryWindowChanged() override;

protected:
    void Refresh() override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    DlgExtendedSelect& Types();
    void TakeMarks();

    QListWidget* list;
};

// What the last compile found wrong. A double click on an object selects it and brings it into the views.
class ProblemsWindow : public ToolWindow {
public:
    ProblemsWindow(CMainFrame& main_frame, QWidget* parent);
    // The one window of the parent, with the findings as they are now. It deletes itself.
    static void Open(CMainFrame& main_frame, QWidget* parent);
    // False for a line that stands for no object, or for one that has gone.
    bool Jump(const ProblemItem& item);

protected:
    void Refresh() override;

private:
    void AddItems(const std::vector<ProblemItem>& items, QTreeWidgetItem* parent);

    std::vector<ProblemItem> findings; // a copy: the next compile empties its list
    std::vector<const ProblemItem*> items;
    QTreeWidget* tree;
};
