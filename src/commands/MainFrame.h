// The main frame without its window: the handlers of all commands that are more than a call or two, the layout of the
// four views, and the clipboard of paths. The table of the commands stands in commands/CommandTable.h.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "commands/Document.h"
#include "commands/Views.h"
#include "editor/Interface.h"
#include "editor/ProgressText.h"
#include "pages/LibraryPages.h"
#include "pages/NamedObjects.h"

struct Command;
class CTrackDlg;
class RecoveryFile;
class TerrainDlg;

// Sizes of the split: two columns, two rows. Top left stands the perspective view, beside it the top view; below them
// the left and the front view.
struct SplitLayout {
    std::array<int, 2> columns{}, rows{};
};
// Row and column of a view in the split.
struct PanePlace {
    size_t row, column;
};
PanePlace PaneOf(int view);

class CMainFrame {
public:
    CMainFrame(CInterface& editor_interface, LibraryPages& library_pages);

    CEditorView& View(int view);
    // Runs a command, unless its rule disables it just now. False if it was disabled.
    bool Run(const Command& command);
    // The commands of one key. False if no command has it.
    bool OnKey(const std::string& keys);
    // Every 10 ms: the counters of repeated texture shifts start again when their keys are up.
    void OnTimer();
    // Called when nothing else is to do: the movie goes on.
    void OnIdle();
    bool OnClose(); // asks for unsaved work; false: the program goes on

    // Layout
    void SetClientSize(int width, int height);
    void CenterSplitter();
    void OnAutocenter();
    void ShowOneView(int view);
    SplitLayout layout;

    // Commands
    void OnEditUndo();
    void OnEditRedo();
    void OnEditCopypath();
    void OnEditPastepath();
    void Link(bool link_first, bool link_method_2);
    void OnEditUnlink();
    void OnEditChangelink();
    void SelectTemplate(BrushType type);
    void OnBrushColor();
    void OnCollapse();
    void OnRotate();
    void OnVertexMode();
    void OnPickTexture();
    void OnFlipNormals();
    void OnAlignvertices();
    void OnClipbox();
    void OnCordonstate();
    void OnCordonbounds();
    bool CordonboundsEnabled(); // turns the mode off when both boxes are off
    void OnEditMovie();
    void OnCompile();
    void CompileEntities(bool visibility);
    void OnToolsConvertoldscripts();
    void OnToolsReindexallobjectids();
    void OnToolsValidate();
    void OnRandomizeBots();
    void OnGamemode();
    void OnSelwrongobj();
    void OnSelectId();
    void OnViewShowlevelsumary();
    void OnViewNamedobjlist();
    void OnExtendedhide();
    void ToggleFilter(bool DisplayFilters::*filter);
    void OnSelectionShowPortals();
    void OnShowSelwire();
    void ChangeCurveDetail(bool higher);
    void OnMoviePlay();
    void OnMovieStop();
    void StepMovie(float seconds);
    // Movie files (commands/MainFrameMovies.cpp)
    void OnFileNewmovie();
    void OnFileLoadmovie();
    void OnFileLoadmovieforselection();
    void OnFileMergemovie();
    bool SaveMovie(); // under its name, else as the next. False after a message or Cancel
    bool SaveMovieAs();
    void OnMovieAligntimeofpoints();
    void OnMovieComputetime();
    void OnToolsTrackedit();
    // Terrain and decals (commands/MainFrameTerrain.cpp, commands/MainFrameDecals.cpp)
    void OnToolsTerraingenerator();
    void OnToolsTerrainmodifier();
    void OnDecals();
    void ShiftTexture(float u, float v); // in steps that grow under key repeat
    void RotateTexture(float direction);
    void StoreFlag(const char* name, bool& flag); // toggles a flag that is kept at once
    void AskBackground(int& color);

    CInterface& interface;
    LibraryPages& pages;
    CMarrowstead2Doc document;
    COrthographicView top, front, left;
    CPerspectiveView perspective;
    int ushift_repeat = 0, vshift_repeat = 0;
    std::unique_ptr<DlgNamedObjList> named_objects_dlg; // while its window is open
    CompileOutcome last_compile = CompileOutcome::Written;
    // Runs a compile where its progress is seen and can be stopped, on whatever thread; without one it runs unseen.
    using CompileStep = std::function<CompileOutcome(CProgressText&)>;
    std::function<CompileOutcome(const CompileStep&)> run_compile;
    // Shows a dialog until it is closed. Without a window the tracklist closes at once, and the terrain generator asks
    // by a form.
    std::function<void(CTrackDlg&)> show_tracks;
    std::function<void(TerrainDlg&)> show_terrain;
    RecoveryFile* recovery = nullptr; // written before a compile, when there is one

private:
    void UndoStep(CUndoBuffer& from, CUndoBuffer& to);
    void CopyPath(BaseObject& target);
    void PasteList(BaseObject& target, const std::vector<std::unique_ptr<Entity>>& points,
                   SimpleList<uint32_t> BaseObject::*list);
    void RestoreGridColors();
    void TakeMovie(const std::function<int(const std::string& name, std::string& error)>& load);
    void LoadMovieFile(bool replace);
    bool SaveMovieTo(const std::string& name);
    void CompileBy(const CompileStep& compile);

    int client_width = 0, client_height = 0;
    KnownFile known_movie;
    std::vector<std::unique_ptr<Entity>> m_object_path, m_target_path; // outlive the world
};
