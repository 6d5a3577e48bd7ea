#include "media/depth/depth_model.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <numeric>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "media/depth/depth_holes.h"
#include "media/depth/edge_agreement.h"
#include "media/depth/half_float.h"
#include "media/depth/onnx_file.h"
#include "media/depth/polarity.h"
#include "media/depth/preprocessor_config.h"
#include "media/picture/resample.h"
#include "system/descriptor.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

namespace fs = std::filesystem;

// Sides of what a network of free sizes is given, in pixels.
constexpr int kShorterSide = 518;
constexpr int kTrialSide = 252;
constexpr int kPatch = 14;
constexpr int kOtherMultiple = 32;
// Longer photos are squeezed: the cost grows with the square of the patches.
constexpr int kLongestAspect = 4;
// Fixed sides of a network for photos.
constexpr int64_t kLeastSide = 16;
constexpr int64_t kMostSide = 8192;

// Protocol buffers end there; larger networks keep their weights in other files.
constexpr uint64_t kLargestFile = uint64_t{2} << 30;
constexpr uint64_t kLargestConfig = 1 << 20;

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// The first of `words` that occurs in `text`, whatever its case; null where none does.
const char* wordIn(const std::string& text, std::initializer_list<const char*> words) {
    const std::string low = lowered(text);
    for (const char* word : words)
        if (low.find(word) != std::string::npos) return word;
    return nullptr;
}

// The files.

/// The .onnx file that `path` means. Throws Error.
std::string fileAt(const std::string& path) {
    std::error_code failed;
    if (fs::is_directory(path, failed)) {
        for (const char* name : {"model.onnx", "onnx/model.onnx"})
            if (fs::exists(fs::path(path) / name, failed)) return (fs::path(path) / name).string();
        std::vector<std::string> files;
        for (const fs::directory_entry& entry : fs::directory_iterator(path, failed))
            if (entry.path().extension() == ".onnx") files.push_back(entry.path().string());
        if (files.size() == 1) return files[0];
        throw Error(path + ": has neither model.onnx nor onnx/model.onnx in it" +
                    (files.empty() ? ", nor another .onnx file" : "; name one of its .onnx files"));
    }
    if (!fs::exists(path, failed)) throw Error(path + ": no such file");
    if (!fs::is_regular_file(path, failed)) throw Error(path + ": not a file");
    if (fs::file_size(path, failed) > kLargestFile)
        throw Error(path + ": larger than 2 GB, which no .onnx file is; large weights lie next to it");
    return path;
}

/// A small file's text; empty where there is none.
std::string textOf(const fs::path& path) {
    std::error_code failed;
    if (!fs::is_regular_file(path, failed)) return {};
    if (fs::file_size(path, failed) > kLargestConfig) throw Error(path.string() + ": larger than 1 MB");
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// What lies next to the .onnx file, or above its folder where that is called onnx.
PreprocessorConfig configBeside(const std::string& file) {
    fs::path folder = fs::absolute(file).parent_path();
    std::error_code failed;
    if (!fs::exists(folder / "preprocessor_config.json", failed) && folder.filename() == "onnx")
        folder = folder.parent_path();
    return readPreprocessorConfig(textOf(folder / "preprocessor_config.json"), textOf(folder / "config.json"),
                                  folder.string() + "/");
}

/// Looks into the .onnx file, and for the files that it names. Throws Error.
OnnxFile lookIntoFile(const std::string& path) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) throw Error(path + ": cannot be read (" + std::strerror(errno) + ")");
    const auto read = [&file](uint64_t offset, size_t count, char* to) {
        return pread(file.number(), to, count, static_cast<off_t>(offset)) == static_cast<ssize_t>(count);
    };
    std::error_code failed;
    OnnxFile found = lookIntoOnnx({fs::file_size(path, failed), read}, path);
    for (const std::string& name : found.data_files) {
        const fs::path data(name);
        const bool outside = data.is_absolute() || std::find(data.begin(), data.end(), "..") != data.end();
        if (outside) throw Error(path + ": names weights outside of its folder, " + name);
        if (!fs::is_regular_file(fs::path(path).parent_path() / data, failed))
            throw Error(path + ": its weights lie in " + name + " next to it, which is not there");
    }
    return found;
}

// What goes in.

std::string textOf(const std::vector<int64_t>& shape) {
    std::string text;
    for (const int64_t side : shape)
        text += (text.empty() ? "" : " x ") + (side < 0 ? std::string("?") : std::to_string(side));
    return text.empty() ? "a single number" : text;
}

/// How a network takes a photo.
struct Layout {
    TensorInfo input;
    bool channels_last = false;
    size_t height_axis = 0, width_axis = 0;

    bool freeHeight() const { return input.shape[height_axis] < 0; }
    bool freeWidth() const { return input.shape[width_axis] < 0; }
    bool fixed() const { return !freeHeight() && !freeWidth(); }
};

/// Throws Error for a network that does not take one photo in colour.
Layout layoutFor(const std::vector<TensorInfo>& inputs, const std::string& name) {
    const auto refused = [&name](const std::string& why) {
        return Error(name + ": " + why + "; a network for depth takes one photo in three channels");
    };
    if (inputs.size() != 1) {
        std::string names;
        for (const TensorInfo& input : inputs) names += (names.empty() ? "" : ", ") + input.name;
        throw refused("has " + std::to_string(inputs.size()) + " inputs" +
                      (names.empty() ? "" : " (" + names + ")"));
    }
    Layout layout = {inputs[0]};
    const std::string what =
        "its input " + layout.input.name + " is " + textOf(layout.input.shape) + " of " + layout.input.type;
    if (layout.input.type != "float32" && layout.input.type != "float16" && layout.input.type != "uint8")
        throw refused(what);
    std::vector<int64_t>& shape = layout.input.shape;
    const size_t rank = shape.size();
    if (rank < 3 || rank > 5) throw refused(what);
    layout.channels_last = shape[rank - 1] == 3 && shape[rank - 3] != 3;
    const size_t channels = layout.channels_last ? rank - 1 : rank - 3;
    layout.height_axis = layout.channels_last ? rank - 3 : rank - 2;
    layout.width_axis = layout.height_axis + 1;
    // A free number of channels is 3: exporters leave it open.
    if (shape[channels] != 3 && shape[channels] >= 0) throw refused(what);
    shape[channels] = 3;
    for (size_t axis = 0; axis < rank - 3; ++axis) {
        if (shape[axis] > 1) throw refused(what + ", several pictures at once");
        shape[axis] = 1;
    }
    for (const size_t axis : {layout.height_axis, layout.width_axis})
        if (shape[axis] >= 0 && (shape[axis] < kLeastSide || shape[axis] > kMostSide)) throw refused(what);
    return layout;
}

/// Photos are normalised in one of these ways, if they are.
struct Manner {
    Normalisation normalisation;
    const char* words;
};

constexpr Manner kImageNet = {{1.0 / 255.0, {0.485, 0.456, 0.406}, {0.229, 0.224, 0.225}},
                              "normalised as for ImageNet"};
constexpr Manner kHalves = {{1.0 / 255.0, {0.5, 0.5, 0.5}, {0.5, 0.5, 0.5}}, "as -1 to 1"};
constexpr Manner kUnit = {{}, "as 0 to 1"};
constexpr Manner kBytes = {{1.0, {0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}}, "as 0 to 255"};

/// The photo as the network takes it.
Tensor tensorOf(const RgbImage& photo, const Layout& layout, const Normalisation& normalisation) {
    Tensor tensor = {layout.input, {}};
    tensor.info.shape[layout.height_axis] = photo.height;
    tensor.info.shape[layout.width_axis] = photo.width;
    const size_t pixels = photo.samples.size() / 3;
    const bool bytes = layout.input.type == "uint8", halves = layout.input.type == "float16";
    const size_t element = bytes ? 1 : halves ? 2 : 4;
    tensor.bytes.resize(photo.samples.size() * element);
    for (size_t c = 0; c < 3; ++c) {
        std::array<float, 256> levels = {};
        for (size_t level = 0; level < levels.size(); ++level)
            levels[level] = static_cast<float>(
                (static_cast<double>(level) * normalisation.scale - normalisation.mean[c]) /
                normalisation.deviation[c]);
        std::array<uint16_t, 256> as_halves = {};
        std::transform(levels.begin(), levels.end(), as_halves.begin(), toHalf);
        for (size_t i = 0; i < pixels; ++i) {
            const uint8_t level = photo.samples[i * 3 + c];
            char* to = &tensor.bytes[(layout.channels_last ? i * 3 + c : c * pixels + i) * element];
            if (bytes)
                std::memcpy(to, &level, 1);
            else if (halves)
                std::memcpy(to, &as_halves[level], 2);
            else
                std::memcpy(to, &levels[level], 4);
        }
    }
    return tensor;
}

// What comes out.

struct Output {
    std::string name;
    Plane plane;
};

/// The sides that are not 1.
std::vector<int64_t> sidesOf(const TensorInfo& tensor) {
    std::vector<int64_t> sides;
    for (const int64_t side : tensor.shape)
        if (side != 1) sides.push_back(side);
    return sides;
}

Plane planeOf(const Tensor& tensor, const std::vector<int64_t>& sides) {
    Plane plane(static_cast<int>(sides[1]), static_cast<int>(sides[0]));
    const char* from = tensor.bytes.data();
    for (size_t i = 0; i < plane.samples.size(); ++i) {
        if (tensor.info.type == "float32") {
            std::memcpy(&plane.samples[i], from + i * 4, 4);
        } else if (tensor.info.type == "float16") {
            uint16_t half = 0;
            std::memcpy(&half, from + i * 2, 2);
            plane.samples[i] = fromHalf(half);
        } else {
            plane.samples[i] = static_cast<uint8_t>(from[i]);
        }
    }
    return plane;
}

/// The output that is the depth: a plane, not one that is called something else, one that is called depth
/// before one that is not, and the largest or first of several. Throws Error where there is none.
Output depthAmong(const std::vector<Tensor>& outputs, const std::string& name) {
    const Tensor* best = nullptr;
    std::pair<bool, int64_t> best_rank;
    std::string all;
    for (const Tensor& tensor : outputs) {
        all += (all.empty() ? "" : ", ") + tensor.info.name + " " + textOf(tensor.info.shape);
        const std::vector<int64_t> sides = sidesOf(tensor.info);
        if (sides.size() != 2 || std::min(sides[0], sides[1]) < kLeastSide / 2 ||
            std::max(sides[0], sides[1]) > kMostSide)
            continue;
        if (wordIn(tensor.info.name, {"conf", "uncert", "mask", "sky", "normal", "variance"}) != nullptr)
            continue;
        const std::pair rank(wordIn(tensor.info.name, {"depth", "disp"}) != nullptr, sides[0] * sides[1]);
        if (best != nullptr && rank <= best_rank) continue;
        best = &tensor;
        best_rank = rank;
    }
    if (best == nullptr)
        throw Error(name + ": gives no plane of depth (" + (all.empty() ? "nothing but other types" : all) +
                    ")");
    return {best->info.name, planeOf(*best, sidesOf(best->info))};
}

/// What a network's larger values mean.
struct Ends {
    bool larger_is_farther = false;
    bool known = false;
    std::string reason;
};

/// What the model says of it.
Ends statedEnds(const PreprocessorConfig& config, const OnnxFile& file, const std::string& path,
                const std::vector<TensorInfo>& outputs, const std::string& depth) {
    if (config.metric)
        return {*config.metric, true,
                *config.metric ? "config.json says metric" : "config.json says relative"};
    if (wordIn(depth, {"disp", "inverse"}) != nullptr) return {false, true, "its output's name"};
    // Networks that also say where the camera is, or how sure they are of a distance, measure distances.
    for (const TensorInfo& output : outputs)
        if (wordIn(output.name, {"focal", "intrinsic", "extrinsic", "pose", "normal", "conf", "sky"}) !=
            nullptr)
            return {true, true, "it gives " + output.name + " too"};
    std::string words = fs::path(path).filename().string();
    for (const auto& [key, value] : file.metadata) words += " " + key + " " + value;
    if (const char* word =
            wordIn(words, {"metric", "indoor", "outdoor", "zoe", "depth_pro", "depthpro", "unidepth"}))
        return {true, true, std::string("\"") + word + "\" in its name or notes"};
    return {false, false, "nothing says otherwise"};
}

/// The values as levels of 0 to 255, larger = nearer. The 0.5 % at either end are stray: they share the last
/// level, so that a single one does not flatten all the others. Throws Error where they are no numbers.
Plane levelsOf(Plane plane, bool larger_is_farther, const std::string& name) {
    if (larger_is_farther) {
        const auto positive = std::count_if(plane.samples.begin(), plane.samples.end(),
                                            [](float distance) { return distance > 0.0f; });
        // What a network calls distance may be one up to a shift; its reciprocal means nothing then.
        const bool distances =
            static_cast<double>(positive) >= 0.99 * static_cast<double>(plane.samples.size());
        for (float& value : plane.samples) value = distances ? 1.0f / std::max(value, 1e-6f) : -value;
    }
    GrayImage known(plane.width, plane.height);
    std::vector<float> sorted;
    sorted.reserve(plane.samples.size());
    for (size_t i = 0; i < plane.samples.size(); ++i) {
        known.samples[i] = std::isfinite(plane.samples[i]) ? 255 : 0;
        if (known.samples[i] != 0) sorted.push_back(plane.samples[i]);
    }
    if (sorted.size() * 2 < plane.samples.size())
        throw Error(name + ": what it gives are no numbers; try the model in float32");
    const size_t stray = sorted.size() / 200;
    const auto low = sorted.begin() + static_cast<std::ptrdiff_t>(stray);
    std::nth_element(sorted.begin(), low, sorted.end());
    const float least = *low;
    const auto high = sorted.end() - 1 - static_cast<std::ptrdiff_t>(stray);
    std::nth_element(sorted.begin(), high, sorted.end());
    const float most = *high;
    // Halved, so that no difference is too large for a float.
    const float range = most / 2 - least / 2;
    for (float& value : plane.samples)
        value = range > 0.0f ? std::clamp((value / 2 - least / 2) / range, 0.0f, 1.0f) * 255.0f : 0.0f;
    if (sorted.size() < plane.samples.size()) fillFromNeighbours(std::move(known), &plane);
    return plane;
}

Region wholeOf(int width, int height) {
    return {0.0, 0.0, static_cast<double>(width), static_cast<double>(height)};
}

/// Stretched to the photo's aspect without losing a pixel.
Plane ofAspect(Plane plane, const RgbImage& photo) {
    const double aspect = static_cast<double>(photo.width) / photo.height;
    const Size size = {
        std::max(plane.width, static_cast<int>(std::lround(std::min(plane.height * aspect, 16384.0)))),
        std::max(plane.height, static_cast<int>(std::lround(std::min(plane.width / aspect, 16384.0))))};
    if (size == Size{plane.width, plane.height}) return plane;
    return std::move(reduced(plane, wholeOf(plane.width, plane.height), size.width, size.height)[0]);
}

/// A photo's edges, to compare what a network makes of it in one way and another.
class Edges {
  public:
    explicit Edges(const RgbImage& photo)
        : m_size(gridFor(photo)),
          m_photo(
              edgeField(reduced(photo, wholeOf(photo.width, photo.height), m_size.width, m_size.height))) {}

    /// The correlation of the edges' directions, -1 to 1; 0 for a plane without edges.
    double agreementWith(const Plane& plane) const {
        const EdgeField field =
            edgeField(reduced(plane, wholeOf(plane.width, plane.height), m_size.width, m_size.height));
        const auto dot = [](const Plane& a, const Plane& b) {
            return std::inner_product(a.samples.begin(), a.samples.end(), b.samples.begin(), 0.0);
        };
        return dot(m_photo.cosine, field.cosine) + dot(m_photo.sine, field.sine);
    }

  private:
    static Size gridFor(const RgbImage& photo) {
        constexpr double kLongest = 160.0;
        const double scale = kLongest / std::max(photo.width, photo.height);
        return {std::max(1, static_cast<int>(photo.width * scale)),
                std::max(1, static_cast<int>(photo.height * scale))};
    }

    Size m_size;
    EdgeField m_photo;
};

}  // namespace

class DepthModel::Network {
  public:
    Network(const std::string& path, int size, const ModelLimits& limits)
        : m_path(fileAt(path)),
          m_asked(size),
          m_file(lookIntoFile(m_path)),
          m_config(configBeside(m_path)),
          m_session(m_path, m_path, limits),
          m_layout(layoutFor(m_session.inputs(), m_path)) {
        if (m_config.normalisation) m_manner = {*m_config.normalisation, "as preprocessor_config.json says"};
        if (m_layout.input.type == "uint8") m_manner = kBytes;
    }

    ModelEstimate estimate(const RgbImage& photo) {
        const Size size = sizeFor(photo, kShorterSide);
        std::optional<Output> output;
        if (!m_manner) output = chooseManner(photo, size);
        if (!output) output = run(resample(photo, size), *m_manner);

        ModelEstimate estimate;
        Ends ends = endsOf(*output);
        Plane levels = levelsOf(output->plane, ends.larger_is_farther, m_path);
        if (!ends.known) {
            // Of the files that do not say it, few measure distances: the photo has to be clear.
            constexpr double kClear = 0.85;
            const double farther = confidenceLargerIsFarther(photo, levels, {});
            estimate.polarity_confidence = farther >= kClear ? farther : 1.0 - farther;
            if (farther >= kClear) {
                ends = {true, true, "by the photo"};
                levels = levelsOf(std::move(output->plane), true, m_path);
            }
        }
        estimate.belief = belief(size, *output, levels, ends);
        estimate.depth.bits = 16;
        estimate.depth.plane = ofAspect(std::move(levels), photo);
        return estimate;
    }

  private:
    /// What the network is given of a photo.
    Size sizeFor(const RgbImage& photo, int shorter_side) const {
        int multiple =
            m_file.kernel_width == kPatch && m_file.kernel_height == kPatch ? kPatch : kOtherMultiple;
        if (m_config.multiple) multiple = *m_config.multiple;
        Size wanted = {shorter_side, shorter_side};
        if (m_config.size) wanted = *m_config.size;
        if (m_asked > 0) wanted = {m_asked, m_asked};
        if (m_config.keep_aspect || m_asked > 0) {
            const double aspect = std::clamp(static_cast<double>(photo.width) / photo.height,
                                             1.0 / kLongestAspect, double{kLongestAspect});
            const int side = std::min(wanted.width, wanted.height);
            wanted = {static_cast<int>(std::lround(side * std::max(1.0, aspect))),
                      static_cast<int>(std::lround(side * std::max(1.0, 1.0 / aspect)))};
        }
        const auto fitted = [multiple](int side) {
            return std::max(1, (side + multiple / 2) / multiple) * multiple;
        };
        return {m_layout.freeWidth() ? fitted(wanted.width)
                                     : static_cast<int>(m_layout.input.shape[m_layout.width_axis]),
                m_layout.freeHeight() ? fitted(wanted.height)
                                      : static_cast<int>(m_layout.input.shape[m_layout.height_axis])};
    }

    Ends endsOf(const Output& output) const {
        return statedEnds(m_config, m_file, m_path, m_session.outputs(), output.name);
    }

    Output run(const RgbImage& fitted, const Manner& manner) {
        return depthAmong(m_session.run(tensorOf(fitted, m_layout, manner.normalisation)), m_path);
    }

    /// Runs the network on the photo normalised in one way and another, small where it may be, and keeps the
    /// way that agrees best with the photo's edges. Returns what came out where that is of `size`.
    std::optional<Output> chooseManner(const RgbImage& photo, Size size) {
        const std::array<Manner, 3> manners = m_file.calculates_first
                                                  ? std::array<Manner, 3>{kUnit, kBytes, kImageNet}
                                                  : std::array<Manner, 3>{kImageNet, kHalves, kUnit};
        const Size trial = m_asked > 0 ? size : sizeFor(photo, kTrialSide);
        const RgbImage fitted = resample(photo, trial);
        const Edges edges(photo);
        std::optional<Output> best;
        double best_agreement = 0.0;
        // The rarer a way is, the more clearly it has to agree.
        constexpr std::array<double, 3> kBetter = {1.0, 1.02, 1.1};
        for (size_t i = 0; i < manners.size(); ++i) {
            Output output = run(fitted, manners[i]);
            const Ends ends = endsOf(output);
            const double agreement =
                edges.agreementWith(levelsOf(output.plane, ends.larger_is_farther, m_path));
            if (best && agreement <= kBetter[i] * best_agreement) continue;
            m_manner = manners[i];
            best = std::move(output);
            best_agreement = agreement;
        }
        return trial == size ? std::move(best) : std::nullopt;
    }

    std::string belief(Size size, const Output& output, const Plane& levels, const Ends& ends) const {
        std::string text = m_layout.input.name + " " + std::to_string(size.width) + " x " +
                           std::to_string(size.height) + " of " + m_layout.input.type +
                           (m_layout.fixed() ? ", its only size" : "") +
                           (m_layout.channels_last ? ", channels last" : "");
        if (m_file.kernel_width > 0)
            text += ", first kernel " + std::to_string(m_file.kernel_width) + " x " +
                    std::to_string(m_file.kernel_height);
        text += std::string("; ") + m_manner->words;
        text +=
            "; " + output.name + " " + std::to_string(levels.width) + " x " + std::to_string(levels.height);
        return text + ", larger = " + (ends.larger_is_farther ? "farther" : "nearer") + " (" + ends.reason +
               ")";
    }

    const std::string m_path;
    const int m_asked;
    const OnnxFile m_file;
    const PreprocessorConfig m_config;
    ModelSession m_session;
    const Layout m_layout;
    std::optional<Manner> m_manner;  ///< once it is known
};

DepthModel::DepthModel(const std::string& path, int size, const ModelLimits& limits)
    : m_network(std::make_unique<Network>(path, size, limits)) {}

DepthModel::~DepthModel() = default;

ModelEstimate DepthModel::estimate(const RgbImage& photo) { return m_network->estimate(photo); }

}  // namespace quorvane::media
