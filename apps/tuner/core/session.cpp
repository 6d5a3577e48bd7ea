#include "apps/tuner/core/session.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "apps/tuner/core/profiles.h"
#include "media/picture/picture_file.h"
#include "system/error.h"
#include "system/pending_output.h"

namespace quorvane::tuner {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kVersion = 1;
constexpr size_t kPair = std::tuple_size_v<Pair>;
constexpr const char* kTunings[kPair] = {"a", "b"};
constexpr int kLongestSide = 65536;
constexpr size_t kMostBytes = size_t{4} << 20;

}  // namespace

void saveSession(const Session& session, const std::string& path) {
    makeFolder(std::filesystem::path(path).parent_path().string());
    Json json = {{"version", kVersion},
                 {"photo", session.photo},
                 {"depth", session.depth},
                 {"window", {session.window.width, session.window.height}}};
    for (size_t i = 0; i < kPair; ++i)
        json[kTunings[i]] = Json::parse(media::profileText(profileOf(session.tunings[i])));
    PendingOutput file(path);
    // A path need not be text.
    file.fill(json.dump(2, ' ', true, Json::error_handler_t::replace) + "\n");
    file.commit();
}

std::optional<Session> loadSession(const std::string& path, std::string* remark) {
    std::error_code unknown;
    const uintmax_t bytes = std::filesystem::file_size(path, unknown);
    if (unknown) return {};
    try {
        if (bytes > kMostBytes) throw Error("it is too large");
        std::ifstream file(path);
        const Json json = Json::parse(file);
        if (json.at("version") != kVersion) throw Error("it is of another version");
        Session session;
        session.photo = json.at("photo").get<std::string>();
        session.depth = json.at("depth").get<std::string>();
        const auto side = [&json](size_t i) {
            return std::clamp(json.at("window").at(i).get<int>(), 0, kLongestSide);
        };
        session.window = {side(0), side(1)};
        for (size_t i = 0; i < kPair; ++i)
            session.tunings[i] = tuningOf(media::readProfile(json.at(kTunings[i]).dump(), path), path);
        return session;
    } catch (const Json::exception&) {
        *remark = path + ": the last session cannot be read; starting without it";
    } catch (const Error& error) {
        *remark = path + ": starting without the last session (" + error.what() + ")";
    }
    return {};
}

}  // namespace quorvane::tuner
