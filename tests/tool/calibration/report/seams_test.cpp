#include "calibration/report/seams.hpp"

#include <gtest/gtest.h>

#include "tool/calibration/report/painted_finding.hpp"
#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

const Size kBoth[2] = {{kSide, kSide}, {kSide, kSide}};

TEST(SeamParts, AreThePanoramaLeftAndRight) {
  const auto setup = make_setup({painted_finding().settings, ""}, {}, kBoth);
  ASSERT_EQ(setup.width, 2 * kSide);
  const std::array<Rgb, 2> parts = seam_parts(photographed_pair(), setup);
  for (int i = 0; i < 2; ++i) {
    const Rgb& part = parts[std::size_t(i)];
    ASSERT_EQ(part.width, kSide);
    ASSERT_EQ(part.height, kSide);
    for (const int at : {-60, 0, 60}) {
      double shown = 0, there = 0;  // over a spot, as pictures have noise
      for (int dy = -3; dy <= 3; ++dy) {
        for (int dx = -3; dx <= 3; ++dx) {
          const SineCosine lon = sine_cosine((i == 0 ? -kPi / 2 : kPi / 2) + (at + dx + 0.5) * kPi / kSide);
          const SineCosine lat = sine_cosine((at + dy + 0.5) * kPi / kSide);
          shown += part.bytes[3 * std::size_t((kSide / 2 + at + dy) * kSide + kSide / 2 + at + dx)] / 49.0;
          there += calibrate::light_from({lat.cosine * lon.sine, lat.sine, lat.cosine * lon.cosine}) / 49;
        }
      }
      EXPECT_NEAR(shown, there + 2, 3) << i << ' ' << at;
    }
  }
}

TEST(SeamParts, CameraThatLeavesAGapIsRefused) {
  calibrate::Finding finding = painted_finding();
  finding.settings.lens[0].fov = finding.settings.lens[1].fov = 170;
  const auto setup = make_setup({finding.settings, ""}, {}, kBoth);
  EXPECT_EQ(test::failure_of([&] { seam_parts(photographed_pair(), setup); }).first, ExitCode::settings);
}

}  // namespace
}  // namespace biseam::tool
