#include "pages/TerrainDlg.h"

#include "editor/Interface.h"
#include "files/Picture.h"
#include "foundation/Strings.h"

namespace {

constexpr const char* TITLE = "Marrowstead 2000";
constexpr uint8_t GREY_BITS = 8;

bool Refuse(const std::string& sentence) {
    GetDesktop().MessageBox(sentence, TITLE);
    return false;
}

} // namespace

void TerrainDlg::OnHeightmapbrowse() {
    const std::optional<std::string> path =
        GetDesktop().AskFile({false, "Browse", "Texture images(*.tga)|*.tga||", "Textures\\", "tga",
                              m_heightmap == NO_MAP ? "" : heightmap});
    if (path)
        SetHeightmap(*path);
}

bool TerrainDlg::SetHeightmap(const std::string& path) {
    TGAInfoStruct info;
    if (TGAClass::GetImageInfo(path, info) == PICTURE_OK && info.pixel_size != GREY_BITS)
        return Refuse("Texture image must be grayscale");
    HeightMap map;
    std::string error;
    if (!LoadHeightMap(path, map, error))
        return Refuse(error);
    heightmap = path;
    m_heightmap = FilePart(path);
    return true;
}

TerrainShape TerrainDlg::Shape() const {
    TerrainShape shape;
    shape.heightmap = heightmap;
    shape.size_x = m_size_x;
    shape.size_y = m_size_y;
    shape.size_z = m_size_z;
    shape.seg_x = m_seg_x;
    shape.seg_y = m_seg_y;
    shape.detail = m_detail;
    return shape;
}

bool TerrainDlg::OnOK() {
    if (m_heightmap == NO_MAP)
        return Refuse("You must select a heightmap first");
    editor.EndTerrainStroke();
    GetDesktop().SetCursor(CursorRole::Wait);
    std::string error;
    const bool made = editor.world->GenerateTerrain(Shape(), error);
    editor.ChangeCursor();
    return made || Refuse(error);
}
