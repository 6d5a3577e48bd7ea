#include "apps/quorvane/commands/output_guard.h"

#include <filesystem>
#include <system_error>

#include "apps/quorvane/terminal/usage_error.h"
#include "media/clip/clip_writer.h"
#include "system/error.h"
#include "system/pending_output.h"

namespace quorvane::app {

namespace fs = std::filesystem;

namespace {

/// The one name of a file, there or not, whatever links and dots lead to it.
fs::path realPlace(const std::string& path) {
    std::error_code ignored;
    return fs::weakly_canonical(fs::absolute(placeOf(path)), ignored);
}

}  // namespace

void refuseStandardOutput(const std::vector<std::string>& outputs) {
    for (const std::string& output : outputs)
        if (output == "-") throw UsageError("-: nothing is written to standard output; name a file");
}

const media::OutputFormat& parseOutput(const std::string& path) {
    refuseStandardOutput({path});
    try {
        return media::outputFormat(path);
    } catch (const Error& error) {
        throw UsageError(error.what());
    }
}

void refuseInputAsOutput(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs) {
    for (const std::string& input : inputs)
        for (const std::string& output : outputs) {
            std::error_code ignored;
            if (fs::equivalent(input, output, ignored))
                throw Error(output + ": is an input; write somewhere else");
        }
}

void refuseInputAsFrame(const std::vector<std::string>& inputs, const std::string& folder) {
    for (const std::string& input : inputs) {
        std::error_code ignored;
        const fs::path file = fs::canonical(input, ignored);
        if (media::isFrameName(file.filename().string()) &&
            fs::equivalent(file.parent_path(), folder, ignored))
            throw Error(folder + ": holds the input " + input + " among its frames; write somewhere else");
    }
}

void refuseSameOutput(const std::string& one, const std::string& other, const std::string& what) {
    if (one.empty() || other.empty()) return;
    if (realPlace(one) == realPlace(other)) throw UsageError(one + ": " + what + " are two files");
}

}  // namespace quorvane::app
