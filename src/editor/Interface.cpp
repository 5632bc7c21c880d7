#include "editor/Interface.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "compiler/EntityUpdate.h"
#include "compiler/RestoreLight.h"
#include "editor/CompileLog.h"
#include "editor/LineColorStore.h"
#include "editor/StartSteps.h"
#include "files/AtomicFile.h"
#include "files/FileFind.h"
#include "foundation/Desktop.h"
#include "foundation/Log.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"
#include "persistence/WorldFile.h"
#include "persistence/WriteError.h"
#include "render/Textures.h"

static constexpr const char* ENTITY_DEFINITIONS = "Marrowstead\\entities.def";
static constexpr const char* WEAPON_FOLDER = "Scripts\\Weapons";
static constexpr const char* PROJECT_FOLDER = "Marrowstead\\Projects";
static constexpr const char* COMMAND_SYNTAX = "Scripts\\ScriptSyntax\\commands.def";
static constexpr const char* CONDITION_SYNTAX = "Scripts\\ScriptSyntax\\conditions.def";
static constexpr const char* EDITOR_TEXTURES = "Marrowstead\\";
static constexpr const char* UNTITLED = "Marrowstead 2000 - Untitled";
static constexpr D3DVECTOR FIRST_CAMERA_POSITION{0, 0, -500};
static constexpr const char* AUTOSAVE_NAME = "__autosave__.msp";
static constexpr size_t DEFINITION_ENDING = 4; // ".def"

CInterface::CInterface() : settings(ReadSettings()), stored_settings(settings) {
    ReadLineColors();
    ApplyGridColors(*this);
    views.perspective.camera_position = FIRST_CAMERA_POSITION;
    SetFrontEnd(this);
}

CInterface::~CInterface() {
    EndDragRecord();
    world.reset();
    SetFrontEnd(nullptr);
    crTDestroy(brush_texture);
    crTDestroy(border_texture);
    StoreSettings();
}

bool CInterface::StoreSettings() {
    if (!store_settings)
        return true;
    const bool written = WriteSettings(settings, stored_settings);
    if (written)
        stored_settings = settings;
    return written;
}

void CInterface::UseWindowDefaults() {
    SetWindowDefaults(settings);
    SetWindowDefaults(stored_settings);
}

bool CInterface::OverrideSetting(std::string_view assignment, std::string& error) {
    store_settings = false;
    return ApplySetting(settings, assignment, error);
}

void CInterface::Init() {
    brush_texture = crTGet(EDITOR_TEXTURES, "brush", 0);
    border_texture = crTGet(EDITOR_TEXTURES, "border", 0);
    LoadDefinitions();
    multi_selection = settings.multiselection_as_default;
    is_initialized = true;
}

void CInterface::LoadDefinitions() {
    TellStart(StartStep::Entities);
    entity_parser = std::make_unique<EntityParser>(ENTITY_DEFINITIONS);
    TellStart(StartStep::Scripts);
    command_syntax = std::make_unique<CScriptSyntax>(COMMAND_SYNTAX);
    condition_syntax = std::make_unique<CScriptSyntax>(CONDITION_SYNTAX);
    TellStart(StartStep::Actors);
    actor_def_groups.ParseActorDefGroups();
    FileFindObject weapons(WEAPON_FOLDER, "*.def", FFO_FileFind, true);
    while (const FFOInfo* found = weapons.FindNext())
        weapon_defs.AddString(found->name.substr(0, found->name.size() - DEFINITION_ENDING));
    TellStart(StartStep::Materials);
    materials.ParseTextures();
}

void CInterface::InitEditor() {
    EndDragRecord();
    world.reset(); // frees its textures before the next one takes them
    world = std::make_unique<World>(&materials);
    selected_cross_vertex = -1;
    for (int view = 0; view < VIEW_COUNT; ++view) {
        VIEWINFO& vi = View(view);
        const RECT client_rect = vi.client_rect, window_rect = vi.window_rect;
        vi = {};
        vi.client_rect = client_rect, vi.window_rect = window_rect;
    }
    views.perspective.camera_position = FIRST_CAMERA_POSITION;
    full_view = false;
    CenterWorld(true);
    project_file_has_name = false;
    project_file_need_save = false;
    saved_changes = changes;
    title = UNTITLED;
    SetInfoText();
    SetSizeText();
    SetCountText();
    Tell(&EditorListener::TitleChanged);
    Tell(&EditorListener::WorldReplaced);
}

static bool IsZoom(int32_t n) { return n >= 1 && n <= MOST_ZOOM && (n & (n - 1)) == 0; }

static bool IsFinite(const D3DVECTOR& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

// A view as a file stored it: its window is that of now, and what no view can have becomes the start values.
static void RepairView(VIEWINFO& stored, const VIEWINFO& live) {
    stored.client_rect = live.client_rect;
    stored.window_rect = live.window_rect;
    stored.ScrollTo(stored.view_position[0], stored.view_position[1]);
    if (!IsZoom(stored.zoom_in) || !IsZoom(stored.zoom_out) || (stored.zoom_in != 1 && stored.zoom_out != 1))
        stored.zoom_in = stored.zoom_out = 1;
    if (!IsFinite(stored.camera_position) || !IsFinite(stored.camera_rotation))
        stored.camera_position = FIRST_CAMERA_POSITION, stored.camera_rotation = {};
}

std::string CInterface::FullName(std::string_view folder, std::string_view name) {
    const bool real_path = folder.find('/') != std::string_view::npos;
    const bool is_parted = folder.empty() || folder.back() == '/' || folder.back() == '\\';
    return std::string(folder).append(is_parted ? 0 : 1, real_path ? '/' : '\\').append(name);
}

bool CInterface::LoadProject(const char* filepath, std::string_view filename, std::string& error,
                             ProjectLeftOut* left_out) {
    RemoveFile(TRACE_LOG);
    RemoveFile(TEXTURE_LOG);
    ForgetNotices();
    const std::string full_name = filepath ? FullName(filepath, filename) : std::string(filename);
    const ProjectViews live = views;
    if (!::LoadProject(full_name, *world, views, materials, *entity_parser, error, left_out)) {
        materials.Reset();
        InitEditor();
        return false;
    }
    for (int view = 0; view < VIEW_COUNT; ++view)
        RepairView(View(view), live.View(view));
    project_file_has_name = filepath != nullptr;
    project_file_path = filepath ? filepath : PROJECT_FOLDER;
    project_file_name = filename;
    title = "Marrowstead 2000 - " + project_file_name;
    project_file_need_save = false; // what reading has marked, such as smoothed terrain, is no work of the user
    saved_changes = changes;
    SetPositionText(last_position);
    if (settings.open_light)
        TakeCompiledLight(full_name);
    Tell(&EditorListener::TitleChanged);
    return true;
}

// Of a compiled world that is not older than the project.
void CInterface::TakeCompiledLight(const std::string& project_path) {
    namespace fs = std::filesystem;
    std::error_code missing;
    const fs::file_time_type compiled = fs::last_write_time(RealPath(TargetFile()), missing);
    if (missing)
        return;
    const fs::file_time_type project = fs::last_write_time(RealPath(project_path), missing);
    WorldFile file;
    std::string error;
    if (!missing && compiled >= project && ReadWorldFile(TargetFile(), file, error))
        RestoreLight(file, *world);
}

bool CInterface::SaveProject(std::string_view filepath, std::string_view filename, bool update_project_name) {
    std::string error;
    const std::string full_name = FullName(filepath, filename);
    const bool saved = ::SaveProject(full_name, *world, views, settings.create_prj_backup, error);
    if (update_project_name) {
        project_file_has_name = true;
        project_file_path = filepath;
        project_file_name = filename;
    }
    MarkFileAsDirty(false);
    if (saved)
        known_project.KnowAgain(full_name); // the safety copy may be what is edited
    if (saved && full_name == ProjectFullName())
        saved_changes = changes;
    if (!saved)
        ShowWriteError(error);
    return saved;
}

CompileOptions CInterface::MakeCompileOptions() const {
    CompileOptions options;
    options.lighting_method = settings.lighting_method;
    options.lightmap_detail = settings.lightmap_detail;
    options.voxel_size = settings.voxel_size;
    options.clip_box_compilation = settings.clip_box_compilation;
    options.smooth_shadows = settings.smooth_shadows;
    options.subdivide_world = settings.subdivide_world;
    options.save_finalmap = settings.save_finalmap;
    options.create_render_groups = settings.create_render_groups;
    options.clip_box = views.clip_box;
    options.threads = threads;
    options.traceing_id = traceing_id;
    options.face_observer = face_observer;
    options.light_observer = light_observer;
    return options;
}

bool CInterface::TargetIsReadOnly(const std::string& target) const {
    if (!IsReadOnlyFile(RealPath(target)))
        return false;
    GetDesktop().MessageBox(
        Format("Warning target file: \"%s.few\" is read only.\nPlease, remove read-only flag (or use "
               "Bindery)\nbefore compiling it.\n",
               world->map_file.c_str()),
        "Error");
    return true;
}

static std::string TotalTime(uint32_t start, const char* format) {
    int hours = 0, minutes = 0, seconds = 0;
    ConvertTime(GetDesktop().GetTickCount() - start, hours, minutes, seconds);
    char text[64];
    std::snprintf(text, sizeof text, format, hours, minutes, seconds);
    return std::string("Total compilation time: ") + text;
}

CompileOutcome CInterface::Compile(CProgressText& progress) {
    const std::string target = TargetFile();
    if (TargetIsReadOnly(target))
        return CompileOutcome::NotWritten;
    RemoveFile(TRACE_LOG);
    compilation_active = true;
    const bool unsaved = HasUnsavedWork();
    if (settings.bkp_before_compile) {
        MakeFolders(project_file_path);
        SaveProject(project_file_path, AUTOSAVE_NAME, false);
        if (unsaved) // the copy is no save of the project
            MarkFileAsDirty(true);
    }
    const uint32_t start = GetDesktop().GetTickCount();
    CompileLog log(project_file_has_name ? project_file_name : std::string(), world->map_file);

    std::string message;
    StageTimer timer(progress);
    const CompileResult result = CompileWorld(*world, MakeCompileOptions(), target, timer, message, &problem_solver);
    stage_times = timer.Finish();
    // A run that ends among the cells, or before, tells only its time.
    const bool reached_light = std::any_of(stage_times.begin(), stage_times.end(), [](const StageTime& stage) {
        return stage.name.find("Lightmaps") != std::string::npos;
    });
    progress.AddText((reached_light ? "Map compilation finished\r\n" : "") + TotalTime(start, "%02dh %02dm %02ds"));
    log.Finish(progress.GetText());
    compilation_active = false;
    if (!unsaved) { // nor is what a compile marks
        saved_changes = changes;
        MarkFileAsDirty(false);
    }
    if (!message.empty() && result != CompileResult::WriteFailed) // the writer has told its own failure
        GetDesktop().MessageBox(message, "Error");
    switch (result) {
    case CompileResult::Written:
        return CompileOutcome::Written;
    case CompileResult::Stopped:
        return CompileOutcome::Stopped;
    case CompileResult::WriteFailed:
        return CompileOutcome::NotWritten;
    case CompileResult::Problems:
    case CompileResult::LimitExceeded:
        break;
    }
    return CompileOutcome::Problems;
}

CompileOutcome CInterface::CompileEntities(CProgressText& progress, bool update_ent_visibility) {
    if (TargetIsReadOnly(TargetFile()))
        return CompileOutcome::NotWritten;
    RemoveFile(TRACE_LOG);
    const uint32_t start = GetDesktop().GetTickCount();
    StageTimer timer(progress);
    compilation_active = true;
    const EntityUpdateResult result =
        ::CompileEntities(*world, MakeCompileOptions(), TargetFile(), update_ent_visibility, timer, problem_solver);
    compilation_active = false;
    stage_times = timer.Finish();
    progress.AddText("\r\n" + TotalTime(start, "%02d:%02d:%02d"));
    switch (result) {
    case EntityUpdateResult::Written:
        return CompileOutcome::Written;
    case EntityUpdateResult::Stopped:
        return CompileOutcome::Stopped;
    case EntityUpdateResult::WriteFailed:
        return CompileOutcome::NotWritten;
    case EntityUpdateResult::NoOldWorld:
        return CompileOutcome::BadInput;
    case EntityUpdateResult::Problems:
    case EntityUpdateResult::BrushesDeleted:
    case EntityUpdateResult::CellsDiffer:
    case EntityUpdateResult::LimitExceeded:
        break;
    }
    return CompileOutcome::Problems;
}
