// The document commands: new, open, save, incremental save, the recent files, and decals from another project.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "editor/Interface.h"

struct LibraryPages;

inline constexpr const char* DEFAULT_MAP_FILE = "Default"; // that of a new level

class CMarrowstead2Doc {
public:
    CMarrowstead2Doc(CInterface& editor_interface, LibraryPages& library_pages);

    void OnFileNew();
    void OnFileOpen();
    void OnFileSave();
    void OnFileSaveAs();
    void OnSaveplus(); // the incremental save
    void OnFileMergeDecals();
    void OnFileExport(); // VRML
    void OnFileImport(); // a mesh of a modelling tool, as a custom mesh beside it or among the custom brushes
    // Asked for after the level was saved, while a movie is edited: saves it too, true: under a new name.
    std::function<bool(bool as)> save_movie;

    // Without questions and dialogs. path: a real or a data path. False with a sentence.
    void New();
    bool Open(const std::string& path, std::string& error);
    // A copy of a project that was kept against a crash: it has unsaved changes and the project's own name.
    bool OpenCopy(const std::string& copy, bool has_name, const std::string& project_path,
                  const std::string& project_name, std::string& error);
    bool SaveTo(const std::string& path); // false after the user was told
    void MergeDecals(const std::string& path);
    // Asks whether unsaved work is to be saved, and saves it. False: the command ends, after Cancel or a failed save.
    bool SaveModified();

    int FailedSaves() const { return failed_saves; } // so far, also of movies; refused ones too
    void CountFailedSave() { ++failed_saves; }

    const std::vector<std::string>& RecentFiles() const { return recent; } // the newest first
    static constexpr size_t MOST_RECENT_FILES = 4;

private:
    bool Save(const std::string& folder, const std::string& name);
    bool MayLeaveOut();                        // asks whether to save without what opening has left out
    bool SaveAs();                             // false after Cancel or a failure
    void NameMapFile(const std::string& path); // of a level that has only the default
    bool SaveActive();                         // under its name, else as SaveAs
    bool SaveMovie(bool as);                   // while a movie is edited
    void AddToRecent(const std::string& path);
    void ForgetRecent(const std::string& path);
    void ChangeRecent(const std::function<void(std::vector<std::string>&)>& change);

    CInterface& interface;
    LibraryPages& pages;
    std::vector<std::string> recent;
    int failed_saves = 0;
    std::string left_out; // what opening could not take from the project, a sentence; a save over it would lose that
};

// The next name of an incremental save, without its folder: "level" becomes "level_0000.msp", "level_0009.msp"
// "level_0010.msp". Empty when no digit is left to carry into.
std::string IncrementedName(const std::string& file_name);
