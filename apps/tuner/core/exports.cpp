#include "apps/tuner/core/exports.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "apps/quorvane/terminal/text.h"
#include "apps/tuner/core/profiles.h"

namespace quorvane::tuner {
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

/// Every parameter, or those that are set.
template <typename Line>
std::string forEachParameter(const Exported& exported, Line line) {
    std::string text;
    for (const Parameter& parameter : kParameters)
        text += line(parameter, textOf(parameter.of(exported.values)));
    return text;
}

std::string pivotCall(const Exported& exported, const char* point) {
    return app::formatted(point, exported.tuning.pivot_x, exported.tuning.pivot_y);
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
    if (exported.has_hand) line += std::string(" --motion-file ") + kHandFile;
    return line;
}

std::string profileCommandLine(const Exported& exported) {
    return "quorvane render " + images(exported) + " --profile " + kProfileFile +
           (exported.has_hand ? std::string(" --motion-file ") + kHandFile : "") + " -o clip.mp4";
}

std::string setpropLines(const Exported& exported) {
    return forEachParameter(exported, [](const Parameter& parameter, const std::string& value) {
        // As atof reads it whatever reads the property.
        const double number = std::strtod(value.c_str(), nullptr);
        const bool tiny = number != 0.0 && std::abs(number) < 1e-4;
        return std::string("adb shell setprop ") + parameter.property + " " +
               (tiny ? app::formatted("%.7f", number) : value) + "\n";
    });
}

std::string cppSnippet(const Exported& exported) {
    const Tuning& tuning = exported.tuning;
    std::string text = app::formatted("// quorvane::ParallaxView::create(width, height, %du, &view), then:\n",
                                      tuning.orientation);
    text += "const std::pair<const char*, double> tuned[] = {\n";
    text += forEachParameter(exported, [](const Parameter& parameter, const std::string& value) {
        return std::string("    {\"") + parameter.name + "\", " + value + "},\n";
    });
    return text +
           "};\n"
           "for (const auto& [name, value] : tuned)\n"
           "    if (status) status = view->setParameter(name, value);\n";
}

std::string javaSnippet(const Exported& exported) {
    const Tuning& tuning = exported.tuning;
    std::string text;
    for (const auto& [name, value] : tuning.parameters)
        text += "view.setParameter(\"" + name + "\", " + textOf(value) + ");\n";
    if (tuning.parameters.count("rotate_z_trans") > 0) return text;
    switch (tuning.pivot) {
        case Pivot::kAuto: return text + "view.setPivotAuto();\n";
        case Pivot::kTuned: return text + "view.setPivotOff();\n";
        case Pivot::kPoint: break;
    }
    return text + pivotCall(exported, "view.setPivot(%.4g, %.4g);\n");
}

}  // namespace quorvane::tuner
