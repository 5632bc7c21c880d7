#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include "desktop/AdvancedSelectionDialogs.h"
#include "desktop/WindowSetup.h"

using AdvancedSelectionTest = WindowsTest;

TEST_F(AdvancedSelectionTest, BrushesAreSelectedByTheWindowsConditions) {
    AddBox()->properties = BP_LADDER;
    Brush* gate = AddBox(100);
    gate->properties = BP_DYNAMIC;
    gate->name = "gate";
    AddBox(200);
    DlgSpecialSelection last;
    WhenOpen([](QWidget& window) {
        auto* name = window.findChild<QComboBox*>();
        EXPECT_EQ(name->count(), 1);
        FindButton(window, "Ladder")->click();
        FindButton(window, "Dynamic")->click();
        QTest::keyClicks(name->lineEdit(), "Gate");
        Press(window, "Select");
    });
    EXPECT_TRUE(RunBrushSelection(nullptr, *editor, last));
    ASSERT_EQ(Level().brush_selection.GetItemCount(), 1);
    EXPECT_TRUE(gate->is_selected);
    WhenOpen([](QWidget& window) { // they are still there, until they are cleared
        EXPECT_TRUE(static_cast<QCheckBox*>(FindButton(window, "Ladder"))->isChecked());
        const auto labels = window.findChildren<QLabel*>();
        const auto told = [&](const char* text) {
            return std::any_of(labels.begin(), labels.end(), [text](const QLabel* l) { return l->text() == text; });
        };
        EXPECT_TRUE(told("1 of 3 brushes"));
        Press(window, "Clear");
        EXPECT_TRUE(told("3 of 3 brushes"));
        Press(window, "Cancel");
    });
    EXPECT_FALSE(RunBrushSelection(nullptr, *editor, last));
    EXPECT_EQ(last.name, "Gate");
    EXPECT_EQ(Level().brush_selection.GetItemCount(), 1);
}

TEST_F(AdvancedSelectionTest, EntitiesAreSelectedByTheWindowsConditions) {
    AddEntity("light", "lamp")->GetParameterStr("mood")->p_text = "angry";
    AddEntity("light")->GetParameterStr("script")->p_text = "Open lamp 1";
    AddEntity("glow", "halo");
    DlgSpecialEntSelection last;
    const auto choose = [](QWidget& window, int field, const char* text) {
        auto* combo = window.findChildren<QComboBox*>().at(field);
        combo->isEditable() ? combo->setEditText(text) : combo->setCurrentText(text);
    };
    const auto offered = [](QWidget& window, int field) {
        QStringList texts;
        auto* combo = window.findChildren<QComboBox*>().at(field);
        for (int i = 0; i < combo->count(); ++i)
            texts.append(combo->itemText(i));
        return texts;
    };
    enum { TYPE, NAME, PARAMETER, VALUE, REFERENCE };
    WhenOpen([=](QWidget& window) {
        EXPECT_EQ(offered(window, NAME), QStringList({"halo", "lamp"}));
        choose(window, TYPE, "POINT_LIGHT");
        EXPECT_EQ(offered(window, NAME), QStringList({"lamp"}));
        choose(window, PARAMETER, "mood");
        EXPECT_EQ(offered(window, VALUE), QStringList({"angry", "calm"}));
        choose(window, VALUE, "angry");
        Press(window, "Select");
    });
    EXPECT_TRUE(RunEntitySelection(nullptr, *editor, last));
    ASSERT_EQ(Level().entity_selection.GetItemCount(), 1);
    EXPECT_EQ(Level().entity_selection.GetItem(0), 0);
    WhenOpen([=](QWidget& window) {
        EXPECT_EQ(window.findChildren<QComboBox*>().at(VALUE)->currentText(), "angry");
        Press(window, "Clear");
        choose(window, REFERENCE, "lamp");
        Press(window, "Select");
    });
    EXPECT_TRUE(RunEntitySelection(nullptr, *editor, last));
    ASSERT_EQ(Level().entity_selection.GetItemCount(), 1);
    EXPECT_EQ(Level().entity_selection.GetItem(0), 1);
}
