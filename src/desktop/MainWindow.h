// The window of the editor: menus, tool bars, the four views, the status bar, the library and the small windows beside
// it. It binds the commands, and edits nothing itself.
#pragma once

#include <QMainWindow>
#include <QTimer>
#include <memory>

#include "commands/MainFrame.h"
#include "commands/Recovery.h"
#include "desktop/CommandActions.h"
#include "desktop/KeyBindings.h"
#include "desktop/MouseHints.h"

class ExtendedSelectWindow;
class NamedObjectsWindow;
class NoticeBar;
class ProjectWatch;
class QDockWidget;
class StatusBar;
class TerrainToolWindow;
class UndoWindow;
class ViewsWidget;
class WelcomePanel;

class MainWindow : public QMainWindow, public EditorListener {
    Q_OBJECT
public:
    // views_widget becomes the middle of the window.
    MainWindow(CMainFrame& main_frame, ViewsWidget* views_widget, QWidget* parent = nullptr);
    ~MainWindow() override;

    void AddNotice(const QString& sentence);
    void UseRecovery(RecoveryFile& file);      // from then on the level is kept against a crash
    void OpenProject(const std::string& path); // asks for unsaved work first
    void ShowPalette();
    void ShowKeys();
    void RestoreLayout();
    void StoreChangedLayout(); // so that a kill loses little

    CMainFrame& frame;
    KeyBindings bindings;
    CommandActions actions;
    ViewsWidget& views;

    // EditorListener
    void StatusChanged(int pane) override;
    void TitleChanged() override;
    void LibraryWindowChanged() override;
    void WorldReplaced() override;
    void TerrainToolChanged() override;
    void CursorChanged() override { TerrainToolChanged(); } // other commands leave the tool too

protected:
    bool eventFilter(QObject* watched, QEvent* event) override; // keys
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    void MakeMiddle();
    void MakeMenus();
    void MakeHelpMenu();
    void MakeWindows();
    void StartTimers();
    void FillRecent();
    void Tick();
    void ShowHints();
    void UpdateWelcome();
    void PlaceWelcome();
    void ToggleUndoWindow();
    void OfferReload();
    void StoreLayout();
    void LeaveMenuBar();
    CompileOutcome RunCompile(const CMainFrame::CompileStep& compile);
    // The command of the pressed keys; found is false when they are no keys of the window.
    struct KeyMeaning {
        bool found = false, palette = false;
        const Command* command = nullptr;
    };
    bool EndsTyping(const QWidget& field, const QKeyEvent& event) const;
    void GiveKeysToViews();
    KeyMeaning MeaningOf(QWidget& focus, const QKeyEvent& event);
    bool WidgetWants(QWidget& focus, const QKeyEvent& event);

    StatusBar* status_bar;
    NoticeBar* notices;
    WelcomePanel* welcome;
    ProjectWatch* watch;
    QDockWidget* library = nullptr;
    UndoWindow* undo_window = nullptr;
    NamedObjectsWindow* named_window = nullptr;
    ExtendedSelectWindow* extended_window = nullptr;
    TerrainToolWindow* terrain_window = nullptr;
    QMenu* recent_menu = nullptr;
    QTimer timer, movie_timer, recovery_timer;
    RecoveryFile* recovery = nullptr;
    QByteArray known_layout;
    bool menu_by_mouse = false; // the menu bar was last used so
    bool probing = false;       // a widget is asked whether it wants a key
    bool welcome_dismissed = false, asking_reload = false;
    std::string shown_hint, shown_mode;
};
