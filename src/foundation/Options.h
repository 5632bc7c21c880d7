// What all programs do with their options: help and version end well, anything wrong is told in one sentence.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdio>
#include <optional>

// The exit status to end with, or nothing to go on.
inline std::optional<int> ParseOptions(CLI::App& app, int argc, char** argv, int bad_usage) {
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wanted) {
        return app.exit(wanted);
    } catch (const CLI::ParseError& wrong) {
        std::fprintf(stderr, "%s (--help tells the options)\n", wrong.what());
        return bad_usage;
    }
    return std::nullopt;
}
