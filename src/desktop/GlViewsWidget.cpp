#include "desktop/GlViewsWidget.h"

#include <QGuiApplication>
#include <QOpenGLExtraFunctions>
#include <QOpenGLFramebufferObject>

namespace {

QSurfaceFormat WantedFormat() {
    QSurfaceFormat wanted;
    wanted.setRenderableType(QSurfaceFormat::OpenGL);
    wanted.setVersion(3, 3);
    wanted.setProfile(QSurfaceFormat::CoreProfile);
    return wanted;
}

// Other window systems may have OpenGL, but none in a part of a window, and their windows then crash.
bool IsShownInWindows() {
    const QString system = QGuiApplication::platformName();
    return system == "xcb" || system.startsWith("wayland") || system.startsWith("eglfs");
}

} // namespace

GlViewsWidget::GlViewsWidget(QWidget* parent) : QOpenGLWidget(parent) { setFormat(WantedFormat()); }

GlViewsWidget::~GlViewsWidget() {
    if (reader != 0 && context()) {
        makeCurrent();
        gl.glDeleteFramebuffers(1, &reader);
    }
    if (device_context.isValid()) {
        MakeCurrent();
        picture.reset();
        device.reset();
        device_context.doneCurrent();
    }
}

void GlViewsWidget::MakeCurrent() { device_context.makeCurrent(&surface); }

GlDevice* GlViewsWidget::MakeDevice() {
    if (!IsShownInWindows())
        return nullptr;
    device_context.setFormat(WantedFormat());
    device_context.setShareContext(QOpenGLContext::globalShareContext());
    if (!device_context.create() || device_context.isOpenGLES() || device_context.format().version() < qMakePair(3, 3))
        return nullptr;
    surface.setFormat(device_context.format());
    surface.create();
    if (!device_context.makeCurrent(&surface))
        return nullptr;
    device = std::make_unique<GlDevice>(&device_context);
    if (!device->IsUsable())
        return nullptr;
    device->UseSurface(&surface);
    return device.get();
}

void GlViewsWidget::initializeGL() {
    if (gl.initializeOpenGLFunctions())
        gl.glGenFramebuffers(1, &reader);
}

GLsync GlViewsWidget::TakePicture(const QSize& size) {
    MakeCurrent();
    if (draw_pending)
        draw_pending();
    if (!picture || picture->size() != size)
        picture = std::make_unique<QOpenGLFramebufferObject>(size);
    device->BlitTo(picture->handle(), size.width(), size.height());
    QOpenGLExtraFunctions& functions = *device_context.extraFunctions();
    const GLsync drawn = functions.glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
    functions.glFlush();
    return drawn;
}

void GlViewsWidget::paintGL() {
    if (!device || reader == 0)
        return;
    const QSize pixels = size() * devicePixelRatioF();
    const GLsync drawn = TakePicture(pixels);
    makeCurrent();
    gl.glWaitSync(drawn, 0, GL_TIMEOUT_IGNORED);
    gl.glDeleteSync(drawn);
    gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, reader);
    gl.glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, picture->texture(), 0);
    gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, defaultFramebufferObject());
    gl.glBlitFramebuffer(0, 0, pixels.width(), pixels.height(), 0, 0, pixels.width(), pixels.height(),
                         GL_COLOR_BUFFER_BIT, GL_NEAREST);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, defaultFramebufferObject());
    // The renderer's alpha means nothing; that of a window lets its background through.
    gl.glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_TRUE);
    gl.glClearColor(0, 0, 0, 1);
    gl.glClear(GL_COLOR_BUFFER_BIT);
    gl.glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}
