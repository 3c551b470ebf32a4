// Frames by the checked door: every rule of their records, and the seams that they take and give back.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "biseam/panorama.hpp"
#include "panorama/door_fixture.hpp"

namespace biseam::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(), kInf = std::numeric_limits<double>::infinity();

// A frame's records, of which one is broken.
struct Call {
  BiseamPicture fisheyes[2], panorama;
  BiseamFrame frame;
};

class PanoramaFrames : public testing::Test {
 protected:
  explicit PanoramaFrames(int format = BISEAM_NV12) {
    door_.options.format = format;
    open();
  }
  void open() {
    handle_.emplace_back(new Handle(biseam_panorama_open(&door_.camera, &door_.options, nullptr)));
    lenses_ = {door_.fisheye(0), door_.fisheye(1)};
  }

  Call call_for(OwnPicture& to) { return {{lenses_[0].record(), lenses_[1].record()}, to.record(), biseam_frame_defaults()}; }

  void expect_refused(const Rule<Call>& rule, BiseamErrorCode code = BISEAM_INVALID_PICTURE) {
    OwnPicture to = door_.panorama();
    Call call = call_for(to);
    rule.break_it(call);
    BiseamError error = unwritten();
    EXPECT_EQ(biseam_panorama_stitch(handle_.back()->panorama, call.fisheyes, &call.panorama, &call.frame, &error), code);
    expect_error(error, code, rule.text);
    EXPECT_TRUE(to.untouched()) << rule.text;
    EXPECT_EQ(biseam_panorama_stitch(handle_.back()->panorama, call.fisheyes, &call.panorama, &call.frame, nullptr), code);
    EXPECT_TRUE(to.untouched()) << rule.text;
  }

  Door door_;
  std::vector<std::unique_ptr<Handle>> handle_;
  std::vector<OwnPicture> lenses_;
};

TEST_F(PanoramaFrames, EveryRuleOfPicturesBrokenAloneIsNamed) {
  struct Target {
    std::string name, size;
    BiseamPicture& (*of)(Call&);
  };
  const Target targets[] = {
      {"fisheyes[0]", "96 x 96", [](Call& c) -> BiseamPicture& { return c.fisheyes[0]; }},
      {"fisheyes[1]", "96 x 96", [](Call& c) -> BiseamPicture& { return c.fisheyes[1]; }},
      {"panorama", "192 x 96", [](Call& c) -> BiseamPicture& { return c.panorama; }},
  };
  const std::string size = std::to_string(sizeof(BiseamPicture));
  for (const Target& target : targets) {
    const std::string row = target.name == "panorama" ? "192" : "96";
    const Rule<BiseamPicture> rules[] = {
        {".size is 0: must be " + size + ", as biseam_picture_defaults gives it", [](BiseamPicture& p) { p.size = 0; }},
        {".size is 4096: must be " + size + ", as biseam_picture_defaults gives it", [](BiseamPicture& p) { p.size = 4096; }},
        {".format is 2: must be the options', 1", [](BiseamPicture& p) { p.format = BISEAM_NV21; }},
        {".format is 0: must be the options', 1", [](BiseamPicture& p) { p.format = 0; }},
        {" is 94 x 96: must be " + target.size, [](BiseamPicture& p) { p.width = 94; }},
        {" is 0 x 96: must be " + target.size, [](BiseamPicture& p) { p.width = 0; }},
        {" is 100000 x 96: must be " + target.size, [](BiseamPicture& p) { p.width = 100000; }},
        {".siting is -1: must be 0 (left), 1 (middle) or 2 (top left)", [](BiseamPicture& p) { p.siting = -1; }},
        {".siting is 3: must be 0 (left), 1 (middle) or 2 (top left)", [](BiseamPicture& p) { p.siting = 3; }},
        {".planes[0] is NULL: must be a plane", [](BiseamPicture& p) { p.planes[0] = nullptr; }},
        {".planes[1] is NULL: must be a plane", [](BiseamPicture& p) { p.planes[1] = nullptr; }},
        {".strides[0] is 95: must be " + row + " bytes or more, up or down", [](BiseamPicture& p) { p.strides[0] = 95; }},
        {".strides[0] is 0: must be " + row + " bytes or more, up or down", [](BiseamPicture& p) { p.strides[0] = 0; }},
        {".strides[1] is -95: must be " + row + " bytes or more, up or down", [](BiseamPicture& p) { p.strides[1] = -95; }},
    };
    for (const Rule<BiseamPicture>& rule : rules) {
      expect_refused({target.name + rule.text, [&](Call& call) { rule.break_it(target.of(call)); }});
    }
    const std::string height = target.name == "panorama" ? "192 x 98" : "96 x 98";
    expect_refused(
        {target.name + " is " + height + ": must be " + target.size, [&](Call& call) { target.of(call).height = 98; }});
  }
}

TEST_F(PanoramaFrames, FisheyesHaveOneSiting) {
  expect_refused({"fisheyes[1].siting is 1: must be that of fisheyes[0], 0",
                  [](Call& call) { call.fisheyes[1].siting = BISEAM_SITING_MIDDLE; }});
}

TEST_F(PanoramaFrames, PicturesMustBeThere) {
  OwnPicture to = door_.panorama();
  const Call call = call_for(to);
  BiseamError error = unwritten();
  BiseamPanorama* const panorama = handle_.back()->panorama;
  EXPECT_EQ(biseam_panorama_stitch(panorama, nullptr, &call.panorama, nullptr, &error), BISEAM_INVALID_PICTURE);
  expect_error(error, BISEAM_INVALID_PICTURE, "fisheyes[0] is NULL: must be a picture");
  EXPECT_EQ(biseam_panorama_stitch(panorama, call.fisheyes, nullptr, nullptr, &error), BISEAM_INVALID_PICTURE);
  expect_error(error, BISEAM_INVALID_PICTURE, "panorama is NULL: must be a picture");
  EXPECT_TRUE(to.untouched());
  EXPECT_EQ(biseam_panorama_stitch(panorama, call.fisheyes, &call.panorama, nullptr, nullptr), BISEAM_OK);
  EXPECT_FALSE(to.untouched());
}

TEST_F(PanoramaFrames, EveryRuleOfAFrameBrokenAloneIsNamed) {
  const std::string size = std::to_string(sizeof(BiseamFrame));
  const Rule<Call> rules[] = {
      {"frame.size is 0: must be " + size + ", as biseam_frame_defaults gives it", [](Call& c) { c.frame.size = 0; }},
      {"frame.size is 33: must be " + size + ", as biseam_frame_defaults gives it", [](Call& c) { c.frame.size = 33; }},
      {"turn.yaw is nan: must be from -1e+06 to 1e+06 degrees", [](Call& c) { c.frame.turn.yaw = kNaN; }},
      {"turn.pitch is inf: must be from -1e+06 to 1e+06 degrees", [](Call& c) { c.frame.turn.pitch = kInf; }},
      {"turn.roll is -inf: must be from -1e+06 to 1e+06 degrees", [](Call& c) { c.frame.turn.roll = -kInf; }},
      {"turn.roll is 1.1e+06: must be from -1e+06 to 1e+06 degrees", [](Call& c) { c.frame.turn.roll = 1.1e6; }},
  };
  for (const Rule<Call>& rule : rules) expect_refused(rule, BISEAM_INVALID_OPTIONS);
}

TEST_F(PanoramaFrames, EverySampleOfASeamMustBeAnAngle) {
  const std::size_t length = std::size_t(biseam_panorama_seam_length(handle_.back()->panorama));
  for (const double wrong : {kNaN, kInf, -kInf, 90.1, -91.0}) {
    for (const std::size_t at : {std::size_t(0), length - 1}) {
      std::vector<double> seam(length, 0.0);
      seam[at] = wrong;
      char text[80];
      std::snprintf(text, sizeof text, "seam[%zu] is %g: must be from -90 to 90 degrees", at, wrong);
      expect_refused({text, [&](Call& c) { c.frame.seam = seam.data(); }}, BISEAM_INVALID_OPTIONS);
    }
  }
}

class PanoramaSeams : public PanoramaFrames {
 protected:
  std::vector<double> seam() {
    std::vector<double> seam(std::size_t(biseam_panorama_seam_length(panorama())), kNaN);
    biseam_panorama_seam(panorama(), seam.data());
    return seam;
  }
  OwnPicture stitched(const double* seam) {
    OwnPicture to = door_.panorama();
    Call call = call_for(to);
    call.frame.seam = seam;
    EXPECT_EQ(biseam_panorama_stitch(panorama(), call.fisheyes, &call.panorama, &call.frame, nullptr), BISEAM_OK);
    return to;
  }
  void show_others() { lenses_ = {door_.fisheye(1), door_.fisheye(0)}; }
  BiseamPanorama* panorama() { return handle_.back()->panorama; }
};

TEST_F(PanoramaSeams, AreInTheMiddleBeforeTheFirstFrameAndInTheRingAfterIt) {
  EXPECT_EQ(seam(), std::vector<double>(seam().size(), 0.0));
  stitched(nullptr);
  const double ring = biseam_panorama_ring(panorama());
  EXPECT_GT(ring, 8);  // the lenses share 10 degrees, and a sample of the ring is less than 2
  EXPECT_LE(ring, 10);
  bool moved = false;
  for (const double angle : seam()) {
    EXPECT_LT(std::abs(angle), ring);
    moved = moved || angle != 0;
  }
  EXPECT_TRUE(moved);
}

TEST_F(PanoramaSeams, GivenToAFrameAreItsOwn) {
  const OwnPicture searched = stitched(nullptr);
  const std::vector<double> first = seam();
  EXPECT_EQ(stitched(first.data()).bytes(), searched.bytes());
  EXPECT_EQ(seam(), first);
  show_others();
  const OwnPicture others = stitched(nullptr);
  ASSERT_NE(seam(), first);
  const OwnPicture held = stitched(first.data());
  EXPECT_EQ(seam(), first);
  EXPECT_NE(held.bytes(), others.bytes());
  EXPECT_EQ(stitched(nullptr).bytes(), others.bytes());  // and nothing of it is left
}

TEST_F(PanoramaSeams, KeepClearOfTheRingsEdges) {
  const std::vector<double> far(seam().size(), 90.0), near(seam().size(), -90.0);
  stitched(far.data());
  const double most = seam().front();
  EXPECT_LT(most, biseam_panorama_ring(panorama()));
  EXPECT_EQ(seam(), std::vector<double>(far.size(), most));
  stitched(near.data());
  EXPECT_EQ(seam(), std::vector<double>(far.size(), -most));
}

TEST_F(PanoramaSeams, OfTheMiddleAreGivenBackAsZero) {
  door_.options.seam = BISEAM_SEAM_MIDDLE;
  open();
  const OwnPicture straight = stitched(nullptr);
  EXPECT_EQ(seam(), std::vector<double>(seam().size(), 0.0));
  EXPECT_EQ(stitched(seam().data()).bytes(), straight.bytes());
}

class PanoramaFramesOfWords : public PanoramaFrames {
 protected:
  PanoramaFramesOfWords() : PanoramaFrames(BISEAM_P010) {}
};

TEST_F(PanoramaFramesOfWords, LieAtEvenAddresses) {
  const auto odd = [](void*& plane) { plane = static_cast<char*>(plane) + 1; };
  expect_refused({"fisheyes[1].planes[0] is odd: samples of 16 bits lie at even addresses",
                  [&](Call& c) { odd(c.fisheyes[1].planes[0]); }});
  expect_refused(
      {"panorama.planes[1] is odd: samples of 16 bits lie at even addresses", [&](Call& c) { odd(c.panorama.planes[1]); }});
  expect_refused({"fisheyes[0].strides[1] is 193: must be 192 bytes or more, up or down, and even",
                  [](Call& c) { c.fisheyes[0].strides[1] = 193; }});
  expect_refused({"panorama.strides[0] is 382: must be 384 bytes or more, up or down, and even",
                  [](Call& c) { c.panorama.strides[0] = 382; }});
}

}  // namespace
}  // namespace biseam::test
