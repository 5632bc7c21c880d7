// The one scene of the editor: all brushes and entities of the open project, selections, groups, the material table,
// lightmap pages and decal templates. New and Open replace it as a whole.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "scene/ActorGroup.h"
#include "scene/Brush.h"
#include "scene/DecalTemplate.h"
#include "scene/Entity.h"
#include "scene/MaterialSource.h"
#include "scene/Selection.h"

inline constexpr int MAX_BRUSHES = 32768;
inline constexpr int MAX_ENTITIES = 16384;
inline constexpr int MAX_GROUPS = 8192;
inline constexpr int MAX_MATERIALS = 2047; // row 0 is no material
inline constexpr int MAX_LIGHTMAP_PAGES = 1024;
inline constexpr int MAX_MP_GAMES = 8;
inline constexpr int MAX_DECAL_TEMPLATES = 8192;
inline constexpr size_t NAME_FIELD = 32;  // names of textures, materials, games, with terminator
inline constexpr size_t PATH_FIELD = 260; // file names and titles, with terminator

inline constexpr int LIGHTMAP_PAGE_SIDE = 256;
using LightmapPage = std::vector<uint32_t>; // LIGHTMAP_PAGE_SIDE squared texels 0x00RRGGBB

// A row of the world's material table.
struct MaterialRow {
    std::string material_class, material_name, texture_class, texture_name;
    uint32_t texture_index = 0xFFFFFFFF; // texture handle
    bool transparent = false, doublesided = false, volumetric_fog = false;
};

struct ObjectGroupLists {
    Selection brushes, entities; // indices
};

class CompileProgress;

class World {
public:
    // The library may be null: then no material has any property.
    explicit World(const MaterialSource* material_source = nullptr);
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    std::vector<std::unique_ptr<Brush>> brush;   // no gaps
    std::vector<std::unique_ptr<Entity>> entity; // no gaps
    Selection brush_selection, entity_selection, group_selection;
    std::vector<ObjectGroupLists> group;
    std::vector<std::unique_ptr<CActorGroup>> actor_groups;
    std::string movie_name;
    int render_mode = 1;  // 0, 1 or 2
    int curve_detail = 2; // 0 to 3
    int selected_surface_brush = -1;
    std::string map_file = "Default"; // output map name, at most 259 characters
    std::string map_name = "No Name"; // level title, likewise
    COLOR ambient_color;
    uint32_t first_selected_id = NO_OBJECT_ID;
    std::vector<MaterialRow> material; // row 0 is none
    std::vector<LightmapPage> lightmaps;
    std::vector<uint32_t> lightmap_index; // texture handles of the pages
    std::vector<std::string> mp_games;    // multiplayer game types, at most 8 of 31 characters
    std::vector<std::unique_ptr<DecalTemplate>> decal_template;
    uint32_t last_decal_id = 0;
    COLOR decal_color;
    Selection decal_selection;
    uint32_t darkmap = 0xFFFFFFFF; // handle of a black 4 by 4 texture

    int GetBrushCount() const { return static_cast<int>(brush.size()); }
    int GetEntityCount() const { return static_cast<int>(entity.size()); }
    int GetGroupCount() const { return static_cast<int>(group.size()); }
    int GetMaterialCount() const { return static_cast<int>(material.size()); } // row 0 counts
    const MaterialSource& Materials() const { return *material_source; }

    // Lookups: -1 or null if absent
    int GetBrushIndex(const Brush* b) const;
    int GetEntityIndex(const Entity* e) const;
    Brush* GetBrushFromID(uint32_t id) const;
    Entity* GetEntityFromID(uint32_t id) const;
    Entity* GetEntityFromName(std::string_view variable_name) const; // case counts

    // Creation. A full table refuses with a message and gives null or false.
    Brush* CreateBrush(const BrushShape& shape); // selected; the caller has cleared the selection
    Brush* AddBrush(std::unique_ptr<Brush> b);   // no id, selection or undo
    Entity* AddEntity(std::unique_ptr<Entity> e);
    Entity* NewEntityCreated(std::unique_ptr<Entity> e, uint32_t flags); // new id; bit 0: it alone is selected
    bool AddGroup(Selection brushes, Selection entities);

    // Deletion
    void DeleteBrush(int i); // links to it go; selections and groups are the caller's
    void DeleteEntity(int i);
    void DeleteEntityByID(uint32_t id);
    void DeleteSelection(); // a selected surface loses its material instead

    // Selection
    void ClearSelection();
    bool SelectAll();
    bool InvertSelection();
    void SetBrushSelection(int i, bool state);
    bool IsEntitySelected(uint32_t id) const;
    bool IsSomethingSelected() const { return brush_selection.GetItemCount() + entity_selection.GetItemCount() > 0; }
    void ComputeSelectionBox(Box& box) const;
    void HideSelected();
    void HideUnselected();
    void UnhideAll();
    void ChangeRenderMode(); // 1, 2, 0, 1 ...

    // Groups
    void CreateGroup();                                       // of the selection, from two objects on
    void DestroyGroup();                                      // those named in group_selection
    int CheckGroups(int brush_index, int entity_index) const; // the newest group that holds it, -1 if none
    void CorrectGroup(int group_id);
    void OptimizeGroups(); // at most the three newest groups an object; empty groups go

    // Objects
    void GenerateIDs(); // for every object without one
    bool ValidateIDs(); // true if two objects shared an id
    void ReindexObjectIDs();
    void ChangeBrushColor(const D3DCOLORVALUE& color);
    void ChangeCurveDetail(bool higher);
    void MoveEntity(const D3DVECTOR& v);
    void ConvertSelectedEntities(const Entity& new_kind);
    void ChangeEntityParameter(const EntityParameter& value, const char* entity_type, bool update_views);

    // Materials. Rows start at 1.
    int AddMaterial(std::string_view mc, std::string_view mn, std::string_view tc,
                    std::string_view tn); // the row, -1: no material
    int GetNewMaterial(const char* mc,
                       std::string_view mn); // a row by the library; -1 and a line in the texture log if unknown
    void FlushUnusedMaterials();
    bool IsMaterialTransparent(int index) const;
    bool IsMaterialDoublesided(int index) const;
    bool IsMaterialVolumetricFog(int index) const;
    bool IsLightIllumination(int index) const;
    float GetAmbientIntensity(int index) const;
    COLOR GetSelfIllumination(int index) const;
    SIZE TextureSize(int index) const; // of the row's texture, 0 by 0 when it is not loaded

    // Surfaces
    void DeselectSurface();
    void CycleSurfaces();
    bool HasSurfaceTexture() const;
    void RemapSurface(const TEX_INFO& ti);
    void RemapSurfaceToAll(const TEX_INFO& ti);
    void ChangeTexture(std::string_view mc, std::string_view mn, std::string_view tc, std::string_view tn);
    void ChangeTextureToAll(std::string_view mc, std::string_view mn, std::string_view tc, std::string_view tn);
    void RemoveTextureFromSurface(const char* mc, const char* mn);
    void ReplaceTextureOnSurface(std::string_view mc, std::string_view mn, std::string_view tc, std::string_view tn,
                                 bool only_selected);
    void FitTextureOnSurface(float u, float v);

    // Decals
    DecalTemplate* AddNewDecal(std::unique_ptr<DecalTemplate> decal);
    void ClearAllDecals();

    // AI groups
    void AddDefaultGroups();
    void ClearActorGroups() { actor_groups.clear(); }

    // Terrain: border normals of neighbouring segments become one.
    void SmoothTerrainEdgeNormals();

    // The compile (defined in compiler/)
    // Leaves every brush at the coarsest curve detail. False after a stop.
    bool CalculatePhysicsData(bool save_finalmap, int threads, CompileProgress& progress);

private:
    void UnlinkFromAll(const std::unordered_set<uint32_t>& ids);
    void DeleteSelectedBrushes();
    void DeleteSelectedEntities();
    // Takes the marked objects out of the groups and moves the indices behind them down.
    void RemoveFromGroups(const std::vector<bool>& gone, bool brushes);
    void DestroySmallGroups();
    int FindMaterialRow(std::string_view mc, std::string_view mn); // -1 if absent
    void LoadTexture(MaterialRow& row);
    Surface* SelectedSurface(); // null if none
    template <class Fn>
    void ForEachSelectedSurface(Fn&& fn) { // of the selected brushes: flat, then curved
        for (const int b : brush_selection)
            brush[static_cast<size_t>(b)]->ForEachSurface([&fn](Surface& s, int, bool) { fn(s); });
    }

    const MaterialSource* material_source;
    std::unordered_map<std::string, int> material_rows; // by lower-case class\name
    size_t indexed_rows = 0;                            // how many rows stand in it
};
