#include "render/SoftDevice.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "render/SoftGroup.h"
#include "render/TexturePixels.h"

SoftSurface::SoftSurface(const TextureDescription& d)
    : width(d.width), height(d.height), levels(d.levels), faces(d.faces), pixel_size(d.format.bits / 8),
      format(d.format) {
    size_t total = 0;
    for (uint32_t face = 0; face < faces; ++face)
        for (uint32_t level = 0; level < levels; ++level) {
            offsets.push_back(total);
            total += static_cast<size_t>(Pitch(level)) * LevelSide(height, level);
        }
    pixels.resize(total);
    for (int c = 0; c < 4; ++c) {
        shift[c] = format.mask[c] == 0 ? 0 : std::countr_zero(format.mask[c]);
        largest[c] = format.mask[c] >> shift[c];
    }
    whole_bytes = format.bits == 32 && format.mask[0] == 0xFF0000 && format.mask[1] == 0xFF00 &&
                  format.mask[2] == 0xFF && (format.mask[3] == 0 || format.mask[3] == 0xFF000000);
}

uint8_t* SoftSurface::Lock(uint32_t level, uint32_t face, uint32_t& pitch) {
    if (level >= levels || face >= faces)
        return nullptr;
    pitch = Pitch(level);
    return pixels.data() + offsets[face * levels + level];
}

void SoftSurface::Widen(const uint8_t* pixel, int (&rgba)[4]) const {
    const uint32_t word = ReadPixel(pixel, pixel_size);
    for (int c = 0; c < 4; ++c) {
        const uint32_t value = (word & format.mask[c]) >> shift[c];
        const bool whole = largest[c] == 255;
        rgba[c] = largest[c] == 0 ? 255 : static_cast<int>(whole ? value : (value * 255 + largest[c] / 2) / largest[c]);
    }
}

SoftDevice::SoftDevice() : scratch(std::make_unique<SoftScratch>()), group(std::make_unique<SoftGroup>()) {}

SoftDevice::~SoftDevice() = default;

SoftState::SoftState() {
    states[RS_ZENABLE] = 1;
    states[RS_ZWRITEENABLE] = 1;
    states[RS_ZFUNC] = CMP_LESSEQUAL;
    states[RS_SHADEMODE] = SHADE_GOURAUD;
    states[RS_CULLMODE] = CULL_CCW;
    states[RS_SRCBLEND] = BM_ONE;
    states[RS_DESTBLEND] = BM_ZERO;
    states[RS_ALPHAFUNC] = CMP_ALWAYS;
    states[RS_TEXTUREFACTOR] = 0xFFFFFFFF;
    states[RS_LIGHTING] = 1;
    states[RS_COLORVERTEX] = 1;
    for (uint32_t stage = 0; stage < TEXTURE_STAGES; ++stage) {
        uint32_t* const values = stages[stage];
        values[TSS_COLOROP] = stage == 0 ? OP_MODULATE : OP_DISABLE;
        values[TSS_ALPHAOP] = stage == 0 ? OP_SELECTARG1 : OP_DISABLE;
        values[TSS_COLORARG1] = values[TSS_ALPHAARG1] = ARG_TEXTURE;
        values[TSS_COLORARG2] = values[TSS_ALPHAARG2] = ARG_CURRENT;
        values[TSS_TEXCOORDINDEX] = stage;
        values[TSS_ADDRESSU] = values[TSS_ADDRESSV] = TA_WRAP;
        values[TSS_MAGFILTER] = values[TSS_MINFILTER] = TF_POINT;
        values[TSS_MIPFILTER] = MF_NONE;
    }
    std::fill(std::begin(transforms), std::end(transforms), crIdentity());
}

bool SoftState::IsSame(const SoftState& other) const {
    const auto same_plane = [](const PLANE& a, const PLANE& b) { return a.normal == b.normal && a.D == b.D; };
    const PixelRectangle &a = viewport, &b = other.viewport;
    return std::equal(std::begin(textures), std::end(textures), other.textures) &&
           std::memcmp(states, other.states, sizeof(states)) == 0 &&
           std::memcmp(stages, other.stages, sizeof(stages)) == 0 &&
           std::equal(std::begin(transforms), std::end(transforms), other.transforms) &&
           std::equal(std::begin(planes), std::end(planes), other.planes, same_plane) && a.x == b.x && a.y == b.y &&
           a.w == b.w && a.h == b.h;
}

std::vector<VideoMode> SoftDevice::VideoModes() const {
    return {{640, 480, 32, 60}, {800, 600, 32, 60}, {1024, 768, 32, 60}, {1280, 1024, 32, 60}, {1920, 1080, 32, 60}};
}

std::vector<DepthFormat> SoftDevice::DepthFormats() const { return {{16, 0}, {24, 0}}; }

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

bool SoftDevice::SetVideoMode(const VideoMode& mode) {
    for (const VideoMode& known : VideoModes())
        if (known.w == mode.w && known.h == mode.h && known.bpp == mode.bpp)
            return true;
    return false;
}

bool SoftDevice::CreateBackBuffer(uint32_t w, uint32_t h) {
    Close();
    if (w == 0 || h == 0 || w > LONGEST_SCREEN_SIDE || h > LONGEST_SCREEN_SIDE)
        return false;
    TextureDescription description;
    description.width = w;
    description.height = h;
    description.format = SCREEN_FORMAT;
    back = std::make_unique<SoftSurface>(description);
    front = std::make_unique<SoftSurface>(description);
    return true;
}

bool SoftDevice::CreateDepthBuffer(const DepthFormat& format) {
    if (!back || format.stencil_bits != 0)
        return false;
    depth_buffer.assign(static_cast<size_t>(back->Width()) * back->Height(), 1.0f);
    coarse_depth.Resize(static_cast<int>(back->Width()), static_cast<int>(back->Height()));
    return true;
}

bool SoftDevice::Open() {
    opened = back && !depth_buffer.empty();
    state = SoftState();
    if (opened)
        state.viewport = {0, 0, back->Width(), back->Height()};
    return opened;
}

void SoftDevice::Close() {
    grouping = false;
    *group = SoftGroup();
    opened = in_scene = false;
    back.reset();
    front.reset();
    depth_buffer = {};
}

SoftTarget SoftDevice::Target(const PixelRectangle& part) {
    const uint64_t width = back->Width(), height = back->Height();
    const auto inside = [](uint64_t value, uint64_t limit) { return static_cast<int>(std::min(value, limit)); };
    SoftTarget target;
    target.width = static_cast<int>(width);
    target.height = static_cast<int>(height);
    target.left = inside(part.x, width);
    target.top = inside(part.y, height);
    target.right = inside(uint64_t{part.x} + part.w, width);
    target.bottom = inside(uint64_t{part.y} + part.h, height);
    uint32_t pitch;
    target.pixels = reinterpret_cast<uint32_t*>(back->Lock(0, 0, pitch));
    target.depth = depth_buffer.data();
    target.coarse = &coarse_depth;
    return target;
}

bool SoftDevice::Clear(uint32_t clear_flags, uint32_t color, float depth, uint32_t) {
    if (!opened || (clear_flags & CLEAR_STENCIL) != 0)
        return false;
    DrawGroup();
    const SoftTarget target = Target(state.viewport);
    if ((clear_flags & CLEAR_ZBUFFER) != 0)
        coarse_depth.Forget();
    for (int y = target.top; y < target.bottom; ++y) {
        const size_t first = target.At(target.left, y), end = target.At(target.right, y);
        if ((clear_flags & CLEAR_TARGET) != 0)
            std::fill(target.pixels + first, target.pixels + end, color & 0xFFFFFF);
        if ((clear_flags & CLEAR_ZBUFFER) != 0)
            std::fill(target.depth + first, target.depth + end, depth);
    }
    return true;
}

bool SoftDevice::BeginScene() {
    if (!opened || in_scene)
        return false;
    in_scene = true;
    return true;
}

bool SoftDevice::EndScene() {
    const bool ended = in_scene;
    in_scene = grouping = false;
    if (opened)
        DrawGroup();
    return ended;
}

bool SoftDevice::Present(const PixelRectangle& part) {
    if (!opened || in_scene)
        return false;
    const SoftTarget source = Target(part);
    uint32_t pitch;
    auto* const shown = reinterpret_cast<uint32_t*>(front->Lock(0, 0, pitch));
    for (int y = source.top; y < source.bottom; ++y)
        std::copy(source.pixels + source.At(source.left, y), source.pixels + source.At(source.right, y),
                  shown + source.At(source.left, y));
    return true;
}

bool SoftDevice::SetRenderState(uint32_t index, uint32_t value) {
    if (index >= RENDER_STATES)
        return false;
    state.states[index] = value;
    return true;
}

bool SoftDevice::SetTextureStageState(uint32_t stage, uint32_t type, uint32_t value) {
    if (stage >= TEXTURE_STAGES || type >= STAGE_STATES)
        return false;
    state.stages[stage][type] = value;
    return true;
}

bool SoftDevice::SetTexture(uint32_t stage, DeviceSurface* texture) {
    if (stage >= TEXTURE_STAGES)
        return false;
    state.textures[stage] = dynamic_cast<SoftSurface*>(texture); // of another device: none
    return !texture || state.textures[stage];
}

void SoftDevice::SetTransform(TrType type, const D3DMATRIX& m) {
    if (type < CRM_COUNT)
        state.transforms[type] = m;
}

bool SoftDevice::SetClipPlane(uint32_t index, const PLANE& plane) {
    if (index >= CLIP_PLANES)
        return false;
    state.planes[index] = plane;
    return true;
}

// Within a group what is not a mesh becomes one of its own. False when it is to be drawn at once.
bool SoftDevice::KeepBack(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count,
                          const uint16_t* indices, uint32_t n) {
    if (group->IsEmpty() || prim < PT_LINE_LIST || prim > PT_TRI_FAN || (fvf & (VT_XYZ | VT_XYZRHW)) == 0 || !vertices)
        return false;
    MeshData data;
    data.prim = prim <= PT_LINE_STRIP ? PT_LINE_LIST : PT_TRI_LIST;
    data.fvf = fvf;
    data.vertices.assign(vertices, vertices + size_t{vertex_count} * MakeFvfLayout(fvf).size);
    const auto add = [&](std::initializer_list<uint32_t> places) {
        for (const uint32_t place : places)
            data.indices.push_back(indices ? indices[place] : place);
    };
    if (prim == PT_LINE_LIST || prim == PT_TRI_LIST)
        for (uint32_t i = 0; i < n; ++i)
            add({i});
    else if (prim == PT_LINE_STRIP)
        for (uint32_t i = 0; i + 1 < n; ++i)
            add({i, i + 1});
    else if (prim == PT_TRI_STRIP)
        for (uint32_t i = 0; i + 2 < n; ++i)
            add({i, i + 1 + i % 2, i + 2 - i % 2}); // every second one turns the other way
    else
        for (uint32_t i = 1; i + 1 < n; ++i)
            add({0, i, i + 1});
    if (vertex_count > 0)
        group->AddOwn(state, Target(state.viewport), std::move(data));
    return true;
}

bool SoftDevice::Draw(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count,
                      const uint16_t* indices, uint32_t index_count) {
    if (!opened || !in_scene)
        return false;
    if (KeepBack(prim, fvf, vertices, vertex_count, indices, index_count))
        return true;
    DrawGroup();
    SoftRaster raster(state, Target(state.viewport));
    raster.Start();
    SoftVertices drawing(state, raster.CoordinateSets(), raster, *scratch);
    return drawing.Read(fvf, vertices, vertex_count) && drawing.Draw(prim, indices, index_count);
}

bool SoftDevice::DrawPrimitive(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count) {
    return Draw(prim, fvf, vertices, vertex_count, nullptr, vertex_count);
}

bool SoftDevice::DrawIndexedPrimitive(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count,
                                      const uint16_t* indices, uint32_t index_count) {
    return indices && Draw(prim, fvf, vertices, vertex_count, indices, index_count);
}

std::unique_ptr<DeviceMesh> SoftDevice::CreateMesh(MeshData data) {
    if (data.vertices.empty() || data.indices.empty())
        return nullptr;
    return std::make_unique<SoftMesh>(std::move(data));
}

bool SoftDevice::DrawMesh(DeviceMesh& mesh, std::span<const MeshPart> parts) {
    const auto* const ours = dynamic_cast<const SoftMesh*>(&mesh);
    if (!opened || !in_scene || !ours)
        return false;
    group->Add(state, Target(state.viewport), *ours, parts);
    if (!grouping)
        DrawGroup();
    return true;
}

void SoftDevice::DrawGroup() {
    if (!group->IsEmpty())
        group->Draw();
}

void SoftDevice::EndGroup() {
    grouping = false;
    if (opened)
        DrawGroup();
}

std::unique_ptr<DeviceSurface> SoftDevice::CreateTexture(const TextureDescription& d) {
    const uint32_t limit = MaxTextureSize();
    if (d.width == 0 || d.height == 0 || d.width > limit || d.height > limit || d.levels == 0 || d.faces == 0)
        return nullptr;
    return std::make_unique<SoftSurface>(d);
}
