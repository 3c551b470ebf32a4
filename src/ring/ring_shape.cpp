#include "ring/ring_shape.hpp"

#include <algorithm>

#include "camera/camera.hpp"
#include "ring/mesh.hpp"

namespace biseam::ring {

namespace {

constexpr double kWidest = 10.5 * kDegree;  // of what is used to either side of the middle
constexpr int kLeastAcross = 9;             // strip samples: pyramid and seam need room
constexpr int kRampColumns = 8;             // of the panorama

int rounded_up(double length) noexcept { return (static_cast<int>(length) / 16 + 1) * 16; }

// Near the ends of the positions' range nothing is seen anyway.
int32_t position_of(double pixels) noexcept {
  constexpr double kMost = 16000;
  const double held = pixels < -kMost ? -kMost : pixels > kMost ? kMost : pixels;
  return static_cast<int32_t>(held * 65536 + (held < 0 ? -0.5 : 0.5));
}

}  // namespace

RingShape ring_shape(const Camera& camera, int panorama_width) noexcept {
  const double half = std::min(overlap(camera), kWidest);
  // Strips of small panoramas and narrow rings are finer than a quarter of the panorama.
  const int finest = rounded_up((kLeastAcross - 1) * kPi / half);
  RingShape ring{};
  ring.strip.length = std::min(std::max(strip_length(panorama_width), finest), kMaxStripLength);
  const double pitch = 2 * kPi / ring.strip.length;
  ring.strip.width = std::clamp(static_cast<int>(2 * half / pitch) + 1, kMinStripWidth, kMaxStripWidth);
  const double samples = 0.5 * (ring.strip.width - 1);
  ring.half_width = static_cast<int32_t>(samples * (1 << kTurnBits) / ring.strip.length) + 1;
  const double ramp = static_cast<double>(kRampColumns) * ring.strip.length / panorama_width;
  const double widest_ramp = std::min(0.25 * ring.strip.width, 16.0);
  ring.ramp = static_cast<int32_t>(std::clamp(ramp, 0.0625, widest_ramp) * 65536);
  return ring;
}

void fill_strip_positions(const Projector& lens, StripShape shape, int32_t* x, int32_t* y) noexcept {
  const double pitch = 2 * kPi / shape.length;
  ptrdiff_t i = 0;
  for (int row = 0; row < shape.length; ++row) {
    const SineCosine round = sine_cosine(pitch * row);
    for (int column = 0; column < shape.width; ++column, ++i) {
      const SineCosine across = sine_cosine(pitch * (column - 0.5 * (shape.width - 1)));
      const ImagePoint at = lens.project({across.cosine * round.cosine, across.cosine * round.sine, across.sine});
      x[i] = position_of(at.x);
      y[i] = position_of(at.y);
    }
  }
}

}  // namespace biseam::ring
