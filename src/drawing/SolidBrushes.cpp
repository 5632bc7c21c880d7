#include <algorithm>
#include <map>

#include "drawing/BrushPasses.h"
#include "drawing/DepthShift.h"
#include "drawing/SolidPass.h"
#include "drawing/WireDrawing.h"
#include "render/Frame.h"
#include "render/StateCache.h"

namespace {

class MeshPass {
public:
    MeshPass(World& scene, const DrawContext& draw_context)
        : world(scene), context(draw_context),
          chunks(BrushMeshes::Of(scene).Solid(scene, OptionsOf(scene, draw_context))),
          records(BrushMeshes::Of(scene).Records()), plain_pass(scene, draw_context), seen(records.size()),
          bare(records.size()) {}

    void Draw() {
        FindSeen();
        if (criTextureDevice().WantsSortedStates())
            DrawByState();
        else
            DrawInOrder();
        DrawDeferred();
        if (context.outline_selection || context.shade_bare)
            DrawEdges();
    }

private:
    struct Piece {
        const BrushMesh* mesh;
        const BrushPart* part;
    };
    struct Deferred {
        uint32_t brush;
        float distance;
    };

    void FindSeen() {
        PLANE planes[6];
        crGetClipPlanes(planes);
        const BoxCull cull(planes);
        for (uint32_t i = 0; i < records.size(); ++i) {
            const BrushRecord& b = records[i];
            if (b.hidden || !b.IsShown(context.filters))
                continue;
            if (b.upright ? cull.Hides(b.min, b.max) : !world.brush[i]->Visible(planes))
                continue;
            if (b.IsDeferred())
                deferred.push_back({i, world.brush[i]->DistanceFromCamera()});
            else
                seen[i] = true;
        }
        std::stable_sort(deferred.begin(), deferred.end(),
                         [](const Deferred& a, const Deferred& b) { return a.distance > b.distance; });
    }
    // take(piece) of all that is seen and not deferred, in the order of the table as far as the meshes are.
    template <class Take>
    void ForEachOpaque(const Take& take) const {
        for (const BrushMeshes::Chunk& chunk : chunks) {
            const std::vector<BrushPart>&plain = chunk.plain.Parts(), &selected = chunk.selected.Parts();
            size_t p = 0, s = 0;
            while (p < plain.size() || s < selected.size()) {
                const bool takes_plain =
                    s == selected.size() || (p < plain.size() && plain[p].brush < selected[s].brush);
                const BrushPart& part = takes_plain ? plain[p++] : selected[s++];
                if (seen[part.brush])
                    take(Piece{takes_plain ? &chunk.plain : &chunk.selected, &part});
            }
        }
    }
    void DrawInOrder() {
        uint32_t last = UINT32_MAX;
        const auto finish = [&] {
            if (last != UINT32_MAX)
                DrawDecals(last);
        };
        ForEachOpaque([&](const Piece& piece) {
            if (piece.part->brush != last)
                finish();
            last = piece.part->brush;
            Add(piece);
        });
        finish();
    }
    void DrawByState() { // decals then wait for all that is opaque
        std::map<SolidKey, std::vector<Piece>> by_state;
        auto state = by_state.end();
        ForEachOpaque([&](const Piece& piece) {
            if (state == by_state.end() || state->first != piece.part->key)
                state = by_state.try_emplace(piece.part->key).first;
            state->second.push_back(piece);
        });
        for (const auto& [of, pieces] : by_state)
            for (const Piece& piece : pieces)
                Add(piece);
        for (uint32_t i = 0; i < seen.size(); ++i)
            if (seen[i])
                DrawDecals(i);
    }
    void Add(const Piece& piece) {
        if (piece.part->key.kind == SolidKind::Bare)
            bare[piece.part->brush] = true;
        if (piece.part->range.index_count == 0)
            return;
        if (!piece.mesh->Mesh()) { // the device has no room for it
            if (drawn_plain != piece.part->brush) {
                Flush();
                plain_pass.Draw(*world.brush[piece.part->brush]);
                plain_pass.Flush();
                has_state = false;
            }
            drawn_plain = piece.part->brush;
            return;
        }
        if (!has_state || piece.part->key != key) {
            Flush();
            key = piece.part->key;
            SetSolidState(LookOf(key, world, context));
            has_state = true;
        }
        run.Add(*piece.mesh->Mesh(), piece.part->range);
    }
    void Flush() { run.Flush(); }
    void DrawDecals(uint32_t brush) {
        if (!records[brush].has_decals)
            return;
        Flush();
        plain_pass.DrawDecals(*world.brush[brush]);
        has_state = false;
    }
    void DrawDeferred() {
        for (const Deferred& d : deferred) {
            const BrushMeshes::Chunk& chunk = chunks[d.brush / BrushMeshes::CHUNK_BRUSHES];
            const BrushMesh& mesh = records[d.brush].selected ? chunk.selected : chunk.plain;
            for (const BrushPart& part : mesh.Parts())
                if (part.brush == d.brush)
                    Add({&mesh, &part});
            DrawDecals(d.brush);
        }
        Flush();
    }

    // Those of bare faces first, those of the selection over them.
    void DrawEdges() {
        for (const Deferred& d : deferred)
            seen[d.brush] = true;
        SetPlainState();
        const DepthShift above_faces;
        const std::vector<BrushMeshes::Chunk>& wires = BrushMeshes::Of(world).Wire(world);
        for (const BrushMeshes::Chunk& chunk : wires)
            if (context.shade_bare)
                for (const BrushPart& part : chunk.plain.Parts())
                    if (seen[part.brush] && bare[part.brush])
                        AddEdges(chunk.plain, part);
        for (const BrushMeshes::Chunk& chunk : wires)
            if (context.outline_selection)
                for (const BrushPart& part : chunk.selected.Parts())
                    if (seen[part.brush])
                        AddEdges(chunk.selected, part);
        Flush();
        if (context.outline_selection)
            DrawSelectedSurface();
    }
    void AddEdges(const BrushMesh& mesh, const BrushPart& part) {
        if (part.range.index_count == 0)
            return;
        if (mesh.Mesh()) {
            run.Add(*mesh.Mesh(), part.range);
            return;
        }
        Flush(); // the device has no room for it
        LineBatch lines;
        AddWire(lines, *world.brush[part.brush], WireColor(*world.brush[part.brush]));
    }
    void DrawSelectedSurface() {
        constexpr uint32_t COLOR = 0xFF00FFFF;
        const int b = world.selected_surface_brush;
        if (b < 0 || static_cast<size_t>(b) >= seen.size() || !seen[static_cast<size_t>(b)])
            return;
        const Brush& brush = *world.brush[static_cast<size_t>(b)];
        LineBatch lines;
        brush.ForEachSurface([&](const Surface& surface, int s, bool curved) {
            if (s == brush.selected_surface && curved == brush.selected_surface_curved)
                lines.Edges(surface, COLOR);
        });
    }

    World& world;
    const DrawContext& context;
    const std::vector<BrushMeshes::Chunk>& chunks;
    const std::vector<BrushRecord>& records;
    SolidPass plain_pass;   // of what is not in meshes
    std::vector<bool> seen; // opaque, by index
    std::vector<bool> bare; // drawn without a material somewhere
    std::vector<Deferred> deferred;
    PartRun run;
    SolidKey key;
    bool has_state = false;
    uint32_t drawn_plain = UINT32_MAX; // the brush without a mesh that was drawn last
};

} // namespace

void DrawSolidBrushes(World& world, const DrawContext& context) {
    SolidPass::SetDepthState();
    criTextureDevice().BeginGroup();
    MeshPass(world, context).Draw();
    criTextureDevice().EndGroup();
}
