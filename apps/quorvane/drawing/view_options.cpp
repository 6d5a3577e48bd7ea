#include "apps/quorvane/drawing/view_options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <functional>

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "host/parameters.h"
#include "quorvane/host/ParallaxView.h"

namespace quorvane::app {

std::pair<std::string, double> parseSetting(const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos)
        throw UsageError("--set " + text + ": FIELD=VALUE is wanted, such as fov_scale=0.8");
    const std::string field = text.substr(0, equals);
    const std::string number = text.substr(equals + 1);
    const std::vector<ParameterInfo>& known = ParallaxView::parameters();
    const bool is_known = std::any_of(known.begin(), known.end(),
                                      [&field](const ParameterInfo& info) { return info.name == field; });
    double value = std::nan("");
    if (!parseNumber(number, &value) && is_known)
        throw UsageError("--set " + text + ": '" + number + "' is not a number");
    const Status status = ParallaxView::checkParameter(field, value);
    if (!status) throw UsageError("--set " + text + ": " + status.message());
    return {field, value};
}

std::optional<double> parseFrame(const std::string& text) {
    if (text == "auto") return {};
    double part = 0.0;
    if (parseNumber(text, &part) && ParallaxView::checkParameter("fov_scale", part).ok()) return part;
    const bool is_count = part > 1.0 && part == std::floor(part);
    throw UsageError("--frame " + text + ": auto or the visible part of each side, 0.05 to 1, is wanted" +
                     (is_count ? "; did you mean --frames " + text + "?" : ""));
}

namespace {

void takePivot(const std::string& text, ViewOptions* options) {
    const auto in_range = [](double value) { return value >= 0.0 && value <= 1.0; };
    if (text == "auto") {
        options->pivot = Pivot::kAuto;
    } else if (text == "off") {
        options->pivot = Pivot::kTuned;
    } else if (parsePair(text, ',', &options->pivot_x, &options->pivot_y) && in_range(options->pivot_x) &&
               in_range(options->pivot_y)) {
        options->pivot = Pivot::kPoint;
    } else {
        throw UsageError("--pivot " + text +
                         ": auto, off or X,Y is wanted, each 0 to 1 from the photo's left and top, such as "
                         "0.5,0.4");
    }
}

/// The number of fewest digits that the field holds as it holds its value: 0.6 for 0.6f.
double shortest(const Parameter& parameter, const LibParam& values) {
    if (parameter.real == nullptr) return parameter.of(values);
    std::array<char, 32> digits = {};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), values.*parameter.real);
    double number = 0.0;
    std::from_chars(digits.data(), written.ptr, number);
    return number;
}

void dropProfileSettings(ViewOptions* options, const std::function<bool(const std::string&)>& drops) {
    const auto end = options->settings.begin() + static_cast<std::ptrdiff_t>(options->profile_settings);
    const auto kept = std::remove_if(options->settings.begin(), end,
                                     [&](const auto& setting) { return drops(setting.first); });
    options->profile_settings -= static_cast<size_t>(end - kept);
    options->settings.erase(kept, end);
}

void takeOrientation(const std::string& text, ViewOptions* options) {
    const int orientation = parseWhole("--orientation", text, 0, 8);
    // Another set is another value of every parameter.
    if (orientation != options->orientation)
        dropProfileSettings(options, [](const std::string&) { return true; });
    options->orientation = orientation;
}

/// The user gave `option`, which decides `parameters`.
void decide(const std::string& option, const std::vector<std::string>& parameters, ViewOptions* options) {
    dropProfileSettings(options, [&](const std::string& name) {
        return std::find(parameters.begin(), parameters.end(), name) != parameters.end();
    });
    options->deciding.push_back({option, parameters});
}

}  // namespace

void takeProfileParameters(const std::vector<std::pair<std::string, double>>& parameters,
                           ViewOptions* options) {
    options->settings = parameters;
    options->profile_settings = parameters.size();
    options->deciding.clear();
}

std::vector<std::pair<std::string, double>> parametersInForce(const ViewOptions& options) {
    std::vector<std::string> kept;
    LibParam values = startingParameters(static_cast<uint32_t>(options.orientation), &kept);
    for (const auto& [name, value] : options.settings) {
        kept.push_back(name);
        for (const Parameter& parameter : kParameters)
            if (name == parameter.name) parameter.store(value, &values);
    }
    std::vector<std::string> chosen = {"fov_scale"};
    if (options.pivot != Pivot::kTuned) chosen.emplace_back("rotate_z_trans");
    if (options.clean_edges) chosen.insert(chosen.end(), {"guided_filter_rx", "guided_filter_ry"});
    const auto has = [](const std::vector<std::string>& names, const char* name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    std::vector<std::pair<std::string, double>> parameters;
    for (const Parameter& parameter : kParameters)
        if (has(kept, parameter.name) || !has(chosen, parameter.name))
            parameters.emplace_back(parameter.name, shortest(parameter, values));
    return parameters;
}

void addViewOptions(CommandLine* line, ViewOptions* options) {
    line->parsed(
            "--frame",
            [options](const std::string& text) {
                options->frame = parseFrame(text);
                decide("--frame " + text, {"fov_scale"}, options);
            },
            "how much of the photo's sides is seen, 0.05 to 1, or auto: as much as shows no border")
        .called("X")
        .offers({"auto"})
        .usually("auto");
    line->parsed(
            "--pivot",
            [options](const std::string& text) {
                takePivot(text, options);
                decide("--pivot " + text, {"rotate_z_trans"}, options);
            },
            "what stays in place: auto for the subject, what the photo shows at X,Y (0 to 1 from its left "
            "and "
            "top), or off for the set's own depth")
        .called("X,Y")
        .offers({"auto", "off"})
        .usually("auto");
    line->word(
            "--edges", {"clean", "soft"},
            [options](size_t i) {
                options->clean_edges = i == 0;
                if (options->clean_edges)
                    decide("--edges clean", {"guided_filter_rx", "guided_filter_ry"}, options);
            },
            "clean keeps near things whole where they meet far ones, soft smooths the depth map as it is")
        .usually("clean");
    line->word(
            "--grid", {"auto", "fine", "coarse"},
            [options](size_t i) {
                options->grid = std::array{kAutoGrid, kFineGrid, kCoarseGrid}[i];
            },
            "how closely silhouettes follow the photo: auto up to 400,000 triangles, fine up to 1,600,000, "
            "coarse "
            "as many as the depth map needs")
        .usually("auto");
    Option& samples =
        line->word(
                "--samples", {"auto", "1", "2", "4", "8"},
                [options](size_t i) {
                    options->samples = std::array{kAutoSamples, 1, 2, 4, 8}[i];
                },
                "for smooth silhouettes, how many samples a pixel; where the driver has none, and for auto "
                "where a still is drawn in software, the picture is drawn twice as large and averaged "
                "instead")
            .usually("auto");
    line->whole("--supersample", &options->supersample, 1, 4,
                "draw this many times as large, then average; above 1 without samples")
        .rivals(samples);
    Option& detail =
        line->word(
                "--detail", {"auto", "full"}, [options](size_t i) { options->whole_photo = i == 1; },
                "auto brings the photo to what the picture shows of it, so that "
                "fine textures stay quiet; full takes "
                "all of its pixels")
            .usually("auto");
    Option& renderer =
        line->word(
                "--renderer", {"auto", "gl", "software"},
                [options](size_t i) {
                    options->renderer = std::array{Renderer::kAuto, Renderer::kGl, Renderer::kSoftware}[i];
                },
                "gl draws with the graphics driver, software on the processor without one, auto with the "
                "driver "
                "unless that draws "
                "on the processor too")
            .usually("auto");
    options->of_renderer = &renderer;
    options->of_drawing = {&detail, &renderer};
    line->parsed(
            "--orientation", [options](const std::string& text) { takeOrientation(text, options); },
            "set of parameters by the device's orientation code: 4 and 7 take the first set, all others the "
            "second, which turns about a point behind the scene (0 to 8)")
        .called("N")
        .usually(std::to_string(options->orientation));
    std::vector<std::string> fields;
    for (const ParameterInfo& info : ParallaxView::parameters())
        fields.push_back(std::string(info.name) + "=");
    line->repeated(
            "--set", [options](const std::string& text) { options->settings.push_back(parseSetting(text)); },
            "change a parameter, whatever would be chosen for it; may be repeated")
        .called("FIELD=VALUE")
        .offers(fields);

    std::vector<std::pair<std::string, std::string>> rows;
    for (const ParameterInfo& info : ParallaxView::parameters())
        rows.emplace_back(info.name, formatted("%g to %g: %s", info.minimum, info.maximum, info.meaning));
    line->table("Parameters for --set:", std::move(rows));
}

void addTimingsOption(CommandLine* line, ViewOptions* options) {
    line->text("--timings", &options->timings,
               "write the renderer's timing lines to FILE; implies --renderer gl")
        .called("FILE")
        .rivals(*options->of_renderer);
}

std::optional<double> frameGiven(const ViewOptions& options) {
    std::optional<double> frame = options.frame;
    for (const auto& [name, value] : options.settings)
        if (name == "fov_scale") frame = value;
    return frame;
}

int supersampleInSoftware(const ViewOptions& options) {
    // Whether there is a driver shows only later; where it draws in software, more of the photo is read then.
    const bool by_samples = options.moves && options.renderer != Renderer::kGl;
    return options.supersample == 1 && options.samples == kAutoSamples && !by_samples ? 2
                                                                                      : options.supersample;
}

void refuseTwoWays(const ViewOptions& options) {
    if (options.supersample > 1 && options.samples > 1)
        throw UsageError(formatted("--supersample %d and --samples %d: one of the two is wanted",
                                   options.supersample, options.samples));
    if (options.renderer == Renderer::kSoftware && !options.timings.empty())
        throw UsageError("--timings has the lines of --renderer gl, and --renderer software was given");
    for (const auto& [option, parameters] : options.deciding)
        for (const auto& [name, value] : options.settings)
            if (std::find(parameters.begin(), parameters.end(), name) != parameters.end())
                throw UsageError(option + " and --set " + name +
                                 formatted("=%g: one of the two is wanted", value));
}

}  // namespace quorvane::app
