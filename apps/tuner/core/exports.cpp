#include "apps/tuner/core/exports.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "apps/quorvane/terminal/text.h"
#include "apps/tuner/core/profiles.h"

namespace quorvane::tuner {

namespace fs = std::filesystem;

namespace {

// What stands alone for the value that is taken without the option.
bool isUsual(const std::string& name, const media::Profile::Value& value) {
    const media::Profile usual = profileOf({});
    return std::any_of(usual.options.begin(), usual.options.end(),
                       [&](const auto& option) { return option.first == name && option.second == value; });
}

std::string textOf(double value) {
    // Enough for any float; the shortest of them is given.
    return app::formatted("%.9g", shortest(value));
}

std::string images(const Exported& exported) {
    return shellWord(exported.photo) + (exported.depth.empty() ? "" : " " + shellWord(exported.depth));
}

/// An exported file's path, for a shell.
std::string inFolder(const Exported& exported, const char* name) {
    return shellWord((fs::path(exported.folder) / name).string());
}

std::string motionFile(const Exported& exported) {
    return exported.has_hand ? " --motion-file " + inFolder(exported, kHandFile) : "";
}

template <typename Line>
std::string forEachParameter(const Exported& exported, Line line) {
    std::string text;
    for (const Parameter& parameter : kParameters)
        text += line(parameter, textOf(parameter.of(exported.values)));
    return text;
}

/// The parameters that a view has to be told: those that somebody has set, and of the profile's others those
/// that are not as it begins with.
std::string javaParameters(const Tuning& tuning) {
    std::string text;
    const LibParam at_first;
    for (const auto& [name, value] : profileOf(tuning).parameters) {
        const bool differs =
            std::any_of(std::begin(kParameters), std::end(kParameters),
                        [&, key = name, wanted = value](const Parameter& parameter) {
                            return key == parameter.name && shortest(parameter.of(at_first)) != wanted;
                        });
        if (differs || tuning.parameters.count(name) > 0)
            text += "view.setParameter(\"" + name + "\", " + textOf(value) + ");\n";
    }
    return text;
}

std::string javaPivot(const Tuning& tuning) {
    if (tuning.parameters.count("rotate_z_trans") > 0) return "";
    switch (tuning.pivot) {
        case Pivot::kAuto: return "view.setPivotAuto();\n";
        case Pivot::kTuned: return "view.setPivotOff();\n";
        case Pivot::kPoint: break;
    }
    return app::formatted("view.setPivot(%.4g, %.4g);\n", tuning.pivot_x, tuning.pivot_y);
}

}  // namespace

std::string shellWord(const std::string& word) {
    const auto is_plain = [](char c) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        return letter || std::string_view("_-./,=:@%+").find(c) != std::string_view::npos;
    };
    if (!word.empty() && std::all_of(word.begin(), word.end(), is_plain)) return word;
    std::string quoted = "'";
    for (const char c : word) quoted += c == '\'' ? "'\\''" : std::string(1, c);
    return quoted + "'";
}

std::string commandLine(const Exported& exported) {
    std::string line = "quorvane render " + images(exported) + " -o clip.mp4";
    const media::Profile profile = profileOf(exported.tuning);
    for (const auto& [name, value] : profile.options) {
        const bool replaced = exported.has_hand && (name == "motion" || name == "amount");
        if (isUsual(name, value) || replaced) continue;
        const std::string text = shellWord(media::textOf(value));
        line += name == "invert-depth" ? " --" + name + "=" + text : " --" + name + " " + text;
    }
    for (const auto& [name, value] : exported.tuning.parameters)
        line += " --set " + name + "=" + textOf(value);
    return line + motionFile(exported);
}

std::string profileCommandLine(const Exported& exported) {
    return "quorvane render " + images(exported) + " --profile " + inFolder(exported, kProfileFile) +
           motionFile(exported) + " -o clip.mp4";
}

std::string renderScript(const Exported& exported) {
    Exported there = exported;
    for (std::string* image : {&there.photo, &there.depth})
        if (!image->empty()) *image = fs::proximate(*image, exported.folder).string();
    there.folder.clear();
    return "#!/bin/sh\ncd \"$(dirname \"$0\")\" || exit 1\n" + commandLine(there) + "\n";
}

std::string setpropLines(const Exported& exported) {
    return forEachParameter(exported, [](const Parameter& parameter, const std::string& value) {
        return std::string("adb shell setprop ") + parameter.property + " " + value + "\n";
    });
}

std::string cppSnippet(const Exported& exported) {
    const Tuning& tuning = exported.tuning;
    std::string text = tuning.clean_edges ? "#include <quorvane/host/CleanDepth.h>\n" : "";
    text += "#include <quorvane/host/ParallaxView.h>\n\n#include <memory>\n#include <utility>\n\n";
    text +=
        "/// A view of width x height pixels that shows photo and depth as they were tuned, in the context "
        "that is\n"
        "/// current. The photo has R, G, B, the depth map a byte a pixel, larger = nearer.\n"
        "quorvane::Status showTuned(const quorvane::Pixels& photo, const quorvane::Pixels& depth, int "
        "width,\n"
        "                           int height, std::unique_ptr<quorvane::ParallaxView>* view) {\n"
        "    const std::pair<const char*, double> tuned[] = {\n";
    text += forEachParameter(exported, [](const Parameter& parameter, const std::string& value) {
        return std::string("        {\"") + parameter.name + "\", " + value + "},\n";
    });
    text += app::formatted(
        "    };\n"
        "    quorvane::Status status = quorvane::ParallaxView::create(width, height, %d, view);\n"
        "    for (const auto& [name, value] : tuned)\n"
        "        if (status) status = (*view)->setParameter(name, value);\n"
        "    if (status) status = (*view)->setPhoto(photo);\n",
        tuning.orientation);
    if (tuning.clean_edges)
        text +=
            "    quorvane::CleanDepth clean;\n"
            "    if (status)\n"
            "        status = quorvane::cleanDepth(depth, photo.width, photo.height, "
            "quorvane::kLiveTriangles, &clean);\n"
            "    if (status) status = (*view)->setDepth({clean.samples, clean.width, clean.height});\n";
    else
        text += "    if (status) status = (*view)->setDepth(depth);\n";
    return text + "    return status;\n}\n";
}

std::string javaSnippet(const Exported& exported) {
    const Tuning& tuning = exported.tuning;
    std::string text = javaParameters(tuning) + javaPivot(tuning);
    if (!tuning.clean_edges) text += "view.setCleanEdges(false);\n";
    if (exported.has_hand)
        text +=
            std::string("view.setReplay(() -> view.getContext().getAssets().open(\"") + kHandFile + "\"));\n";
    else if (tuning.amount < 1.0)
        text += "// Only setProfile(" + std::string(kProfileFile) + ") knows how far the view swings.\n";
    if (tuning.invert_depth && *tuning.invert_depth)
        text +=
            "// The depth map's larger values are farther: Depth.of(...).largerIsFarther(), or setProfile.\n";
    return text;
}

}  // namespace quorvane::tuner
