#include "stitch/engine.hpp"

#include <gtest/gtest.h>

#include "stitch/exact_engine.hpp"
#include "stitch/ring_engine.hpp"
#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

// Pictures with a margin around their circles, which the exact engine's tables read.
tool::Setup small_setup() {
  tool::Setup setup;
  setup.camera = biseam_camera_of(320, 320, 195);
  for (BiseamLens& lens : setup.camera.lens) lens.p = 93;
  setup.width = 640;
  return setup;
}

TEST(OpenEngine, OpensTheWantedOneInItsFormat) {
  const auto ring = open_engine(small_setup(), {}, {BISEAM_GBRP12, BISEAM_RANGE_FULL});
  EXPECT_NE(dynamic_cast<RingEngine*>(ring.get()), nullptr);
  EXPECT_EQ(ring->format(), BISEAM_GBRP12);
  EngineOptions options;
  options.kind = EngineKind::exact;
  const auto exact = open_engine(small_setup(), options, {BISEAM_I420, BISEAM_RANGE_LIMITED});
  EXPECT_NE(dynamic_cast<ExactEngine*>(exact.get()), nullptr);
  EXPECT_EQ(exact->format(), BISEAM_NV12);
}

TEST(OpenEngine, WhatAnEngineDoesNotTakeIsAMatterOfSettings) {
  EngineOptions options;
  options.kind = EngineKind::exact;
  const auto [code, line] = test::failure_of([&] { open_engine(small_setup(), options, {BISEAM_GBRP12, BISEAM_RANGE_FULL}); });
  EXPECT_EQ(code, ExitCode::settings);
  EXPECT_EQ(line, "--engine exact: the pictures are not of 8 bits with chroma of half the size");
  tool::Setup odd = small_setup();
  odd.width = 642;
  EXPECT_EQ(test::failure_of([&] { open_engine(odd, {}, {BISEAM_GBRP12, BISEAM_RANGE_FULL}); }).first, ExitCode::settings);
}

}  // namespace
}  // namespace biseam::tool
