#include "stitch/analyse_clip.hpp"

#include <cstdio>

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "base/memory.hpp"
#include "stitch/clip_analyser.hpp"
#include "stitch/clip_run.hpp"
#include "stitch/clip_source.hpp"
#include "stitch/followed.hpp"
#include "stitch/frames_in_memory.hpp"
#include "stitch/progress.hpp"
#include "stitch/summary.hpp"

namespace biseam::tool {
namespace {

std::string result_line(std::int64_t frames, double seconds, std::size_t guide_bytes) {
  char text[128];
  std::snprintf(text, sizeof text, "%lld %s in %.1f s, %.1f fps; %.1f kB a frame", static_cast<long long>(frames),
                frames == 1 ? "frame" : "frames", seconds, seconds > 0 ? double(frames) / seconds : 0,
                double(guide_bytes + 8) / 1000);
  return text;
}

}  // namespace

void analyse_clip(const ClipJob& job) {
  const InterruptWatch watch;
  AnalysisWriter writer(job.output);  // early, so that a wrong name costs no time
  ClipFiles files = files_of(job);
  std::unique_ptr<Container> first = open_first(files);
  settle_streams(*first, files);
  ClipSource source(open_clips(files, std::move(first)), job);
  const FramePair& pair = source.first_picture();
  const ClipReader& clip = source.clips().clip(0);
  const Colour colour = colour_of(*pair.picture[0], clip.stream());
  ClipAnalyser analyser(job, camera_of(job.source, files, source), pair, clip.container().name(), colour, clip.rate(),
                        clip_mark(source.clips()), writer);
  Progress progress(expected_frames(source.part(), job.part));
  std::int64_t frames = 0;
  const auto measure = [&analyser](const FramePair& read) {
    analyser.measure(read);
    StitchedFrame measured;
    measured.is_picture = read.picture[0] && read.is_wanted;
    return measured;
  };
  const auto count = [&](const StitchedFrame& measured) {
    if (measured.is_picture) progress.count(++frames);
  };
  run_clip(
      {[&source] { return source.next(); }, measure, count, frames_that_may_wait(analyser.frame_bytes(), available_memory())});
  if (interrupted()) throw Failure(ExitCode::interrupted, writer.name() + ": isn't written, interrupted");
  analyser.finish();
  tell_damage(source.clips());
  notice(result_line(frames, progress.seconds(), analyser.guide_bytes()));
}

}  // namespace biseam::tool
