#include "pages/PrefabDlg.h"

#include <algorithm>

#include "editor/Interface.h"
#include "files/ChunkFile.h"
#include "files/FileFind.h"
#include "files/FileObject.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"
#include "pages/Thumbnails.h"
#include "persistence/WriteError.h"

namespace {

constexpr const char* BRUSH_FOLDER = "Marrowstead\\Brushes";
constexpr const char* PREFAB_FOLDER = "Marrowstead\\Prefabs";
constexpr size_t ENDING_LENGTH = 4; // of ".msh" and ".mpf"
constexpr size_t TEXT_LENGTH = 259; // of the texts that are asked for

std::string Join(const std::string& folder, const std::string& name) { return folder + "\\" + name; }

// Sorted names that fit their table; what does not is told.
std::vector<std::string> Names(const std::string& folder, const char* pattern, FFOSearchType type, size_t cut,
                               size_t most) {
    StringListClass sorted(false, true);
    FileFindObject search(folder, pattern, type, true);
    while (const FFOInfo* found = search.FindNext()) {
        const std::string name = found->name.substr(0, found->name.size() - std::min(cut, found->name.size()));
        if (name.empty() || name == "." || name == "..")
            continue;
        if (name.size() > PrefabDlg::NAME_LENGTH)
            NoticeOnce(Format("%s\\%s is left out: a name has at most %zu characters", folder.c_str(), name.c_str(),
                              PrefabDlg::NAME_LENGTH));
        else
            sorted.AddString(name);
    }
    std::vector<std::string> names;
    for (int i = 0; i < sorted.GetStringCount() && names.size() < most; ++i)
        names.emplace_back(sorted.GetString(i));
    if (static_cast<size_t>(sorted.GetStringCount()) > most)
        NoticeOnce(Format("%s holds more than %zu entries; the others are left out", folder.c_str(), most));
    return names;
}

void ParseFamily(PrefabFamily& family, const char* top, const char* pattern) {
    family.directory = Names(top, "*", FFO_DirectoryFind, 0, PrefabDlg::MAX_DIRECTORIES);
    family.file.clear();
    for (const std::string& directory : family.directory)
        family.file.push_back(Names(Join(top, directory), pattern, FFO_FileFind, ENDING_LENGTH, PrefabDlg::MAX_FILES));
}

int IndexOf(const std::vector<std::string>& names, std::string_view name) {
    const auto found =
        std::find_if(names.begin(), names.end(), [name](const std::string& n) { return EqualNoCase(n, name); });
    return found == names.end() ? -1 : static_cast<int>(found - names.begin());
}

bool IsFolderName(const std::string& name) {
    return name.find_first_of("\\/:*?\"<>|") == std::string::npos && name != "." && name != "..";
}

} // namespace

PrefabDlg::PrefabDlg(CInterface& controller) : editor(controller) { OnInitDialog(); }

void PrefabDlg::OnInitDialog() {
    ParseBrushes();
    ParsePrefabs();
    SelectRoot(true);
}

void PrefabDlg::ParseBrushes() { ParseFamily(brushes, BRUSH_FOLDER, "*.msh"); }

void PrefabDlg::ParsePrefabs() { ParseFamily(prefabs, PREFAB_FOLDER, "*.mpf"); }

void PrefabDlg::SelectRoot(bool of_brushes) { SelectDirectory(of_brushes, -1); }

void PrefabDlg::SelectDirectory(bool of_brushes, int index) {
    brushes_selected = of_brushes;
    buttons_enabled = !of_brushes;
    selected_directory = index >= 0 && static_cast<size_t>(index) < Family().directory.size() ? index : -1;
    SelectFile(0);
}

const std::vector<std::string>& PrefabDlg::ListedFiles() const {
    static const std::vector<std::string> none;
    return selected_directory >= 0 ? Family().file[static_cast<size_t>(selected_directory)] : none;
}

void PrefabDlg::SelectFile(int index) {
    selected_file = index >= 0 && static_cast<size_t>(index) < ListedFiles().size() ? index : -1;
    ReadDescription();
    StoreChoice();
}

bool PrefabDlg::Select(bool of_brushes, std::string_view directory, std::string_view file) {
    const PrefabFamily& family = of_brushes ? brushes : prefabs;
    const int d = IndexOf(family.directory, directory);
    const int f = d >= 0 ? IndexOf(family.file[static_cast<size_t>(d)], file) : -1;
    if (f == -1)
        return false;
    SelectDirectory(of_brushes, d);
    SelectFile(f);
    return true;
}

std::string PrefabDlg::GetSelectedDirectory() const {
    return selected_directory >= 0 ? Family().directory[static_cast<size_t>(selected_directory)] : std::string();
}

std::string PrefabDlg::GetSelectedFile() const {
    return selected_file >= 0 ? ListedFiles()[static_cast<size_t>(selected_file)] : std::string();
}

void PrefabDlg::StoreChoice() { editor.prefab_choice = {brushes_selected, GetSelectedDirectory(), GetSelectedFile()}; }

void PrefabDlg::ReadDescription() {
    m_desc.clear();
    if (brushes_selected || !IsAnythingSelected())
        return;
    UChunkFile file(Join(Join(PREFAB_FOLDER, GetSelectedDirectory()), GetSelectedFile() + ".mpf"), CFM_Open);
    if (!file.IsValid() || !file.OpenChunk("Description"))
        return;
    const std::vector<uint8_t> text = file.GetArrayAlloc(0);
    const auto end = std::find(text.begin(), text.end(), 0);
    m_desc = CutText(std::string(text.begin(), end), DESCRIPTION_LENGTH);
}

bool PrefabDlg::LoadPicture(const std::string& directory, const std::string& file, Thumbnail& picture) {
    return LoadThumbnailPicture(Join(Join(BRUSH_FOLDER, directory), file + "_th.tga"), picture);
}

std::optional<PrefabToSave> PrefabDlg::AskSave() const {
    if (brushes_selected || selected_directory < 0) {
        GetDesktop().MessageBox("No Prefab directory selected", "Marrowstead 2000");
        return std::nullopt;
    }
    FormQuestion question{"Save prefab", {{}, {}}};
    question.fields[0].label = "Name:";
    question.fields[1].label = "Description:";
    for (FormField& field : question.fields)
        field.max_length = TEXT_LENGTH;
    if (!GetDesktop().AskForm(question))
        return std::nullopt;
    if (question.fields[0].value.empty()) {
        GetDesktop().Notice("Nothing is saved: a prefab needs a name");
        return std::nullopt;
    }
    if (!IsFolderName(question.fields[0].value)) {
        GetDesktop().MessageBox("A file cannot have this name.", "Error");
        return std::nullopt;
    }
    return PrefabToSave{Join(Join(PREFAB_FOLDER, GetSelectedDirectory()), question.fields[0].value + ".mpf"),
                        question.fields[1].value};
}

void PrefabDlg::Save() {
    const std::optional<PrefabToSave> asked = AskSave();
    if (!asked)
        return;
    if (FileObject::FileExists(asked->path) &&
        GetDesktop().MessageBox("A prefab of this name exists already. Overwrite?", "Marrowstead 2000",
                                MessageButtons::YesNo) != MessageAnswer::Yes)
        return;
    std::string error;
    if (!editor.world->IsSomethingSelected())
        GetDesktop().Notice("Nothing is selected: a prefab is made from the selection");
    else if (!editor.world->SavePrefab(asked->path, asked->description, error))
        ShowWriteError(error);
    Refresh();
}

void PrefabDlg::MakeDirectory() {
    FormQuestion question{"New prefab directory", {{}}};
    question.fields[0].label = "Name:";
    question.fields[0].max_length = TEXT_LENGTH;
    if (!GetDesktop().AskForm(question) || question.fields[0].value.empty())
        return;
    const std::string& name = question.fields[0].value;
    if (!IsFolderName(name) || !MakeFolders(Join(PREFAB_FOLDER, name)))
        GetDesktop().MessageBox(Format("The directory \"%s\" cannot be made.", name.c_str()), "Error");
    Refresh();
}

void PrefabDlg::Refresh() {
    const bool of_brushes = brushes_selected;
    const std::string directory = GetSelectedDirectory(), file = GetSelectedFile();
    brushes.root = BRUSH_FOLDER;
    prefabs.root = PREFAB_FOLDER;
    ParseBrushes();
    ParsePrefabs();
    const int d = directory.empty() ? -1 : IndexOf(Family().directory, directory);
    SelectDirectory(of_brushes, d);
    SelectFile(file.empty() ? -1 : IndexOf(ListedFiles(), file));
    buttons_enabled = !brushes_selected && selected_directory >= 0;
}
