// The tracklist: the mouse on the timeline, rule by rule, the dialog around it, and the synchronisation of keys.
#include "pages/PagesData.h"

#include <cmath>
#include <limits>

#include "files/ChunkFile.h"
#include "foundation/Paths.h"
#include "pages/TrackDlg.h"
#include "persistence/MovieFile.h"

namespace {

using Times = std::vector<float>;
using Boxes = std::vector<std::string>;

// 100 pixels a second: the key area is 600 pixels and 6 seconds wide, and 10 seconds long.
class TrackMouse : public testing::Test {
protected:
    TrackMouse() { track.SetInfo(0, 10, 0.1f, 10, 6); }

    void AddRow(const Times& times) {
        const int row = track.CreateTrackLine("row", 0x123456);
        for (const float time : times)
            track.list.m_track_lines[static_cast<size_t>(row)].AddKey({time, 0, "", ""});
    }
    Times Keys(size_t row = 0) const {
        Times times;
        for (const SKeyPoint& key : track.list.m_track_lines.at(row).m_keyPoints)
            times.push_back(key.m_time);
        return times;
    }
    static int X(float time) { return 150 + static_cast<int>(std::lround(time * 100)); } // m_pos is 0
    void Drag(bool left, float from, float to, int row = 0) {
        track.ButtonDown(left, {X(from), 10 + 20 * row});
        track.MouseMove({X(to), 10 + 20 * row});
        track.ButtonUp(left);
    }
    void ExpectKeys(const Times& expected, size_t row = 0, const char* what = "") {
        const Times actual = Keys(row);
        ASSERT_EQ(actual.size(), expected.size()) << what;
        for (size_t k = 0; k < actual.size(); ++k)
            EXPECT_NEAR(actual[k], expected[k], 1e-4f) << what << " key " << k;
    }

    CTrack track;
};

} // namespace

TEST_F(TrackMouse, WhatLiesUnderIt) {
    AddRow({1, 2, 3});
    AddRow({});
    struct Case {
        POINT point;
        int selected, key, segment;
        float syncline;
    };
    const Case cases[] = {
        {{250, 5}, 0, 0, -1, 1},                                   // on the first key
        {{254, 5}, 0, 0, -1, 1.04f},                               // four pixels beside it
        {{246, 19}, 0, 0, -1, 0.96f}, {{255, 0}, 0, -1, 0, 1.05f}, // five
        {{245, 5}, 0, -1, -1, 0.95f},                              // before all keys
        {{380, 5}, 0, -1, 1, 2.3f},   {{600, 5}, 0, -1, 2, 4.5f},  // behind all
        {{350, 20}, 1, -1, -1, 2},                                 // an empty row
        {{350, 40}, -1, -1, -1, 2},                                // no row
        {{350, -1}, -1, -1, -1, 2},
    };
    for (const Case& c : cases) {
        track.FindMouseValues(c.point);
        const std::string where = std::to_string(c.point.x) + ", " + std::to_string(c.point.y);
        EXPECT_EQ(track.m_selected, c.selected) << where;
        EXPECT_EQ(track.m_mouse_key, c.key) << where;
        EXPECT_EQ(track.m_mouse_segment, c.segment) << where;
        EXPECT_NEAR(track.m_syncline, c.syncline, 1e-4f) << where;
        EXPECT_EQ(track.m_mouse_x_orig, c.point.x);
    }
    track.FindMouseValues({149, 5}); // the name column
    EXPECT_EQ(track.m_selected, 0);
    EXPECT_EQ(track.m_mouse_key, -1);
    EXPECT_NEAR(track.m_syncline, 2, 1e-4f) << "stays";
    track.FindMouseValues({350, 270}); // the scale: the row stays
    EXPECT_EQ(track.m_selected, 0);
    track.SetYPosition(1);
    track.FindMouseValues({350, 5});
    EXPECT_EQ(track.m_selected, 1) << "the first visible row";
    track.SetYPosition(0);
    track.SetXPosition(1);
    track.FindMouseValues({250, 5});
    EXPECT_NEAR(track.m_syncline, 2, 1e-4f) << "scrolled by a second";
    EXPECT_EQ(track.m_mouse_key, 1);
    EXPECT_EQ(track.XAt(2), 250);
    track.width = 100; // narrower than the names: no division by nothing
    track.FindMouseValues({160, 5});
    EXPECT_TRUE(std::isfinite(track.m_syncline));
}

TEST_F(TrackMouse, TheLeftButtonMovesOneKeyBetweenItsNeighbours) {
    struct Case {
        float from, to;
        bool snap;
        Times expected;
    };
    for (const Case& c : {Case{2, 2.5f, false, {1, 2.5f, 3}},
                          {2, 0.5f, false, {1, 1, 3}}, // not before the one ahead
                          {2, 5, false, {1, 3, 3}},    // not behind the next
                          {1, -1, false, {0, 2, 3}},   // not before the visible part
                          {3, 20, false, {1, 2, 10}},  // not behind the end
                          {2, 2.4f, true, {1, 2.5f, 3}},
                          {2, 2.36f, true, {1, 2.25f, 3}},
                          {1, 0.1f, true, {0, 2, 3}}}) {
        track.NewTrack(true);
        AddRow({1, 2, 3});
        AddRow({2, 4});
        track.snap = c.snap;
        Drag(true, c.from, c.to);
        ExpectKeys(c.expected, 0, std::to_string(c.to).c_str());
        ExpectKeys({2, 4}, 1);
    }
    track.snap = false;
    track.SetXPosition(1.5f);
    track.ButtonDown(true, {150 + 50, 10}); // the key at 2
    track.MouseMove({100, 10});
    ExpectKeys({0, 1.5f, 3}, 0, "not before the visible part");
}

TEST_F(TrackMouse, TheRightButtonMovesAllKeysBehindInAllRows) {
    AddRow({1, 2, 4});
    AddRow({0.5f, 1.9f, 2, 5});
    AddRow({1.8f});
    Drag(false, 2, 2.5f);
    ExpectKeys({1, 2.5f, 4.5f});
    ExpectKeys({0.5f, 1.9f, 2.5f, 5.5f}, 1);
    ExpectKeys({1.8f}, 2);
    Drag(false, 2.5f, 1.2f); // past a key of another row, which stays
    ExpectKeys({1, 1.2f, 3.2f});
    ExpectKeys({0.5f, 1.2f, 1.9f, 4.2f}, 1, "in order");
    Drag(false, 1.2f, 0); // held at the key ahead
    ExpectKeys({1, 1, 3});
}

TEST_F(TrackMouse, BetweenKeysTwoMoveTogether) {
    struct Case {
        float from, to;
        Times expected;
    };
    for (const Case& c : {Case{2.5f, 3, {1, 2.5f, 3.5f, 5}},
                          {2.5f, 9, {1, 4, 5, 5}},    // not behind the key after them
                          {2.5f, 0, {1, 1, 2, 5}},    // not before the key ahead
                          {1.5f, 0, {0, 1, 3, 5}},    // not before 0
                          {4, 9, {1, 2, 8, 10}},      // the second not behind the end
                          {5.5f, 6, {1, 2, 3, 5.5f}}, // the last one alone
                          {5.5f, 0, {1, 2, 3, 3}},
                          {5.5f, 15, {1, 2, 3, 10}},
                          {0.5f, 0.8f, {1, 2, 3, 5}}}) { // before all: nothing
        track.NewTrack(true);
        AddRow({1, 2, 3, 5});
        Drag(true, c.from, c.to);
        ExpectKeys(c.expected, 0, std::to_string(c.from).c_str());
    }
    track.NewTrack(true);
    AddRow({1, 2});
    track.ButtonDown(true, {X(1.5f), 10});
    for (const float x : {1.6f, 1.7f, 1.8f}) // each move counts from the one before
        track.MouseMove({X(x), 10});
    ExpectKeys({1.3f, 2.3f});
    EXPECT_NEAR(track.m_syncline, 1.8f, 1e-4f) << "follows";
    track.MouseMove({100, 10});
    EXPECT_NEAR(track.m_syncline, 1.8f, 1e-4f) << "not in the name column";
    track.ButtonUp(true);
    const Times before = Keys();
    track.MouseMove({X(4), 10});
    ExpectKeys(before, 0, "no button is held");
    EXPECT_NEAR(track.m_syncline, 1.8f, 1e-4f);
    track.ButtonDown(true, {X(4), 200}); // no row: only the sync line
    track.MouseMove({X(3), 200});
    ExpectKeys(before);
    EXPECT_NEAR(track.m_syncline, 3, 1e-4f);
}

TEST_F(TrackMouse, DoubleClicks) {
    AddRow({1, 3});
    using D = CTrack::DoubleClick;
    EXPECT_EQ(track.OnDoubleClick(true, {20, 10}), D::RenameLine);
    EXPECT_EQ(track.OnDoubleClick(false, {20, 10}), D::Nothing);
    EXPECT_EQ(track.OnDoubleClick(true, {20, 50}), D::Nothing) << "no row";
    EXPECT_EQ(track.OnDoubleClick(true, {X(1), 10}), D::EditKey);
    EXPECT_EQ(track.OnDoubleClick(false, {X(2), 10}), D::Nothing);
    EXPECT_EQ(track.OnDoubleClick(true, {X(2), 280}), D::Nothing) << "the scale";
    ExpectKeys({1, 3});
    EXPECT_EQ(track.OnDoubleClick(true, {X(2.1f), 10}), D::KeyMade);
    track.snap = true;
    EXPECT_EQ(track.OnDoubleClick(true, {X(4.4f), 10}), D::KeyMade);
    ExpectKeys({1, 2.1f, 3, 4.5f});
    EXPECT_EQ(track.list.m_track_lines[0].m_keyPoints[1].m_color, 0x123456u);
    EXPECT_EQ(track.OnDoubleClick(false, {X(3), 10}), D::KeyDeleted);
    ExpectKeys({1, 2.1f, 4.5f});
}

TEST_F(TrackMouse, RowsMoveWithTheSelection) {
    for (const char* name : {"a", "b", "c"})
        track.CreateTrackLine(name, 0);
    const auto names = [&] {
        std::string all;
        for (const STrackLine& line : track.list.m_track_lines)
            all += line.m_name;
        return all;
    };
    track.MoveUp(), track.MoveDown(), track.DeleteSelectedLine(); // no row is selected
    EXPECT_EQ(names(), "abc");
    track.m_selected = 1;
    track.MoveDown();
    EXPECT_EQ(names(), "acb");
    EXPECT_EQ(track.m_selected, 2);
    track.MoveDown();
    EXPECT_EQ(names(), "acb");
    track.MoveUp(), track.MoveUp(), track.MoveUp();
    EXPECT_EQ(names(), "bac");
    EXPECT_EQ(track.m_selected, 0);
    track.DeleteSelectedLine();
    EXPECT_EQ(names(), "ac");
    EXPECT_FALSE(track.SelectedLine());
}

namespace {

class TrackDlgTest : public PagesTest {
protected:
    TrackDlgTest() { dlg.emplace(*editor); }
    void Open() { // anew
        dlg.reset();
        dlg.emplace(*editor);
        dlg->OnInitDialog();
    }
    Boxes Texts() {
        Boxes texts;
        for (const auto& box : desktop.boxes)
            texts.push_back(box.text);
        desktop.boxes.clear();
        return texts;
    }
    void AddRowWithKey() {
        dlg->track.CreateTrackLine("row", 1);
        dlg->track.list.m_track_lines.back().AddKey({2, 0, "", ""});
    }
    // The only row has these keys; the first is under the mouse and has this script.
    Times Sync(const std::string& script, const Times& times, bool sync = true) {
        dlg->track.NewTrack(true);
        STrackLine& line = dlg->track.list.m_track_lines.emplace_back();
        for (const float time : times)
            line.AddKey({time, 0x0000FF, "", ""});
        dlg->track.m_selected = dlg->track.m_mouse_key = 0;
        desktop.notices.clear();
        dlg->ApplyKey({{99, 0xABCDEF, "comment", script}, sync});
        Times after;
        for (const SKeyPoint& key : dlg->track.list.m_track_lines[0].m_keyPoints)
            after.push_back(key.m_time);
        return after;
    }

    std::optional<CTrackDlg> dlg;
};

} // namespace

TEST_F(TrackDlgTest, TheNameIsKeptForTheNextOpening) {
    Open();
    EXPECT_EQ(dlg->title, "Tracklist - Untitled");
    EXPECT_EQ(dlg->m_total_time, 10);
    EXPECT_NEAR(dlg->track.m_visible, 6, 1e-4) << "100 pixels a second";
    AddRowWithKey();
    dlg->m_total_time = 25;
    dlg->OnOK();
    desktop.file_answer = "a.trk";
    dlg->OnSaveTrack();
    EXPECT_EQ(dlg->title, "Tracks - a.trk");
    Open();
    EXPECT_EQ(dlg->title, "Tracklist - a.trk");
    EXPECT_EQ(dlg->m_total_time, 25);
    EXPECT_EQ(dlg->track.list.m_max, 25);
    ASSERT_EQ(dlg->track.GetTrackLinesCount(), 1);
    WriteBytes("a.trk", "broken");
    EXPECT_TRUE(Texts().empty());
    Open();
    EXPECT_EQ(Texts(), Boxes{"Error reading from file while loading last used tracklist."});
    EXPECT_EQ(desktop.notices.size(), 1u);
    EXPECT_EQ(dlg->title, "Tracklist - Untitled");
    EXPECT_EQ(dlg->m_track_name, "");
    EXPECT_EQ(dlg->m_total_time, 10);
}

TEST_F(TrackDlgTest, NewAsksWhatGoes) {
    const auto answer = [&](MessageAnswer a) {
        dlg->track.NewTrack(true);
        AddRowWithKey();
        dlg->m_track_name = "x.trk";
        desktop.answers = {a};
        dlg->OnNewTrack();
    };
    answer(MessageAnswer::Cancel);
    EXPECT_EQ(dlg->track.list.m_track_lines.at(0).m_keyPoints.size(), 1u);
    EXPECT_EQ(dlg->m_track_name, "x.trk");
    answer(MessageAnswer::No);
    EXPECT_TRUE(dlg->track.list.m_track_lines.at(0).m_keyPoints.empty());
    EXPECT_EQ(dlg->m_track_name, "");
    answer(MessageAnswer::Yes);
    EXPECT_EQ(dlg->track.GetTrackLinesCount(), 0);
    EXPECT_EQ(dlg->title, "Tracklist - Untitled");
    dlg->m_track_name.clear();
}

TEST_F(TrackDlgTest, SavingUnderNames) {
    Open();
    AddRowWithKey();
    dlg->OnSaveTrackAs(); // the dialog is cancelled
    EXPECT_EQ(dlg->m_track_name, "");
    desktop.file_answer = "";
    dlg->OnSaveTrackAs();
    EXPECT_EQ(Texts(), Boxes{"Name could not be empty string."});
    WriteBytes("old.trk", "old");
    desktop.file_answer = "old.trk";
    desktop.answers = {MessageAnswer::No};
    dlg->OnSaveTrackAs();
    EXPECT_EQ(ReadBytes("old.trk"), "old");
    EXPECT_EQ(dlg->m_track_name, "");
    desktop.answers = {MessageAnswer::Yes};
    dlg->OnSaveTrackAs();
    EXPECT_EQ(dlg->m_track_name, "old.trk");
    const std::string question = "Tracklist with this name already exists. Overwrite?";
    EXPECT_EQ(Texts(), (Boxes{question, question}));
    desktop.file_answer = "OLD.TRK";
    dlg->OnSaveTrackAs();
    EXPECT_TRUE(Texts().empty()) << "the same name saves at once";
    EXPECT_EQ(dlg->m_track_name, "old.trk");
    std::filesystem::permissions("old.trk", std::filesystem::perms::owner_read);
    EXPECT_EQ(dlg->SaveTrack(), -1);
    EXPECT_EQ(Texts(), Boxes{"Track file is read only! Check it out from bindery."});
    desktop.file_answer = "gone\\new.trk";
    dlg->OnSaveTrackAs();
    EXPECT_EQ(dlg->m_track_name, "old.trk") << "what could not be saved does not take the name";
    EXPECT_EQ(Texts().size(), 1u);
}

TEST_F(TrackDlgTest, LoadingADamagedFileChangesNothing) {
    Open();
    AddRowWithKey();
    desktop.file_answer = "a.trk";
    dlg->OnSaveTrackAs();
    WriteBytes("b.trk", ReadBytes("a.trk").substr(0, 40));
    desktop.file_answer = "b.trk";
    dlg->OnLoadTrack();
    EXPECT_EQ(Texts(), Boxes{"Error reading from file b.trk"});
    EXPECT_EQ(desktop.notices.size(), 1u);
    EXPECT_EQ(dlg->m_track_name, "a.trk");
    EXPECT_EQ(dlg->track.GetTrackLinesCount(), 1);
    dlg->track.NewTrack(true);
    desktop.file_answer = "a.trk";
    dlg->OnLoadTrack();
    EXPECT_EQ(dlg->title, "Tracklist - a.trk");
    EXPECT_EQ(dlg->track.GetTrackLinesCount(), 1);
}

TEST_F(TrackDlgTest, WhatNobodyTouchedClosesUnasked) {
    Open();
    desktop.answers = {MessageAnswer::Cancel};
    EXPECT_TRUE(dlg->OnCancel()) << "a new one";
    AddRowWithKey();
    desktop.file_answer = "a.trk";
    dlg->OnSaveTrackAs();
    EXPECT_TRUE(dlg->OnCancel()) << "a saved one";
    dlg->track.NewTrack(true);
    dlg->OnLoadTrack();
    EXPECT_TRUE(dlg->OnCancel()) << "a loaded one";
    Open();
    dlg->Resize(400, 200);
    dlg->OnDeltaposZoomSpin(200);
    EXPECT_TRUE(dlg->OnCancel()) << "the last one, looked at";
    EXPECT_TRUE(Texts().empty());
    dlg->m_total_time = 20;
    dlg->OnOK();
    EXPECT_FALSE(dlg->OnCancel()) << "its length is in the file";
}

TEST_F(TrackDlgTest, AFileThatAnotherProgramHasChangedIsNotReplacedUnasked) {
    Open();
    AddRowWithKey();
    desktop.file_answer = "a.trk";
    dlg->OnSaveTrackAs();
    const std::string theirs = ReadBytes("a.trk") + "more";
    for (const bool was_loaded : {false, true}) {
        if (was_loaded)
            dlg->OnLoadTrack();
        WriteBytes("a.trk", theirs + (was_loaded ? "still" : ""));
        desktop.answers = {MessageAnswer::No, MessageAnswer::Yes};
        EXPECT_EQ(dlg->SaveTrack(), -1);
        EXPECT_EQ(ReadBytes("a.trk").substr(0, theirs.size()), theirs);
        EXPECT_EQ(dlg->SaveTrack(), 0);
        EXPECT_EQ(dlg->SaveTrack(), 0) << "its own is no other program's";
        EXPECT_EQ(Texts().size(), 2u);
    }
}

TEST_F(TrackDlgTest, ClosingAsks) {
    Open();
    AddRowWithKey();
    desktop.answers = {MessageAnswer::Cancel, MessageAnswer::No, MessageAnswer::Yes, MessageAnswer::Yes};
    EXPECT_FALSE(dlg->OnCancel());
    EXPECT_TRUE(dlg->OnCancel());
    EXPECT_FALSE(dlg->OnCancel()) << "no name was given: the work is not thrown away";
    desktop.file_answer = "a.trk";
    EXPECT_TRUE(dlg->OnCancel());
    EXPECT_TRUE(FileExistsOnDisk("a.trk"));
}

TEST_F(TrackDlgTest, ZoomAndScrolling) {
    Open();
    struct Case {
        int position, zoom;
        float visible; // seconds in 600 pixels
    };
    for (const Case& c : {Case{100, 100, 6}, {50, 50, 12}, {200, 200, 3}, {1, 30, 20}, {9999, 500, 1.2f}}) {
        dlg->OnDeltaposZoomSpin(c.position);
        EXPECT_EQ(dlg->m_zoom, c.zoom);
        EXPECT_NEAR(dlg->track.m_visible, c.visible, 1e-3f) << c.position;
    }
    dlg->m_zoom = 100;
    dlg->m_total_time = 20;
    dlg->OnOK();
    EXPECT_EQ(dlg->HScrollRange(), 200);
    EXPECT_EQ(dlg->HScrollPage(), 60);
    EXPECT_EQ(dlg->VScrollPage(), 13);
    dlg->OnHScroll(50);
    EXPECT_NEAR(dlg->track.m_pos, 5, 1e-4f);
    EXPECT_EQ(dlg->HScrollPosition(), 50);
    dlg->OnDeltaposZoomSpin(200);
    EXPECT_EQ(dlg->HScrollPosition(), 100) << "the same time";
    dlg->OnDeltaposZoomSpin(100);
    dlg->OnHScroll(5000);
    EXPECT_NEAR(dlg->track.m_pos, 20, 1e-4f);
    dlg->OnHScroll(-5);
    EXPECT_EQ(dlg->track.m_pos, 0);
    dlg->Resize(350, 130);
    EXPECT_NEAR(dlg->track.m_visible, 2, 1e-4f);
    EXPECT_EQ(dlg->VScrollPage(), 5);
    for (const float nonsense : {0.0f, -3.0f, std::numeric_limits<float>::quiet_NaN()}) {
        dlg->m_total_time = nonsense;
        dlg->OnOK();
        EXPECT_EQ(dlg->m_total_time, 10);
    }
}

TEST_F(TrackDlgTest, RowsFlagsAndTheUpdateFile) {
    Open();
    dlg->OnCreateLine(); // cancelled
    EXPECT_EQ(dlg->track.GetTrackLinesCount(), 0);
    desktop.form_answers = {{{1, "00ff80"}}, {{0, "named"}, {1, "no colour"}}, {{0, "other"}}};
    dlg->OnCreateLine();
    dlg->OnCreateLine();
    ASSERT_EQ(dlg->track.GetTrackLinesCount(), 2);
    const std::vector<STrackLine>& lines = dlg->track.list.m_track_lines;
    EXPECT_EQ(lines[0].m_name, "Track 1");
    EXPECT_EQ(lines[0].m_default_color, 0x00FF80u);
    EXPECT_EQ(lines[1].m_name, "named");
    EXPECT_EQ(lines[1].m_default_color, 0xFFFFFFu);
    EXPECT_EQ(desktop.forms.back().fields[0].value, "Track 2") << "offered";
    dlg->track.m_selected = 0;
    dlg->OnRenameLine();
    EXPECT_EQ(lines[0].m_name, "other");
    EXPECT_EQ(lines[0].m_default_color, 0x00FF80u);
    dlg->OnSnap();
    dlg->OnGrid();
    EXPECT_TRUE(dlg->track.snap && dlg->ShowsGrid());
    EXPECT_EQ(editor->flags, 3u);
    Open();
    EXPECT_TRUE(dlg->track.snap) << "kept by the editor";
    dlg->OnSnap();
    EXPECT_EQ(editor->flags, 1u);
    std::filesystem::create_directories("update");
    editor->settings.update_dir = "update";
    dlg->OnEngineUpdate();
    const UChunkFile file("update\\pokus.dat", CFM_Open);
    EXPECT_TRUE(file.IsValid());
    EXPECT_EQ(file.GetChunkCount(), 0);
}

TEST_F(TrackDlgTest, TheNextKeyMovesToTheEndOfWhatTheScriptStarts) {
    MoviePathRecord path;
    path.path.resize(2);
    path.path[0].value[0] = 1;           // a delay
    path.path[1].position = {250, 0, 0}; // 2.5 seconds
    std::string error;
    std::filesystem::create_directories("Anim");
    ASSERT_TRUE(WriteMovie("Anim\\Intro.mvi", {path}, error)) << error;
    WriteBytes("Sounds/hello.txt", "0 Hello\n1.5 there\n2.25\n");
    const std::pair<const char*, float> scripts[] = {
        {"STARTMOVIE \"Intro\"", 3.5f},
        {"startmovie 'intro' 1", 3.5f},
        {"Wait 1\r\nStartMovie INTRO\r\nWait 2", 3.5f},
        {"StartMovie(\"intro\")", 3.5f},
        {"ACTORTALK guard \"Sounds\\hello.wav\"", 2.25f},
        {"ActorTalk \"old guard\", Sounds\\HELLO.mp3, 1", 2.25f},
    };
    for (const auto& [script, length] : scripts) {
        EXPECT_EQ(Sync(script, {1, 2, 9}), (Times{1, 1 + length, 9})) << script;
        EXPECT_TRUE(desktop.notices.empty()) << script;
    }
    const std::vector<SKeyPoint>& keys = dlg->track.list.m_track_lines[0].m_keyPoints;
    EXPECT_EQ(keys[0].m_color, 0xABCDEFu);
    EXPECT_EQ(keys[0].m_comment, "comment");
    EXPECT_EQ(Sync("STARTMOVIE intro", {1}), (Times{1, 4.5f})) << "a new key";
    EXPECT_EQ(keys.back().m_color, 0xFFFFFFu);
    EXPECT_EQ(Sync("STARTMOVIE intro", {1, 2, 3}), (Times{1, 3, 4.5f})) << "past another key, in order";
    EXPECT_EQ(Sync("STARTMOVIE intro", {1, 2}, false), (Times{1, 2})) << "not asked for";
    EXPECT_EQ(Sync("OpenDoor a", {1}), (Times{1})) << "starts nothing that has a length";
}

TEST_F(TrackDlgTest, FilesThatCannotBeReadMoveNothing) {
    WriteBytes("Anim/broken.mvi", "MINA");
    WriteBytes("Sounds/empty.txt", "");
    WriteBytes("Sounds/words.txt", "1.5\nno time\n");
    WriteBytes("Sounds/before.txt", "-3\n");
    std::string error;
    ASSERT_TRUE(WriteMovie("Anim\\none.mvi", {}, error));
    for (const char* script :
         {"STARTMOVIE missing", "STARTMOVIE broken", "STARTMOVIE none", "STARTMOVIE", "STARTMOVIE \"",
          "ACTORTALK a missing.wav", "ACTORTALK a", "ACTORTALK", "ACTORTALK a Sounds\\empty.wav",
          "ACTORTALK a Sounds\\words.wav", "ACTORTALK a Sounds\\before.wav"}) {
        EXPECT_EQ(Sync(script, {1, 2}), (Times{1, 2})) << script;
        EXPECT_EQ(desktop.notices.size(), 1u) << script;
    }
}
