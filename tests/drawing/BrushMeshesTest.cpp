// What is drawn from the kept meshes is, pixel by pixel, what each brush draws for itself.
#include "drawing/BrushMeshes.h"

#include <optional>
#include <random>

#include "drawing/DrawingScope.h"
#include "drawing/PathDrawing.h"
#include "drawing/SolidPass.h"
#include "drawing/ViewSetup.h"
#include "drawing/WireDrawing.h"
#include "scene/FrontEnd.h"

namespace {

// Draws brush by brush, as the order of drawing is told.
void DrawPlainly(World& world, const DrawContext& context) {
    crMUpdate();
    if (context.view == VIEW_PERSPECTIVE && world.render_mode != 0) {
        PLANE planes[6];
        crGetClipPlanes(planes);
        std::vector<const Brush*> deferred;
        for (const auto& b : world.brush) {
            if (b->is_hidden || !context.filters.ShowsBrush(*b) || !b->Visible(planes))
                continue;
            if (b->IsPortalOrOccluder() || b->IsTransparent(world))
                deferred.push_back(b.get());
            else
                b->RenderSolid(world, context);
        }
        std::stable_sort(deferred.begin(), deferred.end(), [](const Brush* a, const Brush* b) {
            return a->DistanceFromCamera() > b->DistanceFromCamera();
        });
        for (const Brush* b : deferred)
            b->RenderSolid(world, context);
        return;
    }
    const auto draw = [&](bool selected, bool marked) {
        for (const auto& b : world.brush) {
            const bool is_marked = !selected && b->IsPortalOrOccluder();
            const bool shown = selected ? context.filters.show_brushes : context.filters.ShowsBrush(*b);
            if (!b->is_hidden && b->is_selected == selected && is_marked == marked && shown)
                b->RenderWire();
        }
    };
    draw(false, false);
    draw(false, true);
    draw(true, false);
}

class BrushMeshesTest : public ViewTest {
protected:
    BrushMeshesTest() {
        world.darkmap = MakeTexture(4, 4, std::vector<uint32_t>(16, 0xFF000000));
        world.material.resize(1);
        for (int row = 1; row <= 5; ++row) {
            MaterialRow& added = world.material.emplace_back();
            added.material_class = "Walls";
            added.material_name = added.texture_name = "m" + std::to_string(row);
            added.transparent = row == 5;
            added.texture_index = Noise(8u << row % 3, static_cast<uint32_t>(row));
        }
        world.lightmap_index = {Noise(16, 77), Noise(16, 78)};
        context.border_texture = Noise(8, 99);
        for (const uint32_t stage : {0u, 1u})
            criSetStageValue(stage, TSS_MAGFILTER, TF_LINEAR);
        crTextureAddress(TA_WRAP, TA_WRAP, 0);
        crTextureAddress(TA_CLAMP, TA_CLAMP, 1);
    }
    uint32_t Noise(uint32_t side, uint32_t seed) {
        std::vector<uint32_t> argb(side * side);
        for (uint32_t i = 0; i < argb.size(); ++i)
            argb[i] = (i + seed) * 2654435761u | 0x40000000;
        return MakeTexture(side, side, argb);
    }
    int Random(int count) { return static_cast<int>(engine() % static_cast<unsigned>(count)); }
    float Place(int reach) { return static_cast<float>(Random(2 * reach) - reach); }
    Brush& AnyBrush() { return *world.brush[static_cast<size_t>(Random(world.GetBrushCount()))]; }

    void AddBrush() {
        constexpr BrushType TYPES[] = {BT_BOX,   BT_BOX,     BT_CYLINDER, BT_CONE,
                                       BT_PATCH, BT_PYRAMID, BT_PORTAL,   BT_OCCLUDER};
        const D3DVECTOR min{Place(60), Place(60), Place(60)};
        BrushShape shape;
        shape.type = TYPES[Random(8)];
        shape.bb = MakeBox(min, min + D3DVECTOR{5 + Place(4), 10 + Place(9), 8 + Place(7)});
        shape.pivot = min;
        shape.color = {static_cast<float>(Random(5)) / 4, static_cast<float>(Random(5)) / 4, 1, 1};
        Brush* const brush = world.AddBrush(std::make_unique<Brush>(shape));
        brush->is_selected = false;
        brush->GenerateNewObjectID();
        brush->ForEachSurface([this](Surface& s, int, bool) {
            s.texture.index = Random(8) == 0 ? 5 : Random(5);
            s.texture.size = {16, 16};
            s.lightmap = Random(3) - 1;
            s.lightmap_info = {Random(3), 0.1f, 0.2f, 0.5f, 0.7f, -1};
        });
        brush->RemapAll();
    }
    void Select() {
        world.ClearSelection();
        for (int i = 0; i < 6; ++i)
            world.SetBrushSelection(Random(world.GetBrushCount()), true);
    }
    // One of the edits, as the editor makes them.
    void Edit() {
        if (world.brush_selection.GetItemCount() == 0)
            Select();
        Box box{}, moved;
        world.ComputeSelectionBox(box);
        moved = MakeBox(BoxMin(box), BoxMax(box) + D3DVECTOR{3, 2, 5});
        const auto name = "m" + std::to_string(1 + Random(4));
        last_edit = Random(25);
        switch (last_edit) {
        case 0:
            return world.MoveBrush({Place(9), Place(9), Place(9)});
        case 1:
            return world.ScaleBrush(moved, box);
        case 2:
            return world.RotateBrush(0.3f, Random(3));
        case 3:
            return world.ShearBrush(moved, box, Random(3), Random(4));
        case 4:
            return world.DeleteSelection();
        case 5:
            return world.Clone(true);
        case 6:
            return world.FlipNormals();
        case 7:
            return world.AlignVertices();
        case 8:
            return world.ChangeBrushColor({static_cast<float>(Random(3)) / 2, 1, 0, 1});
        case 9:
            return world.ChangeCurveDetail(Random(2) == 0);
        case 10:
            return world.HideSelected();
        case 11:
            return world.UnhideAll();
        case 12:
            return world.ChangeTextureToAll("Walls", name, "Walls", name);
        case 13:
            return world.RemoveTextureFromSurface("Walls", name.c_str());
        case 14: {
            TEX_INFO mapping;
            mapping.shift = {Place(9), Place(9)};
            mapping.rotation = Place(90);
            mapping.size = {16, 16};
            return world.RemapSurfaceToAll(mapping);
        }
        case 15:
            world.undo_buffer.UndoLastAction(world, world.redo_buffer);
            return;
        case 16:
            world.redo_buffer.UndoLastAction(world, world.undo_buffer);
            return;
        case 17: { // a surface, and what is done to it
            world.selected_surface_brush = Random(world.GetBrushCount());
            Brush& b = *world.brush[static_cast<size_t>(world.selected_surface_brush)];
            b.selected_surface = 0;
            b.selected_surface_curved = b.surfaces.empty();
            world.ChangeTexture("Walls", name, "Walls", name);
            world.FitTextureOnSurface(2, 3);
            return;
        }
        case 18:
            world.InitSOVertices();
            for (SO_VERTEX& v : world.so_vertex)
                v.selected = Random(3) == 0;
            return world.SOVertexMove({Place(3), Place(3), Place(3)});
        case 19:
            world.material[2].transparent = !world.material[2].transparent;
            return;
        case 20:
            return AddBrush();
        case 21: // as its properties change it, with nothing else
            AnyBrush().type = Random(2) == 0 ? BT_BOX : Random(2) == 0 ? BT_PORTAL : BT_OCCLUDER;
            return;
        case 22:
            AnyBrush().is_hidden = Random(2) == 0;
            return;
        case 23: { // a box that is none, as a damaged level may have it
            Brush& b = AnyBrush();
            b.bbox[static_cast<size_t>(Random(8))] = {Place(200), Place(200), Place(200)};
            return;
        }
        default:
            return Select();
        }
    }
    void ChangeView() {
        world.render_mode = Random(3);
        context.mask_enabled = Random(2) == 0;
        context.show_texture_border = Random(4) == 0;
        context.filters.show_brushes = Random(6) != 0;
        context.filters.show_portals = Random(3) != 0;
        context.filters.show_occluders = Random(3) != 0;
        if (const int view = Random(6); view < 3)
            SetView(view, Random(4) - 1);
        else
            SetCamera(static_cast<float>(40 + Random(120)));
    }
    // As it is drawn from what is kept, and brush by brush.
    void ExpectSamePictures(const std::string& when) {
        screen.NextFrame();
        world.RenderBrushes(context);
        const std::vector<uint32_t> kept = screen.Picture();
        screen.NextFrame();
        DrawPlainly(world, context);
        const std::vector<uint32_t> plain = screen.Picture();
        size_t different = 0;
        for (size_t i = 0; i < plain.size(); ++i)
            different += plain[i] != kept[i] ? 1 : 0;
        ASSERT_EQ(different, 0u) << when << ", edit " << last_edit << ", view " << context.view << ", mode "
                                 << world.render_mode;
    }
    // Meshes that are made anew by a redraw.
    uint32_t RebuildsOf() {
        const uint32_t before = BrushMesh::Rebuilds();
        screen.NextFrame();
        world.RenderBrushes(context);
        return BrushMesh::Rebuilds() - before;
    }

    std::mt19937 engine;
    int last_edit = -1;
};

} // namespace

TEST_F(BrushMeshesTest, RandomEditsShowAsIfNothingWereKept) {
    for (unsigned seed = 1; seed <= 6; ++seed) {
        engine.seed(seed);
        world.ClearSelection();
        world.brush.clear();
        world.undo_buffer.Empty();
        world.redo_buffer.Empty();
        world.material[2].transparent = false;
        for (int i = 0; i < 40; ++i)
            AddBrush();
        for (int step = 0; step < 60; ++step) {
            if (world.brush.empty())
                AddBrush();
            Edit();
            std::optional<DrawingScope> one_level;
            if (step % 4 != 0)
                one_level.emplace();
            for (int view = 0; view <= step % 3; ++view) {
                if (step % 3 == 0 || view > 0)
                    ChangeView();
                ASSERT_NO_FATAL_FAILURE(ExpectSamePictures("seed " + std::to_string(seed) + ", step " +
                                                           std::to_string(step) + ", " + std::to_string(view)));
            }
        }
    }
}

TEST_F(BrushMeshesTest, ManyBrushesOnAllCores) {
    engine.seed(5);
    for (int i = 0; i < 600; ++i)
        AddBrush();
    for (int i = 0; i < 50; ++i)
        world.SetBrushSelection(Random(600), true);
    for (int view = 0; view < 12; ++view) {
        ChangeView();
        ASSERT_NO_FATAL_FAILURE(ExpectSamePictures("view " + std::to_string(view)));
    }
}

TEST_F(BrushMeshesTest, OnlyWhatChangedIsMadeAnew) {
    constexpr int CHUNKS = 3;
    for (size_t i = 0; i < (CHUNKS - 1) * BrushMeshes::CHUNK_BRUSHES + 5; ++i) {
        const float x = static_cast<float>(i % 20) * 4 - 40;
        AddBox(world, {x, -10, 0}, {x + 3, 10, 20}, {1, 1, 1, 1});
    }
    for (const int view : {VIEW_TOP, VIEW_PERSPECTIVE}) {
        SCOPED_TRACE(view);
        world.ClearSelection();
        if (view == VIEW_TOP)
            SetView(view);
        else
            SetCamera(100);
        EXPECT_GE(RebuildsOf(), static_cast<uint32_t>(CHUNKS));
        EXPECT_EQ(RebuildsOf(), 0u);
        world.brush[3]->is_hidden = true;
        EXPECT_EQ(RebuildsOf(), 0u);
        world.brush[3]->Move({1, 0, 0}, false);
        EXPECT_EQ(RebuildsOf(), 1u);
        world.SetBrushSelection(static_cast<int>(BrushMeshes::CHUNK_BRUSHES), true); // leaves one mesh for another
        EXPECT_EQ(RebuildsOf(), 2u);
        world.MoveBrush({2, 0, 0}); // the mesh of what stands still stays
        EXPECT_EQ(RebuildsOf(), 1u);
    }
}

TEST_F(BrushMeshesTest, BrushesAreLookedAtOncePerScope) {
    Brush& box = AddBox(world, {-20, -20, 0}, {20, 20, 20}, {1, 0, 0, 1});
    const auto takes_of_all_views = [&] {
        const uint32_t before = BrushRecords::Takes();
        for (const int view : {VIEW_TOP, VIEW_FRONT, VIEW_LEFT})
            SetView(view), RebuildsOf();
        SetCamera(100);
        RebuildsOf();
        return BrushRecords::Takes() - before;
    };
    EXPECT_EQ(takes_of_all_views(), 4u);
    {
        const DrawingScope outer;
        EXPECT_EQ(takes_of_all_views(), 1u);
        const DrawingScope inner;
        EXPECT_EQ(takes_of_all_views(), 0u);
    }
    EXPECT_EQ(takes_of_all_views(), 4u);
    box.is_hidden = true;
    const DrawingScope next;
    EXPECT_EQ(takes_of_all_views(), 1u);
    EXPECT_TRUE(IsEmpty());
    // Who breaks the promise by adding and removing is still served.
    AddBox(world, {-30, -30, 0}, {30, 30, 20}, {1, 0, 0, 1});
    EXPECT_EQ(takes_of_all_views(), 1u);
    EXPECT_FALSE(IsEmpty());
    world.brush.clear();
    EXPECT_EQ(takes_of_all_views(), 1u);
    EXPECT_TRUE(IsEmpty());
}

TEST_F(BrushMeshesTest, UprightBoxesAreCulledAsBrushesAre) {
    engine.seed(3);
    Brush brush;
    int hidden = 0, shown = 0;
    for (int round = 0; round < 20000; ++round) { // whole numbers, so that corners often lie right in a plane
        const D3DVECTOR min{Place(9), Place(9), Place(9)};
        const auto side = [this] { return static_cast<float>(Random(6)); };
        brush.bbox = MakeBox(min, min + D3DVECTOR{side(), side(), side()});
        PLANE planes[6];
        for (PLANE& plane : planes)
            plane = {Place(3), Place(3), Place(3), 8 + Place(16)};
        const BoxCull cull(planes);
        ASSERT_EQ(cull.Hides(BoxMin(brush.bbox), BoxMax(brush.bbox)), !brush.Visible(planes)) << round;
        ++(brush.Visible(planes) ? shown : hidden);
    }
    EXPECT_GT(hidden, 1000);
    EXPECT_GT(shown, 1000);
}

TEST_F(BrushMeshesTest, WhatBecomesTransparentComesAfterWhatIsBehind) {
    Brush& near = AddBox(world, {-20, -20, -10}, {20, 20, 0}, {1, 0, 0, 1});
    AddBox(world, {-40, -40, 20}, {40, 40, 30}, {0, 1, 0, 1});
    near.ForEachSurface([](Surface& s, int, bool) { s.texture.index = 4, s.texture.size = {16, 16}; });
    near.RemapAll();
    SetCamera(100);
    const auto drawn = [&] {
        ExpectSamePictures("made transparent, or another type");
        return screen.Picture();
    };
    const std::vector<uint32_t> opaque = drawn();
    world.material[4].transparent = true; // nothing else changes
    const std::vector<uint32_t> transparent = drawn();
    EXPECT_NE(opaque, transparent);
    near.type = BT_PORTAL;
    near.MarkDrawnChanged();
    EXPECT_NE(drawn(), transparent);
    near.type = BT_BOX;
    EXPECT_EQ(drawn(), transparent);
    world.material[4].transparent = false;
    EXPECT_EQ(drawn(), opaque);
}

TEST_F(BrushMeshesTest, AnotherDeviceMakesItsOwn) {
    AddBox(world, {-20, -20, 0}, {20, 20, 20}, {1, 0, 0, 1});
    SetView(VIEW_FRONT);
    EXPECT_GT(RebuildsOf(), 0u);
    EXPECT_EQ(RebuildsOf(), 0u);
    crvTryRestore = true; // the surfaces were lost
    EXPECT_GT(RebuildsOf(), 0u);
    EXPECT_EQ(screen.At(MIDDLE - 20, MIDDLE), 0xFF0000u);
}
