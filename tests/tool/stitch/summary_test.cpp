// What a run tells about itself.
#include "stitch/summary.hpp"

#include <gtest/gtest.h>

#include "tool/support/clip_maker.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

double number_in(const std::string& json, const std::string& name) {
  const std::size_t at = json.find("\"" + name + "\": ");
  if (at == std::string::npos) return -1;
  return std::stod(json.substr(at + name.size() + 4));
}

TEST(Summary, AProgramCanReadIt) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", {}, walk(5));
  expect_success(stitch_clip(folder / "in.mp4", folder / "out.mp4", {"--json", folder / "run.json", "--jobs", "2"}), 5);
  const std::string json = read_bytes(folder / "run.json");
  EXPECT_EQ(number_in(json, "frames"), 5);
  EXPECT_EQ(number_in(json, "dropped"), 0);
  EXPECT_EQ(number_in(json, "repeated"), 0);
  EXPECT_GT(number_in(json, "fps"), 0);
  EXPECT_GT(number_in(json, "seam_movement"), 0);
  EXPECT_EQ(number_in(json, "jobs"), 2);
  EXPECT_NE(json.find("\"interrupted\": false"), std::string::npos) << json;
  EXPECT_NE(json.find("\"output_kind\": \"libx264 crf=0 preset=ultrafast\""), std::string::npos) << json;
  EXPECT_NE(json.find("\"size\": \"240x120\""), std::string::npos) << json;
  EXPECT_EQ(std::count(json.begin(), json.end(), '{'), 2);
  EXPECT_EQ(std::count(json.begin(), json.end(), '}'), 2);
  EXPECT_EQ(json.back(), '\n');
}

TEST(Summary, TellsWhatTheLensesDifferIn) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv", {}, walk(1));
  const auto json = [&](std::vector<std::string> options) {
    options.insert(options.end(), {"--json", "-"});
    return stitch_clip(folder / "in.mkv", folder / "out.mkv", options).out;
  };
  EXPECT_NE(json({}).find("\"near\": \"on\", \"light\": \"match\""), std::string::npos);
  EXPECT_NE(json({"--near", "off", "--light", "off"}).find("\"near\": \"off\", \"light\": \"off\""), std::string::npos);
  EXPECT_NE(json({"--engine", "exact"}).find("\"engine\": \"exact\", \"search\""), std::string::npos);
}

TEST(Summary, GoesToStandardOutputUnlessFramesAreThere) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv", {}, walk(2));
  const Finished finished = stitch_clip(folder / "in.mkv", folder / "out.mkv", {"--json", "-"});
  expect_success(finished, 2);
  EXPECT_EQ(finished.out.rfind("{\"frames\": 2", 0), 0u) << finished.out;
  EXPECT_EQ(run_stitch({folder / "in.mkv", "-o", "-", "--json", "-"}).exit_code, 2);
}

TEST(Summary, APlaceThatCantBeWrittenIsToldBeforeTheWork) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv", {}, walk(1));
  const Finished finished = stitch_clip(folder / "in.mkv", folder / "out.mkv", {"--json", folder / "none/run.json"});
  EXPECT_EQ(finished.exit_code, 4);
  EXPECT_NE(finished.err.find("none/run.json"), std::string::npos) << finished.err;
  EXPECT_EQ(folder.names(), std::vector<std::string>{"in.mkv"});
}

TEST(Summary, SeamsCutStraightDoNotMove) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv", {}, walk(4));
  const Finished searched = stitch_clip(folder / "in.mkv", folder / "out.mkv", {"--json", "-"});
  const Finished straight = stitch_clip(folder / "in.mkv", folder / "out.mkv", {"--json", "-", "--no-search"});
  EXPECT_GT(number_in(searched.out, "seam_movement"), 0);
  EXPECT_EQ(number_in(straight.out, "seam_movement"), 0);
}

TEST(Summary, ARepeatedPictureCountsAsSeamsThatStay) {
  Summary summary;
  EXPECT_EQ(summary.seam_movement(), 0);
  summary.count_frame({10, 10});
  EXPECT_EQ(summary.seam_movement(), 0);
  summary.count_frame({12, 14});
  EXPECT_EQ(summary.seam_movement(), 3);
  summary.count_frame({});
  EXPECT_EQ(summary.seam_movement(), 1.5);
  summary.count_frame({12, 20});
  EXPECT_EQ(summary.seam_movement(), 2);
}

}  // namespace
}  // namespace biseam::tool
