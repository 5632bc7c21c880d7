#include <array>
#include <cmath>
#include <map>
#include <utility>

#include <gtest/gtest.h>

#include "foundation/Random.h"
#include "render/Matrix.h"
#include "render/SoftDevice.h"
#include "render/Textures.h"

namespace {

float RandomFloat(RandomMT& random, float range) {
    return (static_cast<float>(random.randomMT() & 0xFFFF) / 32768.0f - 1.0f) * range;
}

D3DMATRIX RandomAffine(RandomMT& random) {
    D3DMATRIX m = crIdentity();
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 3; ++j)
            m.m[i][j] = RandomFloat(random, i < 3 ? 2.0f : 100.0f);
    return m;
}

// Gauss-Jordan elimination with pivoting, in doubles; the determinant comes along.
double GaussInverse(const D3DMATRIX& m, double (&inverse)[4][4]) {
    double a[4][8] = {};
    double determinant = 1;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j)
            a[i][j] = m.m[i][j];
        a[i][4 + i] = 1;
    }
    for (int c = 0; c < 4; ++c) {
        int pivot = c;
        for (int r = c + 1; r < 4; ++r)
            if (std::fabs(a[r][c]) > std::fabs(a[pivot][c]))
                pivot = r;
        std::swap(a[c], a[pivot]);
        determinant *= pivot == c ? a[c][c] : -a[c][c];
        for (int r = 0; r < 4; ++r) {
            const double factor = r == c ? 0 : a[r][c] / a[c][c];
            for (int j = 0; j < 8; ++j)
                a[r][j] -= factor * a[c][j];
        }
        const double scale = a[c][c];
        for (double& value : a[c])
            value /= scale;
    }
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            inverse[i][j] = a[i][4 + j];
    return determinant;
}

class RecordingDevice : public SoftDevice {
public:
    void SetTransform(TrType type, const D3DMATRIX& matrix) override {
        ++count;
        sent[type] = matrix;
    }
    std::map<TrType, D3DMATRIX> sent;
    int count = 0;
};

} // namespace

TEST(Matrix, InverseAgreesWithElimination) {
    RandomMT random;
    random.seedMT(1);
    int compared = 0;
    for (int round = 0; round < 200; ++round) {
        const D3DMATRIX m = RandomAffine(random);
        double expected[4][4];
        if (std::fabs(GaussInverse(m, expected)) < 0.3)
            continue;
        ++compared;
        D3DMATRIX inverse, inverse3;
        ASSERT_EQ(crMInverse(m, inverse), 0);
        ASSERT_EQ(crMInverse3(m, inverse3), 0);
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) {
                ASSERT_NEAR(inverse.m[i][j], expected[i][j], 1e-3 + std::fabs(expected[i][j]) * 1e-4);
                ASSERT_EQ(inverse3.m[i][j], i < 3 ? inverse.m[i][j] : j == 3 ? 1.0f : 0.0f);
            }
    }
    EXPECT_GT(compared, 100);
}

TEST(Matrix, InverseRefusesAProjectivePart) {
    for (const auto& [row, col, value] :
         {std::array{3, 3, 2}, std::array{0, 3, 1}, std::array{1, 3, -1}, std::array{2, 3, 1}}) {
        D3DMATRIX m = crIdentity(), out;
        m.m[row][col] = static_cast<float>(value);
        EXPECT_EQ(crMInverse(m, out), -1) << row << col;
        crMCurrent(CRM_USER2);
        crMSet(m);
        EXPECT_EQ(crMInverse(), -1);
    }
    D3DMATRIX nearly = crIdentity(), out;
    nearly.m[0][3] = 0.0009f;
    EXPECT_EQ(crMInverse(nearly, out), 0);
}

TEST(Matrix, ProductsAndTransforms) {
    const D3DMATRIX a{{{1, 2, 3, 0}, {0, 1, 4, 0}, {5, 6, 0, 0}, {7, 8, 9, 1}}};
    const D3DMATRIX b{{{2, 0, 0, 0}, {0, 3, 0, 0}, {0, 0, 4, 0}, {1, 1, 1, 1}}};
    const D3DMATRIX expected{{{2, 6, 12, 0}, {0, 3, 16, 0}, {10, 18, 0, 0}, {15, 25, 37, 1}}};
    D3DMATRIX product = a;
    crMMultiply(product, b, product);
    EXPECT_EQ(product, expected);

    D3DVECTOR point, direction;
    crMTransform(a, {1, 2, 3}, point);
    crMTransform3(a, {1, 2, 3}, direction);
    EXPECT_EQ(point, (D3DVECTOR{23, 30, 20}));
    EXPECT_EQ(direction, (D3DVECTOR{16, 22, 11}));
    VECTOR4 v;
    crMTransform4(D3DMATRIX{{{1, 0, 0, 2}, {0, 1, 0, 0}, {0, 0, 1, 0}, {3, 0, 0, 1}}}, {1, 2, 3, 4}, v);
    EXPECT_EQ(v.x, 13);
    EXPECT_EQ(v.w, 6);
    EXPECT_EQ(crMGetRow(a, 3), (D3DVECTOR{7, 8, 9}));
    EXPECT_EQ(crMGetCol(a, 1), (D3DVECTOR{2, 1, 6}));
}

// What is multiplied on last acts first.
TEST(MatrixBank, OperationsMultiplyOnTheLeft) {
    crMCurrent(CRM_USER1);
    crMSet(crTranslation({10, 0, 0}));
    crMScale({2, 3, 4});
    crMMove({1, 1, 1});
    D3DVECTOR out;
    crMTransform({0, 0, 0}, out);
    EXPECT_EQ(out, (D3DVECTOR{12, 3, 4}));
    crMTransform3({1, 0, 0}, out);
    EXPECT_EQ(out, (D3DVECTOR{2, 0, 0}));
    ASSERT_EQ(crMInverse(), 0);
    crMTransform({12, 3, 4}, out);
    EXPECT_EQ(out, (D3DVECTOR{0, 0, 0}));

    // Projection in USER1, then the view multiplied on, by value and by index.
    crMCurrent(CRM_VIEW);
    crMSet(crTranslation({0, 0, 5}));
    crMCurrent(CRM_USER1);
    crMSetIdentity();
    crMProj(PI / 2, 1, 1, 3);
    const D3DMATRIX proj = crMGet();
    crMMultiply(CRM_VIEW);
    const D3DMATRIX by_index = crMGet();
    crMSet(proj);
    crMMultiply(crvMatrices[CRM_VIEW]);
    EXPECT_EQ(crMGet(), by_index);
    VECTOR4 clip;
    crMTransform4(by_index, {0, 0, -2, 1}, clip); // 3 in front of the camera: the far plane
    EXPECT_NEAR(clip.z / clip.w, 1.0f, 1e-6f);

    // A quarter turn about Z takes X to -Y in row-vector form of this quaternion's matrix.
    crMSetIdentity();
    crMRot(Quaternion::from_rotation({0, 0, 1}, PI / 2));
    crMTransform({1, 0, 0}, out);
    EXPECT_NEAR(out.y, -1, 1e-6f);
}

TEST(MatrixBank, IndicesBeyondTheBankReadTheFirstAndWriteNothing) {
    crMCurrent(CRM_USER1);
    crMSet(crTranslation({1, 2, 3}));
    EXPECT_EQ(crMCurrent(CRM_COUNT), CRM_USER1);
    crvMatrixDirty = 0;
    crMSetIdentity();
    crMMove({5, 5, 5});
    EXPECT_EQ(crvMatrixDirty, 0u);
    EXPECT_EQ(crMGet(), crTranslation({1, 2, 3}));
    EXPECT_EQ(crMCurrent(CRM_USER1), CRM_COUNT);
}

TEST(MatrixBank, StackHoldsSixtyFour) {
    crMCurrent(CRM_USER3);
    for (int i = 0; i < 70; ++i) {
        crMSet(crTranslation({static_cast<float>(i), 0, 0}));
        crMPush();
    }
    for (int i = 63; i >= 0; --i) {
        crMPop();
        ASSERT_EQ(crMGet(), crTranslation({static_cast<float>(i), 0, 0}));
    }
    crMSetIdentity();
    crMPop();
    EXPECT_EQ(crMGet(), crIdentity());
}

TEST(MatrixBank, FlushSendsEachChangeOnce) {
    RecordingDevice device;
    criSetTextureDevice(&device);
    crvMatrixDirty = 0;
    crMFlush();
    EXPECT_EQ(device.count, 0);
    for (const uint32_t i : {CRM_USER1, CRM_WORLD, CRM_TEX3}) {
        crMCurrent(i);
        crMSet(crTranslation({static_cast<float>(i), 0, 0}));
    }
    crMFlush();
    crMFlush();
    EXPECT_EQ(device.count, 2);
    EXPECT_EQ(device.sent[CRM_WORLD], crTranslation({4, 0, 0}));
    EXPECT_EQ(device.sent[CRM_TEX3], crTranslation({13, 0, 0}));
    EXPECT_EQ(crvMatrixDirty, 1u << CRM_USER1);
    criSetTextureDevice(nullptr);
}

TEST(Sphere, InsideAndIntersects) {
    const PLANE plane({0, 10, 0}, {0, 1, 0});
    EXPECT_TRUE(crSphereInside({3, 12, 3}, 2, plane));
    EXPECT_FALSE(crSphereInside({3, 12.5f, 3}, 2, plane));
    EXPECT_TRUE(crSphereInside({0, 0, 0}, 0, PLANE(0, 0, 0, 5))); // no normal: distance 0

    float t1 = 0, t2 = 0;
    EXPECT_TRUE(crSphereIntersects({0, 0, 0}, 2, {0.5f, 0, 0}, {1, 0, 0}, t1, t2));
    EXPECT_FLOAT_EQ(t1, -2.5f);
    EXPECT_FLOAT_EQ(t2, 1.5f);
    EXPECT_TRUE(crSphereIntersects({10, 0, 0}, 2, {0, 0, 0}, {2, 0, 0}, t1)); // t in lengths of the direction
    EXPECT_FLOAT_EQ(t1, 4);
    EXPECT_FALSE(crSphereIntersects({0, 3, 0}, 2, {0, 0, 0}, {1, 0, 0}, t1));
}
