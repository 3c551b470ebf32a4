#include "stitch/followed.hpp"

#include <gtest/gtest.h>

#include "tool/analysis/small_analysis.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/run_analysis.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

TEST(SettledBy, LightNearThingsAndSeamsAreTheAnalyses) {
  const ScratchFolder folder;
  write_small(folder / "a.bsa", 1);
  const ClipJob job = settled_by(AnalysisReader(folder / "a.bsa"), {});
  EXPECT_EQ(job.source.engine.light, BISEAM_LIGHT_MATCH);
  EXPECT_EQ(job.source.engine.near, false);
  EXPECT_TRUE(job.source.engine.steady_seams);
  EXPECT_EQ(job.source.settings.blend.search, true);
}

class FollowedClip : public testing::Test {
 protected:
  FollowedClip() {
    write_clip(clip_, {}, walk(12));
    analyse(clip_, analysis_);
  }
  void expect_refused(const std::vector<std::string>& words, const std::string& line) const {
    const std::vector<std::string> names = folder_.names();
    const Finished finished = run_stitch(with({"-o", folder_ / "out.mkv"}, words));
    EXPECT_EQ(finished.exit_code, 3) << finished.err;
    EXPECT_EQ(finished.err, "biseam: " + line + "\n");
    EXPECT_EQ(folder_.names(), names);
  }
  const ScratchFolder folder_;
  const std::string clip_ = folder_ / "in.mkv", analysis_ = folder_ / "in.bsa";
};

TEST_F(FollowedClip, MustBeTheOneThatWasAnalysed) {
  const std::vector<std::string> by = with({"--analysis", analysis_}, known_lenses());
  write_clip(folder_ / "other.mkv", {}, walk(13));
  expect_refused(with({folder_ / "other.mkv"}, by), analysis_ + ": was made of another clip");
  expect_refused(with({clip_, "--width", "480"}, by), analysis_ + ": was made for a panorama of 240x120, not of 480x240");
  expect_refused(with({clip_, "--turn1", "0.5,0,0"}, by), analysis_ + ": was made for another camera");
}

TEST_F(FollowedClip, FramesThatAreNotInItAreTold) {
  analyse(clip_, folder_ / "part.bsa", {"--to", "0.2"});
  expect_refused(with({clip_, "--analysis", folder_ / "part.bsa"}, known_lenses()),
                 folder_ / "part.bsa" + ": knows nothing of the picture at 0:00:00.200");
}

TEST_F(FollowedClip, DamagedGuidesAreTold) {
  std::string bytes = read_bytes(analysis_);
  char& damaged = bytes[kAnalysisHeadBytes + 3 * AnalysisReader(analysis_).head().guide_bytes + 100];
  damaged = char(~damaged);
  write_bytes(folder_ / "bad.bsa", bytes);
  expect_refused(with({clip_, "--analysis", folder_ / "bad.bsa"}, known_lenses()), folder_ / "bad.bsa" + ": guide is damaged");
}

TEST_F(FollowedClip, MayComeFromAPipe) {
  const Finished finished = run_stitch(with({"-", "--analysis", analysis_, "-o", "-"}, known_lenses()), read_bytes(clip_));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_EQ(finished.out, stitched_by(analysis_, clip_));
}

}  // namespace
}  // namespace biseam::tool
