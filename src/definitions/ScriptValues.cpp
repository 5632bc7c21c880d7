// The parameters of a script, parsed.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <system_error>
#include <type_traits>

#include "definitions/ScriptSyntax.h"
#include "foundation/Random.h"
#include "foundation/Strings.h"

namespace {

// Moves through the tokens of a parameter.
class TokenReader {
public:
    TokenReader(std::string_view text, int& position) : script(text), adv(position) {
        adv = 0;
        Next();
    }
    bool Next() { return found = CScriptSyntax::AddNextToken(script, token, adv, nullptr, &quoted); }
    bool Found() const { return found; }
    bool Is(std::string_view mark) const { return found && !quoted && token == mark; }
    bool IsRand() const { return found && EqualNoCase(token, "rand"); }
    const std::string& Token() const { return token; }

private:
    std::string_view script;
    int& adv;
    std::string token;
    bool found = false, quoted = false;
};

// True if the whole text is one decimal number; the same in every locale. Values beyond an int or a float
// give its end.
template <class T>
bool ParseWhole(std::string_view text, T& value) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\v\f"), text.size()));
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    std::conditional_t<std::is_floating_point_v<T>, double, T> parsed{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (text.empty() || end != text.data() + text.size() || error == std::errc::invalid_argument)
        return false;
    if constexpr (std::is_floating_point_v<T>) {
        if (error == std::errc::result_out_of_range || !std::isfinite(parsed))
            return false;
        constexpr double LARGEST = std::numeric_limits<T>::max();
        parsed = std::clamp(parsed, -LARGEST, LARGEST);
    } else if (error == std::errc::result_out_of_range)
        parsed = text[0] == '-' ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
    value = static_cast<T>(parsed);
    return true;
}

// The numbers of a random value and its closing parenthesis; the reader stands on the first number.
template <class T>
bool ParseRange(TokenReader& reader, T& arg1, T& arg2) {
    if (!reader.Found() || !ParseWhole(reader.Token(), arg1))
        return false;
    reader.Next();
    if (reader.Found() && ParseWhole(reader.Token(), arg2))
        reader.Next();
    else {
        arg2 = arg1;
        arg1 = 0;
    }
    return reader.Is(")");
}

// A default value counts only if it is used up.
template <class Value>
bool TakeDefault(Value& value, const char* defvalue) {
    int used = 0;
    return value.Init(defvalue, used, nullptr) && static_cast<size_t>(used) == std::string_view(defvalue).size();
}

template <class Value>
bool ParseNumber(Value& value, std::string_view script, int& adv, const char* defvalue) {
    TokenReader reader(script, adv);
    value.type = CScriptValue::ENONE;
    if (!reader.Found())
        return false;
    if (reader.Is("?") && defvalue)
        return TakeDefault(value, defvalue);
    if (reader.Is("(")) {
        value.type = CScriptValue::ERAND;
        reader.Next();
        if (!reader.IsRand())
            return false;
        reader.Next();
        return ParseRange(reader, value.arg1, value.arg2);
    }
    value.type = CScriptValue::EVALUE;
    return ParseWhole(reader.Token(), value.arg1);
}

int RandomInt(int a, int b) {
    const int64_t span = std::abs(static_cast<int64_t>(b) - a) + 1;
    return static_cast<int>(std::min(a, b) + static_cast<int64_t>(random_mt.randomMT()) % span);
}

} // namespace

bool CScriptInt::Init(std::string_view script, int& adv, const char* defvalue) {
    return ParseNumber(*this, script, adv, defvalue);
}

int CScriptInt::GetInt() const { return type == ERAND ? RandomInt(arg1, arg2) : type == EVALUE ? arg1 : 0; }

bool CScriptFloat::Init(std::string_view script, int& adv, const char* defvalue) {
    return ParseNumber(*this, script, adv, defvalue);
}

float CScriptFloat::GetFloat() const {
    constexpr float TO_UNIT = 2.3283064e-10f; // 2 to the power of -32
    if (type == ERAND)
        return arg1 + (arg2 - arg1) * static_cast<float>(random_mt.randomMT()) * TO_UNIT;
    return type == EVALUE ? arg1 : 0;
}

bool CScriptString::Init(std::string_view script, int& adv, const char* defvalue) {
    TokenReader reader(script, adv);
    type = ENONE;
    if (!reader.Found())
        return false;
    if (reader.Is("?") && defvalue)
        return TakeDefault(*this, defvalue);
    if (!reader.Is("(")) {
        type = EVALUE;
        string = reader.Token();
        return true;
    }
    type = ERAND;
    reader.Next();
    if (!reader.IsRand() || !reader.Next())
        return false;
    string = reader.Token();
    reader.Next();
    return ParseRange(reader, arg1, arg2);
}

std::string CScriptString::GetString() const {
    if (type == ERAND)
        return Format("%s%d", string.c_str(), RandomInt(arg1, arg2));
    return type == EVALUE ? string : std::string();
}

bool GetBoolParam(std::string_view script, int& adv, bool& param, const char* defvalue) {
    const TokenReader reader(script, adv);
    if (reader.Is("?") && defvalue) {
        int used = 0;
        return GetBoolParam(defvalue, used, param, nullptr) &&
               static_cast<size_t>(used) == std::string_view(defvalue).size();
    }
    for (const bool value : {false, true})
        if (reader.Found() && (EqualNoCase(reader.Token(), value ? "true" : "false") ||
                               EqualNoCase(reader.Token(), value ? "on" : "off"))) {
            param = value;
            return true;
        }
    return false;
}
