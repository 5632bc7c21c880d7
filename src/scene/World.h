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
#include "scene/CableComputer.h"
#include "scene/DecalTemplate.h"
#include "scene/Entity.h"
#include "scene/MaterialSource.h"
#include "scene/Picking.h"
#include "scene/Selection.h"
#include "scene/Terrain.h"
#include "scene/UndoBuffer.h"
#include "scene/VertexNet.h"

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

inline constexpr int MIN_GROUP = 2; // objects

struct ObjectGroupLists {
    Selection brushes, entities; // indices
    int MemberCount() const { return brushes.GetItemCount() + entities.GetItemCount(); }
};

class ActorDefGroups;
class CompileProgress;
class CScriptSyntax;
class EntityParser;
class MaterialLibrary;
class TerrainStroke;
struct DrawContext;

// What the drawing room keeps of a world from frame to frame.
class KeptDrawing {
public:
    virtual ~KeptDrawing() = default;
};

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
    Selection decal_selection;                              // ids
    Selection b_list;                                       // terrain brushes that the tool has touched, indices
    std::vector<std::unique_ptr<CCableComputer>> AllCables; // kept by the drawing of connection lines
    uint32_t darkmap = 0xFFFFFFFF;                          // handle of a black 4 by 4 texture
    CUndoBuffer undo_buffer, redo_buffer;
    std::vector<SO_VERTEX> so_vertex; // of vertex mode, or of the selection shown in wire
    std::vector<SO_EDGE> so_edge;

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

    // Deletion. Links to what goes, its place in selections and groups, and groups left with one member go too.
    void DeleteBrush(int i);
    void DeleteEntity(int i);
    void DeleteEntityByID(uint32_t id);
    void DeleteObjects(const std::unordered_set<uint32_t>& ids);
    void DeleteSelection(); // a selected surface loses its material instead

    // Selection
    void ClearSelection();
    bool SelectAll();
    bool InvertSelection();
    void SetBrushSelection(int i, bool state);
    bool IsEntitySelected(uint32_t id) const;
    bool IsObjectSelected(uint32_t id) const; // a brush or an entity
    void RefreshFirstSelected();              // first_selected_id passes on when its object is not selected any more
    bool IsSomethingSelected() const { return brush_selection.GetItemCount() + entity_selection.GetItemCount() > 0; }
    void ComputeSelectionBox(Box& box) const; // left as it is when nothing is selected
    void HideSelected();
    void HideUnselected();
    void UnhideAll();
    void BoxHide(const Box& box); // all outside the box is hidden, entities by their clip-box flag; nothing is selected
    void ChangeRenderMode();      // 1, 2, 0, 1 ...

    // Picking (scene/WorldPicking.cpp, scene/WorldEntityPicking.cpp). Each makes its undo steps. True if a brush, or an
    // entity, is selected afterwards.
    bool PointSelection(const PickRequest& request);
    bool DragBoxSelection(const Box& box, const PickRequest& request);
    bool EntityPointSelection(const PickRequest& request);
    // Without all_entities only those that are shown, and only of the type of the first selected one.
    bool EntityDragBoxSelection(const Box& box, const PickRequest& request, bool all_entities);

    // Undo
    void AddUndoAction(std::unique_ptr<CUndoAction> action); // an empty one is dropped; a step empties the redo list
    void AddSelectionToUndo(CUndoAction& action);

    // Transforms of the selection (scene/WorldTransform.cpp)
    void MoveBrush(const D3DVECTOR& move);
    void ScaleBrush(const Box& new_box, const Box& old_box);
    // About the front end's selection pivot; radians. A single entity also turns its orientation or changes its range.
    void RotateBrush(float angle, int view);
    void ShearBrush(const Box& new_box, const Box& old_box, int view, int active_shear_point);
    void FlipHorizontally(int view); // about the front end's selection pivot, as the next
    void FlipVertically(int view);
    void FlipNormals();
    void AlignVertices();

    // Vertex mode (scene/WorldVertices.cpp)
    void InitSOVertices(); // frees an old net first
    void DestroySOVertices();
    void SOVertexMove(const D3DVECTOR& move); // the marked vertices and edges

    // Many from few, one from many (scene/WorldClone.cpp)
    void Clone(bool ignore_groups); // the copies stand on the originals and are selected
    void Collapse();                // the selected brushes into one

    // Links inside the selection (scene/WorldLinks.cpp)
    void Link(bool link_first, bool link_method_2);
    void Unlink();
    void Changelink();

    // Groups
    void CreateGroup();                                       // of the selection, from two objects on
    void DestroyGroup();                                      // those named in group_selection
    int CheckGroups(int brush_index, int entity_index) const; // the newest group that holds it, -1 if none
    std::vector<int> NewestGroups(bool brushes) const;        // the same for all brushes, or all entities
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
    void ChangeEntityVariableName(std::string_view variable_name); // of the selected entities
    const std::string* GetEntityVariableName() const;              // of the first selected entity, null if none
    // Scripts and models (defined in definitions/)
    void ConvertOldScripts(const CScriptSyntax& commands, const CScriptSyntax& conditions);
    void RandomizeBotModels(ActorDefGroups& actor_def_groups);

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
    // By a ray from the camera through a pixel of the perspective view, whose matrices are set
    // (scene/WorldSurfaceRay.cpp)
    void SurfaceSelection(POINT point, const D3DVECTOR& camera_position);
    void PickTexture(POINT point, const D3DVECTOR& camera_position);
    void CopySurfaceTexture(POINT point, const D3DVECTOR& camera_position);
    // The nearest hit of any surface along a ray, false if there is none.
    bool NearestHit(const D3DVECTOR& position, const D3DVECTOR& direction, D3DVECTOR& hit) const;

    // Decals (scene/WorldDecals.cpp). A point is a pixel of the perspective view, whose matrices are set. What touches
    // no surface is dropped by the next FlushDecalTemplates.
    void PlaceDecal(POINT point, const D3DVECTOR& camera_position, std::string_view texture_class,
                    std::string_view texture_name);
    DecalTemplate* AddNewDecal(std::unique_ptr<DecalTemplate> decal); // null when the table is full
    void ReplaceDecal(uint32_t id);                                   // cuts it anew
    void FlushDecalTemplates();
    DecalTemplate* FindDecal(uint32_t id) const; // null if there is none
    void SelectDecal(POINT point, const D3DVECTOR& camera_position, bool add);
    void DeleteDecalSelection();
    void MoveDecal(POINT point, const D3DVECTOR& camera_position);
    void CopyDecal(POINT point, const D3DVECTOR& camera_position);
    void SetDecalColor(const COLOR& color);
    void RotateDecal(float angle);     // degrees
    void ScaleDecal(float x, float y); // world units more
    void ClearAllDecals();

    // AI groups
    void AddDefaultGroups();
    void ClearActorGroups() { actor_groups.clear(); }

    // Terrain (scene/WorldTerrain.cpp, scene/TerrainTool.cpp)
    // False with a sentence; the world is then as it was.
    bool GenerateTerrain(const TerrainShape& shape, std::string& error);
    void SmoothTerrainEdgeNormals(); // border normals of neighbouring segments become one
    // One application of the tool at a pixel of the perspective view, whose matrices are set.
    void ModifyTerrain(const TERRAIN_MODIFIER& tm, POINT point, const D3DVECTOR& camera_position, bool up);
    // The applications between these two are one undo step, with full undo on.
    void BeginTerrainStroke();
    void EndTerrainStroke();
    // Where the tool meets the ground. Adds the segments in its reach to b_list. False if it meets none.
    bool AimTerrainTool(const TERRAIN_MODIFIER& tm, POINT point, const D3DVECTOR& camera_position, D3DVECTOR& center);
    // The vertex beside `vertex` on the grid of a neighbouring segment, the vertex itself if there is none.
    D3DVECTOR GetNeighbourTerrainVertex(const D3DVECTOR& vertex, const Brush* origin, int sx, int sy) const;

    // Movie paths (scene/WorldPaths.cpp)
    float ComputePathTimeForSelection() const; // seconds; 0 when the selection names no path
    bool IsPathSelected(uint32_t id) const;    // any point of the object's two lists
    static bool IsMovieModeEntity(std::string_view type_word);
    void AlignPaths(SimpleList<uint32_t>& src, SimpleList<uint32_t>& dst);
    void AlignTimeOfPoints();            // of the selected objects, and of the owners of selected points
    void DeletePaths(BaseObject& owner); // with their points

    // Prefabs (defined in persistence/Prefab.cpp). False with a sentence that names the file and the reason; the world
    // is then as it was.
    bool SavePrefab(std::string_view name, std::string_view description, std::string& error);
    bool PlacePrefab(std::string_view name, const D3DVECTOR& position, MaterialLibrary& materials, EntityParser& parser,
                     std::string& error); // what is placed is selected

    // The compile (defined in compiler/)
    // Leaves every brush at the coarsest curve detail. False after a stop.
    bool CalculatePhysicsData(bool save_finalmap, int threads, CompileProgress& progress);

    // Drawing (defined in drawing/)
    void RenderBrushes(const DrawContext& context);
    std::unique_ptr<KeptDrawing> kept_drawing; // null before the first drawing
    void RenderEntities(const DrawContext& context);
    void RenderCameraPosition(const DrawContext& context);
    void RenderCurveEdges(const DrawContext& context);
    void RenderConnectionLines(const DrawContext& context);
    void RenderTerrainBrush(const DrawContext& context, const TERRAIN_MODIFIER& tm, POINT point);
    // One list of points. Gives the place on it at the context's anim_time, the first point if it has no other.
    D3DVECTOR RenderPath(const DrawContext& context, SimpleList<uint32_t>& path, uint32_t color);
    void RenderObjectPaths(const DrawContext& context, BaseObject& object);

private:
    void UnlinkFromAll(const std::unordered_set<uint32_t>& ids);
    static void UnlinkObjects(const std::vector<BaseObject*>& objects, const std::unordered_set<uint32_t>& ids);
    // Marks by table index; an empty list marks none.
    void EraseObjects(const std::vector<bool>& gone_brushes, const std::vector<bool>& gone_entities);
    void RenumberBrushes(const std::vector<bool>& gone);
    void DestroySmallGroups();
    void RenameIDsOfUndo(const UHashTable<1023, uint32_t>& new_ids);
    void SelectPathOwners(const std::vector<uint32_t>& ids);
    void DeselectForPick(bool additive);
    void EndPick(const Selection& brushes_before, const Selection& entities_before);
    bool EndBrushPick(const Selection& brushes_before, const Selection& entities_before);
    bool EndEntityPick(const Selection& brushes_before, const Selection& entities_before);
    void PickBrush(int i, int group_index, bool select);
    void PickEntity(int i, int group_index, bool select);
    void PickGroup(int group_index, bool select);
    BaseObject* FirstSelected() const;                // as linking takes it, null if there is none
    std::vector<BaseObject*> SelectedObjects() const; // brushes first
    template <class T>
    int PlaceOf(const std::vector<std::unique_ptr<T>>& list, const T* object) const;
    int FindMaterialRow(std::string_view mc, std::string_view mn); // -1 if absent
    void LoadTexture(MaterialRow& row);
    Surface* SelectedSurface(); // null if none
    void CutDecal(const DecalTemplate& source);
    void DecorateTerrain(const TERRAIN_MODIFIER& tm, const D3DVECTOR& center);
    template <class Fn>
    void ForEachSelectedSurface(Fn&& fn) { // of the selected brushes: flat, then curved
        for (const int b : brush_selection)
            ForEachSurfaceOf(*brush[static_cast<size_t>(b)], fn);
    }
    template <class Fn>
    static void ForEachSurfaceOf(Brush& b, Fn&& fn) { // to change them
        b.ForEachSurface([&fn](Surface& s, int, bool) { fn(s); });
        b.MarkDrawnChanged();
    }

    std::unique_ptr<TerrainStroke> terrain_stroke; // while one is under way, with full undo on
    const MaterialSource* material_source;
    mutable std::unordered_map<const void*, int> places; // table index by object, checked at each use
    std::unordered_map<std::string, int> material_rows;  // by lower-case class\name
    size_t indexed_rows = 0;                             // how many rows stand in it
};
