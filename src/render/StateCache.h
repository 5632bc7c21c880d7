// The state of the device, sent only where it differs from what was sent last. All state goes through here, so that the
// device and the cache never part.
#pragma once

#include <cstdint>

#include "foundation/Plane.h"
#include "render/Device.h"
#include "render/Textures.h"

inline constexpr uint32_t UNKNOWN_STATE = 0xFEFEFEFE; // no value of any state: the next one is always sent
inline constexpr uint32_t CR_MAX_STATE_BLOCKS = 1024;

enum RenderMode : uint32_t { RM_NORMAL, RM_ALPHA, RM_LIGHTMAP, RM_TEXT, RM_TEX1_MODULATE_TEX2 };

extern uint32_t crvLastStateValues[RENDER_STATES];
extern uint32_t crvLastStageValues[TEXTURE_STAGES][STAGE_STATES];
extern DeviceSurface* crvLastTextures[TEXTURE_STAGES];

void criForgetStates();                              // what the device holds is unknown again
void criForgetTexture(const DeviceSurface* surface); // takes it off every stage

void criSetStateValue(uint32_t state, uint32_t value);
void criSetStageValue(uint32_t stage, uint32_t type, uint32_t value);
void crTexture(uint32_t handle, uint32_t stage); // no live handle: no texture

void crPresetMode(RenderMode mode);
void crAlphaBlend(BlendMode src, BlendMode dst = BM_INVSRCALPHA);        // src BM_NONE, or one and zero: off
void crAlphaTest(CmpFunc func, uint32_t ref = 0);                        // CMP_OFF: no test
void crColorOp(OpType op, uint32_t arg1, uint32_t arg2, uint32_t stage); // arguments: ArgType
void crAlphaOp(OpType op, uint32_t arg1, uint32_t arg2, uint32_t stage);
void crTextureAddress(TAType u, TAType v, uint32_t stage);
void crClipPlaneSet(uint32_t i, const PLANE& plane);
void crClipPlaneEnable(uint32_t mask); // bit i: plane i cuts

// A block remembers every state, stage state and texture that is set now.
int crStateBlockCreate();          // its number, or -1 when the table is full
int crStateBlockApply(uint32_t h); // 0, or -1 for an empty entry
int crStateBlockDestroy(uint32_t h);
void criClearStateBlocks();
