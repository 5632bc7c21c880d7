#include "commands/ScriptDesktop.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "foundation/Strings.h"

namespace {

constexpr const char* CANCEL = "cancel";

struct AnswerWord {
    const char* word;
    MessageAnswer answer;
};
constexpr AnswerWord WORDS[] = {{"ok", MessageAnswer::Ok},
                                {"yes", MessageAnswer::Yes},
                                {"no", MessageAnswer::No},
                                {CANCEL, MessageAnswer::Cancel},
                                {"retry", MessageAnswer::Retry}};

const char* WordOf(MessageAnswer answer) {
    return std::find_if(std::begin(WORDS), std::end(WORDS),
                        [answer](const AnswerWord& w) { return w.answer == answer; })
        ->word;
}

std::vector<MessageAnswer> AnswersOf(MessageButtons buttons) { // the safe one first
    switch (buttons) {
    case MessageButtons::YesNo:
        return {MessageAnswer::No, MessageAnswer::Yes};
    case MessageButtons::YesNoCancel:
        return {MessageAnswer::Cancel, MessageAnswer::No, MessageAnswer::Yes};
    case MessageButtons::OkCancel:
        return {MessageAnswer::Cancel, MessageAnswer::Ok};
    case MessageButtons::RetryCancel:
        return {MessageAnswer::Cancel, MessageAnswer::Retry};
    case MessageButtons::Ok:
        break;
    }
    return {MessageAnswer::Ok};
}

bool TakeFieldText(FormField& field, const std::string& text) {
    switch (field.kind) {
    case FormField::Number: {
        char* end = nullptr;
        const long number = std::strtol(text.c_str(), &end, 10);
        if (text.empty() || *end != '\0' ||
            ((field.least != 0 || field.most != 0) && (number < field.least || number > field.most)))
            return false;
        break;
    }
    case FormField::Flag:
        if (text != "0" && text != "1")
            return false;
        break;
    case FormField::Choice:
        if (std::none_of(field.choices.begin(), field.choices.end(),
                         [&text](const std::string& choice) { return EqualNoCase(choice, text); }))
            return false;
        break;
    case FormField::Text:
        break;
    }
    field.value = field.max_length != 0 ? CutText(text, field.max_length) : text;
    return true;
}

// "LABEL=VALUE;LABEL=VALUE"
bool TakeFields(FormQuestion& question, const std::string& answer) {
    for (size_t start = 0; start <= answer.size();) {
        const size_t end = std::min(answer.find(';', start), answer.size());
        const std::string pair = answer.substr(start, end - start);
        const size_t equals = pair.find('=');
        const auto field = std::find_if(question.fields.begin(), question.fields.end(), [&](const FormField& f) {
            return equals != std::string::npos && EqualNoCase(f.label, pair.substr(0, equals));
        });
        if (field == question.fields.end() || !TakeFieldText(*field, pair.substr(equals + 1)))
            return false;
        start = end + 1;
    }
    return true;
}

} // namespace

std::string ScriptDesktop::TakeAnswer() {
    if (answers.empty())
        return {};
    std::string answer = answers.front();
    answers.pop_front();
    return answer;
}

void ScriptDesktop::Record(const std::string& title, const std::string& text, const std::string& answer) {
    messages.push_back({title, text, answer});
}

MessageAnswer ScriptDesktop::MessageBox(const std::string& text, const std::string& title, MessageButtons buttons) {
    const std::vector<MessageAnswer> possible = AnswersOf(buttons);
    MessageAnswer given = possible.front();
    const std::string word = TakeAnswer();
    for (const MessageAnswer answer : possible)
        if (EqualNoCase(word, WordOf(answer)))
            given = answer;
    Record(title, text, WordOf(given));
    return given;
}

void ScriptDesktop::Notice(const std::string& sentence) { std::fprintf(stderr, "%s\n", sentence.c_str()); }

std::optional<std::string> ScriptDesktop::AskFile(const FileQuestion& question) {
    const std::string answer = TakeAnswer();
    const bool chosen = !answer.empty() && !EqualNoCase(answer, CANCEL);
    Record(question.title, question.filter, chosen ? answer : CANCEL);
    return chosen ? std::optional(answer) : std::nullopt;
}

std::optional<uint32_t> ScriptDesktop::AskColor(uint32_t) {
    const std::string answer = TakeAnswer();
    unsigned r = 0, g = 0, b = 0;
    char rest = 0;
    const bool chosen =
        std::sscanf(answer.c_str(), "%u,%u,%u%c", &r, &g, &b, &rest) == 3 && r < 256 && g < 256 && b < 256;
    Record("Color", "", chosen ? answer : CANCEL);
    return chosen ? std::optional(r << 16 | g << 8 | b) : std::nullopt;
}

bool ScriptDesktop::AskForm(FormQuestion& question) {
    const std::string answer = TakeAnswer();
    std::string labels;
    for (const FormField& field : question.fields)
        labels += (labels.empty() ? "" : ";") + field.label + "=" + field.value;
    FormQuestion answered = question;
    const bool taken =
        !answer.empty() && !EqualNoCase(answer, CANCEL) &&
        (EqualNoCase(answer, "ok") || (question.fields.size() == 1 && TakeFieldText(answered.fields[0], answer)) ||
         TakeFields(answered, answer));
    Record(question.title, labels, taken ? answer : CANCEL);
    for (size_t i = 0; taken && i < question.fields.size(); ++i) // callers may hold on to the fields
        question.fields[i].value = answered.fields[i].value;
    return taken;
}

void ScriptDesktop::ShowText(const std::string& text, const std::string& title) { Record(title, text, "ok"); }

bool ScriptDesktop::RunProgram(const std::string& program, const std::string& arguments, std::string& error) {
    Record(program, arguments, "");
    error = "a script starts no program";
    return false;
}
