// The drawing of one view, and who is told that one wants to be drawn.
#include <algorithm>

#include "drawing/LineColors.h"
#include "drawing/ViewDrawing.h"
#include "editor/Interface.h"
#include "render/Frame.h"
#include "render/StateCache.h"

namespace {

constexpr const char* CAPTIONS[VIEW_COUNT] = {"Top (X/Z)", "Front (X/Y)", "Left (Z/Y)", "Perspective"};
constexpr uint32_t FRAME_COLOR = 0xFFFFFF, ORBIT_FRAME_COLOR = 0x00FF00;
constexpr int LEAST_SIDE = 2; // pixels of a view that is drawn

// Smooth textures that repeat, and lightmaps that end at their edges. Set for each frame, as a device that was opened
// anew has forgotten them; what is set already is not sent again.
void SetSamplers(bool levels) {
    for (const uint32_t stage : {0u, 1u}) {
        criSetStageValue(stage, TSS_MAGFILTER, TF_LINEAR);
        criSetStageValue(stage, TSS_MINFILTER, TF_LINEAR);
    }
    criSetStageValue(0, TSS_MIPFILTER, levels ? MF_LINEAR : MF_NONE);
    criSetStageValue(1, TSS_MIPFILTER, MF_NONE);
    crTextureAddress(TA_WRAP, TA_WRAP, 0);
    crTextureAddress(TA_CLAMP, TA_CLAMP, 1);
}

} // namespace

void CInterface::RedrawView(int view) { Tell(&EditorListener::ViewChanged, view); }

void CInterface::RedrawAllViews() {
    for (int view = 0; view < VIEW_COUNT; ++view)
        RedrawView(view);
}

void CInterface::RedrawOrthoViews() {
    for (const int view : {VIEW_TOP, VIEW_FRONT, VIEW_LEFT})
        RedrawView(view);
}

void CInterface::ChangeRenderMode() {
    world->ChangeRenderMode();
    RedrawView(VIEW_PERSPECTIVE);
}

DrawContext CInterface::MakeDrawContext(int view) const {
    DrawContext context;
    context.view = view;
    context.scale = views.View(view).Scale();
    context.camera_position = views.perspective.camera_position;
    context.filters = filters;
    context.show_links = settings.show_links;
    if (settings.camera_look) {
        D3DVECTOR normal, right;
        ComputeCameraVectors(views.perspective.camera_rotation, context.camera_look, normal, right);
    }
    context.mask_enabled = mask_enabled;
    context.outline_selection = settings.outline_selection;
    context.shade_bare = settings.shade_bare;
    context.show_texture_border = show_texture_border;
    context.brush_texture = brush_texture;
    context.border_texture = border_texture;
    context.vertex_mode = editor_state == ES_VERTEX || editor_state == ES_VERTEX_MOVE;
    context.selected_cross_vertex = selected_cross_vertex;
    context.selected_cross_edge = selected_cross_edge;
    context.anim_time = anim_time;
    return context;
}

bool CInterface::DrawScene(int view) {
    const VIEWINFO& vi = View(view);
    const RECT& rect = vi.window_rect;
    if (compilation_active || !world || !criGetFrontBuffer() || rect.Width() < LEAST_SIDE || rect.Height() < LEAST_SIDE)
        return false;
    const bool perspective = view == VIEW_PERSPECTIVE;
    crBgColor(static_cast<uint32_t>(perspective ? settings.bg_color_3D_view : settings.bg_color_vire_view) & 0xFFFFFF);
    crSetViewport(rect.left, rect.top, rect.Width(), rect.Height());
    if (crBeginFrame() != 0)
        return false;
    SetSamplers(settings.smooth_far);
    if (!perspective) {
        const int64_t grid = settings.thin_grid ? ThinnedGrid(grid_size, vi.Scale()) : grid_size;
        const int64_t step = vi.zoom_in == 1 ? grid / vi.zoom_out : vi.zoom_in * grid;
        DrawGrid(rect, vi.view_position, static_cast<int>(std::max<int64_t>(step, 1)), view_grid_color);
    }
    SetMatrices(view);
    if (perspective && settings.ground_grid)
        DrawGroundGrid(EyePosition());
    const DrawContext context = MakeDrawContext(view);
    world->RenderEntities(context);
    world->RenderConnectionLines(context);
    world->RenderBrushes(context);
    world->RenderCameraPosition(context);
    if (editor_state == ES_EXTRUDABLE)
        RenderOutline(ex_point, ColorOf(LineColor::Outline));
    RenderSOVertices(*world, context);
    if (selection_box_active && !context.vertex_mode)
        RenderDragBox(context, ColorOf(LineColor::SelectionBox), selection_box);
    if (drag_box_active && view == active_view)
        RenderDragBox(context, ColorOf(LineColor::DragBox), drag_box);
    if (cordon_active)
        RenderDragBox(context, ColorOf(LineColor::CordonBox), views.cordon_box);
    if (clip_active)
        RenderDragBox(context, ColorOf(LineColor::ClipBox), views.clip_box);
    if (perspective && view == active_view && editor_state == ES_TERRAIN) {
        DrawContext at_eye = context;
        at_eye.camera_position = EyePosition();
        world->RenderTerrainBrush(at_eye, terrain_modifier, last_position);
    }
    crvD3DDevice->EndScene();
    return true;
}

void CInterface::DrawView(int view) {
    if (!DrawScene(view))
        return;
    const RECT& rect = View(view).window_rect;
    DrawCaption(rect, CAPTIONS[view]);
    if (view == active_view)
        DrawViewFrame(rect, special_camera_rotation ? ORBIT_FRAME_COLOR : FRAME_COLOR);
    crvD3DDevice->Present({static_cast<uint32_t>(std::max(rect.left, 0)), static_cast<uint32_t>(std::max(rect.top, 0)),
                           static_cast<uint32_t>(rect.Width()), static_cast<uint32_t>(rect.Height())});
}
