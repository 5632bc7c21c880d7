// What lies under a pixel: surfaces along the ray of the perspective view, wires in the others.
#include <gtest/gtest.h>

#include "render/Device.h"
#include "render/Matrix.h"
#include "scene/EditingFrontEnd.h"
#include "scene/Scenes.h"

namespace {

constexpr int SIDE = 512; // pixels of a view
constexpr D3DVECTOR CAMERA{0, 0, -200};
constexpr POINT CENTER{SIDE / 2, SIDE / 2};

void SetPerspective() { // along z, 90 degrees
    crSetViewport(0, 0, SIDE, SIDE);
    crMCurrent(CRM_VIEW);
    crMViewTo(CAMERA, {0, 0, 0}, {0, 1, 0}, 0);
    crMCurrent(CRM_PROJ);
    crMSetIdentity();
    crMProj(PI / 2, 1, 10, 10000);
}

// The front view: a pixel is 1 / scale units; world 0 lies at pixel (-scroll.x, -scroll.y) of a view at (left, top).
void SetFront(float scale, POINT scroll, int left, int top) {
    crSetViewport(left, top, SIDE, SIDE);
    D3DMATRIX view = crIdentity(), proj = crIdentity();
    view.m[0][0] = view.m[1][1] = scale;
    proj.m[0][0] = proj.m[1][1] = 2.0f / SIDE;
    proj.m[2][2] = 0;
    proj.m[3][0] = -1 - 2 * static_cast<float>(scroll.x) / SIDE;
    proj.m[3][1] = 1 + 2 * static_cast<float>(scroll.y) / SIDE;
    crMCurrent(CRM_VIEW);
    crMSet(view);
    crMCurrent(CRM_PROJ);
    crMSet(proj);
}

class ViewPicking : public testing::Test {
protected:
    void SetUp() override { SetPerspective(); }
    void TearDown() override {
        for (const uint32_t matrix : {CRM_VIEW, CRM_PROJ}) {
            crMCurrent(matrix);
            crMSetIdentity();
        }
        crMCurrent(CRM_WORLD);
        crSetViewport(-1, 0, 0, 0);
    }
    Brush& Add(BrushType type, float near_z) {
        return AddSelected(world, std::make_unique<Brush>(ShapeOf(type, {-32, -32, near_z}, {32, 32, near_z + 16})));
    }
    static int FacingSurface(const Brush& b) {
        for (size_t i = 0; i < b.surfaces.size(); ++i)
            if (b.surfaces[i].normal[0].z < -0.9f)
                return static_cast<int>(i);
        return -1;
    }
    EditingFrontEnd front_end;
    World world;
};

TEST_F(ViewPicking, TheNearestSurfaceIsSelected) {
    Brush& far_box = Add(BT_BOX, 100);
    Brush& near_box = Add(BT_BOX, 0);
    Add(BT_PORTAL, -60);
    Add(BT_OCCLUDER, -100);
    Add(BT_BOX, -140).is_hidden = true;
    Add(BT_BOX, -400); // behind the camera
    world.SurfaceSelection(CENTER, CAMERA);
    EXPECT_FALSE(world.IsSomethingSelected());
    EXPECT_EQ(world.selected_surface_brush, near_box.index);
    EXPECT_EQ(near_box.selected_surface, FacingSurface(near_box));
    EXPECT_FALSE(near_box.selected_surface_curved);
    EXPECT_GE(front_end.surface_selections, 1);
    near_box.is_hidden = true;
    world.SurfaceSelection(CENTER, CAMERA); // another one: the old one is let go
    EXPECT_EQ(near_box.selected_surface, -1);
    EXPECT_EQ(world.selected_surface_brush, far_box.index);
    world.SurfaceSelection({2, 2}, CAMERA); // a miss
    EXPECT_EQ(world.selected_surface_brush, -1);
    EXPECT_EQ(far_box.selected_surface, -1);
}

TEST_F(ViewPicking, PixelsOfTheRayByHand) {
    // The face at distance 200 spans 32 / 200 of the half view to each side: 41 pixels.
    Brush& box = Add(BT_BOX, 0);
    for (const auto& [x, hit] :
         {std::pair(CENTER.x - 42, false), {CENTER.x - 40, true}, {CENTER.x + 40, true}, {CENTER.x + 42, false}}) {
        world.SurfaceSelection({x, CENTER.y}, CAMERA);
        EXPECT_EQ(world.selected_surface_brush == box.index, hit) << x;
    }
}

TEST_F(ViewPicking, CurvedSurfacesAreFound) {
    Brush& block = Add(BT_CYLINDER, 0);
    world.SurfaceSelection(CENTER, CAMERA);
    EXPECT_EQ(world.selected_surface_brush, block.index);
    EXPECT_TRUE(block.selected_surface_curved);
}

TEST_F(ViewPicking, PickingTellsTheMaterialAndChangesNothing) {
    Brush& box = Add(BT_BOX, 0);
    world.material.resize(2);
    world.material[1].material_class = "walls";
    world.material[1].material_name = "brick";
    world.PickTexture(CENTER, CAMERA);
    EXPECT_TRUE(front_end.picked.empty()); // it has none
    box.surfaces[static_cast<size_t>(FacingSurface(box))].texture.index = 1;
    world.PickTexture(CENTER, CAMERA);
    world.PickTexture({2, 2}, CAMERA);
    box.surfaces[static_cast<size_t>(FacingSurface(box))].texture.index = 7; // beyond the table
    world.PickTexture(CENTER, CAMERA);
    EXPECT_EQ(front_end.picked, std::vector<std::string>{"walls\\brick"});
    EXPECT_EQ(world.selected_surface_brush, -1);
    EXPECT_TRUE(box.is_selected);
    EXPECT_EQ(front_end.dirty, 0);
}

TEST_F(ViewPicking, CopyingTakesTheWholeRecord) {
    Brush& box = Add(BT_BOX, 0);
    Brush& other = Add(BT_BOX, 300);
    Surface& target = box.surfaces[static_cast<size_t>(FacingSurface(box))];
    world.CopySurfaceTexture(CENTER, CAMERA); // no surface is selected
    EXPECT_EQ(front_end.dirty, 0);
    world.ClearSelection();
    world.selected_surface_brush = other.index;
    other.selected_surface = 2;
    TEX_INFO& source = other.surfaces[2].texture;
    source.index = 3;
    source.size = {32, 64};
    source.shift = {8, 0};
    world.CopySurfaceTexture(CENTER, CAMERA);
    EXPECT_EQ(target.texture, source);
    for (size_t i = 0; i < target.vertices.size(); ++i) // a wall that faces -z: x runs along u
        ExpectNear(target.uv[i], {(target.vertices[i].x - 8) / 32, -target.vertices[i].y / 64}, 1e-5f);
    EXPECT_EQ(front_end.redrawn_views, std::vector<int>{3});
    EXPECT_EQ(front_end.dirty, 1);
    world.CopySurfaceTexture({2, 2}, CAMERA); // a miss redraws and marks all the same
    EXPECT_EQ(front_end.dirty, 2);
}

TEST_F(ViewPicking, NearestHitTakesAnyShownSurface) {
    Add(BT_BOX, 100);
    Brush& portal = Add(BT_PORTAL, 0);
    D3DVECTOR hit;
    ASSERT_TRUE(world.NearestHit(CAMERA, {0, 0, 1}, hit));
    ExpectNear(hit, {0, 0, 0}, 1e-4f);
    portal.is_hidden = true;
    ASSERT_TRUE(world.NearestHit(CAMERA, {0, 0, 1}, hit));
    ExpectNear(hit, {0, 0, 100}, 1e-4f);
    EXPECT_FALSE(world.NearestHit(CAMERA, {0, 1, 0}, hit));
}

TEST_F(ViewPicking, WiresAreHitWithinThreePixels) {
    // A box of 64 units seen from the front: pixels 100 to 228 across and 50 to 178 down in a view anywhere.
    const auto box = BoxBrush({0, 0, 0}, {64, 64, 64});
    for (const auto& [left, top] : {std::pair(0, 0), {600, 300}}) {
        SetFront(2, {-100, -178}, left, top);
        const struct {
            POINT mouse;
            bool hit;
        } cases[] = {{{100, 100}, true},  {{102, 100}, true},  {{98, 100}, true},   {{103, 100}, false},
                     {{97, 100}, false},  {{164, 52}, true},   {{164, 100}, false}, {{228, 178}, true},
                     {{225, 110}, false}, {{226, 110}, true},  {{164, 181}, false}, {{164, 180}, true},
                     {{229, 176}, true},  {{400, 400}, false}, {{99, 49}, false}}; // beside both edges of a corner
        for (const auto& c : cases)
            EXPECT_EQ(box->TestWireSelection(c.mouse), c.hit) << c.mouse.x << ' ' << c.mouse.y;
    }
    SetFront(0.001f, {-100, -100}, 0, 0); // every edge is shorter than a pixel, and still some are hit
    EXPECT_TRUE(box->TestWireSelection({100, 100}));
    Brush point;
    point.surfaces.emplace_back().vertices = {{0, 0, 0}, {0, 0, 5}};
    point.surfaces[0].edge_indices = {{{0, 1}}, {{0, 2}}}; // along the view, and to a vertex that is not there
    point.RecalcBBox();
    EXPECT_FALSE(point.TestWireSelection({100, 100}));
}

TEST_F(ViewPicking, WiresOfCurvesAndWiresThatLeftTheirBox) {
    SetFront(1, {-256, -256}, 0, 0);
    Brush block(ShapeOf(BT_PATCH, {0, 0, 0}, {64, 64, 64}, 0, 1));
    const D3DVECTOR& corner = block.curved_surfaces[0].vertices[0];
    EXPECT_TRUE(block.TestWireSelection({256 + static_cast<int>(corner.x), 256 - static_cast<int>(corner.y)}));
    SetFront(128, {-256, -256}, 0, 0);
    const auto box = BoxBrush({0.75f, 0.75f, 0.75f}, {8.5f, 8.5f, 8.5f});
    box->AlignVertices(); // the box stays at 0.75, pixel 352; the wire is at 0, pixel 256
    EXPECT_TRUE(box->TestWireSelection({256, 200}));
    EXPECT_FALSE(box->TestWireSelection({352, 100}));
}

} // namespace
