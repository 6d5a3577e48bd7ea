#include "media/depth/model_session.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>
#include <utility>

#include "media/depth/model_runtime.h"
#include "system/child_process.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using Clock = std::chrono::steady_clock;

// What a network may say of itself, and give back for a photo.
constexpr uint32_t kLongestHeader = 1 << 20;
constexpr size_t kMostTensors = 256;
constexpr size_t kMostSides = 8;
constexpr uint64_t kMostBytes = uint64_t{1} << 30;
constexpr size_t kLongestReason = 200;

constexpr char kPackage[] = "node_modules/onnxruntime-node";
// Below a folder of data.
constexpr char kOwnFolder[] = "quorvane/onnxruntime";

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

fs::path usersData() {
    if (const std::string data = variable("XDG_DATA_HOME"); !data.empty()) return data;
    const std::string home = variable("HOME");
    return home.empty() ? fs::path() : fs::path(home) / ".local/share";
}

/// Bytes of an element; 0 for other types.
uint64_t bytesOf(const std::string& type) {
    if (type == "float32") return 4;
    if (type == "float16") return 2;
    return type == "uint8" ? 1 : 0;
}

/// The answer is none that the runner gives.
class Nonsense {};

std::vector<TensorInfo> tensorsIn(const Json& header, const char* key) {
    const auto list = header.find(key);
    if (list == header.end() || !list->is_array() || list->size() > kMostTensors) throw Nonsense();
    std::vector<TensorInfo> tensors;
    for (const Json& item : *list) {
        if (!item.is_object() || !item.contains("name") || !item["name"].is_string() ||
            !item.contains("type") || !item["type"].is_string() || !item.contains("shape") ||
            !item["shape"].is_array() || item["shape"].size() > kMostSides)
            throw Nonsense();
        TensorInfo& tensor = tensors.emplace_back();
        tensor.name = item["name"].get<std::string>();
        tensor.type = item["type"].get<std::string>();
        // A free side has a name, or none.
        for (const Json& side : item["shape"])
            tensor.shape.push_back(side.is_number_unsigned() && side.get<uint64_t>() <= kMostBytes
                                       ? static_cast<int64_t>(side.get<uint64_t>())
                                       : -1);
    }
    return tensors;
}

/// The elements of a tensor without free sides.
uint64_t countOf(const TensorInfo& tensor) {
    uint64_t count = 1;
    for (const int64_t side : tensor.shape) {
        if (side < 0 || (side > 0 && count > kMostBytes / static_cast<uint64_t>(side))) throw Nonsense();
        count *= static_cast<uint64_t>(side);
    }
    return count;
}

/// The package that runs models. Throws Error.
std::string findPackage() {
    std::string looked;
    for (const RuntimePlace& place : runtimePlaces()) {
        if (place.holds_it) return (fs::path(place.folder) / kPackage).string();
        if (!place.folder.empty()) looked += (looked.empty() ? "" : ", ") + place.folder;
    }
    throw Error("--depth-model: ONNX Runtime is not there (looked in " + looked + "); " + runtimeCommand() +
                " installs it");
}

std::unique_ptr<ChildProcess> started(const std::string& package, const Connection& connection) {
    ChildFiles files;
    files.input = connection.there.number();
    try {
        return std::make_unique<ChildProcess>(std::vector<std::string>{"node", "-e", kModelRunner, package},
                                              files);
    } catch (const StartError& error) {
        throw Error(std::string("--depth-model: ") + error.what() + "; " + runtimeCommand() + " installs it");
    }
}

}  // namespace

std::vector<RuntimePlace> runtimePlaces() {
    std::vector<RuntimePlace> places;
    const auto add = [&places](const char* what, const fs::path& folder) {
        std::error_code ignored;
        const bool holds_it = !folder.empty() && fs::is_directory(folder / kPackage, ignored);
        places.push_back({what, folder.string(), holds_it});
    };
    // Who names a folder means that one.
    if (const std::string named = variable("QUORVANE_ONNXRUNTIME"); !named.empty()) {
        add("QUORVANE_ONNXRUNTIME", named);
        return places;
    }
    const fs::path data = usersData();
    add("the user's data", data.empty() ? data : data / kOwnFolder);
    std::error_code ignored;
    const fs::path programs = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    const bool installed = programs.filename() == "bin";
    add("the installation", installed ? programs.parent_path() / "share" / kOwnFolder : fs::path());
    add("the source tree", kSourceRuntime);
    return places;
}

std::string runtimeCommand() {
    std::error_code ignored;
    const fs::path setup = fs::path(kSourceTree) / "scripts/setup";
    if (fs::exists(setup, ignored)) return setup.string() + " model";
    const fs::path data = usersData();
    return "apt-get install nodejs npm && npm install --ignore-scripts --prefix " +
           (data.empty() ? fs::path(".") : data / kOwnFolder).string() + " onnxruntime-node@" +
           kRuntimeVersion;
}

class ModelSession::Process {
    // Its return type has to be known before it is used.
    /// What `work` returns. Ends the process where its answer makes no sense.
    template <typename Work>
    auto understood(Work work) {
        try {
            return work();
        } catch (const Nonsense&) {
            m_child->kill();
            throw Error(m_name + ": its process gave no sense; the model is damaged, or made to do harm");
        }
    }

  public:
    Process(const std::string& path, std::string name, const ModelLimits& limits)
        : m_name(std::move(name)),
          m_limits(limits),
          m_connection(connection()),
          m_child(started(findPackage(), m_connection)) {
        m_connection.there.close();
        m_child->limitMemory(limits.memory);
        const Json header = ask({{"load", fs::absolute(path).string()}}, {});
        inputs = understood([&] { return tensorsIn(header, "inputs"); });
        outputs = understood([&] { return tensorsIn(header, "outputs"); });
    }

    std::vector<Tensor> run(const Tensor& input) {
        const Json header = ask({{"name", input.info.name},
                                 {"type", input.info.type},
                                 {"shape", input.info.shape},
                                 {"count", countOf(input.info)},
                                 {"bytes", input.bytes.size()}},
                                input.bytes);
        return understood([&] {
            std::vector<Tensor> results;
            uint64_t all = 0;
            for (TensorInfo& info : tensorsIn(header, "outputs")) {
                const uint64_t size = countOf(info) * bytesOf(info.type);
                all += size;
                if (all > kMostBytes)
                    throw Error(m_name + ": gives more than 1 GB for a photo; a depth map is far smaller");
                results.push_back({std::move(info), std::string(static_cast<size_t>(size), '\0')});
            }
            for (Tensor& result : results) receive(result.bytes.data(), result.bytes.size());
            return results;
        });
    }

    std::vector<TensorInfo> inputs, outputs;

  private:
    /// Sends a request and its data; returns the answer's header. Throws Error, also for a refusal.
    Json ask(const Json& request, const std::string& data) {
        m_end = Clock::now() + m_limits.answer;
        // Names come from the file and need not be UTF-8.
        const std::string text = request.dump(-1, ' ', true, Json::error_handler_t::replace);
        const auto length = static_cast<uint32_t>(text.size());
        const std::array<char, 4> prefix = {
            static_cast<char>(length & 0xFF), static_cast<char>(length >> 8 & 0xFF),
            static_cast<char>(length >> 16 & 0xFF), static_cast<char>(length >> 24)};
        if (!sendAll(m_connection.here, prefix.data(), prefix.size()) ||
            !sendAll(m_connection.here, text.data(), text.size()) ||
            !sendAll(m_connection.here, data.data(), data.size()))
            throw failure();
        return understood([&] {
            std::array<unsigned char, 4> size = {};
            receive(size.data(), size.size());
            const uint32_t count = static_cast<uint32_t>(size[0]) | static_cast<uint32_t>(size[1]) << 8 |
                                   static_cast<uint32_t>(size[2]) << 16 |
                                   static_cast<uint32_t>(size[3]) << 24;
            if (count > kLongestHeader) throw Nonsense();
            std::string answer(count, '\0');
            receive(answer.data(), answer.size());
            Json header = Json::parse(answer, nullptr, false);
            if (!header.is_object()) throw Nonsense();
            const auto error = header.find("error");
            if (error != header.end())
                throw Error(m_name + ": " + reason(error->is_string() ? error->get<std::string>() : ""));
            return header;
        });
    }

    void receive(void* bytes, size_t size) {
        if (!receiveAll(m_connection.here, bytes, size, m_end)) throw failure();
    }

    /// The runtime's first line, without the names of its own sources.
    std::string reason(const std::string& text) const {
        if (text.find("bad_alloc") != std::string::npos ||
            text.find("Failed to allocate memory") != std::string::npos)
            return tooLarge();
        std::string line = text.substr(0, text.find('\n'));
        if (line.size() > kLongestReason) line = line.substr(0, kLongestReason) + "...";
        return "ONNX Runtime refuses it: " + (line.empty() ? "for no stated reason" : line);
    }

    std::string tooLarge() const {
        return "takes more than the " + std::to_string(m_limits.memory >> 20) +
               " MB of memory that a model may use";
    }

    /// Why nothing more comes.
    Error failure() {
        const bool late = Clock::now() >= m_end;
        const std::optional<ExitStatus> ended = m_child->ended();
        m_child->kill();
        if (late)
            return Error(m_name + ": no answer within " + std::to_string(m_limits.answer.count()) +
                         " s; it is given up");
        if (ended && ended->signal() == 0)
            return Error(m_name + ": its process " + ended->words() + " (node, with " + kRunnersName + ")");
        return Error(m_name + ": its process crashed; the model is damaged, or " + tooLarge());
    }

    static constexpr const char* kRunnersName = "onnxruntime-node";
    const std::string m_name;
    const ModelLimits m_limits;
    Connection m_connection;
    const std::unique_ptr<ChildProcess> m_child;
    Clock::time_point m_end;
};

ModelSession::ModelSession(const std::string& path, std::string name, const ModelLimits& limits)
    : m_process(std::make_unique<Process>(path, std::move(name), limits)) {}

ModelSession::~ModelSession() = default;

const std::vector<TensorInfo>& ModelSession::inputs() const { return m_process->inputs; }
const std::vector<TensorInfo>& ModelSession::outputs() const { return m_process->outputs; }

std::vector<Tensor> ModelSession::run(const Tensor& input) { return m_process->run(input); }

}  // namespace quorvane::media
