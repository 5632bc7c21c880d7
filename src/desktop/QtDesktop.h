// The desktop as windows. Questions that come from other threads are asked by the thread of the windows, and wait there
// for their answer.
#pragma once

#include <QObject>
#include <functional>
#include <set>

#include "foundation/Desktop.h"

class QWidget;

class QtDesktop : public QObject, public Desktop {
    Q_OBJECT
public:
    QtDesktop(); // there must be a QApplication
    ~QtDesktop() override;

    QWidget* window = nullptr;                       // stands behind boxes and dialogs
    QWidget* views = nullptr;                        // has the pointer
    std::function<void(const QString&)> show_notice; // standard error without one

    MessageAnswer MessageBox(const std::string& text, const std::string& title,
                             MessageButtons buttons = MessageButtons::Ok) override;
    void Notice(const std::string& sentence) override;
    std::optional<std::string> AskFile(const FileQuestion& question) override;
    std::optional<uint32_t> AskColor(uint32_t rgb) override;
    bool AskForm(FormQuestion& question) override;
    void ShowText(const std::string& text, const std::string& title) override;
    bool IsKeyDown(HeldKey key) const override;
    void SetCursor(CursorRole role) override;
    bool RunProgram(const std::string& program, const std::string& arguments, std::string& error) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override; // follows the keys that are down

private:
    template <class Answer>
    auto InWindowThread(const Answer& answer) const;

    std::set<HeldKey> held;
};

// "Movie files (*.mvi)|*.mvi|All files (*.*)|*.*||" in the toolkit's spelling, patterns in either case.
QString QtFilter(const std::string& filter);
