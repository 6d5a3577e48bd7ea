#include "media/mesh/glb_file.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>

// Khronos, "glTF 2.0 Specification".

namespace quorvane::media {
namespace {

using Json = nlohmann::ordered_json;

// OpenGL's numbers, as glTF takes them.
constexpr int kFloat = 5126, kUnsignedInt = 5125, kArrayBuffer = 34962, kElementArrayBuffer = 34963,
              kLinear = 9729, kLinearMipmapLinear = 9987, kClampToEdge = 33071;

constexpr uint32_t kMagic = 0x46546c67, kVersion = 2, kJsonChunk = 0x4e4f534a, kBinaryChunk = 0x004e4942;

void add(uint32_t number, std::string* bytes) {
    for (int shift = 0; shift < 32; shift += 8) bytes->push_back(static_cast<char>(number >> shift & 255));
}

void add(float number, std::string* bytes) {
    uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    add(bits, bytes);
}

std::string padded(std::string bytes, char with) {
    bytes.resize((bytes.size() + 3) / 4 * 4, with);
    return bytes;
}

/// Parts of the binary chunk, each of which starts at a whole word.
struct Parts {
    std::string bytes;
    Json views = Json::array();

    int add(const std::string& part, int target) {
        Json view = {{"buffer", 0}, {"byteOffset", bytes.size()}, {"byteLength", part.size()}};
        if (target != 0) view["target"] = target;
        views.push_back(std::move(view));
        bytes += padded(part, '\0');
        return static_cast<int>(views.size()) - 1;
    }
};

std::string positionsOf(const PhotoMesh& mesh) {
    std::string bytes;
    bytes.reserve(mesh.positions.size() * 12);
    for (const auto& position : mesh.positions)
        for (const float number : position) add(number, &bytes);
    return bytes;
}

std::string placesInPhoto(const PhotoMesh& mesh) {
    std::string bytes;
    bytes.reserve(mesh.positions.size() * 8);
    for (int row = 0; row <= mesh.rows; ++row)
        for (int column = 0; column <= mesh.columns; ++column) {
            add(static_cast<float>(column) / static_cast<float>(mesh.columns), &bytes);
            add(static_cast<float>(row) / static_cast<float>(mesh.rows), &bytes);
        }
    return bytes;
}

/// Two triangles a cell, parted from its lower left to its upper right as the renderer parts it, front sides
/// against the clock.
std::string corners(const PhotoMesh& mesh) {
    std::string bytes;
    bytes.reserve(static_cast<size_t>(mesh.rows) * static_cast<size_t>(mesh.columns) * 24);
    const auto across = static_cast<uint32_t>(mesh.columns + 1);
    for (uint32_t row = 0; row < static_cast<uint32_t>(mesh.rows); ++row)
        for (uint32_t column = 0; column + 1 < across; ++column) {
            const uint32_t upper = row * across + column, lower = upper + across;
            for (const uint32_t corner : {upper, lower, upper + 1, upper + 1, lower, lower + 1})
                add(corner, &bytes);
        }
    return bytes;
}

}  // namespace

std::string glbFile(const PhotoMesh& mesh) {
    std::array<float, 3> least = mesh.positions.front(), most = least;
    for (const auto& position : mesh.positions)
        for (size_t axis = 0; axis < 3; ++axis) {
            least[axis] = std::min(least[axis], position[axis]);
            most[axis] = std::max(most[axis], position[axis]);
        }
    const auto vertices = mesh.positions.size();
    const auto indices = size_t{6} * static_cast<size_t>(mesh.rows) * static_cast<size_t>(mesh.columns);
    constexpr double kPi = 3.14159265358979323846;

    Parts parts;
    const int positions = parts.add(positionsOf(mesh), kArrayBuffer);
    const int places = parts.add(placesInPhoto(mesh), kArrayBuffer);
    const int triangles = parts.add(corners(mesh), kElementArrayBuffer);
    const int photo = parts.add(mesh.jpeg, 0);

    Json json;
    json["asset"] = {{"version", "2.0"}, {"generator", "quorvane"}};
    json["extensionsUsed"] = {"KHR_materials_unlit"};
    json["scene"] = 0;
    json["scenes"] = {{{"nodes", {0, 1}}}};
    json["nodes"] = {{{"name", "photo"}, {"mesh", 0}},
                     {{"name", "viewer"}, {"camera", 0}, {"translation", {0.0, 0.0, mesh.camera_distance}}}};
    json["cameras"] = {
        {{"type", "perspective"},
         {"perspective",
          {{"yfov", mesh.vertical_fov_deg * kPi / 180.0}, {"aspectRatio", mesh.aspect}, {"znear", 0.1}}}}};
    const Json unlit = {{"KHR_materials_unlit", Json::object()}};
    json["meshes"] = {
        {{"name", "photo"},
         {"primitives",
          {{{"attributes", {{"POSITION", 0}, {"TEXCOORD_0", 1}}}, {"indices", 2}, {"material", 0}}}}}};
    json["materials"] = {
        {{"name", "photo"},
         {"pbrMetallicRoughness",
          {{"baseColorTexture", {{"index", 0}}}, {"metallicFactor", 0.0}, {"roughnessFactor", 1.0}}},
         {"doubleSided", true},
         {"extensions", unlit}}};
    json["textures"] = {{{"sampler", 0}, {"source", 0}}};
    json["samplers"] = {{{"magFilter", kLinear},
                         {"minFilter", kLinearMipmapLinear},
                         {"wrapS", kClampToEdge},
                         {"wrapT", kClampToEdge}}};
    json["images"] = {{{"bufferView", photo}, {"mimeType", "image/jpeg"}}};
    json["accessors"] = {
        {{"bufferView", positions},
         {"componentType", kFloat},
         {"count", vertices},
         {"type", "VEC3"},
         {"min", least},
         {"max", most}},
        {{"bufferView", places}, {"componentType", kFloat}, {"count", vertices}, {"type", "VEC2"}},
        {{"bufferView", triangles}, {"componentType", kUnsignedInt}, {"count", indices}, {"type", "SCALAR"}}};
    json["bufferViews"] = parts.views;
    json["buffers"] = {{{"byteLength", parts.bytes.size()}}};

    const std::string text = padded(json.dump(), ' ');
    constexpr size_t kHeader = 12, kChunkHeader = 8;
    std::string file;
    for (const auto number :
         {kMagic, kVersion,
          static_cast<uint32_t>(kHeader + 2 * kChunkHeader + text.size() + parts.bytes.size()),
          static_cast<uint32_t>(text.size()), kJsonChunk})
        add(number, &file);
    file += text;
    add(static_cast<uint32_t>(parts.bytes.size()), &file);
    add(kBinaryChunk, &file);
    return file + parts.bytes;
}

}  // namespace quorvane::media
