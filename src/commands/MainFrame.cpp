#include "commands/MainFrame.h"

#include <algorithm>

#include "commands/Accelerator.h"
#include "commands/CommandTable.h"
#include "commands/Recovery.h"
#include "editor/LineColorStore.h"
#include "foundation/Strings.h"
#include "render/Frame.h"

namespace {

constexpr const char* TITLE = "Marrowstead 2000";
constexpr int LEAST_PANE = 5;                 // pixels
constexpr int COLUMN_EDGE = 5, ROW_EDGE = 46; // of the split's borders and the bars around it

} // namespace

PanePlace PaneOf(int view) {
    constexpr PanePlace PLACES[VIEW_COUNT] = {{0, 1}, {1, 1}, {1, 0}, {0, 0}};
    return PLACES[view];
}

CMainFrame::CMainFrame(CInterface& editor_interface, LibraryPages& library_pages)
    : interface(editor_interface), pages(library_pages), document(interface, pages), top(interface, VIEW_TOP),
      front(interface, VIEW_FRONT), left(interface, VIEW_LEFT), perspective(interface, pages) {
    document.save_movie = [this](bool as) { return as ? SaveMovieAs() : SaveMovie(); };
}

CEditorView& CMainFrame::View(int view) {
    CEditorView* const views[VIEW_COUNT] = {&top, &front, &left, &perspective};
    return *views[view];
}

bool CMainFrame::Run(const Command& command) {
    if (!command.action || (command.is_enabled && !command.is_enabled(*this)))
        return false;
    if (command.works_in_drag)
        interface.EndTerrainStroke();
    else
        interface.FinishDrag();
    command.action(*this);
    interface.SettleState();
    return true;
}

bool CMainFrame::OnKey(const std::string& keys) {
    const Command* command = FindCommandOfKey(keys);
    if (!command)
        return IsReservedKey(keys);
    Run(*command);
    return true;
}

void CMainFrame::OnTimer() {
    const Desktop& desktop = GetDesktop();
    if (!desktop.IsKeyDown(HeldKey::Num6) && !desktop.IsKeyDown(HeldKey::Num4))
        ushift_repeat = 0;
    if (!desktop.IsKeyDown(HeldKey::Num8) && !desktop.IsKeyDown(HeldKey::Num2))
        vshift_repeat = 0;
}

void CMainFrame::OnIdle() {
    if (!interface.playing)
        return;
    interface.ProcessAnimation();
    interface.RedrawAllViews();
}

bool CMainFrame::OnClose() { return document.SaveModified(); }

// Layout --------------------------------------------------------------------------------------------------------------

void CMainFrame::SetClientSize(int width, int height) {
    client_width = width;
    client_height = height;
    if (interface.full_view)
        ShowOneView(interface.active_view);
    else
        CenterSplitter();
}

void CMainFrame::CenterSplitter() {
    layout.columns.fill(std::max(client_width / 2 - COLUMN_EDGE, LEAST_PANE));
    layout.rows.fill(std::max(client_height / 2 - ROW_EDGE, LEAST_PANE));
    interface.Tell(&EditorListener::LayoutChanged);
}

void CMainFrame::ShowOneView(int view) {
    interface.full_view = true;
    layout.columns.fill(0);
    layout.rows.fill(0);
    layout.columns[PaneOf(view).column] = std::max(client_width, LEAST_PANE);
    layout.rows[PaneOf(view).row] = std::max(client_height, LEAST_PANE);
    interface.Tell(&EditorListener::LayoutChanged);
    interface.RedrawView(view);
}

void CMainFrame::OnAutocenter() {
    if (interface.full_view) {
        interface.full_view = false;
        CenterSplitter();
        interface.RedrawAllViews();
    } else
        ShowOneView(interface.active_view);
}

// Undo ----------------------------------------------------------------------------------------------------------------

void CMainFrame::UndoStep(CUndoBuffer& from, CUndoBuffer& to) {
    interface.FinishDrag();
    if (from.UndoLastAction(*interface.world, to)) {
        interface.MarkDirty();
        interface.SetSizeText();
        interface.SetCountText();
    }
    interface.UndoListsChanged();
    interface.RedrawAllViews();
}

void CMainFrame::OnEditUndo() { UndoStep(interface.world->undo_buffer, interface.world->redo_buffer); }

void CMainFrame::OnEditRedo() { UndoStep(interface.world->redo_buffer, interface.world->undo_buffer); }

// Modes ---------------------------------------------------------------------------------------------------------------

void CMainFrame::OnRotate() {
    if (interface.editor_state == ES_SELECTED) {
        interface.shearing = false;
        interface.SetEditorState(ES_ROTATE_ARMED);
    } else if (interface.editor_state == ES_ROTATE_ARMED)
        interface.SetEditorState(ES_SELECTED);
    else
        return;
    interface.ChangeCursor();
}

void CMainFrame::OnVertexMode() {
    World& world = *interface.world;
    if (interface.editor_state == ES_VERTEX) {
        interface.ResetEditorState();
        world.DestroySOVertices();
        interface.selected_cross_vertex = -1;
    } else if (world.brush_selection.GetItemCount() > 0 && interface.editor_state != ES_VERTEX_MOVE) {
        interface.SetEditorState(ES_VERTEX);
        interface.RebuildSelectionNet();
    } else
        return;
    interface.ChangeCursor();
    interface.RedrawAllViews();
}

void CMainFrame::OnPickTexture() {
    if (interface.editor_state == ES_VERTEX)
        return;
    if (interface.editor_state == ES_PICK_TEXTURE)
        interface.ResetEditorState();
    else
        interface.SetEditorState(ES_PICK_TEXTURE);
    interface.ChangeCursor();
}

void CMainFrame::RestoreGridColors() {
    constexpr uint32_t BOUNDS[3] = {0x640000, 0x960000, 0xC80000}, MOVIE[3] = {0x444444, 0x666666, 0x888888};
    const uint32_t* colors = interface.movie_editing ? MOVIE : BOUNDS;
    if (interface.movie_editing || interface.edit_cordon_bounds)
        std::copy(colors, colors + 3, interface.view_grid_color);
    else
        ApplyGridColors(interface);
}

void CMainFrame::OnClipbox() {
    const ChangeRecord record(*interface.world, "Hide by the clip box.", ChangeScope::AllObjects);
    interface.clip_active = !interface.clip_active;
    if (interface.clip_active)
        interface.world->BoxHide(interface.views.clip_box);
    else
        interface.UnhideAll();
    CordonboundsEnabled();
    interface.UpdateSelectionBox();
    interface.RedrawAllViews();
}

void CMainFrame::OnCordonstate() {
    interface.cordon_active = !interface.cordon_active;
    CordonboundsEnabled();
    interface.RedrawOrthoViews();
}

void CMainFrame::OnCordonbounds() {
    interface.edit_cordon_bounds = !interface.edit_cordon_bounds;
    RestoreGridColors();
    interface.RedrawOrthoViews();
}

bool CMainFrame::CordonboundsEnabled() {
    if (!interface.cordon_active && !interface.clip_active) {
        interface.edit_cordon_bounds = false;
        RestoreGridColors();
        return false;
    }
    return !interface.movie_editing;
}

void CMainFrame::OnEditMovie() {
    interface.movie_editing = !interface.movie_editing;
    if (interface.movie_editing)
        interface.edit_cordon_bounds = false;
    RestoreGridColors();
    interface.RedrawAllViews();
}

// Compile and game ----------------------------------------------------------------------------------------------------

void CMainFrame::CompileBy(const CompileStep& compile) {
    if (recovery)
        recovery->Write();
    CProgressText unseen;
    last_compile = run_compile ? run_compile(compile) : compile(unseen);
    interface.UpdateSelectionBox();
    interface.RedrawAllViews();
}

void CMainFrame::OnCompile() {
    CompileBy([this](CProgressText& progress) { return interface.Compile(progress); });
}

void CMainFrame::CompileEntities(bool visibility) {
    CompileBy([this, visibility](CProgressText& progress) { return interface.CompileEntities(progress, visibility); });
}

void CMainFrame::OnGamemode() {
    std::string error;
    const std::string& game = interface.settings.game_command;
    if (!GetDesktop().RunProgram(game, " " + interface.TargetFile(), error))
        GetDesktop().MessageBox(Format("The game \"%s\" cannot be started: %s.\n\n\"Game Program\" in the preferences "
                                       "names it.",
                                       game.c_str(), error.c_str()),
                                TITLE);
}

void CMainFrame::OnMoviePlay() {
    interface.playing = !interface.playing;
    interface.last_tick = GetDesktop().GetTickCount();
}

void CMainFrame::OnMovieStop() {
    interface.playing = false;
    interface.anim_time = 0;
    interface.RedrawAllViews();
}

void CMainFrame::StepMovie(float seconds) {
    interface.playing = false;
    interface.anim_time += seconds;
    interface.RedrawAllViews();
}
