// A band of rows of a group. Polygons that cover what is there wait for each other and are drawn from near to far, so
// that most of what is hidden is found to be so before it is filled; what was told first or last still shows in ties.
#include <algorithm>
#include <bit>

#include "render/SoftGroup.h"

namespace {

// Steps of depth from near to far, the finer the nearer to the far plane, as perspective gathers most depths there: 16
// to each doubling of 1 - depth.
constexpr int STEP_SHIFT = 19; // of the bits of a float
constexpr uint32_t STEPS = (std::bit_cast<uint32_t>(1.0f) >> STEP_SHIFT) + 1;

uint32_t StepOf(float depth) {
    const float inside = depth > 0 ? std::min(depth, 1.0f) : 0.0f; // also what is no number
    return STEPS - 1 - (std::bit_cast<uint32_t>(1 - inside) >> STEP_SHIFT);
}

} // namespace

class SoftGroup::Band {
public:
    Band(const SoftGroup& of, int number, Worker& by)
        : group(of), worker(by), top(number * BAND_ROWS), bottom(top + BAND_ROWS), rasters(of.settings.size()) {}

    void Draw(const Slice& slice, uint32_t number) {
        ++told;
        if ((number & FLAT_LINE) != 0) {
            const SoftRaster::OneColorLine& line = slice.lines[number & ~FLAT_LINE];
            DrawWaiting();
            RasterOf(line.setting).FlatLine(line);
            return;
        }
        const Shape& shape = slice.shapes[number];
        if (shape.count >= 3 && AnyOrder(shape.setting)) {
            worker.waiting.push_back({&shape, told});
            if (worker.waiting.size() == MOST_WAITING)
                DrawWaiting();
            return;
        }
        DrawWaiting();
        DrawShape(shape, told);
    }
    void End() {
        DrawWaiting();
        ColorAll();
    }

private:
    static constexpr size_t FEW = 16, MOST_WAITING = 0x10000;

    bool AnyOrder(uint32_t setting) {
        if (setting != last_setting)
            RasterOf(setting);
        return last->TakesAnyOrder();
    }
    SoftRaster& RasterOf(uint32_t setting) {
        if (last && setting == last_setting)
            return *last;
        std::unique_ptr<SoftRaster>& raster = rasters[setting];
        if (!raster) {
            SoftTarget part = group.settings[setting]->target;
            part.top = std::max(part.top, top);
            part.bottom = std::min(part.bottom, bottom);
            raster = std::make_unique<SoftRaster>(group.settings[setting]->state, part, &worker.shades);
        }
        last = raster.get();
        last_setting = setting;
        last->Start();
        return *last;
    }
    void DrawShape(const Shape& shape, uint32_t told_place) {
        const SoftVertex* corners[SoftSink::MOST_CORNERS];
        if (shape.count <= 3)
            std::copy_n(shape.corners, shape.count, corners);
        else
            for (int k = 0; k < shape.count; ++k)
                corners[k] = shape.corners[0] + k;
        SoftRaster& raster = RasterOf(shape.setting);
        if (shape.count == 1)
            raster.Point(*corners[0]);
        else if (shape.count == 2)
            raster.Line(*corners[0], *corners[1]);
        else if (!raster.IsHidden(shape.extent))
            raster.Fill(corners, shape.count, told_place);
    }
    void DrawWaiting() {
        if (worker.waiting.empty())
            return;
        if (worker.shades.Count() > SoftShades::MANY)
            ColorAll();
        if (worker.waiting.size() > FEW)
            SortWaiting();
        for (const Waiting& polygon : worker.waiting)
            DrawShape(*polygon.shape, polygon.told);
        worker.waiting.clear();
    }
    void SortWaiting() {
        std::vector<uint32_t> places(STEPS + 1);
        for (const Waiting& polygon : worker.waiting)
            ++places[StepOf(polygon.shape->extent.nearest) + 1];
        for (uint32_t step = 0; step < STEPS; ++step)
            places[step + 1] += places[step];
        worker.sorted.resize(worker.waiting.size());
        for (const Waiting& polygon : worker.waiting)
            worker.sorted[places[StepOf(polygon.shape->extent.nearest)]++] = polygon;
        worker.waiting.swap(worker.sorted);
    }
    void ColorAll() {
        SoftTarget rows = group.settings.front()->target; // of the picture
        rows.left = 0, rows.right = rows.width;
        rows.top = top, rows.bottom = std::min(bottom, rows.height);
        worker.shades.ColorAll(rows);
    }

    const SoftGroup& group;
    Worker& worker;
    const int top, bottom;
    std::vector<std::unique_ptr<SoftRaster>> rasters; // by setting
    SoftRaster* last = nullptr;
    uint32_t last_setting = UINT32_MAX;
    uint32_t told = 0;
};

void SoftGroup::FillBand(int number, Worker& worker) const {
    Band band(*this, number, worker);
    for (size_t s = 0; s < slice_count; ++s)
        for (const uint32_t shape : slices[s].bands[number])
            band.Draw(slices[s], shape);
    band.End();
}
