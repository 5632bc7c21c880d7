#include "editor/ConsoleProgress.h"

#include <algorithm>

#include "foundation/Strings.h"

static constexpr int BAR_WIDTH = 30;

ConsoleProgress::ConsoleProgress(std::FILE* text_output, std::FILE* bar_output, bool draw_bar,
                                 const volatile std::sig_atomic_t* stop_signal)
    : text_file(text_output), bar_file(bar_output), show_bar(draw_bar), stop(stop_signal) {}

ConsoleProgress::~ConsoleProgress() { ClearBar(); }

void ConsoleProgress::AddText(const std::string& text) {
    CProgressText::AddText(text);
    ClearBar();
    std::string shown;
    std::copy_if(text.begin(), text.end(), std::back_inserter(shown), [](char c) { return c != '\r'; });
    std::fputs(shown.c_str(), text_file);
    std::fflush(text_file);
    const size_t dots = text.find("...");
    if (dots != std::string::npos && dots > 0) // lines that begin with dots tell details of a stage
        stage = text.substr(0, dots);
}

void ConsoleProgress::InitProgress(int n) {
    CProgressText::InitProgress(n);
    drawn_percent = -1;
    DrawBar();
}

void ConsoleProgress::IncrementProgress(int n) {
    CProgressText::IncrementProgress(n);
    DrawBar();
}

bool ConsoleProgress::CompilationCancelled() {
    if (stop && *stop)
        StopCompilation();
    return CProgressText::CompilationCancelled();
}

void ConsoleProgress::DrawBar() {
    if (!show_bar || range <= 0)
        return;
    const int percent = static_cast<int>(100LL * std::min(position, range) / range);
    if (percent == drawn_percent)
        return;
    drawn_percent = percent;
    const int filled = percent * BAR_WIDTH / 100;
    const std::string bar =
        std::string(static_cast<size_t>(filled), '#') + std::string(static_cast<size_t>(BAR_WIDTH - filled), '.');
    std::fprintf(bar_file, "\r%-28s [%s] %3d%%", stage.substr(0, 28).c_str(), bar.c_str(), percent);
    std::fflush(bar_file);
    bar_drawn = true;
}

void ConsoleProgress::ClearBar() {
    if (!bar_drawn)
        return;
    std::fputs("\r\x1b[K", bar_file);
    std::fflush(bar_file);
    bar_drawn = false;
}
