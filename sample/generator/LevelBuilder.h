// Building blocks of the sample level: boxes, rooms with openings, columns, arches, lights. Units as in the editor, Y
// up.
#pragma once

#include <string>
#include <vector>

#include "definitions/EntityParser.h"
#include "scene/World.h"

inline constexpr float WALL = 16; // thickness of walls, floors and ceilings

// A material and how often it repeats.
struct Finish {
    const char* material_class;
    const char* name;
    float scale = 1; // repeats of the texture in its own size of world units
};

enum class Side { East, West, North, South }; // +x, -x, +z, -z

// A hole in a wall: its middle along the wall, and its extent.
struct Opening {
    Side side;
    float middle, width, bottom, top;
};

struct Room {
    D3DVECTOR min, max; // the inside
    Finish floor, walls, ceiling;
    std::vector<Opening> openings;
    bool open_sky = false; // no ceiling
};

class LevelBuilder {
public:
    LevelBuilder(World& level, EntityParser& definitions) : world(level), parser(definitions) {}

    Brush* AddBox(const D3DVECTOR& min, const D3DVECTOR& max, const Finish& finish);
    Brush* AddShape(const BrushShape& shape, const Finish& finish);
    void AddRoom(const Room& room);
    // A column of a curved shaft on a plinth, with a capital below the ceiling.
    void AddColumn(const D3DVECTOR& foot, float height, float radius, const Finish& finish);
    // An arch in an opening that is crossed along x (facing east and west) or along z: two concave corner pieces.
    void AddArch(const D3DVECTOR& min, const D3DVECTOR& max, bool crossed_along_x, float rise, const Finish& finish);
    // Mirrors a brush in x or z about the middle of its box.
    void Mirror(Brush& brush, bool in_x);

    Entity* AddEntity(const char* definition, const D3DVECTOR& position, const char* variable_name = nullptr);
    Entity* AddLight(const D3DVECTOR& position, float range, float intensity, uint32_t rgb);
    Entity* AddSpot(const D3DVECTOR& position, const D3DVECTOR& target, float range, float angle, float intensity,
                    uint32_t rgb);
    // A portal that closes a box-shaped opening; the opening's edges reach a little into the walls.
    Brush* AddPortal(const D3DVECTOR& min, const D3DVECTOR& max);
    Brush* AddOccluder(const D3DVECTOR& min, const D3DVECTOR& max);
    // A lamp body under a light, lit by the light's own colour.
    void AddLamp(Entity* light, const char* name);

    void Paint(Brush& brush, const Finish& finish);
    bool Failed() const { return failed; }

private:
    void AddWall(const Room& room, Side side);
    void AddWallPiece(const Room& room, Side side, float from, float to, float bottom, float top);

    World& world;
    EntityParser& parser;
    bool failed = false;
};
