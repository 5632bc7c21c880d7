// Which pixels a primitive of the software device covers, and the values there.
#pragma once

#include <cstdint>
#include <vector>

#include "render/SoftFill.h"
#include "render/SoftPixel.h"

// Takes primitives whose corners are on the screen, no farther out than 65536 pixels.
class SoftSink {
public:
    static constexpr int MOST_CORNERS = 3 + 13; // every plane of a cut adds one at most

    virtual ~SoftSink() = default;
    virtual void Polygon(const SoftVertex* const* vertices, int count) = 0; // convex and flat
    virtual void Line(const SoftVertex& from, const SoftVertex& to) = 0;
    virtual void Point(const SoftVertex& at) = 0;
};

// Textured surfaces that cover what is there are told apart before they are coloured: each pixel holds the number of
// the surface that is seen there, until all of them are known.
class SoftShades {
public:
    static constexpr uint32_t PENDING = 0x80000000; // of a pixel that holds a number

    uint32_t NextWord() const { return PENDING | static_cast<uint32_t>(shades.size()); }
    bool IsFull() const { return shades.size() >= PENDING; }
    void Keep(const SoftFill& fill, const SoftPixel& pixel) { shades.push_back({fill, &pixel}); }
    void ColorPixel(const SoftTarget& target, size_t at) const;
    void ColorAll(const SoftTarget& target); // and forgets the surfaces

private:
    struct Shade {
        SoftFill fill;
        const SoftPixel* pixel;
    };
    int ColorRun(const SoftTarget& target, size_t at, int x, int y, int most) const; // how many pixels it takes

    std::vector<Shade> shades;
};

class SoftRaster final : public SoftSink {
public:
    // later: takes what can be coloured later; may be null.
    SoftRaster(const SoftState& device_state, const SoftTarget& picture, SoftShades* later = nullptr);

    // Rounds the position of a vertex that has come to the screen.
    static void Round(SoftVertex& vertex);
    // True when a polygon is left out by its turn, or has no area.
    static bool TurnsOut(const SoftVertex* const* vertices, int count, uint32_t cull_mode);
    uint32_t CoordinateSets() const { return pixel.CoordinateSets(); }
    struct OneColorLine {
        uint32_t setting; // for whom it concerns
        uint32_t argb;
        int32_t x1, y1, x2, y2; // 1/256 pixels
        float depth1, depth2;
    };
    void FlatLine(const OneColorLine& line); // without a texture
    void Start();                            // before what is drawn first, or after something else was drawn
    void Polygon(const SoftVertex* const* vertices, int count) override;
    void Line(const SoftVertex& from, const SoftVertex& to) override;
    void Point(const SoftVertex& at) override;

private:
    struct Corner {
        int64_t x, y; // 1/256 pixels
        const SoftVertex* vertex;
    };
    using Fill = SoftFill;
    using Plane = SoftFill::Plane;
    class EdgeRows;

    static Corner ToCorner(const SoftVertex& vertex) { return {vertex.subpixel_x, vertex.subpixel_y, &vertex}; }
    // The ends of what is not flat are vertices.
    void DrawLine(const Corner& a, const Corner& b, float from_depth, float to_depth, bool one_color, uint32_t argb);
    static int64_t AreaOf(const Corner& a, const Corner& b, const Corner& c); // twice, above 0: clockwise
    // True when nothing of a polygon can show. Else notes that it will be drawn.
    bool IsHidden(const Corner* corners, int count);
    // False when nothing of it will show.
    bool StartFill(Fill& fill, bool one_color, uint32_t argb);
    void Triangle(const Corner& a, const Corner& b, const Corner& c, int64_t area, bool one_color);
    void Span(int row, int64_t first, int64_t end, const Fill& fill);
    // One word where the depth wins; true if it does anywhere.
    bool FlatSpan(size_t at, size_t end, double across, double down, const Plane& depth, uint32_t word);
    void ColorSpan(size_t at, size_t end, double across, double down, const Fill& fill);
    void FlatRun(size_t at, size_t stride, int64_t count, float depth);
    void Pixel(size_t at, float depth, const double* values, const Fill& fill);
    void Settle(size_t at) { // before something blends with it
        if (shades && (target.pixels[at] & SoftShades::PENDING) != 0)
            shades->ColorPixel(target, at);
    }
    void PutFlat(size_t at, float depth) {
        Settle(at);
        pixel.PutFlat(at, depth, flat_color);
    }

    SoftTarget target;
    SoftPixel pixel;
    SoftShades* shades;
    bool colors_later = false; // this state's textured pixels
    uint32_t later_word = 0;   // of the primitive that is coloured later
    bool later_seen = false;   // it has a pixel
    uint32_t cull;
    int value_count; // of the values that the pixels need, from Z on
    SoftPixel::FlatColor flat_color;
    uint32_t flat_argb = 0;
    bool flat_known = false;
};
