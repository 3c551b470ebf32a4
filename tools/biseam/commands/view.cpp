#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <string>

#include "base/distinct_files.hpp"
#include "base/failure.hpp"
#include "base/replace_file.hpp"
#include "commands/commands.hpp"
#include "view/page.hpp"
#include "view/panorama_file.hpp"
#include "view/serve.hpp"

namespace biseam::tool {
namespace {

constexpr std::uint64_t kMostBytes = std::uint64_t(512) << 20;  // browsers open larger pages slowly or not at all

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

void check_bytes(const PageFiles& files) {
  const std::uint64_t bytes = files.panorama.bytes + (files.seams ? files.seams->bytes : 0);
  if (bytes <= kMostBytes) return;
  throw Failure(ExitCode::input, files.panorama.path + ": " + std::to_string(bytes >> 20) + " MiB are too many for one page (" +
                                     std::to_string(kMostBytes >> 20) + " MiB); --serve shows files of any size");
}

PanoramaFile inspect(const std::string& path) {
  PanoramaFile file = inspect_panorama(path);
  for (const std::string& line : file.notices) notice(line);
  return file;
}

void write(const std::string& path, const PageFiles& files) {
  check_bytes(files);
  ReplacementFile page(path);
  write_page(page_template(), files, [&](std::span<const std::uint8_t> bytes) { page.write(bytes); });
  page.commit();
}

void view(ViewOptions& options, bool serving) {
  check_options(options, serving);
  check_distinct({{"the input", options.panorama}, {"--show-seams", options.seams}}, {{"-o", options.output}});
  const std::string_view page = page_template();
  const int port = options.port.empty() ? 0 : parse_port(options.port);
  PageFiles files{inspect(options.panorama), nullptr};
  std::optional<PanoramaFile> seams;
  if (!options.seams.empty()) {
    seams = inspect_panorama(options.seams);
    check_seams(*seams, files.panorama);
    files.seams = &*seams;
  }
  serving ? serve(serving_page(page, files), files, port) : write(options.output, files);
}

}  // namespace

void add_view_command(CLI::App& app) {
  CLI::App* command = app.add_subcommand("view", "make a page on which to look around in a panorama, picture or video");
  const auto options = std::make_shared<ViewOptions>();
  command->add_option("PANORAMA", options->panorama, "JPEG, PNG, MP4 or WebM file")->type_name("FILE");
  command
      ->add_option("-o,--output", options->output, "the page, with all it needs in one file: .html, or - for standard output")
      ->type_name("FILE");
  CLI::Option* serve =
      command
          ->add_option("--serve", options->port,
                       "in place of writing the page, serve it to browsers on this machine until Ctrl-C; any free "
                       "port when none is given")
          ->type_name("[PORT]")
          ->expected(0, 1);
  command
      ->add_option("--show-seams", options->seams,
                   "picture of bands and seams that a switch lays over the panorama; over a video one with transparency")
      ->type_name("FILE");
  command->callback([options, serve] { view(*options, serve->count() > 0); });
}

}  // namespace biseam::tool
