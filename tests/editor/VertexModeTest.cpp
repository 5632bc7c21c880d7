// Marking and dragging vertices and edges.
#include <algorithm>
#include <cmath>

#include "editor/EditorFixture.h"

class VertexModeTest : public EditorTest {
protected:
    void SetUp() override {
        AddBox({0, 0, 0}, {64, 64, 64});
        SelectBrushes({0});
        Enter();
    }
    void Enter() {
        Ed().RebuildSelectionNet();
        Ed().SetEditorState(ES_VERTEX);
    }
    int MarkedVertices() {
        return static_cast<int>(std::count_if(Level().so_vertex.begin(), Level().so_vertex.end(),
                                              [](const SO_VERTEX& v) { return v.selected; }));
    }
    int MarkedEdges() {
        return static_cast<int>(
            std::count_if(Level().so_edge.begin(), Level().so_edge.end(), [](const SO_EDGE& e) { return e.selected; }));
    }
    int VerticesAt(const D3DVECTOR& p) {
        int count = 0;
        for (const Surface& s : BrushAt(0).surfaces)
            count += static_cast<int>(std::count(s.vertices.begin(), s.vertices.end(), p));
        return count;
    }
    void MarkAt(const D3DVECTOR& p) {
        for (SO_VERTEX& v : Level().so_vertex)
            v.selected = v.v == p;
    }
};

TEST_F(VertexModeTest, AClickMarksAllVerticesUnderIt) {
    Click(VIEW_FRONT, At(2, 3), MOUSE_SHIFT);
    EXPECT_EQ(MarkedVertices(), 6) << "three sides meet in each of the two corners";
    EXPECT_EQ(MarkedEdges(), 0) << "though edges pass too";
    Click(VIEW_FRONT, At(66, 64), MOUSE_SHIFT | MOUSE_CONTROL);
    EXPECT_EQ(MarkedVertices(), 12);
    Click(VIEW_FRONT, At(64, 64), MOUSE_SHIFT);
    EXPECT_EQ(MarkedVertices(), 6);
    Click(VIEW_FRONT, At(5, 0), MOUSE_SHIFT);
    EXPECT_EQ(MarkedVertices(), 0) << "five pixels are too far";
    EXPECT_GT(MarkedEdges(), 0) << "but the edge is hit";
    Click(VIEW_FRONT, At(30, 30), MOUSE_SHIFT);
    EXPECT_EQ(MarkedVertices() + MarkedEdges(), 0);
}

TEST_F(VertexModeTest, AnEdgeClearsVertexMarks) {
    Click(VIEW_FRONT, At(64, 64), MOUSE_SHIFT);
    Click(VIEW_FRONT, At(-3, 32), MOUSE_SHIFT | MOUSE_CONTROL);
    EXPECT_EQ(MarkedVertices(), 0);
    EXPECT_EQ(MarkedEdges(), 4) << "two edges of two sides each; those along the view are points";
    Click(VIEW_FRONT, At(-4, 32), MOUSE_SHIFT);
    EXPECT_EQ(MarkedEdges(), 0) << "more than three pixels";
}

TEST_F(VertexModeTest, LinesOfACurveAreNeverMarked) {
    Ed().Cancel(), Ed().Cancel();
    AddBox({0, 0, 0}, {64, 64, 64}, BT_PATCH);
    SelectBrushes({1});
    Enter();
    ASSERT_TRUE(std::any_of(Level().so_edge.begin(), Level().so_edge.end(), [](const SO_EDGE& e) { return e.curved; }));
    for (int x = -2; x <= 66; x += 2)
        for (int y = -2; y <= 66; y += 2) {
            Click(VIEW_FRONT, At(x, y), MOUSE_SHIFT);
            for (const SO_EDGE& e : Level().so_edge)
                ASSERT_FALSE(e.curved && e.selected) << x << " " << y;
        }
}

TEST_F(VertexModeTest, ARectangleMarksAtAnyDepth) {
    Drag(VIEW_TOP, At(-16, 80), At(16, -16), MOUSE_SHIFT);
    EXPECT_EQ(MarkedVertices(), 12) << "the four corners with x 0";
    Drag(VIEW_TOP, At(48, 80), At(80, 48), MOUSE_SHIFT | MOUSE_CONTROL);
    EXPECT_EQ(MarkedVertices(), 18);
    Drag(VIEW_TOP, At(0, 64), At(0, 0), MOUSE_SHIFT);
    EXPECT_EQ(MarkedVertices(), 6) << "too thin: a click at its end";
    EXPECT_FALSE(Ed().drag_box_active);
}

// A command in the middle of a drag parts it in two steps.
TEST_F(VertexModeTest, ADragThatACommandInterruptsIsUndoneWhole) {
    Ed().settings.full_undo = true;
    Level().undo_buffer.Empty();
    for (SO_VERTEX& v : Level().so_vertex)
        v.selected = true;
    LeftDown(VIEW_FRONT, At(200, 200));
    MoveSteps(VIEW_FRONT, At(200, 200), At(232, 200));
    ExpectBox(BrushAt(0).bbox, {32, 0, 0}, {96, 64, 64});
    Ed().EndDragRecord(); // as every command does
    MoveSteps(VIEW_FRONT, At(232, 200), At(248, 200));
    LeftUp(At(248, 200));
    ExpectBox(BrushAt(0).bbox, {48, 0, 0}, {112, 64, 64});
    EXPECT_EQ(UndoTexts(), (std::vector<std::string>{"Move vertices.", "Move vertices."}));
    EXPECT_TRUE(Undo());
    ExpectBox(BrushAt(0).bbox, {32, 0, 0}, {96, 64, 64});
    EXPECT_TRUE(Undo());
    ExpectBox(BrushAt(0).bbox, {0, 0, 0}, {64, 64, 64});
}

TEST_F(VertexModeTest, ADragMovesTheMarkedOnes) {
    Click(VIEW_FRONT, At(0, 0), MOUSE_SHIFT);
    Drag(VIEW_FRONT, At(100, 100), At(84, 92));
    EXPECT_EQ(Ed().editor_state, ES_VERTEX);
    EXPECT_EQ(VerticesAt({-16, -8, 0}), 3);
    EXPECT_EQ(VerticesAt({-16, -8, 64}), 3);
    EXPECT_EQ(VerticesAt({64, 64, 64}), 3);
    ExpectBox(Ed().selection_box, {-16, -8, 0}, {64, 64, 64});
    EXPECT_EQ(UndoTexts().back(), "Move vertices.");
    Undo();
    EXPECT_EQ(VerticesAt({0, 0, 0}), 3);
    EXPECT_EQ(MarkedVertices(), 6);
    ExpectBox(Ed().selection_box, {0, 0, 0}, {64, 64, 64});
    ExpectVector(Ed().selection_pivot, {32, 32, 32});
    Redo();
    EXPECT_EQ(VerticesAt({-16, -8, 0}), 3);
}

TEST_F(VertexModeTest, ADraggedEdgeTakesItsNeighboursAlong) {
    Click(VIEW_FRONT, At(0, 32), MOUSE_SHIFT);
    Drag(VIEW_FRONT, At(100, 100), At(116, 100));
    for (const D3DVECTOR& corner : {D3DVECTOR{16, 0, 0}, {16, 64, 0}, {16, 0, 64}, {16, 64, 64}})
        EXPECT_EQ(VerticesAt(corner), 3);
    EXPECT_EQ(VerticesAt({64, 0, 0}), 3);
}

TEST_F(VertexModeTest, AnAnchorOffTheGridComesToLieOnIt) {
    MarkAt({64, 64, 0});
    Level().SOVertexMove({-3, 0, 0}); // 61
    Drag(VIEW_FRONT, At(100, 100), At(108, 100));
    EXPECT_EQ(VerticesAt({64, 64, 0}), 3) << "the next line of the grid";
}

TEST_F(VertexModeTest, WithoutMarksNothingMoves) {
    Drag(VIEW_FRONT, At(100, 100), At(140, 100));
    ExpectBox(BrushAt(0).bbox, {0, 0, 0}, {64, 64, 64});
    Ed().DeleteSelection();
    EXPECT_EQ(Level().GetBrushCount(), 1) << "nor is anything deleted";
}

TEST_F(VertexModeTest, CancelClearsMarksFirst) {
    Ed().settings.show_sel_wire = true;
    Click(VIEW_FRONT, At(0, 0), MOUSE_SHIFT);
    Ed().Cancel();
    EXPECT_EQ(Ed().editor_state, ES_VERTEX);
    EXPECT_EQ(MarkedVertices(), 0);
    EXPECT_EQ(Level().so_vertex.size(), 24u);
    Ed().Cancel();
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    EXPECT_TRUE(Level().so_vertex.empty());
    EXPECT_TRUE(Ed().selection_box_active);
}

// The camera at 0, 0, -500 sees x, y, z at pixel 256 + 256 x / (z + 500), 256 - 256 y / (z + 500).
TEST_F(VertexModeTest, CrossesInThePerspectiveView) {
    MarkAt({64, 64, 0}); // at pixel 289, 223
    const struct {
        int arm;
        POINT press, release;
        D3DVECTOR moved;
    } cases[] = {
        {0, {300, 223}, {320, 223}, {104, 64, 0}}, // x 85 to 124 on the plane y 64: 80 to 120
        {1, {289, 213}, {289, 203}, {64, 80, 0}},  // y 83 to 103 on the plane x 64: 80 to 96
    };
    for (const auto& c : cases) {
        Move(VIEW_PERSPECTIVE, {10, 10});
        EXPECT_EQ(Ed().selected_cross_vertex, -1);
        news.views.clear();
        Move(VIEW_PERSPECTIVE, c.press);
        ASSERT_NE(Ed().selected_cross_vertex, -1);
        EXPECT_EQ(Ed().selected_cross_edge, c.arm);
        EXPECT_EQ(news.views.size(), 4u) << "a cross was picked";
        Move(VIEW_PERSPECTIVE, c.press);
        EXPECT_EQ(news.views.size(), 4u) << "and still is";
        LeftDown(VIEW_PERSPECTIVE, c.press);
        EXPECT_EQ(Ed().editor_state, ES_VERTEX_MOVE);
        Move(VIEW_PERSPECTIVE, c.release);
        LeftUp(c.release);
        EXPECT_EQ(VerticesAt(c.moved), 3) << "arm " << c.arm;
        EXPECT_EQ(UndoTexts().back(), "Move vertices.");
        Undo();
        EXPECT_EQ(VerticesAt({64, 64, 0}), 3);
    }
}

TEST_F(VertexModeTest, AViewAlongThePlaneBringsNoWildNumbers) {
    MarkAt({64, 64, 0});
    Ed().selected_cross_vertex = static_cast<int>(std::find_if(Level().so_vertex.begin(), Level().so_vertex.end(),
                                                               [](const SO_VERTEX& v) { return v.selected; }) -
                                                  Level().so_vertex.begin());
    Ed().selected_cross_edge = 0;
    Activate(VIEW_PERSPECTIVE);
    ExpectVector(Ed().GetCrossPlaneIntersection({100, MIDDLE}), {0, 0, 0}, "along the plane");
    for (const float tilt : {1e-7f, 1e-20f, 1e-38f, -1e-44f}) {
        Ed().View(VIEW_PERSPECTIVE).camera_rotation.x = tilt;
        const D3DVECTOR p = Ed().GetCrossPlaneIntersection({100, MIDDLE});
        EXPECT_TRUE(std::fabs(p.x) <= 1e6f && std::fabs(p.y) <= 1e6f && std::fabs(p.z) <= 1e6f) << tilt;
    }
    Ed().SetViewRect(VIEW_PERSPECTIVE, {0, 0, 0, 0});
    Ed().last_world_position = {8, 8, 8};
    ExpectVector(Ed().GetCrossPlaneIntersection({100, 100}), {8, 8, 8}, "a view without a size");
}

TEST_F(VertexModeTest, AClickPastTheModeEndsIt) {
    Click(VIEW_PERSPECTIVE, {MIDDLE, MIDDLE}, MOUSE_CONTROL); // a surface
    EXPECT_EQ(Ed().editor_state, ES_IDLE);
    EXPECT_TRUE(Level().so_vertex.empty());
}
