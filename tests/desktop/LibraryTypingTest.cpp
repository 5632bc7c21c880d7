// The library's fields and trees: numbers keep their digits, a page that is asked for leaves the keys to the commands.
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QTreeWidget>

#include "desktop/EntityPage.h"
#include "desktop/FinishTyping.h"
#include "desktop/LibraryFixture.h"
#include "desktop/ParameterEditors.h"
#include "desktop/TexturePage.h"
#include "pages/ParameterText.h"

namespace {

class LibraryTypingTest : public LibraryTest {
protected:
    static QLineEdit* Search(const QWidget& page) {
        for (QLineEdit* field : page.findChildren<QLineEdit*>())
            if (!field->placeholderText().isEmpty())
                return field;
        return nullptr;
    }
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

TEST_F(LibraryTypingTest, WhatIsBeingTypedCountsBeforeACommand) {
    Entity* e = AddEntity("light");
    Level().ClearSelection();
    Level().entity_selection.AddItem(Level().GetEntityIndex(e));
    editor->SelectionChanged();
    Open(TAB_ENTITY);
    auto* range = Named<QWidget>(library->entity, "range")->findChild<NumberField*>();
    range->setFocus();
    range->selectAll();
    QTest::keyClicks(range, "77");
    EXPECT_EQ(e->GetParameterStr("range")->p_float, 256);
    FinishTyping();
    EXPECT_EQ(e->GetParameterStr("range")->p_float, 77);
    EXPECT_TRUE(range->hasFocus());
    // The selection changes under a field: what is typed there does not land in a parameter of another kind.
    QTest::keyClicks(range, "5");
    Entity* other = AddEntity("soldier");
    Level().ClearSelection();
    Level().entity_selection.AddItem(Level().GetEntityIndex(other));
    editor->SelectionChanged();
    const std::vector<EntityParameter> before = other->parameter;
    ProcessNews();
    for (size_t i = 0; i < before.size(); ++i)
        EXPECT_EQ(ParameterText(other->parameter[i], EDIT_DECIMALS), ParameterText(before[i], EDIT_DECIMALS));
}

TEST_F(LibraryTypingTest, AComponentGivenToSeveralEntitiesLeavesTheOthers) {
    Entity* a = AddEntity("light");
    Entity* b = AddEntity("light");
    a->GetParameterStr("wind")->p_vector3 = {1, 2, 3};
    b->GetParameterStr("wind")->p_vector3 = {4, 5, 3};
    a->GetParameterStr("color")->p_color = MakeColor(10, 20, 30, 40);
    b->GetParameterStr("color")->p_color = MakeColor(50, 60, 70, 40);
    Level().ClearSelection();
    for (const Entity* e : {a, b})
        Level().entity_selection.AddItem(Level().GetEntityIndex(e));
    editor->SelectionChanged();
    Open(TAB_ENTITY);
    const auto numbers = [&](const char* name) {
        return Named<QWidget>(library->entity, name)->findChildren<NumberField*>();
    };
    EXPECT_EQ(numbers("wind")[0]->text(), "(different)");
    EXPECT_EQ(numbers("wind")[2]->text(), "3");
    EXPECT_EQ(numbers("color")[0]->text(), "40");
    TypeNumber(numbers("wind")[1], "9");
    TypeNumber(numbers("color")[0], "80");
    ProcessNews();
    EXPECT_EQ(a->GetParameterStr("wind")->p_vector3, (D3DVECTOR{1, 9, 3}));
    EXPECT_EQ(b->GetParameterStr("wind")->p_vector3, (D3DVECTOR{4, 9, 3}));
    EXPECT_EQ(a->GetParameterStr("color")->p_color, MakeColor(10, 20, 30, 80));
    EXPECT_EQ(b->GetParameterStr("color")->p_color, MakeColor(50, 60, 70, 80));
    EXPECT_EQ(numbers("wind")[1]->text(), "9");
    EXPECT_EQ(numbers("wind")[0]->text(), "(different)");
}

TEST_F(LibraryTypingTest, SeveralEntitiesShowWhatDiffersAndTakeOneValue) {
    Entity* a = AddEntity("light");
    Entity* b = AddEntity("light");
    a->GetParameterStr("range")->p_float = 10;
    b->GetParameterStr("range")->p_float = 20;
    a->GetParameterStr("dynamic")->p_bool = true;
    b->GetParameterStr("mood")->p_text = "angry";
    b->GetParameterStr("picture")->p_text = "b.tga";
    Level().ClearSelection();
    for (const Entity* e : {a, b})
        Level().entity_selection.AddItem(Level().GetEntityIndex(e));
    editor->SelectionChanged();
    Open(TAB_ENTITY);
    const auto field = [&](const char* name) { return Named<QWidget>(library->entity, name); };
    auto* range = field("range")->findChild<NumberField*>();
    auto* dynamic = field("dynamic")->findChild<QCheckBox*>();
    EXPECT_EQ(range->text(), "(different)");
    EXPECT_EQ(field("count")->findChild<NumberField*>()->text(), "3");
    EXPECT_EQ(dynamic->checkState(), Qt::PartiallyChecked);
    EXPECT_EQ(field("mood")->findChild<QComboBox*>()->currentIndex(), -1);
    EXPECT_EQ(field("picture")->findChild<QLineEdit*>()->text(), "");
    range->setFocus(); // passing through changes nothing
    field("count")->findChild<NumberField*>()->setFocus();
    ProcessNews();
    EXPECT_EQ(b->GetParameterStr("range")->p_float, 20);
    EXPECT_EQ(range->text(), "(different)");
    TypeNumber(range, "10"); // the first one's own value goes to both
    dynamic->click();
    ProcessNews();
    EXPECT_EQ(a->GetParameterStr("range")->p_float, 10);
    EXPECT_EQ(b->GetParameterStr("range")->p_float, 10);
    EXPECT_EQ(range->text(), "10");
    EXPECT_EQ(a->GetParameterStr("dynamic")->p_bool, b->GetParameterStr("dynamic")->p_bool);
    EXPECT_NE(dynamic->checkState(), Qt::PartiallyChecked);
    EXPECT_EQ(b->GetParameterStr("mood")->p_text, "angry");
}
