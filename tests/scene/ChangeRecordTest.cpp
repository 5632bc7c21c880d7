// The steps of full undo.
#include <functional>

#include <gtest/gtest.h>

#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "scene/SceneState.h"
#include "scene/Scenes.h"
#include "scene/Undo.h"

namespace {

class Change : public testing::Test {
protected:
    void SetUp() override {
        SetDesktop(&desktop);
        front_end.full_undo = true;
        for (const char* name : {"sand", "grass"})
            world.AddMaterial("ground", name, "ground", name);
        for (int i = 0; i < 4; ++i) {
            const auto x = static_cast<float>(i) * 100;
            const BrushType type = i == 3 ? BT_PATCH : BT_BOX;
            Brush& b = *world.AddBrush(std::make_unique<Brush>(ShapeOf(type, {x, 0, 0}, {x + 64, 64, 64}, 2)));
            b.GenerateNewObjectID();
            b.is_selected = false;
            b.ForEachSurface([i](Surface& s, int, bool) { s.texture.index = i % 2 + 1; });
        }
        for (int i = 0; i < 3; ++i) {
            EntityParameter range;
            range.name = "range";
            range.type = EPT_FLOAT;
            range.p_float = 100;
            AddSelectedEntity(world, {0, static_cast<float>(i), 0}).AddParameter(range);
        }
        world.ClearSelection();
        world.brush[2]->AddLinkedObjectID(world.brush[0]->GetObjectID());
        world.brush[2]->AddLinkedObjectID(world.entity[1]->GetObjectID());
        world.entity[2]->AddLinkedObjectID(world.brush[0]->GetObjectID());
        world.SetBrushSelection(0, true);
        world.SetBrushSelection(3, true);
        world.entity_selection.AddItem(1);
        world.CreateGroup();
        world.first_selected_id = world.brush[3]->GetObjectID();
    }
    void TearDown() override { SetDesktop(nullptr); }
    bool UndoOnce() { return world.undo_buffer.UndoLastAction(world, world.redo_buffer); }
    bool RedoOnce() { return world.redo_buffer.UndoLastAction(world, world.undo_buffer); }
    std::vector<uint32_t> Order() const {
        std::vector<uint32_t> ids;
        for (const auto& b : world.brush)
            ids.push_back(b->GetObjectID());
        for (const auto& e : world.entity)
            ids.push_back(e->GetObjectID());
        return ids;
    }

    HeadlessDesktop desktop;
    UndoFrontEnd front_end;
    World world;
};

TEST_F(Change, NothingIsRecordedWithoutFullUndoOrWithoutAChange) {
    { const ChangeRecord record(world, "Nothing.", ChangeScope::AllObjects); }
    {
        ChangeRecord record(world, "Discarded.");
        world.brush[0]->name = "door";
        record.Discard();
    }
    front_end.full_undo = false;
    {
        const ChangeRecord record(world, "Off.");
        world.brush[0]->name = "gate";
    }
    EXPECT_EQ(world.undo_buffer.GetActionCount(), 0);
}

struct Edit {
    const char* what;
    std::function<void(World&)> run;
    bool keeps_order = true; // of the tables
    ChangeScope scope = ChangeScope::Selection;
};

const std::vector<Edit> EDITS = {
    {"name", [](World& w) { w.brush[0]->name = "door"; }},
    {"properties", [](World& w) { w.brush[3]->properties |= BP_LADDER; }},
    {"mass", [](World& w) { w.brush[0]->mass = 0.1f; }},
    {"scale",
     [](World& w) {
         Box box = MakeBox({0, 0, 0}, {364, 64, 64});
         w.ScaleBrush(MakeBox({0, 0, 0}, {123, 45, 67}), box);
     }},
    {"flip of curves and boxes", [](World& w) { w.FlipHorizontally(0); }},
    {"a vertex",
     [](World& w) {
         w.brush[0]->surfaces[1].vertices[2].y += 3.7f;
         w.brush[0]->RecalcBBox();
     }},
    {"the sign of a zero", [](World& w) { w.brush[0]->surfaces[1].vertices[0].z = -0.0f; }},
    {"a control point",
     [](World& w) {
         w.brush[3]->curved_surfaces[0].cp[4].y += 31.3f;
         w.brush[3]->TesselateCurves();
     }},
    {"coordinates alone", [](World& w) { w.brush[0]->surfaces[0].uv[1].u = 0.3f; }},
    {"mapping",
     [](World& w) {
         w.brush[0]->surfaces[2].texture.rotation = 12.5f;
         w.brush[0]->surfaces[2].texture.flip_v = true;
         w.brush[0]->RemapAll();
     }},
    {"material", [](World& w) { w.brush[0]->surfaces[2].texture.index = 2; }},
    {"color",
     [](World& w) {
         w.ChangeBrushColor({1, 0.5f, 0.25f, 1});
     }},
    {"links", [](World& w) { w.Link(true, false); }},
    {"links to the first", [](World& w) { w.Link(true, true); }},
    {"unlink", [](World& w) { w.brush[2]->RemoveLinkedObjectID(w.brush[0]->GetObjectID()); }},
    {"entity parameter", [](World& w) { w.entity[1]->GetParameterStr("range")->p_float = 7; }},
    {"entity name", [](World& w) { w.ChangeEntityVariableName("lamp"); }},
    {"entity path", [](World& w) { w.entity[1]->path.Add(w.entity[0]->GetObjectID()); }},
    {"hiding", [](World& w) { w.HideSelected(); }},
    {"hiding the others", [](World& w) { w.HideUnselected(); }, true, ChangeScope::AllObjects},
    {"group",
     [](World& w) {
         w.group_selection.AddItem(0);
         w.DestroyGroup();
     }},
    {"selection alone", [](World& w) { w.SelectAll(); }},
    {"a new group", [](World& w) { w.CreateGroup(); }},
    {"clone", [](World& w) { w.Clone(false); }},
    {"deletion", [](World& w) { w.DeleteSelection(); }, false},
    {"collapse", [](World& w) { w.Collapse(); }, false},
    {"another kind of entity",
     [](World& w) {
         Entity lamp;
         lamp.name = "lamp";
         lamp.str_type = "POINT_LIGHT";
         w.ConvertSelectedEntities(lamp);
     }},
};

class ChangeOfOneKind : public Change, public testing::WithParamInterface<Edit> {};

TEST_P(ChangeOfOneKind, IsOneStepThatReturnsBitByBit) {
    const SceneState first = StateOf(world);
    const std::vector<uint32_t> order = Order();
    {
        const ChangeRecord record(world, "Edit.", GetParam().scope);
        GetParam().run(world);
    }
    ASSERT_EQ(world.undo_buffer.GetActionCount(), 1);
    EXPECT_EQ(world.undo_buffer.GetActionDescription(0), "Edit.");
    const SceneState last = StateOf(world);
    ASSERT_FALSE(first == last);
    for (int walk = 0; walk < 2; ++walk) {
        ASSERT_TRUE(UndoOnce());
        EXPECT_EQ(StateOf(world), first);
        EXPECT_EQ(BrokenRule(world), "");
        if (GetParam().keeps_order) {
            EXPECT_EQ(Order(), order);
        }
        ASSERT_EQ(world.redo_buffer.GetActionCount(), 1);
        ASSERT_TRUE(RedoOnce());
        EXPECT_EQ(StateOf(world), last);
        EXPECT_EQ(BrokenRule(world), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Edits, ChangeOfOneKind, testing::ValuesIn(EDITS), [](const auto& edit) {
    std::string name = edit.param.what;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

TEST_F(Change, TheSelectedSurfaceAndTheFirstObjectReturn) {
    world.selected_surface_brush = 3;
    world.brush[3]->selected_surface = 0;
    world.brush[3]->selected_surface_curved = true;
    const uint32_t first = world.first_selected_id;
    {
        const ChangeRecord record(world, "Edit.");
        world.ClearSelection();
        world.brush[0]->name = "gate";
    }
    UndoOnce();
    EXPECT_EQ(world.selected_surface_brush, 3);
    EXPECT_EQ(world.brush[3]->selected_surface, 0);
    EXPECT_TRUE(world.brush[3]->selected_surface_curved);
    EXPECT_EQ(world.first_selected_id, first);
    EXPECT_EQ(front_end.restored.back(), true);
    RedoOnce();
    EXPECT_EQ(world.selected_surface_brush, -1);
    EXPECT_EQ(front_end.restored.back(), false);
}

TEST_F(Change, MaterialsAreFoundByNameAfterTheirTableWasRenumbered) {
    const auto strip = [this](std::initializer_list<size_t> brushes) {
        for (const size_t b : brushes)
            world.brush[b]->ForEachSurface([](Surface& s, int, bool) { s.texture.index = 0; });
        world.FlushUnusedMaterials();
    };
    const auto name = [this](const Surface& s) {
        const auto row = static_cast<size_t>(s.texture.index);
        return row < world.material.size() ? world.material[row].material_name : "no row";
    };
    const Surface& curved = world.brush[3]->curved_surfaces[0];
    const Surface& flat = world.brush[1]->surfaces[0];
    {
        const ChangeRecord record(world, "Edit.");
        world.brush[3]->curved_surfaces[0].texture.index = 0;
    }
    strip({0, 2});
    ASSERT_EQ(world.GetMaterialCount(), 2); // grass is row 1 now
    UndoOnce();
    EXPECT_EQ(name(curved), "grass");
    EXPECT_EQ(name(flat), "grass");
    {
        const ChangeRecord record(world, "Edit.", ChangeScope::AllObjects);
        world.brush[1]->surfaces[0].texture.index = 0;
    }
    strip({1, 3});
    ASSERT_EQ(world.GetMaterialCount(), 1);
    UndoOnce(); // loads it again
    EXPECT_EQ(name(flat), "grass");
    EXPECT_EQ(curved.texture.index, 0); // was no part of the step
}

TEST_F(Change, MixedSequencesReturn) {
    RandomMT random;
    random.seedMT(21);
    const auto below = [&random](size_t n) { return random.randomMT() % static_cast<uint32_t>(n); };
    for (int round = 0; round < 8; ++round) {
        world.undo_buffer.Empty();
        world.redo_buffer.Empty();
        const SceneState first = StateOf(world);
        for (int step = 0; step < 12; ++step) {
            const ChangeRecord record(world, "Edit.", ChangeScope::AllObjects);
            world.SetBrushSelection(static_cast<int>(below(world.brush.size() + 1)), below(2) == 0);
            for (int k = 0; k < 2 && !world.brush.empty(); ++k) {
                Brush& b = *world.brush[below(world.brush.size())];
                switch (below(6)) {
                case 0:
                    b.name = Format("name %u", random.randomMT());
                    break;
                case 1:
                    b.Move({0.3f, static_cast<float>(below(99)), 0.7f}, true);
                    break;
                case 2:
                    b.AddLinkedObjectID(world.brush[below(world.brush.size())]->GetObjectID());
                    break;
                case 3:
                    world.DeleteBrush(static_cast<int>(below(world.brush.size())));
                    break;
                case 4:
                    world.CreateGroup();
                    break;
                case 5:
                    world.Clone(false);
                    break;
                }
                if (world.GetBrushCount() > 40)
                    world.DeleteSelection();
            }
        }
        const SceneState last = StateOf(world);
        while (UndoOnce())
            ASSERT_EQ(BrokenRule(world), "");
        ASSERT_EQ(StateOf(world), first) << round;
        while (RedoOnce())
            ASSERT_EQ(BrokenRule(world), "");
        ASSERT_EQ(StateOf(world), last) << round;
    }
}

} // namespace
