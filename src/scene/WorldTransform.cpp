// Moving, scaling, turning and reshaping the selection.
#include "foundation/WholeNumber.h"
#include "render/Matrix.h"
#include "scene/EditMatrices.h"
#include "scene/FrontEnd.h"
#include "scene/World.h"

namespace {

constexpr int X = 0, Y = 1, Z = 2;
// The axes that the views show across and upwards.
constexpr int ACROSS[] = {X, X, Z}, UPWARDS[] = {Z, Y, Y};
constexpr int VIEWS = 3;
constexpr int RANGE_STEP = 32; // world units
constexpr float HALF_TURN = 180.0f;

template <class Fn>
void ForEachSelectedBrush(World& world, Fn&& fn) {
    for (const int b : world.brush_selection)
        fn(*world.brush[static_cast<size_t>(b)]);
}

void TransformSelectedEntities(World& world, const D3DMATRIX& m) {
    for (const int e : world.entity_selection) {
        Entity& entity = *world.entity[static_cast<size_t>(e)];
        D3DVECTOR position;
        crMTransform(m, entity.position, position);
        entity.SetPosition(position);
    }
}

void Mirror(World& world, int axis) {
    const D3DMATRIX mirror = MirrorMatrix(axis, GetFrontEnd().SelectionPivot());
    ForEachSelectedBrush(world, [&mirror](Brush& b) {
        b.Transform(mirror, true);
        b.FlipNormals(); // a mirror turns the triangles inside out
    });
    TransformSelectedEntities(world, mirror);
}

} // namespace

void World::MoveBrush(const D3DVECTOR& move) {
    const bool texture_lock = GetFrontEnd().IsTextureLocked();
    ForEachSelectedBrush(*this, [&](Brush& b) { b.Move(move, texture_lock); });
}

void World::ScaleBrush(const Box& new_box, const Box& old_box) {
    ForEachSelectedBrush(*this, [&](Brush& b) { b.Scale(new_box, old_box); });
}

void World::RotateBrush(float angle, int view) {
    const D3DVECTOR pivot = GetFrontEnd().SelectionPivot();
    const bool texture_lock = GetFrontEnd().IsTextureLocked();
    ForEachSelectedBrush(*this, [&](Brush& b) { b.Rotate(angle, view, pivot, texture_lock); });
    TransformSelectedEntities(*this, RotationMatrix(angle, view, pivot));

    if (entity_selection.GetItemCount() != 1 || brush_selection.GetItemCount() != 0)
        return;
    Entity& single = *entity[static_cast<size_t>(entity_selection.GetItem(0))];
    const int degrees = WholeNumber(angle * HALF_TURN / PI);
    const int step = angle < 0 ? -RANGE_STEP : RANGE_STEP;
    if (GetFrontEnd().IsShiftDown()) {
        if (!single.AddRange(step))
            single.AddOrientation(degrees);
    } else if (!single.AddOrientation(degrees))
        single.AddRange(step);
}

void World::ShearBrush(const Box& new_box, const Box& old_box, int view, int active_shear_point) {
    const D3DMATRIX shear = ShearMatrix(new_box, old_box, view, active_shear_point);
    ForEachSelectedBrush(*this, [&](Brush& b) { b.Transform(shear, true); });
}

void World::FlipHorizontally(int view) {
    if (view >= 0 && view < VIEWS)
        Mirror(*this, ACROSS[view]);
    GetFrontEnd().RedrawAllViews();
}

void World::FlipVertically(int view) {
    if (view >= 0 && view < VIEWS)
        Mirror(*this, UPWARDS[view]);
    GetFrontEnd().RedrawAllViews();
}

void World::FlipNormals() {
    ForEachSelectedBrush(*this, [](Brush& b) { b.FlipNormals(); });
    GetFrontEnd().RedrawAllViews();
}

void World::AlignVertices() {
    ForEachSelectedBrush(*this, [](Brush& b) { b.AlignVertices(); });
    GetFrontEnd().RedrawAllViews();
}
