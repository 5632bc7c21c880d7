// Where the tokens of a script lie.
#pragma once

#include <cstddef>
#include <string_view>

inline constexpr size_t LONGEST_SCRIPT_TOKEN = 1000; // characters, of a line too; what is beyond is cut

inline constexpr bool IsScriptLineEnd(char c) { return c == '\n' || c == '\r'; }
inline constexpr bool IsScriptBlank(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f'; }

// The text lies from start to end, without quotes; the next token is searched from next on.
struct ScriptTokenPlace {
    size_t start = 0, end = 0, next = 0;
    bool quoted = false;

    // Finds the token at or behind a position. False at the end of the line: all three then stand there.
    bool Find(std::string_view text, size_t from);
};
