#include "stitch/stitch_clip.hpp"

#include <algorithm>

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "base/memory.hpp"
#include "base/replace_file.hpp"
#include "camera/setup.hpp"
#include "clip/write/clip_writer.hpp"
#include "clip/write/raw_writer.hpp"
#include "stitch/clip_source.hpp"
#include "stitch/job_memory.hpp"
#include "stitch/progress.hpp"
#include "stitch/stitch_pool.hpp"
#include "stitch/summary.hpp"

namespace biseam::tool {
namespace {

Setup clip_setup(const StitchSource& source, const FramePair& pair, const PairLayout& layout) {
  Nv12 memory[2];
  const auto views = lens_views(pair, layout, memory);
  Setup setup = make_setup(source.profile, source.settings,
                           {{views.first.width, views.first.height}, {views.second.width, views.second.height}});
  adopt_strides(views, setup);
  return setup;
}

ClipFacts facts_of(const ClipReader& clip, const FramePair& pair, const StitchConfig& config) {
  const AVStream& stream = clip.stream();
  return {{config.out_w[0], config.out_h[0]}, stream.time_base, clip.rate(), colour_of(*pair.picture[0], stream)};
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

void stitch_all(StitchPool& pool, FrameSink& sink, Progress& progress, Summary& summary) {
  Libav<AVFrame> panorama;
  while (std::optional<StitchedFrame> frame = pool.next()) {
    for (CopiedPacket& copied : frame->pair.packets) sink.copy(copied.clip, *copied.packet);
    if (!frame->is_picture) continue;
    if (frame->panorama) panorama = std::move(frame->panorama);
    sink.write(*panorama, frame->pair.time, frame->pair.duration);
    summary.count_frame(frame->seams);
    progress.count(summary.frames());
  }
}

void report(const RunReport& run, ReplacementFile* json_file) {
  tell_damage(run.clips);
  notice(summary_line(run.summary, run.seconds));
  if (!json_file) return;
  const std::string json = summary_json(run);
  json_file->write({reinterpret_cast<const std::uint8_t*>(json.data()), json.size()});
  json_file->commit();
}

// With as many frames at once as there is memory for.
ClipJob within_memory(ClipJob job, const StitchConfig& config) {
  const std::uint64_t bytes = available_memory();
  const int fitting = jobs_that_fit(job.jobs, config, bytes);
  if (fitting < job.jobs) {
    notice("--jobs: the " + std::to_string(bytes >> 20) + " MiB of memory there are have room for " + std::to_string(fitting) +
           " at once, not " + std::to_string(job.jobs));
  }
  job.jobs = fitting;
  return job;
}

}  // namespace

int stitch_clip(const ClipJob& job, std::unique_ptr<Container> first) {
  const InterruptWatch watch;
  ClipSource source(open_clips(job, std::move(first)), job);
  const FramePair& pair = source.first_picture();
  const PairLayout layout{job.source.layout, source.clips().clip(0).container().name()};
  const Setup setup = clip_setup(job.source, pair, layout);
  const StitchConfig& config = setup.plan.config;
  const std::unique_ptr<FrameSink> sink = open_sink(job, facts_of(source.clips().clip(0), pair, config), source.part());
  const std::string output_kind = sink->settings_text();
  std::unique_ptr<ReplacementFile> json_file;  // early, so that a wrong name costs no time
  if (!job.json.empty()) json_file = std::make_unique<ReplacementFile>(job.json);
  const ClipJob bounded = within_memory(job, config);
  Summary summary;
  double seconds = 0;
  {
    StitchPool pool(setup, layout, bounded.jobs, job.seam_hold, [&source] { return source.next(); });
    Progress progress(expected_frames(source.part(), job.part));
    stitch_all(pool, *sink, progress, summary);
    sink->finish();
    seconds = progress.seconds();
  }
  report({summary, seconds, source.clips(), bounded, output_kind, config, interrupted()}, json_file.get());
  return int(interrupted() ? ExitCode::interrupted : ExitCode::done);
}

}  // namespace biseam::tool
