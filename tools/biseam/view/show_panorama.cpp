#include "view/show_panorama.hpp"

#include "base/distinct_files.hpp"
#include "base/failure.hpp"
#include "base/replace_file.hpp"
#include "view/page.hpp"
#include "view/panorama_file.hpp"
#include "view/serve.hpp"

namespace biseam::tool {
namespace {

constexpr std::uint64_t kMostBytes = std::uint64_t(512) << 20;  // browsers open larger pages slowly or not at all

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

}  // namespace

void show_panorama(const ViewJob& job) {
  check_distinct({{"the input", job.panorama}, {"--show-seams", job.seams}}, {{"-o", job.page}});
  const std::string_view page = page_template();
  PageFiles files{inspect(job.panorama), nullptr};
  std::optional<PanoramaFile> seams;
  if (!job.seams.empty()) {
    seams = inspect_panorama(job.seams);
    check_seams(*seams, files.panorama);
    files.seams = &*seams;
  }
  job.port ? serve(serving_page(page, files), files, *job.port) : write(job.page, files);
}

}  // namespace biseam::tool
