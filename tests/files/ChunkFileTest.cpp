#include "files/ChunkFile.h"
#include "files/Bytes.h"
#include "files/FileLibrary.h"
#include "files/LibraryWriter.h"
#include "foundation/TempFolder.h"

#include <gtest/gtest.h>

namespace {

const std::string MAGIC = "<Tallowen Chunk File>" + Word(1);

// A file of three chunks by hand: two "Aa", one of equal and one of different lengths, and an empty "B".
std::string ByHand() {
    const std::string data = "onetwosix"
                             "four"
                             "ab";
    const uint32_t H = static_cast<uint32_t>(MAGIC.size() + data.size());
    return MAGIC + data + Word(0xCDD44DDC) + Word(5) + Word(2) + std::string("Aa\0B\0", 5) +
           Word(3 * 24 + 4 + 3 * 4 + 4) + Word(3) +
           // header: name, id, flags and type, offset, count, a word without meaning; then the lengths
           Word(0) + Word(7) + Word(0) + Word(25) + Word(3) + Word(0) + Word(3) + Word(0) + Word(0xFFFFFFFF) +
           Word(1u << 24) + Word(34) + Word(3) + Word(0) + Word(4) + Word(0) + Word(2) + Word(1) + Word(0) + Word(0) +
           Word(40) + Word(0) + Word(0) + Word(0) + Word(H);
}

void WriteByHand(const std::string& path) {
    UChunkFile file(path, CFM_Create);
    file.CreateChunk("Aa", 7);
    for (const char* text : {"one", "two", "six"})
        file.WriteArray(text, 3);
    file.CreateChunk("aA", ANY_CHUNK_ID); // the name of the first spelling stands for both
    file.WriteArray("four", 4);
    file.WriteArray(nullptr, 0);
    file.WriteArray("ab", 2);
    file.CreateChunk("B", 0);
    EXPECT_TRUE(file.CloseChunkFile());
    EXPECT_EQ(file.GetTotalSize(), ByHand().size());
    EXPECT_FALSE(file.CloseChunkFile());
}

std::string GetText(UChunkFile& file, uint32_t index) {
    const std::vector<uint8_t> data = file.GetArrayAlloc(index);
    return {data.begin(), data.end()};
}

// Reads all that a file offers, as a careful caller does.
void ReadEverything(const std::string& path) {
    UChunkFile file(path, CFM_Open);
    EXPECT_NE(file.IsValid(), !file.GetError().empty()) << file.GetError();
    for (bool more = file.OpenChunk(nullptr, ANY_CHUNK_ID, COT_Any); more; more = file.OpenNextChunk()) {
        EXPECT_NE(file.GetChunkName(), nullptr);
        for (uint32_t i = 0; i < file.GetArraysCountInChunk(); ++i) {
            EXPECT_LE(file.GetArrayLength(i), file.GetTotalSize());
            file.GetArrayAlloc(i);
        }
    }
}

} // namespace

TEST(ChunkFile, BytesByHand) {
    const TempFolder folder;
    WriteByHand(folder / "x");
    EXPECT_EQ(ReadBytes(folder / "x"), ByHand());
    {
        UChunkFile empty(folder / "empty", CFM_Create); // the destructor finishes it
    }
    EXPECT_EQ(ReadBytes(folder / "empty"), MAGIC + Word(0xCDD44DDC) + Word(0) + Word(0) + Word(0) + Word(0) + Word(25));
    UChunkFile empty(folder / "empty", CFM_Open);
    EXPECT_TRUE(empty.IsValid());
    EXPECT_FALSE(empty.OpenChunk("B"));
    EXPECT_FALSE(empty.OpenChunk(nullptr));
}

TEST(ChunkFile, ReadsChunksAndArrays) {
    const TempFolder folder;
    WriteBytes(folder / "x", ByHand());
    UChunkFile file(folder.Path().string() + "\\X", CFM_Open);
    ASSERT_TRUE(file.IsValid()) << file.GetError();
    EXPECT_EQ(file.GetChunkCount(), 3);
    EXPECT_EQ(file.GetChunkTypeCount("Aa"), 2);
    EXPECT_EQ(file.GetChunkTypeCount("Aa", 7), 1);
    EXPECT_EQ(file.GetChunkTypeDataSize("Aa"), 15u);
    ASSERT_TRUE(file.OpenChunk("Aa", ANY_CHUNK_ID, COT_SameName));
    EXPECT_EQ(file.GetChunkID(), 7u);
    EXPECT_EQ(file.GetArraysCountInChunk(), 3u);
    EXPECT_EQ(file.GetArrayLength(2), 3u);
    EXPECT_EQ(GetText(file, 2), "six");
    EXPECT_EQ(file.GetArrayLength(3), 0u);
    char text[8] = "?????";
    EXPECT_TRUE(file.GetNextArray(text));
    file.SkipNextArray();
    EXPECT_TRUE(file.GetNextArray(text));
    EXPECT_STREQ(text, "six??");
    EXPECT_FALSE(file.GetNextArray(text)) << "no further array";
    EXPECT_STREQ(text, "six??");
    EXPECT_TRUE(file.IsArraysFinished());
    EXPECT_EQ(file.GetCurrentArrayIndex(), 3u);
    ASSERT_TRUE(file.OpenNextChunk());
    EXPECT_EQ(GetText(file, 2), "ab");
    EXPECT_TRUE(file.GetArray(1, text)) << "an empty array is there";
    EXPECT_STREQ(text, "six??");
    EXPECT_FALSE(file.OpenNextChunk());
    EXPECT_EQ(file.GetChunkName(), nullptr) << "after a failed search no chunk is current";

    EXPECT_FALSE(file.OpenChunk("aa")) << "the case of a name counts";
    ASSERT_TRUE(file.OpenChunk("Aa", 7, COT_SameNameAndID));
    EXPECT_FALSE(file.OpenNextChunk());
    ASSERT_TRUE(file.OpenChunk("B"));
    EXPECT_EQ(file.GetArraysCountInChunk(), 0u);
    EXPECT_FALSE(file.OpenNextChunk());
    EXPECT_STREQ(file.GetChunkName(), "B") << "a chunk opened alone stays";
    int chunks = 0;
    for (bool more = file.OpenChunk(nullptr, ANY_CHUNK_ID, COT_Any); more; more = file.OpenNextChunk())
        ++chunks;
    EXPECT_EQ(chunks, 3);
    file.HardCloseFile();
    EXPECT_FALSE(file.IsValid());
    EXPECT_FALSE(file.OpenChunk("B"));
}

TEST(ChunkFile, ValuesOfAnotherSizeAreLeftAlone) {
    const TempFolder folder;
    {
        UChunkFile file(folder / "x", CFM_Create);
        file.CreateChunk("Record", 1);
        file.WriteValue(uint32_t{5});
        file.WriteValue(uint16_t{6});
        file.WriteValues(std::vector<uint32_t>{1, 2, 3});
        file.WriteString("a text");
        file.WriteArray("cut\0off", 7);
    }
    UChunkFile file(folder / "x", CFM_Open);
    ASSERT_TRUE(file.OpenChunk("Record"));
    uint32_t value = 0;
    EXPECT_TRUE(file.GetNextValue(value));
    EXPECT_EQ(value, 5u);
    EXPECT_FALSE(file.SizeMismatch());
    EXPECT_FALSE(file.GetNextValue(value)) << "two bytes are no word";
    EXPECT_EQ(value, 5u);
    EXPECT_TRUE(file.SizeMismatch());
    std::vector<uint32_t> values;
    EXPECT_TRUE(file.GetNextValues(values, 3));
    EXPECT_EQ(values, (std::vector<uint32_t>{1, 2, 3}));
    std::string text;
    EXPECT_TRUE(file.GetNextString(text));
    EXPECT_EQ(text, "a text");
    EXPECT_TRUE(file.GetNextString(text));
    EXPECT_EQ(text, "cut");
    EXPECT_FALSE(file.GetNextString(text));
    ASSERT_TRUE(file.OpenChunk("Record"));
    EXPECT_FALSE(file.SizeMismatch());
}

// Arrays of all sizes around those of the reader's buffers, in and out of order.
TEST(ChunkFile, RoundTripOfManySizes) {
    const TempFolder folder;
    std::vector<std::vector<uint8_t>> arrays;
    for (size_t i = 0; i < 3000; ++i)
        arrays.push_back(NoiseBytes(i % 13 * 5, static_cast<uint32_t>(i)));
    for (const size_t size : {65535u, 65536u, 65537u, 70000u, 3u, 400000u})
        arrays.push_back(NoiseBytes(size));
    const auto write = [&](const std::string& path) {
        UChunkFile file(path, CFM_Create);
        for (size_t i = 0; i < arrays.size(); ++i) {
            if (i % 100 == 0)
                file.CreateChunk("Chunk" + std::to_string(i % 300), static_cast<uint32_t>(i));
            file.WriteArray(arrays[i].data(), arrays[i].size());
        }
        EXPECT_TRUE(file.CloseChunk());
        EXPECT_FALSE(file.CloseChunk());
    };
    write(folder / "x");
    write(folder / "y");
    const std::string bytes = ReadBytes(folder / "x");
    EXPECT_EQ(bytes, ReadBytes(folder / "y"));

    LibraryWriter writer; // the same file out of a packed library
    writer.Add("packed", std::vector<uint8_t>(bytes.begin(), bytes.end()));
    std::string error;
    ASSERT_TRUE(writer.Write(folder / "x.fs", false, error));
    FileObject::AddFileLibrary(folder / "x.fs", 0);
    for (const std::string& path : {folder / "x", std::string("packed")}) {
        UChunkFile file(path, CFM_Open);
        ASSERT_TRUE(file.IsValid()) << file.GetError();
        size_t seen = 0;
        for (bool more = file.OpenChunk(nullptr, ANY_CHUNK_ID, COT_Any); more; more = file.OpenNextChunk()) {
            const uint32_t count = file.GetArraysCountInChunk();
            seen += count;
            for (uint32_t i = 0; i < count; ++i) // from both ends in turn
                for (const uint32_t index : {i, count - 1 - i})
                    ASSERT_EQ(file.GetArrayAlloc(index), arrays[file.GetChunkID() + index]);
        }
        EXPECT_EQ(seen, arrays.size());
    }
    FileObject::ResetFileLibrary();
}

TEST(ChunkFile, WritingLeavesTheTargetAloneUntilItIsWhole) {
    const TempFolder folder;
    WriteBytes(folder / "x", "old");
    {
        UChunkFile file(folder / "x", CFM_Create);
        file.CreateChunk("A", 0);
        file.WriteArray("data", 4);
        file.CloseChunk();
        EXPECT_EQ(ReadBytes(folder / "x"), "old");
        file.HardCloseFile();
        EXPECT_FALSE(file.CloseChunkFile());
    }
    EXPECT_EQ(ReadBytes(folder / "x"), "old");
    EXPECT_EQ(EntriesIn(folder.Path()), 1u);
    UChunkFile nowhere(folder / "no/x", CFM_Create);
    EXPECT_FALSE(nowhere.IsValid());
    EXPECT_EQ(nowhere.GetError(), "cannot create \"" + (folder / "no/x") + "\": No such file or directory");
    EXPECT_FALSE(nowhere.CreateChunk("A", 0));
    EXPECT_FALSE(nowhere.CloseChunkFile());
    UChunkFile reading(folder / "x", CFM_Open);
    EXPECT_FALSE(reading.CreateChunk("A", 0));
}

TEST(ChunkFile, SaysWhyAFileIsRefused) {
    const TempFolder folder;
    const std::string path = folder / "x", missing = folder / "none.msp";
    const std::string good = ByHand();
    const size_t H = 25 + 15, names = H + 12, headers = names + 5 + 8;
    const auto with_word = [&](size_t at, uint32_t value) {
        std::string bad = good;
        return bad.replace(at, 4, Word(value));
    };
    struct Case {
        const char* name;
        std::string bytes, reason;
    };
    const std::string outside = "is damaged: its tables lie outside the file";
    const Case cases[] = {
        {"empty", "", "is not a file of Marrowstead 2000, or its beginning is damaged"},
        {"another format", std::string("<Tallowen Chunk FilE>").append(good, 21),
         "is not a file of Marrowstead 2000, or its beginning is damaged"},
        {"H past the end", with_word(good.size() - 4, static_cast<uint32_t>(good.size())), outside},
        {"H huge", with_word(good.size() - 4, 0xFFFFFFFF), outside},
        {"H inside the magic", with_word(good.size() - 4, 3), outside},
        {"number before the names", with_word(H, 1), "is damaged: the number that leads its tables is wrong"},
        {"names too long", with_word(H + 4, 0x7FFFFFFF), outside},
        {"too many names", with_word(H + 8, 3), "is damaged: it names fewer chunks than it tells"},
        {"huge number of names", with_word(H + 8, 0xFFFFFFFF), "is damaged: it names fewer chunks than it tells"},
        {"headers too long", with_word(names + 5, 0xFFFFFFFF), outside},
        {"too many headers", with_word(names + 9, 0xFFFFFFFF), "is damaged: it holds fewer chunks than it tells"},
        {"no such name", with_word(headers, 2), "is damaged: a chunk has no name"},
        {"data in the tables", with_word(headers + 12, 32), "is damaged: a chunk lies outside the file"},
        {"data in the magic", with_word(headers + 12, 24), "is damaged: a chunk lies outside the file"},
        {"too many arrays", with_word(headers + 16, 0x55555556), "is damaged: a chunk lies outside the file"},
        {"array too long", with_word(headers + 24, 0x55555556), "is damaged: a chunk lies outside the file"},
        {"lengths missing", with_word(headers + 28 + 16, 0x40000000),
         "is damaged: the lengths of a chunk's arrays are missing"},
        {"lengths that wrap", with_word(headers + 28 + 24, 0xFFFFFFFE), "is damaged: a chunk lies outside the file"},
        {"endless empty arrays", with_word(headers + 28 + 36 + 16, 0xFFFFFFFF),
         "is damaged: it tells of more than a million empty arrays"},
    };
    for (const Case& c : cases) {
        WriteBytes(path, c.bytes);
        UChunkFile file(path, CFM_Open);
        EXPECT_FALSE(file.IsValid()) << c.name;
        EXPECT_EQ(file.GetError(), "\"" + path + "\" " + c.reason) << c.name;
        EXPECT_FALSE(file.OpenChunk(nullptr)) << c.name;
    }
    EXPECT_EQ(UChunkFile(missing, CFM_Open).GetError(), "cannot open \"" + missing + "\": No such file or directory");
}

TEST(ChunkFile, SurvivesAnyDamage) {
    const TempFolder folder;
    const std::string good = ByHand();
    for (size_t length = 0; length < good.size(); ++length) {
        WriteBytes(folder / "x", good.substr(0, length));
        EXPECT_FALSE(UChunkFile(folder / "x", CFM_Open).IsValid()) << length;
    }
    for (size_t i = 0; i < good.size() * 8; ++i) {
        std::string bad = good;
        bad[i / 8] = static_cast<char>(bad[i / 8] ^ 1 << i % 8);
        WriteBytes(folder / "x", bad);
        ReadEverything(folder / "x");
    }
    for (size_t i = 25; i + 4 <= good.size(); ++i)
        for (const uint32_t value : {0xFFFFFFFFu, 0x80000000u, 0x7FFFFFFFu}) {
            std::string bad = good;
            WriteBytes(folder / "x", bad.replace(i, 4, Word(value)));
            ReadEverything(folder / "x");
        }
}
