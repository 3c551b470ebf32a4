#include "stitch/stitch_clip.hpp"

#include <algorithm>

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "base/memory.hpp"
#include "base/replace_file.hpp"
#include "calibration/find_camera.hpp"
#include "clip/read/open_clips.hpp"
#include "clip/write/clip_writer.hpp"
#include "clip/write/raw_writer.hpp"
#include "stitch/clip_run.hpp"
#include "stitch/clip_source.hpp"
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

// How many pictures there will be, as far as the clip says.
std::optional<std::int64_t> expected_frames(const PartReader& part, const PartRange& range) {
  const AVStream& stream = part.pairs().clip(0).stream();
  const AVFormatContext& format = *part.pairs().clip(0).container().get();
  if (range.is_whole() && stream.nb_frames > 0) return stream.nb_frames;
  if (stream.avg_frame_rate.num <= 0 || (format.duration <= 0 && !range.to)) return std::nullopt;
  std::int64_t end = std::max<std::int64_t>(0, format.start_time) + format.duration;
  if (range.to) end = std::min(format.duration > 0 ? end : *part.end(), *part.end());
  const std::int64_t frames = av_rescale_q(end - part.begin(), kMicroseconds, av_inv_q(stream.avg_frame_rate));
  return std::min(frames, range.frames.value_or(frames));
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

ClipFiles files_of(const ClipJob& job) {
  const StitchSource& source = job.source;
  ClipFiles files{source.files, source.streams, std::nullopt, job.offset, job.strict};
  if (source.raw_size) files.raw = RawVideo{*source.raw_size, job.raw_rate};
  return files;
}

bool are_seekable(const PairReader& clips) {
  for (int k = 0; k < clips.clips(); ++k) {
    if (!clips.clip(k).container().is_seekable()) return false;
  }
  return true;
}

// Looked for all over the clips, whatever part of them is wanted; of a pipe only the first picture of the part can be had.
KnownCamera camera_of(const StitchSource& job, const ClipFiles& files, const ClipSource& source) {
  if (!job.profile.empty()) return read_camera(job.profile);
  if (!job.finds_camera) return {};
  const std::string& name = source.clips().clip(0).container().name();
  std::vector<RecordedPair> pairs;
  if (are_seekable(source.clips())) pairs = read_clip_pairs(files, job.layout, kUsualPairs);
  const FramePair& first = source.first_picture();
  if (pairs.empty()) pairs.emplace_back(*first.picture[0], first.picture[1].get(), job.layout, name);
  return {find_camera(pairs, name, job.save_camera), ""};
}

}  // namespace

int stitch_clip(const ClipJob& job, std::unique_ptr<Container> first) {
  const InterruptWatch watch;
  ClipFiles files = files_of(job);
  if (!first) first = open_first(files);
  settle_streams(*first, files);
  ClipSource source(open_clips(files, std::move(first)), job);
  const FramePair& pair = source.first_picture();
  const ClipReader& clip = source.clips().clip(0);
  const Colour colour = colour_of(*pair.picture[0], clip.stream());
  ClipStitcher stitcher(job, camera_of(job.source, files, source), pair, clip.container().name(), colour, clip.rate());
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
  return int(interrupted() ? ExitCode::interrupted : ExitCode::done);
}

}  // namespace biseam::tool
