// What the tool says to a command line that it can't understand.
#include <gtest/gtest.h>

#include "tool/support/places.hpp"
#include "tool/support/process.hpp"

namespace biseam::test {
namespace {

std::string said(std::vector<std::string> words) {
  words.insert(words.begin(), kTool);
  const Finished finished = run(words);
  EXPECT_EQ(finished.exit_code, 2);
  EXPECT_EQ(finished.out, "");
  return finished.err;
}

const std::string kCommands = "stitch, analyse, calibrate, scene, compare, contact-sheet, tag, view\n";

TEST(Usage, UnknownCommandsAreNamedWithTheNearestOne) {
  EXPECT_EQ(said({"stich"}), "biseam: stich: no such command; is stitch meant?\n");
  EXPECT_EQ(said({"veiw", "a.jpg"}), "biseam: veiw: no such command; is view meant?\n");
  EXPECT_EQ(said({"contact", "a.jpg", "-o", "b.jpg"}), "biseam: contact: no such command; is contact-sheet meant?\n");
  EXPECT_EQ(said({"foo"}), "biseam: foo: no such command; there are " + kCommands);
  EXPECT_EQ(said({}), "biseam: a command is wanted: " + kCommands);
}

TEST(Usage, UnknownOptionsAreNamedWithTheNearestOne) {
  EXPECT_EQ(said({"--versoin"}), "biseam: --versoin: no such option; is --version meant?\n");
  EXPECT_EQ(said({"stitch", "a.png", "-o", "b.png", "--widht", "640"}),
            "biseam: --widht: no such option of stitch; is --width meant?\n");
  EXPECT_EQ(said({"stitch", "a.png", "--outptu=b.png"}), "biseam: --outptu: no such option of stitch; is --output meant?\n");
  EXPECT_EQ(said({"stitch", "a.png", "-o", "b.png", "--findpath", "8"}),
            "biseam: --findpath: no such option of stitch; is --findpath-width meant?\n");
  EXPECT_EQ(said({"tag", "a.png", "--colour"}), "biseam: --colour: no such option of tag; --help lists them\n");
  EXPECT_EQ(said({"stitch", "a.png", "-o", "b.png", "--cx0", "1", "--cy0", "2"}),
            "biseam: --cx0: no such option of stitch; --help lists them\n");
}

TEST(Usage, TooManyInputsAreCounted) {
  EXPECT_EQ(said({"stitch", "a.png", "b.png", "c.png", "-o", "d.png"}), "biseam: IN: 3 are given, 2 are the most\n");
}

TEST(Usage, NumbersHaveRangesThatCanBeRead) {
  for (const std::string wrong : {"0", "-3", "many", "1.5", "99999999999999999999"}) {
    const std::string frames = "biseam: --frames: '" + wrong + "' must be a whole number, 1 to 1000000000\n";
    EXPECT_EQ(said({"stitch", "a.mp4", "-o", "b.mp4", "--frames", wrong}), frames);
    EXPECT_EQ(said({"scene", "-o", "folder", "--frames", wrong}), frames);
  }
  EXPECT_EQ(said({"scene", "-o", "folder", "--fov", "1"}), "biseam: --fov: '1' must be a number, 182 to 280\n");
  EXPECT_EQ(said({"scene", "-o", "folder", "--seed", "-1"}), "biseam: --seed: '-1' must be a whole number, 0 to 4294967295\n");
  EXPECT_EQ(said({"compare", "a", "b", "--seam-degrees", "nan"}),
            "biseam: --seam-degrees: 'nan' must be a number, 0.5 to 90\n");
  EXPECT_EQ(said({"stitch", "a.mp4", "-o", "b.mp4", "--crf", "x"}), "biseam: --crf: 'x' is not a number it can take\n");
}

TEST(Usage, SurplusArgumentsAreNamed) {
  EXPECT_EQ(said({"tag", "a.png", "b.png"}), "biseam: b.png: is one argument too many for tag\n");
}

TEST(Usage, NamesOfChoicesAreTold) {
  EXPECT_EQ(said({"stitch", "a.png", "-o", "b.png", "--layout", "up"}),
            "biseam: --layout: 'up' must be auto, side-by-side or top-bottom\n");
}

TEST(Usage, TheVersionIsPrinted) {
  const Finished finished = run({kTool, "--version"});
  EXPECT_EQ(finished.exit_code, 0);
  EXPECT_EQ(finished.out, "biseam " BISEAM_VERSION "\n");
}

}  // namespace
}  // namespace biseam::test
