// The windows of the terrain: the generator's dialog, and the tool's small window, which is open while the tool is on.
#pragma once

#include <QDialog>

#include "desktop/ToolWindows.h"
#include "pages/TerrainDlg.h"

class QDoubleSpinBox;
class QSpinBox;

class TerrainDialog : public QDialog {
public:
    TerrainDialog(TerrainDlg& logic, QWidget* parent);

protected:
    void accept() override; // stays open while the terrain cannot be made

private:
    QSpinBox* AddNumber(int& field, int least, int most, const QString& tip);
    void ShowMap();
    void ShowSum();

    TerrainDlg& page;
    QLabel *map_name, *map_picture, *sum;
};

class TerrainToolWindow : public ToolWindow {
public:
    TerrainToolWindow(CMainFrame& main_frame, QWidget* parent);

    void TerrainToolChanged() override { news.Request(); }

protected:
    void Refresh() override;
    void closeEvent(QCloseEvent* event) override; // leaves the tool

private:
    void TakeFields();

    QComboBox* type;
    QDoubleSpinBox *radius, *intensity;
    QSpinBox* density;
    QCheckBox* collapse;
};
