#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "report.h"

namespace quorvane::bench {
namespace {

constexpr double kWidth = 760, kHeight = 430;
constexpr double kLeft = 70, kRight = 640, kTop = 50, kBottom = 370;

/// A logarithmic axis from `first` to `last`, which lie at `from` and `to`.
struct Axis {
    double first, last, from, to;
    double at(double value) const {
        return from + (to - from) * std::log(value / first) / std::log(last / first);
    }
};

/// 1, 2 and 5 of every decade, from the last one below `least` to the first one above `most`.
std::vector<double> marksAround(double least, double most) {
    std::vector<double> marks;
    for (int decade = -6; decade <= 6; ++decade)
        for (const double step : {1.0, 2.0, 5.0}) {
            if (!marks.empty() && marks.back() > most) return marks;
            const double mark = step * std::pow(10, decade);
            if (mark <= least) marks.clear();
            marks.push_back(mark);
        }
    return marks;
}

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

std::string point(double x, double y) { return decimal(x, 1) + "," + decimal(y, 1); }

void writeText(std::ostream& out, double x, double y, const char* anchor, const std::string& text) {
    out << "<text x='" << decimal(x, 1) << "' y='" << decimal(y, 1) << "' text-anchor='" << anchor << "'>"
        << text << "</text>\n";
}

void writeLine(std::ostream& out, double x1, double y1, double x2, double y2) {
    out << "<path d='M" << point(x1, y1) << " L" << point(x2, y2) << "'/>\n";
}

void writeGrid(std::ostream& out, const Axis& x, const std::vector<double>& across, const Axis& y,
               const std::vector<double>& up) {
    out << "<g stroke='#ddd' fill='none'>\n";
    for (const double mark : up) writeLine(out, kLeft, y.at(mark), kRight, y.at(mark));
    for (const double mark : across) writeLine(out, x.at(mark), kTop, x.at(mark), kBottom);
    out << "</g>\n<g stroke='#222' fill='none'>\n";
    writeLine(out, kLeft, kBottom, kRight, kBottom);
    writeLine(out, kLeft, kTop, kLeft, kBottom);
    out << "</g>\n";
    for (const double mark : up) writeText(out, kLeft - 8, y.at(mark) + 4, "end", number(mark));
    for (const double mark : across) writeText(out, x.at(mark), kBottom + 20, "middle", number(mark));
}

}  // namespace

void writePlot(const std::vector<PixelCost>& costs, const std::string& path, const std::string& file) {
    if (costs.empty()) return;
    const auto each = [](const PixelCost& cost, double seconds) { return 1e9 * seconds / cost.pixels(); };
    double least = 1e9, most = 0;
    for (const PixelCost& cost : costs) {
        least = std::min(least, each(cost, std::min(cost.limit_seconds, cost.seconds)));
        most = std::max(most, each(cost, cost.reference_seconds));
    }
    const std::vector<double> up = marksAround(least, most);
    const Axis y = {up.front(), up.back(), kBottom, kTop};
    const Axis x = {0.07, 300, kLeft, kRight};

    std::ofstream out(file);
    out << "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 " << kWidth << " " << kHeight
        << "' font-family='sans-serif' font-size='13' fill='#222'>\n<rect width='100%' height='100%' "
           "fill='#fff'/>\n";
    writeGrid(out, x, {0.1, 0.3, 1, 3, 10, 30, 100, 300}, y, up);
    writeText(out, (kLeft + kRight) / 2, kBottom + 44, "middle", "photo, megapixels");
    writeText(
        out, kLeft - 50, kTop - 20, "start",
        "setTexture + setDepth, CPU nanoseconds a pixel: a level line is a cost that grows as the pixels do");

    struct Line {
        const char* colour;
        const char* style;
        std::string label;
        double PixelCost::*seconds;
    };
    const Line lines[] = {{"#d55e00", "", "reference", &PixelCost::reference_seconds},
                          {"#0072b2", "", path, &PixelCost::seconds},
                          {"#555", " stroke-dasharray='6 4'", "copy + read", &PixelCost::limit_seconds}};
    double label = 0;
    for (const Line& line : lines) {
        const auto level = [&](const PixelCost& cost) { return y.at(each(cost, cost.*line.seconds)); };
        out << "<g stroke='" << line.colour << "' fill='none' stroke-width='2'" << line.style
            << "><polyline points='";
        for (const PixelCost& cost : costs) out << point(x.at(cost.pixels() / 1e6), level(cost)) << " ";
        out << "'/></g>\n<g fill='" << line.colour << "'>\n";
        for (const PixelCost& cost : costs)
            out << "<circle cx='" << decimal(x.at(cost.pixels() / 1e6), 1) << "' cy='"
                << decimal(level(cost), 1) << "' r='3.5'/>\n";
        // From the top down, each clear of the one above.
        label = std::max(label + 16, level(costs.back()) + 4);
        writeText(out, kRight + 10, label, "start", line.label);
        out << "</g>\n";
    }
    out << "</svg>\n";
}

}  // namespace quorvane::bench
