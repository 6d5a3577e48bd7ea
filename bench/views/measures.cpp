#include "bench/views/measures.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace quorvane::bench {

double Error::decibels() const {
    if (samples == 0.0) return 0.0;
    return 10.0 * std::log10(255.0 * 255.0 / std::max(squares / samples, 1e-9));
}

void addError(const Picture& drawn, const Picture& truth, const Mask& mask, Error* error) {
    for (size_t i = 0; i < mask.samples.size(); ++i) {
        if (mask.samples[i] == 0) continue;
        for (size_t c = 0; c < 3; ++c) {
            const double off =
                static_cast<double>(drawn.samples[3 * i + c]) - static_cast<double>(truth.samples[3 * i + c]);
            error->squares += off * off;
        }
        error->samples += 3.0;
    }
}

Plane blurred(const Plane& plane, double sigma) {
    const int radius = static_cast<int>(std::ceil(3.5 * sigma));
    std::vector<double> weights;
    double sum = 0.0;
    for (int i = -radius; i <= radius; ++i) {
        weights.push_back(std::exp(-0.5 * i * i / (sigma * sigma)));
        sum += weights.back();
    }
    const auto pass = [&](const Plane& from, int step_x, int step_y) {
        Plane to(from.width, from.height);
        for (int y = 0; y < from.height; ++y)
            for (int x = 0; x < from.width; ++x) {
                double value = 0.0;
                size_t weight = 0;
                for (int i = -radius; i <= radius; ++i)
                    value += weights[weight++] *
                             static_cast<double>(from.at(std::clamp(x + i * step_x, 0, from.width - 1),
                                                         std::clamp(y + i * step_y, 0, from.height - 1)));
                to.at(x, y) = static_cast<float>(value / sum);
            }
        return to;
    };
    return pass(pass(plane, 1, 0), 0, 1);
}

double similarity(const Picture& drawn, const Picture& truth, const Mask& mask) {
    constexpr double kSigma = 1.5;
    constexpr double kC1 = 0.01 * 255 * 0.01 * 255, kC2 = 0.03 * 255 * 0.03 * 255;
    const auto luma = [](const Picture& picture) {
        Plane plane(picture.width, picture.height);
        for (size_t i = 0; i < plane.samples.size(); ++i)
            plane.samples[i] =
                static_cast<float>(0.299 * picture.samples[3 * i] + 0.587 * picture.samples[3 * i + 1] +
                                   0.114 * picture.samples[3 * i + 2]);
        return plane;
    };
    const auto product = [](const Plane& a, const Plane& b) {
        Plane plane(a.width, a.height);
        for (size_t i = 0; i < plane.samples.size(); ++i) plane.samples[i] = a.samples[i] * b.samples[i];
        return blurred(plane, kSigma);
    };
    const Plane a = luma(drawn), b = luma(truth);
    const Plane mean_a = blurred(a, kSigma), mean_b = blurred(b, kSigma);
    const Plane aa = product(a, a), bb = product(b, b), ab = product(a, b);
    double sum = 0.0, count = 0.0;
    for (size_t i = 0; i < mask.samples.size(); ++i) {
        if (mask.samples[i] == 0) continue;
        const double ma = static_cast<double>(mean_a.samples[i]), mb = static_cast<double>(mean_b.samples[i]);
        const double va = static_cast<double>(aa.samples[i]) - ma * ma;
        const double vb = static_cast<double>(bb.samples[i]) - mb * mb;
        const double vab = static_cast<double>(ab.samples[i]) - ma * mb;
        sum += (2 * ma * mb + kC1) * (2 * vab + kC2) / ((ma * ma + mb * mb + kC1) * (va + vb + kC2));
        count += 1.0;
    }
    return count > 0.0 ? sum / count : 0.0;
}

Mask grown(const Mask& mask, int radius) {
    const auto pass = [radius](const Mask& from, int step_x, int step_y) {
        Mask to(from.width, from.height);
        for (int y = 0; y < from.height; ++y)
            for (int x = 0; x < from.width; ++x)
                for (int i = -radius; i <= radius && to.at(x, y) == 0; ++i)
                    to.at(x, y) = from.at(std::clamp(x + i * step_x, 0, from.width - 1),
                                          std::clamp(y + i * step_y, 0, from.height - 1));
        return to;
    };
    return pass(pass(mask, 1, 0), 0, 1);
}

}  // namespace quorvane::bench
