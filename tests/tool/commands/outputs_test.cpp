// What every command takes care of before and after its work: that no output destroys an input or another output, and that
// what can't be printed is told.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "picture/write_picture.hpp"
#include "tool/support/places.hpp"
#include "tool/support/process.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::Finished;
using test::kTool;
using test::read_bytes;
using test::write_bytes;

class Outputs : public testing::Test {
 protected:
  Outputs() {
    write_picture(folder_ / "pair.png", Rgb(256, 128));
    write_picture(folder_ / "lens.jpg", Rgb(128, 128));
    std::filesystem::create_symlink("pair.png", folder_ / "link.png");
    std::filesystem::create_hard_link(folder_ / "pair.png", folder_ / "hard.png");
  }

  static Finished tool(std::vector<std::string> words) {
    words.insert(words.begin(), kTool);
    return test::run(std::move(words));
  }

  // redirection: as the shell writes it.
  static Finished tool(std::vector<std::string> words, const std::string& redirection) {
    words.insert(words.begin(), {"/bin/sh", "-c", "exec \"$@\" " + redirection, "sh", kTool});
    return test::run(std::move(words));
  }

  // Refused in one line that names both, before anything is read or made.
  void expect_clash(const std::vector<std::string>& words, const std::string& one, const std::string& other) const {
    const std::vector<std::string> names = folder_.names();
    const std::string pair = read_bytes(folder_ / "pair.png"), lens = read_bytes(folder_ / "lens.jpg");
    const Finished finished = tool(words);
    EXPECT_EQ(finished.exit_code, 2) << finished.err;
    EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
    EXPECT_NE(finished.err.find("is the same file as"), std::string::npos) << finished.err;
    EXPECT_NE(finished.err.find(one), std::string::npos) << finished.err;
    EXPECT_NE(finished.err.find(other), std::string::npos) << finished.err;
    EXPECT_EQ(folder_.names(), names);
    EXPECT_EQ(read_bytes(folder_ / "pair.png"), pair);
    EXPECT_EQ(read_bytes(folder_ / "lens.jpg"), lens);
  }

  test::ScratchFolder folder_;
};

TEST_F(Outputs, NoRecordingIsReplacedByItsPanorama) {
  const std::string pair = folder_ / "pair.png", lens = folder_ / "lens.jpg";
  for (const char* name : {"pair.png", "link.png", "hard.png"}) {
    expect_clash({"stitch", pair, "-o", folder_ / name}, pair, folder_ / name);
  }
  expect_clash({"stitch", pair, lens, "-o", lens}, "-o " + lens, "the input " + lens);
  expect_clash({"stitch", pair, "-o", folder_ / "out.png", "--show-seams", pair}, "--show-seams " + pair, pair);
  expect_clash({"stitch", pair, "-o", folder_ / "out.png", "--seam-layer", folder_ / "link.png"}, "--seam-layer", pair);
  write_bytes(folder_ / "clip.mp4", "any");
  expect_clash({"stitch", folder_ / "clip.mp4", "-o", folder_ / "clip.mp4"}, "-o", folder_ / "clip.mp4");
  expect_clash({"stitch", pair, "-o", folder_ / "out.mp4", "--json", pair}, "--json " + pair, pair);
  write_bytes(folder_ / "camera.png", "");
  expect_clash({"stitch", pair, "--camera", folder_ / "camera.png", "-o", folder_ / "camera.png"}, "--camera", "-o");
}

TEST_F(Outputs, NoOutputReplacesAnother) {
  const std::string pair = folder_ / "pair.png", out = folder_ / "out.png";
  expect_clash({"stitch", pair, "-o", out, "--show-seams", out}, "--show-seams " + out, "-o " + out);
  expect_clash({"stitch", pair, "-o", out, "--seam-layer", folder_ / "./out.png"}, "--seam-layer", out);
  expect_clash({"stitch", pair, "-o", folder_ / "a.png", "--show-seams", out, "--seam-layer", out}, "--seam-layer", out);
  expect_clash({"stitch", pair, "-o", folder_ / "a.mp4", "--json", folder_ / "a.mp4"}, "--json", folder_ / "a.mp4");
  std::filesystem::create_symlink("out.png", folder_ / "dangling.png");
  expect_clash({"stitch", pair, "-o", out, "--show-seams", folder_ / "dangling.png"}, folder_ / "dangling.png", out);
}

TEST_F(Outputs, TheOtherCommandsKeepTheirInputsToo) {
  const std::string pair = folder_ / "pair.png";
  expect_clash({"contact-sheet", pair, folder_ / "lens.jpg", "-o", folder_ / "lens.jpg"}, "-o", folder_ / "lens.jpg");
  std::filesystem::create_symlink("pair.png", folder_ / "page.html");
  expect_clash({"view", pair, "-o", folder_ / "page.html"}, folder_ / "page.html", pair);
  expect_clash({"view", folder_ / "lens.jpg", "--show-seams", pair, "-o", folder_ / "page.html"}, "--show-seams", pair);
  std::filesystem::create_directory(folder_ / "scene");
  std::filesystem::create_symlink("truth.png", folder_ / "scene/fisheye1.png");
  expect_clash({"scene", "-o", folder_ / "scene"}, "truth.png", "fisheye1.png");
}

TEST_F(Outputs, StandardStreamsAreFilesLikeOthers) {
  const std::string pair = folder_ / "pair.png", before = read_bytes(pair);
  for (const Finished& finished : {tool({"compare", pair, pair}, ">> " + pair), tool({"stitch", pair, "-o", "-"}, ">> " + pair),
                                   tool({"stitch", "-", "-o", pair}, "< " + pair)}) {
    EXPECT_EQ(finished.exit_code, 2) << finished.err;
    EXPECT_NE(finished.err.find("is the same file as"), std::string::npos) << finished.err;
    EXPECT_EQ(read_bytes(pair), before);
  }
}

TEST_F(Outputs, WhatCantBePrintedIsAnError) {
  const std::string pair = folder_ / "pair.png";
  for (const std::vector<std::string>& words : {std::vector<std::string>{"compare", pair, pair},
                                                {"compare", pair, pair, "--json"},
                                                {"--help"},
                                                {"stitch", "--help"},
                                                {"scene", "-o", folder_ / "scene", "--width", "64", "--fisheye-size", "32"}}) {
    for (const char* redirection : {"> /dev/full", ">&-"}) {
      const Finished finished = tool(words, redirection);
      EXPECT_EQ(finished.exit_code, 4) << words.front() << redirection;
      EXPECT_EQ(finished.err.rfind("biseam: standard output: can't be written", 0), 0u) << finished.err;
      EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
    }
  }
}

// A file opened in the place of a closed stream would get what is meant for the stream, as here the summary would.
TEST_F(Outputs, ClosedStreamsChangeNoFile) {
  write_bytes(folder_ / "clip.nv12", std::string(std::size_t(2) * 256 * 128 * 3 / 2, '\x80'));
  const std::vector<std::string> words = {
      "stitch", folder_ / "clip.nv12", "--size", "256x128",           "--rate", "1", "--width", "128", "--no-search",
      "-o",     folder_ / "out.nv12",  "--json", folder_ / "out.json"};
  for (const char* redirection : {"", "2>&-", ">&- 2>&-", "<&- >&- 2>&-"}) {
    EXPECT_EQ(tool(words, redirection).exit_code, 0) << redirection;
    EXPECT_EQ(read_bytes(folder_ / "out.nv12").size(), 2u * 128 * 64 * 3 / 2) << redirection;
    EXPECT_EQ(read_bytes(folder_ / "out.json").rfind("{\"frames\"", 0), 0u) << redirection << read_bytes(folder_ / "out.json");
  }
}

TEST_F(Outputs, ClosedStreamsCantBeReadOrWritten) {
  EXPECT_EQ(tool({"stitch", folder_ / "pair.png", "-o", "-"}, ">&-").exit_code, 4);
  EXPECT_EQ(tool({"stitch", "-", "-o", folder_ / "out.png"}, "<&-").exit_code, 3);
}

}  // namespace
}  // namespace biseam::tool
