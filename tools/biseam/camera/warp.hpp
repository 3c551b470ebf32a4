// Resampling a fisheye picture onto the grid the engine wants.
#pragma once

#include <vector>

#include "camera/lens.hpp"

namespace biseam::tool {

// The picture that the lens would have taken at another scale and centre, and without its yaw and pitch.  The roll stays.
struct WarpTarget {
  Size size;
  Point centre;
  double p = 0;
};

// Weights of the samples around a position, for every phase; each set sums to 1.
class WarpFilter {
 public:
  static constexpr int kPhases = 256;  // positions between two samples

  // step: source samples per target sample.
  explicit WarpFilter(double step);

  int taps() const { return taps_; }
  const float* weights(int phase) const { return &weights_[std::size_t(phase) * std::size_t(taps_)]; }

 private:
  double weight(int phase, int tap) const;

  double stretch_;
  int taps_;
  std::vector<float> weights_;
};

// Where every sample of a target comes from, found once and used for any number of pictures.  Lanczos, widened where the
// picture shrinks; outside the source its nearest edge pixel is repeated.  Holds 8 bytes a sample position.
class Warp {
 public:
  // threads: that share the work, here and in apply().
  Warp(const Lens& lens, const WarpTarget& target, int threads);

  // Reuses the memory of out, which must not be the source's.  Safe from several threads at once.
  void apply(const Nv12View& source, Nv12& out, int threads) const;

  struct Place {
    std::int32_t x, y;  // source samples, in phases
  };

 private:
  Size size_;
  WarpFilter filter_;
  std::vector<Place> luma_, chroma_;
};

Nv12 warp_fisheye(const Nv12View& source, const Lens& lens, const WarpTarget& target);

}  // namespace biseam::tool
