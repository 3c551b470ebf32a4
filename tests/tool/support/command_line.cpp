#include "tool/support/command_line.hpp"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "base/failure.hpp"
#include "commands/commands.hpp"

namespace biseam::test {

Outcome run_tool(std::vector<std::string> words) {
  CLI::App app("test", "biseam");
  Outcome outcome;
  tool::add_stitch_command(app, outcome.exit_code);
  tool::add_scene_command(app);
  tool::add_compare_command(app, outcome.exit_code);
  tool::add_contact_sheet_command(app);
  tool::add_tag_command(app, outcome.exit_code);
  tool::add_view_command(app);
  std::reverse(words.begin(), words.end());
  testing::internal::CaptureStdout();
  try {
    app.parse(words);
  } catch (const tool::Failure& failure) {
    outcome.exit_code = int(failure.code());
    outcome.message = failure.what();
  } catch (const CLI::ParseError& error) {
    outcome.exit_code = int(tool::ExitCode::usage);
    outcome.message = error.what();
  }
  outcome.output = testing::internal::GetCapturedStdout();
  return outcome;
}

}  // namespace biseam::test
