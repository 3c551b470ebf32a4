#include "frame/compose/exchange.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "biseam/biseam.h"
#include "support/guarded_block.hpp"
#include "support/isas.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

// A picture between guards, at odd addresses.
struct Picture {
  Picture(int width, int height, int stride, int format)
      : luma(static_cast<std::size_t>(stride * (height - 1) + width + 1)),
        chroma(static_cast<std::size_t>(stride * (height - 1) + width + 1)) {
    header.width = width;
    header.height = height;
    header.format = format;
    header.planes[0] = luma.data() + 1;
    header.planes[1] = chroma.data() + 1;
    header.strides[0] = header.strides[1] = stride;
  }

  void fill(RandomSource random) {
    for (GuardedBlock<uint8_t>* plane : {&luma, &chroma}) {
      for (int i = 0; i < header.strides[0] * (header.height - 1) + header.width + 1; ++i) plane->data()[i] = random.byte();
    }
  }

  GuardedBlock<uint8_t> luma, chroma;
  ImageHeader header{};
};

class Exchange : public testing::TestWithParam<Isa> {
 protected:
  void SetUp() override { limit_isa(GetParam()); }
  void TearDown() override { limit_isa(before_); }

  static void check(int width, int height, int stride, int format) {
    SCOPED_TRACE(testing::Message() << width << " x " << height << ", stride " << stride << ", format " << format);
    Picture want(width, height, stride, format), got(width, height, stride, format);
    const RandomSource random;
    want.fill(random);
    got.fill(random);
    flip_image(&want.header);
    flip_panorama(got.header);
    ASSERT_EQ(want.luma.values(), got.luma.values());
    ASSERT_EQ(want.chroma.values(), got.chroma.values());
    mirror_image(&want.header);
    mirror_panorama(got.header);
    ASSERT_EQ(want.luma.values(), got.luma.values());
    ASSERT_EQ(want.chroma.values(), got.chroma.values());
  }

 private:
  const Isa before_ = isa_in_use();
};

TEST_P(Exchange, EqualsTheDefinition) {
  for (const int format : {0, 1, 4, 5}) {
    for (int width = 1; width < 140; ++width) check(width, 1 + width % 7, width + width % 3, format);
  }
}

TEST_P(Exchange, RowsThatOverlapEqualTheDefinition) {
  for (const int stride : {0, 2, 30, 63, 98, 99}) check(100, 6, stride, BISEAM_YUV422_SEMIPLANAR);
}

TEST_P(Exchange, OtherFormatsStayAsTheyAre) {
  for (const int format : {2, 3, 6, 7, 8, -1}) check(40, 6, 40, format);
}

INSTANTIATE_TEST_SUITE_P(Versions, Exchange, testing::ValuesIn(isas_here()), isa_name);

}  // namespace
}  // namespace biseam::test
