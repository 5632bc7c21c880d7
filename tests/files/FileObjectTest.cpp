#include "files/FileObject.h"
#include "files/Bytes.h"
#include "files/FileFind.h"
#include "files/FileLibrary.h"
#include "files/LibraryWriter.h"
#include "foundation/TempFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

std::vector<uint8_t> Text(std::string_view text) { return {text.begin(), text.end()}; }

} // namespace

// The game's data root: loose files in the current folder, one library over them.
class FileObjects : public testing::Test {
protected:
    void SetUp() override {
        LibraryWriter writer;
        writer.Add("Scripts\\both.txt", Text("library"));
        writer.Add("Scripts\\locked.txt", Text("library"), true);
        writer.Add("Scripts\\Deep\\Down\\packed.txt", Text("packed"));
        writer.Add("Scripts\\Materials\\m.mtl", Text("m"));
        std::string error;
        ASSERT_TRUE(writer.Write("x.fs", false, error)) << error;
        ASSERT_EQ(FileObject::AddFileLibrary("x.fs", 0), FL_OK);
        WriteBytes("scripts/both.txt", "disk");
        WriteBytes("scripts/locked.txt", "disk");
        WriteBytes("scripts/loose.txt", "loose");
        WriteBytes("scripts/materials/disk.mtl", "d");
        WriteBytes("scripts/deep/x", "x");
        WriteBytes("scripts/Own/y", "y");
    }
    void TearDown() override { FileObject::ResetFileLibrary(); }

    static std::string Read(const char* path, bool& in_library) {
        FileObject file(path, FO_Open);
        in_library = file.IsInLibrary();
        std::vector<uint8_t> data;
        return file.ReadAll(data) ? std::string(data.begin(), data.end()) : "invalid: " + file.GetError();
    }
    static std::vector<std::string> Find(const char* directory, const char* pattern, FFOSearchType type, bool library) {
        std::vector<std::string> names;
        FileFindObject find(directory, pattern, type, library);
        EXPECT_EQ(find.GetName(), nullptr);
        while (const FFOInfo* info = find.FindNext()) {
            EXPECT_STREQ(find.GetName(), info->name.c_str());
            EXPECT_EQ(find.GetFileTime() == FileTime(), find.IsInFilelibrary());
            names.push_back((find.IsInFilelibrary() ? "*" : "") + info->name);
        }
        EXPECT_EQ(find.GetName(), nullptr);
        EXPECT_EQ(find.FindNext(), nullptr);
        return names;
    }

    TempFolder folder;
    CurrentFolder here{folder.Path()};
};

TEST_F(FileObjects, ChooseBetweenDiskAndLibrary) {
    struct Case {
        const char *path, *text;
        bool in_library;
    };
    const Case cases[] = {
        {"SCRIPTS\\Both.txt", "disk", false},
        {"Scripts\\locked.txt", "library", true},
        {"scripts/LOOSE.TXT", "loose", false},
        {"scripts\\deep\\down\\packed.txt", "packed", true},
        {"scripts\\none.txt", "invalid: No such file or directory", false},
        {"scripts", "invalid: Is a directory", false},
    };
    for (const Case& c : cases) {
        bool in_library = false;
        EXPECT_EQ(Read(c.path, in_library), c.text) << c.path;
        EXPECT_EQ(in_library, c.in_library) << c.path;
        EXPECT_EQ(FileObject::FileExists(c.path), std::string_view(c.text).find("invalid") != 0) << c.path;
    }
    mkfifo("pipe", 0600);
    FileObject pipe("pipe", FO_Open);
    EXPECT_FALSE(pipe.IsValid()) << "and it does not wait for a writer";
    EXPECT_EQ(pipe.GetError(), "not a regular file");
}

TEST_F(FileObjects, UniqueHandles) {
    FileObject locked("Scripts\\locked.txt", FO_OpenWithUniqueHandle);
    ASSERT_TRUE(locked.IsValid());
    EXPECT_FALSE(locked.IsInLibrary());
    EXPECT_EQ(locked.GetFileSize(), 7u);
    char bytes[8] = {};
    EXPECT_EQ(locked.Read(bytes, 7), 0) << "the caller reads its handle itself";
    EXPECT_EQ(std::fread(bytes, 1, 7, locked.GetFileHandle()), 7u);
    EXPECT_STREQ(bytes, "library");
    FileObject both("Scripts\\both.txt", FO_OpenWithUniqueHandle);
    EXPECT_EQ(both.GetFileSize(), 4u);
}

TEST_F(FileObjects, ReadSeekAndWrite) {
    FileObject file("scripts\\loose.txt", FO_Open);
    char bytes[9] = {};
    EXPECT_EQ(file.Seek(-3, FOPM_End), 2u);
    EXPECT_EQ(file.Read(bytes, 9), 3);
    EXPECT_STREQ(bytes, "ose");
    EXPECT_EQ(file.Seek(1, FOPM_Start), 1u);
    EXPECT_EQ(file.Seek(1, FOPM_Current), 2u);
    EXPECT_EQ(file.Seek(0, static_cast<FOPositionMethod>(7)), 0xFFFFFFFFu);
    EXPECT_EQ(file.Write("x", 1), 0);
    FileTime time;
    EXPECT_TRUE(file.GetFileTime(time));
    EXPECT_GT(time.high, 0x01C00000u) << "after the year 2000";
    EXPECT_TRUE(FileObject("scripts\\locked.txt", FO_Open).GetFileTime(time));
    EXPECT_EQ(time, (FileTime{0x4444, 0x4444}));
    EXPECT_EQ(FileTime::FromUnix(0, 0), (FileTime{0xD53E8000, 0x019DB1DE})); // 1970 in ticks since 1601

    FileObject created("Scripts\\NEW.txt", FO_Create);
    EXPECT_EQ(created.Write("abc", 3), 3);
    EXPECT_EQ(created.Read(bytes, 3), 0);
    EXPECT_TRUE(created.Close());
    EXPECT_EQ(created.Write("abc", 3), 0);
    EXPECT_EQ(ReadBytes("scripts/NEW.txt"), "abc");
    FileObject nowhere("no\\folder\\x", FO_Create);
    EXPECT_FALSE(nowhere.IsValid());
    EXPECT_EQ(nowhere.GetError(), "No such file or directory");
}

TEST_F(FileObjects, Lines) {
    const std::string long_line(40000, 'x');
    WriteBytes("lines", " \t first \t\r\n\n   \nsecond\n" + long_line + "\nlast");
    struct Case {
        RLTruncateFlags flags;
        std::vector<std::string> lines;
    };
    const Case cases[] = {
        {RLTF_TruncateEnd, {" \t first", "", "", "second", long_line, "last"}},
        {RLTF_TruncateAll, {"first", "", "", "second", long_line, "last"}},
        {RLTF_TruncateNothing, {" \t first \t\r\n", "\n", "   \n", "second\n", long_line + "\n", "last"}},
    };
    for (const Case& c : cases) {
        FileObject file("lines", FO_Open);
        std::string line;
        for (const std::string& expected : c.lines) {
            EXPECT_EQ(file.ReadLine(line, c.flags), static_cast<int>(expected.size()));
            EXPECT_EQ(line, expected);
        }
        EXPECT_EQ(file.ReadLine(line, c.flags), -1);
        EXPECT_EQ(file.ReadLine(line, c.flags), -1);
    }
    WriteBytes("lines", "abcdefg\nh");
    FileObject file("lines", FO_Open);
    std::string line;
    EXPECT_EQ(file.ReadLine(line, RLTF_TruncateEnd, 5), 5);
    EXPECT_EQ(line, "abcde");
    EXPECT_EQ(file.ReadLine(line, RLTF_TruncateEnd, 5), 2) << "the rest is the next line";
    EXPECT_EQ(file.ReadLine(line, RLTF_TruncateEnd, 5), 1);
}

TEST_F(FileObjects, SoundsUnderEitherEnding) {
    WriteBytes("a.mp3", "");
    WriteBytes("b.wav", "");
    struct Case {
        const char *asked, *name;
        bool exists;
    };
    const Case cases[] = {
        {"a.WAV", "a.mp3", true},  {"b.mp3", "b.wav", true}, {"b.ogg", "b.wav", true},
        {"c.wav", "c.mp3", false}, {"x", "x", false},
    };
    for (const Case& c : cases) {
        std::string name = c.asked;
        EXPECT_EQ(FileObject::FileSoundExists(name), c.exists) << c.asked;
        EXPECT_EQ(name, c.name);
    }
}

TEST_F(FileObjects, Searches) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(Find("Scripts", "*.txt", FFO_FileFind, true), (Names{"*both.txt", "*locked.txt", "loose.txt"}));
    EXPECT_EQ(Find("Scripts", "*.txt", FFO_FileFind, false), (Names{"both.txt", "locked.txt", "loose.txt"}));
    EXPECT_EQ(Find("Scripts", "l*", FFO_FileFind, true), (Names{"*locked.txt", "loose.txt"}));
    EXPECT_EQ(Find("Scripts", "*", FFO_DirectoryFind, true), (Names{"*Deep", "*Materials", "Own"}));
    EXPECT_EQ(Find("Scripts", "*.*", FFO_DirectoryFind, false), (Names{"Own", "deep", "materials"}));
    EXPECT_EQ(Find("scripts\\materials", "*", FFO_FileFind, true), (Names{"*m.mtl", "disk.mtl"}));
    EXPECT_EQ(Find("absent", "*", FFO_FileFind, true), Names{});
}
