// What all programs do with their options: help and version end well, anything wrong is told in one sentence; and with
// what they have printed.
#pragma once

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <optional>
#include <string>
#include <system_error>

constexpr int STATUS_OUTPUT_LOST = 4; // as for any other file that cannot be written

// The exit status of a program that is about to end with this one: output that did not arrive is told and is no
// success.
inline int FinishOutput(int status) {
    const bool lost = std::ferror(stdout) != 0;
    errno = 0;
    if (std::fflush(stdout) == 0 && !lost)
        return status;
    const std::string reason = errno != 0 ? ": " + std::generic_category().message(errno) : std::string();
    std::fprintf(stderr, "standard output cannot be written%s\n", reason.c_str());
    return status == 0 ? STATUS_OUTPUT_LOST : status;
}

// A whole program. A file that may not grow any more is a write that fails, not the end of the program.
inline int RunProgram(int (*run)(int, char**), int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);
    return FinishOutput(run(argc, argv));
}

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
