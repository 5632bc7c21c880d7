#include "render/SoftDevice.h"

namespace {

class SoftSurface : public DeviceSurface {
public:
    explicit SoftSurface(const TextureDescription& d)
        : width(d.width), height(d.height), levels(d.levels), faces(d.faces), pixel_size(d.format.bits / 8) {
        size_t total = 0;
        for (uint32_t face = 0; face < faces; ++face)
            for (uint32_t level = 0; level < levels; ++level) {
                offsets.push_back(total);
                total += static_cast<size_t>(Pitch(level)) * LevelSide(height, level);
            }
        pixels.resize(total);
    }

    uint32_t Width() const override { return width; }
    uint32_t Height() const override { return height; }
    uint32_t Levels() const override { return levels; }
    uint32_t Faces() const override { return faces; }
    uint8_t* Lock(uint32_t level, uint32_t face, uint32_t& pitch) override {
        if (level >= levels || face >= faces)
            return nullptr;
        pitch = Pitch(level);
        return pixels.data() + offsets[face * levels + level];
    }
    bool Unlock(uint32_t level, uint32_t face) override { return level < levels && face < faces; }

private:
    uint32_t Pitch(uint32_t level) const { return LevelSide(width, level) * pixel_size; }

    uint32_t width, height, levels, faces, pixel_size;
    std::vector<size_t> offsets; // of each level of each face
    std::vector<uint8_t> pixels;
};

} // namespace

const std::vector<PixelFormat>& SoftDevice::TextureFormats() const {
    static const std::vector<PixelFormat> formats = {
        {.rgb = true, .bits = 32, .mask = {0xFF0000, 0xFF00, 0xFF, 0}},
        {.rgb = true, .bits = 24, .mask = {0xFF0000, 0xFF00, 0xFF, 0}},
        {.rgb = true, .bits = 16, .mask = {0xF800, 0x7E0, 0x1F, 0}},
        {.rgb = true, .alpha = true, .bits = 32, .mask = {0xFF0000, 0xFF00, 0xFF, 0xFF000000}},
        {.rgb = true, .alpha = true, .bits = 16, .mask = {0xF00, 0xF0, 0xF, 0xF000}},
        {.alpha = true, .bits = 8, .mask = {0, 0, 0, 0xFF}},
        {.bump_dudv = true, .bump_luminance = true, .bits = 16, .mask = {0x1F, 0x3E0, 0xFC00, 0}},
    };
    return formats;
}

std::unique_ptr<DeviceSurface> SoftDevice::CreateTexture(const TextureDescription& d) {
    const uint32_t limit = MaxTextureSize();
    if (d.width == 0 || d.height == 0 || d.width > limit || d.height > limit || d.levels == 0 || d.faces == 0)
        return nullptr;
    return std::make_unique<SoftSurface>(d);
}
