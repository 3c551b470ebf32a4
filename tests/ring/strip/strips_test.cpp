#include "ring/strip/strips.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "base/isa.hpp"
#include "kernels/guarded_buffer.hpp"
#include "ring/strip/fisheye_strip.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

namespace {

// Two smooth pictures that differ, in any layout.
struct Scene {
  enum class Chroma { planes, pairs, none };
  int size, depth, shift;
  Chroma chroma;
  std::vector<uint8_t> bytes[2][kMaxPlanes];

  int step() const { return chroma == Chroma::pairs ? 2 : 1; }
  int sample_bytes() const { return depth == 8 ? 1 : 2; }

  static int code(int lens, int plane, int x, int y) {
    return std::clamp(
        128 + (x * (3 + plane) + y * (5 - plane) + lens * 17) % 61 + ((x / 7 + y / 5 + plane) % 2) * 40 - 50 + lens * 9, 0,
        255);
  }

  Scene(int picture, int bits, int low_bits, Chroma layout) : size(picture), depth(bits), shift(low_bits), chroma(layout) {
    for (int lens = 0; lens < 2; ++lens) {
      bytes[lens][0] = fill(lens, {0}, size);
      if (layout == Chroma::pairs) bytes[lens][1] = fill(lens, {1, 2}, size / 2);
      if (layout == Chroma::planes) {
        bytes[lens][1] = fill(lens, {1}, size / 2);
        bytes[lens][2] = fill(lens, {2}, size / 2);
      }
    }
  }

  std::vector<uint8_t> fill(int lens, std::initializer_list<int> planes, int side) const {
    std::vector<uint8_t> out;
    for (int y = 0; y < side; ++y) {
      for (int x = 0; x < side; ++x) {
        for (const int plane : planes) {
          const int value = code(lens, plane, x, y) << (depth - 8);
          if (depth == 8) {
            out.push_back(static_cast<uint8_t>(value));
          } else {
            const uint16_t word = static_cast<uint16_t>(value << shift);
            const uint8_t* p = reinterpret_cast<const uint8_t*>(&word);
            out.insert(out.end(), p, p + 2);
          }
        }
      }
    }
    return out;
  }

  PlaneSamples plane(int lens, int index) const {
    const ptrdiff_t line = ptrdiff_t{size} * sample_bytes();
    if (index == 0) return {bytes[lens][0].data(), line, 1};
    if (chroma == Chroma::pairs) return {bytes[lens][1].data() + (index - 1) * sample_bytes(), line, 2};
    return {bytes[lens][index].data(), line / 2, 1};
  }
};

struct Strips {
  FisheyePositions positions;
  StripPlan plan;
  GuardedBuffer block;
  StripViews views;
  StripFrame frame;

  Strips(StripShape shape, const Scene& scene, SeamSettings seam)
      : positions(shape, scene.size),
        plan(plan_strips(config(shape, scene), {positions.of(0), positions.of(1)})),
        block((strip_memory_bytes(plan) + 63) / 64 * 64, Placement::at_end, 0),
        views(lay_out_strips(plan, {positions.of(0), positions.of(1)}, block.data())),
        frame{&plan,   &views, {positions.of(0), positions.of(1)}, {}, {scene.depth, scene.shift}, nullptr, nullptr,
              nullptr, seam} {
    for (int lens = 0; lens < 2; ++lens) {
      for (int plane = 0; plane < plan.config.planes; ++plane) frame.pictures[lens][plane] = scene.plane(lens, plane);
    }
  }

  static StripConfig config(StripShape shape, const Scene& scene) {
    StripConfig config{shape, scene.chroma == Scene::Chroma::none ? 1 : 3, {}};
    for (auto& lens : config.geometry) {
      lens[0] = {scene.size, scene.size, 1, 1, 0, 0};
      lens[1] = lens[2] = {scene.size / 2, scene.size / 2, 2, 2, 0, 32768};
    }
    return config;
  }

  std::vector<int32_t> path() const { return {views.path, views.path + plan.config.shape.length + 1}; }
  std::vector<int16_t> all_corrections() const {
    std::vector<int16_t> all;
    for (int lens = 0; lens < 2; ++lens) {
      for (int plane = 0; plane < plan.config.planes; ++plane) {
        const int16_t* c = views.corrections[lens][plane];
        all.insert(all.end(), c, c + strip_samples(plan.config.shape));
      }
    }
    return all;
  }
};

constexpr SeamSettings kSearch{SeamMode::search, nullptr};

}  // namespace

TEST(Strips, AreTheSameInAnyOrderOfPartsAndInEveryFrame) {
  const Scene scene(240, 8, 0, Scene::Chroma::pairs);
  Strips one({112, 20}, scene, kSearch), other({112, 20}, scene, kSearch);
  run_strips(one.frame);
  std::mt19937 shuffle(7);
  for (int frame = 0; frame < 3; ++frame) {
    for (const StripStep step : kStripSteps) {
      std::vector<int> parts(static_cast<size_t>(strip_parts(other.plan, step)));
      for (size_t i = 0; i < parts.size(); ++i) parts[i] = static_cast<int>(i);
      std::shuffle(parts.begin(), parts.end(), shuffle);
      for (const int part : parts) run_strip_part(other.frame, step, part);
    }
    EXPECT_EQ(one.path(), other.path());
    EXPECT_EQ(one.all_corrections(), other.all_corrections());
  }
  EXPECT_NE(one.all_corrections(), std::vector<int16_t>(one.all_corrections().size())) << "lenses that differ";
}

TEST(Strips, AreTheSameForEveryInstructionSet) {
  const Isa best = isa_in_use();
  for (const auto& [depth, shift] : {std::pair{8, 0}, {10, 6}, {12, 0}}) {
    const Scene scene(200, depth, shift, Scene::Chroma::planes);
    Strips scalar({96, 17}, scene, kSearch);
    ASSERT_TRUE(limit_isa(Isa::scalar));
    run_strips(scalar.frame);
    for (const Isa isa : kIsas) {
      if (isa > best || !limit_isa(isa)) continue;
      Strips strips({96, 17}, scene, kSearch);
      run_strips(strips.frame);
      EXPECT_EQ(scalar.path(), strips.path()) << name_of(isa);
      EXPECT_EQ(scalar.all_corrections(), strips.all_corrections()) << name_of(isa);
    }
    limit_isa(best);
  }
}

TEST(Strips, AreTheSameForEveryLayout) {
  using Chroma = Scene::Chroma;
  const Scene scene(240, 8, 0, Chroma::pairs);
  Strips pairs({112, 20}, scene, kSearch);
  run_strips(pairs.frame);
  // The same codes with zero bits below them.
  for (const Scene& other :
       {Scene(240, 8, 0, Chroma::planes), Scene(240, 10, 0, Chroma::planes), Scene(240, 10, 6, Chroma::pairs),
        Scene(240, 12, 0, Chroma::pairs), Scene(240, 12, 4, Chroma::planes)}) {
    Strips strips({112, 20}, other, kSearch);
    run_strips(strips.frame);
    EXPECT_EQ(pairs.path(), strips.path()) << other.depth;
    EXPECT_EQ(pairs.all_corrections(), strips.all_corrections()) << other.depth;
  }
}

TEST(Strips, OfGrayPicturesAreThoseOfLuma) {
  const Scene gray(240, 8, 0, Scene::Chroma::none), colour(240, 8, 0, Scene::Chroma::planes);
  Strips of_gray({112, 20}, gray, {SeamMode::middle, nullptr}), of_colour({112, 20}, colour, {SeamMode::middle, nullptr});
  run_strips(of_gray.frame);
  run_strips(of_colour.frame);
  const std::vector<int16_t> luma = of_gray.all_corrections(), all = of_colour.all_corrections();
  const ptrdiff_t strip = 112 * 20;
  EXPECT_TRUE(std::equal(luma.begin(), luma.begin() + strip, all.begin()));
  EXPECT_TRUE(std::equal(luma.begin() + strip, luma.end(), all.begin() + 3 * strip));
  EXPECT_EQ(std::vector<int32_t>(113, 19 << 15), of_gray.path()) << "between the middle samples";
  Strips searched({112, 20}, gray, kSearch);
  run_strips(searched.frame);
  EXPECT_EQ(searched.path().front(), searched.path().back());
}

TEST(Strips, GoToAnotherSeamOverSomeFrames) {
  const Scene scene(240, 8, 0, Scene::Chroma::planes);
  Strips strips({112, 20}, scene, kSearch);
  std::vector<char> bytes(seam_memory_bytes({112, 20}) + 64);
  const size_t odd = reinterpret_cast<uintptr_t>(bytes.data()) % 64;
  SeamMemory memory = lay_out_seam_memory({112, 20}, bytes.data() + (64 - odd) % 64);
  strips.frame.seam.memory = &memory;
  run_strips(strips.frame);
  const std::vector<int32_t> free = strips.path();
  forget(memory);
  const std::vector<uint16_t> nothing(112 * 20);
  const std::vector<int16_t> last(112, 6);
  for (int i = 0; i < SeamMemory::kFrames; ++i) {
    remember_costs(memory, nothing.data());
    remember_path(memory, last.data());
  }
  for (int i = 0; i < SeamMemory::kHistory; ++i) {
    run_strips(strips.frame);
    for (size_t t = 0; t < 112; ++t) {
      int sum = 0;
      for (const int16_t* path : memory.paths) sum += path[t];
      ASSERT_EQ(strips.path()[t], (sum << 16) / SeamMemory::kFrames) << i;
    }
    if (i < SeamMemory::kFrames - 1) {
      EXPECT_NE(strips.path(), free) << i;
    }
  }
  run_strips(strips.frame);
  EXPECT_EQ(strips.path(), free);
}

TEST(Strips, KeepTheSeamInsideTheRing) {
  RandomSource random;
  for (int round = 0; round < 20; ++round) {
    const StripShape shape{16 * random.between(1, 9), random.between(kMinStripWidth, 40)};
    const Scene scene(2 * random.between(20, 80), 8, 0, Scene::Chroma::pairs);
    Strips strips(shape, scene, kSearch);
    run_strips(strips.frame);
    const std::vector<int32_t> path = strips.path();
    for (size_t t = 0; t < path.size(); ++t) {
      EXPECT_GE(path[t] >> 16, strips.plan.edge());
      EXPECT_LE(path[t] >> 16, shape.width - 1 - strips.plan.edge());
      if (t > 0) {
        EXPECT_LE(std::abs(path[t] - path[t - 1]), 65536);
      }
    }
  }
}

}  // namespace biseam::test
