#include "clip/write/boxes.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace biseam::tool {
namespace {

Bytes joined(const Bytes& a, const Bytes& b) {
  Bytes all = a;
  all.insert(all.end(), b.begin(), b.end());
  return all;
}

TEST(Boxes, NumbersHaveTheirHighestByteFirst) {
  Bytes bytes;
  append_32(bytes, 0x01020304);
  append_64(bytes, 0x05060708090a0bff);
  EXPECT_EQ(bytes, (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 255}));
  EXPECT_EQ(read_32(bytes, 8), 0x090a0bffu);
  write_32(bytes, 1, 0xfedcba98);
  EXPECT_EQ(bytes, (Bytes{1, 0xfe, 0xdc, 0xba, 0x98, 6, 7, 8, 9, 10, 11, 255}));
}

TEST(Boxes, AreMadeWithTheirSizeAndName) {
  EXPECT_EQ(make_box("free", {}), (Bytes{0, 0, 0, 8, 'f', 'r', 'e', 'e'}));
  EXPECT_EQ(make_box("moov", {1, 2}), (Bytes{0, 0, 0, 10, 'm', 'o', 'o', 'v', 1, 2}));
}

TEST(Boxes, AreThereOnlyAsAWhole) {
  const Bytes bytes = joined(make_box("free", {1, 2, 3}), make_box("moov", {}));
  EXPECT_EQ(box_at(bytes, 0, bytes.size()), (Box{0, 11}));
  EXPECT_EQ(box_at(bytes, 11, bytes.size()), (Box{11, 8}));
  EXPECT_FALSE(box_at(bytes, 0, 10));
  EXPECT_FALSE(box_at(bytes, 12, bytes.size()));
  EXPECT_FALSE(box_at(bytes, bytes.size(), bytes.size()));
  for (const std::uint32_t size : {0u, 1u, 7u, 20u, 0xffffffffu}) {
    Bytes wrong = bytes;
    write_32(wrong, 0, size);
    EXPECT_FALSE(box_at(wrong, 0, wrong.size())) << size;
  }
}

TEST(Boxes, AreFoundByNameNumberAndPath) {
  const Bytes tracks = joined(make_box("trak", make_box("mdia", {1})), make_box("trak", make_box("mdia", {2, 3})));
  const Bytes file = joined(make_box("ftyp", {}), make_box("moov", tracks));
  const std::optional<Box> movie = find_box(file, 0, file.size(), "moov");
  ASSERT_EQ(movie, (Box{8, file.size() - 8}));
  EXPECT_TRUE(is_named(file, *movie, "moov"));
  EXPECT_FALSE(is_named(file, *movie, "moof"));
  EXPECT_EQ(box_inside(file, *movie, "trak"), (Box{16, 17}));
  const std::optional<Box> second = box_inside(file, *movie, "trak", 1);
  ASSERT_EQ(second, (Box{33, 18}));
  EXPECT_FALSE(box_inside(file, *movie, "trak", 2));
  EXPECT_FALSE(box_inside(file, *movie, "mdia")) << "that is deeper";
  constexpr std::array<std::string_view, 2> kPath = {"trak", "mdia"}, kNone = {"trak", "minf"};
  EXPECT_EQ(box_path(file, *movie, kPath), (std::vector<Box>{*movie, {16, 17}, {24, 9}}));
  EXPECT_TRUE(box_path(file, *movie, kNone).empty());
}

// Longer and shorter; those around it grow and shrink with it.
TEST(Boxes, ReplacedBytesChangeTheSizesAround) {
  const auto movie_with = [](const Bytes& content) { return make_box("moov", make_box("trak", make_box("mdia", content))); };
  constexpr std::array<std::string_view, 2> kPath = {"trak", "mdia"};
  for (const Bytes& by : {Bytes{}, Bytes{9}, Bytes{7, 8, 9, 10, 11}}) {
    Bytes movie = movie_with({1, 2, 3, 4});
    const std::vector<Box> path = box_path(movie, *box_at(movie, 0, movie.size()), kPath);
    replace_bytes(movie, path.back().at + kBoxHeader + 1, path.back().at + kBoxHeader + 3, by, path);
    EXPECT_EQ(movie, movie_with(joined(joined({1}, by), {4})));
  }
}

}  // namespace
}  // namespace biseam::tool
