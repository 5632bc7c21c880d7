#include "desktop/ViewsWidget.h"

#include <QElapsedTimer>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QThread>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

#include "drawing/DrawingScope.h"
#include "render/DisplayScale.h"
#include "render/Frame.h"

namespace {

constexpr int LINE_WIDTH = 4;                  // pixels of the screen's scale
constexpr int LEAST_PANE = 5, LEAST_SIDE = 16; // device pixels
constexpr int FLY_TICK = 16, FOLLOW_TICK = 20; // milliseconds
constexpr int FOLLOW_PAUSE = 9;                // times what the drawing of a follower took
constexpr unsigned ALL_VIEWS = (1u << VIEW_COUNT) - 1;
constexpr uint32_t DEEP = 32, FLAT = 16; // bits of a pixel

uint32_t MouseFlags(Qt::KeyboardModifiers modifiers) {
    return (modifiers & Qt::ShiftModifier ? MOUSE_SHIFT : 0u) | (modifiers & Qt::ControlModifier ? MOUSE_CONTROL : 0u);
}

} // namespace

// Dragged to move the split.
class SplitLine : public QWidget {
public:
    SplitLine(ViewsWidget& parent, bool across, bool along)
        : QWidget(&parent), views(parent), moves_x(across), moves_y(along) {
        setCursor(moves_x && moves_y ? Qt::SizeAllCursor : moves_x ? Qt::SplitHCursor : Qt::SplitVCursor);
        setAutoFillBackground(true);
        setToolTip("Drag to share the window out between the views.");
    }

protected:
    void mousePressEvent(QMouseEvent* event) override { grip = event->position(); }
    void mouseMoveEvent(QMouseEvent* event) override {
        if (!(event->buttons() & Qt::LeftButton))
            return;
        const QPointF corner = (mapToParent(event->position()) - grip) * views.devicePixelRatioF();
        views.MoveSplit(moves_x ? qRound(corner.x()) : -1, moves_y ? qRound(corner.y()) : -1);
    }

private:
    ViewsWidget& views;
    bool moves_x, moves_y;
    QPointF grip;
};

SoftViewsWidget::SoftViewsWidget(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_OpaquePaintEvent); }

void SoftViewsWidget::paintEvent(QPaintEvent* event) {
    if (draw_pending)
        draw_pending();
    QPainter qt_painter(this);
    DeviceSurface* front = criGetFrontBuffer();
    uint32_t pitch = 0;
    const uint8_t* pixels = front ? front->Lock(0, 0, pitch) : nullptr;
    if (!pixels) {
        qt_painter.fillRect(event->rect(), palette().color(QPalette::Window));
        return;
    }
    QImage picture(pixels, static_cast<int>(front->Width()), static_cast<int>(front->Height()),
                   static_cast<qsizetype>(pitch), QImage::Format_RGB32);
    picture.setDevicePixelRatio(devicePixelRatioF());
    qt_painter.setClipRegion(event->region());
    qt_painter.drawImage(QPointF(), picture);
    front->Unlock(0, 0);
}

ViewsWidget::ViewsWidget(ViewsPainter& views_painter, QWidget* parent) : QWidget(parent), painter(views_painter) {
    QWidget& surface = painter.Surface();
    surface.setParent(this);
    surface.setAttribute(Qt::WA_TransparentForMouseEvents);
    surface.setGeometry(rect());
    painter.draw_pending = [this] { DrawPending(); };
    lines = {new SplitLine(*this, true, false), new SplitLine(*this, false, true), new SplitLine(*this, true, true)};
    for (SplitLine* line : lines)
        line->hide();
    connect(&fly_timer, &QTimer::timeout, this, [this] {
        if (!frozen)
            fly.Step(*frame, GetDesktop().GetTickCount());
    });
    follow_timer.setSingleShot(true);
    connect(&follow_timer, &QTimer::timeout, this, &ViewsWidget::Follow);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(160, 120);
}

ViewsWidget::~ViewsWidget() {
    painter.draw_pending = nullptr;
    if (frame)
        frame->interface.RemoveListener(*this);
}

void ViewsWidget::Attach(CMainFrame& main_frame) {
    frame = &main_frame;
    frame->interface.AddListener(*this);
    TakeSize();
}

QSize ViewsWidget::DeviceSize() const {
    const qreal ratio = devicePixelRatioF();
    return {std::max(qRound(width() * ratio), LEAST_SIDE), std::max(qRound(height() * ratio), LEAST_SIDE)};
}

int ViewsWidget::LineWidth() const { return qRound(LINE_WIDTH * devicePixelRatioF()); }

// Drawing -------------------------------------------------------------------------------------------------------------

void ViewsWidget::ViewChanged(int view) {
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(
            this, [this, view] { ViewChanged(view); }, Qt::QueuedConnection);
        return;
    }
    const unsigned bit = 1u << view;
    if (!IsFollowed())
        DrawNow(bit);
    else if (view == held_view) { // the hand comes first
        DrawNow(bit);
        FollowLater(ALL_VIEWS & ~bit);
    } else
        FollowLater(bit);
}

void ViewsWidget::DrawNow(unsigned changed_views) {
    pending |= changed_views;
    for (int view = 0; view < VIEW_COUNT; ++view)
        if (changed_views & 1u << view)
            painter.Surface().update(Rect(view));
}

bool ViewsWidget::IsFollowed() const {
    const CInterface& interface = frame->interface;
    const EditorState state = interface.editor_state;
    return held_view >= 0 &&
           (state == ES_EDIT || state == ES_ROTATE || state == ES_VERTEX_MOVE || state == ES_CREATE_BRUSH ||
            interface.editing_cordon_box || interface.editing_clip_box || fly.IsLooking());
}

void ViewsWidget::FollowLater(unsigned follower_views) {
    following |= follower_views;
    if (!follow_timer.isActive())
        follow_timer.start(std::max(FOLLOW_TICK, FOLLOW_PAUSE * follow_cost));
}

void ViewsWidget::Follow() {
    if (following == 0)
        return;
    unsigned bit = last_followed;
    do
        bit = bit << 1 & ALL_VIEWS ? bit << 1 : 1u;
    while (!(following & bit));
    last_followed = bit;
    following &= ~bit;
    DrawNow(bit);
    if (following != 0)
        FollowLater(0);
}

void ViewsWidget::SetFrozen(bool freeze) {
    frozen = freeze;
    painter.Surface().update();
}

void ViewsWidget::DrawPending() {
    if (!frame || frozen || frame->interface.compilation_active)
        return;
    if (laid_out != DeviceSize() || laid_out_ratio != devicePixelRatioF()) { // the scale of the screen has changed
        TakeSize();
        pending = ALL_VIEWS;
    }
    if (!FitBackBuffer())
        return;
    const DrawingScope one_level;
    for (int view = 0; view < VIEW_COUNT; ++view) {
        if (!(pending & 1u << view))
            continue;
        QElapsedTimer time;
        time.start();
        frame->interface.DrawView(view);
        if (held_view >= 0 && view != held_view)
            follow_cost = static_cast<int>(time.elapsed());
    }
    pending = 0;
}

bool ViewsWidget::FitBackBuffer() {
    const uint32_t w = static_cast<uint32_t>(laid_out.width()), h = static_cast<uint32_t>(laid_out.height());
    if (crvD3DDevice && crvScrWidth == w && crvScrHeight == h)
        return true;
    pending = ALL_VIEWS;
    if (!crvCurD3DDevice ||
        (crSetMode(w, h, DEEP, DEEP, 0, 0, true) != 0 && crSetMode(w, h, FLAT, FLAT, 0, 0, true) != 0))
        return false;
    crvTryRestore = true;
    return true;
}

// Layout --------------------------------------------------------------------------------------------------------------

QRect ViewsWidget::Rect(int view) const {
    const RECT& r = frame->interface.View(view).window_rect;
    const qreal ratio = devicePixelRatioF();
    return QRectF(r.left / ratio, r.top / ratio, r.Width() / ratio, r.Height() / ratio).toAlignedRect();
}

// The share of each column and row stays as it was dragged, and the one view of a full view too.
void ViewsWidget::TakeSize() {
    const SplitLayout before = frame->layout;
    const QSize old_size = laid_out;
    laid_out = DeviceSize();
    laid_out_ratio = devicePixelRatioF();
    crSetDisplayScale(static_cast<float>(laid_out_ratio));
    frame->SetClientSize(laid_out.width(), laid_out.height());
    if (old_size.isValid() && before.columns[0] + before.columns[1] > 0 && before.rows[0] + before.rows[1] > 0) {
        frame->layout = before;
        ApplyLayout();
    }
}

void ViewsWidget::resizeEvent(QResizeEvent*) {
    painter.Surface().setGeometry(rect());
    if (frame)
        TakeSize();
}

void ViewsWidget::LayoutChanged() {
    if (QThread::currentThread() != thread())
        QMetaObject::invokeMethod(
            this, [this] { ApplyLayout(); }, Qt::QueuedConnection);
    else
        ApplyLayout();
}

// The layout tells how the columns and the rows share the room, whatever it was measured against.
static int FirstPart(const std::array<int, 2>& parts, int room, int line) {
    if (parts[0] <= 0 || parts[1] <= 0)
        return parts[0] <= 0 ? 0 : room;
    const double share = static_cast<double>(parts[0]) / (static_cast<double>(parts[0]) + parts[1]);
    return std::clamp(static_cast<int>(std::lround(share * (room - line))), LEAST_PANE, room - line - LEAST_PANE);
}

void ViewsWidget::ApplyLayout() {
    const SplitLayout& layout = frame->layout;
    const int w = laid_out.width(), h = laid_out.height();
    if (!laid_out.isValid() || layout.columns[0] + layout.columns[1] <= 0 || layout.rows[0] + layout.rows[1] <= 0)
        return;
    const int line = LineWidth();
    const int left = FirstPart(layout.columns, w, line), upper = FirstPart(layout.rows, h, line);
    const bool split_x = left > 0 && left<w, split_y = upper> 0 && upper < h;
    const int right_start = split_x ? left + line : left, lower_start = split_y ? upper + line : upper;
    const int x[2][2] = {{0, left}, {right_start, w}}, y[2][2] = {{0, upper}, {lower_start, h}};
    for (int view = 0; view < VIEW_COUNT; ++view) {
        const PanePlace place = PaneOf(view);
        PlaceView(view, {x[place.column][0], y[place.row][0], x[place.column][1], y[place.row][1]});
    }
    PlaceLines(split_x ? left : -1, split_y ? upper : -1, line);
}

// What was in the middle of a view stays there.
void ViewsWidget::PlaceView(int view, const RECT& rect) {
    CInterface& interface = frame->interface;
    VIEWINFO& vi = interface.View(view);
    const RECT& old = vi.window_rect;
    if (old.left == rect.left && old.top == rect.top && old.right == rect.right && old.bottom == rect.bottom)
        return;
    const bool shown = rect.Width() > 0 && rect.Height() > 0;
    interface.SetViewRect(view, shown ? rect : RECT{});
    if (!shown)
        return;
    QSize& last = last_size[static_cast<size_t>(view)];
    const QSize size(rect.Width(), rect.Height());
    if (last.isEmpty())
        vi.ScrollTo(-size.width() / 2, -size.height() / 2); // the origin
    else
        vi.ScrollTo(int64_t{vi.view_position[0]} + last.width() / 2 - size.width() / 2,
                    int64_t{vi.view_position[1]} + last.height() / 2 - size.height() / 2);
    last = size;
    ViewChanged(view);
}

void ViewsWidget::PlaceLines(int left, int upper, int line) {
    const qreal ratio = devicePixelRatioF();
    const auto place = [ratio](SplitLine* widget, bool shown, QRectF r) {
        widget->setVisible(shown);
        widget->setGeometry(
            QRectF(r.x() / ratio, r.y() / ratio, r.width() / ratio, r.height() / ratio).toAlignedRect());
    };
    place(lines[0], left >= 0, QRectF(left, 0, line, laid_out.height()));
    place(lines[1], upper >= 0, QRectF(0, upper, laid_out.width(), line));
    place(lines[2], left >= 0 && upper >= 0, QRectF(left - line, upper - line, 3 * line, 3 * line));
    lines[2]->raise();
}

void ViewsWidget::MoveSplit(int left, int upper) {
    const int line = LineWidth();
    const auto share = [line](std::array<int, 2>& parts, int first, int room) {
        if (first >= 0) {
            parts[0] = std::clamp(first, LEAST_PANE, std::max(room - line - LEAST_PANE, LEAST_PANE));
            parts[1] = std::max(room - line - parts[0], LEAST_PANE);
        }
    };
    share(frame->layout.columns, left, laid_out.width());
    share(frame->layout.rows, upper, laid_out.height());
    ApplyLayout();
}

// A new level comes without full view.
void ViewsWidget::WorldReplaced() {
    const SplitLayout& layout = frame->layout;
    const bool one_view = std::min({layout.columns[0], layout.columns[1], layout.rows[0], layout.rows[1]}) == 0;
    if (one_view && !frame->interface.full_view) {
        frame->CenterSplitter();
        frame->interface.CenterWorld(true);
    }
}

// Mouse ---------------------------------------------------------------------------------------------------------------

int ViewsWidget::ViewAt(QPointF position) const {
    const QPointF point = position * devicePixelRatioF();
    for (int view = 0; frame && view < VIEW_COUNT; ++view) {
        const RECT& r = frame->interface.View(view).window_rect;
        if (point.x() >= r.left && point.x() < r.right && point.y() >= r.top && point.y() < r.bottom)
            return view;
    }
    return -1;
}

POINT ViewsWidget::ClientPoint(int view, QPointF position) const {
    const RECT& r = frame->interface.View(view).window_rect;
    const QPointF point = position * devicePixelRatioF();
    return {static_cast<int32_t>(std::floor(point.x())) - r.left, static_cast<int32_t>(std::floor(point.y())) - r.top};
}

void ViewsWidget::Press(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, QPointF position) {
    if (!frame || frozen)
        return;
    if (held_view < 0)
        held_view = ViewAt(position);
    if (held_view < 0)
        return;
    held_buttons |= button;
    if (button == Qt::LeftButton)
        box_at_press = frame->interface.selection_box;
    CEditorView& view = frame->View(held_view);
    const uint32_t flags = MouseFlags(modifiers);
    const POINT point = ClientPoint(held_view, position);
    if (button == Qt::LeftButton)
        view.OnLButtonDown(flags, point);
    else if (button == Qt::MiddleButton)
        view.OnMButtonDown(flags, point);
    else if (button == Qt::RightButton)
        view.OnRButtonDown(flags, point);
}

void ViewsWidget::Release(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, QPointF position) {
    if (!(held_buttons & button) || held_view < 0)
        return;
    held_buttons &= ~Qt::MouseButtons(button);
    CEditorView& view = frame->View(held_view);
    const uint32_t flags = MouseFlags(modifiers);
    const POINT point = ClientPoint(held_view, position);
    if (button == Qt::LeftButton)
        view.OnLButtonUp(flags, point);
    else if (button == Qt::MiddleButton)
        view.OnMButtonUp(flags, point);
    else if (button == Qt::RightButton) {
        view.OnRButtonUp(flags, point);
        fly.Stop(*frame);
        fly_timer.stop();
    }
    DrawNow(std::exchange(following, 0));
    // An outline keeps the mouse between its clicks.
    if (held_buttons == Qt::NoButton && frame->interface.MouseRelease())
        held_view = -1;
}

// Buttons that were let go where no event came from.
void ViewsWidget::ReleaseLost(Qt::MouseButtons still_down, Qt::KeyboardModifiers modifiers, QPointF position) {
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton, Qt::RightButton})
        if (held_buttons & button && !(still_down & button))
            Release(button, modifiers, position);
    if (held_buttons == Qt::NoButton && frame->interface.MouseRelease())
        held_view = -1;
}

void ViewsWidget::mousePressEvent(QMouseEvent* event) {
    setFocus(Qt::MouseFocusReason);
    Press(event->button(), event->modifiers(), event->position());
}

void ViewsWidget::mouseReleaseEvent(QMouseEvent* event) {
    Release(event->button(), event->modifiers(), event->position());
}

bool ViewsWidget::FlyKey(int key, bool pressed) {
    if (!frame || frozen || held_view != VIEW_PERSPECTIVE || !(held_buttons & Qt::RightButton))
        return false;
    if (!pressed) {
        fly.Release(*frame, key);
        return true;
    }
    if (!fly.Press(*frame, key))
        return false;
    if (!fly_timer.isActive())
        fly_timer.start(FLY_TICK);
    return true;
}

// Only the perspective view knows a double click of the left button, and only with Ctrl. Elsewhere it is the press that
// it is.
void ViewsWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    const int view = frame && !frozen ? ViewAt(event->position()) : -1;
    const uint32_t flags = MouseFlags(event->modifiers());
    const bool maps_surface = view == VIEW_PERSPECTIVE && event->button() == Qt::LeftButton && flags == MOUSE_CONTROL &&
                              frame->interface.editor_state != ES_VERTEX && frame->interface.editor_state != ES_DECAL;
    if (view >= 0 && view != VIEW_PERSPECTIVE && event->button() == Qt::MiddleButton &&
        event->modifiers() == Qt::NoModifier) {
        // As Alt and a click do, which many desktops keep for themselves. The first click has made the view the active
        // one.
        frame->interface.MoveCameraToMouse(ClientPoint(view, event->position()));
        return;
    }
    if (!maps_surface) {
        mousePressEvent(event);
        return;
    }
    held_view = view;
    held_buttons |= Qt::LeftButton;
    frame->View(view).OnLButtonDblClk(flags, ClientPoint(view, event->position()));
}

void ViewsWidget::mouseMoveEvent(QMouseEvent* event) {
    if (!frame || frozen)
        return;
    ReleaseLost(event->buttons(), event->modifiers(), event->position());
    const int view = held_view >= 0 ? held_view : ViewAt(event->position());
    if (view >= 0)
        frame->View(view).OnMouseMove(MouseFlags(event->modifiers()), ClientPoint(view, event->position()));
}

// With Alt the wheel comes as one to the side.
void ViewsWidget::wheelEvent(QWheelEvent* event) {
    constexpr int NOTCH = QWheelEvent::DefaultDeltasPerStep;
    const QPoint delta = event->angleDelta();
    wheel_rest += event->modifiers() & Qt::AltModifier && delta.y() == 0 ? delta.x() : delta.y();
    const int view = held_view >= 0 ? held_view : ViewAt(event->position());
    for (; std::abs(wheel_rest) >= NOTCH; wheel_rest -= wheel_rest < 0 ? -NOTCH : NOTCH)
        if (fly.IsLooking())
            FlyKeys::ChangeSpeed(frame->interface, wheel_rest > 0);
        else if (view >= 0 && frame && !frozen)
            frame->View(view).OnMouseWheel(MouseFlags(event->modifiers()), wheel_rest < 0 ? -NOTCH : NOTCH);
    event->accept();
}
