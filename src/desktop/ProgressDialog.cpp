#include "desktop/ProgressDialog.h"

#include <atomic>
#include <thread>

#include <QApplication>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QTextBlock>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "desktop/LazyRefresh.h"
#include "desktop/ToolWindows.h"
#include "editor/CompileReport.h"

namespace {

constexpr int NEWS_INTERVAL = 50; // milliseconds

QString TimeText(uint32_t milliseconds) {
    constexpr double A_SECOND = 1000.0;
    return QObject::tr("%1 s").arg(milliseconds / A_SECOND, 0, 'f', 1);
}

bool TellsProblem(const std::string& line) {
    return line.find("!!!!") != std::string::npos || line.find("rror") != std::string::npos ||
           line.find("issing") != std::string::npos;
}

// A red that can be read on the palette's ground.
QColor ProblemColor(const QPalette& palette) {
    constexpr int HUE = 0, SATURATION = 200, ON_DARK = 165, ON_LIGHT = 95;
    return QColor::fromHsl(HUE, SATURATION, palette.color(QPalette::Base).lightness() < 128 ? ON_DARK : ON_LIGHT);
}

} // namespace

// --- Across the threads

void WindowProgress::AddText(const std::string& text) {
    CProgressText::AddText(text);
    const std::lock_guard lock(mutex);
    news.texts.push_back({text, GetDesktop().GetTickCount()});
}

void WindowProgress::InitProgress(int n) {
    const std::lock_guard lock(mutex);
    news.range = n;
    news.position = 0;
}

void WindowProgress::IncrementProgress(int n) {
    const std::lock_guard lock(mutex);
    news.position += n;
}

WindowProgress::News WindowProgress::Fetch() {
    const std::lock_guard lock(mutex);
    News fetched = news;
    news.texts.clear();
    return fetched;
}

// --- The window

ProgressDialog::ProgressDialog(CMainFrame& main_frame, QWidget* parent)
    : QDialog(parent), frame(main_frame), stages(new QTreeWidget), bar(new QProgressBar), log(new QPlainTextEdit),
      summary(new QLabel), timer(new QTimer(this)) {
    setWindowTitle(tr("Map Compilation"));
    stages->setHeaderLabels({tr("Stage"), tr("Done"), tr("Time")});
    stages->setRootIsDecorated(false);
    stages->setSelectionMode(QAbstractItemView::NoSelection);
    stages->header()->setStretchLastSection(false);
    stages->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    stages->setToolTip(tr("The stages of the compile and the time that each took"));
    log->setReadOnly(true);
    log->setUndoRedoEnabled(false);
    log->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    log->setToolTip(tr("What the compile tells; problems stand in colour"));
    bar->setToolTip(tr("How much of the stage is done"));
    stop = new QPushButton(tr("&Stop compilation"));
    run_game = new QPushButton(tr("&Run game"));
    show_problems = new QPushButton(tr("Show &problems"));
    close_button = new QPushButton(tr("Close"));
    stop->setToolTip(tr("Ends the compile; the compiled file stays as it was"));
    run_game->setToolTip(tr("Starts the game with the compiled level"));
    show_problems->setToolTip(tr("Lists what was found wrong; a double click there leads to the object"));
    close_button->setEnabled(false);
    run_game->setVisible(false);
    show_problems->setVisible(false);
    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(stages);
    splitter->addWidget(log);
    splitter->setStretchFactor(1, 2);
    auto* row = new QHBoxLayout;
    row->addWidget(summary, 1);
    for (QPushButton* button : {stop, run_game, show_problems, close_button})
        row->addWidget(button);
    auto* column = new QVBoxLayout(this);
    column->addWidget(splitter);
    column->addWidget(bar);
    column->addLayout(row);
    resize(620, 520);
    connect(stop, &QPushButton::clicked, this, [this] { Stop(); });
    connect(close_button, &QPushButton::clicked, this, &QWidget::close);
    connect(show_problems, &QPushButton::clicked, this, [this] { ProblemsWindow::Open(frame, parentWidget()); });
    connect(run_game, &QPushButton::clicked, this, [this] { frame.OnGamemode(); });
    connect(timer, &QTimer::timeout, this, [this] { ShowNews(); });
}

CompileOutcome ProgressDialog::Run(const CMainFrame::CompileStep& compile) {
    const LazyRefresh::Pause pause;
    running = true;
    setWindowModality(Qt::ApplicationModal);
    show();
    timer->start(NEWS_INTERVAL);
    CompileOutcome outcome = CompileOutcome::NotWritten;
    std::atomic<bool> done = false;
    std::thread worker([&] {
        outcome = compile(progress);
        done = true;
        QMetaObject::invokeMethod(
            this, [] {}, Qt::QueuedConnection); // wakes the loop
    });
    while (!done)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    worker.join();
    running = false;
    timer->stop();
    ShowNews();
    EndStage(GetDesktop().GetTickCount());
    ShowOutcome(outcome);
    hide(); // a shown window cannot let go of the others
    setWindowModality(Qt::NonModal);
    if (progress.GetText().empty()) // a box has told why nothing began
        close();
    else
        show();
    return outcome;
}

void ProgressDialog::Stop() {
    progress.StopCompilation();
    stop->setEnabled(false);
    stop->setText(tr("Stopping..."));
}

void ProgressDialog::reject() {
    if (running)
        Stop();
    else
        close();
}

void ProgressDialog::closeEvent(QCloseEvent* event) {
    if (running) {
        Stop();
        event->ignore();
        return;
    }
    event->accept();
}

void ProgressDialog::ShowNews() {
    const WindowProgress::News news = progress.Fetch();
    for (const WindowProgress::Text& text : news.texts) {
        const std::string name = AnnouncedStage(text.text);
        if (!name.empty())
            StartStage(name, text.tick);
        AddLog(text.text);
    }
    for (QProgressBar* shown : {bar, stage_bar})
        if (shown && news.range > 0) {
            shown->setRange(0, news.range);
            shown->setValue(std::min(news.position, news.range));
        }
    if (stage && running)
        stage->setText(2, TimeText(GetDesktop().GetTickCount() - stage_start));
}

void ProgressDialog::StartStage(const std::string& name, uint32_t tick) {
    EndStage(tick);
    stage_start = tick;
    stage = new QTreeWidgetItem(stages, {QString::fromStdString(name), QString(), TimeText(0)});
    stage_bar = new QProgressBar;
    stage_bar->setRange(0, 0);
    stage_bar->setTextVisible(false);
    stage_bar->setMaximumHeight(fontMetrics().height());
    stages->setItemWidget(stage, 1, stage_bar);
    stages->scrollToItem(stage);
}

void ProgressDialog::EndStage(uint32_t tick) {
    if (!stage)
        return;
    stage_bar->setRange(0, 1);
    stage_bar->setValue(1);
    stage->setText(2, TimeText(tick - stage_start));
    stage = nullptr;
    stage_bar = nullptr;
}

void ProgressDialog::AddLog(const std::string& text) {
    const bool at_end = log->verticalScrollBar()->value() == log->verticalScrollBar()->maximum();
    QTextCursor cursor(log->document());
    cursor.movePosition(QTextCursor::End);
    QTextCharFormat format;
    if (TellsProblem(text))
        format.setForeground(ProblemColor(palette()));
    QString shown = QString::fromStdString(text);
    shown.remove('\r');
    cursor.insertText(shown, format);
    if (at_end) // a reader who has scrolled back is left alone
        log->verticalScrollBar()->setValue(log->verticalScrollBar()->maximum());
}

void ProgressDialog::ShowOutcome(CompileOutcome outcome) {
    const auto text = [&]() -> QString {
        switch (outcome) {
        case CompileOutcome::Written:
            return tr("Written to %1").arg(QString::fromStdString(frame.interface.TargetFile()));
        case CompileOutcome::Problems:
            return tr("The level has problems; nothing was written");
        case CompileOutcome::Stopped:
            return tr("Stopped; nothing was written");
        case CompileOutcome::NotWritten:
        case CompileOutcome::BadInput:
            break;
        }
        return tr("Nothing was written");
    };
    summary->setText(text());
    bar->setRange(0, 1);
    bar->setValue(outcome == CompileOutcome::Written ? 1 : 0);
    stop->setVisible(false);
    close_button->setEnabled(true);
    run_game->setVisible(outcome == CompileOutcome::Written);
    show_problems->setVisible(outcome == CompileOutcome::Problems);
    close_button->setDefault(true);
    close_button->setFocus();
    if (outcome == CompileOutcome::Written)
        QApplication::beep();
}

CompileOutcome RunCompileWithProgress(QWidget* parent, CMainFrame& frame, const CMainFrame::CompileStep& compile) {
    for (QWidget* window : QApplication::topLevelWidgets()) // of the run before, whose findings go now
        if (dynamic_cast<ProgressDialog*>(window) || dynamic_cast<ProblemsWindow*>(window))
            window->close();
    auto* dialog = new ProgressDialog(frame, parent); // deletes itself
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    const CompileOutcome outcome = dialog->Run(compile);
    if (outcome == CompileOutcome::Problems)
        ProblemsWindow::Open(frame, parent);
    return outcome;
}
