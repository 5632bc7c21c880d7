#include "scene/Brush.h"

#include <algorithm>
#include <atomic>

#include "scene/BrushParts.h"
#include "scene/World.h"

namespace {

constexpr float NO_BOX = 1000000.0f; // where the search for a box starts
constexpr float THIN_AXIS = 1.0f;    // an axis below this extent
constexpr float WIDENED_AXIS = 8.0f; // gets this one
constexpr D3DVECTOR SHADE_WEIGHTS = {0.35f, 0.5f, 0.75f};

D3DVECTOR HalfExtents(const Box& box) { return (BoxMax(box) - BoxMin(box)) * 0.5f; }

// Adds the unnormalised normal of each triangle to its vertices, so that larger ones weigh more. True if an index was
// beyond the vertices: it then counts as 0.
bool SumNormals(Surface& s) {
    s.normal.assign(s.vertices.size(), {});
    if (s.vertices.empty())
        return !s.tri_indices.empty();
    bool broken = false;
    for (const TRIANGLE& triangle : s.tri_indices) {
        size_t corner[3];
        for (size_t k = 0; k < 3; ++k) {
            const bool out_of_range = triangle.i[k] >= s.vertices.size();
            corner[k] = out_of_range ? 0 : triangle.i[k];
            broken |= out_of_range;
        }
        const D3DVECTOR& p0 = s.vertices[corner[0]];
        const D3DVECTOR face = CrossProduct(s.vertices[corner[1]] - p0, s.vertices[corner[2]] - p0);
        for (const size_t c : corner)
            s.normal[c] += face;
    }
    return broken;
}

} // namespace

Box MakeBox(const D3DVECTOR& min, const D3DVECTOR& max) {
    return {{{min.x, max.y, max.z},
             {max.x, max.y, max.z},
             {max.x, max.y, min.z},
             {min.x, max.y, min.z},
             {min.x, min.y, max.z},
             {max.x, min.y, max.z},
             {max.x, min.y, min.z},
             {min.x, min.y, min.z}}};
}

bool BoxesOverlap(const Box& a, const Box& b) {
    return s_math.BoxBoxIntersect(BoxMin(a), BoxMax(a), BoxMin(b), BoxMax(b));
}

Surface CopyFlatSurface(const Surface& s) {
    Surface copy;
    copy.vertices = s.vertices;
    copy.uv = s.uv;
    copy.lightmap_uv.resize(s.vertices.size());
    copy.diffuse = s.diffuse;
    copy.normal.resize(s.vertices.size());
    copy.tri_indices = s.tri_indices;
    copy.edge_indices = s.edge_indices;
    copy.texture = s.texture;
    return copy;
}

Surface CopyCurvedSurface(const Surface& s, bool custom) {
    Surface copy;
    if (custom) {
        copy = CopyFlatSurface(s);
        copy.normal = s.normal;
        copy.extra_diffuse = s.extra_diffuse;
    }
    copy.cp = s.cp;
    copy.cp_count = s.cp_count;
    copy.texture = s.texture;
    return copy;
}

uint64_t Brush::NextDrawnVersion() {
    static std::atomic<uint64_t> last = 0;
    return ++last;
}

Brush::Brush() { group_id = OBJECT_BRUSH; }

Brush::Brush(const BrushShape& shape) : Brush() {
    type = shape.type;
    name = shape.name;
    death_particle = shape.death_particle;
    energy = shape.energy;
    bbox = shape.bb;
    pivot = shape.pivot;
    SetCurveDetail(shape.curve_detail);
    ComputeBrushSpheres();
    SetColor(shape.color);
    is_selected = true;
    if (type == BT_PORTAL) {
        color = 0x00FF00;
        color_vector = {0, 1, 0, shape.color.a};
    } else if (type == BT_OCCLUDER) {
        color = 0xFFFF00;
        color_vector = {1, 1, 0, shape.color.a};
    }
    Build(shape);
}

Brush::Brush(const Brush& src) : Brush() { *this = src; }

void Brush::Build(const BrushShape& shape) {
    const uint32_t segments = std::min(shape.segment_count, MAX_SEGMENTS);
    switch (type) {
    case BT_RECTANGLE:
        CreateRect(shape.view);
        break;
    case BT_BOX:
    case BT_PORTAL:
    case BT_OCCLUDER:
        CreateBox();
        break;
    case BT_PYRAMID:
        CreatePyramid(shape.view, segments);
        break;
    case BT_PRISM:
        CreatePrism(shape.view, segments);
        break;
    case BT_PATCH:
        CreatePatch(shape.view, segments);
        break;
    case BT_CYLINDER:
        CreateCylinder(shape.view, segments);
        break;
    case BT_CONE:
        CreateCone(shape.view, segments);
        break;
    case BT_SFT_BLOCK:
        CreateSFTBlock(shape.view);
        break;
    case BT_Q_BLOCK:
        CreateQCylinder(shape.view);
        break;
    case BT_ELASTIC_BOX:
        CreateElasticBox(shape.view, segments);
        break;
    case BT_EXTRUDABLE:
        CreateExtrudable(shape.view, shape.ex_points);
        break;
    case BT_CUSTOM:
        CreateCustomBrush(shape.view, shape.custom);
        break;
    case BT_TERRAIN:
        break;
    }
}

Brush& Brush::operator=(const Brush& src) {
    if (this == &src)
        return *this;
    CopyProperties(src);
    surfaces.clear();
    for (const Surface& s : src.surfaces)
        surfaces.push_back(CopyFlatSurface(s));
    curved_surfaces.clear();
    for (const Surface& s : src.curved_surfaces)
        curved_surfaces.push_back(CopyCurvedSurface(s, IsCustom()));
    TesselateCurves();
    RecalcBBox();
    ComputeNormals();
    SurfaceLight();
    GenerateTextureSpaces();
    MapFans();
    is_selected = src.is_selected; // last: broken geometry selects the copy
    MarkDrawnChanged();
    return *this;
}

void Brush::CopyExactly(const Brush& src) {
    if (this == &src)
        return;
    CopyBase(src);
    CopyProperties(src);
    color = src.color;
    for (const bool curved : {false, true}) {
        std::vector<Surface>& copies = curved ? curved_surfaces : surfaces;
        const std::vector<Surface>& sources = curved ? src.curved_surfaces : src.surfaces;
        copies.clear();
        copies.resize(sources.size());
        for (size_t s = 0; s < sources.size(); ++s)
            copies[s].CopyShape(sources[s]);
    }
    is_selected = src.is_selected;
    MarkDrawnChanged();
}

void Brush::CopyProperties(const Brush& src) {
    type = src.type;
    name = src.name;
    death_particle = src.death_particle;
    energy = src.energy;
    weight = src.weight;
    properties = src.properties;
    elasticity = src.elasticity;
    static_friction = src.static_friction;
    dynamic_friction = src.dynamic_friction;
    time_scale = src.time_scale;
    rotation_factor = src.rotation_factor;
    mass = src.mass;
    coll_dmg = src.coll_dmg;
    touch_dmg = src.touch_dmg;
    link_action = src.link_action;
    bbox = src.bbox;
    pivot = src.pivot;
    bound_sphere = src.bound_sphere;
    bind_sphere = src.bind_sphere;
    SetColor(src.color_vector);
    index = src.index;
    CURVE_DETAIL = src.CURVE_DETAIL;
    CURVE_SEGMENTS = src.CURVE_SEGMENTS;
    CURVE_DELTA = src.CURVE_DELTA;
    selected_surface = src.selected_surface;
    selected_surface_curved = src.selected_surface_curved;
    terrain_vertex_size = src.terrain_vertex_size;
    light_list = src.light_list;
    custom_material_names = src.custom_material_names;
    is_hidden = src.is_hidden;
    is_frozen = src.is_frozen;
    assigned_to_cell = src.assigned_to_cell;
    tn_list.ClearList();
    physics_data = {};
    separated = assigned_to_render_group = multi_cell = false;
    render_group = -1;
    eye_counter = eye_counter_limit = 0;
}

void Brush::InitFromCopy(const BaseObject& src) {
    BaseObject::InitFromCopy(src);
    if (const auto* brush = dynamic_cast<const Brush*>(&src))
        *this = *brush;
}

std::unique_ptr<BaseObject> Brush::GetCopy() const {
    auto copy = std::make_unique<Brush>(*this);
    copy->CopyBase(*this);
    return copy;
}

void Brush::BBoxFromVertices(Box& box) {
    D3DVECTOR min{NO_BOX, NO_BOX, NO_BOX}, max{-NO_BOX, -NO_BOX, -NO_BOX};
    ForEachSurface([&](const Surface& s, int, bool) {
        for (const D3DVECTOR& v : s.vertices) {
            min = {std::min(min.x, v.x), std::min(min.y, v.y), std::min(min.z, v.z)};
            max = {std::max(max.x, v.x), std::max(max.y, v.y), std::max(max.z, v.z)};
        }
    });
    if (max.x - min.x < THIN_AXIS)
        max.x = min.x + WIDENED_AXIS;
    if (max.y - min.y < THIN_AXIS)
        min.y = max.y - WIDENED_AXIS;
    if (max.z - min.z < THIN_AXIS)
        min.z = max.z - WIDENED_AXIS;
    box = MakeBox(min, max);
    ComputeBrushSpheres();
}

void Brush::PivotFromBBox(const Box& box, D3DVECTOR& p) {
    p = {box[0].x + (box[1].x - box[0].x) * 0.5f, box[0].y + (box[4].y - box[0].y) * 0.5f,
         box[0].z + (box[3].z - box[0].z) * 0.5f};
}

void Brush::RecalcBBox() {
    BBoxFromVertices(bbox);
    PivotFromBBox(bbox, pivot);
    MarkDrawnChanged();
}

void Brush::ComputeBrushSpheres() {
    const D3DVECTOR half = HalfExtents(bbox);
    bound_sphere = -Magnitude(half);
    bind_sphere = -std::min({half.x, half.y, half.z});
}

void Brush::ComputeNormals() {
    MarkDrawnChanged();
    ForEachSurface([this](Surface& s, int, bool curved) {
        if (SumNormals(s) && !curved)
            is_selected = true;
        for (D3DVECTOR& n : s.normal) {
            const float length = Magnitude(n);
            if (length > 0) // a vertex without area keeps no normal
                n = n / length;
        }
    });
}

void Brush::SurfaceLight() {
    MarkDrawnChanged();
    ForEachSurface([this](Surface& s, int, bool) {
        s.diffuse.resize(s.normal.size());
        for (size_t i = 0; i < s.normal.size(); ++i) {
            const D3DVECTOR& n = s.normal[i];
            const float shade = std::min(SHADE_WEIGHTS.x * std::fabs(n.x) + SHADE_WEIGHTS.y * std::fabs(n.y) +
                                             SHADE_WEIGHTS.z * std::fabs(n.z),
                                         1.0f);
            s.diffuse[i] = PackColor({color_vector.r * shade, color_vector.g * shade, color_vector.b * shade, 0});
        }
    });
}

void Brush::SetColor(const D3DCOLORVALUE& c) {
    color_vector = c;
    color = PackColor(c);
    MarkDrawnChanged();
}

void Brush::ChangeColor(const D3DCOLORVALUE& c) {
    SetColor(c);
    SurfaceLight();
}

void Brush::Initialize(int material_count) {
    ForEachSurface([material_count](Surface& s, int, bool) {
        if (s.texture.index < 0 || s.texture.index >= material_count)
            s.texture.index = 0;
    });
    MarkDrawnChanged();
}

bool Brush::IsTransparent(const World& world) const {
    if (type == BT_PORTAL)
        return false;
    bool transparent = false;
    ForEachSurface([&](const Surface& s, int, bool) {
        transparent = transparent || (s.HasMaterial() && world.IsMaterialTransparent(s.texture.index));
    });
    return transparent;
}
