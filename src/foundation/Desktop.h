// What the program asks of the desktop around it, behind one interface: message boxes, small dialogs, notices, keys,
// the pointer, time. Without a window system a HeadlessDesktop answers boxes from a list and keeps a record of what was
// asked.
#pragma once

#include <cstdint>
#include <cstdio>
#include <deque>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

enum class MessageButtons { Ok, YesNo, YesNoCancel, OkCancel, RetryCancel };
enum class MessageAnswer { Ok, Yes, No, Cancel, Retry };

enum class CursorRole { Arrow, Pan, Extrudable, Wait, Pick, Rotate, Shear, Decal, Terrain };

// Keys whose state is asked for, rather than waited for.
enum class HeldKey { LeftShift, RightShift, Control, Alt, Num0, Num2, Num4, Num6, Num8 };

struct FileQuestion {
    bool for_saving = false;
    std::string title;
    std::string filter;    // such as "Movie files (*.mvi)|*.mvi|All files (*.*)|*.*||"
    std::string folder;    // where the dialog begins
    std::string extension; // added to a name without one
    std::string name;      // offered
};

// A small dialog: named fields, each a line of text, a whole number, a check box or a choice.
struct FormField {
    enum Kind { Text, Number, Flag, Choice };
    std::string label;
    Kind kind = Text;
    std::string value;                // a flag: "1" or "0"
    int least = 0, most = 0;          // of a number; both 0: any
    size_t max_length = 0;            // of a text; 0: any
    std::vector<std::string> choices; // of a choice
};
struct FormQuestion {
    std::string title;
    std::vector<FormField> fields;
};

class Desktop {
public:
    virtual ~Desktop() = default;

    virtual MessageAnswer MessageBox(const std::string& text, const std::string& title,
                                     MessageButtons buttons = MessageButtons::Ok) = 0;
    // One sentence that needs no answer, such as a missing file. It carries no line end.
    virtual void Notice(const std::string& sentence) = 0;
    virtual uint32_t GetTickCount() const; // milliseconds of a clock that never runs back

    // Dialogs: nothing, or false, after Cancel. Without a window system they are cancelled.
    virtual std::optional<std::string> AskFile(const FileQuestion&) { return std::nullopt; } // the chosen path
    virtual std::optional<uint32_t> AskColor(uint32_t /*rgb*/) { return std::nullopt; }      // 0x00RRGGBB
    virtual bool AskForm(FormQuestion&) { return false; } // the answers in the fields, numbers within their range
    virtual void ShowText(const std::string& /*text*/, const std::string& /*title*/) {} // a box to read and copy from

    virtual bool IsKeyDown(HeldKey) const { return false; } // now
    bool IsShiftDown() const { return IsKeyDown(HeldKey::LeftShift) || IsKeyDown(HeldKey::RightShift); }
    virtual void SetCursor(CursorRole) {}
    virtual void CaptureMouse(bool /*captured*/) {}
    // Starts a program and waits for its end. False with a sentence when it cannot be started.
    virtual bool RunProgram(const std::string& /*program*/, const std::string& /*arguments*/, std::string& error) {
        error = "programs cannot be started here";
        return false;
    }
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
