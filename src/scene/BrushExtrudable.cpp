// A closed outline, cut into triangles by clipping ears and extruded along the axis of the view frame.
#include <algorithm>

#include "scene/BrushParts.h"
#include "scene/ViewFrame.h"

namespace {

class EarClipper {
public:
    explicit EarClipper(const std::vector<D3DVECTOR>& outline);

    bool Clip(); // false if the outline has no valid ear left: it crosses itself or is degenerate
    bool Clockwise() const { return clockwise; }
    const std::vector<TRIANGLE>& Faces() const { return faces; } // their normal along +y once x, y are x, z

private:
    float Angle(size_t i, bool mirrored) const;
    bool IsEar(size_t i) const;
    size_t Next(size_t i) const;
    size_t Previous(size_t i) const;

    std::vector<D3DVECTOR> points;
    std::vector<bool> removed;
    std::vector<float> angles; // at each point, on the inner side
    bool clockwise = false;
    std::vector<TRIANGLE> faces;
};

EarClipper::EarClipper(const std::vector<D3DVECTOR>& outline) : removed(outline.size()) {
    for (const D3DVECTOR& p : outline)
        points.push_back({p.x, p.y, 0});
    // Whichever side has the smaller angles is the inner one.
    std::vector<float> row[2];
    float sum[2] = {};
    for (size_t r = 0; r < 2; ++r)
        for (size_t i = 0; i < points.size(); ++i) {
            row[r].push_back(Angle(i, r == 1));
            sum[r] += row[r].back();
        }
    clockwise = sum[0] >= sum[1];
    angles = row[clockwise ? 1 : 0];
}

size_t EarClipper::Next(size_t i) const {
    do
        i = (i + 1) % points.size();
    while (removed[i]);
    return i;
}

size_t EarClipper::Previous(size_t i) const {
    do
        i = (i + points.size() - 1) % points.size();
    while (removed[i]);
    return i;
}

float EarClipper::Angle(size_t i, bool mirrored) const {
    const D3DVECTOR d = points[Next(i)] - points[i], e = points[Previous(i)] - points[i];
    const D3DVECTOR reference = mirrored ? D3DVECTOR{d.y, -d.x, 0} : D3DVECTOR{-d.y, d.x, 0};
    return s_math.CalculateFullAngle(d, e, reference);
}

bool EarClipper::IsEar(size_t i) const {
    if (!(angles[i] < PI))
        return false;
    const size_t before = Previous(i), after = Next(i);
    const D3DVECTOR &a = points[before], &b = points[i], &c = points[after];
    for (size_t k = 0; k < points.size(); ++k) {
        if (removed[k] || k == before || k == after)
            continue;
        const size_t end = Next(k); // an edge that only touches the diagonal's ends would cross it by rounding alone
        if (end != before && end != after && s_math.LineIntersect2d(a, points[k], c - a, points[end] - points[k]))
            return false;
    }
    // A point on the border counts as inside: cutting there would leave a sliver.
    const float sign = clockwise ? -1.0f : 1.0f;
    const auto inner_side = [sign](const D3DVECTOR& from, const D3DVECTOR& to, const D3DVECTOR& p) {
        return CrossProduct(to - from, p - from).z * sign >= 0;
    };
    for (size_t k = 0; k < points.size(); ++k)
        if (!removed[k] && k != before && k != i && k != after && inner_side(a, b, points[k]) &&
            inner_side(b, c, points[k]) && inner_side(c, a, points[k]))
            return false;
    return true;
}

bool EarClipper::Clip() {
    size_t left = points.size();
    size_t fruitless = 0; // points seen since the last ear
    for (size_t i = 0; left > 2; i = (i + 1) % points.size()) {
        if (removed[i])
            continue;
        if (!IsEar(i)) {
            if (++fruitless == left)
                return false;
            continue;
        }
        const size_t before = Previous(i), after = Next(i);
        const int previous = static_cast<int>(before), ear = static_cast<int>(i), next = static_cast<int>(after);
        faces.push_back(clockwise ? MakeTriangle(previous, ear, next) : MakeTriangle(next, ear, previous));
        removed[i] = true;
        angles[before] = Angle(before, clockwise);
        angles[after] = Angle(after, clockwise);
        --left;
        fruitless = 0;
    }
    return true;
}

Surface Lid(const std::vector<D3DVECTOR>& outline, float y, const std::vector<TRIANGLE>& faces, bool reversed) {
    const int n = static_cast<int>(outline.size());
    Surface s;
    s.Allocate(n, static_cast<int>(faces.size()), n);
    s.vertices = outline;
    for (D3DVECTOR& v : s.vertices)
        v.y = y;
    s.tri_indices = faces;
    if (reversed)
        for (TRIANGLE& t : s.tri_indices)
            std::swap(t.i[0], t.i[2]);
    for (int i = 0; i < n; ++i)
        s.edge_indices[static_cast<size_t>(i)] = MakeEdge(i, (i + 1) % n);
    return s;
}

} // namespace

void Brush::CreateExtrudable(uint32_t view, const std::vector<D3DVECTOR>& ex_points) {
    constexpr size_t MIN_POINTS = 3;
    if (ex_points.size() < MIN_POINTS || ex_points.size() > MAX_EX_POINTS)
        return;
    EarClipper clipper(ex_points);
    if (!clipper.Clip())
        return; // a solid with holes in its lids would be worse than none
    ViewFrame frame(*this, view);
    const float bottom = bbox[4].y, top = bbox[0].y;
    std::vector<D3DVECTOR> outline;
    for (const D3DVECTOR& p : ex_points)
        outline.push_back({p.x, bottom, p.y});
    surfaces.push_back(Lid(outline, bottom, clipper.Faces(), true));
    surfaces.push_back(Lid(outline, top, clipper.Faces(), false));
    for (size_t i = 0; i < outline.size(); ++i) {
        const D3DVECTOR &p = outline[i], &q = outline[(i + 1) % outline.size()];
        surfaces.push_back(MakeQuad({p.x, top, p.z}, {q.x, top, q.z}, {q.x, bottom, q.z}, {p.x, bottom, p.z}));
        if (clipper.Clockwise())
            surfaces.back().tri_indices = {{{2, 1, 0}}, {{3, 2, 0}}};
    }
    frame.Leave();
    FinishFlatPrimitive();
}
