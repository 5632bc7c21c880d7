#include <gtest/gtest.h>

#include "foundation/Desktop.h"
#include "scene/EditingFrontEnd.h"
#include "scene/Scenes.h"

namespace {

class CloneTest : public testing::Test {
protected:
    void SetUp() override {
        SetDesktop(&desktop);
        ForgetNotices();
    }
    void TearDown() override { SetDesktop(nullptr); }
    Brush& AddBox() { return AddSelected(world, BoxBrush()); }
    static Selection Of(const std::vector<int>& items) {
        Selection selection;
        for (const int i : items)
            selection.AddItem(i);
        return selection;
    }
    HeadlessDesktop desktop;
    EditingFrontEnd front_end;
    World world;
};

using Collapse = CloneTest;

TEST_F(CloneTest, CopiesStandOnTheOriginalsAndAreSelected) {
    Brush& first = AddBox();
    Brush& left_out = AddBox();
    Brush& last = AddSelected(world, BoxBrush({100, 0, 0}, {164, 64, 64}));
    last.name = "door";
    Entity& entity = AddSelectedEntity(world, {1, 2, 3});
    world.SetBrushSelection(left_out.index, false);
    world.brush_selection.ClearList();
    world.brush_selection.AddItem(2);
    world.brush_selection.AddItem(0);
    world.Clone(false);
    ASSERT_EQ(world.GetBrushCount(), 5);
    EXPECT_EQ(world.brush[3]->name, "door"); // in the order of the selection
    EXPECT_EQ(world.brush[3]->bbox, last.bbox);
    EXPECT_EQ(world.brush[4]->bbox, first.bbox);
    EXPECT_EQ(world.entity[1]->position, entity.position);
    EXPECT_EQ(Items(world.brush_selection), (std::vector<int>{3, 4}));
    EXPECT_EQ(Items(world.entity_selection), std::vector<int>{1});
    for (int i = 0; i < 5; ++i) {
        Brush& b = *world.brush[static_cast<size_t>(i)];
        EXPECT_EQ(b.is_selected, i >= 3);
        EXPECT_EQ(b.index, i);
        EXPECT_EQ(BaseObject::GetObjectFromID(b.GetObjectID()), &b);
    }
    world.ClearSelection();
    world.Clone(false);
    EXPECT_EQ(world.GetBrushCount(), 5);
}

TEST_F(CloneTest, LinksAreRepeatedAmongTheCopiesOnly) {
    Brush& a = AddBox();
    Brush& b = AddBox();
    Brush& outside = AddBox();
    Entity& e = AddSelectedEntity(world);
    world.SetBrushSelection(outside.index, false);
    b.AddLinkedObjectID(outside.GetObjectID());
    b.AddLinkedObjectID(e.GetObjectID());
    b.AddLinkedObjectID(a.GetObjectID());
    e.AddLinkedObjectID(b.GetObjectID());
    outside.AddLinkedObjectID(a.GetObjectID());
    world.Clone(true);
    const BaseObject &a2 = *world.brush[3], &b2 = *world.brush[4], &e2 = *world.entity[1];
    EXPECT_EQ(a2.GetLinkedObjectsCount(), 0);
    ASSERT_EQ(b2.GetLinkedObjectsCount(), 2);
    EXPECT_EQ(b2.GetLinkedObjectID(0), a2.GetObjectID());
    EXPECT_EQ(b2.GetLinkedObjectID(1), e2.GetObjectID());
    ASSERT_EQ(e2.GetLinkedObjectsCount(), 1);
    EXPECT_EQ(e2.GetLinkedObjectID(0), b2.GetObjectID());
    EXPECT_EQ(b.GetLinkedObjectsCount(), 3);
    EXPECT_EQ(outside.GetLinkedObjectsCount(), 1);
    // One of two linked objects alone: its copy has no link.
    world.ClearSelection();
    world.SetBrushSelection(b.index, true);
    world.Clone(true);
    EXPECT_EQ(world.brush[5]->GetLinkedObjectsCount(), 0);
}

TEST_F(CloneTest, GroupsOfTheSelectionAreCopied) {
    for (int i = 0; i < 4; ++i)
        AddBox();
    AddSelectedEntity(world);
    world.AddGroup(Of({1, 2, 3}), Of({0}));
    world.AddGroup(Of({0, 1}), Of({}));
    world.AddGroup(Of({0, 3}), Of({}));
    world.SetBrushSelection(0, false);
    world.SetBrushSelection(3, false); // brushes 1, 2 and the entity
    const Selection brushes = world.brush_selection, entities = world.entity_selection;
    world.Clone(true);
    EXPECT_EQ(world.GetGroupCount(), 3);
    world.ClearSelection();
    world.brush_selection = brushes;
    world.entity_selection = entities;
    world.Clone(false); // the copies are 6 and 7
    ASSERT_EQ(world.GetGroupCount(), 5);
    EXPECT_EQ(Items(world.group[3].brushes), (std::vector<int>{6, 7}));
    EXPECT_EQ(Items(world.group[3].entities), std::vector<int>{2});
    EXPECT_EQ(Items(world.group[4].brushes), std::vector<int>{6});
    EXPECT_EQ(Items(world.group[0].brushes), (std::vector<int>{1, 2, 3}));
}

TEST_F(CloneTest, AFullGroupTableIsThinnedOrRefusesOnce) {
    for (const bool can_be_thinned : {false, true}) {
        world.ClearSelection();
        world.brush.clear();
        world.group.clear();
        desktop.boxes.clear();
        for (int i = 0; i < MAX_GROUPS; ++i)
            world.AddBrush(std::make_unique<Brush>())->GenerateNewObjectID();
        for (int i = 0; i < MAX_GROUPS; ++i) // each brush in one group, or the last in very many
            world.AddGroup(Of({can_be_thinned && i >= 10 ? MAX_GROUPS - 1 : i}), Of({}));
        world.SetBrushSelection(5, true);
        world.Clone(false);
        EXPECT_EQ(world.GetBrushCount(), MAX_GROUPS + 1);
        EXPECT_EQ(Items(world.brush_selection), std::vector<int>{MAX_GROUPS});
        EXPECT_EQ(desktop.boxes.size(), can_be_thinned ? 0u : 1u);
        EXPECT_EQ(world.GetGroupCount(), can_be_thinned ? 10 + 3 + 1 : MAX_GROUPS);
        if (can_be_thinned) {
            EXPECT_EQ(Items(world.group.back().brushes), std::vector<int>{MAX_GROUPS});
        } else {
            EXPECT_EQ(desktop.boxes[0].text, "Group limit exceeded. No groups will be cloned.");
            EXPECT_EQ(desktop.boxes[0].title, "Warning");
        }
    }
}

TEST_F(CloneTest, AFullLevelRefusesAndStaysWhole) {
    for (int i = 0; i < MAX_BRUSHES - 1; ++i)
        world.AddBrush(std::make_unique<Brush>());
    for (int i = 0; i < MAX_ENTITIES; ++i)
        world.AddEntity(std::make_unique<Entity>());
    world.SetBrushSelection(0, true);
    world.SetBrushSelection(1, true);
    world.Clone(false); // two do not fit
    EXPECT_EQ(world.GetBrushCount(), MAX_BRUSHES - 1);
    EXPECT_EQ(Items(world.brush_selection), (std::vector<int>{0, 1}));
    EXPECT_EQ(desktop.boxes.size(), 1u);
    world.SetBrushSelection(0, false);
    world.entity_selection.AddItem(0);
    world.Clone(false); // the brush would, the entity does not: neither is copied
    EXPECT_EQ(world.GetBrushCount(), MAX_BRUSHES - 1);
    EXPECT_EQ(desktop.boxes.size(), 2u);
    world.entity_selection.ClearList();
    world.Clone(false);
    EXPECT_EQ(world.GetBrushCount(), MAX_BRUSHES);
    EXPECT_EQ(desktop.boxes.size(), 2u);
}

TEST_F(Collapse, MeltsSurfacesWithAMaterialIntoOneBrush) {
    Brush& box = AddBox();
    Brush& cone = AddSelected(world, std::make_unique<Brush>(ShapeOf(BT_CONE, {100, 0, 0}, {164, 64, 64})));
    Brush& portal = AddSelected(world, std::make_unique<Brush>(ShapeOf(BT_PORTAL, {0, 0, 0}, {64, 64, 64})));
    Brush& linked = AddBox();
    world.SetBrushSelection(linked.index, false);
    AddSelectedEntity(world);
    box.name = "door";
    box.surfaces[1].texture.index = 1;
    box.surfaces[1].texture.size = {64, 64};
    box.surfaces[1].uv[2] = {7, 9};
    cone.curved_surfaces[3].texture.index = 2;
    portal.surfaces[0].texture.index = 1;
    linked.AddLinkedObjectID(box.GetObjectID());
    world.AddGroup(Of({0, 3}), Of({}));
    const std::vector<D3DVECTOR> flat = box.surfaces[1].vertices, net = cone.curved_surfaces[3].cp;
    const uint32_t box_id = box.GetObjectID();
    world.selected_surface_brush = 3;
    world.first_selected_id = world.entity[0]->GetObjectID();

    world.Collapse();
    ASSERT_EQ(world.GetBrushCount(), 3); // the portal took no part
    EXPECT_EQ(world.first_selected_id, world.brush[2]->GetObjectID()) << "what links start from";
    EXPECT_EQ(world.brush[0]->type, BT_PORTAL);
    EXPECT_FALSE(world.brush[0]->is_selected);
    const Brush& merged = *world.brush[2];
    EXPECT_EQ(merged.type, BT_BOX);
    EXPECT_EQ(merged.index, 2);
    EXPECT_EQ(merged.name, "");
    ASSERT_EQ(merged.surfaces.size(), 1u);
    ASSERT_EQ(merged.curved_surfaces.size(), 1u);
    EXPECT_EQ(merged.surfaces[0].vertices, flat);
    EXPECT_EQ(merged.surfaces[0].uv[2], (UVVector{7, 9}));
    EXPECT_EQ(merged.curved_surfaces[0].cp, net);
    EXPECT_EQ(merged.curved_surfaces[0].texture.index, 2);
    EXPECT_FALSE(merged.curved_surfaces[0].vertices.empty());
    EXPECT_EQ(merged.color, 0xFFFFFFFFu);
    EXPECT_TRUE(merged.is_selected);
    EXPECT_EQ(Items(world.brush_selection), std::vector<int>{2});
    EXPECT_EQ(world.entity_selection.GetItemCount(), 0);
    EXPECT_EQ(world.GetEntityCount(), 1);
    EXPECT_EQ(BaseObject::GetObjectFromID(box_id), nullptr);
    EXPECT_EQ(world.brush[1]->GetLinkedObjectsCount(), 0);
    EXPECT_EQ(world.GetGroupCount(), 0);
    world.MoveBrush({0, 8, 0}); // it goes on as any brush
    EXPECT_EQ(merged.curved_surfaces[0].cp[0], net[0] + (D3DVECTOR{0, 8, 0}));
}

TEST_F(Collapse, StoredMeshesMergeAmongThemselvesOnly) {
    const auto add_mesh = [this](float x) {
        auto mesh = std::make_unique<Brush>();
        mesh->type = BT_CUSTOM;
        Surface& s = mesh->curved_surfaces.emplace_back();
        s.Allocate(3, 1, 0);
        s.vertices = {{x, 0, 0}, {x, 0, 64}, {x + 64, 0, 0}};
        s.uv = {{x, 1}, {2, 3}, {4, 5}};
        s.tri_indices = {{{0, 1, 2}}};
        s.cp_count = CURVE_MESH;
        s.texture.index = 1;
        AddSelected(world, std::move(mesh));
    };
    add_mesh(0);
    add_mesh(100);
    AddBox().surfaces[0].texture.index = 1;
    world.Collapse();
    EXPECT_EQ(world.GetBrushCount(), 3); // a box among them: nothing happens
    AddSelected(world, std::make_unique<Brush>(ShapeOf(BT_PORTAL, {0, 0, 0}, {8, 8, 8})));
    world.SetBrushSelection(2, false);
    world.Collapse();
    EXPECT_EQ(world.GetBrushCount(), 4); // a portal, likewise
    world.SetBrushSelection(3, false);
    world.Collapse();
    ASSERT_EQ(world.GetBrushCount(), 3);
    const Brush& merged = *world.brush[2];
    EXPECT_EQ(merged.type, BT_CUSTOM);
    ASSERT_EQ(merged.curved_surfaces.size(), 2u);
    EXPECT_EQ(merged.curved_surfaces[1].vertices[0], (D3DVECTOR{100, 0, 0}));
    EXPECT_EQ(merged.curved_surfaces[1].uv[0], (UVVector{100, 1}));
    EXPECT_EQ(merged.curved_surfaces[1].cp_count, CURVE_MESH);
    ExpectNear(merged.curved_surfaces[1].normal[0], {0, 1, 0}, 1e-6f);
}

TEST_F(Collapse, WithoutMaterialOrSelectionNothingHappens) {
    world.Collapse();
    AddBox();
    AddBox();
    AddSelectedEntity(world);
    world.Collapse();
    EXPECT_EQ(world.GetBrushCount(), 2);
    EXPECT_EQ(world.brush_selection.GetItemCount(), 2);
    EXPECT_EQ(world.entity_selection.GetItemCount(), 1);
}

TEST_F(CloneTest, BoxHideKeepsWhatTouches) {
    Brush& inside = AddBox();
    Brush& touching = AddSelected(world, BoxBrush({64, 0, 0}, {128, 64, 64}));
    Brush& outside = AddSelected(world, BoxBrush({65, 0, 0}, {128, 64, 64}));
    inside.is_hidden = true;
    Entity& on_the_border = AddSelectedEntity(world, {64, 64, 64});
    Entity& beyond = AddSelectedEntity(world, {64, 64.5f, 64});
    world.BoxHide(MakeBox({0, 0, 0}, {64, 64, 64}));
    EXPECT_FALSE(inside.is_hidden);
    EXPECT_FALSE(touching.is_hidden);
    EXPECT_TRUE(outside.is_hidden);
    EXPECT_TRUE(outside.is_selected); // the flag is left alone
    EXPECT_FALSE(on_the_border.is_hidden_by_clipbox);
    EXPECT_TRUE(beyond.is_hidden_by_clipbox);
    EXPECT_FALSE(beyond.is_hidden);
    EXPECT_FALSE(world.IsSomethingSelected());
}

} // namespace
