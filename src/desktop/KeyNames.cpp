#include "desktop/KeyNames.h"

#include <algorithm>
#include <string_view>

#include "commands/Accelerator.h"

namespace {

struct NamedKey {
    int key;
    const char* name;
};

constexpr NamedKey NAMED_KEYS[] = {{Qt::Key_Space, "Space"},   {Qt::Key_Backspace, "Backspace"},
                                   {Qt::Key_Escape, "Esc"},    {Qt::Key_Insert, "Ins"},
                                   {Qt::Key_Delete, "Del"},    {Qt::Key_Home, "Home"},
                                   {Qt::Key_End, "End"},       {Qt::Key_PageUp, "PgUp"},
                                   {Qt::Key_PageDown, "PgDn"}, {Qt::Key_Left, "Left"},
                                   {Qt::Key_Right, "Right"},   {Qt::Key_Up, "Up"},
                                   {Qt::Key_Down, "Down"},     {Qt::Key_Tab, "Tab"},
                                   {Qt::Key_Backtab, "Tab"},   {Qt::Key_Return, "Enter"},
                                   {Qt::Key_Enter, "Enter"},   {Qt::Key_CapsLock, "CapsLock"},
                                   {Qt::Key_Pause, "Pause"},   {Qt::Key_F1, "F1"},
                                   {Qt::Key_F2, "F2"},         {Qt::Key_F3, "F3"},
                                   {Qt::Key_F4, "F4"},         {Qt::Key_F5, "F5"},
                                   {Qt::Key_F6, "F6"},         {Qt::Key_F7, "F7"},
                                   {Qt::Key_F8, "F8"},         {Qt::Key_F9, "F9"},
                                   {Qt::Key_F10, "F10"},       {Qt::Key_F11, "F11"},
                                   {Qt::Key_F12, "F12"}};

// With the lock of the pad on and off.
constexpr NamedKey KEYPAD_KEYS[] = {
    {Qt::Key_0, "Num0"},      {Qt::Key_Insert, "Num0"},   {Qt::Key_1, "Num1"},      {Qt::Key_End, "Num1"},
    {Qt::Key_2, "Num2"},      {Qt::Key_Down, "Num2"},     {Qt::Key_3, "Num3"},      {Qt::Key_PageDown, "Num3"},
    {Qt::Key_4, "Num4"},      {Qt::Key_Left, "Num4"},     {Qt::Key_5, "Num5"},      {Qt::Key_Clear, "Num5"},
    {Qt::Key_6, "Num6"},      {Qt::Key_Right, "Num6"},    {Qt::Key_7, "Num7"},      {Qt::Key_Home, "Num7"},
    {Qt::Key_8, "Num8"},      {Qt::Key_Up, "Num8"},       {Qt::Key_9, "Num9"},      {Qt::Key_PageUp, "Num9"},
    {Qt::Key_Period, "Num."}, {Qt::Key_Comma, "Num."},    {Qt::Key_Delete, "Num."}, {Qt::Key_Plus, "Num+"},
    {Qt::Key_Minus, "Num-"},  {Qt::Key_Asterisk, "Num*"}, {Qt::Key_Slash, "Num/"},  {Qt::Key_Enter, "Enter"},
    {Qt::Key_Return, "Enter"}};

template <size_t N>
const char* NameIn(const NamedKey (&keys)[N], int key) {
    const auto found =
        std::find_if(std::begin(keys), std::end(keys), [key](const NamedKey& k) { return k.key == key; });
    return found == std::end(keys) ? nullptr : found->name;
}

// Scan codes of the window systems, and what stands there on the keyboard that the keys were named after.
struct PlaceRow {
    quint32 first;
    std::string_view keys;
};
constexpr PlaceRow PLACES[] = {{10, "1234567890"}, {24, "QWERTYUIOP"}, {38, "ASDFGHJKL"}, {52, "ZXCVBNM"}, {49, "`"}};
constexpr quint32 RIGHT_SHIFT_PLACE = 62;
constexpr std::string_view SHIFTED_DIGITS = ")!@#$%^&*("; // there, from 0 on

char KeyAtPlace(const QKeyEvent& event) {
    const quint32 place = event.nativeScanCode();
    for (const PlaceRow& row : PLACES)
        if (place >= row.first && place < row.first + row.keys.size())
            return row.keys[place - row.first];
    const size_t digit =
        event.key() < 0x80 ? SHIFTED_DIGITS.find(static_cast<char>(event.key())) : std::string_view::npos;
    return place == 0 && digit != std::string_view::npos ? static_cast<char>('0' + digit) : '\0';
}

bool IsLetter(int key) { return key >= Qt::Key_A && key <= Qt::Key_Z; }
bool IsDigit(int key) { return key >= Qt::Key_0 && key <= Qt::Key_9; }

} // namespace

const char* KeypadName(const QKeyEvent& event) {
    return event.modifiers() & Qt::KeypadModifier ? NameIn(KEYPAD_KEYS, event.key()) : nullptr;
}

bool IsRightShift(const QKeyEvent& event) {
    return event.key() == Qt::Key_Shift && event.nativeScanCode() == RIGHT_SHIFT_PLACE;
}

std::vector<std::string> KeyTexts(const QKeyEvent& event) {
    KeyCombination keys;
    keys.control = event.modifiers() & Qt::ControlModifier;
    keys.shift = event.modifiers() & Qt::ShiftModifier;
    keys.alt = event.modifiers() & Qt::AltModifier;
    std::vector<std::string> texts;
    const auto add = [&](const std::string& key, bool shift) {
        KeyCombination named = keys;
        named.key = key;
        named.shift = shift;
        const std::string text = KeysText(named);
        if (std::find(texts.begin(), texts.end(), text) == texts.end())
            texts.push_back(text);
    };
    const char* name = KeypadName(event);
    if (!name)
        name = NameIn(NAMED_KEYS, event.key());
    if (name) {
        add(name, keys.shift);
        return texts;
    }
    const int key = event.key();
    if (key > Qt::Key_Space && key <= Qt::Key_AsciiTilde) {
        const bool with_shift = keys.shift && (IsLetter(key) || IsDigit(key)); // else Shift made the character
        add(std::string(1, static_cast<char>(key)), with_shift);
    }
    const char at_place = KeyAtPlace(event);
    if (at_place != '\0' && !IsLetter(key))
        add(std::string(1, at_place), keys.shift);
    return texts;
}
