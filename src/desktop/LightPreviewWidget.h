// Lies over the perspective view during a compile and shows the light as it comes, brush by brush.
#pragma once

#include <memory>

#include <QImage>
#include <QTimer>
#include <QWidget>

#include "editor/LightPreview.h"

class CInterface;

class LightPreviewWidget : public QWidget {
public:
    // place: of the perspective view within parent. The compile's workers tell it of lit brushes until it is gone.
    LightPreviewWidget(CInterface& controller, const QRect& place, QWidget* parent);
    ~LightPreviewWidget() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    CInterface& editor;
    QSize size; // of the picture, device pixels
    LightPreview preview;
    QImage image;
    QTimer timer;
};
