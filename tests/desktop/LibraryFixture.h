// The library window on its own, one page of it shown.
#pragma once

#include <QAbstractSpinBox>

#include "desktop/LibraryWindow.h"
#include "desktop/WindowSetup.h"

class LibraryTest : public WindowsTest {
protected:
    LibraryTest() { library = std::make_unique<LibraryWindow>(*frame, nullptr); }
    ~LibraryTest() override { library.reset(); }

    void Open(LibraryTab tab) {
        editor->ShowLibraryTab(tab);
        ProcessNews();
        library->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(library.get()));
    }
    template <class Field>
    Field* Named(QWidget* page, const char* name) {
        return page->findChild<Field*>(name);
    }
    static void TypeNumber(QAbstractSpinBox* field, const char* text) {
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
    }

    std::unique_ptr<LibraryWindow> library;
};
