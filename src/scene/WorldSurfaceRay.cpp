// Surfaces by a ray from the camera.
#include "render/Matrix.h"
#include "scene/FrontEnd.h"
#include "scene/World.h"

namespace {

constexpr float RAY_LENGTH = 1000000.0f; // hits beyond do not count

struct SurfaceHit {
    int brush = -1, surface = -1;
    bool curved = false;

    bool Found() const { return brush != -1; }
    Surface& In(const World& world) const {
        Brush& b = *world.brush[static_cast<size_t>(brush)];
        return (curved ? b.curved_surfaces : b.surfaces)[static_cast<size_t>(surface)];
    }
};

// The nearest surface under a pixel of the current view.
SurfaceHit CastRay(const World& world, POINT point, const D3DVECTOR& camera_position) {
    PLANE planes[6];
    crMUpdate();
    crGetClipPlanes(planes);
    const D3DVECTOR direction = s_math.GetSelectionRay(point, camera_position);
    SurfaceHit nearest;
    float p = RAY_LENGTH;
    for (int i = 0; i < world.GetBrushCount(); ++i) {
        const Brush& b = *world.brush[static_cast<size_t>(i)];
        if (b.is_hidden || !b.Visible(planes))
            continue;
        bool curved = false;
        const int surface = b.TestSurfaceSelection(camera_position, direction, p, curved);
        if (surface != -1)
            nearest = {i, surface, curved};
    }
    return nearest;
}

} // namespace

void World::SurfaceSelection(POINT point, const D3DVECTOR& camera_position) {
    ClearSelection(); // the selected surface too
    const SurfaceHit hit = CastRay(*this, point, camera_position);
    if (hit.Found()) {
        selected_surface_brush = hit.brush;
        Brush& b = *brush[static_cast<size_t>(hit.brush)];
        b.selected_surface = hit.surface;
        b.selected_surface_curved = hit.curved;
    }
    GetFrontEnd().SurfaceSelectionChanged();
}

void World::PickTexture(POINT point, const D3DVECTOR& camera_position) {
    const SurfaceHit hit = CastRay(*this, point, camera_position);
    if (!hit.Found())
        return;
    const int row = hit.In(*this).texture.index;
    if (row <= 0 || row >= GetMaterialCount())
        return;
    const MaterialRow& picked = material[static_cast<size_t>(row)];
    GetFrontEnd().MaterialPicked(picked.material_class, picked.material_name);
}

void World::CopySurfaceTexture(POINT point, const D3DVECTOR& camera_position) {
    const Surface* selected = SelectedSurface();
    if (!selected)
        return;
    const SurfaceHit hit = CastRay(*this, point, camera_position);
    if (hit.Found()) {
        hit.In(*this).texture = selected->texture;
        brush[static_cast<size_t>(hit.brush)]->Remap(hit.surface, hit.curved);
    }
    GetFrontEnd().RedrawView(VIEW_PERSPECTIVE);
    GetFrontEnd().MarkFileAsDirty(true);
}

bool World::NearestHit(const D3DVECTOR& position, const D3DVECTOR& direction, D3DVECTOR& hit) const {
    float p = RAY_LENGTH;
    bool found = false;
    for (const auto& b : brush)
        if (!b->is_hidden)
            found |= b->TestSolidSelection(position, direction, p, &hit);
    return found;
}
