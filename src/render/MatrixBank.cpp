#include "render/Device.h"
#include "render/Matrix.h"
#include "render/Textures.h"

D3DMATRIX crvMatrices[CRM_COUNT] = {crIdentity(), crIdentity(), crIdentity(), crIdentity(), crIdentity(),
                                    crIdentity(), crIdentity(), crIdentity(), crIdentity(), crIdentity(),
                                    crIdentity(), crIdentity(), crIdentity(), crIdentity()};
uint32_t crvMatrixDirty = 0;

namespace {

constexpr uint32_t STACK_PLACES = 64;
constexpr D3DMATRIX cri3DSIdentity = {{{1, 0, 0, 0}, {0, 0, 1, 0}, {0, 1, 0, 0}, {0, 0, 0, 1}}}; // exchanges Y and Z

uint32_t cur_matrix = CRM_WORLD;
D3DMATRIX stack[STACK_PLACES];
uint32_t istack = 0;

void Store(uint32_t index, const D3DMATRIX& m) {
    if (index >= CRM_COUNT)
        return;
    crvMatrices[index] = m;
    crvMatrixDirty |= 1u << index;
}

// The current matrix becomes m times it.
void MultiplyOn(const D3DMATRIX& m) {
    D3DMATRIX product;
    crMMultiply(m, crMGet(), product);
    crMSet(product);
}

// v less its part along the unit vector front, of unit length; false when nothing is left.
bool Perpendicular(const D3DVECTOR& v, const D3DVECTOR& front, D3DVECTOR& out) {
    constexpr float SHORTEST = 0.000001f;
    const D3DVECTOR rest = v - front * DotProduct(v, front);
    if (!(Magnitude(rest) >= SHORTEST))
        return false;
    out = Normalize(rest);
    return true;
}

} // namespace

uint32_t crMCurrent(uint32_t i) {
    const uint32_t old = cur_matrix;
    cur_matrix = i;
    return old;
}

const D3DMATRIX& crMGet() { return crvMatrices[cur_matrix < CRM_COUNT ? cur_matrix : 0]; }

void crMSet(const D3DMATRIX& m) { Store(cur_matrix, m); }

void crMSetIdentity() { crMSet(crIdentity()); }

void crMMove(const D3DVECTOR& v) { MultiplyOn(crTranslation(v)); }

void crMScale(const D3DVECTOR& v) { MultiplyOn({{{v.x, 0, 0, 0}, {0, v.y, 0, 0}, {0, 0, v.z, 0}, {0, 0, 0, 1}}}); }

void crMRot(const Quaternion& q) { MultiplyOn(q.to_matrix()); }

void crMMultiply(const D3DMATRIX& m) { MultiplyOn(m); }

void crMMultiply(uint32_t i) { MultiplyOn(crvMatrices[i < CRM_COUNT ? i : 0]); }

void crMTransform(const D3DVECTOR& v, D3DVECTOR& out) { crMTransform(crMGet(), v, out); }

void crMTransform3(const D3DVECTOR& v, D3DVECTOR& out) { crMTransform3(crMGet(), v, out); }

int crMInverse() {
    D3DMATRIX inverse;
    if (crMInverse(crMGet(), inverse) != 0)
        return -1;
    crMSet(inverse);
    return 0;
}

int crMInverse3() {
    D3DMATRIX inverse;
    crMInverse3(crMGet(), inverse);
    crMSet(inverse);
    return 0;
}

void crMPush() {
    if (istack < STACK_PLACES)
        stack[istack++] = crMGet();
}

void crMPop() {
    if (istack > 0)
        crMSet(stack[--istack]);
}

void crMFlush() {
    for (uint32_t i = CRM_WORLD; i < CRM_COUNT && crvMatrixDirty != 0; ++i) {
        const uint32_t bit = 1u << i;
        if ((crvMatrixDirty & bit) == 0)
            continue;
        criTextureDevice().SetTransform(static_cast<TrType>(i), crvMatrices[i]);
        crvMatrixDirty &= ~bit;
    }
}

void crMProj(float fov, float aspect, float zn, float zf) {
    if (aspect < 0)
        aspect = static_cast<float>(crvScrHeight) / static_cast<float>(crvScrWidth);
    const float q = zf / (zf - zn);
    const float c = std::cos(fov / 2) / std::sin(fov / 2);
    MultiplyOn({{{c, 0, 0, 0}, {0, c / aspect, 0, 0}, {0, 0, q, 1}, {0, 0, -q * zn, 0}}});
}

void crZProjBias(float bias, D3DMATRIX* saved) {
    D3DMATRIX m = crvMatrices[CRM_PROJ];
    if (saved)
        *saved = m;
    float zn = -m.m[3][2] / m.m[2][2];
    float zf = -(m.m[2][2] * zn) / (1.0f - m.m[2][2]);
    zn += bias;
    zf += bias;
    m.m[2][2] = zf / (zf - zn);
    m.m[3][2] = -m.m[2][2] * zn;
    Store(CRM_PROJ, m);
}

int crMViewTo(const D3DVECTOR& from, const D3DVECTOR& to, const D3DVECTOR& up, float roll) {
    D3DVECTOR front, up_axis;
    if (!Perpendicular(to - from, {}, front))
        return -1;
    if (!Perpendicular(up, front, up_axis) && !Perpendicular({0, 1, 0}, front, up_axis) &&
        !Perpendicular({0, 0, 1}, front, up_axis))
        return -1;
    const D3DVECTOR right = CrossProduct(up_axis, front);
    const D3DMATRIX view = {{{right.x, up_axis.x, front.x, 0},
                             {right.y, up_axis.y, front.y, 0},
                             {right.z, up_axis.z, front.z, 0},
                             {-DotProduct(from, right), -DotProduct(from, up_axis), -DotProduct(from, front), 1}}};
    D3DMATRIX rolled;
    crMMultiply(view, Quaternion::from_rotation({0, 0, 1}, roll).to_matrix(), rolled);
    crMSet(rolled);
    return 0;
}

void crM3DS() { MultiplyOn(cri3DSIdentity); }

void crMClip() {
    const uint32_t half_width = crvViewportW / 2, half_height = crvViewportH / 2;
    const auto w = static_cast<float>(half_width), h = static_cast<float>(half_height);
    MultiplyOn(
        {{{w, 0, 0, 0},
          {0, -h, 0, 0},
          {0, 0, 1, 0},
          {static_cast<float>(crvViewportX + half_width), static_cast<float>(crvViewportY + half_height), 0, 1}}});
}
