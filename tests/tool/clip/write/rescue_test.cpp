// What a kill leaves of a clip, and a power cut: the file under its other name.
#include <gtest/gtest.h>

#include <csignal>

#include "tool/support/clip_probe.hpp"
#include "tool/support/places.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"
#include "tool/support/started.hpp"

namespace biseam::tool {
namespace {

using namespace test;

constexpr int kFrames = 160;  // more than 6 seconds
constexpr int kPeriod = 8;    // after so many they repeat

std::string y4m_frames(int frames) {
  std::vector<std::string> period;
  for (const Nv12& picture : walk(kPeriod)) {
    std::string frame = "FRAME\n";
    frame.append(picture.luma.begin(), picture.luma.end());
    for (std::size_t plane = 0; plane < 2; ++plane) {
      for (std::size_t k = plane; k < picture.chroma.size(); k += 2) frame += char(picture.chroma[k]);
    }
    period.push_back(frame);
  }
  std::string all = "YUV4MPEG2 W240 H120 F25:1 Ip A1:1 C420jpeg\n";
  for (int k = 0; k < frames; ++k) all += period[std::size_t(k % kPeriod)];
  return all;
}

// The only file in the folder, when it has so many bytes.
std::string wait_for_bytes(const ScratchFolder& folder, std::uintmax_t bytes) {
  for (int tries = 0; tries < 3000; ++tries) {
    const std::vector<std::string> names = folder.names();
    if (names.size() == 1 && std::filesystem::file_size(folder / names[0]) >= bytes) return names[0];
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ADD_FAILURE() << "nothing is written";
  return "";
}

// The name of what is left by a run that is killed while it waits for more frames.
std::string kill_run(const ScratchFolder& folder, const std::string& output, std::uintmax_t bytes) {
  Started started(with({kTool, "stitch", "-", "-o", folder / output, "--preset", "ultrafast"}, known_lenses()));
  started.send(y4m_frames(kFrames));
  const std::string left = wait_for_bytes(folder, bytes);
  started.signal(SIGKILL);
  EXPECT_EQ(started.finish().exit_code, -SIGKILL);
  EXPECT_EQ(left.rfind(output + ".", 0), 0u) << left;
  EXPECT_EQ(left.size(), output.size() + 7) << left;
  return left;
}

class Rescue : public testing::TestWithParam<const char*> {};

TEST_P(Rescue, WhatIsLeftPlaysAsItIs) {
  const std::string name = std::string("out.") + GetParam();
  const ScratchFolder folder, whole;
  const std::string left = kill_run(folder, name, 80000);
  const Finished finished =
      run_stitch(with({"-", "-o", whole / name, "--preset", "ultrafast"}, known_lenses()), y4m_frames(kFrames));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  const ClipProbe rescued(folder / left), expected(whole / name);
  EXPECT_TRUE(rescued.spherical);
  ASSERT_GE(rescued.pictures.size(), 40u);
  ASSERT_LE(rescued.pictures.size(), expected.pictures.size());
  for (std::size_t k = 0; k < rescued.pictures.size(); ++k) {
    EXPECT_EQ(raw_bytes(rescued.pictures[k]), raw_bytes(expected.pictures[k])) << k;
    EXPECT_EQ(rescued.picture_times[k], expected.picture_times[k]) << k;
  }
}

INSTANTIATE_TEST_SUITE_P(Clips, Rescue, testing::Values("mkv", "mp4", "mov"), [](const auto& kind) { return kind.param; });

TEST(RescueOfRawFrames, AreWholeToTheLast) {
  const ScratchFolder folder, whole;
  const std::string left = kill_run(folder, "out.y4m", 2 << 20);
  const Finished finished = run_stitch(with({"-", "-o", whole / "out.y4m"}, known_lenses()), y4m_frames(kFrames));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  const std::string rescued = read_bytes(folder / left), expected = read_bytes(whole / "out.y4m");
  EXPECT_TRUE(rescued == expected.substr(0, rescued.size()));
}

}  // namespace
}  // namespace biseam::tool
