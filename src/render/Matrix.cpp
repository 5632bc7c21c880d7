#include "render/Matrix.h"

D3DMATRIX crIdentity() { return {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}}; }

D3DMATRIX crTranslation(const D3DVECTOR& v) { return {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {v.x, v.y, v.z, 1}}}; }

void crMMultiply(const D3DMATRIX& a, const D3DMATRIX& b, D3DMATRIX& out) {
    D3DMATRIX product;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            product.m[i][j] =
                a.m[i][0] * b.m[0][j] + a.m[i][1] * b.m[1][j] + a.m[i][2] * b.m[2][j] + a.m[i][3] * b.m[3][j];
    out = product;
}

void crMTransform(const D3DMATRIX& m, const D3DVECTOR& v, D3DVECTOR& out) {
    out = {v.x * m.m[0][0] + v.y * m.m[1][0] + v.z * m.m[2][0] + m.m[3][0],
           v.x * m.m[0][1] + v.y * m.m[1][1] + v.z * m.m[2][1] + m.m[3][1],
           v.x * m.m[0][2] + v.y * m.m[1][2] + v.z * m.m[2][2] + m.m[3][2]};
}

void crMTransform3(const D3DMATRIX& m, const D3DVECTOR& v, D3DVECTOR& out) {
    out = {v.x * m.m[0][0] + v.y * m.m[1][0] + v.z * m.m[2][0], v.x * m.m[0][1] + v.y * m.m[1][1] + v.z * m.m[2][1],
           v.x * m.m[0][2] + v.y * m.m[1][2] + v.z * m.m[2][2]};
}

void crMTransform4(const D3DMATRIX& m, const VECTOR4& v, VECTOR4& out) {
    float result[4];
    for (int j = 0; j < 4; ++j)
        result[j] = v.x * m.m[0][j] + v.y * m.m[1][j] + v.z * m.m[2][j] + v.w * m.m[3][j];
    out = {result[0], result[1], result[2], result[3]};
}

int crMInverse3(const D3DMATRIX& m, D3DMATRIX& out) {
    const D3DVECTOR row1 = crMGetRow(m, 0), row2 = crMGetRow(m, 1), row3 = crMGetRow(m, 2);
    // The columns of the inverse are the cross products of the rows over the determinant.
    const D3DVECTOR col[3] = {CrossProduct(row2, row3), CrossProduct(row3, row1), CrossProduct(row1, row2)};
    const float scale = 1.0f / DotProduct(row1, col[0]);
    out = crIdentity();
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 3; ++i)
            out.m[i][j] = Component(col[j], i) * scale;
    return 0;
}

int crMInverse(const D3DMATRIX& m, D3DMATRIX& out) {
    constexpr float PROJECTIVE = 0.001f;
    if (std::fabs(m.m[3][3] - 1.0f) > PROJECTIVE)
        return -1;
    for (int i = 0; i < 3; ++i)
        if (std::fabs(m.m[i][3]) > PROJECTIVE)
            return -1;
    const D3DVECTOR translation = crMGetRow(m, 3);
    D3DMATRIX inverse;
    crMInverse3(m, inverse);
    D3DVECTOR back;
    crMTransform3(inverse, translation, back);
    inverse.m[3][0] = -back.x, inverse.m[3][1] = -back.y, inverse.m[3][2] = -back.z;
    out = inverse;
    return 0;
}

D3DVECTOR crMGetRow(const D3DMATRIX& m, int row) { return {m.m[row][0], m.m[row][1], m.m[row][2]}; }

D3DVECTOR crMGetCol(const D3DMATRIX& m, int col) { return {m.m[0][col], m.m[1][col], m.m[2][col]}; }

bool crSphereInside(const D3DVECTOR& center, float radius, const PLANE& plane) {
    return plane.get_dist(center) <= radius;
}

bool crSphereIntersects(const D3DVECTOR& center, float radius, const D3DVECTOR& origin, const D3DVECTOR& direction,
                        float& t1, float& t2) {
    const D3DVECTOR f = origin - center;
    const float a = DotProduct(direction, direction);
    const float b = DotProduct(f, direction);
    const float discriminant = b * b - (DotProduct(f, f) - radius * radius) * a;
    if (discriminant < 0)
        return false;
    const float root = std::sqrt(discriminant);
    t1 = (-b - root) / a;
    t2 = (-b + root) / a;
    return true;
}

bool crSphereIntersects(const D3DVECTOR& center, float radius, const D3DVECTOR& origin, const D3DVECTOR& direction,
                        float& t) {
    float farther;
    return crSphereIntersects(center, radius, origin, direction, t, farther);
}
