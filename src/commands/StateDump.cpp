#include "commands/StateDump.h"

#include <limits>

#include <nlohmann/json.hpp>

#include "editor/Interface.h"
#include "render/Textures.h"
#include "scene/MoviePath.h"

namespace {

// Floats print with the fewest digits that read back to the same 32 bits; names keep their order.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, int64_t, uint64_t, float>;

Json ToJson(const D3DVECTOR& v) { return Json::array({v.x, v.y, v.z}); }

Json ToJson(const UVVector& v) { return Json::array({v.u, v.v}); }

Json ToJson(const TRIANGLE& t) { return Json::array({t.i[0], t.i[1], t.i[2]}); }

Json ToJson(const EDGE& e) { return Json::array({e.i[0], e.i[1]}); }

Json ToJson(const RECT& r) { return Json::array({r.left, r.top, r.right, r.bottom}); }

template <class List>
Json ListJson(const List& list) {
    Json json = Json::array();
    for (const auto& item : list)
        json.push_back(ToJson(item));
    return json;
}

template <class List>
Json NumbersJson(const List& list) {
    Json json = Json::array();
    for (const auto item : list)
        json.push_back(item);
    return json;
}

// Texts from files may hold any bytes: what is no UTF-8 is replaced.
std::string Text(const std::string& text) {
    std::string clean;
    for (const char c : text)
        clean += static_cast<unsigned char>(c) < 0x80 ? c : '?';
    return clean;
}

std::string MaterialName(const World& world, int index) {
    if (index <= 0 || index >= world.GetMaterialCount())
        return {};
    const MaterialRow& row = world.material[static_cast<size_t>(index)];
    return Text(row.material_class + "\\" + row.material_name);
}

Json ToJson(const TEX_INFO& t) {
    return {{"shift", ToJson(t.shift)}, {"scale", ToJson(t.scale)}, {"size", ToJson(t.size)},
            {"rotation", t.rotation},   {"flip_u", t.flip_u},       {"flip_v", t.flip_v},
            {"locked", t.locked},       {"index", t.index},         {"fitted", t.fitted}};
}

Json SurfacesJson(const World& world, const std::vector<Surface>& surfaces, bool curved) {
    Json json = Json::array();
    for (const Surface& s : surfaces) {
        Json surface = {{"vertices", ListJson(s.vertices)},
                        {"normals", ListJson(s.normal)},
                        {"uv", ListJson(s.uv)},
                        {"triangles", ListJson(s.tri_indices)},
                        {"edges", ListJson(s.edge_indices)},
                        {"tex_info", ToJson(s.texture)},
                        {"material", MaterialName(world, s.texture.index)}};
        if (curved)
            surface["cp"] = ListJson(s.cp);
        json.push_back(std::move(surface));
    }
    return json;
}

// What the path gives at a time; null where it gives nothing.
Json SampleJson(SimpleList<uint32_t> list, float anim_time) {
    constexpr float NOTHING = std::numeric_limits<float>::infinity();
    D3DVECTOR position{NOTHING, NOTHING, NOTHING};
    float roll = 0, fov = 0;
    ComputePathPos(anim_time, list, position, roll, fov);
    if (position.x == NOTHING)
        return nullptr;
    return {{"position", ToJson(position)}, {"roll", roll}, {"fov", fov}};
}

// Null for an object without points.
Json PathsJson(const BaseObject& object, float anim_time) {
    if (object.path.GetCount() + object.target_path.GetCount() == 0)
        return nullptr;
    return {{"path", NumbersJson(object.path)},
            {"target_path", NumbersJson(object.target_path)},
            {"path_sample", SampleJson(object.path, anim_time)},
            {"target_sample", SampleJson(object.target_path, anim_time)}};
}

Json DecalsJson(const World& world) {
    Json json = Json::array();
    for (const auto& d : world.decal_template) {
        const CRTexture* texture = crTRecord(d->texture);
        Json cuts = Json::array();
        for (int b = 0; b < world.GetBrushCount(); ++b)
            for (const auto& cut : world.brush[static_cast<size_t>(b)]->decal_list)
                if (cut->id == d->id)
                    cuts.push_back({{"brush", b},
                                    {"surface", cut->owner_surface},
                                    {"vertices", ListJson(cut->xyz)},
                                    {"uv", ListJson(cut->uv)},
                                    {"triangles", ListJson(cut->tris)}});
        json.push_back({{"id", d->id},
                        {"texture", texture ? Text(texture->path + "\\" + texture->name) : std::string()},
                        {"position", ToJson(d->o_position)},
                        {"normal", ToJson(d->o_normal)},
                        {"size", Json::array({d->x_size, d->y_size})},
                        {"rotation", d->o_rotation},
                        {"color", d->color.dw_color},
                        {"is_selected", world.decal_selection.TestItem(static_cast<int>(d->id)) != -1},
                        {"cuts", std::move(cuts)}});
    }
    return json;
}

// As the views have drawn them last.
Json CablesJson(const World& world) {
    Json json = Json::array();
    for (const auto& cable : world.AllCables)
        json.push_back({{"from", cable->ID_1}, {"to", cable->ID_2}, {"points", ListJson(cable->positions)}});
    return json;
}

Json BrushesJson(const World& world, float anim_time) {
    Json json = Json::array();
    for (int i = 0; i < world.GetBrushCount(); ++i) {
        const Brush& b = *world.brush[static_cast<size_t>(i)];
        json.push_back({{"index", i},
                        {"object_id", b.GetObjectID()},
                        {"type", static_cast<uint32_t>(b.type)},
                        {"name", Text(b.name)},
                        {"properties", b.properties},
                        {"bbox", ListJson(b.bbox)},
                        {"pivot", ToJson(b.pivot)},
                        {"color", b.color},
                        {"is_selected", b.is_selected},
                        {"is_hidden", b.is_hidden},
                        {"is_frozen", b.is_frozen},
                        {"linked_objects", NumbersJson(b.linked_objects)},
                        {"terrain_vertex_size", Json::array({b.terrain_vertex_size.cx, b.terrain_vertex_size.cy})},
                        {"paths", PathsJson(b, anim_time)},
                        {"surfaces", SurfacesJson(world, b.surfaces, false)},
                        {"curved_surfaces", SurfacesJson(world, b.curved_surfaces, true)}});
    }
    return json;
}

Json ParameterJson(const EntityParameter& p) {
    switch (p.type) {
    case EPT_BOOL:
        return p.p_bool;
    case EPT_INT:
        return p.p_int;
    case EPT_FLOAT:
        return p.p_float;
    case EPT_VECTOR2:
        return ToJson(p.p_vector2);
    case EPT_VECTOR3:
        return ToJson(p.p_vector3);
    case EPT_COLOR:
        return Json::array({p.p_color.r, p.p_color.g, p.p_color.b, p.p_color.a});
    case EPT_FILENAME:
    case EPT_STRING:
    case EPT_CONSTANT:
        break;
    }
    return Text(p.p_text);
}

Json EntitiesJson(const World& world, float anim_time) {
    Json json = Json::array();
    for (int i = 0; i < world.GetEntityCount(); ++i) {
        const Entity& e = *world.entity[static_cast<size_t>(i)];
        Json parameters = Json::object();
        for (const EntityParameter& p : e.parameter)
            parameters[Text(p.name)] = ParameterJson(p);
        json.push_back({{"index", i},
                        {"object_id", e.GetObjectID()},
                        {"name", Text(e.name)},
                        {"str_type", Text(e.str_type)},
                        {"variable_name", Text(e.variable_name)},
                        {"position", ToJson(e.position)},
                        {"linked_objects", NumbersJson(e.linked_objects)},
                        {"parameters", std::move(parameters)},
                        {"is_hidden", e.is_hidden},
                        {"path_parent_id", e.path_parent_id},
                        {"paths", PathsJson(e, anim_time)}});
    }
    return json;
}

Json GroupsJson(const World& world) {
    Json json = Json::array();
    for (const ObjectGroupLists& group : world.group)
        json.push_back({{"brushes", NumbersJson(group.brushes)}, {"entities", NumbersJson(group.entities)}});
    return json;
}

Json SelectionJson(const World& world) {
    Json surface = nullptr;
    if (world.selected_surface_brush >= 0 && world.selected_surface_brush < world.GetBrushCount()) {
        const Brush& b = *world.brush[static_cast<size_t>(world.selected_surface_brush)];
        surface = {{"brush", world.selected_surface_brush},
                   {"surface", b.selected_surface},
                   {"curved", b.selected_surface_curved}};
    }
    return {{"brush", NumbersJson(world.brush_selection)},
            {"entity", NumbersJson(world.entity_selection)},
            {"group", NumbersJson(world.group_selection)},
            {"surface", std::move(surface)}};
}

Json MaterialsJson(const World& world) {
    Json json = Json::array();
    for (int i = 1; i < world.GetMaterialCount(); ++i)
        json.push_back(MaterialName(world, i));
    return json;
}

Json ViewJson(const VIEWINFO& vi) {
    return {{"view_position", Json::array({vi.view_position[0], vi.view_position[1]})},
            {"zoom_in", vi.zoom_in},
            {"zoom_out", vi.zoom_out},
            {"camera_position", ToJson(vi.camera_position)},
            {"camera_rotation", ToJson(vi.camera_rotation)},
            {"client_rect", ToJson(vi.client_rect)},
            {"window_rect", ToJson(vi.window_rect)}};
}

Json InterfaceJson(const CInterface& i) {
    Json views = Json::array(), status = Json::object();
    for (int view = 0; view < VIEW_COUNT; ++view)
        views.push_back(ViewJson(i.views.View(view)));
    for (size_t pane = 0; pane < i.status.size(); ++pane)
        if (!i.status[pane].empty())
            status[std::to_string(pane)] = Text(i.status[pane]);
    const DisplayFilters& f = i.filters;
    return {{"editor_state", static_cast<uint32_t>(i.editor_state)},
            {"edit_state", i.edit_state},
            {"active_view", i.active_view},
            {"grid_size", i.grid_size},
            {"selection_box", ListJson(i.selection_box)},
            {"selection_pivot", ToJson(i.selection_pivot)},
            {"selection_box_active", i.selection_box_active},
            {"shearing", i.shearing},
            {"cordon_box", ListJson(i.views.cordon_box)},
            {"clip_box", ListJson(i.views.clip_box)},
            {"last_entity_position", ToJson(i.last_entity_position)},
            {"active_brush_template", static_cast<uint32_t>(i.active_brush_template)},
            {"active_brush_segments", i.active_brush_segments},
            {"views", std::move(views)},
            {"status", std::move(status)},
            {"show_brushes", f.show_brushes},
            {"show_portals", f.show_portals},
            {"show_occluders", f.show_occluders},
            {"show_entities", f.show_entities},
            {"show_lights", f.show_lights},
            {"show_eyes", f.show_eyes},
            {"show_particles", f.show_particles},
            {"show_nonbox_entities", f.show_nonbox_entities},
            {"anim_time", i.anim_time},
            {"project_file_need_save", i.project_file_need_save}};
}

Json UndoJson(const CUndoBuffer& buffer) {
    Json json = Json::array();
    for (int a = 0; a < buffer.GetActionCount(); ++a)
        json.push_back(buffer.GetActionDescription(a));
    return json;
}

Json MessagesJson(const std::vector<ScriptDesktop::Message>& messages) {
    Json json = Json::array();
    for (const ScriptDesktop::Message& m : messages)
        json.push_back({{"title", Text(m.title)}, {"text", Text(m.text)}, {"answer", Text(m.answer)}});
    return json;
}

} // namespace

std::string DumpState(const CInterface& interface, const std::vector<ScriptDesktop::Message>& messages,
                      const std::string& completion) {
    const World& world = *interface.world;
    Json json = {{"brushes", BrushesJson(world, interface.anim_time)},
                 {"entities", EntitiesJson(world, interface.anim_time)},
                 {"decals", DecalsJson(world)},
                 {"cables", CablesJson(world)},
                 {"groups", GroupsJson(world)},
                 {"selection", SelectionJson(world)},
                 {"materials", MaterialsJson(world)},
                 {"interface", InterfaceJson(interface)},
                 {"undo", UndoJson(world.undo_buffer)},
                 {"redo", UndoJson(world.redo_buffer)},
                 {"messages", MessagesJson(messages)},
                 {"completion", Text(completion)}};
    return json.dump(1) + "\n";
}
