#include <gtest/gtest.h>

#include "pages/PagesData.h"
#include "pages/TerrainDlg.h"

class TerrainDlgTest : public PagesTest {
protected:
    TerrainDlgTest() : dlg(*editor) {
        WriteBytes("Textures/hills.tga", TargaBytes(8, 8, 8));
        WriteBytes("Textures/colour.tga", TargaBytes(8, 8, 24));
        WriteBytes("Textures/broken.tga", TargaBytes(8, 8, 8).substr(0, 40));
    }
    void ExpectBox(const std::string& part) {
        ASSERT_EQ(desktop.boxes.size(), 1u);
        EXPECT_EQ(desktop.boxes[0].title, "Marrowstead 2000");
        EXPECT_NE(desktop.boxes[0].text.find(part), std::string::npos) << desktop.boxes[0].text;
        desktop.boxes.clear();
    }
    TerrainDlg dlg;
};

TEST_F(TerrainDlgTest, OnlyGreyPicturesAreTaken) {
    EXPECT_FALSE(dlg.OnOK());
    ExpectBox("You must select a heightmap first");
    dlg.OnHeightmapbrowse(); // cancelled
    EXPECT_EQ(dlg.m_heightmap, "no texture");
    for (const auto& [path, sentence] : {std::pair{"Textures\\colour.tga", "Texture image must be grayscale"},
                                         {"Textures\\broken.tga", "broken.tga"},
                                         {"Textures\\missing.tga", "missing.tga"}}) {
        desktop.file_answer = path;
        dlg.OnHeightmapbrowse();
        ExpectBox(sentence);
        EXPECT_EQ(dlg.m_heightmap, "no texture");
    }
    desktop.file_answer = "Textures\\hills.tga";
    dlg.OnHeightmapbrowse();
    EXPECT_TRUE(desktop.boxes.empty());
    EXPECT_EQ(dlg.m_heightmap, "hills.tga");
    EXPECT_EQ(dlg.heightmap, "Textures\\hills.tga");
    desktop.file_answer = "Textures\\colour.tga";
    dlg.OnHeightmapbrowse();
    ExpectBox("Texture image must be grayscale");
    EXPECT_EQ(dlg.m_heightmap, "hills.tga"); // the choice stays
}

TEST_F(TerrainDlgTest, MakesTheTerrainOrStays) {
    AddBox();
    editor->UpdateSelectionBox();
    ASSERT_TRUE(dlg.SetHeightmap("Textures\\hills.tga"));
    dlg.m_detail = 0;
    EXPECT_FALSE(dlg.OnOK());
    ExpectBox("detail");
    EXPECT_EQ(Level().GetBrushCount(), 1);
    dlg.m_detail = 256;
    dlg.m_seg_x = 4;
    EXPECT_TRUE(dlg.OnOK());
    EXPECT_EQ(Level().GetBrushCount(), 1 + 4 * 8);
    EXPECT_EQ(Level().brush[1]->terrain_vertex_size, (SIZE{9, 5}));
    EXPECT_TRUE(editor->project_file_need_save);
    EXPECT_EQ(editor->editor_state, ES_IDLE);
    EXPECT_FALSE(editor->selection_box_active);
}
