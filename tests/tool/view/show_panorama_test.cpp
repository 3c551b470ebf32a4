#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "picture/write_picture.hpp"
#include "tool/support/command_line.hpp"
#include "tool/support/process.hpp"
#include "tool/support/scratch_folder.hpp"
#include "tool/support/started.hpp"

namespace biseam::tool {
namespace {

using test::Finished;
using test::Outcome;
using test::read_bytes;
using test::run_tool;
using test::ScratchFolder;
using test::write_bytes;

std::string make_panorama(const ScratchFolder& folder) {
  const std::string path = folder / "panorama.png";
  write_picture(path, Rgb(64, 32));
  return path;
}

void expect_refusal(const std::vector<std::string>& words, int exit_code, const std::string& what) {
  const Outcome outcome = run_tool(words);
  EXPECT_EQ(outcome.exit_code, exit_code) << outcome.message;
  EXPECT_NE(outcome.message.find(what), outcome.message.npos) << outcome.message;
}

TEST(ViewCommand, WritesAPageAndNothingElse) {
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

TEST(ViewCommand, WritesTheSamePageToStandardOutput) {
  const ScratchFolder folder;
  const std::string panorama = make_panorama(folder);
  run_tool({"view", panorama, "-o", folder / "a.html"});
  const Finished finished = test::run({BISEAM_TOOL, "view", panorama, "-o", "-"});
  EXPECT_EQ(finished.exit_code, 0);
  EXPECT_TRUE(finished.out == read_bytes(folder / "a.html"));
}

// What follows the end of the picture is shown by no one, but makes the page take a while.
TEST(ViewCommand, ASignalLeavesNothingOfThePage) {
  for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
    const ScratchFolder folder;
    std::filesystem::resize_file(make_panorama(folder), 300 << 20);
    test::Started started({BISEAM_TOOL, "view", folder / "panorama.png", "-o", folder / "a.html"});
    for (int tries = 0; tries < 3000 && folder.names().size() < 2; ++tries) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    EXPECT_EQ(folder.names().size(), 2u);
    started.signal(signal);
    EXPECT_EQ(started.finish().exit_code, -signal);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"panorama.png"}));
  }
}

TEST(ViewCommand, CommandLinesThatMakeNoSense) {
  const ScratchFolder folder;
  const std::string panorama = make_panorama(folder), page = folder / "a.html";
  expect_refusal({"view", "-o", page}, 2, "PANORAMA");
  expect_refusal({"view", panorama}, 2, "either --output FILE or --serve");
  expect_refusal({"view", panorama, "-o", page, "--serve"}, 2, "either --output FILE or --serve");
  expect_refusal({"view", "-", "-o", page}, 2, "standard input");
  expect_refusal({"view", panorama, "-o", panorama}, 2, "must end in .html");
  expect_refusal({"view", panorama, "--serve", "65536"}, 2, "'65536' is no port");
  expect_refusal({"view", panorama, "--serve", "80x"}, 2, "'80x' is no port");
  expect_refusal({"view", panorama, "--serve=-1"}, 2, "'-1' is no port");
  EXPECT_EQ(folder.names(), std::vector<std::string>{"panorama.png"});
}

TEST(ViewCommand, InputsThatCanNotBeShown) {
  const ScratchFolder folder;
  const std::string panorama = make_panorama(folder), page = folder / "a.html";
  expect_refusal({"view", folder / "missing.png", "-o", page}, 3, "missing.png");
  expect_refusal({"view", panorama, "--show-seams", folder / "missing.png", "-o", page}, 3, "missing.png");
  write_picture(folder / "square.png", Rgb(64, 64));
  expect_refusal({"view", panorama, "--show-seams", folder / "square.png", "-o", page}, 3, "square.png: 64x64");
  EXPECT_FALSE(std::filesystem::exists(page));
}

TEST(ViewCommand, APageThatCanNotBeWrittenLeavesNothing) {
  const ScratchFolder folder;
  const std::string panorama = make_panorama(folder);
  expect_refusal({"view", panorama, "-o", folder / "none/a.html"}, 4, "a.html: can't be created");
  std::filesystem::create_directory(folder / "b.html");
  expect_refusal({"view", panorama, "-o", folder / "b.html"}, 4, "b.html: is a folder");
  const Finished full = test::run({BISEAM_TOOL, "view", panorama, "-o", "-"}, "", "/dev/full");
  EXPECT_EQ(full.exit_code, 4);
  EXPECT_NE(full.err.find("can't be written"), full.err.npos) << full.err;
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"b.html", "panorama.png"}));
}

}  // namespace
}  // namespace biseam::tool
