#include <gtest/gtest.h>

#include "definitions/ActorDefGroup.h"
#include "foundation/TempFolder.h"

TEST(ActorDefGroups, FilesAreSortedIntoSets) {
    const TempFolder folder;
    const CurrentFolder current(folder.Path());
    ActorDefGroups groups;
    groups.ParseActorDefGroups();
    EXPECT_EQ(groups.GetActorDefGroup("none", false), nullptr);

    WriteBytes("Scripts/Actors/a.def", "#General\n{\nModel = x\nmarrowsgroup = Guards;\nMarrowsGroup = Second;\n}\n");
    WriteBytes("Scripts/Actors/b.DEF", "#Skin\n{\nHead = x\n}\n");
    WriteBytes("Scripts/Actors/c.def", "#General\nMarrowsGroup = GUARDS\n");
    WriteBytes("Scripts/Actors/d.def", "// nothing\n");
    WriteBytes("Scripts/Actors/e.def", "#General\nMarrowsGroup\n");
    WriteBytes("Scripts/Actors/f.txt", "#General\n");
    groups.ParseActorDefGroups();
    ASSERT_EQ(groups.Groups().size(), 3u);
    const ActorDefGroup& guards = *groups.Groups()[0];
    EXPECT_EQ(guards.name, "Guards");
    EXPECT_EQ(guards.default_def_file, "a");
    ASSERT_EQ(guards.def_files.GetStringCount(), 2);
    EXPECT_STREQ(guards.def_files.GetString(1), "c");
    EXPECT_EQ(groups.Groups()[1]->name, "b");
    EXPECT_EQ(groups.Groups()[2]->name, "e");

    EXPECT_EQ(groups.GetActorDefGroup("guards", false), &guards);
    EXPECT_EQ(groups.GetActorDefGroup("unknown", false), &guards); // the first stands in
    EXPECT_EQ(groups.GetActorDefGroup("unknown", true)->name, "unknown");
    EXPECT_EQ(groups.Groups().size(), 4u);
}
