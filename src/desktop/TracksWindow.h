// The tracklist window: rows of keys in time, edited by the mouse.
#pragma once

#include <array>
#include <vector>

#include <QDialog>

#include "desktop/ColorButton.h"
#include "pages/TrackDlg.h"

class QCheckBox;
class QDoubleSpinBox;
class QLineEdit;
class QScrollBar;
class QSpinBox;
class CEditKeys;
class CInterface;

// The timeline itself: names at the left, rows of keys, the scale below.
class TimelineWidget : public QWidget {
    Q_OBJECT
public:
    TimelineWidget(CTrackDlg& logic, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {900, 360}; }

signals:
    void DoubleClicked(CTrack::DoubleClick what);
    void Edited(); // by the mouse
    void Resized();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override; // tool tips of keys

private:
    void PaintRow(QPainter& painter, int row);
    void PaintScale(QPainter& painter);
    float TimeStep(int least_pixels) const;     // of marks: 1, 2 or 5 times a power of ten, seconds
    std::vector<float> Marks(float step) const; // the times of those that may be seen

    CTrackDlg& dialog;
    CTrack& track;
};

// Colour, comment and script of one key.
class KeyDialog : public QDialog {
public:
    KeyDialog(CInterface& editor, const SKeyPoint& key, QWidget* parent);
    CKeyPointProperties Answer() const;

private:
    SKeyPoint shown;
    CColorButton* color;
    QLineEdit* comment;
    QString shown_comment;
    CEditKeys* script;
    bool sync = false;
};

class TracksWindow : public QDialog {
public:
    // Of a dialog that is initialised.
    TracksWindow(CTrackDlg& logic, CInterface& controller, QWidget* parent);

protected:
    void reject() override; // asks about changes

private:
    void AddButton(class QBoxLayout& row, const QString& text, const QString& tip, void (CTrackDlg::*act)());
    void Follow(); // fields, scroll bars, title and the timeline
    void EditKey();
    void OnDoubleClick(CTrack::DoubleClick what);

    CTrackDlg& dialog;
    CInterface& editor;
    TimelineWidget* timeline;
    QScrollBar *across, *down;
    QDoubleSpinBox* total_time;
    double shown_total_time = 0;
    QSpinBox* zoom;
    QCheckBox *snap, *grid;
};

// Until it is closed.
void RunTracksWindow(CTrackDlg& logic, CInterface& editor, QWidget* parent);
