#include <cmath>
#include <unordered_set>

#include "drawing/BoxFaces.h"
#include "drawing/DrawContext.h"
#include "drawing/GeometryBatch.h"
#include "drawing/LineColors.h"
#include "drawing/PathDrawing.h"
#include "drawing/WireDrawing.h"
#include "render/Matrix.h"
#include "render/StateCache.h"
#include "scene/World.h"

namespace {

constexpr uint32_t WHITE = 0xFFFFFFFF, TINTED = 0xFFFF9090;
constexpr int RING_POINTS = 64;
constexpr size_t BOX_CORNERS = 8;

float Radians(float degrees) { return degrees * DEGREE_TO_TURN * TWO_PI; }

float RingAngle(int i, int points) { return TWO_PI / static_cast<float>(points) * static_cast<float>(i % points); }

class EntityPass {
public:
    EntityPass(const World& scene, const DrawContext& draw_context) : world(scene), context(draw_context) {
        selected.resize(world.entity.size());
        for (const int e : world.entity_selection) {
            selected[static_cast<size_t>(e)] = true;
            selected_ids.insert(world.entity[static_cast<size_t>(e)]->GetObjectID());
        }
        selected_ids.erase(NO_OBJECT_ID);
    }

    void DrawAll() {
        for (size_t i = 0; i < world.entity.size(); ++i) {
            Entity& e = *world.entity[i];
            if (e.IsHidden() || !context.filters.ShowsEntityType(e) || (!selected[i] && IsPointOfUnselectedPath(e)))
                continue;
            if (selected[i] || HasSelectedPath(e))
                AddObjectPaths(lines, context, e);
            DrawShape(e, selected[i]);
            if (selected[i])
                DrawLightMarks(e);
            if (e.IsType("actor") || e.IsType("respawn_point"))
                DrawFacing(e);
        }
    }

private:
    bool HasSelectedPath(const BaseObject& owner) const {
        for (const auto* points : {&owner.path, &owner.target_path})
            for (const uint32_t id : *points)
                if (selected_ids.contains(id))
                    return true;
        return false;
    }

    bool IsPointOfUnselectedPath(const Entity& e) const {
        const BaseObject* const owner = BaseObject::GetObjectFromID(e.path_parent_id);
        return owner && !HasSelectedPath(*owner);
    }

    void DrawShape(const Entity& e, bool is_selected) {
        const bool outlined = is_selected && context.outline_selection;
        const uint32_t textured_color = outlined ? TINTED : is_selected ? ColorOf(LineColor::Selected) : WHITE;
        const bool nonbox = context.filters.show_nonbox_entities;
        if (nonbox && e.bitmap != NO_TEXTURE_HANDLE)
            DrawIcon(e, textured_color);
        else if (nonbox && e.mesh)
            DrawMesh(e, textured_color);
        const bool textured = nonbox && (e.bitmap != NO_TEXTURE_HANDLE || e.mesh);
        if (textured ? outlined : !nonbox || e.model == EM_BOX)
            DrawBox(e, is_selected ? ColorOf(LineColor::Selected) : e.color);
    }

    void SetTexturedState(uint32_t texture) {
        lines.Flush();
        crTexture(texture, 0);
        crColorOp(OP_MODULATE, ARG_TEXTURE, ARG_DIFFUSE, 0);
        crAlphaOp(OP_MODULATE, ARG_TEXTURE, ARG_DIFFUSE, 0);
        criSetStageValue(0, TSS_TEXCOORDINDEX, 0);
        criSetStageValue(1, TSS_COLOROP, OP_DISABLE);
        crAlphaBlend(BM_NONE);
        criSetStateValue(RS_CULLMODE, CULL_CCW);
    }

    void DrawIcon(const Entity& e, uint32_t color) {
        constexpr UVVector corners[4] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
        const D3DVECTOR c = e.position + e.offset;
        const Box box = MakeBox(c - e.model_size, c + e.model_size);
        SetTexturedState(e.bitmap);
        GeometryBatch faces(PT_TRI_LIST, VT_XYZ | VT_DIFFUSE | VT_TEX1);
        for (const auto& face : BOX_FACES) {
            const uint32_t first = faces.Reserve(4, 6);
            for (size_t k = 0; k < 4; ++k) {
                const D3DVECTOR& p = box[face[k]];
                crDiffuse(color);
                crUV(corners[k].u, corners[k].v);
                crXYZ(p.x, p.y, p.z);
            }
            crIndexFace(first, first + 1, first + 2);
            crIndexFace(first, first + 2, first + 3);
        }
    }

    void DrawMesh(const Entity& e, uint32_t color) {
        const D3DVECTOR c = e.position + e.offset;
        const float angle = Radians(e.FloatParameter("orientation"));
        const float cosine = std::cos(angle), sine = std::sin(angle);
        for (const MeshSurface& part : e.mesh->surfaces) {
            SetTexturedState(part.texture);
            GeometryBatch faces(PT_TRI_LIST, VT_XYZ | VT_DIFFUSE | VT_TEX1);
            AddTriangles(faces, part.tri_indices, part.vertices.size(), [&](size_t i) {
                const D3DVECTOR& p = part.vertices[i];
                const UVVector uv = i < part.uv.size() ? part.uv[i] : UVVector{};
                crDiffuse(color);
                crUV(uv.u, uv.v);
                crXYZ(cosine * p.x - sine * p.z + c.x, p.y + c.y, sine * p.x + cosine * p.z + c.z);
            });
        }
    }

    void DrawBox(const Entity& e, uint32_t color) {
        constexpr size_t edges[12][2] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                                         {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};
        constexpr size_t opposite[BOX_CORNERS / 2] = {6, 7, 4, 5};
        constexpr D3DVECTOR star_size{1, 1, 1};
        const D3DVECTOR c = e.position + e.offset;
        const Box box = MakeBox(c - e.model_size, c + e.model_size);
        for (const auto& edge : edges)
            lines.Line(box[edge[0]], box[edge[1]], color);
        const Box star = MakeBox(c - star_size, c + star_size);
        for (size_t k = 0; k < std::size(opposite); ++k)
            lines.Line(star[k], star[opposite[k]], color);
    }

    void DrawLightMarks(const Entity& e) {
        constexpr float ONLY_SELECTED_RANGE = 100;
        const bool orthographic = context.view != VIEW_PERSPECTIVE;
        const D3DVECTOR c = e.position + e.offset;
        if (e.BoolParameter("spotlight_enable"))
            DrawSpotlight(e, ColorOf(LineColor::LightRange));
        else if (orthographic)
            DrawCircle(c,
                       e.FloatParameter("range", world.entity_selection.GetItemCount() == 1 ? ONLY_SELECTED_RANGE : 0),
                       RING_POINTS, ColorOf(LineColor::LightRange));
        if (orthographic && e.GetParameterStr("falloff"))
            DrawCircle(c, e.FloatParameter("falloff"), RING_POINTS, ColorOf(LineColor::LightFalloff));
    }

    // In the plane through the origin that the view faces.
    void DrawCircle(const D3DVECTOR& center, float radius, int segments, uint32_t color) {
        const auto point = [&](int i) -> D3DVECTOR {
            const float cosine = radius * std::cos(RingAngle(i, segments));
            const float sine = radius * std::sin(RingAngle(i, segments));
            return context.view == VIEW_TOP     ? D3DVECTOR{center.x + cosine, 0, center.z + sine}
                   : context.view == VIEW_FRONT ? D3DVECTOR{center.x + cosine, center.y + sine, 0}
                                                : D3DVECTOR{0, center.y + sine, center.z + cosine};
        };
        for (int i = 0; i < segments; ++i)
            lines.Line(point(i), point(i + 1), color);
    }

    static D3DMATRIX SpotlightMatrix(const Entity& e) {
        D3DVECTOR direction{0, -0.999f, 0.001f};
        if (const Entity* const target = e.FindLinkedEntity("TARGET_POSITION"))
            if (const D3DVECTOR d = NormalizeOrZero(target->position - e.position); SquareMagnitude(d) > 0)
                direction = d;
        D3DVECTOR side = NormalizeOrZero(CrossProduct({0, 1, 0}, direction));
        if (SquareMagnitude(side) == 0) // straight up or down
            side = {1, 0, 0};
        const D3DVECTOR up = CrossProduct(direction, side);
        constexpr D3DMATRIX turn = {{{1, 0, 0, 0}, {0, 0, -1, 0}, {0, 1, 0, 0}, {0, 0, 0, 1}}}; // -Y on to +Z
        const D3DMATRIX basis = {{{side.x, side.y, side.z, 0},
                                  {up.x, up.y, up.z, 0},
                                  {direction.x, direction.y, direction.z, 0},
                                  {0, 0, 0, 1}}};
        D3DMATRIX product;
        crMMultiply(turn, basis, product);
        crMMultiply(product, crTranslation(e.position), product);
        return product;
    }

    void DrawSpotlight(const Entity& e, uint32_t color) {
        constexpr float DEFAULT_RANGE = 256;
        constexpr int RAYS = 4;
        const float length = e.FloatParameter("range", DEFAULT_RANGE);
        const float spread = std::tan(Radians(e.FloatParameter("spotlight_angle") * 0.5f)) * length;
        const auto point = [&](int i) -> D3DVECTOR {
            const float angle = RingAngle(i, RING_POINTS);
            return {std::cos(angle) * spread, -length, std::sin(angle) * spread};
        };
        lines.Flush();
        const uint32_t old = crMCurrent(CRM_WORLD);
        crMSet(SpotlightMatrix(e));
        for (int i = 0; i < RING_POINTS; ++i)
            lines.Line(point(i), point(i + 1), color);
        for (int i = 0; i < RAYS; ++i)
            lines.Line({}, point(i * RING_POINTS / RAYS), color);
        lines.Flush();
        crMSetIdentity();
        crMCurrent(old);
    }

    void DrawFacing(const Entity& e) {
        const D3DVECTOR c = e.position + e.offset, &h = e.model_size;
        const float angle = Radians(e.FloatParameter("orientation") + 90);
        lines.Line(c, {c.x + 2 * std::cos(angle) * h.x, c.y, c.z + 2 * std::sin(angle) * h.z}, WHITE);
    }

    const World& world;
    const DrawContext& context;
    std::vector<bool> selected; // by index
    std::unordered_set<uint32_t> selected_ids;
    LineBatch lines;
};

} // namespace

void World::RenderEntities(const DrawContext& context) {
    if (context.filters.show_entities)
        EntityPass(*this, context).DrawAll();
}
