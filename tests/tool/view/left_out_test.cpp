#include <gtest/gtest.h>

#include "tool/view/run_view.hpp"

namespace biseam::tool {
namespace {

TEST(LeftOut, AToolWithoutItsViewerSaysSo) {
  const test::ScratchFolder folder;
  const std::string panorama = test::make_panorama(folder);
  const std::string line = "view: this biseam was built without its viewer; make build adds it, with the packages it needs";
  test::expect_refusal({"view", panorama, "-o", folder / "a.html"}, 2, line);
  test::expect_refusal({"view", panorama, "--serve"}, 2, line);
  EXPECT_EQ(folder.names(), std::vector<std::string>{"panorama.png"});
}

}  // namespace
}  // namespace biseam::tool
