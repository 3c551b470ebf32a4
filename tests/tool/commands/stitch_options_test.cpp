#include "commands/stitch_options.hpp"

#include <gtest/gtest.h>

#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

StitchOptions raw_clip() {
  StitchOptions options;
  options.inputs = {"a.nv12", "b.nv12"};
  options.output = "out.y4m";
  options.size = "640x320";
  options.video.rate = "25";
  return options;
}

std::string refusal(const StitchOptions& options) {
  const auto [code, line] = test::failure_of([&] { clip_job(options); });
  EXPECT_EQ(code, ExitCode::usage) << line;
  return line;
}

TEST(StitchOptions, AClipsTextsBecomeNumbers) {
  StitchOptions options = raw_clip();
  options.video.from = "1:02";
  options.video.to = "63.5";
  options.video.offset = "-0.5";
  options.video.jobs = 3;
  options.video.crf = 20;
  const ClipJob job = clip_job(options);
  EXPECT_EQ(job.source.files, options.inputs);
  EXPECT_EQ(job.source.raw_size, (Size{640, 320}));
  EXPECT_EQ(av_cmp_q(job.raw_rate, {25, 1}), 0);
  EXPECT_EQ(job.part.from, 62000000);
  EXPECT_EQ(job.part.to, 63500000);
  EXPECT_EQ(job.offset, -500000);
  EXPECT_EQ(job.source.engine.threads, 3);
  EXPECT_EQ(job.encoder.crf, 20);
  EXPECT_EQ(job.raw_kind, RawKind::y4m);
}

TEST(StitchOptions, WhatIsNotGivenHasAUsualValue) {
  StitchOptions options;
  options.inputs = {"in.mp4"};
  options.output = "out.mp4";
  const ClipJob job = clip_job(options);
  EXPECT_FALSE(job.source.raw_size || job.part.from || job.part.to || job.part.frames || job.encoder.crf);
  EXPECT_EQ(job.source.layout, Layout::automatic);
  EXPECT_EQ(job.source.engine.kind, EngineKind::ring);
  EXPECT_EQ(job.source.engine.quality, BISEAM_QUALITY_GOOD);
  EXPECT_EQ(job.source.engine.threads, 0);
  EXPECT_EQ(job.seam_hold, 1);
  EXPECT_TRUE(job.source.engine.steady_seams);
  EXPECT_FALSE(picture_job(options).source.engine.steady_seams) << "pictures have no past";
  options.video.seam_hold = 4;
  EXPECT_FALSE(clip_job(options).source.engine.steady_seams);
  EXPECT_EQ(job.offset, 0);
  EXPECT_EQ(job.encoder.name, "libx264");
  EXPECT_TRUE(job.metadata_360);
}

TEST(StitchOptions, TimesAndRatesThatCantBeAreRefused) {
  StitchOptions options = raw_clip();
  options.video.from = "-1";
  EXPECT_EQ(refusal(options), "--from: must not be before the beginning");
  options = raw_clip();
  options.video.from = "5";
  options.video.to = "5";
  EXPECT_EQ(refusal(options), "--to: must be later than --from");
  options = raw_clip();
  options.video.rate = "";
  EXPECT_EQ(refusal(options), "--rate: raw frames of a clip need their rate");
}

TEST(StitchOptions, ALookIsThreeAngles) {
  StitchOptions options = raw_clip();
  options.look = "-90,12.5,360";
  check_stitch_options(options);
  const BiseamTurn look = clip_job(options).source.engine.look;
  EXPECT_EQ(look.yaw, -90);
  EXPECT_EQ(look.pitch, 12.5);
  EXPECT_EQ(look.roll, 360);
  for (const char* wrong : {"1,2", "1,2,3,4", "1,2,361", "1,2,nan", "a,b,c", "1;2;3"}) {
    options.look = wrong;
    EXPECT_EQ(test::failure_of([&] { check_stitch_options(options); }).second,
              "--look: '" + options.look + "': 3 numbers of -360 to 360 with commas between are wanted");
  }
}

TEST(StitchOptions, WhatTheOtherEngineKnowsIsRefused) {
  StitchOptions options = raw_clip();
  options.given_exact = "--feather";
  EXPECT_EQ(test::failure_of([&] { check_stitch_options(options); }).second, "--feather: only for --engine exact");
  options.engine.kind = EngineKind::exact;
  check_stitch_options(options);
  options.given_ring = "--look";
  EXPECT_EQ(test::failure_of([&] { check_stitch_options(options); }).second, "--look: not for --engine exact");
}

TEST(StitchOptions, APicturesNamesAreTakenOver) {
  StitchOptions options;
  options.inputs = {"in.png"};
  options.output = "out.png";
  options.show_seams = "seams.png";
  options.seam_layer = "layer.png";
  options.metadata_360 = false;
  const PictureJob job = picture_job(options);
  EXPECT_EQ(job.source.files, options.inputs);
  EXPECT_EQ(job.output, "out.png");
  EXPECT_EQ(job.show_seams, "seams.png");
  EXPECT_EQ(job.seam_layer, "layer.png");
  EXPECT_FALSE(job.metadata_360);
}

}  // namespace
}  // namespace biseam::tool
