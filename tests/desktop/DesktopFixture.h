// The window of the editor over a small data root, on the software device, driven by events as a person would send
// them.
#pragma once

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <gtest/gtest.h>
#include <memory>
#include <stdlib.h>

#include "commands/ScriptApplication.h"
#include "desktop/MainWindow.h"
#include "desktop/ViewsWidget.h"
#include "foundation/TempFolder.h"
#include "render/Frame.h"

// One for all tests of the program.
inline QApplication& TestApplication() {
    static int count = 1;
    static char name[] = "test";
    static char* names[] = {name, nullptr};
    if (!QCoreApplication::instance())
        new QApplication(count, names); // lives as long as the program
    return *qApp;
}

// A screen of any scale.
template <class Widget>
class Scaled : public Widget {
public:
    template <class... Arguments>
    explicit Scaled(double scale, Arguments&&... arguments)
        : Widget(std::forward<Arguments>(arguments)...), ratio(scale) {}

protected:
    int metric(QPaintDevice::PaintDeviceMetric wanted) const override {
        switch (wanted) {
        case QPaintDevice::PdmDevicePixelRatio:
            return static_cast<int>(ratio);
        case QPaintDevice::PdmDevicePixelRatioScaled:
            return static_cast<int>(ratio * QPaintDevice::devicePixelRatioFScale());
        default:
            return Widget::metric(wanted);
        }
    }

private:
    double ratio;
};

class DesktopTest : public testing::Test {
protected:
    DesktopTest() : current(folder.Path()) {
        TestApplication();
        setenv("MARROWSTEAD_CONFIG", (folder / "config").c_str(), 1);
        WriteBytes("Scripts/ScriptSyntax/commands.def", "");
        WriteBytes("Scripts/ScriptSyntax/conditions.def", "");
        SetDesktop(&desktop);
    }
    ~DesktopTest() override {
        window.reset();
        painter.reset();
        frame.reset();
        pages.reset();
        interface.reset();
        crRelease();
        SetDesktop(nullptr);
    }
    void Open(double scale = 1) {
        ASSERT_TRUE(OpenRenderer(1, 1));
        interface = std::make_unique<CInterface>();
        interface->Init();
        interface->InitEditor();
        pages = std::make_unique<LibraryPages>(*interface);
        frame = std::make_unique<CMainFrame>(*interface, *pages);
        painter = std::make_unique<Scaled<SoftViewsWidget>>(scale);
        views = new Scaled<ViewsWidget>(scale, *painter);
        window = std::make_unique<MainWindow>(*frame, views);
        window->resize(1000, 800);
        window->show();
        QApplication::processEvents();
        QApplication::processEvents();
        painter->setParent(views); // goes with the window
        painter.release();
    }

    void Mouse(QEvent::Type type, QPointF at, Qt::MouseButton button = Qt::NoButton,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        if (type == QEvent::MouseButtonPress)
            down |= button;
        else if (type == QEvent::MouseButtonRelease)
            down &= ~Qt::MouseButtons(button);
        QMouseEvent event(type, at, views->mapToGlobal(at), button, down, modifiers);
        QApplication::sendEvent(views, &event);
    }
    void Drag(QPointF from, QPointF to, Qt::MouseButton button = Qt::LeftButton,
              Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        Mouse(QEvent::MouseMove, from, Qt::NoButton, modifiers);
        Mouse(QEvent::MouseButtonPress, from, button, modifiers);
        Mouse(QEvent::MouseMove, (from + to) / 2, Qt::NoButton, modifiers);
        Mouse(QEvent::MouseMove, to, Qt::NoButton, modifiers);
        Mouse(QEvent::MouseButtonRelease, to, button, modifiers);
    }
    static void Key(QWidget& widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                    const QString& text = {}) {
        for (const QEvent::Type type : {QEvent::ShortcutOverride, QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, modifiers, text);
            event.ignore();
            QApplication::sendEvent(&widget, &event);
        }
    }
    // The middle of a view, in the views' widget.
    QPointF Middle(int view) const { return QRectF(views->Rect(view)).center(); }

    TempFolder folder;
    CurrentFolder current;
    HeadlessDesktop desktop;
    std::unique_ptr<CInterface> interface;
    std::unique_ptr<LibraryPages> pages;
    std::unique_ptr<CMainFrame> frame;
    std::unique_ptr<SoftViewsWidget> painter;
    ViewsWidget* views = nullptr;
    std::unique_ptr<MainWindow> window;
    Qt::MouseButtons down;
};
