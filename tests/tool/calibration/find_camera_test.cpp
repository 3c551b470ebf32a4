// `biseam stitch` without a profile.
#include "calibration/find_camera.hpp"

#include <opencv2/imgproc.hpp>

#include "picture/write_picture.hpp"
#include "tool/calibration/photographed.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/scratch_folder.hpp"
#include "tool/support/sphere.hpp"

namespace biseam::tool {
namespace {

using test::Finished;
using test::read_bytes;
using test::ScratchFolder;

constexpr int kFrames = 3;

TEST(StitchWithoutAProfile, FindsTheCameraAndKeepsIt) {
  const ScratchFolder folder;
  write_picture(folder / "pair.png", both_circles(photographed()));
  const Finished found =
      run_tool("stitch", {folder / "pair.png", "-o", folder / "a.png", "--save-camera", folder / "found.toml"});
  ASSERT_EQ(found.exit_code, 0) << found.err;
  EXPECT_TRUE(tells(found, "camera found in one pair of pictures")) << found.err;
  const Finished known = run_tool("stitch", {folder / "pair.png", "-o", folder / "b.png", "--camera", folder / "found.toml"});
  EXPECT_EQ(known.err, "");
  EXPECT_EQ(read_bytes(folder / "a.png"), read_bytes(folder / "b.png"));
}

TEST(StitchWithoutAProfile, CirclesAloneWhereThePicturesDoNotTell) {
  const ScratchFolder folder;
  write_picture(folder / "covered.png", both_circles(covered()));
  const Finished finished = run_tool("stitch", {folder / "covered.png", "-o", folder / "a.png"});
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_TRUE(tells(finished, "lenses of 195 degrees are assumed")) << finished.err;
  expect_refused(run_tool("stitch", {folder / "covered.png", "-o", folder / "b.png", "--save-camera", folder / "no.toml"}), 3,
                 folder / "no.toml");
  EXPECT_FALSE(std::filesystem::exists(folder / "b.png"));
}

// Both lenses look at a wall without anything on it.
TEST(StitchWithoutAProfile, CirclesThatAreFoundAreTold) {
  const ScratchFolder folder;
  calibrate::Pair pair = photographed();
  for (cv::Mat1b& picture : pair.lens) {
    picture = picture.clone();
    for (unsigned char& value : picture) value = value > 40 ? 128 : 2;
  }
  write_picture(folder / "wall.png", both_circles(pair));
  const Finished finished = run_tool("stitch", {folder / "wall.png", "-o", folder / "a.png"});
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_TRUE(tells(finished, "the camera is not found, its image circles are, and taken for 195 degrees: ")) << finished.err;
}

TEST(StitchWithoutAProfile, APanoramaIsRefused) {
  const ScratchFolder folder;
  write_picture(folder / "done.png", test::paint_panorama(2 * kSide));
  for (const char* command : {"stitch", "calibrate"}) {
    const Finished finished = run_tool(command, {folder / "done.png", "-o", folder / "a.png"});
    expect_refused(finished, 3, folder / "a.png");
    EXPECT_TRUE(tells(finished, "done.png: is a finished panorama: ")) << finished.err;
  }
  for (const std::vector<std::string>& told : {std::vector<std::string>{"--layout", "side-by-side"}, {"--camera", "none"}}) {
    std::vector<std::string> arguments = {folder / "done.png", "-o", folder / "a.png"};
    arguments.insert(arguments.end(), told.begin(), told.end());
    EXPECT_EQ(run_tool("stitch", arguments).exit_code, 0);
  }
}

// One lens's picture was scaled, or is of another camera.
TEST(StitchWithoutAProfile, TwoSizesNeedACircleEach) {
  const ScratchFolder folder;
  write_picture(folder / "0.png", lens_picture(photographed().lens[0]));
  cv::Mat1b half;
  cv::resize(photographed().lens[1], half, {kSide / 2, kSide / 2}, 0, 0, cv::INTER_AREA);
  write_picture(folder / "1.png", lens_picture(half));
  write_picture(folder / "covered.png", lens_picture(cv::Mat1b(kSide / 2, kSide / 2, static_cast<unsigned char>(2))));
  const Finished finished = run_tool("stitch", {folder / "0.png", folder / "1.png", "-o", folder / "a.png"});
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_TRUE(tells(finished, "the camera is not found, its image circles are")) << finished.err;
  const Finished refused = run_tool("stitch", {folder / "0.png", folder / "covered.png", "-o", folder / "b.png"});
  expect_refused(refused, 3, folder / "b.png");
  EXPECT_TRUE(tells(refused, "lens 0's picture has 320x320 pixels, lens 1's 160x160")) << refused.err;
}

TEST(StitchWithoutAProfile, NoneAndTheCamerasOptionsForbidTheSearch) {
  const ScratchFolder folder;
  write_picture(folder / "pair.png", both_circles(photographed()));
  for (const std::vector<std::string>& forbidding : {std::vector<std::string>{"--camera", "none"}, {"--fov", "200"}}) {
    std::vector<std::string> arguments = {folder / "pair.png", "-o", folder / "a.png"};
    arguments.insert(arguments.end(), forbidding.begin(), forbidding.end());
    const Finished finished = run_tool("stitch", arguments);
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
    EXPECT_FALSE(tells(finished, "camera")) << finished.err;
    arguments.insert(arguments.end(), {"--save-camera", folder / "no.toml"});
    expect_refused(run_tool("stitch", arguments), 2, folder / "no.toml");
  }
}

// A clip of the same place, in which every frame has other noise; only the first is a key frame.
void write_clip(const std::string& path) {
  test::ClipSpec spec;
  std::vector<Nv12> pictures;
  for (int i = 0; i < kFrames; ++i) {
    Nv12 picture = both_circles(photographed());
    for (std::size_t at = std::size_t(i); at < picture.luma.size(); at += 17)
      picture.luma[at] = std::uint8_t(picture.luma[at] ^ 1);
    pictures.push_back(std::move(picture));
  }
  test::write_clip(path, spec, pictures);
}

std::string panoramas(const Finished& finished) {
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  return finished.out;
}

TEST(StitchWithoutAProfile, PartsOfAClipEqualTheWholeForAnyThreads) {
  const ScratchFolder folder;
  const std::string clip = folder / "in.mkv";
  write_clip(clip);
  const Finished run = run_tool("stitch", {clip, "-o", "-", "--width", "640"});
  EXPECT_TRUE(tells(run, "camera found in 3 pairs of pictures")) << run.err;
  const std::string whole = panoramas(run);
  const std::string first = panoramas(run_tool("stitch", {clip, "-o", "-", "--width", "640", "--to", "0.08", "--jobs", "1"}));
  const std::string rest = panoramas(run_tool("stitch", {clip, "-o", "-", "--width", "640", "--from", "0.08", "--jobs", "4"}));
  EXPECT_EQ(first + rest, whole);
}

TEST(StitchWithoutAProfile, FirstPairOfAPipe) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv");
  const Finished finished =
      run_tool("stitch", {"-", "-o", "-", "--width", "640", "--frames", "1"}, read_bytes(folder / "in.mkv"));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_TRUE(tells(finished, "camera found in one pair of pictures")) << finished.err;
}

}  // namespace
}  // namespace biseam::tool
