#include "render/TransparentFaces.h"

#include <algorithm>
#include <vector>

#include "render/Frame.h"
#include "render/StateCache.h"
#include "render/VertexBuffers.h"

uint32_t crvTFCount = 0, crvTFDataUsed = 0;

namespace {

constexpr uint32_t RECORD_STEP = 512, DATA_STEP = 262144;
constexpr uint32_t MOST_DATA = 268435456; // then batches are cut
constexpr uint32_t BATCH_ROOM = 65536;    // always kept free for the batch that is being written

std::vector<CRTFRec> crvTFBuffer;
std::vector<uint32_t> crvTFIndices; // records in the order of drawing
std::vector<uint8_t> crvTFData;
BlendMode crvAlphaSrc = BM_ONE, crvAlphaDst = BM_ZERO;
CullMode crvAlphaCullMode = CULL_NONE;
uint32_t crvAlphaTexture = CR_NO_TEXTURE;

CRTFRec& criGetTFRec() {
    if (crvTFCount == crvTFBuffer.size()) {
        crvTFBuffer.resize(crvTFBuffer.size() + RECORD_STEP);
        crvTFIndices.resize(crvTFBuffer.size());
    }
    return crvTFBuffer[crvTFCount++];
}

// From the camera; what is no number sorts as nearest.
float SquareDistance(const D3DVECTOR& point) {
    const float distance = SquareMagnitude(point - crvViewFrom);
    return distance == distance ? distance : 0;
}

void criTransparentFacesSort() {
    for (uint32_t i = 0; i < crvTFCount; ++i)
        crvTFIndices[i] = i;
    std::sort(crvTFIndices.begin(), crvTFIndices.begin() + crvTFCount, [](uint32_t a, uint32_t b) {
        const float da = crvTFBuffer[a].sqr_dist, db = crvTFBuffer[b].sqr_dist;
        return da != db ? da > db : a < b;
    });
}

void SetSharedStates() {
    crPresetMode(RM_ALPHA);
    crTextureAddress(TA_WRAP, TA_WRAP, 0);
    criSetStateValue(RS_ZENABLE, 1);
    criSetStateValue(RS_ZWRITEENABLE, 0);
    criSetStateValue(RS_FOGENABLE, 0);
    criSetStateValue(RS_SPECULARENABLE, 0);
    criSetStageValue(0, TSS_TEXCOORDINDEX, 0);
}

} // namespace

void crBeginAlpha(BlendMode src, BlendMode dst, PrimType pt, uint32_t fvf, uint32_t tex, CullMode cull) {
    if (crvTFData.empty())
        crvTFData.resize(DATA_STEP);
    crvAlphaSrc = src;
    crvAlphaDst = dst;
    crvAlphaTexture = tex;
    crvAlphaCullMode = cull;
    criOpenBatch(CR_RAW_ALPHA_DATA, pt, fvf, crvTFData.data() + crvTFDataUsed, crvTFData.size() - crvTFDataUsed);
}

void criEndAlpha() {
    if (crvVertexCount == 0)
        return;
    const uint32_t bytes = crvVertexCount * crvFvfSize;
    CRTFRec& record = criGetTFRec();
    record.vb = CR_NO_BUFFER;
    record.fvf = crvFvf;
    record.prim = crvPrim;
    if (crvTFDataUsed + BATCH_ROOM + bytes > crvTFData.size() && crvTFData.size() < MOST_DATA)
        crvTFData.resize(crvTFData.size() + DATA_STEP);
    record.prim_data = crvTFDataUsed;
    crvTFDataUsed += bytes;
    record.vertc = crvVertexCount;
    record.tex = crvAlphaTexture;
    record.cm = crvAlphaCullMode;
    record.src_bm = crvAlphaSrc;
    record.dst_bm = crvAlphaDst;
    record.wmat = crvMatrices[CRM_WORLD];
    D3DVECTOR first;
    std::memcpy(&first, crvTFData.data() + record.prim_data, sizeof(first));
    record.sqr_dist = SquareDistance(first + crMGetRow(record.wmat, 3));
    crvStatFaces += criFaceCount(crvPrim, crvVertexCount);
}

void criTransparentObjectDraw(uint32_t vb, uint32_t tex, BlendMode src, BlendMode dst, CullMode cull) {
    CRTFRec& record = criGetTFRec();
    record = {};
    record.prim_data = CR_NO_BUFFER;
    record.wmat = crvMatrices[CRM_WORLD];
    record.sqr_dist = SquareDistance(crMGetRow(record.wmat, 3));
    record.tex = tex;
    record.vb = vb;
    record.src_bm = src;
    record.dst_bm = dst;
    record.cm = cull;
}

void criTransparentFacesDraw() {
    if (crvTFCount > 0) {
        criTransparentFacesSort();
        SetSharedStates();
    }
    for (uint32_t i = 0; i < crvTFCount; ++i) {
        const CRTFRec& record = crvTFBuffer[crvTFIndices[i]];
        const uint32_t current = crMCurrent(CRM_WORLD);
        crMSet(record.wmat);
        crMCurrent(current);
        crTexture(record.tex, 0);
        crAlphaBlend(record.src_bm, record.dst_bm);
        criSetStateValue(RS_CULLMODE, record.cm);
        crMFlush();
        if (record.vb == CR_NO_BUFFER)
            criTextureDevice().DrawPrimitive(record.prim, record.fvf, crvTFData.data() + record.prim_data,
                                             record.vertc);
        else
            crVBDraw(record.vb, 0, CR_NO_BUFFER);
    }
    criTransparentFacesReset();
}

void criTransparentFacesReset() { crvTFCount = crvTFDataUsed = 0; }

void criTransparentFacesFree() {
    if (crDestType == CR_RAW_ALPHA_DATA) // an open batch has nowhere to go
        crvPtr = nullptr;
    criTransparentFacesReset();
    crvTFBuffer = {};
    crvTFIndices = {};
    crvTFData = {};
}
