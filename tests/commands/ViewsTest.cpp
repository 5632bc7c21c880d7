// The views as receivers of events: which event does what, the perspective camera, the orbit, the frame's layout.
#include <cmath>

#include "commands/ScriptData.h"

namespace {

constexpr float TOLERANCE = 1e-3f;

void ExpectNear(const D3DVECTOR& a, const D3DVECTOR& b, float tolerance = TOLERANCE) {
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

} // namespace

TEST_F(ScriptData, TheWheelZoomsSizesTheGridOrTurns) {
    ASSERT_EQ(Run("mouse top wheel_up 100 100\nmouse top wheel_up 100 100 shift\n"), "");
    EXPECT_EQ(interface->View(VIEW_TOP).zoom_in, 2);
    EXPECT_EQ(interface->grid_size, 4);
    ASSERT_EQ(Run("mouse top wheel_down 100 100\nmouse top wheel_down 100 100\n"), "");
    EXPECT_EQ(interface->View(VIEW_TOP).zoom_in, 1);
    EXPECT_EQ(interface->View(VIEW_TOP).zoom_out, 2);
    // A box of 64 by 32 turned by a quarter is one of 32 by 64, about the same middle.
    ASSERT_EQ(Run("view top zoom 1\nview top scroll -256 -256\nset grid_size 8\ndrag top 256 256 320 224\n"
                  "mouse top wheel_up 0 0 ctrl shift\n"),
              "");
    ExpectNear(LevelBrush(0).bbox[7], {16, -32, -16});
    ExpectNear(LevelBrush(0).bbox[1], {48, 32, 48});
}

TEST_F(ScriptData, TheMiddleButtonPansMovesOrFlips) {
    ASSERT_EQ(Run("drag top 100 100 130 90 middle\n"), "");
    EXPECT_EQ(interface->View(VIEW_TOP).view_position[0], -286);
    EXPECT_EQ(interface->View(VIEW_TOP).view_position[1], -246);
    EXPECT_EQ(interface->editor_state, ES_IDLE) << "the pushed state is back";
    ASSERT_EQ(Run("view top scroll -256 -256\ndrag top 256 256 320 192\ndrag top 100 100 116 100 middle shift\n"), "");
    ExpectNear(LevelBrush(0).bbox[7], {16, -32, 0});
    EXPECT_EQ(interface->editor_state, ES_SELECTED);
    EXPECT_EQ(Level().undo_buffer.GetActionCount(), 1) << "such a move has no step of its own";
    // Ctrl flips when it is held at the press alone.
    ASSERT_EQ(Run("mouse top middle_down 100 100\nmouse top middle_up 110 100 ctrl\n"), "");
    EXPECT_EQ(interface->editor_state, ES_SELECTED);
    // With an entity selected nothing starts, and the release pops nothing.
    ASSERT_EQ(Run("entity light\nkey Esc\nmouse top right_down 300 300 ctrl\ndrag top 100 100 140 100 middle shift\n"),
              "");
    EXPECT_EQ(interface->editor_state, ES_SELECTED);
    ExpectNear(LevelBrush(0).bbox[7], {16, -32, 0});
}

TEST_F(ScriptData, TheCameraTurnsFliesAndRunsAlongItsDirection) {
    VIEWINFO& vi = interface->View(VIEW_PERSPECTIVE);
    ASSERT_EQ(Run("camera 0 0 -500 0 0\nmouse perspective wheel_up 9 9\n"), "");
    ExpectNear(vi.camera_position, {0, 0, -436});
    ASSERT_EQ(Run("mouse perspective wheel_down 9 9 shift\nmouse perspective wheel_up 9 9 ctrl shift\n"), "");
    ExpectNear(vi.camera_position, {0, 0, -548}); // 128 back, then 16 forward
    ASSERT_EQ(Run("camera 0 0 -500 0 0\ndrag perspective 100 100 110 104 right\n"), "");
    ExpectNear(vi.camera_position, {15, -6, -500}); // 1.5 units a pixel
    ASSERT_EQ(Run("camera 0 0 -500 0 0\ndrag perspective 100 100 140 120\n"), "");
    EXPECT_NEAR(vi.camera_rotation.x, -0.1f, TOLERANCE);
    EXPECT_NEAR(vi.camera_rotation.y, -0.2f, TOLERANCE);
    ASSERT_EQ(Run("drag perspective 0 4000 0 0\n"), "");
    EXPECT_NEAR(vi.camera_rotation.x, 1.553343f, 1e-6f) << "the elevation stops at 89 degrees";
}

TEST_F(ScriptData, AnOrbitKeepsItsDistanceAndLooksAtItsCentre) {
    ASSERT_EQ(Run("drag top 256 256 320 192\ncamera 100 200 -300 0.1 0.2\nkey Q\n"), "");
    ASSERT_TRUE(interface->special_camera_rotation);
    const VIEWINFO& vi = interface->View(VIEW_PERSPECTIVE);
    const D3DVECTOR centre{32, 0, 32};
    const float distance = Magnitude(D3DVECTOR{100, 200, -300} - centre);
    ExpectNear(vi.camera_position, {100, 200, -300}, 0.01f);
    for (const char* line :
         {"key Left 7", "key Up 20", "key Right 100", "key Down 60", "drag perspective 10 10 150 90"}) {
        ASSERT_EQ(Run(line), "");
        EXPECT_NEAR(Magnitude(vi.camera_position - centre), distance, 0.05f) << line;
        D3DVECTOR direction, normal, right;
        CInterface::ComputeCameraVectors(vi.camera_rotation, direction, normal, right);
        ExpectNear(direction, Normalize(centre - vi.camera_position));
    }
    ASSERT_EQ(Run("key Up 200\npicture perspective above.png\n"), "");
    ExpectNear(vi.camera_position, centre + D3DVECTOR{0, distance, 0}, 0.05f);
    ASSERT_EQ(Run("key Q\nkey Left\n"), "");
    EXPECT_FALSE(interface->special_camera_rotation);
    // Without an orbit the key does nothing.
    ExpectNear(vi.camera_position, centre + D3DVECTOR{0, distance, 0}, 0.05f);
}

TEST_F(ScriptData, TheMouseMakesItsViewTheActiveOne) {
    ASSERT_EQ(Run("mouse left move 10 10\n"), "");
    EXPECT_EQ(interface->active_view, VIEW_LEFT);
    EXPECT_EQ(interface->status[PANE_POSITION], "Position: X: 0,  Y: 240,  Z: -240"); // 246 snaps toward zero
}

TEST_F(ScriptData, OneViewFillsTheFrame) {
    frame->SetClientSize(1000, 800);
    EXPECT_EQ(frame->layout.columns, (std::array<int, 2>{495, 495}));
    EXPECT_EQ(frame->layout.rows, (std::array<int, 2>{354, 354}));
    ASSERT_EQ(Run("key F3\n"), ""); // left: below, at the left
    EXPECT_EQ(frame->layout.columns, (std::array<int, 2>{1000, 0}));
    EXPECT_EQ(frame->layout.rows, (std::array<int, 2>{0, 800}));
    ASSERT_EQ(Run("key W\n"), "");
    EXPECT_EQ(frame->layout.columns, (std::array<int, 2>{495, 495}));
    ASSERT_EQ(Run("set active_view 0\nkey W\n"), ""); // top: above, at the right
    EXPECT_EQ(frame->layout.columns, (std::array<int, 2>{0, 1000}));
    EXPECT_EQ(frame->layout.rows, (std::array<int, 2>{800, 0}));
}

TEST_F(ScriptData, BoundsCanBeEditedOnlyWhileABoxIsOn) {
    ASSERT_EQ(Run("key K\n"), "");
    EXPECT_FALSE(interface->edit_cordon_bounds);
    ASSERT_EQ(Run("command OnCordonstate\nkey K\n"), "");
    EXPECT_TRUE(interface->edit_cordon_bounds);
    EXPECT_EQ(interface->view_grid_color[0], 0x640000u);
    // The right button grabs the right side of the cordon box, 128 units off the middle.
    ASSERT_EQ(Run("drag top 400 256 432 256 right\n"), "");
    EXPECT_EQ(BoxMax(interface->views.cordon_box).x, 160.0f);
    ASSERT_EQ(Run("command OnCordonstate\n"), "");
    EXPECT_FALSE(interface->edit_cordon_bounds);
    EXPECT_EQ(interface->view_grid_color[0], 100u);
}

TEST_F(ScriptData, NewIdsLeaveTheUndoLists) {
    ASSERT_EQ(Run("drag top 256 256 320 192\nkey Esc\ndrag top 100 100 140 60\nkey Backspace\n"), "");
    const int steps = Level().undo_buffer.GetActionCount();
    ASSERT_EQ(Run("command OnToolsReindexallobjectids\n"), "");
    EXPECT_EQ(Level().undo_buffer.GetActionCount(), steps);
    ASSERT_EQ(Run("key Ctrl+Z\n"), "");
    EXPECT_EQ(Level().GetBrushCount(), 2);
}

TEST_F(ScriptData, PathsAreCopiedWithNewPointsToEverySelectedObject) {
    ASSERT_EQ(Run("entity object_point\ndrag top 256 256 320 192\nmouse top right_down 100 100 ctrl\n"), "");
    const uint32_t owner = LevelBrush(0).GetObjectID();
    ASSERT_EQ(LevelBrush(0).path.GetCount(), 1);
    EXPECT_EQ(Level().entity.at(0)->path_parent_id, owner);
    ASSERT_EQ(Run("command OnEditCopypath\nkey Esc\ndrag top 400 400 440 380\ncommand OnEditPastepath\n"), "");
    ASSERT_EQ(LevelBrush(1).path.GetCount(), 1);
    EXPECT_NE(LevelBrush(1).path.Get(0), LevelBrush(0).path.Get(0));
    EXPECT_EQ(Level().GetEntityFromID(LevelBrush(1).path.Get(0))->path_parent_id, LevelBrush(1).GetObjectID());
}
