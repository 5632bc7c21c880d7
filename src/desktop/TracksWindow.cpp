#include "desktop/TracksWindow.h"

#include <cmath>

#include <QBoxLayout>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QToolTip>

#include "desktop/ScriptWindow.h"
#include "editor/Interface.h"

namespace {

constexpr int KEY_HALF = 5;          // of a key's diamond, pixels
constexpr int LEAST_MARK_PIXELS = 8; // between two lines of the grid
constexpr int LEAST_LABEL_PIXELS = 60;
constexpr int TEXT_MARGIN = 4;

QColor ColorOf(uint32_t rgb) { return QColor::fromRgb(static_cast<QRgb>(rgb)); }

POINT ClientPoint(const QMouseEvent& event) {
    const QPoint at = event.position().toPoint();
    return {at.x(), at.y()};
}

} // namespace

// --- The timeline

TimelineWidget::TimelineWidget(CTrackDlg& logic, QWidget* parent) : QWidget(parent), dialog(logic), track(logic.track) {
    setMinimumSize(400, CTrack::SCALE_HEIGHT + 4 * CTrack::ROW_HEIGHT);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
}

float TimelineWidget::TimeStep(int least_pixels) const {
    const float least = track.m_visible * static_cast<float>(least_pixels) /
                        static_cast<float>(std::max(1, width() - track.m_fix_area_width));
    float step = std::pow(10.0f, std::floor(std::log10(std::max(least, 1e-6f))));
    for (const float factor : {1.0f, 2.0f, 5.0f})
        if (step * factor >= least)
            return step * factor;
    return step * 10;
}

// Counted, as a step may be too small to change a time far on.
std::vector<float> TimelineWidget::Marks(float step) const {
    const float first = std::floor(track.m_pos / step) * step;
    std::vector<float> times;
    for (int i = 0; i <= static_cast<int>(track.m_visible / step) + 1; ++i)
        times.push_back(first + static_cast<float>(i) * step);
    return times;
}

void TimelineWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), palette().base());
    const QRect keys(track.m_fix_area_width, 0, width() - track.m_fix_area_width, height() - CTrack::SCALE_HEIGHT);
    if (dialog.ShowsGrid()) {
        painter.setPen(palette().alternateBase().color().darker(110));
        for (const float t : Marks(TimeStep(LEAST_MARK_PIXELS)))
            if (const int x = track.XAt(t); x >= keys.left())
                painter.drawLine(x, 0, x, keys.bottom());
    }
    for (int row = track.m_line_pos; row < track.GetTrackLinesCount(); ++row)
        if ((row - track.m_line_pos) * CTrack::ROW_HEIGHT < keys.height())
            PaintRow(painter, row);
    painter.fillRect(0, keys.bottom() + 1, width(), CTrack::SCALE_HEIGHT, palette().window());
    PaintScale(painter);
    painter.setPen(palette().mid().color());
    painter.drawLine(track.m_fix_area_width, 0, track.m_fix_area_width, height());
    if (const int x = track.XAt(track.m_syncline); x >= keys.left()) {
        painter.setPen(palette().highlight().color());
        painter.drawLine(x, 0, x, height());
    }
    if (track.GetTrackLinesCount() == 0) {
        painter.setPen(palette().placeholderText().color());
        painter.drawText(keys, Qt::AlignCenter, tr("New line makes a row; a double click in a row makes a key"));
    }
}

void TimelineWidget::PaintRow(QPainter& painter, int row) {
    const STrackLine& line = track.list.m_track_lines[static_cast<size_t>(row)];
    const int top = (row - track.m_line_pos) * CTrack::ROW_HEIGHT;
    const QRect name(0, top, track.m_fix_area_width, CTrack::ROW_HEIGHT);
    if (row == track.m_selected) {
        QColor mark = palette().highlight().color();
        mark.setAlpha(60);
        painter.fillRect(QRect(0, top, width(), CTrack::ROW_HEIGHT), mark);
    }
    painter.fillRect(QRect(0, top + 2, TEXT_MARGIN, CTrack::ROW_HEIGHT - 4), ColorOf(line.m_default_color));
    painter.setPen(palette().text().color());
    painter.drawText(name.adjusted(2 * TEXT_MARGIN, 0, -TEXT_MARGIN, 0), Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(QString::fromStdString(line.m_name), Qt::ElideRight,
                                                      name.width() - 3 * TEXT_MARGIN));
    painter.setPen(palette().mid().color());
    painter.drawLine(0, top + CTrack::ROW_HEIGHT, width(), top + CTrack::ROW_HEIGHT);
    for (size_t k = 0; k < line.m_keyPoints.size(); ++k) {
        const SKeyPoint& key = line.m_keyPoints[k];
        const int x = track.XAt(key.m_time), y = top + CTrack::ROW_HEIGHT / 2;
        if (x < track.m_fix_area_width - KEY_HALF || x > width() + KEY_HALF)
            continue;
        const bool marked = row == track.m_selected && static_cast<int>(k) == track.m_mouse_key;
        painter.setPen(QPen(palette().text().color(), marked ? 2 : 1));
        painter.setBrush(ColorOf(key.m_color));
        const QPoint corners[] = {{x - KEY_HALF, y}, {x, y - KEY_HALF}, {x + KEY_HALF, y}, {x, y + KEY_HALF}};
        painter.drawPolygon(corners, static_cast<int>(std::size(corners)));
    }
}

void TimelineWidget::PaintScale(QPainter& painter) {
    const float step = TimeStep(LEAST_LABEL_PIXELS);
    const int top = height() - CTrack::SCALE_HEIGHT;
    painter.setPen(palette().windowText().color());
    const int digits = step < 0.1f ? 2 : step < 1 ? 1 : 0;
    for (const float t : Marks(step)) {
        const int x = track.XAt(t);
        if (x < track.m_fix_area_width)
            continue;
        painter.drawLine(x, top, x, top + 6);
        painter.drawText(QRect(x - LEAST_LABEL_PIXELS / 2, top + 7, LEAST_LABEL_PIXELS, CTrack::SCALE_HEIGHT - 8),
                         Qt::AlignHCenter | Qt::AlignTop, tr("%1 s").arg(static_cast<double>(t), 0, 'f', digits));
    }
    painter.drawText(QRect(2 * TEXT_MARGIN, top, track.m_fix_area_width - 2 * TEXT_MARGIN, CTrack::SCALE_HEIGHT),
                     Qt::AlignVCenter, tr("%1 s").arg(static_cast<double>(track.m_syncline), 0, 'f', 2));
}

void TimelineWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton && event->button() != Qt::RightButton)
        return;
    track.ButtonDown(event->button() == Qt::LeftButton, ClientPoint(*event));
    update();
}

void TimelineWidget::mouseReleaseEvent(QMouseEvent* event) {
    track.ButtonUp(event->button() == Qt::LeftButton);
    emit Edited();
}

void TimelineWidget::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & (Qt::LeftButton | Qt::RightButton)) {
        track.MouseMove(ClientPoint(*event));
        update();
    }
}

void TimelineWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton || event->button() == Qt::RightButton)
        emit DoubleClicked(track.OnDoubleClick(event->button() == Qt::LeftButton, ClientPoint(*event)));
    update();
}

void TimelineWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    dialog.Resize(width(), height());
    emit Resized();
}

bool TimelineWidget::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto& help = static_cast<const QHelpEvent&>(*event);
    const int row = help.pos().y() / CTrack::ROW_HEIGHT + track.m_line_pos;
    if (help.pos().y() < height() - CTrack::SCALE_HEIGHT && row < track.GetTrackLinesCount())
        for (const SKeyPoint& key : track.list.m_track_lines[static_cast<size_t>(row)].m_keyPoints)
            if (std::abs(track.XAt(key.m_time) - help.pos().x()) <= KEY_HALF) {
                QToolTip::showText(help.globalPos(), tr("%1 s  %2\n%3")
                                                         .arg(static_cast<double>(key.m_time), 0, 'f', 2)
                                                         .arg(QString::fromStdString(key.m_comment),
                                                              QString::fromStdString(key.m_script)));
                return true;
            }
    QToolTip::hideText();
    return true;
}

// --- One key

KeyDialog::KeyDialog(CInterface& editor, const SKeyPoint& key, QWidget* parent)
    : QDialog(parent), shown(key), color(new CColorButton),
      comment(new QLineEdit(QString::fromStdString(key.m_comment))), script(new CEditKeys) {
    setWindowTitle(tr("Key at %1 s").arg(static_cast<double>(key.m_time), 0, 'f', 2));
    color->SetColor(key.m_color);
    shown_comment = comment->text();
    script->completes = false;
    script->ShowScript(key.m_script);
    connect(color, &CColorButton::Chosen, color, [this](uint32_t rgb) { color->SetColor(rgb); });
    auto* edit_script = new QPushButton(tr("&Script..."));
    edit_script->setToolTip(tr("The script window, with help and completion"));
    auto* sync_button = new QPushButton(tr("S&ync"));
    sync_button->setToolTip(
        tr("Moves the next key of the row to the end of the movie or the speech that this script starts"));
    auto* form = new QFormLayout;
    form->addRow(tr("&Colour"), color);
    form->addRow(tr("Co&mment"), comment);
    form->addRow(tr("Script"), script);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->addButton(edit_script, QDialogButtonBox::ActionRole);
    buttons->addButton(sync_button, QDialogButtonBox::ActionRole);
    auto* column = new QVBoxLayout(this);
    column->addLayout(form);
    column->addWidget(buttons);
    connect(edit_script, &QPushButton::clicked, this, [this, &editor] {
        std::string text = script->Script();
        if (RunScriptWindow(this, editor, editor.command_syntax.get(), text))
            script->ShowScript(text);
    });
    connect(sync_button, &QPushButton::clicked, this, [this] {
        sync = true;
        accept();
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

CKeyPointProperties KeyDialog::Answer() const {
    CKeyPointProperties answer{shown, sync};
    answer.key.m_color = color->m_color;
    if (comment->text() != shown_comment) // a field of one line shows less than a comment may hold
        answer.key.m_comment = comment->text().toStdString();
    answer.key.m_script = script->Script();
    return answer;
}

// --- The window

TracksWindow::TracksWindow(CTrackDlg& logic, CInterface& controller, QWidget* parent)
    : QDialog(parent), dialog(logic), editor(controller), timeline(new TimelineWidget(logic)),
      across(new QScrollBar(Qt::Horizontal)), down(new QScrollBar(Qt::Vertical)), total_time(new QDoubleSpinBox),
      zoom(new QSpinBox), snap(new QCheckBox(tr("Sna&p"))), grid(new QCheckBox(tr("&Grid"))) {
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    auto* files = new QHBoxLayout;
    AddButton(*files, tr("&New"), tr("Empties the tracklist"), &CTrackDlg::OnNewTrack);
    AddButton(*files, tr("&Load..."), tr("Reads a tracklist"), &CTrackDlg::OnLoadTrack);
    AddButton(*files, tr("&Save"), tr("Writes the tracklist"), &CTrackDlg::OnSaveTrack);
    AddButton(*files, tr("Save &as..."), tr("Writes it under another name"), &CTrackDlg::OnSaveTrackAs);
    files->addSpacing(16);
    AddButton(*files, tr("New l&ine..."), tr("A row of keys"), &CTrackDlg::OnCreateLine);
    AddButton(*files, tr("&Delete line"), tr("The selected row, with its keys"), &CTrackDlg::OnDeleteLine);
    AddButton(*files, tr("&Up"), tr("The selected row up"), &CTrackDlg::OnMoveUp);
    AddButton(*files, tr("Do&wn"), tr("The selected row down"), &CTrackDlg::OnMoveDown);
    files->addStretch();
    AddButton(*files, tr("&Engine update"), tr("Tells the running game that something has changed"),
              &CTrackDlg::OnEngineUpdate);
    auto* settings = new QHBoxLayout;
    total_time->setRange(0.1, 100000);
    total_time->setSuffix(tr(" s"));
    total_time->setToolTip(tr("Length of the time scale"));
    zoom->setRange(CTrackDlg::MIN_ZOOM, CTrackDlg::MAX_ZOOM);
    zoom->setToolTip(tr("100 shows a second on 100 pixels"));
    snap->setToolTip(tr("Keys go to quarters of a second"));
    for (auto [label, box] : {std::pair<QString, QWidget*>(tr("&Total time"), total_time), {tr("&Zoom"), zoom}}) {
        auto* text = new QLabel(label);
        text->setBuddy(box);
        settings->addWidget(text);
        settings->addWidget(box);
    }
    settings->addWidget(snap);
    settings->addWidget(grid);
    settings->addStretch();
    auto* close_button = new QPushButton(tr("Close"));
    close_button->setAutoDefault(false);
    settings->addWidget(close_button);
    auto* middle = new QHBoxLayout;
    middle->addWidget(timeline, 1);
    middle->addWidget(down);
    auto* column = new QVBoxLayout(this);
    column->addLayout(files);
    column->addLayout(middle, 1);
    column->addWidget(across);
    column->addLayout(settings);
    connect(close_button, &QPushButton::clicked, this, [this] { reject(); });
    connect(total_time, &QDoubleSpinBox::editingFinished, this, [this] {
        if (total_time->value() == shown_total_time)
            return; // left as it was: the field shows fewer digits than a file may hold
        dialog.m_total_time = static_cast<float>(total_time->value());
        dialog.m_zoom = zoom->value();
        dialog.OnOK();
        Follow();
    });
    connect(zoom, qOverload<int>(&QSpinBox::valueChanged), this, [this](int value) {
        dialog.m_zoom = value;
        dialog.OnDeltaposZoomSpin(value);
        Follow();
    });
    connect(snap, &QCheckBox::clicked, this, [this] { dialog.OnSnap(); });
    connect(grid, &QCheckBox::clicked, this, [this] {
        dialog.OnGrid();
        timeline->update();
    });
    connect(across, &QScrollBar::valueChanged, this, [this](int value) {
        dialog.OnHScroll(value);
        timeline->update();
    });
    connect(down, &QScrollBar::valueChanged, this, [this](int value) {
        dialog.track.SetYPosition(value);
        timeline->update();
    });
    connect(timeline, &TimelineWidget::DoubleClicked, this, &TracksWindow::OnDoubleClick);
    connect(timeline, &TimelineWidget::Resized, this, [this] { Follow(); });
    Follow();
}

void TracksWindow::AddButton(QBoxLayout& row, const QString& text, const QString& tip, void (CTrackDlg::*act)()) {
    auto* button = new QPushButton(text);
    button->setToolTip(tip);
    button->setAutoDefault(false);
    row.addWidget(button);
    connect(button, &QPushButton::clicked, this, [this, act] {
        (dialog.*act)();
        Follow();
    });
}

void TracksWindow::Follow() {
    const QSignalBlocker blockers[] = {QSignalBlocker(across), QSignalBlocker(down), QSignalBlocker(total_time),
                                       QSignalBlocker(zoom),   QSignalBlocker(snap), QSignalBlocker(grid)};
    setWindowTitle(QString::fromStdString(dialog.title));
    total_time->setValue(static_cast<double>(dialog.m_total_time));
    shown_total_time = total_time->value();
    zoom->setValue(dialog.m_zoom);
    snap->setChecked(dialog.track.snap);
    grid->setChecked(dialog.ShowsGrid());
    across->setPageStep(dialog.HScrollPage());
    across->setRange(0, dialog.HScrollRange());
    across->setValue(dialog.HScrollPosition());
    down->setPageStep(dialog.VScrollPage());
    down->setRange(0, std::max(0, dialog.track.GetTrackLinesCount() - dialog.VScrollPage()));
    down->setValue(dialog.track.m_line_pos);
    timeline->update();
}

void TracksWindow::OnDoubleClick(CTrack::DoubleClick what) {
    if (what == CTrack::DoubleClick::RenameLine)
        dialog.OnRenameLine();
    else if (what == CTrack::DoubleClick::EditKey)
        EditKey();
    Follow();
}

void TracksWindow::EditKey() {
    const STrackLine* line = dialog.track.SelectedLine();
    const int key = dialog.track.m_mouse_key;
    if (!line || key < 0 || static_cast<size_t>(key) >= line->m_keyPoints.size())
        return;
    KeyDialog window(editor, line->m_keyPoints[static_cast<size_t>(key)], this);
    if (window.exec() == QDialog::Accepted)
        dialog.ApplyKey(window.Answer());
}

void TracksWindow::reject() {
    if (dialog.OnCancel())
        QDialog::reject();
}

void RunTracksWindow(CTrackDlg& logic, CInterface& editor, QWidget* parent) {
    TracksWindow window(logic, editor, parent);
    window.resize(1000, 460);
    window.exec();
}
