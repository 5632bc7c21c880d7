#include "drawing/BrushPasses.h"
#include "drawing/PathDrawing.h"
#include "drawing/ViewCull.h"
#include "drawing/WireDrawing.h"
#include "render/Frame.h"
#include "render/StateCache.h"

namespace {

class WirePass {
public:
    WirePass(World& scene, const DrawContext& draw_context) : world(scene), context(draw_context), cull(draw_context) {}

    void Draw() {
        BrushMeshes& meshes = BrushMeshes::Of(world);
        const std::vector<BrushMeshes::Chunk>& chunks = meshes.Wire(world);
        records = meshes.Records().data();
        for (const BrushMeshes::Chunk& chunk : chunks)
            DrawUnselected(chunk.plain);
        for (const auto& [mesh, part] : deferred)
            Add(*mesh, *part);
        for (const BrushMeshes::Chunk& chunk : chunks)
            if (context.filters.show_brushes)
                DrawSelected(chunk.selected);
        Flush();
    }

private:
    Brush& BrushOf(const BrushPart& part) const { return *world.brush[part.brush]; }
    void DrawUnselected(const BrushMesh& mesh) {
        for (const BrushPart& part : mesh.Parts()) {
            const BrushRecord& record = records[part.brush];
            if (record.hidden)
                continue;
            if (record.IsShown(context.filters)) {
                if (record.portal_or_occluder)
                    deferred.push_back({&mesh, &part});
                else
                    Add(mesh, part);
            }
            if (record.has_paths && world.IsPathSelected(BrushOf(part).GetObjectID()))
                AddPaths(BrushOf(part));
        }
    }
    void DrawSelected(const BrushMesh& mesh) {
        for (const BrushPart& part : mesh.Parts()) {
            const BrushRecord& record = records[part.brush];
            if (record.hidden)
                continue;
            Add(mesh, part);
            if (record.has_paths)
                AddPaths(BrushOf(part));
        }
    }
    void Add(const BrushMesh& mesh, const BrushPart& part) {
        if (part.range.index_count == 0 || cull.Hides(part.min, part.max))
            return;
        if (mesh.Mesh()) {
            run.Add(*mesh.Mesh(), part.range);
            return;
        }
        Flush(); // the device has no room for it
        AddWire(lines, BrushOf(part), WireColor(BrushOf(part)));
        lines.Flush();
    }
    void AddPaths(Brush& b) { // over the wires before, under those that follow
        Flush();
        AddObjectPaths(lines, context, b);
        lines.Flush();
    }
    void Flush() {
        SetPlainState();
        run.Flush();
    }

    struct Deferred {
        const BrushMesh* mesh;
        const BrushPart* part;
    };
    World& world;
    const DrawContext& context;
    ViewCull cull;
    const BrushRecord* records = nullptr; // of all brushes
    PartRun run;
    LineBatch lines;
    std::vector<Deferred> deferred;
};

} // namespace

void PartRun::Add(DeviceMesh& of, const MeshPart& part) {
    if (&of != mesh)
        Flush();
    mesh = &of;
    if (!parts.empty()) {
        MeshPart& last = parts.back();
        if (last.first_index + last.index_count == part.first_index &&
            last.first_vertex + last.vertex_count == part.first_vertex) {
            last.index_count += part.index_count;
            last.vertex_count += part.vertex_count;
            return;
        }
    }
    parts.push_back(part);
}

void PartRun::Flush() {
    if (parts.empty())
        return;
    crMFlush();
    for (const MeshPart& part : parts) {
        crvStatVerts += part.vertex_count;
        crvStatFaces += part.index_count / 3;
    }
    criTextureDevice().DrawMesh(*mesh, parts);
    parts.clear();
}

void DrawWireBrushes(World& world, const DrawContext& context) {
    SetPlainState();
    criTextureDevice().BeginGroup();
    WirePass(world, context).Draw();
    criTextureDevice().EndGroup();
}
