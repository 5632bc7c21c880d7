#include "pages/TextureDlg.h"

#include <algorithm>
#include <cmath>

#include "definitions/DefFile.h"
#include "definitions/MaterialScript.h"
#include "editor/Interface.h"
#include "files/Picture.h"
#include "foundation/Paths.h"
#include "foundation/Settings.h"
#include "foundation/Strings.h"
#include "pages/DupMatName.h"
#include "pages/FileCopy.h"
#include "render/Textures.h"

namespace {

constexpr const char* GROUPS_FILE = "Marrowstead\\dir_groups.def";
constexpr const char* MISC_GROUP = "miscellaneous";
constexpr const char* REMAP_STEP = "Change the mapping.";
constexpr const char* PAINT_ON_CLICK_VALUE = "PaintOnClick";

bool Holds(const std::string& name, const std::string& lower_part) {
    return lower_part.empty() || ToLower(name).find(lower_part) != std::string::npos;
}

bool IsListed(const std::vector<std::string>& names, std::string_view name) {
    return std::any_of(names.begin(), names.end(), [name](const std::string& n) { return EqualNoCase(n, name); });
}

void AddParameters(const DefFileObject& file, std::vector<std::string>& names) {
    std::string name;
    for (int i = 0; file.GetString(i, name); ++i)
        if (!name.empty())
            names.push_back(name);
}

// value + step, or the step behind it where that would be 0.
float StepPastZero(float value, float step) {
    constexpr float NO_SCALE = 1e-4f; // sums of decimal steps miss 0 by less than this
    const float result = value + step;
    return std::fabs(result) < NO_SCALE ? result + (step != 0 ? step : 1) : result;
}

float NextWholeMultiple(float value, float step) {
    const float size = std::fabs(step);
    if (size == 0)
        return value;
    return (step > 0 ? std::floor(value / size) + 1 : std::ceil(value / size) - 1) * size;
}

bool IsUsable(const TEX_INFO& record) {
    for (const float value : {record.shift.u, record.shift.v, record.scale.u, record.scale.v, record.rotation})
        if (!std::isfinite(value))
            return false;
    return record.scale.u != 0 && record.scale.v != 0;
}

} // namespace

std::string MaterialItem::SizeText() const {
    return texture_size.cx > 0 ? Format("%d x %d", texture_size.cx, texture_size.cy) : std::string();
}

TextureDlg::TextureDlg(CInterface& controller) : editor(controller) {
    ReadGroups();
    RegistryClass store;
    if (store.OpenKeyDirectory(SETTINGS_KEY))
        paint_on_click = store.GetFlag(PAINT_ON_CLICK_VALUE, paint_on_click);
    editor.AddListener(*this);
}

TextureDlg::~TextureDlg() { editor.RemoveListener(*this); }

// --- The library

void TextureDlg::ReadGroups() {
    dir_groups_list.clear();
    expanded_groups_list.clear();
    create_misc_group = false;
    DefFileObject file(GROUPS_FILE);
    if (!file.OpenSection("Groups"))
        return;
    while (file.OpenNextCommand()) {
        const std::string_view command = file.GetCommandName();
        if (EqualNoCase(command, "AddGroups"))
            AddParameters(file, dir_groups_list);
        else if (EqualNoCase(command, "ExpandedGroups"))
            AddParameters(file, expanded_groups_list);
        else if (EqualNoCase(command, "CreateMiscGroup"))
            file.GetBool(0, create_misc_group);
    }
}

std::vector<MaterialGroup> TextureDlg::Tree() const {
    std::vector<MaterialGroup> tree;
    for (const std::string& name : dir_groups_list)
        tree.push_back({name, IsListed(expanded_groups_list, name), {}});
    MaterialGroup rest{create_misc_group ? MISC_GROUP : "", IsListed(expanded_groups_list, MISC_GROUP), {}};
    for (const auto& c : editor.materials.Classes()) {
        const auto group = std::find_if(tree.begin(), tree.end(),
                                        [&c](const MaterialGroup& g) { return StartsWithNoCase(c.name, g.name); });
        (group == tree.end() ? rest : *group).classes.push_back(c.name);
    }
    tree.push_back(std::move(rest));
    return tree;
}

SIZE TextureDlg::TextureSize(const std::string& texture_class, const std::string& texture_name) {
    const std::string key = ToLower(texture_class + "\\" + texture_name);
    const auto known = texture_size.find(key);
    if (known != texture_size.end())
        return known->second;
    TGAInfoStruct info;
    SIZE size;
    if (!read_sizes)
        return size;
    if (TGAClass::GetImageInfo(TexturePath(texture_class, texture_name), info) == PICTURE_OK)
        size = {info.width, info.height};
    return texture_size[key] = size;
}

// Those materials that takes(class, material) picks and whose name or class holds the filter.
template <class Takes>
std::vector<MaterialItem> TextureDlg::List(Takes takes) {
    std::vector<MaterialItem> list;
    const std::string part = ToLower(filter);
    for (const auto& c : editor.materials.Classes()) {
        const bool whole_class = Holds(c.name, part);
        for (const auto& m : c.materials)
            if (takes(c, m) && (whole_class || Holds(m.name, part))) {
                const MaterialProperties& p = m.properties;
                list.push_back({c.name, m.name, p.texture_class, p.texture_name,
                                TextureSize(p.texture_class, p.texture_name), m.used});
            }
    }
    return list;
}

std::vector<MaterialItem> TextureDlg::ListClass(std::string_view name) {
    return List([name](const MaterialLibrary::MaterialClass& c, const auto&) {
        return name.empty() || EqualNoCase(c.name, name);
    });
}

std::vector<MaterialItem> TextureDlg::ListUsed() {
    return List([](const auto&, const MaterialLibrary::Material& m) { return m.used; });
}

void TextureDlg::RefreshClass() {
    editor.materials.RefreshClass(selected_class);
    texture_size.clear();
    MaterialNames found;
    if (editor.materials.FindMaterial(material_class.c_str(), material_name, found))
        editor.texture_choice = {found.texture_class, found.texture_name};
    else {
        material_class = material_name = {};
        editor.texture_choice = {};
    }
}

void TextureDlg::ReloadTextures() {
    for (uint32_t handle = 0; handle < CR_MAX_TEXTURES; ++handle) {
        const CRTexture* texture = crTRecord(handle);
        if (!texture || !texture->from_file || texture->path.empty())
            continue;
        const std::string path = texture->path, name = texture->name;
        const uint32_t level = texture->level;
        crTDestroy(handle);
        crTCreate(path, name, level, handle);
    }
    texture_size.clear();
    editor.RedrawAllViews();
}

// --- The chosen material

bool TextureDlg::SetMaterial(std::string_view name_of_class, std::string_view name) {
    MaterialNames found;
    if (!editor.materials.FindMaterial(std::string(name_of_class).c_str(), name, found))
        return false;
    material_class = selected_class = found.material_class;
    material_name = found.material_name;
    editor.texture_choice = {found.texture_class, found.texture_name};
    return true;
}

void TextureDlg::MaterialPicked(const std::string& name_of_class, const std::string& name) {
    SetMaterial(name_of_class, name);
}

std::string TextureDlg::MaterialScriptPath() const {
    return material_name.empty() ? std::string() : ::MaterialScriptPath(material_class, material_name);
}

void TextureDlg::ShowCurMaterialScript() {
    const std::string path = MaterialScriptPath();
    if (path.empty() || !open_text)
        return;
    std::string error;
    if (!FileExistsOnDisk(path) && !CopyFileOut(path, path, error)) {
        GetDesktop().MessageBox(error, "Error");
        return;
    }
    open_text(path);
}

bool TextureDlg::Duplicate(DupMatName& question) {
    if (!question.OnOK())
        return false;
    editor.materials.RefreshClass(question.new_directory);
    texture_size.clear();
    return true;
}

bool TextureDlg::Apply() {
    MaterialNames found;
    World& world = *editor.world;
    if (material_name.empty() || !editor.materials.FindMaterial(material_class.c_str(), material_name, found))
        return false;
    if (!HasSurface() && world.brush_selection.GetItemCount() == 0)
        return false;
    ChangeRecord record(world, "Change the material.");
    editor.materials.AddMaterialToUseList(found.material_class, found.material_name);
    if (HasSurface())
        world.ChangeTexture(found.material_class, found.material_name, found.texture_class, found.texture_name);
    else
        world.ChangeTextureToAll(found.material_class, found.material_name, found.texture_class, found.texture_name);
    WriteRecord();
    editor.RedrawView(VIEW_PERSPECTIVE);
    return true;
}

void TextureDlg::SetPaintOnClick(bool paints) {
    paint_on_click = paints;
    RegistryClass store;
    const int stored = paints ? 1 : 0;
    if (editor.store_settings && store.OpenKeyDirectory(SETTINGS_KEY))
        store.SetKeyValue(PAINT_ON_CLICK_VALUE, &stored);
}

void TextureDlg::ReplaceMaterial(bool only_selected) {
    MaterialNames found;
    if (!editor.materials.FindMaterial(material_class.c_str(), material_name, found))
        return;
    ChangeRecord record(*editor.world, "Replace a material.", ChangeScope::AllObjects);
    editor.materials.AddMaterialToUseList(found.material_class, found.material_name);
    editor.world->ReplaceTextureOnSurface(found.material_class, found.material_name, found.texture_class,
                                          found.texture_name, only_selected);
    editor.RedrawView(VIEW_PERSPECTIVE);
}

void TextureDlg::RemoveMaterial() {
    World& world = *editor.world;
    const bool whole_level = !HasSurface() && world.brush_selection.GetItemCount() == 0;
    ChangeRecord record(world, "Remove a material.", whole_level ? ChangeScope::AllObjects : ChangeScope::Selection);
    world.RemoveTextureFromSurface(material_class.c_str(), material_name.c_str());
    editor.RedrawView(VIEW_PERSPECTIVE);
}

void TextureDlg::ToggleMask() {
    editor.mask_enabled = !editor.mask_enabled;
    editor.RedrawView(VIEW_PERSPECTIVE);
}

// --- The mapping

bool TextureDlg::HasSurface() const { return editor.world && editor.world->selected_surface_brush != -1; }

void TextureDlg::WriteRecord() {
    World& world = *editor.world;
    if (HasSurface())
        world.RemapSurface(tex_info);
    else if (world.brush_selection.GetItemCount() > 0) {
        world.RemapSurfaceToAll(tex_info);
        editor.MarkDirty();
    }
}

void TextureDlg::RemapSurface(bool remap, bool redraw) {
    if (remap) {
        ChangeRecord step(*editor.world, REMAP_STEP);
        WriteRecord();
    }
    if (redraw)
        editor.RedrawView(VIEW_PERSPECTIVE);
}

void TextureDlg::TakeRecord(const TEX_INFO& record, const char* description) {
    if (!IsUsable(record))
        return;
    ChangeRecord step(*editor.world, description);
    tex_info = record;
    WriteRecord();
    editor.RedrawView(VIEW_PERSPECTIVE);
}

void TextureDlg::ChangeShift(float du, float dv) { SetShift(tex_info.shift.u + du, tex_info.shift.v + dv); }

void TextureDlg::ChangeScale(float du, float dv) {
    SetScale(du != 0 ? StepPastZero(tex_info.scale.u, du) : tex_info.scale.u,
             dv != 0 ? StepPastZero(tex_info.scale.v, dv) : tex_info.scale.v);
}

void TextureDlg::ChangeRotation(float degrees, bool whole_steps) {
    SetRotation(whole_steps ? NextWholeMultiple(tex_info.rotation, degrees) : tex_info.rotation + degrees);
}

void TextureDlg::SetShift(float u, float v) {
    TEX_INFO record = tex_info;
    record.shift = {u, v};
    TakeRecord(record, "Shift a texture.");
}

void TextureDlg::SetScale(float u, float v) {
    TEX_INFO record = tex_info;
    record.scale = {u, v};
    TakeRecord(record, "Scale a texture.");
}

void TextureDlg::SetRotation(float degrees) {
    TEX_INFO record = tex_info;
    record.rotation = degrees;
    TakeRecord(record, "Rotate a texture.");
}

void TextureDlg::FlipU() {
    TEX_INFO record = tex_info;
    record.flip_u = !record.flip_u;
    TakeRecord(record, "Flip a texture.");
}

void TextureDlg::FlipV() {
    TEX_INFO record = tex_info;
    record.flip_v = !record.flip_v;
    TakeRecord(record, "Flip a texture.");
}

void TextureDlg::SetLocked(bool locked) {
    ChangeRecord record(*editor.world, "Lock a texture.");
    tex_info.locked = locked;
    editor.world->RemapSurface(tex_info); // of selected brushes it takes only the lock
    editor.RedrawView(VIEW_PERSPECTIVE);
}

void TextureDlg::ChangeFit(float dfu, float dfv) {
    Fit(dfu != 0 ? StepPastZero(fit_u, dfu) : fit_u, dfv != 0 ? StepPastZero(fit_v, dfv) : fit_v);
}

void TextureDlg::Fit(float fu, float fv) {
    if (!std::isfinite(fu) || !std::isfinite(fv) || fu == 0 || fv == 0)
        return;
    fit_u = fu;
    fit_v = fv;
    ChangeRecord record(*editor.world, "Fit a texture.");
    editor.world->FitTextureOnSurface(fit_u, fit_v);
    editor.RedrawView(VIEW_PERSPECTIVE);
}

void TextureDlg::PasteMapping() {
    TEX_INFO record = copied_mapping;
    record.index = tex_info.index;
    record.size = tex_info.size;
    TakeRecord(record, REMAP_STEP);
}

// --- News

void TextureDlg::SurfaceSelectionChanged() {
    World& world = *editor.world;
    const int b = world.selected_surface_brush;
    const TEX_INFO* info = b >= 0 && b < world.GetBrushCount()
                               ? world.brush[static_cast<size_t>(b)]->GetSelectedSurfaceTexInfo()
                               : nullptr;
    surface_material.clear();
    if (info) {
        tex_info = *info;
        if (info->index > 0 && info->index < world.GetMaterialCount())
            surface_material = world.material[static_cast<size_t>(info->index)].material_name;
    } else if (!had_surface) {
        // A surface that is given up leaves its record for other surfaces. News without one before: a click that met
        // none, which starts afresh.
        tex_info = {};
    }
    had_surface = info != nullptr;
}

void TextureDlg::WorldReplaced() {
    tex_info = {};
    fit_u = fit_v = 1;
    surface_material.clear();
    had_surface = false;
}
