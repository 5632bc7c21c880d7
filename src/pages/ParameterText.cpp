#include "pages/ParameterText.h"

#include <algorithm>
#include <cctype>

#include "definitions/Numbers.h"
#include "foundation/Strings.h"

namespace {

bool IsAlnum(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Takes the next component of a typed vector off the text.
float TakeFloat(std::string_view& text) {
    const auto start =
        std::find_if(text.begin(), text.end(), [](char c) { return IsAlnum(c) || c == '-' || c == '.'; });
    text.remove_prefix(static_cast<size_t>(start - text.begin()));
    const auto end = std::find_if_not(
        text.begin(), text.end(), [](char c) { return IsDigit(c) || c == '.' || c == '-' || c == '+' || c == 'e'; });
    const auto length = static_cast<size_t>(end - text.begin());
    const float value = ParseFloat(text.substr(0, length));
    text.remove_prefix(length);
    return value;
}

uint32_t TakeByte(std::string_view& text) {
    text.remove_prefix(static_cast<size_t>(std::find_if(text.begin(), text.end(), IsDigit) - text.begin()));
    const auto length = static_cast<size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin());
    const int value = ParseInt(text.substr(0, length));
    text.remove_prefix(length);
    return static_cast<uint32_t>(std::clamp(value, 0, 255));
}

// The text behind n commas and then blanks; false when there are fewer.
bool SkipCommas(std::string_view& text, int n) {
    for (; n > 0; --n) {
        const size_t comma = text.find(',');
        if (comma == std::string_view::npos)
            return false;
        text.remove_prefix(comma + 1);
    }
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    return true;
}

// Takes the components one after the other, whatever stands before them.
COLOR TypedColor(std::string_view text) {
    uint32_t channel[4];
    for (uint32_t& c : channel)
        c = TakeByte(text);
    return MakeColor(channel[0], channel[1], channel[2], channel[3]);
}

} // namespace

std::string ParameterText(const EntityParameter& p, int decimals) {
    switch (p.type) {
    case EPT_BOOL:
        return p.p_bool ? "TRUE" : "FALSE";
    case EPT_INT:
        return Format("%d", p.p_int);
    case EPT_FLOAT:
        return Format("%.*f", decimals, static_cast<double>(p.p_float));
    case EPT_VECTOR2:
        return Format("%.*f, %.*f", decimals, static_cast<double>(p.p_vector2.u), decimals,
                      static_cast<double>(p.p_vector2.v));
    case EPT_VECTOR3:
        return Format("%.*f, %.*f, %.*f", decimals, static_cast<double>(p.p_vector3.x), decimals,
                      static_cast<double>(p.p_vector3.y), decimals, static_cast<double>(p.p_vector3.z));
    case EPT_COLOR:
        return Format("%u, %u, %u, %u", ChannelToByte(p.p_color.r), ChannelToByte(p.p_color.g),
                      ChannelToByte(p.p_color.b), ChannelToByte(p.p_color.a));
    case EPT_FILENAME:
    case EPT_STRING:
    case EPT_CONSTANT:
        break;
    }
    return p.p_text;
}

bool TypeParameter(EntityParameter& p, std::string_view text) {
    switch (p.type) {
    case EPT_BOOL:
        if (!EqualNoCase(text, "TRUE") && !EqualNoCase(text, "FALSE"))
            return false;
        p.p_bool = EqualNoCase(text, "TRUE");
        break;
    case EPT_INT:
        p.p_int = ParseInt(text);
        break;
    case EPT_FLOAT:
        p.p_float = ParseFloat(text);
        break;
    case EPT_VECTOR2:
        p.p_vector2.u = TakeFloat(text);
        p.p_vector2.v = TakeFloat(text);
        break;
    case EPT_VECTOR3:
        p.p_vector3.x = TakeFloat(text);
        p.p_vector3.y = TakeFloat(text);
        p.p_vector3.z = TakeFloat(text);
        break;
    case EPT_COLOR:
        p.p_color = TypedColor(text);
        break;
    case EPT_FILENAME:
    case EPT_STRING:
    case EPT_CONSTANT:
        p.p_text = text;
        break;
    }
    return true;
}

int PartCount(EntityParameterType type) {
    return type == EPT_VECTOR3 ? 3 : type == EPT_VECTOR2 || type == EPT_COLOR ? 2 : 1;
}

void TakePart(EntityParameter& parameter, const EntityParameter& from, int part) {
    if (part == WHOLE_VALUE || PartCount(parameter.type) == 1) {
        parameter.TakeValue(from);
        return;
    }
    if (parameter.type == EPT_VECTOR3) {
        float D3DVECTOR::*const components[] = {&D3DVECTOR::x, &D3DVECTOR::y, &D3DVECTOR::z};
        parameter.p_vector3.*components[part] = from.p_vector3.*components[part];
    } else if (parameter.type == EPT_VECTOR2) {
        float UVVector::*const components[] = {&UVVector::u, &UVVector::v};
        parameter.p_vector2.*components[part] = from.p_vector2.*components[part];
    } else {
        const COLOR &color = part == 0 ? from.p_color : parameter.p_color,
                    &alpha = part == 0 ? parameter.p_color : from.p_color;
        parameter.p_color =
            MakeColor(ChannelToByte(color.r), ChannelToByte(color.g), ChannelToByte(color.b), ChannelToByte(alpha.a));
    }
}

bool IsSamePart(const EntityParameter& a, const EntityParameter& b, int part) {
    EntityParameter changed = b;
    TakePart(changed, a, part);
    return ParameterText(changed, EDIT_DECIMALS) == ParameterText(b, EDIT_DECIMALS);
}

int32_t GetIntParamFromStr(std::string_view text, int n) { return SkipCommas(text, n) ? ParseInt(text) : 0; }

float GetFloatParamFromStr(std::string_view text, int n) { return SkipCommas(text, n) ? ParseFloat(text) : 0.0f; }

void SetParameterValue(EntityParameter& p, std::string_view text) {
    switch (p.type) {
    case EPT_BOOL:
        p.p_bool = EqualNoCase(text, "TRUE");
        break;
    case EPT_INT:
        p.p_int = GetIntParamFromStr(text, 0);
        break;
    case EPT_FLOAT:
        p.p_float = GetFloatParamFromStr(text, 0);
        break;
    case EPT_VECTOR2:
        p.p_vector2 = {GetFloatParamFromStr(text, 0), GetFloatParamFromStr(text, 1)};
        break;
    case EPT_VECTOR3:
        p.p_vector3 = {GetFloatParamFromStr(text, 0), GetFloatParamFromStr(text, 1), GetFloatParamFromStr(text, 2)};
        break;
    case EPT_COLOR:
    case EPT_FILENAME:
    case EPT_STRING:
    case EPT_CONSTANT:
        TypeParameter(p, text);
        break;
    }
}
