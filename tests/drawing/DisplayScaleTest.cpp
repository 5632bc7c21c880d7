// What the views draw by its size on the screen, on screens of other scales than one.
#include <gtest/gtest.h>

#include "drawing/ViewDrawing.h"
#include "drawing/ViewSetup.h"
#include "render/DisplayScale.h"

namespace {

constexpr uint32_t WHITE = 0xFFFFFF, RED = 0xFF0000;

class DisplayScaleTest : public ViewTest {
protected:
    ~DisplayScaleTest() override { crSetDisplayScale(1); }
    // Whether exactly the pixels of these rectangles have the colour.
    void ExpectPixels(uint32_t color, const std::vector<RECT>& rectangles) {
        for (int y = 0; y < SIDE; ++y)
            for (int x = 0; x < SIDE; ++x) {
                const bool inside = std::any_of(rectangles.begin(), rectangles.end(), [&](const RECT& r) {
                    return x >= r.left && x < r.right && y >= r.top && y < r.bottom;
                });
                ASSERT_EQ(screen.At(x, y) == color, inside) << x << ", " << y;
            }
    }
};

} // namespace

TEST_F(DisplayScaleTest, DotsAreTheNearestWholeNumber) {
    for (const auto& [scale, kept, dots] : {std::tuple{1.0f, 1.0f, 1u},
                                            {1.25f, 1.25f, 1u},
                                            {1.5f, 1.5f, 2u},
                                            {2.0f, 2.0f, 2u},
                                            {2.6f, 2.6f, 3u},
                                            {0.5f, 1.0f, 1u},
                                            {0.0f, 1.0f, 1u},
                                            {100.0f, 8.0f, 8u},
                                            {std::nanf(""), 1.0f, 1u}}) {
        crSetDisplayScale(scale);
        EXPECT_EQ(crvDisplayScale, kept) << scale;
        EXPECT_EQ(crvDotSize, dots) << scale;
    }
}

TEST_F(DisplayScaleTest, LinesAreADotWide) {
    crSetDisplayScale(2);
    struct Case {
        D3DVECTOR from, to;
        RECT drawn;
    };
    const Case cases[] = {
        {{10, 20, 0}, {30, 20, 0}, {10, 20, 31, 22}}, // as far over the end as it is wider
        {{30, 20, 0}, {10, 20, 0}, {10, 20, 31, 22}},         {{50, 10, 0}, {50, 30, 0}, {50, 10, 52, 31}},
        {{-20, 60, 0}, {8, 60, 0}, {0, 60, 9, 62}}, // cut by the picture
        {{100, 127, 0}, {110, 127, 0}, {100, 127, 111, 128}},
    };
    for (const Case& c : cases) {
        screen.NextFrame();
        DrawLine2D(c.from, c.to, 0xFFFFFFFF);
        ExpectPixels(WHITE, {c.drawn});
    }
    crSetDisplayScale(3); // one pixel on either side
    screen.NextFrame();
    DrawLine2D({10, 20, 0}, {30, 20, 0}, 0xFFFFFFFF);
    ExpectPixels(WHITE, {{9, 19, 31, 22}});
    // A slope of one: three pixels in each column of the line's own length.
    screen.NextFrame();
    DrawLine2D({40, 40, 0}, {60, 60, 0}, 0xFFFFFFFF);
    for (int x = 41; x < 60; ++x)
        for (int y = 0; y < SIDE; ++y)
            ASSERT_EQ(screen.At(x, y) == WHITE, std::abs(y - x) <= 1) << x << ", " << y;
}

TEST_F(DisplayScaleTest, CornersOfBoxesHaveNoNotch) {
    crSetDisplayScale(2);
    screen.NextFrame();
    const D3DVECTOR corners[] = {{10, 10, 0}, {40, 10, 0}, {40, 30, 0}, {10, 30, 0}};
    for (size_t k = 0; k < 4; ++k)
        DrawLine2D(corners[k], corners[(k + 1) % 4], 0xFFFFFFFF);
    // A line lacks its last pixel, and with it the outermost one of the last corner is not there.
    ExpectPixels(WHITE, {{10, 10, 42, 12}, {10, 30, 41, 32}, {10, 10, 12, 32}, {40, 10, 42, 31}});
}

TEST_F(DisplayScaleTest, CaptionsFramesAndMarksGrow) {
    crSetDisplayScale(2);
    SO_VERTEX vertex;
    vertex.v = {0, 0, 0};
    vertex.selected = true;
    world.so_vertex.push_back(vertex);
    context.vertex_mode = true;
    screen.NextFrame();
    RenderSOVertices(world, context);
    ExpectPixels(RED, {{64 - 4, 64 - 4, 64 + 4, 64 + 4}}); // two dots to each side
    world.so_vertex.clear();

    screen.NextFrame();
    screen.End();
    DrawCaption({10, 20, 100, 100}, "-"); // five dots in the fourth row of its letter
    ExpectPixels(WHITE, {{10 + 8, 20 + 14, 10 + 18, 20 + 16}});
    DrawViewFrame({40, 50, 60, 70}, RED);
    ExpectPixels(RED, {{40, 50, 60, 54}, {40, 66, 60, 70}, {40, 50, 44, 70}, {56, 50, 60, 70}});
    screen.Begin();
}
