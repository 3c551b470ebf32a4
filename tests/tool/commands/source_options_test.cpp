#include "commands/source_options.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

struct Parsed {
  StitchOptions options;
  CommandLine line{"biseam", "", "", ""};
  Command& command = line.add("stitch", "");

  explicit Parsed(std::vector<std::string> words) {
    add_source_options(command, options);
    add_camera_options(command, options);
    add_matching_options(command, options, "Engine");
    add_clip_options(command, options.video);
    command.does([] { return ExitCode::done; });
    words.insert(words.begin(), "stitch");
    line.run(words);
  }
};

TEST(SourceOptions, GoWhereTheyBelong) {
  const Parsed parsed({"--camera", "a.toml", "--width", "640", "--p0", "100", "--light", "off", "--near", "off", "--no-search",
                       "--from", "1", "--seams", "free", "--strict"});
  EXPECT_EQ(parsed.options.camera, "a.toml");
  EXPECT_EQ(parsed.options.settings.width, 640);
  EXPECT_EQ(parsed.options.settings.lens[0].p, 100);
  EXPECT_EQ(parsed.options.engine.light, BISEAM_LIGHT_OFF);
  EXPECT_EQ(parsed.options.engine.near, false);
  EXPECT_EQ(parsed.options.settings.blend.search, false);
  EXPECT_EQ(parsed.options.video.from, "1");
  EXPECT_EQ(parsed.options.video.seams, SeamSearch::free);
  EXPECT_TRUE(parsed.options.video.strict);
}

TEST(SourceOptions, HaveTheirGroups) {
  const Parsed parsed({"--p1", "90", "--jobs", "2"});
  EXPECT_EQ(parsed.command.given_in(kCameraGroup), "--p1");
  EXPECT_EQ(parsed.command.given_in(kVideoGroup), "--jobs");
  EXPECT_EQ(parsed.command.given_in("Engine"), "");
}

}  // namespace
}  // namespace biseam::tool
