// Values of entity parameters as text, and back.
#pragma once

#include <string>
#include <string_view>

#include "scene/Entity.h"

// decimals: of floats and vectors. A text as it stands.
std::string ParameterText(const EntityParameter& parameter, int decimals);
inline constexpr int LIST_DECIMALS = 2, EDIT_DECIMALS = 4;

// A typed value. False, and nothing changed, for a flag that is neither TRUE nor FALSE in any case. A constant is taken
// as it stands: its choices are the caller's to check.
bool TypeParameter(EntityParameter& parameter, std::string_view text);

// What can be given by itself: each component of a vector; of a colour the colour (0) and the alpha (1).
int PartCount(EntityParameterType type); // 1 where there is only the whole
inline constexpr int WHOLE_VALUE = -1;
void TakePart(EntityParameter& parameter, const EntityParameter& from, int part); // both of one type
bool IsSamePart(const EntityParameter& a, const EntityParameter& b, int part);    // as the fields show it

// A value of a saved template, where components stand behind commas. Never fails.
void SetParameterValue(EntityParameter& parameter, std::string_view text);
int32_t GetIntParamFromStr(std::string_view text, int n); // behind n commas; 0 when there are fewer
float GetFloatParamFromStr(std::string_view text, int n);
