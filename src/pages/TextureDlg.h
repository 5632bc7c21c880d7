// The texture page: the library of materials as a tree and lists, the chosen material, and the mapping of the selected
// surface or of all surfaces of the selected brushes.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "editor/EditorListener.h"
#include "scene/Surface.h"

class CInterface;
class DupMatName;

// One entry of the material list.
struct MaterialItem {
    std::string material_class, name;
    std::string texture_class, texture_name; // of its thumbnail
    SIZE texture_size;                       // pixels; 0 by 0 when the image cannot be read
    bool used = false;                       // by the open project

    std::string SizeText() const; // such as "64 x 32", empty without an image
};

// A node of the tree: its name, and the classes under it.
struct MaterialGroup {
    std::string name; // empty for the classes at the root
    bool expanded = false;
    std::vector<std::string> classes;
};

class TextureDlg : public EditorListener {
public:
    static constexpr float SCALE_STEP = 0.05f;   // of the scale's spin boxes
    static constexpr float ROTATION_STEP = 1.0f; // degrees

    explicit TextureDlg(CInterface& controller);
    TextureDlg(const TextureDlg&) = delete;
    TextureDlg& operator=(const TextureDlg&) = delete;
    ~TextureDlg() override;

    // --- The library
    void ReadGroups(); // Marrowstead\dir_groups.def
    // The groups in their order, then "miscellaneous" where the groups file wants it, else the root's node.
    std::vector<MaterialGroup> Tree() const;
    // Those whose name holds the filter. Sizes are read from the images once.
    std::vector<MaterialItem> ListClass(std::string_view name); // an empty name: of all classes
    std::vector<MaterialItem> ListUsed();
    bool read_sizes = true;     // off: the lists touch no image, and sizes that are not known yet are 0 by 0
    std::string filter;         // any part of a name, any case; empty: all
    std::string selected_class; // the class shown
    void RefreshClass();        // scans selected_class anew
    void ReloadTextures();      // all that came from files, each in its slot

    // --- The chosen material, in the library's spelling; empty: none
    std::string material_class, material_name;
    bool SetMaterial(std::string_view name_of_class, std::string_view name); // any case; false if the library lacks it
    std::string surface_material;           // of the selected surface, empty if it has none
    std::string MaterialScriptPath() const; // of the chosen material, empty if none
    // Opens the script by open_text. A script that only a library holds is copied to the disk first.
    void ShowCurMaterialScript();
    std::function<void(const std::string& path)> open_text; // shows a text file to the user
    bool Duplicate(DupMatName& question);                   // its OnOK, after which the class knows the copy

    // Puts the chosen material on the selected surface, or on all surfaces of the selected brushes, and remaps. False
    // if none is chosen or nothing is selected.
    bool Apply();
    bool paint_on_click = true; // whether a click in the list also applies; stored as a setting
    void SetPaintOnClick(bool paints);
    void ReplaceMaterial(bool only_selected); // the selected surface's material, wherever it is, by the chosen one
    void RemoveMaterial();                    // from the selection, or the chosen one from the whole level
    void ToggleMask();

    // --- The mapping. What is not finite is ignored; a scale or a count never becomes 0.
    TEX_INFO tex_info;          // the page's record; follows the selected surface
    float fit_u = 1, fit_v = 1; // repeats over the surface

    void ChangeShift(float du, float dv); // texels
    void ChangeScale(float du, float dv);
    // Degrees. whole_steps: on to the next whole multiple of them.
    void ChangeRotation(float degrees, bool whole_steps);
    void SetShift(float u, float v);
    void SetScale(float u, float v);
    void SetRotation(float degrees);
    void FlipU();
    void FlipV();
    void SetLocked(bool locked);
    void ChangeFit(float dfu, float dfv);
    void FitOnce() { Fit(1, 1); }
    void Fit(float fu, float fv); // these counts
    // remap: writes the record to the selected surface, or to all surfaces of the selected brushes. redraw: view 3.
    void RemapSurface(bool remap, bool redraw);
    void CopyMapping() { copied_mapping = tex_info; }
    void PasteMapping();

    void SurfaceSelectionChanged() override;
    void MaterialPicked(const std::string& name_of_class, const std::string& name) override;
    void WorldReplaced() override;

private:
    bool HasSurface() const;
    SIZE TextureSize(const std::string& texture_class, const std::string& texture_name);
    template <class Takes>
    std::vector<MaterialItem> List(Takes takes);
    void WriteRecord();
    void TakeRecord(const TEX_INFO& record, const char* description);

    CInterface& editor;
    std::vector<std::string> dir_groups_list, expanded_groups_list;
    bool create_misc_group = false;
    std::map<std::string, SIZE> texture_size; // by lower-case class\name
    bool had_surface = false;
    TEX_INFO copied_mapping;
};
