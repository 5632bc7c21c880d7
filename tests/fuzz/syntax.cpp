// The commands of scripts, and a script checked against them. A zero byte parts the two.
#include "definitions/ScriptSyntax.h"
#include "fuzz/FuzzTarget.h"

FUZZ_TARGET(syntax, bytes) {
    static FuzzFolder folder;
    const size_t middle = std::min(bytes.find('\0'), bytes.size());
    folder.NextInput("in.def", bytes.substr(0, middle));
    const CScriptSyntax syntax("in.def");
    const std::string_view script = bytes.substr(std::min(middle + 1, bytes.size()));
    CheckScript(
        syntax, script, [](std::string_view name) { return name.size() % 2 == 0; },
        [](const std::string&, bool) { return true; });
    syntax.ConvertOldScript(script);
}
