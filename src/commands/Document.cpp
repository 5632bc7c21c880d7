#include "commands/Document.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "foundation/Paths.h"
#include "foundation/Settings.h"
#include "foundation/Strings.h"
#include "persistence/Project.h"

namespace {

constexpr const char* TITLE = "Marrowstead 2000";
constexpr const char* PROJECT_FILTER = "Marrowstead Project Files(*.msp)|*.msp||";
constexpr const char* PROJECT_FOLDER = "Marrowstead\\Projects\\";
constexpr const char* PROJECT_ENDING = ".msp";

std::string RecentValue(size_t i) { return Format("RecentFile%d", static_cast<int>(i) + 1); }

// Shows the wait cursor while it lives.
class BusyCursor {
public:
    explicit BusyCursor(CInterface& editor_interface) : interface(editor_interface) {
        GetDesktop().SetCursor(CursorRole::Wait);
    }
    ~BusyCursor() { interface.ChangeCursor(); }

private:
    CInterface& interface;
};

bool IsDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

} // namespace

std::string IncrementedName(const std::string& file_name) {
    std::string stem = file_name.substr(0, file_name.rfind('.'));
    if (stem.empty())
        return {};
    if (!IsDigit(stem.back()))
        return stem + "_0000" + PROJECT_ENDING;
    for (size_t i = stem.size(); i-- > 0 && IsDigit(stem[i]);) {
        if (stem[i] != '9') {
            ++stem[i];
            return stem + PROJECT_ENDING;
        }
        stem[i] = '0';
    }
    return {};
}

CMarrowstead2Doc::CMarrowstead2Doc(CInterface& editor_interface, LibraryPages& library_pages)
    : interface(editor_interface), pages(library_pages) {
    RegistryClass store;
    if (store.OpenKeyDirectory(SETTINGS_KEY))
        for (size_t i = 0; i < MOST_RECENT_FILES; ++i)
            if (std::string path = store.GetText(RecentValue(i), ""); !path.empty())
                recent.push_back(std::move(path));
}

void CMarrowstead2Doc::AddToRecent(const std::string& path) {
    ChangeRecent([&path](std::vector<std::string>& files) {
        std::erase(files, path);
        files.insert(files.begin(), path);
        if (files.size() > MOST_RECENT_FILES)
            files.pop_back();
    });
}

void CMarrowstead2Doc::ForgetRecent(const std::string& path) {
    ChangeRecent([&path](std::vector<std::string>& files) { std::erase(files, path); });
}

// Of the list in the settings, which other programs may have changed; the own one where that cannot be written.
void CMarrowstead2Doc::ChangeRecent(const std::function<void(std::vector<std::string>&)>& change) {
    const auto change_stored = [&](std::map<std::string, std::string>& texts) {
        std::vector<std::string> files;
        for (size_t i = 0; i < MOST_RECENT_FILES; ++i)
            if (const auto text = texts.find(RecentValue(i)); text != texts.end() && !text->second.empty())
                files.push_back(text->second);
        change(files);
        for (size_t i = 0; i < MOST_RECENT_FILES; ++i)
            texts[RecentValue(i)] = i < files.size() ? files[i] : "";
        recent = std::move(files);
    };
    std::vector<std::string> own = recent;
    if (interface.store_settings && RegistryClass::ChangeTexts(SETTINGS_KEY, change_stored))
        return;
    change(own);
    recent = std::move(own);
}

bool CMarrowstead2Doc::SaveModified() {
    if (!interface.HasUnsavedWork())
        return true;
    switch (GetDesktop().MessageBox("Do you want to save active project?", TITLE, MessageButtons::YesNoCancel)) {
    case MessageAnswer::Yes:
        return SaveActive();
    case MessageAnswer::No:
        interface.MarkFileAsDirty(false);
        return true;
    default:
        return false;
    }
}

void CMarrowstead2Doc::New() {
    left_out.clear();
    interface.known_project.Forget();
    interface.EndDragRecord();
    interface.editor_state = ES_IDLE;
    interface.selection_box_active = false;
    interface.shearing = false;
    interface.mouse_release = true;
    interface.materials.Reset();
    interface.InitEditor();
    interface.RefreshAIDlg();
    interface.RedrawAllViews();
}

void CMarrowstead2Doc::OnFileNew() {
    if (SaveModified())
        New();
}

bool CMarrowstead2Doc::Open(const std::string& path, std::string& error) {
    const BusyCursor busy(interface);
    std::error_code failure;
    New();
    interface.known_project.Know(
        CInterface::FullName(DirectoryPart(path), FilePart(path))); // a change from here on is one of another program
    ProjectLeftOut lacking;
    const bool loaded = interface.LoadProject(DirectoryPart(path).c_str(), FilePart(path), error, &lacking);
    interface.UpdateSelectionBox();
    interface.RefreshAIDlg();
    interface.SetCountText();
    interface.Tell(&EditorListener::WorldReplaced);
    interface.RedrawAllViews();
    if (loaded) {
        left_out = lacking.Sentence(path);
        AddToRecent(path);
    } else if (!FileExistsOnDisk(path) && std::filesystem::is_directory(RealPath(DirectoryPart(path)), failure))
        ForgetRecent(path); // gone, not on a drive that is not there today
    return loaded;
}

bool CMarrowstead2Doc::OpenCopy(const std::string& copy, bool has_name, const std::string& project_path,
                                const std::string& project_name, std::string& error) {
    New();
    ProjectLeftOut lacking;
    const bool loaded = interface.LoadProject(nullptr, copy, error, &lacking);
    interface.UpdateSelectionBox();
    interface.RefreshAIDlg();
    interface.SetCountText();
    if (loaded) {
        left_out = lacking.Sentence(copy);
        interface.project_file_has_name = has_name;
        interface.project_file_path = project_path;
        interface.project_file_name = project_name;
        if (has_name)
            interface.known_project.Know(interface.ProjectFullName());
        interface.title = std::string(TITLE) + " - Untitled"; // the next line writes the name, where there is one
        interface.MarkDirty();
        interface.Tell(&EditorListener::TitleChanged);
    }
    interface.Tell(&EditorListener::WorldReplaced);
    interface.RedrawAllViews();
    return loaded;
}

void CMarrowstead2Doc::OnFileOpen() {
    if (!SaveModified())
        return;
    const std::optional<std::string> path =
        GetDesktop().AskFile({false, "Open", PROJECT_FILTER, PROJECT_FOLDER, PROJECT_ENDING, ""});
    std::string error;
    if (!path && interface.HasUnsavedWork())
        interface.MarkDirty(); // "No" has given it up, but it is still there
    else if (path && !Open(*path, error))
        GetDesktop().MessageBox(error, TITLE);
}

bool CMarrowstead2Doc::Save(const std::string& folder, const std::string& name) {
    const std::string path = CInterface::FullName(folder, name);
    if (!interface.known_project.MayReplace(path)) {
        ++failed_saves;
        return false;
    }
    const BusyCursor busy(interface);
    if (interface.SaveProject(folder, name, true)) {
        interface.known_project.Know(path);
        left_out.clear();
        return true;
    }
    ++failed_saves;
    interface.MarkDirty(); // so that the title says it
    return false;
}

bool CMarrowstead2Doc::SaveTo(const std::string& path) {
    if (!Save(DirectoryPart(path), FilePart(path)))
        return false;
    AddToRecent(path);
    return true;
}

bool CMarrowstead2Doc::MayLeaveOut() {
    if (left_out.empty() || GetDesktop().MessageBox(left_out + "\n\nSave the project without them?", TITLE,
                                                    MessageButtons::YesNo) == MessageAnswer::Yes)
        return true;
    ++failed_saves;
    return false;
}

// Else the second level would be compiled over the first.
void CMarrowstead2Doc::NameMapFile(const std::string& path) {
    const std::string name = FilePart(path), stem = name.substr(0, name.rfind('.'));
    if (stem.empty() || interface.world->map_file != DEFAULT_MAP_FILE)
        return;
    interface.world->map_file = CutText(stem, PATH_FIELD - 1);
    interface.Tell(&EditorListener::SettingsChanged);
}

bool CMarrowstead2Doc::SaveAs() {
    const std::optional<std::string> path = GetDesktop().AskFile(
        {true, "Save As", PROJECT_FILTER, PROJECT_FOLDER, PROJECT_ENDING, interface.project_file_name});
    std::error_code failure;
    if (!path || (std::filesystem::equivalent(RealPath(*path), RealPath(interface.ProjectFullName()), failure) &&
                  !MayLeaveOut()))
        return false; // under another name nothing is lost
    if (!interface.project_file_has_name)
        NameMapFile(*path);
    return SaveTo(*path) && SaveMovie(true);
}

bool CMarrowstead2Doc::SaveMovie(bool as) { return !interface.movie_editing || !save_movie || save_movie(as); }

bool CMarrowstead2Doc::SaveActive() {
    if (!interface.project_file_has_name)
        return SaveAs();
    return MayLeaveOut() && Save(interface.project_file_path, interface.project_file_name) && SaveMovie(false);
}

void CMarrowstead2Doc::OnFileSave() { SaveActive(); }

void CMarrowstead2Doc::OnFileSaveAs() { SaveAs(); }

void CMarrowstead2Doc::OnSaveplus() {
    if (!interface.project_file_has_name) {
        SaveAs();
        return;
    }
    if (interface.project_file_name.empty())
        return;
    std::string name = IncrementedName(interface.project_file_name);
    while (!name.empty() && FileExistsOnDisk(CInterface::FullName(interface.project_file_path, name)))
        name = IncrementedName(name); // a number that is taken is another state of the level
    if (name.empty()) {
        GetDesktop().MessageBox("Not enough digits available in project name !\n\nProject was not saved.", TITLE);
        return;
    }
    if (Save(interface.project_file_path, name))
        AddToRecent(CInterface::FullName(interface.project_file_path, name));
}

void CMarrowstead2Doc::MergeDecals(const std::string& path) {
    std::string error;
    World& world = *interface.world;
    const ChangeRecord record(world, "Load decals.", ChangeScope::Added);
    if (!LoadDecals(path, world, interface.materials, *interface.entity_parser, error)) {
        GetDesktop().Notice(error);
        return;
    }
    interface.MarkDirty();
    interface.RedrawView(VIEW_PERSPECTIVE);
    GetDesktop().MessageBox(Format("%d decals were successfully added.", static_cast<int>(world.decal_template.size())),
                            "");
}

void CMarrowstead2Doc::OnFileMergeDecals() {
    if (const std::optional<std::string> path =
            GetDesktop().AskFile({false, "Open", PROJECT_FILTER, PROJECT_FOLDER, PROJECT_ENDING, ""}))
        MergeDecals(*path);
}
