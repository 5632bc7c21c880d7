#include "render/SoftGroup.h"

#include <algorithm>
#include <functional>

#include "foundation/Parallel.h"

namespace {

constexpr size_t SLICE_VERTICES = 4096;
constexpr size_t FEW_VERTICES = 4096; // whose drawing takes less time than a thread takes to start
constexpr size_t COMPARED_SETTINGS = 64;

} // namespace

// Keeps what may show of the primitives of a slice.
class SoftGroup::Recorder final : public SoftSink {
public:
    explicit Recorder(Slice& to) : slice(to) {}

    void Use(uint32_t index, const Setting& used) {
        setting = index;
        target = &used.target;
        cull = used.state.states[RS_CULLMODE];
        flat = used.coordinate_sets == 0;
    }
    void Polygon(const SoftVertex* const* vertices, int count) override {
        if (SoftRaster::TurnsOut(vertices, count, cull))
            return;
        const SoftRaster::Extent extent = SoftRaster::ExtentOf(vertices, count, *target);
        if (extent.IsEmpty())
            return;
        EnterRows(extent.top, extent.bottom - 1, static_cast<uint32_t>(slice.shapes.size()));
        Keep(vertices, count, extent);
    }
    void Line(const SoftVertex& from, const SoftVertex& to) override {
        if (from.subpixel_x == to.subpixel_x && from.subpixel_y == to.subpixel_y)
            return;
        const auto [left, right] = std::minmax(from.subpixel_x, to.subpixel_x);
        const auto [top, bottom] = std::minmax(from.subpixel_y, to.subpixel_y);
        if (!flat || from.mixed || to.mixed || from.argb != to.argb) {
            const SoftVertex* const ends[2] = {&from, &to};
            if (Enter(left, top, right, bottom, static_cast<uint32_t>(slice.shapes.size())))
                Keep(ends, 2, {});
        } else if (Enter(left, top, right, bottom, static_cast<uint32_t>(slice.lines.size()) | FLAT_LINE)) {
            slice.lines.push_back({setting, from.argb, from.subpixel_x, from.subpixel_y, to.subpixel_x, to.subpixel_y,
                                   from.v[SoftVertex::Z], to.v[SoftVertex::Z]});
        }
    }
    void Point(const SoftVertex& at) override {
        const SoftVertex* const only = &at;
        if (Enter(at.subpixel_x, at.subpixel_y, at.subpixel_x, at.subpixel_y,
                  static_cast<uint32_t>(slice.shapes.size())))
            Keep(&only, 1, {});
    }

private:
    bool IsInSlice(const SoftVertex* vertex) const {
        const std::vector<SoftVertex>& kept = slice.memory.on_screen;
        return !std::less<>()(vertex, kept.data()) && std::less<>()(vertex, kept.data() + kept.size());
    }
    void EnterRows(int top, int bottom, uint32_t number) {
        for (int band = top / BAND_ROWS; band <= bottom / BAND_ROWS; ++band)
            slice.bands[band].push_back(number);
    }
    // Notes a shape that covers this area, in 1/256 pixels, in the bands that it meets; false if it shows nowhere.
    bool Enter(int32_t left, int32_t top, int32_t right, int32_t bottom, uint32_t number) {
        const auto pixel = [](int32_t subpixels) { return subpixels >> 8; };
        if (pixel(right) < target->left || pixel(left) >= target->right || pixel(bottom) < target->top ||
            pixel(top) >= target->bottom)
            return false;
        EnterRows(std::max(pixel(top), target->top), std::min(pixel(bottom), target->bottom - 1), number);
        return true;
    }
    void Keep(const SoftVertex* const* vertices, int count, const SoftRaster::Extent& extent) {
        Shape& shape = slice.shapes.emplace_back(Shape{setting, count, extent, {}});
        if (count <= 3 && IsInSlice(vertices[0])) {
            std::copy_n(vertices, count, shape.corners);
        } else {
            std::vector<SoftVertex>& corners = slice.cut.emplace_back();
            for (int k = 0; k < count; ++k)
                corners.push_back(*vertices[k]);
            for (int k = 0; k < std::min(count, 3); ++k)
                shape.corners[k] = &corners[static_cast<size_t>(k)];
        }
    }

    Slice& slice;
    uint32_t setting = 0, cull = 0;
    bool flat = false; // without textures
    const SoftTarget* target = nullptr;
};

uint32_t SoftGroup::SettingOf(const SoftState& state, const SoftTarget& target) {
    const size_t first = settings.size() > COMPARED_SETTINGS ? settings.size() - COMPARED_SETTINGS : 0;
    for (size_t i = settings.size(); i > first; --i)
        if (settings[i - 1]->state.IsSame(state))
            return static_cast<uint32_t>(i - 1);
    settings.push_back(std::make_unique<Setting>(Setting{state, target, SoftPixel(state, target).CoordinateSets()}));
    return static_cast<uint32_t>(settings.size() - 1);
}

void SoftGroup::Add(const SoftState& state, const SoftTarget& target, const SoftMesh& mesh,
                    std::span<const MeshPart> parts) {
    const uint32_t setting = SettingOf(state, target);
    for (const MeshPart& part : parts)
        pieces.push_back({setting, &mesh, part});
}

void SoftGroup::AddOwn(const SoftState& state, const SoftTarget& target, MeshData data) {
    own_meshes.push_back(std::make_unique<SoftMesh>(std::move(data)));
    const SoftMesh& mesh = *own_meshes.back();
    const MeshPart all{0, static_cast<uint32_t>(mesh.data.indices.size()), 0,
                       static_cast<uint32_t>(mesh.data.vertices.size() / mesh.vertex_size)};
    Add(state, target, mesh, {&all, 1});
}

size_t SoftGroup::MakeSlices() {
    size_t vertices = 0;
    slice_count = 0;
    for (size_t i = 0; i < pieces.size(); ++i) {
        if (slice_count == 0 || slices[slice_count - 1].vertex_count >= SLICE_VERTICES) {
            if (slices.size() == slice_count)
                slices.emplace_back();
            slices[slice_count].first_piece = i;
            slices[slice_count++].vertex_count = 0;
        }
        Slice& slice = slices[slice_count - 1];
        slice.end_piece = i + 1;
        slice.vertex_count += pieces[i].part.vertex_count;
        vertices += pieces[i].part.vertex_count;
    }
    return vertices;
}

void SoftGroup::Place(Slice& slice) {
    slice.shapes.clear();
    slice.lines.clear();
    slice.cut.clear();
    for (std::vector<uint32_t>& band : slice.bands)
        band.clear();
    if (slice.memory.on_screen.size() < slice.vertex_count) { // must not move while shapes point into it
        slice.memory.on_screen.resize(slice.vertex_count);
        slice.memory.outside.resize(slice.vertex_count);
    }
    Recorder recorder(slice);
    std::unique_ptr<SoftVertices> vertices;
    uint32_t setting = 0;
    size_t place = 0;
    for (size_t i = slice.first_piece; i < slice.end_piece; ++i) {
        const Piece& piece = pieces[i];
        const MeshData& data = piece.mesh->data;
        const Setting& used = *settings[piece.setting];
        if (!vertices || setting != piece.setting) {
            vertices = std::make_unique<SoftVertices>(used.state, used.coordinate_sets, recorder, slice.memory);
            setting = piece.setting;
            recorder.Use(setting, used);
        }
        const MeshPart& part = piece.part;
        vertices->Read(data.fvf,
                       data.vertices.data() + static_cast<size_t>(part.first_vertex) * piece.mesh->vertex_size,
                       part.vertex_count, place);
        vertices->DrawList(data.prim, data.indices.data() + part.first_index, part.index_count, part.first_vertex);
        place += part.vertex_count;
    }
}

void SoftGroup::Draw() {
    const int threads = MakeSlices() > FEW_VERTICES ? ThreadCount(0) : 1;
    ParallelFor(static_cast<int>(slice_count), threads,
                [this](int slice, int) { Place(slices[static_cast<size_t>(slice)]); });
    int top = static_cast<int>(LONGEST_SCREEN_SIDE), bottom = 0;
    for (const auto& setting : settings) {
        top = std::min(top, setting->target.top);
        bottom = std::max(bottom, setting->target.bottom);
    }
    const int first_band = top / BAND_ROWS, bands = (std::max(bottom - 1, 0) / BAND_ROWS) + 1 - first_band;
    workers.resize(static_cast<size_t>(threads));
    if (bottom > top)
        ParallelFor(bands, threads, [this, first_band](int band, int worker) {
            FillBand(first_band + band, workers[static_cast<size_t>(worker)]);
        });
    settings.clear();
    pieces.clear();
    own_meshes.clear();
    slice_count = 0;
}
