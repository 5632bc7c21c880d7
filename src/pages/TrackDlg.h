// The tracklist window without its window: the timeline control that the mouse works on, and the dialog around it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "definitions/Track.h"
#include "foundation/KnownFile.h"
#include "scene/ViewInfo.h"

class CInterface;

// The timeline. Pixels are those of the control's client area: the name column at the left, rows from the top, the time
// scale in the lowest pixels.
class CTrack {
public:
    static constexpr int ROW_HEIGHT = 20, SCALE_HEIGHT = 30;

    TrackList list;
    float m_line = 5, m_page = 10; // steps of the grid lines, seconds
    float m_visible = 100;         // seconds across the key area
    float m_pos = 0;               // time at the left edge of the key area
    float m_syncline = 0;          // follows the mouse
    int m_fix_area_width = 150;    // of the name column
    int m_line_pos = 0;            // first visible row
    int m_selected = -1;           // row
    int m_mouse_key = -1;          // key under the mouse
    int m_mouse_segment = -1;      // last key before the mouse
    int m_mouse_x_orig = 0;
    bool m_mouse_button[4] = {};
    int width = 750, height = 300; // of the client area
    bool snap = false;             // key times to quarters of a second

    void NewTrack(bool del); // true: without rows; false: every row without keys
    int CreateTrackLine(const std::string& name, uint32_t color);
    void DeleteSelectedLine();
    void MoveUp();
    void MoveDown();
    void SetInfo(float min, float max, float line, float page, float visible);
    void SetXPosition(float time); // held within the ends
    void SetYPosition(int row);
    int GetTrackLinesCount() const { return static_cast<int>(list.m_track_lines.size()); }
    STrackLine* SelectedLine(); // null if none
    float TimeAt(int x) const;
    int XAt(float time) const;
    float SnappedTime(float time) const; // as `snap` says

    // Mouse. Keys keep their order in their row.
    void FindMouseValues(POINT point);
    void ButtonDown(bool left, POINT point);
    void ButtonUp(bool left);
    void MouseMove(POINT point);
    // What a double click asks its window to do.
    enum class DoubleClick { Nothing, RenameLine, EditKey, KeyMade, KeyDeleted };
    DoubleClick OnDoubleClick(bool left, POINT point);

private:
    float SecondsAPixel() const;
    bool IsAboveScale(POINT point) const { return point.y < height - SCALE_HEIGHT; }
    void MoveKey(float time, bool all_behind);
    void MoveSegment(float delta);
};

// What the key's own dialog edits.
struct CKeyPointProperties {
    SKeyPoint key;
    bool sync_required = false; // closed by its Sync button
};

class CTrackDlg {
public:
    explicit CTrackDlg(CInterface& controller);
    ~CTrackDlg(); // the name of the file is kept for the next opening
    CTrackDlg(const CTrackDlg&) = delete;
    CTrackDlg& operator=(const CTrackDlg&) = delete;

    CTrack track;
    float m_total_time = 10;
    int m_zoom = 100; // MIN_ZOOM to MAX_ZOOM
    float m_resolution = 0.1f;
    std::string m_track_name; // empty: untitled
    std::string title;
    static constexpr int MIN_ZOOM = 30, MAX_ZOOM = 500;

    void OnInitDialog();
    void OnNewTrack();
    void OnLoadTrack();
    void OnSaveTrack();
    void OnSaveTrackAs();
    int SaveTrack();                        // 0, -1 when nothing was written
    int LoadTrack(const std::string& name); // 0, -1
    bool TrackExists(const std::string& name) const;
    bool OnCancel(); // asks when the list is not as it was read or saved; true: the window closes
    void OnOK();     // applies the fields
    void OnDeltaposZoomSpin(int position);
    void OnCreateLine(); // asks for name and colour
    void OnRenameLine(); // of the selected row
    void OnDeleteLine() { track.DeleteSelectedLine(); }
    void OnMoveUp() { track.MoveUp(); }
    void OnMoveDown() { track.MoveDown(); }
    void OnSnap();
    void OnGrid();
    bool ShowsGrid() const;
    void OnEngineUpdate();
    void OnHScroll(int position); // in steps of m_resolution
    int HScrollRange() const;
    int HScrollPosition() const; // of what is shown
    int HScrollPage() const;
    int VScrollPage() const; // rows
    void SetTrackParams(float total_time, float resolution);
    void SetTrackName(const std::string& name) { m_track_name = name; }
    const std::string& GetTrackName() const { return m_track_name; }
    void Resize(int width, int height); // of the control
    // Takes over what the key's dialog has edited; with sync_required the next key moves to the end of what the key's
    // script starts. A file that cannot be read moves nothing, with one sentence.
    void ApplyKey(const CKeyPointProperties& properties);

private:
    void TakeDefaults(); // of the fields
    void Untitled();
    void TakeLoaded(const std::string& name);
    bool SaveNamed(); // false when nothing was written, also after Cancel
    bool SaveUnderNewName();
    std::optional<float> LengthOf(const std::string& script) const; // seconds; nothing when the script starts nothing

    CInterface& editor;
    TrackList saved; // as the file has it
    KnownFile known;
};
