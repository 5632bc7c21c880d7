// Keys of the main window: which of them are commands, and when a field keeps them.
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTabBar>
#include <QTextEdit>
#include <QWheelEvent>

#include "desktop/KeyNames.h"
#include "desktop/MainWindow.h"
#include "desktop/ViewsWidget.h"

namespace {

bool IsTextField(const QWidget& widget) {
    if (const auto* combo = qobject_cast<const QComboBox*>(&widget))
        return combo->isEditable();
    return qobject_cast<const QLineEdit*>(&widget) || qobject_cast<const QTextEdit*>(&widget) ||
           qobject_cast<const QPlainTextEdit*>(&widget) || qobject_cast<const QAbstractSpinBox*>(&widget);
}

// Return ends the typing there.
bool IsOneLineField(const QWidget& widget) {
    return IsTextField(widget) && !qobject_cast<const QTextEdit*>(&widget) &&
           !qobject_cast<const QPlainTextEdit*>(&widget);
}

bool IsFunctionKey(int key) { return key >= Qt::Key_F1 && key <= Qt::Key_F35; }

// Keys by which one walks in a list, pushes a button and goes from field to field.
bool IsWalkingKey(int key) {
    for (const int walking :
         {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End, Qt::Key_PageUp,
          Qt::Key_PageDown, Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Delete})
        if (key == walking)
            return true;
    return false;
}

} // namespace

// Outside of the views a field keeps what it can use itself.
bool MainWindow::WidgetWants(QWidget& focus, const QKeyEvent& event) {
    if (&focus == &views || &focus == this)
        return false;
    if (qobject_cast<QMenuBar*>(&focus)) // entered by Alt alone, or left by Escape: letters open its menus
        return !IsFunctionKey(event.key()) && !(event.modifiers() & Qt::ControlModifier);
    const bool other_window = focus.window() != this;
    if (event.key() == Qt::Key_Escape)
        return other_window; // which it closes
    const Qt::KeyboardModifiers modifiers = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier);
    if (!IsTextField(focus))
        return modifiers == Qt::NoModifier && IsWalkingKey(event.key()) && !(event.modifiers() & Qt::KeypadModifier);
    if (modifiers == Qt::NoModifier && !IsFunctionKey(event.key()))
        return true;
    QKeyEvent question(QEvent::ShortcutOverride, event.key(), event.modifiers(), event.text());
    question.ignore();
    probing = true;
    QApplication::sendEvent(&focus, &question);
    probing = false;
    return question.isAccepted() || IsWalkingKey(event.key());
}

// Return in a field of a page: the letters that follow are commands.
bool MainWindow::EndsTyping(const QWidget& field, const QKeyEvent& event) const {
    return (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter) && IsOneLineField(field) &&
           (field.window() == this || library->isAncestorOf(&field));
}

void MainWindow::GiveKeysToViews() {
    activateWindow(); // the library may float
    views.setFocus();
}

MainWindow::KeyMeaning MainWindow::MeaningOf(QWidget& focus, const QKeyEvent& event) {
    if (WidgetWants(focus, event))
        return {};
    for (const std::string& keys : KeyTexts(event)) {
        if (bindings.IsTaken(keys))
            return {true, true, nullptr};
        if (const Command* command = bindings.Find(keys))
            return {true, false, command};
        if (IsReservedKey(keys)) // which the library knows
            return {true, false,
                    library->isAncestorOf(&focus) && keys == "A" ? FindCommand("OnViewAiwindow") : nullptr};
    }
    return {};
}

// Alt that was held for the wheel is not Alt pressed alone, which enters the menu bar when it is let go. The menu bar
// knows buttons and moves of the mouse as such a use, but no wheel. What ends its waiting otherwise is a window that
// becomes another's: it looks at every event of the program for that, and this one means nothing to anybody else.
static void TellAltIsUsed() {
    QObject nobody;
    QEvent use(QEvent::ActivationChange);
    QCoreApplication::sendEvent(&nobody, &use);
}

// Before the widgets and the letters of the menus see a key. Boxes, dialogs and open menus have their keys to
// themselves.
bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Wheel && static_cast<QWheelEvent*>(event)->modifiers() & Qt::AltModifier)
        TellAltIsUsed();
    const bool pressed = event->type() == QEvent::KeyPress;
    if (event->type() == QEvent::KeyRelease && !static_cast<QKeyEvent*>(event)->isAutoRepeat())
        views.FlyKey(static_cast<QKeyEvent*>(event)->key(), false);
    if (event->type() == QEvent::MouseButtonPress && watched == menuBar())
        menu_by_mouse = true;
    else if (pressed && watched->isWidgetType() && !QApplication::activePopupWidget())
        menu_by_mouse = false;
    if ((!pressed && event->type() != QEvent::ShortcutOverride) || probing || !watched->isWidgetType() ||
        QApplication::activeModalWidget() || QApplication::activePopupWidget())
        return QMainWindow::eventFilter(watched, event);
    auto* widget = static_cast<QWidget*>(watched);
    QWidget* focus = QApplication::focusWidget();
    const bool ours = widget->window() == this || widget->window()->parentWidget() == this;
    if (!ours || (focus && focus->window() == widget->window() && widget != focus))
        return QMainWindow::eventFilter(watched, event);
    const auto& key = *static_cast<QKeyEvent*>(event);
    if (key.key() == Qt::Key_Escape && widget->window() == this && IsTextField(*widget) && pressed) {
        views.setFocus(); // out of the field, before anything else
        return true;
    }
    if (EndsTyping(*widget, key) && pressed) {
        probing = true; // the field sees it first
        QApplication::sendEvent(widget, event);
        probing = false;
        if (!QApplication::activeModalWidget() && !QApplication::activePopupWidget())
            GiveKeysToViews();
        return true;
    }
    if (key.modifiers() == Qt::NoModifier && views.FlyKey(key.key(), true)) {
        event->accept();
        return true;
    }
    const KeyMeaning meaning = MeaningOf(*widget, key);
    if (!meaning.found)
        return QMainWindow::eventFilter(watched, event);
    event->accept();
    if (!pressed)
        return true;
    if (meaning.palette)
        ShowPalette();
    else if (meaning.command)
        actions.Run(*meaning.command);
    return true;
}
