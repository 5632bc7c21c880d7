// Finding the devices, setting a mode, and the frames. Order of life: crInit, criSetRenderer, crSetMode, frames,
// crRelease. Rendering is off until crvTryRestore is set once, and after any failure until it is set again.
#pragma once

#include <cstdint>
#include <forward_list>
#include <string>
#include <vector>

#include "render/Device.h"

struct CR_RenderDepth {
    uint32_t bpp = 0;
};
struct CR_Refresh {
    uint32_t n = 0;
};
struct CR_ZBufferDepth {
    DepthFormat format;
};
struct CR_TextureFormat {
    PixelFormat format;
};

// Every new element goes to the head of its list.
struct CR_D3DDevice;
struct CR_DisplayMode {
    uint32_t w = 0, h = 0;
    std::forward_list<CR_RenderDepth> depth; // seen for this size
    std::forward_list<CR_Refresh> refresh;   // seen for this size
    CR_D3DDevice* top = nullptr;
};

struct CR_DDDevice;
struct CR_D3DDevice {
    std::forward_list<CR_ZBufferDepth> zbuffer_formats;
    std::forward_list<CR_TextureFormat> texture_formats;
    std::forward_list<CR_DisplayMode> modes;
    Device* device = nullptr;
    CR_DDDevice* top = nullptr;
    std::string name, desc; // up to 255 characters
};

struct CR_DDDevice { // a display driver
    std::forward_list<CR_D3DDevice> devices;
    std::string name, desc;
};

// What crSetMode gives back when a step fails.
enum ModeError : int {
    MODE_NO_DEPTH_FORMAT = -1,
    MODE_NO_SCREEN = -4,
    MODE_NO_BACK_BUFFER = -6,
    MODE_NO_VIDEO_MODE = -10,
    MODE_NO_FLIP_BUFFERS = -11,
    MODE_NO_DEPTH_BUFFER = -14,
    MODE_NO_DEVICE = -16
};

// What crBeginFrame gives back.
enum FrameError : int { FRAME_DISABLED = -1, FRAME_NOT_CLEARED = -3, FRAME_NO_SCENE = -5 };

enum BufferType : uint32_t { BT_BACK, BT_FRONT };

inline constexpr uint32_t TRIG_STEPS = 1024, SQRT_STEPS = 1024;

extern std::forward_list<CR_DDDevice> crvRootDevices;
extern Device* crvD3DDevice; // the open device, null without a mode
extern CR_DDDevice* crvCurDDDevice;
extern CR_D3DDevice* crvCurD3DDevice;
extern bool crvWindowed;
extern uint32_t crvStencilBits; // of the chosen depth format
extern uint32_t crvBgColor;
extern bool crvBgErase;       // the frame clears the colours
extern bool crvRenderEnabled; // false after a failure: no frame starts
extern bool crvTryRestore;    // the next crBeginFrame restores the surfaces
extern float crvFps;
extern uint32_t crvDwFps, crvFpsFrames, crvLastFpsOldTime;
extern uint32_t crvStatVerts, crvStatFaces; // of the current frame
extern uint32_t crvDeviceChanges;           // counts what makes the meshes of a device useless
extern bool crD3DTextureInfoEnable;         // crEndFrame writes crvD3DTextureInfo
extern std::string crvD3DTextureInfo;
extern float crvTrigTable[TRIG_STEPS];     // sin(i * 2 pi / 1024)
extern float crvSqrtTable[SQRT_STEPS + 1]; // square roots of i * 478.51562

// Lists the devices, the software device when none is given; they must outlive crRelease. Opens none.
int crInit(const std::vector<Device*>& devices = {});
CR_DDDevice* crGetRootDevice();                         // null before crInit
void criEnumerate(const std::vector<Device*>& devices); // fills crvRootDevices
void criFreeRootDevices();
void criSetRenderer(CR_DDDevice* dd, CR_D3DDevice* d3d); // drops all textures and state blocks
// bpp and refresh count in full-screen mode only; zbpp and stbpp: the most bits of the depth format. 0 or a ModeError.
int crSetMode(uint32_t w, uint32_t h, uint32_t bpp, uint32_t zbpp, uint32_t stbpp, uint32_t refresh, bool windowed);
int crRelease();

void crBgColor(uint32_t color); // 0xAARRGGBB; a top byte other than 0: the frame does not clear the picture
int crBeginFrame();             // 0 or a FrameError
void crEndFrame();
void criUpdateWindow(); // shows the back buffer
DeviceSurface* criGetFrontBuffer();
DeviceSurface* criGetBackBuffer();
inline bool crIsWindowed() { return crvWindowed; }
inline float crGetFps() { return crvFps; }
inline uint32_t crGetDwFps() { return crvDwFps; }

// Reading the picture back. Always the back buffer is locked. crLockBuffer: 0, -1 already locked, -2 no lock;
// crUnlockBuffer: 0, -1 not locked, -2 no unlock. Outside the picture, and when not locked, a pixel is 255, 0, 0.
int crLockBuffer(BufferType type);
void crGetBuffer(uint32_t x, uint32_t y, uint32_t& r, uint32_t& g, uint32_t& b);
int crUnlockBuffer();
