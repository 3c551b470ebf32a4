#include "clip/write/sample_places.hpp"

#include <gtest/gtest.h>

#include <string>

namespace biseam::tool {
namespace {

Bytes joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Bytes numbers(std::initializer_list<std::uint32_t> values) {
  Bytes all(4);  // version and flags
  for (const std::uint32_t value : values) append_32(all, value);
  return all;
}

// A box whose flags are those.
Bytes flagged(const char* name, std::uint8_t flags, std::initializer_list<std::uint32_t> values) {
  Bytes content = numbers(values);
  content[3] = flags;
  return make_box(name, content);
}

// Track number 7: its sizes, and samples of chunks.
Bytes movie(const Bytes& sizes, const Bytes& chunks, const Bytes& places) {
  const Bytes tables = make_box("stbl", joined({make_box("stsz", sizes), make_box("stsc", chunks), places}));
  const Bytes media = make_box("mdia", make_box("minf", tables));
  return make_box("moov", make_box("trak", joined({make_box("tkhd", numbers({0, 0, 7, 0})), media})));
}

Bytes stco(std::initializer_list<std::uint32_t> places) {
  Bytes all = numbers({std::uint32_t(places.size())});
  for (const std::uint32_t place : places) append_32(all, place);
  return make_box("stco", all);
}

TEST(SamplePlaces, RunsAreThoseOfAPiece) {
  const Bytes first =
      make_box("traf", joined({flagged("tfhd", 0, {7}), flagged("trun", 1, {3, 100}), flagged("trun", 1, {2, 400})}));
  const Bytes second = make_box("traf", joined({flagged("tfhd", 0, {8}), flagged("trun", 1, {1, 300})}));
  std::vector<PacketRun> runs;
  ASSERT_TRUE(read_runs(make_box("moof", joined({first, second})), 1000, runs));
  EXPECT_EQ(runs, (std::vector<PacketRun>{{7, 1100, 3}, {7, 1400, 2}, {8, 1300, 1}}));
}

TEST(SamplePlaces, PiecesOfAnotherLayoutAreRefused) {
  std::vector<PacketRun> runs;
  const Bytes run = flagged("trun", 1, {3, 100});
  for (const Bytes& track : {joined({flagged("tfhd", 1, {7, 0, 0}), run}),                     // with a base of its own
                             joined({flagged("tfhd", 0, {7}), flagged("trun", 0, {3})}),       // without a place
                             joined({flagged("tfhd", 0, {7}), flagged("trun", 1, {0, 100})}),  // of nothing
                             run, joined({make_box("tfhd", Bytes(7)), run})}) {
    EXPECT_FALSE(read_runs(make_box("moof", make_box("traf", track)), 0, runs));
  }
  EXPECT_FALSE(read_runs({}, 0, runs));
}

TEST(SamplePlaces, EachRunIsAChunk) {
  Bytes index = movie(numbers({0, 6, 1, 1, 1, 1, 1, 1}), numbers({1, 1, 6, 1}), stco({48}));
  const std::vector<PacketRun> runs{{7, 100, 2}, {8, 150, 0}, {7, 200, 2}, {7, 300, 2}};
  ASSERT_TRUE(place_samples(index, runs));
  EXPECT_EQ(index, movie(numbers({0, 6, 1, 1, 1, 1, 1, 1}), numbers({1, 1, 2, 1}), stco({100, 200, 300})));
}

TEST(SamplePlaces, APacketIsAsManySamplesAsItsChunkHad) {
  const Bytes sizes = numbers({2, 26});
  Bytes index = movie(sizes, numbers({2, 1, 4, 1, 3, 9, 1}), stco({0, 100, 200, 300}));  // 4, 4, 9 and 9
  ASSERT_TRUE(place_samples(index, std::vector<PacketRun>{{7, 1000, 3}, {7, 5000, 1}}));
  EXPECT_EQ(index, movie(sizes, numbers({2, 1, 17, 1, 2, 9, 1}), stco({1000, 5000})));
}

TEST(SamplePlaces, FarPlacesAreLongNumbers) {
  Bytes index = movie(numbers({0, 2, 1, 1}), numbers({1, 1, 2, 1}), stco({48}));
  ASSERT_TRUE(place_samples(index, std::vector<PacketRun>{{7, 100, 1}, {7, 0x200000003, 1}}));
  const Bytes places = make_box("co64", numbers({2, 0, 100, 2, 3}));
  EXPECT_EQ(index, movie(numbers({0, 2, 1, 1}), numbers({1, 1, 1, 1}), places));
}

TEST(SamplePlaces, WhatDoesntFitIsLeftAlone) {
  const Bytes before = movie(numbers({0, 6, 1, 1, 1, 1, 1, 1}), numbers({1, 1, 6, 1}), stco({48}));
  for (const std::vector<PacketRun>& runs :
       {std::vector<PacketRun>{{7, 100, 5}}, {{7, 100, 7}}, {{7, 100, 6}, {9, 200, 1}}, {}}) {
    Bytes index = before;
    EXPECT_FALSE(place_samples(index, runs));
    EXPECT_EQ(index, before);
  }
}

}  // namespace
}  // namespace biseam::tool
