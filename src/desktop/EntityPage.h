// The entity page of the library window: a tree of the kinds to place, and the parameters of the chosen kind, which are
// also those of all selected entities.
#pragma once

#include <memory>
#include <vector>

#include <QWidget>

#include "commands/MainFrame.h"
#include "desktop/LazyRefresh.h"
#include "desktop/ParameterEditors.h"

class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QScrollArea;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;

class EntityPage : public QWidget, public EditorListener {
public:
    EntityPage(CMainFrame& main_frame, QWidget* parent = nullptr);
    ~EntityPage() override;
    void Refresh();

    void WorldReplaced() override { news.Request(); }
    void SelectionChanged() override { news.Request(); }
    void EntityTypesChanged() override { news.Request(); }
    void AIGroupsChanged() override { news.Request(); }
    void UndoListsChanged() override { news.Request(); }

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* MakeTree();
    QWidget* MakeParameters();
    void FillTree();
    void FilterTree();
    void ChooseInTree(QTreeWidgetItem* item);
    void ShowChosenTemplate();
    bool FieldsFit(const Entity& chosen) const;
    void MakeFields(const Entity& chosen);
    void SetHolder(QWidget* holder);
    void ShowValues(const Entity& chosen);
    void ChooseParameter(int parameter);
    void Write(int parameter, const std::string& text, int part);
    void Browse(int parameter);
    void EditScript(int parameter);

    CInterface& editor;
    EntityDlg& page;
    LazyRefresh news;
    ParameterActions actions;
    QTreeWidget* tree;
    QLineEdit *filter, *name;
    QLabel *headline, *helpline;
    QComboBox* saved;
    QScrollArea* scroll;
    std::vector<QToolButton*> angle_buttons;
    std::vector<ParameterField*> fields;  // one a parameter
    std::vector<std::string> field_names; // of the parameters
    std::vector<std::vector<std::string>> field_choices;
};
