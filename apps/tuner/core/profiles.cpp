#include "apps/tuner/core/profiles.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "system/error.h"
#include "system/pending_output.h"

namespace quorvane::tuner {
namespace {

using media::Profile;
using Value = Profile::Value;

constexpr char kExtension[] = ".json";

std::string pairText(double x, double y) { return app::formatted("%.10g,%.10g", x, y); }

bool isSet(const Tuning& tuning, const char* name) { return tuning.parameters.count(name) > 0; }

/// Whether a parameter without a value of somebody's is chosen for each photo.
bool isLeftOpen(const Tuning& tuning, const std::string& name) {
    if (isSet(tuning, name.c_str())) return false;
    if (name == "guided_filter_rx" || name == "guided_filter_ry") return tuning.clean_edges;
    return name == "fov_scale" || (name == "rotate_z_trans" && tuning.pivot != Pivot::kTuned);
}

/// An option of the profile, and what becomes of it in a tuning. `put` returns false for another value.
struct OptionRow {
    const char* name;
    const char* wanted;
    bool (*put)(const std::string& text, Tuning* tuning);
};

template <size_t kCount>
bool putName(const char* const (&names)[kCount], const std::string& text, size_t* place) {
    const auto found = std::find(std::begin(names), std::end(names), text);
    *place = static_cast<size_t>(found - std::begin(names));
    return *place < kCount;
}

bool putWhole(const std::string& text, int least, int most, int* to) {
    double value = 0.0;
    if (!app::parseNumber(text, &value) || value < least || value > most || value != static_cast<int>(value))
        return false;
    *to = static_cast<int>(value);
    return true;
}

bool putPivot(const std::string& text, Tuning* tuning) {
    double x = 0.5, y = 0.5;
    Pivot pivot = Pivot::kPoint;
    if (text == "auto")
        pivot = Pivot::kAuto;
    else if (text == "off")
        pivot = Pivot::kTuned;
    else if (!app::parsePair(text, ',', &x, &y) || x < 0.0 || x > 1.0 || y < 0.0 || y > 1.0)
        return false;
    tuning->pivot = pivot;
    tuning->pivot_x = x;
    tuning->pivot_y = y;
    return true;
}

bool putFrame(const std::string& text, Tuning* tuning) {
    double part = 0.0;
    if (text == "auto") return true;
    if (!app::parseNumber(text, &part) || !ParallaxView::checkParameter("fov_scale", part)) return false;
    tuning->parameters["fov_scale"] = part;
    return true;
}

bool putSamples(const std::string& text, Tuning* tuning) {
    if (text == "auto") {
        tuning->samples = kAutoSamples;
        return true;
    }
    int samples = 0;
    const bool known = putWhole(text, 1, 8, &samples) && (samples & (samples - 1)) == 0;
    if (known) tuning->samples = samples;
    return known;
}

bool putInvert(const std::string& text, Tuning* tuning) {
    if (text == "yes" || text == "true") tuning->invert_depth = true;
    if (text == "no" || text == "false") tuning->invert_depth = false;
    if (text == "auto") tuning->invert_depth.reset();
    return text == "auto" || text == "yes" || text == "no" || text == "true" || text == "false";
}

bool putMotion(const std::string& text, Tuning* tuning) {
    try {
        app::parseMotion(text);
    } catch (const app::UsageError&) {
        return false;
    }
    tuning->motion = text;
    return true;
}

bool putAmount(const std::string& text, Tuning* tuning) {
    double amount = 0.0;
    if (!app::parseNumber(text, &amount) || amount < 0.0 || amount > 1.0) return false;
    tuning->amount = amount;
    return true;
}

constexpr OptionRow kOptions[] = {
    {"orientation", "0 to 8",
     [](const std::string& text, Tuning* t) { return putWhole(text, 0, 8, &t->orientation); }},
    {"pivot", "auto, off or X,Y", putPivot},
    {"frame", "auto or 0.05 to 1", putFrame},
    {"edges", "clean or soft",
     [](const std::string& text, Tuning* tuning) {
         tuning->clean_edges = text == "clean";
         return text == "clean" || text == "soft";
     }},
    {"grid", "auto, fine or coarse",
     [](const std::string& text, Tuning* tuning) {
         size_t place = 0;
         const bool known = putName(kGridNames, text, &place);
         if (known) tuning->grid = static_cast<Grid>(place);
         return known;
     }},
    {"samples", "auto, 1, 2, 4 or 8", putSamples},
    {"invert-depth", "yes, no or auto", putInvert},
    {"holes", "auto, fill or keep",
     [](const std::string& text, Tuning* tuning) {
         size_t place = 0;
         const bool known = putName(kHolesNames, text, &place);
         if (known) tuning->holes = static_cast<media::Holes>(place);
         return known;
     }},
    {"motion", "a motion's name or expression", putMotion},
    {"amount", "0 to 1", putAmount},
    {"frames", "1 to 99999",
     [](const std::string& text, Tuning* t) { return putWhole(text, 1, 99999, &t->frames); }},
    {"fps", "1 to 240", [](const std::string& text, Tuning* t) { return putWhole(text, 1, 240, &t->fps); }},
    {"size", "the longer side",
     [](const std::string& text, Tuning* t) { return putWhole(text, 1, 16384, &t->longest); }},
};

/// All but the parameters.
std::vector<std::pair<std::string, Value>> optionsOf(const Tuning& tuning) {
    std::vector<std::pair<std::string, Value>> options;
    const auto put = [&options](const char* name, Value value) {
        options.emplace_back(name, std::move(value));
    };
    const auto number = [&put](const char* name, int value) { put(name, static_cast<double>(value)); };
    number("orientation", tuning.orientation);
    put("pivot", tuning.pivot == Pivot::kAuto    ? std::string("auto")
                 : tuning.pivot == Pivot::kTuned ? std::string("off")
                                                 : pairText(tuning.pivot_x, tuning.pivot_y));
    put("frame", std::string("auto"));
    put("edges", std::string(tuning.clean_edges ? "clean" : "soft"));
    put("grid", std::string(kGridNames[static_cast<size_t>(tuning.grid)]));
    if (tuning.samples == kAutoSamples)
        put("samples", std::string("auto"));
    else
        number("samples", tuning.samples);
    put("invert-depth", std::string(!tuning.invert_depth ? "auto" : *tuning.invert_depth ? "yes" : "no"));
    put("holes", std::string(kHolesNames[static_cast<size_t>(tuning.holes)]));
    put("motion", tuning.motion);
    put("amount", tuning.amount);
    number("frames", tuning.frames);
    number("fps", tuning.fps);
    if (tuning.longest > 0) number("size", tuning.longest);
    for (const auto& [name, value] : tuning.others) options.emplace_back(name, value);
    return options;
}

}  // namespace

Profile profileOf(const Tuning& tuning) {
    Profile profile;
    const LibParam values = inForce(tuning, {});
    for (const Parameter& parameter : kParameters)
        if (!isLeftOpen(tuning, parameter.name))
            profile.parameters.emplace_back(parameter.name, shortest(parameter.of(values)));
    profile.options = optionsOf(tuning);
    return profile;
}

Profile fixedProfileOf(const Tuning& tuning, const LibParam& values) {
    Tuning fixed = tuning;
    for (const Parameter& parameter : kParameters)
        fixed.parameters[parameter.name] = shortest(parameter.of(values));
    return profileOf(fixed);
}

Tuning tuningOf(const Profile& profile, const std::string& name) {
    Tuning tuning;
    for (const auto& [option, value] : profile.options) {
        const auto* const row =
            std::find_if(std::begin(kOptions), std::end(kOptions),
                         [&key = option](const OptionRow& known) { return key == known.name; });
        const std::string text = media::textOf(value);
        if (row == std::end(kOptions))
            tuning.others.emplace_back(option, value);
        else if (!row->put(text, &tuning))
            throw Error(name + ": " + app::printable(option) + " is '" + app::printable(text) + "'; " +
                        row->wanted + " is wanted");
    }
    for (const auto& [parameter, value] : profile.parameters) {
        const Status status = ParallaxView::checkParameter(parameter, value);
        if (!status) throw Error(name + ": " + app::printable(status.message()));
        tuning.parameters[parameter] = value;
    }
    const LibParam set = tunedSet(tuning);
    // With the pivot off the distance is that of the set, by which a profile names it.
    if (tuning.pivot == Pivot::kTuned && isSet(tuning, "rotate_z_trans") &&
        static_cast<float>(tuning.parameters.at("rotate_z_trans")) == set.rotate_z_trans)
        tuning.parameters.erase("rotate_z_trans");
    // Parameters count before options that choose them.
    if (isSet(tuning, "rotate_z_trans")) {
        tuning.pivot = Pivot::kAuto;
        tuning.pivot_x = tuning.pivot_y = 0.5;
    }
    // A value of the tuned set is none of somebody's.
    for (const Parameter& parameter : kParameters) {
        const auto found = tuning.parameters.find(parameter.name);
        if (found == tuning.parameters.end()) continue;
        Tuning without = tuning;
        without.parameters.erase(parameter.name);
        const auto in_set = static_cast<float>(parameter.of(set));
        if (static_cast<float>(found->second) == in_set && !isLeftOpen(without, parameter.name))
            tuning.parameters.erase(found);
    }
    return tuning;
}

std::vector<std::string> NamedProfiles::names() const {
    std::vector<std::string> found;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder, none))
        if (entry.path().extension() == kExtension && isName(entry.path().stem().string()))
            found.push_back(entry.path().stem().string());
    std::sort(found.begin(), found.end());
    return found;
}

bool NamedProfiles::isName(const std::string& name) {
    constexpr size_t kLongest = 80;
    if (name.empty() || name.size() > kLongest || name[0] == '.' || name[0] == ' ' || name.back() == ' ')
        return false;
    if (app::printable(name) != name) return false;
    return std::all_of(name.begin(), name.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        return letter || byte >= 128 || std::string_view(" -_.()").find(c) != std::string_view::npos;
    });
}

std::string NamedProfiles::pathOf(const std::string& name) const {
    if (!isName(name))
        throw Error("'" + app::printable(name) +
                    "' cannot be a profile's name: letters, digits, blanks and -_.() can, 80 at most");
    return m_folder + "/" + name + kExtension;
}

void NamedProfiles::save(const std::string& name, const Tuning& tuning) const {
    const std::string path = pathOf(name);
    makeFolder(m_folder);
    PendingOutput file(path);
    file.fill(media::profileText(profileOf(tuning)));
    file.commit();
}

Tuning NamedProfiles::load(const std::string& name) const {
    const std::string path = pathOf(name);
    return tuningOf(media::loadProfile(path), path);
}

void NamedProfiles::remove(const std::string& name) const {
    std::error_code failed;
    if (!std::filesystem::remove(pathOf(name), failed) || failed)
        throw Error(pathOf(name) + ": cannot be removed" + (failed ? " (" + failed.message() + ")" : ""));
}

std::string settingsFolder() {
    for (const auto& [variable, below] : {std::pair{"XDG_CONFIG_HOME", ""}, std::pair{"HOME", "/.config"}})
        if (const char* const folder = std::getenv(variable); folder != nullptr && folder[0] == '/')
            return std::string(folder) + below + "/quorvane";
    throw Error("settings cannot be kept: neither XDG_CONFIG_HOME nor HOME names a folder");
}

void makeFolder(const std::string& path) {
    std::error_code failed;
    std::filesystem::create_directories(path, failed);
    if (failed) throw Error(path + ": cannot be made (" + failed.message() + ")");
}

}  // namespace quorvane::tuner
