#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tool/support/places.hpp"
#include "tool/support/process.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::test {

inline Finished run_tag(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {kTool, "tag"});
  return run(std::move(arguments));
}

inline void expect_done(const Finished& finished, const std::string& notice = "") {
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_EQ(finished.out, "");
  EXPECT_EQ(finished.err, notice.empty() ? "" : "biseam: " + notice + "\n");
}

inline void expect_refused(const Finished& finished, int exit_code, const std::string& name, const std::string& what) {
  EXPECT_EQ(finished.exit_code, exit_code) << finished.err;
  EXPECT_EQ(finished.out, "");
  EXPECT_EQ(finished.err.rfind("biseam: ", 0), 0u) << finished.err;
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
  EXPECT_NE(finished.err.find(name), std::string::npos) << finished.err;
  EXPECT_NE(finished.err.find(what), std::string::npos) << finished.err;
}

// Files in a folder of their own; the parameter is their extension.
class FilesOfAKind : public testing::TestWithParam<const char*> {
 protected:
  std::string name(const char* stem) const { return folder_ / (std::string(stem) + "." + GetParam()); }

  void expect_untouched(const std::vector<std::string>& arguments, int exit_code, const std::string& named,
                        const std::string& what) {
    const std::string before = read_bytes(arguments.front());
    const auto names = folder_.names();
    expect_refused(run_tag(arguments), exit_code, named, what);
    EXPECT_EQ(read_bytes(arguments.front()), before);
    EXPECT_EQ(folder_.names(), names);
  }

  ScratchFolder folder_;
};

}  // namespace biseam::test
