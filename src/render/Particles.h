// Particles: quads that face the camera, drawn with the transparent faces of the frame. crMUpdate must have run. They
// leave their own matrix in CRM_WORLD.
#pragma once

#include <cstdint>

#include "render/DeviceStates.h"
#include "render/Matrix.h"

inline constexpr uint32_t FOG_STEPS = 256;

extern uint8_t crvFogTable[FOG_STEPS];      // 255 clear to 0 hidden, over the distance from the camera
extern float crvFogEnd, crvFogTabInv;       // where the table ends; its steps a unit of distance
void crFogTablePow(float end, float power); // hides as (distance / end) ^ power; end must be above 0

// rot: 1/1024 of a turn. Skipped where the fog hides them.
void crDrawParticle(const D3DVECTOR& pos, float width, float height, uint32_t tex, uint32_t color, uint32_t rot,
                    BlendMode bm_src, BlendMode bm_dst);
// Stretches along p_dir, as long as height.
void crDrawDirParticle(const D3DVECTOR& pos, float width, float height, uint32_t tex, uint32_t color,
                       const D3DVECTOR& p_dir, BlendMode bm_src, BlendMode bm_dst);
// Upright: turns about Y only.
void crDrawVertParticle(const D3DVECTOR& pos, float width, float height, uint32_t tex, uint32_t color, BlendMode bm_src,
                        BlendMode bm_dst);
