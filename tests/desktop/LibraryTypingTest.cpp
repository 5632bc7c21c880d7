// The library's fields and trees: numbers keep their digits, a page that is asked for leaves the keys to the commands.
#include <QLineEdit>
#include <QTreeWidget>

#include "desktop/EntityPage.h"
#include "desktop/LibraryWindow.h"
#include "desktop/ParameterEditors.h"
#include "desktop/TexturePage.h"
#include "desktop/WindowSetup.h"

namespace {

class LibraryTypingTest : public WindowsTest {
protected:
    LibraryTypingTest() { library = std::make_unique<LibraryWindow>(*frame, nullptr); }
    ~LibraryTypingTest() override { library.reset(); }

    void Open(LibraryTab tab) {
        editor->ShowLibraryTab(tab);
        ProcessNews();
        library->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(library.get()));
    }
    static QLineEdit* Search(const QWidget& page) {
        for (QLineEdit* field : page.findChildren<QLineEdit*>())
            if (!field->placeholderText().isEmpty())
                return field;
        return nullptr;
    }

    std::unique_ptr<LibraryWindow> library;
};

} // namespace

TEST_F(LibraryTypingTest, ANumberIsShownRoundedAndKeepsItsDigits) {
    constexpr float THIRD = 1.0f / 3;
    Open(TAB_TEXTURE);
    Brush* b = AddBox();
    SelectSurface(b, 1);
    pages->texture.SetMaterial("wall", "brick");
    pages->texture.Apply();
    pages->texture.SetShift(THIRD, 0.1f);
    ProcessNews();
    const TEX_INFO& record = b->surfaces[1].texture;
    auto* u = library->texture->findChild<NumberField*>("shift_u");
    auto* v = library->texture->findChild<NumberField*>("shift_v");
    EXPECT_EQ(u->text(), "0.3333");
    EXPECT_EQ(v->text(), "0.1");
    u->setFocus();
    QTest::keyClick(u, Qt::Key_Return);
    EXPECT_EQ(record.shift.u, THIRD) << "visited, not changed";
    v->setFocus();
    v->selectAll();
    QTest::keyClicks(v, "2");
    pages->texture.ChangeRotation(1, false); // the record is shown again while something is being typed
    ProcessNews();
    EXPECT_EQ(v->text(), "2");
    QTest::keyClick(v, Qt::Key_Return);
    EXPECT_EQ(record.shift.v, 2);
    EXPECT_EQ(record.shift.u, THIRD) << "the number beside it";
}

TEST_F(LibraryTypingTest, AGroupOfTheTreeShowsTheMaterialsOfAllItsClasses) {
    Open(TAB_TEXTURE);
    auto* tree = library->texture->findChild<QTreeWidget*>();
    auto* list = library->texture->findChild<ThumbnailView*>();
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        QTreeWidgetItem* group = tree->topLevelItem(i);
        if (group->childCount() == 0)
            continue;
        int of_classes = 0;
        for (int c = 0; c < group->childCount(); ++c) {
            tree->setCurrentItem(group->child(c));
            of_classes += list->model()->rowCount();
        }
        tree->setCurrentItem(group);
        EXPECT_EQ(list->model()->rowCount(), of_classes) << group->text(0).toStdString();
        EXPECT_GT(of_classes, 0);
    }
}

TEST_F(LibraryTypingTest, APageThatIsAskedForTakesNoLetters) {
    Open(TAB_TEXTURE);
    library->texture->findChild<ThumbnailView*>()->setFocus();
    Open(TAB_ENTITY);
    EXPECT_EQ(qobject_cast<QLineEdit*>(QApplication::focusWidget()), nullptr);
}

TEST_F(LibraryTypingTest, TheChosenKindIsSeenAgainWhenTheFilterIsCleared) {
    Open(TAB_ENTITY);
    auto* tree = library->entity->findChild<QTreeWidget*>();
    QTest::keyClicks(Search(*library->entity), "glow");
    tree->setCurrentItem(tree->topLevelItem(1)->child(0));
    ProcessNews();
    Search(*library->entity)->clear();
    EXPECT_TRUE(tree->topLevelItem(1)->isExpanded());
    EXPECT_FALSE(tree->topLevelItem(0)->isExpanded());
}

TEST_F(LibraryTypingTest, TheWheelsRangeIsShown) {
    Entity* e = AddEntity("light");
    Level().entity_selection.AddItem(Level().GetEntityIndex(e));
    editor->SelectionChanged();
    Open(TAB_ENTITY);
    const float before = e->FloatParameter("range");
    editor->active_view = VIEW_TOP;
    editor->RotateBrush(1);
    ProcessNews();
    ASSERT_NE(e->FloatParameter("range"), before);
    auto* field = library->entity->findChild<QWidget*>("range")->findChild<NumberField*>();
    EXPECT_EQ(field->value(), static_cast<double>(e->FloatParameter("range")));
}
