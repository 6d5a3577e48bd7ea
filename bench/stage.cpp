#include "stage.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace quorvane::bench {
namespace {

bool matches(const Contender& contender, const std::string& against) {
    if (contender.name.compare(0, against.size(), against) == 0 || against == name(contender.kind))
        return true;
    // The same filter overlaps too.
    return contender.kind == Kind::same && against == name(Kind::overlap);
}

Outcome judge(const Goal& goal, const Stage& stage, const std::vector<Figure>& figures) {
    const bool faster = goal.comparison == Goal::kTimesAsFastAs;
    Outcome outcome;
    char bound[32];
    std::snprintf(bound, sizeof bound, "%g", goal.bound);
    outcome.goal =
        goal.contender + (faster ? " >= " : " <= ") + bound + (faster ? "x " : " times ") + goal.against;

    double own = 0, other = 0, limit = 0;
    for (size_t i = 0; i < figures.size(); ++i) {
        const double seconds = figures[i].seconds;
        if (stage.contenders[i].kind == Kind::limit) limit = seconds;
        if (stage.contenders[i].name == goal.contender)
            own = seconds;
        else if (matches(stage.contenders[i], goal.against) && (other == 0 || seconds < other))
            other = seconds;
    }
    if (own == 0 || other == 0) {
        outcome.unmeasured = own == 0 ? "not on this processor" : "scripts/bench --peers";
        return outcome;
    }
    outcome.value = faster ? other / own : own / other;
    outcome.met = faster ? outcome.value >= goal.bound : outcome.value <= goal.bound;
    // Where the reference is fast and the memory slow, even the limit may be nearer.
    if (faster && limit > 0 && other / limit < goal.bound)
        outcome.remark = "the limit is " + decimal(other / limit, 1) + "x";
    return outcome;
}

}  // namespace

const char* name(Kind kind) {
    switch (kind) {
        case Kind::path: return "path";
        case Kind::limit: return "limit";
        case Kind::same: return "same filter";
        case Kind::overlap: return "overlap";
        case Kind::box: return "box";
        case Kind::nearby: return "nearby";
    }
    return "";
}

Contender here(std::string name, Kind kind, Work work) {
    Timed timed_work = timed(work);
    return {std::move(name), kind, std::move(timed_work), std::move(work)};
}

Result measure(Stage stage, int rounds) {
    std::vector<Timed> timed;
    for (const Contender& contender : stage.contenders) timed.push_back(contender.timed);
    Result result;
    result.figures = interleaved(timed, rounds);
    for (const Goal& goal : stage.goals) result.outcomes.push_back(judge(goal, stage, result.figures));
    // Their work holds the stage's memory.
    for (Contender& contender : stage.contenders) {
        contender.timed = nullptr;
        contender.work = nullptr;
    }
    result.stage = std::move(stage);
    return result;
}

Outcome atMost(std::string goal, double bound, double value) {
    return {std::move(goal), value, value <= bound, "", ""};
}

Outcome notMeasured(std::string goal, std::string why) {
    return {std::move(goal), 0, false, std::move(why), ""};
}

std::string difference(const Bytes& wanted, const Bytes& got, int tolerance, size_t seldom) {
    size_t differing = 0;
    int largest = 0;
    for (size_t i = 0; i < wanted.size(); ++i) {
        differing += wanted[i] != got[i] ? 1 : 0;
        largest = std::max(largest, std::abs(wanted[i] - got[i]));
    }
    if (differing == 0 || (largest <= tolerance && differing * seldom <= wanted.size())) return "";
    return std::to_string(differing) + " of " + std::to_string(wanted.size()) + " bytes differ, by up to " +
           std::to_string(largest);
}

std::string decimal(double value, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

std::string sizeText(int width, int height) { return std::to_string(width) + " x " + std::to_string(height); }

}  // namespace quorvane::bench
