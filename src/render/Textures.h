// The table of textures. The rest of the program holds a texture as a plain number, its slot in the table.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "render/Device.h"

inline constexpr uint32_t CR_NO_TEXTURE = 0xFFFFFFFF; // the failure value of a handle
inline constexpr uint32_t CR_MAX_TEXTURES = 2048;
inline constexpr uint32_t CRT_CUBE_MAP = 0x100; // in a dtype
inline constexpr uint32_t CRT_FACE = 0x10000;   // in the flags of crTFillTexture, with the face number

enum CRTextureType : uint32_t { TEX_NORMAL = 0, TEX_ALPHA = 1, TEX_ALPHA_NORMAL = 2, TEX_BUMP = 3, TEX_TARGET = 4 };

// Groups of textures, bits of the caller's mask.
enum CRTextureLevel : uint32_t { TL_ICON = 1, TL_MATERIAL = 4, TL_LIGHTMAP = 8, TL_DARKMAP = 16 };

struct CRTFormat {
    uint32_t pixelsize = 0; // bytes a pixel
    int32_t shift[4] = {};  // red, green, blue, alpha: position of the mask's highest bit plus 1, less 8
    PixelFormat pf;
};

struct CRTexture {
    const CRTFormat* actformat = nullptr;
    std::string path, name; // as given to the file form
    bool from_file = false;
    uint32_t width = 0, height = 0; // of level 0, of one face
    uint32_t type = 0;              // CRTextureType, with CRT_CUBE_MAP
    uint32_t level = 0;             // the caller's group mask
    uint32_t tmu = 0;
    uint32_t size = 0;               // bytes of all levels of all faces
    uint32_t avg_color = 0xFFFFFFFF; // mean colour 0xAARRGGBB
    std::unique_ptr<DeviceSurface> surface;
};

extern std::unique_ptr<CRTexture> crvTTable[CR_MAX_TEXTURES];
extern std::vector<CRTFormat> crvTFormats;
extern int32_t crvTForceMipmap, crvTForceType, crvTForceBpp, crvTForceScaleDown; // -1: off
extern bool crvTForcePreload, crvTForceAvgColorUpdate;
extern std::string crvTDefaultPath[4]; // up to 255 characters each; no lookup reads them

// The device that holds the textures; a SoftDevice of its own until one is set, and again after null. Setting one
// destroys all textures, whose surfaces belong to the old device, and rebuilds the formats.
void criSetTextureDevice(Device* device);
Device& criTextureDevice();

// All of these give CR_NO_TEXTURE when a file is missing or cannot be read, no format fits or the table is full. A size
// of 0 fails. The height h of a cube map is that of its six stacked faces.
uint32_t crTGet(std::string_view path, std::string_view name, uint32_t level); // loaded if needed
uint32_t crTExist(std::string_view path, std::string_view name);               // never loads
uint32_t crTCreate(std::string_view path, std::string_view name, uint32_t level, uint32_t index = CR_NO_TEXTURE);
uint32_t crTCreate(uint32_t w, uint32_t h, uint32_t bpp, uint32_t level, uint32_t dtype, uint32_t tmu, bool dynamic,
                   uint32_t findex = CR_NO_TEXTURE);
uint32_t crTCreateTga(std::string_view path, uint32_t level, uint32_t index = CR_NO_TEXTURE);
uint32_t crTCreateEnv(std::string_view path, uint32_t level, uint32_t index = CR_NO_TEXTURE);
uint32_t crTLoad(uint32_t handle, std::string_view path, std::string_view name); // a new picture in the same slot
// argb: one face of one level, rows of 0xAARRGGBB. 0, or -1 bad handle, -2 no such level, -3 it cannot be locked, -21
// no such face.
int crTFillTexture(uint32_t handle, const uint32_t* argb, uint32_t level, uint32_t flags);
// Fills all levels. argb: the picture before crvTForceScaleDown, the six faces of a cube map stacked; null: from level
// 0 of the surface. 0, or a negative code: those above, -2 and -3 also for a level to read or to write that cannot be
// locked, -5 and -6 for unlocking them.
int crTComputeMipLevels(uint32_t handle, const uint32_t* argb);
int crTDestroy(uint32_t handle);
int crTDestroyAll(uint32_t mask); // how many
void crTSetAdditionalPath(std::string_view path, int i);
void criTInit();
void criTDestroy();

// The record of a live handle, else null.
const CRTexture* crTRecord(uint32_t handle);
// Level 0 as rows of 0xAARRGGBB; a format without alpha reads as alpha 255. False for a bad handle.
bool crTReadPixels(uint32_t handle, std::vector<uint32_t>& argb, uint32_t& width, uint32_t& height);
