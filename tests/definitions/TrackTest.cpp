// Tracklist files: what is written, what comes back, and damaged ones.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "definitions/Track.h"
#include "files/ChunkFile.h"
#include "foundation/TempFolder.h"

namespace {

class TrackTest : public testing::Test {
protected:
    TrackTest() : current(folder.Path()) {
        STrackLine line;
        line.m_name = "Doors";
        line.m_default_color = 0x112233;
        line.m_keyPoints = {{1.5f, 0xFF0000, "", ""}, {4, 0x00FF00, "opens", "OpenDoor \"a\", 2\r\nWait 1"}};
        list.m_max = 25;
        list.m_track_lines = {line, {}};
        list.m_track_lines[1].m_name = "Empty";
    }
    // A file of one row, written array by array.
    template <class Fn>
    void WriteRow(const Fn& write) {
        UChunkFile file("row.trk", CFM_Create);
        file.CreateChunk("Track", 7);
        write(file);
        ASSERT_TRUE(file.CloseChunkFile());
    }
    static void WriteKey(UChunkFile& file, float time) {
        file.WriteValue(uint32_t{5});
        file.WriteValue(time);
        file.WriteArray("c", 1);
        file.WriteArray(nullptr, 0);
    }
    static void WriteEnd(UChunkFile& file) {
        file.WriteValue(uint32_t{6});
        file.WriteArray("row", 3);
    }

    TempFolder folder;
    CurrentFolder current;
    TrackList list;
    std::string error;
};

void ExpectSame(const TrackList& a, const TrackList& b) {
    EXPECT_EQ(a.m_min, b.m_min);
    EXPECT_EQ(a.m_max, b.m_max);
    ASSERT_EQ(a.m_track_lines.size(), b.m_track_lines.size());
    for (size_t r = 0; r < a.m_track_lines.size(); ++r) {
        const STrackLine &x = a.m_track_lines[r], &y = b.m_track_lines[r];
        EXPECT_EQ(x.m_name, y.m_name);
        EXPECT_EQ(x.m_default_color, y.m_default_color);
        ASSERT_EQ(x.m_keyPoints.size(), y.m_keyPoints.size());
        for (size_t k = 0; k < x.m_keyPoints.size(); ++k) {
            EXPECT_EQ(x.m_keyPoints[k].m_time, y.m_keyPoints[k].m_time);
            EXPECT_EQ(x.m_keyPoints[k].m_color, y.m_keyPoints[k].m_color);
            EXPECT_EQ(x.m_keyPoints[k].m_comment, y.m_keyPoints[k].m_comment);
            EXPECT_EQ(x.m_keyPoints[k].m_script, y.m_keyPoints[k].m_script);
        }
    }
}

} // namespace

TEST_F(TrackTest, WhatIsWrittenComesBack) {
    ASSERT_TRUE(SaveTrackList("a.trk", list, error)) << error;
    TrackList read;
    ASSERT_TRUE(LoadTrackList("a.trk", read, error)) << error;
    ExpectSame(read, list);
    ASSERT_TRUE(SaveTrackList("none.trk", {}, error));
    ASSERT_TRUE(LoadTrackList("none.trk", read, error)) << "no rows are no error";
    ExpectSame(read, {});
}

TEST_F(TrackTest, TheArraysOfTheFile) {
    ASSERT_TRUE(SaveTrackList("a.trk", list, error));
    UChunkFile file("a.trk", CFM_Open);
    ASSERT_TRUE(file.OpenChunk("General"));
    float end = 0;
    EXPECT_TRUE(file.GetNextValue(end) && file.GetNextValue(end));
    EXPECT_EQ(end, 25);
    ASSERT_TRUE(file.OpenChunk("Track", ANY_CHUNK_ID, COT_SameName));
    const uint32_t lengths[] = {4, 4, 4, 0, 0, 4, 4, 5, 23, 4, 5};
    ASSERT_EQ(file.GetArraysCountInChunk(), std::size(lengths));
    for (uint32_t i = 0; i < std::size(lengths); ++i)
        EXPECT_EQ(file.GetArrayLength(i), lengths[i]) << i;
    ASSERT_TRUE(file.OpenNextChunk());
    EXPECT_EQ(file.GetArraysCountInChunk(), 3u);
    EXPECT_EQ(file.GetChunkID(), ANY_CHUNK_ID);
}

TEST_F(TrackTest, KeysComeBackInOrderAndWithTimesThatAreNumbers) {
    WriteRow([](UChunkFile& file) {
        file.WriteValue(int32_t{3});
        for (const float time : {4.0f, std::numeric_limits<float>::quiet_NaN(), 2.0f})
            WriteKey(file, time);
        WriteEnd(file);
    });
    ASSERT_TRUE(LoadTrackList("row.trk", list, error)) << "any chunk id, no time scale: " << error;
    EXPECT_EQ(list.m_max, 100);
    ASSERT_EQ(list.m_track_lines.size(), 1u);
    const std::vector<SKeyPoint>& keys = list.m_track_lines[0].m_keyPoints;
    ASSERT_EQ(keys.size(), 3u);
    for (size_t k = 0; k < 3; ++k)
        EXPECT_EQ(keys[k].m_time, 2.0f * static_cast<float>(k));
}

TEST_F(TrackTest, DamagedFilesGiveOneSentenceAndChangeNothing) {
    const TrackList before = list;
    const auto refuse = [&](const char* name, const std::string& what) {
        error.clear();
        EXPECT_FALSE(LoadTrackList(name, list, error)) << what;
        EXPECT_NE(error.find(name), std::string::npos) << what << error;
        EXPECT_EQ(error.find('\n'), std::string::npos);
        ExpectSame(list, before);
    };
    refuse("missing.trk", "no file");
    ASSERT_TRUE(SaveTrackList("a.trk", list, error));
    const std::string whole = ReadBytes("a.trk");
    for (size_t length = 0; length < whole.size(); length += 7) {
        WriteBytes("cut.trk", whole.substr(0, length));
        refuse("cut.trk", "cut at " + std::to_string(length));
    }
    for (const int32_t count : {-1, 2, 1000000, 0x7FFFFFFF}) {
        WriteRow([count](UChunkFile& file) {
            file.WriteValue(count);
            WriteKey(file, 1);
            WriteEnd(file);
        });
        refuse("row.trk", "count " + std::to_string(count));
    }
    WriteRow([](UChunkFile& file) { file.WriteArray("ab", 2); });
    refuse("row.trk", "a count of two bytes");
    WriteRow([](UChunkFile& file) { file.WriteValue(int32_t{0}); });
    refuse("row.trk", "no name");
    {
        UChunkFile file("other.trk", CFM_Create);
        file.CreateChunk("Brush", ANY_CHUNK_ID);
        file.WriteValue(1);
        ASSERT_TRUE(file.CloseChunkFile());
    }
    refuse("other.trk", "another kind of file");
}

TEST_F(TrackTest, AFolderThatIsNotThereIsTold) {
    EXPECT_FALSE(SaveTrackList("gone\\a.trk", list, error));
    EXPECT_NE(error.find("a.trk"), std::string::npos) << error;
}

TEST_F(TrackTest, KeysAreAddedBehindThoseOfTheSameTime) {
    STrackLine& line = list.m_track_lines[0]; // 1.5, 4
    EXPECT_EQ(line.AddKey({1.5f, 0, "later", ""}), 1);
    EXPECT_EQ(line.AddKey({0, 0, "", ""}), 0);
    EXPECT_EQ(line.AddKey({9, 0, "", ""}), 4);
    EXPECT_EQ(line.m_keyPoints[2].m_comment, "later");
}
