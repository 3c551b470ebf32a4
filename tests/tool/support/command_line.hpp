// Runs one command of the tool as from the command line.
#pragma once

#include <string>
#include <vector>

namespace biseam::test {

struct Outcome {
  int exit_code = 0;
  std::string output, message;
};

Outcome run_tool(const std::vector<std::string>& words);

}  // namespace biseam::test
