#include "apps/quorvane/batch/result.h"

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>

#include "apps/quorvane/commands/inspect_report.h"

namespace quorvane::app {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

/// Of a file, or of a folder's files.
uint64_t bytesAt(const std::string& path) {
    std::error_code failed;
    if (!fs::is_directory(path, failed)) {
        const uint64_t bytes = fs::file_size(path, failed);
        return failed ? 0 : bytes;
    }
    uint64_t bytes = 0;
    for (fs::directory_iterator entry(path, failed); !failed && entry != fs::directory_iterator();
         entry.increment(failed)) {
        std::error_code ignored;
        if (entry->is_regular_file(ignored)) bytes += entry->file_size(ignored);
    }
    return bytes;
}

std::string textOf(const Json& json) { return json.dump(-1, ' ', true, Json::error_handler_t::replace); }

}  // namespace

PhotoOutcome outcomeOf(const Failure& failure) {
    // Usage that the photo makes wrong stays wrong.
    return {
        failure.sysexit == kSysexitTryAgain ? kSysexitTryAgain : kSysexitNever, failure.text, 0.0, {}, {}};
}

std::string outcomeText(const PhotoOutcome& outcome) {
    Json json = {{"exit", outcome.exit}};
    if (!outcome.error.empty()) json["error"] = outcome.error;
    json["seconds"] = std::round(outcome.seconds * 1000.0) / 1000.0;
    if (outcome.rendered.origin != DepthOrigin::kNone) {
        json["depth"] = {{"source", wordFor(outcome.rendered.origin)}};
        if (!outcome.rendered.depth_file.empty()) json["depth"]["file"] = outcome.rendered.depth_file;
        json["doctor"] = findingsJson(outcome.rendered.findings);
    }
    json["warnings"] = outcome.warnings;
    return textOf(json);
}

std::string resultLine(const PhotoResult& result) {
    const BatchPhoto& photo = *result.photo;
    Json json = {{"photo", photo.photo}};
    json["sha256"] = result.digest.empty() ? Json(nullptr) : Json(result.digest);
    json["output"] = photo.output;
    const bool is_there = result.skipped || exitOf(result.outcome) == 0;
    json["bytes"] = is_there ? Json(bytesAt(photo.output)) : Json(nullptr);
    if (result.skipped)
        json.update({{"exit", 0}, {"skipped", true}});
    else
        json.update(Json::parse(result.outcome));
    return textOf(json);
}

int exitOf(const std::string& outcome) { return Json::parse(outcome).value("exit", kSysexitNever); }

std::string errorOf(const std::string& outcome) { return Json::parse(outcome).value("error", ""); }

}  // namespace quorvane::app
