#include "render/Textures.h"

#include <bit>

#include "foundation/Strings.h"
#include "render/SoftDevice.h"
#include "render/StateCache.h"

std::unique_ptr<CRTexture> crvTTable[CR_MAX_TEXTURES];
std::vector<CRTFormat> crvTFormats;
int32_t crvTForceMipmap = -1, crvTForceType = -1, crvTForceBpp = -1, crvTForceScaleDown = -1;
bool crvTForcePreload = false, crvTForceAvgColorUpdate = false;
std::string crvTDefaultPath[4];

namespace {

Device* texture_device = nullptr;

// No stage may keep a surface that is gone.
void Release(std::unique_ptr<CRTexture>& slot) {
    if (slot)
        criForgetTexture(slot->surface.get());
    slot.reset();
}

} // namespace

Device& criTextureDevice() {
    static SoftDevice own_device;
    return texture_device ? *texture_device : own_device;
}

void criSetTextureDevice(Device* device) {
    criTDestroy();
    texture_device = device;
    criForgetStates();
    criTInit();
}

void criTInit() {
    criTDestroy();
    for (const PixelFormat& pf : criTextureDevice().TextureFormats()) {
        CRTFormat format;
        format.pixelsize = pf.bits / 8;
        format.pf = pf;
        for (int c = 0; c < 4; ++c)
            format.shift[c] = pf.mask[c] == 0 ? 0 : static_cast<int32_t>(std::bit_width(pf.mask[c])) - 8;
        crvTFormats.push_back(format);
    }
}

void criTDestroy() {
    for (auto& slot : crvTTable)
        Release(slot);
    crvTFormats.clear();
}

const CRTexture* crTRecord(uint32_t handle) { return handle < CR_MAX_TEXTURES ? crvTTable[handle].get() : nullptr; }

uint32_t crTExist(std::string_view path, std::string_view name) {
    for (uint32_t i = 0; i < CR_MAX_TEXTURES; ++i)
        if (crvTTable[i] && crvTTable[i]->from_file && EqualNoCase(crvTTable[i]->name, name) &&
            EqualNoCase(crvTTable[i]->path, path))
            return i;
    return CR_NO_TEXTURE;
}

uint32_t crTGet(std::string_view path, std::string_view name, uint32_t level) {
    const uint32_t found = crTExist(path, name);
    return found != CR_NO_TEXTURE ? found : crTCreate(path, name, level);
}

uint32_t crTLoad(uint32_t handle, std::string_view path, std::string_view name) {
    const CRTexture* texture = crTRecord(handle);
    if (!texture)
        return CR_NO_TEXTURE;
    const uint32_t level = texture->level;
    crTDestroy(handle);
    return crTCreate(path, name, level, handle);
}

int crTDestroy(uint32_t handle) {
    if (!crTRecord(handle))
        return -1;
    Release(crvTTable[handle]);
    return 0;
}

int crTDestroyAll(uint32_t mask) {
    int count = 0;
    for (auto& slot : crvTTable)
        if (slot && (slot->level & mask) != 0) {
            Release(slot);
            ++count;
        }
    return count;
}

void crTSetAdditionalPath(std::string_view path, int i) {
    constexpr size_t LONGEST_PATH = 255;
    if (i >= 0 && i < static_cast<int>(std::size(crvTDefaultPath)))
        crvTDefaultPath[i] = CutText(path, LONGEST_PATH);
}
