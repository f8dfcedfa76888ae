// Writes a drawing for the benchmark: N faces, lines or points of a hilly terrain, in the form that AutoCAD 2000 and
// later write. The same arguments always give the same file.

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace
{

struct Kind {
    std::string_view name;
    const char* entity;
    const char* marker; // the subclass marker, group code 100
    int corners;
};

constexpr Kind kinds[] = {
    {"faces", "3DFACE", "AcDbFace", 4},
    {"lines", "LINE", "AcDbLine", 2},
    {"points", "POINT", "AcDbPoint", 1},
};

constexpr int corner_columns[] = {0, 1, 1, 0};
constexpr int corner_rows[] = {0, 0, 1, 1};
constexpr double extent = 900.0; // of the terrain, in drawing units; its centre is the origin
constexpr unsigned long first_handle = 0x1000;

void write_corner(int index, double x, double y)
{
    const double z = 40.0 * std::sin(x / 60.0) * std::cos(y / 45.0) + 8.0 * std::sin((x + 2.0 * y) / 9.0);
    std::printf(" %d\n%.6f\n %d\n%.6f\n %d\n%.6f\n", 10 + index, x, 20 + index, y, 30 + index, z);
}

void write_drawing(const Kind& kind, unsigned long quantity)
{
    std::fputs("  0\nSECTION\n  2\nHEADER\n  9\n$ACADVER\n  1\nAC1015\n  0\nENDSEC\n", stdout);
    std::fputs("  0\nSECTION\n  2\nENTITIES\n", stdout);
    const auto columns = static_cast<unsigned long>(std::ceil(std::sqrt(static_cast<double>(quantity))));
    const double step = extent / static_cast<double>(columns);
    for (unsigned long i = 0; i < quantity; ++i) {
        std::printf("  0\n%s\n  5\n%lX\n330\n1F\n100\nAcDbEntity\n  8\nTERRAIN\n100\n%s\n", kind.entity,
                    first_handle + i, kind.marker);
        for (int corner = 0; corner < kind.corners; ++corner) {
            const auto column = static_cast<double>(i % columns) + corner_columns[corner];
            const unsigned long full_rows = i / columns;
            const auto row = static_cast<double>(full_rows) + corner_rows[corner];
            write_corner(corner, step * column - extent / 2, step * row - extent / 2);
        }
    }
    std::fputs("  0\nENDSEC\n  0\nEOF\n", stdout);
}

} // namespace

int main(int argc, char** argv)
{
    const unsigned long quantity = argc == 3 ? std::strtoul(argv[2], nullptr, 10) : 0;
    for (const Kind& kind : kinds)
        if (quantity > 0 && kind.name == argv[1]) {
            write_drawing(kind, quantity);
            return std::fflush(stdout) == 0 ? 0 : 1;
        }
    std::fputs("usage: generate faces|lines|points QUANTITY\n", stderr);
    return 2;
}
