#include "definitions/Numbers.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace {

// What std::from_chars expects: no blanks and no plus sign in front.
std::string_view NumberStart(std::string_view text) {
    const size_t start = text.find_first_not_of(" \t\r\n\v\f");
    text.remove_prefix(start == std::string_view::npos ? text.size() : start);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    return text;
}

} // namespace

int32_t ParseInt(std::string_view text) {
    text = NumberStart(text);
    int32_t value = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc::result_out_of_range)
        return text[0] == '-' ? std::numeric_limits<int32_t>::min() : std::numeric_limits<int32_t>::max();
    return value;
}

float ParseFloat(std::string_view text) {
    text = NumberStart(text);
    float value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return std::isfinite(value) ? value : 0.0f;
}
