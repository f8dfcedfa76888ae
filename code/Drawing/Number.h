// The number at the start of a line, read as the C library's atof reads it in the C locale.
#pragma once

#include <string_view>

/// The value of the longest number that `text` begins with, after white space: a sign, decimals, an exponent, a
/// hexadecimal number, inf or nan, exactly as `atof` reads it. 0 if it begins with none. `text` ends with the
/// LF of its line, or a NUL stands behind it.
double to_number(std::string_view text);
