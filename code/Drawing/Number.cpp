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

// Up to fifteen digits, and the powers of ten beside them, are doubles without an error, so that their quotient is the
// double nearest to the number.
static_assert(FLT_EVAL_METHOD == 0, "a quotient of doubles has to be rounded once");
constexpr std::ptrdiff_t most_digits = 15;
constexpr double powers[most_digits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                            1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

bool ends_number(char c)
{
    return c == '\n' || c == '\r' || c == ' ';
}

/// Appends the digits at `at` to those of `number`, and returns what stands behind them. From nineteen
/// digits on it may overflow; the caller uses it up to fifteen.
const char* read_digits(const char* at, std::uint64_t& number)
{
    for (;; ++at) {
        const auto digit = static_cast<unsigned char>(*at - '0');
        if (digit > 9)
            return at;
        number = number * 10 + digit;
    }
}

/// from_chars rounds correctly; anything that it does not read whole goes to the C library, in the C locale.
double long_number(const char* begin, std::string_view text)
{
    static const locale_t c_locale = newlocale(LC_NUMERIC_MASK, "C", nullptr);
    const char* const end = text.data() + text.size();
    double value = 0.0;
    const auto [stop, error] = std::from_chars(begin, end, value);
    if (error == std::errc() && (stop == end || ends_number(*stop)) && std::isfinite(value))
        return value;
    return strtod_l(std::string(text).c_str(), nullptr, c_locale);
}

} // namespace

double to_number(std::string_view text)
{
    const char* begin = text.data();
    while (*begin == ' ')
        ++begin;
    const bool negative = *begin == '-';
    const char* const digits = begin + (negative ? 1 : 0);
    std::uint64_t number = 0;
    const char* at = read_digits(digits, number);
    std::ptrdiff_t quantity = at - digits;
    std::ptrdiff_t decimals = 0;
    if (*at == '.') {
        const char* const point = at;
        at = read_digits(point + 1, number);
        decimals = at - point - 1;
        quantity += decimals;
    }
    if (quantity == 0 || quantity > most_digits || !ends_number(*at))
        return long_number(begin, text);
    const double value = static_cast<double>(number) / powers[decimals];
    return negative ? -value : value;
}
