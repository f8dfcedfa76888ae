// Reads the numbers of DXF files: short decimals by hand, longer ones with from_chars, all others with the C library.

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

// Integers of up to fifteen digits and these powers of ten are exact as doubles, so their quotient is the double
// nearest to the number.
static_assert(FLT_EVAL_METHOD == 0, "a quotient of doubles has to be rounded only once");
constexpr std::ptrdiff_t most_digits = 15;
constexpr double powers_of_ten[most_digits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

bool ends_number(char c)
{
    return c == '\n' || c == '\r' || c == ' ';
}

/// Appends the digits at `at` to `number` and returns the position after them. `number` overflows after nineteen
/// digits, but is only used if there are at most fifteen.
const char* read_digits(const char* at, std::uint64_t& number)
{
    for (;; ++at) {
        const auto digit = static_cast<unsigned char>(*at - '0');
        if (digit > 9)
            return at;
        number = number * 10 + digit;
    }
}

/// from_chars rounds correctly, in any locale. strtod_l reads everything else: other formats, values out of range, inf,
/// nan. Not inlined, because its string would cost every short number a stack frame.
[[gnu::noinline]] double long_number(const char* begin, std::string_view text)
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
    std::ptrdiff_t count = at - digits;
    std::ptrdiff_t decimals = 0;
    if (*at == '.') {
        const char* const point = at;
        at = read_digits(point + 1, number);
        decimals = at - point - 1;
        count += decimals;
    }
    if (count == 0 || count > most_digits || !ends_number(*at))
        return long_number(begin, text);
    const double value = static_cast<double>(number) / powers_of_ten[decimals];
    return negative ? -value : value;
}
