// Movie files (.mvi): the paths of objects, by the id of their owner.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "scene/BaseObject.h"
#include "scene/World.h"

inline constexpr uint32_t MOVIE_MAGIC = 0x414E494D, MOVIE_VERSION = 0x10000;

struct MoviePointRecord {
    D3DVECTOR position;
    uint32_t trigger_id = NO_OBJECT_ID; // of the entity that the point triggers
    // In the order of the file: delay, speed, tension, continuity, bias, ease_to, ease_from, rotation, fov, time_scale.
    float value[10] = {};
};
inline constexpr const char* MOVIE_POINT_PARAMETERS[10] = {
    "delay", "speed", "tension", "continuity", "bias", "ease_to", "ease_from", "rotation", "fov", "time_scale"};

struct MoviePathRecord {
    uint32_t owner_id = NO_OBJECT_ID;
    std::vector<MoviePointRecord> path, target_path;
};

enum class MovieReading { Read, NotOpened, WrongMagic, Damaged };
// All paths of a file, or nothing with a sentence that names it and the reason.
MovieReading ReadMovie(std::string_view name, std::vector<MoviePathRecord>& paths, std::string& error);
bool WriteMovie(std::string_view name, const std::vector<MoviePathRecord>& paths, std::string& error);
// Of every object that has points: brushes first, then entities.
std::vector<MoviePathRecord> MoviePathsOf(const World& world);
// Seconds of the first list of a record; the delay of the first point counts here.
float ComputeMovieTime(const MoviePathRecord& path);
