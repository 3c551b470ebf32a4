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

Bytes track(std::uint8_t number, const Bytes& media_header) {
  Bytes header(20);  // version and flags, two times, the number, nothing
  header[15] = number;
  Bytes content = box("tkhd", header);
  const Bytes media = box("mdia", media_header);
  content.insert(content.end(), media.begin(), media.end());
  return box("trak", content);
}

Bytes movie_of(const Bytes& media_header) { return box("moov", track(1, media_header)); }

const std::array kGerman{TrackAddition{.track = 1, .spherical = false, .language = "deu"}};

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

TEST(MovBoxes, ATrackIsKnownByItsNumber) {
  Bytes content(24);
  content[20] = 0x7f, content[21] = 0xff;
  const auto movie_with_language = [&](std::uint8_t number) { return box("moov", track(number, box("mdhd", content))); };
  const Bytes before = movie_with_language(2);
  Bytes movie = before;
  ASSERT_TRUE(add_to_tracks(movie, kGerman));
  EXPECT_EQ(movie, before);
  const std::array both{kGerman[0], TrackAddition{.track = 2, .spherical = false, .language = "deu"}};
  ASSERT_TRUE(add_to_tracks(movie, both));
  content[20] = 0x10, content[21] = 0xb5;
  EXPECT_EQ(movie, movie_with_language(2));
}

TEST(MovBoxes, ATrackWithoutANumberIsRefused) {
  const Bytes before = box("moov", box("trak", box("mdia", box("mdhd", Bytes(24)))));
  Bytes movie = before;
  EXPECT_FALSE(add_to_tracks(movie, kGerman));
  EXPECT_EQ(movie, before);
}

}  // namespace
}  // namespace biseam::tool
