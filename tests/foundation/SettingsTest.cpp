#include "foundation/Settings.h"
#include "foundation/AtomicFile.h"
#include "foundation/Desktop.h"
#include "foundation/TempFolder.h"

#include <cerrno>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

// Every test has a settings folder of its own.
class Settings : public testing::Test {
protected:
    void SetUp() override { setenv("MARROWSTEAD_CONFIG", (folder / "config").c_str(), 1); }
    void TearDown() override { unsetenv("MARROWSTEAD_CONFIG"); }

    std::string File() const { return folder / "config/settings.json"; }

    TempFolder folder;
};

TEST_F(Settings, EveryTypeComesBack) {
    const int number = -7;
    const float real = 1.5f;
    const unsigned char rectangle[16] = {1, 2, 3, 255};
    {
        RegistryClass registry;
        ASSERT_TRUE(registry.OpenKeyDirectory(SETTINGS_KEY));
        EXPECT_TRUE(registry.SetKeyValue("AutoLoadProject", &number));
        EXPECT_TRUE(registry.SetKeyValue("Scale", &real));
        EXPECT_TRUE(registry.SetKeyValue("LastFolder", "Maps\\\xE9"));
        EXPECT_TRUE(registry.SetKeyValue("Plain", "caf\xC3\xA9"));
        EXPECT_TRUE(registry.SetKeyValue("ExtendedSelPos", rectangle, sizeof rectangle));
    }
    RegistryClass registry;
    ASSERT_TRUE(registry.OpenKeyDirectory("SOFTWARE\\tallowen\\Marrowstead")) << "names have no case";
    EXPECT_EQ(registry.GetInteger("autoloadproject", 0), -7);
    EXPECT_EQ(registry.GetInteger("Absent", 3), 3);
    EXPECT_EQ(registry.GetInteger("LastFolder", 3), 3) << "of another type";
    EXPECT_TRUE(registry.GetFlag("AutoLoadProject", false));
    EXPECT_EQ(registry.GetText("LastFolder", ""), "Maps\\\xE9");
    EXPECT_EQ(registry.GetText("Plain", ""), "caf\xC3\xA9");
    EXPECT_EQ(registry.GetText("Absent", "x"), "x");
    float read_real = 0;
    SettingType type = SettingType::None;
    EXPECT_EQ(registry.GetKeyValue("Scale", &read_real, 4, &type), 4);
    EXPECT_EQ(read_real, 1.5f);
    EXPECT_EQ(type, SettingType::Binary);
    unsigned char bytes[32] = {};
    EXPECT_EQ(registry.GetKeyValue("ExtendedSelPos", bytes, sizeof bytes), 16);
    EXPECT_EQ(std::memcmp(bytes, rectangle, sizeof rectangle), 0);
    EXPECT_EQ(registry.GetKeyValue("ExtendedSelPos", bytes, 2), 2);
    EXPECT_EQ(registry.GetKeyValue("Plain", bytes, sizeof bytes, &type), 6) << "five bytes and the terminator";
    registry.CloseKeyDirectory();
    EXPECT_EQ(registry.GetKeyValue("Scale", &read_real, 4), 0) << "no key is open";
    EXPECT_FALSE(registry.SetKeyValue("Scale", &real));
}

TEST_F(Settings, TheFileIsReadableAndKeepsWhatOthersWrote) {
    WriteBytes(File(), "{\"Other\": {\"Value\": [1, 2]}, \"Software\": {\"Tallowen\": {\"x\": 1}}}");
    RegistryClass registry;
    ASSERT_TRUE(registry.OpenKeyDirectory(SETTINGS_KEY));
    const int one = 1;
    EXPECT_TRUE(registry.SetKeyValue("MultiEntSel", &one));
    const std::string text = ReadBytes(File());
    EXPECT_NE(text.find("\"MultiEntSel\": 1"), std::string::npos) << text;
    EXPECT_NE(text.find("\"Value\""), std::string::npos);
    EXPECT_TRUE(registry.DeleteKeyTree("Software\\Tallowen"));
    EXPECT_FALSE(registry.DeleteKeyTree("Software\\Tallowen"));
    EXPECT_EQ(registry.GetInteger("MultiEntSel", 5), 5);
    EXPECT_NE(ReadBytes(File()).find("\"Value\""), std::string::npos);
}

TEST_F(Settings, DamagedFilesOpenEmptyAndAreKeptAside) {
    const std::string deep = std::string(100000, '[');
    for (const std::string& damaged :
         {std::string("{\"Software\": "), std::string("[1]"), std::string(), deep,
          "{\"a\":" + deep + std::string(100000, ']') + "}", std::string("\xFF\xFE\0", 3)}) {
        WriteBytes(File(), damaged);
        RegistryClass registry;
        ASSERT_TRUE(registry.OpenKeyDirectory(SETTINGS_KEY));
        EXPECT_EQ(registry.GetInteger("AutoLoadProject", 9), 9);
        EXPECT_EQ(ReadBytes(File()), damaged)
            << "a reader holds no lock: it could take away what another has just mended";
        const int one = 1;
        EXPECT_TRUE(registry.SetKeyValue("AutoLoadProject", &one));
        EXPECT_EQ(registry.GetInteger("AutoLoadProject", 9), 1);
        EXPECT_EQ(ReadBytes(File() + ".damaged"), damaged);
    }
}

// A folder, a pipe and a link to nothing stand where the file is expected: told once, and left alone.
TEST_F(Settings, WhatCannotBeReadIsToldOnceAndLeftAlone) {
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"Is a directory", [&] { std::filesystem::create_directories(File() + "/inside"); }},
        {"not a regular file", [&] { mkfifo(File().c_str(), 0600); }},
        {"No such file or directory", [&] { std::filesystem::create_symlink("nothing", File()); }}};
    for (const auto& [reason, make] : cases) {
        std::filesystem::create_directories(std::filesystem::path(File()).parent_path());
        std::filesystem::remove_all(File());
        make();
        const std::filesystem::file_type type = std::filesystem::symlink_status(File()).type();
        HeadlessDesktop desktop;
        SetDesktop(&desktop);
        RegistryClass registry;
        EXPECT_TRUE(registry.OpenKeyDirectory(SETTINGS_KEY));
        const int one = 1;
        EXPECT_FALSE(registry.SetKeyValue("AutoLoadProject", &one)) << reason;
        EXPECT_EQ(registry.GetInteger("AutoLoadProject", 9), 9);
        SetDesktop(nullptr);
        ASSERT_EQ(desktop.notices.size(), 1u) << reason;
        EXPECT_NE(desktop.notices[0].find(reason), std::string::npos) << desktop.notices[0];
        EXPECT_EQ(std::filesystem::symlink_status(File()).type(), type);
    }
}

TEST_F(Settings, WhatCannotBeWrittenIsTold) {
    HeadlessDesktop desktop;
    SetDesktop(&desktop);
    RegistryClass registry;
    ASSERT_TRUE(registry.OpenKeyDirectory(SETTINGS_KEY));
    SetDiskFaults([](DiskStep step) { return step == DiskStep::Flush ? ENOSPC : 0; });
    for (const int value : {1, 2})
        EXPECT_FALSE(registry.SetKeyValue("AutoLoadProject", &value));
    SetDiskFaults(nullptr);
    SetDesktop(nullptr);
    EXPECT_EQ(registry.GetInteger("AutoLoadProject", 9), 9);
    ASSERT_EQ(desktop.notices.size(), 1u);
    EXPECT_NE(desktop.notices[0].find("No space left on device"), std::string::npos) << desktop.notices[0];
}

TEST_F(Settings, TwoProcessesKeepTheValuesOfBoth) {
    constexpr int VALUES = 60;
    const auto write_own = [](const std::string& process) {
        RegistryClass registry;
        bool written = registry.OpenKeyDirectory(SETTINGS_KEY);
        for (int i = 0; i < VALUES; ++i)
            written = registry.SetKeyValue(process + std::to_string(i), &i) && written;
        return written;
    };
    const pid_t child = fork();
    if (child == 0)
        _exit(write_own("child") ? 0 : 1);
    EXPECT_TRUE(write_own("parent"));
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    RegistryClass registry;
    ASSERT_TRUE(registry.OpenKeyDirectory(SETTINGS_KEY));
    for (const std::string process : {"child", "parent"})
        for (int i = 0; i < VALUES; ++i)
            EXPECT_EQ(registry.GetInteger(process + std::to_string(i), -1), i) << process;
}

TEST_F(Settings, TextsOfAKeyChangeInOneWrite) {
    RegistryClass registry;
    ASSERT_TRUE(registry.OpenKeyDirectory("Software\\Keys"));
    const int number = 5;
    for (const char* name : {"a", "b", "other"})
        ASSERT_TRUE(registry.SetKeyValue(name, "F1"));
    ASSERT_TRUE(registry.SetKeyValue("number", &number));
    int writes = 0;
    SetDiskFaults([&writes](DiskStep step) {
        writes += step == DiskStep::Open;
        return 0;
    });
    for (int again = 0; again < 2; ++again)
        EXPECT_TRUE(RegistryClass::ChangeTexts("Software\\Keys", [](std::map<std::string, std::string>& texts) {
            texts.erase("a");
            texts["b"] = "F3", texts["c"] = "F4";
        }));
    SetDiskFaults(nullptr);
    EXPECT_EQ(writes, 1);
    EXPECT_EQ(registry.GetText("a", "gone") + registry.GetText("b", "") + registry.GetText("c", ""), "goneF3F4");
    EXPECT_EQ(registry.GetText("other", ""), "F1");
    EXPECT_EQ(registry.GetInteger("number", 0), number);
}

TEST_F(Settings, OddValuesAreNoSurprise) {
    WriteBytes(File(), R"({"Software": {"Tallowen": {"Marrowstead":
        {"Huge": 99999999999, "Half": 0.5, "Null": null, "Hex": {"binary": "0g"}, "Odd": {"binary": "abc"},
         "List": [1], "Yes": true, "Unsigned": 4294967295}}, "Blocked": 5}})");
    RegistryClass registry;
    EXPECT_FALSE(registry.OpenKeyDirectory("Software\\Blocked\\Key")) << "a value stands in the way";
    ASSERT_TRUE(registry.OpenKeyDirectory(SETTINGS_KEY));
    for (const char* name : {"Huge", "Half", "Null", "Hex", "Odd", "List"}) {
        EXPECT_EQ(registry.GetInteger(name, 9), 9) << name;
        EXPECT_EQ(registry.GetText(name, "-"), "-") << name;
    }
    EXPECT_EQ(registry.GetInteger("Yes", 9), 1);
    EXPECT_EQ(registry.GetInteger("Unsigned", 9), -1);
}

TEST(SettingsFolder, FollowsTheEnvironment) {
    const char* home = std::getenv("HOME");
    const std::string home_before = home ? home : "";
    unsetenv("MARROWSTEAD_CONFIG");
    setenv("XDG_CONFIG_HOME", "/xdg", 1);
    EXPECT_EQ(SettingsFolder(), "/xdg/marrowstead2000");
    unsetenv("XDG_CONFIG_HOME");
    setenv("HOME", "/home/someone", 1);
    EXPECT_EQ(SettingsFolder(), "/home/someone/.config/marrowstead2000");
    setenv("MARROWSTEAD_CONFIG", "/own", 1);
    EXPECT_EQ(SettingsFolder(), "/own");
    unsetenv("MARROWSTEAD_CONFIG");
    setenv("HOME", home_before.c_str(), 1);
}
