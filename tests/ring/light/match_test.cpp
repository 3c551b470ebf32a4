// Panoramas of lenses that record light differently, against the truth.
#include "ring/light/match.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <utility>
#include <vector>

#include "base/isa.hpp"
#include "ring/lit_scene.hpp"

namespace biseam::test {
namespace {

using ring::EngineConfig;

EngineConfig matching_config(int format = BISEAM_NV12, bool match = true) {
  EngineConfig config = small_config(format);
  config.camera = scaled_camera(city_square(), 360);
  config.width = 512;
  config.height = 256;
  config.match_light = match;
  return config;
}

// Kept, as all tests use the same cameras.
const Film& film_of(const EngineConfig& config) {
  static std::map<int, Film> films;
  return films.try_emplace(config.format, config).first->second;
}

constexpr int kTestSectors = 24;

// By how much the panorama is brighter than the truth, on either side of the ring's middle, by sectors: codes of 8 bits.
struct Sides {
  double sum[2][kTestSectors] = {};
  int count[2][kTestSectors] = {};
  double mean(int side, int sector) const { return count[side][sector] == 0 ? 0 : sum[side][sector] / count[side][sector]; }
  double step(int sector) const { return std::abs(mean(1, sector) - mean(0, sector)); }
};

bool same(const OwnPicture& a, const OwnPicture& b) { return a.bytes() == b.bytes(); }

struct Steps {
  double mean = 0, worst = 0;
  double brightness = 0;  // by which both sides together are too bright
};

Steps steps_across(const EngineConfig& config, const OwnPicture& panorama, const LitScene& scene, int channel, double from,
                   double to) {
  const TestFormat& format = test_format(config.format);
  const ReferencePlane grid = grid_of(format, channel, BISEAM_SITING_LEFT);
  const View view{config.width, config.height, {}};
  Sides sides;
  for (int y = 0; y < panorama.rows(channel); ++y) {
    for (int x = 0; x < panorama.columns(channel); ++x) {
      const Vec3 d = reference_direction(view, grid.sub_x * x + grid.offset_x, grid.sub_y * y + grid.offset_y);
      const RingPlace place = reference_ring(d);
      if (std::abs(place.b) < from * kDegree || std::abs(place.b) > to * kDegree) continue;
      const int side = place.b > 0, sector = static_cast<int>(place.t / (2 * kPi) * kTestSectors) % kTestSectors;
      const double truth = bt709_codes(scene.light(d))[static_cast<std::size_t>(channel)];
      sides.sum[side][sector] += std::ldexp(panorama.get(channel, x, y), 8 - format.bits) - truth;
      ++sides.count[side][sector];
    }
  }
  Steps steps;
  for (int s = 0; s < kTestSectors; ++s) {
    steps.mean += sides.step(s) / kTestSectors;
    steps.worst = std::max(steps.worst, sides.step(s));
    steps.brightness += (sides.mean(0, s) + sides.mean(1, s)) / (2 * kTestSectors);
  }
  return steps;
}

LitScene uneven(std::function<Rgb(const Vec3&)> light) {
  LitScene scene{std::move(light), {}};
  scene.lens[0].exposure = -0.5;
  scene.lens[1].exposure = 0.5;
  scene.lens[1].balance = kWarmer;
  scene.lens[0].vignette = 0.2;
  scene.noise = 1;
  return scene;
}

TEST(MatchedLight, LeavesNoStepAcrossTheRing) {
  struct Case {
    Rgb (*light)(const Vec3&);
    int format;
  };
  for (const auto& [light, format] : {Case{meadow, BISEAM_NV12}, Case{gravel, BISEAM_I420}, Case{meadow, BISEAM_P010}}) {
    const LitScene scene = uneven(light);
    const EngineConfig config = matching_config(format), off = matching_config(format, false);
    Fisheyes fisheyes = film_of(config).of(scene);
    OwnEngine engine(config), plain(off);
    const OwnPicture matched = engine.stitch(fisheyes), recorded = plain.stitch(fisheyes);
    for (int c = 0; c < 3; ++c) {
      const Steps near = steps_across(config, matched, scene, c, 0, 3);
      EXPECT_LE(near.mean, 1) << c;
      EXPECT_LE(near.worst, 2) << c;
    }
    // Beyond the ring, where nothing but matching helps: what the lenses don't share of the vignette is left.
    EXPECT_LE(steps_across(config, matched, scene, 0, 6, 12).mean, 2.2);
    EXPECT_GE(steps_across(off, recorded, scene, 0, 6, 12).mean, 35);
    for (int c = 1; c < 3; ++c) EXPECT_LE(steps_across(config, matched, scene, c, 6, 20).mean, 0.4);
  }
}

// Without what falloff has taken, 4 codes would be missing on both sides, whichever lens has it.
TEST(MatchedLight, IsAsBrightAsTheTruthInTheRing) {
  for (const double other : {0.0, 0.1}) {
    for (const auto& light : {meadow, gravel}) {
      LitScene scene = uneven(light);
      scene.lens[0].vignette = 0.2 - other;
      scene.lens[1].vignette = other;
      const EngineConfig config = matching_config();
      Fisheyes fisheyes = film_of(config).of(scene);
      OwnEngine engine(config);
      EXPECT_NEAR(steps_across(config, engine.stitch(fisheyes), scene, 0, 0, 3).brightness, 0, 1) << other;
    }
  }
}

TEST(MatchedLight, OfGrayAndOfThreePlanes) {
  LitScene scene = uneven(meadow);
  EngineConfig config = matching_config(BISEAM_GRAY8);
  Fisheyes gray = film_of(config).of(scene);
  OwnEngine engine(config);
  EXPECT_LE(steps_across(config, engine.stitch(gray), scene, 0, 0, 3).worst, 1.5);
  // Three planes of anything: codes are written down as they come, about black as for luma.
  config = matching_config(BISEAM_GBR);
  config.transfer = ring::Transfer::bt709;
  LitScene tinted{[](const Vec3& d) {
                    const double l = meadow(d)[1];
                    return Rgb{l, l, l};
                  },
                  {}};
  tinted.lens[0].exposure = -0.5;
  tinted.lens[1].exposure = 0.5;
  Fisheyes colours = film_of(config).of(tinted);
  for (OwnPicture& picture : colours.lens) {
    const std::vector<int> green = picture.channel(0);
    picture.fill([&](int, int x, int y) { return green[static_cast<std::size_t>(y * picture.columns(0) + x)]; });
  }
  OwnEngine three(config);
  const OwnPicture panorama = three.stitch(colours);
  EXPECT_LE(steps_across(config, panorama, tinted, 0, 3, 12).worst, 2);
  EXPECT_EQ(panorama.channel(0), panorama.channel(1)) << "grays stay gray";
  EXPECT_EQ(panorama.channel(0), panorama.channel(2));
}

TEST(MatchedLight, OfEqualLensesChangesNothingThatCanBeSeen) {
  const LitScene scene{gravel, {}};
  const EngineConfig config = matching_config();
  Fisheyes fisheyes = film_of(config).of(scene);
  OwnEngine engine(config), plain(matching_config(BISEAM_NV12, false));
  const OwnPicture matched = engine.stitch(fisheyes), recorded = plain.stitch(fisheyes);
  for (int c = 0; c < 3; ++c) {
    const auto a = matched.channel(c), b = recorded.channel(c);
    for (std::size_t i = 0; i < a.size(); ++i) ASSERT_NEAR(a[i], b[i], 1);
  }
}

TEST(MatchedLight, FlareInOneLensIsEvenedOutRoundItsPlaceOnly) {
  LitScene scene{meadow, {}};
  scene.lens[1].flare = 0.06;
  scene.lens[1].flare_at = -kPi / 2;  // above
  const EngineConfig config = matching_config(), off = matching_config(BISEAM_NV12, false);
  Fisheyes fisheyes = film_of(config).of(scene);
  OwnEngine engine(config), plain(off);
  const OwnPicture matched = engine.stitch(fisheyes), recorded = plain.stitch(fisheyes);
  EXPECT_LE(steps_across(config, matched, scene, 0, 2, 7).worst, 0.35 * steps_across(off, recorded, scene, 0, 2, 7).worst);
  EXPECT_LE(steps_across(config, matched, scene, 0, 0, 2).worst, 2);
}

// The darker lens sees a glow up to just below white, and is brightened: what it kept apart stays apart.
TEST(MatchedLight, ClipsNothing) {
  LitScene scene{[](const Vec3& d) {
                   Rgb light = meadow(d);
                   if (d.z > 0.5) light.fill((d.z - 0.5) * 2.6);
                   return light;
                 },
                 {}};
  scene.lens[0].exposure = 0.5;
  scene.lens[1].exposure = -0.5;
  const EngineConfig config = matching_config(), off = matching_config(BISEAM_NV12, false);
  Fisheyes fisheyes = film_of(config).of(scene);
  OwnEngine engine(config), plain(off);
  const OwnPicture matched = engine.stitch(fisheyes), recorded = plain.stitch(fisheyes);
  const auto front = [&](const OwnPicture& panorama, int x) {
    return panorama.get(0, config.width / 2 + x, config.height / 2);
  };
  ASSERT_GT(front(recorded, 0), 215);
  EXPECT_GT(front(matched, 40), front(recorded, 40) + 10) << "brightened";
  for (int y = 0; y < config.height; ++y) {
    for (int x = 0; x < config.width; ++x) ASSERT_LT(matched.get(0, x, y), 235) << x << " " << y;
  }
  // From where f > 1 has left its line on, a third of the slope is left.
  EXPECT_GE(3 * (front(matched, 0) - front(matched, 20)), front(recorded, 0) - front(recorded, 20));
}

// ---- In time -----------------------------------------------------------------------------------------------------------

// How much brighter the front is than the back.
double front_against_back(const OwnPicture& panorama) {
  const int width = panorama.columns(0), height = panorama.rows(0);
  double sum = 0;
  for (int y = height / 3; y < 2 * height / 3; ++y) {
    for (int x = 0; x < width / 4; ++x) {
      sum += panorama.get(0, 3 * width / 8 + x, y) - panorama.get(0, (7 * width / 8 + x) % width, y);
    }
  }
  return sum / (width / 4 * (height / 3));
}

TEST(MatchedLightAccuracy, IsStillInRest) {
  LitScene scene = uneven(gravel);
  scene.noise = 2;
  const EngineConfig config = matching_config();
  OwnEngine engine(config);
  std::vector<double> means;
  for (int frame = 0; frame < 24; ++frame) {
    scene.seed = 100u + static_cast<std::uint32_t>(frame);
    Fisheyes fisheyes = film_of(config).of(scene);
    const OwnPicture panorama = engine.stitch(fisheyes);
    if (frame >= 15) means.push_back(front_against_back(panorama));
  }
  for (std::size_t i = 1; i < means.size(); ++i) EXPECT_NEAR(means[i], means[i - 1], 0.1) << i;
}

TEST(MatchedLightAccuracy, FollowsACutAtOnceAndADriftWithinHalfASecond) {
  const EngineConfig config = matching_config();
  OwnEngine engine(config);
  LitScene before = uneven(gravel);
  Fisheyes first = film_of(config).of(before);
  for (int i = 0; i < 20; ++i) engine.stitch(first);
  LitScene after{[turned = rotation({120, 0, 0})](const Vec3& d) { return gravel(turned * d); }, {}};
  after.lens[0].exposure = 0.5;
  after.lens[1].exposure = -0.5;
  Fisheyes second = film_of(config).of(after);
  OwnEngine fresh(config);
  EXPECT_TRUE(same(engine.stitch(second), fresh.stitch(second))) << "at once";
  // A step of one lens's exposure in the same scene: half of it after a quarter of a second, all after half a second.
  LitScene step = after;
  step.lens[0].exposure = 0.3;
  Fisheyes third = film_of(config).of(step);
  for (int i = 0; i < 15; ++i) engine.stitch(second), fresh.stitch(second);
  const double at_first = front_against_back(engine.stitch(second));
  OwnEngine settled(config);
  const double at_last = front_against_back(settled.stitch(third));
  double last = 0;
  for (int i = 0; i < 15; ++i) {
    const double now = front_against_back(engine.stitch(third));
    if (i > 0) {
      EXPECT_GE(std::abs(at_last - last) + 0.3, std::abs(at_last - now)) << "never back, frame " << i;
    }
    last = now;
  }
  EXPECT_NEAR(last, at_last, 0.1);
  EXPECT_NE(at_first, at_last);
}

TEST(MatchedLightAccuracy, AFlashOrABlackFrameIsNoCut) {
  const EngineConfig config = matching_config();
  OwnEngine engine(config), undisturbed(config);
  LitScene scene = uneven(gravel), flash = scene;
  flash.lens[1].exposure += 1;
  Fisheyes usual = film_of(config).of(scene), bright = film_of(config).of(flash),
           black = film_of(config).of({[](const Vec3&) {
                                         return Rgb{0, 0, 0};
                                       },
                                       {}});
  for (int i = 0; i < 15; ++i) engine.stitch(usual), undisturbed.stitch(usual);
  const double rest = front_against_back(undisturbed.stitch(usual));
  engine.stitch(bright);
  EXPECT_NEAR(front_against_back(engine.stitch(usual)), rest, 4) << "a fifteenth of a stop";
  for (int i = 0; i < 15; ++i) engine.stitch(usual);
  engine.stitch(black);
  const OwnPicture dark = engine.stitch(black);
  for (const int code : dark.channel(0)) ASSERT_EQ(code, 16);
  EXPECT_NEAR(front_against_back(engine.stitch(usual)), rest, 0.2) << "black says nothing";
}

TEST(MatchedLight, LeavesALensAloneWhenTheOtherIsCovered) {
  const EngineConfig config = matching_config(), off = matching_config(BISEAM_NV12, false);
  LitScene scene = uneven(gravel);
  scene.covered[0] = true;
  Fisheyes fisheyes = film_of(config).of(scene);
  OwnEngine engine(config), plain(off);
  const OwnPicture matched = engine.stitch(fisheyes), recorded = plain.stitch(fisheyes);
  for (int c = 0; c < 3; ++c) {
    const auto a = matched.channel(c), b = recorded.channel(c);
    for (std::size_t i = 0; i < a.size(); ++i) ASSERT_NEAR(a[i], b[i], 1);
  }
}

TEST(MatchedLight, WhiteSkyStaysWhite) {
  LitScene scene{[](const Vec3& d) { return d.y < -0.2 ? Rgb{1.5, 1.5, 1.5} : meadow(d); }, {}};
  scene.lens[0].exposure = 0.5;
  scene.lens[0].balance = kWarmer;
  scene.lens[1].exposure = 0;
  const EngineConfig config = matching_config();
  Fisheyes fisheyes = film_of(config).of(scene);
  OwnEngine engine(config);
  const OwnPicture panorama = engine.stitch(fisheyes);
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < config.width; ++x) ASSERT_NEAR(panorama.get(0, x, y), 235, 1);
  }
  for (int y = 0; y < 32; ++y) {
    for (int x = 0; x < config.width / 2; ++x) {
      ASSERT_NEAR(panorama.get(1, x, y), 128, 1);
      ASSERT_NEAR(panorama.get(2, x, y), 128, 1);
    }
  }
}

// ---- The same bytes ----------------------------------------------------------------------------------------------------

std::vector<LitScene> walk(int frames) {
  std::vector<LitScene> scenes;
  for (int i = 0; i < frames; ++i) {
    LitScene scene = uneven([turned = rotation({0.7 * i, 0, 0})](const Vec3& d) { return gravel(turned * d); });
    scene.seed = static_cast<std::uint32_t>(i);
    scene.lens[1].exposure += 0.02 * i;
    scenes.push_back(scene);
  }
  return scenes;
}

TEST(MatchedLight, IsTheSameForAnyThreadsAndInstructionSet) {
  EngineConfig config = matching_config(), threaded = config;
  threaded.threads = 4;
  std::vector<OwnPicture> wanted;
  const Isa best = isa_in_use();
  for (const Isa isa : kIsas) {
    if (isa > best || !limit_isa(isa)) continue;
    OwnEngine one(config), four(threaded);
    std::size_t frame = 0;
    for (const LitScene& scene : walk(3)) {
      Fisheyes fisheyes = film_of(config).of(scene);
      const OwnPicture panorama = one.stitch(fisheyes);
      if (wanted.size() == frame) wanted.push_back(panorama);
      EXPECT_TRUE(same(panorama, wanted[frame])) << name_of(isa) << " frame " << frame;
      EXPECT_TRUE(same(four.stitch(fisheyes), wanted[frame])) << name_of(isa) << " frame " << frame;
      ++frame;
    }
  }
  limit_isa(best);
}

TEST(MatchedLight, OfAPartEqualsTheWholeAfterItsHistory) {
  EngineConfig config = matching_config();
  config.rate = 10;
  OwnEngine whole(config), part(config);
  ASSERT_EQ(history(state_of(whole.engine())), 5);
  const auto scenes = walk(12);
  for (std::size_t i = 0; i < scenes.size(); ++i) {
    Fisheyes fisheyes = film_of(config).of(scenes[i]);
    const OwnPicture panorama = whole.stitch(fisheyes);
    if (i < 3) continue;
    const OwnPicture of_part = part.stitch(fisheyes);
    if (i >= 3 + 5) {
      EXPECT_TRUE(same(of_part, panorama)) << i;
    }
    if (i == 3) {
      EXPECT_FALSE(same(of_part, panorama));
    }
  }
}

TEST(MatchedLight, GoesOnFromASavedState) {
  const EngineConfig config = matching_config();
  OwnEngine engine(config), other(config);
  const auto scenes = walk(6);
  for (std::size_t i = 0; i < 5; ++i) {
    Fisheyes fisheyes = film_of(config).of(scenes[i]);
    engine.stitch(fisheyes);
  }
  std::vector<char> state(state_bytes(state_of(engine.engine())));
  save_state(state_of(engine.engine()), state.data());
  ASSERT_TRUE(load_state(state_of(other.engine()), state.data()));
  Fisheyes fisheyes = film_of(config).of(scenes[5]);
  const OwnPicture wanted = engine.stitch(fisheyes);
  EXPECT_TRUE(same(other.stitch(fisheyes), wanted));
  OwnEngine fresh(config);
  EXPECT_FALSE(same(fresh.stitch(fisheyes), wanted));
  forget(state_of(other.engine()));
  OwnEngine another(config);
  EXPECT_TRUE(same(other.stitch(fisheyes), another.stitch(fisheyes)));
}

}  // namespace
}  // namespace biseam::test
