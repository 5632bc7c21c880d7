#include "pages/TrackDlg.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "editor/Interface.h"
#include "files/AtomicFile.h"
#include "files/ChunkFile.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"
#include "persistence/WriteError.h"

namespace {

constexpr const char* TITLE = "Tracklist";
constexpr const char* UNTITLED = "Tracklist - Untitled";
constexpr const char* ENDING = ".trk";
constexpr float DEFAULT_TIME = 10.0f, DEFAULT_RESOLUTION = 0.1f; // seconds; seconds a step of the scroll bar
constexpr int DEFAULT_ZOOM = 100;
constexpr float ZOOM_TIMES_RESOLUTION = 10.0f;
constexpr float GRID_LINE = 0.1f, GRID_PAGE = 10.0f; // seconds
constexpr float STEPS_A_PIXEL = 0.1f;
constexpr uint32_t RGB = 0xFFFFFF;
constexpr size_t COLOR_DIGITS = 6;

// Name and colour of a row; false after Cancel.
bool AskTrackLine(const char* title, std::string& name, uint32_t& color) {
    FormQuestion question{title, {{}, {}}};
    question.fields[0].label = "Name";
    question.fields[0].value = name;
    question.fields[1].label = "Color";
    question.fields[1].value = Format("%06X", color & RGB);
    question.fields[1].max_length = COLOR_DIGITS;
    if (!GetDesktop().AskForm(question))
        return false;
    name = question.fields[0].value;
    const std::string& digits = question.fields[1].value;
    uint32_t rgb = 0;
    const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), rgb, 16);
    if (failure == std::errc() && end == digits.data() + digits.size())
        color = rgb & RGB;
    return true;
}

} // namespace

CTrackDlg::CTrackDlg(CInterface& controller) : m_track_name(controller.m_last_track_name), editor(controller) {
    track.snap = (editor.flags & TRACK_SNAP) != 0;
}

CTrackDlg::~CTrackDlg() { editor.m_last_track_name = m_track_name; }

void CTrackDlg::TakeDefaults() {
    m_total_time = DEFAULT_TIME;
    m_zoom = DEFAULT_ZOOM;
    SetTrackParams(m_total_time, DEFAULT_RESOLUTION);
}

void CTrackDlg::Untitled() {
    TakeDefaults();
    m_track_name.clear();
    title = UNTITLED;
}

// The rows of a file are there: the fields follow.
void CTrackDlg::TakeLoaded(const std::string& name) {
    const float end = track.list.m_max;
    TakeDefaults();
    if (end > 0)
        SetTrackParams(end, m_resolution);
    m_track_name = name;
    title = "Tracklist - " + name;
    saved = track.list;
}

void CTrackDlg::OnInitDialog() {
    if (m_track_name.empty())
        Untitled();
    else if (LoadTrack(m_track_name) == 0)
        TakeLoaded(m_track_name);
    else {
        GetDesktop().MessageBox("Error reading from file while loading last used tracklist.", TITLE);
        Untitled();
    }
    saved = track.list;
}

int CTrackDlg::LoadTrack(const std::string& name) {
    TrackList loaded;
    std::string error;
    KnownFile read;
    read.Know(name);
    if (!LoadTrackList(name, loaded, error)) {
        GetDesktop().Notice(error);
        return -1;
    }
    known = read;
    track.NewTrack(true);
    track.list = std::move(loaded);
    return 0;
}

bool CTrackDlg::TrackExists(const std::string& name) const { return FileExistsOnDisk(name); }

void CTrackDlg::OnNewTrack() {
    const MessageAnswer answer =
        GetDesktop().MessageBox("Contens of all tracks will be deleted. Do you want to delete individual track too?",
                                TITLE, MessageButtons::YesNoCancel);
    if (answer == MessageAnswer::Cancel)
        return;
    track.NewTrack(answer != MessageAnswer::No);
    Untitled();
    if (answer != MessageAnswer::No)
        saved = track.list;
}

void CTrackDlg::OnLoadTrack() {
    const std::optional<std::string> name = GetDesktop().AskFile(
        {false, "Open", "Track Files (*.trk)|*.trk|All Files (*.*)|*.*||", DirectoryPart(m_track_name), ENDING, ""});
    if (!name)
        return;
    if (LoadTrack(*name) == 0)
        TakeLoaded(*name);
    else
        GetDesktop().MessageBox("Error reading from file " + *name, TITLE);
}

int CTrackDlg::SaveTrack() {
    if (IsReadOnlyFile(RealPath(m_track_name))) {
        GetDesktop().MessageBox("Track file is read only! Check it out from bindery.", "Warning");
        return -1;
    }
    if (!known.MayReplace(m_track_name))
        return -1;
    std::string error;
    if (SaveTrackList(m_track_name, track.list, error)) {
        known.Know(m_track_name);
        saved = track.list;
        return 0;
    }
    ShowWriteError(error);
    return -1;
}

bool CTrackDlg::SaveNamed() {
    if (m_track_name.empty())
        return SaveUnderNewName();
    return SaveTrack() == 0;
}

void CTrackDlg::OnSaveTrack() { SaveNamed(); }

void CTrackDlg::OnSaveTrackAs() { SaveUnderNewName(); }

bool CTrackDlg::SaveUnderNewName() {
    const std::optional<std::string> name =
        GetDesktop().AskFile({true, "Save As", "Tracklist Files (*.trk)|*.trk|All Files (*.*)|*.*||",
                              DirectoryPart(m_track_name), ENDING, FilePart(m_track_name)});
    if (!name)
        return false;
    if (name->empty()) {
        GetDesktop().MessageBox("Name could not be empty string.", TITLE);
        return false;
    }
    if (*name == m_track_name || (!IsNativePath(*name) && EqualNoCase(*name, m_track_name)))
        return SaveTrack() == 0;
    if (TrackExists(*name) && GetDesktop().MessageBox("Tracklist with this name already exists. Overwrite?", TITLE,
                                                      MessageButtons::YesNo) != MessageAnswer::Yes)
        return false;
    std::string old_name = std::exchange(m_track_name, *name);
    if (SaveTrack() != 0) {
        m_track_name = std::move(old_name);
        return false;
    }
    title = "Tracks - " + m_track_name;
    return true;
}

bool CTrackDlg::OnCancel() {
    if (track.list == saved)
        return true;
    switch (GetDesktop().MessageBox("Do you want to save your changes?", TITLE, MessageButtons::YesNoCancel)) {
    case MessageAnswer::Cancel:
        return false;
    case MessageAnswer::No:
        return true;
    default:
        return SaveNamed(); // work that could not be saved is not thrown away
    }
}

void CTrackDlg::OnOK() {
    if (!(m_total_time > 0) || !std::isfinite(m_total_time))
        m_total_time = DEFAULT_TIME;
    OnDeltaposZoomSpin(m_zoom);
}

void CTrackDlg::OnDeltaposZoomSpin(int position) {
    m_zoom = std::clamp(position, MIN_ZOOM, MAX_ZOOM);
    SetTrackParams(m_total_time, ZOOM_TIMES_RESOLUTION / static_cast<float>(m_zoom));
}

void CTrackDlg::OnCreateLine() {
    std::string name = Format("Track %d", track.GetTrackLinesCount() + 1);
    uint32_t color = STrackLine().m_default_color;
    if (AskTrackLine("New track", name, color))
        track.CreateTrackLine(name, color);
}

void CTrackDlg::OnRenameLine() {
    STrackLine* const line = track.SelectedLine();
    if (!line)
        return;
    std::string name = line->m_name;
    uint32_t color = line->m_default_color;
    if (AskTrackLine("Rename track", name, color)) {
        line->m_name = name;
        line->m_default_color = color;
    }
}

void CTrackDlg::OnSnap() {
    editor.flags ^= TRACK_SNAP;
    track.snap = (editor.flags & TRACK_SNAP) != 0;
}

void CTrackDlg::OnGrid() { editor.flags ^= TRACK_GRID; }

bool CTrackDlg::ShowsGrid() const { return (editor.flags & TRACK_GRID) != 0; }

void CTrackDlg::OnEngineUpdate() {
    UChunkFile file(editor.settings.update_dir + "\\pokus.dat", CFM_Create);
    if (!file.IsValid() || !file.CloseChunkFile())
        ShowWriteError(file.GetError());
}

// Scrolling -----------------------------------------------------------------------------------------------------------

void CTrackDlg::SetTrackParams(float total_time, float resolution) {
    m_total_time = total_time;
    m_resolution = resolution;
    const auto key_area = static_cast<float>(std::max(track.width - track.m_fix_area_width, 1));
    track.SetInfo(0, total_time, GRID_LINE, GRID_PAGE, key_area * resolution * STEPS_A_PIXEL);
}

void CTrackDlg::Resize(int width, int height) {
    track.width = width;
    track.height = height;
    SetTrackParams(m_total_time, m_resolution);
}

int CTrackDlg::HScrollRange() const {
    constexpr float MOST_STEPS = 1e9f;
    return static_cast<int>(std::clamp(m_total_time / m_resolution, 1.0f, MOST_STEPS));
}

int CTrackDlg::HScrollPage() const {
    constexpr int PIXELS_A_STEP = 10;
    return std::max((track.width - track.m_fix_area_width) / PIXELS_A_STEP, 1);
}

int CTrackDlg::VScrollPage() const { return std::max((track.height - CTrack::SCALE_HEIGHT) / CTrack::ROW_HEIGHT, 1); }

void CTrackDlg::OnHScroll(int position) {
    track.SetXPosition(static_cast<float>(position) / static_cast<float>(HScrollRange()) * m_total_time);
}

int CTrackDlg::HScrollPosition() const {
    const float part = m_total_time > 0 ? std::clamp(track.m_pos / m_total_time, 0.0f, 1.0f) : 0.0f;
    return static_cast<int>(std::lround(static_cast<double>(part) * HScrollRange()));
}
