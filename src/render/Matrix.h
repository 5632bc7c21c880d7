// The bank of 4 by 4 matrices of the renderer, and the camera values and clip planes that follow from view and
// projection. Row vectors: a point goes to v times M. Only the functions that name no matrix touch the bank; the others
// are pure.
#pragma once

#include <cstdint>

#include "foundation/Plane.h"
#include "foundation/Quaternion.h"
#include "foundation/Vector.h"

enum TrType : uint32_t {
    CRM_USER1,
    CRM_USER2,
    CRM_USER3,
    CRM_USER4, // scratch, never sent to the device
    CRM_WORLD,
    CRM_VIEW,
    CRM_PROJ,
    CRM_WORLD1,
    CRM_WORLD2,
    CRM_WORLD3,
    CRM_TEX0,
    CRM_TEX1,
    CRM_TEX2,
    CRM_TEX3,
    CRM_COUNT
};

struct VECTOR4 {
    float x = 0, y = 0, z = 0, w = 0;
};

// Pure arithmetic
D3DMATRIX crIdentity();
D3DMATRIX crTranslation(const D3DVECTOR& v);
void crMMultiply(const D3DMATRIX& a, const D3DMATRIX& b, D3DMATRIX& out);   // a times b; out may be either
void crMTransform(const D3DMATRIX& m, const D3DVECTOR& v, D3DVECTOR& out);  // with translation, no divide
void crMTransform3(const D3DMATRIX& m, const D3DVECTOR& v, D3DVECTOR& out); // without translation
void crMTransform4(const D3DMATRIX& m, const VECTOR4& v, VECTOR4& out);
int crMInverse(const D3DMATRIX& m, D3DMATRIX& out); // affine; 0, or -1 for a matrix with a projective part
int crMInverse3(const D3DMATRIX& m, D3DMATRIX& out);
D3DVECTOR crMGetRow(const D3DMATRIX& m, int row);
D3DVECTOR crMGetCol(const D3DMATRIX& m, int col);
bool crSphereInside(const D3DVECTOR& center, float radius, const PLANE& plane);
// t1 and t2: the smaller and the larger parameter of the line's hits, in lengths of the direction.
bool crSphereIntersects(const D3DVECTOR& center, float radius, const D3DVECTOR& origin, const D3DVECTOR& direction,
                        float& t1);
bool crSphereIntersects(const D3DVECTOR& center, float radius, const D3DVECTOR& origin, const D3DVECTOR& direction,
                        float& t1, float& t2);

// The bank. An index of CRM_COUNT or more reads matrix 0, and writes are ignored.
uint32_t crMCurrent(uint32_t i); // returns the old index
const D3DMATRIX& crMGet();
void crMSet(const D3DMATRIX& m);
void crMSetIdentity();
void crMMove(const D3DVECTOR& v);  // T(v) times the current matrix
void crMScale(const D3DVECTOR& v); // S(v) times it
void crMRot(const Quaternion& q);
void crMMultiply(const D3DMATRIX& m); // m times it
void crMMultiply(uint32_t i);         // matrix i times it
void crMTransform(const D3DVECTOR& v, D3DVECTOR& out);
void crMTransform3(const D3DVECTOR& v, D3DVECTOR& out);
int crMInverse();
int crMInverse3();
void crMPush(); // at most 64 deep: beyond that it does nothing
void crMPop();
void crMFlush();                                           // sends the dirty matrices to the device
void crMProj(float fov, float aspect, float zn, float zf); // aspect below 0: the screen's
void crZProjBias(float bias, D3DMATRIX* saved);
int crMViewTo(const D3DVECTOR& from, const D3DVECTOR& to, const D3DVECTOR& up, float roll); // -1 leaves the matrix
void crM3DS();
void crMClip();   // from clip space to pixels of the viewport
void crMUpdate(); // after view and projection changed, before anything below
void crGetViewVectors(D3DVECTOR& up, D3DVECTOR& right, D3DVECTOR& front);
void crGetScreenVectors(D3DVECTOR& base, D3DVECTOR& u, D3DVECTOR& v);
void crGetClipPlanes(PLANE* planes); // six, inward normals: near, far, left, right, top, bottom
float crUpdateTBufferDelta(const D3DVECTOR& point, float radius);

extern D3DMATRIX crvMatrices[CRM_COUNT];
extern uint32_t crvMatrixDirty; // bit i: matrix i changed since the last flush
extern D3DVECTOR crvViewFrom, crvVFront, crvVRight, crvVUp;
extern int crvViewFromInteger[3];
extern float crvZn, crvZf, crvHVW, crvHVH, crvTBufDelta;
extern D3DVECTOR crvVBase, crvVU, crvVV;
