// The sample level: a ruined abbey. A hall with columns, a library, a chapel with stained glass, a crypt, a workshop,
// and the passages between them.
#include "LevelBuilder.h"
#include "Sample.h"
#include "definitions/MaterialLibrary.h"
#include "persistence/Project.h"

static const Finish BRICK{"brick", "brick_red"}, OLD_BRICK{"brick", "brick_old"}, PLASTER{"plaster", "plaster"},
    PLANKS{"wood", "planks"}, STEEL{"metal", "steel"}, CONCRETE{"concrete", "concrete"}, GLASS{"glass", "stained"};

static constexpr uint32_t CANDLE = 0xFFB868, DAYLIGHT = 0xE8F0FF, TORCH = 0xFF9040, COLD = 0x90B0FF;

static void BuildHall(LevelBuilder& level) {
    level.AddRoom({{-512, 0, -384},
                   {512, 320, 384},
                   CONCRETE,
                   BRICK,
                   PLANKS,
                   {{Side::East, 0, 128, 0, 192},
                    {Side::North, 0, 128, 0, 192},
                    {Side::West, 0, 112, 0, 160},
                    {Side::South, -256, 112, 0, 160}}});
    for (float x : {-288.0f, 0.0f, 288.0f})
        for (float z : {-208.0f, 208.0f})
            level.AddColumn({x, 0, z}, 320, 32, PLASTER);
    for (float x : {-400.0f, -144.0f, 144.0f, 400.0f})
        for (float z : {-300.0f, 300.0f})
            level.AddLamp(level.AddLight({x, 210, z}, 420, 0.75f, CANDLE), "hall_lamp");
    level.AddBox({-48, 0, -32}, {48, 40, 32}, PLASTER); // the altar
    level.AddSpot({0, 300, 0}, {0, 0, 0}, 480, 50, 1.4f, DAYLIGHT);
    level.AddEntity("statue", {0, 40, 0}, "abbot");
    level.AddArch({512, 0, -64}, {528, 192, 64}, true, 64, BRICK);
    level.AddArch({-64, 0, 384}, {64, 192, 400}, false, 64, BRICK);
}

static void BuildLibrary(LevelBuilder& level) {
    level.AddRoom({{544, 0, -64},
                   {992, 192, 64},
                   PLANKS,
                   OLD_BRICK,
                   PLANKS,
                   {{Side::East, 0, 128, 0, 192}, {Side::West, 0, 128, 0, 192}}});
    level.AddRoom({{1024, 0, -320}, {1664, 256, 320}, PLANKS, PLASTER, PLANKS, {{Side::West, 0, 128, 0, 192}}});
    for (float z : {-224.0f, -112.0f, 112.0f, 224.0f}) {
        level.AddBox({1152, 0, z - 12}, {1440, 144, z + 12}, PLANKS); // a bookcase
        level.AddLight({1120, 180, z}, 320, 0.7f, CANDLE);
        level.AddLight({1560, 180, z}, 320, 0.7f, CANDLE);
    }
    for (float x : {640.0f, 768.0f, 896.0f})
        level.AddLight({x, 150, 0}, 220, 0.6f, TORCH);
    BrushShape table;
    table.type = BT_PRISM;
    table.segment_count = 12;
    table.bb = MakeBox({1520, 0, -48}, {1616, 36, 48});
    table.pivot = {1568, 18, 0};
    level.AddShape(table, PLANKS);
}

static void BuildChapel(LevelBuilder& level) {
    level.AddRoom({{-64, 0, 416},
                   {64, 192, 736},
                   CONCRETE,
                   OLD_BRICK,
                   PLASTER,
                   {{Side::North, 0, 128, 0, 192}, {Side::South, 0, 128, 0, 192}}});
    std::vector<Opening> openings = {{Side::South, 0, 128, 0, 192}};
    const float windows[] = {928, 1120, 1312};
    for (float z : windows)
        openings.push_back({Side::East, z, 96, 96, 288});
    level.AddRoom({{-320, 0, 768}, {320, 352, 1472}, CONCRETE, PLASTER, PLANKS, openings});
    for (float z : windows) {
        if (Brush* pane = level.AddBox({326, 96, z - 48}, {330, 288, z + 48}, GLASS))
            pane->name = "chapel_window";
        level.AddSpot({560, 420, z}, {0, 0, z}, 900, 40, 1.6f, DAYLIGHT); // the sun outside
        level.AddBox({-240, 0, z - 24}, {-64, 32, z + 24}, PLANKS);       // pews
        level.AddBox({64, 0, z - 24}, {240, 32, z + 24}, PLANKS);
    }
    for (float z : {500.0f, 620.0f})
        level.AddLight({0, 160, z}, 240, 0.6f, TORCH);
    for (float x : {-240.0f, 240.0f})
        for (float z : {840.0f, 1400.0f})
            level.AddLight({x, 140, z}, 300, 0.5f, CANDLE);
    BrushShape dome; // a cone over the font
    dome.type = BT_CONE;
    dome.segment_count = 2;
    dome.bb = MakeBox({-48, 40, 1360}, {48, 96, 1456});
    dome.pivot = {0, 68, 1408};
    level.AddBox({-40, 0, 1368}, {40, 40, 1448}, PLASTER);
    level.AddShape(dome, STEEL);
}

static void BuildCrypt(LevelBuilder& level) {
    level.AddRoom({{-1184, 0, -256}, {-544, 192, 256}, CONCRETE, OLD_BRICK, CONCRETE, {{Side::East, 0, 112, 0, 160}}});
    level.AddBox({-544, -WALL, -72}, {-512, 0, 72}, CONCRETE); // the thresholds of the doorways
    level.AddBox({-544, 160, -72}, {-512, 176, 72}, OLD_BRICK);
    for (float x : {-1040.0f, -864.0f, -688.0f})
        for (float z : {-128.0f, 128.0f}) {
            level.AddBox({x - 56, 0, z - 28}, {x + 56, 36, z + 28}, CONCRETE); // tombs
            level.AddLight({x, 120, z}, 230, 0.7f, COLD);
        }
    if (Entity* beacon = level.AddEntity("switched_light", {-864, 150, 0}, "crypt_alarm")) {
        beacon->GetParameterStr("color")->p_color = MakeColor(255, 40, 30, 255);
        beacon->GetParameterStr("range")->p_float = 420;
    }
    BrushShape ramp;
    ramp.type = BT_Q_BLOCK;
    ramp.view = 0;
    ramp.bb = MakeBox({-1184, 0, -256}, {-1088, 64, -160});
    ramp.pivot = {-1136, 32, -208};
    level.AddShape(ramp, CONCRETE);
}

static void BuildWorkshop(LevelBuilder& level) {
    level.AddRoom({{-448, 0, -960}, {-64, 192, -416}, PLANKS, PLASTER, STEEL, {{Side::North, -256, 112, 0, 160}}});
    for (float z : {-864.0f, -688.0f, -512.0f})
        level.AddLight({-256, 150, z}, 300, 0.8f, TORCH);
    for (float z : {-880.0f, -740.0f, -600.0f}) {
        BrushShape lamp;
        lamp.type = BT_CUSTOM;
        lamp.view = 1;
        lamp.custom = "Marrowstead\\Brushes\\lights\\lamp.msh";
        lamp.bb = MakeBox({-100, 120, z - 12}, {-76, 150, z + 12});
        lamp.pivot = {-88, 135, z};
        level.AddShape(lamp, {"brushes", "lamp_iron"});
    }
    if (Brush* crate = level.AddBox({-420, 0, -900}, {-340, 80, -820}, PLANKS)) {
        crate->name = "crate";
        crate->properties = BP_DYNAMIC | BP_DESTROYABLE;
        crate->energy = 60;
        crate->mass = 25;
        crate->death_particle = "splinters";
    }
    BrushShape pyramid;
    pyramid.type = BT_PYRAMID;
    pyramid.segment_count = 4;
    pyramid.bb = MakeBox({-200, 0, -920}, {-120, 60, -840});
    pyramid.pivot = {-160, 30, -880};
    level.AddShape(pyramid, STEEL);
}

static void PlaceThings(LevelBuilder& level) {
    level.AddEntity("ambient", {0, 280, 0}, "world");
    level.AddEntity("environment", {64, 280, 0}, "world");
    level.AddEntity("sound_effector", {-64, 280, 0}, "world");
    level.AddEntity("respawn_point", {-400, 0, 0});
    level.AddEntity("actor", {1300, 0, 0}, "librarian");
    level.AddEntity("corona", {0, 280, 60});
    level.AddEntity("particle", {0, 48, 40});
    level.AddEntity("camera", {-440, 120, -340}, "opening_shot");
}

bool MakeLevel(std::string& error) {
    MaterialLibrary materials;
    materials.ParseTextures();
    EntityParser parser("Marrowstead\\entities.def");
    World world(&materials);
    LevelBuilder level(world, parser);
    BuildHall(level);
    BuildLibrary(level);
    BuildChapel(level);
    BuildCrypt(level);
    BuildWorkshop(level);
    PlaceThings(level);
    if (level.Failed()) {
        error = "the level asks for a material or an entity that the sample lacks";
        return false;
    }
    world.map_file = "abbey";
    world.map_name = "The Ruined Abbey";
    world.mp_games = {"Deathmatch", "Team Deathmatch"};
    ProjectViews views;
    views.perspective.camera_position = {-440, 160, -340};
    views.perspective.camera_rotation = {-0.05f, -0.9f, 0};
    for (VIEWINFO* view : {&views.top, &views.front, &views.left}) {
        view->zoom_out = 4;
        view->view_position[0] = view->view_position[1] = -256;
    }
    return SaveProject("Marrowstead\\Projects\\abbey.msp", world, views, false, error);
}
