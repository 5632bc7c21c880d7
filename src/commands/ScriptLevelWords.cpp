// The words of a script for terrain, decals, prefabs, movies, tracklists and export.
#include <algorithm>
#include <cstdlib>

#include "commands/ScriptRunner.h"
#include "files/FileObject.h"
#include "foundation/Strings.h"
#include "pages/TrackDlg.h"
#include "persistence/VrmlExport.h"

bool ScriptRunner::DoTerrain(const Words& words) {
    TerrainShape shape;
    shape.heightmap = FilePath(words[1]);
    int* const numbers[] = {&shape.size_x, &shape.size_y, &shape.size_z, &shape.seg_x, &shape.seg_y, &shape.detail};
    for (size_t i = 0; i < std::size(numbers); ++i)
        if (!ReadInteger(words[i + 2], *numbers[i]))
            return false;
    if (!interface.world->GenerateTerrain(shape, failure))
        return false;
    interface.MarkDirty();
    interface.SetCountText();
    interface.RedrawAllViews();
    return true;
}

bool ScriptRunner::DoTerrainTool(const Words& words) {
    TERRAIN_MODIFIER tool;
    const auto* const type = std::find_if(std::begin(TERRAIN_STROKE_WORDS), std::end(TERRAIN_STROKE_WORDS),
                                          [&](const char* word) { return EqualNoCase(word, words[1]); });
    int collapse = 0;
    if (type == std::end(TERRAIN_STROKE_WORDS))
        return Fail(Format("\"%s\" is no stroke of the terrain tool", words[1].c_str()));
    if (!ReadNumber(words[2], tool.radius) || !ReadNumber(words[3], tool.intensity) ||
        !ReadInteger(words[4], tool.density) || !ReadInteger(words[5], collapse))
        return false;
    tool.type = static_cast<int>(type - std::begin(TERRAIN_STROKE_WORDS));
    tool.collapse = collapse != 0;
    interface.SetTerrainModifier(tool);
    return true;
}

bool ScriptRunner::DoDecal(const Words& words) {
    const std::string picture = "Textures\\" + words[1] + "\\" + words[2];
    if (!FileObject::FileExists(picture + ".tga") && !FileObject::FileExists(picture + ".dds"))
        return Fail(Format("there is no texture \"%s\\%s\"", words[1].c_str(), words[2].c_str()));
    interface.texture_choice = {words[1], words[2]};
    return true;
}

bool ScriptRunner::DoPrefab(const Words& words) {
    if (words[1] == "save" && words.size() == 4) {
        if (!interface.world->SavePrefab(FilePath(words[2]), words[3], failure))
            return false;
        pages.prefab.Refresh();
        return true;
    }
    if (words[1] != "choose" || words.size() != 4)
        return Fail("\"save FILE DESCRIPTION\" or \"choose DIRECTORY FILE\" is needed behind \"prefab\"");
    pages.prefab.Refresh();
    const std::string& file = words[3];
    const bool custom_brush = file.size() > 4 && EqualNoCase(file.substr(file.size() - 4), ".msh");
    return pages.prefab.Select(custom_brush, words[2], custom_brush ? file.substr(0, file.size() - 4) : file) ||
           Fail(Format("there is no prefab \"%s\\%s\"", words[2].c_str(), file.c_str()));
}

bool ScriptRunner::DoMovie(const Words& words) {
    const std::string& what = words[1];
    if (what == "time") {
        float seconds = 0;
        if (!ReadNumber(words[2], seconds))
            return false;
        interface.anim_time = seconds;
        interface.RedrawAllViews();
        return true;
    }
    const std::string file = FilePath(words[2]);
    int result = MOVIE_NOT_OPENED;
    if (what == "load" || what == "merge")
        result = interface.LoadMovie(file, failure, what == "load");
    else if (what == "save")
        result = interface.SaveMovie(file, failure);
    else
        return Fail("load, merge, save or time is needed behind \"movie\"");
    if (result == MOVIE_OK)
        interface.world->movie_name = file;
    return result == MOVIE_OK;
}

// Rows and keys count from 0. The mouse does what it can, so that a script proves the same rules as the window.
bool ScriptRunner::DoTrack(const Words& words) {
    if (!tracks) {
        tracks = std::make_unique<CTrackDlg>(interface);
        tracks->OnInitDialog();
    }
    CTrack& track = tracks->track;
    const std::string& what = words[1];
    if ((what == "load" || what == "save") && words.size() == 3)
        return DoTrackFile(words);
    if (what == "new" && words.size() == 2) {
        track.NewTrack(true);
        return true;
    }
    if (what == "snap" && words.size() == 3 && (words[2] == "0" || words[2] == "1")) {
        if ((words[2] == "1") != track.snap)
            tracks->OnSnap();
        return true;
    }
    if (what == "line" && words.size() == 4) {
        char* end = nullptr;
        const unsigned long color = std::strtoul(words[3].c_str(), &end, 16);
        if (*end != '\0' || words[3].empty() || color > 0xFFFFFF)
            return Fail(Format("\"%s\" is no colour: six hexadecimal digits are needed", words[3].c_str()));
        track.m_selected = track.CreateTrackLine(words[2], static_cast<uint32_t>(color));
        return true;
    }
    int row = 0;
    if (words.size() < 4 || !ReadInteger(words[2], row) || row < 0 || row >= track.GetTrackLinesCount())
        return Fail(Format("\"%s\" needs a row of the tracklist", what.c_str()));
    return DoTrackKey(words, row);
}

bool ScriptRunner::DoTrackKey(const Words& words, int row) {
    CTrack& track = tracks->track;
    const std::string& what = words[1];
    track.SetYPosition(row);
    const int y = (row - track.m_line_pos) * CTrack::ROW_HEIGHT + CTrack::ROW_HEIGHT / 2;
    float seconds = 0;
    if (what == "key") {
        if (!ReadNumber(words[3], seconds))
            return false;
        track.SetXPosition(seconds);
        track.OnDoubleClick(true, {track.XAt(seconds), y});
        return true;
    }
    const std::vector<SKeyPoint>& keys = track.list.m_track_lines[static_cast<size_t>(row)].m_keyPoints;
    int key = 0;
    if (!ReadInteger(words[3], key) || key < 0 || static_cast<size_t>(key) >= keys.size())
        return Fail(Format("\"%s\" needs a key of the row", what.c_str()));
    const SKeyPoint& chosen = keys[static_cast<size_t>(key)];
    track.SetXPosition(chosen.m_time);
    const POINT at{track.XAt(chosen.m_time), y};
    if (what == "delete") {
        track.OnDoubleClick(false, at);
        return true;
    }
    if (what == "move" && words.size() >= 5) {
        const bool left = words.size() == 5;
        if (!ReadNumber(words[4], seconds))
            return false;
        track.SetXPosition(std::min(chosen.m_time, seconds)); // no key goes left of what is shown
        track.ButtonDown(left, {track.XAt(chosen.m_time), y});
        track.MouseMove({track.XAt(seconds), y});
        track.ButtonUp(left);
        return true;
    }
    track.FindMouseValues(at);
    CKeyPointProperties properties{chosen};
    if (what == "comment" && words.size() == 5)
        properties.key.m_comment = words[4];
    else if (what == "script" && words.size() == 5)
        properties.key.m_script = words[4];
    else if (what == "sync" && words.size() == 4)
        properties.sync_required = true;
    else
        return Fail(Format("\"%s\" is no action on a tracklist", what.c_str()));
    tracks->ApplyKey(properties);
    return true;
}

bool ScriptRunner::DoTrackFile(const Words& words) {
    const std::string file = FilePath(words[2]);
    if (words[1] == "save")
        return SaveTrackList(file, tracks->track.list, failure);
    tracks->track.m_selected = -1;
    return LoadTrackList(file, tracks->track.list, failure);
}

bool ScriptRunner::DoExport(const Words& words) { return ExportVrml(FilePath(words[1]), *interface.world, failure); }
