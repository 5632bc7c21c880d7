// A game data root with two materials and a few entity definitions, and a level that uses every field of a project.
#pragma once

#include <memory>

#include "foundation/TempFolder.h"
#include "persistence/Project.h"
#include "render/TestPictures.h"

inline const char* const TEST_DEFINITIONS = R"(
#lights\light { #Type <POINT_LIGHT> #TraceType <Trace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) }
#Parameters {
BOOL dynamic = FALSE;
INT count = 3;
FLOAT range = 256.0; // reach
VECTOR2 pair = 1 2;
VECTOR3 wind = 1 2 3;
COLOR color = 255 128 0 255;
FILENAME picture = "none";
STRING script = "";
CONSTANT mood = calm;
{ calm, angry }
} }
#actors\actor { #Type <ACTOR> #TraceType <Trace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) }
#Parameters {
FLOAT orientation = 10.0;
CONSTANT watch_enemy_type = attack;
{ ignore, look, attack }
} }
#object_point { #Type <PATH_POINT_POS> #TraceType <NoTrace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) } #Parameters { } }
)";

// The data root in a fresh folder, made the current one.
class ProjectData {
public:
    ProjectData() : current(folder.Path()) {
        WriteBytes("Textures/wall/brick.tga", TargaBytes(8, 4, 24));
        WriteBytes("Textures/wall/stone.tga", TargaBytes(16, 16, 24));
        for (const char* name : {"brick", "stone"})
            WriteBytes(std::string("Scripts/Materials/wall/") + name + ".mtl",
                       std::string("#Basic Material Properties\r\n{\r\n\tDIFFUSE_MAP = wall\\") + name + ";\r\n}\r\n");
        WriteBytes("Marrowstead/entities.def", TEST_DEFINITIONS);
        materials.ParseTextures();
        parser = std::make_unique<EntityParser>("Marrowstead\\entities.def");
    }

    std::unique_ptr<World> NewWorld() const { return std::make_unique<World>(&materials); }
    // Loads into a new world; null with the sentence in error.
    std::unique_ptr<World> Load(const std::string& path, ProjectViews& views) {
        std::unique_ptr<World> world = NewWorld();
        return LoadProject(path, *world, views, materials, *parser, error) ? std::move(world) : nullptr;
    }
    std::unique_ptr<World> Load(const std::string& path) {
        ProjectViews views;
        return Load(path, views);
    }
    Entity* Place(World& world, const char* definition, const D3DVECTOR& position) {
        auto entity = std::make_unique<Entity>(*parser->GetTemplate(definition, false));
        entity->SetPosition(position);
        return world.NewEntityCreated(std::move(entity), 0);
    }

    TempFolder folder;
    CurrentFolder current;
    MaterialLibrary materials;
    std::unique_ptr<EntityParser> parser;
    std::string error;
};

inline Brush* AddTestBrush(World& world, BrushType type, float x, int material) {
    BrushShape shape;
    shape.type = type;
    shape.segment_count = 3;
    shape.bb = MakeBox({x, 0, 0}, {x + 64, 32, 48});
    shape.pivot = {x + 32, 16, 24};
    shape.color = {0.5f, 0.25f, 1, 0};
    world.ClearSelection();
    Brush* brush = world.CreateBrush(shape);
    brush->ForEachSurface([material](Surface& surface, int, bool) { surface.texture.index = material; });
    world.ClearSelection();
    return brush;
}
