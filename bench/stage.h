#ifndef QUORVANE_BENCH_STAGE_H
#define QUORVANE_BENCH_STAGE_H

#include <functional>
#include <string>
#include <vector>

#include "content.h"
#include "timing.h"

namespace quorvane::bench {

/// What a contender is to the stage.
enum class Kind {
    path,     ///< ours
    limit,    ///< what the machine needs for touching the same bytes
    same,     ///< a packaged library, the same filter
    overlap,  ///< a packaged library, another low-pass filter whose windows overlap
    box,      ///< a packaged library, plain averages of the blocks
    nearby,   ///< a packaged library, something else that is often used for the purpose
};

const char* name(Kind kind);

struct Contender {
    std::string name;
    Kind kind;
    Timed timed;
    Work work;  ///< once, on the calling thread; null where it runs in a process of its own
};

Contender here(std::string name, Kind kind, Work work);

/// A bound for the time of one contender, relative to another.
struct Goal {
    std::string contender;
    enum { kTimesAsFastAs, kTimesTheTimeOf } comparison;
    double bound;         ///< at least for kTimesAsFastAs, at most for kTimesTheTimeOf
    std::string against;  ///< a kind, or how a name begins; the fastest contender of that kind or name counts
};

/// What became of a goal.
struct Outcome {
    std::string goal;
    double value = 0;
    bool met = false;
    std::string unmeasured;  ///< why not measured; empty where it was
    std::string remark;      ///< what else to know where it was not met; may be empty
};

/// One line of the table: a stage at one size.
struct Stage {
    std::string name;
    std::string size;
    double units = 1;  ///< source pixels, cells, ...: what the instructions are counted for
    std::string unit;
    std::vector<Contender> contenders;  ///< "reference" is the first
    std::vector<Goal> goals;
    std::string agreement = "same";  ///< how the outputs of the paths agree, where they do
    std::string wrong;               ///< what else was found
};

/// A stage with its figures, in the order of its contenders.
struct Result {
    Stage stage;
    std::vector<Figure> figures;
    std::vector<Outcome> outcomes;

    /// Of the reference's time to another contender's.
    double speedup(size_t contender) const { return figures[0].seconds / figures[contender].seconds; }
};

Result measure(Stage stage, int rounds);

Outcome atMost(std::string goal, double bound, double value);
Outcome notMeasured(std::string goal, std::string why);

/// Compares two planes. Empty when no byte differs by more than `tolerance` and at most one byte in `seldom`
/// differs at all; else one clause that says how they differ. With a `seldom` of 0 no byte may differ.
std::string difference(const Bytes& wanted, const Bytes& got, int tolerance = 0, size_t seldom = 0);

/// Printed as %.*f.
std::string decimal(double value, int digits);

std::string sizeText(int width, int height);

}  // namespace quorvane::bench

#endif
