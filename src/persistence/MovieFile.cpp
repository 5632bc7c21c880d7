#include "persistence/MovieFile.h"

#include <cmath>
#include <iterator>

#include "files/ChunkFile.h"
#include "foundation/Strings.h"
#include "scene/MoviePath.h"

namespace {

constexpr const char *CHUNK_GENERAL = "General", *CHUNK_PATH = "Path";
constexpr uint32_t ARRAYS_A_POINT = 2 + static_cast<uint32_t>(std::size(MOVIE_POINT_PARAMETERS));

bool ReadPoint(UChunkFile& file, MoviePointRecord& point) {
    if (!file.GetNextValue(point.position) || !file.GetNextValue(point.trigger_id))
        return false;
    for (float& value : point.value)
        if (!file.GetNextValue(value))
            return false;
        else if (!std::isfinite(value))
            value = 0;
    for (int axis = 0; axis < 3; ++axis)
        if (float& coordinate = Component(point.position, axis); !std::isfinite(coordinate))
            coordinate = 0;
    return true;
}

bool ReadPoints(UChunkFile& file, std::vector<MoviePointRecord>& points) {
    int32_t count = 0;
    if (!file.GetNextValue(count))
        return false;
    const uint32_t arrays_left = file.GetArraysCountInChunk() - file.GetCurrentArrayIndex();
    if (count < 0 || static_cast<uint32_t>(count) > arrays_left / ARRAYS_A_POINT)
        return false;
    points.resize(static_cast<size_t>(count));
    for (MoviePointRecord& point : points)
        if (!ReadPoint(file, point))
            return false;
    return true;
}

void WritePoints(UChunkFile& file, const std::vector<MoviePointRecord>& points) {
    file.WriteValue(static_cast<int32_t>(points.size()));
    for (const MoviePointRecord& point : points) {
        file.WriteValue(point.position);
        file.WriteValue(point.trigger_id);
        for (const float value : point.value)
            file.WriteValue(value);
    }
}

std::vector<MoviePointRecord> PointsOf(const World& world, const SimpleList<uint32_t>& list) {
    std::vector<MoviePointRecord> records;
    for (const uint32_t id : list) {
        const Entity* const point = id == NO_OBJECT_ID ? nullptr : world.GetEntityFromID(id);
        if (!point)
            continue;
        MoviePointRecord record;
        record.position = point->position;
        const EntityParameter* const trigger = point->GetParameterStr("trigger");
        if (trigger && !trigger->p_text.empty())
            if (const Entity* const triggered = world.GetEntityFromName(trigger->p_text))
                record.trigger_id = triggered->GetObjectID();
        for (size_t i = 0; i < std::size(MOVIE_POINT_PARAMETERS); ++i)
            record.value[i] = point->FloatParameter(MOVIE_POINT_PARAMETERS[i]);
        records.push_back(record);
    }
    return records;
}

} // namespace

MovieReading ReadMovie(std::string_view name, std::vector<MoviePathRecord>& paths, std::string& error) {
    UChunkFile file(name, CFM_Open);
    if (!file.IsValid()) {
        error = file.GetError();
        return MovieReading::NotOpened;
    }
    uint32_t magic = 0;
    if (!file.OpenChunk(CHUNK_GENERAL) || !file.GetNextValue(magic) || magic != MOVIE_MAGIC) {
        error = Format("\"%s\" is no movie", file.GetFilename().c_str());
        return MovieReading::WrongMagic;
    }
    std::vector<MoviePathRecord> read;
    for (bool more = file.OpenChunk(CHUNK_PATH, ANY_CHUNK_ID, COT_SameName); more; more = file.OpenNextChunk()) {
        MoviePathRecord& path = read.emplace_back();
        if (!file.GetNextValue(path.owner_id) || !ReadPoints(file, path.path) || !ReadPoints(file, path.target_path)) {
            error = Format("\"%s\": path %d is damaged", file.GetFilename().c_str(), static_cast<int>(read.size()));
            return MovieReading::Damaged;
        }
    }
    paths = std::move(read);
    return MovieReading::Read;
}

bool WriteMovie(std::string_view name, const std::vector<MoviePathRecord>& paths, std::string& error) {
    UChunkFile file(name, CFM_Create);
    if (file.IsValid()) {
        file.CreateChunk(CHUNK_GENERAL, ANY_CHUNK_ID);
        file.WriteValue(MOVIE_MAGIC);
        file.WriteValue(MOVIE_VERSION);
        file.CloseChunk();
        for (const MoviePathRecord& path : paths) {
            file.CreateChunk(CHUNK_PATH, ANY_CHUNK_ID);
            file.WriteValue(path.owner_id);
            WritePoints(file, path.path);
            WritePoints(file, path.target_path);
            file.CloseChunk();
        }
        if (file.CloseChunkFile())
            return true;
    }
    error = file.GetError();
    return false;
}

std::vector<MoviePathRecord> MoviePathsOf(const World& world) {
    std::vector<MoviePathRecord> paths;
    const auto add = [&](const BaseObject& object) {
        MoviePathRecord path{object.GetObjectID(), PointsOf(world, object.path), PointsOf(world, object.target_path)};
        if (!path.path.empty() || !path.target_path.empty())
            paths.push_back(std::move(path));
    };
    for (const auto& b : world.brush)
        add(*b);
    for (const auto& e : world.entity)
        add(*e);
    return paths;
}

float ComputeMovieTime(const MoviePathRecord& path) {
    constexpr size_t DELAY = 0, SPEED = 1; // in MOVIE_POINT_PARAMETERS
    std::vector<PathPoint> points;
    for (const MoviePointRecord& record : path.path) {
        PathPoint& point = points.emplace_back();
        point.position = record.position;
        point.delay = std::max(record.value[DELAY], 0.0f);
        point.speed = record.value[SPEED];
    }
    float time = 0;
    for (size_t i = 0; i < points.size(); ++i) {
        time += points[i].delay;
        if (i > 0)
            time += SegmentTime(points[i - 1], points[i], StandardSpeed(points));
    }
    return std::isfinite(time) ? time : 0.0f;
}
