#include "base/extension.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

TEST(Extension, IsToldInSmallLetters) {
  EXPECT_EQ(extension_of("a/B.JPG"), ".jpg");
  EXPECT_EQ(extension_of("clip.old.Mp4"), ".mp4");
  EXPECT_EQ(extension_of("folder.png/name"), "");
  EXPECT_EQ(extension_of("-"), "");
}

}  // namespace
}  // namespace biseam::tool
