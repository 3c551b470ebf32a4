#include "stitch/stitch_clip.hpp"

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "base/memory.hpp"
#include "base/replace_file.hpp"
#include "clip/write/clip_writer.hpp"
#include "clip/write/raw_writer.hpp"
#include "stitch/clip_run.hpp"
#include "stitch/clip_source.hpp"
#include "stitch/followed.hpp"
#include "stitch/frames_in_memory.hpp"
#include "stitch/progress.hpp"
#include "stitch/summary.hpp"

namespace biseam::tool {
namespace {

ClipFacts facts_of(const ClipReader& clip, const Colour& colour, const ClipStitcher& stitcher) {
  return {stitcher.size(), clip.stream().time_base, clip.rate(), colour, stitcher.format()};
}

std::unique_ptr<FrameSink> open_sink(const ClipJob& job, const ClipFacts& facts, const PartReader& part) {
  if (clip_format(job.output)) {
    const ClipWriterSettings settings{job.output, job.encoder, job.drop_streams, job.metadata_360};
    return std::make_unique<ClipWriter>(settings, facts, part);
  }
  const RawWriterSettings settings{job.output, job.raw_kind, job.drop_streams};
  return std::make_unique<RawWriter>(settings, facts, part.pairs());
}

// Where a clip's panoramas go, and what is told of them.
class PanoramaWriter {
 public:
  PanoramaWriter(FrameSink& sink, Progress& progress, Summary& summary) : sink_(sink), progress_(progress), summary_(summary) {}

  void write(StitchedFrame frame) {
    for (CopiedPacket& copied : frame.pair.packets) sink_.copy(copied.clip, *copied.packet);
    if (!frame.is_picture) return;
    if (frame.panorama) panorama_ = std::move(frame.panorama);
    sink_.write(*panorama_, frame.pair.time, frame.pair.duration);
    summary_.count_frame(frame.seams);
    progress_.count(summary_.frames());
  }

 private:
  FrameSink& sink_;
  Progress& progress_;
  Summary& summary_;
  Libav<AVFrame> panorama_;  // the last one
};

void report(const RunReport& run, ReplacementFile* json_file) {
  tell_damage(run.clips);
  notice(summary_line(run.summary, run.seconds));
  if (!json_file) return;
  const std::string json = summary_json(run);
  json_file->write(text_bytes(json));
  json_file->commit();
}

}  // namespace

ExitCode stitch_clip(const ClipJob& given, std::unique_ptr<Container> first) {
  const InterruptWatch watch;
  std::optional<AnalysisReader> analysis;
  if (!given.analysis.empty()) analysis.emplace(given.analysis);
  const ClipJob job = analysis ? settled_by(*analysis, given) : given;
  ClipFiles files = files_of(job);
  if (!first) first = open_first(files);
  settle_streams(*first, files);
  ClipSource source(open_clips(files, std::move(first)), job);
  if (analysis) check_clip(*analysis, source.clips());
  const FramePair& pair = source.first_picture();
  const ClipReader& clip = source.clips().clip(0);
  const Colour colour = colour_of(*pair.picture[0], clip.stream());
  ClipStitcher stitcher(job, camera_of(job.source, files, source), pair, clip.container().name(), colour, clip.rate(),
                        analysis ? &*analysis : nullptr);
  const std::unique_ptr<FrameSink> sink = open_sink(job, facts_of(clip, colour, stitcher), source.part());
  const std::string output_kind = sink->settings_text();
  std::unique_ptr<ReplacementFile> json_file;  // early, so that a wrong name costs no time
  if (!job.json.empty()) json_file = std::make_unique<ReplacementFile>(job.json);
  Summary summary;
  double seconds = 0;
  {
    Progress progress(expected_frames(source.part(), job.part));
    PanoramaWriter writer(*sink, progress, summary);
    run_clip({[&source] { return source.next(); }, [&stitcher](FramePair read) { return stitcher.stitch(std::move(read)); },
              [&writer](StitchedFrame frame) { writer.write(std::move(frame)); },
              frames_that_may_wait(stitcher.frame_bytes(), available_memory())});
    sink->finish();
    seconds = progress.seconds();
  }
  report({summary, seconds, source.clips(), job, output_kind, stitcher.size(), stitcher.searches(), stitcher.matches_near(),
          interrupted()},
         json_file.get());
  return interrupted() ? ExitCode::interrupted : ExitCode::done;
}

}  // namespace biseam::tool
