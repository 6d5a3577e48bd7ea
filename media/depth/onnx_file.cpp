#include "media/depth/onnx_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <optional>
#include <set>

#include "system/error.h"

namespace quorvane::media {
namespace {

// More fields than the largest networks have; a file of more is none.
constexpr int kMostFields = 1'000'000;
// Names and values are short; longer ones are passed over.
constexpr uint64_t kLongestText = 512;
constexpr size_t kMostTexts = 64;
constexpr size_t kMostNames = 4096;

/// What lookIntoOnnx says of a file that is none.
class NoOnnx {};

struct Range {
    uint64_t from = 0, to = 0;
    uint64_t size() const { return to - from; }
};

/// A field of a message: a number, or a range of bytes, which is a text, a message or packed numbers.
struct Field {
    uint64_t number = 0;  ///< which field it is
    bool is_range = false;
    uint64_t value = 0;
    Range range;
};

/// Reads fields one after another, through a window that moves over the file.
class Reader {
  public:
    explicit Reader(const RandomBytes& file) : m_file(file) {}

    uint64_t size() const { return m_file.size; }

    /// Calls `visit(field)` for each field of a message until it returns false.
    template <typename Visit>
    void each(Range message, Visit visit) {
        for (uint64_t at = message.from; at < message.to;)
            if (!visit(field(&at, message.to))) return;
    }

    /// The numbers of a field of many, packed or not; at most `most`.
    void numbers(const Field& field, size_t most, std::vector<int64_t>* into) {
        if (!field.is_range) {
            if (into->size() < most) into->push_back(static_cast<int64_t>(field.value));
            return;
        }
        for (uint64_t at = field.range.from; at < field.range.to && into->size() < most;)
            into->push_back(static_cast<int64_t>(varint(&at, field.range.to)));
    }

    /// A text; empty for a long one.
    std::string text(const Field& field) {
        if (!field.is_range || field.range.size() > kLongestText) return {};
        std::string text(static_cast<size_t>(field.range.size()), '\0');
        copy(field.range.from, text.size(), text.data());
        return text;
    }

  private:
    Field field(uint64_t* at, uint64_t end) {
        if (++m_fields > kMostFields) throw NoOnnx();
        const uint64_t tag = varint(at, end);
        Field field;
        field.number = tag >> 3;
        uint64_t length = 0;
        switch (tag & 7) {
            case 0: field.value = varint(at, end); return field;
            case 1: length = 8; break;
            case 2: length = varint(at, end); break;
            case 5: length = 4; break;
            default: throw NoOnnx();
        }
        if (field.number == 0 || length > end - *at) throw NoOnnx();
        field.is_range = true;
        field.range = {*at, *at + length};
        *at += length;
        return field;
    }

    uint64_t varint(uint64_t* at, uint64_t end) {
        uint64_t value = 0;
        for (unsigned shift = 0; shift < 70; shift += 7) {
            if (*at >= end) throw NoOnnx();
            const uint8_t byte = byteAt((*at)++);
            if (shift < 64) value |= static_cast<uint64_t>(byte & 0x7F) << shift;
            if ((byte & 0x80) == 0) return value;
        }
        throw NoOnnx();
    }

    uint8_t byteAt(uint64_t offset) {
        if (offset < m_start || offset - m_start >= m_count) fill(offset);
        return static_cast<uint8_t>(m_window[static_cast<size_t>(offset - m_start)]);
    }

    void copy(uint64_t offset, size_t count, char* to) {
        for (size_t i = 0; i < count; ++i) to[i] = static_cast<char>(byteAt(offset + i));
    }

    void fill(uint64_t offset) {
        m_start = offset;
        m_count = static_cast<size_t>(std::min<uint64_t>(m_window.size(), m_file.size - offset));
        if (!m_file.read(m_start, m_count, m_window.data())) {
            m_count = 0;
            throw NoOnnx();
        }
    }

    const RandomBytes& m_file;
    std::array<char, 4096> m_window = {};
    uint64_t m_start = 0;
    size_t m_count = 0;
    int m_fields = 0;
};

/// A node of the graph as far as it is looked at.
struct Node {
    std::string operation;
    std::vector<std::string> inputs, outputs;  ///< the first of them
    std::vector<int64_t> kernel;               ///< its kernel_shape
};

Node readNode(Reader* file, Range range) {
    Node node;
    file->each(range, [&](const Field& field) {
        if (field.number == 1 && node.inputs.size() < kMostTexts) node.inputs.push_back(file->text(field));
        if (field.number == 2 && node.outputs.size() < kMostTexts) node.outputs.push_back(file->text(field));
        if (field.number == 4) node.operation = file->text(field);
        if (field.number == 5 && field.is_range) {
            bool of_kernel = false;
            file->each(field.range, [&](const Field& part) {
                if (part.number == 1) of_kernel = file->text(part) == "kernel_shape";
                if (part.number == 8 && of_kernel) file->numbers(part, 3, &node.kernel);
                return part.number != 1 || of_kernel;
            });
        }
        return true;
    });
    return node;
}

bool calculates(const std::string& operation) {
    static const std::set<std::string> kCalculations = {
        "Sub", "Div", "Mul", "Add", "BatchNormalization", "InstanceNormalization"};
    return kCalculations.count(operation) > 0;
}

bool isConvolution(const std::string& operation) {
    return operation == "Conv" || operation == "ConvInteger" || operation == "QLinearConv" ||
           operation == "FusedConv";
}

/// What a weight says of itself, but for its numbers.
struct Weight {
    std::string name;
    std::vector<int64_t> sides;
    std::string file;
};

Weight readWeight(Reader* file, Range range) {
    Weight weight;
    file->each(range, [&](const Field& field) {
        if (field.number == 1) file->numbers(field, 8, &weight.sides);
        if (field.number == 8) weight.name = file->text(field);
        if (field.number == 13 && field.is_range) {
            std::string key, value;
            bool value_is_long = false;
            file->each(field.range, [&](const Field& part) {
                if (part.number == 1) key = file->text(part);
                if (part.number == 2) value = file->text(part);
                value_is_long = value_is_long || part.range.size() > kLongestText;
                return true;
            });
            // Nothing that is to be read goes unseen.
            if (value_is_long) throw NoOnnx();
            if (key == "location") weight.file = value;
        }
        return true;
    });
    return weight;
}

/// Keeps a kernel's last two sides, where they are what a kernel can have.
void setKernel(const std::vector<int64_t>& sides, OnnxFile* found) {
    if (sides.size() < 2) return;
    const int64_t height = sides[sides.size() - 2], width = sides.back();
    if (height < 1 || width < 1 || height > 1024 || width > 1024) return;
    found->kernel_height = height;
    found->kernel_width = width;
}

/// The names of the graph's inputs, and of weights that may be listed with them.
std::map<std::string, bool> readInputs(Reader* file, Range graph) {
    std::map<std::string, bool> names;
    file->each(graph, [&](const Field& field) {
        if (field.number != 11 || !field.is_range || names.size() >= kMostNames) return true;
        file->each(field.range, [&](const Field& part) {
            if (part.number == 1) names.emplace(file->text(part), false);
            return part.number != 1;
        });
        return true;
    });
    return names;
}

void readGraph(Reader* file, Range graph, OnnxFile* found) {
    // What the input has become so far, and whether by calculation.
    std::map<std::string, bool> pixels = readInputs(file, graph);
    std::string kernel;  // the weight that is the first convolution's
    file->each(graph, [&](const Field& field) {
        if (field.number != 1 || !field.is_range) return true;
        const Node node = readNode(file, field.range);
        bool of_pixels = false, calculated = false;
        for (const std::string& input : node.inputs) {
            const auto pixel = pixels.find(input);
            if (pixel == pixels.end()) continue;
            of_pixels = true;
            calculated = calculated || pixel->second;
        }
        if (isConvolution(node.operation) && of_pixels) {
            found->calculates_first = calculated;
            setKernel(node.kernel, found);
            const size_t place = node.operation == "QLinearConv" ? 3 : 1;
            if (found->kernel_width == 0 && node.inputs.size() > place) kernel = node.inputs[place];
            return false;
        }
        // Sizes are no pixels.
        if (of_pixels && node.operation != "Shape" && pixels.size() < kMostNames)
            for (const std::string& output : node.outputs)
                pixels.emplace(output, calculated || calculates(node.operation));
        return true;
    });
    std::set<std::string> files;
    file->each(graph, [&](const Field& field) {
        if (field.number != 5 || !field.is_range) return true;
        const Weight weight = readWeight(file, field.range);
        if (!kernel.empty() && weight.name == kernel && weight.sides.size() == 4)
            setKernel(weight.sides, found);
        if (weight.file.empty() || !files.insert(weight.file).second) return true;
        if (files.size() > kMostNames) throw NoOnnx();
        found->data_files.push_back(weight.file);
        return true;
    });
}

/// What such a file is, where its first bytes tell; else why it is no ONNX file.
std::string otherKind(const RandomBytes& file) {
    std::string start(static_cast<size_t>(std::min<uint64_t>(file.size, 64)), '\0');
    if (start.empty()) return "the file is empty";
    if (!file.read(0, start.size(), start.data())) return "cannot be read";
    const auto begins = [&start](std::string_view text) { return start.compare(0, text.size(), text) == 0; };
    if (begins("version https://git-lfs"))
        return "a placeholder of Git LFS, not the model itself; git lfs pull fetches it";
    if (begins("PK")) return "a ZIP archive, as PyTorch's weights are; wanted is an .onnx file";
    if (start.size() > 8 && start.compare(4, 4, "ORTM") == 0)
        return "a model in ORT format; wanted is an .onnx file";
    if (begins("<")) return "a web page, not a model";
    if (start.size() > 9 && start[8] == '{') return "safetensors, weights alone; wanted is an .onnx file";
    return "not an .onnx file, or a damaged one";
}

}  // namespace

OnnxFile lookIntoOnnx(const RandomBytes& file, const std::string& name) {
    OnnxFile found;
    try {
        Reader reader(file);
        bool has_version = false;
        std::optional<Range> graph;
        reader.each({0, file.size}, [&](const Field& field) {
            if (field.number == 1 && !field.is_range) has_version = true;
            if (field.number == 7 && field.is_range) {
                // A runtime would read both as one.
                if (graph) throw NoOnnx();
                graph = field.range;
            }
            if (field.number == 14 && field.is_range && found.metadata.size() < kMostTexts) {
                auto& [key, value] = found.metadata.emplace_back();
                reader.each(field.range, [&, &key = key, &value = value](const Field& part) {
                    if (part.number == 1) key = reader.text(part);
                    if (part.number == 2) value = reader.text(part);
                    return true;
                });
            }
            return true;
        });
        if (!has_version || !graph) throw NoOnnx();
        readGraph(&reader, *graph, &found);
    } catch (const NoOnnx&) {
        throw Error(name + ": " + otherKind(file));
    }
    return found;
}

OnnxFile lookIntoOnnx(std::string_view bytes, const std::string& name) {
    return lookIntoOnnx({bytes.size(),
                         [bytes](uint64_t offset, size_t count, char* to) {
                             std::memcpy(to, bytes.data() + offset, count);
                             return true;
                         }},
                        name);
}

}  // namespace quorvane::media
