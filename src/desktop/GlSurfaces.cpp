#include "desktop/GlSurfaces.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr uint32_t RGB_MASK = 0xFFFFFF;
constexpr GLenum WORDS = GL_UNSIGNED_INT_8_8_8_8_REV; // 0xAARRGGBB with GL_BGRA

uint32_t Right(const PixelRectangle& r) { return r.x + r.w; }
uint32_t Bottom(const PixelRectangle& r) { return r.y + r.h; }

bool Contains(const PixelRectangle& outer, const PixelRectangle& inner) {
    return inner.x >= outer.x && inner.y >= outer.y && Right(inner) <= Right(outer) && Bottom(inner) <= Bottom(outer);
}

PixelRectangle Overlap(const PixelRectangle& a, const PixelRectangle& b) {
    const uint32_t x = std::max(a.x, b.x), y = std::max(a.y, b.y);
    const uint32_t right = std::min(Right(a), Right(b)), bottom = std::min(Bottom(a), Bottom(b));
    return x < right && y < bottom ? PixelRectangle{x, y, right - x, bottom - y} : PixelRectangle{};
}

void PlainUnpacking(GlFunctions& gl) {
    gl.glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    for (const GLenum parameter : {GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS})
        gl.glPixelStorei(parameter, 0);
}

} // namespace

GlTexture::GlTexture(const std::shared_ptr<GlPipeline>& owner, const TextureDescription& d)
    : pipeline(owner), memory(d),
      drawn_levels(std::min(d.levels, static_cast<uint32_t>(std::bit_width(std::max(d.width, d.height))))),
      changed_levels((uint32_t{1} << drawn_levels) - 1) {}

GlTexture::~GlTexture() {
    if (const auto owner = pipeline.lock())
        owner->ForgetTexture(name);
}

bool GlTexture::Unlock(uint32_t level, uint32_t face) {
    if (face == 0 && level < drawn_levels)
        changed_levels |= uint32_t{1} << level;
    return memory.Unlock(level, face);
}

void GlTexture::Create(GlFunctions& gl) {
    gl.glGenTextures(1, &name);
    const auto owner = pipeline.lock();
    owner->BindForFilling(name);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, static_cast<GLint>(drawn_levels) - 1);
    if (memory.Format().mask[3] == 0)
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_A, GL_ONE);
    for (uint32_t level = 0; level < drawn_levels; ++level)
        gl.glTexImage2D(GL_TEXTURE_2D, static_cast<GLint>(level), GL_RGBA8,
                        static_cast<GLsizei>(LevelSide(Width(), level)),
                        static_cast<GLsizei>(LevelSide(Height(), level)), 0, GL_BGRA, WORDS, nullptr);
}

void GlTexture::FillLevel(GlFunctions& gl, uint32_t level) {
    const uint32_t w = LevelSide(Width(), level), h = LevelSide(Height(), level);
    uint32_t pitch;
    const uint8_t* const rows = memory.Lock(level, 0, pitch);
    const uint32_t pixel_size = Format().bits / 8;
    std::vector<uint32_t> words;
    const void* pixels = rows;
    if (!memory.IsWholeBytes()) {
        words.resize(static_cast<size_t>(w) * h);
        for (uint32_t y = 0; y < h; ++y)
            for (uint32_t x = 0; x < w; ++x) {
                int rgba[4];
                memory.Widen(rows + static_cast<size_t>(y) * pitch + static_cast<size_t>(x) * pixel_size, rgba);
                words[static_cast<size_t>(y) * w + x] = static_cast<uint32_t>(rgba[3]) << 24 |
                                                        static_cast<uint32_t>(rgba[0] << 16 | rgba[1] << 8 | rgba[2]);
            }
        pixels = words.data();
    }
    gl.glTexSubImage2D(GL_TEXTURE_2D, static_cast<GLint>(level), 0, 0, static_cast<GLsizei>(w), static_cast<GLsizei>(h),
                       GL_BGRA, WORDS, pixels);
}

GLuint GlTexture::Upload() {
    const auto owner = pipeline.lock();
    if (!owner || !owner->EnsureCurrent())
        return 0;
    const uint32_t changed = changed_levels.exchange(0);
    if (changed == 0)
        return name;
    GlFunctions& gl = owner->gl;
    PlainUnpacking(gl);
    if (name == 0)
        Create(gl);
    owner->BindForFilling(name);
    for (uint32_t level = 0; level < drawn_levels; ++level)
        if ((changed >> level & 1) != 0)
            FillLevel(gl, level);
    owner->BindForFilling(0);
    return name;
}

GlScreen::GlScreen(GlPipeline& owner, uint32_t w, uint32_t h) : pipeline(owner), width(w), height(h) {
    GlFunctions& gl = pipeline.gl;
    gl.glGenTextures(1, &texture);
    pipeline.BindForFilling(texture);
    // Without alpha, which counts as whole in blending.
    gl.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB8, static_cast<GLsizei>(w), static_cast<GLsizei>(h), 0, GL_BGRA, WORDS,
                    nullptr);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    pipeline.BindForFilling(0);
    gl.glGenFramebuffers(1, &framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    constexpr GLfloat BLACK[4] = {0, 0, 0, 1};
    gl.glDisable(GL_SCISSOR_TEST);
    if (IsComplete())
        gl.glClearBufferfv(GL_COLOR, 0, BLACK);
}

GlScreen::~GlScreen() {
    if (!pipeline.EnsureCurrent())
        return;
    GlFunctions& gl = pipeline.gl;
    gl.glDeleteFramebuffers(1, &framebuffer);
    gl.glDeleteRenderbuffers(1, &depth);
    gl.glDeleteTextures(1, &texture);
}

bool GlScreen::AddDepth() {
    GlFunctions& gl = pipeline.gl;
    gl.glDeleteRenderbuffers(1, &depth);
    gl.glGenRenderbuffers(1, &depth);
    gl.glBindRenderbuffer(GL_RENDERBUFFER, depth);
    gl.glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, static_cast<GLsizei>(width),
                             static_cast<GLsizei>(height));
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, depth);
    return IsComplete();
}

bool GlScreen::IsComplete() const {
    pipeline.gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    return pipeline.gl.glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

const PixelFormat& GlScreen::Format() const { return SCREEN_FORMAT; }

PixelRectangle GlScreen::Inside(const PixelRectangle& part) const {
    const uint32_t x = std::min(part.x, width), y = std::min(part.y, height);
    return {x, y, std::min(part.w, width - x), std::min(part.h, height - y)};
}

void GlScreen::MarkDrawn(const PixelRectangle& part) {
    constexpr size_t MOST_PARTS = 16; // kept apart
    if (!memory)                      // the first lock fetches all
        return;
    for (const PixelRectangle& r : drawn)
        if (Contains(r, part))
            return;
    std::erase_if(drawn, [&part](const PixelRectangle& r) { return Contains(part, r); });
    if (drawn.size() < MOST_PARTS)
        drawn.push_back(part);
    else
        drawn = {{0, 0, width, height}};
}

uint8_t* GlScreen::Lock(uint32_t level, uint32_t face, uint32_t& pitch) {
    return level == 0 && face == 0 ? LockPart({0, 0, width, height}, pitch) : nullptr;
}

uint8_t* GlScreen::LockPart(const PixelRectangle& wanted, uint32_t& pitch) {
    const PixelRectangle part = Inside(wanted);
    if (!pipeline.EnsureCurrent() || part.w == 0 || part.h == 0)
        return nullptr;
    if (!memory) {
        TextureDescription description;
        description.width = width;
        description.height = height;
        description.format = SCREEN_FORMAT;
        memory = std::make_unique<SoftSurface>(description);
        known.assign(static_cast<size_t>(width) * height, 0);
        drawn = {{0, 0, width, height}};
    }
    pipeline.Flush();
    if (locked.w > 0)
        SendChanges();
    std::vector<PixelRectangle> left;
    for (const PixelRectangle& r : drawn) {
        if (const PixelRectangle wanted_part = Overlap(r, part); wanted_part.w > 0)
            Fetch(wanted_part);
        if (!Contains(part, r))
            left.push_back(r);
    }
    drawn = std::move(left);
    locked = part;
    uint8_t* const first = memory->Lock(0, 0, pitch);
    return first + static_cast<size_t>(part.y) * pitch + static_cast<size_t>(part.x) * sizeof(uint32_t);
}

bool GlScreen::Unlock(uint32_t level, uint32_t face) {
    if (level != 0 || face != 0 || locked.w == 0 || !pipeline.EnsureCurrent())
        return false;
    SendChanges();
    locked = {};
    return true;
}

void GlScreen::Fetch(const PixelRectangle& part) {
    GlFunctions& gl = pipeline.gl;
    uint32_t pitch;
    auto* const words = reinterpret_cast<uint32_t*>(memory->Lock(0, 0, pitch));
    const size_t first = static_cast<size_t>(part.y) * width + part.x;
    gl.glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
    gl.glReadBuffer(GL_COLOR_ATTACHMENT0);
    gl.glPixelStorei(GL_PACK_ALIGNMENT, 4);
    gl.glPixelStorei(GL_PACK_ROW_LENGTH, static_cast<GLint>(width));
    gl.glReadPixels(static_cast<GLint>(part.x), static_cast<GLint>(part.y), static_cast<GLsizei>(part.w),
                    static_cast<GLsizei>(part.h), GL_BGRA, WORDS, words + first);
    gl.glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    for (uint32_t y = 0; y < part.h; ++y)
        for (size_t at = first + static_cast<size_t>(y) * width, end = at + part.w; at < end; ++at)
            known[at] = words[at] &= RGB_MASK;
}

// Neighbouring rows with changes at the same columns go together.
void GlScreen::SendChanges() {
    constexpr uint32_t WORTH_ANOTHER_PIECE = 64; // unchanged pixels between two pieces of a row
    uint32_t pitch;
    const auto* const words = reinterpret_cast<const uint32_t*>(memory->Lock(0, 0, pitch));
    std::vector<PixelRectangle> pieces;
    for (uint32_t y = locked.y; y < Bottom(locked); ++y) {
        const size_t row = static_cast<size_t>(y) * width;
        if (std::memcmp(words + row + locked.x, known.data() + row + locked.x, locked.w * sizeof(uint32_t)) == 0)
            continue;
        std::vector<PixelRectangle> runs;
        for (uint32_t x = locked.x; x < Right(locked); ++x) {
            if (((words[row + x] ^ known[row + x]) & RGB_MASK) == 0)
                continue;
            if (!runs.empty() && x - Right(runs.back()) < WORTH_ANOTHER_PIECE)
                runs.back().w = x + 1 - runs.back().x;
            else
                runs.push_back({x, y, 1, 1});
        }
        for (const PixelRectangle& run : runs) {
            const auto above = std::find_if(pieces.begin(), pieces.end(), [&](const PixelRectangle& p) {
                return p.x == run.x && p.w == run.w && Bottom(p) == y;
            });
            if (above != pieces.end())
                ++above->h;
            else
                pieces.push_back(run);
        }
    }
    for (const PixelRectangle& piece : pieces)
        Send(piece);
}

void GlScreen::Send(const PixelRectangle& part) {
    GlFunctions& gl = pipeline.gl;
    uint32_t pitch;
    const auto* const words = reinterpret_cast<const uint32_t*>(memory->Lock(0, 0, pitch));
    const size_t first = static_cast<size_t>(part.y) * width + part.x;
    PlainUnpacking(gl);
    gl.glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(width));
    pipeline.BindForFilling(texture);
    gl.glTexSubImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(part.x), static_cast<GLint>(part.y),
                       static_cast<GLsizei>(part.w), static_cast<GLsizei>(part.h), GL_BGRA, WORDS, words + first);
    pipeline.BindForFilling(0);
    gl.glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    for (uint32_t y = 0; y < part.h; ++y)
        std::copy_n(words + first + static_cast<size_t>(y) * width, part.w,
                    known.begin() + static_cast<ptrdiff_t>(first + static_cast<size_t>(y) * width));
}
