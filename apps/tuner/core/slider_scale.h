#ifndef QUORVANE_APPS_TUNER_CORE_SLIDER_SCALE_H
#define QUORVANE_APPS_TUNER_CORE_SLIDER_SCALE_H

namespace quorvane::tuner {

/// Where the values of a range lie on a slider, from 0 at its left to 1. A range that goes far beyond its
/// default is wide near 0 and narrow at its end, so that the values which people use are not all at the left.
class SliderScale {
  public:
    /// `whole`: only whole numbers.
    SliderScale(double least, double most, double usual, bool whole);

    double partOf(double value) const;

    /// Within the range; rounded to four digits, or to a whole number.
    double valueAt(double part) const;

  private:
    double bent(double value) const;

    double m_least, m_most;
    double m_bend;  ///< 0: even
    bool m_whole;
};

}  // namespace quorvane::tuner

#endif
