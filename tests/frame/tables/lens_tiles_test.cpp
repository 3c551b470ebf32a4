#include "frame/tables/lens_tiles.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "stages/lens/lens_strip.hpp"
#include "stages/lens/lens_table.hpp"
#include "support/guarded.hpp"
#include "support/isas.hpp"

namespace biseam::test {
namespace {

struct Size {
  int width, height, feather;
};

std::vector<float> build_all(const StitchConfig& config, BuildStrip build) {
  std::vector<float> entries[3];
  StitchEngine engine{};
  MAPTIHeader* const maps[] = {&engine.map_left, &engine.map_middle, &engine.map_right};
  for (int strip = 0; strip < 3; ++strip) {
    entries[strip].resize(2 * static_cast<std::size_t>(describe_strip(config, strip).width) * config.in_h);
    maps[strip]->entries = entries[strip].data();
  }
  build_tables(config, engine, build);
  for (int strip = 1; strip < 3; ++strip) entries[0].insert(entries[0].end(), entries[strip].begin(), entries[strip].end());
  return entries[0];
}

class LensTiles : public testing::TestWithParam<Isa> {
 protected:
  void SetUp() override { limit_isa(GetParam()); }
  void TearDown() override { limit_isa(before_); }

 private:
  const Isa before_ = isa_in_use();
};

TEST_P(LensTiles, WholeTablesEqualTheDefinition) {
  const unsigned seed = 20511;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  Random random(seed);
  for (const Size& size : {Size{64, 32, 4}, {331, 77, 5}, {1920, 960, 32}, {2050, 601, 7}, {4444, 9, 0}, {28, 1300, 1}}) {
    SCOPED_TRACE(testing::Message() << size.width << " x " << size.height);
    StitchConfig config{};
    config.in_h = config.out_h[0] = size.height;
    config.out_w[0] = size.width;
    config.feather = size.feather;
    config.p0 = config.p1 = static_cast<float>(size.height) * pick(random, 0.1f, 1.0f);
    config.cx0 = config.cy0 = config.cx1 = config.cy1 = static_cast<float>(size.height - 1) / 2;
    config.change_focus = pick(random, 0.5f, 2.0f);
    for (float& entry : config.lens_matrix) entry = pick(random, -1.5f, 1.5f);
    const std::vector<float> expected = build_all(config, build_strip), actual = build_all(config, build_strip_by_tiles);
    EXPECT_EQ(std::memcmp(expected.data(), actual.data(), 4 * expected.size()), 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Versions, LensTiles, testing::ValuesIn(isas_here()), isa_name);

}  // namespace
}  // namespace biseam::test
