// Clips whose lenses' light is matched.
#include <gtest/gtest.h>

#include "tool/support/by_library.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

constexpr int kFrames = 40;

// Lens 1 records less and less.
std::vector<Nv12> dimmed_walk() {
  std::vector<Nv12> pairs = walk(kFrames);
  for (int k = 0; k < kFrames; ++k) {
    Nv12& pair = pairs[std::size_t(k)];
    for (int y = 0; y < pair.height; ++y) {
      for (int x = pair.width / 2; x < pair.width; ++x) {
        std::uint8_t& code = pair.luma[std::size_t(y) * std::size_t(pair.width) + std::size_t(x)];
        code = std::uint8_t(16 + std::max(0, code - 16) * (100 - k) / 120);
      }
    }
  }
  return pairs;
}

std::string stitched(const std::string& input, const std::vector<std::string>& more) {
  const Finished finished = run_stitch(with(with({input, "-o", "-"}, known_lenses()), more));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  return finished.out;
}

class MatchedClip : public testing::Test {
 protected:
  MatchedClip() {
    ClipSpec spec;
    spec.options["g"] = "4";
    write_clip(clip_, spec, pairs_);
  }
  const ScratchFolder folder_;
  const std::string clip_ = folder_ / "in.mkv";
  const std::vector<Nv12> pairs_ = dimmed_walk();
};

TEST_F(MatchedClip, IsWhatTheLibraryMatches) {
  const std::string matched = stitched(clip_, {"--light", "match"});
  EXPECT_EQ(matched, stitch_by_library(pairs_, {.light = BISEAM_LIGHT_MATCH, .rate = 25}));
  EXPECT_NE(matched, stitched(clip_, {"--light", "off"}));
  EXPECT_EQ(matched, stitched(clip_, {}));
  EXPECT_EQ(stitched(clip_, {"--light", "off"}), stitch_by_library(pairs_, {.light = BISEAM_LIGHT_OFF, .rate = 25}));
  EXPECT_EQ(stitched(clip_, {"--light", "match", "--jobs", "4"}), matched);
}

TEST_F(MatchedClip, PartsEqualTheWhole) {
  for (const std::vector<std::string>& hold :
       {std::vector<std::string>{"--seams", "free"}, {"--seam-hold", "7"}, {"--seams", "steady"}}) {
    const std::vector<std::string> match = with({"--light", "match"}, hold);
    const std::string whole = stitched(clip_, match);
    EXPECT_EQ(stitched(clip_, with(match, {"--to", "0.2"})) + stitched(clip_, with(match, {"--from", "0.2", "--to", "1.32"})) +
                  stitched(clip_, with(match, {"--from", "1.32"})),
              whole);
  }
}

TEST_F(MatchedClip, SeamsAreSteadyUnlessTheyAreHeldOrFree) {
  const auto movement = [&](const std::vector<std::string>& how) {
    const Finished finished = run_stitch(with(with({clip_, "-o", folder_ / "out.mkv", "--json", "-"}, known_lenses()), how));
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
    const std::string name = "\"seam_movement\": ";
    return std::stod(finished.out.substr(finished.out.find(name) + name.size()));
  };
  const double steady = movement({"--seams", "steady"}), free = movement({"--seams", "free"});
  EXPECT_LT(steady, 0.7 * free);
  EXPECT_EQ(movement({}), steady);
  EXPECT_EQ(movement({"--seam-hold", "4"}), movement({"--seam-hold", "4", "--seams", "free"}));
  EXPECT_EQ(stitched(clip_, {}), stitch_by_library(pairs_, {.light = BISEAM_LIGHT_MATCH, .rate = 25}));
  EXPECT_EQ(stitched(clip_, {"--seams", "free"}),
            stitch_by_library(pairs_, {.steady = false, .light = BISEAM_LIGHT_MATCH, .rate = 25}));
}

TEST_F(MatchedClip, IsNotForTheExactEngine) {
  const Finished finished = run_stitch({clip_, "-o", "-", "--engine", "exact", "--light", "match"});
  EXPECT_EQ(finished.exit_code, 2);
  EXPECT_NE(finished.err.find("--light: not for --engine exact"), std::string::npos) << finished.err;
}

TEST_F(MatchedClip, OtherWordsAreRefused) {
  const Finished finished = run_stitch({clip_, "-o", "-", "--light", "on"});
  EXPECT_EQ(finished.exit_code, 2);
  EXPECT_NE(finished.err.find("must be off or match"), std::string::npos) << finished.err;
}

}  // namespace
}  // namespace biseam::tool
