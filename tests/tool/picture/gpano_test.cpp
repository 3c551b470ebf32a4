#include "picture/gpano.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "picture/encode.hpp"

namespace biseam::tool {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(Gpano, SaysNothingOfPlainPictures) {
  for (const Bytes& file : {encode_png(Rgb(64, 32)), encode_jpeg(Rgb(64, 32))}) {
    EXPECT_EQ(read_gpano(file).projection, "");
    EXPECT_FALSE(read_gpano(file).fits);
  }
}

// One piece more, and nothing else changed; a second mark takes the place of the first.
TEST(Gpano, IsHeardAsItIsSaid) {
  for (const Bytes& file : {encode_png(Rgb(64, 32)), encode_jpeg(Rgb(64, 32))}) {
    const Bytes marked = with_gpano(file);
    EXPECT_EQ(read_gpano(marked).projection, "equirectangular");
    EXPECT_TRUE(read_gpano(marked).fits);
    const auto head = std::mismatch(file.begin(), file.end(), marked.begin()).first - file.begin();
    const auto tail = std::mismatch(file.rbegin(), file.rend(), marked.rbegin()).first - file.rbegin();
    EXPECT_GE(std::size_t(head + tail), file.size());
    EXPECT_EQ(with_gpano(marked), marked);
  }
}

// A width of 64 that becomes 63 of the part, or of the whole.
TEST(Gpano, NumbersOfAnotherPictureDontFit) {
  const Bytes marked = with_gpano(encode_jpeg(Rgb(64, 32)));
  for (const std::string key : {"CroppedAreaImageWidthPixels=\"64", "FullPanoWidthPixels=\"64"}) {
    Bytes other = marked;
    const auto at = std::search(other.begin(), other.end(), key.begin(), key.end());
    ASSERT_NE(at, other.end()) << key;
    at[std::ptrdiff_t(key.size()) - 1] = '3';
    EXPECT_EQ(read_gpano(other).projection, "equirectangular");
    EXPECT_FALSE(read_gpano(other).fits) << key;
  }
}

TEST(Gpano, WhatIsNoPictureIsRefused) {
  const std::string text = "This is no picture.";
  const Bytes png = encode_png(Rgb(64, 32));
  for (const Bytes& file : {Bytes{}, Bytes(text.begin(), text.end()), Bytes(png.begin(), png.begin() + 20)}) {
    EXPECT_THROW(read_gpano(file), std::runtime_error);
    EXPECT_THROW(with_gpano(file), std::runtime_error);
  }
}

}  // namespace
}  // namespace biseam::tool
