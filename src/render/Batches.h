// Drawing in batches: crBegin or a sister, vertices field by field, crEnd. Within a vertex the other fields come first
// and the position last, as it ends the vertex. Batches do not nest. A batch that outgrows its store is cut: vertices
// and indices beyond it are dropped.
#pragma once

#include <cstdint>
#include <cstring>

#include "render/DeviceStates.h"

struct CRVB;

enum CRDestType : uint32_t { CR_RAW_DATA, CR_RAW_ALPHA_DATA, CR_VB, CR_VB_INDEXED, CR_RAW_INDEXED, CR_DRVB_INDEXED };

inline constexpr uint32_t DRAW_BUFFER_BYTES = 1048576, INDEX_BUFFER_PLACES = 65536;
inline constexpr uint32_t CR_NO_BUFFER = 0xFFFFFFFF; // no vertex buffer

extern uint8_t* crvPtr; // the next vertex, null without a batch; behind the last place it points at a spare vertex
extern uint32_t crvFvf, crvLastFvf, crvFvfOffsets[CRO_COUNT], crvFvfSize;
extern uint32_t crvVertexCount;
extern PrimType crvPrim;
extern CRDestType crDestType;
extern uint32_t crvVB; // being written
extern CRVB* crvVBPtr;

void criMakeFVFOffsets(uint32_t fvf);
void criNextVertex(); // ends a vertex
// Opens a batch that writes to room bytes at target.
void criOpenBatch(CRDestType type, PrimType prim, uint32_t fvf, uint8_t* target, size_t room);

void crBegin(PrimType prim, uint32_t fvf);
void crBeginIndexed(uint32_t fvf, PrimType prim);
void crEnd(int use_tbuf = 0); // not 0: six times, shifted by plus and minus crvTBufDelta on each axis

void crIndex(uint32_t i);
inline void crIndexFace(uint32_t a, uint32_t b, uint32_t c) { crIndex(a), crIndex(b), crIndex(c); }

void crSet2DDepth(float depth); // of crXY and all that is drawn in two dimensions
float criGet2DDepth();

// Field writers. A field that the format lacks must not be written.
template <class... Values>
void criWriteField(CrOffsets field, Values... values) {
    const float floats[] = {values...};
    if (crvPtr)
        std::memcpy(crvPtr + crvFvfOffsets[field], floats, sizeof(floats));
}
inline void crDiffuse(uint32_t argb) {
    if (crvPtr)
        std::memcpy(crvPtr + crvFvfOffsets[CRO_DIFF], &argb, sizeof(argb));
}
inline void crRHW(float w) { criWriteField(CRO_RHW, w); }
inline void crNormal(float x, float y, float z) { criWriteField(CRO_NORM, x, y, z); }
inline void crUV(float u, float v) { criWriteField(CRO_TEX1, u, v); }
inline void crUV2(float u, float v) { criWriteField(CRO_TEX2, u, v); }
inline void crXYZ(float x, float y, float z) {
    criWriteField(CRO_XYZ, x, y, z);
    criNextVertex();
}
inline void crXY(float x, float y) {
    if (crvFvfOffsets[CRO_RHW] != 0)
        crRHW(1.0f);
    crXYZ(x, y, criGet2DDepth());
}
