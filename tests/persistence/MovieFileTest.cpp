// Movie files: the arrays, what comes back, and damaged ones.
#include <gtest/gtest.h>

#include <limits>

#include "files/ChunkFile.h"
#include "foundation/TempFolder.h"
#include "persistence/MovieFile.h"
#include "scene/PathScenes.h"
#include "scene/Scenes.h"

namespace {

class MovieFileTest : public testing::Test {
protected:
    MovieFileTest() : current(folder.Path()) {}

    static MoviePointRecord Point(float x, float delay = 0, float speed = 0) {
        MoviePointRecord p;
        p.position = {x, 0, 0};
        p.value[0] = delay;
        p.value[1] = speed;
        return p;
    }
    // The head of a movie and one path, written array by array.
    template <class Fn>
    void WritePath(uint32_t magic, const Fn& write) {
        UChunkFile file("path.mvi", CFM_Create);
        file.CreateChunk("General", 3);
        file.WriteValue(magic);
        file.WriteValue(MOVIE_VERSION);
        file.CloseChunk();
        file.CreateChunk("Path", 4);
        write(file);
        ASSERT_TRUE(file.CloseChunkFile());
    }
    static void WriteRecord(UChunkFile& file, float value) {
        file.WriteValue(D3DVECTOR{value, 1, 2});
        file.WriteValue(uint32_t{9});
        for (int i = 0; i < 10; ++i)
            file.WriteValue(value);
    }

    TempFolder folder;
    CurrentFolder current;
    std::vector<MoviePathRecord> paths;
    std::string error;
};

} // namespace

TEST_F(MovieFileTest, TheArraysOfTheFile) {
    MoviePathRecord path;
    path.owner_id = 77;
    path.path = {Point(1, 2, 3)};
    ASSERT_TRUE(WriteMovie("a.mvi", {path}, error)) << error;
    const std::string bytes = ReadBytes("a.mvi");
    EXPECT_NE(bytes.find(std::string("MINA\0\0\1\0", 8)), std::string::npos) << "magic and version";
    UChunkFile file("a.mvi", CFM_Open);
    ASSERT_TRUE(file.OpenChunk("Path"));
    const uint32_t lengths[] = {4, 4, 12, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4};
    ASSERT_EQ(file.GetArraysCountInChunk(), std::size(lengths));
    for (uint32_t i = 0; i < std::size(lengths); ++i)
        EXPECT_EQ(file.GetArrayLength(i), lengths[i]) << i;
    EXPECT_EQ(file.GetChunkID(), ANY_CHUNK_ID);
    int32_t trigger = 0;
    ASSERT_TRUE(file.GetArray(3, &trigger));
    EXPECT_EQ(trigger, -1);
}

TEST_F(MovieFileTest, BrushesComeBeforeEntitiesAndTriggersGoById) {
    World world;
    Entity& owner = AddOwner(world);
    Brush& brush = *world.AddBrush(BoxBrush());
    brush.GenerateNewObjectID();
    Entity& door = AddOwner(world, "door");
    door.variable_name = "gate";
    AddOwner(world, "pathless");
    Entity& point = AddPoint(world, owner, false, {1, 2, 3},
                             {{"delay", 1},
                              {"speed", 2},
                              {"tension", 3},
                              {"continuity", 4},
                              {"bias", 5},
                              {"ease_to", 6},
                              {"ease_from", 7},
                              {"rotation", 8},
                              {"fov", 9},
                              {"time_scale", 10}});
    EntityParameter trigger;
    trigger.name = "trigger";
    trigger.type = EPT_STRING;
    trigger.p_text = "gate";
    point.AddParameter(trigger);
    trigger.p_text = "nobody";
    AddPoint(world, owner, false, {4, 5, 6}).AddParameter(trigger);
    AddPoint(world, brush, true, {7, 8, 9});
    ASSERT_TRUE(WriteMovie("a.mvi", MoviePathsOf(world), error));
    ASSERT_EQ(ReadMovie("a.mvi", paths, error), MovieReading::Read) << error;
    ASSERT_EQ(paths.size(), 2u);
    EXPECT_EQ(paths[0].owner_id, brush.GetObjectID());
    EXPECT_TRUE(paths[0].path.empty());
    ASSERT_EQ(paths[0].target_path.size(), 1u);
    EXPECT_EQ(paths[0].target_path[0].position, (D3DVECTOR{7, 8, 9}));
    EXPECT_EQ(paths[1].owner_id, owner.GetObjectID());
    ASSERT_EQ(paths[1].path.size(), 2u);
    EXPECT_EQ(paths[1].path[0].position, (D3DVECTOR{1, 2, 3}));
    EXPECT_EQ(paths[1].path[0].trigger_id, door.GetObjectID());
    EXPECT_EQ(paths[1].path[1].trigger_id, NO_OBJECT_ID);
    for (size_t i = 0; i < 10; ++i)
        EXPECT_EQ(paths[1].path[0].value[i], static_cast<float>(i + 1)) << MOVIE_POINT_PARAMETERS[i];
}

TEST_F(MovieFileTest, WhatIsNotANumberBecomes0) {
    WritePath(MOVIE_MAGIC, [](UChunkFile& file) {
        file.WriteValue(uint32_t{5});
        file.WriteValue(int32_t{1});
        WriteRecord(file, std::numeric_limits<float>::quiet_NaN());
        file.WriteValue(int32_t{1});
        WriteRecord(file, std::numeric_limits<float>::infinity());
    });
    ASSERT_EQ(ReadMovie("path.mvi", paths, error), MovieReading::Read) << "any chunk id: " << error;
    for (const auto& list : {paths.at(0).path, paths.at(0).target_path}) {
        EXPECT_EQ(list.at(0).position, (D3DVECTOR{0, 1, 2}));
        EXPECT_EQ(list.at(0).trigger_id, 9u);
        for (const float value : list.at(0).value)
            EXPECT_EQ(value, 0);
    }
}

TEST_F(MovieFileTest, DamagedFilesGiveOneSentence) {
    paths.resize(3);
    const auto refuse = [&](const char* name, MovieReading expected, const std::string& what) {
        error.clear();
        EXPECT_EQ(ReadMovie(name, paths, error), expected) << what;
        EXPECT_NE(error.find(name), std::string::npos) << what << error;
        EXPECT_EQ(paths.size(), 3u) << "nothing is taken over";
    };
    refuse("missing.mvi", MovieReading::NotOpened, "no file");
    const auto one_point = [](UChunkFile& file) {
        file.WriteValue(uint32_t{5});
        file.WriteValue(int32_t{1});
        WriteRecord(file, 1);
        file.WriteValue(int32_t{0});
    };
    WritePath(MOVIE_MAGIC + 1, one_point);
    refuse("path.mvi", MovieReading::WrongMagic, "magic");
    for (const int32_t count : {-1, 2, 1 << 30, 0x7FFFFFFF}) {
        WritePath(MOVIE_MAGIC, [count](UChunkFile& file) {
            file.WriteValue(uint32_t{5});
            file.WriteValue(count);
            WriteRecord(file, 1);
            file.WriteValue(int32_t{0});
        });
        refuse("path.mvi", MovieReading::Damaged, "count " + std::to_string(count));
    }
    WritePath(MOVIE_MAGIC, [](UChunkFile& file) { file.WriteValue(uint32_t{5}); });
    refuse("path.mvi", MovieReading::Damaged, "no lists");
    WritePath(MOVIE_MAGIC, one_point);
    const std::string whole = ReadBytes("path.mvi");
    for (size_t length = 0; length < whole.size(); length += 5) {
        WriteBytes("cut.mvi", whole.substr(0, length));
        refuse("cut.mvi", MovieReading::NotOpened, "cut at " + std::to_string(length));
    }
    EXPECT_FALSE(WriteMovie("gone\\a.mvi", {}, error));
    EXPECT_NE(error.find("a.mvi"), std::string::npos) << error;
}

TEST_F(MovieFileTest, TheTimeOfARecordCountsEveryDelay) {
    MoviePathRecord path;
    EXPECT_EQ(ComputeMovieTime(path), 0);
    path.path = {Point(0, 2), Point(100, 3), Point(200, 0, 25)};
    EXPECT_FLOAT_EQ(ComputeMovieTime(path), 2 + 1 + 3 + 4);
    path.path[0].value[1] = 50;
    EXPECT_FLOAT_EQ(ComputeMovieTime(path), 2 + 2 + 3 + 4);
    path.path[1].value[1] = -5;
    EXPECT_FLOAT_EQ(ComputeMovieTime(path), 2 + 2 + 3 + 4) << "a negative speed is the standard";
}
