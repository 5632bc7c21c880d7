#include "commands/KeyTablePage.h"

#include <sstream>

#include "commands/CommandTable.h"

namespace {

// The menu text without its marks, else the handler's name in words: "OnShowTextureBorder" is "show texture border".
std::string Title(const Command& command) {
    std::string title;
    for (const char* c = command.text; *c != '\0'; ++c)
        if (*c != '&')
            title += *c;
    if (!title.empty())
        return title;
    for (const char* c = command.name + 2; *c != '\0'; ++c) {
        const bool capital = *c >= 'A' && *c <= 'Z';
        if (capital && !title.empty() && !(title.back() >= 'A' && title.back() <= 'Z'))
            title += ' ';
        title += capital && title.size() > 0 ? static_cast<char>(*c - 'A' + 'a') : *c;
    }
    return title;
}

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
            page += "\n## " + menu + "\n\n| Command | Keys | In scripts |\n|---|---|---|\n";
        }
        page += "| " + Title(command) + " | " + Keys(command) + " | `" + command.name + "` |\n";
    }
    return page;
}
