// Decals in the level: placing, editing and undoing them, and what becomes of them when brushes change.
#include <functional>

#include <gtest/gtest.h>

#include "foundation/Desktop.h"
#include "foundation/TempFolder.h"
#include "render/Device.h"
#include "render/Matrix.h"
#include "render/TestPictures.h"
#include "render/Textures.h"
#include "scene/DecalCutting.h"
#include "scene/SceneState.h"
#include "scene/Scenes.h"
#include "scene/Undo.h"

namespace {

constexpr int SIDE = 512; // pixels of the view
constexpr D3DVECTOR CAMERA{0, 0, -256};

// The camera looks along z; on the plane z = 0 a pixel is one unit.
constexpr POINT At(int x, int y) { return {SIDE / 2 + x, SIDE / 2 - y}; }

class DecalEditing : public testing::Test {
protected:
    DecalEditing() : current(folder.Path()) {
        WriteBytes("Textures/wall/sign.tga", TargaBytes(32, 16, 24, 0xFF808080));
        crSetViewport(0, 0, SIDE, SIDE);
        crMCurrent(CRM_VIEW);
        crMViewTo(CAMERA, {0, 0, 0}, {0, 1, 0}, 0);
        crMCurrent(CRM_PROJ);
        crMSetIdentity();
        crMProj(PI / 2, 1, 10, 10000);
        front_end.full_undo = true;
        wall = &AddSelected(world, BoxBrush({-100, -100, 0}, {100, 100, 20}));
        world.ClearSelection();
    }
    ~DecalEditing() override {
        for (const uint32_t matrix : {CRM_VIEW, CRM_PROJ}) {
            crMCurrent(matrix);
            crMSetIdentity();
        }
        crMCurrent(CRM_WORLD);
        crSetViewport(-1, 0, 0, 0);
    }

    void Place(int x, int y) { world.PlaceDecal(At(x, y), CAMERA, "wall", "sign"); }
    DecalTemplate& Template(size_t i) { return *world.decal_template.at(i); }
    // Templates with what is cut of each, and what is selected.
    std::string State() {
        std::string text;
        for (const auto& t : world.decal_template) {
            text += Format("%u at %.3f %.3f %.3f by %.2f %.2f turned %.2f color %08x:", t->id, t->o_position.x,
                           t->o_position.y, t->o_position.z, t->x_size, t->y_size, t->o_rotation, t->color.dw_color);
            for (const auto& b : world.brush)
                for (const auto& d : b->decal_list)
                    if (d->id == t->id)
                        text +=
                            Format(" %u[%d] %zu %.3f", b->GetObjectID(), d->owner_surface, d->tris.size(), d->xyz[0].x);
            text += world.decal_selection.TestItem(static_cast<int>(t->id)) != -1 ? " selected\n" : "\n";
        }
        return text + Format("last %u", world.last_decal_id);
    }
    size_t DecalsOn(const Brush& b) { return b.decal_list.size(); }
    bool Undo() { return world.undo_buffer.UndoLastAction(world, world.redo_buffer); }
    bool Redo() { return world.redo_buffer.UndoLastAction(world, world.undo_buffer); }
    template <class Fn>
    void Step(Fn&& change) {
        const ChangeRecord record(world, "Change.", ChangeScope::Added);
        change();
    }

    TempFolder folder;
    CurrentFolder current;
    HeadlessDesktop desktop;
    UndoFrontEnd front_end;
    World world;
    Brush* wall;
};

} // namespace

TEST_F(DecalEditing, PlacingTakesTheTextureAndFollowsTheSelected) {
    world.decal_color = MakeColor(10, 20, 30, 255);
    Place(16, 8);
    ASSERT_EQ(world.decal_template.size(), 1u);
    ExpectNear(Template(0).o_position, {16, 8, 0}, 0.01f);
    ExpectNear(Template(0).o_normal, {0, 0, -1}, 1e-5f);
    EXPECT_EQ(Template(0).x_size, 16); // half of 32 by 16 texels
    EXPECT_EQ(Template(0).y_size, 8);
    EXPECT_EQ(Template(0).o_rotation, 0);
    EXPECT_EQ(Template(0).color, MakeColor(10, 20, 30, 255));
    EXPECT_EQ(Template(0).id, 1u);
    EXPECT_EQ(Items(world.decal_selection), std::vector<int>{1});
    EXPECT_GE(DecalsOn(*wall), 1u);
    EXPECT_EQ(front_end.redrawn_views.back(), VIEW_PERSPECTIVE);

    Template(0).color = MakeColor(1, 1, 1, 255);
    Template(0).x_size = 30, Template(0).o_rotation = 45;
    world.decal_color = MakeColor(9, 9, 9, 255);
    Place(-40, 40);
    ASSERT_EQ(world.decal_template.size(), 2u);
    EXPECT_EQ(Template(1).x_size, 30);
    EXPECT_EQ(Template(1).y_size, 8);
    EXPECT_EQ(Template(1).o_rotation, 45);
    EXPECT_EQ(Template(1).color, MakeColor(1, 1, 1, 255));
    EXPECT_EQ(world.decal_color, MakeColor(1, 1, 1, 255));
    EXPECT_EQ(Items(world.decal_selection), std::vector<int>{2});

    Place(200, 0); // beside the wall
    EXPECT_EQ(world.decal_template.size(), 2u);
    wall->is_hidden = true;
    Place(0, 0);
    EXPECT_EQ(world.decal_template.size(), 2u);
    EXPECT_EQ(world.last_decal_id, 2u);
}

TEST_F(DecalEditing, IdsGoOnFromTheLastOneAndAreNeverSharedByANewDecal) {
    for (const uint32_t id : {5u, 3u}) {
        auto t = std::make_unique<DecalTemplate>();
        t->id = id;
        t->x_size = t->y_size = 10;
        t->o_normal = {0, 0, -1};
        world.AddNewDecal(std::move(t));
    }
    EXPECT_EQ(world.last_decal_id, 3u);
    Place(0, 0);
    EXPECT_EQ(world.last_decal_id, 4u);
    Place(0, 0);
    EXPECT_EQ(world.last_decal_id, 6u); // 5 is another's
}

TEST_F(DecalEditing, SelectionByTheRay) {
    Place(0, 0), Place(50, 0);
    Template(0).color = MakeColor(7, 7, 7, 255);
    const struct {
        int x, y;
        bool add;
        std::vector<int> selected;
    } cases[] = {{0, 0, false, {1}},  {50, 3, false, {2}},   {50, 20, false, {}},
                 {0, 0, true, {1}},   {50, 0, true, {1, 2}}, {0, 0, true, {2}},
                 {50, 20, true, {2}}, {200, 0, true, {2}},   {200, 0, false, {}}};
    for (const auto& c : cases) {
        front_end.redrawn_views.clear();
        world.SelectDecal(At(c.x, c.y), CAMERA, c.add);
        EXPECT_EQ(Items(world.decal_selection), c.selected) << c.x << " " << c.y;
        EXPECT_EQ(front_end.redrawn_views, std::vector<int>{VIEW_PERSPECTIVE});
        if (c.x == 0) {
            EXPECT_EQ(world.decal_color, MakeColor(7, 7, 7, 255));
        }
    }
}

TEST_F(DecalEditing, EditsActOnWhatIsSelectedAndMarkTheProject) {
    Place(0, 0), Place(50, 0);
    const std::string two = State();
    world.decal_selection.AddItem(1); // both: nothing to move or to copy
    front_end.dirty = 0;
    world.MoveDecal(At(0, 50), CAMERA);
    world.CopyDecal(At(0, 50), CAMERA);
    EXPECT_EQ(world.decal_template.size(), 2u);
    EXPECT_EQ(front_end.dirty, 0);

    world.SetDecalColor(MakeColor(0, 0, 255, 255));
    world.RotateDecal(-5), world.RotateDecal(-5);
    world.ScaleDecal(4, -3);
    EXPECT_EQ(front_end.dirty, 4);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(Template(i).color, MakeColor(0, 0, 255, 255));
        EXPECT_EQ(Template(i).o_rotation, -10);
        EXPECT_EQ(Template(i).x_size, 20);
        EXPECT_EQ(Template(i).y_size, 5);
    }
    world.decal_selection.RemoveItem(1);
    world.MoveDecal(At(60, 60), CAMERA);
    ExpectNear(Template(1).o_position, {60, 60, 0}, 0.01f);
    for (const auto& d : wall->decal_list)
        for (const D3DVECTOR& p : d->xyz) {
            EXPECT_TRUE(d->id != 2 || Magnitude(p - D3DVECTOR{60, 60, 0}) < 12)
                << "the mesh lies where the decal is now";
        }
    front_end.dirty = 0;
    world.MoveDecal(At(220, 0), CAMERA); // no hit
    EXPECT_EQ(front_end.dirty, 1);
    ExpectNear(Template(1).o_position, {60, 60, 0}, 0.01f);

    world.CopyDecal(At(-60, -60), CAMERA);
    ASSERT_EQ(world.decal_template.size(), 3u);
    EXPECT_EQ(Template(2).id, 3u);
    EXPECT_EQ(Template(2).o_rotation, -10);
    EXPECT_EQ(Template(2).x_size, 20);
    EXPECT_EQ(Items(world.decal_selection), std::vector<int>{3});

    world.decal_selection.ClearList();
    front_end.dirty = 0;
    world.RotateDecal(5), world.ScaleDecal(5, 5), world.DeleteDecalSelection();
    EXPECT_EQ(front_end.dirty, 0);
    EXPECT_EQ(world.decal_template.size(), 3u);
}

TEST_F(DecalEditing, ADecalScaledAwayOrDeletedIsGone) {
    Place(0, 0), Place(50, 0);
    world.ScaleDecal(-100, 0);
    ASSERT_EQ(world.decal_template.size(), 1u);
    EXPECT_EQ(Template(0).id, 1u);
    EXPECT_TRUE(Items(world.decal_selection).empty());
    world.decal_selection.AddItem(1);
    world.DeleteDecalSelection();
    EXPECT_TRUE(world.decal_template.empty());
    EXPECT_EQ(DecalsOn(*wall), 0u);
    EXPECT_TRUE(Items(world.decal_selection).empty());
}

TEST_F(DecalEditing, OnlyPlainBrushesBearDecals) {
    for (const BrushType type : {BT_PORTAL, BT_OCCLUDER}) {
        Brush& b = AddSelected(world, std::make_unique<Brush>(ShapeOf(type, {-50, -50, 0}, {50, 50, 40})));
        world.ClearSelection();
        Place(0, 0);
        EXPECT_EQ(DecalsOn(b), 0u);
    }
    Brush& custom = AddSelected(world, BoxBrush({-50, -50, 0}, {50, 50, 40}));
    custom.type = BT_CUSTOM;
    Brush& patch = AddSelected(world, std::make_unique<Brush>(ShapeOf(BT_PATCH, {-90, -90, 0}, {-40, -40, 2}, 4, 1)));
    world.ClearSelection();
    Place(0, 0);
    EXPECT_EQ(DecalsOn(custom), 0u);
    Place(-65, -65);
    EXPECT_GT(DecalsOn(patch), 0u);
    EXPECT_EQ(patch.decal_list[0]->owner, &patch);
}

TEST_F(DecalEditing, DecalsFollowTheSurfacesUnderThem) {
    Place(0, 0), Place(50, 0), Place(95, 0);
    wall->Move({0, 0, 2}, true); // still within reach
    EXPECT_EQ(world.decal_template.size(), 3u);
    for (const auto& d : wall->decal_list)
        for (const D3DVECTOR& p : d->xyz)
            EXPECT_EQ(p.z, 2);
    wall->Scale(MakeBox({-100, -100, 2}, {20, 100, 22}), MakeBox({-100, -100, 2}, {100, 100, 22}));
    ASSERT_EQ(world.decal_template.size(), 1u); // the others lie beside it now
    EXPECT_EQ(Template(0).id, 1u);
    wall->Move({0, 0, 50}, true);
    EXPECT_TRUE(world.decal_template.empty());
    EXPECT_EQ(DecalsOn(*wall), 0u);
}

TEST_F(DecalEditing, TheOtherTransformsCutAnew) {
    Place(0, 0);
    const auto front_is_gone = [&] { return world.decal_template.empty(); };
    wall->FlipNormals(); // the front faces away now
    EXPECT_TRUE(front_is_gone());
    wall->FlipNormals();
    Place(0, 0);
    wall->Rotate(PI / 2, VIEW_TOP, {0, 0, 0}, false); // a side of the wall, far from the decal
    EXPECT_TRUE(front_is_gone());
    wall->Rotate(-PI / 2, VIEW_TOP, {0, 0, 0}, false);
    Place(0, 0);
    wall->Transform(crTranslation({0, 0, 30}), true);
    EXPECT_TRUE(front_is_gone());
    wall->Transform(crTranslation({0, 0, -30}), true);
    Place(0, 0);
    world.SetBrushSelection(0, true);
    world.InitSOVertices();
    for (SO_VERTEX& v : world.so_vertex)
        v.selected = true;
    world.SOVertexMove({0, 0, 30});
    EXPECT_TRUE(front_is_gone());
}

TEST_F(DecalEditing, CurveDetailCutsAnew) {
    Brush& patch = AddSelected(world, std::make_unique<Brush>(ShapeOf(BT_PATCH, {-90, -90, -40}, {90, 90, -39}, 4, 1)));
    world.ClearSelection();
    Place(0, 0);
    ASSERT_GT(DecalsOn(patch), 0u);
    const auto points = [&patch] {
        size_t n = 0;
        for (const auto& d : patch.decal_list)
            n += d->xyz.size();
        return n;
    };
    world.ScaleDecal(60, 60);
    const size_t coarse = points();
    world.ChangeCurveDetail(true);
    EXPECT_GT(points(), coarse);
}

TEST_F(DecalEditing, EachEditIsOneStepBackAndForth) {
    std::vector<std::string> states = {State()};
    const auto edit = [&](auto&& change) {
        Step(change);
        states.push_back(State());
        EXPECT_NE(states.back(), states[states.size() - 2]);
    };
    edit([&] { Place(0, 0); });
    edit([&] { Place(50, 0); });
    edit([&] { world.MoveDecal(At(50, 50), CAMERA); });
    edit([&] { world.CopyDecal(At(-50, 50), CAMERA); });
    edit([&] { world.RotateDecal(30); });
    edit([&] { world.SetDecalColor(MakeColor(3, 4, 5, 255)); });
    edit([&] { world.ScaleDecal(10, 10), world.ScaleDecal(2, 2); });
    edit([&] { world.ScaleDecal(-300, 0); }); // it goes
    edit([&] {
        world.decal_selection.AddItem(1);
        world.DeleteDecalSelection();
    });
    edit([&] { world.ClearAllDecals(); });
    ASSERT_EQ(world.undo_buffer.GetActionCount(), static_cast<int>(states.size()) - 1);
    for (int round = 0; round < 2; ++round) {
        for (size_t i = states.size() - 1; i-- > 0;) {
            ASSERT_TRUE(Undo());
            EXPECT_EQ(State(), states[i]) << i;
        }
        for (size_t i = 1; i < states.size(); ++i) {
            ASSERT_TRUE(Redo());
            EXPECT_EQ(State().substr(0, State().find("last")), states[i].substr(0, states[i].find("last"))) << i;
        }
    }
    // Selecting is no step, nor is an edit of nothing.
    const int steps = world.undo_buffer.GetActionCount();
    Step([&] { world.RotateDecal(5); });
    Step([&] { world.SelectDecal(At(0, 0), CAMERA, false); });
    EXPECT_EQ(world.undo_buffer.GetActionCount(), steps);
}

TEST_F(DecalEditing, DecalsDieAndReturnWithTheirBrush) {
    Brush& other = AddSelected(world, BoxBrush({100, -100, 0}, {180, 100, 20}));
    world.ClearSelection();
    Place(0, 0), Place(96, 0), Place(140, 0); // on the wall, on both, on the other one
    const uint32_t other_id = other.GetObjectID();
    world.decal_selection.AddItem(1);
    const std::string before = State();
    ASSERT_GT(DecalsOn(other), 1u);
    for (const bool full : {true, false}) {
        front_end.full_undo = full;
        world.SetBrushSelection(0, true);
        auto deleted = std::make_unique<CUndoActionDelete>();
        world.AddSelectionToUndo(*deleted);
        world.AddUndoAction(std::move(deleted));
        world.DeleteSelection();
        ASSERT_EQ(world.decal_template.size(), 2u);
        EXPECT_EQ(Template(0).id, 2u);
        ASSERT_TRUE(Undo());
        world.ClearSelection();
        std::swap(world.brush[0], world.brush[1]); // it comes back at the end
        if (full) {
            EXPECT_EQ(State(), before);
            ASSERT_TRUE(Redo());
            EXPECT_EQ(world.decal_template.size(), 2u);
            ASSERT_TRUE(Undo());
            world.ClearSelection();
            std::swap(world.brush[0], world.brush[1]);
            EXPECT_EQ(State(), before);
        } else {
            EXPECT_EQ(world.decal_template.size(), 2u); // what still lives is cut on it, too
            EXPECT_GT(DecalsOn(*world.brush[0]), 0u);
        }
    }
    EXPECT_EQ(world.GetBrushFromID(other_id)->decal_list.size(), DecalsOn(other));
}

TEST_F(DecalEditing, AChangeOfABrushUndoneBringsBackItsDecals) {
    Place(0, 0), Place(50, 0);
    const std::string before = State();
    world.SetBrushSelection(0, true);
    {
        const ChangeRecord record(world, "Scale objects.");
        world.ScaleBrush(MakeBox({-100, -100, 0}, {20, 100, 20}), MakeBox({-100, -100, 0}, {100, 100, 20}));
    }
    ASSERT_EQ(world.decal_template.size(), 1u);
    ASSERT_TRUE(Undo());
    EXPECT_EQ(State(), before);
    ASSERT_TRUE(Redo());
    EXPECT_EQ(world.decal_template.size(), 1u);
    ASSERT_TRUE(Undo());
    EXPECT_EQ(State(), before);
}

TEST_F(DecalEditing, CollapsedBrushesKeepTheirDecals) {
    AddSelected(world, BoxBrush({100, -100, 0}, {180, 100, 20}));
    world.SetBrushSelection(0, true);
    world.material.resize(2);
    for (const auto& b : world.brush)
        b->ForEachSurface([](Surface& s, int, bool) { s.texture.index = 1; });
    Place(96, 0);
    Place(0, 0);
    world.Collapse();
    ASSERT_EQ(world.GetBrushCount(), 1);
    EXPECT_EQ(world.decal_template.size(), 2u);
    EXPECT_EQ(DecalsOn(*world.brush[0]), 3u); // one lies on two surfaces
}

TEST_F(DecalEditing, ATextureInUseByADecalStaysLoaded) {
    Place(0, 0);
    world.material.resize(2);
    world.material[1].texture_class = "wall";
    world.material[1].texture_name = "sign";
    world.material[1].texture_index = Template(0).texture;
    world.FlushUnusedMaterials();
    EXPECT_EQ(world.GetMaterialCount(), 1);
    ASSERT_NE(crTRecord(Template(0).texture), nullptr);
    world.decal_template.clear();
}

TEST_F(DecalEditing, TheTableHasALimit) {
    SetDesktop(&desktop);
    ForgetNotices();
    while (world.decal_template.size() < MAX_DECAL_TEMPLATES) {
        auto t = std::make_unique<DecalTemplate>();
        t->id = static_cast<uint32_t>(world.decal_template.size() + 1);
        world.decal_template.push_back(std::move(t));
    }
    Place(0, 0);
    EXPECT_EQ(world.decal_template.size(), static_cast<size_t>(MAX_DECAL_TEMPLATES));
    EXPECT_EQ(desktop.notices, std::vector<std::string>{"The level cannot hold more than 8192 decals"});
    SetDesktop(nullptr);
}

TEST_F(DecalEditing, MergedAndClonedBrushesKeepTheirDecalsThroughUndoAndRedo) {
    Brush& other = AddSelected(world, BoxBrush({100, -100, 0}, {300, 100, 20}));
    world.material.resize(2);
    world.material[1].material_name = "brick";
    for (Brush* b : {wall, &other})
        b->ForEachSurface([](Surface& surface, int, bool) { surface.texture.index = 1; });
    world.ClearSelection();
    Place(0, 0);
    Place(120, 0);
    Place(98, 50); // on both
    world.decal_selection.ClearList();
    world.undo_buffer.Empty();
    const auto select = [this](std::initializer_list<int> brushes) {
        world.ClearSelection();
        for (const int b : brushes)
            world.SetBrushSelection(b, true);
    };
    const struct {
        const char* what;
        std::function<void()> step;
    } steps[] = {
        {"merged",
         [&] {
             select({0, 1}), world.Collapse();
         }},
        {"cloned",
         [&] {
             select({0}), world.Clone(false), world.MoveBrush({8, 0, 0});
         }},
        {"cloned apart",
         [&] {
             select({0, 1}), world.Clone(false), world.MoveBrush({0, 0, 500});
         }},
        {"deleted in part", [&] { select({1}), world.DeleteSelection(); }},
    };
    const auto whole = [this] { return Format("%d brushes, ", world.GetBrushCount()) + State(); };
    const std::string first = whole();
    for (const auto& s : steps) {
        {
            const ChangeRecord record(world, s.what, ChangeScope::AllObjects);
            s.step();
        }
        const std::string after = whole();
        ASSERT_NE(after, first) << s.what;
        for (int round = 0; round < 2; ++round) {
            ASSERT_TRUE(world.undo_buffer.UndoLastAction(world, world.redo_buffer));
            EXPECT_EQ(whole(), first) << s.what << " undone";
            ASSERT_TRUE(world.redo_buffer.UndoLastAction(world, world.undo_buffer));
            EXPECT_EQ(whole(), after) << s.what << " redone";
        }
        ASSERT_TRUE(world.undo_buffer.UndoLastAction(world, world.redo_buffer));
        world.undo_buffer.Empty(), world.redo_buffer.Empty();
    }
}
