#include <algorithm>
#include <array>
#include <bit>

#include "files/Picture.h"
#include "foundation/Strings.h"
#include "render/TexturePixels.h"

namespace {

using ChannelBits = std::array<int, 4>; // red, green, blue, alpha

bool HasFlagsOf(const PixelFormat& pf, uint32_t type) {
    switch (type) {
    case TEX_NORMAL:
        return pf.rgb && !pf.alpha;
    case TEX_ALPHA:
        return pf.alpha;
    case TEX_ALPHA_NORMAL:
        return pf.rgb && pf.alpha;
    case TEX_BUMP:
        return pf.bump_dudv && pf.bump_luminance;
    default:
        return pf.rgb;
    }
}

// The formats that end the search for a type at once.
bool IsExactFormat(const ChannelBits& bits, uint32_t type) {
    const auto rgb_is = [&](int r, int g, int b) { return bits[0] == r && bits[1] == g && bits[2] == b; };
    if (type == TEX_NORMAL)
        return rgb_is(8, 8, 8) || rgb_is(5, 6, 5);
    return type == TEX_ALPHA_NORMAL && ((rgb_is(8, 8, 8) && bits[3] == 8) || (rgb_is(4, 4, 4) && bits[3] == 4));
}

const CRTFormat* ChooseFormat(uint32_t type, uint32_t bpp) {
    const CRTFormat* best = nullptr;
    ChannelBits best_bits{};
    for (const CRTFormat& format : crvTFormats) {
        if (format.pixelsize > bpp / 8 || !HasFlagsOf(format.pf, type))
            continue;
        ChannelBits bits;
        for (size_t c = 0; c < bits.size(); ++c)
            bits[c] = std::popcount(format.pf.mask[c]);
        if (IsExactFormat(bits, type))
            return &format;
        const bool more_color = bits[0] > best_bits[0] || bits[1] > best_bits[1] || bits[2] > best_bits[2];
        const bool more_alpha = bits[3] > best_bits[3];
        if (type == TEX_ALPHA ? more_alpha : more_color || (more_alpha && type != TEX_NORMAL)) {
            best = &format;
            best_bits = bits;
        }
    }
    return best;
}

uint32_t ChooseSlot(uint32_t wanted) {
    if (wanted < CR_MAX_TEXTURES && !crvTTable[wanted])
        return wanted;
    const auto free_slot = std::find(std::begin(crvTTable), std::end(crvTTable), nullptr);
    return free_slot == std::end(crvTTable) ? CR_NO_TEXTURE : static_cast<uint32_t>(free_slot - std::begin(crvTTable));
}

// floor(log2) of the smaller side, at least 1 so that every surface has its level 0.
uint32_t MipCount(uint32_t width, uint32_t height) {
    const auto count = static_cast<uint32_t>(std::bit_width(std::min(width, height))) - 1;
    const auto limit = static_cast<uint32_t>(std::max(crvTForceMipmap, 0));
    return std::max(limit > 0 ? std::min(count, limit) : count, 1u);
}

uint32_t SurfaceBytes(const TextureDescription& d) {
    uint32_t bytes = 0;
    for (uint32_t level = 0; level < d.levels; ++level)
        bytes += d.format.bits / 8 * LevelSide(d.width, level) * LevelSide(d.height, level);
    return bytes * d.faces;
}

// A loaded picture as words 0xAARRGGBB.
struct ArgbPicture {
    uint32_t width = 0, height = 0, bpp = 0, dtype = 0;
    std::vector<uint32_t> argb;
};

bool LoadArgb(std::string_view path, ArgbPicture& picture) {
    TGAClass file;
    TGAInfoStruct info;
    if (file.LoadImage(path) != PICTURE_OK || file.GetImageInfo(info) != PICTURE_OK)
        return false;
    picture.width = info.width;
    picture.height = info.height;
    picture.bpp = info.pixel_size;
    const size_t count = static_cast<size_t>(info.width) * info.height;
    if (count == 0 || file.PixelData().size() < count * (picture.bpp / 8))
        return false;
    const uint8_t* p = file.Pixels();
    picture.argb.resize(count);
    switch (picture.bpp) {
    case 8:
        picture.dtype = TEX_ALPHA;
        for (uint32_t& word : picture.argb)
            word = static_cast<uint32_t>(*p++) << 24 | 0xFFFFFF;
        return true;
    case 24:
        picture.dtype = TEX_NORMAL;
        for (uint32_t& word : picture.argb)
            word = 0xFF000000 | ReadPixel(p, 3), p += 3;
        return true;
    case 32:
        picture.dtype = TEX_ALPHA_NORMAL;
        for (uint32_t& word : picture.argb)
            word = ReadPixel(p, 4), p += 4;
        return true;
    default:
        return false;
    }
}

// How often a side must be halved to come within the limit.
int32_t HalvingsNeeded(uint32_t side, uint32_t limit) {
    int32_t count = 0;
    for (; side > limit && side > 1; side /= 2)
        ++count;
    return count;
}

uint32_t FilledOrNone(uint32_t handle, const ArgbPicture& picture) {
    if (handle == CR_NO_TEXTURE || FillMipLevels(handle, picture.argb.data(), picture.width, picture.height) == 0)
        return handle;
    crTDestroy(handle);
    return CR_NO_TEXTURE;
}

// The file form without its bookkeeping.
uint32_t CreateFromFile(const std::string& full_name, uint32_t level, uint32_t index) {
    constexpr size_t SHORTEST_WITH_ENDING = 6;
    const bool cube_maps = criTextureDevice().SupportsCubeMaps();
    if (full_name.size() >= SHORTEST_WITH_ENDING) {
        const std::string_view ending = std::string_view(full_name).substr(full_name.size() - 4);
        if (EqualNoCase(ending, ".tga") || EqualNoCase(ending, ".dds"))
            return crTCreateTga(full_name, level, index);
        if (cube_maps && EqualNoCase(ending, ".env"))
            return crTCreateEnv(full_name, level, index);
    }
    uint32_t handle = cube_maps ? crTCreateEnv(full_name + ".env", level, index) : CR_NO_TEXTURE;
    if (handle == CR_NO_TEXTURE)
        handle = crTCreateTga(full_name + ".tga", level, index);
    if (handle == CR_NO_TEXTURE)
        handle = crTCreateTga(full_name + ".dds", level, index);
    return handle;
}

} // namespace

uint32_t crTCreate(std::string_view path, std::string_view name, uint32_t level, uint32_t index) {
    std::string full_name(path);
    if (!name.empty()) {
        if (!full_name.empty() && !full_name.ends_with('\\'))
            full_name += '\\';
        full_name += name;
    }
    const uint32_t handle = CreateFromFile(full_name, level, index);
    if (handle == CR_NO_TEXTURE)
        return CR_NO_TEXTURE;
    CRTexture& texture = *crvTTable[handle];
    texture.path = path;
    texture.name = name;
    texture.from_file = true;
    if (crvTForcePreload)
        criTextureDevice().PreloadTexture(*texture.surface);
    if (crvTForceAvgColorUpdate)
        texture.avg_color = ComputeAverageColor(texture);
    return handle;
}

uint32_t crTCreate(uint32_t w, uint32_t h, uint32_t bpp, uint32_t level, uint32_t dtype, uint32_t tmu, bool dynamic,
                   uint32_t findex) {
    if (crvTFormats.empty())
        criTInit();
    const bool cube = (dtype & CRT_CUBE_MAP) != 0;
    const uint32_t slot = ChooseSlot(findex);
    if (crvTForceBpp >= 0)
        bpp = static_cast<uint32_t>(crvTForceBpp);
    const uint32_t type = crvTForceType >= 0 ? static_cast<uint32_t>(crvTForceType) : dtype & 255;

    TextureDescription d;
    d.width = w;
    d.height = cube ? h / 6 : h;
    if (slot == CR_NO_TEXTURE || type > TEX_TARGET || d.width == 0 || d.height == 0)
        return CR_NO_TEXTURE;
    const CRTFormat* format = ChooseFormat(type, bpp);
    if (!format)
        return CR_NO_TEXTURE;
    d.render_target = type == TEX_TARGET && !cube;
    d.levels = d.render_target ? 1 : MipCount(d.width, d.height);
    d.faces = cube ? 6 : 1;
    d.format = format->pf;
    d.stage = tmu;
    d.dynamic = dynamic;

    auto texture = std::make_unique<CRTexture>();
    texture->surface = criTextureDevice().CreateTexture(d);
    if (!texture->surface)
        return CR_NO_TEXTURE;
    texture->actformat = format;
    texture->width = d.width;
    texture->height = d.height;
    texture->type = type | (dtype & CRT_CUBE_MAP);
    texture->level = level;
    texture->tmu = tmu;
    texture->size = SurfaceBytes(d);
    crvTTable[slot] = std::move(texture);
    return slot;
}

uint32_t crTCreateTga(std::string_view path, uint32_t level, uint32_t index) {
    ArgbPicture picture;
    if (!LoadArgb(path, picture))
        return CR_NO_TEXTURE;
    const int32_t earlier = crvTForceScaleDown;
    const uint32_t limit = criTextureDevice().MaxTextureSize();
    const int32_t needed = std::max(HalvingsNeeded(picture.width, limit), HalvingsNeeded(picture.height, limit));
    if (needed > 0)
        crvTForceScaleDown = std::max(earlier, needed);

    constexpr int32_t MOST_HALVINGS = 31;
    const int32_t halvings = std::clamp(crvTForceScaleDown, 0, MOST_HALVINGS);
    const uint32_t handle = crTCreate(picture.width >> halvings, picture.height >> halvings, picture.bpp, level,
                                      picture.dtype, 0, false, index);
    const uint32_t filled = FilledOrNone(handle, picture);
    crvTForceScaleDown = earlier;
    return filled;
}

uint32_t crTCreateEnv(std::string_view path, uint32_t level, uint32_t index) {
    ArgbPicture picture;
    if (!LoadArgb(path, picture) || picture.height != picture.width * 6)
        return CR_NO_TEXTURE;
    return FilledOrNone(
        crTCreate(picture.width, picture.height, picture.bpp, level, picture.dtype | CRT_CUBE_MAP, 0, false, index),
        picture);
}
