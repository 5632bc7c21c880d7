#include "drawing/BrushRecords.h"

#include "drawing/DrawingScope.h"
#include "scene/World.h"

namespace {

// The brushes that are asked about in a while are fetched meanwhile.
constexpr size_t AHEAD = 6;

void Prefetch(const Brush& brush) {
    const auto fetch = [](const void* place) { __builtin_prefetch(place); };
    fetch(&brush.path);
    fetch(&brush.target_path);
    fetch(&brush.type);
    fetch(&brush.bbox.front());
    fetch(&brush.bbox.back());
    fetch(&brush.color);
    fetch(&brush.selected_surface);
    fetch(&brush.decal_list);
    fetch(&brush.is_selected);
    fetch(&brush.drawn_version);
}

// Also that no sum of its coordinates overflows, so that the outermost corner along a direction is the outermost.
bool IsUpright(const Box& box) {
    constexpr float FARTHEST = 1e9f;
    const D3DVECTOR &min = BoxMin(box), &max = BoxMax(box);
    const auto reaches = [](float from, float to) { return from <= to && from >= -FARTHEST && to <= FARTHEST; };
    return reaches(min.x, max.x) && reaches(min.y, max.y) && reaches(min.z, max.z) && box == MakeBox(min, max);
}

bool HasPaths(const BaseObject& object) { return object.path.GetCount() + object.target_path.GetCount() > 0; }

} // namespace

const std::vector<BrushRecord>& BrushRecords::Of(const World& world) {
    const uint64_t current = DrawingScope::Current();
    if (current == 0 || current != scope || records.size() != world.brush.size())
        Take(world);
    scope = current;
    return records;
}

void BrushRecords::Take(const World& world) {
    last_take = ++takes;
    std::vector<bool> rows;
    for (const MaterialRow& row : world.material)
        rows.push_back(row.transparent);
    const bool rows_changed = rows != transparent_rows;
    transparent_rows = std::move(rows);
    const size_t count = world.brush.size();
    records.resize(count);
    for (size_t i = 0; i < count; ++i) {
        if (i + AHEAD < count)
            Prefetch(*world.brush[i + AHEAD]);
        const Brush& b = *world.brush[i];
        BrushRecord& r = records[i];
        if (rows_changed || r.version != b.drawn_version || r.type != b.type)
            r.transparent = b.IsTransparent(world);
        r.version = b.drawn_version;
        r.min = BoxMin(b.bbox), r.max = BoxMax(b.bbox);
        r.upright = IsUpright(b.bbox);
        r.color = b.color;
        r.type = b.type;
        r.portal_or_occluder = b.IsPortalOrOccluder();
        r.selected_surface = b.selected_surface;
        r.selected_surface_curved = b.selected_surface_curved;
        r.hidden = b.is_hidden;
        r.selected = b.is_selected;
        r.has_paths = HasPaths(b);
        r.has_decals = !b.decal_list.empty();
    }
}

BoxCull::BoxCull(const PLANE* clip_planes) {
    for (size_t i = 0; i < std::size(TESTED); ++i)
        planes[i] = clip_planes[TESTED[i]];
}

bool BoxCull::Hides(const D3DVECTOR& min, const D3DVECTOR& max) const {
    for (const PLANE& plane : planes) { // none of its corners is inside if the outermost is not
        const D3DVECTOR& n = plane.normal;
        if (!plane.is_inside({n.x < 0 ? min.x : max.x, n.y < 0 ? min.y : max.y, n.z < 0 ? min.z : max.z}))
            return true;
    }
    return false;
}
