// The single controller of the editor: settings, definitions, the library of materials, the open world, the state of
// the mouse and of the four views, and the operations that work on them. It knows no toolkit: the views hand it their
// events, and it tells its listeners what has changed.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "compiler/Compile.h"
#include "compiler/ProblemSolver.h"
#include "definitions/ActorDefGroup.h"
#include "definitions/EntityParser.h"
#include "definitions/MaterialLibrary.h"
#include "definitions/ScriptSyntax.h"
#include "drawing/DrawContext.h"
#include "editor/CompileReport.h"
#include "editor/EditorListener.h"
#include "editor/EditorSettings.h"
#include "editor/ProgressText.h"
#include "foundation/Desktop.h"
#include "foundation/KnownFile.h"
#include "foundation/StringList.h"
#include "persistence/Project.h"
#include "scene/FrontEnd.h"
#include "scene/Undo.h"
#include "scene/ViewInfo.h"
#include "scene/World.h"

enum class CompileOutcome { Written, Problems, Stopped, NotWritten, BadInput };

enum EditorState : uint32_t {
    ES_IDLE = 0,         // nothing selected
    ES_PAN = 1,          // middle-button pan of an orthographic view
    ES_CREATE_BRUSH = 2, // dragging out the box of a new brush
    ES_SELECTED = 3,     // a selection exists, its box is shown
    ES_EDIT = 4,         // dragging the selection: move, resize or shear
    ES_EXTRUDABLE = 5,   // entering the outline of an extrudable brush
    ES_ROTATE_ARMED = 6, // rotation mode, waiting for the left button
    ES_ROTATE = 7,       // dragging a rotation
    ES_PICK_TEXTURE = 9, // the next left click picks a texture
    ES_DRAG_SELECT = 10, // dragging a selection rectangle
    ES_VERTEX = 11,      // vertex mode
    ES_VERTEX_MOVE = 12, // dragging vertices
    ES_DECAL = 13,
    ES_TERRAIN = 14
};

// The sides of a box that a drag grabs; none: the box is moved whole.
enum EditEdge : uint32_t { EDGE_LEFT = 1, EDGE_TOP = 2, EDGE_RIGHT = 4, EDGE_BOTTOM = 8 };

// Held during a mouse event.
enum MouseFlag : uint32_t { MOUSE_SHIFT = 1, MOUSE_CONTROL = 2 };

enum StatusPane { PANE_POSITION = 3, PANE_SIZE = 5, PANE_COUNTS = 7, PANE_GRID = 9, PANE_LOCK = 11, PANE_COUNT = 13 };

// Pages of the library window. The undo list stands on its own.
enum LibraryTab { TAB_TEXTURE = 0, TAB_ENTITY = 1, TAB_PREFAB = 2, TAB_PREFERENCES = 4, TAB_AI = 5, TAB_UNDO = 6 };

// What the texture page has chosen, for decals. Names as the material's definition has them; empty: none.
struct TextureChoice {
    std::string texture_class, texture_name;
};

// What a movie file makes of itself.
enum MovieResult { MOVIE_OK = 0, MOVIE_NOT_OPENED = -1, MOVIE_WRONG_MAGIC = -2 };

// Bits of the tracklist window in CInterface::flags.
enum TrackFlag : uint32_t { TRACK_GRID = 1, TRACK_SNAP = 2 };

// What the prefab page has chosen, for a brush of type BT_CUSTOM.
struct PrefabChoice {
    bool brushes_selected = true; // a custom brush, else a prefab
    std::string directory, file;  // file: without its ending; empty: none chosen
    bool IsChosen() const { return !directory.empty() && !file.empty(); }
};

class CInterface : public FrontEnd {
public:
    CInterface();
    ~CInterface() override; // writes changed settings back

    // Reads the definition files, scans the materials, loads the editor's two textures. The file libraries are mounted
    // and a render mode is set by then.
    void Init();
    // A fresh world, as for each new or opened project. The state is the caller's to reset.
    void InitEditor();

    // --- Project and compile (editor/Interface.cpp)
    // Opens a project. With a folder it can be saved under its name; without one (null) it has no name to save under.
    // False with a sentence; a fresh world is open then.
    bool LoadProject(const char* filepath, std::string_view filename, std::string& error,
                     ProjectLeftOut* left_out = nullptr);
    // False after the user was told. A project saved under another name keeps its own when update_project_name is off.
    bool SaveProject(std::string_view filepath, std::string_view filename, bool update_project_name);
    // Compile world: from the safety copy to the log. Boxes tell what went wrong.
    CompileOutcome Compile(CProgressText& progress);
    // Compile entities: rewrites them in the compiled world, with update_ent_visibility also those of its cells.
    CompileOutcome CompileEntities(CProgressText& progress, bool update_ent_visibility);
    std::string TargetFile() const { return "Maps\\" + world->map_file + ".few"; }
    // Of a run in the window. They are not stored unless changed: a script with the same settings keeps its own.
    void UseWindowDefaults();
    // Those changed in this run, and only they: another program may have changed the others. False when they could not
    // be written.
    bool StoreSettings();
    // Settings of this run only: the destructor writes back what is set apart from them.
    bool OverrideSetting(std::string_view assignment, std::string& error);

    KnownFile known_project; // the document's
    EditorSettings settings;
    bool store_settings = true;         // the destructor writes changed ones back
    int threads = 0;                    // of a compile; 0: all cores
    FaceObserver face_observer;         // sees the item buffers of a compile, when set
    LightObserver light_observer;       // sees its brushes as they are lit, when set
    ProblemSolver problem_solver;       // the findings of the last compile
    std::vector<StageTime> stage_times; // of the last compile
    ActorDefGroups actor_def_groups;
    StringListClass weapon_defs; // names of the weapon definition files
    std::unique_ptr<EntityParser> entity_parser;
    std::unique_ptr<CScriptSyntax> command_syntax, condition_syntax;
    MaterialLibrary materials;
    std::unique_ptr<World> world;
    ProjectViews views;
    bool is_initialized = false;
    std::atomic<bool> compilation_active = false; // nothing is drawn or kept; a compile may run on a thread of its own
    bool project_file_has_name = false, project_file_need_save = false;
    std::string project_file_path, project_file_name;
    // Written with the separator of the folder, so that one file has one name in lists and messages.
    static std::string FullName(std::string_view folder, std::string_view name);
    // The mark alone does not tell: a save that fails clears it, and so does a No before a command that is cancelled.
    bool HasUnsavedWork() const { return project_file_need_save || changes != saved_changes; }
    std::string ProjectFullName() const { return FullName(project_file_path, project_file_name); }
    std::string title = "Marrowstead 2000 - Untitled"; // of the main window
    uint32_t changes = 0;                              // counts every change of the level
    uint32_t saved_changes = 0;                        // their number when it was saved, made or opened

    // --- Listeners: they outlive their entry
    void AddListener(EditorListener& listener) { listeners.push_back(&listener); }
    void RemoveListener(EditorListener& listener);
    template <class... Parameters, class... Arguments>
    void Tell(void (EditorListener::*news)(Parameters...), const Arguments&... arguments) {
        for (size_t i = 0; i < listeners.size(); ++i)
            (listeners[i]->*news)(arguments...);
    }

    // --- Views, coordinates and status texts (editor/InterfaceViews.cpp)
    VIEWINFO& View(int view) { return views.View(view); }
    VIEWINFO& ActiveView() { return views.View(active_view); }
    void SetActiveView(int view);
    void SetViewRect(int view, const RECT& window_rect); // the view's place in the back buffer; the client area follows
    void PanView(POINT point, VIEWINFO& vi);
    void ZoomView(int delta); // of the active view: below 1 out, else in
    void GridSize(int delta); // negative: doubled, else halved
    void CenterWorld(bool all);
    void CenterViewToPoint(const D3DVECTOR& point, int view);
    void CenterToSelection();
    D3DVECTOR GetWorldMousePosition() const {
        return GetWorldPositionAtPoint(active_view, last_position.x, last_position.y);
    }
    D3DVECTOR GetWorldPositionAtPoint(int view, int x, int y) const; // not snapped
    void SetMatrices(int view);                                      // the viewport too
    static D3DMATRIX CameraMatrix(const D3DVECTOR& position, const D3DVECTOR& rotation);
    static D3DMATRIX CameraMatrix(const D3DVECTOR& position, const D3DVECTOR& target, float roll); // radians
    static void ComputeCameraVectors(const D3DVECTOR& rotation, D3DVECTOR& direction, D3DVECTOR& normal,
                                     D3DVECTOR& right);
    void SetInfoText();
    void SetCountText();
    void SetPositionText(POINT point); // also takes the snapped world position from the mouse
    void SetSizeText();
    void SelectionLock();
    void SetStatus(int pane, const std::string& text);
    std::array<std::string, PANE_COUNT> status;

    // --- Drawing (editor/InterfaceDrawing.cpp)
    void RedrawView(int view) override; // tells the listeners: they ask for DrawView when they are ready
    void RedrawAllViews() override;
    void RedrawOrthoViews();
    void DrawView(int view);  // into the view's part of the back buffer, and from there to the screen
    bool DrawScene(int view); // only into the back buffer, without caption and frame; false: nothing was drawn
    DrawContext MakeDrawContext(int view) const;
    void ChangeRenderMode();

    // --- States (editor/InterfaceStates.cpp)
    // After each command and each press or release of a button: what follows from the state, whoever has changed it.
    // The vertex net is in step, an outline alone holds the mouse, and the cursor and the terrain tool's window follow.
    void SettleState();
    void SetEditorState(EditorState state); // a push: the old state can be popped
    void ResetEditorState();                // a pop
    CursorRole GetCursor() const;
    void ChangeCursor();
    void ToggleShearing();
    void SetActiveBrushTemplate(BrushType new_template);
    void ShowPortals(bool show);
    void HideSelected();
    void HideUnselected();
    void UnhideAll();
    void CreateGroup();
    void DestroyGroup();
    void SelectAll();
    void InvertSelection();
    void FlipHorizontally();
    void FlipVertically();
    void ChangeBrushColor(const D3DCOLORVALUE& color);
    void MarkDirty(); // project_file_need_save and the title's mark

    // --- Mouse (editor/InterfaceMouse.cpp). flags: MouseFlag bits; point: client pixels of the active view.
    void MouseMove(uint32_t flags, POINT point);
    void MoveCameraToMouse(POINT point); // in the two axes of the active view
    void MouseLeftButtonDown(uint32_t flags, POINT point);
    void MouseLeftButtonUp(uint32_t flags, POINT point);
    void MouseRightButtonDown(uint32_t flags, POINT point);
    void MouseRightButtonUp(uint32_t flags, POINT point);
    bool MouseRelease() const { return mouse_release; }

    // --- New brushes (editor/InterfaceBrushes.cpp)
    void StartBrushCreation();
    void DragCreationBox();
    void CreateBrush();
    static void ValidateBBox(Box& box); // sorts the corners
    void StartExtrudableCreation();
    void DragExtrudableLine();
    void NextExtrudableSegment(); // refused at 256 points
    void MakeBBoxForExtrudable(Box& box) const;
    static D3DVECTOR CreatePivot(const Box& box);
    static int MissingAxis(int view); // the axis that an orthographic view does not cover: 0 x, 1 y, 2 z

    // --- Editing the selection (editor/InterfaceEditing.cpp)
    void StartEdit(POINT point);
    void Edit();
    D3DVECTOR AlignToGrid(const D3DVECTOR& reference, const D3DVECTOR& delta) const;
    void StartEditCordon(POINT point);
    void EditCordon();
    void Rotate(POINT point);
    void RotateBrush(float angle); // radians, in the active orthographic view
    void Cancel();
    void Clone();
    void DeleteSelection();
    void CreatePivotForSelection(); // box and pivot anew from the selection
    // With full undo on: the objects as they are before a drag first changes them. No effect when it has begun.
    void BeginDragRecord(const char* description);
    // The drag so far becomes a step: it ends, or another step comes between.
    void EndDragRecord();
    void FinishDrag(); // as the release of the button would: before a step that cannot wait for it

    // --- Selecting (editor/InterfaceSelecting.cpp)
    void Select(POINT point, bool brush_selection);
    void StartMultiSelection();
    void DragSelectionBox();
    void MultiSelect(POINT point, bool brush_selection, bool select_all);
    void UpdateSelectionBox(); // a refresh: box, pivot, shown, ES_SELECTED; ES_IDLE when nothing is selected
    void SelectSurface(POINT point);
    PickRequest MakePickRequest(POINT point) const;
    void RebuildSelectionNet(); // the vertex net of the selection
    // The net after a step that may have moved or deleted its brushes: rebuilt when it is out of step, gone when no
    // mode wants it.
    void SyncVertexNet();
    BaseObject* FindPathOwner() const; // whose paths the selection means; null if none
    void SelectRelevant(bool ignore_triggers);

    // --- Vertex mode (editor/InterfaceVertices.cpp)
    void SelectSOVertex(POINT point);
    void SOVertexMultiSelect(POINT point);
    void TestCrossEdgeSelection(POINT point);
    D3DVECTOR GetCrossPlaneIntersection(POINT point);
    void MoveSOVertexInPerspective(POINT point);
    void SOVertexMove();

    // --- Terrain tool (editor/InterfaceTerrain.cpp)
    void EnableTerrainModifier(bool enable); // ES_TERRAIN and its window
    void ModifyTerrain(POINT point, bool up);
    void EndTerrainStroke();
    void TurnTerrainWheel(bool more, bool of_intensity);      // one notch
    void SetTerrainModifier(const TERRAIN_MODIFIER& changed); // held to what is possible
    TERRAIN_MODIFIER terrain_modifier;

    // --- Decals (editor/InterfaceDecals.cpp). All of them work in the perspective view.
    void DecalLeftButton(bool shift, bool control, bool alt, POINT point);
    void SetDecalColor(uint32_t rgb);
    void ScaleDecal(int dx, int dy); // pixels
    void RotateDecal(float degrees);
    void DeleteDecals();

    // --- Movies (editor/InterfaceMovie.cpp)
    // MovieResult. What a wrong file holds is never half taken over; error is then a sentence with its name.
    int LoadMovie(std::string_view name, std::string& error, bool replace = false); // replace: all other paths go
    int LoadMovieForSelection(std::string_view name, std::string& error);
    int SaveMovie(std::string_view name, std::string& error) const;
    void ClearAnimation(uint32_t dont_delete_id); // the paths of all other objects, with their points
    void ProcessAnimation();                      // while playing: the clock goes on
    // Where the movie's camera stands at anim_time: of the selected camera, or of the camera whose points are selected.
    struct MovieCamera {
        D3DVECTOR position, target;
        float roll = 0, fov = 90; // degrees
    };
    bool FindMovieCamera(MovieCamera& camera) const; // only while a movie is edited
    D3DVECTOR EyePosition() const;                   // of what the perspective view shows
    std::string m_last_track_name;                   // of the tracklist window
    uint32_t flags = 0;                              // TrackFlag bits

    // --- Surveys (editor/LevelSurvey.cpp)
    void GetLevelSummary(std::string& text) const;
    void LogEntities(bool scripts_only) const;

    // --- Library window
    void Console();                      // toggles it
    void ShowLibraryTab(LibraryTab tab); // shows the window with that page; the entity page shown already: hides it
    void RefreshAIDlg() { Tell(&EditorListener::AIGroupsChanged); }

    // --- Fields, by name as in scripts
    int rotation_grid_size = 1; // degrees per pixel of mouse travel when rotating
    Box selection_box = MakeBox({-32, -32, -32}, {32, 32, 32});
    D3DVECTOR selection_pivot;
    Box drag_box{};
    int selected_tab = 0;
    bool console_onscreen = false;
    float anim_time = 0;
    uint32_t last_tick = 0;
    bool playing = false;
    bool movie_editing = false;
    uint32_t view_grid_color[3] = {100, 150, 200}; // minor, major, axes
    bool full_view = false;
    int active_view = VIEW_PERSPECTIVE;
    EditorState editor_state = ES_IDLE, old_editor_state = ES_IDLE, older_editor_state = ES_IDLE;
    uint32_t edit_state = 0; // EditEdge bits
    POINT last_position;
    int grid_size = 8; // world units, a power of two from 1 to 512
    bool selection_locked = false;
    D3DVECTOR last_entity_position;
    BrushType active_brush_template = BT_BOX;
    uint32_t active_brush_segments = 6, normal_segments = 6, curved_segments = 1;
    std::string active_custom_brush = "test.msh";
    D3DCOLORVALUE active_brush_color{1, 1, 1, 0};
    bool mouse_release = true;
    bool multi_selection = false, ignore_groups = false, make_multi_selection = false;
    bool shearing = false;
    int selected_cross_vertex = -1, selected_cross_edge = 0;
    bool texture_lock = true;
    D3DVECTOR mouse_point, starting_mouse_point;
    DisplayFilters filters;
    bool editing_cordon_box = false, editing_clip_box = false;
    bool left_button_pressed = false, right_button_pressed = false;
    std::vector<D3DVECTOR> ex_point; // the outline of an extrudable; the last one follows the mouse
    D3DVECTOR tmp_move;
    float tmp_rotate = 0;
    uint32_t brush_texture = NO_TEXTURE_HANDLE, border_texture = NO_TEXTURE_HANDLE;
    bool show_texture_border = false;
    bool mask_enabled = false; // the selected surface shows in the mask colour
    D3DVECTOR world_position, last_world_position, original_world_position;
    bool selection_box_active = false, drag_box_active = false, cordon_active = false, clip_active = false;
    bool edit_cordon_bounds = false;
    bool special_camera_rotation = false; // the perspective camera orbits a centre: its frame is green
    int selected_entity = -1;             // template of the next entity; -1: none
    PrefabChoice prefab_choice;
    TextureChoice texture_choice;
    uint32_t traceing_id = NO_OBJECT_ID;

    // --- FrontEnd
    void MarkFileAsDirty(bool is_dirty) override;
    void SelectionChanged() override;
    void SurfaceSelectionChanged() override { Tell(&EditorListener::SurfaceSelectionChanged); }
    void MaterialPicked(const std::string& material_class, const std::string& material_name) override {
        Tell(&EditorListener::MaterialPicked, material_class, material_name);
    }
    void EntityTypesChanged() override { Tell(&EditorListener::EntityTypesChanged); }
    void CountsChanged() override { SetCountText(); }
    void UndoListsChanged() override { Tell(&EditorListener::UndoListsChanged); }
    void SetLastEntityPosition(const D3DVECTOR& position) override { last_entity_position = position; }
    void SelectionRestored(bool something_selected) override;
    void RefreshSelectionBox() override;
    bool IsClipActive() const override { return clip_active; }
    bool IsTextureLocked() const override { return texture_lock; }
    bool IsShiftDown() const override { return GetDesktop().IsShiftDown(); }
    D3DVECTOR SelectionPivot() const override { return selection_pivot; }
    int UndoStates() const override { return settings.undo_states; }
    bool IsFullUndo() const override { return settings.full_undo; }

private:
    CompileOptions MakeCompileOptions() const;
    bool TargetIsReadOnly(const std::string& target) const;
    void LoadDefinitions();

    void TakeButtonPress(POINT point);
    void LeftButtonDown(uint32_t flags, POINT point);
    void LeftButtonDownByState(bool shift, bool control, POINT point);
    void LeftButtonUp(uint32_t flags, POINT point);
    void RightButtonDown(uint32_t flags, POINT point);
    template <class Fn>
    void BelowPan(Fn&& release);
    void LeaveMode();
    bool CanEditBounds() const; // of the cordon and the clip box
    void DropDragBox();
    void TakeCompiledLight(const std::string& project_path);
    void MouseMoveByState(POINT point);
    void StartVertexMove();
    void CollapseBox(Box& box) const; // on the mouse, in the view's two axes
    void DragBox(Box& box) const;     // its far sides to the mouse
    bool IsClick(const Box& box) const;
    void ChooseCustomBrush();
    void PlacePrefab();      // the chosen one, at the pivot of the new box
    void DeselectWithUndo(); // with full undo on, with a step
    BrushShape NewShape(uint32_t segments, const Box& box) const;
    void AddBrushToWorld(const BrushShape& shape);
    D3DVECTOR OutlinePoint() const;
    void CloseOutline(std::vector<D3DVECTOR> plane);
    uint32_t GrabbedSides(const Box& box, POINT point);
    D3DVECTOR AlignedDelta(const D3DVECTOR& reference, const D3DVECTOR& delta) const;
    Box ResizedBox(const Box& box, const D3DVECTOR& delta) const;
    void MoveSelection(D3DVECTOR move); // a copy: tmp_move is changed too
    void ResizeSelection(const Box& resized);
    void ShearSelection(const D3DVECTOR& delta);
    void CancelByState();
    void CancelSelection();
    void CancelVertices();
    void AddDeselection(); // of the whole selection, to undo
    int AskCopyCount();    // 0: cancelled
    bool PlaceClones(const D3DVECTOR& step);
    std::unique_ptr<Entity> NewEntityFromTemplate(const char* name);
    void TakeEntityPosition();
    void AddCreationToUndo(Entity& created);
    void CancelBeforePlacing();
    void PlaceEntity();                                                           // of the chosen template
    // Null if none was placed. With full undo it has a step, which brings back the owner's path.
    Entity* PlacePathPoint(std::unique_ptr<Entity> point, bool from_movie_click);
    void SelectWholePath(const Entity& point);
    void EndOperation();    // of the mouse or a mode; the state is ES_IDLE
    void ShowLoadedPaths(); // a refresh of all that shows the selection
    void UnmarkVertices();
    void UnmarkEdges();
    template <class IsHit>
    bool MarkVertices(IsHit&& is_hit);
    template <class IsHit>
    void MarkEdges(IsHit&& is_hit);
    void MoveMarkedVertices(const D3DVECTOR& move);

    std::vector<EditorListener*> listeners;
    EditorSettings stored_settings;
    std::unique_ptr<ChangeRecord> drag_record; // of a drag in progress, with full undo on
    EditorState settled_state = ES_IDLE;
    bool outline_holds_mouse = false;
};
