#include "stitch/stitch_video.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <thread>

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "base/replace_file.hpp"
#include "camera/setup.hpp"
#include "clip/read/part_reader.hpp"
#include "clip/write/clip_writer.hpp"
#include "clip/write/raw_writer.hpp"
#include "picture/read_picture.hpp"
#include "picture/to_nv12.hpp"
#include "stitch/progress.hpp"
#include "stitch/stitch_pool.hpp"
#include "stitch/summary.hpp"
#include "text/time_text.hpp"

namespace biseam::tool {
namespace {

std::optional<RawVideo> raw_video(const StitchOptions& options) {
  if (options.size.empty()) return std::nullopt;
  if (options.video.rate.empty()) throw Failure(ExitCode::usage, "--rate: raw frames of a clip need their rate");
  return RawVideo{parse_size(options.size), parse_rate("--rate", options.video.rate)};
}

std::unique_ptr<ClipReader> open_clip(const std::string& path, const StitchOptions& options,
                                      std::unique_ptr<Container> opened = nullptr) {
  const std::optional<RawVideo> raw = raw_video(options);
  if (!raw) refuse_raw_name(path);
  if (!opened) opened = std::make_unique<Container>(path, raw);
  return std::make_unique<ClipReader>(std::move(opened), options.video.strict);
}

std::int64_t offset_of(const StitchOptions& options) {
  return options.video.offset.empty() ? 0 : parse_time("--offset", options.video.offset);
}

PairReader open_clips(const StitchOptions& options, std::unique_ptr<Container> opened) {
  std::unique_ptr<ClipReader> first = open_clip(options.inputs.front(), options, std::move(opened)), second;
  if (options.inputs.size() == 2) second = open_clip(options.inputs.back(), options);
  return PairReader(std::move(first), std::move(second), offset_of(options));
}

PartRange range_of(const VideoOptions& video) {
  PartRange range;
  if (!video.from.empty()) range.from = parse_time("--from", video.from);
  if (!video.to.empty()) range.to = parse_time("--to", video.to);
  range.frames = video.frames;
  if (range.from && *range.from < 0) throw Failure(ExitCode::usage, "--from: must not be before the beginning");
  if (range.to && *range.to <= range.from.value_or(0)) throw Failure(ExitCode::usage, "--to: must be later than --from");
  return range;
}

// The pairs, the first one looked at before the others are read.
class Pairs {
 public:
  Pairs(PairReader clips, const PartRange& range, int group) : reader_(std::move(clips), range, group) {
    while (!first_picture()) {
      std::optional<FramePair> pair = reader_.next();
      if (!pair) refuse_emptiness(range);
      read_.push_back(std::move(*pair));
    }
  }

  const FramePair* first_picture() const { return read_.empty() || !read_.back().picture[0] ? nullptr : &read_.back(); }
  const PartReader& part() const { return reader_; }
  const PairReader& clips() const { return reader_.pairs(); }

  std::optional<FramePair> next() {
    if (read_.empty()) return reader_.next();
    FramePair pair = std::move(read_.front());
    read_.pop_front();
    return pair;
  }

 private:
  [[noreturn]] void refuse_emptiness(const PartRange& range) const {
    if (interrupted()) throw Failure(ExitCode::interrupted, "interrupted before the first picture");
    if (clips().clips() == 2 && clips().report().unpaired > 0) {
      clips().clip(0).container().refuse("no picture has a partner in " + clips().clip(1).container().name() +
                                         " at the same time");
    }
    clips().clip(0).container().refuse(range.is_whole() ? "has no picture that can be decoded"
                                                        : "has no picture in the part that is wanted");
  }

  PartReader reader_;
  std::deque<FramePair> read_;
};

void check_formats(const PairReader& clips, const FramePair& pair) {
  for (int k = 0; k < clips.clips(); ++k) {
    const auto format = AVPixelFormat(pair.picture[k]->format);
    const Container& container = clips.clip(k).container();
    const char* name = av_get_pix_fmt_name(format);
    if (!plan_format(format).usable) {
      container.refuse(std::string("pictures of the format ") + (name ? name : "?") + " can't be used");
    }
    const std::string loss = loss_text(format);
    if (!loss.empty()) notice(container.name() + ": " + loss);
  }
}

// Samples go through as they are, so both lenses' must mean the same.
void check_colours(const PairReader& clips, const FramePair& pair) {
  if (clips.clips() == 1) return;
  const Colour a = colour_of(*pair.picture[0], clips.clip(0).stream()), b = colour_of(*pair.picture[1], clips.clip(1).stream());
  const auto differ = [](int first, int second, int unknown) {
    return first != second && first != unknown && second != unknown;
  };
  const bool same = !differ(a.range, b.range, AVCOL_RANGE_UNSPECIFIED) && !differ(a.matrix, b.matrix, AVCOL_SPC_UNSPECIFIED) &&
                    !differ(a.primaries, b.primaries, AVCOL_PRI_UNSPECIFIED) &&
                    !differ(a.transfer, b.transfer, AVCOL_TRC_UNSPECIFIED);
  if (same) return;
  clips.clip(1).container().refuse("its colours are tagged otherwise than those of " + clips.clip(0).container().name());
}

Setup video_setup(const StitchOptions& options, const FramePair& pair, const PairLayout& layout) {
  Nv12 memory[2];
  const auto views = lens_views(pair, layout, memory);
  Setup setup = make_setup(options.camera, options.settings,
                           {{views.first.width, views.first.height}, {views.second.width, views.second.height}});
  adopt_strides(views, setup);
  return setup;
}

ClipFacts facts_of(const PairReader& clips, const FramePair& pair, const Setup& setup) {
  const AVStream& stream = clips.clip(0).stream();
  const StitchConfig& config = setup.plan.config;
  AVRational rate = stream.avg_frame_rate;
  if (rate.num <= 0 || rate.den <= 0) rate = stream.r_frame_rate;
  return {{config.out_w[0], config.out_h[0]}, stream.time_base, rate, colour_of(*pair.picture[0], stream)};
}

std::unique_ptr<FrameSink> open_sink(const StitchOptions& options, const ClipFacts& facts, const PartReader& part) {
  const PairReader& clips = part.pairs();
  const VideoOptions& video = options.video;
  if (clip_format(options.output)) {
    const EncoderSettings encoder{video.encoder, video.crf, video.preset, video.bitrate};
    const ClipWriterSettings settings{options.output, encoder, video.drop_streams, options.metadata_360};
    return std::make_unique<ClipWriter>(settings, facts, part);
  }
  const RawKind kind = is_y4m_output(options) ? RawKind::y4m : RawKind::nv12;
  return std::make_unique<RawWriter>(options.output, kind, facts, clips, video.drop_streams);
}

int usual_jobs() { return std::clamp(int(std::thread::hardware_concurrency()) / 2, 1, 4); }

// How many pictures there will be, as far as the clip says.
std::optional<std::int64_t> expected_frames(const PartReader& part, const PartRange& range) {
  const AVStream& stream = part.pairs().clip(0).stream();
  const AVFormatContext& format = *part.pairs().clip(0).container().get();
  if (range.is_whole() && stream.nb_frames > 0) return stream.nb_frames;
  if (stream.avg_frame_rate.num <= 0 || (format.duration <= 0 && !range.to)) return std::nullopt;
  std::int64_t end = std::max<std::int64_t>(0, format.start_time) + format.duration;
  if (range.to) end = std::min(format.duration > 0 ? end : *part.end(), *part.end());
  const std::int64_t frames = av_rescale_q(end - part.begin(), {1, AV_TIME_BASE}, av_inv_q(stream.avg_frame_rate));
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

void report(const StitchOptions& options, const RunSettings& run, const PairReader& clips, const Summary& summary,
            double seconds, ReplacementFile* json_file) {
  tell_damage(clips);
  notice(summary_line(summary, seconds));
  if (!json_file) return;
  const std::string json = summary_json(summary, seconds, clips, options, run, interrupted());
  json_file->write({reinterpret_cast<const std::uint8_t*>(json.data()), json.size()});
  json_file->commit();
}

}  // namespace

int stitch_video(const StitchOptions& options, std::unique_ptr<Container> first) {
  const InterruptWatch watch;
  const PartRange range = range_of(options.video);
  Pairs pairs(open_clips(options, std::move(first)), range, options.video.seam_hold);
  const FramePair& pair = *pairs.first_picture();
  check_formats(pairs.clips(), pair);
  check_colours(pairs.clips(), pair);
  const PairLayout layout{options.layout, pairs.clips().clip(0).container().name()};
  const Setup setup = video_setup(options, pair, layout);
  const std::unique_ptr<FrameSink> sink = open_sink(options, facts_of(pairs.clips(), pair, setup), pairs.part());
  const RunSettings run{sink->settings_text(), options.video.jobs.value_or(usual_jobs()), setup.plan.config};
  std::unique_ptr<ReplacementFile> json_file;  // early, so that a wrong name costs no time
  if (!options.video.json.empty()) json_file = std::make_unique<ReplacementFile>(options.video.json);
  Summary summary;
  double seconds = 0;
  {
    StitchPool pool(setup, layout, run.jobs, options.video.seam_hold, [&pairs] { return pairs.next(); });
    Progress progress(expected_frames(pairs.part(), range));
    stitch_all(pool, *sink, progress, summary);
    sink->finish();
    seconds = progress.seconds();
  }
  report(options, run, pairs.clips(), summary, seconds, json_file.get());
  return int(interrupted() ? ExitCode::interrupted : ExitCode::done);
}

}  // namespace biseam::tool
