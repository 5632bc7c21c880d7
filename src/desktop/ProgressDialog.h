// The compile as the user sees it: its stages with bars and times, its text with problems in colour, and a button that
// stops it. The work itself runs on a thread of its own.
#pragma once

#include <QDialog>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "commands/MainFrame.h"

class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QTimer;
class QTreeWidget;
class QTreeWidgetItem;

// Takes the news of the compile on its thread; the window fetches them.
class WindowProgress : public CProgressText {
public:
    // What has come since the last look. A text with the time at which it came.
    struct Text {
        std::string text;
        uint32_t tick;
    };
    struct News {
        std::vector<Text> texts;
        int range = 0, position = 0; // of the bar
    };

    void AddText(const std::string& text) override;
    void InitProgress(int n) override;
    void IncrementProgress(int n) override;
    News Fetch();

private:
    std::mutex mutex;
    News news;
};

class ProgressDialog : public QDialog {
public:
    ProgressDialog(CMainFrame& main_frame, QWidget* parent);
    // Runs it, with the event loop alive. The window stays, and no longer keeps the user from others.
    CompileOutcome Run(const CMainFrame::CompileStep& compile);
    void Stop();

    void reject() override; // Escape stops a running compile, and closes the window after it

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void ShowNews();
    void AddLog(const std::string& text);
    void StartStage(const std::string& name, uint32_t tick);
    void EndStage(uint32_t tick);
    void ShowOutcome(CompileOutcome outcome);

    CMainFrame& frame;
    WindowProgress progress;
    bool running = false;
    QTreeWidget* stages;
    QTreeWidgetItem* stage = nullptr; // that runs
    QProgressBar *stage_bar = nullptr, *bar;
    uint32_t stage_start = 0;
    QPlainTextEdit* log;
    QLabel* summary;
    QPushButton *stop, *run_game, *show_problems, *close_button;
    QTimer* timer;
};

// For CMainFrame::run_compile. Afterwards the window of problems opens, if there are any.
CompileOutcome RunCompileWithProgress(QWidget* parent, CMainFrame& frame, const CMainFrame::CompileStep& compile);
