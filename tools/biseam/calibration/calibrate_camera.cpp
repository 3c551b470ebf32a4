#include "calibration/calibrate_camera.hpp"

#include <cstdio>

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "base/replace_file.hpp"
#include "calibration/find_camera.hpp"
#include "calibration/report/page.hpp"
#include "setup/setup.hpp"

namespace biseam::tool {
namespace {

std::vector<RecordedPair> read_pairs(const CalibrationJob& job) {
  for (const std::string& path : job.files) {
    if (path == "-") throw Failure(ExitCode::usage, "calibrate: standard input can't be sought, files are wanted");
  }
  ClipFiles files{job.files, job.streams, std::nullopt};
  const std::unique_ptr<Container> first = open_first(files);
  if (first->is_picture()) return read_picture_pairs(job.files, job.layout);
  if (job.files.size() > 2) throw Failure(ExitCode::usage, "a clip with both circles is wanted, or one for each lens");
  settle_streams(*first, files);
  return read_clip_pairs(files, job.layout, job.frames);
}

// Both are whole on disk before either takes its name.
void write_outputs(const CalibrationJob& job, const calibrate::Finding& finding, std::span<const RecordedPair> pairs) {
  const std::string profile = profile_of(finding, pairs.size());
  if (job.report.empty()) return replace_file(job.output, text_bytes(profile));
  const std::string page = report_page(finding, pairs, job.files, profile);
  ReplacementFile output(job.output), report(job.report);
  report.write(text_bytes(page));
  output.write(text_bytes(profile));
  report.commit();
  output.commit();
}

}  // namespace

void calibrate_camera(const CalibrationJob& job) {
  const InterruptWatch watch;
  const std::vector<RecordedPair> pairs = read_pairs(job);
  if (pairs.empty()) throw Failure(ExitCode::input, job.files.front() + ": has no picture that can be decoded");
  calibrate::Options options = job.options;
  if (!job.start.empty()) options.start = read_camera(job.start).settings;
  try {
    const calibrate::Finding finding = calibrate_pairs(pairs, options);
    write_outputs(job, finding, pairs);
    if (job.output != "-") std::fputs(finding.summary.c_str(), stdout);
  } catch (const calibrate::Refusal& refusal) {
    throw Failure(ExitCode::input, job.files.front() + ": " + refusal.what());
  }
}

}  // namespace biseam::tool
