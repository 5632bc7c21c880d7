// What the program asks of the desktop around it, behind one interface: message boxes, notices, time.
// Without a window system a HeadlessDesktop answers from a list and keeps a record of what was asked.
#pragma once

#include <cstdint>
#include <cstdio>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <vector>

enum class MessageButtons { Ok, YesNo, YesNoCancel };
enum class MessageAnswer { Ok, Yes, No, Cancel };

class Desktop {
public:
    virtual ~Desktop() = default;

    virtual MessageAnswer MessageBox(const std::string& text, const std::string& title,
                                     MessageButtons buttons = MessageButtons::Ok) = 0;
    // One sentence that needs no answer, such as a missing file. It carries no line end.
    virtual void Notice(const std::string& sentence) = 0;
    virtual uint32_t GetTickCount() const; // milliseconds of a clock that never runs back
};

// Answers boxes from a list (Ok, Yes when the list is empty) and writes boxes and notices to a stream, if one is given.
class HeadlessDesktop : public Desktop {
public:
    struct Box {
        std::string title, text;
        MessageAnswer answer;
    };
    explicit HeadlessDesktop(std::FILE* output = nullptr) : stream(output) {}

    MessageAnswer MessageBox(const std::string& text, const std::string& title,
                             MessageButtons buttons = MessageButtons::Ok) override;
    void Notice(const std::string& sentence) override;

    std::deque<MessageAnswer> answers; // taken from the front
    std::vector<Box> boxes;            // what was asked, in order
    std::vector<std::string> notices;

private:
    void WriteLine(const std::string& line);

    std::FILE* stream;
    std::mutex mutex; // notices may come from any thread
};

// The desktop of this run; a silent HeadlessDesktop until SetDesktop. SetDesktop(nullptr) goes back to it.
Desktop& GetDesktop();
void SetDesktop(Desktop* desktop);

// GetDesktop().Notice, once for each different sentence until ForgetNotices.
void NoticeOnce(const std::string& sentence);
void ForgetNotices();
