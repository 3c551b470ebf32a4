#include <memory>

#include "base/distinct_files.hpp"
#include "base/failure.hpp"
#include "calibration/calibrate_camera.hpp"
#include "commands/commands.hpp"
#include "commands/layout_options.hpp"

namespace biseam::tool {
namespace {

struct CalibrateOptions {
  CalibrationJob job;
  std::string streams;
  std::vector<std::string> fixed;
};

void hold(const std::vector<std::string>& names, calibrate::Options& options) {
  const struct {
    const char* name;
    bool& holds;
  } kinds[] = {{"p", options.hold_scale}, {"k", options.hold_k}, {"centre", options.hold_centre}, {"turn", options.hold_turn}};
  for (const std::string& name : names) {
    bool known = false;
    for (const auto& kind : kinds) {
      if (name != kind.name) continue;
      kind.holds = known = true;
    }
    if (!known) throw Failure(ExitCode::usage, "--fix: '" + name + "': p, k, centre and turn can be held");
  }
}

void calibrate(CalibrateOptions& options) {
  CalibrationJob& job = options.job;
  hold(options.fixed, job.options);
  if (!options.fixed.empty() && job.start.empty()) throw Failure(ExitCode::usage, "--fix: needs the values of --start");
  if (job.options.in_lens && !options.fixed.empty()) throw Failure(ExitCode::usage, "--in-lens: finds what --fix holds");
  if (job.report == "-") throw Failure(ExitCode::usage, "--report: needs a file, standard output is the profile's");
  std::vector<NamedFile> inputs = {{"--start", job.start}};
  for (const std::string& file : job.files) inputs.push_back({"the input", file});
  check_distinct(inputs, {{"-o", job.output}, {"--report", job.report}});
  if (!job.report.empty() && !job.report.ends_with(".html") && !job.report.ends_with(".htm")) {
    throw Failure(ExitCode::usage, "--report " + job.report + ": the name must end in .html or .htm");
  }
  job.streams = choose_streams(options.streams, job.layout, job.files.size(), false);
  calibrate_camera(job);
}

}  // namespace

void add_calibrate_command(CommandLine& line) {
  Command& command = line.add("calibrate", "find out what a camera is like from pictures or a clip that it took");
  const auto options = std::make_shared<CalibrateOptions>();
  CalibrationJob& job = options->job;
  const auto add = [&](const char* name, Target value, const char* type, const char* text) {
    return command.option(name, value, text).type(type);
  };
  add("IN", &job.files, "FILE",
      "pictures with both circles, or one for each lens, lens 0's before lens 1's, any number of pairs; or a clip with both "
      "circles, or one for each lens")
      .required();
  add("-o,--output", &job.output, "FILE", "the profile (TOML), for stitch --camera; - is standard output").required();
  add("--report", &job.report, "FILE", "a page (HTML) that shows what was found and how well: seams, matches, numbers");
  add("--from-frames", &job.frames, "N", "pictures of a clip that are looked at, spread over it (20)").whole_number(1, 1000);
  add_layout_options(command, job.layout, options->streams);
  command.flag("--in-lens", &job.options.in_lens,
               "refuse a camera that doesn't turn enough to tell scale and distortion apart");
  add("--start", &job.start, "FILE", "begin with a profile: its values are a guess, its mounts are taken over");
  add("--fix", &options->fixed, "p,k,centre,turn", "which values of that profile not to change").separator(',');
  command.does([options] {
    calibrate(*options);
    return ExitCode::done;
  });
}

}  // namespace biseam::tool
