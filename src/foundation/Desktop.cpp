#include "foundation/Desktop.h"

#include <atomic>
#include <chrono>

namespace {

HeadlessDesktop& SilentDesktop() {
    static HeadlessDesktop silent;
    return silent;
}

std::atomic<Desktop*> current_desktop{nullptr};
std::mutex notices_mutex;
std::set<std::string> told_notices;

} // namespace

uint32_t Desktop::GetTickCount() const {
    const auto since_start = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(since_start).count());
}

MessageAnswer HeadlessDesktop::MessageBox(const std::string& text, const std::string& title, MessageButtons buttons) {
    const std::lock_guard lock(mutex);
    MessageAnswer answer = buttons == MessageButtons::Ok || buttons == MessageButtons::OkCancel ? MessageAnswer::Ok
                           : buttons == MessageButtons::RetryCancel                             ? MessageAnswer::Retry
                                                                                                : MessageAnswer::Yes;
    if (!answers.empty()) {
        answer = answers.front();
        answers.pop_front();
    }
    boxes.push_back({title, text, answer});
    WriteLine(title + ": " + text);
    return answer;
}

void HeadlessDesktop::Notice(const std::string& sentence) {
    const std::lock_guard lock(mutex);
    notices.push_back(sentence);
    WriteLine(sentence);
}

void HeadlessDesktop::WriteLine(const std::string& line) {
    if (!stream)
        return;
    std::fprintf(stream, "%s\n", line.c_str());
    std::fflush(stream);
}

Desktop& GetDesktop() {
    Desktop* desktop = current_desktop;
    return desktop ? *desktop : SilentDesktop();
}

void SetDesktop(Desktop* desktop) { current_desktop = desktop; }

void NoticeOnce(const std::string& sentence) {
    {
        const std::lock_guard lock(notices_mutex);
        if (!told_notices.insert(sentence).second)
            return;
    }
    GetDesktop().Notice(sentence);
}

void ForgetNotices() {
    const std::lock_guard lock(notices_mutex);
    told_notices.clear();
}
