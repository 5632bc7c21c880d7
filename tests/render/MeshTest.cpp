// Meshes, drawn alone or in groups, take the pixels of the same primitives drawn one by one.
#include <cstring>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "render/SoftDevice.h"

namespace {

constexpr uint32_t SIDE = 160, FORMAT = VT_XYZ | VT_DIFFUSE | VT_TEX2;

struct Vertex {
    float x, y, z;
    uint32_t argb;
    float uv[4];
};
static_assert(sizeof(Vertex) == 32);

class MeshTest : public testing::Test {
protected:
    MeshTest() {
        device.CreateBackBuffer(SIDE, SIDE);
        device.CreateDepthBuffer({24, 0});
        device.Open();
        for (std::unique_ptr<DeviceSurface>& texture : textures) {
            TextureDescription description;
            description.width = description.height = 16;
            description.format = device.TextureFormats()[3]; // with alpha
            texture = device.CreateTexture(description);
            uint32_t pitch = 0;
            uint8_t* const bytes = texture->Lock(0, 0, pitch);
            for (uint32_t i = 0; i < 16 * pitch; ++i)
                bytes[i] = static_cast<uint8_t>(engine());
        }
    }
    uint32_t Random(uint32_t count) { return static_cast<uint32_t>(engine()) % count; }
    float Place(float reach) { return reach * (static_cast<float>(Random(20001)) / 10000 - 1); }
    bool Chance(uint32_t one_in) { return Random(one_in) == 0; }

    void SetRandomState() {
        constexpr uint32_t BLENDS[] = {BM_ONE, BM_SRCALPHA, BM_INVSRCALPHA, BM_DESTCOLOR};
        constexpr uint32_t OPS[] = {OP_SELECTARG1, OP_SELECTARG2, OP_MODULATE, OP_MODULATE, OP_ADD};
        device.SetRenderState(RS_CULLMODE, 1 + Random(3));
        device.SetRenderState(RS_ZENABLE, Chance(6) ? 0 : 1);
        device.SetRenderState(RS_ZWRITEENABLE, Chance(6) ? 0 : 1);
        device.SetRenderState(RS_ZFUNC, Chance(3) ? 1 + Random(8) : uint32_t{CMP_LESSEQUAL});
        device.SetRenderState(RS_SHADEMODE, Chance(4) ? SHADE_FLAT : SHADE_GOURAUD);
        device.SetRenderState(RS_ALPHABLENDENABLE, Chance(3) ? 1 : 0);
        device.SetRenderState(RS_SRCBLEND, BLENDS[Random(4)]);
        device.SetRenderState(RS_DESTBLEND, BLENDS[Random(4)]);
        device.SetRenderState(RS_ALPHATESTENABLE, Chance(5) ? 1 : 0);
        device.SetRenderState(RS_ALPHAFUNC, CMP_GREATER);
        device.SetRenderState(RS_ALPHAREF, 100);
        for (const uint32_t stage : {0u, 1u}) {
            device.SetTexture(stage, Chance(4) ? nullptr : textures[Random(2)].get());
            device.SetTextureStageState(stage, TSS_COLOROP, Chance(3) ? uint32_t{OP_DISABLE} : OPS[Random(5)]);
            device.SetTextureStageState(stage, TSS_COLORARG1, ARG_TEXTURE);
            device.SetTextureStageState(stage, TSS_COLORARG2, Chance(2) ? ARG_DIFFUSE : ARG_CURRENT);
            device.SetTextureStageState(stage, TSS_TEXCOORDINDEX, Random(2));
            device.SetTextureStageState(stage, TSS_ADDRESSU, 1 + Random(3));
            device.SetTextureStageState(stage, TSS_ADDRESSV, 1 + Random(3));
            device.SetTextureStageState(stage, TSS_MAGFILTER, 1 + Random(2));
        }
    }
    MeshData RandomData() {
        MeshData data;
        data.prim = Chance(3) ? PT_LINE_LIST : PT_TRI_LIST;
        data.fvf = FORMAT;
        const uint32_t count = 3 + Random(200);
        const bool one_color = Chance(2);
        for (uint32_t i = 0; i < count; ++i) { // some beyond the view, behind the eye, and no numbers
            Vertex v{Place(30),
                     Place(30),
                     Place(40) + 35,
                     one_color ? 0xFF8040C0 : static_cast<uint32_t>(engine()),
                     {Place(2), Place(2), Place(1), Place(1)}};
            if (Chance(100))
                v.x = std::numeric_limits<float>::quiet_NaN();
            const auto* const bytes = reinterpret_cast<const uint8_t*>(&v);
            data.vertices.insert(data.vertices.end(), bytes, bytes + sizeof(v));
        }
        const uint32_t corners = data.prim == PT_LINE_LIST ? 2 : 3;
        for (uint32_t i = 0; i < corners * (1 + Random(60)); ++i)
            data.indices.push_back(Random(count));
        return data;
    }
    // A state in which a polygon covers what is there.
    void SetCoveringState() {
        SetRandomState();
        device.SetRenderState(RS_ZENABLE, 1);
        device.SetRenderState(RS_ZWRITEENABLE, 1);
        device.SetRenderState(RS_ZFUNC, CMP_LESSEQUAL);
        device.SetRenderState(RS_ALPHABLENDENABLE, 0);
        device.SetRenderState(RS_ALPHATESTENABLE, 0);
    }
    // Triangles on a few slopes, whose pixels have the very same depth where they overlap.
    MeshData SlopeData() {
        constexpr float GROWTH[] = {0, 0.5f, -0.5f, 0.25f};
        MeshData data;
        data.prim = PT_TRI_LIST;
        data.fvf = FORMAT;
        for (uint32_t i = 0; i < 3 * 20; ++i) {
            const float growth = i % 3 == 0 ? GROWTH[Random(4)] : slope;
            slope = growth;
            const float x = static_cast<float>(Random(65)) - 32, y = static_cast<float>(Random(65)) - 32;
            const Vertex v{x, y, 32 + x * growth, static_cast<uint32_t>(engine()) | 1, {x, y, y, x}};
            const auto* const bytes = reinterpret_cast<const uint8_t*>(&v);
            data.vertices.insert(data.vertices.end(), bytes, bytes + sizeof(v));
            data.indices.push_back(i);
        }
        return data;
    }
    void DrawOneByOne(const MeshData& data) {
        const std::vector<uint16_t> indices(data.indices.begin(), data.indices.end());
        device.DrawIndexedPrimitive(data.prim, data.fvf, data.vertices.data(),
                                    static_cast<uint32_t>(data.vertices.size() / sizeof(Vertex)), indices.data(),
                                    static_cast<uint32_t>(indices.size()));
    }
    static MeshPart Whole(const MeshData& data) {
        return {0, static_cast<uint32_t>(data.indices.size()), 0,
                static_cast<uint32_t>(data.vertices.size() / sizeof(Vertex))};
    }
    std::vector<uint32_t> Picture() {
        std::vector<uint32_t> picture(SIDE * SIDE);
        uint32_t pitch = 0;
        std::memcpy(picture.data(), device.BackBuffer()->Lock(0, 0, pitch), picture.size() * sizeof(uint32_t));
        return picture;
    }
    void BeginFrame() {
        device.SetViewport({0, 0, SIDE, SIDE});
        device.Clear(CLEAR_TARGET | CLEAR_ZBUFFER, 0x203040, 1, 0);
        device.SetTransform(CRM_PROJ, {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1.1f, 1}, {0, 0, -2, 0}}});
        device.BeginScene();
    }

    std::mt19937 engine{1};
    float slope = 0; // of the last triangle
    SoftDevice device;
    std::unique_ptr<DeviceSurface> textures[2];
};

} // namespace

TEST_F(MeshTest, GroupsTakeThePixelsOfTheirParts) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::vector<uint32_t> pictures[3];
        enum Way { ONE_BY_ONE, MESHES, GROUP };
        for (const Way way : {ONE_BY_ONE, MESHES, GROUP}) {
            engine.seed(seed);
            BeginFrame();
            std::vector<std::unique_ptr<DeviceMesh>> meshes;
            if (way == GROUP)
                device.BeginGroup();
            const uint32_t count = seed % 10 == 0 ? 60 : 8; // many: on all cores
            for (uint32_t i = 0; i < count; ++i) {
                SetRandomState();
                const PixelRectangle view{Random(40), Random(40), SIDE - Random(40), SIDE - Random(40)};
                device.SetViewport(view);
                const MeshData data = RandomData();
                const MeshPart whole = Whole(data);
                if (way == ONE_BY_ONE || i % 5 == 4) {
                    DrawOneByOne(data);
                    continue;
                }
                meshes.push_back(device.CreateMesh(data));
                ASSERT_TRUE(device.DrawMesh(*meshes.back(), {&whole, 1}));
            }
            device.EndGroup();
            pictures[way] = Picture();
            device.EndScene();
        }
        ASSERT_EQ(pictures[ONE_BY_ONE], pictures[MESHES]) << seed;
        ASSERT_EQ(pictures[ONE_BY_ONE], pictures[GROUP]) << seed;
    }
}

TEST_F(MeshTest, OfWhatIsEquallyNearTheLastToldShows) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        std::vector<uint32_t> pictures[2];
        for (const bool group : {false, true}) {
            engine.seed(seed);
            BeginFrame();
            device.SetTransform(CRM_PROJ,
                                {{{1 / 32.0f, 0, 0, 0}, {0, 1 / 32.0f, 0, 0}, {0, 0, 1 / 64.0f, 0}, {0, 0, 0, 1}}});
            std::vector<std::unique_ptr<DeviceMesh>> meshes;
            if (group)
                device.BeginGroup();
            for (uint32_t i = 0; i < 12; ++i) {
                if (Chance(6)) // what must not change places with the others
                    SetRandomState();
                else
                    SetCoveringState();
                const MeshData data = SlopeData();
                const MeshPart whole = Whole(data);
                if (!group) {
                    DrawOneByOne(data);
                    continue;
                }
                meshes.push_back(device.CreateMesh(data));
                ASSERT_TRUE(device.DrawMesh(*meshes.back(), {&whole, 1}));
            }
            device.EndGroup();
            pictures[group ? 1 : 0] = Picture();
            device.EndScene();
        }
        ASSERT_EQ(pictures[0], pictures[1]) << seed;
    }
}

TEST_F(MeshTest, PartsAndRefusals) {
    BeginFrame();
    device.SetRenderState(RS_CULLMODE, CULL_NONE);
    device.SetTextureStageState(0, TSS_COLOROP, OP_DISABLE);
    MeshData data;
    data.prim = PT_TRI_LIST;
    data.fvf = FORMAT;
    EXPECT_EQ(device.CreateMesh(data), nullptr) << "nothing to keep";
    const auto quad = [&data](float left, float right, uint32_t argb) {
        const auto first = static_cast<uint32_t>(data.vertices.size() / sizeof(Vertex));
        for (const auto& [x, y] : {std::pair{left, -9.0f}, {right, -9.0f}, {left, 9.0f}, {right, 9.0f}}) {
            const Vertex v{x, y, 10, argb, {}};
            const auto* const bytes = reinterpret_cast<const uint8_t*>(&v);
            data.vertices.insert(data.vertices.end(), bytes, bytes + sizeof(v));
        }
        for (const uint32_t corner : {0u, 1u, 2u, 2u, 1u, 3u})
            data.indices.push_back(first + corner);
    };
    quad(-10, 0, 0xFFFF0000);
    quad(0, 10, 0xFF00FF00);
    const std::unique_ptr<DeviceMesh> mesh = device.CreateMesh(data);
    ASSERT_NE(mesh, nullptr);
    const MeshPart right{6, 6, 4, 4};
    EXPECT_TRUE(device.DrawMesh(*mesh, {&right, 1}));
    const std::vector<uint32_t> picture = Picture();
    EXPECT_EQ(picture[SIDE * SIDE / 2 + SIDE / 4], 0x203040u) << "only the right one";
    EXPECT_EQ(picture[SIDE * SIDE / 2 + 3 * SIDE / 4], 0x00FF00u);
    device.BeginGroup();
    EXPECT_TRUE(device.DrawMesh(*mesh, {&right, 1}));
    device.Clear(CLEAR_TARGET, 0, 1, 0); // after what was drawn before it
    device.EndGroup();
    EXPECT_EQ(Picture()[SIDE * SIDE / 2 + 3 * SIDE / 4], 0u);
    device.EndScene();
    EXPECT_FALSE(device.DrawMesh(*mesh, {&right, 1})) << "outside a scene";
    class OfAnother : public DeviceMesh {
    } strange;
    device.BeginScene();
    EXPECT_FALSE(device.DrawMesh(strange, {&right, 1}));
    device.EndScene();
}
