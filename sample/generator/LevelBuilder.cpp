#include "LevelBuilder.h"

#include <algorithm>

void LevelBuilder::Paint(Brush& brush, const Finish& finish) {
    const int row = world.GetNewMaterial(finish.material_class, finish.name);
    if (row < 1) {
        failed = true;
        return;
    }
    const SIZE size = world.TextureSize(row);
    brush.ForEachSurface([&](Surface& surface, int, bool) {
        surface.texture.index = row;
        surface.texture.size = {static_cast<float>(size.cx), static_cast<float>(size.cy)};
        surface.texture.scale = {finish.scale, finish.scale};
    });
    brush.GenerateTextureSpaces();
    for (size_t s = 0; s < brush.surfaces.size(); ++s)
        brush.Remap(static_cast<int>(s), false);
    brush.RemapAll();
}

Brush* LevelBuilder::AddShape(const BrushShape& shape, const Finish& finish) {
    world.ClearSelection();
    Brush* brush = world.CreateBrush(shape);
    if (brush)
        Paint(*brush, finish);
    else
        failed = true;
    world.ClearSelection();
    return brush;
}

static BrushShape ShapeOf(BrushType type, const D3DVECTOR& min, const D3DVECTOR& max) {
    BrushShape shape;
    shape.type = type;
    shape.bb = MakeBox(min, max);
    shape.pivot = (min + max) * 0.5f;
    return shape;
}

Brush* LevelBuilder::AddBox(const D3DVECTOR& min, const D3DVECTOR& max, const Finish& finish) {
    return AddShape(ShapeOf(BT_BOX, min, max), finish);
}

void LevelBuilder::AddRoom(const Room& room) {
    const D3DVECTOR &lo = room.min, &hi = room.max;
    AddBox({lo.x - WALL, lo.y - WALL, lo.z - WALL}, {hi.x + WALL, lo.y, hi.z + WALL}, room.floor);
    if (!room.open_sky)
        AddBox({lo.x - WALL, hi.y, lo.z - WALL}, {hi.x + WALL, hi.y + WALL, hi.z + WALL}, room.ceiling);
    for (Side side : {Side::East, Side::West, Side::North, Side::South})
        AddWall(room, side);
}

// Cuts a wall at its openings: a piece before each, one below and one above it, and what is left at the end.
void LevelBuilder::AddWall(const Room& room, Side side) {
    std::vector<Opening> openings;
    std::copy_if(room.openings.begin(), room.openings.end(), std::back_inserter(openings),
                 [side](const Opening& o) { return o.side == side; });
    std::sort(openings.begin(), openings.end(), [](const Opening& a, const Opening& b) { return a.middle < b.middle; });
    const bool along_z = side == Side::East || side == Side::West;
    // Walls along z take the corners.
    float from = along_z ? room.min.z - WALL : room.min.x;
    const float end = along_z ? room.max.z + WALL : room.max.x;
    for (const Opening& opening : openings) {
        const float left = opening.middle - opening.width / 2, right = opening.middle + opening.width / 2;
        AddWallPiece(room, side, from, left, room.min.y, room.max.y);
        AddWallPiece(room, side, left, right, room.min.y, opening.bottom);
        AddWallPiece(room, side, left, right, opening.top, room.max.y);
        from = right;
    }
    AddWallPiece(room, side, from, end, room.min.y, room.max.y);
}

void LevelBuilder::AddWallPiece(const Room& room, Side side, float from, float to, float bottom, float top) {
    if (to <= from || top <= bottom)
        return;
    D3DVECTOR min{from, bottom, from}, max{to, top, to};
    switch (side) {
    case Side::East:
        min.x = room.max.x, max.x = room.max.x + WALL;
        break;
    case Side::West:
        min.x = room.min.x - WALL, max.x = room.min.x;
        break;
    case Side::North:
        min.z = room.max.z, max.z = room.max.z + WALL;
        break;
    case Side::South:
        min.z = room.min.z - WALL, max.z = room.min.z;
        break;
    }
    AddBox(min, max, room.walls);
}

static Brush* AddUnpainted(World& world, const BrushShape& shape) {
    world.ClearSelection();
    Brush* brush = world.CreateBrush(shape);
    world.ClearSelection();
    return brush;
}

Brush* LevelBuilder::AddPortal(const D3DVECTOR& min, const D3DVECTOR& max) {
    return AddUnpainted(world, ShapeOf(BT_PORTAL, min, max));
}

Brush* LevelBuilder::AddOccluder(const D3DVECTOR& min, const D3DVECTOR& max) {
    return AddUnpainted(world, ShapeOf(BT_OCCLUDER, min, max));
}

void LevelBuilder::AddColumn(const D3DVECTOR& foot, float height, float radius, const Finish& finish) {
    const float plinth = radius * 1.4f, step = radius * 0.75f;
    AddBox({foot.x - plinth, foot.y, foot.z - plinth}, {foot.x + plinth, foot.y + step, foot.z + plinth}, finish);
    AddBox({foot.x - plinth, foot.y + height - step, foot.z - plinth},
           {foot.x + plinth, foot.y + height, foot.z + plinth}, finish);
    BrushShape shaft = ShapeOf(BT_CYLINDER, {foot.x - radius, foot.y + step, foot.z - radius},
                               {foot.x + radius, foot.y + height - step, foot.z + radius});
    shaft.segment_count = 1;
    AddShape(shaft, finish);
}

void LevelBuilder::AddArch(const D3DVECTOR& min, const D3DVECTOR& max, bool crossed_along_x, float rise,
                           const Finish& finish) {
    // The corner piece of the front view fills the upper left corner; crossed along x the left view shows it.
    const uint32_t view = crossed_along_x ? 2 : 1;
    for (bool far_half : {false, true}) {
        D3DVECTOR lo = min, hi = max;
        lo.y = max.y - rise;
        float& low = crossed_along_x ? lo.z : lo.x;
        float& high = crossed_along_x ? hi.z : hi.x;
        const float middle = (low + high) / 2;
        (far_half ? low : high) = middle;
        BrushShape piece = ShapeOf(BT_SFT_BLOCK, lo, hi);
        piece.view = view;
        Brush* brush = AddShape(piece, finish);
        if (!brush)
            return;
        // Whichever half the piece fits as generated, the other one is its mirror image.
        const D3DVECTOR corner = brush->curved_surfaces.back().cp[1];
        const float at = crossed_along_x ? corner.z : corner.x;
        const bool at_low_end = at < (low + high) / 2;
        if (at_low_end == far_half)
            Mirror(*brush, !crossed_along_x);
        Paint(*brush, finish);
    }
}

void LevelBuilder::Mirror(Brush& brush, bool in_x) {
    const D3DVECTOR sum = BoxMin(brush.bbox) + BoxMax(brush.bbox);
    const auto reflect = [&](D3DVECTOR& p) { (in_x ? p.x : p.z) = in_x ? sum.x - p.x : sum.z - p.z; };
    for (Surface& surface : brush.surfaces) {
        std::for_each(surface.vertices.begin(), surface.vertices.end(), reflect);
        std::reverse(surface.vertices.begin(), surface.vertices.end());
    }
    for (Surface& surface : brush.curved_surfaces) {
        std::for_each(surface.cp.begin(), surface.cp.end(), reflect);
        for (size_t row = 0; row + 2 < surface.cp.size(); row += 3)
            std::swap(surface.cp[row], surface.cp[row + 2]);
    }
    brush.TesselateCurves();
    brush.RecalcBBox();
    brush.ComputeNormals();
    brush.SurfaceLight();
    brush.GenerateTextureSpaces();
}

Entity* LevelBuilder::AddEntity(const char* definition, const D3DVECTOR& position, const char* variable_name) {
    const Entity* entity_template = parser.GetTemplate(definition, false);
    if (!entity_template) {
        failed = true;
        return nullptr;
    }
    auto entity = std::make_unique<Entity>(*entity_template);
    entity->SetPosition(position);
    if (variable_name)
        entity->variable_name = variable_name;
    return world.NewEntityCreated(std::move(entity), 0);
}

static void SetLight(Entity& light, float range, float intensity, uint32_t rgb) {
    light.GetParameterStr("range")->p_float = range;
    light.GetParameterStr("intensity")->p_float = intensity;
    light.GetParameterStr("color")->p_color = MakeColor(rgb >> 16 & 255, rgb >> 8 & 255, rgb & 255, 255);
}

Entity* LevelBuilder::AddLight(const D3DVECTOR& position, float range, float intensity, uint32_t rgb) {
    Entity* light = AddEntity("light", position);
    if (light)
        SetLight(*light, range, intensity, rgb);
    return light;
}

Entity* LevelBuilder::AddSpot(const D3DVECTOR& position, const D3DVECTOR& target, float range, float angle,
                              float intensity, uint32_t rgb) {
    Entity* light = AddEntity("spot", position);
    Entity* aim = AddEntity("target", target);
    if (!light || !aim)
        return nullptr;
    SetLight(*light, range, intensity, rgb);
    light->GetParameterStr("spotlight_angle")->p_float = angle;
    light->AddLinkedObjectID(aim->GetObjectID());
    return light;
}

void LevelBuilder::AddLamp(Entity* light, const char* name) {
    if (!light)
        return;
    const D3DVECTOR p = light->position;
    if (Brush* lamp = AddBox({p.x - 6, p.y + 4, p.z - 6}, {p.x + 6, p.y + 12, p.z + 6}, {"metal", "lamp"})) {
        lamp->name = name;
        lamp->properties = BP_NO_SHADOWS;
        lamp->AddLinkedObjectID(light->GetObjectID());
    }
}
