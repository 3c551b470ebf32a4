#include "ring/strip/strip_memory.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "ring/strip/fisheye_strip.hpp"
#include "ring/strip/seam_path.hpp"

namespace biseam::test {

namespace {

struct Piece {
  std::string name;
  const char* begin;
  size_t bytes;
};

// The pieces that keep what they hold, those of the reduction, and those of the seam and the bands.
struct Pieces {
  std::vector<Piece> lasting, reduced, bands;
};

template <class T>
void add(std::vector<Piece>& to, const std::string& name, const T* begin, ptrdiff_t count) {
  to.push_back({name, reinterpret_cast<const char*>(begin), static_cast<size_t>(count) * sizeof(T)});
}

Pieces pieces_of(const StripPlan& plan, const StripViews& views) {
  const StripShape shape = plan.config.shape;
  const ptrdiff_t samples = strip_samples(shape);
  Pieces all;
  for (int plane = 0; plane < plan.config.planes; ++plane) {
    const std::string of = " of plane " + std::to_string(plane);
    for (int lens = 0; lens < 2; ++lens) {
      const Reduction& reduction = plan.reductions[lens][plane];
      add(all.lasting, "needed" + of, views.needed[lens][plane], reduction.tile_count());
      add(all.lasting, "strip" + of, views.strips[lens][plane], samples);
      add(all.lasting, "corrections" + of, views.corrections[lens][plane], samples);
      add(all.reduced, "reduced" + of, views.reduced[lens][plane], reduction.samples());
    }
    add(all.lasting, "difference" + of, views.difference[plane], samples);
    add(all.bands, "pyramid" + of, views.difference_pyramid[plane].samples[0], pyramid_samples(shape));
  }
  add(all.lasting, "fade", views.fade, shape.width);
  add(all.lasting, "path", views.path, shape.length + 1);
  add(all.bands, "cost", views.cost, samples);
  add(all.bands, "search", static_cast<const char*>(views.search), static_cast<ptrdiff_t>(seam_search_bytes(shape)));
  add(all.bands, "rows", views.rows, shape.length);
  add(all.bands, "weights", views.weights.samples[0], pyramid_samples(shape));
  return all;
}

void expect_apart(const std::vector<Piece>& pieces, const char* block, size_t bytes) {
  for (size_t i = 0; i < pieces.size(); ++i) {
    const Piece& a = pieces[i];
    EXPECT_EQ(0, (a.begin - block) % 64) << a.name;
    EXPECT_GE(a.begin, block) << a.name;
    EXPECT_LE(a.begin + a.bytes, block + bytes) << a.name;
    for (size_t j = 0; j < i; ++j) {
      const Piece& b = pieces[j];
      EXPECT_TRUE(a.begin + a.bytes <= b.begin || b.begin + b.bytes <= a.begin) << a.name << ", " << b.name;
    }
  }
}

StripConfig config_of(StripShape shape, int planes) {
  StripConfig config{shape, planes, {}};
  for (auto& lens : config.geometry) {
    lens[0] = {240, 240, 1, 1, 0, 0};
    lens[1] = lens[2] = {120, 120, 2, 2, 0, 32768};
  }
  return config;
}

}  // namespace

TEST(StripPlan, ReducesPicturesToTheirPitch) {
  // 200 degrees of 1920 pixels: neighbours are 3.6 by 5.6 pixels apart at 960 samples round.
  for (const auto& [length, factor] : {std::pair{960, 4}, {480, 8}, {1920, 2}, {4096, 1}, {16, 32}}) {
    const StripShape shape{length, length == 16 ? 5 : 56};
    const FisheyePositions positions(shape, 1920);
    StripConfig config{shape, 1, {}};
    for (auto& lens : config.geometry) lens[0] = {1920, 1920, 1, 1, 0, 0};
    EXPECT_EQ(factor, plan_strips(config, {positions.of(0), positions.of(1)}).reductions[0][0].x.factor) << length;
  }
}

// Each with those that live at the same time.
TEST(StripMemory, PiecesLieApartInsideTheBlock) {
  for (const StripShape shape : {StripShape{16, 5}, {112, 20}, {240, 57}}) {
    for (const int planes : {1, 3}) {
      const FisheyePositions positions(shape, 240);
      const StripPositions places[2] = {positions.of(0), positions.of(1)};
      const StripPlan plan = plan_strips(config_of(shape, planes), places);
      const size_t bytes = strip_memory_bytes(plan);
      std::vector<char> memory(bytes + 64);
      char* const block = memory.data() + (64 - reinterpret_cast<uintptr_t>(memory.data()) % 64) % 64;
      Pieces pieces = pieces_of(plan, lay_out_strips(plan, places, block));
      for (std::vector<Piece>* more : {&pieces.reduced, &pieces.bands}) {
        more->insert(more->end(), pieces.lasting.begin(), pieces.lasting.end());
        expect_apart(*more, block, bytes);
      }
    }
  }
}

TEST(StripMemory, WhatIsMadeOnceIsTheSameWhateverTheBlockHeld) {
  const StripShape shape{112, 20};
  const FisheyePositions positions(shape, 240);
  const StripPositions places[2] = {positions.of(0), positions.of(1)};
  const StripPlan plan = plan_strips(config_of(shape, 3), places);
  std::vector<int16_t> fade(static_cast<size_t>(shape.width));
  make_fade(shape.width, plan.edge(), fade.data());
  for (const int held : {0, 255}) {
    std::vector<char> memory(strip_memory_bytes(plan) + 64);
    std::memset(memory.data(), held, memory.size());
    char* const block = memory.data() + (64 - reinterpret_cast<uintptr_t>(memory.data()) % 64) % 64;
    const StripViews views = lay_out_strips(plan, places, block);
    EXPECT_EQ(fade, std::vector<int16_t>(views.fade, views.fade + shape.width));
    for (int lens = 0; lens < 2; ++lens) {
      for (int plane = 0; plane < 3; ++plane) {
        const Reduction& reduction = plan.reductions[lens][plane];
        std::vector<uint8_t> needed(static_cast<size_t>(reduction.tile_count()));
        mark_tiles(reduction, places[lens], strip_samples(shape), needed.data());
        const uint8_t* const marked = views.needed[lens][plane];
        EXPECT_EQ(needed, std::vector<uint8_t>(marked, marked + needed.size()));
      }
    }
  }
}

}  // namespace biseam::test
