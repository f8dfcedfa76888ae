// The number at the start of a line, read as the C library's atof reads it in the C locale.
#pragma once

#include <string_view>

/// The longest number that `text` begins with, after white space: with a sign, decimals or an exponent, hexadecimal,
/// inf or nan. 0 if it begins with none. `text` must end with an LF or be followed by a NUL.
double to_number(std::string_view text);
