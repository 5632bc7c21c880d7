#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "render/DrawFixture.h"
#include "render/TransparentFaces.h"
#include "render/VertexBuffers.h"

namespace {

using BatchTest = DrawTest;

struct ColoredVertex {
    D3DVECTOR position;
    uint32_t color;
};

ColoredVertex VertexOf(const std::vector<uint8_t>& bytes, size_t i) {
    ColoredVertex v{};
    if ((i + 1) * sizeof(v) <= bytes.size())
        std::memcpy(&v, bytes.data() + i * sizeof(v), sizeof(v));
    return v;
}

} // namespace

TEST_F(BatchTest, OffsetsFollowTheFormat) {
    struct Case {
        uint32_t fvf, size;
        uint32_t offsets[CRO_COUNT]; // position, rhw, normal, diffuse, specular, three sets
    };
    const Case cases[] = {
        {0x42, 16, {0, 0, 0, 12, 0, 0, 0, 0}},
        {0x142, 24, {0, 0, 0, 12, 0, 16, 0, 0}},
        {0x242, 32, {0, 0, 0, 12, 0, 16, 24, 0}},
        {0x102, 20, {0, 0, 0, 0, 0, 12, 0, 0}},
        {0x44, 20, {0, 12, 0, 16, 0, 0, 0, 0}},
        {VT_XYZ | VT_XYZRHW, 12, {0, 0, 0, 0, 0, 0, 0, 0}}, // the first of the two
        {VT_XYZ | VT_DIFFUSE | VT_TEX1_3, 28, {0, 0, 0, 12, 0, 16, 0, 0}},
        {VT_XYZRHW | VT_NORMAL | VT_DIFFUSE | VT_SPECULAR | VT_TEX3, LARGEST_VERTEX, {0, 12, 16, 28, 32, 36, 44, 52}},
        {VT_XYZ | 0xF00, 36, {0, 0, 0, 0, 0, 12, 20, 28}}, // three sets are laid out at most
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << c.fvf);
        crBegin(PT_TRI_LIST, c.fvf);
        EXPECT_EQ(crvFvfSize, c.size);
        EXPECT_EQ(std::memcmp(crvFvfOffsets, c.offsets, sizeof(c.offsets)), 0);
        crEnd();
    }
}

TEST_F(BatchTest, SameFormatKeepsItsOffsets) {
    crBegin(PT_TRI_LIST, 0x142);
    crEnd();
    crvFvfOffsets[CRO_SPEC] = 77; // a mark that a rebuild removes
    crBegin(PT_LINE_LIST, 0x142);
    EXPECT_EQ(crvFvfOffsets[CRO_SPEC], 77u);
    crEnd();
    crBegin(PT_TRI_LIST, 0x42);
    EXPECT_EQ(crvFvfOffsets[CRO_SPEC], 0u);
    crEnd();
}

TEST_F(BatchTest, EmptyBatchesDrawNothing) {
    crEnd(); // none open
    crBegin(PT_TRI_LIST, 0x42);
    crEnd();
    crBeginIndexed(0x42, PT_TRI_LIST);
    Vertex(0, 0, 0, 1), Vertex(9, 0, 0, 1), Vertex(0, 9, 0, 1);
    crEnd(); // no indices
    crBeginIndexed(0x42, PT_TRI_LIST);
    crIndexFace(0, 1, 2);
    crEnd(); // no vertices
    EXPECT_TRUE(device.drawn.empty());
    EXPECT_EQ(crvStatVerts, 0u);
}

TEST_F(BatchTest, StatisticsCountVerticesAndFaces) {
    crBegin(PT_TRI_LIST, 0x42);
    for (int i = 0; i < 6; ++i)
        Vertex(0, 0, 0, 1);
    crIndex(0); // ignored without an indexed batch
    crEnd();
    EXPECT_EQ(device.Count("DrawPrimitive"), 1);
    EXPECT_EQ(crvStatFaces, 2u);
    crBegin(PT_TRI_FAN, 0x42);
    for (int i = 0; i < 6; ++i)
        Vertex(0, 0, 0, 1);
    crEnd();
    EXPECT_EQ(crvStatFaces, 6u);
    crBegin(PT_POINT_LIST, 0x42);
    Vertex(0, 0, 0, 1);
    crEnd();
    EXPECT_EQ(crvStatFaces, 6u);
    crBeginIndexed(0x42, PT_TRI_LIST);
    for (int i = 0; i < 4; ++i)
        Vertex(0, 0, 0, 1);
    crIndexFace(0, 1, 2);
    crIndexFace(0, 2, 3);
    crEnd();
    EXPECT_EQ(crvStatFaces, 8u);
    EXPECT_EQ(crvStatVerts, 17u);
    EXPECT_EQ(device.drawn_indices.back(), 6u);
}

TEST_F(BatchTest, ShiftedBatchIsDrawnSixTimes) {
    crvTBufDelta = 0.1f; // 10000000 + 0.1 - 0.1 would not come back without care
    const D3DVECTOR original{10000000, 0.7f, 0.3f};
    crBeginIndexed(0x42, PT_POINT_LIST);
    Vertex(original.x, original.y, original.z, 1);
    crIndexFace(0, 0, 0);
    crEnd(1);
    ASSERT_EQ(device.drawn.size(), 6u);
    const D3DVECTOR shifts[] = {{0.1f, 0, 0}, {-0.1f, 0, 0}, {0, 0.1f, 0}, {0, -0.1f, 0}, {0, 0, 0.1f}, {0, 0, -0.1f}};
    for (size_t i = 0; i < 6; ++i)
        EXPECT_EQ(VertexOf(device.drawn[i], 0).position, original + shifts[i]) << i;
    EXPECT_EQ(crvStatFaces, 1u);
}

TEST_F(BatchTest, BatchBeyondTheStagingBuffersIsCut) {
    constexpr uint32_t MOST = DRAW_BUFFER_BYTES / 12;
    crBeginIndexed(VT_XYZ, PT_POINT_LIST);
    for (uint32_t i = 0; i < MOST + 10; ++i) {
        crNormal(1, 2, 3); // a field that the format lacks does no harm
        crXYZ(-1, -1, static_cast<float>(i));
    }
    for (uint32_t i = 0; i < INDEX_BUFFER_PLACES + 10; ++i)
        crIndex(0);
    EXPECT_EQ(crvVertexCount, MOST);
    crEnd();
    ASSERT_EQ(device.drawn.size(), 1u);
    EXPECT_EQ(device.drawn[0].size(), MOST * 12);
    EXPECT_EQ(device.drawn_indices[0], INDEX_BUFFER_PLACES);

    crBegin(PT_TRI_LIST, 0); // a format without a field has no room for any vertex
    for (int i = 0; i < 10; ++i)
        crXYZ(1, 2, 3);
    crEnd();
    EXPECT_EQ(device.drawn.size(), 1u);
}

TEST_F(BatchTest, VertexBuffersAreFilledAndDrawn) {
    const uint32_t plain = crVBCreate(0x42, 4, PT_POINT_LIST, 0);
    crBeginVB(plain, 2);
    for (uint32_t i = 0; i < 5; ++i) // room for two
        Vertex(-1, -1, 0, 100 + i);
    EXPECT_EQ(crvVertexCount, 2u);
    crEnd();
    EXPECT_TRUE(device.drawn.empty());
    crVBDraw(plain, 0, 0);
    crVBDraw(plain, 4, 1);
    EXPECT_TRUE(device.drawn.empty());
    crVBDraw(plain, 1, CR_NO_BUFFER);
    ASSERT_EQ(device.drawn.size(), 1u);
    ASSERT_EQ(device.drawn[0].size(), 3u * 16);
    EXPECT_EQ(VertexOf(device.drawn[0], 1).color, 100u);
    EXPECT_EQ(VertexOf(device.drawn[0], 2).color, 101u);

    const uint32_t indexed = crVBCreate(0x42, 4, PT_TRI_LIST, 7);
    crBeginIndexedVB(indexed);
    for (uint32_t i = 0; i < 4; ++i)
        Vertex(-1, -1, 0, i);
    for (int i = 0; i < 3; ++i)
        crIndexFace(0, 1, 2); // seven places
    crEnd();
    EXPECT_EQ(criGetVB(indexed)->ic, 7u);
    crVBDraw(indexed, 3, CR_NO_BUFFER);
    EXPECT_EQ(device.drawn_indices.back(), 4u);
    crVBResetIndex(indexed);
    crVBDraw(indexed, 0, CR_NO_BUFFER);
    EXPECT_EQ(device.drawn.size(), 2u);

    crBeginVB(plain, 0);
    crVBDestroy(plain); // under its open batch
    Vertex(1, 2, 3, 4);
    crEnd();
    for (const uint32_t bad : {plain, CR_MAX_VERTEX_BUFFERS, CR_NO_BUFFER}) {
        crVBDraw(bad, 0, 1);
        crBeginVB(bad, 0);
        crXYZ(1, 2, 3);
        crEnd();
        EXPECT_EQ(crVBLock(bad), nullptr);
    }
    crVBDestroy(indexed);
    EXPECT_EQ(crVBCreate(0x42, 0, PT_TRI_LIST, 0), CR_NO_BUFFER);
    EXPECT_EQ(device.drawn.size(), 2u);
}

TEST_F(BatchTest, DynamicBuffersAreFilledInTurn) {
    const uint32_t ring = crDRVBCreate(2, 0x42, 4, PT_TRI_LIST, 6);
    const uint32_t first = criGetDRVB(ring);
    const auto batch = [&](uint32_t count) {
        uint32_t start = 99;
        crDRVBBeginIndexed(ring, count, start);
        for (uint32_t i = 0; i < count; ++i)
            Vertex(-1, -1, 0, i);
        crIndexFace(start, start, start);
        crEnd();
        return start;
    };
    EXPECT_EQ(batch(3), 0u);
    EXPECT_EQ(batch(1), 3u);
    EXPECT_EQ(criGetDRVB(ring), first);
    EXPECT_EQ(device.drawn.back().size(), 16u); // from its own start
    EXPECT_EQ(device.drawn_indices.back(), 3u);
    EXPECT_EQ(batch(2), 0u); // full: the next one
    EXPECT_NE(criGetDRVB(ring), first);
    crDRVBCycle(ring);
    EXPECT_EQ(criGetDRVB(ring), first);
    EXPECT_EQ(batch(9), 0u); // more than a buffer holds: cut
    EXPECT_EQ(device.drawn.back().size(), 4u * 16);
    crDRVBDestroy(ring);
    EXPECT_EQ(criGetVB(first), nullptr);
    uint32_t start = 99;
    crDRVBBeginIndexed(ring, 1, start);
    EXPECT_EQ(start, 0u);
    EXPECT_EQ(crvPtr, nullptr);
}

class TransparentTest : public DrawTest {
protected:
    TransparentTest() : saved(crvViewFrom) { crvViewFrom = {}; }
    ~TransparentTest() override { crvViewFrom = saved; }

    static void Face(const D3DVECTOR& first, uint32_t color, const D3DVECTOR& second = {}) {
        crBeginAlpha(BM_SRCALPHA, BM_INVSRCALPHA, PT_TRI_LIST, 0x42, CR_NO_BUFFER, CULL_NONE);
        Vertex(first.x, first.y, first.z, color);
        Vertex(second.x, second.y, second.z, color);
        Vertex(first.x, first.y + 1, first.z, color);
        crEnd();
    }
    std::vector<uint32_t> DrawnColors() const {
        std::vector<uint32_t> colors;
        for (const auto& bytes : device.drawn)
            colors.push_back(VertexOf(bytes, 0).color);
        return colors;
    }

    D3DVECTOR saved;
};

TEST_F(TransparentTest, FarthestFirstVertexIsDrawnFirst) {
    Face({0, 0, 5}, 1);
    SetMatrix(CRM_WORLD, crTranslation({0, 0, 10}));
    Face({0, 0, 2}, 2); // at 12 by its own matrix
    SetMatrix(CRM_WORLD, crIdentity());
    Face({0, 0, 1}, 3, {0, 0, 1000}); // long, but its first vertex is near
    Face({0, 0, 5}, 4);               // as far as the first: after it
    Face({0, 0, std::nanf("")}, 5);   // no distance: last
    const uint32_t vb = crVBCreate(0x42, 1, PT_POINT_LIST, 0);
    crBeginVB(vb, 0);
    Vertex(0, 0, 0, 6);
    crEnd();
    SetMatrix(CRM_WORLD, crTranslation({0, 0, 7}));
    criTransparentObjectDraw(vb, CR_NO_BUFFER, BM_ONE, BM_ONE, CULL_NONE);
    EXPECT_TRUE(device.drawn.empty());
    EXPECT_EQ(crvStatFaces, 5u);
    crEndFrame();
    EXPECT_EQ(DrawnColors(), (std::vector<uint32_t>{2, 6, 1, 4, 3, 5}));
    EXPECT_EQ(crvTFCount, 0u);
    crVBDestroy(vb);
}

TEST_F(TransparentTest, StoreGrowsBetweenBatches) {
    constexpr uint32_t BATCHES = 700, POINTS = 100; // 1,120,000 bytes
    for (uint32_t i = 0; i < BATCHES; ++i) {
        crBeginAlpha(BM_ONE, BM_ONE, PT_POINT_LIST, 0x42, CR_NO_BUFFER, CULL_NONE);
        for (uint32_t k = 0; k < POINTS; ++k)
            Vertex(0, 0, static_cast<float>(i + 1), i);
        crEnd();
    }
    criTransparentFacesDraw();
    ASSERT_EQ(device.drawn.size(), BATCHES);
    for (uint32_t i = 0; i < BATCHES; ++i) {
        EXPECT_EQ(device.drawn[i].size(), POINTS * 16);
        EXPECT_EQ(VertexOf(device.drawn[i], POINTS - 1).color, BATCHES - 1 - i);
    }
}

TEST_F(TransparentTest, BatchTooLargeForTheStoreIsCut) {
    criTransparentFacesFree();
    crBeginAlpha(BM_ONE, BM_ONE, PT_POINT_LIST, 0x42, CR_NO_BUFFER, CULL_NONE);
    for (uint32_t k = 0; k < 20000; ++k)
        Vertex(-1, -1, 0, k);
    crEnd();
    criTransparentFacesDraw();
    ASSERT_EQ(device.drawn.size(), 1u);
    EXPECT_EQ(device.drawn[0].size(), 262144u);
}

TEST_F(TransparentTest, AbandonedFrameLeavesNothingBehind) {
    Face({0, 0, 5}, 1);
    crvD3DDevice->EndScene(); // the end of the frame is left out
    EXPECT_EQ(crBeginFrame(), 0);
    crEndFrame();
    EXPECT_TRUE(device.drawn.empty());
    crBeginAlpha(BM_ONE, BM_ONE, PT_POINT_LIST, 0x42, CR_NO_BUFFER, CULL_NONE);
    criTransparentFacesFree(); // under an open batch
    Vertex(1, 2, 3, 4);
    crEnd();
    EXPECT_EQ(crvTFCount, 0u);
}

TEST_F(TransparentTest, FacesBlendOverThePictureBehindItsDepth) {
    Triangle({0, 0, 0.5f}, {64, 0, 0.5f}, {0, 64, 0.5f}, 0xFF0000FF);
    const auto face = [](float z, uint32_t color) {
        crBeginAlpha(BM_SRCALPHA, BM_INVSRCALPHA, PT_TRI_LIST, 0x42, CR_NO_BUFFER, CULL_NONE);
        Vertex(0, 0, z, color), Vertex(64, 0, z, color), Vertex(0, 64, z, color);
        crEnd();
    };
    face(0.6f, 0xFFFFFFFF); // hidden
    face(0.1f, 0x80FF0000);
    crEndFrame();
    EXPECT_EQ(At(1, 1), 0x80007Fu); // 255 * 128 / 255 and 255 * 127 / 255
}
