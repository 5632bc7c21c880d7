#include <numbers>

#include "desktop/GlScenes.h"
#include "drawing/DrawContext.h"
#include "drawing/ViewDrawing.h"
#include "scene/World.h"

using namespace gl_test;

namespace {

class GlDeviceTest : public GlTest {};

} // namespace

TEST_F(GlDeviceTest, ShapesTakeTheSamePixels) {
    ExpectSame("triangles by their centres", [] {
        Shape(PT_TRI_LIST, {{0, 0, 0}, {64, 0, 0}, {0, 64, 0}}, 0xFFFF0000);
        Shape(PT_TRI_LIST, {{64, 0, 0}, {64, 64, 0}, {0, 64, 0}}, 0xFF00FF00);
        Quad(10.5f, 20.5f, 14.5f, 23.5f, 0, 0xFF0000FF); // edges through centres
        Shape(PT_TRI_FAN, {{40, 40, 0}, {50.3f, 33, 0}, {60, 41, 0}, {57, 55.7f, 0}, {41, 52, 0}}, WHITE);
    });
    ExpectSame("pixels of the screen", [] {
        crBegin(PT_TRI_LIST, VT_XYZRHW | VT_DIFFUSE);
        for (const auto& [x, y, color] :
             {std::tuple{3.25f, 2.5f, 0xFFFF0000}, {61.0f, 20.0f, 0xFF00FF00}, {17.5f, 63.0f, 0xFF0000FF}})
            crRHW(1), Vertex(x, y, 0.5f, color);
        crEnd();
    });
    ExpectSame("level and upright lines", [] {
        for (const float at : {0.0f, 7.0f, 20.5f, 33.25f, 62.99f}) {
            Shape(PT_LINE_LIST, {{2, at, 0}, {50, at, 0}, {at, 60, 0}, {at, 3, 0}}, 0xFF00FF00);
            Shape(PT_LINE_LIST, {{50.5f, at, 0}, {52.5f, at, 0}, {58.5f, at, 0}, {56.5f, at, 0}}, 0xFFFF0000);
        }
        crBegin(PT_LINE_LIST, VT_XYZRHW | VT_DIFFUSE);
        for (const auto& [x, y] : {std::pair{0.0f, 12.0f}, {64.0f, 12.0f}, {30.0f, 0.0f}, {30.0f, 64.0f}})
            crRHW(1), Vertex(x, y, 0, WHITE);
        crEnd();
    });
    ExpectSame(
        "sloping lines",
        [] {
            for (int i = 0; i < 32; ++i) {
                const float angle = static_cast<float>(i) * std::numbers::pi_v<float> / 16 + 0.1f;
                const float x = 32 + 30 * std::cos(angle), y = 32 + 30 * std::sin(angle);
                crBegin(PT_LINE_LIST, VT_XYZ | VT_DIFFUSE);
                Vertex(32 + 0.4f * (x - 32), 32 + 0.4f * (y - 32), 0, 0xFFFF0000), Vertex(x, y, 0, 0xFF00FFFF);
                crEnd();
            }
        },
        12, 1);
    ExpectSame("strips and points", [] {
        crAlphaBlend(BM_ONE, BM_ONE);
        Shape(PT_LINE_STRIP,
              {{10.5f, 10.5f, 0}, {20.5f, 10.5f, 0}, {20.5f, 20.5f, 0}, {10.5f, 20.5f, 0}, {10.5f, 10.5f, 0}},
              0xFF404040);
        Shape(PT_POINT_LIST, {{40, 40, 0}, {40.9f, 41.9f, 0}, {-0.5f, 40, 0}, {63.5f, 0, 0}}, WHITE);
    });
}

TEST_F(GlDeviceTest, SpaceIsSeenAlike) {
    const auto camera = [] {
        SetMatrix(CRM_VIEW, crTranslation({0, 0, 30}));
        SetMatrix(CRM_PROJ, {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1.01f, 1}, {0, 0, -10.1f, 0}}});
    };
    ExpectSame(
        "depth, from before the eye to afar",
        [&] {
            camera();
            Shape(PT_TRI_LIST, {{-20, -10, -40}, {-20, -10, 200}, {40, -10, 60}}, 0xFFFF0000);
            Shape(PT_TRI_LIST, {{-30, -30, 20}, {30, -30, 20}, {0, 30, 40}}, 0xFF00FF00);
            Shape(PT_TRI_LIST, {{-30, 5, 50}, {30, 5, 10}, {0, 20, 2000}}, 0xFF0000FF);
        },
        4);
    ExpectSame(
        "lines through the eye's plane",
        [&] {
            camera();
            for (int i = -5; i <= 5; ++i)
                Shape(PT_LINE_LIST, {{static_cast<float>(i) * 8, -10, -60}, {static_cast<float>(i) * 3, 12, 300}},
                      WHITE);
        },
        12, 2);
    ExpectSame(
        "textures run with the depth",
        [&] {
            camera();
            crTexture(MakeTexture(8, Pattern), 0);
            crBegin(PT_TRI_FAN, VT_XYZ | VT_DIFFUSE | VT_TEX1);
            for (const auto& [x, z, u, v] : {std::tuple{-20.0f, 0.0f, 0.0f, 0.0f},
                                             {20.0f, 0.0f, 2.0f, 0.0f},
                                             {20.0f, 90.0f, 2.0f, 3.0f},
                                             {-20.0f, 90.0f, 0.0f, 3.0f}})
                crUV(u, v), Vertex(x, -8, z, WHITE);
            crEnd();
        },
        25, 1);
    ExpectSame("clip planes", [&] {
        crClipPlaneSet(0, {1, 0, 0, -10.2f});
        crClipPlaneSet(3, {0, -1, 0, 40.3f});
        crClipPlaneEnable(9);
        Quad(0, 0, 64, 64, 0.5f, 0xFFFF8000);
        Shape(PT_LINE_LIST, {{0, 20.5f, 0}, {60, 20.5f, 0}, {5.5f, 0, 0}, {5.5f, 60, 0}, {50.5f, 60, 0}, {50.5f, 2, 0}},
              WHITE);
        crClipPlaneEnable(0);
        Quad(60, 60, 64, 64, 0, WHITE);
    });
}

TEST_F(GlDeviceTest, TestsAndBlendingAgree) {
    ExpectSame("culling", [] {
        int column = 0;
        for (const CullMode mode : {CULL_NONE, CULL_CW, CULL_CCW}) {
            criSetStateValue(RS_CULLMODE, mode);
            const float x = 20.0f * static_cast<float>(column++);
            Shape(PT_TRI_LIST, {{x, 0, 0}, {x + 16, 0, 0}, {x, 16, 0}}, 0xFFFF0000);
            Shape(PT_TRI_LIST, {{x, 20, 0}, {x, 36, 0}, {x + 16, 20, 0}}, 0xFF00FF00);
            Shape(PT_TRI_STRIP, {{x, 40, 0}, {x + 16, 40, 0}, {x, 56, 0}, {x + 16, 56, 0}}, 0xFF0000FF);
            Shape(PT_LINE_LIST, {{x, 60, 0}, {x + 16, 60, 0}, {x + 16, 62, 0}, {x, 62, 0}}, WHITE); // have no sides
        }
    });
    ExpectSame("depth functions", [] {
        for (uint32_t func = CMP_NEVER; func <= CMP_ALWAYS; ++func) {
            const float y = 8.0f * static_cast<float>(func - CMP_NEVER);
            criSetStateValue(RS_ZFUNC, CMP_ALWAYS);
            Quad(0, y, 64, y + 8, 0.5f, 0xFF202020);
            criSetStateValue(RS_ZFUNC, func);
            Quad(0, y, 16, y + 8, 0.25f, 0xFFFF0000), Quad(16, y, 32, y + 8, 0.5f, 0xFF00FF00),
                Quad(32, y, 48, y + 8, 0.75f, 0xFF0000FF);
        }
        criSetStateValue(RS_ZFUNC, CMP_LESSEQUAL);
        criSetStateValue(RS_ZWRITEENABLE, 0);
        Quad(48, 0, 56, 64, 0.1f, 0xFFFFFF00);
        criSetStateValue(RS_ZWRITEENABLE, 1);
        Quad(50, 0, 60, 64, 0.3f, 0xFF00FFFF);
        criSetStateValue(RS_ZENABLE, 0);
        Quad(0, 30, 64, 34, 0.9f, WHITE);
    });
    ExpectSame("alpha functions", [] {
        for (uint32_t func = CMP_NEVER; func <= CMP_ALWAYS; ++func)
            for (uint32_t alpha = 0; alpha < 8; ++alpha) {
                crAlphaTest(static_cast<CmpFunc>(func), 0x81);
                const float x = 8.0f * static_cast<float>(alpha), y = 8.0f * static_cast<float>(func - CMP_NEVER);
                Quad(x, y, x + 8, y + 8, 0, (0x7D + alpha) << 24 | 0x20 * func | 0x80);
            }
    });
    ExpectSame(
        "blending",
        [] {
            for (uint32_t src = BM_ZERO; src <= BM_SRCALPHASAT; ++src)
                for (uint32_t dst = BM_ZERO; dst <= BM_INVDESTCOLOR; ++dst) {
                    const float x = 5.0f * static_cast<float>(src), y = 5.0f * static_cast<float>(dst);
                    crAlphaBlend(BM_NONE);
                    Quad(x, y, x + 5, y + 5, 0, 0xFF6496C8);
                    crAlphaBlend(static_cast<BlendMode>(src), static_cast<BlendMode>(dst));
                    Quad(x, y, x + 4, y + 4, 0, 0x4080C0F0);
                }
        },
        0, 0.6);
    ExpectSame("shades", [] {
        for (const ShadeMode mode : {SHADE_GOURAUD, SHADE_FLAT}) {
            criSetStateValue(RS_SHADEMODE, mode);
            const float y = mode == SHADE_FLAT ? 34.0f : 2.0f;
            for (const PrimType prim : {PT_TRI_STRIP, PT_TRI_FAN}) {
                const float x = prim == PT_TRI_FAN ? 34.0f : 2.0f;
                crBegin(prim, VT_XYZ | VT_DIFFUSE);
                Vertex(x, y, 0, 0xFFFF0000), Vertex(x + 26, y, 0, 0xFF00FF00), Vertex(x + 9, y + 20, 0, 0xFF0000FF),
                    Vertex(x, y + 27, 0, WHITE);
                crEnd();
            }
        }
    });
    ExpectSame(
        "a view clears and fills its own part",
        [] {
            crSetViewport(9, 17, 33, 21);
            crBgColor(0x336699);
            criTextureDevice().Clear(CLEAR_TARGET | CLEAR_ZBUFFER, 0x336699, 1, 0);
            Quad(-1000, -1000, 32, 2000, 0.5f, 0xFFFF0000);
            Shape(PT_LINE_LIST, {{-900, 10, 0}, {900, 37.5f, 0}, {40, -600, 0}, {21, 700, 0}}, 0xFF00FF00);
            crSetViewport(40, 50, 100, 100); // beyond the picture
            criTextureDevice().Clear(CLEAR_TARGET, 0x0000FF, 1, 0);
            Shape(PT_TRI_LIST, {{0, 0, 0}, {64, 0, 0}, {0, 64, 0}}, WHITE);
        },
        3);
}

TEST_F(GlDeviceTest, StagesAgree) {
    const auto textures = [] {
        crTexture(MakeTexture(8, Pattern), 0);
        crTexture(MakeTexture(4, [](uint32_t x, uint32_t y) { return 0xA0000000 | x * 80 << 16 | y * 80; }), 1);
    };
    const auto quad = [](int place) {
        const float x = static_cast<float>(place % 6) * 10, y = static_cast<float>(place / 6) * 10;
        crBegin(PT_TRI_STRIP, VT_XYZ | VT_DIFFUSE | VT_TEX2);
        for (const auto& [right, down] : {std::pair{0, 0}, {1, 0}, {0, 1}, {1, 1}}) {
            crUV(static_cast<float>(right), static_cast<float>(down));
            crUV2(static_cast<float>(right) * 2, static_cast<float>(down));
            Vertex(x + static_cast<float>(right) * 8, y + static_cast<float>(down) * 8, 0,
                   right != 0 ? 0xC0FF8040 : 0x404080FF);
        }
        crEnd();
    };
    constexpr uint32_t ARGS[] = {ARG_DIFFUSE,
                                 ARG_CURRENT,
                                 ARG_TEXTURE,
                                 ARG_TFACTOR,
                                 ARG_TEXTURE | ARG_COMPLEMENT,
                                 ARG_TFACTOR | ARG_ALPHAREPLICATE};
    for (uint32_t op = OP_SELECTARG1; op <= OP_ADD; ++op)
        ExpectSame(
            "operation " + std::to_string(op),
            [&] {
                textures();
                criSetStateValue(RS_TEXTUREFACTOR, 0x90C04020);
                crAlphaBlend(BM_SRCALPHA);
                int place = 0;
                for (size_t i = 0; i < std::size(ARGS); ++i)
                    for (const size_t next : {1u, 4u}) {
                        const uint32_t first = ARGS[i], second = ARGS[(i + next) % std::size(ARGS)];
                        crColorOp(static_cast<OpType>(op), first, second, 0);
                        crAlphaOp(static_cast<OpType>(op), second, first, 0);
                        quad(place++);
                    }
            },
            0, 0.5);
    ExpectSame(
        "two stages",
        [&] {
            textures();
            int place = 0;
            for (const OpType op : {OP_SELECTARG2, OP_MODULATE, OP_MODULATE4X, OP_ADD})
                for (const uint32_t set : {0u, 1u, 2u}) { // the third is not there: 0
                    crColorOp(OP_MODULATE, ARG_TEXTURE, ARG_DIFFUSE, 0);
                    crColorOp(op, ARG_TEXTURE, ARG_CURRENT, 1);
                    criSetStageValue(1, TSS_TEXCOORDINDEX, set);
                    quad(place++);
                }
            crTexture(CR_NO_TEXTURE, 0); // white
            quad(place++);
            criSetStageValue(0, TSS_COLOROP, OP_DISABLE); // the vertices alone
            quad(place++);
        },
        0, 0.5);
    ExpectSame("no colours in the vertices", [&] {
        textures();
        crBegin(PT_TRI_LIST, VT_XYZ | VT_TEX1);
        crUV(0, 0), crXYZ(0, 0, 0), crUV(1, 0), crXYZ(64, 0, 0), crUV(0, 1), crXYZ(0, 64, 0);
        crEnd();
    });
}

TEST_F(GlDeviceTest, TexturesAgree) {
    for (const TAType mode : {TA_WRAP, TA_MIRROR, TA_CLAMP})
        for (const TFType filter : {TF_POINT, TF_LINEAR})
            ExpectSame(
                "address " + std::to_string(mode) + " filter " + std::to_string(filter),
                [&] {
                    crTexture(MakeTexture(8, Pattern), 0);
                    crTextureAddress(mode, mode, 0);
                    criSetStageValue(0, TSS_MAGFILTER, filter);
                    criSetStageValue(0, TSS_MINFILTER, filter);
                    crBegin(PT_TRI_FAN, VT_XYZRHW | VT_DIFFUSE | VT_TEX1);
                    ScreenVertex(0, 0, 1, -1.31f, -0.7f), ScreenVertex(64, 0, 1, 1.93f, -0.7f),
                        ScreenVertex(64, 64, 1, 1.93f, 1.47f), ScreenVertex(0, 64, 1, -1.31f, 1.47f);
                    crEnd();
                },
                16, 1);
    struct Case {
        const char* name;
        uint32_t type, bpp;
    };
    for (const Case& c : {Case{"24 bits", TEX_NORMAL, 24},
                          {"565", TEX_NORMAL, 16},
                          {"4444", TEX_ALPHA_NORMAL, 16},
                          {"alpha", TEX_ALPHA, 8},
                          {"bumps", TEX_BUMP, 16}})
        ExpectSame(c.name, [&] {
            crTexture(MakeTexture(8, Pattern, c.type, c.bpp), 0);
            crAlphaOp(OP_SELECTARG1, ARG_TEXTURE, ARG_DIFFUSE, 0);
            crAlphaBlend(BM_SRCALPHA);
            TexturedQuad(1);
        });
}

// A small level as the editor shows it, textured, with portals and selected brushes, lines and a caption.
TEST_F(GlDeviceTest, ViewsOfALevelAgree) {
    constexpr uint32_t WIDTH = 320, HEIGHT = 240;
    const auto level = [](int view, float scale) {
        World world;
        world.material.resize(3);
        world.material[1].texture_index = MakeTexture(16, Pattern, TEX_NORMAL);
        world.material[2].texture_index = MakeTexture(16, Pattern);
        world.material[2].transparent = true;
        for (int i = 0; i < 60; ++i) {
            const D3DVECTOR min = {static_cast<float>(i % 6) * 60 - 180, static_cast<float>(i / 6 % 3) * 50 - 60,
                                   static_cast<float>(i / 18) * 70};
            BrushShape shape;
            shape.bb = MakeBox(min, min + D3DVECTOR{40.0f + static_cast<float>(i % 7), 30, 50});
            shape.pivot = min + D3DVECTOR{20, 15, 25};
            shape.color = {static_cast<float>(i % 3) * 0.5f, static_cast<float>(i % 5) * 0.25f, 1, 1};
            Brush& brush = *world.AddBrush(std::make_unique<Brush>(shape));
            brush.is_selected = i % 11 == 3;
            brush.type = i % 13 == 5 ? BT_PORTAL : BT_BOX;
            brush.ForEachSurface([i](Surface& s, int, bool) {
                s.texture.index = i % 3;
                s.uv.clear();
                for (const D3DVECTOR& p : s.vertices)
                    s.uv.push_back({(p.x + p.z) * 0.013f, (p.y + p.z) * 0.017f});
            });
        }
        const auto w = static_cast<float>(WIDTH), h = static_cast<float>(HEIGHT);
        DrawContext context;
        context.view = view;
        context.scale = scale;
        context.brush_texture = MakeTexture(8, [](uint32_t x, uint32_t) { return x % 5 < 3 ? WHITE : 0x00FFFFFF; });
        const RECT rect{0, 0, static_cast<int32_t>(WIDTH), static_cast<int32_t>(HEIGHT)};
        if (view == VIEW_PERSPECTIVE) {
            SetMatrix(CRM_VIEW, crIdentity());
            const uint32_t old = crMCurrent(CRM_VIEW);
            crMViewTo({-210, 110, -130}, {0, 0, 100}, {0, 1, 0}, 0);
            crMCurrent(CRM_PROJ);
            crMSetIdentity();
            crMProj(std::numbers::pi_v<float> / 2, h / w, 10, 10000);
            crMCurrent(old);
        } else {
            const int32_t position[2] = {-static_cast<int32_t>(WIDTH) / 2, -static_cast<int32_t>(HEIGHT) / 2};
            const uint32_t colors[3] = {0xFF202020, 0xFF404040, 0xFF606060};
            DrawGrid(rect, position, 8, colors);
            D3DMATRIX m = crIdentity();
            if (view == VIEW_TOP)
                m.m[0][0] = scale, m.m[1][1] = 0, m.m[1][2] = 1, m.m[2][1] = scale, m.m[2][2] = 0;
            else
                m.m[0][0] = scale, m.m[1][1] = scale;
            SetMatrix(CRM_VIEW, m);
            SetMatrix(CRM_PROJ, {{{2 / w, 0, 0, 0}, {0, 2 / h, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 1}}});
        }
        world.RenderBrushes(context);
        RenderDragBox(context, 0xFFFFFF00, MakeBox({-100, -50, 0}, {90, 40, 150}));
        crvD3DDevice->EndScene();
        DrawCaption(rect, "Front (X/Y)");
        DrawViewFrame(rect, 0xFFFFFF);
        crvD3DDevice->BeginScene();
    };
    struct Case {
        int view;
        float scale;
        size_t strong;
    };
    for (const Case& c :
         {Case{VIEW_TOP, 1, 60}, {VIEW_TOP, 0.25f, 60}, {VIEW_FRONT, 2, 60}, {VIEW_PERSPECTIVE, 1, 300}})
        ExpectSame(
            "view " + std::to_string(c.view) + " at " + std::to_string(c.scale), [&] { level(c.view, c.scale); },
            c.strong, 0.5, WIDTH, HEIGHT);
}
