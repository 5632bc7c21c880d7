#include "desktop/SplashWindow.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <QTimer>
#include <algorithm>

namespace {

constexpr int WIDTH = 420, HEIGHT = 240;
constexpr int MARGIN = 20, TEXT_ABOVE_EDGE = 36, TEXT_HEIGHT = 24, BAR_HEIGHT = 3;

// A room in the four views' manner: a grid, and boxes in lines.
QPixmap Picture(qreal ratio) {
    QPixmap picture(QSize(WIDTH, HEIGHT) * ratio);
    picture.setDevicePixelRatio(ratio);
    QLinearGradient night(0, 0, 0, HEIGHT);
    night.setColorAt(0, QColor(24, 30, 44));
    night.setColorAt(1, QColor(10, 12, 18));
    QPainter painter(&picture);
    painter.fillRect(0, 0, WIDTH, HEIGHT, night);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(50, 62, 88), 1));
    for (int x = 0; x <= WIDTH; x += 20)
        painter.drawLine(x, 0, x, HEIGHT);
    for (int y = 0; y <= HEIGHT; y += 20)
        painter.drawLine(0, y, WIDTH, y);
    painter.setPen(QPen(QColor(232, 196, 120), 2));
    const QPointF front[] = {{240, 60}, {340, 60}, {340, 160}, {240, 160}};
    const QPointF back[] = {{280, 40}, {380, 40}, {380, 140}, {280, 140}};
    painter.drawPolygon(front, 4);
    painter.drawPolygon(back, 4);
    for (int corner = 0; corner < 4; ++corner)
        painter.drawLine(front[corner], back[corner]);
    QFont font = QApplication::font();
    font.setPixelSize(30);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QRect(MARGIN, HEIGHT - 80, WIDTH - 2 * MARGIN, 40), Qt::AlignLeft | Qt::AlignVCenter,
                     "Marrowstead 2000");
    return picture;
}

} // namespace

SplashWindow::SplashWindow(int milliseconds)
    : QSplashScreen(Picture(qApp->devicePixelRatio())), time_shown(milliseconds) {
    qApp->installEventFilter(this);
    QTimer::singleShot(time_shown, this, &QWidget::hide);
    shown.start();
}

SplashWindow::~SplashWindow() { qApp->removeEventFilter(this); }

// The start has no event loop yet: the picture draws itself here, and looks whether its time is over.
void SplashWindow::Tell(const QString& what_is_done, double share_done) {
    if (!isVisible())
        return;
    doing = what_is_done;
    share = std::clamp(share_done, 0.0, 1.0);
    if (shown.hasExpired(time_shown))
        hide();
    else
        repaint();
}

void SplashWindow::drawContents(QPainter* painter) {
    painter->setFont(QApplication::font());
    painter->setPen(QColor(190, 200, 220));
    painter->drawText(QRect(MARGIN, HEIGHT - TEXT_ABOVE_EDGE, WIDTH - 2 * MARGIN, TEXT_HEIGHT),
                      Qt::AlignLeft | Qt::AlignVCenter, doing);
    painter->fillRect(QRectF(0, HEIGHT - BAR_HEIGHT, WIDTH * share, BAR_HEIGHT), QColor(232, 196, 120));
}

bool SplashWindow::eventFilter(QObject*, QEvent* event) {
    if (!isVisible() || (event->type() != QEvent::KeyPress && event->type() != QEvent::MouseButtonPress))
        return false;
    hide();
    return true;
}
