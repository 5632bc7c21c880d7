// The prefab page: chooses a custom brush or a prefab for the mouse to place. The choice goes to the editor's
// prefab_choice.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CInterface;
struct Thumbnail;

// Custom brushes or prefabs: the folders below their top folder, and the files in each without their ending.
struct PrefabFamily {
    std::vector<std::string> directory;
    std::vector<std::vector<std::string>> file; // of each directory
    std::string root;                           // what the tree calls it
};

// What the selection is to be saved as.
struct PrefabToSave {
    std::string path, description;
};

class PrefabDlg {
public:
    static constexpr size_t MAX_DIRECTORIES = 64, MAX_FILES = 128; // of a family; of a directory
    static constexpr size_t NAME_LENGTH = 31;
    static constexpr size_t DESCRIPTION_LENGTH = 255;

    explicit PrefabDlg(CInterface& controller);
    PrefabDlg(const PrefabDlg&) = delete;
    PrefabDlg& operator=(const PrefabDlg&) = delete;

    PrefabFamily brushes{{}, {}, "Brushes"}, prefabs{{}, {}, "Prefabs"};
    bool brushes_selected = true; // the family
    int selected_directory = -1, selected_file = -1;
    std::string m_desc; // of the chosen prefab

    void OnInitDialog();
    void SelectRoot(bool of_brushes);
    void SelectDirectory(bool of_brushes, int index);                                // with its first file
    void SelectFile(int index);                                                      // in the list; -1: none
    bool Select(bool of_brushes, std::string_view directory, std::string_view file); // any case; false if absent

    const PrefabFamily& Family() const { return brushes_selected ? brushes : prefabs; }
    const std::vector<std::string>& ListedFiles() const; // of the selected directory
    bool IsAnythingSelected() const { return selected_directory >= 0 && selected_file >= 0; }
    bool IsBrushSelected() const { return brushes_selected; }
    std::string GetSelectedDirectory() const; // names, empty if none is selected
    std::string GetSelectedFile() const;
    // Of a file of the brush family; false if there is none. Any thread may call it.
    static bool LoadPicture(const std::string& directory, const std::string& file, Thumbnail& picture);

    bool CanSave() const { return buttons_enabled; } // the save and the make-directory button
    // Asks for a name and a description. Nothing after Cancel, an empty name, or without a prefab directory.
    std::optional<PrefabToSave> AskSave() const;
    void Save();          // the selection, as asked; what goes wrong is told
    void MakeDirectory(); // asks for its name
    void Refresh();

private:
    void ParseBrushes();
    void ParsePrefabs();
    void ReadDescription();
    void StoreChoice();

    CInterface& editor;
    bool buttons_enabled = false;
};
