// Progress on a terminal: the text to standard output as it grows, and a bar with the stage's name on standard error
// when that is a terminal.
#pragma once

#include <csignal>
#include <cstdio>
#include <string>

#include "editor/ProgressText.h"

class ConsoleProgress : public CProgressText {
public:
    ConsoleProgress(std::FILE* text_output, std::FILE* bar_output, bool show_bar,
                    const volatile std::sig_atomic_t* stop_signal);
    ~ConsoleProgress() override;

    void AddText(const std::string& text) override;
    void InitProgress(int n) override;
    void IncrementProgress(int n) override;
    bool CompilationCancelled() override;

private:
    void DrawBar();
    void ClearBar();

    std::FILE* text_file;
    std::FILE* bar_file;
    bool show_bar, bar_drawn = false;
    int drawn_percent = -1;
    std::string stage; // the last line of the text that has letters
    const volatile std::sig_atomic_t* stop;
};
