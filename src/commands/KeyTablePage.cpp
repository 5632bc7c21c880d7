#include "commands/KeyTablePage.h"

#include <sstream>

#include "commands/CommandLabels.h"
#include "commands/CommandTable.h"

namespace {

std::string Keys(const Command& command) {
    std::string list;
    std::istringstream keys(command.keys);
    for (std::string key; keys >> key;)
        list += (list.empty() ? "" : ", ") + (key == "`" ? std::string("the key left of 1") : "`" + key + "`");
    return list;
}

} // namespace

std::string KeyTablePage() {
    std::string page =
        "# All commands and their keys\n\nThis page is made by `marrowstead2000 --keys`. \"Num\" keys are those of "
        "the numeric pad. Settings, \"Keys...\" gives\ncommands other keys; `Ctrl+Shift+A` finds any command by a "
        "part of its name.\n";
    std::string menu;
    for (const Command& command : CommandTable()) {
        if (!command.action)
            continue;
        if (menu != command.menu) {
            menu = command.menu;
            page += "\n## " + menu + "\n\n| Command | Keys | What it does | In scripts |\n|---|---|---|---|\n";
        }
        page += "| " + CommandTitle(command) + " | " + Keys(command) + " | " + CommandHelp(command) + " | `" +
                command.name + "` |\n";
    }
    return page;
}
