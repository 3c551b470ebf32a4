// Panoramas of things at known distances, from lenses that lie apart, against the truth.
#include "ring/near/near.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <utility>
#include <vector>

#include "camera/trigonometry.hpp"
#include "ring/engine_fixture.hpp"
#include "ring/mesh_shape.hpp"
#include "ring/near/near_nodes.hpp"
#include "ring/ring_shape.hpp"
#include "support/isas.hpp"

namespace biseam::test {
namespace {

using ring::EngineConfig;

constexpr double kApart = 0.03;  // metres from lens to lens

EngineConfig near_config(bool near = true, int format = BISEAM_GRAY8) {
  EngineConfig config = small_config(format);
  config.camera = scaled_camera(city_square(), 640);
  config.width = 1280;
  config.height = 640;
  config.match_near = near;
  return config;
}

struct World {
  double distance = 1e6;  // of a thing, over a sixth of the ring; all else is far away
  double from = 20 * kDegree, to = 80 * kDegree;
  double apart = kApart;
  bool covered = false;  // lens 1
  double contrast = 1, gain1 = 1;
  unsigned turned = 0;  // another scene for each

  double distance_at(double t) const { return t > from && t < to ? distance : 1e6; }
  // Codes of 8 bits.
  double code(const Vec3& d) const {
    const double s = turned, x = d.x + 0.3 * s, y = d.y - 0.7 * s, z = d.z + 1.1 * s;
    const double grain = std::sin(33 * x + 21 * z) * std::sin(29 * y - 25 * z) + 0.7 * std::sin(51 * z + 11 * x - 6 * y);
    return 110 + contrast * (45 * grain + 35 * std::sin(3 * x + 2 * y));
  }
  // What lens k sees along a direction, which is of length 1.  All places of one ray lie at the same angle round the axis.
  double seen(int k, const Vec3& d) const {
    if (covered && k == 1) return 16;
    const double reach = distance_at(std::atan2(d.y, d.x)), from_middle = (k == 0 ? -0.5 : 0.5) * apart;
    const double along =
        -d.z * from_middle + std::sqrt(d.z * d.z * from_middle * from_middle + reach * reach - from_middle * from_middle);
    const Vec3 place{along * d.x / reach, along * d.y / reach, (along * d.z + from_middle) / reach};
    return code(place) * (k == 1 ? gain1 : 1);
  }
};

// Directions of a camera's pixels, found once.
const std::array<std::vector<Vec3>, 2>& rays_of(const EngineConfig& config) {
  static const std::array<std::vector<Vec3>, 2> rays = [&] {
    std::array<std::vector<Vec3>, 2> all;
    for (std::size_t k = 0; k < 2; ++k) {
      const Projector projector(config.camera, static_cast<int>(k));
      for (int y = 0; y < config.camera.lens[k].height; ++y) {
        for (int x = 0; x < config.camera.lens[k].width; ++x) all[k].push_back(projector.unproject(x, y));
      }
    }
    return all;
  }();
  return rays;
}

Fisheyes views_of(const EngineConfig& config, const World& world) {
  const TestFormat& format = test_format(config.format);
  return Fisheyes(config, [&](int lens, int channel, int x, int y) {
    if (channel > 0) return 1 << (format.bits - 1);
    const int width = config.camera.lens[lens].width;
    const Vec3& ray = rays_of(config)[static_cast<std::size_t>(lens)][static_cast<std::size_t>(y * width + x)];
    const double code = std::clamp(world.seen(lens, ray), 0.0, 255.0);
    return static_cast<int>(std::lround(std::ldexp(code, format.bits - 8)));
  });
}

// Of what lies on the ring between two angles round it, against what is seen from the middle between the lenses.
double psnr(const EngineConfig& config, const OwnPicture& panorama, const World& world, double from, double to) {
  const View view{config.width, config.height, {}};
  const TestFormat& format = test_format(config.format);
  double sum = 0, count = 0;
  for (int y = 0; y < config.height; ++y) {
    for (int x = 0; x < config.width; ++x) {
      const Vec3 d = reference_direction(view, x, y);
      const double b = std::asin(d.z), t = std::atan2(d.y, d.x);
      if (std::abs(b) > 5 * kDegree || t < from || t > to) continue;
      const double off = std::ldexp(panorama.get(0, x, y), 8 - format.bits) - world.code(d);
      const double weight = std::hypot(d.x, d.z);
      sum += weight * off * off;
      count += weight;
    }
  }
  return 10 * std::log10(255 * 255 * count / sum);
}

bool same(const OwnPicture& a, const OwnPicture& b) { return a.bytes() == b.bytes(); }

TEST(NearThingsAccuracy, AreBroughtTogether) {
  for (const double distance : {0.7, 1.0, 3.0}) {
    for (const int format : {BISEAM_GRAY8, BISEAM_P010}) {
      World world;
      world.distance = distance;
      const EngineConfig on = near_config(true, format), off = near_config(false, format);
      Fisheyes views = views_of(on, world);
      const OwnPicture together = stitch_once(on, views), apart = stitch_once(off, views);
      const double inside = 24 * kDegree, outside = 76 * kDegree;
      EXPECT_GE(psnr(on, together, world, inside, outside), psnr(off, apart, world, inside, outside) + 3) << distance;
      EXPECT_GE(psnr(on, together, world, inside, outside), 30) << distance;
      EXPECT_GE(psnr(on, together, world, 100 * kDegree, 170 * kDegree), 36) << "far away";
    }
  }
}

TEST(NearThingsAccuracy, AreFoundInLightThatDiffers) {
  World world;
  world.distance = 1;
  world.gain1 = 0.75;
  EngineConfig config = near_config();
  config.match_light = true;
  Fisheyes views = views_of(config, world);
  const OwnPicture together = stitch_once(config, views);
  config.match_near = false;
  const OwnPicture apart = stitch_once(config, views);
  const auto contrast_of = [&](const OwnPicture& panorama) {
    World seen = world;
    seen.gain1 = 1;
    return psnr(config, panorama, seen, 24 * kDegree, 76 * kDegree);
  };
  EXPECT_GT(contrast_of(together), contrast_of(apart) + 1);
}

// Without parallax, in black frames, under clipped skies and with a lens covered nothing is touched.
TEST(NearThings, ThatAreNoneChangeNothing) {
  const auto world = [](double contrast, double gain1, bool covered, double apart) {
    World made;
    made.distance = 1;
    made.apart = apart;
    made.contrast = contrast;
    made.gain1 = gain1;
    made.covered = covered;
    return made;
  };
  for (const World& none : {world(1, 1, false, 0), world(1, 0.75, false, 0), world(0, 0, false, kApart),
                            world(0, 3, false, kApart), world(1, 1, true, kApart)}) {
    const EngineConfig on = near_config(true), off = near_config(false);
    Fisheyes views = views_of(on, none);
    EXPECT_TRUE(same(stitch_once(on, views), stitch_once(off, views))) << none.contrast << none.gain1 << none.covered;
  }
}

// Where no node moves that a position goes by, everything is as it is without: three nodes farther across and down than nodes
// move.  Between, cubics swing by less than a hundredth of what near things are moved by, 0.019 radians: less than a code of a
// grain that changes by 5200 a radian, which rounding makes one at most.
TEST(NearThings, MoveTheirSurroundingsOnly) {
  World world;
  world.distance = 0.8;
  const EngineConfig on = near_config(true), off = near_config(false);
  Fisheyes views = views_of(on, world);
  const OwnPicture together = stitch_once(on, views), apart = stitch_once(off, views);
  const View view{on.width, on.height, {}};
  const double turn = 2 * kPi / (1 << ring::kTurnBits), pixel = kPi / on.height;
  const int spacing_bits = ring::mesh_shape(on.camera, on.width, on.height, ring::kMovedSpacing).spacing_bits;
  const double moved = (ring::ring_shape(on.camera, on.width).half_width + ring::kNearFade) * turn;
  const double untouched = moved + 3 * std::sqrt(2) * std::ldexp(pixel / 2, spacing_bits);
  int differing = 0, farthest = 0;
  for (int y = 0; y < on.height; ++y) {
    for (int x = 0; x < on.width; ++x) {
      const double b = std::abs(std::asin(reference_direction(view, x, y).z));
      if (b > untouched) {
        ASSERT_EQ(together.get(0, x, y), apart.get(0, x, y)) << x << " " << y;
      } else {
        const int step = std::abs(together.get(0, x, y) - apart.get(0, x, y));
        differing += step != 0;
        if (b > moved) farthest = std::max(farthest, step);
      }
    }
  }
  EXPECT_GT(differing, 1000);
  EXPECT_LE(farthest, 1);
}

class NearThingsOn : public KeptIsa {};

TEST_F(NearThingsOn, AnyThreadsAndInstructionSetAreTheSameBytes) {
  World world;
  world.distance = 1;
  EngineConfig config = near_config();
  Fisheyes views = views_of(config, world);
  const OwnPicture wanted = stitch_once(config, views);
  for (const int threads : {2, 5}) {
    config.threads = threads;
    EXPECT_TRUE(same(stitch_once(config, views), wanted)) << threads;
  }
  for (const Isa isa : isas_here()) {
    ASSERT_TRUE(limit_isa(isa));
    EXPECT_TRUE(same(stitch_once(config, views), wanted)) << name_of(isa);
  }
}

// Frames of a thing that comes nearer.
class NearClip : public testing::Test {
 protected:
  static Fisheyes frame(int number, unsigned scene = 0) {
    World world;
    world.distance = 4.0 / (1 + number);
    world.turned = scene;
    return views_of(near_config(), world);
  }
};

TEST_F(NearClip, PartsEqualTheWhole) {
  OwnEngine whole(near_config()), part(near_config());
  const int before = history(state_of(whole.engine()));
  EXPECT_EQ(before, 4);
  for (int i = 0; i < 7; ++i) {
    Fisheyes views = frame(i);
    const OwnPicture panorama = whole.stitch(views);
    if (i < 6 - before) continue;
    const OwnPicture of_part = part.stitch(views);
    if (i == 6) {
      EXPECT_TRUE(same(of_part, panorama));
    }
  }
}

TEST_F(NearClip, GoesOnFromASavedState) {
  OwnEngine first(near_config()), second(near_config()), fresh(near_config());
  for (int i = 0; i < 3; ++i) {
    Fisheyes views = frame(i);
    first.stitch(views);
  }
  std::vector<char> state(state_bytes(state_of(first.engine())));
  save_state(state_of(first.engine()), state.data());
  ASSERT_TRUE(load_state(state_of(second.engine()), state.data()));
  Fisheyes views = frame(3);
  const OwnPicture wanted = first.stitch(views);
  EXPECT_TRUE(same(second.stitch(views), wanted));
  EXPECT_FALSE(same(fresh.stitch(views), wanted));
  state.back() = static_cast<char>(-1);
  OwnEngine plain(near_config(false));
  EXPECT_FALSE(load_state(state_of(plain.engine()), state.data()));
}

TEST_F(NearClip, StartsAnewAtCuts) {
  OwnEngine engine(near_config()), fresh(near_config());
  for (int i = 0; i < 3; ++i) {
    Fisheyes views = frame(i);
    engine.stitch(views);
  }
  Fisheyes cut = frame(6, 3);
  EXPECT_TRUE(same(engine.stitch(cut), fresh.stitch(cut)));
}

}  // namespace
}  // namespace biseam::test
