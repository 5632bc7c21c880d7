#include "pages/SmallDialogs.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "definitions/Numbers.h"
#include "editor/Interface.h"
#include "foundation/Strings.h"

namespace {

// Asks for one whole number.
std::optional<int> AskNumber(const char* title, const char* label, int value, int least, int most, size_t length) {
    FormQuestion question{title, {{}}};
    FormField& field = question.fields[0];
    field.label = label;
    field.kind = FormField::Number;
    field.value = Format("%d", value);
    field.least = least;
    field.most = most;
    field.max_length = length;
    if (!GetDesktop().AskForm(question))
        return std::nullopt;
    return std::clamp(ParseInt(question.fields[0].value), least, most);
}

bool HasSegments(BrushType type) {
    return type == BT_PYRAMID || type == BT_PRISM || type == BT_PATCH || type == BT_CYLINDER || type == BT_CONE ||
           type == BT_ELASTIC_BOX;
}

// The points that a surface is built from.
const std::vector<D3DVECTOR>& Points(const Surface& s) { return s.cp.empty() ? s.vertices : s.cp; }

D3DVECTOR MeanNormal(const Surface& s) {
    D3DVECTOR sum;
    for (const D3DVECTOR& n : s.normal)
        sum += n;
    return NormalizeOrZero(sum);
}

// The view in which the brush was drawn, as far as its shape tells: the one that looks at its first surface, the base.
uint32_t ViewOf(const Brush& b) {
    const std::vector<Surface>& list = b.surfaces.empty() ? b.curved_surfaces : b.surfaces;
    const D3DVECTOR n = list.empty() ? D3DVECTOR{} : MeanNormal(list.front());
    const float x = std::fabs(n.x), y = std::fabs(n.y), z = std::fabs(n.z);
    return x > y && x > z ? VIEW_LEFT : z > y ? VIEW_FRONT : VIEW_TOP;
}

struct Extent {
    D3DVECTOR least, most;
};

Extent ExtentOf(const Brush& b) {
    Extent extent;
    bool first = true;
    b.ForEachSurface([&](const Surface& s, int, bool) {
        for (const D3DVECTOR& p : Points(s)) {
            for (int axis = 0; axis < 3; ++axis) {
                float &least = Component(extent.least, axis), &most = Component(extent.most, axis);
                least = first ? Component(p, axis) : std::min(least, Component(p, axis));
                most = first ? Component(p, axis) : std::max(most, Component(p, axis));
            }
            first = false;
        }
    });
    return extent;
}

Brush Built(BrushShape shape, const D3DVECTOR& least, const D3DVECTOR& most, uint32_t segments) {
    shape.bb = MakeBox(least, most);
    Brush::PivotFromBBox(shape.bb, shape.pivot);
    shape.segment_count = segments;
    return Brush(shape);
}

// The segments by which a brush was built, where they shape its extent: a ring of few points does not fill its box.
uint32_t SegmentsOf(const Brush& b) {
    const auto count = static_cast<uint32_t>(b.surfaces.size());
    return b.type == BT_PRISM && count > 2 ? count - 2 : b.type == BT_PYRAMID && count > 1 ? count - 1 : 1;
}

// The box in which the brush was drawn, from what a brush drawn in its extent leaves free of that.
void FindDrawnBox(const Brush& b, const BrushShape& shape, D3DVECTOR& least, D3DVECTOR& most) {
    constexpr float FLAT = 0.01f;
    const Extent wanted = ExtentOf(b);
    least = BoxMin(b.bbox);
    most = BoxMax(b.bbox);
    const Extent trial = ExtentOf(Built(shape, least, most, SegmentsOf(b)));
    for (int axis = 0; axis < 3; ++axis) {
        const float low = Component(wanted.least, axis), high = Component(wanted.most, axis);
        const float trial_low = Component(trial.least, axis), trial_high = Component(trial.most, axis);
        float &from = Component(least, axis), &to = Component(most, axis);
        const float scale = trial_high - trial_low > FLAT ? (high - low) / (trial_high - trial_low) : 1.0f;
        from = low - (trial_low - from) * scale;
        to = high + (to - trial_high) * scale;
    }
}

// Each new surface takes the material and mapping of the old one that faced its way best.
void TakeMaterials(std::vector<Surface>& rebuilt, const std::vector<Surface>& old) {
    for (Surface& s : rebuilt) {
        const D3DVECTOR normal = MeanNormal(s);
        const Surface* best = nullptr;
        float best_match = -2;
        for (const Surface& candidate : old) {
            const float match = DotProduct(normal, MeanNormal(candidate));
            if (candidate.cp_count == s.cp_count && match > best_match) {
                best_match = match;
                best = &candidate;
            }
        }
        for (size_t i = 0; !best && i < old.size(); ++i) // of another kind
            best = &old[i];
        if (best)
            s.texture = best->texture;
    }
}

} // namespace

bool AskRotationAngle(CInterface& editor) {
    const auto angle = AskNumber("Rotation angle", "Rotation angle:", editor.settings.rotation_angle, 0, 359, 3);
    if (!angle)
        return false;
    editor.settings.rotation_angle = *angle;
    editor.SetInfoText();
    editor.Tell(&EditorListener::SettingsChanged);
    return true;
}

bool AskSegments(CInterface& editor) {
    const int now = static_cast<int>(editor.active_brush_segments);
    const auto segments = AskNumber("Segments", "Segments:", now, 0, MAX_SEGMENTS, 8);
    if (!segments)
        return false;
    if (*segments != now) {
        editor.active_brush_segments = static_cast<uint32_t>(*segments);
        RebuildBrush(editor);
    }
    return true;
}

std::optional<int> AskCopyCount() { return AskNumber("Copy", "Copy count:", 1, 1, 30000, 5); }

std::optional<uint32_t> AskObjectID() {
    FormQuestion question{"Get object ID", {{}}};
    question.fields[0].label = "Object id:";
    question.fields[0].max_length = 10;
    if (!GetDesktop().AskForm(question))
        return std::nullopt;
    const std::string& text = question.fields[0].value;
    uint32_t id = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), id).ec != std::errc{})
        return std::nullopt;
    return id;
}

bool RebuildBrush(CInterface& editor) {
    World& world = *editor.world;
    if (world.brush_selection.GetItemCount() != 1)
        return false;
    Brush& b = *world.brush[static_cast<size_t>(world.brush_selection.GetItem(0))];
    if (!HasSegments(b.type))
        return false;
    BrushShape shape;
    shape.type = b.type;
    shape.color = b.color_vector;
    shape.view = ViewOf(b);
    shape.curve_detail = world.curve_detail;
    D3DVECTOR least, most;
    FindDrawnBox(b, shape, least, most);
    Brush rebuilt = Built(shape, least, most, editor.active_brush_segments);
    if (rebuilt.surfaces.empty() && rebuilt.curved_surfaces.empty())
        return false; // too few segments for a body
    ChangeRecord record(world, "Rebuild a brush.");
    TakeMaterials(rebuilt.surfaces, b.surfaces);
    TakeMaterials(rebuilt.curved_surfaces, b.curved_surfaces);
    world.DeselectSurface();
    b.surfaces = std::move(rebuilt.surfaces);
    b.curved_surfaces = std::move(rebuilt.curved_surfaces);
    b.ChangeCurveDetail(world.curve_detail);
    b.RecalcBBox();
    b.ComputeNormals();
    b.GenerateTextureSpaces();
    b.RemapAll();
    b.SurfaceLight();
    b.ReplaceDecals();
    editor.RefreshSelectionBox();
    editor.MarkDirty();
    editor.RedrawAllViews();
    return true;
}
