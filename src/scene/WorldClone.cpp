// Many objects from few, and one from many.
#include <algorithm>
#include <unordered_map>

#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "scene/BrushParts.h"
#include "scene/DecalCutting.h"
#include "scene/FrontEnd.h"
#include "scene/World.h"

namespace {

constexpr const char* WARNING = "Warning";

// False, after the user was told, when copies of the selection do not fit into the level.
bool HasRoomForCopies(const World& world) {
    const auto fits = [](int count, int copies, int limit, const char* what) {
        if (count + copies <= limit)
            return true;
        GetDesktop().MessageBox(
            Format("Nothing was cloned: %d copies would exceed the limit of %d %s.", copies, limit, what), WARNING);
        return false;
    };
    return fits(world.GetBrushCount(), world.brush_selection.GetItemCount(), MAX_BRUSHES, "brushes") &&
           fits(world.GetEntityCount(), world.entity_selection.GetItemCount(), MAX_ENTITIES, "entities");
}

struct ClonePair {
    const BaseObject* source;
    BaseObject* copy;
};

// Links among the sources are repeated among the copies; a link to an object outside is not.
void CopyLinks(const std::vector<ClonePair>& pairs) {
    std::unordered_map<uint32_t, size_t> by_id; // of a source, to its place
    for (size_t i = 0; i < pairs.size(); ++i)
        by_id[pairs[i].source->GetObjectID()] = i;
    for (const ClonePair& pair : pairs) {
        std::vector<size_t> targets;
        for (const uint32_t id : pair.source->linked_objects)
            if (const auto found = by_id.find(id); found != by_id.end())
                targets.push_back(found->second);
        std::sort(targets.begin(), targets.end()); // in the order of the selection
        for (const size_t target : targets)
            pair.copy->AddLinkedObjectID(pairs[target].copy->GetObjectID());
    }
}

bool HoldsAny(const Selection& members, const Selection& selection) {
    return std::any_of(members.begin(), members.end(), [&](int item) { return selection.TestItem(item) != -1; });
}

Selection GroupsOfSelection(const World& world) {
    Selection groups;
    if (!world.IsSomethingSelected())
        return groups;
    for (int g = 0; g < world.GetGroupCount(); ++g) {
        const ObjectGroupLists& lists = world.group[static_cast<size_t>(g)];
        if (HoldsAny(lists.brushes, world.brush_selection) || HoldsAny(lists.entities, world.entity_selection))
            groups.AddItemMulti(g);
    }
    return groups;
}

// The copies of the selected members; the copy of the object at place k of the selection stands at first_copy + k.
Selection CopiesOf(const Selection& members, const Selection& selection, int first_copy) {
    Selection copies;
    for (const int item : members) {
        const int place = selection.TestItem(item);
        if (place != -1)
            copies.AddItem(first_copy + place);
    }
    return copies;
}

void MakeGroupsCopy(World& world, int old_brush_count, int old_entity_count) {
    Selection groups = GroupsOfSelection(world);
    if (world.GetGroupCount() + groups.GetItemCount() > MAX_GROUPS) {
        world.OptimizeGroups();
        if (world.GetGroupCount() + groups.GetItemCount() > MAX_GROUPS) {
            GetDesktop().MessageBox("Group limit exceeded. No groups will be cloned.", WARNING);
            return;
        }
        groups = GroupsOfSelection(world); // the table has changed
    }
    for (const int g : groups) {
        const ObjectGroupLists& lists = world.group[static_cast<size_t>(g)];
        Selection brushes = CopiesOf(lists.brushes, world.brush_selection, old_brush_count);
        Selection entities = CopiesOf(lists.entities, world.entity_selection, old_entity_count);
        world.AddGroup(std::move(brushes), std::move(entities));
    }
}

struct MergeCounts {
    int sources = 0, custom = 0, surfaces = 0; // surfaces: with a material
};

MergeCounts CountForMerge(const World& world) {
    MergeCounts counts;
    for (const int i : world.brush_selection) {
        const Brush& b = *world.brush[static_cast<size_t>(i)];
        if (b.IsPortalOrOccluder())
            continue;
        ++counts.sources;
        counts.custom += b.IsCustom();
        b.ForEachSurface([&counts](const Surface& s, int, bool) { counts.surfaces += s.HasMaterial(); });
    }
    return counts;
}

std::unique_ptr<Brush> MergedSelection(const World& world, bool custom) {
    auto merged = std::make_unique<Brush>();
    merged->type = custom ? BT_CUSTOM : BT_BOX;
    merged->SetCurveDetail(world.curve_detail);
    for (const int i : world.brush_selection) {
        const Brush& source = *world.brush[static_cast<size_t>(i)];
        if (source.IsPortalOrOccluder())
            continue;
        source.ForEachSurface([&](const Surface& s, int, bool curved) {
            if (!s.HasMaterial())
                return;
            if (curved)
                merged->curved_surfaces.push_back(CopyCurvedSurface(s, custom));
            else
                merged->surfaces.push_back(CopyFlatSurface(s));
        });
    }
    merged->SetColor({1, 1, 1, 1});
    merged->TesselateCurves();
    merged->RecalcBBox();
    merged->ComputeNormals();
    merged->SurfaceLight();
    merged->GenerateTextureSpaces();
    if (!merged->curved_surfaces.empty())
        merged->RemapAll(); // fans by their spaces; the flat surfaces keep their coordinates
    return merged;
}

} // namespace

void World::Clone(bool ignore_groups) {
    if (!HasRoomForCopies(*this))
        return;
    const int old_brush_count = GetBrushCount(), old_entity_count = GetEntityCount();
    std::vector<ClonePair> pairs;
    for (const int i : brush_selection) {
        const Brush& source = *brush[static_cast<size_t>(i)];
        pairs.push_back({&source, AddBrush(std::make_unique<Brush>(source))});
        pairs.back().copy->GenerateNewObjectID();
    }
    for (const int i : entity_selection) {
        const Entity& source = *entity[static_cast<size_t>(i)];
        pairs.push_back({&source, AddEntity(std::make_unique<Entity>(source))});
        pairs.back().copy->GenerateNewObjectID();
    }
    if (pairs.empty())
        return;
    CopyLinks(pairs);
    if (!ignore_groups)
        MakeGroupsCopy(*this, old_brush_count, old_entity_count);

    ClearSelection();
    for (int i = old_brush_count; i < GetBrushCount(); ++i)
        SetBrushSelection(i, true);
    for (int i = old_entity_count; i < GetEntityCount(); ++i)
        entity_selection.AddItem(i);
    GetFrontEnd().SelectionChanged();
    GetFrontEnd().CountsChanged();
}

void World::Collapse() {
    const MergeCounts counts = CountForMerge(*this);
    const bool custom = counts.custom > 0;
    if (counts.surfaces == 0 || (custom && counts.custom != brush_selection.GetItemCount()))
        return;
    std::unique_ptr<Brush> merged = MergedSelection(*this, custom);
    merged->GenerateNewObjectID();

    entity_selection.ClearList();
    if (selected_surface_brush != -1)
        DeselectSurface(); // else the deletion would take its material instead
    Selection sources;     // portals and occluders stay in the level
    for (const int i : brush_selection) {
        Brush& b = *brush[static_cast<size_t>(i)];
        if (b.IsPortalOrOccluder())
            b.is_selected = false;
        else
            sources.AddItemMulti(i);
    }
    brush_selection = std::move(sources);
    const DecalState decals(*this);
    DeleteSelection();

    Brush& added = *AddBrush(std::move(merged));
    SetBrushSelection(added.index, true);
    RefreshFirstSelected(); // it may have been an entity, which is not selected any more
    RecutDecals(*this, added);
    decals.RestoreMissing(*this);
    FlushDecalTemplates();
    GetFrontEnd().SelectionChanged();
    GetFrontEnd().CountsChanged();
}
