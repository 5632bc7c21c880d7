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

// Surfaces that cover what is there are told apart before they are coloured: each pixel holds the number of the surface
// that is seen there, until all of them are known. So they can be drawn in another order than they were told in.
class SoftShades {
public:
    static constexpr uint32_t PENDING = 0x80000000; // of a pixel that holds a number
    static constexpr size_t MANY = 0x10000;         // surfaces; memory is better used anew

    uint32_t NextWord() const { return PENDING | static_cast<uint32_t>(shades.size()); }
    size_t Count() const { return shades.size(); }
    // The surface of the next word. told: its place in the order in which all were told.
    void Keep(const SoftFill& fill, const SoftPixel& pixel, uint32_t told) {
        shades.push_back({told, static_cast<uint32_t>(fills.size()), &pixel});
        fills.push_back(fill);
    }
    void KeepOneWord(uint32_t word, uint32_t told) { shades.push_back({told, word, nullptr}); }
    // True if what was told then comes after what is in a pixel.
    bool IsLater(uint32_t told, uint32_t pixel) const {
        return (pixel & PENDING) == 0 || shades[pixel & ~PENDING].told <= told;
    }
    void ColorPixel(const SoftTarget& target, size_t at) const;
    void ColorAll(const SoftTarget& target); // and forgets the surfaces

private:
    struct Shade {
        uint32_t told;
        uint32_t value;         // the word that all its pixels take, or the place of its fill
        const SoftPixel* pixel; // null: one word
    };
    int ColorRun(const SoftTarget& target, size_t at, int x, int y, int most) const; // how many pixels it takes

    std::vector<Shade> shades;
    std::vector<SoftFill> fills;
};

class SoftRaster final : public SoftSink {
public:
    // later: takes what can be coloured later; may be null.
    SoftRaster(const SoftState& device_state, const SoftTarget& picture, SoftShades* later = nullptr);

    // Where a polygon may show, in pixels of which right and bottom are outside, and how near.
    struct Extent {
        int16_t left = 0, top = 0, right = 0, bottom = 0;
        float nearest = 0;
        bool IsEmpty() const { return left >= right || top >= bottom; }
    };
    static Extent ExtentOf(const SoftVertex* const* vertices, int count, const SoftTarget& picture);

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

    // True when polygons of this state, among themselves and others of the kind, may be drawn in any order: each pixel
    // shows what is nearest there and, of what is equally near, what was told last.
    bool TakesAnyOrder() const { return colors_later; }
    // True when nothing of a polygon can show. Else notes that it will be drawn.
    bool IsHidden(const Extent& extent);
    // A polygon that neither turns out nor is hidden.
    void Fill(const SoftVertex* const* vertices, int count, uint32_t told);

private:
    struct Corner {
        int64_t x, y; // 1/256 pixels
        const SoftVertex* vertex;
    };
    using Plane = SoftFill::Plane;
    using Words = uint32_t __attribute__((vector_size(16)));
    class EdgeRows;

    static Corner ToCorner(const SoftVertex& vertex) { return {vertex.subpixel_x, vertex.subpixel_y, &vertex}; }
    // The ends of what is not flat are vertices.
    void DrawLine(const Corner& a, const Corner& b, float from_depth, float to_depth, bool one_color, uint32_t argb);
    static int64_t AreaOf(const Corner& a, const Corner& b, const Corner& c); // twice, above 0: clockwise
    // False when nothing of it will show.
    bool StartFill(SoftFill& fill, bool one_color, uint32_t argb);
    void Triangle(const Corner& a, const Corner& b, const Corner& c, int64_t area, bool one_color);
    void Span(int row, int64_t first, int64_t end, const SoftFill& fill);
    // One word where the depth wins; true if it does anywhere.
    bool FlatSpan(size_t at, size_t end, double across, double down, const Plane& depth, uint32_t word);
    static bool IsAny(Words bits) {
        using Halves = uint64_t __attribute__((vector_size(16)));
        const auto halves = reinterpret_cast<Halves>(bits);
        return (halves[0] | halves[1]) != 0;
    }
    void LoseTies(size_t at, Words ties, Words& wins) const;
    void ColorSpan(size_t at, size_t end, double across, double down, const SoftFill& fill);
    void FlatRun(size_t at, size_t stride, int64_t count, float depth);
    void Pixel(size_t at, float depth, const double* values, const SoftFill& fill);
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
    bool colors_later = false; // this state's polygons
    uint32_t later_word = 0;   // of the polygon that is coloured later
    bool later_seen = false;   // it has a pixel
    uint32_t later_told = 0;
    uint32_t cull;
    int value_count; // of the values that the pixels need, from Z on
    SoftPixel::FlatColor flat_color;
    uint32_t flat_argb = 0;
    bool flat_known = false;
};
