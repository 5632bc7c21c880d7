// Files are written and copied whole or not at all, on disks that fail, fill up and have been written to before.
#include "foundation/AtomicFile.h"
#include "foundation/TempFolder.h"
#include "foundation/WholeFile.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

TEST(AtomicFile, AppearsWholeOrNotAtAll) {
    const TempFolder folder;
    const std::string target = folder / "level.msp";
    WriteBytes(target, "old");
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
    {
        AtomicFile abandoned(target);
        EXPECT_TRUE(abandoned.Write("half", 4));
    }
    EXPECT_EQ(ReadBytes(target), "old");
    {
        AtomicFile file(target);
        EXPECT_TRUE(file.Write("new ", 4) && file.Write("text", 4));
        EXPECT_EQ(ReadBytes(target), "old");
        EXPECT_TRUE(file.Commit());
        EXPECT_FALSE(file.Write("late", 4));
        EXPECT_FALSE(file.Commit());
    }
    EXPECT_EQ(ReadBytes(target), "new text");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(EntriesIn(folder.Path()), 1u) << "nothing is left beside it";
}

TEST(AtomicFile, RefusesAndFollowsLinks) {
    const TempFolder folder;
    AtomicFile nowhere(folder / "missing/file");
    EXPECT_FALSE(nowhere.IsOpen());
    EXPECT_EQ(nowhere.GetError(), "No such file or directory");
    EXPECT_FALSE(nowhere.Write("x", 1));
    EXPECT_FALSE(nowhere.Commit());
    AtomicFile over_folder(folder.Path().string());
    EXPECT_EQ(over_folder.GetError(), "Is a directory");

    WriteBytes(folder / "real.txt", "old");
    fs::create_symlink("real.txt", folder / "link.txt");
    AtomicFile through(folder / "link.txt");
    EXPECT_TRUE(through.Write("new", 3) && through.Commit());
    EXPECT_TRUE(fs::is_symlink(folder / "link.txt"));
    EXPECT_EQ(ReadBytes(folder / "real.txt"), "new");

    fs::create_symlink("later.txt", folder / "dangling.txt");
    AtomicFile to_nothing(folder / "dangling.txt");
    EXPECT_TRUE(to_nothing.Write("new", 3) && to_nothing.Commit());
    EXPECT_TRUE(fs::is_symlink(folder / "dangling.txt"));
    EXPECT_EQ(ReadBytes(folder / "later.txt"), "new");
    fs::create_symlink("ring.txt", folder / "ring.txt");
    AtomicFile in_ring(folder / "ring.txt");
    EXPECT_EQ(in_ring.GetError(), "Too many levels of symbolic links");
    EXPECT_FALSE(in_ring.Commit());
    EXPECT_TRUE(fs::is_symlink(folder / "ring.txt"));

    WriteBytes(folder / "fixed.txt", "old");
    fs::permissions(folder / "fixed.txt", fs::perms::owner_read);
    AtomicFile fixed(folder / "fixed.txt");
    EXPECT_EQ(fixed.GetError(), "the file is read-only");
    EXPECT_FALSE(fixed.Commit());
    EXPECT_EQ(ReadBytes(folder / "fixed.txt"), "old");

    if (fs::exists("/dev/full")) { // a disk without room
        AtomicFile full("/dev/full");
        EXPECT_FALSE(full.IsOpen());
    }
}

// With and without files that have no name until they are whole.
class AtomicFileWays : public testing::TestWithParam<bool> {
protected:
    AtomicFileWays() { SetNamelessFiles(GetParam()); }
    ~AtomicFileWays() override {
        SetNamelessFiles(true);
        SetDiskFaults(nullptr);
    }
    const TempFolder folder;
};
INSTANTIATE_TEST_SUITE_P(, AtomicFileWays, testing::Bool());

TEST_P(AtomicFileWays, AnyStepMayFail) {
    for (const bool replaces : {false, true})
        for (int fails = 0;; ++fails) {
            fs::remove(folder / "file");
            if (replaces)
                WriteBytes(folder / "file", "old");
            int step = 0;
            SetDiskFaults([&](DiskStep) { return step++ == fails ? EIO : 0; });
            bool written = false;
            {
                AtomicFile file(folder / "file");
                written = file.Write("ne", 2) && file.Write("w", 1) && file.Commit();
                EXPECT_EQ(file.GetError(), written ? "" : "Input/output error");
            }
            SetDiskFaults(nullptr);
            EXPECT_EQ(written, step <= fails) << "step " << fails;
            EXPECT_EQ(ReadBytes(folder / "file"), written ? "new" : replaces ? "old" : "");
            EXPECT_EQ(EntriesIn(folder.Path()), written || replaces ? 1u : 0u) << "step " << fails;
            if (written) {
                EXPECT_GE(fails, 4) << "open, two writes, flush, and a name";
                break;
            }
        }
}

TEST_P(AtomicFileWays, LongNamesAndAFileThatComesMeanwhile) {
    const std::string long_name(255, 'n');
    for (int turn = 0; turn < 2; ++turn) {
        AtomicFile file(folder / long_name);
        EXPECT_TRUE(file.Write("text", 4) && file.Commit()) << file.GetError();
        EXPECT_EQ(ReadBytes(folder / long_name), "text");
    }
    AtomicFile file(folder / "late");
    WriteBytes(folder / "late", "of another program");
    EXPECT_TRUE(file.Write("text", 4) && file.Commit()) << file.GetError();
    EXPECT_EQ(ReadBytes(folder / "late"), "text");
    EXPECT_EQ(EntriesIn(folder.Path()), 2u);
}

TEST_P(AtomicFileWays, WhatKilledWritersLeftGoesAndWhatLivingOnesWriteStays) {
    const std::string left_over = folder / ".marrowstead-0123456789abcdef.tmp", young = folder / ".marrowstead-1.tmp",
                      owned = folder / ".marrowstead-2.tmp", foreign = folder / "notes.tmp";
    for (const std::string& name : {left_over, young, owned, foreign}) {
        WriteBytes(name, "half");
        if (name != young)
            fs::last_write_time(name, fs::file_time_type::clock::now() - std::chrono::hours(1));
    }
    const int owner = open(owned.c_str(), O_RDONLY);
    ASSERT_EQ(flock(owner, LOCK_EX), 0);
    AtomicFile file(folder / "file");
    EXPECT_TRUE(file.Commit());
    close(owner);
    EXPECT_FALSE(fs::exists(left_over));
    EXPECT_TRUE(fs::exists(young) && fs::exists(owned) && fs::exists(foreign));
}

// "level.msp.tmp123-0" was the name under which earlier versions wrote level.msp.
TEST_P(AtomicFileWays, WhatKilledWritersOfEarlierVersionsLeftGoesWithTheNextFileOfThatName) {
    const pid_t dead = fork(); // an own child that has ended: a number that no process bears
    if (dead == 0)
        _exit(0);
    ASSERT_EQ(waitpid(dead, nullptr, 0), dead);
    const std::string gone = std::to_string(dead), alive = std::to_string(getpid());
    const std::string name = "level.msp";
    const std::string left_over[] = {name + ".tmp" + gone + "-0", name + ".tmp" + gone + "-17"};
    const std::string kept[] = {name + ".tmp" + alive + "-0",
                                "other.msp.tmp" + gone + "-0",
                                name + ".tmp" + gone,
                                name + ".tmp" + gone + "-",
                                name + ".tmp" + gone + "-0a",
                                name + ".tmp-0",
                                name + ".tmp9999999999999-0",
                                name + ".tmp0-0",
                                name + ".bkp"};
    const auto write = [this](const std::string& file) {
        WriteBytes(folder / file, "half");
        fs::last_write_time(folder / file, fs::file_time_type::clock::now() - std::chrono::hours(1));
    };
    for (const std::string& file : left_over)
        write(file);
    for (const std::string& file : kept)
        write(file);
    EXPECT_TRUE(AtomicFile(folder / "another").Commit());
    EXPECT_TRUE(fs::exists(folder / left_over[0])) << "it is of another file";
    EXPECT_TRUE(AtomicFile(folder / name).Commit());
    for (const std::string& file : left_over)
        EXPECT_FALSE(fs::exists(folder / file)) << file;
    for (const std::string& file : kept)
        EXPECT_TRUE(fs::exists(folder / file)) << file;
}

TEST_P(AtomicFileWays, AFileTakesThePlaceOfAnotherUnderASecondName) {
    for (const int fails : {0, 1, 2}) {
        WriteBytes(folder / "level", "new");
        WriteBytes(folder / "level.bkp", "old");
        int step = 0;
        SetDiskFaults([&](DiskStep) { return step++ == fails ? EPERM : 0; });
        const bool linked = LinkInPlaceOf(folder / "level", folder / "level.bkp");
        SetDiskFaults(nullptr);
        EXPECT_EQ(linked, fails == 2);
        EXPECT_EQ(ReadBytes(folder / "level.bkp"), linked ? "new" : "old");
        EXPECT_EQ(ReadBytes(folder / "level"), "new");
        EXPECT_EQ(EntriesIn(folder.Path()), 2u);
    }
}

TEST(WholeFile, ACopyIsWholeOrTheOldOneStays) {
    const TempFolder folder;
    WriteBytes(folder / "from", "new");
    fs::permissions(folder / "from", fs::perms::owner_read | fs::perms::owner_write);
    WriteBytes(folder / "to", "old");
    std::string error;
    SetDiskFaults([](DiskStep step) { return step == DiskStep::Write ? ENOSPC : 0; });
    EXPECT_FALSE(CopyWholeFile(folder / "from", folder / "to", error));
    SetDiskFaults(nullptr);
    EXPECT_EQ(error, "\"" + (folder / "to") + "\" cannot be written: No space left on device");
    EXPECT_EQ(ReadBytes(folder / "to"), "old");
    EXPECT_TRUE(CopyWholeFile(folder / "from", folder / "to", error));
    EXPECT_EQ(ReadBytes(folder / "to"), "new");
    EXPECT_TRUE(CopyWholeFile(folder / "from", folder / "second", error));
    EXPECT_EQ(fs::status(folder / "second").permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_FALSE(CopyWholeFile(folder.Path(), folder / "to", error));
    EXPECT_EQ(error, "\"" + folder.Path().string() + "\" cannot be read: Is a directory");
}
