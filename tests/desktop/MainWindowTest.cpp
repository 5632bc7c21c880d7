// The frame of the program: actions, keys, the palette, the views as the mouse finds them, closing, and what is told.
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QThread>
#include <QToolBar>
#include <QTreeWidget>
#include <set>
#include <thread>

#include "commands/CommandLabels.h"
#include "desktop/CommandPalette.h"
#include "desktop/DesktopFixture.h"
#include "desktop/KeyNames.h"
#include "desktop/KeysDialog.h"
#include "desktop/ProjectWatch.h"
#include "desktop/QtDesktop.h"
#include "desktop/SplashWindow.h"
#include "desktop/StatusBar.h"

namespace {

const Command& Named(const char* name) { return *FindCommand(name); }

} // namespace

// Actions -------------------------------------------------------------------------------------------------------------

TEST_F(DesktopTest, EveryCommandIsOneActionInAMenuThatShowsItsKeys) {
    Open();
    std::set<QString> menu_texts;
    for (const Command& command : CommandTable()) {
        const QAction& action = window->actions.Action(command);
        EXPECT_EQ(window->actions.findChildren<QAction*>(command.name).size(), 1) << command.name;
        int menus = 0;
        for (const QObject* shown_in : action.associatedObjects())
            menus += qobject_cast<const QMenu*>(shown_in) != nullptr;
        EXPECT_EQ(menus, 1) << command.name;
        const std::string text = action.text().toStdString();
        EXPECT_NE(CommandTitle(command), command.name) << "a label is missing";
        if (const std::string keys = window->bindings.Text(command); !keys.empty()) {
            EXPECT_EQ(text.substr(text.find('\t') + 1), keys) << command.name;
        }
        EXPECT_FALSE(action.toolTip().isEmpty()) << command.name;
        EXPECT_TRUE(action.shortcut().isEmpty()) << "the window alone handles keys";
        if (!command.action) {
            EXPECT_FALSE(action.isEnabled()) << command.name;
        }
    }
}

TEST_F(DesktopTest, MarksAndRulesFollowTheEditor) {
    Open();
    const QAction& bounds = window->actions.Action(Named("OnCordonbounds"));
    EXPECT_FALSE(bounds.isEnabled()) << "there is no box to edit";
    window->actions.Action(Named("OnCordonstate")).trigger();
    EXPECT_TRUE(bounds.isEnabled());
    EXPECT_TRUE(window->actions.Action(Named("OnCordonstate")).isChecked());
    EXPECT_TRUE(window->actions.Action(Named("OnBrushBox")).isChecked());
    window->actions.Action(Named("OnBrushCone")).trigger();
    EXPECT_FALSE(window->actions.Action(Named("OnBrushBox")).isChecked());
    EXPECT_TRUE(window->actions.Action(Named("OnBrushCone")).isChecked());
    window->actions.Action(Named("OnMoviePlay")).trigger();
    EXPECT_EQ(window->actions.Action(Named("OnMoviePlay")).text().toStdString(), "Pause\tM, ;");
}

// Keys ----------------------------------------------------------------------------------------------------------------

TEST(KeyNames, ToldFromEvents) {
    TestApplication(); // owns the keyboard that events name
    struct Case {
        int key;
        Qt::KeyboardModifiers modifiers;
        quint32 place;
        const char* text;
        std::vector<std::string> names;
    };
    const Qt::KeyboardModifiers none, shift = Qt::ShiftModifier, ctrl = Qt::ControlModifier, alt = Qt::AltModifier,
                                      pad = Qt::KeypadModifier;
    const Case cases[] = {
        {Qt::Key_V, none, 55, "v", {"V"}},
        {Qt::Key_S, ctrl | shift, 39, "", {"Ctrl+Shift+S"}},
        {Qt::Key_6, pad, 85, "6", {"Num6"}},
        {Qt::Key_6, none, 15, "6", {"6"}},
        {Qt::Key_Right, pad, 85, "", {"Num6"}},
        {Qt::Key_Right, shift, 114, "", {"Shift+Right"}},
        {Qt::Key_5, pad | ctrl, 84, "", {"Ctrl+Num5"}},
        {Qt::Key_Delete, none, 119, "", {"Del"}},
        {Qt::Key_Delete, pad, 91, "", {"Num."}},
        {Qt::Key_Plus, pad, 86, "+", {"Num+"}},
        {Qt::Key_Backtab, shift, 23, "", {"Shift+Tab"}},
        {Qt::Key_Greater, shift, 60, ">", {">"}},
        {Qt::Key_Question, shift, 61, "?", {"?"}},
        {Qt::Key_Exclam, shift, 10, "!", {"!", "Shift+1"}},
        {Qt::Key_Exclam, shift, 0, "!", {"!", "Shift+1"}},
        {Qt::Key_1, alt, 10, "1", {"Alt+1"}},
        {Qt::Key_Ampersand, ctrl, 10, "", {"Ctrl+&", "Ctrl+1"}}, // a French keyboard
        {Qt::Key_Slash, shift, 16, "/", {"/", "Shift+7"}},       // a German one
        {Qt::Key_QuoteLeft, none, 49, "`", {"`"}},
        {Qt::Key_Dead_Circumflex, none, 49, "", {"`"}}, // a German one
        {0x0424, none, 38, "\xD1\x84", {"A"}},          // a Russian one
        {Qt::Key_CapsLock, none, 66, "", {"CapsLock"}},
        {Qt::Key_Shift, shift, 50, "", {}},
    };
    for (const Case& c : cases) {
        const QKeyEvent event(QEvent::KeyPress, c.key, c.modifiers, c.place, 0, 0, c.text);
        EXPECT_EQ(KeyTexts(event), c.names) << "key " << c.key << " at " << c.place;
    }
}

TEST(KeyNames, NameTheCommandsOfTheTable) {
    for (const char* keys : {"Num6", "Shift+Tab", ">", "?", "`", "Num.", "Ctrl+Num5", "["})
        EXPECT_NE(FindCommandOfKey(keys), nullptr) << keys;
}

TEST_F(DesktopTest, KeysRunCommandsButNotFromATextField) {
    Open();
    Key(*views, Qt::Key_B, Qt::ShiftModifier); // no command has it
    Key(*views, Qt::Key_L, Qt::NoModifier, "l");
    EXPECT_FALSE(interface->texture_lock);
    Key(*views, Qt::Key_A, Qt::NoModifier, "a"); // taken, and does nothing
    Key(*views, Qt::Key_6, Qt::KeypadModifier, "6");
    EXPECT_EQ(frame->ushift_repeat, 1);

    auto* field = new QLineEdit(window.get());
    field->show();
    field->setFocus();
    for (const int key : {Qt::Key_L, Qt::Key_Space, Qt::Key_Backspace, Qt::Key_Delete, Qt::Key_Question})
        Key(*field, key, Qt::NoModifier,
            key == Qt::Key_L          ? "l"
            : key == Qt::Key_Question ? "?"
            : key == Qt::Key_Space    ? " "
                                      : "");
    EXPECT_FALSE(interface->texture_lock) << "L went to the field";
    EXPECT_EQ(field->text().toStdString(), "l?");
    EXPECT_TRUE(desktop.boxes.empty());
    Key(*field, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(field->selectedText().toStdString(), "l?") << "Ctrl+A is the field's";
    Key(*field, Qt::Key_G, Qt::ShiftModifier, "G");
    EXPECT_FALSE(interface->ignore_groups);
    Key(*field, Qt::Key_W, Qt::AltModifier);
    EXPECT_TRUE(interface->settings.show_sel_wire) << "no field knows Alt+W";
    Key(*field, Qt::Key_F8);
    EXPECT_TRUE(interface->console_onscreen);
}

TEST_F(DesktopTest, ReturnInAFieldAndAPressInAViewGiveTheKeysToTheViews) {
    Open();
    auto* const library = window->findChild<QDockWidget*>("Library");
    library->show();
    auto* const field = new QLineEdit(library);
    auto* const number = new QSpinBox(library);
    number->clear();
    auto* const text = new QPlainTextEdit(library);
    int finished = 0;
    QObject::connect(field, &QLineEdit::editingFinished, field, [&] { ++finished; });
    for (QWidget* in : {static_cast<QWidget*>(field), static_cast<QWidget*>(number)}) {
        in->show();
        in->setFocus();
        Key(*in, Qt::Key_3, Qt::NoModifier, "3");
        Key(*in, Qt::Key_Return, Qt::NoModifier, "\r");
        EXPECT_TRUE(views->hasFocus());
    }
    EXPECT_EQ(field->text().toStdString(), "3");
    EXPECT_EQ(finished, 1) << "what was typed counts, once";
    EXPECT_EQ(number->value(), 3);
    text->show();
    text->setFocus();
    Key(*text, Qt::Key_Return, Qt::NoModifier, "\r");
    EXPECT_TRUE(text->hasFocus()) << "Return starts a line there";
    EXPECT_EQ(text->toPlainText().toStdString(), "\n");
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton, Qt::RightButton}) {
        field->setFocus();
        Mouse(QEvent::MouseButtonPress, Middle(VIEW_TOP), button);
        Mouse(QEvent::MouseButtonRelease, Middle(VIEW_TOP), button);
        EXPECT_TRUE(views->hasFocus());
    }
}

TEST_F(DesktopTest, EscapeInAMenuOpenedByTheMouseLeavesTheMenuBar) {
    Open();
    QMenuBar& bar = *window->menuBar();
    const QPointF at = QRectF(bar.actionGeometry(bar.actions().front())).center();
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, at, bar.mapToGlobal(at), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(&bar, &event);
    }
    ASSERT_NE(QApplication::activePopupWidget(), nullptr);
    Key(*QApplication::activePopupWidget(), Qt::Key_Escape);
    QApplication::processEvents();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_EQ(bar.activeAction(), nullptr);
    window->activateWindow();
    QApplication::processEvents();
    ASSERT_TRUE(views->hasFocus());
    Key(*views, Qt::Key_L, Qt::NoModifier, "l");
    EXPECT_FALSE(interface->texture_lock) << "the letter is a command again";
}

TEST_F(DesktopTest, AKeyThatDoesNothingInTheViewsLeadsToItsPageInTheLibrary) {
    Open();
    Key(*views, Qt::Key_T, Qt::NoModifier, "t");
    Key(*views, Qt::Key_A, Qt::NoModifier, "a");
    EXPECT_EQ(interface->selected_tab, TAB_TEXTURE);
    auto* const library = window->findChild<QDockWidget*>("Library");
    auto* const inside = new QPushButton(library);
    inside->show();
    inside->setFocus();
    Key(*inside, Qt::Key_A, Qt::NoModifier, "a");
    EXPECT_EQ(interface->selected_tab, TAB_AI);
}

TEST_F(DesktopTest, ChangedKeysAreKeptAndConflictsResolved) {
    KeyBindings bindings;
    const Command &vertex = Named("OnVertexMode"), &rotate = Named("OnRotate"), &undo = Named("OnEditUndo");
    EXPECT_EQ(bindings.Text(undo), "Ctrl+Z, Alt+Backspace");
    bindings.Set(vertex, {"shift+r", "R", "nonsense"});
    EXPECT_EQ(bindings.Text(vertex), "Shift+R, R");
    EXPECT_EQ(bindings.Find("R"), &vertex);
    EXPECT_EQ(bindings.Find("V"), nullptr);
    EXPECT_TRUE(bindings.KeysOf(rotate).empty()) << "two commands never share a key";
    bindings.Set(undo, {PALETTE_KEYS});
    EXPECT_TRUE(bindings.KeysOf(undo).empty()) << "the palette's keys cannot be given away";
    ASSERT_TRUE(bindings.Store());

    KeyBindings loaded;
    loaded.Load();
    for (const Command& command : CommandTable())
        EXPECT_EQ(loaded.Text(command), bindings.Text(command)) << command.name;
    loaded.Reset(rotate);
    EXPECT_EQ(loaded.Find("R"), &rotate);
    EXPECT_EQ(loaded.Text(vertex), "Shift+R");
    loaded.ResetAll();
    ASSERT_TRUE(loaded.Store());
    KeyBindings fresh;
    fresh.Load();
    for (const Command& command : CommandTable())
        EXPECT_TRUE(fresh.IsDefault(command)) << command.name;
}

TEST_F(DesktopTest, KeysChangedInTwoWindowsAreBothKept) {
    const Command &vertex = Named("OnVertexMode"), &rotate = Named("OnRotate"), &undo = Named("OnEditUndo");
    KeyBindings first, second;
    first.Set(undo, {"F3"});
    ASSERT_TRUE(first.Store());
    second.Load();
    first.Set(vertex, {"Ctrl+F3"});
    second.Set(rotate, {"Shift+F3"});
    second.Reset(undo);
    ASSERT_TRUE(first.Store() && second.Store() && first.Store());
    KeyBindings loaded;
    loaded.Load();
    EXPECT_EQ(loaded.Text(vertex), "Ctrl+F3");
    EXPECT_EQ(loaded.Text(rotate), "Shift+F3");
    EXPECT_TRUE(loaded.IsDefault(undo)) << "the first window has not changed it since";
}

TEST_F(DesktopTest, TheKeysDialogTellsWhoWouldLoseAKey) {
    TestApplication();
    KeysDialog dialog(KeyBindings(), nullptr);
    dialog.Choose(Named("OnVertexMode"));
    auto* catcher = dialog.findChild<KeyCatcher*>();
    dialog.show();
    catcher->setFocus();
    Key(*catcher, Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_FALSE(catcher->hasFocus()) << "as its tool tip says";
    Key(*catcher, Qt::Key_R, Qt::NoModifier, "r");
    bool told = false;
    for (const QLabel* label : dialog.findChildren<QLabel*>())
        told |= label->text().contains("Rotation mode");
    EXPECT_TRUE(told);
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
        if (button->text() == "&Add")
            button->click();
    EXPECT_EQ(dialog.bindings.Text(Named("OnVertexMode")), "V, R");
    EXPECT_EQ(dialog.bindings.Text(Named("OnRotate")), "");
}

// Palette -------------------------------------------------------------------------------------------------------------

TEST_F(DesktopTest, ThePaletteFindsByPartsOfTheName) {
    Open();
    EXPECT_EQ(FindCommands("").size(), CommandTable().size());
    EXPECT_TRUE(FindCommands("no such thing").empty());
    const auto compile = FindCommands("COMPILE");
    ASSERT_FALSE(compile.empty());
    EXPECT_STREQ(compile.front()->name, "OnCompile") << "what begins with the words comes first";
    const auto clone = FindCommands("edit lon");
    ASSERT_EQ(clone.size(), 1u);
    EXPECT_STREQ(clone.front()->name, "OnClone");

    CommandPalette palette(window->actions, window->bindings, window.get());
    auto* words = palette.findChild<QLineEdit*>();
    words->setText("vertex mode");
    auto* list = palette.findChild<QTreeWidget*>();
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(list->topLevelItem(0)->text(2).toStdString(), "V");
    Key(*words, Qt::Key_Return);
    EXPECT_EQ(palette.chosen, &Named("OnVertexMode"));
    CommandPalette other(window->actions, window->bindings, window.get());
    other.findChild<QLineEdit*>()->setText("edit bounds");
    Key(*other.findChild<QLineEdit*>(), Qt::Key_Return);
    EXPECT_EQ(other.chosen, nullptr) << "without a box it is off";
    other.findChild<QLineEdit*>()->setText("no such thing");
    EXPECT_EQ(other.findChild<QTreeWidget*>()->topLevelItemCount(), 1) << "a line that says so";
    Key(*other.findChild<QLineEdit*>(), Qt::Key_Return);
    EXPECT_EQ(other.chosen, nullptr);
}

// Views ---------------------------------------------------------------------------------------------------------------

class ScaledViewsTest : public DesktopTest, public testing::WithParamInterface<double> {};
INSTANTIATE_TEST_SUITE_P(Scales, ScaledViewsTest, testing::Values(1.0, 2.0));

TEST_P(ScaledViewsTest, TheMouseReachesTheViewUnderIt) {
    Open(GetParam());
    const int scale = static_cast<int>(GetParam());
    EXPECT_EQ(crvScrWidth, static_cast<uint32_t>(views->width() * scale));
    for (const int view : {VIEW_TOP, VIEW_FRONT, VIEW_LEFT, VIEW_PERSPECTIVE}) {
        const RECT& rect = interface->View(view).window_rect;
        const QPointF corner(rect.left / GetParam(), rect.top / GetParam());
        Mouse(QEvent::MouseMove, corner + QPointF(30, 20));
        EXPECT_EQ(interface->active_view, view);
        EXPECT_EQ(interface->last_position.x, 30 * scale);
        EXPECT_EQ(interface->last_position.y, 20 * scale);
        Mouse(QEvent::MouseMove, corner + QPointF(0, 0));
        EXPECT_EQ(interface->active_view, view) << "its first pixel is its own";
    }
    EXPECT_TRUE(views->Rect(VIEW_PERSPECTIVE).right() < views->Rect(VIEW_TOP).left());
    EXPECT_TRUE(views->Rect(VIEW_PERSPECTIVE).bottom() < views->Rect(VIEW_LEFT).top());
}

TEST_P(ScaledViewsTest, ADragMakesABrush) {
    Open(GetParam());
    // 64 by 32 pixels of the screen's scale are so many world units, times the scale, on a grid of 8.
    Drag(Middle(VIEW_TOP), Middle(VIEW_TOP) + QPointF(64, 32));
    ASSERT_EQ(interface->world->GetBrushCount(), 1);
    const Box& box = interface->world->brush[0]->bbox;
    EXPECT_NEAR(BoxMax(box).x - BoxMin(box).x, 64 * GetParam(), 8);
    EXPECT_NEAR(BoxMax(box).z - BoxMin(box).z, 32 * GetParam(), 8);
    EXPECT_EQ(interface->editor_state, ES_SELECTED);
}

TEST_F(DesktopTest, AViewKeepsTheMouseThroughADrag) {
    Open();
    Mouse(QEvent::MouseButtonPress, Middle(VIEW_TOP), Qt::MiddleButton);
    const int before = interface->View(VIEW_TOP).view_position[0];
    Mouse(QEvent::MouseMove, Middle(VIEW_TOP));
    Mouse(QEvent::MouseMove, Middle(VIEW_PERSPECTIVE));
    EXPECT_EQ(interface->active_view, VIEW_TOP) << "over another view";
    EXPECT_EQ(interface->View(VIEW_TOP).view_position[0] - before,
              static_cast<int>(Middle(VIEW_TOP).x() - Middle(VIEW_PERSPECTIVE).x()));
    Mouse(QEvent::MouseButtonRelease, Middle(VIEW_PERSPECTIVE), Qt::MiddleButton);
    EXPECT_EQ(interface->editor_state, ES_IDLE);
    Mouse(QEvent::MouseMove, Middle(VIEW_PERSPECTIVE));
    EXPECT_EQ(interface->active_view, VIEW_PERSPECTIVE);
    // A release that never came is made up for with the next move.
    Mouse(QEvent::MouseButtonPress, Middle(VIEW_FRONT), Qt::MiddleButton);
    EXPECT_EQ(interface->editor_state, ES_PAN);
    down = Qt::NoButton;
    Mouse(QEvent::MouseMove, Middle(VIEW_FRONT));
    EXPECT_EQ(interface->editor_state, ES_IDLE);
}

TEST_F(DesktopTest, TheWheelCountsWholeNotchesAndKnowsItsKeys) {
    Open();
    const auto wheel = [&](QPoint delta, Qt::KeyboardModifiers modifiers) {
        QWheelEvent event(Middle(VIEW_TOP), views->mapToGlobal(Middle(VIEW_TOP)), QPoint(), delta, Qt::NoButton,
                          modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(views, &event);
    };
    wheel({0, 60}, Qt::NoModifier);
    EXPECT_EQ(interface->View(VIEW_TOP).zoom_in, 1);
    wheel({0, 60}, Qt::NoModifier);
    EXPECT_EQ(interface->View(VIEW_TOP).zoom_in, 2);
    wheel({0, -240}, Qt::NoModifier);
    EXPECT_EQ(interface->View(VIEW_TOP).zoom_out, 2);
    wheel({0, -120}, Qt::ShiftModifier);
    EXPECT_EQ(interface->grid_size, 16);
    wheel({120, 0}, Qt::AltModifier); // as the toolkit gives a wheel with Alt
    EXPECT_EQ(interface->View(VIEW_TOP).zoom_out, 1);
}

TEST_F(DesktopTest, TheSplitIsDraggedAndKeptThroughResizes) {
    Open();
    views->MoveSplit(100, 150);
    EXPECT_EQ(interface->View(VIEW_PERSPECTIVE).window_rect.Width(), 100);
    EXPECT_EQ(interface->View(VIEW_TOP).window_rect.Height(), 150);
    EXPECT_EQ(interface->View(VIEW_FRONT).window_rect.right, views->width());
    EXPECT_EQ(interface->View(VIEW_FRONT).window_rect.bottom, views->height());
    const double share = 100.0 / views->width();
    window->resize(1400, 900);
    QApplication::processEvents();
    EXPECT_NEAR(static_cast<double>(interface->View(VIEW_PERSPECTIVE).window_rect.Width()) / views->width(), share,
                0.01);
    // Full view and back: the whole widget, then the middle.
    Mouse(QEvent::MouseMove, Middle(VIEW_FRONT));
    Key(*views, Qt::Key_W, Qt::NoModifier, "w");
    EXPECT_EQ(views->Rect(VIEW_FRONT), views->rect());
    EXPECT_EQ(views->ViewAt({1, 1}), VIEW_FRONT);
    Key(*views, Qt::Key_F2);
    window->resize(1300, 900);
    QApplication::processEvents();
    EXPECT_EQ(views->Rect(VIEW_TOP), views->rect()) << "though another view is the active one";
    Key(*views, Qt::Key_W, Qt::NoModifier, "w");
    EXPECT_NEAR(interface->View(VIEW_TOP).window_rect.Width(), interface->View(VIEW_PERSPECTIVE).window_rect.Width(),
                1);
    // What was in the middle of a view stays there.
    EXPECT_NEAR(interface->GetWorldPositionAtPoint(VIEW_TOP, interface->View(VIEW_TOP).client_rect.right / 2, 0).x, 0,
                2);
}

TEST_F(DesktopTest, OnlyChangedViewsAreDrawn) {
    Open();
    const auto pixel = [&](int view) {
        return QColor(views->grab().toImage().pixel((Middle(view) + QPointF(11, 13)).toPoint()));
    };
    interface->CenterWorld(true);
    views->grab();
    interface->settings.bg_color_vire_view = 0x203040;
    interface->settings.bg_color_3D_view = 0x405060;
    interface->RedrawView(VIEW_TOP);
    EXPECT_EQ(pixel(VIEW_TOP), QColor(0x20, 0x30, 0x40));
    EXPECT_NE(pixel(VIEW_FRONT), QColor(0x20, 0x30, 0x40)) << "nobody asked for it";
    views->SetFrozen(true);
    interface->RedrawAllViews();
    EXPECT_NE(pixel(VIEW_FRONT), QColor(0x20, 0x30, 0x40)) << "a compile works on the level";
    views->SetFrozen(false);
    EXPECT_EQ(pixel(VIEW_FRONT), QColor(0x20, 0x30, 0x40));
}

// The rest ------------------------------------------------------------------------------------------------------------

TEST_F(DesktopTest, ClosingAsksForUnsavedWork) {
    Open();
    interface->MarkDirty();
    desktop.answers = {MessageAnswer::Cancel, MessageAnswer::No};
    window->close();
    EXPECT_TRUE(window->isVisible());
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].text, "Do you want to save active project?");
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(desktop.boxes.size(), 2u);
}

TEST_F(DesktopTest, HintsFollowTheModeAndTheKeysHeld) {
    Open();
    struct Case {
        int view;
        EditorState state;
        HeldModifiers held;
        const char *left, *right, *wheel; // a word of each
    };
    const HeldModifiers none, shift{true, false, false}, ctrl{false, true, false}, alt{false, false, true};
    const Case cases[] = {
        {VIEW_TOP, ES_IDLE, none, "new brush", "", "zoom"},
        {VIEW_TOP, ES_IDLE, shift, "select a brush", "select an entity", "grid"},
        {VIEW_TOP, ES_IDLE, ctrl, "new brush", "place", "rotate"},
        {VIEW_TOP, ES_IDLE, alt, "camera", "", "zoom"},
        {VIEW_LEFT, ES_SELECTED, none, "resize", "clear", "zoom"},
        {VIEW_FRONT, ES_ROTATE_ARMED, none, "rotate", "leave", "zoom"},
        {VIEW_FRONT, ES_EXTRUDABLE, none, "corner", "give", "zoom"},
        {VIEW_PERSPECTIVE, ES_IDLE, none, "look around", "move the camera", "fly"},
        {VIEW_PERSPECTIVE, ES_IDLE, ctrl, "surface", "texture", "slowly"},
        {VIEW_PERSPECTIVE, ES_PICK_TEXTURE, none, "take this texture", "", "fly"},
    };
    for (const Case& c : cases) {
        interface->active_view = c.view;
        interface->editor_state = c.state;
        const MouseHint hint = HintFor(*interface, c.held);
        EXPECT_NE(hint.left.find(c.left), std::string::npos) << hint.left;
        EXPECT_NE(hint.right.find(c.right), std::string::npos) << hint.right;
        EXPECT_NE(hint.wheel.find(c.wheel), std::string::npos) << hint.wheel;
    }
    interface->editor_state = ES_SELECTED;
    interface->active_view = VIEW_TOP;
    interface->shearing = true;
    EXPECT_EQ(HintFor(*interface, none).left, "drag a side to shear");
    interface->editor_state = ES_IDLE;
    interface->shearing = false;
}

TEST_F(DesktopTest, TheStatusBarHasThePanesOfTheEditor) {
    Open();
    auto& bar = static_cast<StatusBar&>(*window->statusBar());
    interface->SetStatus(PANE_SIZE, "Size: X: 64,  Y: 32,  Z: 64");
    EXPECT_EQ(bar.panes[PANE_SIZE]->text().toStdString(), "Size: X: 64,  Y: 32,  Z: 64");
    EXPECT_EQ(bar.panes[PANE_COUNTS]->text().toStdString(), "Brushes: 0   Entities: 0");
    Key(*views, Qt::Key_CapsLock);
    EXPECT_EQ(bar.panes[PANE_LOCK]->text().toStdString(), "LOCK");
}

TEST(ProjectWatch, TellsAStrangersWriteFromItsOwn) {
    TestApplication();
    const TempFolder folder;
    WriteBytes(folder / "a.msp", "one");
    ProjectWatch watch;
    watch.Know(folder / "a.msp");
    EXPECT_FALSE(watch.HasChanged());
    WriteBytes(folder / "a.msp", "longer than before");
    EXPECT_TRUE(watch.HasChanged());
    watch.Know(folder / "a.msp");
    EXPECT_FALSE(watch.HasChanged());
    std::filesystem::remove(folder / "a.msp");
    EXPECT_FALSE(watch.HasChanged()) << "a file that has gone cannot be opened again";
}

TEST_F(DesktopTest, ADroppedProjectOpensAndAStrangersWriteIsOffered) {
    Open();
    Drag(Middle(VIEW_TOP), Middle(VIEW_TOP) + QPointF(64, 32));
    ASSERT_TRUE(frame->document.SaveTo(folder / "level.msp"));
    EXPECT_TRUE(window->windowTitle().contains("level.msp"));
    frame->document.New();
    ASSERT_EQ(interface->world->GetBrushCount(), 0);
    for (const char* file : {"level.txt", "level.msp"}) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QString::fromStdString(folder / file))});
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &enter);
        QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &drop);
    }
    EXPECT_EQ(interface->world->GetBrushCount(), 1);
    EXPECT_TRUE(desktop.boxes.empty());

    interface->world->DeleteBrush(0);
    desktop.answers = {MessageAnswer::No, MessageAnswer::Yes};
    emit window->findChild<ProjectWatch*>()->Changed();
    EXPECT_EQ(interface->world->GetBrushCount(), 0);
    emit window->findChild<ProjectWatch*>()->Changed();
    EXPECT_EQ(interface->world->GetBrushCount(), 1) << "opened again";
    EXPECT_EQ(desktop.boxes.size(), 2u);
}

TEST(SplashWindow, TellsWhatIsDoneUntilAKeyIsPressed) {
    TestApplication();
    SplashWindow splash(1000000); // however slow the machine
    splash.show();
    splash.Tell("Reading materials", 0.5);
    const QImage with_text = splash.grab().toImage();
    splash.Tell("", 0.5);
    const QImage bar_only = splash.grab().toImage();
    EXPECT_NE(with_text, bar_only);
    const int bottom = bar_only.height() - 1;
    EXPECT_EQ(bar_only.pixel(0, bottom), bar_only.pixel(bar_only.width() * 4 / 10, bottom));
    EXPECT_NE(bar_only.pixel(0, bottom), bar_only.pixel(bar_only.width() * 6 / 10, bottom));
    QWidget other;
    int presses = 0;
    struct Counter : QObject {
        int& count;
        explicit Counter(int& presses_seen) : count(presses_seen) {}
        bool eventFilter(QObject*, QEvent* event) override {
            count += event->type() == QEvent::KeyPress;
            return false;
        }
    } counter(presses);
    other.installEventFilter(&counter);
    for (int i = 0; i < 2; ++i) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier);
        QApplication::sendEvent(&other, &press);
        EXPECT_FALSE(splash.isVisible());
    }
    EXPECT_EQ(presses, 1) << "the first one only takes the picture away";
    splash.Tell("late", 1);
    EXPECT_FALSE(splash.isVisible());
}

TEST(QtDesktop, FollowsHeldKeysAndTakesNoticesFromAnyThread) {
    TestApplication();
    QtDesktop desktop;
    QWidget widget;
    const auto key = [&](QEvent::Type type, int code, Qt::KeyboardModifiers modifiers, bool repeated = false) {
        QKeyEvent event(type, code, modifiers, QString(), repeated);
        QApplication::sendEvent(&widget, &event);
    };
    key(QEvent::KeyPress, Qt::Key_6, Qt::KeypadModifier);
    key(QEvent::KeyPress, Qt::Key_4, Qt::NoModifier);
    EXPECT_TRUE(desktop.IsKeyDown(HeldKey::Num6));
    EXPECT_FALSE(desktop.IsKeyDown(HeldKey::Num4)) << "that was the 4 above the letters";
    key(QEvent::KeyRelease, Qt::Key_6, Qt::KeypadModifier, true);
    EXPECT_TRUE(desktop.IsKeyDown(HeldKey::Num6)) << "a repeat is no release";
    key(QEvent::KeyRelease, Qt::Key_6, Qt::KeypadModifier);
    EXPECT_FALSE(desktop.IsKeyDown(HeldKey::Num6));

    QStringList seen;
    bool in_window_thread = false;
    desktop.show_notice = [&](const QString& sentence) {
        seen << sentence;
        in_window_thread = QThread::currentThread() == widget.thread();
    };
    std::thread([&] { desktop.Notice("from a worker"); }).join();
    QApplication::processEvents();
    EXPECT_EQ(seen, QStringList{"from a worker"});
    EXPECT_TRUE(in_window_thread);
}

TEST(QtDesktop, FiltersOfFileDialogs) {
    EXPECT_EQ(QtFilter("Movie files (*.mvi)|*.mvi|All files (*.*)|*.*||").toStdString(),
              "Movie files (*.mvi *.MVI);;All files (*)");
    EXPECT_EQ(QtFilter("Pictures(*.tga;*.png)|*.tga;*.png||").toStdString(), "Pictures (*.tga *.TGA *.png *.PNG)");
}
