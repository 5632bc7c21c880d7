#include "render/TexturePixels.h"

#include <algorithm>

namespace {

constexpr int ARGB_SHIFT[4] = {16, 8, 0, 24}; // of red, green, blue, alpha

uint32_t Shifted(uint32_t value, int left) { return left >= 0 ? value << left : value >> -left; }

uint32_t MeanOfFour(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
    uint32_t mean = 0;
    for (const int shift : ARGB_SHIFT) {
        const uint32_t sum = (a >> shift & 255) + (b >> shift & 255) + (c >> shift & 255) + (d >> shift & 255);
        mean |= sum / 4 << shift;
    }
    return mean;
}

bool HasAlpha(const CRTexture& texture) {
    const uint32_t type = texture.type & 255;
    return type == TEX_ALPHA || type == TEX_ALPHA_NORMAL;
}

// The next level of one face from the level above it, in the surface's own format.
int ReduceSurfaceLevel(CRTexture& texture, uint32_t level, uint32_t face) {
    uint32_t source_pitch = 0, pitch = 0;
    const uint8_t* source = texture.surface->Lock(level, face, source_pitch);
    if (!source)
        return -2;
    uint8_t* target = texture.surface->Lock(level + 1, face, pitch);
    if (!target) {
        texture.surface->Unlock(level, face);
        return -3;
    }
    const CRTFormat& format = *texture.actformat;
    const uint32_t last_x = LevelSide(texture.width, level) - 1, last_y = LevelSide(texture.height, level) - 1;
    const uint32_t width = LevelSide(texture.width, level + 1), height = LevelSide(texture.height, level + 1);
    const auto read = [&](uint32_t x, uint32_t y) {
        const size_t at = static_cast<size_t>(std::min(y, last_y)) * source_pitch +
                          static_cast<size_t>(std::min(x, last_x)) * format.pixelsize;
        return ArgbFromPixel(format, ReadPixel(source + at, format.pixelsize));
    };
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const uint32_t mean = MeanOfFour(read(2 * x, 2 * y), read(2 * x + 1, 2 * y), read(2 * x, 2 * y + 1),
                                             read(2 * x + 1, 2 * y + 1));
            WritePixel(target + static_cast<size_t>(y) * pitch + static_cast<size_t>(x) * format.pixelsize,
                       format.pixelsize, PixelFromArgb(format, mean));
        }
    const bool source_unlocked = texture.surface->Unlock(level, face);
    const bool target_unlocked = texture.surface->Unlock(level + 1, face);
    return !source_unlocked ? -5 : !target_unlocked ? -6 : 0;
}

} // namespace

uint32_t ReadPixel(const uint8_t* at, uint32_t pixelsize) {
    uint32_t pixel = 0;
    for (uint32_t i = 0; i < pixelsize; ++i)
        pixel |= static_cast<uint32_t>(at[i]) << 8 * i;
    return pixel;
}

void WritePixel(uint8_t* at, uint32_t pixelsize, uint32_t pixel) {
    for (uint32_t i = 0; i < pixelsize; ++i)
        at[i] = static_cast<uint8_t>(pixel >> 8 * i);
}

uint32_t PixelFromArgb(const CRTFormat& format, uint32_t argb) {
    uint32_t pixel = 0;
    for (int c = 0; c < 4; ++c)
        pixel |= Shifted(argb, format.shift[c] - ARGB_SHIFT[c]) & format.pf.mask[c];
    return pixel;
}

uint32_t ArgbFromPixel(const CRTFormat& format, uint32_t pixel) {
    uint32_t argb = 0;
    for (int c = 0; c < 4; ++c)
        argb |= (Shifted(pixel & format.pf.mask[c], -format.shift[c]) & 255) << ARGB_SHIFT[c];
    return argb;
}

std::vector<uint32_t> ReduceArgb(const uint32_t* argb, uint32_t& width, uint32_t& height) {
    const uint32_t old_width = width, right = width > 1 ? 1 : 0;
    const size_t below = height > 1 ? old_width : 0;
    width = std::max(width / 2, 1u);
    height = std::max(height / 2, 1u);
    std::vector<uint32_t> reduced(static_cast<size_t>(width) * height);
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const uint32_t* p = argb + static_cast<size_t>(y) * 2 * old_width + static_cast<size_t>(x) * 2;
            reduced[static_cast<size_t>(y) * width + x] = MeanOfFour(p[0], p[right], p[below], p[below + right]);
        }
    return reduced;
}

int FillMipLevels(uint32_t handle, const uint32_t* argb, uint32_t width, uint32_t height) {
    const CRTexture* texture = crTRecord(handle);
    if (!texture)
        return -1;
    std::vector<uint32_t> work;
    const auto reduce = [&] {
        work = ReduceArgb(argb, width, height);
        argb = work.data();
    };
    const uint32_t faces = texture->surface->Faces();
    if (faces == 1)
        for (int32_t i = 0; i < crvTForceScaleDown; ++i)
            reduce();
    for (uint32_t level = 0; level < texture->surface->Levels(); ++level) {
        if (level > 0)
            reduce();
        const size_t face_pixels = static_cast<size_t>(width) * height / faces;
        for (uint32_t face = 0; face < faces; ++face) {
            const int result =
                crTFillTexture(handle, argb + face * face_pixels, level, faces > 1 ? CRT_FACE | face : 0);
            if (result != 0)
                return result;
        }
    }
    return 0;
}

uint32_t ComputeAverageColor(const CRTexture& texture) {
    uint32_t pitch = 0;
    const uint8_t* pixels = texture.surface->Lock(0, 0, pitch);
    if (!pixels)
        return 0xFFFFFFFF;
    uint64_t sums[4] = {};
    for (uint32_t y = 0; y < texture.height; ++y)
        for (uint32_t x = 0; x < texture.width; ++x) {
            const uint32_t pixelsize = texture.actformat->pixelsize;
            const uint8_t* at = pixels + static_cast<size_t>(y) * pitch + static_cast<size_t>(x) * pixelsize;
            const uint32_t argb = ArgbFromPixel(*texture.actformat, ReadPixel(at, pixelsize));
            for (int c = 0; c < 4; ++c)
                sums[c] += argb >> ARGB_SHIFT[c] & 255;
        }
    texture.surface->Unlock(0, 0);
    const uint64_t count = static_cast<uint64_t>(texture.width) * texture.height;
    uint32_t average = 0;
    for (int c = 0; c < 4; ++c)
        average |= static_cast<uint32_t>(sums[c] / count) << ARGB_SHIFT[c];
    return HasAlpha(texture) ? average : average | 0xFF000000;
}

int crTFillTexture(uint32_t handle, const uint32_t* argb, uint32_t level, uint32_t flags) {
    const CRTexture* texture = crTRecord(handle);
    if (!texture)
        return -1;
    const uint32_t face = (flags & CRT_FACE) != 0 ? flags & ~CRT_FACE : 0;
    if (face >= texture->surface->Faces())
        return -21;
    if (level >= texture->surface->Levels())
        return -2;
    uint32_t pitch = 0;
    uint8_t* pixels = texture->surface->Lock(level, face, pitch);
    if (!pixels)
        return -3;
    const CRTFormat& format = *texture->actformat;
    const uint32_t width = LevelSide(texture->width, level), height = LevelSide(texture->height, level);
    for (uint32_t y = 0; y < height; ++y) {
        uint8_t* at = pixels + static_cast<size_t>(y) * pitch;
        for (uint32_t x = 0; x < width; ++x, at += format.pixelsize)
            WritePixel(at, format.pixelsize, PixelFromArgb(format, *argb++));
    }
    texture->surface->Unlock(level, face);
    return 0;
}

int crTComputeMipLevels(uint32_t handle, const uint32_t* argb) {
    if (handle >= CR_MAX_TEXTURES || !crvTTable[handle])
        return -1;
    CRTexture& texture = *crvTTable[handle];
    if (argb) {
        const bool cube = texture.surface->Faces() > 1;
        const int32_t halvings = cube || crvTForceScaleDown < 0 ? 0 : crvTForceScaleDown;
        return FillMipLevels(handle, argb, texture.width << halvings,
                             texture.height * texture.surface->Faces() << halvings);
    }
    for (uint32_t face = 0; face < texture.surface->Faces(); ++face)
        for (uint32_t level = 0; level + 1 < texture.surface->Levels(); ++level)
            if (const int result = ReduceSurfaceLevel(texture, level, face); result != 0)
                return result;
    return 0;
}

bool crTReadPixels(uint32_t handle, std::vector<uint32_t>& argb, uint32_t& width, uint32_t& height) {
    const CRTexture* texture = crTRecord(handle);
    if (!texture)
        return false;
    uint32_t pitch = 0;
    const uint8_t* pixels = texture->surface->Lock(0, 0, pitch);
    if (!pixels)
        return false;
    const CRTFormat& format = *texture->actformat;
    width = texture->width;
    height = texture->height;
    argb.resize(static_cast<size_t>(width) * height);
    const uint32_t opaque = format.pf.mask[3] == 0 ? 0xFF000000 : 0;
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const uint8_t* at = pixels + static_cast<size_t>(y) * pitch + static_cast<size_t>(x) * format.pixelsize;
            argb[static_cast<size_t>(y) * width + x] = ArgbFromPixel(format, ReadPixel(at, format.pixelsize)) | opaque;
        }
    texture->surface->Unlock(0, 0);
    return true;
}
