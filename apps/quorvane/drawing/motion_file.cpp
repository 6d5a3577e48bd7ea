#include "apps/quorvane/drawing/motion_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>

#include "apps/quorvane/terminal/text.h"
#include "quorvane/host/PicturePlan.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

constexpr size_t kMostBytes = size_t{16} << 20;
constexpr size_t kMostBytesALine = 4096;
constexpr size_t kMostMoments = 200000;
constexpr double kMostSeconds = 3600.0;

constexpr double kSecondsBackAUnit = 0.8;
constexpr double kLeastSecondsBack = 0.4;
/// Less moves nothing by a pixel.
constexpr double kSamePlace = 1e-4;

struct Member {
    const char* name;
    double least, most;
    bool needed;
    double& (*of)(Moment&);
};

constexpr std::array<Member, 4> kMembers = {{
    {"t", -1e12, 1e12, true, [](Moment& moment) -> double& { return moment.t; }},
    {"x", -1.0, 1.0, true, [](Moment& moment) -> double& { return moment.at.x; }},
    {"y", -1.0, 1.0, true, [](Moment& moment) -> double& { return moment.at.y; }},
    {"zoom", kLeastZoom, kMostZoom, false, [](Moment& moment) -> double& { return moment.at.zoom; }},
}};

Moment parseMoment(const std::string& line, const std::string& place) {
    constexpr char kWanted[] = "a line such as {\"t\":0.5,\"x\":0.2,\"y\":-0.1} is wanted";
    const auto json = nlohmann::json::parse(line, nullptr, false);
    if (!json.is_object()) throw Error(place + kWanted);
    for (const auto& [name, value] : json.items())
        if (std::none_of(kMembers.begin(), kMembers.end(),
                         [&name = name](const Member& member) { return name == member.name; }))
            throw Error(place + "'" + name + "' is unknown; t, x, y and zoom are known");
    Moment moment;
    for (const Member& member : kMembers) {
        const auto found = json.find(member.name);
        if (found == json.end()) {
            if (member.needed) throw Error(place + member.name + " is missing; " + kWanted);
            continue;
        }
        const double value = found->is_number() ? found->get<double>() : std::nan("");
        if (!(value >= member.least && value <= member.most))
            throw Error(place + formatted("%s: a number from %g to %g is wanted", member.name, member.least,
                                          member.most));
        member.of(moment) = value;
    }
    return moment;
}

/// A smooth curve through values at rising times, which never leaves the range of two that follow each other:
/// Fritsch and Carlson's condition, with Brodlie's mean of the slopes (SIAM J. Numer. Anal. 17, 1980).
class Curve {
  public:
    /// With a `period` the values repeat after it: the first follows the last.
    Curve(const std::vector<double>& times, const std::vector<double>& values, double period)
        : m_times(times), m_values(values) {
        if (period > 0.0) {
            m_times.push_back(times.front() + period);
            m_values.push_back(values.front());
        }
        const size_t last = m_times.size() - 1;
        for (size_t i = 0; i <= last; ++i) {
            const bool is_end = i == 0 || i == last;
            if (last == 0)
                m_slopes.push_back(0.0);
            else if (!is_end)
                m_slopes.push_back(slopeBetween(i - 1, i));
            else if (period > 0.0)
                m_slopes.push_back(slopeBetween(last - 1, 0));
            else
                m_slopes.push_back(rise(i == 0 ? 0 : last - 1));
        }
    }

    double at(double time) const {
        const auto after = std::upper_bound(m_times.begin(), m_times.end(), time);
        if (after == m_times.begin()) return m_values.front();
        if (after == m_times.end()) return m_values.back();
        const auto i = static_cast<size_t>(after - m_times.begin()) - 1;
        const double step = m_times[i + 1] - m_times[i];
        const double part = (time - m_times[i]) / step, rest = 1.0 - part;
        return m_values[i] * (1.0 + 2.0 * part) * rest * rest + m_slopes[i] * step * part * rest * rest +
               m_values[i + 1] * (3.0 - 2.0 * part) * part * part -
               m_slopes[i + 1] * step * part * part * rest;
    }

  private:
    double length(size_t i) const { return m_times[i + 1] - m_times[i]; }
    double rise(size_t i) const { return (m_values[i + 1] - m_values[i]) / length(i); }

    /// Where stretch `i` ends and stretch `next` begins.
    double slopeBetween(size_t i, size_t next) const {
        const double before = rise(i), behind = rise(next);
        if (before * behind <= 0.0) return 0.0;
        const double weight = (length(i) + 2.0 * length(next)) / (3.0 * (length(i) + length(next)));
        return before * behind / (weight * behind + (1.0 - weight) * before);
    }

    std::vector<double> m_times, m_values, m_slopes;
};

/// `period` as in Curve; 0 ends at the last moment.
Motion motionOf(const std::vector<Moment>& moments, double period) {
    const auto curve = [&](double Position::*of) {
        std::vector<double> times, values;
        for (const Moment& moment : moments) {
            times.push_back(moment.t);
            values.push_back(moment.at.*of);
        }
        return std::make_shared<const Curve>(times, values, period);
    };
    const double begin = moments.front().t;
    Motion motion;
    motion.seconds = period > 0.0 ? period : moments.back().t - begin;
    motion.place = [x = curve(&Position::x), y = curve(&Position::y), zoom = curve(&Position::zoom), begin,
                    seconds = motion.seconds](double part) -> Position {
        const double time = begin + part * seconds;
        return {x->at(time), y->at(time), std::clamp(zoom->at(time), kLeastZoom, kMostZoom)};
    };
    return motion;
}

double distanceBetween(const Position& a, const Position& b) {
    return std::max(std::hypot(a.x - b.x, a.y - b.y), std::abs(a.zoom - b.zoom));
}

}  // namespace

std::vector<Moment> parseMoments(const std::string& text, const std::string& name) {
    std::vector<Moment> moments;
    size_t number = 0;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        const size_t length = end - begin;
        const std::string place = name + formatted(", line %zu: ", ++number);
        if (length > kMostBytesALine)
            throw Error(place + formatted("%zu bytes are the most", kMostBytesALine));
        const std::string line = text.substr(begin, length);
        begin = end + 1;
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        const Moment moment = parseMoment(line, place);
        if (!moments.empty()) {
            if (moment.t < moments.back().t)
                throw Error(place +
                            formatted("t is %g after %g; it has to rise", moment.t, moments.back().t));
            if (moment.t - moments.front().t > kMostSeconds)
                throw Error(place + formatted("a motion of %g seconds is the longest", kMostSeconds));
            if (moment.t == moments.back().t) moments.pop_back();
        }
        if (moments.size() == kMostMoments) throw Error(place + formatted("%zu are the most", kMostMoments));
        moments.push_back(moment);
    }
    if (moments.empty()) throw Error(name + ": no line such as {\"t\":0.5,\"x\":0.2,\"y\":-0.1} is in it");
    return moments;
}

std::vector<Moment> readMoments(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(kMostBytes + 1, '\0');
    if (!file.read(text.data(), static_cast<std::streamsize>(text.size())) && !file.eof())
        throwFor(path + ": cannot be read", errno);
    text.resize(static_cast<size_t>(file.gcount()));
    if (text.size() > kMostBytes) throw Error(path + formatted(": %zu MB are the most", kMostBytes >> 20));
    return parseMoments(text, path);
}

std::string lineOf(const Moment& moment) {
    nlohmann::ordered_json json = {{"t", moment.t}, {"x", moment.at.x}, {"y", moment.at.y}};
    if (moment.at.zoom != 1.0) json["zoom"] = moment.at.zoom;
    return json.dump() + "\n";
}

Motion motionThrough(const std::vector<Moment>& moments, const std::string& text) {
    const double way_back = distanceBetween(moments.back().at, moments.front().at);
    const double seconds = moments.back().t - moments.front().t;
    Motion motion;
    if (way_back > kSamePlace) {
        motion = motionOf(moments, seconds + std::max(kLeastSecondsBack, way_back * kSecondsBackAUnit));
        motion.one_way = std::make_shared<const Motion>(motionOf(moments, 0.0));
    } else {
        std::vector<Moment> loop = moments;
        if (loop.size() > 1) loop.pop_back();
        motion = motionOf(loop, seconds);
    }
    motion.text = text;
    return motion;
}

}  // namespace quorvane::app
