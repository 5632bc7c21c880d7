// What makes the sample: each step works in the current folder, the game data root, and is false when a file could not
// be written.
#pragma once

#include <string>

bool MakeTextures();
// The plaster of the base library, or the fresher one that the add-on lays over it.
bool MakePlaster(const std::string& path, bool restored);
// A lantern for a custom brush, a statue for an entity, and a figure for the actors.
bool MakeMeshes();
// "Data\base.fs" and "Addons\restored.fs".
bool MakeLibraries(std::string& error);
// The level "Marrowstead\Projects\abbey.msp".
bool MakeLevel(std::string& error);
// The level "Marrowstead\Projects\priory.msp", divided into cells by portals and eyes, and its broken twin
// "priory-broken.msp", which shows each kind of problem.
bool MakePriory(std::string& error);
// The level "Marrowstead\Projects\downs.msp": terrain, decals, cables, with the prefab "yard\signpost", the movie
// "Anim\flight.mvi" and its tracklist. The pictures come first: the height map and the decals.
bool MakeDownsPictures();
bool MakeDowns(std::string& error);
