#include "render/SoftGroup.h"

#include <algorithm>
#include <functional>

#include "foundation/Parallel.h"

namespace {

constexpr size_t SLICE_VERTICES = 4096;
constexpr size_t FEW_VERTICES = 4096; // whose drawing takes less time than a thread takes to start
constexpr size_t COMPARED_SETTINGS = 64;
constexpr uint32_t FLAT_LINE = 0x80000000; // in the number of a shape: it is a line of one colour

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
        if (!SoftRaster::TurnsOut(vertices, count, cull))
            Keep(vertices, count);
    }
    void Line(const SoftVertex& from, const SoftVertex& to) override {
        if (from.subpixel_x == to.subpixel_x && from.subpixel_y == to.subpixel_y)
            return;
        const auto [left, right] = std::minmax(from.subpixel_x, to.subpixel_x);
        const auto [top, bottom] = std::minmax(from.subpixel_y, to.subpixel_y);
        if (!flat || from.mixed || to.mixed || from.argb != to.argb) {
            const SoftVertex* const ends[2] = {&from, &to};
            Keep(ends, 2);
        } else if (Enter(left, top, right, bottom, static_cast<uint32_t>(slice.lines.size()) | FLAT_LINE)) {
            slice.lines.push_back({setting, from.argb, from.subpixel_x, from.subpixel_y, to.subpixel_x, to.subpixel_y,
                                   from.v[SoftVertex::Z], to.v[SoftVertex::Z]});
        }
    }
    void Point(const SoftVertex& at) override {
        const SoftVertex* const only = &at;
        Keep(&only, 1);
    }

private:
    bool IsInSlice(const SoftVertex* vertex) const {
        const std::vector<SoftVertex>& kept = slice.memory.on_screen;
        return !std::less<>()(vertex, kept.data()) && std::less<>()(vertex, kept.data() + kept.size());
    }
    // Notes a shape that covers this area, in 1/256 pixels, in the bands that it meets; false if it shows nowhere.
    bool Enter(int32_t left, int32_t top, int32_t right, int32_t bottom, uint32_t number) {
        const auto pixel = [](int32_t subpixels) { return subpixels >> 8; };
        if (pixel(right) < target->left || pixel(left) >= target->right || pixel(bottom) < target->top ||
            pixel(top) >= target->bottom)
            return false;
        const int last_band = std::min(pixel(bottom), target->bottom - 1) / BAND_ROWS;
        for (int band = std::max(pixel(top), target->top) / BAND_ROWS; band <= last_band; ++band)
            slice.bands[band].push_back(number);
        return true;
    }
    void Keep(const SoftVertex* const* vertices, int count) {
        int32_t left = vertices[0]->subpixel_x, right = left, top = vertices[0]->subpixel_y, bottom = top;
        for (int k = 1; k < count; ++k) {
            left = std::min(left, vertices[k]->subpixel_x), right = std::max(right, vertices[k]->subpixel_x);
            top = std::min(top, vertices[k]->subpixel_y), bottom = std::max(bottom, vertices[k]->subpixel_y);
        }
        if (!Enter(left, top, right, bottom, static_cast<uint32_t>(slice.shapes.size())))
            return;
        Shape& shape = slice.shapes.emplace_back(Shape{setting, count, {}});
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

void SoftGroup::DrawShape(const Shape& shape, SoftRaster& raster) {
    const SoftVertex* corners[SoftSink::MOST_CORNERS];
    if (shape.count <= 3)
        std::copy_n(shape.corners, shape.count, corners);
    else
        for (int k = 0; k < shape.count; ++k)
            corners[k] = shape.corners[0] + k;
    if (shape.count == 1)
        raster.Point(*corners[0]);
    else if (shape.count == 2)
        raster.Line(*corners[0], *corners[1]);
    else
        raster.Polygon(corners, shape.count);
}

void SoftGroup::FillBand(int band, SoftShades& later) const {
    const int top = band * BAND_ROWS, bottom = top + BAND_ROWS;
    std::vector<std::unique_ptr<SoftRaster>> rasters(settings.size());
    SoftRaster* last = nullptr;
    uint32_t last_setting = 0;
    const auto raster_of = [&](uint32_t index) -> SoftRaster& {
        if (last && index == last_setting)
            return *last;
        std::unique_ptr<SoftRaster>& raster = rasters[index];
        if (!raster) {
            SoftTarget part = settings[index]->target;
            part.top = std::max(part.top, top);
            part.bottom = std::min(part.bottom, bottom);
            raster = std::make_unique<SoftRaster>(settings[index]->state, part, &later);
        }
        last = raster.get();
        last_setting = index;
        last->Start();
        return *last;
    };
    for (size_t s = 0; s < slice_count; ++s) {
        const Slice& slice = slices[s];
        for (const uint32_t number : slice.bands[band])
            if ((number & FLAT_LINE) != 0) {
                const SoftRaster::OneColorLine& line = slice.lines[number & ~FLAT_LINE];
                raster_of(line.setting).FlatLine(line);
            } else {
                const Shape& shape = slice.shapes[number];
                DrawShape(shape, raster_of(shape.setting));
            }
    }
    SoftTarget rows = settings.front()->target; // of the picture
    rows.left = 0, rows.right = rows.width;
    rows.top = top, rows.bottom = std::min(bottom, rows.height);
    later.ColorAll(rows);
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
    shades.resize(static_cast<size_t>(threads));
    if (bottom > top)
        ParallelFor(bands, threads, [this, first_band](int band, int worker) {
            FillBand(first_band + band, shades[static_cast<size_t>(worker)]);
        });
    settings.clear();
    pieces.clear();
    own_meshes.clear();
    slice_count = 0;
}
