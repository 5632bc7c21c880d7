#include "desktop/MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QStatusTipEvent>
#include <QThread>
#include <QVBoxLayout>

#include "desktop/CommandPalette.h"
#include "desktop/FinishTyping.h"
#include "desktop/KeysDialog.h"
#include "desktop/LightPreviewWidget.h"
#include "desktop/ManualWindow.h"
#include "desktop/NoticeBar.h"
#include "desktop/ProgressDialog.h"
#include "desktop/ProjectWatch.h"
#include "desktop/StatusBar.h"
#include "desktop/StoredLayout.h"
#include "desktop/ViewsWidget.h"
#include "desktop/WelcomePanel.h"
#include "foundation/Paths.h"

namespace {

constexpr int TICK = 10, MOVIE_TICK = 8, RECOVERY_TICK = 1000; // milliseconds
constexpr const char* TITLE = "Marrowstead 2000";
constexpr const char *GEOMETRY = "WindowGeometry", *STATE = "WindowState";
constexpr int LAYOUT_VERSION = 1; // of the stored state

HeldModifiers HeldNow() {
    const Qt::KeyboardModifiers modifiers = QGuiApplication::queryKeyboardModifiers();
    return {(modifiers & Qt::ShiftModifier) != 0, (modifiers & Qt::ControlModifier) != 0,
            (modifiers & Qt::AltModifier) != 0};
}

QString DroppedProject(const QMimeData& data) {
    for (const QUrl& url : data.urls())
        if (url.isLocalFile() && QFileInfo(url.toLocalFile()).suffix().compare("msp", Qt::CaseInsensitive) == 0)
            return url.toLocalFile();
    return {};
}

} // namespace

MainWindow::MainWindow(CMainFrame& main_frame, ViewsWidget* views_widget, QWidget* parent)
    : QMainWindow(parent), frame(main_frame), actions(frame, bindings), views(*views_widget) {
    setWindowTitle(QString::fromStdString(frame.interface.title));
    setAcceptDrops(true);
    resize(1280, 900);
    bindings.Load();
    MakeMiddle();
    MakeMenus();
    MakeWindows();
    actions.AddToolBars(*this);
    actions.Refresh();
    frame.interface.AddListener(*this);
    views.Attach(frame);
    frame.run_compile = [this](const CMainFrame::CompileStep& compile) { return RunCompile(compile); };
    connect(&actions, &CommandActions::Ran, this, &MainWindow::Tick);
    qApp->installEventFilter(this);
    for (int pane = 0; pane < PANE_COUNT; ++pane)
        if (!frame.interface.status[static_cast<size_t>(pane)].empty())
            StatusChanged(pane);
    StartTimers();
    UpdateWelcome();
    views.setFocus();
}

MainWindow::~MainWindow() {
    qApp->removeEventFilter(this);
    frame.interface.RemoveListener(*this);
    frame.run_compile = nullptr;
    frame.show_tracks = nullptr;
    frame.show_terrain = nullptr;
}

void MainWindow::MakeMiddle() {
    auto* middle = new QWidget;
    auto* column = new QVBoxLayout(middle);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    notices = new NoticeBar;
    column->addWidget(notices);
    column->addWidget(&views, 1);
    setCentralWidget(middle);
    status_bar = new StatusBar(this);
    setStatusBar(status_bar);
    connect(notices, &NoticeBar::AllAsked, this,
            [](const QString& text) { GetDesktop().ShowText(text.toStdString(), "Notices"); });
    welcome = new WelcomePanel(&views);
    welcome->hide();
    connect(welcome, &WelcomePanel::OpenAsked, this, [this] { frame.document.OnFileOpen(); });
    connect(welcome, &WelcomePanel::RecentAsked, this,
            [this](const QString& path) { OpenProject(path.toStdString()); });
    connect(welcome, &WelcomePanel::Dismissed, this, [this] {
        welcome_dismissed = true;
        UpdateWelcome();
    });
    watch = new ProjectWatch(this);
    watch->is_busy = [this] { return asking_reload || frame.interface.compilation_active; };
    connect(watch, &ProjectWatch::Changed, this, &MainWindow::OfferReload);
    TitleChanged();
}

void MainWindow::MakeMenus() {
    actions.FillMenuBar(*menuBar());
    connect(&actions, &CommandActions::MenuClosed, this, &MainWindow::LeaveMenuBar, Qt::QueuedConnection);
    QMenu& file = *actions.Menu("File");
    recent_menu = file.addMenu("Recent &projects");
    connect(recent_menu, &QMenu::aboutToShow, this, &MainWindow::FillRecent);
    file.addSeparator();
    file.addAction("E&xit", this, &QWidget::close);
    QMenu& settings = *actions.Menu("Settings");
    settings.addSeparator();
    settings.addAction("&Keys...", this, &MainWindow::ShowKeys);
    MakeHelpMenu();
}

void MainWindow::MakeHelpMenu() {
    QMenu& help = *menuBar()->addMenu("He&lp");
    help.addAction(QString("&All commands...\t") + PALETTE_KEYS, this, &MainWindow::ShowPalette);
    help.addAction("&Keys...", this, &MainWindow::ShowKeys);
    help.addAction("&Manual", this, [this] { ShowManual(this); });
    help.addAction("&First steps", this, [this] {
        welcome_dismissed = false;
        welcome->ShowRecent(frame.document.RecentFiles());
        welcome->show();
        PlaceWelcome();
    });
    help.addSeparator();
    help.addAction("A&bout", this, [this] {
        QMessageBox::about(this, TITLE, "<b>Marrowstead 2000</b><br>An editor and compiler of levels.");
    });
}

// Escape in a menu that the mouse has opened leaves the bar waiting for letters, which then open menus.
void MainWindow::LeaveMenuBar() {
    if (!menu_by_mouse || QApplication::activePopupWidget())
        return;
    menuBar()->setActiveAction(nullptr);
    if (qobject_cast<QMenuBar*>(focusWidget()))
        views.setFocus();
}

void MainWindow::StartTimers() {
    connect(&timer, &QTimer::timeout, this, [this] {
        frame.OnTimer();
        Tick();
    });
    timer.start(TICK);
    connect(&movie_timer, &QTimer::timeout, this, [this] { frame.OnIdle(); });
    movie_timer.setInterval(MOVIE_TICK);
    connect(&recovery_timer, &QTimer::timeout, this, [this] {
        if (QGuiApplication::mouseButtons() == Qt::NoButton) // while a border is dragged there is more to come
            StoreChangedLayout();
        if (recovery && !frame.interface.compilation_active)
            recovery->Tick(GetDesktop().GetTickCount());
    });
}

void MainWindow::UseRecovery(RecoveryFile& file) {
    recovery = &file;
    recovery_timer.start(RECOVERY_TICK);
}

// The mode changes with clicks as well as with commands; nobody tells.
void MainWindow::Tick() {
    if (frame.interface.playing != movie_timer.isActive())
        frame.interface.playing ? movie_timer.start() : movie_timer.stop();
    ShowHints();
    UpdateWelcome();
}

void MainWindow::ShowHints() {
    const std::string mode = ModeName(frame.interface), drag = DragText(frame.interface, views.BoxAtPress());
    const std::string hint = drag.empty() ? HintText(HintFor(frame.interface, HeldNow())) : drag;
    if (mode == shown_mode && hint == shown_hint)
        return;
    if (mode != shown_mode)
        actions.Refresh();
    shown_mode = mode;
    shown_hint = hint;
    status_bar->ShowHint(mode, hint);
}

// News ----------------------------------------------------------------------------------------------------------------

void MainWindow::AddNotice(const QString& sentence) { notices->Add(sentence); }

void MainWindow::StatusChanged(int pane) {
    QMetaObject::invokeMethod(
        this, [this, pane] { status_bar->ShowPane(pane, frame.interface.status[static_cast<size_t>(pane)]); },
        QThread::currentThread() == thread() ? Qt::DirectConnection : Qt::QueuedConnection);
}

void MainWindow::TitleChanged() {
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(
            this, [this] { TitleChanged(); }, Qt::QueuedConnection);
        return;
    }
    const CInterface& interface = frame.interface;
    setWindowTitle(QString::fromStdString(interface.title));
    if (!interface.project_file_has_name)
        watch->Know("");
    else if (!interface.project_file_need_save) // just opened or saved
        watch->Know(RealPath(interface.ProjectFullName()).string());
}

void MainWindow::WorldReplaced() {
    welcome_dismissed = false;
    UpdateWelcome();
}

void MainWindow::UpdateWelcome() {
    const CInterface& interface = frame.interface;
    const bool empty = interface.world && interface.world->GetBrushCount() == 0 &&
                       interface.world->GetEntityCount() == 0 && !interface.project_file_has_name &&
                       !interface.compilation_active && interface.editor_state == ES_IDLE;
    const bool shown = empty && !welcome_dismissed;
    if (shown == welcome->isVisibleTo(&views))
        return;
    if (shown)
        welcome->ShowRecent(frame.document.RecentFiles());
    welcome->setVisible(shown);
    PlaceWelcome();
}

// In the middle of the perspective view, which a new brush does not need.
void MainWindow::PlaceWelcome() {
    if (!welcome->isVisibleTo(&views))
        return;
    welcome->adjustSize();
    QRect place(QPoint(), welcome->size());
    place.moveCenter(views.Rect(VIEW_PERSPECTIVE).isEmpty() ? views.rect().center()
                                                            : views.Rect(VIEW_PERSPECTIVE).center());
    place.moveTopLeft({std::max(place.left(), 0), std::max(place.top(), 0)});
    welcome->setGeometry(place);
    welcome->raise();
}

void MainWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    QMetaObject::invokeMethod(this, &MainWindow::PlaceWelcome, Qt::QueuedConnection);
}

bool MainWindow::event(QEvent* event) {
    if (event->type() == QEvent::PaletteChange)
        actions.Refresh();
    if (event->type() == QEvent::StatusTip) {
        status_bar->ShowHelp(static_cast<QStatusTipEvent*>(event)->tip());
        return true;
    }
    return QMainWindow::event(event);
}

// Projects ------------------------------------------------------------------------------------------------------------

void MainWindow::FillRecent() {
    recent_menu->clear();
    for (const std::string& path : frame.document.RecentFiles()) {
        QString text = QString::fromStdString(path);
        recent_menu->addAction(text.replace("&", "&&"), this, [this, path] { OpenProject(path); });
    }
    if (recent_menu->isEmpty())
        recent_menu->addAction("None yet")->setEnabled(false);
}

void MainWindow::OpenProject(const std::string& path) {
    std::string error;
    if (frame.document.SaveModified() && !frame.document.Open(path, error))
        GetDesktop().MessageBox(error, TITLE);
    actions.Refresh();
}

void MainWindow::OfferReload() {
    CInterface& interface = frame.interface;
    if (asking_reload || interface.compilation_active || !interface.project_file_has_name)
        return;
    asking_reload = true;
    const std::string path = interface.ProjectFullName();
    std::string question = "Another program has changed \"" + interface.project_file_name + "\".\n\nOpen it again?";
    if (interface.HasUnsavedWork())
        question += " What you have changed since the last save is lost then.";
    std::string error;
    if (GetDesktop().MessageBox(question, TITLE, MessageButtons::YesNo) == MessageAnswer::Yes &&
        !frame.document.Open(path, error))
        GetDesktop().MessageBox(error, TITLE);
    asking_reload = false;
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!DroppedProject(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    const QString path = DroppedProject(*event->mimeData());
    if (path.isEmpty())
        return;
    event->acceptProposedAction();
    OpenProject(path.toStdString());
}

CompileOutcome MainWindow::RunCompile(const CMainFrame::CompileStep& compile) {
    views.SetFrozen(true);
    std::unique_ptr<LightPreviewWidget> light;
    if (frame.interface.settings.lighting_method != LIGHTING_NONE && !views.Rect(VIEW_PERSPECTIVE).isEmpty())
        light = std::make_unique<LightPreviewWidget>(frame.interface, views.Rect(VIEW_PERSPECTIVE), &views);
    const CompileOutcome outcome = RunCompileWithProgress(this, frame, compile);
    light.reset();
    views.SetFrozen(false);
    return outcome;
}

// Closing and layout --------------------------------------------------------------------------------------------------

void MainWindow::closeEvent(QCloseEvent* event) {
    FinishTyping();
    if (!frame.OnClose()) {
        event->ignore();
        return;
    }
    StoreLayout();
    event->accept();
    timer.stop();
    movie_timer.stop();
    recovery_timer.stop();
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window != this && window->isVisible() && window->parentWidget())
            window->close();
}

void MainWindow::StoreLayout() {
    if (!frame.interface.store_settings)
        return;
    ::StoreLayout(GEOMETRY, saveGeometry());
    ::StoreLayout(STATE, saveState(LAYOUT_VERSION));
}

void MainWindow::StoreChangedLayout() {
    QByteArray now = saveGeometry() + saveState(LAYOUT_VERSION);
    if (now == known_layout)
        return;
    if (!known_layout.isEmpty()) // else it is as it was restored
        StoreLayout();
    known_layout = std::move(now);
}

void MainWindow::RestoreLayout() {
    if (!restoreGeometry(StoredLayout(GEOMETRY)))
        setWindowState(windowState() | Qt::WindowMaximized);
    restoreState(StoredLayout(STATE), LAYOUT_VERSION);
    frame.interface.console_onscreen = library->isVisibleTo(this);
    frame.interface.Tell(&EditorListener::LibraryWindowChanged);
}

void MainWindow::ShowPalette() {
    actions.Refresh();
    CommandPalette palette(actions, bindings, this);
    palette.move(mapToGlobal(QPoint((width() - palette.width()) / 2, height() / 6)));
    if (palette.exec() == QDialog::Accepted && palette.chosen)
        actions.Run(*palette.chosen);
}

void MainWindow::ShowKeys() {
    KeysDialog dialog(bindings, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    bindings = dialog.bindings;
    if (frame.interface.store_settings && !bindings.Store())
        GetDesktop().Notice("The changed keys cannot be stored with the settings.");
    actions.Refresh();
}
