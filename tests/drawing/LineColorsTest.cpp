#include <gtest/gtest.h>

#include <set>
#include <string>

#include "drawing/LineColors.h"

TEST(LineColors, OnlyChangedOnesAreWrittenAndComeBack) {
    ResetLineColors();
    EXPECT_EQ(LineColorText(), "");
    EXPECT_EQ(ColorOf(LineColor::Link), 0xFFFFD200);
    SetLineColor(LineColor::Link, 0xFF00000A);
    SetLineColor(LineColor::Camera, 0x102030);
    const std::string text = LineColorText();
    EXPECT_EQ(text, "Link=00000A Camera=102030");
    ResetLineColors();
    TakeLineColors("  link=0000FF nonsense Camera= Path=GGGGGG Cable=1000000 =12 Other=123456 clipbox=a ");
    EXPECT_EQ(ColorOf(LineColor::Link), 0xFF0000FF);
    EXPECT_EQ(ColorOf(LineColor::ClipBox), 0xFF00000A);
    EXPECT_EQ(LineColorText(), "ClipBox=00000A Link=0000FF") << "what is no colour, or of no line, is passed over";
    TakeLineColors(text);
    EXPECT_EQ(LineColorText(), text) << "the others are standard again";
    ResetLineColors();
    std::set<std::string> names;
    for (const LineColorEntry& entry : LineColorTable())
        EXPECT_TRUE(names.insert(entry.name).second && *entry.label) << entry.name;
}
