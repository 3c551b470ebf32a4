// `biseam stitch` without a profile.
#include "calibration/find_camera.hpp"

#include "picture/write_picture.hpp"
#include "tool/calibration/photographed.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/scratch_folder.hpp"

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
