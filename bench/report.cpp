#include "report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <nlohmann/json.hpp>
#include <utility>

#include "peers.h"
#include "renderer/chosen_path.h"
#include "table.h"

namespace quorvane::bench {
namespace {

constexpr double kMebibyte = 1 << 20;

/// Three significant digits.
std::string milliseconds(double seconds) {
    const double ms = 1e3 * seconds;
    return decimal(ms, ms < 0.1 ? 4 : ms < 1 ? 3 : ms < 10 ? 2 : 1);
}

std::string told(const Outcome& outcome) {
    if (!outcome.unmeasured.empty()) return outcome.goal + ": not measured (" + outcome.unmeasured + ")";
    return outcome.goal + ": " + decimal(outcome.value, outcome.value < 10 ? 2 : 1) +
           (outcome.met              ? " met"
            : outcome.remark.empty() ? " NOT met"
                                     : " NOT met; " + outcome.remark);
}

/// Adds a row, and under it one for every further goal.
void addWithGoals(Table* table, std::vector<std::string> cells, const std::vector<Outcome>& outcomes) {
    const size_t columns = cells.size();
    cells.push_back(outcomes.empty() ? "" : told(outcomes.front()));
    table->add(std::move(cells));
    for (size_t i = 1; i < outcomes.size(); ++i) {
        std::vector<std::string> further(columns);
        further.push_back(told(outcomes[i]));
        table->add(std::move(further));
    }
}

/// How many times as fast as the reference the fastest contender of these kinds is; empty without one.
std::string fastest(const Result& result, std::initializer_list<Kind> kinds) {
    double best = 0;
    for (size_t i = 0; i < result.figures.size(); ++i)
        if (std::find(kinds.begin(), kinds.end(), result.stage.contenders[i].kind) != kinds.end())
            best = std::max(best, result.speedup(i));
    return best > 0 ? decimal(best, 1) : "";
}

void printMachine(const Machine& machine) {
    std::printf("- processor: %s\n- compiler: %s\n- path in use: %s\n", machine.processor.c_str(),
                machine.compiler.c_str(), machine.path.c_str());
    if (!machine.peers.empty()) std::printf("- peers: %s\n", machine.peers.c_str());
    std::printf("- date: %s\n\n", machine.date.c_str());
}

void printPeers(const Report& report) {
    if (report.machine.peers.empty()) {
        std::puts("No peer is installed: scripts/bench --peers\n");
        return;
    }
    Table table({"stage", "size", "peer", "kind", "ms", "times reference", "ours beside it"});
    for (const Result& result : report.stages) {
        double ours = 0;
        for (size_t i = 0; i < result.figures.size(); ++i) {
            const Contender& contender = result.stage.contenders[i];
            const double seconds = result.figures[i].seconds;
            if (contender.kind == Kind::path && (ours == 0 || seconds < ours)) ours = seconds;
            if (contender.kind == Kind::path || contender.kind == Kind::limit) continue;
            table.add({result.stage.name, result.stage.size, contender.name, name(contender.kind),
                       milliseconds(seconds), decimal(result.speedup(i), 1), decimal(seconds / ours, 2)});
        }
    }
    if (table.empty()) return;
    std::puts("The peers one by one:\n");
    table.print();
}

void printFrames(const Report& report) {
    if (report.frame_outcomes.empty()) return;
    std::printf("A frame%s%s:\n\n", report.frames.driver.empty() ? "" : " on ", report.frames.driver.c_str());
    Table table({"picture", "renderFrame, ms", "bare GL, ms", "ratio", "pairs", "output", "goal"});
    auto outcome = report.frame_outcomes.begin();
    for (const FrameCost& cost : report.frames.costs)
        addWithGoals(
            &table,
            {sizeText(cost.width, cost.height), milliseconds(cost.seconds), milliseconds(cost.bare_seconds),
             decimal(cost.ratio, 3), std::to_string(cost.pairs), cost.same_picture ? "same" : "WRONG"},
            {*outcome++});
    addWithGoals(&table, {"without the driver", milliseconds(report.share.seconds), "", "", "", ""},
                 std::vector<Outcome>(outcome, report.frame_outcomes.end()));
    table.print();
}

void printCosts(const Report& report) {
    if (report.costs.empty()) return;
    std::puts("setTexture + setDepth against the photo's size, nanoseconds a pixel; memory in MiB:\n");
    Table table(
        {"photo", "megapixels", report.machine.path, "reference", "copy + read", "block", "growth", "goal"});
    auto outcome = report.cost_outcomes.begin();
    for (const PixelCost& cost : report.costs) {
        const auto each = [&](double seconds) { return decimal(1e9 * seconds / cost.pixels(), 3); };
        addWithGoals(&table,
                     {sizeText(cost.width, cost.height), decimal(cost.pixels() / 1e6, 2), each(cost.seconds),
                      each(cost.reference_seconds), each(cost.limit_seconds),
                      decimal(cost.block_bytes / kMebibyte, 1), decimal(cost.peak_bytes / kMebibyte, 1)},
                     {*outcome++});
    }
    for (; outcome != report.cost_outcomes.end(); ++outcome)
        addWithGoals(&table, std::vector<std::string>(7), {*outcome});
    table.print();
}

/// The k of the power law pixels^k that fits these times best.
double growthOf(const std::vector<PixelCost>& costs, double PixelCost::*time) {
    double x = 0, y = 0, xx = 0, xy = 0;
    const double n = static_cast<double>(costs.size());
    for (const PixelCost& cost : costs) {
        const double pixels = std::log(cost.pixels()), seconds = std::log(cost.*time);
        x += pixels / n;
        y += seconds / n;
        xx += pixels * pixels / n;
        xy += pixels * seconds / n;
    }
    return (xy - x * y) / (xx - x * x);
}

std::string processor() {
    std::ifstream lines("/proc/cpuinfo");
    std::string model = "unknown";
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, 9, "processor") == 0) ++count;
        if (line.compare(0, 10, "model name") == 0) model = line.substr(line.find(':') + 2);
    }
    return model + ", " + std::to_string(count) + " cores";
}

// In the order in which it is filled.
using Json = nlohmann::ordered_json;

void write(const Json& json, const std::string& file) {
    std::ofstream out(file);
    out << json.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
}

Json jsonOf(const Machine& machine) {
    return {{"processor", machine.processor},
            {"compiler", machine.compiler},
            {"path", machine.path},
            {"peers", machine.peers},
            {"date", machine.date}};
}

Json jsonOf(const std::vector<Outcome>& outcomes) {
    Json goals = Json::array();
    for (const Outcome& outcome : outcomes) {
        const bool measured = outcome.unmeasured.empty();
        goals.push_back({{"goal", outcome.goal},
                         {"value", measured ? Json(outcome.value) : Json()},
                         {"met", measured ? Json(outcome.met) : Json()}});
    }
    return goals;
}

Json jsonOf(const Result& result) {
    Json contenders = Json::array();
    for (size_t i = 0; i < result.figures.size(); ++i) {
        const Contender& contender = result.stage.contenders[i];
        contenders.push_back({{"name", contender.name},
                              {"kind", name(contender.kind)},
                              {"seconds", result.figures[i].seconds},
                              {"samples", result.figures[i].samples},
                              {"times_first", result.speedup(i)}});
    }
    return {{"stage", result.stage.name},
            {"size", result.stage.size},
            {"output", result.stage.wrong.empty() ? result.stage.agreement : result.stage.wrong},
            {"contenders", std::move(contenders)},
            {"goals", jsonOf(result.outcomes)}};
}

}  // namespace

Machine thisMachine() {
    char date[32];
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    std::strftime(date, sizeof date, "%Y-%m-%d", localtime_r(&now, &local));
    return {processor(), QUORVANE_BENCH_COMPILER ", kernels " QUORVANE_BENCH_KERNEL_FLAGS, chosenPath().name,
            installedPeers(), date};
}

void Report::judge() {
    frame_outcomes.clear();
    for (const FrameCost& cost : frames.costs)
        frame_outcomes.push_back(atMost("<= 1.02 times bare GL", 1.02, cost.ratio));
    if (frames.costs.empty())
        frame_outcomes.push_back(notMeasured("<= 1.02 times bare GL", "no graphics driver"));
    frame_outcomes.push_back(atMost("own share <= 5 us", 5, 1e6 * share.seconds));
    frame_outcomes.push_back(atMost("allocations a frame <= 0", 0, share.allocations));

    cost_outcomes.clear();
    for (const PixelCost& cost : costs) {
        // The C library rounds up what it asks for, and the kernel counts pages in batches of 32 for each
        // processor and kind of page.
        constexpr double kPages = 512 << 10;
        const double growth = std::max(0.0, cost.peak_bytes - kPages);
        cost_outcomes.push_back(atMost("growth <= 1 times the block", 1, growth / cost.block_bytes));
    }
    if (costs.size() > 1) {
        cost_outcomes.push_back(
            atMost("cost grows as pixels to the power <= 1.05", 1.05, growthOf(costs, &PixelCost::seconds)));
        // Where small photos fit a cache, touching the bytes grows faster than they do.
        cost_outcomes.back().remark =
            "that of copy + read is " + decimal(growthOf(costs, &PixelCost::limit_seconds), 2);
    }
}

bool Report::wrong() const {
    return std::any_of(stages.begin(), stages.end(),
                       [](const Result& r) { return !r.stage.wrong.empty(); }) ||
           std::any_of(frames.costs.begin(), frames.costs.end(),
                       [](const FrameCost& c) { return !c.same_picture; });
}

std::vector<Outcome> Report::allOutcomes() const {
    std::vector<Outcome> all;
    for (const Result& result : stages) all.insert(all.end(), result.outcomes.begin(), result.outcomes.end());
    all.insert(all.end(), frame_outcomes.begin(), frame_outcomes.end());
    all.insert(all.end(), cost_outcomes.begin(), cost_outcomes.end());
    return all;
}

void printStages(const Report& report) {
    const PathList path = paths();
    std::vector<std::string> heads = {"stage", "size", "reference, ms"};
    for (size_t i = 1; i < path.size(); ++i) heads.emplace_back(path[i].name);
    for (const char* head : {"limit", "peer", "box", "output", "goal"}) heads.emplace_back(head);

    std::puts("Milliseconds of the reference, and how many times as fast as it the others are:\n");
    Table table(heads);
    for (const Result& result : report.stages) {
        const Stage& stage = result.stage;
        std::vector<std::string> cells = {stage.name, stage.size, milliseconds(result.figures[0].seconds)};
        for (size_t i = 1; i < path.size(); ++i) {
            cells.emplace_back();
            for (size_t k = 0; k < stage.contenders.size(); ++k)
                if (stage.contenders[k].name == path[i].name) cells.back() = decimal(result.speedup(k), 1);
        }
        cells.emplace_back();
        for (size_t k = 0; k < stage.contenders.size(); ++k)
            if (stage.contenders[k].kind == Kind::limit)
                cells.back() = decimal(result.speedup(k), 1) + " " + stage.contenders[k].name;
        cells.push_back(fastest(result, {Kind::same, Kind::overlap}));
        cells.push_back(fastest(result, {Kind::box, Kind::nearby}));
        cells.push_back(stage.wrong.empty() ? stage.agreement : "WRONG");
        addWithGoals(&table, std::move(cells), result.outcomes);
    }
    table.print();
    for (const Result& result : report.stages)
        if (!result.stage.wrong.empty())
            std::printf("WRONG: %s, %s: %s\n\n", result.stage.name.c_str(), result.stage.size.c_str(),
                        result.stage.wrong.c_str());
}

void print(const Report& report) {
    printMachine(report.machine);
    printStages(report);
    printPeers(report);
    printFrames(report);
    printCosts(report);

    const std::vector<Outcome> outcomes = report.allOutcomes();
    const auto met = std::count_if(outcomes.begin(), outcomes.end(), [](const Outcome& o) { return o.met; });
    const auto left = std::count_if(outcomes.begin(), outcomes.end(),
                                    [](const Outcome& o) { return !o.unmeasured.empty(); });
    std::printf("%d of %d goals met", static_cast<int>(met), static_cast<int>(outcomes.size()));
    if (left > 0) std::printf(", %d not measured", static_cast<int>(left));
    std::puts("");
}

void print(const Machine& machine, const std::vector<InstructionCount>& counts) {
    printMachine(machine);
    std::puts("Instructions, and how many times as many the reference needs:\n");
    const PathList path = paths();
    std::vector<std::string> heads = {"stage", "size", "for each", "reference"};
    for (size_t i = 1; i < path.size(); ++i) heads.insert(heads.end(), {path[i].name, ""});
    Table table(heads);
    for (size_t k = 0; k < counts.size();) {
        const InstructionCount& first = counts[k];
        std::vector<std::string> cells = {first.stage, first.size, first.unit, decimal(first.each, 2)};
        for (++k; k < counts.size() && counts[k].stage == first.stage; ++k)
            cells.insert(cells.end(), {decimal(counts[k].each, 2), decimal(first.each / counts[k].each, 1)});
        table.add(std::move(cells));
    }
    table.print();
}

void writeJson(const Report& report, const std::string& file) {
    Json json = jsonOf(report.machine);
    json["stages"] = Json::array();
    for (const Result& result : report.stages) json["stages"].push_back(jsonOf(result));

    Json pictures = Json::array();
    for (const FrameCost& cost : report.frames.costs)
        pictures.push_back({{"width", cost.width},
                            {"height", cost.height},
                            {"seconds", cost.seconds},
                            {"bare_seconds", cost.bare_seconds},
                            {"ratio", cost.ratio},
                            {"pairs", cost.pairs},
                            {"same_picture", cost.same_picture}});
    json["frames"] = {{"driver", report.frames.driver},
                      {"own_share_seconds", report.share.seconds},
                      {"allocations", report.share.allocations},
                      {"pictures", std::move(pictures)},
                      {"goals", jsonOf(report.frame_outcomes)}};

    Json photos = Json::array();
    for (const PixelCost& cost : report.costs)
        photos.push_back({{"width", cost.width},
                          {"height", cost.height},
                          {"seconds", cost.seconds},
                          {"reference_seconds", cost.reference_seconds},
                          {"limit_seconds", cost.limit_seconds},
                          {"block_bytes", cost.block_bytes},
                          {"growth_bytes", cost.peak_bytes}});
    json["cost"] = {{"photos", std::move(photos)}, {"goals", jsonOf(report.cost_outcomes)}};
    write(json, file);
}

void writeJson(const Machine& machine, const std::vector<InstructionCount>& counts, const std::string& file) {
    Json json = jsonOf(machine);
    json["instructions"] = Json::array();
    for (const InstructionCount& count : counts)
        json["instructions"].push_back({{"stage", count.stage},
                                        {"size", count.size},
                                        {"for_each", count.unit},
                                        {"path", count.path},
                                        {"instructions", count.each}});
    write(json, file);
}

}  // namespace quorvane::bench
