// One action for each command of the table, and the menus and tool bars made of them. Keys are shown, and handled by
// the window: actions have no shortcut of their own, so that the numeric pad and single letters can be told apart.
#pragma once

#include <QAction>
#include <QObject>
#include <functional>
#include <map>
#include <string_view>

#include "commands/CommandTable.h"
#include "desktop/KeyBindings.h"

class CMainFrame;
class QMainWindow;
class QMenu;
class QMenuBar;
class QToolBar;

class CommandActions : public QObject {
    Q_OBJECT
public:
    CommandActions(CMainFrame& main_frame, KeyBindings& key_bindings);

    QAction& Action(const Command& command) const { return *actions.at(&command); }
    void FillMenuBar(QMenuBar& bar);
    void AddToolBars(QMainWindow& window);
    QMenu* Menu(std::string_view name) const; // such as "File"; null before FillMenuBar
    // A window that does more than the command's own small dialog.
    void Replace(std::string_view command, std::function<void()> window);
    void Run(const Command& command); // unless it is disabled just now
    void Refresh();                   // what is enabled and checked, texts and keys

signals:
    void Ran();
    void MenuClosed();

private:
    void AddToMenu(QMenu& menu, const Command& command);
    QToolBar& AddToolBar(QMainWindow& window, const char* title, const char* name,
                         std::initializer_list<std::string_view> commands);
    void RefreshAction(const Command& command, QAction& action);

    CMainFrame& frame;
    KeyBindings& bindings;
    std::map<const Command*, QAction*> actions;
    std::map<const Command*, std::function<void()>> replaced;
    std::map<std::string_view, QMenu*> menus;
};
