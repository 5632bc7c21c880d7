// The compile's progress window as data: the growing text and the state of its bar and Stop button.
#pragma once

#include <atomic>
#include <string>

#include "compiler/CompileOptions.h"

class CProgressText : public CompileProgress {
public:
    void AddText(const std::string& text) override { m_edit += text; }
    void InitProgress(int n) override { range = n, position = 0; }
    void IncrementProgress(int n) override { position += n; }
    bool CompilationCancelled() override { return compilation_canceled; }
    const std::string& GetText() const { return m_edit; }
    void StopCompilation() { compilation_canceled = true; }

protected:
    std::string m_edit; // the whole text of the run
    int range = 0, position = 0;
    std::atomic<bool> compilation_canceled = false;
};
