#include "picture/plane.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace biseam::tool {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(Plane, RowsAreCopiedAndPaddingIsNot) {
  const Bytes from{1, 2, 3, 99, 4, 5, 6};
  Bytes to(8, 77);
  copy_plane({from.data(), 4, 3, 2}, to.data(), 5);
  EXPECT_EQ(to, (Bytes{1, 2, 3, 77, 77, 4, 5, 6}));
}

TEST(Plane, APlaneUpsideDownIsTurnedOver) {
  const Bytes from{1, 2, 3, 4};
  Bytes to(4);
  copy_plane({from.data() + 2, -2, 2, 2}, to.data(), 2);
  EXPECT_EQ(to, (Bytes{3, 4, 1, 2}));
}

TEST(Plane, ChromaIsJoinedAndPaddingIsLeftOut) {
  const Bytes cb{1, 3, 77, 5, 7}, cr{2, 4, 77, 77, 6, 8};
  Bytes pairs(8);
  join_chroma({cb.data(), cr.data(), 3, 4}, 4, 2, pairs.data());
  EXPECT_EQ(pairs, (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
}

}  // namespace
}  // namespace biseam::tool
