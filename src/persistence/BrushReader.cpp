#include "persistence/BrushReader.h"

#include <cmath>

#include "foundation/Strings.h"
#include "persistence/ProjectChunks.h"
#include "persistence/Records.h"

namespace {

constexpr int32_t MAX_SURFACE_VERTICES = 65536; // 16-bit indices
constexpr float LEAST_MAPPING_SIZE = 1.0e-3f;   // of a texture, in texels; below it quotients grow without bound
constexpr float LEAST_DAMAGE = 0.01f;

struct SurfaceCounts {
    int32_t vertex_count = 0, tri_count = 0, edge_count = 0, cp_count = 0, light_count = 0;
};
static_assert(sizeof(SurfaceCounts) == SURFACE_COUNTS_RECORD);

class BrushChunk {
public:
    BrushChunk(UChunkFile& chunk_file, int file_version) : file(chunk_file), version(file_version) {}

    std::unique_ptr<Brush> Read(uint32_t& stored_id, bool& was_repaired, std::string& reason) {
        const bool read = ReadHeader() && ReadCounts() && ReadSurfaces() && ReadScalars(stored_id);
        if (!read || file.SizeMismatch()) {
            reason = error.empty() ? "an array has the wrong length" : error;
            return nullptr;
        }
        was_repaired = repaired;
        brush->is_selected = brush->is_selected || repaired;
        return std::move(brush);
    }

private:
    bool Fail(const std::string& reason) {
        error = reason;
        return false;
    }

    bool ReadHeader() {
        const std::vector<uint8_t> bytes = file.GetArrayAlloc(file.GetCurrentArrayIndex());
        file.SkipNextArray();
        if (bytes.size() != BRUSH_RECORD)
            return Fail("the brush record has the wrong length");
        uint32_t type = 0;
        int32_t links = 0;
        RecordReader reader(bytes);
        reader.Get(type).Get(brush->bbox).Get(brush->pivot).Skip(sizeof brush->color).Get(color);
        reader.Get(flat_count).Get(curved_count).Get(links);
        reader.GetFlag(brush->is_selected).GetFlag(brush->is_hidden).GetFlag(brush->is_frozen);
        if (type > BT_TERRAIN)
            return Fail(Format("%u is no brush type", type));
        brush->type = static_cast<BrushType>(type);
        brush->SetColor(color);
        return ReadLinks(links);
    }

    bool ReadLinks(int32_t links) {
        if (version < PROJECT_VERSION_2_0) { // the field holds the one link itself
            if (links != -1)
                brush->linked_objects.Add(static_cast<uint32_t>(links));
            return true;
        }
        if (links == 0)
            return true;
        std::vector<uint32_t> ids;
        if (links < 0 || !file.GetNextValues(ids, static_cast<size_t>(links)))
            return Fail("the links have the wrong length");
        for (uint32_t id : ids)
            brush->AddLinkedObjectID(id);
        return true;
    }

    bool ReadCounts() {
        // Each surface has a record of counts: more cannot be here than arrays are left.
        const uint64_t left = file.GetArraysCountInChunk() - file.GetCurrentArrayIndex();
        if (flat_count < 0 || curved_count < 0 ||
            static_cast<uint64_t>(flat_count) + static_cast<uint64_t>(curved_count) > left)
            return Fail("more surfaces are told than are there");
        brush->surfaces.resize(static_cast<size_t>(flat_count));
        brush->curved_surfaces.resize(static_cast<size_t>(curved_count));
        counts.resize(brush->surfaces.size() + brush->curved_surfaces.size());
        for (SurfaceCounts& surface : counts)
            if (!file.GetNextValue(surface) || surface.vertex_count < 0 || surface.tri_count < 0 ||
                surface.edge_count < 0 || surface.cp_count < 0 || surface.vertex_count > MAX_SURFACE_VERTICES)
                return Fail("the counts of a surface are damaged");
        return true;
    }

    bool ReadSurfaces() {
        for (size_t s = 0; s < brush->surfaces.size(); ++s)
            if (!ReadFlat(brush->surfaces[s], counts[s]))
                return false;
        for (size_t c = 0; c < brush->curved_surfaces.size(); ++c) {
            const SurfaceCounts& told = counts[brush->surfaces.size() + c];
            Surface& surface = brush->curved_surfaces[c];
            if (!(brush->IsCustom() ? ReadMesh(surface, told) : ReadControlPoints(surface, told)))
                return false;
        }
        return true;
    }

    bool ReadFlat(Surface& surface, const SurfaceCounts& told) {
        std::vector<D3DVECTOR> one_normal;
        std::vector<uint32_t> one_diffuse;
        const auto n = static_cast<size_t>(told.vertex_count);
        if (!file.GetNextValues(surface.vertices, n) || !file.GetNextValues(one_normal, 1) ||
            !file.GetNextValues(surface.uv, n) || !file.GetNextValues(one_diffuse, 1) || !ReadIndices(surface, told))
            return Fail("the arrays of a surface have the wrong length");
        surface.normal.assign(n, one_normal[0]);
        surface.diffuse.assign(n, one_diffuse[0]);
        surface.lightmap_uv.assign(n, {});
        return ReadTexInfo(surface);
    }

    bool ReadMesh(Surface& surface, const SurfaceCounts& told) {
        const auto n = static_cast<size_t>(told.vertex_count);
        surface.cp_count = CURVE_MESH;
        if (!file.GetNextValues(surface.vertices, n) || !file.GetNextValues(surface.normal, n) ||
            !file.GetNextValues(surface.uv, n) || !file.GetNextValues(surface.diffuse, n) ||
            !ReadIndices(surface, told))
            return Fail("the arrays of a mesh have the wrong length");
        surface.lightmap_uv.assign(n, {});
        return ReadTexInfo(surface);
    }

    bool ReadControlPoints(Surface& surface, const SurfaceCounts& told) {
        surface.cp_count = told.cp_count;
        if (!file.GetNextValues(surface.cp, static_cast<size_t>(told.cp_count)))
            return Fail("the control points of a surface have the wrong length");
        RepairPoints(surface.cp);
        return ReadTexInfo(surface);
    }

    bool ReadIndices(Surface& surface, const SurfaceCounts& told) {
        if (!file.GetNextValues(surface.tri_indices, static_cast<size_t>(told.tri_count)) ||
            !file.GetNextValues(surface.edge_indices, static_cast<size_t>(told.edge_count)))
            return false;
        RepairPoints(surface.vertices);
        RepairPoints(surface.normal);
        for (UVVector& uv : surface.uv) {
            RepairNumber(uv.u);
            RepairNumber(uv.v);
        }
        for (TRIANGLE& triangle : surface.tri_indices)
            RepairIndices(triangle.i, surface.vertices.size());
        for (EDGE& edge : surface.edge_indices)
            RepairIndices(edge.i, surface.vertices.size());
        if (surface.vertices.empty()) {
            surface.tri_indices.clear();
            surface.edge_indices.clear();
        }
        return true;
    }

    bool ReadTexInfo(Surface& surface) {
        const std::vector<uint8_t> record = file.GetArrayAlloc(file.GetCurrentArrayIndex());
        file.SkipNextArray();
        if (!UnpackTexInfo(record, surface.texture))
            return Fail("the mapping of a surface has the wrong length");
        TEX_INFO& info = surface.texture;
        for (float* value :
             {&info.shift.u, &info.shift.v, &info.scale.u, &info.scale.v, &info.size.u, &info.size.v, &info.rotation})
            RepairNumber(*value);
        for (float* side : {&info.size.u, &info.size.v})
            if (*side != 0 && std::fabs(*side) < LEAST_MAPPING_SIZE) {
                *side = 0;
                repaired = true;
            }
        return true;
    }

    void RepairNumber(float& value) {
        if (std::fabs(value) <= MAX_COORDINATE)
            return;
        value = 0;
        repaired = true;
    }
    void RepairPoints(std::vector<D3DVECTOR>& points) {
        for (D3DVECTOR& point : points)
            for (int axis = 0; axis < 3; ++axis)
                RepairNumber(Component(point, axis));
    }
    template <size_t N>
    void RepairIndices(std::array<uint16_t, N>& indices, size_t vertex_count) {
        for (uint16_t& index : indices)
            if (index >= vertex_count) {
                index = 0;
                repaired = true;
            }
    }

    // Absent values keep their presets; the id of a file that ends before it is none.
    bool ReadScalars(uint32_t& stored_id) {
        int32_t id = -1;
        file.GetNextValue(id);
        stored_id = id < 0 ? NO_OBJECT_ID : static_cast<uint32_t>(id);
        brush->elasticity = 0;
        uint32_t energy = 0;
        file.GetNextValue(brush->properties);
        if (!ReadCountedText(brush->name))
            return false;
        file.GetNextValue(energy);
        file.GetNextValue(brush->mass);
        if (!ReadCountedText(brush->death_particle))
            return false;
        brush->energy = static_cast<uint16_t>(energy);
        file.GetNextValue(brush->elasticity);
        file.GetNextValue(brush->static_friction);
        file.GetNextValue(brush->dynamic_friction);
        file.GetNextValue(brush->terrain_vertex_size);
        file.GetNextValue(brush->coll_dmg);
        file.GetNextValue(brush->touch_dmg);
        file.GetNextValue(brush->time_scale);
        file.GetNextValue(brush->rotation_factor);
        file.GetNextValue(brush->link_action);
        for (float* damage : {&brush->coll_dmg, &brush->touch_dmg})
            if (!(*damage >= LEAST_DAMAGE))
                *damage = 0;
        CheckTerrainSize();
        return true;
    }

    bool ReadCountedText(std::string& text) {
        int32_t length = 0;
        file.GetNextValue(length);
        if (length == 0)
            return true;
        if (length < 0 || file.GetCurrentArrayLength() != static_cast<uint32_t>(length))
            return Fail("a name has the wrong length");
        text.resize(static_cast<size_t>(length));
        return file.GetNextArray(text.data());
    }

    // The grid of a terrain segment must be that of its vertices, or nothing may walk it by rows.
    void CheckTerrainSize() {
        if (brush->type != BT_TERRAIN)
            return;
        const SIZE grid = brush->terrain_vertex_size;
        const size_t vertices = brush->surfaces.empty() ? 0 : brush->surfaces[0].vertices.size();
        if (grid.cx < 0 || grid.cy < 0 || static_cast<uint64_t>(grid.cx) * static_cast<uint64_t>(grid.cy) != vertices) {
            brush->terrain_vertex_size = {};
            repaired = true;
        }
    }

    UChunkFile& file;
    int version;
    std::unique_ptr<Brush> brush = std::make_unique<Brush>();
    int32_t flat_count = 0, curved_count = 0;
    D3DCOLORVALUE color;
    std::vector<SurfaceCounts> counts;
    bool repaired = false;
    std::string error;
};

} // namespace

std::unique_ptr<Brush> ReadBrush(UChunkFile& file, int version, uint32_t& stored_id, bool& repaired,
                                 std::string& error) {
    return BrushChunk(file, version).Read(stored_id, repaired, error);
}
