// Vertex buffers, and rings of dynamic ones that are filled in turn. A handle out of range or of an empty entry is
// ignored.
#pragma once

#include <cstdint>
#include <vector>

#include "render/Batches.h"

inline constexpr uint32_t CR_MAX_VERTEX_BUFFERS = 8192, CR_MAX_DYNAMIC_BUFFERS = 256;
inline constexpr uint32_t CR_MAX_BUFFER_VERTICES = 65535, CR_MAX_BUFFER_INDICES = 16777216;

struct CRVB {
    uint32_t fvf = 0;
    uint32_t vertex_count = 0; // capacity
    bool is_lost = false;      // the contents must be written again
    uint32_t dr_start = 0;     // next free vertex of a dynamic buffer
    PrimType primitive_type = PT_TRI_LIST;
    uint32_t max_ic = 0, ic = 0; // capacity and count of indices
    std::vector<uint16_t> index;
    std::vector<uint8_t> vb; // vertices
    uint32_t vertex_size = 0;
};

// The handle, or CR_NO_BUFFER when the table is full or the buffer would be too large or empty.
uint32_t crVBCreate(uint32_t fvf, uint32_t vertex_count, PrimType pt, uint32_t index_count);
void crVBDestroy(uint32_t h);
uint8_t* crVBLock(uint32_t h); // the first vertex, null for a bad handle
void crVBUnlock(uint32_t h);
void crVBDraw(uint32_t h, uint32_t start, uint32_t len); // len is cut to what there is
void crVBDrawIndexed(uint32_t h, uint32_t start, uint32_t count, const uint16_t* indices, uint32_t index_count);
void crVBResetIndex(uint32_t h);
CRVB* criGetVB(uint32_t h);
void criMarkVertexBuffersLost();

void crBeginVB(uint32_t vb, uint32_t start);
void crBeginIndexedVB(uint32_t vb);

uint32_t crDRVBCreate(uint32_t count, uint32_t fvf, uint32_t vertex_count, PrimType pt, uint32_t index_count);
void crDRVBDestroy(uint32_t h);
void crDRVBCycle(uint32_t h);
uint32_t criGetDRVB(uint32_t h); // the vertex buffer in use, or CR_NO_BUFFER
// vertex_index_start: what the indices of this batch start from. Ask for no more than a buffer holds.
void crDRVBBeginIndexed(uint32_t drvb, uint32_t vert_space, uint32_t& vertex_index_start);

uint32_t criFaceCount(PrimType prim, uint32_t vertex_count);

// The ends of the batches, for crIndex and crEnd
void criAddIndex(CRVB& vb, uint32_t i);
void criEndDynamic();
