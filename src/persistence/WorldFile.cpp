#include "persistence/WorldFile.h"

#include "files/ChunkFile.h"
#include "foundation/Strings.h"
#include "persistence/ProjectChunks.h"
#include "persistence/Records.h"
#include "scene/Brush.h"
#include "scene/Entity.h"
#include "scene/World.h"

namespace {

constexpr size_t BRUSH_HEADER = 73, SURFACE_HEADER = 20, DUMMY_DATA = 108, PORTAL_RECORD = 136, PORTAL_LEAF = 16,
                 CELL_RECORD = 45, OCCLUDER_RECORD = 68, LEAF_RECORD = 88;
constexpr size_t PAGE_BYTES = static_cast<size_t>(LIGHTMAP_PAGE_SIDE) * LIGHTMAP_PAGE_SIDE * 3;

class WorldFileReader {
public:
    WorldFileReader(UChunkFile& chunk_file, WorldFile& target) : file(chunk_file), world(target) {}

    bool Read() {
        return ReadID() && Each("BrushInfo", &WorldFileReader::ReadBrushInfo) &&
               Each("BrushInitialCount", &WorldFileReader::ReadCounts) &&
               Each("BrushData", &WorldFileReader::ReadBrushData) &&
               Each("LightmapData", &WorldFileReader::ReadLightmap) &&
               Each("MaterialData", &WorldFileReader::ReadMaterial) &&
               Each("EntityData", &WorldFileReader::ReadEntity) && Each("PortalData", &WorldFileReader::ReadPortal) &&
               Each("CellData", &WorldFileReader::ReadCell) && Each("RenderGroup", &WorldFileReader::ReadRenderGroup) &&
               Each("OccluderData", &WorldFileReader::ReadOccluder) && Each("OctalTree", &WorldFileReader::ReadTree) &&
               Each("SoundTraceData", &WorldFileReader::ReadSound) && Each("MPGames", &WorldFileReader::ReadGames) &&
               Each("Decals", &WorldFileReader::ReadDecals) && Each("AIGroups", &WorldFileReader::ReadActorGroups);
    }
    const std::string& Error() const { return error; }

private:
    bool Fail(const std::string& reason) {
        if (error.empty())
            error = reason;
        return false;
    }

    bool ReadID() {
        std::string id;
        if (!file.OpenChunk(CHUNK_WORLD_ID, ANY_CHUNK_ID, COT_SameName) || !file.GetNextString(id))
            return Fail("it has no FileID");
        return id == WORLD_FILE_ID || Fail("its FileID is \"" + id + "\"");
    }

    bool Each(const char* name, bool (WorldFileReader::*read)()) {
        int n = 0;
        for (bool more = file.OpenChunk(name, ANY_CHUNK_ID, COT_SameName); more; more = file.OpenNextChunk(), ++n)
            if (!(this->*read)() || file.SizeMismatch())
                return Fail(Format("%s %d is damaged near array %u", name, n, file.GetCurrentArrayIndex()));
        return true;
    }

    std::vector<uint8_t> NextRecord() {
        std::vector<uint8_t> bytes = file.GetArrayAlloc(file.GetCurrentArrayIndex());
        file.SkipNextArray();
        return bytes;
    }
    // The next array as as many values as fit; false when a rest remains.
    template <class T>
    bool NextAll(std::vector<T>& values) {
        const uint32_t length = file.GetCurrentArrayLength();
        return !file.IsArraysFinished() && length % sizeof(T) == 0 && file.GetNextValues(values, length / sizeof(T));
    }
    bool NextText(std::string& text, int32_t length) {
        if (length == 0)
            return true;
        if (length < 0 || file.GetCurrentArrayLength() != static_cast<uint32_t>(length))
            return false;
        text.resize(static_cast<size_t>(length));
        return file.GetNextArray(text.data());
    }

    bool ReadBrushInfo() {
        WorldBrush& brush = world.brushes.emplace_back();
        brush.chunk_id = file.GetChunkID();
        const std::vector<uint8_t> bytes = NextRecord();
        int32_t links = 0, name_len = 0, death_particle_len = 0;
        RecordReader record(bytes);
        record.Get(brush.type)
            .Get(brush.properties)
            .Get(brush.color)
            .Get(brush.color_vector)
            .Get(brush.surface_count)
            .Get(links);
        record.Get(brush.id).Get(brush.energy).Get(brush.mass).Get(brush.collision_damage).Get(brush.touch_damage);
        record.Get(brush.terrain_vertex_size).Get(name_len).Get(death_particle_len).Get(brush.link_action);
        if (bytes.size() != BRUSH_HEADER || links < 0 || brush.surface_count < 0)
            return false;
        if (links > 0 && !file.GetNextValues(brush.links, static_cast<size_t>(links)))
            return false;
        if (!NextText(brush.name, name_len) || !NextText(brush.death_particle, death_particle_len))
            return false;
        if (static_cast<uint32_t>(brush.surface_count) > file.GetArraysCountInChunk() - file.GetCurrentArrayIndex())
            return false;
        for (int32_t s = 0; s < brush.surface_count; ++s)
            if (!ReadSurfaceInfo(brush.surfaces.emplace_back()))
                return false;
        return true;
    }

    bool ReadSurfaceInfo(WorldSurface& surface) {
        const std::vector<uint8_t> bytes = NextRecord();
        RecordReader(bytes)
            .Get(surface.vertex_count)
            .Get(surface.cp_count)
            .Get(surface.triangle_count)
            .Get(surface.dynamic_lightmap_count)
            .Get(surface.type);
        if (bytes.size() != SURFACE_HEADER || surface.vertex_count < 0 || surface.cp_count < 0 ||
            surface.triangle_count < 0 || surface.dynamic_lightmap_count < 0)
            return false;
        return surface.cp_count == 0 || file.GetNextValues(surface.cp, static_cast<size_t>(surface.cp_count));
    }

    bool ReadCounts() {
        return file.GetNextValue(world.initial_surfaces) && file.GetNextValue(world.initial_control_points);
    }

    bool ReadBrushData() {
        const uint32_t number = file.GetChunkID();
        if (number >= world.brushes.size())
            return Fail(Format("BrushData %u has no BrushInfo", number));
        WorldBrush& brush = world.brushes[number];
        for (WorldSurface& surface : brush.surfaces)
            if (!ReadSurface(surface, brush.type == BT_CUSTOM))
                return false;
        return ReadPhysics(brush.physics);
    }

    bool ReadSurface(WorldSurface& surface, bool custom) {
        const auto n = static_cast<size_t>(surface.vertex_count), t = static_cast<size_t>(surface.triangle_count);
        if (surface.cp_count == 0) {
            if (!file.GetNextValues(surface.vertices, n) || !file.GetNextValues(surface.uv, n))
                return false;
            if (!custom && !file.GetNextValues(surface.lightmap_uv, n))
                return false;
            if (!file.GetNextValues(surface.triangles, t) || (custom && !file.GetNextValues(surface.colors, n)))
                return false;
        }
        if (!UnpackTexInfo(NextRecord(), surface.texture) || !file.GetNextValue(surface.lightmap))
            return false;
        for (int32_t d = 0; d < surface.dynamic_lightmap_count; ++d) {
            LIGHTMAP_INFO info;
            if (!file.GetNextValue(info))
                return false;
            surface.dynamic_lightmaps.push_back(info);
        }
        return true;
    }

    bool ReadPhysics(WorldPhysics& physics) {
        const std::vector<uint8_t> bytes = NextRecord();
        RecordReader record(bytes);
        record.Get(physics.mass)
            .Get(physics.center)
            .Get(physics.static_friction_coef)
            .Get(physics.dynamic_friction_coef);
        record.Get(physics.elasticity).Get(physics.time_scale).Get(physics.I);
        record.Get(physics.point_count).Get(physics.edge_count).Get(physics.face_count);
        if (bytes.size() != DUMMY_DATA || physics.point_count < 0 || physics.edge_count < 0 || physics.face_count < 0)
            return false;
        return file.GetNextValues(physics.points, static_cast<size_t>(physics.point_count)) &&
               file.GetNextValues(physics.edges, static_cast<size_t>(physics.edge_count)) &&
               file.GetNextValues(physics.faces, static_cast<size_t>(physics.face_count));
    }

    bool ReadLightmap() {
        std::vector<uint8_t>& page = world.lightmap_pages.emplace_back();
        return file.GetNextValues(page, PAGE_BYTES);
    }

    bool ReadMaterial() {
        const std::vector<uint8_t> bytes = NextRecord();
        WorldMaterial& material = world.materials.emplace_back();
        RecordReader(bytes).GetText(material.material_class, NAME_FIELD).GetText(material.material_name, NAME_FIELD);
        return bytes.size() == TEXTURE_RECORD;
    }

    bool ReadEntity() {
        WorldEntity& entity = world.entities.emplace_back();
        int32_t links = 0, parameters = 0;
        uint8_t hidden = 0;
        if (!file.GetNextString(entity.type) || !file.GetNextValue(entity.position) ||
            !file.GetNextString(entity.variable_name) || !file.GetNextValue(links) || links < 0)
            return false;
        if (links > 0 && !file.GetNextValues(entity.links, static_cast<size_t>(links)))
            return false;
        if (!file.GetNextValue(parameters))
            return false;
        for (int32_t p = 0; p < parameters; ++p)
            if (!ReadParameter(entity.parameters.emplace_back()))
                return false;
        if (!file.GetNextValue(hidden) || !file.GetNextValue(entity.id))
            return false;
        entity.is_hidden = hidden != 0;
        return true;
    }

    bool ReadParameter(WorldParameter& parameter) {
        if (!file.GetNextString(parameter.name) || !file.GetNextValue(parameter.checksum) ||
            !file.GetNextValue(parameter.type))
            return false;
        const std::vector<uint8_t> value = NextRecord();
        RecordReader record(value);
        uint8_t flag = 0;
        int32_t number = 0;
        float f[3] = {};
        COLOR color;
        switch (parameter.type) {
        case EPT_BOOL:
            record.Get(flag);
            parameter.value = flag ? "TRUE" : "FALSE";
            break;
        case EPT_INT:
            record.Get(number);
            parameter.value = Format("%d", number);
            break;
        case EPT_FLOAT:
            record.Get(f[0]);
            parameter.value = Format("%g", static_cast<double>(f[0]));
            break;
        case EPT_VECTOR2:
            record.Get(f[0]).Get(f[1]);
            parameter.value = Format("%g %g", static_cast<double>(f[0]), static_cast<double>(f[1]));
            break;
        case EPT_VECTOR3:
            record.Get(f[0]).Get(f[1]).Get(f[2]);
            parameter.value =
                Format("%g %g %g", static_cast<double>(f[0]), static_cast<double>(f[1]), static_cast<double>(f[2]));
            break;
        case EPT_COLOR:
            record.Get(color);
            parameter.value = Format("#%08x", color.dw_color);
            break;
        case EPT_FILENAME:
        case EPT_STRING:
        case EPT_CONSTANT:
            parameter.value.assign(value.begin(), value.end());
            if (parameter.value.empty() || parameter.value.back() != '\0')
                return false;
            parameter.value.pop_back();
            break;
        default:
            return false;
        }
        return !record.Overrun();
    }

    bool ReadPortal() {
        const std::vector<uint8_t> bytes = NextRecord();
        WorldPortal& portal = world.portals.emplace_back();
        int32_t counts[2] = {};
        RecordReader record(bytes);
        record.Get(portal.bounds).Get(portal.pivot).Get(portal.partindices).Get(portal.normal).Skip(8).Get(counts);
        record.Get(portal.portalowner).Get(portal.cell);
        if (bytes.size() != PORTAL_RECORD)
            return false;
        for (int side = 0; side < 2; ++side) {
            const std::vector<uint8_t> leaves = NextRecord();
            if (counts[side] < 0 || leaves.size() != static_cast<size_t>(counts[side]) * PORTAL_LEAF)
                return false;
            RecordReader reader(leaves);
            for (int32_t k = 0; k < counts[side]; ++k)
                reader.Get(portal.reachable[side].emplace_back()).Skip(PORTAL_LEAF - sizeof(int32_t));
        }
        return true;
    }

    bool ReadCell() {
        const std::vector<uint8_t> bytes = NextRecord();
        WorldCell& cell = world.cells.emplace_back();
        int32_t objects = 0, entities = 0, portals = 0, occluders = 0, groups = 0;
        RecordReader record(bytes);
        record.Get(objects).Skip(4).Get(entities).Skip(4).Get(portals).Skip(8).Get(occluders).Skip(4);
        record.GetFlag(cell.can_see_outside).Get(groups);
        if (bytes.size() != CELL_RECORD)
            return false;
        const std::pair<std::vector<int32_t>*, int32_t> lists[] = {
            {&cell.objects, objects},    {&cell.entities, entities},   {&cell.portals, portals},
            {&cell.portalside, portals}, {&cell.occluders, occluders}, {&cell.render_groups, groups}};
        for (const auto& [list, count] : lists) {
            // A cell that sees both sides of a portal has one more side than portals.
            const bool sides = list == &cell.portalside;
            if (count < 0 || !NextAll(*list) ||
                (sides ? list->size() < static_cast<size_t>(count) : list->size() != static_cast<size_t>(count)))
                return false;
        }
        return true;
    }

    bool ReadRenderGroup() {
        int32_t count = 0;
        return file.GetNextValue(count) && count >= 0 &&
               file.GetNextValues(world.render_groups.emplace_back(), static_cast<size_t>(count));
    }

    bool ReadOccluder() {
        const std::vector<uint8_t> bytes = NextRecord();
        WorldOccluder& occluder = world.occluders.emplace_back();
        RecordReader(bytes).Get(occluder.bounds).Get(occluder.normal).Get(occluder.D).Get(occluder.owner);
        return bytes.size() == OCCLUDER_RECORD;
    }

    bool ReadTree() {
        int32_t count = 0;
        if (!file.GetNextValue(count) || count < 0 || static_cast<uint32_t>(count) > file.GetArraysCountInChunk())
            return false;
        for (int32_t n = 0; n < count; ++n) {
            const std::vector<uint8_t> bytes = NextRecord();
            WorldLeaf& leaf = world.leaves.emplace_back();
            int32_t brushes = 0;
            RecordReader record(bytes);
            record.Get(leaf.type)
                .Get(leaf.min)
                .Get(leaf.max)
                .Get(leaf.half)
                .Get(leaf.size)
                .Get(leaf.parent)
                .Get(leaf.child)
                .Get(brushes);
            if (bytes.size() != LEAF_RECORD || brushes < 0)
                return false;
            if (brushes > 0 && !file.GetNextValues(leaf.brushes, static_cast<size_t>(brushes)))
                return false;
        }
        return true;
    }

    bool ReadSound() { return NextAll(world.sounds); }

    bool ReadGames() {
        int32_t count = 0;
        if (!file.GetNextString(world.map_name) || !file.GetNextValue(count))
            return false;
        for (int32_t g = 0; g < count; ++g)
            if (!file.GetNextString(world.mp_games.emplace_back()))
                return false;
        return true;
    }

    bool ReadDecals() {
        if (!file.GetNextValue(world.decal_count) || world.decal_count < 0)
            return false;
        for (int32_t d = 0; d < world.decal_count; ++d)
            if (NextRecord().size() != DECAL_RECORD)
                return false;
        return true;
    }

    bool ReadActorGroups() {
        int32_t count = 0;
        if (!file.GetNextValue(count) || count < 0)
            return false;
        for (int32_t g = 0; g < count; ++g) {
            if (file.IsArraysFinished())
                return false;
            WorldActorGroup& group = world.actor_groups.emplace_back();
            const std::vector<uint8_t> name = NextRecord();
            group.name.assign(name.begin(), name.end());
            for (int32_t k = 0; k < count; ++k) {
                SGroupRelation relation;
                if (!UnpackRelation(NextRecord(), relation))
                    return false;
                group.relation.push_back(relation.type);
            }
        }
        return true;
    }

    UChunkFile& file;
    WorldFile& world;
    std::string error;
};

} // namespace

bool ReadWorldFile(std::string_view path, WorldFile& world, std::string& error) {
    UChunkFile file(path, CFM_Open);
    if (!file.IsValid()) {
        error = file.GetError();
        return false;
    }
    world.total_size = file.GetTotalSize();
    WorldFileReader reader(file, world);
    if (reader.Read())
        return true;
    error = Format("\"%s\" is no whole compiled world: %s", file.GetFilename().c_str(), reader.Error().c_str());
    return false;
}
