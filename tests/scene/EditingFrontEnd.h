// A front end whose answers a test sets, and which counts what it is told. It is current for its lifetime.
#pragma once

#include <string>
#include <vector>

#include "scene/FrontEnd.h"
#include "scene/World.h"

class EditingFrontEnd : public FrontEnd {
public:
    EditingFrontEnd() { SetFrontEnd(this); }
    ~EditingFrontEnd() override { SetFrontEnd(nullptr); }

    void MarkFileAsDirty(bool) override { ++dirty; }
    void RedrawView(int view) override { redrawn_views.push_back(view); }
    void RedrawAllViews() override { ++redraws; }
    void SelectionChanged() override { ++selections; }
    void SurfaceSelectionChanged() override { ++surface_selections; }
    void MaterialPicked(const std::string& material_class, const std::string& material_name) override {
        picked.push_back(material_class + "\\" + material_name);
    }
    bool IsTextureLocked() const override { return texture_locked; }
    bool IsShiftDown() const override { return shift_down; }
    D3DVECTOR SelectionPivot() const override { return pivot; }

    int dirty = 0, redraws = 0, selections = 0, surface_selections = 0;
    std::vector<int> redrawn_views;
    std::vector<std::string> picked;
    bool texture_locked = true, shift_down = false;
    D3DVECTOR pivot;
};

// Adds a brush with an id, selected.
inline Brush& AddSelected(World& world, std::unique_ptr<Brush> brush) {
    Brush& added = *world.AddBrush(std::move(brush));
    added.GenerateNewObjectID();
    world.SetBrushSelection(added.index, true);
    return added;
}

inline Entity& AddSelectedEntity(World& world, const D3DVECTOR& position = {}) {
    auto entity = std::make_unique<Entity>();
    entity->position = position;
    Entity& added = *world.AddEntity(std::move(entity));
    added.GenerateNewObjectID();
    world.entity_selection.AddItem(world.GetEntityCount() - 1);
    return added;
}
