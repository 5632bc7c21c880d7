// The cutting of decals on brushes that have changed, or come back, and what undo keeps of decals.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "scene/DecalTemplate.h"
#include "scene/Selection.h"

class Brush;
class World;

// Portals, occluders and custom meshes bear none.
bool CanBearDecals(const Brush& brush);
// The decals of one brush, cut anew from all templates of the world that reach it.
void RecutDecals(World& world, Brush& brush);
// The decals of these templates, on all brushes.
void RemoveDecals(World& world, const std::unordered_set<uint32_t>& ids);
void CutDecalOn(World& world, Brush& brush, const DecalTemplate& source); // beside what is there

// All templates of a world, with the selection, as they were. Textures are kept by name, as they may be loaded again
// meanwhile.
class DecalState {
public:
    DecalState() = default;
    explicit DecalState(const World& world);
    bool HasSameTemplates(const World& world) const;
    void Restore(World& world) const;        // cuts anew what differs
    void RestoreMissing(World& world) const; // only those that are not there any more

private:
    struct Kept {
        DecalTemplate source;
        std::string path, name; // of the texture, empty without one
    };
    static DecalTemplate WithTexture(const Kept& kept);

    std::vector<Kept> templates;
    uint32_t last_decal_id = 0;
    COLOR decal_color;
    Selection decal_selection;
};
