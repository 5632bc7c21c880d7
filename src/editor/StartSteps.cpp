#include "editor/StartSteps.h"

#include <array>

static StartWatcher current_watcher;

const char* StartStepText(StartStep step) {
    static constexpr std::array<const char*, static_cast<size_t>(StartStep::Count)> TEXTS = {
        "Starting what draws", "Opening libraries", "Reading entity types", "Reading script commands", "Reading actors",
        "Reading materials",   "Making the pages",  "Opening the window",   "Opening the project"};
    return TEXTS.at(static_cast<size_t>(step));
}

void SetStartWatcher(StartWatcher watcher) { current_watcher = std::move(watcher); }

void TellStart(StartStep step) {
    if (current_watcher)
        current_watcher(step);
}
