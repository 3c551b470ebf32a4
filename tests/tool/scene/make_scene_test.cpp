// `biseam scene --frames`, its clips read back through libav.
#include <gtest/gtest.h>

#include <filesystem>

#include "compare/metrics.hpp"
#include "picture/read_picture.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/nv12_picture.hpp"
#include "tool/support/places.hpp"
#include "tool/support/process.hpp"
#include "tool/support/scratch_folder.hpp"
#include "tool/support/started.hpp"

namespace biseam::tool {
namespace {

using namespace test;

const std::vector<std::string> kStems = {"truth", "fisheye0", "fisheye1", "side_by_side"};

Finished make_scene(const std::string& folder, const std::vector<std::string>& more) {
  std::vector<std::string> words = {kTool, "scene", "-o", folder, "--width", "160", "--fisheye-size", "96"};
  words.insert(words.end(), more.begin(), more.end());
  return run(words);
}

std::vector<float> codes(const std::vector<std::uint8_t>& luma) { return {luma.begin(), luma.end()}; }

bool is_same(const Nv12& a, const Nv12& b) { return a.width == b.width && a.luma == b.luma && a.chroma == b.chroma; }

std::vector<Nv12> pictures_of(const std::string& path) { return ClipProbe(path).pictures; }

TEST(SceneClips, HaveEveryFrameAtItsTimeAndSayWhatTheyAre) {
  const ScratchFolder folder;
  const Finished finished = make_scene(folder / "s", {"--frames", "7"});
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_EQ(finished.err, "");
  std::string told;
  for (const std::string& stem : kStems) {
    const std::string path = folder / ("s/" + stem + ".mp4");
    told += path + "\n";
    const ClipProbe clip(path);
    EXPECT_EQ(clip.pictures.size(), 7u) << stem;
    ASSERT_EQ(clip.streams.size(), 1u) << stem;
    std::vector<std::int64_t> times;
    for (int k = 0; k < 7; ++k) times.push_back(av_rescale(k, AV_TIME_BASE, 30));
    EXPECT_EQ(clip.streams[0].times(), times) << stem;
    EXPECT_EQ(clip.duration, av_rescale(7, AV_TIME_BASE, 30)) << stem;
    EXPECT_EQ(clip.range, AVCOL_RANGE_JPEG) << stem;
    EXPECT_EQ(clip.matrix, AVCOL_SPC_BT470BG) << stem;
    EXPECT_EQ(clip.siting, AVCHROMA_LOC_CENTER) << stem;
  }
  EXPECT_EQ(finished.out, told + folder / "s/camera.toml" + "\n" + folder / "s/truth.json" + "\n");
}

TEST(SceneClips, BeginWithTheStillPictures) {
  const ScratchFolder folder;
  const std::vector<std::string> camera = {"--baseline", "0.05", "--exposure-difference", "0.3", "--noise", "2", "--seed", "5",
                                           "--shake",    "1"};
  make_scene(folder / "still", camera);
  std::vector<std::string> filming = camera;
  filming.insert(filming.end(), {"--frames", "2"});
  make_scene(folder / "clip", filming);
  for (const std::string& stem : kStems) {
    EXPECT_TRUE(
        is_same(pictures_of(folder / ("clip/" + stem + ".mp4")).at(0), test::read_nv12(folder / ("still/" + stem + ".png"))))
        << stem;
  }
  EXPECT_EQ(read_bytes(folder / "clip/camera.toml"), read_bytes(folder / "still/camera.toml"));
}

TEST(SceneClips, ShowThingsThatMoveTheSameWayEveryTime) {
  const ScratchFolder folder;
  make_scene(folder / "a", {"--frames", "4"});
  make_scene(folder / "b", {"--frames", "5"});
  for (const std::string& stem : kStems) {
    const std::vector<Nv12> a = pictures_of(folder / ("a/" + stem + ".mp4")), b = pictures_of(folder / ("b/" + stem + ".mp4"));
    ASSERT_EQ(b.size(), 5u);
    for (std::size_t k = 0; k < 4; ++k) {
      EXPECT_TRUE(is_same(a[k], b[k])) << stem << k;
      EXPECT_FALSE(is_same(b[k], b[k + 1])) << stem << k;
    }
  }
}

TEST(SceneClipsAccuracy, StitchedComeNearTheTruthInEveryFrame) {
  const ScratchFolder folder;
  run({kTool, "scene", "-o", folder / "s", "--width", "512", "--fisheye-size", "288", "--frames", "3"});
  const Finished stitched = run({kTool, "stitch", folder / "s/side_by_side.mp4", "--camera", folder / "s/camera.toml", "-o",
                                 folder / "p.mkv", "--crf", "0"});
  EXPECT_EQ(stitched.exit_code, 0) << stitched.err;
  const std::vector<Nv12> truth = pictures_of(folder / "s/truth.mp4"), panoramas = pictures_of(folder / "p.mkv");
  ASSERT_EQ(panoramas.size(), 3u);
  const auto quality = [&](std::size_t a, std::size_t b) {
    const std::vector<float> p = codes(truth[a].luma), q = codes(panoramas[b].luma);
    return measure({{512, 256}, p, q}, all_columns(512)).weighted_psnr;
  };
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_GT(quality(k, k), 33);
    EXPECT_GT(quality(k, k), quality(k, (k + 1) % 3)) << "a frame of another time";
  }
}

TEST(SceneClips, HaveOtherNoiseInEveryFrame) {
  const ScratchFolder folder;
  make_scene(folder / "s", {"--frames", "2", "--noise", "3"});
  const std::vector<Nv12> frames = pictures_of(folder / "s/fisheye0.mp4");
  std::size_t same = 0;
  for (std::size_t i = 0; i < frames[0].luma.size(); ++i) same += frames[0].luma[i] == frames[1].luma[i];
  EXPECT_LT(same, frames[0].luma.size() / 2);
}

TEST(SceneClips, TellHowEachFrameWasTaken) {
  const ScratchFolder folder;
  make_scene(folder / "s", {"--frames", "2", "--turn", "2.5"});
  const std::string told = read_bytes(folder / "s/truth.json");
  EXPECT_NE(told.find("\"time\": 0.0333333, \"yaw\": 2.5,"), std::string::npos) << told;
  EXPECT_EQ(told.find("\"yaw\": 5"), std::string::npos) << told;
}

// `stitch --look` brings a turned camera's panorama to where the camera began.
TEST(SceneClipsAccuracy, TurnAsTheTruthSays) {
  const ScratchFolder folder;
  run({kTool, "scene", "-o", folder / "s", "--width", "512", "--fisheye-size", "288", "--frames", "2", "--turn", "30"});
  const std::vector<Nv12> truth = pictures_of(folder / "s/truth.mp4");
  const Finished stitched = run({kTool, "stitch", folder / "s/side_by_side.mp4", "--camera", folder / "s/camera.toml", "--look",
                                 "-30,0,0", "-o", folder / "p.mkv", "--crf", "0"});
  EXPECT_EQ(stitched.exit_code, 0) << stitched.err;
  const std::vector<float> p = codes(truth[0].luma), q = codes(pictures_of(folder / "p.mkv").at(1).luma);
  EXPECT_GT(measure({{512, 256}, p, q}, all_columns(512)).weighted_psnr, 28);
}

TEST(SceneClips, RefuseFrameCountsThatAreNone) {
  const ScratchFolder folder;
  for (const char* count : {"0", "-1", "1.5", "many", "99999999999"}) {
    const Finished finished = make_scene(folder / "s", {"--frames", count});
    EXPECT_EQ(finished.exit_code, 2) << count;
    EXPECT_NE(finished.err.find("--frames"), std::string::npos) << finished.err;
  }
  EXPECT_TRUE(folder.names().empty());
}

TEST(SceneClips, LeaveNothingWhereTheyCantBeWritten) {
  const ScratchFolder folder;
  write_bytes(folder / "file", "");
  const Finished in_file = make_scene(folder / "file/s", {"--frames", "2"});
  EXPECT_EQ(in_file.exit_code, 4) << in_file.err;
  EXPECT_NE(in_file.err.find("file/s"), std::string::npos) << in_file.err;
  std::filesystem::create_directories(folder / "s/fisheye1.mp4");
  const Finished over_folder = make_scene(folder / "s", {"--frames", "2"});
  EXPECT_EQ(over_folder.exit_code, 4) << over_folder.err;
  EXPECT_NE(over_folder.err.find("fisheye1.mp4: is a folder"), std::string::npos) << over_folder.err;
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder / "s"), {}), 1);
}

TEST(SceneClips, LeaveNothingWhenInterrupted) {
  const ScratchFolder folder;
  Started scene({kTool, "scene", "-o", folder.path().string(), "--width", "160", "--fisheye-size", "96", "--frames", "100000"});
  scene.wait_for_bytes_in(folder.path());
  scene.signal(SIGINT);
  const Finished finished = scene.finish();
  EXPECT_EQ(finished.exit_code, 130);
  EXPECT_EQ(finished.err, "biseam: interrupted\n");
  EXPECT_EQ(finished.out, "");
  EXPECT_TRUE(folder.names().empty());
}

}  // namespace
}  // namespace biseam::tool
