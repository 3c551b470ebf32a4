// Clips in which near things are brought together, from the command line.
#include <gtest/gtest.h>

#include "tool/support/by_library.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

class NearClips : public testing::Test {
 protected:
  NearClips() {
    ClipSpec spec;
    spec.options["g"] = "4";
    write_clip(clip_, spec, pairs_);
  }
  std::string stitched(const std::vector<std::string>& more) const {
    const Finished finished = run_stitch(with(with({clip_, "-o", "-"}, known_lenses()), more));
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
    return finished.out;
  }
  const ScratchFolder folder_;
  const std::string clip_ = folder_ / "in.mkv";
  const std::vector<Nv12> pairs_ = walk(16);
};

TEST_F(NearClips, AreWhatTheLibraryMakesOfThem) {
  const std::string on = stitched({"--near", "on"});
  EXPECT_TRUE(on == stitch_by_library(pairs_, {.light = BISEAM_LIGHT_MATCH, .near = BISEAM_NEAR_MATCH, .rate = 25}));
  EXPECT_TRUE(stitched({"--near", "off"}) ==
              stitch_by_library(pairs_, {.light = BISEAM_LIGHT_MATCH, .near = BISEAM_NEAR_OFF, .rate = 25}));
  EXPECT_TRUE(on != stitched({"--near", "off"}));
  EXPECT_TRUE(on == stitched({})) << "lenses of which nothing is known may lie apart";
  EXPECT_TRUE(on == stitched({"--jobs", "4"}));
}

TEST_F(NearClips, PartsEqualTheWhole) {
  const std::string whole = stitched({});
  EXPECT_TRUE(stitched({"--to", "0.2"}) + stitched({"--from", "0.2", "--to", "0.4"}) + stitched({"--from", "0.4"}) == whole);
}

TEST_F(NearClips, OfLensesThatDontLieApartAreAsTheyAre) {
  const auto with_baseline = [&](const char* metres, const std::vector<std::string>& more) {
    const std::string profile = folder_ / "camera.toml";
    write_bytes(profile, "baseline = " + std::string(metres) + "\n");
    return stitched(with({"--camera", profile}, more));
  };
  EXPECT_TRUE(with_baseline("0", {}) == stitched({"--near", "off"}));
  EXPECT_TRUE(with_baseline("0", {"--near", "on"}) == stitched({"--near", "on"}));
  EXPECT_TRUE(with_baseline("0.1", {}) == stitched({"--near", "on"}));
}

TEST_F(NearClips, AreNotForTheExactEngineNorForOtherWords) {
  const Finished exact = run_stitch({clip_, "-o", "-", "--engine", "exact", "--near", "on"});
  EXPECT_EQ(exact.exit_code, 2);
  EXPECT_NE(exact.err.find("--near: not for --engine exact"), std::string::npos) << exact.err;
  const Finished other = run_stitch({clip_, "-o", "-", "--near", "match"});
  EXPECT_EQ(other.exit_code, 2);
  EXPECT_NE(other.err.find("--near"), std::string::npos) << other.err;
}

}  // namespace
}  // namespace biseam::tool
