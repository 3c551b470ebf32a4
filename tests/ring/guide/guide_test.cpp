#include "ring/guide/guide.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "ring/guide/guide_fixture.hpp"

namespace biseam::test {
namespace {

using namespace ring;

GuideTrouble trouble_of(const std::vector<uint8_t>& guide, const GuideShape& shape = kGuideShape) {
  return check_guide(shape, guide.data());
}

TEST(Guide, ComesBackAsItWasWritten) {
  std::vector<uint8_t> bytes(guide_bytes(kGuideShape));
  GuideWriter writer(kGuideShape, bytes.data());
  const auto light_of = [](int s) {
    return SectorLight{s * 60, {-s * 100, s * 200, 1 - s}, -(int64_t{1} << 40) - s, (int64_t{1} << 41) + s};
  };
  const auto row_of = [](int t) { return 4 * kGuideRow + (t < 24 ? t : 48 - t) * 7; };
  writer.starts(true);
  for (int s = 0; s < kSectors; ++s) writer.sector(s, light_of(s));
  for (int t = 0; t < 24; ++t) writer.disparity(t, t * 130);
  for (int t = 0; t < 48; ++t) writer.row(t, row_of(t));
  writer.finish();
  ASSERT_EQ(trouble_of(bytes), GuideTrouble::none);
  const GuideReader reader(kGuideShape, bytes.data());
  EXPECT_TRUE(reader.starts());
  for (int s = 0; s < kSectors; ++s) {
    const SectorLight read = reader.sector(s), written = light_of(s);
    EXPECT_EQ(read.count, written.count);
    for (int c = 0; c < 3; ++c) EXPECT_EQ(read.logs[c], written.logs[c]);
    EXPECT_EQ(read.slope_xy, written.slope_xy);
    EXPECT_EQ(read.slope_xx, written.slope_xx);
  }
  for (int t = 0; t < 24; ++t) EXPECT_EQ(reader.disparity(t), t * 130);
  for (int t = 0; t < 48; ++t) EXPECT_EQ(reader.row(t), row_of(t));
}

TEST(Guide, LowestBytesComeFirstOnEveryProcessor) {
  const std::vector<uint8_t> bytes = guide_of({});
  EXPECT_EQ(bytes.size(), 16u + 16 * 32 + 24 * 2 + 48 * 2 + 4);
  const std::vector<uint8_t> head(bytes.begin(), bytes.begin() + 32);
  EXPECT_EQ(head, (std::vector<uint8_t>{0xa4, 2,    0, 0, 'B', 'G', 'D', 1, 48,   0,    9,    0,    15,   0, 0, 0,
                                        0xf4, 0x01, 0, 0, 100, 0,   0,   0, 0x38, 0xff, 0xff, 0xff, 0x2c, 1, 0, 0}));
}

TEST(Guide, HoldsOnlyWhatItsShapeHas) {
  GuideShape shape = kGuideShape;
  shape.light_span = 0;
  EXPECT_EQ(guide_bytes(shape), 16u + 24 * 2 + 48 * 2 + 4);
  EXPECT_EQ(trouble_of(guide_of({}, shape), shape), GuideTrouble::none);
  shape.near_length = 0;
  shape.seams = shape.steady_seam = false;
  EXPECT_EQ(guide_bytes(shape), 20u);
  EXPECT_EQ(trouble_of(guide_of({}, shape), shape), GuideTrouble::none);
}

TEST(Guide, AnyByteThatIsChangedIsNoticed) {
  const std::vector<uint8_t> good = guide_of({});
  std::mt19937 random(7);
  for (std::size_t at = 0; at < good.size(); ++at) {
    std::vector<uint8_t> bad = good;
    bad[at] = static_cast<uint8_t>(bad[at] ^ (1 + random() % 255));
    EXPECT_EQ(trouble_of(bad), at < 14 ? GuideTrouble::other : GuideTrouble::damaged) << "byte " << at;
  }
}

TEST(Guide, OfAnotherShapeIsAnother) {
  const std::vector<uint8_t> good = guide_of({});
  const auto expect_other = [&](const char* what, const std::function<void(GuideShape&)>& change) {
    GuideShape shape = kGuideShape;
    change(shape);
    std::vector<uint8_t> bytes = good;
    bytes.resize(guide_bytes(shape));
    EXPECT_EQ(trouble_of(bytes, shape), GuideTrouble::other) << what;
  };
  expect_other("longer", [](GuideShape& s) { s.strip.length = 64; });
  expect_other("wider", [](GuideShape& s) { s.strip.width = 11; });
  expect_other("without light", [](GuideShape& s) { s.light_span = 0; });
  expect_other("without near things", [](GuideShape& s) { s.near_length = 0; });
  expect_other("without a seam", [](GuideShape& s) { s.seams = s.steady_seam = false; });
  expect_other("with free seams", [](GuideShape& s) { s.steady_seam = false; });
  GuideShape slower = kGuideShape;
  slower.light_span = slower.near_span = 2;
  EXPECT_EQ(trouble_of(good, slower), GuideTrouble::none) << "the rate is no part of it";
}

// With a sum that is right.
TEST(Guide, ValuesThatNoFrameHasAreRefusedOneByOne) {
  const auto expect_damaged = [](const char* what, const std::function<void(GuideWriter&)>& spoil) {
    std::vector<uint8_t> bytes = guide_of({});
    GuideWriter writer(kGuideShape, bytes.data());
    spoil(writer);
    writer.finish();
    EXPECT_EQ(trouble_of(bytes), GuideTrouble::damaged) << what;
  };
  const SectorLight good{500, {1, 2, 3}, 4, 5};
  const auto expect_no_light = [&](const char* what, const std::function<void(SectorLight&)>& spoil) {
    SectorLight light = good;
    spoil(light);
    expect_damaged(what, [&](GuideWriter& w) { w.sector(15, light); });
  };
  expect_no_light("fewer samples than none", [](SectorLight& l) { l.count = -1; });
  expect_no_light("more samples than there are", [](SectorLight& l) { l.count = 1 << 20; });
  for (int c = 0; c < 3; ++c) {
    expect_no_light("light beyond measure", [c](SectorLight& l) { l.logs[c] = 2 * kLogOne + 1; });
    expect_no_light("darkness beyond measure", [c](SectorLight& l) { l.logs[c] = INT32_MIN; });
  }
  expect_no_light("a negative square", [](SectorLight& l) { l.slope_xx = -1; });
  expect_no_light("a square that overflows sums", [](SectorLight& l) { l.slope_xx = INT64_MAX; });
  expect_no_light("a slope that overflows sums", [](SectorLight& l) { l.slope_xy = INT64_MIN; });
  expect_damaged("farther apart than is looked for", [](GuideWriter& w) { w.disparity(23, kGuideShape.near_most + 1); });
  expect_damaged("a seam at the edge", [](GuideWriter& w) {
    for (int t = 0; t < 48; ++t) w.row(t, 2 * kGuideRow - 1);
  });
  expect_damaged("a seam at the other edge", [](GuideWriter& w) {
    for (int t = 0; t < 48; ++t) w.row(t, 6 * kGuideRow + 1);
  });
  expect_damaged("a step", [](GuideWriter& w) { w.row(7, 5 * kGuideRow + 1); });
  expect_damaged("a step from the last to the first", [](GuideWriter& w) {
    for (int t = 0; t < 48; ++t) w.row(t, 3 * kGuideRow + (t * 2 * kGuideRow) / 47);
  });
}

}  // namespace
}  // namespace biseam::test
