#include "scene/ObjectCopy.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <type_traits>

namespace {

// The sign of a zero, too: it goes into files. For types without gaps.
template <class T>
bool SameBits(const T& a, const T& b) {
    static_assert(std::is_trivially_copyable_v<T>);
    return std::memcmp(&a, &b, sizeof a) == 0;
}

template <class T>
bool SameBits(const std::vector<T>& a, const std::vector<T>& b) {
    static_assert(std::is_trivially_copyable_v<T>);
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

void RenameList(std::vector<uint32_t>& list, const IdRenaming& renamed) {
    for (uint32_t& id : list)
        id = renamed(id);
}

bool SameList(const SimpleList<uint32_t>& a, const SimpleList<uint32_t>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

bool SameColor(const D3DCOLORVALUE& a, const D3DCOLORVALUE& b) {
    return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a;
}

bool SameMapping(const TEX_INFO& a, const TEX_INFO& b) {
    return a == b && SameBits(a.shift, b.shift) && SameBits(a.scale, b.scale) && SameBits(a.size, b.size) &&
           SameBits(a.rotation, b.rotation);
}

bool SameRow(const MaterialRow& a, const MaterialRow& b) {
    return a.material_class == b.material_class && a.material_name == b.material_name;
}

// Selection, table index and neighbours stay.
void RestoreBrush(Brush& live, const Brush& copy) {
    const bool is_selected = live.is_selected, selected_surface_curved = live.selected_surface_curved;
    const int32_t index = live.index, selected_surface = live.selected_surface;
    const Selection neighbours = live.tn_list;
    live.CopyExactly(copy);
    live.is_selected = is_selected;
    live.index = index;
    live.tn_list = neighbours;
    live.selected_surface = selected_surface;
    live.selected_surface_curved = selected_surface_curved;
}

// What the assignment of entities leaves out.
void CopyState(Entity& dest, const Entity& src) {
    dest.is_hidden = src.is_hidden;
    dest.is_hidden_by_clipbox = src.is_hidden_by_clipbox;
    dest.is_hidden_special = src.is_hidden_special;
    dest.path_parent_id = src.path_parent_id;
    dest.cell = src.cell;
}

bool SameBase(const BaseObject& a, const BaseObject& b) {
    return a.class_id == b.class_id && SameList(a.linked_objects, b.linked_objects) && SameList(a.path, b.path) &&
           SameList(a.target_path, b.target_path);
}

bool SameFields(const Brush& a, const Brush& b) {
    return a.type == b.type && a.name == b.name && a.death_particle == b.death_particle && a.energy == b.energy &&
           a.weight == b.weight && a.properties == b.properties && a.elasticity == b.elasticity &&
           a.static_friction == b.static_friction && a.dynamic_friction == b.dynamic_friction &&
           a.time_scale == b.time_scale && a.rotation_factor == b.rotation_factor && a.mass == b.mass &&
           a.coll_dmg == b.coll_dmg && a.touch_dmg == b.touch_dmg && a.link_action == b.link_action &&
           a.is_hidden == b.is_hidden && a.is_frozen == b.is_frozen && a.color == b.color &&
           SameColor(a.color_vector, b.color_vector) && SameBits(a.bbox, b.bbox) && SameBits(a.pivot, b.pivot) &&
           a.terrain_vertex_size == b.terrain_vertex_size && a.surfaces.size() == b.surfaces.size() &&
           a.curved_surfaces.size() == b.curved_surfaces.size();
}

bool SameParameter(const EntityParameter& a, const EntityParameter& b) {
    const COLOR &ca = a.p_color, &cb = b.p_color;
    return a.name == b.name && a.type == b.type && a.p_bool == b.p_bool && a.p_int == b.p_int &&
           SameBits(a.p_float, b.p_float) && SameBits(a.p_vector2, b.p_vector2) && SameBits(a.p_vector3, b.p_vector3) &&
           ca.dw_color == cb.dw_color && ca.r == cb.r && ca.g == cb.g && ca.b == cb.b && ca.a == cb.a &&
           a.p_text == b.p_text && a.constant == b.constant && a.comment == b.comment;
}

// The mesh belongs to the kind of entity, which its file and template name.
bool SameEntity(const Entity& a, const Entity& b) {
    return a.name == b.name && a.directory == b.directory && a.actor_file == b.actor_file &&
           a.mesh_file == b.mesh_file && a.trace_entity == b.trace_entity && a.one_cell_only == b.one_cell_only &&
           a.variable_name == b.variable_name && SameBits(a.position, b.position) && SameBits(a.offset, b.offset) &&
           a.str_type == b.str_type && a.enum_type == b.enum_type && a.sort_index == b.sort_index &&
           a.is_hidden == b.is_hidden && a.is_hidden_by_clipbox == b.is_hidden_by_clipbox &&
           a.is_hidden_special == b.is_hidden_special && a.model == b.model && a.color == b.color &&
           a.bitmap == b.bitmap && a.model_size == b.model_size && a.path_parent_id == b.path_parent_id &&
           std::equal(a.parameter.begin(), a.parameter.end(), b.parameter.begin(), b.parameter.end(), SameParameter);
}

} // namespace

ObjectCopy::ObjectCopy(const BaseObject& src, const World& world)
    : id(src.GetObjectID()), curve_detail(world.curve_detail), last_decal_id(world.last_decal_id) {
    if (src.GetGroupID() == OBJECT_BRUSH) {
        const auto& brush = static_cast<const Brush&>(src);
        auto copy = std::make_unique<Brush>();
        copy->CopyExactly(brush);
        object = std::move(copy);
        NoteMaterials(brush, world);
        for (const auto& decal : brush.decal_list)
            decals.insert(decal->id);
    } else {
        object = src.GetCopy();
        CopyState(static_cast<Entity&>(*object), static_cast<const Entity&>(src));
    }
}

const MaterialRow* ObjectCopy::MaterialOf(int32_t index) const {
    for (const UsedMaterial& used : materials)
        if (used.index == index)
            return &used.row;
    return nullptr;
}

void ObjectCopy::NoteMaterials(const Brush& src, const World& world) {
    src.ForEachSurface([&](const Surface& s, int, bool) {
        const int32_t index = s.texture.index;
        if (index > 0 && index < world.GetMaterialCount() && !MaterialOf(index))
            materials.push_back({index, world.material[static_cast<size_t>(index)]});
    });
}

void ObjectCopy::FindMaterials(Brush& restored, World& world) const {
    for (const UsedMaterial& used : materials) {
        const MaterialRow& row = used.row;
        if (used.index < world.GetMaterialCount() && SameRow(world.material[static_cast<size_t>(used.index)], row))
            continue;
        const int32_t now =
            std::max(world.AddMaterial(row.material_class, row.material_name, row.texture_class, row.texture_name), 0);
        const auto& copy = static_cast<const Brush&>(*object);
        restored.ForEachSurface([&](Surface& s, int index, bool curved) {
            const auto place = static_cast<size_t>(index);
            if ((curved ? copy.curved_surfaces : copy.surfaces)[place].texture.index == used.index)
                s.texture.index = now;
        });
        restored.MarkDrawnChanged();
    }
}

BaseObject* ObjectCopy::Create(World& world) {
    BaseObject* created = IsBrush() ? static_cast<BaseObject*>(world.AddBrush(std::make_unique<Brush>()))
                                    : world.AddEntity(std::make_unique<Entity>());
    if (!created)
        return nullptr;
    Restore(*created, world);
    if (id == NO_OBJECT_ID || BaseObject::GetObjectFromID(id)) {
        created->GenerateNewObjectID();
        id = created->GetObjectID();
    } else
        created->SetObjectID(id);
    return created;
}

bool ObjectCopy::Restore(BaseObject& live, World& world) const {
    if (live.GetGroupID() != object->GetGroupID())
        return false;
    if (!IsBrush()) {
        live.InitFromCopy(*object);
        CopyState(static_cast<Entity&>(live), static_cast<const Entity&>(*object));
        return true;
    }
    auto& brush = static_cast<Brush&>(live);
    RestoreBrush(brush, static_cast<const Brush&>(*object));
    FindMaterials(brush, world);
    if (curve_detail != world.curve_detail)
        brush.ChangeCurveDetail(world.curve_detail);
    RestoreDecals(brush, world);
    return true;
}

void ObjectCopy::RestoreDecals(Brush& restored, World& world) const {
    RecutDecals(world, restored);
    std::erase_if(restored.decal_list,
                  [this](const auto& decal) { return decal->id <= last_decal_id && decals.count(decal->id) == 0; });
}

bool ObjectCopy::SameSurface(const Surface& copy, const Surface& live, const World& world) const {
    TEX_INFO mapping = copy.texture;
    mapping.index = live.texture.index;
    if (!SameMapping(mapping, live.texture))
        return false;
    const MaterialRow* row = MaterialOf(copy.texture.index);
    const int32_t index = live.texture.index;
    const bool same_material =
        row ? index > 0 && index < world.GetMaterialCount() && SameRow(*row, world.material[static_cast<size_t>(index)])
            : copy.texture.index == index;
    return same_material && SameBits(copy.vertices, live.vertices) && SameBits(copy.normal, live.normal) &&
           SameBits(copy.uv, live.uv) && SameBits(copy.diffuse, live.diffuse) &&
           SameBits(copy.extra_diffuse, live.extra_diffuse) && SameBits(copy.tri_indices, live.tri_indices) &&
           SameBits(copy.edge_indices, live.edge_indices) && SameBits(copy.cp, live.cp) &&
           copy.cp_count == live.cp_count && SameBits(copy.texture_space, live.texture_space);
}

bool ObjectCopy::Equals(const BaseObject& live, const World& world) const {
    if (live.GetGroupID() != object->GetGroupID() || !SameBase(*object, live))
        return false;
    if (!IsBrush())
        return SameEntity(static_cast<const Entity&>(*object), static_cast<const Entity&>(live));
    const auto& copy = static_cast<const Brush&>(*object);
    const auto& brush = static_cast<const Brush&>(live);
    const auto same = [&](const Surface& a, const Surface& b) { return SameSurface(a, b, world); };
    return SameFields(copy, brush) &&
           std::equal(copy.surfaces.begin(), copy.surfaces.end(), brush.surfaces.begin(), same) &&
           std::equal(copy.curved_surfaces.begin(), copy.curved_surfaces.end(), brush.curved_surfaces.begin(), same);
}

void ObjectCopy::RenameIDs(const IdRenaming& renamed) {
    id = renamed(id);
    for (int i = 0; i < object->GetLinkedObjectsCount(); ++i)
        object->SetLinkedObjectID(i, renamed(object->GetLinkedObjectID(i)));
}

ObjectIds::ObjectIds(const World& world, const Selection& brush_indices, const Selection& entity_indices) {
    brushes.reserve(static_cast<size_t>(brush_indices.GetItemCount()));
    for (const int b : brush_indices)
        if (b >= 0 && b < world.GetBrushCount())
            brushes.push_back(world.brush[static_cast<size_t>(b)]->GetObjectID());
    for (const int e : entity_indices)
        if (e >= 0 && e < world.GetEntityCount())
            entities.push_back(world.entity[static_cast<size_t>(e)]->GetObjectID());
}

ObjectGroupLists ObjectIds::Find(const World& world) const {
    ObjectGroupLists found;
    for (const uint32_t id : brushes) {
        const int b = world.GetBrushIndex(world.GetBrushFromID(id));
        if (b != -1)
            found.brushes.AddItem(b);
    }
    for (const uint32_t id : entities) {
        const int e = world.GetEntityIndex(world.GetEntityFromID(id));
        if (e != -1)
            found.entities.AddItem(e);
    }
    return found;
}

void ObjectIds::RenameIDs(const IdRenaming& renamed) {
    RenameList(brushes, renamed);
    RenameList(entities, renamed);
}

GroupIds GroupsByIds(const World& world) {
    GroupIds groups;
    groups.reserve(world.group.size());
    for (const ObjectGroupLists& lists : world.group)
        groups.emplace_back(world, lists.brushes, lists.entities);
    return groups;
}

void SetGroups(World& world, const GroupIds& groups) {
    world.group.clear();
    for (const ObjectIds& ids : groups) {
        ObjectGroupLists lists = ids.Find(world);
        if (lists.MemberCount() > 0)
            world.group.push_back(std::move(lists));
    }
}

SceneRelations::SceneRelations(const World& world) : groups(GroupsByIds(world)), decals(world) {
    const auto note = [this](const BaseObject& object) {
        if (object.GetLinkedObjectsCount() > 0)
            links.emplace_back(object.GetObjectID(),
                               std::vector<uint32_t>(object.linked_objects.begin(), object.linked_objects.end()));
    };
    for (const auto& b : world.brush)
        note(*b);
    for (const auto& e : world.entity)
        note(*e);
}

void SceneRelations::RestoreLinks(const std::unordered_set<uint32_t>& returned) const {
    const auto has_returned = [&returned](uint32_t id) { return returned.count(id) > 0; };
    for (const auto& [id, before] : links) {
        BaseObject* object = has_returned(id) ? nullptr : BaseObject::GetObjectFromID(id);
        if (!object || std::none_of(before.begin(), before.end(), has_returned))
            continue;
        std::vector<uint32_t> left;
        std::remove_copy_if(before.begin(), before.end(), std::back_inserter(left), has_returned);
        const bool unchanged =
            std::equal(left.begin(), left.end(), object->linked_objects.begin(), object->linked_objects.end());
        if (unchanged) // the old order comes back too
            object->RemoveAllLinkedObjectsID();
        for (const uint32_t linked : before)
            if (unchanged || has_returned(linked))
                object->AddLinkedObjectID(linked);
    }
}

void SceneRelations::Restore(World& world, const std::unordered_set<uint32_t>& returned) const {
    RestoreLinks(returned);
    const auto has_returned = [&returned](uint32_t id) { return returned.count(id) > 0; };
    GroupIds left = groups;
    for (ObjectIds& ids : left) {
        std::erase_if(ids.brushes, has_returned);
        std::erase_if(ids.entities, has_returned);
    }
    std::erase_if(left, [](const ObjectIds& ids) { return ids.MemberCount() < MIN_GROUP; });
    if (left != groups && GroupsByIds(world) == left)
        SetGroups(world, groups);
    decals.RestoreMissing(world);
}

void SceneRelations::RenameIDs(const IdRenaming& renamed) {
    for (auto& [id, list] : links) {
        id = renamed(id);
        RenameList(list, renamed);
    }
    for (ObjectIds& ids : groups)
        ids.RenameIDs(renamed);
}
