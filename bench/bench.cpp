// The benchmark: every figure beside what it is compared with, measured in turn in one run. Each time is the least of
// its rounds, for whatever else the machine does can only add to it.
// The drawings, the display and the page of the result are left to script/bench.

#include "Drawing/DXFL_Processing.h"
#include "Drawing/OwnedEntities.h"
#include "peers.h"
#include "view.h"

#include <benchmark/benchmark.h>

#include <QApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

/// Returns the seconds of what it measures, without what it does before and after.
using Work = std::function<double()>;

/// Keeps the least time of each work, which is named by its index.
class LeastReporter : public benchmark::BenchmarkReporter
{
public:
    explicit LeastReporter(std::size_t works) : least(works, std::numeric_limits<double>::infinity()) {}
    bool ReportContext(const Context& /*context*/) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration) {
                double& seconds = least.at(std::stoul(run.run_name.function_name));
                seconds = std::min(seconds, run.GetAdjustedRealTime());
            }
    }

    std::vector<double> least;
};

/// Runs all works `rounds` times, in shuffled order, and returns the least time of each. None finds memory that another
/// one left with the allocator, which would spare it the cost of getting its own.
std::vector<double> least_of(int rounds, const std::vector<Work>& works)
{
    for (std::size_t i = 0; i < works.size(); ++i)
        benchmark::RegisterBenchmark(std::to_string(i).c_str(),
                                     [work = works[i]](benchmark::State& state) {
                                         for ([[maybe_unused]] auto step : state) {
                                             malloc_trim(0);
                                             state.SetIterationTime(work());
                                         }
                                     })
            ->UseManualTime()
            ->Iterations(1)
            ->Repetitions(rounds)
            ->Unit(benchmark::kSecond);
    LeastReporter reporter(works.size());
    benchmark::RunSpecifiedBenchmarks(&reporter, "all");
    benchmark::ClearRegisteredBenchmarks();
    return reporter.least;
}

std::string rounded(double value, int decimals)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string time(double seconds)
{
    return seconds < 1e-4 ? rounded(1e9 * seconds, 0) + " ns"
           : seconds < 1  ? rounded(1e3 * seconds, 1) + " ms"
                          : rounded(seconds, 2) + " s";
}

std::string memory(double bytes)
{
    return rounded(bytes / (1024 * 1024), 0) + " MiB";
}

[[noreturn]] double fail(const std::string& who)
{
    std::fprintf(stderr, "%s failed\n", who.c_str());
    std::exit(2);
}

/// A drawing, by its kind of entity and its number of them.
struct Input {
    std::string folder;
    std::string kind;
    unsigned long quantity;

    std::string file() const { return folder + '/' + kind + '-' + std::to_string(quantity) + ".dxf"; }
    std::string text() const { return std::to_string(quantity) + ' ' + kind; }
};

constexpr const char* counting = "counting its characters";
constexpr const char* row_format = "| %-24s | %8s | %-28s | %8s | %5s | %7s | %-6s |\n";

bool targets_hold = true;

/// Prints a row at once. The ratio of what Tolmera takes to what the other takes is at most `target`.
void print_row(const std::string& figure, double ours, const std::string& other, double theirs, double target,
               std::string (*text)(double) = time)
{
    const bool holds = ours <= target * theirs;
    targets_hold = targets_hold && holds;
    std::printf(row_format, figure.c_str(), text(ours).c_str(), other.c_str(), text(theirs).c_str(),
                rounded(ours / theirs, 3).c_str(), rounded(target, 3).c_str(), holds ? "holds" : "MISSED");
    std::fflush(stdout);
}

/// Measures two works, prints a row and returns the other's seconds.
double compare(int rounds, const std::string& figure, const Work& ours, const std::string& other, const Work& theirs,
               double target)
{
    std::fprintf(stderr, "Measuring %s beside %s\n", figure.c_str(), other.c_str());
    const std::vector<double> seconds = least_of(rounds, {ours, theirs});
    print_row(figure, seconds[0], other, seconds[1], target);
    return seconds[1];
}

/// The run of a command to its first picture, where `preload` tells of that, or else to its end. `peak` becomes the
/// least of itself and the command's largest resident set, in bytes. The benchmark ends where the command fails or
/// takes a minute.
Work running(std::vector<std::string> command, double& peak, const char* preload)
{
    return [=, &peak]() mutable {
        std::vector<char*> arguments(command.size() + 1); // the last one stays null
        std::transform(command.begin(), command.end(), arguments.begin(),
                       [](std::string& text) { return text.data(); });
        int ends[2] = {};
        if (::pipe(ends) != 0)
            fail("pipe");
        const double seconds = seconds_of([&] {
            if (::fork() == 0) {
                ::dup2(ends[1], 3);
                ::setenv("LD_PRELOAD", preload, 1);
                ::alarm(60);
                ::execvp(arguments[0], arguments.data());
                ::_exit(127);
            }
            ::close(ends[1]);
            char told = 0;
            if (::read(ends[0], &told, 1) < 0)
                fail("pipe");
        });
        ::close(ends[0]);
        rusage used = {};
        int status = 0;
        ::wait4(-1, &status, 0, &used);
        peak = std::min(peak, 1024.0 * static_cast<double>(used.ru_maxrss));
        return status == 0 ? seconds : fail(command[0]);
    };
}

/// Measured before this process has grown, for a child's largest resident set counts from its parent's on.
void measure_programs(const Input& faces, const std::string& f3d)
{
    const std::string file = faces.file();
    const std::string picture = faces.folder + "/preview.png";
    double peak = std::numeric_limits<double>::infinity();
    double f3d_peak = peak;
    // F3D's view is as large as a drawing's window wants to be, and no configuration file changes how it looks.
    compare(5, "first picture", running({TOLMERA, file}, peak, FIRST_SWAP), f3d,
            running({"f3d", "--dry-run", "--resolution=400,500", file}, f3d_peak, FIRST_SWAP), 0.48);
    print_row("peak memory until then", peak, f3d, f3d_peak, 0.59, memory);
    compare(3, "preview, 256 x 256", running({THUMBNAILER, "-s", "256", file, picture}, peak, ""), f3d,
            running({"f3d", "--dry-run", "--resolution=256,256", "--output=" + picture, file}, f3d_peak, ""), 0.6);
}

Work reading(const std::string& file)
{
    return [file] {
        OwnedEntities entities;
        return seconds_of([&] { const DXFL_Processing reader(file, entities.list); });
    };
}

Work bare_pass(const std::string& file)
{
    return [file] {
        unsigned long quantity = 0;
        const double seconds = seconds_of([&] {
            std::FILE* stream = std::fopen(file.c_str(), "r");
            while (std::fgetc(stream) != EOF)
                ++quantity;
            std::fclose(stream);
        });
        return quantity > 0 ? seconds : fail(file);
    };
}

Work loading(const std::string& file)
{
    return [file] {
        View view;
        return seconds_of([&] { view.loadFile(QString::fromStdString(file)); });
    };
}

/// `slower_at_least` says how many times as long as Tolmera's reader the other one takes.
void measure_peer(const Input& faces, const std::string& name, unsigned long (*read_faces)(const std::string& file),
                  double slower_at_least)
{
    const auto its_reading = [&] {
        unsigned long quantity = 0;
        const double seconds = seconds_of([&] { quantity = read_faces(faces.file()); });
        return quantity == faces.quantity ? seconds : fail(name);
    };
    compare(3, "read " + faces.text(), reading(faces.file()), name, its_reading, 1 / slower_at_least);
}

void measure_extents(const Input& faces, double bare_seconds)
{
    OwnedEntities entities;
    const DXFL_Processing reader(faces.file(), entities.list);
    DRVect3d corners[2];
    double limit = 0.0;
    const auto get = [&] { reader.get_boundary(entities.list, corners[0], corners[1], limit); };
    const double seconds = least_of(9, {[&] { return seconds_of(get); }})[0];
    print_row("extents", seconds, counting, bare_seconds, 0.05);
}

void measure_loading(const Input& faces, double bare_seconds)
{
    const std::vector<double> seconds = least_of(9, {reading(faces.file()), loading(faces.file())});
    print_row("load without the read", seconds[1] - seconds[0], counting, bare_seconds, 0.15);
}

void measure_repaints(const Input& faces)
{
    const std::vector<BareFace> bare_faces = read_bare_faces(faces.file());
    View view(faces.file());
    for (const GLObject::DRendering mode : {GLObject::WIREFRAME, GLObject::SOLID}) {
        const auto ours = [&] { return view.repaint_seconds(); };
        const auto bare = [&] { return view.bare_repaint_seconds(bare_faces, mode); };
        view.render(mode);
        compare(9, mode == GLObject::SOLID ? "repaint, solid" : "repaint, wireframe", ours,
                "bare loop of the same calls", bare, 1.08);
    }
}

/// The cost of a face in a drawing and in one a hundredth its size. The small one is measured a hundred times in a row,
/// so that what disturbs the machine meets both alike.
void measure_growth(const Input& faces)
{
    const Input few = {faces.folder, faces.kind, faces.quantity / 100};
    const auto compare_growth = [&](const std::string& name, const Work& large, const Work& small) {
        const auto quantity = static_cast<double>(faces.quantity);
        const auto often = [&] {
            double sum = 0.0;
            for (int i = 0; i < 100; ++i)
                sum += small();
            return sum / quantity;
        };
        compare(
            5, name + ", each face", [&] { return large() / quantity; }, "one of " + few.text(), often, 1.1);
    };
    View large(faces.file());
    View small(few.file());
    compare_growth("read", reading(faces.file()), reading(few.file()));
    compare_growth("load", loading(faces.file()), loading(few.file()));
    compare_growth(
        "repaint", [&] { return large.repaint_seconds(); }, [&] { return small.repaint_seconds(); });
    compare_growth(
        "pick", [&] { return large.pick_seconds(); }, [&] { return small.pick_seconds(); });
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4)
        fail("tolmera_bench FOLDER QUANTITY F3D-AND-ITS-VERSION");
    std::string shuffled = "--benchmark_enable_random_interleaving=true";
    char* options[] = {argv[0], shuffled.data(), nullptr};
    int option_quantity = 2;
    benchmark::Initialize(&option_quantity, options);
    const Input faces = {argv[1], "faces", std::strtoul(argv[2], nullptr, 10)};
    std::printf(row_format, "figure", "Tolmera", "compared with", "takes", "ratio", "at most", "target");
    std::printf(row_format, "---", "---:", "---", "---:", "---:", "---:", "---");
    measure_programs(faces, argv[3]);
    // Before the process has a second thread, which would make every fgetc and every allocation dearer.
    double bare_seconds = 0.0;
    for (const Input& input :
         {Input{faces.folder, "points", faces.quantity}, {faces.folder, "lines", faces.quantity}, faces})
        bare_seconds =
            compare(9, "read " + input.text(), reading(input.file()), counting, bare_pass(input.file()), 0.9);
    measure_peer(faces, assimp_name(), read_with_assimp, 2.9);
    measure_peer(faces, "dxflib " DL_VERSION, read_with_dxflib, 15);
    measure_extents(faces, bare_seconds);
    const QApplication app(argc, argv);
    measure_loading(faces, bare_seconds);
    measure_repaints(faces);
    measure_growth(faces);
    return targets_hold ? 0 : 1;
}
