#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "base/distinct_files.hpp"
#include "base/failure.hpp"
#include "commands/commands.hpp"
#include "picture/frame_over.hpp"
#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "sheet/contact_sheet.hpp"

namespace biseam::tool {
namespace {

struct SheetOptions {
  std::vector<std::string> pictures, captions;
  std::string output;
  std::vector<int> crop;  // x, y, width, height
  SheetLayout layout;
};

Rgb cut_out(const Rgb& picture, const std::vector<int>& crop, const std::string& name) {
  if (crop.empty()) return picture;
  const int x = crop[0], y = crop[1], width = crop[2], height = crop[3];
  if (x < 0 || y < 0 || width < 1 || height < 1 || width > picture.width - x || height > picture.height - y) {
    throw Failure(ExitCode::usage, "--crop: not within the " + std::to_string(picture.width) + "x" +
                                       std::to_string(picture.height) + " pixels of " + name);
  }
  Rgb out(width, height);
  for (std::size_t row = 0; row < std::size_t(height); ++row) {
    const std::size_t from = (std::size_t(y) + row) * std::size_t(picture.width) + std::size_t(x);
    std::copy_n(&picture.bytes[from * 3], std::size_t(width) * 3, &out.bytes[row * std::size_t(width) * 3]);
  }
  return out;
}

void make_sheet(const SheetOptions& options) {
  if (!options.captions.empty() && options.captions.size() != options.pictures.size()) {
    throw Failure(ExitCode::usage, "--caption: one for each picture is wanted, or none");
  }
  check_picture_name(options.output);
  std::vector<NamedFile> inputs;
  for (const std::string& name : options.pictures) inputs.push_back({"the input", name});
  check_distinct(inputs, {{"-o", options.output}});
  std::vector<Panel> panels;
  for (std::size_t n = 0; n < options.pictures.size(); ++n) {
    const std::string caption = options.captions.empty() ? "" : options.captions[n];
    const std::string& name = options.pictures[n];
    panels.push_back({cut_out(rgb_of(*read_picture(name)), options.crop, name), caption});
  }
  write_picture(options.output, contact_sheet(panels, options.layout));
}

}  // namespace

void add_contact_sheet_command(CommandLine& line) {
  Command& command = line.add("contact-sheet", "put pictures, scaled and captioned, on one page");
  const auto options = std::make_shared<SheetOptions>();
  command.option("IN", &options->pictures, "pictures, row by row").required();
  command.option("-o,--output", &options->output, "the page: .png, .jpg, .nv12, or -").required();
  command.option("--caption", &options->captions, "line under a picture: once for each, in their order").one_word();
  command.option("--crop", &options->crop, "X,Y,WIDTH,HEIGHT of the part shown of every picture, pixels")
      .separator(',')
      .count(4, 4)
      .one_word();
  command.option("--columns", &options->layout.columns, "pictures side by side (2)").whole_number(1, 16);
  command.option("--panel-width", &options->layout.panel_width, "pixels of a picture on the page (960)").whole_number(16, 8192);
  command.does([options] {
    make_sheet(*options);
    return ExitCode::done;
  });
}

}  // namespace biseam::tool
