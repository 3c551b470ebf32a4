#include "ring/channels.hpp"

#include <gtest/gtest.h>

#include "biseam/panorama.h"
#include "support/cameras.hpp"

namespace biseam::test {
namespace {

using namespace ring;

PictureFormat format_of(int format) {
  PictureFormat described;
  describe_format(format, BISEAM_SITING_LEFT, described);
  return described;
}

void expect_channel(int format, int channel, int plane, int offset, int step) {
  const Channel found = find_channel(format_of(format), channel);
  EXPECT_EQ(found.plane, plane) << format << " " << channel;
  EXPECT_EQ(found.offset, offset) << format << " " << channel;
  EXPECT_EQ(found.step, step) << format << " " << channel;
}

TEST(Channels, LieInPairsOrInPlanesOfTheirOwn) {
  expect_channel(BISEAM_NV12, 0, 0, 0, 1);
  expect_channel(BISEAM_NV12, 1, 1, 0, 2);
  expect_channel(BISEAM_NV12, 2, 1, 1, 2);
  for (int channel = 0; channel < 3; ++channel) expect_channel(BISEAM_I420, channel, channel, 0, 1);
}

TEST(Channels, OfStripsHaveTheirPlanesSizesAndPlaces) {
  const Camera camera = city_square();
  const StripConfig pairs = strip_config(camera, format_of(BISEAM_NV12), {960, 56});
  EXPECT_EQ(pairs.planes, 3);
  for (int lens = 0; lens < 2; ++lens) {
    EXPECT_EQ(pairs.geometry[lens][0].width, 960);
    EXPECT_EQ(pairs.geometry[lens][0].spacing_x, 1);
    for (int channel = 1; channel < 3; ++channel) {
      const PlaneGeometry& chroma = pairs.geometry[lens][channel];
      EXPECT_EQ(chroma.width, 480);
      EXPECT_EQ(chroma.height, 480);
      EXPECT_EQ(chroma.spacing_x, 2);
      EXPECT_EQ(chroma.origin_x, 0);
      EXPECT_EQ(chroma.origin_y, 1 << 15) << "half a pixel down";
    }
  }
  EXPECT_EQ(strip_config(camera, format_of(BISEAM_GRAY8), {960, 56}).planes, 1);
}

}  // namespace
}  // namespace biseam::test
