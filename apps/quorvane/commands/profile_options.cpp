#include "apps/quorvane/commands/profile_options.h"

#include <algorithm>
#include <cstdio>

#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "quorvane/host/ParallaxView.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/pending_output.h"

namespace quorvane::app {
namespace {

constexpr char kFrom[] = "--profile", kTo[] = "--save-profile";

/// In a profile they are `parameters`.
constexpr char kParameters[] = "--set";

/// A program to run is nothing that a file from elsewhere may say.
constexpr char kProgram[] = "--depth-cmd";

bool isOneOf(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Whether a profile holds the option.
bool isInProfiles(const Option& option) {
    return !option.isFile() && option.name() != kParameters && option.name() != kProgram &&
           !isOneOf(notOfPictures(), option.name());
}

/// What an option is called in a profile.
std::string keyOf(const Option& option) { return option.name().substr(2); }

const Option* find(const CommandLine& line, const std::string& name) {
    for (const Option& option : line.options())
        if (!option.isArgument() && option.name() == name) return &option;
    return nullptr;
}

Option* findKey(CommandLine* line, const std::string& key) {
    for (Option& option : line->options())
        if (isInProfiles(option) && keyOf(option) == key) return &option;
    return nullptr;
}

/// The keys of all commands that take profiles.
std::vector<std::string> knownKeys(const CommandLine& line) {
    std::vector<std::string> keys;
    for (const auto& other : line.all()) {
        if (find(*other, kFrom) == nullptr) continue;
        for (const Option& option : other->options())
            if (isInProfiles(option)) keys.push_back(keyOf(option));
    }
    return keys;
}

/// Throws Error with a line that names all of `names` that are not `known`.
void refuseUnknown(const std::vector<std::string>& names, const std::vector<std::string>& known,
                   const char* where, const std::string& file) {
    std::vector<std::string> unknown;
    for (const std::string& name : names)
        if (!isOneOf(known, name)) unknown.push_back(where + ("." + name));
    if (unknown.empty()) return;
    std::string message = file + ": " + media::namesOf(unknown) + ": not known";
    const std::string first = unknown.front().substr(unknown.front().find('.') + 1);
    const std::string meant = unknown.size() == 1 ? nearestWord(first, known) : "";
    message += meant.empty() ? "; quorvane render --help lists what is" : "; did you mean " + meant + "?";
    throw Error(message);
}

template <typename Pairs>
std::vector<std::string> namesIn(const Pairs& pairs) {
    std::vector<std::string> names;
    names.reserve(pairs.size());
    for (const auto& [name, value] : pairs) names.push_back(name);
    return names;
}

void checkNames(const media::Profile& profile, const std::string& file, const CommandLine& line) {
    std::vector<std::string> parameters;
    for (const ParameterInfo& info : ParallaxView::parameters()) parameters.emplace_back(info.name);
    refuseUnknown(namesIn(profile.parameters), parameters, "parameters", file);
    refuseUnknown(namesIn(profile.options), knownKeys(line), "options", file);
    for (const auto& [name, value] : profile.parameters) {
        const Status status = ParallaxView::checkParameter(name, value);
        if (!status) throw Error(file + ": parameters." + status.message());
    }
}

bool hasGivenRival(const Option& option, const CommandLine& line) {
    for (const Option& other : line.options())
        if (other.given() && option.isRivalOf(other)) return true;
    return false;
}

/// Takes what the profile of file `name` says as if it had been given, but for what rivals an option that was
/// given. What other commands' options say is left. Throws Error with one line that names all keys that no
/// command knows, or the value that is not wanted.
void takeProfile(const media::Profile& profile, const std::string& name, CommandLine* line,
                 ViewOptions* view) {
    checkNames(profile, name, *line);
    std::vector<const Option*> taken;
    for (const auto& [key, value] : profile.options) {
        Option* const option = findKey(line, key);
        if (option == nullptr || hasGivenRival(*option, *line)) continue;
        for (const Option* other : taken)
            if (option->isExcludedBy(*other))
                throw Error(name + ": options." + keyOf(*other) + " and options." + key +
                            ": one of the two is wanted");
        try {
            option->take(media::textOf(value));
        } catch (const UsageError& error) {
            throw Error(name + ": options." + key + ": " + error.what());
        }
        taken.push_back(option);
    }
    takeProfileParameters(profile.parameters, view);
}

/// Notes which of the given options a profile does not hold, though the picture depends on them.
void noteInputs(CommandLine* line, const std::string& path) {
    const Option* const quiet = find(*line, "--quiet");
    if (quiet != nullptr && quiet->given()) return;
    std::string names;
    for (const Option& option : line->options())
        if (option.given() && !option.isArgument() && option.name() != kParameters && !isInProfiles(option) &&
            !isOneOf(notOfPictures(), option.name()))
            names += (names.empty() ? "" : ", ") + option.name();
    if (!names.empty())
        std::fprintf(stderr, "%s: does not hold %s; give it again with the profile\n",
                     printable(path).c_str(), names.c_str());
}

void saveAround(const std::string& path, CommandLine* line, const ViewOptions& view,
                const std::function<void()>& work) {
    if (path.empty()) return work();
    refuseStandardOutput({path});
    for (const Option& option : line->options())
        if (option.isFile() && option.given() && option.name() != kFrom && option.name() != kTo)
            refuseSameOutput(path, option.givenText(), "profile and " + option.name());
    PendingOutput output(path);
    output.fill(media::profileText(profileOf(*line, view)));
    work();
    throwIfCancelled();
    output.commit();
    noteInputs(line, path);
}

}  // namespace

const std::vector<std::string>& notOfPictures() {
    static const std::vector<std::string> names = {
        // Files that are written, and what kind of file stands where no extension says so.
        "--out", "--format", "--force", "--timings", kFrom, kTo,
        // Which photos are drawn, and when.
        "--null", "--jobs", "--resume", "--fail-fast", "--shard",
        // What is said, on the terminal and about the photo.
        "--verbose", "--quiet", "--stats", "--json", "--alt", "--title", "--exit-codes"};
    return names;
}

media::Profile profileOf(const CommandLine& line, const ViewOptions& view) {
    media::Profile profile;
    profile.parameters = parametersInForce(view);
    for (const Option& option : line.options()) {
        if (!isInProfiles(option) || !option.value()) continue;
        const auto excludes = [&option](const Option& other) {
            return other.given() && option.isExcludedBy(other);
        };
        if (std::any_of(line.options().begin(), line.options().end(), excludes)) continue;
        profile.options.emplace_back(keyOf(option), option.isFlag()
                                                        ? media::Profile::Value(*option.value() == "true")
                                                        : media::valueOf(*option.value()));
    }
    return profile;
}

void addProfileOption(CommandLine* line, ViewOptions* view) {
    const Option& from =
        line->parsed(
                kFrom, [](const std::string&) {},
                "take parameters and options from a profile, a .json file; what is given here wins over it")
            .called("FILE");
    line->beforeValues([=, &from] {
        if (from.given()) takeProfile(media::loadProfile(from.givenText()), from.givenText(), line, view);
    });
}

void addSaveProfileOption(CommandLine* line, const ViewOptions& view) {
    const Option& to = line->parsed(
                               kTo, [](const std::string&) {},
                               "also write all that decides the picture, but for the files, to a profile")
                           .called("FILE");
    line->around(
        [=, &view, &to](const std::function<void()>& work) { saveAround(to.givenText(), line, view, work); });
}

}  // namespace quorvane::app
