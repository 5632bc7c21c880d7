#include "desktop/StatusBar.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>

namespace {

struct PaneShape {
    int width; // pixels, with a font of FONT_HEIGHT
    const char* tool_tip;
};
constexpr int SEPARATOR = 10;
constexpr int FONT_HEIGHT = 14;
constexpr size_t STRETCHING = 1;

constexpr PaneShape PANES[PANE_COUNT] = {{100, "What is being done with the mouse"},
                                         {150, "What the command under the mouse does"},
                                         {SEPARATOR, ""},
                                         {250, "Where the mouse is in the level, on the grid"},
                                         {SEPARATOR, ""},
                                         {250, "The size of the selection, or how far the mouse was dragged"},
                                         {SEPARATOR, ""},
                                         {150, "How many objects the level has"},
                                         {SEPARATOR, ""},
                                         {110, "Grid size, zoom of the active view, step of a rotation by the mouse"},
                                         {SEPARATOR, ""},
                                         {30, "The selection is locked"},
                                         {SEPARATOR, ""}};

// As wide as its pane is told, or its text; a narrow window cuts it.
class Pane : public QLabel {
public:
    explicit Pane(int pane_width) : width(pane_width) {}
    QSize sizeHint() const override {
        const QSize text = QLabel::sizeHint();
        return {std::max(width * fontMetrics().height() / FONT_HEIGHT, text.width()), text.height()};
    }
    QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }

private:
    int width;
};

} // namespace

StatusBar::StatusBar(QWidget* parent) : QStatusBar(parent) {
    auto* lines = new QWidget;
    auto* column = new QVBoxLayout(lines);
    column->setContentsMargins(4, 0, 4, 0);
    column->setSpacing(1);
    hint_line = new QLabel;
    hint_line->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    hint_line->setToolTip("What the buttons and the wheel of the mouse do here");
    column->addWidget(hint_line);
    auto* row = new QHBoxLayout;
    row->setSpacing(0);
    for (size_t pane = 0; pane < panes.size(); ++pane) {
        const PaneShape& shape = PANES[pane];
        panes[pane] = new Pane(shape.width);
        panes[pane]->setToolTip(shape.tool_tip);
        if (shape.width == SEPARATOR)
            panes[pane]->setFrameStyle(QFrame::VLine | QFrame::Sunken);
        row->addWidget(panes[pane], pane == STRETCHING ? 1 : 0);
    }
    column->addLayout(row);
    addPermanentWidget(lines, 1);
    ShowPane(PANE_POSITION, "Position: X: 0,  Y: 0,  Z: 0");
    ShowPane(PANE_SIZE, "---");
    ShowPane(PANE_COUNTS, "Brushes: 0  Entities: 0");
    ShowPane(PANE_GRID, "G:8  Z:1  R:5  ");
}

void StatusBar::ShowPane(int pane, const std::string& text) {
    panes[static_cast<size_t>(pane)]->setText(QString::fromStdString(text));
}

void StatusBar::ShowHelp(const QString& help) { panes[STRETCHING]->setText(help); }

void StatusBar::ShowHint(const std::string& mode, const std::string& hint) {
    ShowPane(0, mode);
    hint_line->setText(QString::fromStdString(hint));
}
