#include <gtest/gtest.h>

#include "tool/view/run_view.hpp"

namespace biseam::tool {
namespace {

using namespace test;

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

}  // namespace
}  // namespace biseam::tool
