// A tracklist: rows of keys in time, for timing the scripts of a sequence. Stored in .trk files.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct SKeyPoint {
    float m_time = 0; // seconds
    uint32_t m_color = 0xFFFFFF;
    std::string m_comment, m_script;
    bool operator==(const SKeyPoint&) const = default;
};

struct STrackLine {
    std::vector<SKeyPoint> m_keyPoints; // by time
    std::string m_name;
    uint32_t m_default_color = 0xFFFFFF; // of new keys
    int AddKey(SKeyPoint key);           // in time order, behind those of the same time; its index
    bool operator==(const STrackLine&) const = default;
};

struct TrackList {
    float m_min = 0, m_max = 100; // ends of the time scale, seconds
    std::vector<STrackLine> m_track_lines;
    bool operator==(const TrackList&) const = default;
};

// False with a sentence that names the file and the reason; the list is then as it was. Keys come back in time order.
bool LoadTrackList(std::string_view name, TrackList& list, std::string& error);
bool SaveTrackList(std::string_view name, const TrackList& list, std::string& error);
