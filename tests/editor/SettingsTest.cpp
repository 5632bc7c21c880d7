#include <gtest/gtest.h>

#include <stdlib.h>

#include "editor/Interface.h"
#include "foundation/Settings.h"
#include "foundation/TempFolder.h"

class EditorSettingsTest : public testing::Test {
protected:
    EditorSettingsTest() { setenv("MARROWSTEAD_CONFIG", folder.Path().c_str(), 1); }

    TempFolder folder;
};

TEST_F(EditorSettingsTest, ComeBackAsWritten) {
    EditorSettings settings = ReadSettings();
    EXPECT_EQ(settings, EditorSettings()) << "nothing is stored yet";
    settings.lighting_method = 2;
    settings.smooth_shadows = true;
    settings.bkp_before_compile = false;
    settings.bg_color_3D_view = -0x01000000;
    settings.update_dir = "C:\\Updates";
    ASSERT_TRUE(WriteSettings(settings, EditorSettings()));
    EXPECT_EQ(ReadSettings(), settings);
}

TEST_F(EditorSettingsTest, UnchangedSettingsTouchNoFile) {
    EXPECT_TRUE(WriteSettings(EditorSettings(), EditorSettings()));
    EXPECT_EQ(EntriesIn(folder.Path()), 0u);
}

TEST_F(EditorSettingsTest, ValuesOutOfRangeReadAsDefaults) {
    RegistryClass store;
    ASSERT_TRUE(store.OpenKeyDirectory(SETTINGS_KEY));
    const int wild = 77, any_flag = -5;
    store.SetKeyValue("LightingMethod", &wild);
    store.SetKeyValue("SmoothShadows", &any_flag);
    store.SetKeyValue("LightmapDetail", "two");
    store.CloseKeyDirectory();
    const EditorSettings settings = ReadSettings();
    EXPECT_EQ(settings.lighting_method, 1);
    EXPECT_TRUE(settings.smooth_shadows) << "any value but 0 is on";
    EXPECT_EQ(settings.lightmap_detail, 0);
}

TEST_F(EditorSettingsTest, AssignmentsAreChecked) {
    EditorSettings settings;
    std::string error;
    EXPECT_TRUE(ApplySetting(settings, "lightmapdetail=2", error));
    EXPECT_EQ(settings.lightmap_detail, 2);
    EXPECT_TRUE(ApplySetting(settings, "RenderGroups=1", error));
    EXPECT_TRUE(settings.create_render_groups);
    EXPECT_TRUE(ApplySetting(settings, "UpdateDir=a=b", error));
    EXPECT_EQ(settings.update_dir, "a=b");
    for (const char* wrong : {"LightmapDetail", "LightmapDetail=", "LightmapDetail=3", "LightmapDetail=1x",
                              "LightmapDetail=99999999999", "Nothing=1", "=1", ""}) {
        error.clear();
        EXPECT_FALSE(ApplySetting(settings, wrong, error)) << wrong;
        EXPECT_FALSE(error.empty()) << wrong;
    }
    EXPECT_EQ(settings.lightmap_detail, 2);
}

TEST_F(EditorSettingsTest, TheWindowTurnsOnWhatWasNeverSetAndLeavesScriptsTheirs) {
    const std::vector<std::pair<const char*, bool EditorSettings::*>> flags = {
        {"FullUndo", &EditorSettings::full_undo},        {"SelectionOutline", &EditorSettings::outline_selection},
        {"ShadeBareFaces", &EditorSettings::shade_bare}, {"GroundGrid", &EditorSettings::ground_grid},
        {"ThinGrid", &EditorSettings::thin_grid},        {"CameraLook", &EditorSettings::camera_look},
        {"SmoothFar", &EditorSettings::smooth_far},      {"OpenLight", &EditorSettings::open_light},
    };
    const auto expect = [&](const EditorSettings& settings, bool on, const char* but) {
        for (const auto& [name, field] : flags)
            EXPECT_EQ(settings.*field, on && name != std::string(but)) << name;
        EXPECT_EQ(settings.undo_states, on ? 200 : 20);
    };
    { // the first start
        CInterface editor;
        editor.UseWindowDefaults();
        expect(editor.settings, true, "");
    }
    EXPECT_EQ(EntriesIn(folder.Path()), 0u);
    {
        const CInterface script;
        expect(script.settings, false, "");
    }
    for (const auto& [name, field] : flags) {
        SCOPED_TRACE(name);
        TempFolder own;
        setenv("MARROWSTEAD_CONFIG", own.Path().c_str(), 1);
        {
            CInterface editor;
            editor.UseWindowDefaults();
            editor.settings.*field = false;
        }
        CInterface again;
        again.UseWindowDefaults();
        expect(again.settings, true, name);
    }
    setenv("MARROWSTEAD_CONFIG", folder.Path().c_str(), 1);
}
