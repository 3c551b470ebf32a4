// A real camera's pictures of six places.  They are kept outside the project.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>

#include "calibrate/calibrate.hpp"
#include "calibrate/finding.hpp"
#include "tool/calibrate/world.hpp"
#include "tool/support/nv12_picture.hpp"
#include "tool/support/places.hpp"

namespace biseam::tool {
namespace {

struct Place {
  Nv12 lens[2];
};

std::vector<calibrate::LumaPair> views(const std::vector<const Place*>& places) {
  std::vector<calibrate::LumaPair> lumas;
  for (const Place* place : places) {
    calibrate::LumaPair luma;
    for (int k = 0; k < 2; ++k) {
      const Nv12& picture = place->lens[k];
      luma.lens[k] = {picture.luma.data(), picture.width, picture.height, picture.width};
    }
    lumas.push_back(luma);
  }
  return lumas;
}

// What is compared, with the standard deviation that is stated.
struct Number {
  const char* name;
  double value, deviation;
};

std::vector<Number> numbers_of(const calibrate::Finding& finding) {
  using namespace calibrate;
  const Lens* lens = finding.camera.lens;
  const Turn& turn = lens[1].turn;
  const Values& off = finding.deviations;
  return {{"p0", lens[0].p, lens[0].p * off[kScale]},
          {"p1", lens[1].p, lens[1].p * off[kScale]},
          {"k1", lens[0].k[0], off[kK1]},
          {"k2", lens[0].k[1], off[kK2]},
          {"k3", lens[0].k[2], off[kK3]},
          {"cx0", lens[0].cx, off[kCx0]},
          {"cy0", lens[0].cy, off[kCy0]},
          {"cx1", lens[1].cx, off[kCx1]},
          {"cy1", lens[1].cy, off[kCy1]},
          {"yaw", turn.yaw, off[kYaw]},
          {"pitch", turn.pitch, off[kPitch]},
          {"roll", turn.roll, off[kRoll]},
          {"fov", lens[0].fov, 2 * off[kRim]}};
}

TEST(CalibrateSamples, SixPlacesAgreeWithEach) {
  constexpr double kDeviations = 3;
  std::vector<Place> places;
  for (int i = 1; i <= 6; ++i) {
    Place& place = places.emplace_back();
    for (int k = 0; k < 2; ++k) {
      const std::string lens = "lens" + std::to_string(k);
      const std::string name =
          i == 1 ? "woods_" + lens + "_2704x2624.jpg" : "woods_sequence/" + lens + "_" + std::to_string(i) + ".jpg";
      const std::string path = std::string(test::kSourceFolder) + "/../shared/samples/" + name;
      if (!std::filesystem::exists(path)) GTEST_SKIP() << "no sample pictures beside the project: " << name;
      place.lens[k] = test::read_nv12(path);
    }
  }
  std::vector<const Place*> all;
  for (const Place& place : places) all.push_back(&place);
  const std::vector<Number> together = numbers_of(calibrate::calibrate(views(all), {}, calibrate::in_turn));
  for (std::size_t i = 0; i < places.size(); ++i) {
    const std::vector<Number> alone = numbers_of(calibrate::calibrate(views({&places[i]}), {}, calibrate::in_turn));
    for (std::size_t n = 0; n < alone.size(); ++n) {
      const double allowed = kDeviations * std::hypot(alone[n].deviation, together[n].deviation);
      std::printf("place %zu %-5s %10.4f +-%.4f, together %10.4f +-%.4f\n", i + 1, alone[n].name, alone[n].value,
                  alone[n].deviation, together[n].value, together[n].deviation);
      EXPECT_NEAR(alone[n].value, together[n].value, allowed) << "place " << i + 1 << ", " << alone[n].name;
    }
  }
}

}  // namespace
}  // namespace biseam::tool
