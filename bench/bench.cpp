// The benchmark: every figure beside what it is compared with, measured in turn in one run, as one table. Each time is
// the least of its rounds, since whatever else the machine does can only add to it.
// The inputs, the programs to start and the display are left to script/bench.

#include "Drawing/DXFL_Processing.h"
#include "Drawing/OwnedEntities.h"
#include "bare.h"
#include "peers.h"
#include "program.h"
#include "table.h"
#include "view.h"

#include <benchmark/benchmark.h>

#include <QApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <malloc.h>

namespace
{

/// Something to measure; it returns the seconds that it took, without what it does before and after.
struct Work {
    std::string name;
    std::function<double()> run;
};

class LeastReporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration)
                continue;
            const double took = run.GetAdjustedRealTime();
            double& least = seconds.try_emplace(run.run_name.function_name, took).first->second;
            least = std::min(least, took);
        }
    }

    std::map<std::string, double> seconds;
};

/// Runs all works `rounds` times, in shuffled order, and returns the least time of each in seconds. None finds memory
/// that another one left with the allocator, which would spare it the cost of getting its own.
std::map<std::string, double> measure(int rounds, const std::vector<Work>& works)
{
    for (const Work& work : works)
        benchmark::RegisterBenchmark(work.name.c_str(),
                                     [&work](benchmark::State& state) {
                                         for ([[maybe_unused]] auto step : state) {
                                             malloc_trim(0);
                                             state.SetIterationTime(work.run());
                                         }
                                     })
            ->UseManualTime()
            ->Iterations(1)
            ->Repetitions(rounds)
            ->Unit(benchmark::kSecond);
    LeastReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter, "all");
    benchmark::ClearRegisteredBenchmarks();
    return reporter.seconds;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Reads the whole file, for the system may have dropped parts of it from the page cache since it was last read, and
/// the disk is not what is measured.
void bring_into_page_cache(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::vector<char> piece(1 << 20);
    while (stream.read(piece.data(), static_cast<std::streamsize>(piece.size())))
        benchmark::ClobberMemory();
}

double read(const std::string& file)
{
    bring_into_page_cache(file);
    OwnedEntities entities;
    return seconds_of([&] { const DXFL_Processing reader(file, entities.list); });
}

double read_barely(const std::string& file)
{
    bring_into_page_cache(file);
    return seconds_of([&] {
        std::FILE* stream = std::fopen(file.c_str(), "r");
        int last = 0;
        for (int c = std::fgetc(stream); c != EOF; c = std::fgetc(stream))
            last = c;
        benchmark::DoNotOptimize(last);
        std::fclose(stream);
    });
}

std::shared_ptr<std::deque<OwnedEntities>> read_often(const std::string& file, unsigned long times)
{
    auto drawings = std::make_shared<std::deque<OwnedEntities>>(times);
    for (OwnedEntities& entities : *drawings)
        const DXFL_Processing reader(file, entities.list);
    return drawings;
}

double seconds_of_extents(std::list<DraftEntity*>& list)
{
    std::list<DraftEntity*> none;
    const DXFL_Processing reader("", none);
    DRVect3d min;
    DRVect3d max;
    double limit = 0.0;
    return seconds_of([&] { reader.get_boundary(list, min, max, limit); });
}

double load(const std::string& file)
{
    bring_into_page_cache(file);
    double seconds = 0.0;
    {
        View view;
        seconds = seconds_of([&] { view.loadFile(QString::fromStdString(file)); });
    }
    malloc_trim(0);
    return seconds;
}

/// What the benchmark works with, from its command line.
struct Setting {
    std::string folder;
    unsigned long quantity;
    std::string tolmera;
    std::string first_swap;
    std::string f3d; // empty where it is not installed

    std::string file(const std::string& kind, unsigned long number) const
    {
        return folder + "/" + kind + "-" + std::to_string(number) + ".dxf";
    }
};

/// Measured before the process has a second thread, which would make every fgetc and every allocation dearer.
void measure_reading(const Setting& setting, Table& table)
{
    for (const std::string kind : {"faces", "lines", "points"}) {
        const std::string file = setting.file(kind, setting.quantity);
        std::map<std::string, double> seconds =
            measure(9, {{"fgetc", [&] { return read_barely(file); }}, {"read", [&] { return read(file); }}});
        table.add({"read", number(setting.quantity) + " " + kind, time(seconds["read"]), "bare fgetc pass",
                   time(seconds["fgetc"])},
                  seconds["read"] / seconds["fgetc"], Target{2.3});
    }
}

void measure_peers(const Setting& setting, Table& table)
{
    const std::string faces = setting.file("faces", setting.quantity);
    std::vector<Work> works = {{"read", [&] { return read(faces); }}};
    for (const Peer& peer : peers()) {
        if (peer.read == nullptr)
            std::fprintf(stderr, "%s is not installed: skipped\n", peer.name);
        else
            works.push_back({peer.name, [&faces, &peer] {
                                 bring_into_page_cache(faces);
                                 return seconds_of([&] { peer.read(faces.c_str()); });
                             }});
    }
    std::map<std::string, double> seconds = measure(7, works);
    for (const Peer& peer : peers())
        if (peer.read != nullptr)
            table.add({"read", number(setting.quantity) + " faces", time(seconds["read"]), peer.name,
                       time(seconds[peer.name])},
                      seconds["read"] / seconds[peer.name], Target{peer.most});
}

void measure_extents(const Setting& setting, Table& table)
{
    const std::string faces = setting.file("faces", setting.quantity);
    const auto drawing = read_often(faces, 1);
    std::map<std::string, double> seconds =
        measure(9, {{"read", [&] { return read(faces); }},
                    {"extents", [&] { return seconds_of_extents(drawing->front().list); }}});
    table.add({"extents", number(setting.quantity) + " faces", time(seconds["extents"]), "read", time(seconds["read"])},
              seconds["extents"] / seconds["read"], Target{0.03});
}

void measure_loading(const Setting& setting, Table& table)
{
    const std::string faces = setting.file("faces", setting.quantity);
    std::map<std::string, double> seconds =
        measure(9, {{"read", [&] { return read(faces); }}, {"load", [&] { return load(faces); }}});
    const double rest = seconds["load"] - seconds["read"];
    table.add({"load without the read", number(setting.quantity) + " faces", time(rest), "read", time(seconds["read"])},
              rest / seconds["read"], Target{0.35});
}

struct Repaint {
    const char* figure;
    const char* kind;
    GLObject::DRendering mode;
    void (*draw_bare)(const std::vector<BareEntity>& entities);
};

constexpr Repaint repaints[] = {
    {"repaint, wireframe", "faces", GLObject::WIREFRAME, draw_bare_wireframe},
    {"repaint, solid", "faces", GLObject::SOLID, draw_bare_solid},
    {"repaint", "lines", GLObject::WIREFRAME, draw_bare_lines},
    {"repaint", "points", GLObject::WIREFRAME, draw_bare_points},
};

void measure_repaints(const Setting& setting, Table& table)
{
    for (const Repaint& repaint : repaints) {
        const std::string file = setting.file(repaint.kind, setting.quantity);
        const std::vector<BareEntity> entities = read_bare_entities(file);
        View view(file);
        view.render(repaint.mode);
        std::map<std::string, double> seconds =
            measure(15, {{"repaint", [&] { return view.repaint_seconds(); }},
                         {"bare", [&] { return view.bare_repaint_seconds([&] { repaint.draw_bare(entities); }); }}});
        table.add({repaint.figure, number(setting.quantity) + " " + repaint.kind, time(seconds["repaint"]),
                   "bare loop of the same calls", time(seconds["bare"])},
                  seconds["repaint"] / seconds["bare"], Target{1.12});
    }
}

void measure_pick(const Setting& setting, Table& table)
{
    const unsigned long quantity = std::max(setting.quantity / 10, 1UL);
    const std::string file = setting.file("faces", quantity);
    const std::vector<BareEntity> entities = read_bare_entities(file);
    View view(file);
    view.repaint_seconds();
    std::map<std::string, double> seconds =
        measure(15, {{"pick", [&] { return view.pick_seconds(); }},
                     {"bare", [&] { return view.bare_pick_seconds([&] { draw_bare_wireframe(entities); }); }}});
    table.add(
        {"pick", number(quantity) + " faces", time(seconds["pick"]), "bare selection pass", time(seconds["bare"])},
        seconds["pick"] / seconds["bare"], {});
}

/// The cost of each face in a drawing, in one a tenth and in one a hundredth its size. The smaller ones are measured
/// as many times in a row as makes them as long, so that what disturbs the machine meets all alike; the extents over as
/// many lists, so that the processor's caches hold none of them.
void measure_growth(const Setting& setting, Table& table)
{
    const std::vector<unsigned long> quantities = {setting.quantity / 100, setting.quantity / 10, setting.quantity};
    std::vector<std::unique_ptr<View>> views;
    std::vector<Work> works;
    for (const unsigned long quantity : quantities) {
        const std::string file = setting.file("faces", quantity);
        const unsigned long times = setting.quantity / quantity;
        views.push_back(std::make_unique<View>(file));
        const auto add = [&](const std::string& figure, const std::function<double()>& run) {
            works.push_back({figure + " " + std::to_string(quantity), [run, times] {
                                 double seconds = 0.0;
                                 for (unsigned long i = 0; i < times; ++i)
                                     seconds += run();
                                 return seconds;
                             }});
        };
        add("read", [file] { return read(file); });
        add("extents", [drawings = read_often(file, times), next = std::size_t{0}]() mutable {
            return seconds_of_extents(drawings->at(next++ % drawings->size()).list);
        });
        add("load", [file] { return load(file); });
        add("repaint", [view = views.back().get()] { return view->repaint_seconds(); });
        add("pick", [view = views.back().get()] { return view->pick_seconds(); });
    }
    std::map<std::string, double> seconds = measure(7, works);
    for (const std::string figure : {"read", "extents", "load", "repaint", "pick"}) {
        const auto each = [&](unsigned long quantity) {
            return seconds[figure + " " + std::to_string(quantity)] / static_cast<double>(setting.quantity);
        };
        table.add({"growth of " + figure, number(quantities[2]) + " faces", time(each(quantities[2])) + " a face",
                   number(quantities[1]) + " and " + number(quantities[0]) + " faces",
                   time(each(quantities[1])) + " and " + time(each(quantities[0]))},
                  each(quantities[2]) / each(quantities[0]), Target{1.2});
    }
}

void measure_first_picture(const Setting& setting, Table& table)
{
    const std::string faces = setting.file("faces", setting.quantity);
    std::map<std::string, std::vector<double>> peaks;
    const auto show = [&](const std::string& name, const std::vector<std::string>& command) {
        bring_into_page_cache(faces);
        const FirstPicture picture = show_first_picture(command, setting.first_swap);
        peaks[name].push_back(picture.peak_bytes);
        return picture.seconds;
    };
    std::vector<Work> works = {{"Tolmera", [&] { return show("Tolmera", {setting.tolmera, faces}); }}};
    // F3D's view is as large as a drawing's window wants to be, and no configuration file changes how it looks.
    if (setting.f3d.empty())
        std::fputs("F3D is not installed: skipped\n", stderr);
    else
        works.push_back({"F3D", [&] {
                             return show("F3D", {setting.f3d, "--dry-run", "--resolution=400,500", faces});
                         }});
    std::map<std::string, double> seconds = measure(7, works);

    const double peak = median(peaks["Tolmera"]);
    Comparison picture = {"first picture", number(setting.quantity) + " faces", time(seconds["Tolmera"]), "", ""};
    Comparison resident = {
        "peak memory", picture.input,
        memory(peak) + ", " + number(static_cast<unsigned long>(peak) / setting.quantity) + " bytes a face", "", ""};
    if (setting.f3d.empty()) {
        table.add(picture, {}, {});
        table.add(resident, {}, {});
        return;
    }
    picture.compared_with = resident.compared_with = "F3D";
    picture.its_measured = time(seconds["F3D"]);
    resident.its_measured = memory(median(peaks["F3D"]));
    table.add(picture, seconds["Tolmera"] / seconds["F3D"], Target{0.75});
    table.add(resident, peak / median(peaks["F3D"]), Target{0.62});
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 6) {
        std::fputs("usage: tolmera_bench FOLDER QUANTITY TOLMERA FIRST_SWAP F3D\n", stderr);
        return 2;
    }
    const Setting setting = {argv[1], std::strtoul(argv[2], nullptr, 10), argv[3], argv[4], argv[5]};
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    char* options[] = {argv[0], interleave.data(), nullptr};
    int option_quantity = 2;
    benchmark::Initialize(&option_quantity, options);

    Table table;
    measure_reading(setting, table);
    measure_peers(setting, table);
    measure_extents(setting, table);
    const QApplication app(argc, argv);
    measure_loading(setting, table);
    measure_repaints(setting, table);
    measure_pick(setting, table);
    measure_growth(setting, table);
    measure_first_picture(setting, table);
    return table.print() ? 0 : 1;
}
