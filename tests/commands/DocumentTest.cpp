// The document commands: names, questions, recent files, decals, and work that survives failures and crashes.
#include <cerrno>
#include <chrono>

#include "commands/Recovery.h"
#include "commands/ScriptData.h"
#include "drawing/LineColors.h"
#include "editor/LineColorStore.h"
#include "foundation/AtomicFile.h"
#include "foundation/Paths.h"
#include "foundation/Settings.h"
#include "pages/TrackDlg.h"

// Starts while the first one asks.
class SecondProgram : public HeadlessDesktop {
public:
    using HeadlessDesktop::HeadlessDesktop;
    MessageAnswer MessageBox(const std::string&, const std::string&, MessageButtons) override {
        found = RecoveryFile::FindLeftOver().size();
        return MessageAnswer::Cancel;
    }
    std::optional<size_t> found;
};

TEST(IncrementalSave, Names) {
    const std::pair<const char*, const char*> cases[] = {{"level.msp", "level_0000.msp"},
                                                         {"level_0000.msp", "level_0001.msp"},
                                                         {"level_0099.msp", "level_0100.msp"},
                                                         {"a7.msp", "a8.msp"},
                                                         {"a19.msp", "a20.msp"},
                                                         {"level", "level_0000.msp"},
                                                         {"v1.2.msp", "v1.3.msp"},
                                                         {"a9.msp", ""},
                                                         {"99.msp", ""},
                                                         {".msp", ""}};
    for (const auto& [name, next] : cases)
        EXPECT_EQ(IncrementedName(name), next) << name;
}

TEST_F(ScriptData, SavingOpeningAndTheIncrementalSave) {
    ASSERT_EQ(Run("drag top 256 256 300 200\nsave level.msp\n"), "");
    EXPECT_FALSE(interface->project_file_need_save);
    EXPECT_EQ(interface->title, "Marrowstead 2000 - level.msp ");
    ASSERT_EQ(Run("drag front 256 256 300 200\nkey Ctrl+Shift+S\n"), "");
    EXPECT_TRUE(std::filesystem::exists("level_0000.msp"));
    EXPECT_EQ(interface->project_file_name, "level_0000.msp");
    WriteBytes("level_0001.msp", "another state");
    ASSERT_EQ(Run("key Ctrl+Shift+S\n"), "");
    EXPECT_EQ(interface->project_file_name, "level_0002.msp");
    EXPECT_EQ(ReadBytes("level_0001.msp"), "another state");
    std::filesystem::remove("level_0002.msp");
    ASSERT_EQ(Run("new\n"), "");
    EXPECT_EQ(interface->title, "Marrowstead 2000 - Untitled");
    EXPECT_EQ(interface->editor_state, ES_IDLE);
    ASSERT_EQ(Run("open level.msp\n"), "");
    EXPECT_EQ(Level().GetBrushCount(), 1) << "the first file was not touched by the incremental save";
    ASSERT_EQ(frame->document.RecentFiles().size(), 3u);
    EXPECT_NE(frame->document.RecentFiles()[0].find("level.msp"), std::string::npos);
    EXPECT_EQ(interface->View(VIEW_TOP).window_rect.left, VIEW_SIDE) << "a stored window is not that of now";
    interface->project_file_name = "x9.msp";
    ASSERT_EQ(Run("key Ctrl+Shift+S\n"), "");
    EXPECT_EQ(desktop.messages.back().text, "Not enough digits available in project name !\n\nProject was not saved.");
    EXPECT_FALSE(std::filesystem::exists("x10.msp"));
}

TEST_F(ScriptData, OpeningAndCompilingAreNoWorkToSave) {
    ASSERT_EQ(Run("drag top 256 256 300 200\nsave level.msp\nnew\nopen level.msp\n"), "");
    EXPECT_FALSE(interface->project_file_need_save);
    ASSERT_EQ(Run("command OnCompile\n"), "");
    EXPECT_EQ(frame->last_compile, CompileOutcome::Written);
    EXPECT_EQ(interface->title, "Marrowstead 2000 - level.msp ");
    EXPECT_TRUE(frame->OnClose());
    EXPECT_TRUE(desktop.messages.empty()) << "nothing was asked";
}

TEST_F(ScriptData, SavingAsksForANameOnlyWithoutOne) {
    ASSERT_EQ(Run("drag top 256 256 300 200\nkey Ctrl+S\n"), "");
    EXPECT_TRUE(interface->project_file_need_save) << "a cancelled dialog saves nothing";
    desktop.answers.push_back(data.folder / "named.msp");
    ASSERT_EQ(Run("key Ctrl+S\ndrag front 256 256 300 200\nkey Ctrl+S\n"), "");
    EXPECT_FALSE(interface->project_file_need_save);
    EXPECT_EQ(desktop.messages.size(), 2u) << "the second time it has a name";
}

// Else each new level would be compiled over the one before.
TEST_F(ScriptData, AFirstSaveNamesTheMapFileOfALevelThatHasOnlyTheDefault) {
    EXPECT_EQ(Level().map_file, DEFAULT_MAP_FILE);
    struct Case {
        std::string before, line, file, after;
    };
    const Case cases[] = {{"Default", "command OnFileSave\n", "abbey.west.msp", "abbey.west"},
                          {"Default", "command OnFileSaveAs\n", "abbey.msp", "abbey"},
                          {"Default", "command OnSaveplus\n", "tower.msp", "tower"},
                          {"Default", "command OnFileSave\n", ".msp", "Default"},
                          {"choir", "command OnFileSave\n", "nave.msp", "choir"},
                          {"Default", "save word.msp\ncommand OnFileSaveAs\n", "second.msp", "Default"}};
    for (const Case& c : cases) {
        ASSERT_EQ(Run("new\ndrag top 256 256 300 200\n"), "");
        Level().map_file = c.before;
        desktop.answers = {data.folder / c.file};
        ASSERT_EQ(Run(c.line), "");
        EXPECT_EQ(Level().map_file, c.after) << c.line << c.file;
        ASSERT_EQ(Run("new\nopen " + c.file + "\n"), "");
        EXPECT_EQ(Level().map_file, c.after) << "in the file";
    }
}

TEST_F(ScriptData, ALineThatCouldNotSaveEndsItsScript) {
    ASSERT_EQ(Run("save level.msp\n"), "");
    std::filesystem::remove("level.msp");
    std::filesystem::create_directory("level.msp");
    const std::pair<const char*, const char*> cases[] = {{"save", "not all was saved"},
                                                         {"save level.msp", "the project was not saved"},
                                                         {"command OnFileSave", "not all was saved"},
                                                         {"key Ctrl+S", "not all was saved"}};
    for (const auto& [line, failure] : cases)
        EXPECT_EQ(Run(std::string("drag top 256 256 300 200\n") + line + "\n"), std::string("line 2: ") + failure)
            << line;
    EXPECT_EQ(Run("command OnFileSaveAs\n"), "") << "no name was given: that is no failure";
    desktop.answers = {"yes"};
    EXPECT_EQ(Run("command OnFileNew\n"), "line 1: not all was saved");
    Level().movie_name = "level.msp";
    EXPECT_EQ(Run("command OnFileSavemovie\n"), "line 1: not all was saved");
}

// Every kind of file that a user names: beside another one whose name differs in the case of its letters.
TEST_F(ScriptData, AFileIsWrittenUnderTheNameThatTheUserTyped) {
    ASSERT_EQ(Run("drag top 256 256 300 200\n"), "");
    for (const char* name : {"Level.msp", "Level.pfb", "Level.wrl", "Level.mvi", "Level.trk", "Level.png"})
        WriteBytes(name, "another one");
    std::string error;
    ASSERT_EQ(Run("save level.msp\nprefab save level.pfb words\nexport level.wrl\npicture top level.png\n"), "");
    EXPECT_EQ(interface->SaveMovie(data.folder / "level.mvi", error), MOVIE_OK) << error;
    CTrackDlg tracks(*interface);
    tracks.m_track_name = data.folder / "Level.trk";
    desktop.answers = {data.folder / "level.trk"};
    tracks.OnSaveTrackAs();
    for (const char* ending : {".msp", ".pfb", ".wrl", ".mvi", ".trk", ".png"}) {
        EXPECT_EQ(ReadBytes("Level" + std::string(ending)), "another one") << ending;
        EXPECT_TRUE(std::filesystem::exists("level" + std::string(ending))) << ending;
    }
}

TEST_F(ScriptData, AFailedSaveKeepsTheOldFileAndTheWork) {
    ASSERT_EQ(Run("drag top 256 256 300 200\nsave level.msp\nkey Esc\ndrag front 256 256 300 200\n"), "");
    const std::string before = ReadBytes("level.msp");
    interface->project_file_path = data.folder / "gone";
    desktop.answers.push_back("yes"); // save? - which fails
    frame->document.OnFileNew();
    EXPECT_EQ(Level().GetBrushCount(), 2) << "the level was thrown away after a failed save";
    EXPECT_EQ(ReadBytes("level.msp"), before);
    EXPECT_NE(interface->changes, interface->saved_changes);
    EXPECT_EQ(interface->title.back(), '*');
    const size_t asked = desktop.messages.size();
    EXPECT_FALSE(frame->OnClose()) << "the second try asks again";
    EXPECT_EQ(desktop.messages.size(), asked + 1);
}

// In place, and by a file in its place; also after a save of our own.
TEST_F(ScriptData, ASaveAsksBeforeItWritesOverTheWorkOfAnotherProgram) {
    ASSERT_EQ(Run("drag top 256 256 300 200\nsave level.msp\nopen level.msp\n"), "");
    const std::function<void()> changes[] = {
        [] { WriteBytes("level.msp", "another file"); },
        [] { std::ofstream("level.msp", std::ios::in | std::ios::out) << "in place"; }};
    for (const auto& change : changes) {
        change();
        const std::string theirs = ReadBytes("level.msp");
        interface->MarkDirty();
        const size_t asked = desktop.messages.size();
        desktop.answers = {"no"};
        EXPECT_EQ(Run("save\n"), "line 1: not all was saved");
        ASSERT_EQ(desktop.messages.size(), asked + 1);
        EXPECT_NE(desktop.messages.back().text.find("Another program has changed \"level.msp\""), std::string::npos);
        EXPECT_EQ(ReadBytes("level.msp"), theirs);
        EXPECT_TRUE(interface->project_file_need_save);
        desktop.answers = {"yes"};
        frame->document.OnFileSave();
        EXPECT_NE(ReadBytes("level.msp"), theirs);
        interface->MarkDirty();
        frame->document.OnFileSave();
        EXPECT_EQ(desktop.messages.size(), asked + 2) << "our own save is no change";
    }
    std::filesystem::remove("level.msp");
    const size_t asked = desktop.messages.size();
    frame->document.OnFileSave();
    EXPECT_EQ(desktop.messages.size(), asked) << "nothing is lost";
    EXPECT_TRUE(std::filesystem::exists("level.msp"));
}

TEST_F(ScriptData, AReadOnlyProjectOrWorldIsNotWrittenOver) {
    ASSERT_EQ(Run("drag top 256 256 300 200\nsave level.msp\ncommand OnCompile\n"), "");
    const std::string world = interface->TargetFile(), real_world = RealPath(world).string();
    WriteBytes("level.msp.bkp", "the last backup");
    interface->settings.create_prj_backup = true;
    for (const std::string& file : {std::string("level.msp"), real_world})
        std::filesystem::permissions(file, std::filesystem::perms::owner_read);
    const std::string project_before = ReadBytes("level.msp"), world_before = ReadBytes(real_world);
    ASSERT_EQ(Run("key Esc\ndrag front 256 256 300 200\n"), "");
    frame->document.OnFileSave();
    EXPECT_EQ(ReadBytes("level.msp"), project_before);
    EXPECT_EQ(ReadBytes("level.msp.bkp"), "the last backup");
    EXPECT_TRUE(interface->project_file_need_save);
    for (const bool visibility : {false, true}) {
        frame->CompileEntities(visibility);
        EXPECT_EQ(frame->last_compile, CompileOutcome::NotWritten);
        EXPECT_NE(desktop.messages.back().text.find("is read only"), std::string::npos);
    }
    EXPECT_EQ(ReadBytes(real_world), world_before);
}

TEST_F(ScriptData, ANoBeforeACancelledOpenIsNoLicenceToLoseTheWork) {
    ASSERT_EQ(Run("save level.msp\ndrag top 256 256 300 200\n"), "");
    desktop.answers = {"no"}; // and no file is chosen
    frame->document.OnFileOpen();
    EXPECT_EQ(Level().GetBrushCount(), 1);
    EXPECT_EQ(interface->title, "Marrowstead 2000 - level.msp *");
    EXPECT_FALSE(frame->OnClose());
    desktop.answers = {"no"};
    EXPECT_TRUE(frame->OnClose());
}

// As when the editor runs in another data folder: what it could not read would be gone with the first save.
TEST_F(ScriptData, TheSafetyCopyOfACompileIsNoOtherProgram) {
    ASSERT_EQ(Run("drag top 256 256 300 200\nsave __autosave__.msp\nopen __autosave__.msp\n"), "");
    ASSERT_TRUE(interface->settings.bkp_before_compile);
    ASSERT_EQ(Run("compile\nkey Esc\ndrag front 256 256 300 200\n"), "");
    const size_t boxes = desktop.messages.size();
    EXPECT_EQ(Run("command OnFileSave\n"), "");
    EXPECT_EQ(desktop.messages.size(), boxes);
}

TEST_F(ScriptData, WhatOpeningLeftOutIsNotSavedAwayUnasked) {
    ASSERT_EQ(Run("drag top 256 256 300 200\nmaterial wall brick\napply\nsave level.msp\n"), "");
    const std::string before = ReadBytes("level.msp");
    std::filesystem::remove("Scripts/Materials/wall/brick.mtl");
    std::filesystem::remove("Textures/wall/brick.tga");
    interface->materials.ParseTextures();
    ASSERT_EQ(Run("open level.msp\n"), "");
    EXPECT_EQ(Level().brush[0]->surfaces[0].texture.index, 0);
    desktop.answers = {"no"};
    EXPECT_EQ(Run("save\n"), "line 1: not all was saved");
    EXPECT_EQ(ReadBytes("level.msp"), before);
    EXPECT_NE(desktop.messages.back().text.find("Left out: a material."), std::string::npos);
    desktop.answers = {"yes"};
    frame->document.OnFileSave();
    EXPECT_NE(ReadBytes("level.msp"), before);
    const size_t asked = desktop.messages.size();
    frame->document.OnFileSave();
    EXPECT_EQ(desktop.messages.size(), asked) << "once is enough";
}

TEST_F(ScriptData, WhatCannotBeOpenedIsToldByTheNameThatWasGiven) {
    for (const std::string folder : {"/tmp", "/", "Marrowstead\\Projects"})
        EXPECT_EQ(Run("open " + folder + "\n").find("line 1: cannot open \"" + folder + "\": "), 0u)
            << Run("open " + folder + "\n");
    ASSERT_EQ(Run("drag top 256 256 300 200\nsave root.msp\nnew\n"), "");
    std::string error;
    EXPECT_TRUE(frame->document.Open("root.msp", error)) << "a project in the data root itself: " << error;
    EXPECT_EQ(interface->ProjectFullName(), "root.msp");
}

TEST_F(ScriptData, WhatAnotherProgramStoresIsNotUndone) {
    RegistryClass other;
    ASSERT_TRUE(other.OpenKeyDirectory(SETTINGS_KEY));
    interface->settings.voxel_size = 64;
    EXPECT_TRUE(interface->StoreSettings());
    const int theirs = 128;
    ASSERT_TRUE(other.SetKeyValue("VoxelSize", &theirs) &&
                other.SetKeyValue("LineColors", "Camera=102030 Link=112233"));
    interface->settings.rotation_angle = 7;
    EXPECT_TRUE(interface->StoreSettings());
    EXPECT_EQ(other.GetInteger("VoxelSize", 0), theirs);
    EXPECT_EQ(other.GetInteger("RotationAngle", 0), 7);

    SetLineColor(LineColor::Link, 0x445566);
    EXPECT_TRUE(WriteLineColors());
    EXPECT_EQ(other.GetText("LineColors", ""), "Link=445566 Camera=102030");
    EXPECT_NE(ColorOf(LineColor::Camera), 0xFF102030u) << "shown from the next start on";
    ResetLineColors();
    EXPECT_TRUE(WriteLineColors());
    EXPECT_EQ(other.GetText("LineColors", ""), "Camera=102030");

    ASSERT_EQ(Run("save ours.msp\n"), "");
    const std::string ours = frame->document.RecentFiles().at(0);
    const std::string gone = data.folder / "theirs.msp";
    ASSERT_TRUE(other.SetKeyValue("RecentFile1", gone.c_str()) && other.SetKeyValue("RecentFile2", ours.c_str()));
    ASSERT_EQ(Run("save next.msp\n"), "");
    const std::vector<std::string>& recent = frame->document.RecentFiles();
    ASSERT_EQ(recent.size(), 3u);
    EXPECT_EQ(recent[1] + recent[2], gone + ours);
    EXPECT_EQ(other.GetText("RecentFile1", "") + other.GetText("RecentFile3", ""), recent[0] + ours);
    SetDiskFaults([](DiskStep) { return ENOSPC; });
    std::string error;
    EXPECT_FALSE(frame->document.Open(gone, error));
    SetDiskFaults(nullptr);
    EXPECT_EQ(recent.size(), 2u) << "the list in the settings is another matter";
}

TEST_F(ScriptData, AFileThatHasGoneLeavesTheRecentOnes) {
    ASSERT_EQ(Run("save gone.msp\nsave kept.msp\n"), "");
    const std::vector<std::string> before = frame->document.RecentFiles();
    ASSERT_EQ(before.size(), 2u);
    std::filesystem::remove("gone.msp");
    WriteBytes("kept.msp", "no project any more");
    std::string error;
    EXPECT_FALSE(frame->document.Open(before[0], error));
    EXPECT_FALSE(frame->document.Open(before[1], error));
    EXPECT_EQ(frame->document.RecentFiles(), std::vector<std::string>{before[0]}) << "a damaged one may be repaired";
    EXPECT_EQ(CMarrowstead2Doc(*interface, *pages).RecentFiles(), frame->document.RecentFiles()) << "at the next start";
}

TEST_F(ScriptData, DecalsComeFromAnotherProjectAndADamagedOneChangesNothing) {
    auto decal = std::make_unique<DecalTemplate>();
    decal->x_size = decal->y_size = 16;
    Level().AddNewDecal(std::move(decal));
    ASSERT_EQ(Run("save decals.msp\nnew\n"), "");
    frame->document.MergeDecals(data.folder / "decals.msp");
    EXPECT_EQ(Level().decal_template.size(), 1u);
    EXPECT_EQ(desktop.messages.back().text, "1 decals were successfully added.");
    WriteBytes("broken.msp", ReadBytes("decals.msp").substr(0, 100));
    frame->document.MergeDecals(data.folder / "broken.msp");
    EXPECT_EQ(Level().decal_template.size(), 1u);
}

TEST_F(ScriptData, ACopyIsKeptAgainstACrashUntilTheWorkIsSaved) {
    constexpr uint32_t SECOND = 1000, START = 5000;
    interface->settings.recovery_interval = 30;
    const std::filesystem::path folder = data.folder / "config/recovery";
    const auto copies = [&folder] {
        int count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            count += entry.path().extension() == ".msp";
        return count;
    };
    {
        RecoveryFile recovery(*interface);
        recovery.Tick(START);
        ASSERT_EQ(Run("drag top 256 256 300 200\n"), "");
        recovery.Tick(START);
        recovery.Tick(START + 29 * SECOND);
        EXPECT_EQ(copies(), 0);
        recovery.Tick(START + 30 * SECOND);
        EXPECT_EQ(copies(), 1);
        EXPECT_TRUE(interface->project_file_need_save) << "the copy is no save";
        EXPECT_TRUE(RecoveryFile::FindLeftOver().empty()) << "the run is alive";
        ASSERT_EQ(Run("save level.msp\n"), "");
        recovery.Tick(START + 31 * SECOND);
        EXPECT_EQ(copies(), 0);
        ASSERT_EQ(Run("key Esc\ndrag front 256 256 300 200\n"), "");
        EXPECT_TRUE(recovery.Write());
        // What a crash would leave behind: the files without a run that holds their lock.
        for (const char* ending : {".msp", ".json"})
            for (const auto& entry : std::filesystem::directory_iterator(folder))
                if (entry.path().extension() == ending &&
                    entry.path().filename() != "level-crashed" + std::string(ending))
                    std::filesystem::copy_file(entry.path(), folder / ("level-crashed" + std::string(ending)),
                                               std::filesystem::copy_options::skip_existing);
    }
    EXPECT_EQ(copies(), 1) << "the run that ended in order took its own copy away";
    ASSERT_EQ(RecoveryFile::FindLeftOver().size(), 1u);
    EXPECT_EQ(RecoveryFile::FindLeftOver()[0].project_name, "level.msp");

    ASSERT_EQ(Run("new\n"), "");
    RecoveryFile recovery(*interface);
    const auto told_of_age = [&](std::chrono::minutes age) {
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (entry.path().extension() == ".msp")
                std::filesystem::last_write_time(entry, std::filesystem::file_time_type::clock::now() - age);
        recovery.Offer(frame->document); // cancelled: offered again
        const std::string& text = desktop.messages.back().text;
        EXPECT_NE(text.find("\"No\" deletes the copy"), std::string::npos);
        const size_t from = text.find("was kept ");
        return text.substr(from, text.find(" ago") - from);
    };
    using std::chrono::minutes;
    for (const auto& [age, told] : {std::pair{minutes(0), "less than a minute"}, std::pair{minutes(1), "1 minute"},
                                    std::pair{minutes(59), "59 minutes"}, std::pair{minutes(185), "3 hours"},
                                    std::pair{minutes(49 * 60), "2 days"}})
        EXPECT_EQ(told_of_age(age), std::string("was kept ") + told);
    EXPECT_EQ(Level().GetBrushCount(), 0);
    ASSERT_EQ(RecoveryFile::FindLeftOver().size(), 1u);
    SecondProgram second;
    SetDesktop(&second);
    recovery.Offer(frame->document);
    SetDesktop(&desktop);
    EXPECT_EQ(second.found, 0u) << "while the first one asks";
    desktop.answers.push_back("yes");
    recovery.Offer(frame->document);
    EXPECT_EQ(Level().GetBrushCount(), 2);
    EXPECT_TRUE(interface->project_file_need_save && interface->project_file_has_name);
    EXPECT_EQ(interface->project_file_name, "level.msp");
    EXPECT_TRUE(RecoveryFile::FindLeftOver().empty()) << "it is this run's copy now";

    // Locks and notes without a copy go; a note that cannot be read stands in nobody's way.
    WriteBytes(folder / "level-1.lock", "");
    WriteBytes(folder / "level-2.json", "{}");
    WriteBytes(folder / "level-3.msp", "copy");
    std::filesystem::create_directories(folder / "level-3.json/inside");
    ASSERT_EQ(RecoveryFile::FindLeftOver().size(), 1u);
    EXPECT_FALSE(std::filesystem::exists(folder / "level-1.lock") || std::filesystem::exists(folder / "level-2.json"));
    std::filesystem::remove(folder / "level-3.msp");

    // A second run of the same process number, as in another container: each has files of its own.
    {
        RecoveryFile other(*interface);
        EXPECT_TRUE(other.Write());
        EXPECT_EQ(copies(), 2);
        EXPECT_TRUE(RecoveryFile::FindLeftOver().empty());
    }
    EXPECT_EQ(copies(), 1);

    ASSERT_EQ(Run("new\ndrag top 256 256 300 200\nsave nameless.msp\n"), "");
    std::string error;
    ASSERT_TRUE(frame->document.OpenCopy("nameless.msp", false, "", "", error));
    EXPECT_EQ(interface->title, "Marrowstead 2000 - Untitled") << "the copy's name is not that of the level";
    EXPECT_EQ(interface->status[PANE_COUNTS], "Brushes: 1   Entities: 0");
    EXPECT_TRUE(interface->project_file_need_save);
}
