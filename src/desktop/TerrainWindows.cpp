#include "desktop/TerrainWindows.h"

#include <limits>

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

static constexpr int MAP_SIDE = 160; // of its picture, pixels
static constexpr int LARGEST_TERRAIN = 1000000, MOST_SEGMENTS = 128;
static constexpr double LARGEST_RADIUS = 100000, LARGEST_INTENSITY = 10000, INTENSITY_STEP = 1;

TerrainDialog::TerrainDialog(TerrainDlg& logic, QWidget* parent)
    : QDialog(parent), page(logic), map_name(new QLabel), map_picture(new QLabel), sum(new QLabel) {
    setWindowTitle(tr("Terrain Generator"));
    auto* browse = new QPushButton(tr("&Browse..."));
    browse->setToolTip(tr("A Targa picture of 8 bits per pixel: white is high, its first row is the far edge"));
    map_picture->setFixedSize(MAP_SIDE, MAP_SIDE);
    map_picture->setFrameShape(QFrame::StyledPanel);
    map_picture->setAlignment(Qt::AlignCenter);
    auto* map_row = new QHBoxLayout;
    map_row->addWidget(map_name, 1);
    map_row->addWidget(browse);
    auto* form = new QFormLayout;
    form->addRow(tr("Height map"), map_row);
    form->addRow(QString(), map_picture);
    form->addRow(tr("Size &X"), AddNumber(page.m_size_x, 1, LARGEST_TERRAIN, tr("Extent along x, world units")));
    form->addRow(tr("Size &Y"), AddNumber(page.m_size_y, 0, LARGEST_TERRAIN, tr("Height of white, world units")));
    form->addRow(tr("Size &Z"), AddNumber(page.m_size_z, 1, LARGEST_TERRAIN, tr("Extent along z, world units")));
    form->addRow(tr("Segments X"), AddNumber(page.m_seg_x, 1, MOST_SEGMENTS, tr("Brushes along x")));
    form->addRow(tr("Segments Z"), AddNumber(page.m_seg_y, 1, MOST_SEGMENTS, tr("Brushes along z")));
    form->addRow(tr("&Detail"),
                 AddNumber(page.m_detail, 1, LARGEST_TERRAIN, tr("Distance between two vertices, world units")));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* column = new QVBoxLayout(this);
    column->addLayout(form);
    column->addWidget(sum);
    column->addWidget(buttons);
    sum->setWordWrap(true);
    connect(browse, &QPushButton::clicked, this, [this] {
        page.OnHeightmapbrowse();
        ShowMap();
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &TerrainDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    ShowMap();
    ShowSum();
}

QSpinBox* TerrainDialog::AddNumber(int& field, int least, int most, const QString& tip) {
    auto* box = new QSpinBox;
    box->setRange(least, most);
    box->setValue(field);
    box->setToolTip(tip);
    connect(box, qOverload<int>(&QSpinBox::valueChanged), this, [this, &field](int value) {
        field = value;
        ShowSum();
    });
    return box;
}

void TerrainDialog::ShowMap() {
    map_name->setText(QString::fromStdString(page.m_heightmap));
    HeightMap map;
    std::string unused;
    if (page.heightmap.empty() || !LoadHeightMap(page.heightmap, map, unused)) {
        map_picture->setText(tr("no map"));
        return;
    }
    const QImage image(map.sample.data(), map.width, map.height, map.width, QImage::Format_Grayscale8);
    map_picture->setPixmap(QPixmap::fromImage(image.scaled(MAP_SIDE, MAP_SIDE, Qt::KeepAspectRatio)));
}

// What comes of the numbers, or why nothing does.
void TerrainDialog::ShowSum() {
    const std::string problem = CheckTerrainShape(page.Shape(), std::numeric_limits<int>::max());
    if (!problem.empty()) {
        sum->setText(QString::fromStdString(problem));
        return;
    }
    const int x = page.m_size_x / page.m_seg_x / page.m_detail + 1,
              z = page.m_size_z / page.m_seg_y / page.m_detail + 1;
    sum->setText(tr("%1 brushes of %2 by %3 vertices").arg(page.m_seg_x * page.m_seg_y).arg(x).arg(z));
}

void TerrainDialog::accept() {
    if (page.OnOK())
        QDialog::accept();
}

// --- The tool

TerrainToolWindow::TerrainToolWindow(CMainFrame& main_frame, QWidget* parent)
    : ToolWindow(main_frame, parent), type(new QComboBox), radius(new QDoubleSpinBox), intensity(new QDoubleSpinBox),
      density(new QSpinBox), collapse(new QCheckBox(tr("&Collapse the copies"))) {
    setWindowTitle(tr("Terrain Modifier"));
    for (const char* word : TERRAIN_STROKE_WORDS)
        type->addItem(QString::fromLatin1(word));
    type->setToolTip(tr("What a stroke does: drag in the perspective view with Shift held.\n"
                        "The right button lowers where the left one raises."));
    radius->setRange(static_cast<double>(LEAST_TERRAIN_RADIUS), LARGEST_RADIUS);
    radius->setSingleStep(static_cast<double>(LEAST_TERRAIN_RADIUS));
    radius->setToolTip(tr("World units; also the wheel with Alt held"));
    intensity->setRange(static_cast<double>(LEAST_TERRAIN_INTENSITY), LARGEST_INTENSITY);
    intensity->setSingleStep(INTENSITY_STEP);
    intensity->setToolTip(tr("Change of height a step; also the wheel with Alt and Ctrl held"));
    density->setRange(1, 1000);
    density->setToolTip(tr("Copies of the selection that a stroke of DECORATE strews"));
    collapse->setToolTip(tr("DECORATE melts its copies into one brush"));
    auto* form = new QFormLayout(this);
    form->addRow(tr("&Stroke"), type);
    form->addRow(tr("&Radius"), radius);
    form->addRow(tr("&Intensity"), intensity);
    form->addRow(tr("&Density"), density);
    form->addRow(collapse);
    const auto take = [this] { TakeFields(); };
    connect(type, qOverload<int>(&QComboBox::currentIndexChanged), this, take);
    connect(radius, qOverload<double>(&QDoubleSpinBox::valueChanged), this, take);
    connect(intensity, qOverload<double>(&QDoubleSpinBox::valueChanged), this, take);
    connect(density, qOverload<int>(&QSpinBox::valueChanged), this, take);
    connect(collapse, &QCheckBox::toggled, this, take);
}

void TerrainToolWindow::Refresh() {
    const QSignalBlocker blockers[] = {QSignalBlocker(type), QSignalBlocker(radius), QSignalBlocker(intensity),
                                       QSignalBlocker(density), QSignalBlocker(collapse)};
    const TERRAIN_MODIFIER& tool = editor.terrain_modifier;
    type->setCurrentIndex(tool.type);
    radius->setValue(static_cast<double>(tool.radius));
    intensity->setValue(static_cast<double>(tool.intensity));
    density->setValue(tool.density);
    collapse->setChecked(tool.collapse);
    const bool decorate = tool.type == TERRAIN_DECORATE;
    density->setEnabled(decorate);
    collapse->setEnabled(decorate);
    intensity->setEnabled(tool.type == TERRAIN_RAISE || tool.type == TERRAIN_NOISE);
}

void TerrainToolWindow::TakeFields() {
    editor.SetTerrainModifier({type->currentIndex(), static_cast<float>(radius->value()),
                               static_cast<float>(intensity->value()), density->value(), collapse->isChecked()});
    Refresh();
}

void TerrainToolWindow::closeEvent(QCloseEvent* event) {
    if (editor.editor_state == ES_TERRAIN)
        editor.Cancel();
    ToolWindow::closeEvent(event);
}
