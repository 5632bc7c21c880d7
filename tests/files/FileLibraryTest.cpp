#include "files/FileLibrary.h"
#include "files/Bytes.h"
#include "files/FileObject.h"
#include "files/LibraryWriter.h"
#include "foundation/TempFolder.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace {

using Data = std::vector<uint8_t>;

std::string WriteLibrary(const std::string& path, const std::vector<std::pair<std::string, Data>>& entries,
                         bool store = false) {
    LibraryWriter writer;
    for (const auto& [name, data] : entries)
        EXPECT_TRUE(writer.Add(name, data)) << name;
    std::string error;
    EXPECT_TRUE(writer.Write(path, store, error)) << error;
    return path;
}

// The whole entry in pieces of one size; "failed" when a read fails.
std::string ReadEntry(FileLibrary& library, const std::string& path, uint32_t piece = 1000, int buffer = 0) {
    const uint32_t handle = library.FileOpen(path, buffer);
    if (handle == FL_BAD_HANDLE)
        return "absent";
    std::string text;
    Data bytes(piece);
    uint32_t count;
    while ((count = library.FileRead(handle, bytes.data(), piece)) != 0) {
        if (count == FL_BAD_HANDLE) {
            text = "failed";
            break;
        }
        text.append(bytes.begin(), bytes.begin() + count);
    }
    library.FileClose(handle);
    return text;
}

Data Text(std::string_view text) { return {text.begin(), text.end()}; }
std::string Text(const Data& data) { return {data.begin(), data.end()}; }

// A library of one packed entry "d\x" of the given data (its block table and blocks), made by hand.
std::string OnePackedEntry(const std::string& data, uint32_t unpacked, const std::string& behind = "") {
    return data + behind + Word(24) + Word(8192) + Word(2) + Word(1) + Word(2) + Word(1) + std::string("d\0x\0", 4) +
           Word(0) + Word(static_cast<uint32_t>(data.size())) + Word(unpacked) + Short(0) + Short(2) +
           Word(static_cast<uint32_t>(data.size() + behind.size()));
}

} // namespace

TEST(FileLibrary, PathsAreCleanedBeforeLookup) {
    struct Case {
        const char *path, *directory, *file;
    };
    const Case cases[] = {
        {"Scripts/a/../b\\.\\x.mtl", "Scripts\\b", "x.mtl"},
        {"a\\b\\..\\c\\f.tga", "a\\c", "f.tga"},
        {"/a/c/f.tga", "a\\c", "f.tga"},
        {"f.tga", "", "f.tga"},
        {"\\f.tga", "", "f.tga"},
        {".\\f.tga", "", "f.tga"},
        {"a\\..\\f.tga", "", "f.tga"},
        {"a\\.\\.\\b\\f", "a\\b", "f"},
        {"..\\f", "..", "f"},
        {"a\\..\\..\\b\\f", "b", "f"},
    };
    std::string directory, file;
    for (const Case& c : cases) {
        EXPECT_TRUE(FileLibrary::CutPathAndFilename(c.path, directory, file)) << c.path;
        EXPECT_EQ(directory, c.directory) << c.path;
        EXPECT_EQ(file, c.file) << c.path;
    }
    for (const char* nothing : {"", "\\", "/", "a\\c\\", "a/"})
        EXPECT_FALSE(FileLibrary::CutPathAndFilename(nothing, directory, file)) << nothing;
}

TEST(FileLibrary, Wildcards) {
    struct Case {
        const char *mask, *name;
        bool matches;
    };
    const Case cases[] = {{"*", "", true},
                          {"*", "any.thing", true},
                          {"*.mtl", "Wall.MTL", true},
                          {"*.mtl", "wall.tga", false},
                          {"w*l*.t", "wall.t", true},
                          {"w*l*.t", "wal.tx", false},
                          {"", "", true},
                          {"", "a", false},
                          {"a?c", "abc", false},
                          {"a?c", "a?c", true},
                          {"a*b*c", "aXbXbXc", true},
                          {"**a", "ba", true},
                          {"abc", "ab", false},
                          {"*a", "ab", false}};
    for (const Case& c : cases)
        EXPECT_EQ(FileLibrary::WildcardMatchedName(c.mask, c.name), c.matches) << c.mask << " " << c.name;
    // Many stars against a long name that fails at its end only.
    EXPECT_FALSE(FileLibrary::WildcardMatchedName("*a*a*a*a*a*a*a*a*a*b", std::string(2000, 'a')));
}

TEST(FileLibrary, LaterLibrariesReplaceEntries) {
    const TempFolder folder;
    FileLibrary library;
    EXPECT_EQ(
        library.AddFileLibrary(WriteLibrary(folder / "1.fs", {{"A\\First.txt", Text("one")}, {"r", Text("1")}}), 0),
        FL_OK);
    EXPECT_EQ(library.AddFileLibrary(WriteLibrary(folder / "2.fs", {{"a\\FIRST.TXT", Text("second")}}), 0), FL_OK);
    EXPECT_EQ(ReadEntry(library, "a/first.txt"), "second");
    EXPECT_EQ(
        library.AddFileLibrary(WriteLibrary(folder / "3.fs", {{"a\\first.txt", Text("3")}, {"a\\n", Text("n")}}), 1),
        FL_OK);
    EXPECT_EQ(ReadEntry(library, "a\\first.txt"), "second") << "what is there stays";
    EXPECT_EQ(ReadEntry(library, "A\\N"), "n");
    EXPECT_EQ(ReadEntry(library, "R"), "1");
    EXPECT_EQ(ReadEntry(library, "a\\"), "absent");
    FindFileStruct search;
    ASSERT_TRUE(library.FindNext_File("a", "f*", search));
    EXPECT_EQ(search.cutName, "First.txt") << "the first spelling stays";
    EXPECT_TRUE(library.DirectoryExists("A"));
    EXPECT_FALSE(library.DirectoryExists("b"));
    library.InitFileLibraries();
    EXPECT_FALSE(library.FileExists("r"));
}

TEST(FileLibrary, ReadsOfAnySizeAndPlace) {
    const TempFolder folder;
    const Data packed = TextLikeBytes(5 * FL_BLOCK_SIZE + 321), noise = NoiseBytes(3 * FL_BLOCK_SIZE);
    Data mixed = TextLikeBytes(FL_BLOCK_SIZE); // a packed block, a raw one, and a short raw one at the end
    const Data more_noise = NoiseBytes(FL_BLOCK_SIZE + 100, 9);
    mixed.insert(mixed.end(), more_noise.begin(), more_noise.end());
    const std::vector<std::pair<std::string, Data>> entries = {
        {"p", packed}, {"n", noise}, {"m", mixed}, {"empty", {}}};
    const std::string path = WriteLibrary(folder / "a.fs", entries);
    EXPECT_LT(std::filesystem::file_size(path), packed.size() + noise.size() + mixed.size());
    FileLibrary library;
    ASSERT_EQ(library.AddFileLibrary(path, 0), FL_OK);
    for (const auto& [name, data] : entries) {
        for (const uint32_t piece : {100000u, 16384u, 5000u, 16385u})
            EXPECT_EQ(ReadEntry(library, name, piece), Text(data)) << name << " " << piece;
        EXPECT_EQ(ReadEntry(library, name, 700, 4096), Text(data)) << name << " through a buffer";
    }
    const uint32_t handle = library.FileOpen("p", 0);
    EXPECT_EQ(library.FileSize(handle), packed.size());
    Data bytes(packed.size());
    const auto read = [&](uint32_t from, uint32_t count) {
        EXPECT_EQ(library.FileSeek(handle, from, 0), from);
        EXPECT_EQ(library.FileRead(handle, bytes.data(), count), count);
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.begin() + count, packed.begin() + from)) << from << " " << count;
    };
    read(0, FL_BLOCK_SIZE);
    read(100, 50);
    read(FL_BLOCK_SIZE - 10, 3 * FL_BLOCK_SIZE + 20);
    read(2 * FL_BLOCK_SIZE, FL_BLOCK_SIZE + 1);
    EXPECT_EQ(library.FileSeek(handle, 10, 2), packed.size()) << "not beyond the end";
    EXPECT_EQ(library.FileRead(handle, bytes.data(), 1), 0u);
    EXPECT_EQ(library.FileSeek(handle, -20, 1), packed.size() - 20);
    EXPECT_EQ(library.FileSeek(handle, INT64_MIN, 1), 0u);
    EXPECT_EQ(library.FileSeek(handle, 0, 3), FL_BAD_HANDLE);
    library.FileClose(handle);
    EXPECT_EQ(library.FileRead(handle, bytes.data(), 1), FL_BAD_HANDLE);
    EXPECT_EQ(library.FileSize(handle), FL_BAD_HANDLE);
}

TEST(FileLibrary, MoreLibrariesThanOpenHandles) {
    const TempFolder folder;
    FileLibrary library(3);
    for (int i = 0; i < 9; ++i) {
        const std::string name = "f" + std::to_string(i);
        ASSERT_EQ(library.AddFileLibrary(WriteLibrary(folder / (name + ".fs"), {{name, Text(name + " text")}}), 0),
                  FL_OK);
    }
    std::vector<uint32_t> handles;
    for (int i = 0; i < 9; ++i)
        handles.push_back(library.FileOpen("f" + std::to_string(i), 0));
    for (int round = 0; round < 7; ++round) // a byte of each in turn
        for (size_t i = 0; i < 9; ++i) {
            char byte = 0;
            ASSERT_EQ(library.FileRead(handles[i], &byte, 1), 1u);
            EXPECT_EQ(byte, ("f" + std::to_string(i) + " text")[static_cast<size_t>(round)]);
        }
}

TEST(FileLibrary, BlocksMadeByHand) {
    const TempFolder folder;
    const std::string table = Word(8) + Short(7) + Short(4); // reserve is not read
    struct Case {
        const char* name;
        std::string library, expected;
    };
    const std::string raw(16384, 'r');
    const Case cases[] = {
        {"packed", OnePackedEntry(table + "\x07xyz", 3), "xyz"},
        {"decodes to less than told", OnePackedEntry(table + "\x07xyz", 4), "failed"},
        {"raw", OnePackedEntry(Word(8) + Short(0) + Short(0) + raw, 5), "rrrrr"},
        {"raw, cut short", OnePackedEntry(Word(8) + Short(0) + Short(0) + raw.substr(300), 5), "failed"},
        {"length over a block", OnePackedEntry(Word(8) + Short(0) + Short(16385) + raw + raw, 5), "failed"},
        {"offset outside", OnePackedEntry(Word(0x7FFFFFFF) + Short(0) + Short(4), 5), "failed"},
        {"no room for the table", OnePackedEntry("", 5u << 24), "failed"},
    };
    for (const Case& c : cases) {
        WriteBytes(folder / "x.fs", c.library);
        FileLibrary library;
        ASSERT_EQ(library.AddFileLibrary(folder / "x.fs", 0), FL_OK) << c.name;
        EXPECT_EQ(ReadEntry(library, "d\\x"), c.expected) << c.name;
    }
    // 17 bytes that decode to more than 16384 bytes are not possible: many blocks' worth of matches is.
    std::string bomb;
    for (int i = 0; i < 963; ++i) // 963 groups of 8 matches of 18: over 130000 bytes
        bomb += std::string(1, '\0') + std::string("\0\x0F\0\x0F\0\x0F\0\x0F\0\x0F\0\x0F\0\x0F\0\x0F", 16);
    WriteBytes(folder / "x.fs",
               OnePackedEntry(Word(8) + Short(0) + Short(static_cast<uint16_t>(bomb.size())) + bomb, 5));
    FileLibrary library;
    ASSERT_EQ(library.AddFileLibrary(folder / "x.fs", 0), FL_OK);
    EXPECT_EQ(ReadEntry(library, "d\\x"), "failed");
}

TEST(FileLibrary, SizeIsWhatReadingGivesAlsoWhereTheLengthsAreAtOdds) {
    const TempFolder folder;
    const std::string packed = Word(8) + Short(0) + Short(4) + "\x07xyz"; // 12 bytes that unpack to 3
    for (const uint32_t unpacked : {0u, 3u, 5000u})
        for (const bool keeps_flag : {true, false}) {
            std::string library_bytes = OnePackedEntry(packed, unpacked);
            if (!keeps_flag)
                library_bytes[library_bytes.size() - 6] = 0;
            WriteBytes(folder / "x.fs", library_bytes);
            FileLibrary library;
            ASSERT_EQ(library.AddFileLibrary(folder / "x.fs", 0), FL_OK);
            const uint32_t handle = library.FileOpen("d\\x", 0);
            EXPECT_EQ(library.FileSize(handle), keeps_flag ? unpacked : packed.size()) << unpacked;
            EXPECT_EQ(library.FileSize(handle), library.FileSeek(handle, 0, FOPM_End)) << unpacked << keeps_flag;
            if (!keeps_flag) {
                EXPECT_EQ(ReadEntry(library, "d\\x"), packed);
            }
        }
}

TEST(FileLibrary, DamagedLibrariesAddNothing) {
    const TempFolder folder;
    const std::string good = OnePackedEntry(Word(8) + Short(0) + Short(4) + "\x07xyz", 3);
    const auto result = [&](const std::string& bytes) {
        WriteBytes(folder / "x.fs", bytes);
        FileLibrary library;
        const FileLibraryResult added = library.AddFileLibrary(folder / "x.fs", 0);
        EXPECT_EQ(library.FileExists("d\\x"), added == FL_OK);
        if (added == FL_OK)
            ReadEntry(library, "d\\x");
        return added;
    };
    ASSERT_EQ(result(good), FL_OK);
    for (size_t length = 0; length < good.size(); ++length)
        EXPECT_NE(result(good.substr(0, length)), FL_OK) << length;
    const size_t header = good.size() - 4 - 16 - 4 - 24;
    const auto with_word = [&](size_t at, uint32_t value) {
        std::string bad = good;
        return bad.replace(at, 4, Word(value));
    };
    EXPECT_EQ(result(with_word(header + 4, 8193)), FL_WRONG_VERSION);
    EXPECT_EQ(result(with_word(header, 77)), FL_OK) << "headerSize is not looked at";
    for (size_t field = 8; field < 24; field += 4)
        for (const uint32_t value : {0x7FFFFFFFu, 0xFFFFFFFFu, 1000u})
            EXPECT_EQ(result(with_word(header + field, value)), FL_IO_FAILURE) << field << " " << value;
    for (const uint32_t value : {0x7FFFFFFFu, 0x80000000u, static_cast<uint32_t>(good.size() - 3)})
        EXPECT_NE(result(with_word(good.size() - 4, value)), FL_OK) << value;
    FileLibrary library;
    EXPECT_EQ(library.AddFileLibrary(folder / "absent.fs", 0), FL_IO_FAILURE);
    EXPECT_EQ(library.GetLibraryCount(), 0);
    EXPECT_EQ(library.AddFileLibrary(folder.Path().string(), 0), FL_IO_FAILURE) << "a folder is no library";
    // Flipped bits anywhere must not crash; what they do is the reader's business.
    for (size_t i = 0; i < good.size() * 8; ++i) {
        std::string bad = good;
        bad[i / 8] = static_cast<char>(bad[i / 8] ^ 1 << i % 8);
        WriteBytes(folder / "x.fs", bad);
        FileLibrary flipped;
        if (flipped.AddFileLibrary(folder / "x.fs", 0) == FL_OK)
            for (const FLMemDirStruct& directory : flipped.GetDirectories())
                for (const FLMemFileStruct& file : directory.memFiles)
                    ReadEntry(flipped, directory.name + "\\" + file.name, 1 << 16);
    }
}

TEST(FileLibrary, FoldersThatExistOnlyAsPrefixes) {
    const TempFolder folder;
    FileLibrary library;
    ASSERT_EQ(library.AddFileLibrary(WriteLibrary(folder / "a.fs", {{"Textures\\Brick\\Old\\a.tga", Text("a")},
                                                                    {"Textures\\Brick\\Older\\b.tga", Text("b")},
                                                                    {"Textures\\Steel\\c.tga", Text("c")},
                                                                    {"TexturesX\\d.tga", Text("d")}}),
                                     0),
              FL_OK);
    std::vector<std::string> names;
    FindDirectoryStruct search;
    while (library.FindNext_Directory("Textures", "*", search))
        names.push_back(search.last_name);
    EXPECT_EQ(names, (std::vector<std::string>{"Brick", "Steel"}));
    EXPECT_EQ(search.hacked_dir_names.GetStringCount(), 1);
    EXPECT_STREQ(search.hacked_dir_names.GetString(0), "Textures\\Brick");
    FindDirectoryStruct masked;
    ASSERT_TRUE(library.FindNext_Directory("textures\\", "s*", masked));
    EXPECT_EQ(masked.last_name, "Steel");
    EXPECT_FALSE(library.FindNext_Directory("textures", "s*", masked));
}

// Three libraries of which two may be open at a time, so that files are opened and closed under the readers' hands.
TEST(FileLibrary, ThreadsReadAtOnceWhatOneReads) {
    constexpr int THREADS = 4, ROUNDS = 12, LIBRARIES = 3;
    constexpr uint32_t PIECES[] = {777, 4096, FL_BLOCK_SIZE, 100000};
    const TempFolder folder;
    FileLibrary library(2);
    std::vector<std::pair<std::string, std::string>> entries; // path and content
    for (int i = 0; i < LIBRARIES; ++i) {
        const std::string top = "d" + std::to_string(i);
        std::vector<std::pair<std::string, Data>> files;
        for (const size_t size : {size_t{0}, size_t{5}, size_t{FL_BLOCK_SIZE}, size_t{50000}, size_t{130001}}) {
            Data data = TextLikeBytes(size);
            if (!data.empty())
                data.front() = static_cast<uint8_t>('0' + i);
            files.emplace_back(top + "\\sub\\f" + std::to_string(size), data);
            entries.emplace_back(files.back().first, Text(data));
        }
        const bool stored = i == 1;
        ASSERT_EQ(library.AddFileLibrary(WriteLibrary(folder / (top + ".fs"), files, stored), 0), FL_OK);
    }
    std::atomic<int> faults = 0;
    const auto read = [&](size_t thread) {
        for (size_t round = 0; round < ROUNDS; ++round)
            for (size_t k = 0; k < entries.size(); ++k) {
                const auto& [path, content] = entries[(k * (thread + 1) + round) % entries.size()];
                const int buffer = thread % 2 == 0 ? 0 : 1000;
                FindDirectoryStruct search;
                const bool found = library.FileExists(path) && library.FindNext_Directory("d0", "*", search);
                if (!found || ReadEntry(library, path, PIECES[(thread + round) % 4], buffer) != content)
                    ++faults;
            }
    };
    std::vector<std::thread> threads;
    for (size_t t = 0; t < THREADS; ++t)
        threads.emplace_back(read, t);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(faults, 0);
}

// A handle that is closed, or a library that is forgotten, while another thread reads: the read ends or fails.
TEST(FileLibrary, ForgettingLibrariesUnderAReaderIsHarmless) {
    const TempFolder folder;
    const Data data = TextLikeBytes(400000);
    const std::string path = WriteLibrary(folder / "a.fs", {{"x", data}});
    FileLibrary library;
    ASSERT_EQ(library.AddFileLibrary(path, 0), FL_OK);
    std::atomic<bool> ending = false;
    std::atomic<int> faults = 0;
    std::thread reader([&] {
        while (!ending) {
            const std::string text = ReadEntry(library, "x", 1000);
            if (text != "absent" && text != "failed" && !Text(data).starts_with(text))
                ++faults;
        }
    });
    for (int i = 0; i < 50; ++i) {
        library.InitFileLibraries();
        ASSERT_EQ(library.AddFileLibrary(path, 0), FL_OK);
    }
    ending = true;
    reader.join();
    EXPECT_EQ(faults, 0);
}

TEST(LibraryWriter, BytesDoNotDependOnTheOrder) {
    const TempFolder folder;
    const Data big = TextLikeBytes(40000);
    WriteLibrary(folder / "a.fs", {{"B\\y", big}, {"a\\Z", Text("z")}, {"a\\x", Text("x")}, {"root", Text("r")}});
    WriteLibrary(folder / "b.fs", {{"root", Text("r")}, {"a/x", Text("x")}, {"a\\Z", Text("z")}, {"B\\y", big}});
    EXPECT_EQ(ReadBytes(folder / "a.fs"), ReadBytes(folder / "b.fs"));
    LibraryWriter writer;
    EXPECT_TRUE(writer.Add("a\\b", {}));
    EXPECT_FALSE(writer.Add("A/B", {})) << "the same path in a library";
    EXPECT_FALSE(writer.Add("a\\", {}));
    std::string error;
    EXPECT_FALSE(writer.Write(folder / "missing/x.fs", false, error));
    EXPECT_EQ(error, "cannot write \"" + (folder / "missing/x.fs") + "\": No such file or directory");
}

// The file by hand: one stored entry in the root and one in a folder, valid only in the library.
TEST(LibraryWriter, StoredLibraryByHand) {
    const TempFolder folder;
    LibraryWriter writer;
    writer.Add("Dir\\b", Text("BB"), true);
    writer.Add("a", Text("A"));
    std::string error;
    ASSERT_TRUE(writer.Write(folder / "x.fs", true, error));
    EXPECT_EQ(ReadBytes(folder / "x.fs"), "ABB" + Word(24) + Word(8192) + Word(4) + Word(1) + Word(4) + Word(2) +
                                              std::string("Dir\0a\0b\0", 8) + Word(0) + Word(1) + Word(1) +
                                              Short(0xFFFF) + Short(0) + Word(1) + Word(2) + Word(2) + Short(0) +
                                              Short(1) + Word(3));
}
