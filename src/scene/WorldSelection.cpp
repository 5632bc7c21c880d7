// What is selected and what is hidden.
#include <algorithm>

#include "scene/FrontEnd.h"
#include "scene/World.h"

namespace {
constexpr float NO_BOX = 1000000.0f; // where the search for a box starts
} // namespace

void World::ClearSelection() {
    for (const int b : brush_selection)
        brush[static_cast<size_t>(b)]->is_selected = false;
    brush_selection.ClearList();
    entity_selection.ClearList();
    group_selection.ClearList();
    if (selected_surface_brush != -1)
        DeselectSurface();
    first_selected_id = NO_OBJECT_ID;
    GetFrontEnd().SelectionChanged();
}

bool World::SelectAll() {
    for (int b = 0; b < GetBrushCount(); ++b)
        SetBrushSelection(b, true);
    for (int e = 0; e < GetEntityCount(); ++e)
        entity_selection.AddItem(e);
    if (!brush.empty())
        first_selected_id = brush.front()->GetObjectID();
    if (!entity.empty())
        first_selected_id = entity.front()->GetObjectID();
    GetFrontEnd().SelectionChanged();
    return !brush.empty();
}

bool World::InvertSelection() {
    Selection brushes, entities;
    for (int b = 0; b < GetBrushCount(); ++b) {
        Brush& inverted = *brush[static_cast<size_t>(b)];
        inverted.is_selected = brush_selection.TestItem(b) == -1 && !inverted.is_hidden;
        if (inverted.is_selected)
            brushes.AddItemMulti(b);
    }
    for (int e = 0; e < GetEntityCount(); ++e)
        if (entity_selection.TestItem(e) == -1 && !entity[static_cast<size_t>(e)]->IsHidden())
            entities.AddItemMulti(e);
    brush_selection = std::move(brushes);
    entity_selection = std::move(entities);
    RefreshFirstSelected();
    GetFrontEnd().SelectionChanged();
    return brush_selection.GetItemCount() > 0;
}

void World::SetBrushSelection(int i, bool state) {
    if (i < 0 || i >= GetBrushCount())
        return;
    if (state)
        brush_selection.AddItem(i);
    else
        brush_selection.RemoveItem(i);
    brush[static_cast<size_t>(i)]->is_selected = state;
}

bool World::IsEntitySelected(uint32_t id) const {
    const int e = id == NO_OBJECT_ID ? -1 : GetEntityIndex(GetEntityFromID(id));
    return e != -1 && entity_selection.TestItem(e) != -1;
}

bool World::IsObjectSelected(uint32_t id) const {
    const Brush* b = id == NO_OBJECT_ID ? nullptr : GetBrushFromID(id);
    return b ? b->is_selected && brush_selection.TestItem(GetBrushIndex(b)) != -1 : IsEntitySelected(id);
}

void World::RefreshFirstSelected() {
    if (IsObjectSelected(first_selected_id))
        return;
    const BaseObject* first = nullptr;
    if (brush_selection.GetItemCount() > 0)
        first = brush[static_cast<size_t>(brush_selection.GetItem(0))].get();
    else if (entity_selection.GetItemCount() > 0)
        first = entity[static_cast<size_t>(entity_selection.GetItem(0))].get();
    first_selected_id = first ? first->GetObjectID() : NO_OBJECT_ID;
}

void World::ComputeSelectionBox(Box& box) const {
    if (!IsSomethingSelected())
        return;
    D3DVECTOR min{NO_BOX, NO_BOX, NO_BOX}, max{-NO_BOX, -NO_BOX, -NO_BOX};
    const auto include = [&](const D3DVECTOR& p) {
        min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
        max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
    };
    for (const int b : brush_selection)
        for (const D3DVECTOR& corner : brush[static_cast<size_t>(b)]->bbox)
            include(corner);
    for (const int e : entity_selection)
        include(entity[static_cast<size_t>(e)]->position);
    box = MakeBox(min, max);
}

void World::HideSelected() {
    for (const int b : brush_selection) {
        brush[static_cast<size_t>(b)]->is_hidden = true;
        brush[static_cast<size_t>(b)]->is_selected = false;
    }
    for (const int e : entity_selection)
        entity[static_cast<size_t>(e)]->is_hidden = true;
    brush_selection.ClearList();
    entity_selection.ClearList();
    RefreshFirstSelected();
    GetFrontEnd().SelectionChanged();
}

void World::HideUnselected() {
    for (int b = 0; b < GetBrushCount(); ++b)
        if (brush_selection.TestItem(b) == -1)
            brush[static_cast<size_t>(b)]->is_hidden = true;
    for (int e = 0; e < GetEntityCount(); ++e)
        if (entity_selection.TestItem(e) == -1)
            entity[static_cast<size_t>(e)]->is_hidden = true;
}

void World::UnhideAll() {
    for (const auto& b : brush)
        b->is_hidden = false;
    for (const auto& e : entity)
        e->is_hidden = false;
}

void World::BoxHide(const Box& box) {
    brush_selection.ClearList();
    for (const auto& b : brush)
        b->is_hidden = !BoxesOverlap(b->bbox, box);
    entity_selection.ClearList();
    for (const auto& e : entity)
        e->is_hidden_by_clipbox = !s_math.PointInBox(BoxMin(box), BoxMax(box), e->position);
    RefreshFirstSelected();
    GetFrontEnd().SelectionChanged();
}

void World::ChangeRenderMode() {
    constexpr int RENDER_MODES = 3;
    render_mode = (render_mode + 1) % RENDER_MODES;
}
