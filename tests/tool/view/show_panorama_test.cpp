#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tool/support/places.hpp"
#include "tool/support/process.hpp"
#include "tool/support/started.hpp"
#include "tool/view/run_view.hpp"

namespace biseam::tool {
namespace {

using namespace test;

TEST(ShowPanorama, WritesAPageAndNothingElse) {
  const ScratchFolder folder;
  const std::string panorama = make_panorama(folder);
  const Outcome outcome = run_tool({"view", panorama, "-o", folder / "a.html"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.message;
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.html", "panorama.png"}));
  const std::string page = read_bytes(folder / "a.html");
  EXPECT_TRUE(page.starts_with("<!doctype html>"));
  EXPECT_TRUE(page.ends_with("</html>\n"));
}

TEST(ShowPanorama, WritesTheSamePageToStandardOutput) {
  const ScratchFolder folder;
  const std::string panorama = make_panorama(folder);
  run_tool({"view", panorama, "-o", folder / "a.html"});
  const Finished finished = run({kTool, "view", panorama, "-o", "-"});
  EXPECT_EQ(finished.exit_code, 0);
  EXPECT_TRUE(finished.out == read_bytes(folder / "a.html"));
}

// What follows the end of the picture is shown by no one, but makes the page take a while.
TEST(ShowPanorama, ASignalLeavesNothingOfThePage) {
  for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
    const ScratchFolder folder;
    std::filesystem::resize_file(make_panorama(folder), 300 << 20);
    Started started({kTool, "view", folder / "panorama.png", "-o", folder / "a.html"});
    for (int tries = 0; tries < 3000 && folder.names().size() < 2; ++tries) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    EXPECT_EQ(folder.names().size(), 2u);
    started.signal(signal);
    EXPECT_EQ(started.finish().exit_code, -signal);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"panorama.png"}));
  }
}

TEST(ShowPanorama, InputsThatCanNotBeShown) {
  const ScratchFolder folder;
  const std::string panorama = make_panorama(folder), page = folder / "a.html";
  expect_refusal({"view", folder / "missing.png", "-o", page}, 3, "missing.png");
  expect_refusal({"view", panorama, "--show-seams", folder / "missing.png", "-o", page}, 3, "missing.png");
  write_picture(folder / "square.png", Rgb(64, 64));
  expect_refusal({"view", panorama, "--show-seams", folder / "square.png", "-o", page}, 3, "square.png: 64x64");
  EXPECT_FALSE(std::filesystem::exists(page));
}

TEST(ShowPanorama, APageThatCanNotBeWrittenLeavesNothing) {
  const ScratchFolder folder;
  const std::string panorama = make_panorama(folder);
  expect_refusal({"view", panorama, "-o", folder / "none/a.html"}, 4, "a.html: can't be created");
  std::filesystem::create_directory(folder / "b.html");
  expect_refusal({"view", panorama, "-o", folder / "b.html"}, 4, "b.html: is a folder");
  const Finished full = run({kTool, "view", panorama, "-o", "-"}, "", "/dev/full");
  EXPECT_EQ(full.exit_code, 4);
  EXPECT_NE(full.err.find("can't be written"), full.err.npos) << full.err;
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"b.html", "panorama.png"}));
}

}  // namespace
}  // namespace biseam::tool
