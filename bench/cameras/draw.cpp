#include "cameras/draw.hpp"

#include <cmath>

#include "camera/rules.hpp"
#include "camera/trigonometry.hpp"

namespace biseam::bench {
namespace {

class Dice {
 public:
  explicit Dice(std::uint64_t seed) : state_(seed) {}
  // The library's distributions differ from one to the other.
  double between(double low, double high) { return low + (high - low) * double(state_() >> 11) * 0x1p-53; }
  int below(int count) { return int(between(0, count)); }

 private:
  std::mt19937_64 state_;
};

Drawn draw(Dice& dice, int size, double most_k3) {
  Drawn drawn;
  const double fov = dice.between(192, 206), edge = fov / 2 * kDegree;
  const bool cut = dice.below(2) == 1;
  const double circle = size * (cut ? dice.between(0.5, 0.53) : dice.between(0.45, 0.485));
  const double k1 = dice.between(-0.04, 0.03), k2 = dice.between(-0.006, 0.006), ratio = dice.between(-0.01, 0.01);
  const int mount = 90 * dice.below(4);
  const bool opposite = dice.below(2) == 1;
  for (int k = 0; k < 2; ++k) {
    Lens& lens = drawn.camera.lens[k];
    lens.width = lens.height = size;
    lens.cx = (size - 1) / 2.0 + size * dice.between(-0.008, 0.008);
    lens.cy = (size - 1) / 2.0 + size * dice.between(-0.008, 0.008);
    lens.fov = fov;
    lens.k[0] = k == 0 ? k1 : k1 * dice.between(0.9, 1.1);
    lens.k[1] = k == 0 ? k2 : k2 * dice.between(0.9, 1.1);
    lens.mount = k == 0 || !opposite ? mount : (mount + 180) % 360;
    drawn.gain[k] = std::exp2(dice.between(-0.25, 0.25));
    drawn.vignette[k] = dice.between(0.05, 0.3);
  }
  drawn.camera.lens[1].turn = {dice.between(-3, 3), dice.between(-3, 3), dice.between(-3, 3)};
  drawn.noise = dice.between(0, 3);
  drawn.camera.baseline = dice.between(0, 0.035);
  drawn.stacked = dice.below(2) == 1;
  const double k3 = most_k3 * dice.between(-1, 1);
  for (int k = 0; k < 2; ++k) {
    Lens& lens = drawn.camera.lens[k];
    lens.k[2] = k3;
    lens.p = 1;
    lens.p = circle * (k == 0 ? 1 : 1 + ratio) / radius(lens, edge);
  }
  return drawn;
}

}  // namespace

Drawn draw_camera(std::uint64_t seed, int size, double most_k3) {
  Dice dice(seed);
  for (;;) {
    const Drawn drawn = draw(dice, size, most_k3);
    if (!check_camera(drawn.camera)) return drawn;
  }
}

}  // namespace biseam::bench
