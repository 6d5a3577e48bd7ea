#include "apps/tuner/core/tuning.h"

#include <array>
#include <cstdlib>
#include <tuple>

#include "apps/quorvane/terminal/text.h"
#include "host/parameters.h"

namespace quorvane::tuner {

const char* const kGridNames[3] = {"auto", "fine", "coarse"};
const char* const kHolesNames[3] = {"auto", "fill", "keep"};

bool Tuning::operator==(const Tuning& other) const {
    const auto all = [](const Tuning& one) {
        return std::tie(one.orientation, one.parameters, one.pivot, one.pivot_x, one.pivot_y, one.clean_edges,
                        one.grid, one.invert_depth, one.holes, one.samples, one.motion, one.amount,
                        one.frames, one.fps, one.longest, one.others);
    };
    return all(*this) == all(other);
}

app::ViewOptions viewOptions(const Tuning& tuning) {
    app::ViewOptions options;
    options.orientation = tuning.orientation;
    options.settings.assign(tuning.parameters.begin(), tuning.parameters.end());
    options.pivot = tuning.pivot;
    options.pivot_x = tuning.pivot_x;
    options.pivot_y = tuning.pivot_y;
    options.clean_edges = tuning.clean_edges;
    options.grid = std::array{kAutoGrid, kFineGrid, kCoarseGrid}[static_cast<size_t>(tuning.grid)];
    options.samples = tuning.samples;
    options.renderer = app::Renderer::kGl;
    return options;
}

void setParameter(const std::string& name, double value, Tuning* tuning) {
    if (!ParallaxView::checkParameter(name, value)) return;
    tuning->parameters[name] = value;
    if (name != "rotate_z_trans") return;
    tuning->pivot = Pivot::kAuto;
    tuning->pivot_x = tuning->pivot_y = 0.5;
}

void setPivot(Pivot pivot, double x, double y, Tuning* tuning) {
    tuning->pivot = pivot;
    tuning->pivot_x = pivot == Pivot::kPoint ? x : 0.5;
    tuning->pivot_y = pivot == Pivot::kPoint ? y : 0.5;
    tuning->parameters.erase("rotate_z_trans");
}

void forgetPlace(Tuning* tuning) {
    if (tuning->pivot == Pivot::kPoint) setPivot(Pivot::kAuto, 0.5, 0.5, tuning);
}

LibParam tunedSet(const Tuning& tuning) {
    return quorvane::tunedSet(static_cast<uint32_t>(tuning.orientation));
}

LibParam inForce(const Tuning& tuning, const std::vector<std::pair<std::string, double>>& planned) {
    LibParam values = tunedSet(tuning);
    for (const Parameter& parameter : kParameters) {
        for (const auto& [name, value] : planned)
            if (name == parameter.name) parameter.store(value, &values);
        const auto set = tuning.parameters.find(parameter.name);
        if (set != tuning.parameters.end()) parameter.store(set->second, &values);
    }
    return values;
}

bool decodesAlike(const Tuning& a, const Tuning& b) {
    return a.invert_depth == b.invert_depth && a.holes == b.holes;
}

double shortest(double value) {
    const auto single = static_cast<float>(value);
    for (int digits = 1; digits < 9; ++digits) {
        const double rounded = std::strtod(app::formatted("%.*g", digits, value).c_str(), nullptr);
        if (static_cast<float>(rounded) == single) return rounded;
    }
    return value;
}

}  // namespace quorvane::tuner
