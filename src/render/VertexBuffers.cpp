#include "render/VertexBuffers.h"

#include <algorithm>
#include <array>
#include <memory>

#include "render/Frame.h"
#include "render/Textures.h"

namespace {

struct CRDRVB {
    std::vector<uint32_t> vbs; // handles
    uint32_t current = 0;
};

std::array<std::unique_ptr<CRVB>, CR_MAX_VERTEX_BUFFERS> crvVBTable;
std::array<std::unique_ptr<CRDRVB>, CR_MAX_DYNAMIC_BUFFERS> crvDRVBTable;

CRDRVB* GetRing(uint32_t h) { return h < CR_MAX_DYNAMIC_BUFFERS ? crvDRVBTable[h].get() : nullptr; }

void OpenBuffer(CRDestType type, uint32_t h, uint32_t start) {
    CRVB* const vb = criGetVB(h);
    if (!vb) {
        crvPtr = nullptr;
        return;
    }
    crvVB = h;
    crvVBPtr = vb;
    vb->is_lost = false;
    const size_t offset = static_cast<size_t>(std::min(start, vb->vertex_count)) * vb->vertex_size;
    criOpenBatch(type, vb->primitive_type, vb->fvf, vb->vb.data() + offset, vb->vb.size() - offset);
}

void Advance(CRDRVB& ring) { ring.current = (ring.current + 1) % static_cast<uint32_t>(ring.vbs.size()); }

void DrawIndices(const CRVB& vb, const uint8_t* vertices, uint32_t vertex_count, const uint16_t* indices,
                 uint32_t index_count) {
    crMFlush();
    crvStatVerts += vertex_count;
    crvStatFaces += index_count / 3;
    criTextureDevice().DrawIndexedPrimitive(vb.primitive_type, vb.fvf, vertices, vertex_count, indices, index_count);
}

} // namespace

CRVB* criGetVB(uint32_t h) { return h < CR_MAX_VERTEX_BUFFERS ? crvVBTable[h].get() : nullptr; }

uint32_t criFaceCount(PrimType prim, uint32_t vertex_count) {
    return prim == PT_TRI_LIST ? vertex_count / 3 : vertex_count > 2 ? vertex_count - 2 : 0;
}

uint32_t crVBCreate(uint32_t fvf, uint32_t vertex_count, PrimType pt, uint32_t index_count) {
    const uint32_t vertex_size = MakeFvfLayout(fvf).size;
    const auto entry = std::find(crvVBTable.begin(), crvVBTable.end(), nullptr);
    if (entry == crvVBTable.end() || vertex_size == 0 || vertex_count == 0 || vertex_count > CR_MAX_BUFFER_VERTICES ||
        index_count > CR_MAX_BUFFER_INDICES)
        return CR_NO_BUFFER;
    *entry = std::make_unique<CRVB>();
    CRVB& vb = **entry;
    vb.fvf = fvf;
    vb.vertex_count = vertex_count;
    vb.primitive_type = pt;
    vb.max_ic = index_count;
    vb.index.resize(index_count);
    vb.vertex_size = vertex_size;
    vb.vb.resize(static_cast<size_t>(vertex_size) * vertex_count);
    return static_cast<uint32_t>(entry - crvVBTable.begin());
}

void crVBDestroy(uint32_t h) {
    CRVB* const vb = criGetVB(h);
    if (!vb)
        return;
    if (vb == crvVBPtr) { // its batch has nowhere to go
        if (crDestType == CR_VB || crDestType == CR_VB_INDEXED || crDestType == CR_DRVB_INDEXED)
            crvPtr = nullptr;
        crvVBPtr = nullptr;
        crvVB = CR_NO_BUFFER;
    }
    crvVBTable[h].reset();
}

uint8_t* crVBLock(uint32_t h) {
    CRVB* const vb = criGetVB(h);
    return vb ? vb->vb.data() : nullptr;
}

void crVBUnlock(uint32_t h) {
    if (CRVB* const vb = criGetVB(h))
        vb->is_lost = false;
}

void crVBDraw(uint32_t h, uint32_t start, uint32_t len) {
    const CRVB* const vb = criGetVB(h);
    const uint32_t available = !vb ? 0 : vb->max_ic > 0 ? vb->ic : vb->vertex_count;
    if (start >= available || len == 0)
        return;
    len = std::min(len, available - start);
    if (vb->max_ic > 0) {
        DrawIndices(*vb, vb->vb.data(), vb->vertex_count, vb->index.data() + start, len);
        return;
    }
    crMFlush();
    crvStatVerts += len;
    crvStatFaces += criFaceCount(vb->primitive_type, len);
    criTextureDevice().DrawPrimitive(vb->primitive_type, vb->fvf,
                                     vb->vb.data() + static_cast<size_t>(start) * vb->vertex_size, len);
}

void crVBDrawIndexed(uint32_t h, uint32_t start, uint32_t count, const uint16_t* indices, uint32_t index_count) {
    const CRVB* const vb = criGetVB(h);
    if (!vb || start >= vb->vertex_count || count == 0 || index_count == 0)
        return;
    DrawIndices(*vb, vb->vb.data() + static_cast<size_t>(start) * vb->vertex_size,
                std::min(count, vb->vertex_count - start), indices, index_count);
}

void crVBResetIndex(uint32_t h) {
    if (CRVB* const vb = criGetVB(h))
        vb->ic = 0;
}

void criMarkVertexBuffersLost() {
    for (const auto& vb : crvVBTable)
        if (vb)
            vb->is_lost = true;
}

void crBeginVB(uint32_t vb, uint32_t start) { OpenBuffer(CR_VB, vb, start); }

void crBeginIndexedVB(uint32_t vb) { OpenBuffer(CR_VB_INDEXED, vb, 0); }

void criAddIndex(CRVB& vb, uint32_t i) {
    if (vb.ic < vb.max_ic)
        vb.index[vb.ic++] = static_cast<uint16_t>(i);
}

uint32_t crDRVBCreate(uint32_t count, uint32_t fvf, uint32_t vertex_count, PrimType pt, uint32_t index_count) {
    const auto entry = std::find(crvDRVBTable.begin(), crvDRVBTable.end(), nullptr);
    if (entry == crvDRVBTable.end() || count == 0 || count > CR_MAX_VERTEX_BUFFERS)
        return CR_NO_BUFFER;
    auto ring = std::make_unique<CRDRVB>();
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t vb = crVBCreate(fvf, vertex_count, pt, index_count);
        if (vb == CR_NO_BUFFER) {
            for (const uint32_t made : ring->vbs)
                crVBDestroy(made);
            return CR_NO_BUFFER;
        }
        ring->vbs.push_back(vb);
    }
    *entry = std::move(ring);
    return static_cast<uint32_t>(entry - crvDRVBTable.begin());
}

void crDRVBDestroy(uint32_t h) {
    const CRDRVB* const ring = GetRing(h);
    if (!ring)
        return;
    for (const uint32_t vb : ring->vbs)
        crVBDestroy(vb);
    crvDRVBTable[h].reset();
}

uint32_t criGetDRVB(uint32_t h) {
    const CRDRVB* const ring = GetRing(h);
    return ring ? ring->vbs[ring->current] : CR_NO_BUFFER;
}

void crDRVBCycle(uint32_t h) {
    CRDRVB* const ring = GetRing(h);
    if (!ring)
        return;
    if (CRVB* const vb = criGetVB(ring->vbs[ring->current]))
        vb->dr_start = 0;
    Advance(*ring);
}

void crDRVBBeginIndexed(uint32_t drvb, uint32_t vert_space, uint32_t& vertex_index_start) {
    vertex_index_start = 0;
    CRDRVB* const ring = GetRing(drvb);
    CRVB* vb = ring ? criGetVB(ring->vbs[ring->current]) : nullptr;
    if (vb && vb->vertex_count - vb->dr_start < vert_space) {
        Advance(*ring);
        vb = criGetVB(ring->vbs[ring->current]);
        if (vb)
            vb->dr_start = 0;
    }
    if (!vb) {
        crvPtr = nullptr;
        return;
    }
    vertex_index_start = vb->dr_start;
    vb->ic = 0;
    OpenBuffer(CR_DRVB_INDEXED, ring->vbs[ring->current], vb->dr_start);
}

void criEndDynamic() {
    CRVB& vb = *crvVBPtr;
    if (crvVertexCount > 0 && vb.ic > 0)
        DrawIndices(vb, vb.vb.data() + static_cast<size_t>(vb.dr_start) * vb.vertex_size, crvVertexCount,
                    vb.index.data(), vb.ic);
    vb.dr_start += crvVertexCount;
    vb.ic = 0;
}
