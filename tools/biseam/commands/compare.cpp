#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/failure.hpp"
#include "commands/commands.hpp"
#include "compare/metrics.hpp"
#include "picture/read_picture.hpp"

namespace biseam::tool {
namespace {

struct CompareOptions {
  std::string first, second, size;
  double half_width = 10;  // degrees
  std::optional<double> least_psnr;
  bool json = false;
};

struct Row {
  const char *title, *key;
  Quality quality;
};

std::string size_text(const Nv12& picture) { return std::to_string(picture.width) + "x" + std::to_string(picture.height); }

std::vector<Row> measure_rows(const CompareOptions& options) {
  std::optional<Size> raw;
  if (!options.size.empty()) raw = parse_size(options.size);
  const Nv12 a = read_picture(options.first, raw), b = read_picture(options.second, raw);
  if (a.width != b.width || a.height != b.height) {
    throw Failure(ExitCode::input,
                  options.second + ": " + size_text(b) + " pixels, but " + options.first + " has " + size_text(a));
  }
  if (a.width < kSsimWindow || a.height < kSsimWindow) {
    throw Failure(ExitCode::input, options.first + ": " + size_text(a) + " pixels are too few, 11x11 is the least");
  }
  const LumaPair pair{{a.width, a.height}, a.luma, b.luma};
  const Columns seam0 = seam_columns(a.width, 0, options.half_width), seam1 = seam_columns(a.width, 1, options.half_width);
  return {{"whole picture", "whole", measure(pair, all_columns(a.width))},
          {"both seams", "seams", measure(pair, either_column(seam0, seam1))},
          {"seam at W/4", "seam0", measure(pair, seam0)},
          {"seam at 3W/4", "seam1", measure(pair, seam1)}};
}

void print_table(const std::vector<Row>& rows, double half_width) {
  std::printf("luma (BT.601)    PSNR dB  by area dB     SSIM\n");
  for (const Row& row : rows) {
    std::printf("%-14s  %8.2f  %10.2f  %7.4f\n", row.title, row.quality.psnr, row.quality.weighted_psnr, row.quality.ssim);
  }
  std::printf("by area: rows weighted by the cosine of their latitude; seams: within %g degrees\n", half_width);
}

// JSON knows no infinity: null.
std::string number(double value) {
  if (!std::isfinite(value)) return "null";
  char text[32];
  std::snprintf(text, sizeof text, "%.6f", value);
  return text;
}

void print_json(const std::vector<Row>& rows, double half_width) {
  std::printf("{\"channel\": \"luma\", \"seam_half_width\": %s", number(half_width).c_str());
  for (const Row& row : rows) {
    const Quality& q = row.quality;
    std::printf(", \"%s\": {\"psnr\": %s, \"weighted_psnr\": %s, \"ssim\": %s}", row.key, number(q.psnr).c_str(),
                number(q.weighted_psnr).c_str(), number(q.ssim).c_str());
  }
  std::printf("}\n");
}

}  // namespace

void add_compare_command(CLI::App& app, int& exit_code) {
  CLI::App* command = app.add_subcommand("compare", "PSNR and SSIM of two panoramas, whole and around the seams, of luma only");
  const auto options = std::make_shared<CompareOptions>();
  command->add_option("A", options->first, "picture; - is standard input")->required();
  command->add_option("B", options->second, "picture of the same size")->required();
  command->add_option("--size", options->size, "WIDTHxHEIGHT of raw NV12 input");
  command->add_option("--seam-degrees", options->half_width, "what counts as a seam: so many degrees on both sides (10)")
      ->check(CLI::Range(0.5, 90.0));
  command->add_option("--least-psnr", options->least_psnr, "exit with 1 when the whole picture's PSNR is below this");
  command->add_flag("--json", options->json, "one JSON object in place of the table; null stands for infinite");
  command->callback([options, &exit_code] {
    if (options->first == "-" && options->second == "-") {
      throw Failure(ExitCode::usage, "only one picture can come from standard input");
    }
    const std::vector<Row> rows = measure_rows(*options);
    options->json ? print_json(rows, options->half_width) : print_table(rows, options->half_width);
    if (options->least_psnr && rows.front().quality.psnr < *options->least_psnr) exit_code = int(ExitCode::different);
  });
}

}  // namespace biseam::tool
