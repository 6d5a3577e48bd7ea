#ifndef QUORVANE_MEDIA_DEPTH_EDGE_AGREEMENT_H
#define QUORVANE_MEDIA_DEPTH_EDGE_AGREEMENT_H

#include <vector>

#include "media/picture/image.h"

namespace quorvane::media {

// Does a depth map lie as its photo does? Where the depth jumps, the photo mostly has an edge of the same
// direction; which side is brighter says nothing. So both become fields of edge directions on a small grid,
// as double angles, under which opposite gradients are alike. Their correlation where they are is compared
// with the correlations of the same two fields shifted against each other: these show what chance gives for
// this very pair, whatever its texture, and the unit is their spread.

/// A part of an image, in pixels from its corner; it may reach beyond the image.
struct Region {
    double left, top, width, height;
};

/// The part `region` of `image`, averaged to `width` x `height`, a plane a channel.
std::vector<Plane> reduced(const RgbImage& image, const Region& region, int width, int height);
std::vector<Plane> reduced(const Plane& image, const Region& region, int width, int height);

/// Edge directions, each strength times (cos 2a, sin 2a); without mean and of unit length together.
struct EdgeField {
    Plane cosine, sine;
};

/// The field of one or several channels of the same size, whose gradients add up as a structure tensor.
EdgeField edgeField(std::vector<Plane> channels);

/// Correlates fields with the photo's.
class EdgeAgreement {
  public:
    explicit EdgeAgreement(const EdgeField& photo);

    /// How many standard deviations the agreement of `depth`, of the photo's size, with the photo stands
    /// above what shifted fields have; 0 where a field is empty or too small to say. Chance gives 0.6 on
    /// average, and 3.6 at most in 448 trials of photos against each other's depth maps.
    double of(const EdgeField& depth) const;

  private:
    std::vector<double> correlations(const EdgeField& depth, const std::vector<int>& dx, int dy) const;

    int m_width, m_height;
    Plane m_cosine, m_sine;  ///< the photo's, every row twice
};

}  // namespace quorvane::media

#endif
