#ifndef QUORVANE_BENCH_REPORT_H
#define QUORVANE_BENCH_REPORT_H

#include <string>
#include <vector>

#include "frames.h"
#include "instructions.h"
#include "stage.h"
#include "uploads.h"

namespace quorvane::bench {

/// What a run was made on.
struct Machine {
    std::string processor;
    std::string compiler;
    std::string path;
    std::string peers;
    std::string date;
};

/// This settles the path in use, also for all processes that are forked later.
Machine thisMachine();

/// All figures of a run.
struct Report {
    Machine machine;
    std::vector<Result> stages;
    FrameShare share;
    Frames frames;
    std::vector<PixelCost> costs;

    // What is judged beside the stages.
    std::vector<Outcome> frame_outcomes;
    std::vector<Outcome> cost_outcomes;

    /// Judges frames and cost.
    void judge();

    /// Whether something was computed or drawn differently.
    bool wrong() const;
    std::vector<Outcome> allOutcomes() const;
};

/// Tables in Markdown, with columns aligned in the text itself.
void print(const Report& report);
void printStages(const Report& report);  ///< only the table of the stages
void print(const Machine& machine, const std::vector<InstructionCount>& counts);

void writeJson(const Report& report, const std::string& file);
void writeJson(const Machine& machine, const std::vector<InstructionCount>& counts, const std::string& file);

/// The cost of a pixel against the photo's size, as an SVG picture.
void writePlot(const std::vector<PixelCost>& costs, const std::string& path, const std::string& file);

}  // namespace quorvane::bench

#endif
