#include "frame/bands/blended_rows.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "stages/format/convert.hpp"
#include "support/guarded_block.hpp"
#include "support/random_source.hpp"
#include "support/test_image.hpp"

namespace biseam::test {
namespace {

constexpr int kTo420 = BISEAM_YUV420_SEMIPLANAR | BISEAM_RGB << 4, kTo422 = BISEAM_YUV422_SEMIPLANAR | BISEAM_RGB << 4;

// A strip between guards.
struct Strip {
  Strip(int width, int height, bool half_chroma)
      : luma(static_cast<size_t>(width * height)), chroma(static_cast<size_t>(width * height / (half_chroma ? 2 : 1))) {
    record.width = width;
    record.height = height;
    record.planes[0] = luma.data();
    record.planes[1] = chroma.data();
    record.strides[0] = record.strides[1] = width;
  }

  GuardedBlock<uint8_t> luma, chroma;
  ImageHeader record{};
};

TEST(BlendedRows, EqualTheWholeBandConverted) {
  RandomSource random;
  for (int round = 0; round < 200; ++round) {
    const int width = 2 * random.between(1, 60), height = 2 * random.between(1, 12);
    const int code = round % 2 == 0 ? kTo420 : kTo422;
    TestImage band(width, height);
    band.randomize(random, round % 3 == 0 ? -100000 : 0, round % 3 == 0 ? 100000 : 255 * 64);
    Strip whole(width, height, code == kTo420), by_rows(width, height, code == kTo420);
    convert_image(band.record(), &whole.record, code);

    BlendedRows rows(by_rows.record, code & 15);
    const RowSink sink = rows.sink();
    for (int y = 0; y < height; y += 2) {
      TestImage pair(width, 2);
      std::copy_n(band.samples().begin() + ptrdiff_t{3} * width * y, pair.samples().size(), pair.samples().begin());
      sink.take(sink.context, pair.samples().data(), y);
    }
    ASSERT_EQ(whole.luma.values(), by_rows.luma.values()) << width << " x " << height << ", code " << code;
    ASSERT_EQ(whole.chroma.values(), by_rows.chroma.values()) << width << " x " << height << ", code " << code;
  }
}

}  // namespace
}  // namespace biseam::test
