// The second sample level: a priory of twelve rooms and a yard, divided into cells. Each doorway has a portal and each
// room an eye; one room with a partition has two that are linked.
#include <array>

#include "LevelBuilder.h"
#include "Sample.h"
#include "definitions/MaterialLibrary.h"
#include "persistence/Project.h"

namespace {

constexpr int COLUMNS = 4, ROWS = 3;
constexpr float ROOM = 384, HEIGHT = 224, STEP = ROOM + 2 * WALL; // rooms stand wall to wall
constexpr float DOOR_WIDTH = 96, DOOR_HEIGHT = 144, SEAL = 2;     // a portal reaches this far into the walls
constexpr float YARD_DEPTH = 768, YARD_WALL = 112;
constexpr int YARD_COLUMN = 1; // the room that opens to the yard

const Finish FLOORS[] = {{"concrete", "concrete"}, {"wood", "planks"}, {"brick", "brick_old"}};
const Finish WALLS[] = {{"brick", "brick_red"}, {"plaster", "plaster"}, {"brick", "brick_old"}, {"plaster", "plaster"}};
const Finish CEILING{"wood", "planks"}, GRASS{"ground", "meadow"}, STEEL{"metal", "steel"}, PLANKS{"wood", "planks"};

class Priory {
public:
    Priory(World& level_world, EntityParser& parser, bool with_faults)
        : world(level_world), level(level_world, parser), broken(with_faults) {}

    bool Build() {
        for (int j = 0; j < ROWS; ++j)
            for (int i = 0; i < COLUMNS; ++i)
                BuildRoom(i, j);
        BuildYard();
        for (int j = 0; j < ROWS; ++j)
            for (int i = 0; i + 1 < COLUMNS; ++i)
                ClosePassage(i, j, true);
        for (int j = 0; j + 1 < ROWS; ++j)
            for (int i = 1; i < COLUMNS - 1; ++i)
                ClosePassage(i, j, false);
        PlaceThings();
        if (broken)
            BreakIt();
        return !level.Failed();
    }

private:
    static D3DVECTOR Low(int i, int j) { return {static_cast<float>(i) * STEP, 0, static_cast<float>(j) * STEP}; }
    static D3DVECTOR Middle(int i, int j) { return Low(i, j) + D3DVECTOR{ROOM / 2, 0, ROOM / 2}; }
    static bool DoorNorth(int i, int j) {
        return i >= 1 && i < COLUMNS - 1 && j >= 0 && j + 1 < ROWS;
    } // between rows j and j + 1
    Entity*& Eye(int i, int j) { return eyes[static_cast<size_t>(j * COLUMNS + i)]; }

    void BuildRoom(int i, int j) {
        const D3DVECTOR lo = Low(i, j), mid = Middle(i, j);
        Room room{lo, lo + D3DVECTOR{ROOM, HEIGHT, ROOM}, FLOORS[(i + j) % 3], WALLS[i], CEILING, {}, false};
        const auto open = [&](Side side, float middle) {
            room.openings.push_back({side, middle, DOOR_WIDTH, 0, DOOR_HEIGHT});
        };
        if (i + 1 < COLUMNS)
            open(Side::East, mid.z);
        if (i > 0)
            open(Side::West, mid.z);
        if (DoorNorth(i, j))
            open(Side::North, mid.x);
        if (DoorNorth(i, j - 1) || (j == 0 && i == YARD_COLUMN))
            open(Side::South, mid.x);
        level.AddRoom(room);
        const uint32_t tints[] = {0xFFB868, 0xFFD8B0, 0xB0C8FF};
        for (const float side : {-1.0f, 1.0f})
            level.AddLight({mid.x + side * 120, 180, mid.z + side * 90}, 340, 0.8f, tints[(i * 2 + j) % 3]);
        Eye(i, j) = level.AddEntity("eye", {mid.x, 110, mid.z});
        if (j == 2)
            level.AddColumn({mid.x, 0, mid.z + 110}, HEIGHT, 24, {"plaster", "plaster"});
        if ((i + j) % 2 == 0)
            if (Entity* ambient = level.AddEntity("ambient", {mid.x - 60, 190, mid.z}))
                ambient->GetParameterStr("intensity")->p_float = 0.2f + 0.05f * static_cast<float>(i);
    }

    // The portal of the doorway from room (i, j) to the next one eastward or northward, in the middle of the two walls.
    void ClosePassage(int i, int j, bool eastward) {
        const D3DVECTOR mid = Middle(i, j);
        const float edge = DOOR_WIDTH / 2 + SEAL, centre = ROOM / 2 + WALL, thin = 4;
        const D3DVECTOR min = eastward ? D3DVECTOR{mid.x + centre - thin, -SEAL, mid.z - edge}
                                       : D3DVECTOR{mid.x - edge, -SEAL, mid.z + centre - thin};
        const D3DVECTOR max = eastward ? D3DVECTOR{mid.x + centre + thin, DOOR_HEIGHT + SEAL, mid.z + edge}
                                       : D3DVECTOR{mid.x + edge, DOOR_HEIGHT + SEAL, mid.z + centre + thin};
        if (broken && i == 2 && j == 2 && eastward)
            return; // a doorway without a portal: both rooms see into each other
        if (Brush* portal = level.AddPortal(min, max))
            portal->name = "portal";
    }

    void BuildYard() {
        const D3DVECTOR mid = Middle(YARD_COLUMN, 0);
        Room yard{{mid.x - YARD_DEPTH / 2, 0, -2 * WALL - YARD_DEPTH},
                  {mid.x + YARD_DEPTH / 2, YARD_WALL, -2 * WALL},
                  GRASS,
                  {"brick", "brick_old"},
                  GRASS,
                  {},
                  true};
        // The north wall is as high as the priory, so that nothing of it shows above.
        level.AddRoom({yard.min,
                       yard.max,
                       yard.floor,
                       yard.walls,
                       yard.ceiling,
                       {{Side::North, mid.x, YARD_DEPTH, 0, YARD_WALL}},
                       true});
        level.AddBox({yard.min.x - WALL, 0, -2 * WALL}, {mid.x - DOOR_WIDTH / 2, HEIGHT + WALL, -WALL}, WALLS[0]);
        level.AddBox({mid.x + DOOR_WIDTH / 2, 0, -2 * WALL}, {yard.max.x + WALL, HEIGHT + WALL, -WALL}, WALLS[0]);
        level.AddBox({mid.x - DOOR_WIDTH / 2, DOOR_HEIGHT, -2 * WALL}, {mid.x + DOOR_WIDTH / 2, HEIGHT + WALL, -WALL},
                     WALLS[0]);
        level.AddPortal({mid.x - DOOR_WIDTH / 2 - SEAL, -SEAL, -WALL - 4},
                        {mid.x + DOOR_WIDTH / 2 + SEAL, DOOR_HEIGHT + SEAL, -WALL + 4});
        yard_eye = level.AddEntity("eye", {mid.x, 90, -2 * WALL - YARD_DEPTH / 2});
        for (const float side : {-1.0f, 1.0f})
            level.AddLight({mid.x + side * 200, 200, -400}, 800, 0.9f, 0xE8F0FF);
        if (Brush* sky = level.AddBox({-2048, -512, -2560}, {3072, 1536, 2560}, {"plaster", "plaster"}))
            sky->properties = BP_ENVIRONMENT;
        level.AddEntity("environment", {mid.x + 60, 90, -300}, "world");
        level.AddEntity("particle", {mid.x - 100, 40, -500});
        // A hedge with an occluder inside, told to the yard's eye.
        level.AddBox({mid.x - 200, 0, -620}, {mid.x + 200, 96, -588}, GRASS);
        if (Brush* occluder = level.AddOccluder({mid.x - 192, 4, -616}, {mid.x + 192, 92, -592}); occluder && yard_eye)
            occluder->AddLinkedObjectID(yard_eye->GetObjectID());
    }

    void PlaceThings() {
        level.AddEntity("ambient", Middle(1, 0) + D3DVECTOR{0, 190, 60}, "world");
        level.AddEntity("sound_effector", Middle(1, 0) + D3DVECTOR{60, 120, 0}, "world");
        level.AddEntity("sound_effector", Middle(3, 2) + D3DVECTOR{60, 120, 0}, "crypt");
        level.AddEntity("corona", Middle(2, 0) + D3DVECTOR{0, 180, 0});
        level.AddEntity("respawn_point", Middle(0, 0) + D3DVECTOR{0, 8, 0});
        BuildPartition();
        BuildDoor();
        // A railing that can be seen through.
        if (Brush* rail =
                level.AddBox(Middle(3, 0) + D3DVECTOR{-80, 0, 40}, Middle(3, 0) + D3DVECTOR{80, 60, 44}, STEEL)) {
            rail->name = "rail";
            rail->properties = BP_SEE_THROUGH;
        }
        // A trigger: its brush has no picture and stands in no cell.
        Entity* trigger = level.AddEntity("box_trigger", Middle(0, 1) + D3DVECTOR{0, 60, 0}, "bell_trigger");
        if (Brush* volume =
                level.AddBox(Middle(0, 1) + D3DVECTOR{-40, 0, -40}, Middle(0, 1) + D3DVECTOR{40, 100, 40}, STEEL);
            volume && trigger) {
            volume->ForEachSurface([](Surface& surface, int, bool) { surface.texture.index = 0; });
            volume->AddLinkedObjectID(trigger->GetObjectID());
            trigger->GetParameterStr("commands")->p_text = "PlaySound bell 100";
        }
    }

    // A room with a partition: one eye cannot see all of it, so a second one is linked.
    void BuildPartition() {
        const D3DVECTOR mid = Middle(2, 1);
        level.AddBox(mid + D3DVECTOR{-ROOM / 2, 0, 60}, mid + D3DVECTOR{-60, HEIGHT, 76}, PLANKS);
        level.AddBox(mid + D3DVECTOR{60, 0, 60}, mid + D3DVECTOR{ROOM / 2, HEIGHT, 76}, PLANKS);
        Entity* second = level.AddEntity("eye", mid + D3DVECTOR{0, 110, 130});
        if (second && Eye(2, 1))
            second->AddLinkedObjectID(Eye(2, 1)->GetObjectID());
        level.AddBox(mid + D3DVECTOR{-150, 0, 110}, mid + D3DVECTOR{-110, 40, 150},
                     PLANKS); // only the second eye sees it
    }

    void BuildDoor() {
        const D3DVECTOR mid = Middle(1, 1);
        Entity* door = level.AddEntity("door", mid + D3DVECTOR{ROOM / 2 - 20, 60, 0}, "oak_door");
        if (Brush* leaf = level.AddBox(mid + D3DVECTOR{ROOM / 2 + 2, 0, -DOOR_WIDTH / 2},
                                       mid + D3DVECTOR{ROOM / 2 + 8, DOOR_HEIGHT, DOOR_WIDTH / 2}, PLANKS);
            leaf && door) {
            leaf->name = "oak_door_leaf";
            leaf->properties = BP_DYNAMIC;
            leaf->AddLinkedObjectID(door->GetObjectID());
        }
    }

    // One fault of each kind. The doorway without a portal, above, shows portals to two cells, and what may stand in
    // one cell only stands in two.
    void BreakIt() {
        if (Eye(0, 2)) { // a room without an eye: its portal has no cell on that side, and its lights stand nowhere
            world.DeleteEntityByID(Eye(0, 2)->GetObjectID());
            Eye(0, 2) = nullptr;
        }
        if (Eye(0, 0) && Eye(1, 0)) // two rooms in one cell: the portal between them has it on both sides
            Eye(0, 0)->AddLinkedObjectID(Eye(1, 0)->GetObjectID());
        level.AddEntity("sound_effector", Middle(2, 2) + D3DVECTOR{120, 110, 0}, "seen_twice");
    }

    World& world;
    LevelBuilder level;
    bool broken;
    std::array<Entity*, static_cast<size_t>(COLUMNS) * ROWS> eyes{};
    Entity* yard_eye = nullptr;
};

bool MakePrioryLevel(const MaterialLibrary& materials, EntityParser& parser, bool broken, std::string& error) {
    World world(&materials);
    if (!Priory(world, parser, broken).Build()) {
        error = "the priory asks for a material or an entity that the sample lacks";
        return false;
    }
    const std::string name = broken ? "priory-broken" : "priory";
    world.map_file = name;
    world.map_name = broken ? "The Priory, Broken" : "The Priory";
    world.mp_games = {"Deathmatch"};
    ProjectViews views;
    views.perspective.camera_position = {ROOM / 8, HEIGHT / 2, ROOM / 8};
    views.perspective.camera_rotation = {-0.1f, -PI / 4, 0};
    for (VIEWINFO* view : {&views.top, &views.front, &views.left}) {
        view->zoom_out = 4;
        view->view_position[0] = -150;
        view->view_position[1] = -350;
    }
    return SaveProject("Marrowstead\\Projects\\" + name + ".msp", world, views, false, error);
}

} // namespace

bool MakePriory(std::string& error) {
    MaterialLibrary materials;
    materials.ParseTextures();
    EntityParser parser("Marrowstead\\entities.def");
    return MakePrioryLevel(materials, parser, false, error) && MakePrioryLevel(materials, parser, true, error);
}
