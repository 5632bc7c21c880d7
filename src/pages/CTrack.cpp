#include <algorithm>
#include <cmath>

#include "pages/TrackDlg.h"

namespace {

constexpr float KEY_REACH = 4.01f;  // pixels to either side, and some for rounding
constexpr float SNAPS_A_SECOND = 4; // of key times
constexpr size_t LEFT_BUTTON = 0, RIGHT_BUTTON = 1;

// Limits that exclude each other: the upper one holds.
float Held(float value, float least, float most) { return std::min(std::max(value, least), most); }

} // namespace

// Rows ----------------------------------------------------------------------------------------------------------------

void CTrack::NewTrack(bool del) {
    if (del)
        list.m_track_lines.clear();
    for (STrackLine& line : list.m_track_lines)
        line.m_keyPoints.clear();
    if (del) {
        m_selected = -1;
        m_line_pos = 0;
    }
    m_pos = m_syncline = 0;
    m_mouse_key = m_mouse_segment = -1;
}

int CTrack::CreateTrackLine(const std::string& name, uint32_t color) {
    STrackLine& line = list.m_track_lines.emplace_back();
    line.m_name = name;
    line.m_default_color = color;
    return GetTrackLinesCount() - 1;
}

STrackLine* CTrack::SelectedLine() {
    return m_selected >= 0 && m_selected < GetTrackLinesCount() ? &list.m_track_lines[static_cast<size_t>(m_selected)]
                                                                : nullptr;
}

void CTrack::DeleteSelectedLine() {
    if (!SelectedLine())
        return;
    list.m_track_lines.erase(list.m_track_lines.begin() + m_selected);
    m_selected = m_mouse_key = m_mouse_segment = -1;
    SetYPosition(m_line_pos);
}

void CTrack::MoveUp() {
    if (SelectedLine() && m_selected > 0) {
        std::swap(list.m_track_lines[static_cast<size_t>(m_selected)],
                  list.m_track_lines[static_cast<size_t>(m_selected - 1)]);
        --m_selected;
    }
}

void CTrack::MoveDown() {
    if (SelectedLine() && m_selected + 1 < GetTrackLinesCount()) {
        std::swap(list.m_track_lines[static_cast<size_t>(m_selected)],
                  list.m_track_lines[static_cast<size_t>(m_selected + 1)]);
        ++m_selected;
    }
}

// Scale ---------------------------------------------------------------------------------------------------------------

void CTrack::SetInfo(float min, float max, float line, float page, float visible) {
    list.m_min = min;
    list.m_max = std::max(max, min);
    m_line = line;
    m_page = page;
    m_visible = visible;
    SetXPosition(m_pos);
}

void CTrack::SetXPosition(float time) { m_pos = Held(time, list.m_min, list.m_max); }

void CTrack::SetYPosition(int row) { m_line_pos = std::clamp(row, 0, std::max(GetTrackLinesCount() - 1, 0)); }

float CTrack::SecondsAPixel() const { return m_visible / static_cast<float>(std::max(width - m_fix_area_width, 1)); }

float CTrack::TimeAt(int x) const { return static_cast<float>(x - m_fix_area_width) * SecondsAPixel() + m_pos; }

int CTrack::XAt(float time) const {
    constexpr float FARTHEST = 1e6f; // pixels
    const float pixels = m_visible > 0 ? (time - m_pos) / SecondsAPixel() : 0.0f;
    return m_fix_area_width + static_cast<int>(std::floor(Held(pixels, -FARTHEST, FARTHEST) + 0.5f));
}

float CTrack::SnappedTime(float time) const {
    return snap ? std::floor(time * SNAPS_A_SECOND + 0.5f) / SNAPS_A_SECOND : time;
}

// Mouse ---------------------------------------------------------------------------------------------------------------

void CTrack::FindMouseValues(POINT point) {
    const bool in_key_area = point.x >= m_fix_area_width;
    if (in_key_area)
        m_syncline = TimeAt(point.x);
    if (IsAboveScale(point)) {
        m_selected = point.y < 0 ? -1 : point.y / ROW_HEIGHT + m_line_pos;
        if (!SelectedLine())
            m_selected = -1;
    }
    m_mouse_key = m_mouse_segment = -1;
    m_mouse_x_orig = point.x;
    const STrackLine* const line = SelectedLine();
    if (!line || !in_key_area)
        return;
    const float reach = KEY_REACH * SecondsAPixel();
    for (size_t k = 0; k < line->m_keyPoints.size(); ++k) {
        const float key_time = line->m_keyPoints[k].m_time;
        if (std::fabs(key_time - m_syncline) <= reach) {
            m_mouse_key = static_cast<int>(k);
            return;
        }
        if (key_time < m_syncline)
            m_mouse_segment = static_cast<int>(k);
    }
}

void CTrack::ButtonDown(bool left, POINT point) {
    FindMouseValues(point);
    m_mouse_button[left ? LEFT_BUTTON : RIGHT_BUTTON] = true;
}

void CTrack::ButtonUp(bool left) { m_mouse_button[left ? LEFT_BUTTON : RIGHT_BUTTON] = false; }

void CTrack::MouseMove(POINT point) {
    const bool left = m_mouse_button[LEFT_BUTTON], right = m_mouse_button[RIGHT_BUTTON];
    if (!left && !right)
        return;
    if (point.x >= m_fix_area_width && point.x < width)
        m_syncline = TimeAt(point.x);
    const STrackLine* const line = SelectedLine();
    if (!line)
        return;
    const auto is_key = [line](int k) { return k >= 0 && static_cast<size_t>(k) < line->m_keyPoints.size(); };
    if (is_key(m_mouse_key))
        MoveKey(SnappedTime(TimeAt(point.x)), !left);
    else if (is_key(m_mouse_segment)) {
        MoveSegment(static_cast<float>(point.x - m_mouse_x_orig) * SecondsAPixel());
        m_mouse_x_orig = point.x;
    }
}

void CTrack::MoveKey(float time, bool all_behind) {
    std::vector<SKeyPoint>& keys = SelectedLine()->m_keyPoints;
    const auto k = static_cast<size_t>(m_mouse_key);
    time = Held(time, m_pos, list.m_max);
    if (k > 0)
        time = std::max(time, keys[k - 1].m_time);
    if (k + 1 < keys.size())
        time = std::min(time, keys[k + 1].m_time);
    const float old_time = keys[k].m_time;
    keys[k].m_time = time;
    if (!all_behind)
        return;
    for (STrackLine& line : list.m_track_lines) {
        for (SKeyPoint& key : line.m_keyPoints)
            if (&key != &keys[k] && key.m_time >= old_time)
                key.m_time = key.m_time == old_time ? time : std::max(key.m_time + (time - old_time), time);
        // Another row may have keys between the two times, which stay.
        std::stable_sort(line.m_keyPoints.begin(), line.m_keyPoints.end(),
                         [](const SKeyPoint& a, const SKeyPoint& b) { return a.m_time < b.m_time; });
    }
}

void CTrack::MoveSegment(float delta) {
    std::vector<SKeyPoint>& keys = SelectedLine()->m_keyPoints;
    const auto first = static_cast<size_t>(m_mouse_segment), second = first + 1;
    const bool alone = second == keys.size();
    float least = alone ? m_pos : 0.0f;
    if (first > 0)
        least = std::max(least, keys[first - 1].m_time);
    if (alone) {
        keys[first].m_time = std::max(Held(keys[first].m_time + delta, m_pos, list.m_max), least);
        return;
    }
    float most = list.m_max;
    if (second + 1 < keys.size())
        most = std::min(most, keys[second + 1].m_time);
    const float back = least - keys[first].m_time, forth = most - keys[second].m_time;
    if (back > forth) // no room to move in
        return;
    delta = Held(delta, back, forth);
    keys[first].m_time = std::max(keys[first].m_time + delta, least);
    keys[second].m_time = std::min(keys[second].m_time + delta, most);
}

CTrack::DoubleClick CTrack::OnDoubleClick(bool left, POINT point) {
    FindMouseValues(point);
    STrackLine* const line = SelectedLine();
    if (!line || !IsAboveScale(point))
        return DoubleClick::Nothing;
    if (point.x < m_fix_area_width)
        return left ? DoubleClick::RenameLine : DoubleClick::Nothing;
    if (m_mouse_key == -1) {
        if (!left)
            return DoubleClick::Nothing;
        SKeyPoint key;
        key.m_time = SnappedTime(m_syncline);
        key.m_color = line->m_default_color;
        m_mouse_key = line->AddKey(std::move(key));
        return DoubleClick::KeyMade;
    }
    if (left)
        return DoubleClick::EditKey;
    line->m_keyPoints.erase(line->m_keyPoints.begin() + m_mouse_key);
    m_mouse_key = m_mouse_segment = -1;
    return DoubleClick::KeyDeleted;
}
