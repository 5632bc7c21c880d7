// The colours of the views' lines, as the user's settings keep them.
#pragma once

class CInterface;

void ReadLineColors();
bool WriteLineColors(); // false when the settings cannot be written
// Gives the grid its colours, unless a mode has taken others.
void ApplyGridColors(CInterface& interface);
