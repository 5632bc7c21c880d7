// The desktop of a scripted run: dialogs are answered from a list of words, and all that was shown is kept.
#pragma once

#include <deque>
#include <set>
#include <string>
#include <vector>

#include "foundation/Desktop.h"

class ScriptDesktop : public Desktop {
public:
    // A box or dialog, with what was answered: the word, a text, or "cancel".
    struct Message {
        std::string title, text, answer;
    };

    // A box without a word takes its safe answer: cancel, else no, else ok.
    MessageAnswer MessageBox(const std::string& text, const std::string& title,
                             MessageButtons buttons = MessageButtons::Ok) override;
    void Notice(const std::string& sentence) override; // to standard error
    std::optional<std::string> AskFile(const FileQuestion& question) override;
    // "r,g,b"
    std::optional<uint32_t> AskColor(uint32_t rgb) override;
    // A form of one field takes the word; one of several "LABEL=VALUE;LABEL=VALUE". "ok" confirms it as it stands.
    bool AskForm(FormQuestion& question) override;
    void ShowText(const std::string& text, const std::string& title) override;

    bool IsKeyDown(HeldKey key) const override { return held.count(key) != 0; }
    bool RunProgram(const std::string& program, const std::string& arguments, std::string& error) override;

    std::deque<std::string> answers;
    std::vector<Message> messages;
    std::set<HeldKey> held; // keys that are down during an event

private:
    std::string TakeAnswer(); // empty: none is queued
    void Record(const std::string& title, const std::string& text, const std::string& answer);
};
