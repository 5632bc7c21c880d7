// The movie commands and what they say; the movie that is saved with its level; the tracklist's window.
#include "commands/CommandTable.h"
#include "commands/Recovery.h"
#include "commands/ScriptData.h"
#include "pages/TrackDlg.h"
#include "persistence/MovieFile.h"
#include "scene/PathScenes.h"

namespace {

constexpr const char *OPEN_FAILED = "File not found or error opening file.", *SAVE_FAILED = "Error writing to a file.";

class MovieCommands : public ScriptData {
protected:
    MovieCommands() {
        WriteBytes("movies.def", std::string(TEST_DEFINITIONS) +
                                     "#camera { #Type <CAMERA> #TraceType <NoTrace> #EntityLocation <AnyCell> "
                                     "#EditorImage { MODEL (BOX) } #Parameters { } }"
                                     "#target_point { #Type <PATH_POINT_TGT> #TraceType <NoTrace> #EntityLocation "
                                     "<AnyCell> #EditorImage { MODEL (BOX) } #Parameters { } }");
        interface->entity_parser = std::make_unique<EntityParser>("movies.def");
        camera = &AddOwner(Level());
        AddPoint(Level(), *camera, false, {0, 0, 0});
        AddPoint(Level(), *camera, false, {300, 0, 0});
    }
    std::string LastBox() { return desktop.messages.empty() ? std::string() : desktop.messages.back().text; }
    void Command(const std::string& name, const std::string& answer = {}) {
        desktop.answers.clear();
        if (!answer.empty())
            desktop.answers.push_back(answer);
        ASSERT_EQ(Run("command " + name), "");
    }

    Entity* camera = nullptr;
};

} // namespace

TEST_F(MovieCommands, SaveAsksForANameOnceAndLoadTakesIt) {
    Command("OnFileSavemovie");
    EXPECT_EQ(Level().movie_name, "") << "the dialog was cancelled";
    Command("OnFileSavemovie", data.folder / "a.mvi");
    EXPECT_EQ(Level().movie_name, data.folder / "a.mvi");
    const size_t asked = desktop.messages.size();
    Command("OnFileSavemovie");
    EXPECT_EQ(desktop.messages.size(), asked) << "it has a name";
    Command("OnFileSavemovieas", data.folder / "b.mvi");
    EXPECT_EQ(Level().movie_name, data.folder / "b.mvi");
    Command("OnFileNewmovie");
    EXPECT_EQ(camera->path.GetCount(), 0);
    EXPECT_EQ(Level().movie_name, "") << "the old movie is not written over";
    Command("OnFileLoadmovie", data.folder / "a.mvi");
    EXPECT_EQ(camera->path.GetCount(), 2);
    EXPECT_EQ(Level().movie_name, data.folder / "a.mvi");
    Command("OnFileMergemovie", data.folder / "b.mvi");
    EXPECT_EQ(Level().movie_name, data.folder / "b.mvi");
    EXPECT_EQ(Level().GetEntityCount(), 3);
}

// A project is saved without its paths, so a copy against a crash has them beside it.
TEST_F(MovieCommands, ACopyAgainstACrashHoldsThePathsToo) {
    const std::filesystem::path kept = data.folder / "config/recovery";
    Level().movie_name = data.folder / "flight.mvi";
    interface->movie_editing = true;
    ASSERT_EQ(Run("save before.msp\n"), "");
    Command("OnFileSavemovieas", data.folder / "before.mvi");
    interface->MarkDirty();
    {
        RecoveryFile crashing(*interface);
        ASSERT_TRUE(crashing.Write());
        for (const auto& entry : std::filesystem::directory_iterator(kept))
            if (entry.path().extension() != ".lock")
                std::filesystem::copy_file(entry.path(), kept / ("level-c" + entry.path().extension().string()));
    }
    interface->movie_editing = false;
    ASSERT_EQ(Run("new\n"), "");
    RecoveryFile recovery(*interface);
    desktop.answers = {"yes"};
    recovery.Offer(frame->document);
    EXPECT_EQ(Level().GetEntityCount(), 3) << "the camera and two points";
    EXPECT_EQ(Level().movie_name, data.folder / "before.mvi");
    EXPECT_TRUE(interface->movie_editing);
    ASSERT_EQ(Run("save after.msp\n"), "");
    Command("OnFileSavemovieas", data.folder / "after.mvi");
    EXPECT_TRUE(ReadBytes("after.msp") == ReadBytes("before.msp"));
    EXPECT_TRUE(ReadBytes("after.mvi") == ReadBytes("before.mvi"));
    EXPECT_TRUE(RecoveryFile::FindLeftOver().empty());
}

TEST_F(MovieCommands, AMovieThatAnotherProgramHasChangedIsNotReplacedUnasked) {
    const std::string file = data.folder / "a.mvi";
    Command("OnFileSavemovieas", file);
    const std::string theirs = ReadBytes(file) + "more";
    const auto expect_question = [&] {
        WriteBytes(file, theirs);
        desktop.answers = {"no"};
        EXPECT_EQ(Run("command OnFileSavemovie"), "line 1: not all was saved");
        EXPECT_EQ(ReadBytes(file), theirs);
        Command("OnFileSavemovie", "yes");
        EXPECT_NE(ReadBytes(file), theirs);
        const size_t boxes = desktop.messages.size();
        Command("OnFileSavemovie");
        EXPECT_EQ(desktop.messages.size(), boxes) << "its own is no other program's";
    };
    expect_question();
    Command("OnFileMergemovie", file);
    expect_question();
}

TEST_F(MovieCommands, FailuresAreToldAndLeaveTheName) {
    Level().movie_name = "kept.mvi";
    WriteBytes("broken.mvi", "MINA");
    for (const char* command : {"OnFileLoadmovie", "OnFileMergemovie", "OnFileLoadmovieforselection"})
        for (const char* file : {"missing.mvi", "broken.mvi"}) {
            Level().ClearSelection();
            SelectEntity(Level(), *camera);
            Command(command, data.folder / file);
            EXPECT_EQ(LastBox(), OPEN_FAILED) << command;
            EXPECT_EQ(desktop.messages.back().title, "Error");
            EXPECT_EQ(Level().movie_name, "kept.mvi");
            EXPECT_EQ(camera->path.GetCount(), 2);
        }
    desktop.answers = {data.folder / "gone/a.mvi"};
    EXPECT_EQ(Run("command OnFileSavemovieas"), "line 1: not all was saved");
    EXPECT_EQ(LastBox(), SAVE_FAILED);
    EXPECT_EQ(Level().movie_name, "kept.mvi");
    SelectEntity(Level(), *Level().entity[1]);
    Command("OnFileLoadmovieforselection", data.folder / "missing.mvi");
    EXPECT_EQ(LastBox(), "Exactly one object must be selected.");
}

TEST_F(MovieCommands, AMovieIsSavedWithItsLevelWhileItIsEdited) {
    ASSERT_EQ(Run("save level.msp"), "");
    Level().movie_name = data.folder / "a.mvi";
    Command("OnFileSave");
    EXPECT_FALSE(std::filesystem::exists("a.mvi")) << "no movie is edited";
    interface->movie_editing = true;
    Command("OnFileSave");
    EXPECT_TRUE(std::filesystem::exists("a.mvi"));
    desktop.answers = {data.folder / "next.msp", data.folder / "next.mvi"};
    frame->document.OnFileSaveAs();
    EXPECT_TRUE(std::filesystem::exists("next.mvi"));
    EXPECT_EQ(Level().movie_name, data.folder / "next.mvi");
    desktop.answers.clear();
    frame->document.OnFileSaveAs(); // cancelled: no question about the movie
    EXPECT_EQ(desktop.messages.back().answer, "cancel");
    std::filesystem::remove("next.mvi");
    frame->document.OnSaveplus();
    EXPECT_FALSE(std::filesystem::exists("next.mvi")) << "not by the incremental save";
    interface->MarkDirty();
    Level().movie_name = data.folder / "gone/a.mvi";
    desktop.answers = {"yes"};
    frame->document.OnFileNew();
    EXPECT_EQ(Level().GetEntityCount(), 3) << "a movie that could not be saved is not thrown away";
}

TEST_F(MovieCommands, TimesOfPaths) {
    Command("OnMovieComputetime");
    EXPECT_EQ(LastBox(), "Total time for selected path is 0.000000 seconds.");
    SelectEntity(Level(), *camera);
    Command("OnMovieComputetime");
    EXPECT_EQ(LastBox(), "Total time for selected path is 3.000000 seconds.");
    interface->settings.full_undo = true;
    AddPoint(Level(), *camera, true, {0, 0, 0});
    Entity& target = AddPoint(Level(), *camera, true, {600, 0, 0});
    Level().ClearSelection();
    SelectEntity(Level(), target);
    Command("OnMovieAligntimeofpoints");
    const uint32_t id = target.GetObjectID();
    EXPECT_FLOAT_EQ(Level().GetEntityFromID(id)->FloatParameter("speed"), 200);
    Command("OnEditUndo");
    EXPECT_EQ(Level().GetEntityFromID(id)->FloatParameter("speed"), 0);
}

TEST_F(MovieCommands, TheTracklistOpensWithItsWindow) {
    Command("OnToolsTrackedit"); // without a window it closes
    int shown = 0;
    frame->show_tracks = [&](CTrackDlg& tracks) {
        EXPECT_EQ(tracks.title, "Tracklist - Untitled");
        tracks.SetTrackName("b.trk");
        ++shown;
    };
    Command("OnToolsTrackedit");
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(interface->m_last_track_name, "b.trk");
}

TEST_F(MovieCommands, ThePlayerGoesOnWhenIdle) {
    frame->OnIdle();
    EXPECT_EQ(interface->anim_time, 0);
    Command("OnMoviePlay");
    interface->last_tick -= 2000;
    frame->OnIdle();
    EXPECT_GE(interface->anim_time, 2);
    Command("OnMovieStop");
    EXPECT_EQ(interface->anim_time, 0);
}
