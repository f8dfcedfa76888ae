// The table that the benchmark prints, in Markdown.
#pragma once

#include <optional>
#include <string>
#include <vector>

/// The most that a ratio may be.
using Target = std::optional<double>;

/// A measured figure and what it is compared with, as text.
struct Comparison {
    std::string figure;
    std::string input;
    std::string measured;
    std::string compared_with;
    std::string its_measured;
};

class Table
{
public:
    /// Adds a row; one without a ratio or a target is for information only.
    void add(const Comparison& comparison, std::optional<double> ratio, Target target);

    /// Prints all rows; false where a ratio is beyond its target.
    bool print() const;

private:
    std::vector<std::vector<std::string>> my_rows;
    bool my_targets_hold = true;
};

/// Texts for quantities, seconds and bytes.
std::string number(unsigned long quantity);
std::string time(double seconds);
std::string memory(double bytes);
