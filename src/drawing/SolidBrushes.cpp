#include <algorithm>

#include "drawing/BrushPasses.h"
#include "drawing/SolidPass.h"
#include "render/Frame.h"
#include "render/StateCache.h"

namespace {

class MeshPass {
public:
    MeshPass(World& scene, const DrawContext& draw_context)
        : world(scene), context(draw_context), meshes(BrushMeshes::Of(scene)),
          chunks(meshes.Solid(scene, OptionsOf(scene, draw_context))), plain_pass(scene, draw_context),
          seen(scene.brush.size()) {}

    void Draw() {
        FindSeen();
        CollectOpaque();
        if (criTextureDevice().WantsSortedStates()) { // decals then wait for all that is opaque
            std::stable_sort(pieces.begin(), pieces.end(),
                             [](const Piece& a, const Piece& b) { return a.part->key < b.part->key; });
            for (const Piece& piece : pieces)
                Add(piece);
            for (size_t i = 0; i < seen.size(); ++i)
                if (seen[i])
                    DrawDecals(*world.brush[i]);
        } else {
            for (size_t i = 0; i < pieces.size(); ++i) {
                Add(pieces[i]);
                if (i + 1 == pieces.size() || pieces[i + 1].part->brush != pieces[i].part->brush)
                    DrawDecals(*world.brush[pieces[i].part->brush]);
            }
        }
        DrawDeferred();
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
        for (uint32_t i = 0; i < seen.size(); ++i) {
            const Brush& b = *world.brush[i];
            if (b.is_hidden || !context.filters.ShowsBrush(b) || !b.Visible(planes))
                continue;
            if (b.IsPortalOrOccluder() || meshes.IsTransparent(i))
                deferred.push_back({i, b.DistanceFromCamera()});
            else
                seen[i] = true;
        }
        std::stable_sort(deferred.begin(), deferred.end(),
                         [](const Deferred& a, const Deferred& b) { return a.distance > b.distance; });
    }
    void CollectOpaque() { // in the order of the table, as far as the meshes are
        for (const BrushMeshes::Chunk& chunk : chunks) {
            const std::vector<BrushPart>&plain = chunk.plain.Parts(), &selected = chunk.selected.Parts();
            size_t p = 0, s = 0;
            while (p < plain.size() || s < selected.size()) {
                const bool takes_plain =
                    s == selected.size() || (p < plain.size() && plain[p].brush < selected[s].brush);
                const BrushPart& part = takes_plain ? plain[p++] : selected[s++];
                if (seen[part.brush])
                    pieces.push_back({takes_plain ? &chunk.plain : &chunk.selected, &part});
            }
        }
    }
    void Add(const Piece& piece) {
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
    void DrawDecals(const Brush& b) {
        if (b.decal_list.empty())
            return;
        Flush();
        plain_pass.DrawDecals(b);
        has_state = false;
    }
    void DrawDeferred() {
        for (const Deferred& d : deferred) {
            const Brush& b = *world.brush[d.brush];
            const BrushMeshes::Chunk& chunk = chunks[d.brush / BrushMeshes::CHUNK_BRUSHES];
            const BrushMesh& mesh = b.is_selected ? chunk.selected : chunk.plain;
            for (const BrushPart& part : mesh.Parts())
                if (part.brush == d.brush)
                    Add({&mesh, &part});
            DrawDecals(b);
        }
        Flush();
    }

    World& world;
    const DrawContext& context;
    BrushMeshes& meshes;
    const std::vector<BrushMeshes::Chunk>& chunks;
    SolidPass plain_pass;   // of what is not in meshes
    std::vector<bool> seen; // opaque, by index
    std::vector<Piece> pieces;
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
