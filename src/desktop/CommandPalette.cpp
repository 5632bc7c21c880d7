#include "desktop/CommandPalette.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <sstream>

#include "commands/CommandLabels.h"
#include "desktop/CommandActions.h"
#include "foundation/Strings.h"

namespace {

bool ContainsAll(const std::string& name, const std::string& text) {
    std::istringstream words(text);
    for (std::string word; words >> word;)
        if (name.find(word) == std::string::npos)
            return false;
    return true;
}

} // namespace

std::vector<const Command*> FindCommands(const std::string& text) {
    const std::string wanted = ToLower(text);
    std::vector<const Command*> found;
    for (const Command& command : CommandTable())
        if (ContainsAll(ToLower(CommandTitle(command) + " " + command.menu), wanted))
            found.push_back(&command);
    std::stable_partition(found.begin(), found.end(),
                          [&](const Command* c) { return StartsWithNoCase(CommandTitle(*c), wanted); });
    return found;
}

CommandPalette::CommandPalette(const CommandActions& command_actions, const KeyBindings& bindings, QWidget* parent)
    : QDialog(parent), actions(command_actions), keys(bindings) {
    setWindowTitle("Commands");
    resize(560, 420);
    words = new QLineEdit;
    words->setPlaceholderText("Part of a command's name");
    words->setToolTip("Up and Down choose, Enter runs the command, Escape closes.");
    words->installEventFilter(this);
    list = new QTreeWidget;
    list->setColumnCount(3);
    list->setHeaderHidden(true);
    list->setRootIsDecorated(false);
    list->setFocusPolicy(Qt::NoFocus);
    list->header()->setStretchLastSection(false);
    auto* column = new QVBoxLayout(this);
    column->addWidget(words);
    column->addWidget(list);
    connect(words, &QLineEdit::textChanged, this, &CommandPalette::Fill);
    connect(words, &QLineEdit::returnPressed, this, &CommandPalette::Take);
    connect(list, &QTreeWidget::itemClicked, this, &CommandPalette::Take);
    Fill("");
    list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    list->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
}

void CommandPalette::Fill(const QString& text) {
    found = FindCommands(text.toStdString());
    list->clear();
    QList<QTreeWidgetItem*> items;
    for (const Command* command : found) {
        auto* item = new QTreeWidgetItem({QString::fromStdString(CommandTitle(*command)), command->menu,
                                          QString::fromStdString(keys.Text(*command))});
        item->setIcon(0, actions.Action(*command).icon());
        item->setToolTip(0, CommandHelp(*command));
        item->setDisabled(!actions.Action(*command).isEnabled());
        items.push_back(item);
    }
    if (items.empty()) {
        auto* nothing = new QTreeWidgetItem({"No command has this in its name"});
        nothing->setDisabled(true);
        items.push_back(nothing);
    }
    list->addTopLevelItems(items);
    list->setCurrentItem(list->topLevelItem(0));
}

void CommandPalette::Take() {
    const int row = list->indexOfTopLevelItem(list->currentItem());
    if (row < 0 || found.empty() || !actions.Action(*found[static_cast<size_t>(row)]).isEnabled())
        return;
    chosen = found[static_cast<size_t>(row)];
    accept();
}

bool CommandPalette::eventFilter(QObject* watched, QEvent* event) {
    if (watched == words && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const int step = key == Qt::Key_Down       ? 1
                         : key == Qt::Key_Up       ? -1
                         : key == Qt::Key_PageDown ? 10
                         : key == Qt::Key_PageUp   ? -10
                                                   : 0;
        if (step != 0 && !found.empty()) {
            const int row = list->indexOfTopLevelItem(list->currentItem()) + step;
            list->setCurrentItem(list->topLevelItem(std::clamp(row, 0, list->topLevelItemCount() - 1)));
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}
