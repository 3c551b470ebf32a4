#include "tool/support/command_line.hpp"

#include <gtest/gtest.h>

#include "base/failure.hpp"
#include "commands/commands.hpp"

namespace biseam::test {

Outcome run_tool(const std::vector<std::string>& words) {
  tool::CommandLine line("biseam", "test", "", "");
  Outcome outcome;
  tool::add_stitch_command(line);
  tool::add_scene_command(line);
  tool::add_compare_command(line);
  tool::add_contact_sheet_command(line);
  tool::add_tag_command(line);
  tool::add_view_command(line);
  testing::internal::CaptureStdout();
  try {
    outcome.exit_code = int(line.run(words));
  } catch (const tool::Failure& failure) {
    outcome.exit_code = int(failure.code());
    outcome.message = failure.what();
  }
  outcome.output = testing::internal::GetCapturedStdout();
  return outcome;
}

}  // namespace biseam::test
