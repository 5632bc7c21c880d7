// The numbers that a device takes: primitives, vertex formats, render states, texture stage states and their values.
#pragma once

#include <cstdint>

enum PrimType : uint32_t {
    PT_POINT_LIST = 1,
    PT_LINE_LIST = 2,
    PT_LINE_STRIP = 3,
    PT_TRI_LIST = 4,
    PT_TRI_STRIP = 5,
    PT_TRI_FAN = 6
};

// Bits of a vertex format. Bits 8 to 11 hold the count of texture coordinate sets, of which 3 are laid out at most.
enum VertexType : uint32_t {
    VT_XYZ = 2,
    VT_XYZRHW = 4,
    VT_NORMAL = 16,
    VT_DIFFUSE = 64,
    VT_SPECULAR = 128,
    VT_TEX1 = 256,
    VT_TEX2 = 512,
    VT_TEX3 = 768,
    VT_TEX1_3 = 65792 // one set of three coordinates
};

enum CrOffsets : uint32_t { CRO_XYZ, CRO_RHW, CRO_NORM, CRO_DIFF, CRO_SPEC, CRO_TEX1, CRO_TEX2, CRO_TEX3, CRO_COUNT };

// Where the fields of a vertex lie, bytes. A field that the format lacks has offset 0.
struct FvfLayout {
    uint32_t offsets[CRO_COUNT] = {};
    uint32_t size = 0;
    uint32_t coordinate_sets = 0;
};
inline constexpr uint32_t LARGEST_VERTEX = 60; // bytes of a format with every field
FvfLayout MakeFvfLayout(uint32_t fvf);

inline constexpr uint32_t RENDER_STATES = 256, TEXTURE_STAGES = 8, STAGE_STATES = 32, CLIP_PLANES = 6;

enum RenderState : uint32_t {
    RS_ZENABLE = 7,
    RS_SHADEMODE = 9,
    RS_ZWRITEENABLE = 14,
    RS_ALPHATESTENABLE = 15,
    RS_SRCBLEND = 19,
    RS_DESTBLEND = 20,
    RS_CULLMODE = 22,
    RS_ZFUNC = 23,
    RS_ALPHAREF = 24,
    RS_ALPHAFUNC = 25,
    RS_ALPHABLENDENABLE = 27,
    RS_FOGENABLE = 28,
    RS_SPECULARENABLE = 29,
    RS_TEXTUREFACTOR = 60,
    RS_LIGHTING = 137,
    RS_COLORVERTEX = 141,
    RS_CLIPPLANEENABLE = 152 // bit i: plane i cuts
};

enum TextureStageState : uint32_t {
    TSS_COLOROP = 1,
    TSS_COLORARG1 = 2,
    TSS_COLORARG2 = 3,
    TSS_ALPHAOP = 4,
    TSS_ALPHAARG1 = 5,
    TSS_ALPHAARG2 = 6,
    TSS_TEXCOORDINDEX = 11,
    TSS_ADDRESSU = 13,
    TSS_ADDRESSV = 14,
    TSS_MAGFILTER = 16,
    TSS_MINFILTER = 17,
    TSS_MIPFILTER = 18
};

enum ShadeMode : uint32_t { SHADE_FLAT = 1, SHADE_GOURAUD = 2 };
enum CullMode : uint32_t { CULL_NONE = 1, CULL_CW = 2, CULL_CCW = 3 }; // the turn, on the screen, that is left out

enum CmpFunc : uint32_t {
    CMP_OFF = 0, // for crAlphaTest
    CMP_NEVER = 1,
    CMP_LESS,
    CMP_EQUAL,
    CMP_LESSEQUAL,
    CMP_GREATER,
    CMP_NOTEQUAL,
    CMP_GREATEREQUAL,
    CMP_ALWAYS
};

enum BlendMode : uint32_t {
    BM_NONE = 0, // for crAlphaBlend
    BM_ZERO = 1,
    BM_ONE,
    BM_SRCCOLOR,
    BM_INVSRCCOLOR,
    BM_SRCALPHA,
    BM_INVSRCALPHA,
    BM_DESTALPHA,
    BM_INVDESTALPHA,
    BM_DESTCOLOR,
    BM_INVDESTCOLOR,
    BM_SRCALPHASAT
};

enum OpType : uint32_t {
    OP_DISABLE = 1,
    OP_SELECTARG1,
    OP_SELECTARG2,
    OP_MODULATE,
    OP_MODULATE2X,
    OP_MODULATE4X,
    OP_ADD
};
enum ArgType : uint32_t {
    ARG_DIFFUSE = 0,
    ARG_CURRENT,
    ARG_TEXTURE,
    ARG_TFACTOR,
    ARG_SELECT = 0xF,
    ARG_COMPLEMENT = 0x10,
    ARG_ALPHAREPLICATE = 0x20
};
enum TAType : uint32_t { TA_WRAP = 1, TA_MIRROR, TA_CLAMP };
enum TFType : uint32_t { TF_POINT = 1, TF_LINEAR };
enum MFType : uint32_t { MF_NONE = 1, MF_POINT, MF_LINEAR };

enum ClearFlags : uint32_t { CLEAR_TARGET = 1, CLEAR_ZBUFFER = 2, CLEAR_STENCIL = 4 };
