#include <charconv>
#include <memory>
#include <string>

#include "base/failure.hpp"
#include "commands/commands.hpp"
#include "view/show_panorama.hpp"

namespace biseam::tool {
namespace {

struct ViewOptions {
  std::string panorama, output, seams, port;
};

bool is_page_name(const std::string& path) { return path == "-" || path.ends_with(".html") || path.ends_with(".htm"); }

int parse_port(const std::string& text) {
  int port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc() || end != text.data() + text.size() || port < 0 || port > 65535) {
    throw Failure(ExitCode::usage, "--serve: '" + text + "' is no port, 0 to 65535");
  }
  return port;
}

void check_options(ViewOptions& options, bool serving) {
  // "--serve FILE": the file is the panorama, not the port.
  if (serving && options.panorama.empty() && options.port.find_first_not_of("0123456789") != std::string::npos) {
    options.panorama.swap(options.port);
  }
  if (options.panorama.empty()) throw Failure(ExitCode::usage, "view: PANORAMA is required");
  if (options.panorama == "-" || options.seams == "-") {
    throw Failure(ExitCode::usage, "view: standard input can't be shown, a file is wanted");
  }
  if (serving == !options.output.empty()) {
    throw Failure(ExitCode::usage, "view: either --output FILE or --serve is wanted");
  }
  if (!serving && !is_page_name(options.output)) {
    throw Failure(ExitCode::usage, options.output + ": the name must end in .html or .htm, or be -");
  }
}

void view(ViewOptions& options, bool serving) {
  check_options(options, serving);
  ViewJob job{options.panorama, options.seams, options.output, {}};
  if (serving) job.port = options.port.empty() ? 0 : parse_port(options.port);
  show_panorama(job);
}

}  // namespace

void add_view_command(CommandLine& line) {
  Command& command = line.add("view", "make a page on which to look around in a panorama, picture or video");
  const auto options = std::make_shared<ViewOptions>();
  const auto add = [&](const char* name, Target value, const char* type, const char* text) {
    return command.option(name, value, text).type(type);
  };
  add("PANORAMA", &options->panorama, "FILE", "JPEG, PNG, MP4 or WebM file");
  add("-o,--output", &options->output, "FILE", "the page, with all it needs in one file: .html, or - for standard output");
  const Option serve = add("--serve", &options->port, "[PORT]",
                           "in place of writing the page, serve it to browsers on this machine until Ctrl-C; any free port "
                           "when none is given")
                           .count(0, 1);
  add("--show-seams", &options->seams, "FILE",
      "picture of bands and seams that a switch lays over the panorama; over a video one with transparency");
  command.does([options, serve] {
    view(*options, serve.is_given());
    return ExitCode::done;
  });
}

}  // namespace biseam::tool
