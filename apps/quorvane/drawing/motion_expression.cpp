#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "quorvane/host/PicturePlan.h"

namespace quorvane::app {
namespace {

/// A clip shows no faster wave.
constexpr int kMostCycles = 99;
constexpr size_t kMostTerms = 16;

constexpr double kTurn = 2.0 * 3.14159265358979323846;

/// A number, or a wave of that height.
struct Term {
    double height = 0.0;
    double (*wave)(double) = nullptr;  ///< none: the number alone
    int cycles = 0;
    double ahead = 0.0;  ///< cycles

    double at(double part) const {
        return wave == nullptr ? height : height * wave(kTurn * (cycles * part + ahead));
    }
};

using Sum = std::vector<Term>;

double valueOf(const Sum& sum, double part) {
    double value = 0.0;
    for (const Term& term : sum) value += term.at(part);
    return value;
}

struct Axis {
    const char* name;
    double Position::*of;
    double least, most;
};

constexpr std::array<Axis, 3> kAxes = {{{"x", &Position::x, -1.0, 1.0},
                                        {"y", &Position::y, -1.0, 1.0},
                                        {"zoom", &Position::zoom, kLeastZoom, kMostZoom}}};

/// What each of the axes does; none where it stays.
using Axes = std::array<std::optional<Sum>, kAxes.size()>;

std::string knownMotions() {
    std::string names;
    for (const NamedMotion& motion : motions()) names += std::string(names.empty() ? "" : ", ") + motion.name;
    return names;
}

const NamedMotion* motionCalled(const std::string& name) {
    for (const NamedMotion& motion : motions())
        if (name == motion.name) return &motion;
    return nullptr;
}

/// Goes through an expression once.
class Parser {
  public:
    explicit Parser(const std::string& text) : m_text(text) {}

    Axes parse() {
        skipBlanks();
        do {
            const size_t begin = m_at;
            const std::string word = takeLetters();
            if (takeIf('=')) {
                m_has_axes = true;
                takeAxis(word, begin);
            } else {
                takeName(word, begin);
            }
            skipBlanks();
            if (takeIf('+')) {
                skipBlanks();
                if (m_at == m_text.size()) refuse(m_at, "something to join is wanted");
            }
        } while (m_at < m_text.size());
        return m_axes;
    }

    /// What was parsed, where it is names alone.
    std::vector<std::string> names() const { return m_has_axes ? std::vector<std::string>() : m_names; }

  private:
    [[noreturn]] void refuse(size_t at, const std::string& why) const {
        const std::string place = at < m_text.size()
                                      ? formatted("at '%.20s' (character %zu)", m_text.c_str() + at, at + 1)
                                      : std::string("at the end");
        throw UsageError("--motion " + m_text + ": " + place + ": " + why);
    }

    bool is(char wanted) const { return m_at < m_text.size() && m_text[m_at] == wanted; }

    bool takeIf(char wanted) {
        if (!is(wanted)) return false;
        ++m_at;
        return true;
    }

    void skipBlanks() {
        while (is(' ')) ++m_at;
    }

    std::string takeLetters() {
        const size_t begin = m_at;
        while (m_at < m_text.size() && std::islower(static_cast<unsigned char>(m_text[m_at])) != 0) ++m_at;
        return m_text.substr(begin, m_at - begin);
    }

    void takeName(const std::string& name, size_t begin) {
        const NamedMotion* const motion = motionCalled(name);
        if (motion == nullptr) {
            std::vector<std::string> names;
            for (const NamedMotion& known : motions()) names.emplace_back(known.name);
            const std::string near = nearestWord(name, names);
            refuse(begin, knownMotions() + " or an axis such as x=sin(1) is wanted" +
                              (near.empty() ? "" : "; did you mean " + near + "?"));
        }
        m_names.push_back(name);
        const Axes axes = Parser(motion->expression).parse();
        for (size_t i = 0; i < axes.size(); ++i)
            if (axes[i]) setAxis(i, *axes[i], begin);
    }

    void takeAxis(const std::string& name, size_t begin) {
        for (size_t i = 0; i < kAxes.size(); ++i)
            if (name == kAxes[i].name) {
                const Sum sum = takeSum();
                requireRange(kAxes[i], sum, begin);
                return setAxis(i, sum, begin);
            }
        refuse(begin, "x=, y= or zoom= is wanted");
    }

    void setAxis(size_t i, const Sum& sum, size_t begin) {
        if (m_axes[i]) refuse(begin, std::string(kAxes[i].name) + " is moved already");
        m_axes[i] = sum;
    }

    Sum takeSum() {
        Sum sum;
        skipBlanks();
        bool minus = takeIf('-');
        for (;;) {
            skipBlanks();
            if (sum.size() == kMostTerms) refuse(m_at, formatted("%zu terms are the most", kMostTerms));
            sum.push_back(takeTerm(minus));
            const size_t behind = m_at;
            skipBlanks();
            if (is('+') && joinsName()) {
                m_at = behind;
                return sum;
            }
            minus = is('-');
            if (!takeIf('-') && !takeIf('+')) return sum;
        }
    }

    /// Whether what follows a '+' moves something else: the name of a motion or an axis.
    bool joinsName() const {
        const size_t next = m_text.find_first_not_of(' ', m_at + 1);
        if (next == std::string::npos || std::islower(static_cast<unsigned char>(m_text[next])) == 0)
            return false;
        return m_text.compare(next, 4, "sin(") != 0 && m_text.compare(next, 4, "cos(") != 0;
    }

    Term takeTerm(bool minus) {
        Term term;
        const std::optional<double> number = takeNumber();
        term.height = number.value_or(1.0);
        takeIf('*');
        const size_t begin = m_at;
        if (m_text.compare(m_at, 4, "sin(") == 0) {
            term.wave = [](double angle) { return std::sin(angle); };
        } else if (m_text.compare(m_at, 4, "cos(") == 0) {
            term.wave = [](double angle) { return std::cos(angle); };
        } else if (!number || m_text[begin - (begin > 0 ? 1 : 0)] == '*') {
            refuse(begin, "a number, sin(CYCLES) or cos(CYCLES) is wanted");
        }
        if (minus) term.height = -term.height;
        if (term.wave == nullptr) return term;
        m_at += 4;
        takeWave(&term);
        return term;
    }

    void takeWave(Term* term) {
        skipBlanks();
        const size_t begin = m_at;
        const double cycles = takeSigned().value_or(NAN);
        if (!(std::abs(cycles) <= kMostCycles && cycles == std::floor(cycles)))
            refuse(begin, formatted("a whole number of cycles, -%d to %d, is wanted, so that the loop closes",
                                    kMostCycles, kMostCycles));
        term->cycles = static_cast<int>(cycles);
        skipBlanks();
        if (takeIf(',')) {
            skipBlanks();
            const size_t ahead = m_at;
            term->ahead = takeSigned().value_or(NAN);
            if (!(std::abs(term->ahead) <= 1.0)) refuse(ahead, "a part of a cycle, -1 to 1, is wanted");
            skipBlanks();
        }
        if (!takeIf(')')) refuse(m_at, "')' is wanted");
    }

    std::optional<double> takeSigned() {
        const bool minus = takeIf('-');
        const std::optional<double> number = takeNumber();
        return minus && number ? -*number : number;
    }

    std::optional<double> takeNumber() {
        size_t end = m_at;
        while (end < m_text.size() &&
               (std::isdigit(static_cast<unsigned char>(m_text[end])) != 0 || m_text[end] == '.'))
            ++end;
        if (end == m_at) return {};
        double number = 0.0;
        if (!parseNumber(m_text.substr(m_at, end - m_at), &number)) refuse(m_at, "a number is wanted");
        m_at = end;
        return number;
    }

    /// So close together that no wave hides a peak of a thousandth.
    void requireRange(const Axis& axis, const Sum& sum, size_t begin) const {
        constexpr int kSteps = 64 * kMostCycles;
        constexpr double kRounding = 1e-9;
        double least = valueOf(sum, 0.0), most = least;
        for (int step = 1; step < kSteps; ++step) {
            const double value = valueOf(sum, static_cast<double>(step) / kSteps);
            least = std::min(least, value);
            most = std::max(most, value);
        }
        if (least < axis.least - kRounding || most > axis.most + kRounding)
            refuse(begin, formatted("%s goes from %.3g to %.3g; %g to %g is wanted", axis.name, least, most,
                                    axis.least, axis.most));
    }

    const std::string m_text;
    size_t m_at = 0;
    Axes m_axes;
    std::vector<std::string> m_names;
    bool m_has_axes = false;
};

constexpr size_t kMostPoints = 64;

bool startsPoint(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    return first != std::string::npos && std::string("0123456789.-+").find(text[first]) != std::string::npos;
}

std::vector<Position> pointsIn(const std::string& text) {
    std::vector<Position> points;
    for (size_t at = text.find_first_not_of(' '); at != std::string::npos;) {
        const size_t end = std::min(text.find(' ', at), text.size());
        const std::string word = text.substr(at, end - at);
        const size_t last = word.find(',', word.find(',') + 1);
        Position point;
        const bool reads = parsePair(word.substr(0, last), ',', &point.x, &point.y) &&
                           (last == std::string::npos || parseNumber(word.substr(last + 1), &point.zoom));
        for (const Axis& axis : kAxes)
            if (!reads || point.*axis.of < axis.least || point.*axis.of > axis.most)
                throw UsageError(
                    "--motion " + text + ": " +
                    formatted("at '%.20s' (character %zu): X,Y or X,Y,ZOOM is wanted, -1 to 1 each, "
                              "and the zoom %g to %g",
                              word.c_str(), at + 1, kLeastZoom, kMostZoom));
        if (points.size() == kMostPoints)
            throw UsageError("--motion " + text + formatted(": %zu points are the most", kMostPoints));
        points.push_back(point);
        at = text.find_first_not_of(' ', end);
    }
    return points;
}

/// Goes from each point to the next in equal times, and stands still at each.
Motion motionOver(std::vector<Position> points, int legs) {
    Motion motion;
    motion.legs = legs;
    motion.place = [points = std::move(points), legs](double part) {
        const double way = std::clamp(part, 0.0, 1.0) * legs;
        const int leg = std::min(static_cast<int>(way), legs - 1);
        const Position& from = points[static_cast<size_t>(leg)];
        const Position& to = points[static_cast<size_t>(leg + 1) % points.size()];
        const double gone = softly(way - leg, 0.5);
        Position position;
        for (const Axis& axis : kAxes)
            position.*axis.of = from.*axis.of + gone * (to.*axis.of - from.*axis.of);
        return position;
    };
    return motion;
}

Motion parsePoints(const std::string& text) {
    const std::vector<Position> points = pointsIn(text);
    const auto count = static_cast<int>(points.size());
    Motion motion = motionOver(points, count);
    if (count > 1) motion.one_way = std::make_shared<const Motion>(motionOver(points, count - 1));
    motion.text = text;
    return motion;
}

}  // namespace

Motion parseMotion(const std::string& text) {
    if (startsPoint(text)) return parsePoints(text);
    Parser parser(text);
    Motion motion;
    motion.text = text;
    motion.place = [axes = parser.parse()](double part) {
        Position position;
        for (size_t i = 0; i < kAxes.size(); ++i)
            if (axes[i])
                position.*kAxes[i].of = std::clamp(valueOf(*axes[i], part), kAxes[i].least, kAxes[i].most);
        return position;
    };
    motion.names = parser.names();
    return motion;
}

}  // namespace quorvane::app
