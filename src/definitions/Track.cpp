#include "definitions/Track.h"

#include <algorithm>
#include <cmath>

#include "files/ChunkFile.h"
#include "foundation/Strings.h"

namespace {

constexpr const char *CHUNK_GENERAL = "General", *CHUNK_TRACK = "Track";
constexpr uint32_t ARRAYS_A_KEY = 4;

float FiniteOr0(float f) { return std::isfinite(f) ? f : 0.0f; }

bool IsEarlier(const SKeyPoint& a, const SKeyPoint& b) { return a.m_time < b.m_time; }

// Of any other file of chunks neither; one without chunks is a tracklist without rows.
bool IsTrackList(const UChunkFile& file) {
    return file.GetChunkCount() == 0 || file.GetChunkTypeCount(CHUNK_GENERAL) > 0 ||
           file.GetChunkTypeCount(CHUNK_TRACK) > 0;
}

bool ReadGeneral(UChunkFile& file, TrackList& list) {
    if (!file.OpenChunk(CHUNK_GENERAL))
        return true;
    const bool read = file.GetNextValue(list.m_min) && file.GetNextValue(list.m_max);
    list.m_min = FiniteOr0(list.m_min);
    list.m_max = FiniteOr0(list.m_max);
    return read && list.m_min <= list.m_max;
}

bool ReadLine(UChunkFile& file, STrackLine& line) {
    int32_t count = 0;
    if (!file.GetNextValue(count))
        return false;
    const uint32_t arrays_left = file.GetArraysCountInChunk() - file.GetCurrentArrayIndex();
    if (count < 0 || static_cast<uint32_t>(count) > arrays_left / ARRAYS_A_KEY)
        return false;
    line.m_keyPoints.resize(static_cast<size_t>(count));
    for (SKeyPoint& key : line.m_keyPoints) {
        if (!file.GetNextValue(key.m_color) || !file.GetNextValue(key.m_time) || !file.GetNextString(key.m_comment) ||
            !file.GetNextString(key.m_script))
            return false;
        key.m_time = FiniteOr0(key.m_time);
    }
    std::stable_sort(line.m_keyPoints.begin(), line.m_keyPoints.end(), IsEarlier);
    return file.GetNextValue(line.m_default_color) && file.GetNextString(line.m_name);
}

void WriteText(UChunkFile& file, const std::string& text) { file.WriteArray(text.data(), text.size()); }

void WriteLine(UChunkFile& file, const STrackLine& line) {
    file.CreateChunk(CHUNK_TRACK, ANY_CHUNK_ID);
    file.WriteValue(static_cast<int32_t>(line.m_keyPoints.size()));
    for (const SKeyPoint& key : line.m_keyPoints) {
        file.WriteValue(key.m_color);
        file.WriteValue(key.m_time);
        WriteText(file, key.m_comment);
        WriteText(file, key.m_script);
    }
    file.WriteValue(line.m_default_color);
    WriteText(file, line.m_name);
    file.CloseChunk();
}

} // namespace

int STrackLine::AddKey(SKeyPoint key) {
    const auto place = std::upper_bound(m_keyPoints.begin(), m_keyPoints.end(), key, IsEarlier);
    const auto index = static_cast<int>(place - m_keyPoints.begin());
    m_keyPoints.insert(place, std::move(key));
    return index;
}

bool LoadTrackList(std::string_view name, TrackList& list, std::string& error) {
    UChunkFile file(name, CFM_Open);
    if (!file.IsValid()) {
        error = file.GetError();
        return false;
    }
    if (!IsTrackList(file)) {
        error = Format("\"%s\" is no tracklist", file.GetFilename().c_str());
        return false;
    }
    TrackList read;
    if (!ReadGeneral(file, read)) {
        error = Format("\"%s\": its time scale is damaged", file.GetFilename().c_str());
        return false;
    }
    for (bool more = file.OpenChunk(CHUNK_TRACK, ANY_CHUNK_ID, COT_SameName); more; more = file.OpenNextChunk())
        if (!ReadLine(file, read.m_track_lines.emplace_back())) {
            error = Format("\"%s\": row %d is damaged", file.GetFilename().c_str(),
                           static_cast<int>(read.m_track_lines.size()));
            return false;
        }
    list = std::move(read);
    return true;
}

bool SaveTrackList(std::string_view name, const TrackList& list, std::string& error) {
    UChunkFile file(name, CFM_Create);
    if (file.IsValid()) {
        file.CreateChunk(CHUNK_GENERAL, ANY_CHUNK_ID);
        file.WriteValue(list.m_min);
        file.WriteValue(list.m_max);
        file.CloseChunk();
        for (const STrackLine& line : list.m_track_lines)
            WriteLine(file, line);
        if (file.CloseChunkFile())
            return true;
    }
    error = file.GetError();
    return false;
}
