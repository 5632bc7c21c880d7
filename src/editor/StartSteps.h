// What the start of the program is doing, for whoever shows it. Without a watcher nothing is told.
#pragma once

#include <functional>

// In the order in which they come.
enum class StartStep { Drawing, Libraries, Entities, Scripts, Actors, Materials, Pages, Window, Project, Count };

const char* StartStepText(StartStep step); // such as "Reading materials"
using StartWatcher = std::function<void(StartStep)>;
void SetStartWatcher(StartWatcher watcher); // null: nobody watches any more
void TellStart(StartStep step);
