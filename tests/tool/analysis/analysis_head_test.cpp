#include "analysis/analysis_head.hpp"

#include <gtest/gtest.h>

#include <functional>

#include "base/little_endian.hpp"
#include "tool/analysis/small_analysis.hpp"
#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

using test::small_head;

TEST(AnalysisHead, ComesBackAsItWasWritten) {
  for (const BiseamSeam seam : {BISEAM_SEAM_MIDDLE, BISEAM_SEAM_SEARCH, BISEAM_SEAM_STEADY}) {
    AnalysisHead head = small_head();
    head.seam = seam;
    head.near = seam == BISEAM_SEAM_STEADY;
    head.light = !head.near;
    const std::vector<std::uint8_t> bytes = head_bytes(head);
    ASSERT_EQ(bytes.size(), kAnalysisHeadBytes);
    const AnalysisHead read = read_head(bytes, "clip.bsa");
    EXPECT_EQ(read.guide_bytes, head.guide_bytes);
    EXPECT_EQ(size_text(read.panorama), size_text(head.panorama));
    for (int k = 0; k < 2; ++k) {
      EXPECT_EQ(size_text(read.lens[k]), size_text(head.lens[k]));
      EXPECT_EQ(read.clip.bytes[k], head.clip.bytes[k]);
    }
    EXPECT_EQ(read.seam, head.seam);
    EXPECT_EQ(read.near, head.near);
    EXPECT_EQ(read.light, head.light);
    EXPECT_EQ(read.camera, head.camera);
    EXPECT_EQ(read.clip.time_base.num, 1);
    EXPECT_EQ(read.clip.time_base.den, 12800);
  }
}

TEST(AnalysisHead, AnyByteThatIsChangedIsNoticed) {
  const std::vector<std::uint8_t> good = head_bytes(small_head());
  for (std::size_t at = 0; at < good.size(); ++at) {
    std::vector<std::uint8_t> bad = good;
    bad[at] = std::uint8_t(bad[at] ^ 0x40);
    const auto [code, line] = test::failure_of([&] { read_head(bad, "clip.bsa"); });
    EXPECT_EQ(code, ExitCode::input);
    const char* const wanted = at < 16   ? "is no analysis of a clip"
                               : at < 20 ? "is an analysis of another version"
                                         : "is damaged";
    EXPECT_EQ(line, std::string("clip.bsa: ") + wanted) << at;
  }
}

// With a sum that is right.
TEST(AnalysisHead, ValuesThatNoneHasAreRefused) {
  const auto expect_damaged = [](std::size_t at, std::uint8_t value) {
    std::vector<std::uint8_t> bytes = head_bytes(small_head());
    bytes[at] = value;
    bytes.resize(kAnalysisHeadBytes - 4);
    append_number(bytes, sum_of(bytes), 4);
    EXPECT_EQ(test::failure_of([&] { read_head(bytes, "clip.bsa"); }).second, "clip.bsa: is damaged") << at;
  };
  expect_damaged(20, 0);  // guides without a byte
  expect_damaged(49, 3);  // seams of no kind
}

TEST(CameraMark, IsAnotherOneForAnyOtherCamera) {
  const BiseamCamera camera = biseam_camera_of(480, 480, 195);
  EXPECT_EQ(camera_mark(camera), camera_mark(biseam_camera_of(480, 480, 195)));
  const std::function<void(BiseamCamera&)> changes[] = {
      [](BiseamCamera& c) { c.baseline = 0.03; },
      [](BiseamCamera& c) { c.lens[0].width = 482; },
      [](BiseamCamera& c) { c.lens[1].height = 482; },
      [](BiseamCamera& c) { c.lens[0].mount = 90; },
      [](BiseamCamera& c) { c.lens[0].cx += 1e-9; },
      [](BiseamCamera& c) { c.lens[1].cy += 1; },
      [](BiseamCamera& c) { c.lens[0].p += 0.1; },
      [](BiseamCamera& c) { c.lens[1].k[2] = 1e-3; },
      [](BiseamCamera& c) { c.lens[0].fov = 196; },
      [](BiseamCamera& c) { c.lens[1].turn.roll = 1; },
      [](BiseamCamera& c) { c.lens[0].vignette[1] = 0.1; },
      [](BiseamCamera& c) { c.lens[1].gain[2] = 1.1; },
      [](BiseamCamera& c) { std::swap(c.lens[0].turn.yaw = 1, c.lens[0].turn.pitch); }};
  for (const auto& change : changes) {
    BiseamCamera other = camera;
    change(other);
    EXPECT_NE(camera_mark(other), camera_mark(camera));
  }
  BiseamCamera zero = camera;
  zero.lens[0].turn.yaw = -0.0;
  EXPECT_EQ(camera_mark(zero), camera_mark(camera));
}

}  // namespace
}  // namespace biseam::tool
