// The rows of the table, as wide as their widest cells.

#include "table.h"

#include <algorithm>
#include <cstdio>

namespace
{

std::string rounded(double value, const char* format)
{
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

/// The number of characters in UTF-8.
std::size_t width(const std::string& text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

} // namespace

std::string number(unsigned long quantity)
{
    std::string text = std::to_string(quantity);
    for (std::size_t i = text.size(); i > 3; i -= 3)
        text.insert(i - 3, ",");
    return text;
}

std::string time(double seconds)
{
    if (seconds >= 1.0)
        return rounded(seconds, "%.2f s");
    return seconds >= 1e-4 ? rounded(1e3 * seconds, "%.1f ms") : rounded(1e6 * seconds, "%.3f µs");
}

std::string memory(double bytes)
{
    return rounded(bytes / (1024.0 * 1024.0), "%.0f MiB");
}

void Table::add(const Comparison& comparison, std::optional<double> ratio, Target target)
{
    const bool holds = !ratio || !target || *ratio <= *target;
    my_targets_hold = my_targets_hold && holds;
    my_rows.push_back({comparison.figure, comparison.input, comparison.measured, comparison.compared_with,
                       comparison.its_measured, ratio ? rounded(*ratio, "%.3f") : "",
                       target ? rounded(*target, "≤ %.3g") : "",
                       !target ? ""
                       : holds ? "ok"
                               : "MISSED"});
}

bool Table::print() const
{
    std::vector<std::vector<std::string>> lines = {
        {"figure", "input", "Tolmera", "compared with", "takes", "ratio", "target", ""}};
    lines.emplace_back(lines[0].size(), "---");
    lines.insert(lines.end(), my_rows.begin(), my_rows.end());

    for (const std::vector<std::string>& cells : lines) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            std::size_t widest = 0;
            for (const std::vector<std::string>& others : lines)
                widest = std::max(widest, width(others[i]));
            std::printf("| %s%*s ", cells[i].c_str(), static_cast<int>(widest - width(cells[i])), "");
        }
        std::puts("|");
    }
    return my_targets_hold;
}
