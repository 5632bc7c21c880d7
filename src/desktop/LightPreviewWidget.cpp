#include "desktop/LightPreviewWidget.h"

#include <QPainter>

#include "editor/Interface.h"

static constexpr int PICTURE_INTERVAL = 200; // milliseconds

LightPreviewWidget::LightPreviewWidget(CInterface& controller, const QRect& place, QWidget* parent)
    : QWidget(parent), editor(controller), size((QSizeF(place.size()) * parent->devicePixelRatioF()).toSize()),
      preview(controller, std::max(size.width(), 1), std::max(size.height(), 1)) {
    setGeometry(place);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    editor.light_observer = [this](const Brush& lit) { preview.Take(lit); };
    connect(&timer, &QTimer::timeout, this, [this] {
        if (!preview.Draw())
            return;
        const std::vector<uint8_t> rgb = preview.Rgb();
        image = QImage(rgb.data(), size.width(), size.height(), 3 * size.width(), QImage::Format_RGB888).copy();
        show(); // from the first light on
        raise();
        update();
    });
    timer.start(PICTURE_INTERVAL);
}

LightPreviewWidget::~LightPreviewWidget() { editor.light_observer = nullptr; }

void LightPreviewWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.drawImage(rect(), image);
}
