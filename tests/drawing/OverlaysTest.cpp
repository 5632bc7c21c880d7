#include <gtest/gtest.h>

#include "drawing/ViewDrawing.h"
#include "drawing/ViewSetup.h"

namespace {

constexpr uint32_t RED = 0xFF0000, GREEN = 0x00FF00, YELLOW = 0xFFFF00;

class OverlaysTest : public ViewTest {
protected:
    // Dashes: in the row that the lines take, the left half shows.
    uint32_t DashTexture() {
        constexpr uint32_t W = 8, H = 16, ROW = 9;
        std::vector<uint32_t> argb(W * H, 0xFF808080);
        for (uint32_t x = 0; x < W; ++x)
            argb[ROW * W + x] = x < 4 ? 0xFFFFFFFF : 0x00FFFFFF;
        return MakeTexture(W, H, argb);
    }
    void AddVertex(const D3DVECTOR& v, bool selected) {
        SO_VERTEX vertex;
        vertex.v = v;
        vertex.selected = selected;
        world.so_vertex.push_back(vertex);
    }
    void AddEdge(uint16_t a, uint16_t b, bool curved, bool selected) {
        SO_EDGE edge;
        edge.e = {{a, b}};
        edge.curved = curved;
        edge.selected = selected;
        world.so_edge.push_back(edge);
    }
    void DrawNet() {
        screen.NextFrame();
        RenderSOVertices(world, context);
    }
};

} // namespace

TEST_F(OverlaysTest, GridLines) {
    constexpr uint32_t COLORS[3] = {0xFF111111, 0xFF222222, 0xFF333333};
    constexpr uint32_t MINOR = 0x111111, MAJOR = 0x222222, AXIS = 0x333333;
    struct Line {
        int at;
        uint32_t color;
    };
    struct Case {
        int32_t x, y;
        std::vector<Line> columns, rows;
    };
    const Case cases[] = {
        {-64, -64, {{0, MINOR}, {16, MINOR}, {64, AXIS}, {112, MINOR}}, {{0, MINOR}, {64, AXIS}, {80, MINOR}}},
        {8, 24, {{8, MINOR}, {120, MAJOR}, {104, MINOR}}, {{8, MINOR}, {104, MAJOR}, {120, MINOR}}},
        {-72, -8, {{8, MINOR}, {72, AXIS}, {56, MINOR}}, {{8, AXIS}, {24, MINOR}, {120, MINOR}}},
        {-300, 0, {{12, MINOR}, {44, MAJOR}, {124, MINOR}}, {{0, AXIS}, {16, MINOR}, {112, MINOR}}},
    };
    for (const Case& c : cases) {
        screen.NextFrame();
        const int32_t position[2] = {c.x, c.y};
        DrawGrid(screen.window, position, 16, COLORS);
        const auto is_line = [](const std::vector<Line>& lines, int at) { return (at - lines[0].at) % 16 == 0; };
        int free_column = 0, free_row = 0;
        while (is_line(c.columns, free_column))
            ++free_column;
        while (is_line(c.rows, free_row))
            ++free_row;
        for (const Line& line : c.columns)
            EXPECT_EQ(screen.At(line.at, free_row), line.color) << c.x << ": column " << line.at;
        for (const Line& line : c.rows)
            EXPECT_EQ(screen.At(free_column, line.at), line.color) << c.y << ": row " << line.at;
        EXPECT_EQ(screen.CountOf(0), 120 * 120) << "8 lines each way";
    }
    screen.NextFrame();
    const int32_t position[2] = {0, 0};
    DrawGrid({10, 20, 30, 50}, position, 0, COLORS); // a step of 0 counts as 1
    EXPECT_EQ(screen.CountOf(0), SIDE * SIDE - 20 * 30);
}

TEST_F(OverlaysTest, AGridThatWouldBeASolidCarpetIsThinned) {
    struct Case {
        int grid;
        float pixels_a_unit;
        int64_t step; // units: eight times as often as four pixels need
    };
    for (const Case& c : {Case{8, 1, 8}, Case{8, 0.5f, 8}, Case{8, 0.25f, 64}, Case{1, 1, 8}, Case{1, 1.0f / 64, 512},
                          Case{512, 1.0f / 64, 512}, Case{4, 1, 4}, Case{0, 8, 1}})
        EXPECT_EQ(ThinnedGrid(c.grid, c.pixels_a_unit), c.step) << c.grid << " " << c.pixels_a_unit;
}

TEST_F(OverlaysTest, DashesKeepTheirLengthAtAnyZoom) {
    context.brush_texture = DashTexture();
    for (const int zoom : {0, 1, -1}) {
        SetView(VIEW_TOP, zoom);
        const float side = 40 / context.scale; // 40 pixels
        screen.NextFrame();
        RenderDragBox(context, 0xFFFF0000, MakeBox({0, 0, -side}, {side, 5, 0}));
        for (int k = 0; k < 40; ++k) {
            const uint32_t dash = k % 8 < 4 ? RED : 0;
            EXPECT_EQ(screen.At(64 + k, 64), dash) << k;                     // the upper edge, to the right
            EXPECT_EQ(screen.At(104, 64 + k), dash) << k;                    // the right one, down
            EXPECT_EQ(screen.At(64 + 39 - k, 104), dash) << k;               // the lower one, back
            EXPECT_EQ(screen.At(64, 64 + 39 - k), k < 39 ? dash : RED) << k; // the left one, up to the first
        }
        EXPECT_EQ(screen.CountOf(RED), 4 * 20);
    }
    EXPECT_EQ(crvLastStateValues[RS_ALPHABLENDENABLE], 0u);
    struct Case {
        int view, left, top, right, bottom;
    };
    const Box box = MakeBox({0, -8, 16}, {16, 8, 32});
    for (const Case& c : {Case{VIEW_TOP, 64, 32, 80, 48}, {VIEW_FRONT, 64, 56, 80, 72}, {VIEW_LEFT, 80, 56, 96, 72}}) {
        SetView(c.view);
        screen.NextFrame();
        RenderDragBox(context, 0xFFFF0000, box);
        EXPECT_EQ(screen.At(c.left, c.top), RED) << c.view;
        EXPECT_EQ(screen.At(c.right, c.top), RED) << c.view;
        EXPECT_EQ(screen.At(c.right - 1, c.bottom), RED) << c.view;
        EXPECT_EQ(screen.At(c.left, c.bottom - 1), RED) << c.view;
        EXPECT_EQ(screen.CountOf(RED), 4 * 8) << c.view;
    }
    SetCamera(100);
    screen.NextFrame();
    RenderDragBox(context, 0xFFFF0000, box);
    EXPECT_TRUE(IsEmpty());
}

TEST_F(OverlaysTest, Lines) {
    SetView(VIEW_TOP);
    RenderOutline({{0, 0, 0}, {10, 0, 0}, {10, 0, 10}}, 0xFF0000);
    EXPECT_EQ(screen.CountOf(RED), 10 + 10);
    EXPECT_EQ(screen.At(64, 64), RED);
    EXPECT_EQ(screen.At(74, 55), RED);
    RenderOutline({{0, 0, 0}}, 0xFF00FF00);
    EXPECT_EQ(screen.CountOf(GREEN), 0);
    DrawLine2D({3, 5, 0}, {9, 5, 0}, 0xFF00FF00);
    EXPECT_EQ(screen.CountOf(GREEN), 6);
    EXPECT_EQ(screen.At(8, 5), GREEN);
    DrawLine3D({0, 0, -10}, {50, 0, -10}, 0xFF0000FF, 0xFF0000FF);
    EXPECT_EQ(screen.CountOf(0x0000FF), 50);
}

TEST_F(OverlaysTest, VertexMarks) {
    SetView(VIEW_FRONT);
    screen.background = 0x123456;
    AddVertex({0, 0, 0}, false);
    AddVertex({-40.6f, 20, 0}, true); // 23.4, cut to 23
    AddVertex({1e30f, 0, 0}, true);
    DrawNet();
    EXPECT_TRUE(IsEmpty());
    context.vertex_mode = true;
    DrawNet();
    EXPECT_EQ(screen.CountOf(GREEN), 4 * 4);
    EXPECT_EQ(screen.At(62, 62), GREEN);
    EXPECT_EQ(screen.At(65, 65), GREEN);
    EXPECT_EQ(screen.CountOf(RED), 4 * 4);
    EXPECT_EQ(screen.At(21, 42), RED);
    EXPECT_EQ(screen.At(24, 45), RED);
    EXPECT_EQ(screen.CountOf(0), 6 * 6 - 4 * 4);
    EXPECT_EQ(screen.At(20, 41), 0u);
    EXPECT_EQ(screen.At(25, 46), 0u);
}

TEST_F(OverlaysTest, EdgesOfTheNet) {
    AddVertex({0, 0, 0}, false);
    AddVertex({20, 0, 0}, false);
    AddVertex({0, 20, 0}, false);
    AddEdge(0, 1, false, false);
    AddEdge(0, 9, false, true); // no such vertex
    SetView(VIEW_FRONT);
    DrawNet();
    EXPECT_TRUE(IsEmpty()) << "unmarked edges show in the perspective view only";
    world.so_edge[0].selected = true;
    DrawNet();
    EXPECT_EQ(screen.CountOf(YELLOW), 20);
    AddEdge(0, 2, true, false);
    context.brush_texture = DashTexture();
    DrawNet();
    EXPECT_EQ(screen.CountOf(YELLOW), 20);
    EXPECT_EQ(screen.CountOf(RED), 4 + 4 + 4); // 20 pixels from the middle up, dashed
    EXPECT_EQ(screen.At(64, 60), RED);
    EXPECT_EQ(screen.At(64, 59), 0u);
    SetCamera(64); // a pixel a unit
    world.so_edge[0].selected = false;
    DrawNet();
    EXPECT_EQ(screen.CountOf(0xFFFFFF), 20);
}

TEST_F(OverlaysTest, TheNetInThePerspectiveView) {
    SetCamera(64);
    AddVertex({0, 0, 0}, true);
    AddVertex({10, 0, -100}, false); // behind the camera
    Brush& brush = AddBox(world, {-50, -50, 0}, {-30, -30, 8}, {0, 0, 1, 1});
    world.SetBrushSelection(0, true);
    context.vertex_mode = true;
    context.selected_cross_vertex = 0;
    context.selected_cross_edge = 1;
    DrawNet();
    EXPECT_EQ(screen.At(80, 64), 0x808080u); // the arm along x, 32 pixels to each side
    EXPECT_EQ(screen.At(33, 64), 0x808080u);
    EXPECT_EQ(screen.At(64, 40), YELLOW);
    EXPECT_EQ(screen.CountOf(RED), 4 * 4);
    EXPECT_EQ(screen.CountOf(GREEN), 0);
    EXPECT_EQ(screen.At(20, 94), 0x0000FFu) << "the wire of the brush in its own colour";
    EXPECT_TRUE(brush.is_selected);
    context.selected_cross_vertex = 7; // no such vertex
    DrawNet();
    EXPECT_EQ(screen.CountOf(YELLOW), 0);
    EXPECT_EQ(screen.At(64, 40), 0x808080u);
    brush.type = BT_CUSTOM;
    DrawNet();
    EXPECT_EQ(screen.CountOf(0x0000FF), 0);
}

TEST_F(OverlaysTest, CaptionAndFrame) {
    screen.End();
    DrawCaption({10, 20, 100, 100}, "- -");
    // A dash is five dots in the fourth row of its letter; letters are 6 wide.
    for (int k = 0; k < 5; ++k) {
        EXPECT_EQ(screen.At(14 + k, 27), 0xFFFFFFu);
        EXPECT_EQ(screen.At(26 + k, 27), 0xFFFFFFu);
    }
    EXPECT_EQ(screen.CountOf(0xFFFFFF), 10);
    DrawCaption({120, 120, 128, 128}, std::string("W\xE4\n") + std::string(100, 'W')); // runs out of the picture
    DrawCaption({-50, -50, -40, -40}, "W");

    DrawViewFrame({40, 50, 60, 70}, GREEN);
    EXPECT_EQ(screen.CountOf(GREEN), 20 * 20 - 16 * 16);
    EXPECT_EQ(screen.At(40, 50), GREEN);
    EXPECT_EQ(screen.At(59, 69), GREEN);
    EXPECT_EQ(screen.At(58, 60), GREEN);
    EXPECT_EQ(screen.At(57, 60), 0u);
    EXPECT_EQ(screen.At(60, 60), 0u);

    const std::vector<uint8_t> bytes = ReadBackBuffer({39, 50, 41, 52});
    EXPECT_EQ(bytes, (std::vector<uint8_t>{0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 255, 0}));
    EXPECT_EQ(ReadBackBuffer({127, 0, 129, 1}).size(), 6u); // past the edge: black
    EXPECT_TRUE(ReadBackBuffer({5, 5, 5, 9}).empty());
    DrawViewFrame({-10, -10, 200, 200}, RED); // outside on all sides
    EXPECT_EQ(screen.CountOf(RED), 0);
    screen.Begin();
}

TEST(Overlays, WithoutAScreen) {
    DrawCaption({0, 0, 10, 10}, "x");
    DrawViewFrame({0, 0, 10, 10}, RED);
    EXPECT_TRUE(ReadBackBuffer({0, 0, 10, 10}).empty());
}
