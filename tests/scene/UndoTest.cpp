#include <functional>

#include <gtest/gtest.h>

#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "scene/SceneState.h"
#include "scene/Scenes.h"
#include "scene/Undo.h"

namespace {

class Undo : public testing::Test {
protected:
    void SetUp() override { SetDesktop(&desktop); }
    void TearDown() override { SetDesktop(nullptr); }

    bool UndoOnce() { return world.undo_buffer.UndoLastAction(world, world.redo_buffer); }
    bool RedoOnce() { return world.redo_buffer.UndoLastAction(world, world.undo_buffer); }
    Brush& NewBrush(float x = 0) {
        Cancel();
        return *world.CreateBrush(ShapeOf(BT_BOX, {x, 0, 0}, {x + 16, 16, 16}));
    }
    void Cancel() { // a deselection step
        auto deselection = std::make_unique<CUndoActionDeselect>(false);
        world.AddSelectionToUndo(*deselection);
        world.AddUndoAction(std::move(deselection));
        world.ClearSelection();
    }
    void Delete() {
        auto deletion = std::make_unique<CUndoActionDelete>();
        world.AddSelectionToUndo(*deletion);
        world.AddUndoAction(std::move(deletion));
        world.DeleteSelection();
    }
    void Move(const D3DVECTOR& move) {
        world.MoveBrush(move);
        world.MoveEntity(move);
        world.AddUndoAction(std::make_unique<CUndoActionMove>(-move, false));
    }
    void SelectIDs(const std::vector<uint32_t>& ids) {
        auto selection = std::make_unique<CUndoActionSelect>(false);
        for (const uint32_t id : ids)
            selection->AddID(id, world);
        world.AddUndoAction(std::move(selection));
    }

    HeadlessDesktop desktop;
    UndoFrontEnd front_end;
    World world;
};

TEST_F(Undo, DepthIsOneMoreThanTheStates) {
    for (const int states : {20, 0, 3}) {
        front_end.undo_states = states;
        world.undo_buffer.Empty();
        for (int i = 0; i <= states + 2; ++i)
            world.AddUndoAction(std::make_unique<CUndoActionRotate>(0.0f, i));
        ASSERT_EQ(world.undo_buffer.GetActionCount(), states + 1);
        EXPECT_EQ(world.undo_buffer.GetActionDescription(0), "Rotate objects in view 2.");
    }
    front_end.undo_states = 0; // lowering it trims nothing: one falls out at each add
    world.AddUndoAction(std::make_unique<CUndoActionMove>(D3DVECTOR{}, true));
    EXPECT_EQ(world.undo_buffer.GetActionCount(), 4);
    EXPECT_EQ(world.undo_buffer.GetActionDescription(3), "Move vertices.");
    EXPECT_EQ(world.undo_buffer.GetActionDescription(4), "");
    EXPECT_FALSE(RedoOnce());
}

TEST_F(Undo, EmptyStepsAreDroppedAndRealOnesEmptyRedo) {
    NewBrush();
    EXPECT_EQ(world.undo_buffer.GetActionDescription(0), "Create 1 object(s).");
    ASSERT_TRUE(UndoOnce());
    SelectIDs({});
    EXPECT_EQ(world.redo_buffer.GetActionCount(), 1);
    EXPECT_EQ(world.redo_buffer.GetActionDescription(0), "Delete 1 object(s).");
    SelectIDs({77, 78});
    EXPECT_EQ(world.redo_buffer.GetActionCount(), 0);
    EXPECT_EQ(world.undo_buffer.GetActionDescription(0), "Select 2 object(s).");
    EXPECT_TRUE(UndoOnce()); // ids of nothing
    EXPECT_EQ(world.redo_buffer.GetActionDescription(0), "Deselect 2 object(s).");
    EXPECT_FALSE(UndoOnce());
}

TEST_F(Undo, CreationGoesAndComesBackAtTheEnd) {
    const uint32_t id = NewBrush().GetObjectID();
    NewBrush(100);
    UndoOnce(), UndoOnce(), UndoOnce(); // the second brush, the deselection, the first brush
    EXPECT_EQ(world.GetBrushCount(), 0);
    EXPECT_EQ(BaseObject::GetObjectFromID(id), nullptr);
    EXPECT_EQ(front_end.restored.back(), false);
    auto other = std::make_unique<Brush>();
    world.AddBrush(std::move(other))->GenerateNewObjectID();
    ASSERT_TRUE(RedoOnce());
    ASSERT_EQ(world.GetBrushCount(), 2);
    EXPECT_EQ(world.brush[1]->GetObjectID(), id);
    EXPECT_EQ(Items(world.brush_selection), std::vector<int>{1});
    EXPECT_EQ(world.first_selected_id, id);
    EXPECT_EQ(front_end.restored.back(), true);
    EXPECT_EQ(BrokenRule(world), "");
}

TEST_F(Undo, AMoveActsOnWhatADeletionBroughtBack) {
    Brush& brush = NewBrush();
    const uint32_t id = brush.GetObjectID();
    Move({32, 0, -8});
    Delete();
    EXPECT_EQ(world.GetBrushCount(), 0);
    UndoOnce();
    ASSERT_EQ(world.GetBrushCount(), 1);
    EXPECT_EQ(world.brush[0]->GetObjectID(), id);
    EXPECT_EQ(BoxMin(world.brush[0]->bbox), (D3DVECTOR{32, 0, -8}));
    UndoOnce();
    EXPECT_EQ(BoxMin(world.brush[0]->bbox), (D3DVECTOR{0, 0, 0}));
    RedoOnce();
    EXPECT_EQ(BoxMin(world.brush[0]->bbox), (D3DVECTOR{32, 0, -8}));
    EXPECT_EQ(world.redo_buffer.GetActionDescription(0), "Create 1 object(s)."); // what it reverses
    RedoOnce();
    EXPECT_EQ(world.GetBrushCount(), 0);
    EXPECT_EQ(world.undo_buffer.GetActionDescription(2), "Delete 1 object(s).");
}

TEST_F(Undo, AStepTellsWhatUndoingItDoes) {
    NewBrush();
    world.undo_buffer.Empty();
    Move({8, 0, 0});
    SelectIDs({world.brush[0]->GetObjectID()});
    Cancel();
    world.SetBrushSelection(0, true);
    Delete();
    const struct {
        const char *reverses, *undoes, *again;
    } steps[] = {{"Move objects.", "Move objects.", "Move objects."},
                 {"Select 1 object(s).", "Deselect 1 object(s).", "Select 1 object(s)."},
                 {"Deselect 1 object(s).", "Select 1 object(s).", "Deselect 1 object(s)."},
                 {"Delete 1 object(s).", "Create 1 object(s).", "Delete 1 object(s)."}};
    for (int i = 3; i >= 0; --i) {
        EXPECT_EQ(world.undo_buffer.GetActionDescription(i), steps[i].reverses);
        EXPECT_EQ(world.undo_buffer.DescribeUndoing(i), steps[i].undoes);
        ASSERT_TRUE(UndoOnce());
        EXPECT_EQ(world.redo_buffer.DescribeUndoing(3 - i), steps[i].again);
    }
    EXPECT_EQ(world.redo_buffer.DescribeUndoing(4), "");
    EXPECT_EQ(world.redo_buffer.DescribeUndoing(-1), "");
}

TEST_F(Undo, StepsOfSelectingFoldOnlyWithFullUndo) {
    const uint32_t a = NewBrush(0).GetObjectID(), b = NewBrush(32).GetObjectID();
    world.so_vertex.resize(2);
    for (const bool full : {false, true}) {
        front_end.full_undo = full;
        world.undo_buffer.Empty();
        world.ClearSelection();
        const auto select = [&](uint32_t id) {
            SelectIDs({id});
            world.SetBrushSelection(world.GetBrushIndex(world.GetBrushFromID(id)), true);
        };
        const auto mark = [&](uint32_t vertex) {
            auto marking = std::make_unique<CUndoActionSelect>(true);
            marking->AddID(vertex, world);
            world.so_vertex[vertex].selected = true;
            world.AddUndoAction(std::move(marking));
        };
        select(a);
        select(b);
        Cancel();
        select(a); // 4 that fold
        mark(0);
        mark(1); // 2 that fold
        Move({8, 0, 0});
        Cancel();
        EXPECT_EQ(world.undo_buffer.GetActionCount(), full ? 4 : 8);
        const SceneState last = StateOf(world);
        if (!full)
            continue;
        EXPECT_EQ(world.undo_buffer.GetActionDescription(0), "Change the selection.");
        EXPECT_EQ(world.undo_buffer.GetActionDescription(3), "Deselect 1 object(s).");
        for (int walk = 0; walk < 2; ++walk) {
            UndoOnce(), UndoOnce(), UndoOnce();
            EXPECT_FALSE(world.so_vertex[0].selected || world.so_vertex[1].selected);
            EXPECT_EQ(Items(world.brush_selection), std::vector<int>{0});
            ASSERT_TRUE(UndoOnce());
            EXPECT_FALSE(world.IsSomethingSelected());
            EXPECT_FALSE(UndoOnce());
            EXPECT_EQ(world.redo_buffer.DescribeUndoing(3), "Change the selection.");
            while (RedoOnce()) {
            }
            EXPECT_TRUE(world.so_vertex[0].selected && world.so_vertex[1].selected);
            EXPECT_EQ(StateOf(world), last);
        }
    }
}

// A clone of a part of a group is a group of one.
TEST_F(Undo, GroupsOfOneStayWhereNothingOfThemGoes) {
    front_end.full_undo = true;
    NewBrush();
    NewBrush(32);
    Cancel();
    ObjectGroupLists lone;
    lone.brushes.AddItem(0);
    world.group.push_back(lone);
    world.undo_buffer.Empty();
    const SceneState first = StateOf(world);
    NewBrush(64);
    const SceneState made = StateOf(world);
    Delete();
    EXPECT_EQ(world.GetGroupCount(), 0) << "a deletion by the user dissolves it";
    for (int walk = 0; walk < 2; ++walk) {
        ASSERT_TRUE(UndoOnce()); // the deletion
        EXPECT_EQ(Difference(made, StateOf(world)), "");
        ASSERT_TRUE(UndoOnce()); // the creation
        EXPECT_EQ(Difference(WithoutSelection(first), WithoutSelection(StateOf(world))), "");
        ASSERT_TRUE(RedoOnce());
        EXPECT_EQ(Difference(made, StateOf(world)), "");
        ASSERT_TRUE(RedoOnce());
    }
}

TEST_F(Undo, AFoldedStepGrowsOnlySoFar) {
    constexpr int SELECTED = 120; // and deselected
    front_end.full_undo = true;
    const uint32_t id = NewBrush().GetObjectID();
    Cancel();
    world.undo_buffer.Empty();
    for (int i = 0; i < SELECTED; ++i) {
        SelectIDs({id});
        world.SetBrushSelection(0, true);
        Cancel();
    }
    EXPECT_EQ(world.undo_buffer.GetActionCount(), 3) << "of 100, 100 and 40";
    for (const bool again : {false, true}) {
        int steps = 0;
        while (again ? RedoOnce() : UndoOnce())
            ++steps;
        EXPECT_EQ(steps, 3);
        EXPECT_FALSE(world.IsSomethingSelected());
    }
}

TEST_F(Undo, RotationIsReversed) {
    NewBrush(); // a corner stands on the pivot
    const auto turned = [this] { return BoxMin(world.brush[0]->bbox).x + BoxMin(world.brush[0]->bbox).z < -1; };
    world.RotateBrush(0.5f, 0);
    world.AddUndoAction(std::make_unique<CUndoActionRotate>(-0.5f, 0));
    EXPECT_TRUE(turned());
    UndoOnce();
    ExpectNear(BoxMin(world.brush[0]->bbox), {0, 0, 0}, 0.001f);
    ExpectNear(BoxMax(world.brush[0]->bbox), {16, 16, 16}, 0.001f);
    RedoOnce();
    EXPECT_TRUE(turned());
}

TEST_F(Undo, UndoneSelectionsTellWhetherAnythingIsLeft) {
    const uint32_t a = NewBrush().GetObjectID();
    Cancel();
    EXPECT_FALSE(world.IsSomethingSelected());
    UndoOnce();
    EXPECT_EQ(Items(world.brush_selection), std::vector<int>{0});
    EXPECT_TRUE(world.brush[0]->is_selected);
    EXPECT_EQ(world.first_selected_id, a);
    EXPECT_EQ(front_end.restored.back(), true);
    RedoOnce();
    EXPECT_FALSE(world.IsSomethingSelected());
    EXPECT_FALSE(world.brush[0]->is_selected);
    EXPECT_EQ(world.first_selected_id, NO_OBJECT_ID);
    EXPECT_EQ(front_end.restored.back(), false);
    EXPECT_GT(front_end.boxes, 1);
}

TEST_F(Undo, VertexStepsMarkVerticesAndLeaveTheState) {
    world.so_vertex.resize(3);
    world.so_vertex[1].selected = true;
    auto selection = std::make_unique<CUndoActionSelect>(true);
    for (const uint32_t i : {1u, 3u, 4000000000u}) // some are left from an earlier net
        selection->AddID(i, world);
    world.AddUndoAction(std::move(selection));
    UndoOnce();
    EXPECT_FALSE(world.so_vertex[1].selected);
    RedoOnce();
    EXPECT_TRUE(world.so_vertex[1].selected);
    EXPECT_FALSE(world.so_vertex[0].selected);
    EXPECT_TRUE(front_end.restored.empty());
    EXPECT_EQ(front_end.selections, 0); // the net is not built anew
}

TEST_F(Undo, GroupsStayRightWhenACreationIsUndone) {
    for (int i = 0; i < 3; ++i)
        NewBrush(static_cast<float>(i) * 32);
    for (int i = 0; i < 2; ++i)
        AddSelectedEntity(world);
    Cancel();
    NewBrush(200); // brush 3
    NewBrush(300); // brush 4
    const auto members = [](std::initializer_list<int> items) {
        Selection selection;
        for (const int i : items)
            selection.AddItem(i);
        return selection;
    };
    world.AddGroup(members({3, 0}), {});              // dissolves
    world.AddGroup(members({4, 3, 1}), members({1})); // shrinks
    world.AddGroup(members({2}), members({0}));       // stays
    world.undo_buffer.RemoveLastAction();             // that of brush 4
    world.undo_buffer.RemoveLastAction();             // the deselection before it
    UndoOnce();
    ASSERT_EQ(world.GetGroupCount(), 2);
    EXPECT_EQ(Items(world.group[0].brushes), (std::vector<int>{3, 1}));
    EXPECT_EQ(Items(world.group[0].entities), std::vector<int>{1});
    EXPECT_EQ(Items(world.group[1].brushes), std::vector<int>{2});
    EXPECT_EQ(BrokenRule(world), "");
}

TEST_F(Undo, ASelectedGroupComesAndGoesWithItsMembers) {
    for (int i = 0; i < 3; ++i)
        NewBrush(static_cast<float>(i) * 32);
    world.ClearSelection();
    world.SetBrushSelection(0, true);
    world.SetBrushSelection(2, true);
    world.CreateGroup();
    world.group_selection.AddItem(0);
    SelectIDs({world.brush[0]->GetObjectID(), world.brush[2]->GetObjectID()});
    UndoOnce();
    EXPECT_EQ(world.group_selection.GetItemCount(), 0);
    RedoOnce();
    EXPECT_EQ(Items(world.group_selection), std::vector<int>{0});
    EXPECT_EQ(world.brush_selection.GetItemCount(), 2);
}

TEST_F(Undo, RestoredBrushesNameTheSameMaterials) {
    Brush& brush = NewBrush();
    for (const char* name : {"sand", "grass", "stone"})
        world.AddMaterial("ground", name, "ground", name);
    NewBrush(64).surfaces[0].texture.index = 3; // stone stays in use
    brush.surfaces[0].texture.index = 2;
    brush.surfaces[1].texture.index = 3;
    brush.surfaces[2].texture.index = 99; // of no row
    world.ClearSelection();
    world.SetBrushSelection(0, true);
    Delete();
    world.FlushUnusedMaterials();
    ASSERT_EQ(world.GetMaterialCount(), 2);
    UndoOnce();
    ASSERT_EQ(world.GetBrushCount(), 2);
    const Brush& restored = *world.brush[1];
    const auto name = [&](size_t s) {
        return world.material[static_cast<size_t>(restored.surfaces[s].texture.index)].material_name;
    };
    EXPECT_EQ(name(0), "grass");
    EXPECT_EQ(name(1), "stone");
    EXPECT_EQ(restored.surfaces[2].texture.index, 99);
    EXPECT_EQ(world.GetMaterialCount(), 3);
}

TEST_F(Undo, RestoredObjectsKeepWhatACopyLeavesOut) {
    Entity& entity = AddSelectedEntity(world, {1, 2, 3});
    entity.path_parent_id = 4242;
    entity.is_hidden_by_clipbox = true;
    entity.AddLinkedObjectID(17);
    entity.path.Add(18);
    Brush& curved = AddSelected(world, std::make_unique<Brush>(ShapeOf(BT_PATCH, {0, 0, 0}, {64, 64, 64}, 2)));
    curved.is_frozen = true;
    const SceneState before = StateOf(world);
    Delete();
    UndoOnce();
    EXPECT_EQ(StateOf(world), before);
    RedoOnce();
    world.ChangeCurveDetail(false);
    UndoOnce();
    EXPECT_EQ(world.brush[0]->CURVE_DETAIL, static_cast<uint32_t>(world.curve_detail)); // that of the level now
}

TEST_F(Undo, ReindexedIdsLeadNoStepToAnotherObject) {
    Brush& kept = NewBrush();
    NewBrush(64);
    Delete();
    world.ReindexObjectIDs(); // the kept brush takes over a low id
    for (int i = 0; i < 5; ++i)
        NewBrush(static_cast<float>(100 + 32 * i));
    while (world.GetBrushCount() > 1)
        ASSERT_TRUE(UndoOnce());
    UndoOnce(); // brings back the deleted one, under an id of its own
    ASSERT_EQ(world.GetBrushCount(), 2);
    EXPECT_NE(world.brush[1]->GetObjectID(), kept.GetObjectID());
    UndoOnce(); // its creation
    ASSERT_EQ(world.GetBrushCount(), 1);
    EXPECT_EQ(world.brush[0].get(), &kept);
    while (UndoOnce()) {
    }
    EXPECT_EQ(world.GetBrushCount(), 0);
    while (RedoOnce()) {
    }
    EXPECT_EQ(world.GetBrushCount(), 6);
}

TEST_F(Undo, ReindexingIsAStepWithFullUndo) {
    front_end.full_undo = true;
    std::vector<SceneState> states;
    const auto note = [&] { states.push_back(StateOf(world)); };
    NewBrush().SetObjectID(500);
    NewBrush(32).SetObjectID(3);
    world.brush[0]->AddLinkedObjectID(3);
    world.brush[0]->AddLinkedObjectID(2); // of nothing, and of the second brush in the new numbering
    world.brush[1]->AddLinkedObjectID(500);
    world.undo_buffer.Empty();
    note();
    NewBrush(64);
    note(); // 1 step for each that is noted, with the deselection of what is selected before
    Delete();
    note();
    world.ReindexObjectIDs();
    EXPECT_EQ(world.undo_buffer.GetActionDescription(3), "Reindex object IDs.");
    EXPECT_EQ(world.brush[0]->GetObjectID(), 1u);
    EXPECT_EQ(world.brush[1]->GetObjectID(), 2u);
    note();
    auto creation = std::make_unique<CUndoActionCreate>();
    Brush& late = *world.AddBrush(std::make_unique<Brush>(ShapeOf(BT_BOX, {96, 0, 0}, {112, 16, 16})));
    late.is_selected = false;
    late.SetObjectID(500); // of the first brush before
    creation->AddID(500, world);
    world.AddUndoAction(std::move(creation));
    note();
    world.ReindexObjectIDs();
    note();
    const auto expect = [&](size_t which, const char* where) {
        const SceneState state = StateOf(world);
        EXPECT_EQ(state.objects, states[which].objects) << which << where;
        EXPECT_EQ(BrokenRule(world), "") << which << where;
    };
    for (int walk = 0; walk < 2; ++walk) {
        for (size_t i = states.size() - 1; i-- > 0;) {
            ASSERT_TRUE(UndoOnce());
            expect(i, " undone");
        }
        while (UndoOnce()) {
        }
        expect(0, " undone");
        while (world.redo_buffer.GetActionCount() > 5)
            RedoOnce();
        for (size_t i = 1; i < states.size(); ++i) {
            ASSERT_TRUE(RedoOnce());
            expect(i, " redone");
        }
    }
}

TEST_F(Undo, AFullTableTakesNothingBack) {
    NewBrush();
    Delete();
    while (world.GetBrushCount() < MAX_BRUSHES)
        world.AddBrush(std::make_unique<Brush>())->GenerateNewObjectID();
    UndoOnce();
    EXPECT_EQ(world.GetBrushCount(), MAX_BRUSHES);
    EXPECT_FALSE(world.IsSomethingSelected());
    RedoOnce(); // names nothing
    EXPECT_EQ(world.GetBrushCount(), MAX_BRUSHES);
}

// Sequences of steps as a designer makes them, back to the first state and on to the last. Selections change by
// rectangles, in which groups count.
class UndoSequences : public Undo {
protected:
    int Below(int n) { return static_cast<int>(random.randomMT() % static_cast<uint32_t>(n)); }
    float Place() { return static_cast<float>(Below(64) * 8 - 256); }
    void Fill(bool with_groups) {
        for (int i = 0; i < 12; ++i)
            AddSelected(world, BoxBrush({Place(), Place(), 0}, {300, 300, 16})).ComputeBrushSpheres();
        for (int i = 0; i < 8; ++i)
            AddSelectedEntity(world, {Place(), Place(), Place()});
        world.ClearSelection();
        for (int g = 0; with_groups && g < 4; ++g) {
            Selection brushes, entities;
            for (int k = 0; k < 3; ++k)
                brushes.AddItem(Below(12)), entities.AddItem(Below(8));
            world.AddGroup(brushes, entities);
        }
        for (int l = 0; with_groups && l < 20; ++l)
            world.brush[static_cast<size_t>(Below(12))]->AddLinkedObjectID(
                world.entity[static_cast<size_t>(Below(8))]->GetObjectID());
    }
    void Step() {
        PickRequest request;
        request.view = VIEW_FRONT;
        request.additive = Below(2) == 0;
        request.ignore_groups = Below(3) == 0;
        const D3DVECTOR corner{Place(), Place(), 0};
        const Box box = MakeBox(corner, corner + D3DVECTOR{64, 64, 0});
        switch (Below(6)) {
        case 0:
            NewBrush(Place());
            break;
        case 1:
            world.DragBoxSelection(box, request);
            break;
        case 2:
            world.EntityDragBoxSelection(box, request, true);
            break;
        case 3:
            Cancel();
            break;
        case 4:
            if (world.IsSomethingSelected())
                Move({Place(), Place(), Place()});
            break;
        case 5:
            if (Below(3) == 0)
                Delete();
            break;
        }
    }
    void Run(bool full, int rounds) {
        front_end.full_undo = full;
        for (int round = 0; round < rounds; ++round) {
            world.undo_buffer.Empty();
            world.redo_buffer.Empty();
            const SceneState first = StateOf(world, false);
            for (int i = 0; i < 40; ++i)
                Step();
            const SceneState last = StateOf(world, false);
            for (int walk = 0; walk < 2; ++walk) {
                while (UndoOnce())
                    ASSERT_EQ(BrokenRule(world), "");
                ASSERT_EQ(StateOf(world, false), first) << "round " << round;
                while (RedoOnce())
                    ASSERT_EQ(BrokenRule(world), "");
                ASSERT_EQ(StateOf(world, false), last) << "round " << round;
            }
        }
    }
    RandomMT random;
};

TEST_F(UndoSequences, ReturnToTheFirstStateAndTheLast) {
    random.seedMT(11);
    Fill(false);
    Run(false, 12);
}

TEST_F(UndoSequences, WithFullUndoGroupsAndLinksReturnToo) {
    random.seedMT(12);
    Fill(true);
    Run(true, 12);
}

} // namespace
