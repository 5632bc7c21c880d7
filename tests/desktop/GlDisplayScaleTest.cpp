#include "desktop/GlScenes.h"
#include "drawing/ViewDrawing.h"
#include "render/DisplayScale.h"

using namespace gl_test;

namespace {

class GlDisplayScaleTest : public GlTest {
protected:
    ~GlDisplayScaleTest() override { crSetDisplayScale(1); }
};

} // namespace

TEST_F(GlDisplayScaleTest, WideLinesTakeThePixelsOfTheSoftwareDevice) {
    for (const float scale : {1.5f, 2.0f, 3.0f, 4.0f}) {
        crSetDisplayScale(scale);
        ExpectSame("level and upright lines at " + std::to_string(scale), [] {
            for (const float at : {0.0f, 7.0f, 20.5f, 33.25f, 62.99f})
                Shape(PT_LINE_LIST, {{2, at, 0}, {50, at, 0}, {at, 60, 0}, {at, 3, 0}}, 0xFF00FF00);
            Shape(PT_LINE_STRIP, {{10, 40, 0}, {30, 40, 0}, {30, 52, 0}, {10, 52, 0}, {10, 40, 0}}, WHITE);
        });
        ExpectSame(
            "slopes at " + std::to_string(scale),
            [] {
                for (int k = 0; k < 12; ++k) {
                    const float angle = static_cast<float>(k) * 0.5236f + 0.1f;
                    Shape(PT_LINE_LIST, {{32, 32, 0}, {32 + 25 * std::cos(angle), 32 + 25 * std::sin(angle), 0}},
                          0xFFFF8000);
                }
            },
            40); // where a centre lies on the rounding of an edge
    }
}
