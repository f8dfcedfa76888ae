// Numbers of DXF files: short decimals by hand, longer ones through from_chars, all else through the C library.

#include "Number.h"

#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <locale.h>
#include <stdlib.h>
#include <string>

namespace
{

bool ends_number(char c)
{
    return c == '\n' || c == '\r' || c == ' ';
}

/// The whole number of the digits at `at`, which it moves behind them; digits beyond nineteen spoil it.
std::uint64_t read_digits(const char*& at, std::uint64_t number)
{
    for (; *at >= '0' && *at <= '9'; ++at)
        number = number * 10 + static_cast<std::uint64_t>(*at - '0');
    return number;
}

/// Reads a number of at most fifteen digits, with or without a minus and a point. The digits and the power of ten are
/// doubles without an error, so their quotient is the double nearest to the number. False for anything else.
bool read_short_decimal(const char* at, double& value)
{
    static_assert(FLT_EVAL_METHOD == 0, "a quotient of doubles has to be rounded once");
    constexpr std::ptrdiff_t most_digits = 15;
    constexpr double powers[most_digits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const bool negative = *at == '-';
    const char* const begin = negative ? at + 1 : at;
    at = begin;
    std::uint64_t number = read_digits(at, 0);
    std::ptrdiff_t quantity = at - begin;
    std::ptrdiff_t decimals = 0;
    if (*at == '.') {
        const char* const point = at++;
        number = read_digits(at, number);
        decimals = at - point - 1;
        quantity += decimals;
    }
    if (quantity == 0 || quantity > most_digits || !ends_number(*at))
        return false;
    value = static_cast<double>(number) / powers[decimals];
    if (negative)
        value = -value;
    return true;
}

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
    while (*begin == ' ')
        ++begin;
    double value = 0.0;
    if (read_short_decimal(begin, value))
        return value;

    // from_chars rounds correctly; anything that it does not read whole goes to strtod.
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(begin, end, value);
    if (error == std::errc() && (stop == end || ends_number(*stop)) && std::isfinite(value))
        return value;
    return c_number(text);
}
