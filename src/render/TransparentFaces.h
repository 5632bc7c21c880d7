// Transparent geometry of a frame, kept and drawn at its end from the far to the near.
#pragma once

#include <cstdint>

#include "render/Batches.h"
#include "render/Matrix.h"

struct CRTFRec {
    uint32_t prim_data = 0; // offset of the vertices, or CR_NO_BUFFER for a vertex buffer
    D3DMATRIX wmat;         // world matrix at the time of the call
    PrimType prim = PT_TRI_LIST;
    uint32_t fvf = 0, vertc = 0;
    float sqr_dist = 0; // squared distance from the camera to the first vertex, the sort key
    uint32_t tex = 0;
    uint32_t vb = CR_NO_BUFFER; // none: raw vertices
    BlendMode src_bm = BM_ONE, dst_bm = BM_ZERO;
    CullMode cm = CULL_NONE;
};

extern uint32_t crvTFCount, crvTFDataUsed; // records, and bytes of their vertices

void crBeginAlpha(BlendMode src, BlendMode dst, PrimType pt, uint32_t fvf, uint32_t tex, CullMode cull);
void criTransparentObjectDraw(uint32_t vb, uint32_t tex, BlendMode src, BlendMode dst, CullMode cull); // a whole buffer
void criTransparentFacesDraw();
void criTransparentFacesReset();
void criTransparentFacesFree();
void criEndAlpha(); // for crEnd
