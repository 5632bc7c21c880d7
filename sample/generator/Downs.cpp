// The third sample level: open downs about a tarn. A terrain from a height map, posts with hanging cables, decals on a
// hut and on the ground, signposts placed from a prefab, and a flight of the camera with its tracklist.
#include <algorithm>
#include <cmath>

#include "Canvas.h"
#include "LevelBuilder.h"
#include "Sample.h"
#include "definitions/MaterialLibrary.h"
#include "definitions/Track.h"
#include "foundation/Paths.h"
#include "persistence/MovieFile.h"
#include "persistence/Project.h"
#include "render/Textures.h"
#include "scene/FrontEnd.h"
#include "scene/MoviePath.h"

namespace {

constexpr float HALF_SIDE = 2048, RISE = 640; // of the terrain; RISE: the height of white
constexpr int MAP_SIDE = 129;                 // pixels of the height map
constexpr const char* HEIGHT_MAP = "Textures\\terrain\\downs.tga";
constexpr const char* SIGNPOST = "Marrowstead\\Prefabs\\yard\\signpost.mpf";
constexpr const char* FLIGHT = "Anim\\flight.mvi";

const Finish GRASS{"ground", "meadow", 4}, PLANKS{"wood", "planks"}, OLD_BRICK{"brick", "brick_old"},
    PLASTER{"plaster", "plaster"}, STEEL{"metal", "steel"};

// Hills toward the edges, flat ground in the middle.
float HeightShare(float u, float v) {
    const float x = 2 * u - 1, z = 2 * v - 1, from_middle = std::sqrt(x * x + z * z);
    const float hills = Turbulence(u, v, 4, 4, 71) * std::min(1.0f, from_middle * 1.4f);
    return std::clamp(0.12f + 0.75f * hills * hills + 0.25f * std::max(0.0f, from_middle - 0.7f), 0.0f, 1.0f);
}

// The pivot from which a prefab is measured, for want of an editor.
class PivotAt : public FrontEnd {
public:
    explicit PivotAt(const D3DVECTOR& at) : pivot(at) { SetFrontEnd(this); }
    ~PivotAt() override { SetFrontEnd(nullptr); }
    D3DVECTOR SelectionPivot() const override { return pivot; }

private:
    D3DVECTOR pivot;
};

class Downs {
public:
    Downs(World& level_world, MaterialLibrary& library, EntityParser& definitions)
        : world(level_world), materials(library), parser(definitions), level(level_world, definitions) {}

    bool Build(std::string& error) {
        if (!BuildGround(error) || !PlaceSignposts(error))
            return false;
        BuildHut();
        HangCables();
        PlaceDecals();
        level.AddEntity("environment", OnGround(60, 60, 90), "world");
        level.AddEntity("ambient", OnGround(0, 120, 200), "world");
        level.AddEntity("respawn_point", OnGround(-60, -200, 8));
        for (const float side : {-1.0f, 1.0f})
            level.AddLight({side * 900, 1800, -700}, 5200, side < 0 ? 0.9f : 0.5f, side < 0 ? 0xFFF0D8 : 0xC8D8FF);
        if (Brush* sky = level.AddBox({-6000, -2000, -6000}, {6000, 4000, 6000}, PLASTER))
            sky->properties = BP_ENVIRONMENT;
        camera = level.AddEntity("camera", OnGround(-700, -700, 200), "flight");
        if (level.Failed())
            error = "the downs ask for a material or an entity that the sample lacks";
        return !level.Failed();
    }

    // Of the camera around the hut, looking at it all the time.
    bool WriteFlight(std::string& error) {
        constexpr int POINTS = 8;
        for (int i = 0; i <= POINTS; ++i) {
            const float angle = TWO_PI * static_cast<float>(i) / POINTS;
            Entity* point =
                AddPoint("object_point", OnGround(900 * std::cos(angle), 900 * std::sin(angle), 260), camera->path);
            if (!point)
                return false;
            point->GetParameterStr("speed")->p_float = 360;
            point->GetParameterStr("rotation")->p_float = 8 * std::sin(angle);
            if (i == 0)
                point->GetParameterStr("ease_to")->p_float = PATH_LOOP;
        }
        AddPoint("target_point", OnGround(0, 0, 90), camera->target_path);
        AddPoint("target_point", OnGround(120, 0, 60), camera->target_path);
        return WriteMovie(FLIGHT, MoviePathsOf(world), error);
    }

private:
    D3DVECTOR OnGround(float x, float z, float above) const {
        const float u = (x + HALF_SIDE) / (2 * HALF_SIDE), v = (HALF_SIDE - z) / (2 * HALF_SIDE);
        return {x, HeightShare(u, v) * RISE + above, z};
    }
    D3DVECTOR Box(const D3DVECTOR& foot, float x, float y, float z) const { return foot + D3DVECTOR{x, y, z}; }

    bool BuildGround(std::string& error) {
        TerrainShape shape;
        shape.heightmap = HEIGHT_MAP;
        shape.size_x = shape.size_z = static_cast<int>(2 * HALF_SIDE);
        shape.size_y = static_cast<int>(RISE);
        shape.seg_x = shape.seg_y = 4;
        shape.detail = 64;
        if (!world.GenerateTerrain(shape, error))
            return false;
        for (const auto& b : world.brush)
            level.Paint(*b, GRASS);
        return true;
    }

    // A post with a board and a lamp, saved as a prefab and placed three times.
    bool PlaceSignposts(std::string& error) {
        MakeFolders("Marrowstead/Prefabs/yard");
        const int first = world.GetBrushCount();
        Brush* post = level.AddBox({-4, 0, -4}, {4, 96, 4}, PLANKS);
        Brush* board = level.AddBox({-40, 64, -6}, {40, 88, -4}, PLANKS);
        Entity* light = level.AddLight({0, 104, 0}, 260, 0.7f, 0xFFB868);
        level.AddLamp(light, "signpost_lamp");
        if (level.Failed())
            return false;
        post->name = "signpost";
        board->name = "signpost_board";
        for (int b = first; b < world.GetBrushCount(); ++b)
            world.SetBrushSelection(b, true);
        world.entity_selection.AddItem(world.GetEntityIndex(light));
        world.CreateGroup();
        const PivotAt pivot({0, 0, 0});
        if (!world.SavePrefab(SIGNPOST, "A signpost with a lamp; its pivot is at its foot.", error))
            return false;
        world.DeleteSelection();
        for (const D3DVECTOR& foot : {OnGround(-320, -260, 0), OnGround(340, 220, 0), OnGround(-420, 360, 0)})
            if (!world.PlacePrefab(SIGNPOST, foot, materials, parser, error))
                return false;
        world.ClearSelection();
        return true;
    }

    void BuildHut() {
        const D3DVECTOR foot = OnGround(0, 0, -24);
        level.AddBox(Box(foot, -96, 0, -80), Box(foot, 96, 130, 80), OLD_BRICK);
        BrushShape roof;
        roof.type = BT_PYRAMID;
        roof.segment_count = 4;
        roof.bb = MakeBox(Box(foot, -130, 130, -112), Box(foot, 130, 220, 112));
        roof.pivot = Box(foot, 0, 175, 0);
        level.AddShape(roof, PLANKS);
        BrushShape lantern;
        lantern.type = BT_CUSTOM;
        lantern.view = 1;
        lantern.custom = "Marrowstead\\Brushes\\lights\\lamp.msh";
        lantern.bb = MakeBox(Box(foot, -12, 96, -112), Box(foot, 12, 128, -88));
        lantern.pivot = Box(foot, 0, 112, -100);
        level.AddShape(lantern, {"brushes", "lamp_iron"});
        level.AddLight(Box(foot, 0, 90, -110), 380, 0.8f, 0xFFB868);
    }

    // From post to post, with more and more slack.
    void HangCables() {
        Entity* before = nullptr;
        for (int i = 0; i < 4; ++i) {
            const D3DVECTOR foot = OnGround(-600 + 400 * static_cast<float>(i), 520, -16);
            level.AddBox(Box(foot, -6, 0, -6), Box(foot, 6, 210, 6), STEEL);
            Entity* end = level.AddEntity("cable", Box(foot, 0, 206, 0));
            if (!end)
                return;
            end->GetParameterStr("length")->p_float = -2.0f - 4.0f * static_cast<float>(i);
            end->GetParameterStr("rigidity")->p_float = 200;
            end->GetParameterStr("gravity")->p_float = 8;
            if (before)
                before->AddLinkedObjectID(end->GetObjectID());
            before = end;
        }
    }

    void AddDecal(const char* texture, const D3DVECTOR& at, const D3DVECTOR& normal, float side, float degrees) {
        auto decal = std::make_unique<DecalTemplate>();
        decal->texture = crTGet("Textures\\decals", texture, TL_MATERIAL);
        decal->color = MakeColor(255, 255, 255, 255);
        decal->x_size = decal->y_size = side;
        decal->o_position = at;
        decal->o_normal = normal;
        decal->o_rotation = degrees;
        decal->id = world.last_decal_id + 1;
        world.AddNewDecal(std::move(decal));
    }

    void PlaceDecals() {
        const D3DVECTOR foot = OnGround(0, 0, -24);
        AddDecal("moss", Box(foot, -50, 50, -80), {0, 0, -1}, 72, 0);
        AddDecal("moss", Box(foot, 60, 40, -80), {0, 0, -1}, 56, 30);
        AddDecal("runes", Box(foot, 0, 70, -80), {0, 0, -1}, 48, 0);
        AddDecal("runes", OnGround(0, -260, 0), {0, 1, 0}, 160, 20); // a ring in the grass
    }

    Entity* AddPoint(const char* definition, const D3DVECTOR& position, SimpleList<uint32_t>& list) {
        Entity* point = level.AddEntity(definition, position);
        if (point) {
            point->path_parent_id = camera->GetObjectID();
            list.Add(point->GetObjectID());
        }
        return point;
    }

    World& world;
    MaterialLibrary& materials;
    EntityParser& parser;
    LevelBuilder level;
    Entity* camera = nullptr;
};

bool WriteTracks(std::string& error) {
    TrackList tracks;
    tracks.m_max = 30;
    STrackLine camera{{}, "Camera", 0x60C0FF}, voice{{}, "Voice", 0xFFC060};
    camera.AddKey({0, 0x60C0FF, "the flight begins", "StartMovie \"flight\""});
    camera.AddKey({16, 0x60C0FF, "and ends", ""});
    voice.AddKey({2.5f, 0xFFC060, "a greeting", "ActorTalk monk greeting.wav"});
    tracks.m_track_lines = {camera, voice};
    return SaveTrackList("Anim\\flight.trk", tracks, error);
}

} // namespace

bool MakeDownsPictures() {
    Canvas map(MAP_SIDE, MAP_SIDE);
    map.Paint([](float u, float v) { return Pixel{0, 0, 0, HeightShare(u, v)}; });
    Canvas moss(64, 64), runes(128, 128);
    moss.Paint([](float u, float v) {
        const float r = std::hypot(u - 0.5f, v - 0.5f) * 2, grain = Turbulence(u, v, 8, 3, 91);
        return Mix({0.1f, 0.22f, 0.06f, 0}, {0.25f, 0.4f, 0.15f, 0.9f}, std::clamp((1 - r) * 2.5f * grain, 0.0f, 1.0f));
    });
    // Dark on white: multiplied with what lies below.
    runes.Paint([](float u, float v) {
        const float x = u - 0.5f, y = v - 0.5f, r = std::hypot(x, y), spokes = std::cos(6 * std::atan2(y, x));
        const bool ring = std::fabs(r - 0.44f) < 0.025f || std::fabs(r - 0.2f) < 0.02f;
        const bool spoke = r > 0.2f && r < 0.44f && spokes > 0.96f;
        return ring || spoke ? Pixel{0.35f, 0.2f, 0.15f} : Pixel{1, 1, 1};
    });
    return map.SaveTarga(HEIGHT_MAP, 8) && moss.SaveTarga("Textures\\decals\\moss.tga", 32) &&
           runes.SaveTarga("Textures\\decals\\runes.tga", 24);
}

bool MakeDowns(std::string& error) {
    MaterialLibrary materials;
    materials.ParseTextures();
    EntityParser parser("Marrowstead\\entities.def");
    World world(&materials);
    Downs downs(world, materials, parser);
    if (!downs.Build(error))
        return false;
    world.map_file = "downs";
    world.map_name = "The Downs";
    world.mp_games = {"Deathmatch"};
    ProjectViews views;
    views.perspective.camera_position = {-520, 420, -700};
    views.perspective.camera_rotation = {-0.3f, -0.6f, 0};
    for (VIEWINFO* view : {&views.top, &views.front, &views.left}) {
        view->zoom_out = 8;
        view->view_position[0] = view->view_position[1] = -256;
    }
    return SaveProject("Marrowstead\\Projects\\downs.msp", world, views, false, error) && downs.WriteFlight(error) &&
           WriteTracks(error);
}
