// The chunks of project and prefab files, in the order of writing.
#pragma once

inline constexpr const char* CHUNK_FORMAT = "FormatID";
inline constexpr const char* CHUNK_BRUSH = "BrushData";
inline constexpr const char* CHUNK_MATERIAL = "MaterialData";
inline constexpr const char* CHUNK_ENTITY = "EntityData";
inline constexpr const char* CHUNK_MAP_INFO = "MapInfo";
inline constexpr const char* CHUNK_GROUP = "GroupInfo";
inline constexpr const char* CHUNK_CORDON = "CordonBounds";
inline constexpr const char* CHUNK_MP_GAMES = "MPGames";
inline constexpr const char* CHUNK_AI_GROUPS = "AIGroups";
inline constexpr const char* CHUNK_DECALS = "Decals";

inline constexpr const char* CHUNK_WORLD_ID = "FileID";          // of a compiled world only
inline constexpr const char* CHUNK_DESCRIPTION = "Description"; // of a prefab

inline constexpr const char* PREFAB_FORMAT_1_1 = "Marrowstead2000 Prefab";
inline constexpr const char* PREFAB_FORMAT_2_0 = "Marrowstead2000 Prefab v2.0";
inline constexpr const char* PROJECT_FORMAT_1_1 = "Marrowstead2000 Project v1.1";
inline constexpr const char* PROJECT_FORMAT_2_0 = "Marrowstead2000 Project v2.0";

// What the format text stands for; a file without one, or with another, is the oldest.
enum ProjectVersion { PROJECT_VERSION_1_0 = 0x100, PROJECT_VERSION_1_1 = 0x101, PROJECT_VERSION_2_0 = 0x200 };
