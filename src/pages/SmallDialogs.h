// Small dialogs of one field. Each asks through a form and gives nothing, or false, after Cancel.
#pragma once

#include <cstdint>
#include <optional>

class CInterface;

bool AskRotationAngle(CInterface& editor); // the setting, degrees
// The segment count of the next brush. A changed one also rebuilds the selected brush.
bool AskSegments(CInterface& editor);
std::optional<int> AskCopyCount();
std::optional<uint32_t> AskObjectID();

// The one selected brush anew in its box with the active segment count, in the view along its axis. It stays the same
// object: id, name, links and gameplay data. Surfaces take the material and mapping of those that faced their way.
// False when not exactly one brush of a kind with segments is selected.
bool RebuildBrush(CInterface& editor);
