// A compiled world (.few) as read back from its file: what the game sees.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Vector.h"
#include "scene/PhysicsData.h"
#include "scene/Surface.h"

inline constexpr const char* WORLD_FILE_ID = "Fennelworks World v2.1";

enum WorldSurfaceKind : int32_t { WS_MESH = 1, WS_FAN = 2, WS_STRIP = 3, WS_PATCH = 4, WS_TERRAIN = 5 };

struct WorldSurface {
    int32_t vertex_count = 0, cp_count = 0, triangle_count = 0, dynamic_lightmap_count = 0, type = 0;
    std::vector<D3DVECTOR> cp; // of a curved surface: the game tessellates
    std::vector<D3DVECTOR> vertices;
    std::vector<UVVector> uv, lightmap_uv;
    std::vector<TRIANGLE> triangles;
    std::vector<uint32_t> colors; // of a custom brush, in place of a lightmap
    TEX_INFO texture;
    LIGHTMAP_INFO lightmap;
    std::vector<LIGHTMAP_INFO> dynamic_lightmaps;
};

struct WorldPhysics {
    float mass = 0;
    D3DVECTOR center;
    float static_friction_coef = 0, dynamic_friction_coef = 0, elasticity = 0, time_scale = 0;
    D3DMATRIX I;
    int32_t point_count = 0, edge_count = 0, face_count = 0;
    struct Edge {
        int32_t beg, end;
    };
    struct Face {
        int32_t p[3], e[3];
    };
    std::vector<D3DVECTOR> points; // relative to center
    std::vector<Edge> edges;
    std::vector<Face> faces;
};

struct WorldBrush {
    uint32_t chunk_id = 0;
    uint32_t type = 0, properties = 0, color = 0, id = 0, energy = 0;
    D3DCOLORVALUE color_vector;
    int32_t surface_count = 0;
    float mass = 0, collision_damage = 0, touch_damage = 0;
    SIZE terrain_vertex_size;
    uint8_t link_action = 0;
    std::vector<uint32_t> links;
    std::string name, death_particle;
    std::vector<WorldSurface> surfaces;
    WorldPhysics physics;
};

struct WorldMaterial {
    std::string material_class, material_name;
};

struct WorldParameter {
    std::string name, value; // the value as a text
    int32_t checksum = 0, type = 0;
};

struct WorldEntity {
    std::string type, variable_name;
    D3DVECTOR position;
    std::vector<uint32_t> links;
    std::vector<WorldParameter> parameters;
    bool is_hidden = false;
    uint32_t id = 0;
};

struct WorldPortal {
    D3DVECTOR bounds[4], pivot, normal[2];
    uint16_t partindices[2][6] = {};
    int32_t portalowner = 0, cell[2] = {};
    std::vector<int32_t> reachable[2]; // portals from each side
};

struct WorldCell {
    bool can_see_outside = false;
    std::vector<int32_t> objects, entities, portals, portalside, occluders, render_groups;
};

struct WorldOccluder {
    D3DVECTOR bounds[4], normal;
    float D = 0;
    int32_t owner = 0;
};

struct WorldLeaf {
    uint32_t type = 0; // 0 node, 1 empty, 2 terminal
    D3DVECTOR min, max, half;
    float size = 0;
    int32_t parent = 0, child[8] = {};
    std::vector<int32_t> brushes;
};

struct WorldSound {
    uint16_t distance = 0;
    uint8_t portal_start = 0, portal_end = 0;
};

struct WorldActorGroup {
    std::string name;
    std::vector<int32_t> relation; // toward each group
};

struct WorldFile {
    int32_t initial_surfaces = 0, initial_control_points = 0;
    std::vector<WorldBrush> brushes;
    std::vector<std::vector<uint8_t>> lightmap_pages; // blue, green, red of 256 by 256 texels
    std::vector<WorldMaterial> materials;             // number 1 first
    std::vector<WorldEntity> entities;
    std::vector<WorldPortal> portals;
    std::vector<WorldCell> cells;
    std::vector<std::vector<int32_t>> render_groups;
    std::vector<WorldOccluder> occluders;
    std::vector<WorldLeaf> leaves;
    std::vector<WorldSound> sounds;
    std::string map_name;
    std::vector<std::string> mp_games;
    int32_t decal_count = 0;
    std::vector<WorldActorGroup> actor_groups;
    uint32_t total_size = 0;
};

// False with a sentence that names the file, the chunk and the reason. Lengths are checked against counts here; what
// the numbers mean is not.
bool ReadWorldFile(std::string_view path, WorldFile& world, std::string& error);
