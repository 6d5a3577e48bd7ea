#ifndef QUORVANE_MEDIA_DEPTH_MODEL_SESSION_H
#define QUORVANE_MEDIA_DEPTH_MODEL_SESSION_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quorvane::media {

/// An input or output of a network.
struct TensorInfo {
    std::string name;
    std::string type;            ///< of its elements: "float32", "float16", "uint8", or another
    std::vector<int64_t> shape;  ///< outermost first; -1 for a side that may have any length
};

/// One with its elements, as they lie in memory.
struct Tensor {
    TensorInfo info;  ///< no side is free
    std::string bytes;
};

/// What running a network may cost at most.
struct ModelLimits {
    uint64_t memory = uint64_t{8} << 30;  ///< bytes that it writes in
    std::chrono::seconds answer{300};     ///< for loading it, and for each photo
};

/// A folder where ONNX Runtime's package for Node is looked for, in its node_modules.
struct RuntimePlace {
    std::string what;    ///< such as "QUORVANE_ONNXRUNTIME" or "the user's data"
    std::string folder;  ///< empty where the place is not known here
    bool holds_it;
};

/// All of them, the first one that holds it is used: the folder that QUORVANE_ONNXRUNTIME in the environment
/// names, and no other then; else the user's data folder, the folder that this program was installed in, and
/// the source tree that it was built from.
std::vector<RuntimePlace> runtimePlaces();

/// The one command that installs what is missing, for people who build from source or who do not.
std::string runtimeCommand();

/// An ONNX network, loaded by ONNX Runtime in a process of Node's. It stays for many runs; the destructor
/// ends it.
class ModelSession {
  public:
    /// Loads the file `path`, which messages call `name`. Throws Error, and Cancelled after a signal.
    ModelSession(const std::string& path, std::string name, const ModelLimits& limits);
    ~ModelSession();
    ModelSession(const ModelSession&) = delete;
    ModelSession& operator=(const ModelSession&) = delete;

    const std::vector<TensorInfo>& inputs() const;
    const std::vector<TensorInfo>& outputs() const;

    /// What the network makes of its one input: the outputs that are of float32, float16 or uint8, with as
    /// many bytes as their shapes say. Throws Error, and Cancelled after a signal; it cannot be run again
    /// then unless the network itself refused the input.
    std::vector<Tensor> run(const Tensor& input);

  private:
    class Process;
    std::unique_ptr<Process> m_process;
};

}  // namespace quorvane::media

#endif
