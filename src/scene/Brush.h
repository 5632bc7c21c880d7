// The geometry object of the scene. A brush is not a solid: it is a set of surfaces, flat and curved, each a mesh of
// its own in world coordinates, Y up. It also carries the gameplay data of the object and the results of the compile.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "foundation/Plane.h"
#include "foundation/SpecialMath.h"
#include "foundation/Vector.h"
#include "scene/BaseObject.h"
#include "scene/Decal.h"
#include "scene/PhysicsData.h"
#include "scene/Selection.h"
#include "scene/Surface.h"
#include "scene/Terrain.h"

class World;
class Lighting;
struct DrawContext;

inline constexpr uint32_t MAX_SEGMENTS = 256; // of a primitive; more are cut
inline constexpr size_t MAX_EX_POINTS = 256;  // of an extrudable's outline; more are refused

enum BrushType : uint32_t {
    BT_RECTANGLE = 0,
    BT_BOX = 1,
    BT_PYRAMID = 2,
    BT_PRISM = 3,
    BT_PATCH = 4,
    BT_CYLINDER = 5,
    BT_CONE = 6,
    BT_SFT_BLOCK = 7,
    BT_Q_BLOCK = 8,
    BT_ELASTIC_BOX = 9,
    BT_EXTRUDABLE = 10,
    BT_PORTAL = 11,
    BT_CUSTOM = 12,
    BT_OCCLUDER = 13,
    BT_TERRAIN = 14
};

enum BrushProperty : uint32_t {
    BP_DYNAMIC = 0x1,
    BP_PLAYER_CLIP = 0x2,
    BP_LADDER = 0x4,
    BP_ENVIRONMENT = 0x8,
    BP_PLAYER_NO_CLIP = 0x10,
    BP_HIDDEN = 0x20,
    BP_DESTROYABLE = 0x40,
    BP_SEE_THROUGH = 0x80,
    BP_NO_SHADOWS = 0x100,
    BP_ALWAYS_VISIBLE = 0x200,
    BP_BOT_SEE_THROUGH = 0x400,
    BP_BULLET_NO_CLIP = 0x800,
    BP_CORONA_NO_CLIP = 0x1000,
    BP_CROSS_PORTALS = 0x2000,
    BP_BOT_CLIP = 0x4000,
    BP_TRIGGER_ACTIVATOR = 0x8000,
    BP_BOT_NO_CLIP = 0x10000,
    BP_FAST_TRANSFORM = 0x20000,
    BP_GRENADE_NO_CLIP = 0x40000,
    BP_NO_PROJECTOR = 0x80000
};

// Eight corners: 0 to 3 the top face (largest y): (min x, max z), (max, max), (max, min), (min, min); 4 to 7 below
// them.
using Box = std::array<D3DVECTOR, 8>;
Box MakeBox(const D3DVECTOR& min, const D3DVECTOR& max);
inline const D3DVECTOR& BoxMin(const Box& box) { return box[7]; }
inline const D3DVECTOR& BoxMax(const Box& box) { return box[1]; }
bool BoxesOverlap(const Box& a, const Box& b); // touching counts

// What the building constructor wants.
struct BrushShape {
    BrushType type = BT_BOX;
    Box bb{};
    D3DVECTOR pivot;
    D3DCOLORVALUE color{1, 1, 1, 0};
    uint32_t segment_count = 6;
    uint32_t view = 0;                // 0 top, 1 front, 2 left: the view in which the box was dragged
    std::vector<D3DVECTOR> ex_points; // outline of an extrudable, x and y, at most 256
    std::string custom;               // file of a custom brush
    std::string name;
    uint16_t energy = 0;
    std::string death_particle;
    int curve_detail = 2; // the world's, 0 to 3
};

class Brush : public BaseObject {
public:
    Brush();
    explicit Brush(const BrushShape& shape);
    Brush(const Brush& src);            // the copy has no id
    Brush& operator=(const Brush& src); // the object id stays; lightmaps, lights, decals are not copied
    void CopyExactly(const Brush& src); // likewise, but with links, and what it derives anew is taken as it stands
    ~Brush() override = default;

    Brush* GetBrush() override { return this; }
    void InitFromCopy(const BaseObject& src) override;
    std::unique_ptr<BaseObject> GetCopy() const override;

    // Identity and gameplay data
    BrushType type = BT_RECTANGLE;
    std::string name, death_particle;
    uint16_t energy = 0, weight = 100;
    uint32_t properties = 0; // BrushProperty bits
    float elasticity = 0.2f, static_friction = 0.5f, dynamic_friction = 0.9f, time_scale = 1, rotation_factor = 1,
          mass = 1;
    float coll_dmg = 0, touch_dmg = 0;
    int32_t link_action = 0;

    // Bounds and appearance
    Box bbox{};
    D3DVECTOR pivot;
    float bound_sphere = 0; // negated radius of the sphere through the box corners
    float bind_sphere = 0;  // negated smallest half extent
    uint32_t color = 0;     // packed wire colour
    D3DCOLORVALUE color_vector;

    // Geometry. Fill both lists, then TesselateCurves and the derived data.
    std::vector<Surface> surfaces;
    std::vector<Surface> curved_surfaces;
    // Of a custom brush just built: the material of each curved surface by name, for the world to resolve.
    std::vector<std::string> custom_material_names;

    // Work and state
    int32_t index = -1; // position in the world's table when it was added
    uint32_t CURVE_DETAIL = 2, CURVE_SEGMENTS = 4;
    float CURVE_DELTA = 0.25f;
    int32_t selected_surface = -1;
    bool selected_surface_curved = false;
    SIZE terrain_vertex_size;                    // vertices a row, rows; row 0 has the greatest z
    std::vector<float> temporary_terrain_height; // one a vertex, between a smoothing and UpdateTerrainHeights
    std::vector<std::unique_ptr<Decal>> decal_list;
    Selection light_list; // lights whose box meets this brush's, entity indices
    Selection tn_list;    // neighbouring terrain segments
    CPhysicsData physics_data;
    bool is_selected = false, is_hidden = false, is_frozen = false;
    bool assigned_to_cell = false, separated = false, assigned_to_render_group = false, multi_cell = false;
    int32_t render_group = -1, eye_counter = 0, eye_counter_limit = 0;

    bool IsCustom() const { return type == BT_CUSTOM; }
    bool IsPortalOrOccluder() const { return type == BT_PORTAL || type == BT_OCCLUDER; }
    bool HasProperty(uint32_t bits) const { return (properties & bits) != 0; }
    // Calls fn(Surface&, int index, bool curved) for the flat, then the curved surfaces.
    template <class Fn>
    void ForEachSurface(Fn&& fn) {
        for (size_t s = 0; s < surfaces.size(); ++s)
            fn(surfaces[s], static_cast<int>(s), false);
        for (size_t c = 0; c < curved_surfaces.size(); ++c)
            fn(curved_surfaces[c], static_cast<int>(c), true);
    }
    template <class Fn>
    void ForEachSurface(Fn&& fn) const {
        const_cast<Brush*>(this)->ForEachSurface([&fn](const Surface& s, int i, bool c) { fn(s, i, c); });
    }

    // Derived data, in this order after any change of vertices.
    void BBoxFromVertices(Box& box); // thin axes become 8 units; the spheres follow this brush's own box
    static void PivotFromBBox(const Box& box, D3DVECTOR& p);
    void RecalcBBox();
    void ComputeBrushSpheres();
    void ComputeNormals(); // a broken index on a flat surface reads as 0 and selects the brush
    void SurfaceLight();   // fixed shades for the solid preview
    void SetColor(const D3DCOLORVALUE& c);
    void ChangeColor(const D3DCOLORVALUE& c);
    void Initialize(int material_count); // material indices outside the table become 0
    bool IsTransparent(const World& world) const;
    bool Visible(const PLANE* planes) const; // six clip planes; plane 1 is not tested
    // The nearest hit of a ray nearer than p; the places may be null.
    bool TestSolidSelection(const D3DVECTOR& position, const D3DVECTOR& direction, float& p,
                            D3DVECTOR* i_position = nullptr, D3DVECTOR* i_normal = nullptr, int* i_surface = nullptr,
                            bool* i_curved = nullptr) const;
    // True if any triangle overlaps the box.
    bool IsInVoxel(const D3DVECTOR& min, const D3DVECTOR& max) const;

    // Curved surfaces (scene/BrushCurves.cpp)
    void TesselateCurves();
    void ChangeCurveDetail(int detail); // above 3 leaves the detail
    void SetCurveDetail(int detail);    // only the three fields
    // Planar lightmap coordinates of a fan for a lightmap of tx by ty texels.
    void MapLightmapUV4CurveT1(const D3DVECTOR& normal, int surface, int tx, int ty);

    // Texturing (scene/BrushTexturing.cpp)
    static void ComputeTextureSpace(const D3DVECTOR& z, TEXTURE_SPACE& ts, const TEX_INFO& tex_info);
    void GenerateTextureSpaces();
    void CalculateUV(int surface);
    void CalculateUV4CurveT1(int surface);
    void Remap() { Remap(selected_surface, selected_surface_curved); }
    void Remap(int surface, bool curved);
    void RemapAll();
    void RemapAllInit() { RemapAll(); }
    void FitTexture(float fu, float fv); // the selected surface
    void FitTexture4CurveT1(float fu, float fv);
    int TestSurfaceSelection(const D3DVECTOR& position, const D3DVECTOR& direction, float& p,
                             bool& is_curved) const; // -1 if none
    void SelectNextSurface();
    TEX_INFO* GetSelectedSurfaceTexInfo(); // null if none
    // The normal by which a surface is mapped: its first, straight up on terrain.
    D3DVECTOR MappingNormal(int surface, bool curved) const;

    // Transforms (scene/BrushTransform.cpp). texture_lock: every surface keeps its texels, not only the locked ones.
    void Move(const D3DVECTOR& move, bool texture_lock);
    void Scale(const Box& new_box, const Box& old_box);
    void Rotate(float angle, int view, const D3DVECTOR& center, bool texture_lock); // radians
    void Transform(const D3DMATRIX& matrix, bool remap);
    void FlipNormals();
    void AlignVertices(); // coordinates are cut to whole numbers; nothing derived is rebuilt

    // Picking by the wire: true if an edge passes the pixel under the current matrices and viewport.
    bool TestWireSelection(POINT mouse) const;

    // Terrain (scene/BrushTerrain.cpp)
    void GenerateTerrainSegment(const HeightMap& map, const TerrainSegment& segment);
    // World: where smoothing finds the heights of neighbours.
    void ModifyTerrain(const D3DVECTOR& center, const TERRAIN_MODIFIER& tm, bool up, const NoiseField& random_field,
                       const World& world);
    void UpdateTerrainHeights();
    bool IsTerrainGrid() const; // the vertices really make the grid of terrain_vertex_size

    // Decals (scene/WorldDecals.cpp)
    void ReplaceDecals(); // each of them is cut anew, wherever else it lies
    void ResetDecals() { decal_list.clear(); }

    // Changes with everything that is drawn of the brush itself: geometry, mapping, shades, colours. A version never
    // comes back within a run, so that what was made from a brush can tell whether it still holds.
    uint64_t drawn_version = NextDrawnVersion();
    void MarkDrawnChanged() { drawn_version = NextDrawnVersion(); }
    static uint64_t NextDrawnVersion();

    // Drawing (defined in drawing/)
    void RenderWire() const;
    void RenderSolid(const World& world, const DrawContext& context) const;
    float DistanceFromCamera() const; // depth of the pivot along the current view

    // The compile (defined in compiler/)
    void ComputePhysicsData(bool build_mesh);
    bool CheckPhysics(); // true if the geometry makes a clean mesh
    void CalculateLightmap(Lighting& lighting);
    void TestLightRange(const D3DVECTOR& origin, float range, int light);
    void InvalidateLightRange();

private:
    void Build(const BrushShape& shape);
    void CopyProperties(const Brush& src); // all but geometry and is_selected; compile results start anew

    // Generators (scene/BrushPrimitives.cpp, scene/BrushCurvedPrimitives.cpp): from bbox and pivot to surfaces.
    void CreateRect(uint32_t view);
    void CreateBox();
    void CreatePyramid(uint32_t view, uint32_t segment_count);
    void CreatePrism(uint32_t view, uint32_t segment_count);
    void CreatePatch(uint32_t view, uint32_t segment_count);
    void CreateCylinder(uint32_t view, uint32_t segment_count);
    void CreateCone(uint32_t view, uint32_t segment_count);
    void CreateSFTBlock(uint32_t view);
    void CreateQCylinder(uint32_t view);
    void CreateArcBlock(uint32_t view, size_t middle);
    void CreateElasticBox(uint32_t view, uint32_t segment_count);
    void CreateExtrudable(uint32_t view, const std::vector<D3DVECTOR>& ex_points);
    void CreateCustomBrush(uint32_t view, const std::string& file);
    void FinishFlatPrimitive();
    void FinishCurvedPrimitive();

    void RebuildCurves(); // tessellation, normals, shades
    void MapFans();       // texture spaces and coordinates of the curved surfaces that are mapped by plane
};
