#include <thread>

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTreeWidget>

#include "desktop/BrushPropertiesDialog.h"
#include "desktop/ColorButton.h"
#include "desktop/DuplicateMaterialDialog.h"
#include "desktop/FileChooserDialog.h"
#include "desktop/FormDialog.h"
#include "desktop/ProgressDialog.h"
#include "desktop/ScriptWindow.h"
#include "desktop/TextDialog.h"
#include "desktop/ToolWindows.h"
#include "desktop/WindowSetup.h"
#include "files/FileObject.h"

namespace {

class DialogsWindowsTest : public WindowsTest {};

FormQuestion SampleForm() {
    FormQuestion question{"Question", {{}, {}, {}, {}}};
    question.fields[0].label = "Name:";
    question.fields[0].max_length = 5;
    question.fields[1].label = "Count:";
    question.fields[1].kind = FormField::Number;
    question.fields[1].value = "3";
    question.fields[1].least = 2;
    question.fields[1].most = 9;
    question.fields[2].label = "Closed";
    question.fields[2].kind = FormField::Flag;
    question.fields[2].value = "0";
    question.fields[3].label = "Kind:";
    question.fields[3].kind = FormField::Choice;
    question.fields[3].choices = {"round", "square"};
    question.fields[3].value = "square";
    return question;
}

} // namespace

TEST_F(DialogsWindowsTest, EachClosesByEscapeAndByItsButtonAndLeavesTheFolder) {
    AddBox();
    const auto before = std::filesystem::current_path();
    BrushProperties properties(Level());
    MyFileDialog chooser("Textures", "", "*");
    ASSERT_TRUE(pages->texture.SetMaterial("wall", "brick"));
    DupMatName duplicate("wall", "brick");
    struct Row {
        const char* name;
        std::function<std::unique_ptr<QDialog>()> make;
        const char* button;
    };
    const Row rows[] = {
        {"form", [] { return std::make_unique<FormDialog>(SampleForm(), nullptr); }, "Cancel"},
        {"text", [] { return std::make_unique<TextDialog>("a text", "Title", nullptr); }, "OK"},
        {"brush", [&] { return std::make_unique<BrushPropertiesDialog>(properties, nullptr); }, "Cancel"},
        {"file", [&] { return std::make_unique<FileChooserDialog>(chooser, nullptr); }, "Cancel"},
        {"duplicate", [&] { return std::make_unique<DuplicateMaterialDialog>(pages->texture, duplicate, nullptr); },
         "Cancel"},
        {"script", [&] { return std::make_unique<ScriptWindow>(*editor, editor->command_syntax.get(), "", nullptr); },
         "Cancel"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        auto dialog = row.make();
        dialog->show();
        EXPECT_TRUE(dialog->isVisible());
        QTest::keyClick(dialog.get(), Qt::Key_Escape);
        EXPECT_FALSE(dialog->isVisible());
        dialog = row.make();
        dialog->show();
        Press(*dialog, row.button);
        EXPECT_FALSE(dialog->isVisible());
        EXPECT_EQ(std::filesystem::current_path(), before);
    }
}

TEST_F(DialogsWindowsTest, AFormGivesItsAnswersAndNothingAfterEscape) {
    FormQuestion question = SampleForm();
    WhenOpen([](QWidget& window) {
        QTest::keyClicks(window.findChild<QLineEdit*>(), "longer than five");
        window.findChild<QSpinBox*>()->setValue(40);
        window.findChild<QCheckBox*>()->click();
        window.findChild<QComboBox*>()->setCurrentIndex(0);
        QTest::keyClick(&window, Qt::Key_Return);
    });
    ASSERT_TRUE(RunFormDialog(nullptr, question));
    EXPECT_EQ(question.fields[0].value, "longe");
    EXPECT_EQ(question.fields[1].value, "9");
    EXPECT_EQ(question.fields[2].value, "1");
    EXPECT_EQ(question.fields[3].value, "round");

    WhenOpen([](QWidget& window) {
        window.findChild<QCheckBox*>()->click();
        QTest::keyClick(&window, Qt::Key_Escape);
    });
    EXPECT_FALSE(RunFormDialog(nullptr, question));
    EXPECT_EQ(question.fields[2].value, "1");
}

TEST_F(DialogsWindowsTest, ATextCanBeCopied) {
    TextDialog dialog("5 brushes\r\n2 entities", "Level summary", nullptr);
    dialog.show();
    Press(dialog, "Copy all");
    EXPECT_EQ(QApplication::clipboard()->text(), "5 brushes\n2 entities");
    EXPECT_TRUE(dialog.isVisible());
}

TEST_F(DialogsWindowsTest, AFileIsChosenFromTheFilteredList) {
    const auto choose = [](const char* filter, bool expect_ok) {
        WhenOpen([filter, expect_ok](QWidget& window) {
            EXPECT_FALSE(FindButton(window, "OK")->isEnabled());
            window.findChild<QLineEdit*>()->setText(filter);
            QTreeWidget* files = nullptr;
            for (QTreeWidget* tree : window.findChildren<QTreeWidget*>())
                if (tree->columnCount() == 2)
                    files = tree;
            EXPECT_EQ(files->topLevelItemCount(), expect_ok ? 1 : 0);
            if (expect_ok)
                files->setCurrentItem(files->topLevelItem(0));
            EXPECT_EQ(FindButton(window, "OK")->isEnabled(), expect_ok);
            QTest::keyClick(&window, expect_ok ? Qt::Key_Return : Qt::Key_Escape);
        });
        return RunFileChooser(nullptr, "Textures", "Textures\\wall", "*.tga");
    };
    EXPECT_EQ(choose("STO", true), "Textures\\wall\\stone.tga");
    EXPECT_EQ(choose("nothing of this name", false), std::nullopt);
}

TEST_F(DialogsWindowsTest, ARefusedDuplicateKeepsTheDialogOpen) {
    ASSERT_TRUE(pages->texture.SetMaterial("wall", "brick"));
    WhenOpen([](QWidget& window) {
        Press(window, "OK"); // the name exists
        EXPECT_TRUE(window.isVisible());
        for (QLineEdit* field : window.findChildren<QLineEdit*>())
            if (field->toolTip() == "The name of the copy")
                field->setText("newbrick");
        Press(window, "OK");
    });
    EXPECT_TRUE(RunDuplicateMaterial(nullptr, pages->texture));
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].title, "Error!");
    EXPECT_TRUE(editor->materials.MaterialExist("wall", "newbrick"));
}

TEST_F(DialogsWindowsTest, BrushPropertiesShowWhatDiffersAndWriteOnlyWhatWasChanged) {
    Brush* first = AddBox();
    Brush* second = AddBox(128);
    first->name = "door";
    second->name = "gate";
    first->energy = second->energy = 7;
    first->properties = BP_HIDDEN;
    Level().SetBrushSelection(Level().GetBrushIndex(first), true);
    WhenOpen([](QWidget& window) {
        const auto fields = window.findChildren<QLineEdit*>();
        EXPECT_EQ(fields[BrushProperties::NAME]->text(), "");
        EXPECT_FALSE(fields[BrushProperties::NAME]->placeholderText().isEmpty());
        EXPECT_EQ(fields[BrushProperties::ENERGY]->text(), "7");
        auto* hidden = qobject_cast<QCheckBox*>(FindButton(window, "Hidden"));
        EXPECT_EQ(hidden->checkState(), Qt::PartiallyChecked);
        FindButton(window, "Ladder")->click();
        EXPECT_EQ(qobject_cast<QCheckBox*>(FindButton(window, "Bot See Through"))->checkState(), Qt::Checked);
        EXPECT_EQ(hidden->checkState(), Qt::PartiallyChecked);
        fields[BrushProperties::ENERGY]->selectAll();
        QTest::keyClicks(fields[BrushProperties::ENERGY], "12");
        Press(window, "OK");
    });
    EXPECT_TRUE(RunBrushProperties(nullptr, *editor));
    EXPECT_EQ(first->name, "door");
    EXPECT_EQ(second->name, "gate");
    EXPECT_EQ(first->energy, 12);
    EXPECT_EQ(second->energy, 12);
    EXPECT_EQ(first->properties, BP_HIDDEN | WithClipProperties(BP_LADDER));
    EXPECT_EQ(second->properties, WithClipProperties(BP_LADDER));
}

TEST_F(DialogsWindowsTest, AScriptIsCompletedExplainedAndTaken) {
    AddEntity("light", "gate_light");
    ScriptWindow window(*editor, editor->command_syntax.get(), "Wait 1\r\n", nullptr);
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    auto* script = window.findChild<CEditKeys*>();
    script->setFocus();
    script->moveCursor(QTextCursor::End);
    QTest::keyClicks(script, "op");
    QTest::keyClick(script, Qt::Key_Tab); // alone it does nothing
    window.OnTimer();
    EXPECT_EQ(script->toPlainText(), "Wait 1\nop");
    QTest::keyClick(script, Qt::Key_Tab, Qt::ControlModifier);
    window.OnTimer();
    EXPECT_EQ(script->toPlainText(), "Wait 1\nopen ");
    QTest::keyClicks(script, "gate");
    QTest::keyClick(script, Qt::Key_Tab, Qt::ControlModifier);
    window.OnTimer();
    EXPECT_EQ(script->toPlainText(), "Wait 1\nopen gate_light ");
    window.OnTimer();
    const auto lines = window.findChildren<QLineEdit*>();
    const auto shows = [&lines](const char* text) {
        return std::any_of(lines.begin(), lines.end(), [text](const QLineEdit* l) { return l->text() == text; });
    };
    EXPECT_TRUE(shows("Open   door,   speed"));
    EXPECT_TRUE(shows("speed (Float) :   how fast"));
    EXPECT_EQ(window.GetText(), "Wait 1\r\nopen gate_light ");
}

TEST_F(DialogsWindowsTest, AScriptInAnotherEncodingKeepsItsBytesWhenItIsEdited) {
    for (const char* text : {"Say \xE8\xE1st\r\n", "Say \xC4\x8D\xC3\xA1st\r\n"}) {
        ScriptWindow window(*editor, editor->command_syntax.get(), text, nullptr);
        window.show();
        EXPECT_EQ(window.GetText(), text);
        auto* script = window.findChild<CEditKeys*>();
        script->moveCursor(QTextCursor::End);
        QTest::keyClicks(script, "Wait 1");
        EXPECT_EQ(window.GetText(), std::string(text) + "Wait 1");
    }
}

TEST_F(DialogsWindowsTest, ListsOfTheScriptWindowFilterAndInsert) {
    AddEntity("light", "alpha");
    AddEntity("glow", "beta");
    ScriptWindow window(*editor, editor->command_syntax.get(), "", nullptr);
    window.show();
    auto* commands = window.findChildren<QListWidget*>().at(0);
    auto* names = window.findChildren<QListWidget*>().at(1);
    ASSERT_EQ(commands->count(), 2);
    ASSERT_EQ(names->count(), 2);
    emit commands->itemActivated(commands->item(0));
    for (QLineEdit* line : window.findChildren<QLineEdit*>())
        if (line->placeholderText() == "Filter")
            line->setText("BET");
    EXPECT_TRUE(names->item(0)->isHidden());
    EXPECT_FALSE(names->item(1)->isHidden());
    emit names->itemActivated(names->item(1));
    EXPECT_EQ(window.GetText(), commands->item(0)->text().toStdString() + " beta ");
}

TEST_F(DialogsWindowsTest, AColorButtonAsksAndTells) {
    CColorButton button;
    button.SetColor(0x102030);
    std::vector<uint32_t> chosen;
    QObject::connect(&button, &CColorButton::Chosen, [&chosen](uint32_t rgb) { chosen.push_back(rgb); });
    button.click(); // cancelled
    EXPECT_EQ(desktop.asked_color, 0x102030u);
    EXPECT_TRUE(chosen.empty());
    desktop.color_answer = 0xABCDEF;
    button.click();
    EXPECT_EQ(chosen, std::vector<uint32_t>{0xABCDEF});
    EXPECT_EQ(button.m_color, 0xABCDEFu);
}

// --- Compile

namespace {

ProgressDialog* FindProgress() {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (auto* dialog = dynamic_cast<ProgressDialog*>(window))
            return dialog;
    return nullptr;
}

} // namespace

TEST_F(DialogsWindowsTest, ACompileShowsItsStagesAndOffersTheGame) {
    const auto outcome = RunCompileWithProgress(nullptr, *frame, [](CProgressText& progress) {
        progress.AddText("Map compilation started...\r\n");
        progress.AddText("Creating Cells...");
        progress.InitProgress(4);
        progress.IncrementProgress(4);
        progress.AddText("\t\t-> [00h 00m 00s]\r\n....detection of brushes took no time\r\n");
        progress.AddText("\r\n!!!! Error !!!! a disk is full\r\n");
        return CompileOutcome::Written;
    });
    EXPECT_EQ(outcome, CompileOutcome::Written);
    ProgressDialog* dialog = FindProgress();
    ASSERT_NE(dialog, nullptr);
    auto* stages = dialog->findChild<QTreeWidget*>();
    ASSERT_EQ(stages->topLevelItemCount(), 2);
    EXPECT_EQ(stages->topLevelItem(1)->text(0), "Creating Cells");
    EXPECT_FALSE(stages->topLevelItem(1)->text(2).isEmpty());
    auto* log = dialog->findChild<QPlainTextEdit*>();
    EXPECT_TRUE(log->toPlainText().contains("Creating Cells...\t\t-> [00h 00m 00s]\n....detection"));
    const QTextCursor problem = log->document()->find("a disk is full");
    const QTextCursor plain = log->document()->find("detection");
    EXPECT_NE(problem.charFormat().foreground(), plain.charFormat().foreground());
    EXPECT_TRUE(FindButton(*dialog, "Run game")->isVisible());
    EXPECT_FALSE(FindButton(*dialog, "Show problems")->isVisible());
    EXPECT_FALSE(dialog->isModal());
    Press(*dialog, "Close");
    EXPECT_FALSE(FindProgress() && FindProgress()->isVisible());
}

TEST_F(DialogsWindowsTest, ACompileThatBeginsNothingLeavesNoWindow) {
    EXPECT_EQ(RunCompileWithProgress(nullptr, *frame, [](CProgressText&) { return CompileOutcome::NotWritten; }),
              CompileOutcome::NotWritten);
    ProcessNews();
    EXPECT_EQ(FindProgress(), nullptr);
}

TEST_F(DialogsWindowsTest, StopAndEscapeReachARunningCompileWhichKeepsItsWindow) {
    for (const bool by_escape : {false, true}) {
        bool was_open = false;
        QTimer presser; // runs in the event loop that the compile keeps alive
        QObject::connect(&presser, &QTimer::timeout, [&] {
            ProgressDialog* dialog = FindProgress();
            if (!dialog || !dialog->isVisible() || !dialog->isModal())
                return;
            presser.stop();
            if (by_escape)
                QTest::keyClick(dialog, Qt::Key_Escape);
            else
                Press(*dialog, "Stop compilation");
            dialog->close();
            was_open = dialog->isVisible();
        });
        presser.start(0);
        std::thread::id worker;
        const auto outcome = RunCompileWithProgress(nullptr, *frame, [&worker](CProgressText& progress) {
            worker = std::this_thread::get_id();
            while (!progress.CompilationCancelled())
                std::this_thread::yield();
            return CompileOutcome::Stopped;
        });
        EXPECT_EQ(outcome, CompileOutcome::Stopped);
        EXPECT_TRUE(was_open);
        EXPECT_NE(worker, std::this_thread::get_id());
        ASSERT_NE(FindProgress(), nullptr);
        EXPECT_FALSE(FindButton(*FindProgress(), "Run game")->isVisible());
    }
}

TEST_F(DialogsWindowsTest, ProblemsOpenAfterACompileAndADoubleClickLeadsToTheObject) {
    Brush* portal = AddBox(1000, BT_PORTAL);
    const uint32_t portal_id = portal->GetObjectID();
    Entity* lost = AddEntity("light");
    lost->SetPosition({5000, 0, 0});
    Level().ClearSelection();
    Level().undo_buffer.Empty();
    editor->settings.full_undo = true;
    for (const int view : {VIEW_TOP, VIEW_FRONT, VIEW_LEFT})
        editor->SetViewRect(view, {0, 0, 400, 300});
    QWidget parent;
    const auto outcome = RunCompileWithProgress(&parent, *frame, [&](CProgressText&) {
        editor->problem_solver.Reset();
        editor->problem_solver.AddPortalInfo(portal_id, 0, 1, lost->GetObjectID());
        editor->problem_solver.AddWrongEntity(lost->GetObjectID());
        EXPECT_TRUE(editor->problem_solver.ShowProblems(Level()));
        return CompileOutcome::Problems;
    });
    EXPECT_EQ(outcome, CompileOutcome::Problems);
    ProblemsWindow* window = nullptr;
    for (QObject* child : parent.children())
        if (auto* found = dynamic_cast<ProblemsWindow*>(child))
            window = found;
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    auto* tree = window->findChild<QTreeWidget*>();
    ASSERT_EQ(tree->topLevelItemCount(), 2);
    EXPECT_EQ(tree->topLevelItem(0)->text(0).toStdString(), "Portal #" + std::to_string(portal_id) + " - [N]");

    emit tree->itemActivated(tree->topLevelItem(0), 0);
    ASSERT_EQ(Level().brush_selection.GetItemCount(), 1);
    EXPECT_EQ(Level().brush[static_cast<size_t>(Level().brush_selection.GetItem(0))].get(), portal);
    EXPECT_EQ(editor->editor_state, ES_SELECTED);
    const D3DVECTOR middle = editor->GetWorldPositionAtPoint(VIEW_TOP, 200, 150);
    EXPECT_NEAR(middle.x, 1032, 2);
    EXPECT_NEAR(middle.z, 24, 2);

    emit tree->itemActivated(tree->topLevelItem(1)->child(0), 0);
    ASSERT_EQ(Level().entity_selection.GetItemCount(), 1);
    EXPECT_NEAR(editor->GetWorldPositionAtPoint(VIEW_FRONT, 200, 150).x, 5000, 2);
    frame->OnEditUndo(); // both jumps: steps of selecting that follow each other are one
    EXPECT_FALSE(Level().IsSomethingSelected());
    EXPECT_EQ(Level().undo_buffer.GetActionCount(), 0);
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
}
