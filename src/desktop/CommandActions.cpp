#include "desktop/CommandActions.h"

#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

#include "commands/CommandLabels.h"
#include "commands/MainFrame.h"
#include "desktop/CommandIcons.h"
#include "desktop/FinishTyping.h"
#include "desktop/MenuPlaces.h"

namespace {

// In the order of the menu bar, with the letters of the menus.
struct MenuName {
    std::string_view name;
    const char* text;
};
constexpr MenuName MENUS[] = {
    {"File", "&File"}, {"Edit", "&Edit"}, {"Brush", "&Brush"}, {"Tools", "&Tools"},     {"Selection", "&Selection"},
    {"Show", "S&how"}, {"View", "&View"}, {"Movie", "&Movie"}, {"Texture", "Te&xture"}, {"Settings", "Sett&ings"}};

constexpr std::string_view SEPARATOR = "";

// Modes that the table gives no mark: their buttons show when they are on.
bool IsModeOn(const CInterface& interface, std::string_view command) {
    const EditorState state = interface.editor_state;
    return (command == "OnRotate" && (state == ES_ROTATE_ARMED || state == ES_ROTATE)) ||
           (command == "OnSheering" && interface.shearing) ||
           (command == "OnVertexMode" && (state == ES_VERTEX || state == ES_VERTEX_MOVE)) ||
           (command == "OnPickTexture" && state == ES_PICK_TEXTURE) || (command == "OnDecals" && state == ES_DECAL) ||
           (command == "OnSelectionlock" && interface.selection_locked) ||
           (command == "OnConsole" && interface.console_onscreen);
}

bool IsMode(std::string_view command) {
    for (const std::string_view mode :
         {"OnRotate", "OnSheering", "OnVertexMode", "OnPickTexture", "OnDecals", "OnSelectionlock", "OnConsole"})
        if (mode == command)
            return true;
    return false;
}

QString ToolTip(const Command& command, const std::string& keys) {
    QString tip = "<b>" + QString::fromStdString(CommandTitle(command)).toHtmlEscaped() + "</b>";
    if (!keys.empty())
        tip += " (" + QString::fromStdString(keys).toHtmlEscaped() + ")";
    tip += "<br>" + QString::fromUtf8(CommandHelp(command)).toHtmlEscaped();
    if (!command.action)
        tip += "<br>Not available in this version.";
    return tip;
}

} // namespace

CommandActions::CommandActions(CMainFrame& main_frame, KeyBindings& key_bindings)
    : frame(main_frame), bindings(key_bindings) {
    for (const Command& command : CommandTable()) {
        auto* action = new QAction(this);
        action->setObjectName(command.name);
        action->setCheckable(command.is_checked || IsMode(command.name));
        action->setIcon(CommandIcon(command.name));
        action->setIconVisibleInMenu(false);
        connect(action, &QAction::triggered, this, [this, &command] { Run(command); });
        actions[&command] = action;
    }
    Refresh();
}

void CommandActions::Replace(std::string_view command, std::function<void()> window) {
    if (const Command* found = FindCommand(command))
        replaced[found] = std::move(window);
}

void CommandActions::Run(const Command& command) {
    FinishTyping();
    const auto window = replaced.find(&command);
    if (window != replaced.end())
        window->second();
    else
        frame.Run(command);
    Refresh();
    emit Ran();
}

void CommandActions::RefreshAction(const Command& command, QAction& action) {
    const std::string keys = bindings.Text(command);
    const std::string text = command.current_text ? command.current_text(frame) : CommandText(command);
    action.setText(QString::fromStdString(keys.empty() ? text : text + "\t" + keys));
    action.setIconText(QString::fromStdString(CommandTitle(command)));
    action.setToolTip(ToolTip(command, keys));
    action.setStatusTip(QString::fromUtf8(CommandHelp(command)));
    const bool replaces = replaced.count(&command) != 0;
    action.setEnabled(replaces || (command.action && (!command.is_enabled || command.is_enabled(frame))));
    if (action.isCheckable())
        action.setChecked(command.is_checked ? command.is_checked(frame) : IsModeOn(frame.interface, command.name));
}

void CommandActions::Refresh() {
    for (const auto& [command, action] : actions)
        RefreshAction(*command, *action);
}

QMenu* CommandActions::Menu(std::string_view name) const {
    const auto found = menus.find(name);
    return found == menus.end() ? nullptr : found->second;
}

void CommandActions::AddToMenu(QMenu& menu, const Command& command) {
    const MenuPlace place = PlaceInMenu(command);
    if (place.separated)
        menu.addSeparator();
    if (place.submenu[0] == '\0') {
        menu.addAction(&Action(command));
        return;
    }
    const QString title = QString::fromUtf8(place.submenu);
    QMenu* submenu = nullptr;
    for (QMenu* child : menu.findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly))
        if (child->title() == title)
            submenu = child;
    if (!submenu)
        submenu = menu.addMenu(title);
    submenu->addAction(&Action(command));
}

void CommandActions::FillMenuBar(QMenuBar& bar) {
    for (const MenuName& menu : MENUS) {
        menus[menu.name] = bar.addMenu(menu.text);
        menus[menu.name]->setToolTipsVisible(true);
        connect(menus[menu.name], &QMenu::aboutToShow, this, &CommandActions::Refresh);
        connect(menus[menu.name], &QMenu::aboutToHide, this, &CommandActions::MenuClosed);
    }
    for (const Command& command : CommandTable())
        if (QMenu* menu = Menu(command.menu))
            AddToMenu(*menu, command);
}

QToolBar& CommandActions::AddToolBar(QMainWindow& window, const char* title, const char* name,
                                     std::initializer_list<std::string_view> commands) {
    QToolBar& bar = *window.addToolBar(title);
    bar.setObjectName(name);
    bar.setIconSize(QSize(20, 20));
    for (const std::string_view command : commands) {
        if (command == SEPARATOR)
            bar.addSeparator();
        else if (const Command* found = FindCommand(command))
            bar.addAction(&Action(*found));
    }
    return bar;
}

void CommandActions::AddToolBars(QMainWindow& window) {
    AddToolBar(window, "Modes", "ModesBar",
               {"OnFileNew", "OnFileOpen",    "OnFileSave",      SEPARATOR,       "OnEditUndo",     "OnEditRedo",
                SEPARATOR,   "OnRotate",      "OnSheering",      "OnVertexMode",  "OnPickTexture",  "OnDecals",
                SEPARATOR,   "OnTexturelock", "OnSelectionlock", "OnMultiselect", "OnIgnoregroups", SEPARATOR,
                "OnClipbox", "OnCordonstate", "OnCordonbounds",  SEPARATOR,       "OnAutocenter",   "OnConsole",
                SEPARATOR,   "OnCompile",     "OnGamemode"});
    AddToolBar(window, "Brushes", "BrushesBar",
               {"OnBrushRectangle", "OnBrushBox", "OnBrushPyramid", "OnBrushPrism", "OnBrushPatch", "OnBrushCylinder",
                "OnBrushCone", "OnBrushSftblock", "OnBrushQblock", "OnBrushElasticbox", "OnBrushExtrudable",
                "OnBrushPortal", "OnBrushOccluder", "OnBrushCustom", SEPARATOR, "OnBrushSegments", "OnRotationAngle",
                "OnBrushColor"});
}
