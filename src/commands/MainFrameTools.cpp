// Commands on the objects of the level: links, paths, materials, selection by content, and the surveys.
#include <algorithm>
#include <cstdlib>

#include "commands/MainFrame.h"
#include "foundation/Settings.h"
#include "foundation/Strings.h"
#include "pages/SmallDialogs.h"

namespace {

constexpr int REPEATS_AT_ONE = 10, LARGEST_SHIFT = 10; // of a texture shift under key repeat
constexpr float QUARTER = 90.0f;

// The size of the next shift, counting it.
float NextShift(int& repeat) {
    int step = 1;
    if (repeat + 1 > REPEATS_AT_ONE)
        step = std::min((repeat - (REPEATS_AT_ONE - 1)) / 2 + 1, LARGEST_SHIFT);
    ++repeat;
    return static_cast<float>(step);
}

} // namespace

// Links and paths -----------------------------------------------------------------------------------------------------

void CMainFrame::Link(bool link_first, bool link_method_2) {
    const ChangeRecord record(*interface.world, "Link objects.");
    interface.MarkDirty();
    interface.world->Link(link_first, link_method_2);
}

void CMainFrame::OnEditUnlink() {
    const ChangeRecord record(*interface.world, "Unlink objects.");
    interface.MarkDirty();
    interface.world->Unlink();
}

void CMainFrame::OnEditChangelink() {
    const ChangeRecord record(*interface.world, "Reverse links.");
    interface.MarkDirty();
    interface.world->Changelink();
}

void CMainFrame::OnEditCopypath() {
    const BaseObject* source = interface.FindPathOwner();
    const auto copy = [&](std::vector<std::unique_ptr<Entity>>& clipboard, const SimpleList<uint32_t>& list) {
        clipboard.clear();
        for (const uint32_t id : list)
            if (const Entity* point = interface.world->GetEntityFromID(id))
                clipboard.push_back(std::make_unique<Entity>(*point));
    };
    if (!source)
        return;
    copy(m_object_path, source->path);
    copy(m_target_path, source->target_path);
}

void CMainFrame::PasteList(BaseObject& target, const std::vector<std::unique_ptr<Entity>>& points,
                           SimpleList<uint32_t> BaseObject::*list) {
    for (const uint32_t id : target.*list)
        interface.world->DeleteEntityByID(id);
    (target.*list).Reset();
    for (const auto& point : points)
        if (Entity* created = interface.world->NewEntityCreated(std::make_unique<Entity>(*point), 1)) {
            created->path_parent_id = target.GetObjectID();
            (target.*list).Add(created->GetObjectID());
        }
}

void CMainFrame::CopyPath(BaseObject& target) {
    PasteList(target, m_object_path, &BaseObject::path);
    PasteList(target, m_target_path, &BaseObject::target_path);
}

void CMainFrame::OnEditPastepath() {
    World& world = *interface.world;
    const ChangeRecord record(world, "Paste a path.", ChangeScope::AllObjects);
    // By id: the old points go, and with them the indices of the selection.
    std::vector<uint32_t> targets;
    for (const int b : world.brush_selection)
        targets.push_back(world.brush[static_cast<size_t>(b)]->GetObjectID());
    for (const int e : world.entity_selection)
        targets.push_back(world.entity[static_cast<size_t>(e)]->GetObjectID());
    for (const uint32_t id : targets)
        if (BaseObject* target = BaseObject::GetObjectFromID(id))
            CopyPath(*target);
    interface.UpdateSelectionBox();
    interface.SetCountText();
    interface.RedrawAllViews();
    interface.MarkDirty();
}

// Brushes -------------------------------------------------------------------------------------------------------------

void CMainFrame::SelectTemplate(BrushType type) {
    interface.SetActiveBrushTemplate(type);
    if (type == BT_CUSTOM)
        interface.ShowLibraryTab(TAB_PREFAB);
}

void CMainFrame::OnBrushColor() {
    constexpr uint32_t RGB = 0xFFFFFF;
    if (interface.editor_state == ES_DECAL) {
        if (const std::optional<uint32_t> rgb = GetDesktop().AskColor(interface.world->decal_color.dw_color & RGB))
            interface.SetDecalColor(*rgb);
        return;
    }
    const std::optional<uint32_t> rgb = GetDesktop().AskColor(PackColor(interface.active_brush_color) & RGB);
    if (!rgb)
        return;
    const COLOR chosen = MakeColor(*rgb >> 16 & 0xFF, *rgb >> 8 & 0xFF, *rgb & 0xFF, 0);
    interface.active_brush_color = {chosen.r, chosen.g, chosen.b, 0};
    interface.ChangeBrushColor(interface.active_brush_color);
}

void CMainFrame::OnCollapse() {
    {
        const ChangeRecord record(*interface.world, "Collapse brushes.", ChangeScope::AllObjects);
        interface.world->Collapse();
    }
    interface.UpdateSelectionBox();
    interface.RedrawAllViews();
    interface.MarkDirty();
}

void CMainFrame::OnFlipNormals() {
    if (interface.world->brush_selection.GetItemCount() == 0)
        return;
    const ChangeRecord record(*interface.world, "Flip normals.");
    interface.world->FlipNormals();
    interface.MarkDirty();
}

void CMainFrame::OnAlignvertices() {
    if (interface.editor_state != ES_VERTEX)
        return;
    {
        const ChangeRecord record(*interface.world, "Round vertices.");
        interface.world->AlignVertices();
    }
    interface.MarkDirty();
}

// Curves at their coarsest, as a copy: what is only looked at stays as it is.
static bool IsWrong(Brush& brush) {
    constexpr int COARSEST = 3;
    if (brush.curved_surfaces.empty())
        return !brush.CheckPhysics();
    Brush coarse(brush);
    coarse.ChangeCurveDetail(COARSEST);
    return !coarse.CheckPhysics();
}

void CMainFrame::OnSelwrongobj() {
    World& world = *interface.world;
    const ChangeRecord record(world, "Select wrong objects.");
    world.ClearSelection();
    for (int b = 0; b < world.GetBrushCount(); ++b)
        if (IsWrong(*world.brush[static_cast<size_t>(b)]))
            world.SetBrushSelection(b, true);
    interface.SelectionChanged();
    interface.UpdateSelectionBox();
    interface.RedrawAllViews();
}

// Ids and scripts -----------------------------------------------------------------------------------------------------

void CMainFrame::OnSelectId() {
    const std::optional<uint32_t> id = AskObjectID();
    World& world = *interface.world;
    if (!id)
        return;
    const ChangeRecord record(world, "Select by id.");
    if (const Entity* e = world.GetEntityFromID(*id))
        world.entity_selection.AddItem(world.GetEntityIndex(e));
    else if (const Brush* b = world.GetBrushFromID(*id))
        world.SetBrushSelection(world.GetBrushIndex(b), true);
    else
        return;
    interface.SelectionChanged();
    interface.SetEditorState(ES_SELECTED);
    interface.ChangeCursor();
    interface.RedrawAllViews();
}

void CMainFrame::OnToolsReindexallobjectids() {
    interface.world->ReindexObjectIDs();
    interface.MarkDirty();
}

void CMainFrame::OnToolsValidate() {
    if (interface.world->ValidateIDs()) {
        interface.MarkDirty();
        GetDesktop().MessageBox("Some objects have assigned same ID. IDs were be re-generated.", "Same IDs detected.");
    } else
        GetDesktop().MessageBox("Scene OK.", "No errors detected.");
}

void CMainFrame::OnToolsConvertoldscripts() {
    const ChangeRecord record(*interface.world, "Convert scripts.", ChangeScope::AllObjects);
    interface.world->ConvertOldScripts(*interface.command_syntax, *interface.condition_syntax);
    interface.MarkDirty();
}

void CMainFrame::OnRandomizeBots() {
    const ChangeRecord record(*interface.world, "Randomize models.");
    interface.world->RandomizeBotModels(interface.actor_def_groups);
    interface.MarkDirty();
}

// Windows -------------------------------------------------------------------------------------------------------------

void CMainFrame::OnViewShowlevelsumary() {
    std::string text;
    interface.GetLevelSummary(text);
    GetDesktop().ShowText(text, "Level summary");
}

void CMainFrame::OnViewNamedobjlist() {
    named_objects_dlg = std::make_unique<DlgNamedObjList>(interface);
    named_objects_dlg->UpdateList(named_objects_dlg->last_sort_method);
    interface.Tell(&EditorListener::LibraryWindowChanged);
}

void CMainFrame::OnExtendedhide() {
    if (pages.extended_sel_dlg)
        pages.extended_sel_dlg.reset();
    else
        pages.extended_sel_dlg = std::make_unique<DlgExtendedSelect>(interface);
    interface.Tell(&EditorListener::LibraryWindowChanged);
}

// Show filters and settings -------------------------------------------------------------------------------------------

void CMainFrame::ToggleFilter(bool DisplayFilters::*filter) {
    interface.filters.*filter = !(interface.filters.*filter);
    interface.RedrawAllViews();
}

void CMainFrame::OnSelectionShowPortals() {
    interface.ShowPortals(!interface.filters.show_portals);
    interface.RedrawAllViews();
}

void CMainFrame::OnShowSelwire() {
    interface.settings.show_sel_wire = !interface.settings.show_sel_wire;
    if (interface.settings.show_sel_wire)
        interface.RebuildSelectionNet();
    else if (interface.editor_state != ES_VERTEX) {
        interface.world->DestroySOVertices();
        interface.selected_cross_vertex = -1;
    }
    interface.RedrawAllViews();
}

void CMainFrame::ChangeCurveDetail(bool higher) {
    ChangeRecord record(*interface.world, "Change the detail of curves.", ChangeScope::Added);
    for (const auto& b : interface.world->brush) // moves keep normals that a new tessellation would compute anew
        if (!b->curved_surfaces.empty())
            record.AddObject(*b);
    interface.world->ChangeCurveDetail(higher);
    interface.RedrawAllViews();
}

void CMainFrame::StoreFlag(const char* name, bool& flag) {
    flag = !flag;
    const int value = flag;
    RegistryClass store;
    if (interface.store_settings && store.OpenKeyDirectory(SETTINGS_KEY))
        store.SetKeyValue(name, &value);
}

void CMainFrame::AskBackground(int& color) {
    if (const std::optional<uint32_t> rgb = GetDesktop().AskColor(static_cast<uint32_t>(color)))
        color = static_cast<int>(*rgb);
}

// Textures ------------------------------------------------------------------------------------------------------------

void CMainFrame::ShiftTexture(float u, float v) {
    const float step = NextShift(u != 0 ? ushift_repeat : vshift_repeat);
    pages.texture.ChangeShift(u * step, v * step);
    interface.RedrawView(VIEW_PERSPECTIVE);
}

void CMainFrame::RotateTexture(float direction) {
    if (GetDesktop().IsKeyDown(HeldKey::Num0))
        pages.texture.ChangeRotation(direction * QUARTER, true);
    else
        pages.texture.ChangeRotation(direction * TextureDlg::ROTATION_STEP, false);
    interface.RedrawView(VIEW_PERSPECTIVE);
}
