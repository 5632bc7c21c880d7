// The middle of the window: all four views in one picture, as large as this widget in device pixels, with lines between
// them that can be dragged. It hands the mouse to the views and draws only those that have changed.
#pragma once

#include <QTimer>
#include <QWidget>
#include <array>

#include "commands/MainFrame.h"
#include "desktop/FlyKeys.h"
#include "editor/EditorListener.h"

// Shows the picture of the renderer. It asks for the drawing when it paints.
class ViewsPainter {
public:
    virtual ~ViewsPainter() = default;
    virtual QWidget& Surface() = 0;
    virtual void MakeCurrent() {} // before the device is used outside of an event

    std::function<void()> draw_pending; // draws what has changed
};

// For the software device: its picture is shown as it lies in memory.
class SoftViewsWidget : public QWidget, public ViewsPainter {
    Q_OBJECT
public:
    explicit SoftViewsWidget(QWidget* parent = nullptr);
    QWidget& Surface() override { return *this; }

protected:
    void paintEvent(QPaintEvent* event) override;
};

class SplitLine;

class ViewsWidget : public QWidget, public EditorListener {
    Q_OBJECT
public:
    // The painter's surface becomes a child.
    explicit ViewsWidget(ViewsPainter& views_painter, QWidget* parent = nullptr);
    ~ViewsWidget() override;
    void Attach(CMainFrame& main_frame); // which has a world by then

    QSize DeviceSize() const;
    int ViewAt(QPointF position) const; // -1 between the views
    POINT ClientPoint(int view, QPointF position) const;
    QRect Rect(int view) const; // within this widget
    // While a compile works on the level in another thread nothing is drawn.
    void SetFrozen(bool freeze);
    // Device pixels of the left column and the upper row; -1 leaves one as it is.
    void MoveSplit(int left, int upper);

    // While the right button flies the camera. False: the key is not for that.
    bool FlyKey(int key, bool pressed);
    const Box& BoxAtPress() const { return box_at_press; } // of the selection, before the drag
    // Draws the next of the views that follow a drag in another one.
    void Follow();

    // EditorListener
    void ViewChanged(int view) override;
    void LayoutChanged() override;
    void WorldReplaced() override;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void DrawPending();
    bool IsFollowed() const;
    void FollowLater(unsigned follower_views);
    void DrawNow(unsigned changed_views);
    bool FitBackBuffer();
    void ApplyLayout();
    void PlaceView(int view, const RECT& rect);
    void PlaceLines(int left, int upper, int line);
    void TakeSize();
    void Press(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, QPointF position);
    void Release(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, QPointF position);
    void ReleaseLost(Qt::MouseButtons still_down, Qt::KeyboardModifiers modifiers, QPointF position);
    int LineWidth() const;

    ViewsPainter& painter;
    CMainFrame* frame = nullptr;
    std::array<SplitLine*, 3> lines{}; // between the columns, between the rows, and where they cross
    std::array<QSize, VIEW_COUNT> last_size;
    unsigned pending = 0; // bits of the views to draw
    QSize laid_out;       // device pixels
    qreal laid_out_ratio = 1;
    bool frozen = false;
    int held_view = -1; // has the mouse until all buttons are up
    Qt::MouseButtons held_buttons;
    FlyKeys fly;
    QTimer fly_timer;
    Box box_at_press;
    // The views beside the one that is dragged in follow it, one at a time and with pauses, so that they take but a
    // tenth of the time from the hand.
    QTimer follow_timer;
    unsigned following = 0, last_followed = 0; // bits of views
    int follow_cost = 0;                       // milliseconds of the last of them
    int wheel_rest = 0;                        // of a notch
};
