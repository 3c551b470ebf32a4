#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>

extern "C" {
#include <libavutil/log.h>
}

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "base/standard_streams.hpp"
#include "commands/commands.hpp"

namespace {

using biseam::tool::ExitCode;

int fail(ExitCode code, const char* line) {
  biseam::tool::notice(line);
  return int(code);
}

ExitCode run(int argc, char** argv) {
  biseam::tool::CommandLine line(
      "biseam", "Stitches the two pictures of a back-to-back fisheye camera into an equirectangular panorama.",
      "biseam " BISEAM_VERSION,
      "Exit codes: 0 done, 1 compare found a difference, 2 command line, 3 an input can't be read,\n"
      "4 the result can't be written, 5 profile or settings can't work, 6 no memory or no thread left,\n"
      "130 interrupted.");
  biseam::tool::add_stitch_command(line);
  biseam::tool::add_analyse_command(line);
  biseam::tool::add_calibrate_command(line);
  biseam::tool::add_scene_command(line);
  biseam::tool::add_compare_command(line);
  biseam::tool::add_contact_sheet_command(line);
  biseam::tool::add_tag_command(line);
  biseam::tool::add_view_command(line);
  return line.run({argv + std::min(argc, 1), argv + argc});
}

}  // namespace

int main(int argc, char** argv) {
  biseam::tool::hold_standard_streams();
  // A reader that went away and a file that may not grow are write errors with a message.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  biseam::tool::leave_nothing_on_signals();
  av_log_set_level(AV_LOG_QUIET);
  try {
    const ExitCode exit_code = run(argc, argv);
    biseam::tool::flush_standard_output();
    return int(exit_code);
  } catch (const biseam::tool::Failure& failure) {
    return fail(failure.code(), failure.what());
  } catch (const std::bad_alloc&) {
    std::fputs("biseam: not enough memory\n", stderr);  // fail() would want some
    return int(ExitCode::system);
  } catch (const std::exception& error) {
    return fail(ExitCode::system, error.what());
  } catch (...) {
    return fail(ExitCode::system, "ended by a failure without a name");
  }
}
