#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/distinct_files.hpp"
#include "base/failure.hpp"
#include "commands/commands.hpp"
#include "compare/luma.hpp"
#include "compare/metrics.hpp"
#include "picture/read_picture.hpp"
#include "text/json.hpp"

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

std::vector<Row> measure_rows(const CompareOptions& options) {
  std::optional<Size> raw;
  if (!options.size.empty()) raw = parse_size(options.size);
  const Luma a = luma_of(*read_picture(options.first, raw)), b = luma_of(*read_picture(options.second, raw));
  const Size size = a.size, other = b.size;
  if (size != other) {
    throw Failure(ExitCode::input,
                  options.second + ": " + size_text(other) + " pixels, but " + options.first + " has " + size_text(size));
  }
  if (size.width < kSsimWindow || size.height < kSsimWindow) {
    throw Failure(ExitCode::input, options.first + ": " + size_text(size) + " pixels are too few, 11x11 is the least");
  }
  const LumaPair pair{size, a.codes, b.codes};
  const Columns seam0 = seam_columns(size.width, 0, options.half_width),
                seam1 = seam_columns(size.width, 1, options.half_width);
  return {{"whole picture", "whole", measure(pair, all_columns(size.width))},
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

JsonObject quality_json(const Quality& quality) {
  JsonObject json;
  json.add_fixed("psnr", quality.psnr);
  json.add_fixed("weighted_psnr", quality.weighted_psnr);
  json.add_fixed("ssim", quality.ssim);
  return json;
}

void print_json(const std::vector<Row>& rows, double half_width) {
  JsonObject json;
  json.add("channel", "luma");
  json.add_fixed("seam_half_width", half_width);
  for (const Row& row : rows) json.add(row.key, quality_json(row.quality));
  std::printf("%s\n", json.text().c_str());
}

}  // namespace

void add_compare_command(CommandLine& line) {
  Command& command = line.add("compare", "PSNR and SSIM of two panoramas, whole and around the seams, of luma only");
  const auto options = std::make_shared<CompareOptions>();
  command.option("A", &options->first, "picture; - is standard input").required();
  command.option("B", &options->second, "picture of the same size").required();
  command.option("--size", &options->size, "WIDTHxHEIGHT of raw NV12 input");
  command.option("--seam-degrees", &options->half_width, "what counts as a seam: so many degrees on both sides (10)")
      .number(0.5, 90);
  command.option("--least-psnr", &options->least_psnr, "exit with 1 when the whole picture's PSNR is below this");
  command.flag("--json", &options->json, "one JSON object in place of the table; null stands for infinite");
  command.does([options] {
    if (options->first == "-" && options->second == "-") {
      throw Failure(ExitCode::usage, "only one picture can come from standard input");
    }
    check_distinct({{"the input", options->first}, {"the input", options->second}}, {{"the output", "-"}});
    const std::vector<Row> rows = measure_rows(*options);
    options->json ? print_json(rows, options->half_width) : print_table(rows, options->half_width);
    const bool differ = options->least_psnr && rows.front().quality.psnr < *options->least_psnr;
    return differ ? ExitCode::different : ExitCode::done;
  });
}

}  // namespace biseam::tool
