// The single controller of the editor: settings, definitions, the library of materials, the open world, and the
// commands that work on them. It knows no toolkit.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "compiler/Compile.h"
#include "compiler/ProblemSolver.h"
#include "definitions/ActorDefGroup.h"
#include "definitions/EntityParser.h"
#include "definitions/MaterialLibrary.h"
#include "editor/CompileReport.h"
#include "editor/EditorSettings.h"
#include "editor/ProgressText.h"
#include "foundation/StringList.h"
#include "persistence/Project.h"
#include "scene/World.h"

enum class CompileOutcome { Written, Problems, Stopped, NotWritten, BadInput };

class CInterface {
public:
    CInterface();
    ~CInterface(); // writes changed settings back

    // Reads the definition files and scans the materials. The file libraries are mounted by then.
    void Init();
    // A fresh world, as for each new or opened project.
    void InitEditor();

    // Opens a project. With a folder it can be saved under its name; without one (null) it has no name to save under.
    // False with a sentence; a fresh world is open then.
    bool LoadProject(const char* filepath, std::string_view filename, std::string& error);
    // False after the user was told. A project saved under another name keeps its own when update_project_name is off.
    bool SaveProject(std::string_view filepath, std::string_view filename, bool update_project_name);

    // Compile world: from the safety copy to the log. Boxes tell what went wrong.
    CompileOutcome Compile(CProgressText& progress);
    // Compile entities: rewrites them in the compiled world, with update_ent_visibility also those of its cells.
    CompileOutcome CompileEntities(CProgressText& progress, bool update_ent_visibility);
    std::string TargetFile() const { return "Maps\\" + world->map_file + ".few"; }

    EditorSettings settings;
    int threads = 0;                    // of a compile; 0: all cores
    FaceObserver face_observer;         // sees the item buffers of a compile, when set
    ProblemSolver problem_solver;       // the findings of the last compile
    std::vector<StageTime> stage_times; // of the last compile
    ActorDefGroups actor_def_groups;
    StringListClass weapon_defs; // names of the weapon definition files
    std::unique_ptr<EntityParser> entity_parser;
    MaterialLibrary materials;
    std::unique_ptr<World> world;
    ProjectViews views;
    bool is_initialized = false, compilation_active = false;
    bool project_file_has_name = false, project_file_need_save = false;
    std::string project_file_path, project_file_name;

    // Settings of this run only: the destructor writes back what is set apart from them.
    bool OverrideSetting(std::string_view assignment, std::string& error);

private:
    CompileOptions MakeCompileOptions() const;
    bool TargetIsReadOnly(const std::string& target) const;

    EditorSettings stored_settings;
    bool settings_overridden = false;
};
