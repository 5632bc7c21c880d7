// The terrain tool of the perspective view.
#include <algorithm>
#include <cmath>

#include "editor/Interface.h"

namespace {

constexpr float RADIUS_NOTCH = 8.0f, INTENSITY_NOTCH = 1.0f;
constexpr float LARGEST_RADIUS = 1000000.0f, LARGEST_INTENSITY = 100000.0f;
constexpr int MOST_STREWN = 30000; // copies an application

float Held(float value, float least, float most, float fallback) {
    return std::isfinite(value) ? std::clamp(value, least, most) : fallback;
}

} // namespace

void CInterface::EnableTerrainModifier(bool enable) {
    if (enable == (editor_state == ES_TERRAIN))
        return;
    if (!enable) {
        Cancel();
        return;
    }
    FinishDrag();
    SetEditorState(ES_TERRAIN);
    ChangeCursor();
    RedrawView(VIEW_PERSPECTIVE);
    Tell(&EditorListener::TerrainToolChanged);
}

void CInterface::ModifyTerrain(POINT point, bool up) {
    world->BeginTerrainStroke();
    SetMatrices(VIEW_PERSPECTIVE);
    world->ModifyTerrain(terrain_modifier, point, EyePosition(), up);
}

void CInterface::EndTerrainStroke() {
    if (world)
        world->EndTerrainStroke();
}

void CInterface::TurnTerrainWheel(bool more, bool of_intensity) {
    float& value = of_intensity ? terrain_modifier.intensity : terrain_modifier.radius;
    const float notch = of_intensity ? INTENSITY_NOTCH : RADIUS_NOTCH;
    value = std::max(value + (more ? notch : -notch), of_intensity ? LEAST_TERRAIN_INTENSITY : LEAST_TERRAIN_RADIUS);
    SetTerrainModifier(terrain_modifier);
}

void CInterface::SetTerrainModifier(const TERRAIN_MODIFIER& changed) {
    TERRAIN_MODIFIER held = changed;
    held.type = std::clamp<int>(held.type, TERRAIN_RAISE, TERRAIN_DECORATE);
    held.radius = Held(held.radius, LEAST_TERRAIN_RADIUS, LARGEST_RADIUS, terrain_modifier.radius);
    held.intensity = Held(held.intensity, 0, LARGEST_INTENSITY, terrain_modifier.intensity);
    held.density = std::clamp(held.density, 0, MOST_STREWN);
    terrain_modifier = held;
    RedrawView(VIEW_PERSPECTIVE);
    Tell(&EditorListener::TerrainToolChanged);
}
