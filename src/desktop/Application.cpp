#include "desktop/Application.h"

#include <QApplication>
#include <QTimer>
#include <clocale>
#include <cstdio>
#include <filesystem>

#include "commands/ScriptApplication.h"
#include "desktop/GlViewsWidget.h"
#include "desktop/MainWindow.h"
#include "desktop/QtDesktop.h"
#include "desktop/SplashWindow.h"
#include "desktop/Theme.h"
#include "editor/StartSteps.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"
#include "render/Frame.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* TITLE = "Marrowstead 2000";

int Fail(const std::string& sentence) {
    std::fprintf(stderr, "%s\n", sentence.c_str());
    return EXIT_BAD_INPUT;
}

// By OpenGL where it is there and wanted, else by the processor. Null with a sentence when no mode can be set.
std::unique_ptr<ViewsPainter> MakePainter(bool software, std::string& error) {
    if (!software) {
        auto painter = std::make_unique<GlViewsWidget>();
        if (GlDevice* device = painter->MakeDevice()) {
            if (OpenRenderer(1, 1, {device}))
                return painter;
            crRelease();
        }
        GetDesktop().Notice("The views are drawn by the processor, as there is no OpenGL 3.3.");
    }
    if (OpenRenderer(1, 1))
        return std::make_unique<SoftViewsWidget>();
    error = "the renderer could not be started";
    return nullptr;
}

// The project as it is found from the folder where the program was started; else from the data folder, or as a path
// of the data. Whole, so that the list of recent files has it once.
std::string ProjectPath(const fs::path& start, const std::string& project) {
    std::error_code failure;
    for (const fs::path& folder : {start, fs::current_path(failure)})
        if (const fs::path found = folder / project; fs::exists(found, failure))
            return found.lexically_normal().string();
    return project;
}

void OpenFirst(MainWindow& window, RecoveryFile& recovery, const std::string& project) {
    CMarrowstead2Doc& document = window.frame.document;
    const uint32_t before = window.frame.interface.changes;
    recovery.Offer(document);
    const bool recovered = window.frame.interface.changes != before;
    const bool reload = window.frame.interface.settings.reload_last_project && !document.RecentFiles().empty();
    const std::string path = !project.empty() ? project : reload ? document.RecentFiles().front() : std::string();
    std::string error;
    if (!recovered && !path.empty()) {
        TellStart(StartStep::Project);
        if (!document.Open(path, error))
            GetDesktop().MessageBox(error, TITLE);
    }
    window.actions.Refresh();
}

// The level and the pages go after the window, and need the device for that.
struct LastUse {
    explicit LastUse(ViewsPainter& views_painter) : painter(views_painter) {}
    ~LastUse() { painter.MakeCurrent(); }
    LastUse(const LastUse&) = delete;
    LastUse& operator=(const LastUse&) = delete;
    ViewsPainter& painter;
};

// Else a new user sees empty pages and no reason.
void TellWithoutData(MainWindow& window) {
    std::error_code failure;
    if (!fs::is_directory(RealPath("Marrowstead"), failure))
        window.AddNotice(
            QString("\"%1\" is no game data root: it has no folder \"Marrowstead\". Start with --data DIR.")
                .arg(QString::fromStdString(fs::current_path(failure).string())));
}

// What is found wrong before the window is there is shown in it, and written for who has started it from a terminal.
void CollectNotices(QtDesktop& desktop, QStringList& notices) {
    desktop.show_notice = [&notices](const QString& sentence) {
        std::fprintf(stderr, "%s\n", qPrintable(sentence));
        notices << sentence;
    };
}

int RunWithRenderer(const EditorOptions& options, const fs::path& start, ViewsPainter& painter, QtDesktop& desktop,
                    const QStringList& early_notices) {
    CInterface interface;
    interface.threads = options.threads;
    std::string error;
    interface.UseWindowDefaults();
    for (const std::string& assignment : options.overrides)
        if (!interface.OverrideSetting(assignment, error))
            return Fail(error);
    TellStart(StartStep::Libraries);
    CMarrowstead2App::MountLibraries();
    interface.Init();
    interface.InitEditor();
    TellStart(StartStep::Pages);
    LibraryPages pages(interface);
    CMainFrame frame(interface, pages);
    RecoveryFile recovery(interface);
    frame.recovery = &recovery;
    const LastUse last_use(painter);

    TellStart(StartStep::Window);
    auto* views = new ViewsWidget(painter); // the window's, from here on
    MainWindow window(frame, views);
    desktop.window = &window;
    desktop.views = views;
    desktop.show_notice = [&window](const QString& sentence) { window.AddNotice(sentence); };
    for (const QString& sentence : early_notices)
        window.AddNotice(sentence);
    TellWithoutData(window);
    window.UseRecovery(recovery);
    window.RestoreLayout();
    window.show();
    const std::string project = options.project.empty() ? std::string() : ProjectPath(start, options.project);
    QTimer::singleShot(0, &window, [&] { OpenFirst(window, recovery, project); });
    QApplication::exec();
    desktop.window = desktop.views = nullptr;
    desktop.show_notice = nullptr;
    frame.recovery = nullptr;
    painter.Surface().setParent(nullptr); // it outlives its window
    return EXIT_WRITTEN;
}

} // namespace

ExitStatus RunEditor(int& argc, char** argv, const EditorOptions& options) {
    std::error_code failure;
    const fs::path start = fs::current_path(failure);
    QApplication::setAttribute(Qt::AA_ShareOpenGLContexts); // the views' context lives through a change of its window
    QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C"); // numbers in files have a point, whatever the user's language
    QApplication::setApplicationName("marrowstead2000");
    QGuiApplication::setDesktopFileName("marrowstead2000");
    if (!options.data_folder.empty()) {
        fs::current_path(options.data_folder, failure);
        if (failure)
            return static_cast<ExitStatus>(Fail(Format("the data folder \"%s\" cannot be opened: %s",
                                                       options.data_folder.c_str(), failure.message().c_str())));
    }
    Theme theme;
    theme.AskDesktop();
    SplashWindow splash;
    splash.show();
    SetStartWatcher([&splash](StartStep step) {
        splash.Tell(StartStepText(step), static_cast<double>(step) / static_cast<double>(StartStep::Count));
    });
    QtDesktop desktop;
    SetDesktop(&desktop);
    QStringList early_notices;
    CollectNotices(desktop, early_notices);
    std::string error;
    TellStart(StartStep::Drawing);
    std::unique_ptr<ViewsPainter> painter = MakePainter(options.software_device, error);
    const int status = painter ? RunWithRenderer(options, start, *painter, desktop, early_notices) : Fail(error);
    crRelease();
    painter.reset();
    SetDesktop(nullptr);
    SetStartWatcher(nullptr);
    return static_cast<ExitStatus>(status);
}
