#include "apps/tuner/core/slider_scale.h"

#include <algorithm>
#include <cmath>

namespace quorvane::tuner {
namespace {

// A range this many times its usual value leaves that a twentieth of an even slider.
constexpr double kFarBeyond = 20.0;

double rounded(double value, bool whole) {
    if (whole || value == 0.0) return std::round(value);
    const double unit = std::pow(10.0, std::floor(std::log10(std::abs(value))) - 3.0);
    return std::round(value / unit) * unit;
}

}  // namespace

SliderScale::SliderScale(double least, double most, double usual, bool whole)
    : m_least(least),
      m_most(most),
      m_bend(least >= 0.0 && usual > 0.0 && most > kFarBeyond * usual ? usual / 2.0 : 0.0),
      m_whole(whole) {}

double SliderScale::bent(double value) const { return m_bend > 0.0 ? std::asinh(value / m_bend) : value; }

double SliderScale::partOf(double value) const {
    const double part = (bent(value) - bent(m_least)) / (bent(m_most) - bent(m_least));
    return std::clamp(part, 0.0, 1.0);
}

double SliderScale::valueAt(double part) const {
    const double place = bent(m_least) + std::clamp(part, 0.0, 1.0) * (bent(m_most) - bent(m_least));
    return std::clamp(rounded(m_bend > 0.0 ? m_bend * std::sinh(place) : place, m_whole), m_least, m_most);
}

}  // namespace quorvane::tuner
