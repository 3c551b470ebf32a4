// Seams that keep still from frame to frame.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "base/isa.hpp"
#include "ring/lit_scene.hpp"

namespace biseam::test {
namespace {

using ring::EngineConfig;

// Of a camera that isn't known quite, so that seams have something to avoid.
EngineConfig steady_config(bool steady = true) {
  EngineConfig config = small_config();
  config.camera = scaled_camera(city_square(), 360);
  config.camera.lens[1].p *= 1.004;
  config.width = 512;
  config.height = 256;
  config.steady_seam = steady;
  return config;
}

const Film& film() {
  static const Film made = [] {
    EngineConfig config = steady_config();
    config.camera = scaled_camera(city_square(), 360);
    return Film(config);
  }();
  return made;
}

using Seam = std::vector<double>;

Seam seam_of(OwnEngine& engine) {
  Seam seam(static_cast<std::size_t>(ring::seam_length(engine.engine())));
  ring::read_seam(engine.engine(), seam.data());
  return seam;
}

// Columns of the panorama, a mean over the seam.
double movement(const Seam& from, const Seam& to) {
  double sum = 0;
  for (std::size_t t = 0; t < from.size(); ++t) sum += std::abs(from[t] - to[t]);
  return sum / double(from.size()) * steady_config().width / 360;
}

TEST(SteadySeam, HardlyMovesInAStillScene) {
  const Film::Exposed scene = film().expose({gravel, {}});
  OwnEngine steady(steady_config()), free(steady_config(false));
  constexpr int kFirst = ring::SeamMemory::kHistory, kCounted = 10;
  double held = 0, searched = 0;
  Seam last_held, last_searched;
  for (int i = 0; i < kFirst + kCounted; ++i) {
    Fisheyes fisheyes = film().develop(scene, 2, static_cast<std::uint32_t>(i));
    steady.stitch(fisheyes);
    free.stitch(fisheyes);
    const Seam now_held = seam_of(steady), now_searched = seam_of(free);
    if (i >= kFirst) {
      held += movement(last_held, now_held) / kCounted;
      searched += movement(last_searched, now_searched) / kCounted;
    }
    last_held = now_held;
    last_searched = now_searched;
  }
  EXPECT_LE(held, 0.05);
  EXPECT_GE(searched, 0.3) << "or there would be nothing to hold";
}

// A lamp that only lens 1 sees, across part of the ring, at t = 0.
LitScene lamp(double from, double to) {
  LitScene scene{gravel, {}};
  scene.noise = 1;
  scene.lens[1].patch = {from * kDegree, to * kDegree, 20 * kDegree, 0.6};
  return scene;
}

TEST(SteadySeam, LeavesWhatComesIntoItsWayWithinSomeFrames) {
  OwnEngine engine(steady_config());
  Fisheyes before = film().of({gravel, {}});
  for (int i = 0; i < 12; ++i) engine.stitch(before);
  const double at = seam_of(engine)[0];
  Fisheyes fisheyes = film().of(lamp(at - 1.2, at + 1.2));
  double last = at;
  for (int i = 0; i < ring::SeamMemory::kFrames + 2; ++i) {
    engine.stitch(fisheyes);
    const double now = seam_of(engine)[0];
    EXPECT_LE(std::abs(now - last), 1.5) << "degrees at a time";
    last = now;
  }
  EXPECT_GE(std::abs(last - at), 1.2);
}

TEST(SteadySeam, IsFreeAtACut) {
  OwnEngine engine(steady_config()), fresh(steady_config());
  const auto turned = [by = rotation({120, 0, 0})](const Vec3& d) { return gravel(by * d); };
  Fisheyes before = film().of({gravel, {}}), after = film().of({turned, {}});
  for (int i = 0; i < 10; ++i) engine.stitch(before);
  for (int i = 0; i < 3; ++i) {
    engine.stitch(after);
    fresh.stitch(after);
    EXPECT_EQ(seam_of(engine), seam_of(fresh)) << i;
  }
}

// Frames of a walk, with light that changes, rendered once.
Fisheyes& walk(int frame) {
  static std::vector<Fisheyes> frames = [] {
    std::vector<Fisheyes> made;
    for (int i = 0; i < 28; ++i) {
      LitScene scene{[turned = rotation({2.0 * i, 0, 0})](const Vec3& d) { return gravel(turned * d); }, {}};
      scene.lens[1].exposure = 0.1 + 0.01 * i;
      scene.noise = 2;
      scene.seed = static_cast<std::uint32_t>(i);
      made.push_back(film().of(scene));
    }
    return made;
  }();
  return frames[static_cast<std::size_t>(frame)];
}

void expect_same(const OwnPicture& wanted, const OwnPicture& got, const std::string& which) {
  EXPECT_EQ(wanted.bytes(), got.bytes()) << which;
}

TEST(SteadySeam, OfAPartEqualsTheWholeAfterItsHistory) {
  EngineConfig config = steady_config();
  config.match_light = true;
  config.rate = 10;
  OwnEngine whole(config), part(config);
  const int history = ring::history(state_of(whole.engine()));
  ASSERT_EQ(history, ring::SeamMemory::kHistory + 5);
  constexpr int kBegin = 6;
  for (int i = 0; i < kBegin + history + 3; ++i) {
    const OwnPicture wanted = whole.stitch(walk(i));
    if (i < kBegin) continue;
    const OwnPicture got = part.stitch(walk(i));
    if (i == kBegin) {
      EXPECT_NE(seam_of(whole), seam_of(part));
    }
    if (i >= kBegin + history) {
      EXPECT_EQ(seam_of(whole), seam_of(part)) << i;
      expect_same(wanted, got, std::to_string(i));
    }
  }
}

TEST(SteadySeam, GoesOnFromASavedState) {
  EngineConfig config = steady_config();
  config.match_light = true;
  OwnEngine engine(config), other(config), fresh(config);
  for (int i = 0; i < 11; ++i) engine.stitch(walk(i));
  other.stitch(walk(20));
  std::vector<char> state(state_bytes(state_of(engine.engine())));
  save_state(state_of(engine.engine()), state.data());
  ASSERT_TRUE(load_state(state_of(other.engine()), state.data()));
  for (int i = 11; i < 14; ++i) {
    expect_same(engine.stitch(walk(i)), other.stitch(walk(i)), std::to_string(i));
    fresh.stitch(walk(i));
  }
  EXPECT_NE(seam_of(engine), seam_of(fresh));
  forget(state_of(other.engine()));
  OwnEngine another(config);
  expect_same(another.stitch(walk(14)), other.stitch(walk(14)), "forgotten");
}

TEST(SteadySeam, IsTheSameForAnyThreadsAndInstructionSet) {
  EngineConfig config = steady_config(), threaded = config;
  threaded.threads = 3;
  std::vector<OwnPicture> wanted;
  const Isa best = isa_in_use();
  for (const Isa isa : kIsas) {
    if (isa > best || !limit_isa(isa)) continue;
    OwnEngine one(config), three(threaded);
    for (int i = 0; i < 3; ++i) {
      const std::string which = std::string(name_of(isa)) + " frame " + std::to_string(i);
      const OwnPicture panorama = one.stitch(walk(i));
      if (wanted.size() == static_cast<std::size_t>(i)) wanted.push_back(panorama);
      expect_same(wanted[static_cast<std::size_t>(i)], panorama, which);
      expect_same(wanted[static_cast<std::size_t>(i)], three.stitch(walk(i)), which);
    }
  }
  limit_isa(best);
}

}  // namespace
}  // namespace biseam::test
