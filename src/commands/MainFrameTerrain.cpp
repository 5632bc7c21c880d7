// The commands of terrains.
#include "commands/MainFrame.h"
#include "definitions/Numbers.h"
#include "foundation/Strings.h"
#include "pages/TerrainDlg.h"

namespace {

// The fields of the dialog as a form; the first is the height map.
void AskTerrain(TerrainDlg& dlg) {
    const struct {
        const char* label;
        int TerrainDlg::*value;
    } numbers[] = {{"Size X", &TerrainDlg::m_size_x},    {"Size Y", &TerrainDlg::m_size_y},
                   {"Size Z", &TerrainDlg::m_size_z},    {"Segments X", &TerrainDlg::m_seg_x},
                   {"Segments Y", &TerrainDlg::m_seg_y}, {"Detail", &TerrainDlg::m_detail}};
    FormQuestion question{"Terrain Generator", {{"Heightmap", FormField::Text, "", 0, 0, PATH_FIELD - 1, {}}}};
    for (const auto& number : numbers)
        question.fields.push_back({number.label, FormField::Number, Format("%d", dlg.*number.value), 0, 0, 0, {}});
    if (!GetDesktop().AskForm(question))
        return;
    for (size_t i = 0; i < std::size(numbers); ++i)
        dlg.*numbers[i].value = ParseInt(question.fields[i + 1].value);
    const std::string& map = question.fields[0].value;
    if (map.empty() || dlg.SetHeightmap(map))
        dlg.OnOK();
}

} // namespace

void CMainFrame::OnToolsTerraingenerator() {
    TerrainDlg dlg(interface);
    if (show_terrain)
        show_terrain(dlg);
    else
        AskTerrain(dlg);
}

void CMainFrame::OnToolsTerrainmodifier() { interface.EnableTerrainModifier(true); }
