// The states of the editor, what follows from them, and the short operations on the selection.
#include <algorithm>

#include "editor/Interface.h"

namespace {

bool IsCurvedTemplate(uint32_t type) { return type >= BT_PATCH && type <= BT_ELASTIC_BOX; }

} // namespace

void CInterface::RemoveListener(EditorListener& listener) {
    listeners.erase(std::remove(listeners.begin(), listeners.end(), &listener), listeners.end());
}

void CInterface::SetEditorState(EditorState state) {
    older_editor_state = old_editor_state;
    old_editor_state = editor_state;
    editor_state = state;
}

void CInterface::ResetEditorState() {
    editor_state = old_editor_state;
    old_editor_state = older_editor_state;
}

// A mode may have been entered twice, with another one between.
void CInterface::LeaveMode() {
    const EditorState mode = editor_state;
    for (int i = 0; i < 2 && editor_state == mode; ++i)
        editor_state = i == 0 ? old_editor_state : older_editor_state;
    if (editor_state == mode)
        editor_state = world->IsSomethingSelected() ? ES_SELECTED : ES_IDLE;
}

void CInterface::SettleState() {
    SyncVertexNet();
    const EditorState lasting = editor_state == ES_PAN ? old_editor_state : editor_state;
    if (lasting == ES_EXTRUDABLE) {
        outline_holds_mouse = true;
        mouse_release = false;
    } else if (outline_holds_mouse && !left_button_pressed) {
        outline_holds_mouse = false;
        mouse_release = true;
        GetDesktop().CaptureMouse(false);
    }
    if (editor_state == settled_state)
        return;
    const bool tool_changed = (editor_state == ES_TERRAIN) != (settled_state == ES_TERRAIN);
    settled_state = editor_state;
    ChangeCursor();
    if (tool_changed)
        Tell(&EditorListener::TerrainToolChanged);
}

CursorRole CInterface::GetCursor() const {
    switch (editor_state) {
    case ES_PAN:
        return CursorRole::Pan;
    case ES_SELECTED:
    case ES_EDIT:
        return shearing ? CursorRole::Shear : CursorRole::Arrow;
    case ES_EXTRUDABLE:
        return CursorRole::Extrudable;
    case ES_ROTATE_ARMED:
    case ES_ROTATE:
        return CursorRole::Rotate;
    case ES_PICK_TEXTURE:
        return CursorRole::Pick;
    case ES_DECAL:
        return CursorRole::Decal;
    case ES_TERRAIN:
        return CursorRole::Terrain;
    default:
        return CursorRole::Arrow;
    }
}

void CInterface::ChangeCursor() {
    GetDesktop().SetCursor(GetCursor());
    Tell(&EditorListener::CursorChanged);
}

void CInterface::ToggleShearing() {
    if (editor_state != ES_SELECTED && editor_state != ES_ROTATE_ARMED)
        return;
    editor_state = ES_SELECTED;
    shearing = !shearing;
    ChangeCursor();
}

void CInterface::SetActiveBrushTemplate(BrushType new_template) {
    (IsCurvedTemplate(active_brush_template) ? curved_segments : normal_segments) = active_brush_segments;
    active_brush_template = new_template;
    active_brush_segments = IsCurvedTemplate(new_template) ? curved_segments : normal_segments;
}

void CInterface::MarkDirty() { MarkFileAsDirty(true); }

void CInterface::MarkFileAsDirty(bool is_dirty) {
    project_file_need_save = is_dirty;
    if (is_dirty)
        ++changes;
    if (!project_file_has_name)
        return;
    title = "Marrowstead 2000 - " + project_file_name + " " + (is_dirty ? "*" : "");
    Tell(&EditorListener::TitleChanged);
}

void CInterface::SelectionChanged() {
    if (world && settings.show_sel_wire && editor_state != ES_VERTEX && editor_state != ES_VERTEX_MOVE)
        RebuildSelectionNet();
    Tell(&EditorListener::SelectionChanged);
}

void CInterface::SelectionRestored(bool something_selected) {
    const EditorState state = something_selected ? ES_SELECTED : ES_IDLE;
    if (editor_state == ES_TERRAIN || editor_state == ES_DECAL)
        old_editor_state = state; // the tool stays in the hand
    else
        SetEditorState(state);
    selection_box_active = something_selected;
    drag_box_active = false;
    mouse_release = true;
    ChangeCursor();
    Tell(&EditorListener::SelectionChanged);
}

void CInterface::RefreshSelectionBox() {
    world->ComputeSelectionBox(selection_box);
    selection_pivot = CreatePivot(selection_box);
}

void CInterface::RebuildSelectionNet() {
    world->InitSOVertices();
    selected_cross_vertex = -1;
}

static bool IsInStep(const World& world, const SO_VERTEX& vertex) {
    if (vertex.object >= world.GetBrushCount())
        return false;
    const Brush& b = *world.brush[static_cast<size_t>(vertex.object)];
    const std::vector<Surface>& surfaces = vertex.curved ? b.curved_surfaces : b.surfaces;
    if (!b.is_selected || vertex.surface >= static_cast<int>(surfaces.size()))
        return false;
    const Surface& s = surfaces[static_cast<size_t>(vertex.surface)];
    const std::vector<D3DVECTOR>& points = vertex.curved ? s.cp : s.vertices;
    return vertex.vertex < static_cast<int>(points.size()) && points[static_cast<size_t>(vertex.vertex)] == vertex.v;
}

// The positions of now. The marks stay while the net is that of the same points.
static void RefreshNet(World& world) {
    const std::vector<SO_VERTEX> vertices = std::move(world.so_vertex);
    const std::vector<SO_EDGE> edges = std::move(world.so_edge);
    world.InitSOVertices();
    const auto same_point = [](const SO_VERTEX& a, const SO_VERTEX& b) {
        return a.object == b.object && a.surface == b.surface && a.vertex == b.vertex && a.curved == b.curved;
    };
    if (edges.size() != world.so_edge.size() ||
        !std::equal(vertices.begin(), vertices.end(), world.so_vertex.begin(), world.so_vertex.end(), same_point))
        return;
    for (size_t v = 0; v < vertices.size(); ++v)
        world.so_vertex[v].selected = vertices[v].selected;
    for (size_t e = 0; e < edges.size(); ++e)
        world.so_edge[e].selected = edges[e].selected;
}

void CInterface::SyncVertexNet() {
    if (world->so_vertex.empty())
        return;
    const bool vertex_mode = editor_state == ES_VERTEX || editor_state == ES_VERTEX_MOVE;
    if (!vertex_mode && !settings.show_sel_wire) {
        world->DestroySOVertices();
        selected_cross_vertex = -1;
    } else if (!std::all_of(world->so_vertex.begin(), world->so_vertex.end(),
                            [this](const SO_VERTEX& v) { return IsInStep(*world, v); })) {
        RefreshNet(*world);
        selected_cross_vertex = -1;
    }
}

void CInterface::ShowPortals(bool show) {
    filters.show_portals = show;
    for (const auto& b : world->brush)
        if (b->type == BT_PORTAL)
            b->is_hidden = !show;
}

void CInterface::HideSelected() {
    EndDragRecord();
    {
        const ChangeRecord record(*world, "Hide objects.");
        world->HideSelected();
    }
    UpdateSelectionBox();
    RedrawAllViews();
    MarkDirty();
}

void CInterface::HideUnselected() {
    EndDragRecord();
    {
        const ChangeRecord record(*world, "Hide objects.", ChangeScope::AllObjects);
        world->HideUnselected();
    }
    UpdateSelectionBox();
    RedrawAllViews();
    MarkDirty();
}

void CInterface::UnhideAll() {
    EndDragRecord();
    {
        const ChangeRecord record(*world, "Show objects.", ChangeScope::AllObjects);
        world->UnhideAll();
        if (clip_active)
            world->BoxHide(views.clip_box);
        if (!filters.show_portals)
            ShowPortals(false);
    }
    RedrawAllViews();
    MarkDirty();
}

void CInterface::CreateGroup() {
    EndDragRecord();
    const ChangeRecord record(*world, "Create a group.");
    world->CreateGroup();
    MarkDirty();
}

void CInterface::DestroyGroup() {
    EndDragRecord();
    const ChangeRecord record(*world, "Destroy groups.");
    world->DestroyGroup();
    MarkDirty();
}

void CInterface::SelectAll() {
    EndDragRecord();
    const ChangeRecord record(*world, "Select all.");
    if (world->SelectAll())
        UpdateSelectionBox();
    RedrawAllViews();
}

void CInterface::InvertSelection() {
    EndDragRecord();
    const ChangeRecord record(*world, "Invert the selection.");
    world->InvertSelection();
    UpdateSelectionBox();
    RedrawAllViews();
}

void CInterface::FlipHorizontally() {
    EndDragRecord();
    const ChangeRecord record(*world, "Flip objects.");
    world->FlipHorizontally(active_view);
    RefreshSelectionBox();
    MarkDirty();
}

void CInterface::FlipVertically() {
    EndDragRecord();
    const ChangeRecord record(*world, "Flip objects.");
    world->FlipVertically(active_view);
    RefreshSelectionBox();
    MarkDirty();
}

void CInterface::ChangeBrushColor(const D3DCOLORVALUE& color) {
    EndDragRecord();
    const ChangeRecord record(*world, "Change colors.");
    world->ChangeBrushColor(color);
    RedrawAllViews();
    MarkDirty();
}

void CInterface::Console() {
    console_onscreen = !console_onscreen;
    Tell(&EditorListener::LibraryWindowChanged);
}

void CInterface::ShowLibraryTab(LibraryTab tab) {
    if (tab == TAB_ENTITY && console_onscreen && selected_tab == TAB_ENTITY) {
        Console();
        return;
    }
    console_onscreen = true;
    selected_tab = tab;
    Tell(&EditorListener::LibraryWindowChanged);
}
