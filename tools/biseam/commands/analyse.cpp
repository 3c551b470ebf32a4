#include <memory>

#include "base/distinct_files.hpp"
#include "commands/commands.hpp"
#include "commands/source_options.hpp"
#include "stitch/analyse_clip.hpp"

namespace biseam::tool {
namespace {

void analyse(StitchOptions& options) {
  check_stitch_options(options);
  std::vector<NamedFile> inputs = {{"--camera", options.camera}};
  for (const std::string& file : options.inputs) inputs.push_back({"the input", file});
  check_distinct(inputs, {{"-o", options.output}, {"--save-camera", options.save_camera}});
  analyse_clip(clip_job(options));
}

}  // namespace

void add_analyse_command(CommandLine& line) {
  Command& command = line.add("analyse", "find light, near things and seams of a whole clip, for stitch --analysis");
  const auto options = std::make_shared<StitchOptions>();
  command.option("IN", &options->inputs, "clip with both circles, lens 0 left or on top, or one file for each lens")
      .shown_as("FILE [FILE]")
      .required()
      .count(1, 2);
  command.option("-o,--output", &options->output, "the analysis; - is standard output").type("FILE").required();
  add_source_options(command, *options);
  add_camera_options(command, *options);
  add_matching_options(command, *options, "Analysis");
  add_clip_options(command, options->video);
  command.does([options, &command] {
    options->given_camera = command.given_in(kCameraGroup);
    analyse(*options);
    return ExitCode::done;
  });
}

}  // namespace biseam::tool
