// The light of a compiled world, given back to the project that it was made of.
#pragma once

struct WorldFile;
class World;

// Takes lightmaps and vertex colours for each surface that is still as it was compiled, and shows them. False, and
// nothing changed, when the file has other brushes than the project or no light that fits.
bool RestoreLight(const WorldFile& file, World& world);
