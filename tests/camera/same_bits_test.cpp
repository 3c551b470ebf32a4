// The same bits on every host and from every compiler.
#include <gtest/gtest.h>

#include "camera/projector.hpp"
#include "camera/view.hpp"
#include "support/cameras.hpp"
#include "support/hash.hpp"

namespace biseam::test {
namespace {

TEST(SameBits, OfSinesAndArctangents) {
  Hash hash;
  for (int i = -50000; i <= 50000; ++i) {
    const SineCosine a = sine_cosine(i * 0.00390625 * 1.0625);
    hash.add(a.sine);
    hash.add(a.cosine);
    hash.add(arctangent(i * 0.125, 3000.0 - (i % 977) * 7.0));
  }
  EXPECT_EQ(0x30e4aba3b83960b1u, hash.value());
}

TEST(SameBits, OfProjectionsAndViews) {
  Hash hash;
  const Camera camera = bent_pair();
  const View view{640, 320, {17.25, -33.5, 111.125}};
  for (int k = 0; k < 2; ++k) {
    const Projector lens(camera, k);
    for (int y = 0; y < view.height; y += 3) {
      for (int x = 0; x < view.width; x += 3) {
        const ImagePoint at = lens.project(direction_at(view, x, y));
        const Vec3 back = lens.unproject(x, y);
        for (const double value : {at.x, at.y, at.angle, back.x, back.y, back.z}) hash.add(value);
      }
    }
  }
  hash.add(overlap(camera));
  EXPECT_EQ(0xa4d33e729ef8e021u, hash.value());
}

}  // namespace
}  // namespace biseam::test
