// What keeps the hands at work: views that follow a drag, keys that fly the camera, the layout, the manual.
#include <QDockWidget>
#include <QLabel>
#include <QTextBrowser>

#include "desktop/DesktopFixture.h"
#include "desktop/FlyKeys.h"
#include "desktop/ManualWindow.h"
#include "desktop/StatusBar.h"
#include "desktop/StoredLayout.h"

TEST_F(DesktopTest, AllViewsFollowADragAndTheStatusBarTellsItsWay) {
    Open();
    Drag(Middle(VIEW_TOP), Middle(VIEW_TOP) + QPointF(64, 32));
    const auto& bar = static_cast<StatusBar&>(*window->statusBar());
    const auto told = [&] {
        emit window->actions.Ran();
        return bar.hint_line->text().toStdString();
    };
    const auto picture = [&](int view) { return views->grab(views->Rect(view)).toImage(); };
    struct Case {
        const char* name;
        EditorState mode;
        QPointF from, way; // from the middle of the brush
        const char* text;
    };
    const Case cases[] = {
        {"move", ES_SELECTED, {0, 0}, {32, -16}, "Moved by X: 32,  Y: 0,  Z: 16"},
        {"resize", ES_SELECTED, {40, 0}, {16, 0}, "Size changed by X: 16,  Y: 0,  Z: 0"},
        {"turn", ES_ROTATE_ARMED, {0, 0}, {0, -40}, "Turned by "},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        interface->editor_state = c.mode;
        const D3DVECTOR middle = (BoxMin(interface->selection_box) + BoxMax(interface->selection_box)) * 0.5f;
        const QPointF start = Middle(VIEW_TOP) + QPointF(middle.x, -middle.z) + c.from;
        const QImage before = picture(VIEW_PERSPECTIVE), front = picture(VIEW_FRONT);
        Mouse(QEvent::MouseMove, start);
        Mouse(QEvent::MouseButtonPress, start, Qt::LeftButton);
        Mouse(QEvent::MouseMove, start + c.way);
        EXPECT_EQ(told().substr(0, std::string(c.text).size()), c.text);
        EXPECT_EQ(picture(VIEW_FRONT), front) << "the view under the hand is drawn first";
        for (int view = 0; view < VIEW_COUNT; ++view)
            views->Follow();
        EXPECT_NE(picture(VIEW_PERSPECTIVE), before);
        EXPECT_NE(picture(VIEW_FRONT), front);
        Mouse(QEvent::MouseButtonRelease, start + c.way, Qt::LeftButton);
        EXPECT_EQ(told().find(c.text), std::string::npos);
    }
}

TEST_F(DesktopTest, KeysFlyTheCameraWhileTheRightButtonIsHeld) {
    Open();
    interface->settings.fly_speed = 1000;
    D3DVECTOR& camera = interface->View(VIEW_PERSPECTIVE).camera_position;
    interface->View(VIEW_PERSPECTIVE).camera_rotation = {};
    const auto key = [&](QEvent::Type type, int code) {
        QKeyEvent event(type, code, Qt::NoModifier);
        QApplication::sendEvent(views, &event);
    };
    struct Case {
        int key, arrow;
        D3DVECTOR way;
    };
    const Case cases[] = {{Qt::Key_W, Qt::Key_Up, {0, 0, 1}},
                          {Qt::Key_S, Qt::Key_Down, {0, 0, -1}},
                          {Qt::Key_D, Qt::Key_Right, {1, 0, 0}},
                          {Qt::Key_A, Qt::Key_Left, {-1, 0, 0}},
                          {Qt::Key_E, 0, {0, 1, 0}},
                          {Qt::Key_Q, 0, {0, -1, 0}}};
    FlyKeys fly;
    for (const Case& c : cases)
        for (const int code : {c.key, c.arrow}) {
            if (code == 0)
                continue;
            SCOPED_TRACE(code);
            camera = {};
            EXPECT_FALSE(fly.Press(*frame, code)) << "the button is up";
            frame->perspective.camera_moving = true;
            EXPECT_TRUE(fly.Press(*frame, code));
            fly.Step(*frame, 100);
            camera = {};
            fly.Step(*frame, 150); // 50 ms later
            EXPECT_NEAR(Magnitude(camera - c.way * 50), 0, 0.01);
            fly.Release(*frame, code);
            fly.Step(*frame, 200);
            EXPECT_NEAR(Magnitude(camera - c.way * 50), 0, 0.01);
            fly.Stop(*frame);
            EXPECT_FALSE(frame->perspective.camera_rotating);
        }

    const QPointF at = Middle(VIEW_PERSPECTIVE);
    const D3DVECTOR turned = interface->View(VIEW_PERSPECTIVE).camera_rotation;
    key(QEvent::KeyPress, Qt::Key_W);
    Mouse(QEvent::MouseButtonPress, at, Qt::RightButton);
    const bool full_view = interface->full_view;
    key(QEvent::ShortcutOverride, Qt::Key_W);
    key(QEvent::KeyPress, Qt::Key_W);
    EXPECT_EQ(interface->full_view, full_view) << "no command";
    Mouse(QEvent::MouseMove, at + QPointF(30, 0));
    EXPECT_NE(interface->View(VIEW_PERSPECTIVE).camera_rotation.y, turned.y) << "the mouse looks around";
    for (const int notch : {120, -120}) {
        QWheelEvent wheel(at, views->mapToGlobal(at), QPoint(), {0, notch}, Qt::RightButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(views, &wheel);
        EXPECT_EQ(interface->settings.fly_speed, notch > 0 ? 1250 : 1000);
    }
    key(QEvent::KeyRelease, Qt::Key_W);
    Mouse(QEvent::MouseButtonRelease, at, Qt::RightButton);
    key(QEvent::ShortcutOverride, Qt::Key_W);
    key(QEvent::KeyPress, Qt::Key_W);
    EXPECT_NE(interface->full_view, full_view) << "a command again";
}

TEST_F(DesktopTest, ADoubleClickOfTheMiddleButtonPutsTheCameraAsAltAndAClickDo) {
    Open();
    D3DVECTOR& camera = interface->View(VIEW_PERSPECTIVE).camera_position;
    for (const int view : {VIEW_TOP, VIEW_FRONT, VIEW_LEFT}) {
        camera = {1000, 2000, 3000};
        const QPointF at = Middle(view) + QPointF(40, 24);
        Mouse(QEvent::MouseMove, at);
        const D3DVECTOR under = interface->world_position;
        Mouse(QEvent::MouseButtonPress, at, Qt::MiddleButton);
        Mouse(QEvent::MouseButtonRelease, at, Qt::MiddleButton);
        Mouse(QEvent::MouseButtonDblClick, at, Qt::MiddleButton);
        Mouse(QEvent::MouseButtonRelease, at, Qt::MiddleButton);
        for (int axis = 0; axis < 3; ++axis)
            EXPECT_EQ(Component(camera, axis), axis == CInterface::MissingAxis(view)
                                                   ? 1000.0f * static_cast<float>(axis + 1)
                                                   : Component(under, axis));
        EXPECT_EQ(interface->editor_state, ES_IDLE);
    }
}

TEST_F(DesktopTest, AChangedLayoutIsKeptWithoutAnOrderlyEnd) {
    Open();
    auto* const library = window->findChild<QDockWidget*>("Library");
    window->StoreChangedLayout();
    EXPECT_TRUE(StoredLayout("WindowState").isEmpty()) << "nothing has changed yet";
    for (const auto& [there, elsewhere] : {std::pair{Qt::LeftDockWidgetArea, Qt::RightDockWidgetArea},
                                           std::pair{Qt::RightDockWidgetArea, Qt::LeftDockWidgetArea}}) {
        window->addDockWidget(elsewhere, library);
        window->StoreChangedLayout();
        window->addDockWidget(there, library);
        window->StoreChangedLayout();
        window->addDockWidget(elsewhere, library);
        window->RestoreLayout();
        EXPECT_EQ(window->dockWidgetArea(library), there);
    }
}

TEST_F(DesktopTest, TheManualIsFoundAndItsLinksLead) {
    TestApplication();
    const auto page = [&](const char* folder_of_program) {
        return ManualPage(QString::fromStdString(folder / folder_of_program));
    };
    WriteBytes("build/release/bin/x", "");
    EXPECT_TRUE(page("build/release/bin").isEmpty());
    WriteBytes("docs/manual/index.md", "# Manual\n\n[Next](next.md)\n");
    WriteBytes("docs/manual/next.md", "# The next page\n");
    ASSERT_FALSE(page("build/release/bin").isEmpty());
    ManualWindow manual(page("build/release/bin"), nullptr);
    manual.setAttribute(Qt::WA_DeleteOnClose, false);
    auto& text = *manual.findChild<QTextBrowser*>();
    EXPECT_EQ(text.toPlainText().toStdString(), "Manual\nNext");
    text.setSource(QUrl("next.md"));
    EXPECT_EQ(text.toPlainText().toStdString(), "The next page");
}
