// The reader's rules in their plainest form, without regard to speed: what promises.h holds the reader against.
#pragma once

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

/// An entity as the rules give it: how many points its type has, and all twelve coordinates, x, y, z by point.
struct ReferenceEntity {
    unsigned int points = 0;
    std::string handle;
    std::string layer;
    std::array<double, 12> coordinates{};
};

/// The entities of a DXF file's bytes. Numbers are read in the process's locale, which has to be C.
class ReferenceReader
{
public:
    static std::vector<ReferenceEntity> read(std::string_view bytes)
    {
        ReferenceReader reader;
        std::string line;
        for (const char c : bytes) {
            line += c;
            if (c != '\n')
                continue;
            if (!reader.examine(line))
                break;
            reader.previous = line;
            line.clear();
        }
        return reader.entities;
    }

private:
    static bool has(const std::string& line, const std::string& word) { return line.find(word) != std::string::npos; }

    static double number(const std::string& line) { return std::strtod(line.c_str(), nullptr); }

    static bool denotes(const std::string& line, const std::string& code)
    {
        if (line.find_first_not_of("012358 \r\n\t") != std::string::npos)
            return false;
        if (has(line, " " + code) || has(line, "\t" + code))
            return true;
        return has(line, code) && number(line) == number(code);
    }

    static std::string text(std::string line)
    {
        line.pop_back();
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        return line;
    }

    /// False at the end of the section.
    bool examine(const std::string& line)
    {
        if (!in_section) {
            in_section = has(line, "ENTITIES") && denotes(previous, "2");
            return true;
        }
        if (has(line, "ENDSEC") && denotes(previous, "0"))
            return false;
        if (!is_open)
            start(line);
        if (is_open)
            fill(line);
        return true;
    }

    void start(const std::string& line)
    {
        struct Kind {
            const char* keyword;
            unsigned int points;
        };
        for (const Kind& kind : {Kind{"POINT", 1}, Kind{"LINE", 2}, Kind{"3DFACE", 4}})
            if (has(line, kind.keyword) && denotes(previous, "0")) {
                entities.emplace_back();
                entities.back().points = kind.points;
                is_open = true;
                seen = {};
            }
    }

    void fill(const std::string& line)
    {
        ReferenceEntity& entity = entities.back();
        if (denotes(previous, "5"))
            entity.handle = text(line);
        if (denotes(previous, "8"))
            entity.layer = text(line);
        for (unsigned int i = 0; i < seen.size(); ++i)
            if (denotes(previous, std::to_string(10 * (i % 3 + 1) + i / 3))) {
                if (i < 3 * entity.points)
                    entity.coordinates[i] = number(line);
                seen[i] = true;
            }
        bool complete = true;
        for (unsigned int i = 0; i < seen.size(); ++i)
            complete = complete && seen[i] == (i < 3 * entity.points);
        if (complete || (denotes(line, "0") && !denotes(previous, "8") && !denotes(previous, "5")))
            is_open = false;
    }

    std::vector<ReferenceEntity> entities;
    std::string previous;
    std::array<bool, 12> seen{};
    bool in_section = false;
    bool is_open = false;
};
