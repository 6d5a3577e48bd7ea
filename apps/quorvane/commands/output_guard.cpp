#include "apps/quorvane/commands/output_guard.h"

#include <filesystem>
#include <system_error>

#include "apps/quorvane/terminal/usage_error.h"
#include "media/clip/clip_writer.h"
#include "system/error.h"
#include "system/pending_folder.h"
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

media::OutputKind pngOrFolder(const std::string& path, const std::string& otherwise) {
    refuseStandardOutput({path});
    try {
        const media::OutputFormat& format = media::outputFormat(path);
        if (format.word == "png") return format.kind;
    } catch (const Error&) {  // for an extension that nothing is written in
    }
    throw UsageError(otherwise);
}

void requirePng(const std::string& path, const std::string& otherwise) {
    if (pngOrFolder(path, otherwise) != media::OutputKind::kStill) throw UsageError(otherwise);
}

void requirePlace(const std::string& path, bool is_folder, bool force, const std::string& replaced) {
    if (!is_folder) {
        const PendingOutput place(path);
        return;
    }
    try {
        const PendingFolder place(path, force);
    } catch (const FolderNotEmpty& error) {
        throw Error(error.what() + ("; --force replaces " + replaced + " in it"));
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
