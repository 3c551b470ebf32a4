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

void add_analyse_command(CLI::App& app) {
  CLI::App* command = app.add_subcommand("analyse", "find light, near things and seams of a whole clip, for stitch --analysis");
  const auto options = std::make_shared<StitchOptions>();
  command->add_option("IN", options->inputs, "clip with both circles, lens 0 left or on top, or one file for each lens")
      ->option_text("FILE [FILE]")
      ->required()
      ->expected(1, 2);
  command->add_option("-o,--output", options->output, "the analysis; - is standard output")->type_name("FILE")->required();
  add_source_options(*command, *options);
  add_camera_options(*command, *options);
  add_matching_options(*command, *options, "Analysis");
  add_clip_options(*command, options->video);
  command->callback([options, command] {
    options->given_camera = given_in_group(*command, kCameraGroup);
    analyse(*options);
  });
}

}  // namespace biseam::tool
