// The text of an entity script: macros, comments and the search for the next token.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// A script with its macros expanded, which still knows the lines of the file.
class ExpandedScript {
public:
    static constexpr char END_MARK = '\xAD'; // ends the text wherever it stands
    static constexpr size_t LARGEST = 64 << 20;

    // Collects all "%define $name value", wherever they stand, and replaces every "$name" together with the character
    // behind it. Inserted values are not expanded again. False when the result would be larger than LARGEST.
    bool Expand(std::string_view source);

    const std::string& Text() const { return text; }
    int LineAt(size_t position) const; // of the file, from 1

private:
    struct Mark {
        size_t position; // in text
        int line;        // of the file there
    };
    bool Append(std::string_view piece, int line);

    std::string text;
    std::vector<Mark> marks; // ascending
};

enum class ScriptToken { Found, BlockEnd, TextEnd };

// Moves through a text. Comments are passed over in all searches.
class ScriptScanner {
public:
    explicit ScriptScanner(std::string_view script) : text(script) {}

    size_t Position() const { return at; }
    bool AtEnd() const { return at >= text.size(); }
    std::string_view Rest() const { return text.substr(at); }
    char Peek() const { return AtEnd() ? '\0' : text[at]; }

    bool FindHash();       // behind the next '#'
    bool FindBlockStart(); // behind the next '{'
    // To the next letter, digit, '-' or '.', or behind the next quote, or behind the next '}'.
    ScriptToken FindStringStart();
    // The number of this block that comes next. False, standing on what comes instead, when that is no number.
    bool NextNumber(std::string& number);
    // Behind a '{' that comes next but for blanks and punctuation; false leaves the position.
    bool EnterList();

    std::string TakeWord();                            // letters, digits and '_'; passes over at least one character
    std::string TakeName();                            // up to a control character, a blank or a byte above 0x7F
    std::string TakeFile();                            // likewise, or up to ')' or a quote, which is passed over
    std::string TakeParameterName();                   // up to ';', a control character or a blank
    std::string TakeItem();                            // likewise, or up to ',', '}' or a quote, which is passed over
    bool TakeAngled(std::string& value);               // the text of the "<value>" ahead of the next '#'
    std::string_view TakeUntil(std::string_view ends); // up to one of ends; stays on it
    void SkipBlanks();                                 // and control characters
    void SkipSpaces();                                 // and tabs
    void SkipCharacter() { at += AtEnd() ? 0 : 1; }
    bool SkipText(std::string_view expected);
    bool FindAssignment();                      // behind the next '=', or to a ';'; tells whether there was a '='
    bool TakeLineComment(std::string& comment); // behind the next "//" of this line, ahead of any '}'
    bool LineHasListFirst() const;              // a '{' before any '/' on this line

private:
    bool SkipComment();
    bool FindBehind(char wanted);
    template <class IsEnd>
    std::string TakeWhile(IsEnd is_end);

    std::string_view text;
    size_t at = 0;
};
