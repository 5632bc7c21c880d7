// A scene as text, bit by bit and by ids, so that two states of it can be compared whatever the order of the tables.
#pragma once

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "foundation/Strings.h"
#include "scene/EditingFrontEnd.h"
#include "scene/World.h"

// A front end with the settings of undo, which keeps what undo tells it.
class UndoFrontEnd : public EditingFrontEnd {
public:
    int UndoStates() const override { return undo_states; }
    bool IsFullUndo() const override { return full_undo; }
    void SelectionRestored(bool something) override { restored.push_back(something); }
    void SetLastEntityPosition(const D3DVECTOR& position) override { last_position = position; }
    void EntityTypesChanged() override { ++entity_types; }
    void CountsChanged() override { ++counts; }
    void RefreshSelectionBox() override { ++boxes; }

    int undo_states = 1000, entity_types = 0, counts = 0, boxes = 0;
    bool full_undo = false;
    std::vector<bool> restored;
    D3DVECTOR last_position;
};

struct SceneState {
    std::map<uint32_t, std::string> objects;
    std::vector<std::vector<uint32_t>> groups;
    std::set<uint32_t> selection;
    bool operator==(const SceneState&) const = default;
};

class StateWriter {
public:
    StateWriter(const World& written, bool with_mapping) : world(written), mapping(with_mapping) {}

    std::string Text(const Brush& b) {
        text.clear();
        Links(b);
        text += Format("%d %s %s %u %u %d h%d f%d ", b.type, b.name.c_str(), b.death_particle.c_str(), b.properties,
                       b.color, b.link_action, b.is_hidden, b.is_frozen);
        for (const float f : {b.mass, b.elasticity, b.coll_dmg})
            Add(f);
        Add(b.bbox[1]), Add(b.bbox[7]), Add(b.pivot);
        b.ForEachSurface([this](const Surface& s, int, bool) { Write(s); });
        std::multiset<uint32_t> decals; // each cut anew, from the end
        for (const auto& decal : b.decal_list)
            decals.insert(decal->id);
        for (const uint32_t id : decals)
            text += Format(" d%u", id);
        return text;
    }
    std::string Text(const Entity& e) {
        text.clear();
        Links(e);
        text += Format("%s %s %s h%d%d p%u ", e.name.c_str(), e.str_type.c_str(), e.variable_name.c_str(), e.is_hidden,
                       e.is_hidden_by_clipbox, e.path_parent_id);
        Add(e.position);
        for (const EntityParameter& p : e.parameter) {
            text += Format("%s=%s %d ", p.name.c_str(), p.p_text.c_str(), p.p_int);
            Add(p.p_float);
        }
        return text;
    }

private:
    void Add(float f) { text += Format("%a ", static_cast<double>(f)); }
    void Add(const D3DVECTOR& v) { Add(v.x), Add(v.y), Add(v.z); }
    void Links(const BaseObject& object) {
        for (const auto* list : {&object.linked_objects, &object.path, &object.target_path}) {
            text += ":";
            for (const uint32_t id : *list)
                text += Format("%u ", id);
        }
    }
    void Write(const Surface& s) {
        for (const D3DVECTOR& v : s.vertices)
            Add(v);
        for (const D3DVECTOR& v : s.cp)
            Add(v);
        for (const TRIANGLE& t : s.tri_indices)
            text += Format("%d %d %d ", t.i[0], t.i[1], t.i[2]);
        if (!mapping)
            return;
        for (const D3DVECTOR& v : s.normal)
            Add(v);
        for (const UVVector& uv : s.uv)
            Add(uv.u), Add(uv.v);
        const TEX_INFO& t = s.texture;
        for (const float f : {t.shift.u, t.shift.v, t.scale.u, t.scale.v, t.size.u, t.size.v, t.rotation})
            Add(f);
        Add(s.texture_space.ts_s), Add(s.texture_space.ts_x), Add(s.texture_space.ts_y);
        text += Format("%d%d%d%d ", t.flip_u, t.flip_v, t.locked, t.fitted);
        text += t.index > 0 && t.index < world.GetMaterialCount()
                    ? world.material[static_cast<size_t>(t.index)].material_name
                    : "none";
    }

    const World& world;
    bool mapping;
    std::string text;
};

// mapping: with normals and all that belongs to textures.
inline SceneState StateOf(const World& world, bool mapping = true) {
    SceneState state;
    StateWriter writer(world, mapping);
    for (const auto& b : world.brush)
        state.objects[b->GetObjectID()] = writer.Text(*b);
    for (const auto& e : world.entity)
        state.objects[e->GetObjectID()] = writer.Text(*e);
    for (const ObjectGroupLists& g : world.group) {
        std::vector<uint32_t>& ids = state.groups.emplace_back();
        for (const int b : g.brushes)
            ids.push_back(world.brush[static_cast<size_t>(b)]->GetObjectID());
        for (const int e : g.entities)
            ids.push_back(world.entity[static_cast<size_t>(e)]->GetObjectID());
    }
    for (const int b : world.brush_selection)
        state.selection.insert(world.brush[static_cast<size_t>(b)]->GetObjectID());
    for (const int e : world.entity_selection)
        state.selection.insert(world.entity[static_cast<size_t>(e)]->GetObjectID());
    return state;
}

// Objects and groups alone, without what the selection is.
inline SceneState WithoutSelection(SceneState state) {
    state.selection.clear();
    return state;
}

// What must hold of every scene at all times. Empty if it does, else what does not.
inline std::string BrokenRule(const World& world) {
    for (int b = 0; b < world.GetBrushCount(); ++b)
        if (world.brush[static_cast<size_t>(b)]->is_selected != (world.brush_selection.TestItem(b) != -1))
            return Format("brush %d is selected or not against the selection", b);
    for (const int b : world.brush_selection)
        if (b < 0 || b >= world.GetBrushCount())
            return Format("brush %d of the selection does not exist", b);
    for (const int e : world.entity_selection)
        if (e < 0 || e >= world.GetEntityCount())
            return Format("entity %d of the selection does not exist", e);
    for (const int g : world.group_selection)
        if (g < 0 || g >= world.GetGroupCount())
            return Format("group %d of the selection does not exist", g);
    for (const ObjectGroupLists& g : world.group) {
        if (g.MemberCount() == 0)
            return "a group of nothing";
        for (const int b : g.brushes)
            if (b < 0 || b >= world.GetBrushCount())
                return Format("brush %d of a group does not exist", b);
        for (const int e : g.entities)
            if (e < 0 || e >= world.GetEntityCount())
                return Format("entity %d of a group does not exist", e);
    }
    if (world.first_selected_id != NO_OBJECT_ID && !world.IsObjectSelected(world.first_selected_id))
        return "the object selected first is not selected";
    return {};
}

// Where two states differ, in short: a whole state is far too long to read. Empty: they are equal.
inline std::string Difference(const SceneState& expected, const SceneState& found) {
    constexpr size_t AROUND = 60;
    std::string text;
    for (const auto& [id, was] : expected.objects) {
        const auto now = found.objects.find(id);
        if (now == found.objects.end()) {
            text += Format("no object %u (%s); ", id, was.substr(0, AROUND).c_str());
        } else if (now->second != was) {
            const auto place = std::mismatch(was.begin(), was.end(), now->second.begin(), now->second.end()).first;
            const auto at = static_cast<size_t>(place - was.begin());
            const size_t from = at - std::min(at, AROUND);
            text += Format("object %u at %zu of %zu: \"%s\" is \"%s\"; ", id, at, was.size(),
                           was.substr(from, 2 * AROUND).c_str(), now->second.substr(from, 2 * AROUND).c_str());
        }
    }
    for (const auto& [id, now] : found.objects)
        if (!expected.objects.count(id))
            text += Format("object %u too many (%s); ", id, now.substr(0, AROUND).c_str());
    const auto groups = [](const SceneState& state) {
        std::string ids;
        for (const auto& group : state.groups) {
            ids += "(";
            for (const uint32_t id : group)
                ids += Format("%u ", id);
            ids += ")";
        }
        return ids;
    };
    if (expected.groups != found.groups)
        text += "groups " + groups(expected) + " are " + groups(found) + "; ";
    if (expected.selection != found.selection)
        text += "another selection";
    return text;
}
