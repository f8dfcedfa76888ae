// Numbers of DXF files: short decimals by hand, longer ones through from_chars, all else through the C library.

#include "Number.h"

#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <locale.h>
#include <optional>
#include <stdlib.h>
#include <string>

namespace
{

bool is_line_end(char c)
{
    return c == '\n' || c == '\r';
}

/// A number of at most fifteen digits, with or without a sign and a point, that its line's end follows. The digits and
/// the power of ten are doubles without an error, so their quotient is the double nearest to the number.
std::optional<double> short_decimal(const char* at, const char* end)
{
    static_assert(FLT_EVAL_METHOD == 0, "a quotient of doubles has to be rounded once");
    constexpr std::ptrdiff_t most_digits = 15;
    constexpr double powers[most_digits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    std::uint64_t number = 0;
    const auto read_digits = [&] {
        const char* const begin = at;
        for (; at != end && *at >= '0' && *at <= '9'; ++at)
            number = number * 10 + static_cast<std::uint64_t>(*at - '0');
        return at - begin;
    };

    const bool negative = at != end && *at == '-';
    if (negative)
        ++at;
    const std::ptrdiff_t whole = read_digits();
    std::ptrdiff_t decimals = 0;
    if (at != end && *at == '.') {
        ++at;
        decimals = read_digits();
    }
    const std::ptrdiff_t quantity = whole + decimals;
    if (quantity == 0 || quantity > most_digits || at == end || !is_line_end(*at))
        return std::nullopt;
    const double value = static_cast<double>(number) / powers[decimals];
    return negative ? -value : value;
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
    const char* const end = begin + text.size();
    while (begin != end && *begin == ' ')
        ++begin;
    if (const std::optional<double> number = short_decimal(begin, end))
        return *number;

    // This way rounds to the nearest double, too, so it is right wherever it sees the whole of a finite number.
    double value = 0.0;
    const auto [stop, error] = std::from_chars(begin, end, value);
    if (error == std::errc() && (stop == end || is_line_end(*stop) || *stop == ' ') && std::isfinite(value))
        return value;
    return c_number(text);
}
