// Windows over the data root of the page tests, and helpers that drive them as a person would.
#pragma once

#include <filesystem>
#include <functional>

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "commands/MainFrame.h"
#include "pages/PagesData.h"

// One for the whole test program.
inline void NeedApplication() {
    static int argc = 1;
    static char name[] = "test";
    static char* argv[] = {name, nullptr};
    if (!QCoreApplication::instance()) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        new QApplication(argc, argv); // lives as long as the program
    }
}

class WindowsTest : public PagesTest {
protected:
    WindowsTest() {
        NeedApplication();
        frame = std::make_unique<CMainFrame>(*editor, *pages);
    }
    ~WindowsTest() override {
        for (QWidget* window : QApplication::topLevelWidgets())
            window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    std::unique_ptr<CMainFrame> frame;
};

inline void ProcessNews() {
    for (int i = 0; i < 3; ++i) { // news, what they ask for, and what goes later
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

// The button of this text, its shortcut mark aside; null if there is none.
inline QAbstractButton* FindButton(QWidget& window, const QString& text) {
    for (QAbstractButton* button : window.findChildren<QAbstractButton*>())
        if (button->text().remove('&') == text)
            return button;
    return nullptr;
}

inline void Press(QWidget& window, const QString& text) {
    QAbstractButton* button = FindButton(window, text);
    ASSERT_NE(button, nullptr) << text.toStdString();
    QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier, button->rect().center());
}

// Acts on the next modal window as soon as it is open.
template <class Act>
void WhenOpen(Act act) {
    QTimer::singleShot(0, [act] {
        QWidget* window = QApplication::activeModalWidget();
        ASSERT_NE(window, nullptr);
        act(*window);
    });
}
