// The decal tool: what the left button, the keys beside it, Delete and Escape mean.
#include "editor/EditorFixture.h"
#include "render/TestPictures.h"

class DecalMouseTest : public EditorTest {
protected:
    void SetUp() override {
        WriteBytes("Textures/wall/sign.tga", TargaBytes(32, 32, 24, 0xFF808080));
        Ed().settings.full_undo = true;
        AddBox({-200, -200, 0}, {200, 200, 32});
        Ed().views.perspective.camera_position = {0, 0, -256};
        Ed().views.perspective.camera_rotation = {};
        Ed().SetEditorState(ES_DECAL);
        Ed().texture_choice = {"wall", "sign"};
        Level().undo_buffer.Empty();
    }
    void Press(POINT p, uint32_t flags = 0, bool alt = false) {
        if (alt)
            desktop.held.insert(HeldKey::Alt);
        LeftDown(VIEW_PERSPECTIVE, p, flags);
        LeftUp(p, flags);
        desktop.held.clear();
    }
    ints Selected() { return {Level().decal_selection.begin(), Level().decal_selection.end()}; }
    const DecalTemplate& Template(size_t i) { return *Level().decal_template.at(i); }
};

TEST_F(DecalMouseTest, KeysDecideWhatAPressDoes) {
    const POINT left = At(-60, 0), right = At(60, 0), above = At(0, 60), below = At(0, -60);
    Press(left, MOUSE_CONTROL);
    Press(right, MOUSE_CONTROL);
    ASSERT_EQ(Level().decal_template.size(), 2u);
    EXPECT_EQ(Selected(), ints{2});
    Press(left, MOUSE_SHIFT);
    EXPECT_EQ(Selected(), ints{1});
    Press(right, MOUSE_SHIFT | MOUSE_CONTROL);
    EXPECT_EQ(Selected(), (ints{1, 2}));
    Press(left, MOUSE_SHIFT | MOUSE_CONTROL);
    EXPECT_EQ(Selected(), ints{2});
    const D3DVECTOR place = Template(1).o_position;
    Press(above, 0, true);
    EXPECT_GT(Template(1).o_position.y, place.y + 30);
    Press(below, MOUSE_CONTROL, true);
    ASSERT_EQ(Level().decal_template.size(), 3u);
    EXPECT_EQ(Selected(), ints{3});
    EXPECT_LT(Template(2).o_position.y, place.y - 30);
    EXPECT_EQ(UndoTexts(),
              (std::vector<std::string>{"Place a decal.", "Place a decal.", "Move a decal.", "Copy a decal."}));
    EXPECT_TRUE(Ed().project_file_need_save);
    EXPECT_EQ(Ed().editor_state, ES_DECAL);
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(Undo());
    EXPECT_EQ(Level().decal_template.size(), 0u);
    EXPECT_EQ(Ed().editor_state, ES_DECAL) << "the tool stays in the hand";
    // The other views know no decals.
    Press(left, MOUSE_CONTROL);
    LeftDown(VIEW_FRONT, At(0, 0), MOUSE_CONTROL);
    LeftUp(At(0, 0));
    EXPECT_EQ(Level().decal_template.size(), 1u);
}

TEST_F(DecalMouseTest, WhatIsMissingIsTold) {
    Ed().texture_choice = {};
    Press(At(0, 0), MOUSE_CONTROL);
    EXPECT_TRUE(Level().decal_template.empty());
    Press(At(0, 0), 0, true); // none is selected
    EXPECT_EQ(desktop.notices.size(), 2u);
    EXPECT_EQ(Level().undo_buffer.GetActionCount(), 0);
}

TEST_F(DecalMouseTest, DeleteAndEscape) {
    Press(At(-60, 0), MOUSE_CONTROL);
    Press(At(60, 0), MOUSE_CONTROL);
    SelectBrushes({0});
    Ed().SetEditorState(ES_DECAL);
    Ed().DeleteSelection();
    EXPECT_EQ(Level().GetBrushCount(), 1);
    ASSERT_EQ(Level().decal_template.size(), 1u);
    EXPECT_EQ(Template(0).id, 1u);
    EXPECT_TRUE(Undo());
    EXPECT_EQ(Level().decal_template.size(), 2u);
    EXPECT_EQ(Selected(), ints{2});
    const EditorState before = Ed().old_editor_state;
    Ed().Cancel();
    EXPECT_EQ(Selected(), ints{});
    EXPECT_EQ(Ed().editor_state, ES_DECAL);
    Ed().Cancel();
    EXPECT_EQ(Ed().editor_state, before);
    EXPECT_EQ(Level().decal_template.size(), 2u);
}

TEST_F(DecalMouseTest, ADragThatScalesIsOneStep) {
    Press(At(0, 0), MOUSE_CONTROL);
    for (int i = 0; i < 5; ++i)
        Ed().ScaleDecal(4, -1);
    EXPECT_EQ(Template(0).x_size, 36);
    EXPECT_EQ(Template(0).y_size, 11);
    Ed().EndDragRecord();
    Ed().RotateDecal(-5);
    Ed().SetDecalColor(0x102030);
    EXPECT_EQ(Template(0).color, MakeColor(0x10, 0x20, 0x30, 255));
    EXPECT_EQ(UndoTexts(), (std::vector<std::string>{"Place a decal.", "Scale decals.", "Rotate decals.",
                                                     "Change the color of decals."}));
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(Undo());
    EXPECT_EQ(Template(0).x_size, 16);
    EXPECT_EQ(Template(0).o_rotation, 0);
}

TEST_F(DecalMouseTest, ABrushDraggedAwayBringsItsDecalsBackWithUndo) {
    Press(At(0, 0), MOUSE_CONTROL);
    Ed().SetEditorState(ES_IDLE);
    SelectBrushes({0});
    Ed().editor_state = ES_SELECTED;
    Drag(VIEW_TOP, At(0, 16), At(0, 144)); // along z
    EXPECT_TRUE(Level().decal_template.empty());
    EXPECT_EQ(UndoTexts().back(), "Move objects.");
    EXPECT_TRUE(Undo());
    ASSERT_EQ(Level().decal_template.size(), 1u);
    EXPECT_FALSE(BrushAt(0).decal_list.empty());
    ExpectBox(BrushAt(0).bbox, {-200, -200, 0}, {200, 200, 32});
    EXPECT_TRUE(Redo());
    EXPECT_TRUE(Level().decal_template.empty());
}

// Two boxes share a decal across their joint. The face of one is drawn back: its part comes off, then, with the other,
// the decal itself.
TEST_F(DecalMouseTest, VerticesDraggedAwayBringTheirDecalsBackWithUndo) {
    AddBox({200, -200, 0}, {600, 200, 32});
    Ed().views.perspective.camera_position = {200, 0, -256};
    Press(At(0, 0), MOUSE_CONTROL);
    ASSERT_EQ(Level().decal_template.size(), 1u);
    const auto pieces = [this] {
        return ints{static_cast<int>(BrushAt(0).decal_list.size()), static_cast<int>(BrushAt(1).decal_list.size())};
    };
    ASSERT_EQ(pieces(), (ints{1, 1}));
    for (const bool both : {false, true}) {
        if (both)
            SelectBrushes({0, 1});
        else
            SelectBrushes({0});
        Ed().RebuildSelectionNet();
        Ed().SetEditorState(ES_VERTEX);
        for (SO_VERTEX& v : Level().so_vertex)
            v.selected = v.v.z == 0; // the face toward the camera
        Drag(VIEW_TOP, At(300, 0), At(300, 16));
        EXPECT_EQ(pieces(), (both ? ints{0, 0} : ints{0, 1}));
        EXPECT_EQ(Level().decal_template.size(), both ? 0u : 1u);
        EXPECT_TRUE(Undo());
        EXPECT_EQ(pieces(), (ints{1, 1}));
        ASSERT_EQ(Level().decal_template.size(), 1u);
        EXPECT_EQ(Ed().editor_state, ES_VERTEX);
        EXPECT_TRUE(Redo());
        EXPECT_EQ(Level().decal_template.size(), both ? 0u : 1u);
        EXPECT_TRUE(Undo());
        EXPECT_EQ(pieces(), (ints{1, 1}));
        EXPECT_EQ(Level().decal_template.size(), 1u);
        Ed().SetEditorState(ES_IDLE);
    }
}
