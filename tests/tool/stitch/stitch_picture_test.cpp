#include "stitch/stitch_picture.hpp"

#include <gtest/gtest.h>

#include "picture/write_picture.hpp"
#include "tool/support/painted_pair.hpp"

namespace biseam::tool {
namespace {

using namespace test;

TEST(StitchPicture, TheLayoutIsToldByTheShape) {
  const Nv12 left = paint_fisheye(fitting_view(), 0), right = paint_fisheye(fitting_view(), 1);
  const auto raw = [](const Nv12& picture) { return bytes_of(picture); };
  const std::string luma = raw(left).substr(0, left.luma.size()) + raw(right).substr(0, right.luma.size());
  const std::string stacked = luma + raw(left).substr(left.luma.size()) + raw(right).substr(right.luma.size());
  const std::string p = std::to_string(fitting_scale());
  const std::vector<std::string> upright = {"-", "--size", "320x640", "-o", "-", "--p0", p, "--p1", p};
  const std::string expected = stitch(fitting_options({}), fitting_pair()).out;
  EXPECT_TRUE(stitch(upright, stacked).out == expected);
  std::vector<std::string> wrong = upright;
  wrong.insert(wrong.end(), {"--layout", "side-by-side"});
  EXPECT_EQ(stitch(wrong, stacked).exit_code, 5);
}

TEST(StitchPicture, TwoFilesAreTheSameAsOneSideBySide) {
  const ScratchFolder folder;
  write_picture(folder / "0.nv12", paint_fisheye(usual_view(), 0));
  write_picture(folder / "1.nv12", paint_fisheye(usual_view(), 1));
  const Finished two = stitch({folder / "0.nv12", folder / "1.nv12", "--size", "320x320", "-o", "-"});
  EXPECT_EQ(two.exit_code, 0) << two.err;
  EXPECT_EQ(two.out, stitch({"-", "--size", "640x320", "-o", "-"}, usual_pair()).out);
}

TEST(StitchPicture, EveryKindOfFileIsWritten) {
  const ScratchFolder folder;
  const std::string pair = usual_pair();
  for (const char* name : {"a.png", "a.jpg", "a.nv12"}) {
    const Finished finished = stitch({"-", "--size", "640x320", "-o", folder / name}, pair);
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
    EXPECT_EQ(finished.out, "");
  }
  EXPECT_EQ(read_nv12(folder / "a.png").width, kWidth);
  EXPECT_EQ(read_nv12(folder / "a.jpg").height, kWidth / 2);
  expect_painted_sphere(read_bytes(folder / "a.nv12"));
}

TEST(StitchPicture, SeamLayerIsAPngWithOpacity) {
  const ScratchFolder folder;
  const Finished finished =
      stitch({"-", "--size", "640x320", "-o", folder / "a.png", "--seam-layer", folder / "layer.png"}, usual_pair());
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  constexpr std::size_t kColourType = 25;
  EXPECT_EQ(read_bytes(folder / "layer.png").at(kColourType), 6);
  const Finished jpeg =
      stitch({"-", "--size", "640x320", "-o", folder / "a.png", "--seam-layer", folder / "layer.jpg"}, usual_pair());
  expect_refusal(jpeg, 2, "layer.jpg");
}

TEST(StitchPicture, ShowSeamsWritesASecondPictureThatDiffersInTheBandsOnly) {
  const ScratchFolder folder;
  const Finished finished =
      stitch({"-", "--size", "640x320", "-o", folder / "a.png", "--show-seams", folder / "s.png"}, usual_pair());
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  const Nv12 plain = read_nv12(folder / "a.png"), seams = read_nv12(folder / "s.png");
  const auto differs = [&](std::size_t x) { return plain.luma[100 * kWidth + x] != seams.luma[100 * kWidth + x]; };
  EXPECT_TRUE(differs(kWidth / 4 - 4));
  EXPECT_TRUE(differs(3 * kWidth / 4 + 4));
  EXPECT_FALSE(differs(10) || differs(kWidth / 2) || differs(kWidth - 10));
}

TEST(StitchPicture, AMissingOrBrokenInputIsNamedAndNothingIsLeft) {
  const ScratchFolder folder;
  const auto png = encode_png(to_rgb(paint_fisheye(usual_view(), 0)));
  write_bytes(folder / "cut.png", std::string(png.begin(), png.begin() + std::ptrdiff_t(png.size() / 2)));
  write_bytes(folder / "text.png", "no picture");
  for (const char* name : {"none.png", "cut.png", "text.png"}) {
    expect_refusal(stitch({folder / name, "-o", folder / "out.png"}), 3, folder / name);
  }
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"cut.png", "text.png"}));
}

TEST(StitchPicture, RawInputOfAnotherSizeIsRefused) {
  expect_refusal(stitch({"-", "--size", "640x322", "-o", "-"}, usual_pair()), 3, "standard input");
  expect_refusal(stitch({"-", "--size", "640x318", "-o", "-"}, usual_pair()), 3, "standard input");
}

TEST(StitchPicture, AnOutputThatCantBeWrittenIsNamedAndNothingIsLeft) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder / "taken.png");
  const std::string pair = usual_pair(), quiet = std::to_string(usual_view().p);
  for (const char* name : {"taken.png", "none/out.png"}) {
    expect_refusal(stitch({"-", "--size", "640x320", "--p0", quiet, "--p1", quiet, "-o", folder / name}, pair), 4,
                   folder / name);
  }
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"taken.png"}));
}

// Not even the superuser makes files there.
TEST(StitchPicture, AnUnwritableFolderIsNamed) {
  const std::string quiet = std::to_string(usual_view().p);
  const Finished finished = stitch({"-", "--size", "640x320", "--p0", quiet, "--p1", quiet, "-o", "/proc/a.png"}, usual_pair());
  expect_refusal(finished, 4, "/proc/a.png");
}

TEST(StitchPicture, AFullDiskIsTold) {
  const std::string quiet = std::to_string(usual_view().p);
  expect_refusal(stitch({"-", "--size", "640x320", "--p0", quiet, "--p1", quiet, "-o", "-"}, usual_pair(), "/dev/full"), 4,
                 "standard output");
}

TEST(StitchPicture, APngComesThroughAPipe) {
  const Rgb both = to_rgb(side_by_side(paint_fisheye(usual_view(), 0), paint_fisheye(usual_view(), 1)));
  const auto png = encode_png(both);
  const Finished finished = stitch({"-", "-o", "-"}, std::string(png.begin(), png.end()));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  expect_painted_sphere(finished.out);
}

TEST(StitchPicture, SmallPicturesAreStitchedToo) {
  const FisheyeView view{64, 64, 31.5, 31.5, 32 / radians(97.5)};
  const std::string pair = bytes_of(side_by_side(paint_fisheye(view, 0), paint_fisheye(view, 1)));
  const Finished finished = stitch({"-", "--size", "128x64", "-o", "-"}, pair);
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_EQ(finished.out.size(), nv12_bytes({128, 64}));
}

TEST(StitchPicture, AnOddHalfIsRefused) {
  expect_refusal(stitch({"-", "--size", "642x320", "-o", "-"}, std::string(nv12_bytes({642, 320}), 'x')), 3, "standard input");
}

}  // namespace
}  // namespace biseam::tool
