// The AI page of the library window: the level's groups of actors, and the stance of one toward each.
#pragma once

#include <QWidget>

#include "commands/MainFrame.h"
#include "desktop/LazyRefresh.h"

class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QScrollArea;

class AIPage : public QWidget, public EditorListener {
public:
    AIPage(CMainFrame& main_frame, QWidget* parent = nullptr);
    ~AIPage() override;
    void Refresh();

    void AIGroupsChanged() override { news.Request(); }
    void WorldReplaced() override { news.Request(); }

protected:
    void showEvent(QShowEvent* event) override;

private:
    void MakeLines();

    CInterface& editor;
    AIDlg& page;
    LazyRefresh news;
    QComboBox* groups;
    QLineEdit* new_name;
    QPushButton *rename, *erase;
    QScrollArea* scroll;
};
