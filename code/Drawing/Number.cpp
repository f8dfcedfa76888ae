// Numbers of DXF files: the plain decimal form through from_chars, all else through the C library.

#include "Number.h"

#include <charconv>
#include <cmath>
#include <locale.h>
#include <stdlib.h>
#include <string>

namespace
{

/// All of the grammar, in the C locale.
double c_number(std::string_view text)
{
    static const locale_t c_locale = newlocale(LC_NUMERIC_MASK, "C", nullptr);
    return strtod_l(std::string(text).c_str(), nullptr, c_locale);
}

} // namespace

double to_number(std::string_view text)
{
    const char* begin = text.data();
    const char* const end = begin + text.size();
    while (begin != end && *begin == ' ')
        ++begin;

    // Both ways round to the nearest double, so they agree wherever from_chars sees the whole of a finite number.
    double value = 0.0;
    const auto [stop, error] = std::from_chars(begin, end, value);
    const bool whole = stop != end && (*stop == '\n' || *stop == '\r' || *stop == ' ');
    if (error == std::errc() && whole && std::isfinite(value))
        return value;
    return c_number(text);
}
