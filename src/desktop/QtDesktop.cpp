#include "desktop/QtDesktop.h"

#include <QApplication>
#include <QColorDialog>
#include <QCursor>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMessageBox>
#include <QProcess>
#include <QThread>
#include <cstdio>
#include <filesystem>

#include "commands/Accelerator.h"
#include "desktop/CommandIcons.h"
#include "desktop/FormDialog.h"
#include "desktop/KeyNames.h"
#include "desktop/TextDialog.h"
#include "foundation/Paths.h"

namespace {

constexpr int POINTER_SIDE = 24; // pixels of the screen's scale

struct ButtonAnswer {
    QMessageBox::StandardButton button;
    MessageAnswer answer;
};
constexpr ButtonAnswer ANSWERS[] = {{QMessageBox::Ok, MessageAnswer::Ok},
                                    {QMessageBox::Yes, MessageAnswer::Yes},
                                    {QMessageBox::No, MessageAnswer::No},
                                    {QMessageBox::Cancel, MessageAnswer::Cancel},
                                    {QMessageBox::Retry, MessageAnswer::Retry}};

QMessageBox::StandardButtons ButtonsOf(MessageButtons buttons) {
    switch (buttons) {
    case MessageButtons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case MessageButtons::YesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case MessageButtons::OkCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case MessageButtons::RetryCancel:
        return QMessageBox::Retry | QMessageBox::Cancel;
    case MessageButtons::Ok:
        break;
    }
    return QMessageBox::Ok;
}

// The box that Escape closes gives the answer that does the least.
MessageAnswer AnswerOf(int button, MessageButtons buttons) {
    for (const ButtonAnswer& known : ANSWERS)
        if (known.button == button)
            return known.answer;
    return buttons == MessageButtons::Ok      ? MessageAnswer::Ok
           : buttons == MessageButtons::YesNo ? MessageAnswer::No
                                              : MessageAnswer::Cancel;
}

QCursor CursorOf(CursorRole role, qreal ratio) {
    const auto picture = [ratio](const char* command, int x, int y) {
        return QCursor(PointerPicture(command, POINTER_SIDE, ratio), x, y);
    };
    constexpr int MIDDLE = POINTER_SIDE / 2;
    switch (role) {
    case CursorRole::Pan:
        return Qt::ClosedHandCursor;
    case CursorRole::Extrudable:
    case CursorRole::Terrain:
        return Qt::CrossCursor;
    case CursorRole::Wait:
        return Qt::WaitCursor;
    case CursorRole::Pick:
        return picture("OnPickTexture", 3, 21);
    case CursorRole::Rotate:
        return picture("OnRotate", MIDDLE, MIDDLE);
    case CursorRole::Shear:
        return picture("OnSheering", MIDDLE, MIDDLE);
    case CursorRole::Decal:
        return picture("OnDecals", MIDDLE, MIDDLE);
    case CursorRole::Arrow:
        break;
    }
    return Qt::ArrowCursor;
}

// Dialogs may change the current folder, on which all data paths stand.
class KeptFolder {
public:
    KeptFolder() : folder(std::filesystem::current_path(failure)) {}
    ~KeptFolder() { std::filesystem::current_path(folder, failure); }
    KeptFolder(const KeptFolder&) = delete;
    KeptFolder& operator=(const KeptFolder&) = delete;

private:
    std::error_code failure;
    std::filesystem::path folder;
};

// A program of the data folder is found there, others by the search path. The command may carry arguments of its own.
QStringList ProgramAndArguments(const std::string& program) {
    const std::filesystem::path in_folder = RealPath(program);
    std::error_code failure;
    if (std::filesystem::is_regular_file(in_folder, failure))
        return {QString::fromStdString(std::filesystem::absolute(in_folder, failure).string())};
    return QProcess::splitCommand(QString::fromStdString(program));
}

} // namespace

template <class Answer>
auto QtDesktop::InWindowThread(const Answer& answer) const {
    using Result = decltype(answer());
    if (QThread::currentThread() == thread())
        return answer();
    auto* self = const_cast<QtDesktop*>(this);
    if constexpr (std::is_void_v<Result>)
        QMetaObject::invokeMethod(
            self, [&] { answer(); }, Qt::BlockingQueuedConnection);
    else {
        Result result{};
        QMetaObject::invokeMethod(
            self, [&] { result = answer(); }, Qt::BlockingQueuedConnection);
        return result;
    }
}

QtDesktop::QtDesktop() { qApp->installEventFilter(this); }

QtDesktop::~QtDesktop() {
    if (&GetDesktop() == this)
        SetDesktop(nullptr);
}

MessageAnswer QtDesktop::MessageBox(const std::string& text, const std::string& title, MessageButtons buttons) {
    return InWindowThread([&] {
        QMessageBox box(QMessageBox::NoIcon, QString::fromStdString(title), QString::fromStdString(text),
                        ButtonsOf(buttons),
                        QApplication::activeModalWidget() ? QApplication::activeModalWidget() : window);
        box.setTextFormat(Qt::PlainText);
        box.setTextInteractionFlags(Qt::TextSelectableByMouse);
        box.setIcon(buttons == MessageButtons::Ok ? QMessageBox::Information : QMessageBox::Question);
        return AnswerOf(box.exec(), buttons);
    });
}

void QtDesktop::Notice(const std::string& sentence) {
    const auto show = [this, sentence] {
        if (show_notice)
            show_notice(QString::fromStdString(sentence));
        else
            std::fprintf(stderr, "%s\n", sentence.c_str());
    };
    if (QThread::currentThread() == thread())
        show();
    else
        QMetaObject::invokeMethod(this, show, Qt::QueuedConnection);
}

QString QtFilter(const std::string& filter) {
    const QStringList parts = QString::fromStdString(filter).split('|', Qt::SkipEmptyParts);
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QStringList patterns;
        for (QString pattern : parts[i + 1].split(';', Qt::SkipEmptyParts)) {
            pattern = pattern == "*.*" ? "*" : pattern;
            patterns << pattern;
            if (pattern.toUpper() != pattern)
                patterns << pattern.toUpper();
        }
        const QString name = parts[i].left(parts[i].indexOf('(')).trimmed();
        filters << name + " (" + patterns.join(' ') + ")";
    }
    return filters.join(";;");
}

std::optional<std::string> QtDesktop::AskFile(const FileQuestion& question) {
    return InWindowThread([&]() -> std::optional<std::string> {
        const KeptFolder kept;
        QString start = QString::fromStdString(RealPath(question.folder).string());
        if (!QFileInfo(start).isDir())
            start.clear();
        QFileDialog dialog(window, QString::fromStdString(question.title), start, QtFilter(question.filter));
        dialog.setAcceptMode(question.for_saving ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
        dialog.setFileMode(question.for_saving ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
        QString extension = QString::fromStdString(question.extension);
        dialog.setDefaultSuffix(extension.startsWith('.') ? extension.mid(1) : extension);
        if (!question.name.empty())
            dialog.selectFile(QString::fromStdString(question.name));
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
            return std::nullopt;
        return dialog.selectedFiles().front().toStdString();
    });
}

std::optional<uint32_t> QtDesktop::AskColor(uint32_t rgb) {
    return InWindowThread([&]() -> std::optional<uint32_t> {
        const QColor color = QColorDialog::getColor(QColor::fromRgb(rgb), window);
        return color.isValid() ? std::optional<uint32_t>(color.rgb() & 0xFFFFFF) : std::nullopt;
    });
}

bool QtDesktop::AskForm(FormQuestion& question) {
    return InWindowThread([&] { return RunFormDialog(window, question); });
}

void QtDesktop::ShowText(const std::string& text, const std::string& title) {
    InWindowThread([&] { RunTextDialog(window, text, title); });
}

// Keys and pointer ----------------------------------------------------------------------------------------------------

bool QtDesktop::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        std::optional<HeldKey> known;
        if (key.key() == Qt::Key_Shift)
            known = IsRightShift(key) ? HeldKey::RightShift : HeldKey::LeftShift;
        else if (const char* name = KeypadName(key))
            known = HeldKeyOf(name);
        if (known && event->type() == QEvent::KeyPress)
            held.insert(*known);
        else if (known && !key.isAutoRepeat())
            held.erase(*known);
    } else if (event->type() == QEvent::ApplicationStateChange)
        held.clear(); // their releases went to another program
    return QObject::eventFilter(watched, event);
}

bool QtDesktop::IsKeyDown(HeldKey key) const {
    const Qt::KeyboardModifiers modifiers = QGuiApplication::keyboardModifiers();
    switch (key) {
    case HeldKey::Control:
        return modifiers & Qt::ControlModifier;
    case HeldKey::Alt:
        return modifiers & Qt::AltModifier;
    case HeldKey::RightShift:
        return modifiers & Qt::ShiftModifier && held.count(key) != 0;
    case HeldKey::LeftShift: // the one that is meant when none was seen going down
        return modifiers & Qt::ShiftModifier && (held.count(key) != 0 || held.count(HeldKey::RightShift) == 0);
    default:
        return held.count(key) != 0;
    }
}

void QtDesktop::SetCursor(CursorRole role) {
    InWindowThread([&] {
        if (views)
            views->setCursor(CursorOf(role, views->devicePixelRatioF()));
    });
}

// The window stays alive behind the program, and comes back when it ends.
bool QtDesktop::RunProgram(const std::string& program, const std::string& arguments, std::string& error) {
    QStringList parts = ProgramAndArguments(program);
    if (parts.isEmpty()) {
        error = "no program is named";
        return false;
    }
    const QString name = parts.takeFirst();
    if (const QString argument = QString::fromStdString(arguments).trimmed(); !argument.isEmpty())
        parts << argument;
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    const bool was_maximised = window && window->isMaximized();
    process.start(name, parts);
    if (!process.waitForStarted()) {
        error = process.errorString().remove("execvp: ").toStdString(); // the call that failed tells the user nothing
        return false;
    }
    if (window)
        window->showMinimized();
    QEventLoop wait;
    connect(&process, &QProcess::finished, &wait, &QEventLoop::quit);
    if (process.state() != QProcess::NotRunning)
        wait.exec(QEventLoop::ExcludeUserInputEvents);
    if (window)
        was_maximised ? window->showMaximized() : window->showNormal();
    return true;
}
