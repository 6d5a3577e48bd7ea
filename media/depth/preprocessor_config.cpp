#include "media/depth/preprocessor_config.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "system/error.h"

namespace quorvane::media {
namespace {

using Json = nlohmann::json;

constexpr int kMostPixels = 4096;

/// Reads values of one file, and refuses what cannot be meant.
class Config {
  public:
    Config(std::string_view text, std::string name)
        : m_json(text.empty() ? Json::object() : Json::parse(text, nullptr, false)), m_name(std::move(name)) {
        if (!m_json.is_object()) throw Error(m_name + ": not JSON, or damaged");
    }

    bool has(const char* key) const { return m_json.contains(key) && !m_json[key].is_null(); }

    bool flag(const char* key, bool otherwise) const {
        if (!has(key)) return otherwise;
        if (!m_json[key].is_boolean()) refuse(key, "true or false");
        return m_json[key].get<bool>();
    }

    double number(const char* key, double otherwise) const {
        if (!has(key)) return otherwise;
        const double value = m_json[key].is_number() ? m_json[key].get<double>() : 0.0;
        if (!(value > 0.0 && value <= 1e6)) refuse(key, "a number above 0");
        return value;
    }

    std::array<double, 3> colours(const char* key, std::array<double, 3> otherwise, bool above_0) const {
        if (!has(key)) return otherwise;
        const Json& list = m_json[key];
        std::array<double, 3> values = {};
        if (!list.is_array() || list.size() != 3) refuse(key, "three numbers");
        for (size_t i = 0; i < 3; ++i) {
            values[i] = list[i].is_number() ? list[i].get<double>() : std::nan("");
            if (!(std::abs(values[i]) <= 1e6) || (above_0 && !(values[i] > 0.0)))
                refuse(key, above_0 ? "three numbers above 0" : "three numbers");
        }
        return values;
    }

    int pixels(const Json& value, const char* key) const {
        const double side = value.is_number() ? value.get<double>() : 0.0;
        if (!(side >= 1.0 && side <= kMostPixels)) refuse(key, "pixels from 1 to 4096");
        return static_cast<int>(side);
    }

    std::optional<Size> size(const char* key) const {
        if (!has(key)) return std::nullopt;
        const Json& value = m_json[key];
        if (!value.is_object()) return Size{pixels(value, key), pixels(value, key)};
        if (value.contains("height") && value.contains("width"))
            return Size{pixels(value["width"], key), pixels(value["height"], key)};
        if (!value.contains("shortest_edge")) refuse(key, "a width and a height, or a shortest_edge");
        return Size{pixels(value["shortest_edge"], key), pixels(value["shortest_edge"], key)};
    }

    bool sizeIsOfShorterSide(const char* key) const {
        return has(key) && m_json[key].is_object() && m_json[key].contains("shortest_edge");
    }

    std::string text(const char* key) const {
        return has(key) && m_json[key].is_string() ? m_json[key].get<std::string>() : "";
    }

  private:
    [[noreturn]] void refuse(const char* key, const char* wanted) const {
        throw Error(m_name + ": \"" + key + "\": wanted are " + wanted);
    }

    Json m_json;
    std::string m_name;
};

}  // namespace

PreprocessorConfig readPreprocessorConfig(std::string_view preprocessor, std::string_view config,
                                          const std::string& name) {
    PreprocessorConfig found;
    if (!preprocessor.empty()) {
        const Config file(preprocessor, name + "preprocessor_config.json");
        Normalisation normalisation;
        normalisation.scale = 1.0;
        if (file.flag("do_rescale", true)) normalisation.scale = file.number("rescale_factor", 1.0 / 255.0);
        if (file.flag("do_normalize", true)) {
            normalisation.mean = file.colours("image_mean", {0.485, 0.456, 0.406}, false);
            normalisation.deviation = file.colours("image_std", {0.229, 0.224, 0.225}, true);
        }
        found.normalisation = normalisation;
        if (file.flag("do_resize", true)) found.size = file.size("size");
        found.keep_aspect = file.flag("keep_aspect_ratio", file.sizeIsOfShorterSide("size"));
        if (file.has("ensure_multiple_of"))
            found.multiple =
                static_cast<int>(std::min(file.number("ensure_multiple_of", 1.0), double{kMostPixels}));
        // Numbers below 1 pixel mean none.
        if (found.multiple && *found.multiple < 1) found.multiple.reset();
    }
    const Config file(config, name + "config.json");
    const std::string kind = file.text("depth_estimation_type");
    if (kind == "metric" || kind == "relative") found.metric = kind == "metric";
    const std::string type = file.text("model_type");
    if (!found.metric && (type == "depth_pro" || type == "zoedepth")) found.metric = true;
    return found;
}

}  // namespace quorvane::media
