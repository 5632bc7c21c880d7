#include "render/Frame.h"

#include <bit>
#include <cmath>

#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "render/StateCache.h"
#include "render/Text.h"
#include "render/TexturePixels.h"
#include "render/TransparentFaces.h"
#include "render/VertexBuffers.h"

Device* crvD3DDevice = nullptr;
CR_DDDevice* crvCurDDDevice = nullptr;
CR_D3DDevice* crvCurD3DDevice = nullptr;
bool crvWindowed = false;
uint32_t crvStencilBits = 0;
uint32_t crvBgColor = 0xFF0000;
bool crvBgErase = true, crvRenderEnabled = false, crvTryRestore = false;
float crvFps = 0;
uint32_t crvDwFps = 0, crvFpsFrames = 0, crvLastFpsOldTime = 0;
uint32_t crvStatVerts = 0, crvStatFaces = 0;
uint32_t crvDeviceChanges = 0;
bool crD3DTextureInfoEnable = false;
std::string crvD3DTextureInfo;
float crvTrigTable[TRIG_STEPS], crvSqrtTable[SQRT_STEPS + 1];

namespace {

void FillTables() {
    constexpr float SQRT_STEP = 478.51562f;
    for (uint32_t i = 0; i < TRIG_STEPS; ++i)
        crvTrigTable[i] = std::sin(static_cast<float>(i) * TWO_PI / TRIG_STEPS);
    for (uint32_t i = 0; i <= SQRT_STEPS; ++i)
        crvSqrtTable[i] = std::sqrt(static_cast<float>(i) * SQRT_STEP);
}

const DepthFormat* ChooseDepthFormat(uint32_t zbpp, uint32_t stbpp) {
    const DepthFormat* best_z = nullptr;
    if (!crvCurD3DDevice)
        return nullptr;
    for (const CR_ZBufferDepth& z : crvCurD3DDevice->zbuffer_formats) {
        const bool allowed = z.format.depth_bits <= zbpp && z.format.stencil_bits <= stbpp;
        if (allowed &&
            (!best_z || (z.format.depth_bits >= best_z->depth_bits && z.format.stencil_bits >= best_z->stencil_bits)))
            best_z = &z.format;
    }
    return best_z;
}

void CountFrame() {
    constexpr uint32_t MEASURED_TIME = 1001; // milliseconds
    const uint32_t t = GetDesktop().GetTickCount();
    const uint32_t elapsed = t - crvLastFpsOldTime;
    if (elapsed < MEASURED_TIME) {
        ++crvFpsFrames;
        return;
    }
    crvFps = static_cast<float>(crvFpsFrames) / (static_cast<float>(elapsed) * 0.001f);
    crvDwFps = static_cast<uint32_t>(crvFps);
    crvLastFpsOldTime = t;
    crvFpsFrames = 0;
}

void WriteTextureInfo() {
    constexpr uint32_t KILOBYTE = 1024;
    const TextureStatistics s = crvD3DDevice->GetTextureStatistics();
    crvD3DTextureInfo = Format("NumEvicts:%d\nNumVidCreates:%d\nNumTexturesUsed:%d\nNumUsedTexInVid:%d\nWorkingSet:%d\n"
                               "WorkingSetKBytes:%d\nTotalManaged:%d\nTotalBytes:%d\n\nNumLoads:%d\n"
                               "ApproxKBytesLoaded:%d\nNumPreLoads:%d\nNumSet:%d\nNumCreates:%d\nNumDestroys:%d\n"
                               "NumLocks:%d\n",
                               s.evictions, s.video_creations, s.used, s.used_in_video, s.working_set,
                               s.working_set_bytes / KILOBYTE, s.managed, s.managed_bytes, s.loads,
                               s.loaded_bytes / KILOBYTE, s.preloads, s.sets, s.creations, s.destructions, s.locks);
}

bool ShowBackBuffer() { return crvD3DDevice && crvD3DDevice->Present({0, 0, crvScrWidth, crvScrHeight}); }

// The locked back buffer
struct LockedBuffer {
    const uint8_t* pixels = nullptr;
    uint32_t pitch = 0, pixel_size = 0, width = 0, height = 0; // pixel_size 0: not locked
    uint32_t mask[3] = {};
    int shift[3] = {};
} locked;

} // namespace

int crInit(const std::vector<Device*>& devices) {
    crvD3DDevice = nullptr;
    criSetTextureDevice(nullptr);
    criEnumerate(devices.empty() ? std::vector<Device*>{&criTextureDevice()} : devices);
    crInitFonts();
    FillTables();
    return 0;
}

void criSetRenderer(CR_DDDevice* dd, CR_D3DDevice* d3d) {
    crvCurDDDevice = dd;
    crvCurD3DDevice = d3d;
    ++crvDeviceChanges;
    criSetTextureDevice(d3d ? d3d->device : nullptr);
    criForgetFonts();
    criClearStateBlocks();
}

int crSetMode(uint32_t w, uint32_t h, uint32_t bpp, uint32_t zbpp, uint32_t stbpp, uint32_t refresh, bool windowed) {
    const DepthFormat* best_z = ChooseDepthFormat(zbpp, stbpp);
    if (!best_z)
        return MODE_NO_DEPTH_FORMAT;
    criTransparentFacesReset();
    Device& device = *crvCurD3DDevice->device;
    crvD3DDevice = nullptr;
    locked = {};
    if (!device.TakeScreen(windowed))
        return MODE_NO_SCREEN;
    if (!windowed && !device.SetVideoMode({w, h, bpp, refresh}))
        return MODE_NO_VIDEO_MODE;
    if (!device.CreateBackBuffer(w, h))
        return windowed ? MODE_NO_BACK_BUFFER : MODE_NO_FLIP_BUFFERS;
    if (!device.CreateDepthBuffer(*best_z))
        return MODE_NO_DEPTH_BUFFER;
    crvStencilBits = best_z->stencil_bits;
    if (!device.Open())
        return MODE_NO_DEVICE;
    crvD3DDevice = &device;
    crvWindowed = windowed;
    crvScrWidth = w;
    crvScrHeight = h;
    crSetViewport(-1, 0, 0, 0);
    crvBgErase = true;
    crvBgColor = 0xFF0000;
    criForgetStates();
    crvMatrixDirty = (1u << CRM_COUNT) - 1;
    criSetStateValue(RS_LIGHTING, 0);
    criSetStateValue(RS_COLORVERTEX, 0);
    return 0;
}

int crRelease() {
    locked = {};
    if (crvCurD3DDevice)
        crvCurD3DDevice->device->Close();
    crvD3DDevice = nullptr;
    ++crvDeviceChanges;
    criTransparentFacesFree();
    criFreeRootDevices();
    criSetTextureDevice(nullptr);
    criForgetFonts();
    return 0;
}

void crBgColor(uint32_t color) {
    crvBgColor = color;
    crvBgErase = color >> 24 == 0;
}

int crBeginFrame() {
    CountFrame();
    if (!crvD3DDevice)
        return FRAME_DISABLED;
    if (crvTryRestore) {
        if (!crvD3DDevice->RestoreSurfaces())
            return FRAME_DISABLED;
        criMarkVertexBuffersLost();
        ++crvDeviceChanges;
        crvRenderEnabled = true;
        crvTryRestore = false;
    } else if (!crvRenderEnabled) {
        return FRAME_DISABLED;
    }
    const uint32_t clear_flags =
        CLEAR_ZBUFFER | (crvStencilBits != 0 ? CLEAR_STENCIL : 0u) | (crvBgErase ? CLEAR_TARGET : 0u);
    if (!crvD3DDevice->Clear(clear_flags, crvBgColor, 1.0f, 0)) {
        crvRenderEnabled = false;
        return FRAME_NOT_CLEARED;
    }
    if (!crvD3DDevice->BeginScene()) {
        crvRenderEnabled = false;
        return FRAME_NO_SCENE;
    }
    criTransparentFacesReset();
    return 0;
}

void crEndFrame() {
    if (!crvRenderEnabled || !crvD3DDevice)
        return;
    if (crD3DTextureInfoEnable)
        WriteTextureInfo();
    criTransparentFacesDraw();
    const bool ended = crvD3DDevice->EndScene();
    crvStatVerts = crvStatFaces = 0;
    const bool shown = ShowBackBuffer();
    crvRenderEnabled = ended && shown;
}

void criUpdateWindow() {
    if (!ShowBackBuffer())
        crvRenderEnabled = false;
}

DeviceSurface* criGetFrontBuffer() { return crvD3DDevice ? crvD3DDevice->FrontBuffer() : nullptr; }

DeviceSurface* criGetBackBuffer() { return crvD3DDevice ? crvD3DDevice->BackBuffer() : nullptr; }

int crLockBuffer(BufferType) {
    if (locked.pixel_size != 0)
        return -1;
    DeviceSurface* const back = criGetBackBuffer();
    LockedBuffer buffer;
    buffer.pixels = back ? back->Lock(0, 0, buffer.pitch) : nullptr;
    if (!buffer.pixels)
        return -2;
    const PixelFormat& format = back->Format();
    buffer.pixel_size = format.bits / 8;
    buffer.width = back->Width();
    buffer.height = back->Height();
    for (int c = 0; c < 3; ++c) {
        buffer.mask[c] = format.mask[c];
        buffer.shift[c] = static_cast<int>(std::bit_width(format.mask[c])) - 8;
    }
    locked = buffer;
    return 0;
}

void crGetBuffer(uint32_t x, uint32_t y, uint32_t& r, uint32_t& g, uint32_t& b) {
    r = 255, g = 0, b = 0;
    if ((locked.pixel_size != 2 && locked.pixel_size != 4) || x >= locked.width || y >= locked.height)
        return;
    const uint8_t* at =
        locked.pixels + static_cast<size_t>(y) * locked.pitch + static_cast<size_t>(x) * locked.pixel_size;
    const uint32_t value = ReadPixel(at, locked.pixel_size);
    uint32_t* const channels[3] = {&r, &g, &b};
    for (int c = 0; c < 3; ++c) {
        const uint32_t bits = value & locked.mask[c];
        *channels[c] = locked.shift[c] >= 0 ? bits >> locked.shift[c] : bits << -locked.shift[c];
    }
}

int crUnlockBuffer() {
    if (locked.pixel_size == 0)
        return -1;
    locked = {};
    DeviceSurface* const back = criGetBackBuffer();
    return back && back->Unlock(0, 0) ? 0 : -2;
}
