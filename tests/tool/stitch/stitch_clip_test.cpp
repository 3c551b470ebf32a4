// What goes wrong around a clip: targets, full disks, signals, options.
#include "stitch/stitch_clip.hpp"

#include <gtest/gtest.h>
#include <sys/mount.h>

#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/places.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"
#include "tool/support/started.hpp"

namespace biseam::tool {
namespace {

using namespace test;

constexpr int kFrames = 20;

ClipSpec related_pictures() {
  ClipSpec spec;
  spec.options = {{"crf", "18"}, {"preset", "ultrafast"}, {"g", "5"}, {"bf", "2"}};
  spec.sound = 0.5;
  return spec;
}

void expect_refusal(const Finished& finished, int exit_code, const std::string& name) {
  EXPECT_EQ(finished.exit_code, exit_code) << finished.err;
  EXPECT_NE(finished.err.find(name), std::string::npos) << finished.err;
}

TEST(StitchClip, TargetsThatCantBeWrittenAreNamed) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", related_pictures(), walk(2));
  std::filesystem::create_directory(folder / "taken.mp4");
  for (const std::string& target : {folder / "taken.mp4", folder / "none/out.mp4", std::string("/proc/out.mp4")}) {
    const Finished finished = test::stitch_clip(folder / "in.mp4", target);
    expect_refusal(finished, 4, target);
    EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
  }
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"in.mp4", "taken.mp4"}));
}

TEST(StitchClip, AFullDiskLeavesNothing) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", related_pictures(), walk(kFrames));
  const std::string disk = folder / "disk";
  std::filesystem::create_directory(disk);
  if (mount("none", disk.c_str(), "tmpfs", 0, "size=64k") != 0) GTEST_SKIP() << "a small tmpfs can't be mounted here";
  for (const std::string name : {"out.mp4", "out.mov", "out.mkv", "out.y4m"}) {
    const Finished finished = test::stitch_clip(folder / "in.mp4", disk + "/" + name, {"--drop-streams"});
    expect_refusal(finished, 4, name + ": can't be written: No space left on device");
    EXPECT_TRUE(std::filesystem::is_empty(disk));
  }
  umount(disk.c_str());
}

TEST(StitchClip, AFileThatMayNotGrowLeavesNothing) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", related_pictures(), walk(kFrames));
  for (const std::string name : {"out.mp4", "out.mov", "out.mkv", "out.y4m"}) {
    const Finished finished = run(with({"/usr/bin/prlimit", "--fsize=65536", kTool, "stitch", folder / "in.mp4", "-o",
                                        folder / name, "--drop-streams", "--crf", "0"},
                                       known_lenses()));
    expect_refusal(finished, 4, name + ": can't be written: File too large");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"in.mp4"}));
  }
}

TEST(StitchClip, AFullDeviceIsTold) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv", {}, walk(2));
  const Finished finished = run(with({kTool, "stitch", folder / "in.mkv", "-o", "-"}, known_lenses()), "", "/dev/full");
  expect_refusal(finished, 4, "standard output: can't be written: No space left on device");
}

// Enough frames to be in the middle of them for a while.
std::string endless_frames() { return raw_bytes(walk(1)); }

std::vector<std::string> frames_from_pipe(const std::string& output) {
  return with({kTool, "stitch", "-", "--size", "240x120", "--rate", "25", "-o", output, "--preset", "ultrafast"},
              known_lenses());
}

TEST(StitchClip, AnInputThatVanishesIsToldAndLeavesNothing) {
  const ScratchFolder folder;
  Started started(frames_from_pipe(folder / "out.mp4"), Started::Input::breakable);
  for (int k = 0; k < 30; ++k) started.send(endless_frames());
  started.wait_for_bytes_in(folder.path());
  started.break_input();
  const Finished finished = started.finish();
  expect_refusal(finished, 3, "biseam: standard input: can't be read: Connection reset by peer\n");
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
  EXPECT_TRUE(folder.names().empty());
}

TEST(StitchClip, AnInterruptFinishesWhatIsInFlight) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const ScratchFolder folder;
    Started started(frames_from_pipe(folder / "out.mp4"));
    for (int k = 0; k < 30; ++k) started.send(endless_frames());
    started.wait_for_bytes_in(folder.path());
    started.signal(signal);
    const Finished finished = started.finish();
    EXPECT_EQ(finished.exit_code, 130) << finished.err;
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"out.mp4"}));
    EXPECT_GT(ClipProbe(folder / "out.mp4").pictures.size(), 0u);
  }
}

// Both are there when the tool goes on.
TEST(StitchClip, ASecondInterruptEndsItAtOnceAndLeavesNothing) {
  const ScratchFolder folder;
  Started started(frames_from_pipe(folder / "out.mp4"));
  for (int k = 0; k < 30; ++k) started.send(endless_frames());
  started.wait_for_bytes_in(folder.path());
  for (const int signal : {SIGSTOP, SIGTERM, SIGINT, SIGCONT}) started.signal(signal);
  const int exit_code = started.finish().exit_code;
  EXPECT_TRUE(exit_code == -SIGTERM || exit_code == -SIGINT) << exit_code;
  EXPECT_TRUE(folder.names().empty());
}

TEST(StitchClip, AnInterruptBeforeTheFirstPictureLeavesNothing) {
  const ScratchFolder folder;
  Started started(frames_from_pipe(folder / "out.mp4"));
  started.send(endless_frames().substr(0, 100));
  started.wait_until_read();
  started.signal(SIGINT);
  const Finished finished = started.finish();
  EXPECT_EQ(finished.exit_code, 130) << finished.err;
  EXPECT_TRUE(folder.names().empty());
}

TEST(StitchClip, AnInterruptThatTheCallerIgnoresIsIgnored) {
  const ScratchFolder folder;
  const auto before = std::signal(SIGINT, SIG_IGN);
  Started started(frames_from_pipe(folder / "out.mp4"));
  std::signal(SIGINT, before);
  for (int k = 0; k < 30; ++k) started.send(endless_frames());
  started.wait_for_bytes_in(folder.path());
  started.signal(SIGINT);
  started.send(endless_frames());
  started.break_input();
  const Finished finished = started.finish();
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_EQ(ClipProbe(folder / "out.mp4").pictures.size(), 31u);
}

TEST(StitchClip, AKilledRunLeavesNothingUnderTheFinalName) {
  const ScratchFolder folder;
  write_bytes(folder / "out.mp4", "what was there before");
  Started started(frames_from_pipe(folder / "out.mp4"));
  for (int k = 0; k < 30; ++k) started.send(endless_frames());
  started.wait_for_bytes_in(folder.path());
  started.signal(SIGKILL);
  EXPECT_EQ(started.finish().exit_code, -SIGKILL);
  EXPECT_EQ(read_bytes(folder / "out.mp4"), "what was there before");
}

TEST(StitchClip, EncodersAndSettingsThatDoNotExistAreNamed) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv", {}, walk(1));
  const std::vector<std::tuple<std::vector<std::string>, int, std::string>> wrong = {
      {{"--encoder", "nonsense"}, 2, "--encoder: there is no video encoder 'nonsense'"},
      {{"--encoder", "aac"}, 2, "--encoder"},
      {{"--encoder", "h264_vaapi"}, 2, "--encoder: h264_vaapi takes no pictures that panoramas can become"},
      {{"--encoder", "ffv1", "--crf", "3"}, 2, "--crf: the encoder ffv1 has no such setting"},
      {{"--encoder", "ffv1", "--preset", "fast"}, 2, "--preset: the encoder ffv1 has no such setting"},
      {{"--crf", "-5"}, 2, "--crf"},
      {{"--crf", "-1"}, 2, "--crf: '-1': libx264 takes 0 to 51"},
      {{"--encoder", "libx265", "--crf", "51.5"}, 2, "--crf: '51.5': libx265 takes 0 to 51"},
      {{"--encoder", "libvpx-vp9", "--crf", "nan"}, 2, "--crf"},
      {{"--preset", "sluggish"}, 2, "--preset: 'sluggish'"},
      {{"--bitrate", "much"}, 2, "--bitrate"},
  };
  for (const auto& [options, exit_code, text] : wrong) {
    SCOPED_TRACE(testing::PrintToString(options));
    const Finished finished = run_stitch(with(with({folder / "in.mkv", "-o", folder / "out.mkv"}, known_lenses()), options));
    expect_refusal(finished, exit_code, text);
    EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
  }
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"in.mkv"}));
}

TEST(StitchClip, VideoOptionsAreNoPictureOptions) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv", {}, walk(1));
  expect_refusal(run_stitch({folder / "in.mkv", "-o", folder / "out.png", "--crf", "3"}), 2, "--crf: only for video");
  expect_refusal(run_stitch({folder / "in.mkv", "-o", folder / "out.mkv", "--show-seams", folder / "s.png"}), 2,
                 "--show-seams: only for pictures");
}

}  // namespace
}  // namespace biseam::tool
