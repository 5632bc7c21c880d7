#include "render/Batches.h"

#include <memory>
#include <vector>

#include "render/Frame.h"
#include "render/StateCache.h"
#include "render/TransparentFaces.h"
#include "render/VertexBuffers.h"

uint8_t* crvPtr = nullptr;
uint32_t crvFvf = 0, crvLastFvf = 0, crvFvfOffsets[CRO_COUNT] = {}, crvFvfSize = 0;
uint32_t crvVertexCount = 0;
PrimType crvPrim = PT_TRI_LIST;
CRDestType crDestType = CR_RAW_DATA;
uint32_t crvVB = CR_NO_BUFFER;
CRVB* crvVBPtr = nullptr;

namespace {

uint8_t crvDrawBuffer[DRAW_BUFFER_BYTES];
uint16_t crvIndexBuffer[INDEX_BUFFER_PLACES];
uint16_t* crvIPtr = crvIndexBuffer;
const uint8_t* batch_end = nullptr;        // of the room for vertices
uint8_t spare_vertex[LARGEST_VERTEX + 16]; // takes what has no room
float depth_2d = 0;

bool RoomForVertex(const uint8_t* at) { return crvFvfSize > 0 && static_cast<size_t>(batch_end - at) >= crvFvfSize; }

void AddVertexStatistics() { crvStatVerts += crvVertexCount; }

// Runs draw once, or six times with the positions of the staging buffer shifted.
template <class Draw>
void DrawShifted(int use_tbuf, const Draw& draw) {
    if (use_tbuf == 0) {
        draw();
        return;
    }
    static std::vector<float> positions;
    for (uint32_t axis = 0; axis < 3; ++axis) {
        const auto component = [axis](uint32_t i) {
            return crvDrawBuffer + static_cast<size_t>(i) * crvFvfSize + axis * sizeof(float);
        };
        positions.resize(crvVertexCount);
        for (uint32_t i = 0; i < crvVertexCount; ++i)
            std::memcpy(&positions[i], component(i), sizeof(float));
        const auto put = [&](float shift) {
            for (uint32_t i = 0; i < crvVertexCount; ++i) {
                const float shifted = positions[i] + shift;
                std::memcpy(component(i), &shifted, sizeof(float));
            }
        };
        for (const float shift : {crvTBufDelta, -crvTBufDelta}) {
            put(shift);
            draw();
        }
        for (uint32_t i = 0; i < crvVertexCount; ++i)
            std::memcpy(component(i), &positions[i], sizeof(float));
    }
}

void EndRaw(int use_tbuf) {
    if (crvVertexCount == 0)
        return;
    crMFlush();
    AddVertexStatistics();
    DrawShifted(use_tbuf, [] { criTextureDevice().DrawPrimitive(crvPrim, crvFvf, crvDrawBuffer, crvVertexCount); });
    crvStatFaces += criFaceCount(crvPrim, crvVertexCount);
}

void EndRawIndexed(int use_tbuf) {
    const auto index_count = static_cast<uint32_t>(crvIPtr - crvIndexBuffer);
    if (crvVertexCount == 0 || index_count == 0)
        return;
    crMFlush();
    AddVertexStatistics();
    DrawShifted(use_tbuf, [index_count] {
        criTextureDevice().DrawIndexedPrimitive(crvPrim, crvFvf, crvDrawBuffer, crvVertexCount, crvIndexBuffer,
                                                index_count);
    });
    crvStatFaces += index_count / 3;
}

} // namespace

void criMakeFVFOffsets(uint32_t fvf) {
    const FvfLayout layout = MakeFvfLayout(fvf);
    std::memcpy(crvFvfOffsets, layout.offsets, sizeof(crvFvfOffsets));
    crvFvfSize = layout.size;
}

void criOpenBatch(CRDestType type, PrimType prim, uint32_t fvf, uint8_t* target, size_t room) {
    crDestType = type;
    crvPrim = prim;
    crvFvf = fvf;
    if (fvf != crvLastFvf) {
        criMakeFVFOffsets(fvf);
        crvLastFvf = fvf;
    }
    crvVertexCount = 0;
    batch_end = target + room;
    crvPtr = RoomForVertex(target) ? target : spare_vertex;
}

void criNextVertex() {
    if (!crvPtr || crvPtr == spare_vertex)
        return;
    crvPtr += crvFvfSize;
    ++crvVertexCount;
    if (!RoomForVertex(crvPtr))
        crvPtr = spare_vertex;
}

void crBegin(PrimType prim, uint32_t fvf) { criOpenBatch(CR_RAW_DATA, prim, fvf, crvDrawBuffer, DRAW_BUFFER_BYTES); }

void crBeginIndexed(uint32_t fvf, PrimType prim) {
    criOpenBatch(CR_RAW_INDEXED, prim, fvf, crvDrawBuffer, DRAW_BUFFER_BYTES);
    crvIPtr = crvIndexBuffer;
}

void crIndex(uint32_t i) {
    if (!crvPtr)
        return;
    switch (crDestType) {
    case CR_RAW_INDEXED:
        if (crvIPtr < crvIndexBuffer + INDEX_BUFFER_PLACES)
            *crvIPtr++ = static_cast<uint16_t>(i);
        break;
    case CR_VB_INDEXED:
        criAddIndex(*crvVBPtr, i);
        break;
    case CR_DRVB_INDEXED:
        criAddIndex(*crvVBPtr, i - crvVBPtr->dr_start);
        break;
    default:
        break;
    }
}

void crEnd(int use_tbuf) {
    if (!crvPtr)
        return;
    switch (crDestType) {
    case CR_RAW_DATA:
        EndRaw(use_tbuf);
        break;
    case CR_RAW_ALPHA_DATA:
        criEndAlpha();
        break;
    case CR_VB:
    case CR_VB_INDEXED:
        crVBUnlock(crvVB);
        break;
    case CR_RAW_INDEXED:
        EndRawIndexed(use_tbuf);
        break;
    case CR_DRVB_INDEXED:
        criEndDynamic();
        break;
    }
    crvPtr = nullptr;
}

void crSet2DDepth(float depth) { depth_2d = depth; }

float criGet2DDepth() { return depth_2d; }
