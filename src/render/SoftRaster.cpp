#include "render/SoftRaster.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

constexpr int64_t SUBPIXELS = 256, CENTRE = SUBPIXELS / 2; // of a pixel
constexpr int V_DEPTH = SoftFill::V_DEPTH, V_RHW = SoftFill::V_RHW, V_COLOR = SoftFill::V_COLOR, V_UV = SoftFill::V_UV;

int32_t ToSubpixels(float pixels) {
    return static_cast<int32_t>(FloorToInteger(static_cast<double>(pixels) * SUBPIXELS + 0.5)); // halves up
}

int64_t FloorDivide(int64_t dividend, int64_t divisor) { // divisor above 0
    return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}

// The first pixel whose centre is at or beyond a position.
int64_t FirstCentre(int64_t position) { return -((CENTRE - position) >> 8); }

float ToDepth(double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); }

} // namespace

// Row by row the first pixel whose centre is on an edge or to its right, by whole numbers.
class SoftRaster::EdgeRows {
public:
    EdgeRows(const Corner& upper, const Corner& lower, int64_t row) {
        const int64_t dx = lower.x - upper.x, dy = lower.y - upper.y;
        divisor = SUBPIXELS * dy;
        const int64_t dividend =
            (upper.x - CENTRE) * dy + (row * SUBPIXELS + CENTRE - upper.y) * dx + (divisor - 1); // rounds up
        pixel = FloorDivide(dividend, divisor);
        rest = dividend - pixel * divisor;
        step = FloorDivide(dx, dy);
        step_rest = SUBPIXELS * (dx - step * dy);
    }
    int64_t Pixel() const { return pixel; }
    void NextRow() {
        pixel += step;
        rest += step_rest;
        if (rest >= divisor) {
            rest -= divisor;
            ++pixel;
        }
    }

private:
    int64_t pixel, rest, divisor, step, step_rest;
};

SoftRaster::SoftRaster(const SoftState& device_state, const SoftTarget& picture, SoftShades* later)
    : target(picture), pixel(device_state, picture), shades(later), cull(device_state.states[RS_CULLMODE]),
      value_count(V_UV + 2 * static_cast<int>(pixel.CoordinateSets())) {
    colors_later = shades && pixel.IsPlain() && pixel.IsOpaque();
}

void SoftRaster::Start() {
    if (pixel.WritesDepth() && !pixel.HidesBehind())
        target.coarse->Forget(target.top, target.bottom);
}

void SoftRaster::Round(SoftVertex& vertex) {
    vertex.subpixel_x = ToSubpixels(vertex.v[SoftVertex::X]);
    vertex.subpixel_y = ToSubpixels(vertex.v[SoftVertex::Y]);
}

bool SoftRaster::StartFill(SoftFill& fill, bool one_color, uint32_t argb) {
    fill.one_color = one_color;
    fill.value_count = value_count;
    fill.flat = one_color && pixel.IsFlat();
    if (fill.flat) {
        if (!flat_known || flat_argb != argb) {
            flat_color = pixel.Flat(argb);
            flat_argb = argb;
            flat_known = true;
        }
        return flat_color.drawn;
    }
    constexpr int ARGB_SHIFT[4] = {16, 8, 0, 24};
    for (int c = 0; one_color && c < 4; ++c)
        fill.color[c] = static_cast<int>(argb >> ARGB_SHIFT[c] & 255);
    return true;
}

SoftRaster::Extent SoftRaster::ExtentOf(const SoftVertex* const* vertices, int count, const SoftTarget& picture) {
    int32_t left = vertices[0]->subpixel_x, right = left, top = vertices[0]->subpixel_y, bottom = top;
    float nearest = vertices[0]->v[SoftVertex::Z];
    for (int k = 1; k < count; ++k) {
        const SoftVertex& vertex = *vertices[k];
        left = std::min(left, vertex.subpixel_x), right = std::max(right, vertex.subpixel_x);
        top = std::min(top, vertex.subpixel_y), bottom = std::max(bottom, vertex.subpixel_y);
        nearest = std::min(nearest, vertex.v[SoftVertex::Z]);
    }
    static_assert(LONGEST_SCREEN_SIDE <= std::numeric_limits<int16_t>::max());
    const auto place = [](int32_t subpixels, int low, int high) {
        return static_cast<int16_t>(std::clamp<int64_t>(FirstCentre(subpixels), low, high));
    };
    return {place(left, picture.left, picture.right), place(top, picture.top, picture.bottom),
            place(right, picture.left, picture.right), place(bottom, picture.top, picture.bottom), nearest};
}

bool SoftRaster::IsHidden(const Extent& extent) {
    constexpr float ROUNDING = 1e-6f; // more than what the depth of a pixel may be off
    const int top = std::max<int>(extent.top, target.top), bottom = std::min<int>(extent.bottom, target.bottom);
    if (extent.left >= extent.right || top >= bottom)
        return true;
    if (pixel.HidesBehind() && target.coarse->IsNearer(target.depth, extent.left, top, extent.right, bottom,
                                                       std::min(extent.nearest, 1.0f) - ROUNDING))
        return true;
    if (pixel.WritesDepth())
        target.coarse->Touch(extent.left, top, extent.right, bottom);
    return false;
}

int64_t SoftRaster::AreaOf(const Corner& a, const Corner& b, const Corner& c) {
    return (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
}

bool SoftRaster::TurnsOut(const SoftVertex* const* vertices, int count, uint32_t cull_mode) {
    int64_t whole = 0; // above 0: the corners turn clockwise on the screen
    for (int k = 1; k + 1 < count; ++k)
        whole += AreaOf(ToCorner(*vertices[0]), ToCorner(*vertices[k]), ToCorner(*vertices[k + 1]));
    return whole == 0 || (whole > 0 && cull_mode == CULL_CW) || (whole < 0 && cull_mode == CULL_CCW);
}

void SoftRaster::Polygon(const SoftVertex* const* vertices, int count) {
    if (!TurnsOut(vertices, count, cull) && !IsHidden(ExtentOf(vertices, count, target)))
        Fill(vertices, count, 0);
}

void SoftRaster::Fill(const SoftVertex* const* vertices, int count, uint32_t told) {
    Corner corners[MOST_CORNERS];
    bool one_color = true;
    for (int k = 0; k < count; ++k) {
        corners[k] = ToCorner(*vertices[k]);
        one_color = one_color && !vertices[k]->mixed && vertices[k]->argb == vertices[0]->argb;
    }
    later_told = told;
    int64_t whole = 0;
    for (int k = 1; k + 1 < count; ++k)
        whole += AreaOf(corners[0], corners[k], corners[k + 1]);
    for (int k = 1; k + 1 < count; ++k) {
        const int64_t area = AreaOf(corners[0], corners[k], corners[k + 1]);
        if (area != 0 && (area > 0) == (whole > 0)) // rounding may turn a sliver over
            Triangle(corners[0], corners[k], corners[k + 1], area, one_color);
    }
}

void SoftRaster::Triangle(const Corner& a, const Corner& b, const Corner& c, int64_t area, bool one_color) {
    const Corner* upper[3] = {&a, &b, &c};
    std::sort(upper, upper + 3, [](const Corner* p, const Corner* q) { return p->y < q->y; });
    const Corner &top = *upper[0], &middle = *upper[1], &bottom = *upper[2];
    const int64_t first_row = std::max<int64_t>(FirstCentre(top.y), target.top);
    const int64_t end_row = std::min<int64_t>(FirstCentre(bottom.y), target.bottom);
    SoftFill fill;
    if (first_row >= end_row || !StartFill(fill, one_color, a.vertex->argb))
        return;
    const auto bx = static_cast<double>(b.x - a.x), by = static_cast<double>(b.y - a.y);
    const auto cx = static_cast<double>(c.x - a.x), cy = static_cast<double>(c.y - a.y);
    for (int k = 0; k < (fill.flat ? V_RHW : value_count); ++k) {
        const double value = a.vertex->v[SoftVertex::Z + k];
        const double to_b = b.vertex->v[SoftVertex::Z + k] - value, to_c = c.vertex->v[SoftVertex::Z + k] - value;
        fill.planes[k] = {value, (to_b * cy - to_c * by) / static_cast<double>(area),
                          (to_c * bx - to_b * cx) / static_cast<double>(area)};
    }
    fill.x = a.x, fill.y = a.y;
    later_word = colors_later ? shades->NextWord() : 0;
    later_seen = false;
    EdgeRows long_edge(top, bottom, first_row);
    const auto rows = [&](const Corner& from, const Corner& to, int64_t row, int64_t end) {
        if (row >= end)
            return;
        for (EdgeRows short_edge(from, to, row); row < end; ++row, long_edge.NextRow(), short_edge.NextRow())
            Span(static_cast<int>(row), std::min(long_edge.Pixel(), short_edge.Pixel()),
                 std::max(long_edge.Pixel(), short_edge.Pixel()), fill);
    };
    const int64_t turn = std::clamp(FirstCentre(middle.y), first_row, end_row);
    rows(top, middle, first_row, turn);
    rows(middle, bottom, turn, end_row);
    if (later_seen && fill.flat)
        shades->KeepOneWord(flat_color.word, later_told);
    else if (later_seen)
        shades->Keep(fill, pixel, later_told);
}

void SoftRaster::Span(int row, int64_t first, int64_t end, const SoftFill& fill) {
    const int left = static_cast<int>(std::max<int64_t>(first, target.left));
    const int right = static_cast<int>(std::min<int64_t>(end, target.right));
    if (left >= right)
        return;
    const auto down = static_cast<double>(row * SUBPIXELS + CENTRE - fill.y);
    const auto across = static_cast<double>(left * SUBPIXELS + CENTRE - fill.x);
    const size_t at = target.At(left, row), end_place = target.At(right, row);
    if (later_word != 0)
        later_seen |= FlatSpan(at, end_place, across, down, fill.planes[V_DEPTH], later_word);
    else if (fill.flat)
        FlatSpan(at, end_place, across, down, fill.planes[V_DEPTH], flat_color.word);
    else
        ColorSpan(at, end_place, across, down, fill);
}

void SoftRaster::ColorSpan(size_t at, size_t end, double across, double down, const SoftFill& fill) {
    SoftPixel::Input input;
    std::copy_n(fill.color, 4, input.color);
    for (; at < end; ++at, across += SUBPIXELS) {
        const float depth = ToDepth(fill.planes[V_DEPTH].At(across, down));
        if (!pixel.DepthPasses(at, depth))
            continue;
        pixel.Take(fill, across, down, input);
        Settle(at);
        pixel.Put(at, depth, input);
    }
}

// Of four pixels that are as near as what is there: those win no longer that were told before it.
void SoftRaster::LoseTies(size_t at, Words ties, Words& wins) const {
    if (!IsAny(ties))
        return;
    for (size_t i = 0; i < 4; ++i)
        if (ties[i] != 0 && !shades->IsLater(later_told, target.pixels[at + i]))
            wins[i] = 0;
}

bool SoftRaster::FlatSpan(size_t at, size_t end, double across, double down, const Plane& plane, uint32_t value) {
    bool any = false;
    const bool plain = pixel.IsPlain();
    const double start = plane.start, growth = plane.right, row_part = plane.down * down;
    const auto depth_at = [&](double place) { return start + growth * place + row_part; };
    const auto unclamped = [&] { // the ends, and so all between
        const double first = depth_at(across), last = depth_at(across + static_cast<double>(end - at - 1) * SUBPIXELS);
        return std::min(first, last) >= 0 && std::max(first, last) <= 1;
    };
    constexpr size_t BLOCK = 4, WORTHWHILE = 2 * BLOCK;
    if (end - at >= WORTHWHILE && plain && unclamped()) {
        using Doubles = double __attribute__((vector_size(16)));
        using Floats = float __attribute__((vector_size(16)));
        const Words word = Words{} + value;
        Doubles place = {across, across + SUBPIXELS};
        for (; at + BLOCK <= end; at += BLOCK, place += static_cast<double>(BLOCK * SUBPIXELS)) {
            const Doubles left = start + growth * place + row_part;
            const Doubles right = start + growth * (place + 2.0 * SUBPIXELS) + row_part;
            const Floats depth = {static_cast<float>(left[0]), static_cast<float>(left[1]),
                                  static_cast<float>(right[0]), static_cast<float>(right[1])};
            Floats there;
            std::memcpy(&there, target.depth + at, sizeof(there));
            auto wins = reinterpret_cast<Words>(depth <= there);
            if (later_word != 0)
                LoseTies(at, reinterpret_cast<Words>(depth == there), wins);
            if (!IsAny(wins))
                continue;
            any = true;
            Words pixels;
            std::memcpy(&pixels, target.pixels + at, sizeof(pixels));
            pixels = (wins & word) | (~wins & pixels);
            const auto kept = (wins & reinterpret_cast<Words>(depth)) | (~wins & reinterpret_cast<Words>(there));
            std::memcpy(target.pixels + at, &pixels, sizeof(pixels));
            std::memcpy(target.depth + at, &kept, sizeof(kept));
        }
        across = place[0];
    }
    for (; at < end; ++at, across += SUBPIXELS)
        if (const float depth = ToDepth(depth_at(across)); plain && depth <= target.depth[at]) {
            if (later_word != 0 && depth == target.depth[at] && !shades->IsLater(later_told, target.pixels[at]))
                continue;
            target.depth[at] = depth;
            target.pixels[at] = value;
            any = true;
        } else if (!plain && pixel.DepthPasses(at, depth))
            PutFlat(at, depth);
    return any;
}

// Pixels of one depth, stride places apart.
void SoftRaster::FlatRun(size_t at, size_t stride, int64_t count, float depth) {
    if (!pixel.IsPlain()) {
        for (; count > 0; --count, at += stride)
            if (pixel.DepthPasses(at, depth))
                PutFlat(at, depth);
        return;
    }
    const uint32_t word = flat_color.word;
    float* const there = target.depth;
    uint32_t* const pixels = target.pixels;
    for (; count > 0; --count, at += stride)
        if (depth <= there[at]) {
            there[at] = depth;
            pixels[at] = word;
        }
}

void SoftRaster::Pixel(size_t at, float depth, const double* values, const SoftFill& fill) {
    SoftPixel::Input input;
    std::copy_n(fill.color, 4, input.color);
    const double w = 1.0 / values[V_RHW];
    for (int c = 0; !fill.one_color && c < 4; ++c)
        input.color[c] = static_cast<int>(std::clamp(values[V_COLOR + c] * w, 0.0, 255.0) + 0.5);
    for (int k = 0; k < value_count - V_UV; ++k)
        input.uv[k] = static_cast<float>(values[V_UV + k] * w);
    Settle(at);
    pixel.Put(at, depth, input);
}

void SoftRaster::FlatLine(const OneColorLine& line) {
    DrawLine({line.x1, line.y1, nullptr}, {line.x2, line.y2, nullptr}, line.depth1, line.depth2, true, line.argb);
}

void SoftRaster::Line(const SoftVertex& from, const SoftVertex& to) {
    DrawLine(ToCorner(from), ToCorner(to), from.v[SoftVertex::Z], to.v[SoftVertex::Z],
             !from.mixed && !to.mixed && from.argb == to.argb, from.argb);
}

void SoftRaster::DrawLine(const Corner& a, const Corner& b, float from_depth, float to_depth, bool one_color,
                          uint32_t argb) {
    const bool across = std::abs(b.x - a.x) >= std::abs(b.y - a.y);
    const int64_t start = across ? a.x : a.y, end = across ? b.x : b.y;
    if (start == end)
        return;
    const int64_t side_start = across ? a.y : a.x, side_growth = (across ? b.y : b.x) - side_start;
    const int64_t length = end - start, step = length > 0 ? 1 : -1;
    const int64_t low = across ? target.left : target.top, high = across ? target.right : target.bottom;
    const int64_t side_low = across ? target.top : target.left, side_high = across ? target.bottom : target.right;
    // The first point belongs to the line, the last does not. Backwards, pixels are entered from their far side.
    const auto first_pixel = [step](int64_t position) {
        return step > 0 ? FirstCentre(position) : (position - CENTRE) >> 8;
    };
    int64_t place = first_pixel(start), stop = first_pixel(end);
    if (step > 0)
        place = std::max(place, low), stop = std::min(stop, high);
    else
        place = std::min(place, high - 1), stop = std::max(stop, low - 1);
    SoftFill fill;
    if ((stop - place) * step <= 0 || !StartFill(fill, one_color, argb))
        return;

    const bool level = from_depth == to_depth;
    float depth = ToDepth(from_depth);
    if (side_growth == 0 && level && fill.flat) { // the same pixels in either direction
        const int64_t side = side_start >> 8, first = step > 0 ? place : stop + 1;
        if (side >= side_low && side < side_high)
            FlatRun(across ? target.At(static_cast<int>(first), static_cast<int>(side))
                           : target.At(static_cast<int>(side), static_cast<int>(first)),
                    across ? 1 : static_cast<size_t>(target.width), (stop - place) * step, depth);
        return;
    }
    const int64_t divisor = SUBPIXELS * step * length;
    int64_t gone = place * SUBPIXELS + CENTRE - start;
    const int64_t dividend = side_start * step * length + side_growth * step * gone;
    int64_t side = FloorDivide(dividend, divisor), rest = dividend - side * divisor;
    const auto value_at = [&](int k, double t) {
        const double value = k == V_DEPTH ? from_depth : a.vertex->v[SoftVertex::Z + k];
        return value + ((k == V_DEPTH ? to_depth : b.vertex->v[SoftVertex::Z + k]) - value) * t;
    };
    for (; place != stop; place += step, gone += SUBPIXELS * step) {
        if (side >= side_low && side < side_high) {
            const size_t at = across ? target.At(static_cast<int>(place), static_cast<int>(side))
                                     : target.At(static_cast<int>(side), static_cast<int>(place));
            const double t = fill.flat && level ? 0 : static_cast<double>(gone) / static_cast<double>(length);
            if (!level)
                depth = ToDepth(value_at(V_DEPTH, t));
            if (pixel.DepthPasses(at, depth)) {
                if (fill.flat) {
                    PutFlat(at, depth);
                } else {
                    double values[SoftFill::MOST_VALUES];
                    for (int k = V_RHW; k < value_count; ++k)
                        values[k] = value_at(k, t);
                    Pixel(at, depth, values, fill);
                }
            }
        }
        rest += side_growth * SUBPIXELS; // no more than one pixel aside
        if (rest >= divisor)
            rest -= divisor, ++side;
        else if (rest < 0)
            rest += divisor, --side;
    }
}

void SoftRaster::Point(const SoftVertex& vertex) {
    const Corner corner = ToCorner(vertex);
    const int64_t x = corner.x >> 8, y = corner.y >> 8;
    if (x < target.left || x >= target.right || y < target.top || y >= target.bottom)
        return;
    const size_t at = target.At(static_cast<int>(x), static_cast<int>(y));
    const float depth = ToDepth(vertex.v[SoftVertex::Z]);
    SoftFill fill;
    if (!pixel.DepthPasses(at, depth) || !StartFill(fill, !vertex.mixed, vertex.argb))
        return;
    if (fill.flat) {
        PutFlat(at, depth);
        return;
    }
    double values[SoftFill::MOST_VALUES] = {};
    std::copy_n(vertex.v + SoftVertex::Z, value_count, values);
    Pixel(at, depth, values, fill);
}
