#include "media/depth/edge_agreement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>

#include "media/picture/wide_vectors.h"

namespace quorvane::media {
namespace {

/// The samples that an output sample averages, beginning with `first`.
struct Taps {
    int first = 0;
    std::vector<float> weights;
};

/// How `count` samples cover the stretch from `start` of the length `length`: each averages its share of it,
/// at least the width of a pixel, which is linear interpolation. Beyond the image its last pixel goes on.
std::vector<Taps> tapsFor(int size, double start, double length, int count) {
    std::vector<Taps> all(static_cast<size_t>(count));
    const double half = std::max(1.0, length / count) / 2.0;
    for (int i = 0; i < count; ++i) {
        const double centre = start + length * (i + 0.5) / count;
        const auto pixel = [size](double at) {
            return static_cast<int>(std::clamp(std::floor(at), 0.0, size - 1.0));
        };
        const int first = pixel(centre - half), last = pixel(centre + half);
        Taps& taps = all[static_cast<size_t>(i)];
        taps.first = first;
        for (int x = first; x <= last; ++x) {
            const double from = x == first ? centre - half : x;
            const double to = x == last ? centre + half : x + 1.0;
            taps.weights.push_back(static_cast<float>((to - from) / (2.0 * half)));
        }
    }
    return all;
}

template <typename Sample, int kChannels>
std::vector<Plane> averaged(const Image<Sample, kChannels>& image, const Region& region, int width,
                            int height) {
    const std::vector<Taps> columns = tapsFor(image.width, region.left, region.width, width);
    const std::vector<Taps> rows = tapsFor(image.height, region.top, region.height, height);
    std::vector<Plane> planes(kChannels, Plane(width, height));
    std::vector<float> row(static_cast<size_t>(image.width) * kChannels);
    for (size_t y = 0; y < rows.size(); ++y) {
        std::fill(row.begin(), row.end(), 0.0f);
        for (size_t i = 0; i < rows[y].weights.size(); ++i) {
            const Sample* samples = image.row(rows[y].first + static_cast<int>(i));
            withWideVectors([&, weight = rows[y].weights[i], sums = row.data(), size = row.size()] {
                for (size_t x = 0; x < size; ++x) sums[x] += weight * static_cast<float>(samples[x]);
            });
        }
        for (size_t x = 0; x < columns.size(); ++x)
            for (size_t i = 0; i < columns[x].weights.size(); ++i)
                for (size_t c = 0; c < kChannels; ++c)
                    planes[c].samples[y * columns.size() + x] +=
                        columns[x].weights[i] *
                        row[(static_cast<size_t>(columns[x].first) + i) * kChannels + c];
    }
    return planes;
}

/// Binomial, 3 x 3; borders repeat.
void blur(Plane* plane) {
    const int w = plane->width, h = plane->height;
    Plane across(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            across.at(x, y) = 0.25f * plane->at(std::max(x - 1, 0), y) + 0.5f * plane->at(x, y) +
                              0.25f * plane->at(std::min(x + 1, w - 1), y);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            plane->at(x, y) = 0.25f * across.at(x, std::max(y - 1, 0)) + 0.5f * across.at(x, y) +
                              0.25f * across.at(x, std::min(y + 1, h - 1));
}

/// Every row twice, so that a row shifted around its end lies in one piece.
Plane twice(const Plane& plane) {
    Plane out(2 * plane.width, plane.height);
    for (int y = 0; y < plane.height; ++y)
        for (const int start : {0, plane.width}) std::copy_n(plane.row(y), plane.width, &out.at(start, y));
    return out;
}

/// In partial sums that need not wait for each other.
float dot(const float* a, const float* b, size_t count) {
    constexpr size_t kStep = 2 * kLanes;
    Lanes even = {}, odd = {};
    size_t i = 0;
    for (; i + kStep <= count; i += kStep) {
        addProducts(a + i, b + i, &even);
        addProducts(a + i + kLanes, b + i + kLanes, &odd);
    }
    even += odd;
    float sum = ((even[0] + even[1]) + (even[2] + even[3])) + ((even[4] + even[5]) + (even[6] + even[7]));
    for (; i < count; ++i) sum += a[i] * b[i];
    return sum;
}

}  // namespace

std::vector<Plane> reduced(const RgbImage& image, const Region& region, int width, int height) {
    return averaged(image, region, width, height);
}
std::vector<Plane> reduced(const Plane& image, const Region& region, int width, int height) {
    return averaged(image, region, width, height);
}

EdgeField edgeField(std::vector<Plane> channels) {
    const int w = channels[0].width, h = channels[0].height;
    EdgeField field = {Plane(w, h), Plane(w, h)};
    Plane energy(w, h);
    for (Plane& channel : channels) {
        blur(&channel);
        const auto at = [&channel, w, h](int x, int y) {
            return channel.at(std::clamp(x, 0, w - 1), std::clamp(y, 0, h - 1));
        };
        size_t i = 0;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x, ++i) {
                const float gx = at(x + 1, y) - at(x - 1, y), gy = at(x, y + 1) - at(x, y - 1);
                energy.samples[i] += gx * gx + gy * gy;
                field.cosine.samples[i] += gx * gx - gy * gy;
                field.sine.samples[i] += 2.0f * gx * gy;
            }
    }

    // Strong edges count little more than middling ones.
    double mean = 0.0;
    for (const float e : energy.samples) mean += std::sqrt(e);
    mean /= static_cast<double>(energy.samples.size());
    const float knee = static_cast<float>(2.0 * mean);
    for (size_t i = 0; i < energy.samples.size(); ++i) {
        const float strength = std::sqrt(energy.samples[i]);
        const float scale = strength > 0.0f ? 1.0f / (strength * (strength + knee)) : 0.0f;
        field.cosine.samples[i] *= scale;
        field.sine.samples[i] *= scale;
    }

    double squares = 0.0;
    for (Plane* plane : {&field.cosine, &field.sine}) {
        blur(plane);
        double sum = 0.0;
        for (const float v : plane->samples) sum += v;
        const float level = static_cast<float>(sum / static_cast<double>(plane->samples.size()));
        for (float& v : plane->samples) {
            v -= level;
            squares += v * v;
        }
    }
    const float unit = squares > 0.0 ? static_cast<float>(1.0 / std::sqrt(squares)) : 0.0f;
    for (Plane* plane : {&field.cosine, &field.sine})
        for (float& v : plane->samples) v *= unit;
    return field;
}

EdgeAgreement::EdgeAgreement(const EdgeField& photo)
    : m_width(photo.cosine.width),
      m_height(photo.cosine.height),
      m_cosine(twice(photo.cosine)),
      m_sine(twice(photo.sine)) {}

double EdgeAgreement::of(const EdgeField& depth) const {
    constexpr int kReach = 2;    // small misalignments
    constexpr int kClearOf = 8;  // the peak's own width
    constexpr int kStep = 9;
    if (std::min(m_width, m_height) < 3 * kClearOf) return 0.0;
    double peak = -1.0;
    std::vector<int> near;
    for (int dx = -kReach; dx <= kReach; ++dx) near.push_back(dx);
    for (int dy = -kReach; dy <= kReach; ++dy)
        for (const double here : correlations(depth, near, dy)) peak = std::max(peak, here);
    double sum = 0.0, squares = 0.0;
    int count = 0;
    for (int dy = -m_height / 2; dy < m_height / 2; dy += kStep) {
        std::vector<int> clear;
        for (int dx = -m_width / 2; dx < m_width / 2; dx += kStep)
            if (std::max(std::abs(dx), std::abs(dy)) >= kClearOf) clear.push_back(dx);
        for (const double other : correlations(depth, clear, dy)) {
            sum += other;
            squares += other * other;
            ++count;
        }
    }
    const double mean = sum / count, variance = squares / count - mean * mean;
    return variance > 1e-12 ? (peak - mean) / std::sqrt(variance) : 0.0;
}

std::vector<double> EdgeAgreement::correlations(const EdgeField& depth, const std::vector<int>& dx,
                                                int dy) const {
    std::vector<double> sums(dx.size(), 0.0);
    // A row is compared in all places while it is in the nearest cache.
    for (int y = 0; y < m_height; ++y)
        withWideVectors([&, cosine = depth.cosine.row(y), sine = depth.sine.row(y)] {
            const int from_y = (y + dy + m_height) % m_height;
            for (size_t i = 0; i < dx.size(); ++i) {
                const int from_x = (dx[i] + m_width) % m_width;
                sums[i] += dot(&m_cosine.at(from_x, from_y), cosine, static_cast<size_t>(m_width)) +
                           dot(&m_sine.at(from_x, from_y), sine, static_cast<size_t>(m_width));
            }
        });
    return sums;
}

}  // namespace quorvane::media
