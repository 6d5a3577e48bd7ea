#include "media/clip/codec.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "system/error.h"

namespace quorvane::media {
namespace {

/// A number as few digits say it: "18", "20.8".
std::string shortest(double number) {
    std::ostringstream text;
    text << number;
    return text.str();
}

/// Puts `value` in the place of `mark`, where there is one.
void fill(std::string* words, std::string_view mark, const std::string& value) {
    const size_t at = words->find(mark);
    if (at != std::string::npos) words->replace(at, mark.size(), value);
}

}  // namespace

std::vector<std::string_view> wordsOf(std::string_view text) {
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const size_t end = std::min(text.find(' '), text.size());
        if (end > 0) words.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

std::string listOf(const std::vector<std::string_view>& words, std::string_view before_last) {
    std::string list;
    for (size_t i = 0; i < words.size(); ++i) {
        if (i > 0) list += i + 1 == words.size() ? before_last : ", ";
        list += words[i];
    }
    return list;
}

double ownQuality(const Codec& codec, double quality) {
    const double part = std::clamp(quality, 0.0, 100.0) / 100.0;
    const double own = codec.at_worst + part * (codec.at_best - codec.at_worst);
    return std::round(own * codec.fineness) / codec.fineness;
}

void check(const Codec& codec, const EncoderSettings& settings) {
    const std::string name(codec.name);
    if (settings.quality && !codec.isLossy())
        throw Error("--quality: " + name + " keeps every pixel as it is and has no quality");
    const std::vector<std::string_view> presets = wordsOf(codec.presets);
    if (settings.preset.empty() ||
        std::find(presets.begin(), presets.end(), settings.preset) != presets.end())
        return;
    const std::string asked = "--encoder-preset " + settings.preset + ": " + name + " has ";
    throw Error(asked + (presets.empty() ? "none" : listOf(presets) + ", from fast to small"));
}

std::string encoderWords(const Codec& codec, const EncoderSettings& settings) {
    std::string words(codec.words);
    fill(&words, "{quality}", shortest(ownQuality(codec, settings.quality.value_or(codec.usual_quality))));
    fill(&words, "{preset}", settings.preset.empty() ? std::string(codec.usual_preset) : settings.preset);
    return words;
}

}  // namespace quorvane::media
