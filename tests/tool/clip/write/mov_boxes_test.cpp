#include "clip/write/mov_boxes.hpp"

#include <gtest/gtest.h>

#include <array>

namespace biseam::tool {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes box(const char* type, const Bytes& content) {
  const std::size_t size = content.size() + 8;
  Bytes bytes{std::uint8_t(size >> 24), std::uint8_t(size >> 16), std::uint8_t(size >> 8), std::uint8_t(size)};
  bytes.insert(bytes.end(), type, type + 4);
  bytes.insert(bytes.end(), content.begin(), content.end());
  return bytes;
}

Bytes movie_of(const Bytes& media_header) { return box("moov", box("trak", box("mdia", media_header))); }

const std::array kGerman{TrackAddition{.spherical = false, .language = "deu"}};

TEST(MovBoxes, ATrackWithoutALanguageGetsOne) {
  // Version and flags, two times, time scale, duration; all bits of the language, which stand for none; quality.
  Bytes content(24);
  content[20] = 0x7f, content[21] = 0xff;
  Bytes movie = movie_of(box("mdhd", content));
  ASSERT_TRUE(add_to_tracks(movie, kGerman));
  content[20] = 0x10, content[21] = 0xb5;  // 4, 5, 21 of five bits each
  EXPECT_EQ(movie, movie_of(box("mdhd", content)));
}

TEST(MovBoxes, AMediaHeaderThatEndsEarlyIsLeftAlone) {
  for (std::size_t size = 0; size < 22; ++size) {
    const Bytes before = movie_of(box("mdhd", Bytes(size)));
    Bytes movie = before;
    add_to_tracks(movie, kGerman);
    EXPECT_EQ(movie, before) << size;
  }
}

}  // namespace
}  // namespace biseam::tool
