// Decimal numbers out of scripts, the same in every locale.
#pragma once

#include <cstdint>
#include <string_view>

// The number that the text starts with, behind blanks; 0 if there is none. Values beyond the type's range give its end.
int32_t ParseInt(std::string_view text);
// The same for a float; what a float cannot hold, or is not a number, gives 0.
float ParseFloat(std::string_view text);
