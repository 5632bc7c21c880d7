// For OpenGL: the renderer draws in a context of its own, whatever window shows its picture, and the picture is handed
// to the widget's context as a texture that both share.
#pragma once

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions_3_3_Core>
#include <QOpenGLWidget>
#include <memory>

#include "desktop/GlDevice.h"
#include "desktop/ViewsWidget.h"

class QOpenGLFramebufferObject;

class GlViewsWidget : public QOpenGLWidget, public ViewsPainter {
    Q_OBJECT
public:
    explicit GlViewsWidget(QWidget* parent = nullptr);
    ~GlViewsWidget() override;
    QWidget& Surface() override { return *this; }
    void MakeCurrent() override;

    // Null when there is no OpenGL 3.3, or windows cannot show it.
    GlDevice* MakeDevice();

protected:
    void initializeGL() override;
    void paintGL() override;

private:
    GLsync TakePicture(const QSize& size); // of the device, into `picture`

    QOffscreenSurface surface;
    QOpenGLContext device_context;
    std::unique_ptr<GlDevice> device;
    std::unique_ptr<QOpenGLFramebufferObject> picture; // of the device's context
    QOpenGLFunctions_3_3_Core gl;                      // of the widget's context
    GLuint reader = 0;                                 // a framebuffer there, to read the picture from
};
