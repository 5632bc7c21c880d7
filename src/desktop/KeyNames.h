// Key events in the spelling of commands/Accelerator.h.
#pragma once

#include <QKeyEvent>
#include <string>
#include <vector>

// What the pressed keys may be called, what they write first, then what stands at their place: on one keyboard "/" is
// typed as "Shift+7", and both name it. The numeric pad is told apart whatever its lock says; the back-quote is the key
// to the left of 1. Empty for keys that have no name, such as Shift alone.
std::vector<std::string> KeyTexts(const QKeyEvent& event);

// The name of a key of the numeric pad, such as "Num6"; null for other keys.
const char* KeypadName(const QKeyEvent& event);

// True for the right one of the two Shift keys.
bool IsRightShift(const QKeyEvent& event);
