#ifndef QUORVANE_APPS_COMMANDS_INSPECT_REPORT_H
#define QUORVANE_APPS_COMMANDS_INSPECT_REPORT_H

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "apps/quorvane/input/depth_source.h"
#include "quorvane/host/PicturePlan.h"
#include "sizes/sizes.h"

namespace quorvane::app {

/// The depth map of a report.
struct DepthReport {
    Size size;     ///< upright
    int bits = 8;  ///< of a sample as it is stored
    media::Polarity polarity;
    std::vector<media::Finding> findings;
    FitPlan plan;
    bool clean_edges = true;
    PicturePlan picture;
    PictureStretch stretch;
    double block_bytes = 0.0;  ///< working memory
};

/// What a photo's file holds, and what would be made of it.
struct Report {
    std::string name;
    uint64_t bytes = 0;
    media::Contents contents;
    Size photo;  ///< upright, as it would be shown
    DepthOrigin origin = DepthOrigin::kNone;
    std::string depth_file;  ///< of kGiven, kNeighbour and kModel
    std::string belief;      ///< of kModel
    std::optional<media::StereoPair> pair;
    std::vector<std::string> pair_remarks;
    std::optional<DepthReport> depth;
    std::string no_depth;  ///< why there is none, one line
};

/// Drivers differ in the largest texture that they take; the plan of a report is one for this.
constexpr int kReportedTexture = 16384;

/// Where the depth came from, in one or two words.
const char* wordFor(DepthOrigin origin);

/// What the doctor found, as a list of objects.
nlohmann::ordered_json findingsJson(const std::vector<media::Finding>& findings);

std::string reportText(const Report& report);
std::string reportJson(const Report& report);

}  // namespace quorvane::app

#endif
