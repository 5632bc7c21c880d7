// The texture page: the library as a tree and lists, applying materials, and every mapping control.
#include <cmath>
#include <limits>

#include "pages/DupMatName.h"
#include "pages/PagesData.h"
#include "scene/Undo.h"

using TexturePageTest = PagesTest;

TEST_F(TexturePageTest, ClassesStandUnderTheFirstGroupThatBeginsTheirName) {
    const std::vector<MaterialGroup> tree = pages->texture.Tree();
    ASSERT_EQ(tree.size(), 3u);
    EXPECT_EQ(tree[0].name, "Wall");
    EXPECT_TRUE(tree[0].expanded);
    EXPECT_EQ(tree[0].classes, (std::vector<std::string>{"wall", "wallpaper"}));
    EXPECT_TRUE(tree[1].classes.empty());
    EXPECT_FALSE(tree[1].expanded);
    EXPECT_EQ(tree[2].name, "miscellaneous");
    EXPECT_EQ(tree[2].classes, std::vector<std::string>{"floor"});
}

TEST_F(TexturePageTest, ListsShowNamesSizesAndWhatIsUsed) {
    TextureDlg& page = pages->texture;
    std::vector<MaterialItem> items = page.ListClass("WALL");
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].name, "brick");
    EXPECT_EQ(items[0].SizeText(), "8 x 4");
    EXPECT_TRUE(page.ListUsed().empty());

    page.filter = "TON";
    items = page.ListClass("wall");
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].name, "stone");
    page.filter = "Loo"; // of a class
    items = page.ListClass("");
    ASSERT_FALSE(items.empty());
    for (const MaterialItem& item : items)
        EXPECT_EQ(item.material_class, "floor");
    EXPECT_EQ(items.size(), page.ListClass("floor").size());
    page.filter.clear();

    AddBox();
    ASSERT_TRUE(page.SetMaterial("Floor", "OAK"));
    ASSERT_TRUE(page.Apply());
    items = page.ListUsed();
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].material_class + "\\" + items[0].name, "floor\\oak");
    EXPECT_EQ(items[0].SizeText(), "32 x 8");

    WriteBytes("Textures/wall/new.tga", TargaBytes(4, 4, 24));
    page.selected_class = "wall";
    page.RefreshClass();
    EXPECT_EQ(page.ListClass("wall").size(), 3u) << "the new image has got a script";
}

TEST_F(TexturePageTest, AppliesToTheSurfaceOrToAllSelectedBrushes) {
    TextureDlg& page = pages->texture;
    EXPECT_FALSE(page.Apply()) << "none chosen";
    EXPECT_FALSE(page.SetMaterial("wall", "oak"));
    ASSERT_TRUE(page.SetMaterial("WALL", "Brick"));
    EXPECT_EQ(page.material_class, "wall");
    EXPECT_EQ(page.material_name, "brick");
    EXPECT_FALSE(page.Apply()) << "nothing selected";

    Brush* first = AddBox();
    Brush* second = AddBox(100);
    Level().SetBrushSelection(0, true);
    ASSERT_TRUE(page.Apply());
    for (const Brush* b : {first, second})
        for (const Surface& s : b->surfaces) {
            EXPECT_EQ(Level().material[static_cast<size_t>(s.texture.index)].material_name, "brick");
            EXPECT_EQ(s.texture.size.u, 8);
            EXPECT_EQ(s.texture.size.v, 4);
        }
    // The top face lies on the world's axes: u = x / 8 and v = -z / 4.
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_FLOAT_EQ(first->surfaces[0].uv[i].u, first->surfaces[0].vertices[i].x / 8);
        EXPECT_FLOAT_EQ(first->surfaces[0].uv[i].v, -first->surfaces[0].vertices[i].z / 4);
    }

    SelectSurface(first, 0);
    EXPECT_EQ(page.surface_material, "brick");
    ASSERT_TRUE(page.SetMaterial("floor", "oak"));
    ASSERT_TRUE(page.Apply());
    EXPECT_EQ(page.surface_material, "oak");
    EXPECT_NE(first->surfaces[0].texture.index, first->surfaces[1].texture.index);
    EXPECT_FLOAT_EQ(first->surfaces[0].uv[1].u, first->surfaces[0].vertices[1].x / 32);

    page.RemoveMaterial();
    EXPECT_EQ(first->surfaces[0].texture.index, 0);
    EXPECT_EQ(page.surface_material, "");
    EXPECT_NE(first->surfaces[1].texture.index, 0);
}

TEST_F(TexturePageTest, ReplacesAMaterialEverywhereOrInTheSelection) {
    TextureDlg& page = pages->texture;
    Brush* first = AddBox();
    ASSERT_TRUE(page.SetMaterial("wall", "brick"));
    ASSERT_TRUE(page.Apply());
    Brush* second = AddBox(100);
    ASSERT_TRUE(page.Apply());
    SelectSurface(first, 0);
    ASSERT_TRUE(page.SetMaterial("wall", "stone"));
    desktop.answers = {MessageAnswer::No};
    page.ReplaceMaterial(false);
    EXPECT_EQ(page.surface_material, "brick");
    page.ReplaceMaterial(false); // yes
    EXPECT_EQ(page.surface_material, "stone");
    EXPECT_EQ(Level().GetMaterialCount(), 2) << "brick has gone from the table";
    EXPECT_EQ(second->surfaces[5].texture.index, 1);
}

TEST_F(TexturePageTest, ControlsAddToTheRecordOfTheSurface) {
    TextureDlg& page = pages->texture;
    Brush* b = AddBox();
    SelectSurface(b, 0);
    const TEX_INFO& info = b->surfaces[0].texture;
    page.ChangeShift(8, -4);
    page.ChangeShift(1, 0);
    page.ChangeScale(0.05f, 1);
    page.ChangeRotation(10, false);
    page.FlipU();
    page.FlipV();
    page.FlipV();
    EXPECT_EQ(info.shift.u, 9);
    EXPECT_EQ(info.shift.v, -4);
    EXPECT_FLOAT_EQ(info.scale.u, 1.05f);
    EXPECT_EQ(info.scale.v, 2);
    EXPECT_EQ(info.rotation, 10);
    EXPECT_TRUE(info.flip_u);
    EXPECT_FALSE(info.flip_v);
    EXPECT_EQ(page.tex_info, info);
    EXPECT_EQ(b->surfaces[1].texture, TEX_INFO()) << "other surfaces are left alone";
    EXPECT_TRUE(editor->project_file_need_save);

    page.CopyMapping();
    SelectSurface(b, 1);
    EXPECT_EQ(page.tex_info, TEX_INFO());
    page.PasteMapping();
    EXPECT_EQ(b->surfaces[1].texture, info);
}

TEST_F(TexturePageTest, RotationStepsReachWholeMultiples) {
    SelectSurface(AddBox(), 0);
    struct Step {
        float from, by, to;
    };
    for (const Step& step : {Step{0, 90, 90}, Step{10, 90, 90}, Step{90, 90, 180}, Step{10, -90, 0}, Step{0, -90, -90},
                             Step{100, -90, 90}, Step{-10, 90, 0}}) {
        pages->texture.SetRotation(step.from);
        pages->texture.ChangeRotation(step.by, true);
        EXPECT_EQ(pages->texture.tex_info.rotation, step.to) << step.from << " by " << step.by;
    }
}

TEST_F(TexturePageTest, ValuesStayFiniteAndScalesApartFromZero) {
    TextureDlg& page = pages->texture;
    Brush* b = AddBox();
    SelectSurface(b, 0);
    for (int i = 0; i < 19; ++i)
        page.ChangeScale(-TextureDlg::SCALE_STEP, 0);
    EXPECT_NEAR(page.tex_info.scale.u, 0.05f, 1e-5f);
    page.ChangeScale(-TextureDlg::SCALE_STEP, 0);
    EXPECT_NEAR(page.tex_info.scale.u, -0.05f, 1e-5f) << "0 is passed over";
    const TEX_INFO before = page.tex_info;
    const float nan = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();
    page.SetScale(0, 1);
    page.SetScale(nan, 1);
    page.ChangeShift(infinity, 0);
    page.SetRotation(nan);
    page.Fit(0, 1);
    page.Fit(nan, 1);
    EXPECT_EQ(page.tex_info, before);
    EXPECT_EQ(b->surfaces[0].texture, before);
}

TEST_F(TexturePageTest, FitRepeatsTheTextureOverTheSurface) {
    TextureDlg& page = pages->texture;
    Brush* b = AddBox();
    ASSERT_TRUE(page.SetMaterial("wall", "brick"));
    page.Apply();
    SelectSurface(b, 0); // 64 by 48
    const auto spans = [b] {
        UVVector least{1e9f, 1e9f}, most{-1e9f, -1e9f};
        for (const UVVector& uv : b->surfaces[0].uv) {
            least = {std::min(least.u, uv.u), std::min(least.v, uv.v)};
            most = {std::max(most.u, uv.u), std::max(most.v, uv.v)};
        }
        return UVVector{most.u - least.u, most.v - least.v};
    };
    page.FitOnce();
    EXPECT_NEAR(spans().u, 1, 1e-5);
    EXPECT_NEAR(spans().v, 1, 1e-5);
    page.ChangeFit(1, 0);
    page.ChangeFit(1, 0);
    page.ChangeFit(0, 1);
    EXPECT_NEAR(spans().u, 3, 1e-5);
    EXPECT_NEAR(spans().v, 2, 1e-5);
    EXPECT_FLOAT_EQ(page.tex_info.scale.u, 3.0f * 8 / 64) << "the page shows the surface's record";
    page.ChangeFit(0, -1);
    page.ChangeFit(0, -1);
    EXPECT_EQ(page.fit_v, -1) << "0 is passed over";
}

TEST_F(TexturePageTest, TheRecordFollowsTheSelectedSurface) {
    TextureDlg& page = pages->texture;
    Brush* b = AddBox();
    SelectSurface(b, 0);
    page.ChangeShift(5, 5);
    Level().DeselectSurface();
    EXPECT_EQ(page.tex_info.shift.u, 5) << "a surface that is given up leaves its record";
    editor->SurfaceSelectionChanged(); // a click that met none
    EXPECT_EQ(page.tex_info, TEX_INFO());

    Level().SetBrushSelection(0, true);
    page.SetLocked(true);
    for (const Surface& s : b->surfaces)
        EXPECT_TRUE(s.texture.locked);
    EXPECT_EQ(b->surfaces[0].texture.shift.u, 5) << "of brushes the lock alone is written";
    page.SetShift(2, 3);
    for (const Surface& s : b->surfaces)
        EXPECT_EQ(s.texture.shift.v, 3);
}

TEST_F(TexturePageTest, OneUndoStepTakesBackOneControl) {
    editor->settings.full_undo = true;
    TextureDlg& page = pages->texture;
    Brush* b = AddBox();
    Level().undo_buffer.Empty();
    ASSERT_TRUE(page.SetMaterial("wall", "brick"));
    page.Apply();
    page.ChangeShift(4, 0);
    ASSERT_EQ(Level().undo_buffer.GetActionCount(), 2);
    EXPECT_EQ(Level().undo_buffer.GetActionDescription(1), "Shift a texture.");
    Level().undo_buffer.UndoLastAction(Level(), Level().redo_buffer);
    EXPECT_EQ(b->surfaces[0].texture.shift.u, 0);
    EXPECT_NE(b->surfaces[0].texture.index, 0);
    Level().undo_buffer.UndoLastAction(Level(), Level().redo_buffer);
    EXPECT_EQ(b->surfaces[0].texture.index, 0);
}

TEST_F(TexturePageTest, ScriptsOutOfNowhereAreTold) {
    TextureDlg& page = pages->texture;
    std::string opened;
    page.open_text = [&opened](const std::string& path) { opened = path; };
    page.ShowCurMaterialScript();
    EXPECT_EQ(opened, "") << "none chosen";
    page.SetMaterial("wall", "brick");
    page.ShowCurMaterialScript();
    EXPECT_EQ(opened, "Scripts\\Materials\\wall\\brick.mtl");
    std::filesystem::remove("Scripts/Materials/wall/brick.mtl");
    opened.clear();
    page.ShowCurMaterialScript();
    EXPECT_EQ(opened, "");
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_NE(desktop.boxes[0].text.find("brick.mtl"), std::string::npos);
}

TEST_F(TexturePageTest, MaskAndReload) {
    pages->texture.ToggleMask();
    EXPECT_TRUE(editor->mask_enabled);
    pages->texture.ToggleMask();
    EXPECT_FALSE(editor->mask_enabled);

    AddBox();
    pages->texture.SetMaterial("wall", "brick");
    pages->texture.Apply();
    const uint32_t handle = Level().material[1].texture_index;
    WriteBytes("Textures/wall/brick.tga", TargaBytes(64, 32, 24));
    pages->texture.ReloadTextures();
    EXPECT_EQ(Level().material[1].texture_index, handle);
    EXPECT_EQ(Level().TextureSize(1), (SIZE{64, 32}));
}

TEST_F(TexturePageTest, DuplicatesAMaterialWithItsImages) {
    WriteBytes("Scripts/Materials/wall/old.mtl",
               "#Basic Material Properties\n{\n  diffuse_map = wall\\brick;\n\tBUMP_MAP = plain;\n\tGLOSS_MAP = "
               "wall\\stone;\nDOUBLE_SIDED = TRUE;   \n}\n");
    pages->texture.selected_class = "wall";
    pages->texture.RefreshClass();
    DupMatName copy("wall", "old");
    EXPECT_TRUE(copy.fields_enabled);
    EXPECT_EQ(copy.maps[0].texture_class, "wall");
    EXPECT_EQ(copy.maps[0].texture_name, "brick");
    EXPECT_EQ(copy.maps[1].texture_class, "");
    EXPECT_EQ(copy.maps[1].texture_name, "plain");
    EXPECT_EQ(copy.material_directories, (std::vector<std::string>{"floor", "wall", "wallpaper"}));
    EXPECT_FALSE(pages->texture.Duplicate(copy)) << "the name is taken";
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].text, "Error !!! Material with a specified name already exists !!!!\n");

    copy.new_directory = "floor";
    copy.new_name = "copy";
    copy.maps[0].texture_class = "floor";
    copy.maps[0].texture_name = "bricks";
    ASSERT_TRUE(pages->texture.Duplicate(copy));
    EXPECT_EQ(ReadBytes("Scripts/Materials/floor/copy.mtl"),
              "#Basic Material Properties\r\n{\r\n\tDIFFUSE_MAP = floor\\bricks;\r\n\tBUMP_MAP = "
              "plain;\r\n\tGLOSS_MAP = wall\\stone;\r\nDOUBLE_SIDED = TRUE;\r\n}\r\n");
    EXPECT_EQ(ReadBytes("Textures/floor/bricks.tga"), ReadBytes("Textures/wall/brick.tga"));
    EXPECT_TRUE(pages->texture.SetMaterial("floor", "copy"));

    DupMatName missing("wall", "absent");
    missing.new_name = "other";
    EXPECT_FALSE(missing.OnOK());
    EXPECT_EQ(desktop.boxes.back().text, "Error opening source material !");
}

TEST_F(TexturePageTest, ProceduralMaterialsAreCopiedAsTheyStand) {
    WriteBytes("Scripts/Materials/wall/magic.mtl",
               "#Basic Material Properties\r\n{\r\n\tDIFFUSE_MAP = PROCEDURAL_SHADER;\r\n\tBUMP_MAP = a\\b;\r\n}\r\n");
    DupMatName copy("wall", "magic");
    EXPECT_FALSE(copy.fields_enabled);
    copy.new_name = "magic2";
    copy.maps[1].texture_name = "changed";
    ASSERT_TRUE(copy.OnOK());
    EXPECT_EQ(ReadBytes("Scripts/Materials/wall/magic2.mtl"), ReadBytes("Scripts/Materials/wall/magic.mtl"));
}
