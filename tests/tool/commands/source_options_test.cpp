#include "commands/source_options.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

struct Parsed {
  StitchOptions options;
  CLI::App app;

  explicit Parsed(const std::string& line) {
    add_source_options(app, options);
    add_camera_options(app, options);
    add_matching_options(app, options, "Engine");
    add_clip_options(app, options.video);
    app.parse(line);
  }
};

TEST(SourceOptions, GoWhereTheyBelong) {
  const Parsed parsed(
      "--camera a.toml --width 640 --p0 100 --light match --near off --no-search --from 1 --seams free --strict");
  EXPECT_EQ(parsed.options.camera, "a.toml");
  EXPECT_EQ(parsed.options.settings.width, 640);
  EXPECT_EQ(parsed.options.settings.lens[0].p, 100);
  EXPECT_EQ(parsed.options.engine.light, BISEAM_LIGHT_MATCH);
  EXPECT_EQ(parsed.options.engine.near, false);
  EXPECT_EQ(parsed.options.settings.blend.search, false);
  EXPECT_EQ(parsed.options.video.from, "1");
  EXPECT_EQ(parsed.options.video.seams, SeamSearch::free);
  EXPECT_TRUE(parsed.options.video.strict);
}

TEST(GivenOption, IsOneOfItsKind) {
  const Parsed parsed("--p1 90 --jobs 2");
  EXPECT_EQ(given_in_group(parsed.app, kCameraGroup), "--p1");
  EXPECT_EQ(given_in_group(parsed.app, kVideoGroup), "--jobs");
  EXPECT_EQ(given_in_group(parsed.app, "Engine"), "");
  EXPECT_EQ(given_option(parsed.app, [](const CLI::Option& option) { return option.get_name() == "--to"; }), "");
}

}  // namespace
}  // namespace biseam::tool
