#include "video/stitch_video.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <thread>

#include "camera/setup.hpp"
#include "failure.hpp"
#include "input/read_picture.hpp"
#include "interrupt.hpp"
#include "video/clip_writer.hpp"
#include "video/raw_writer.hpp"
#include "video/stitch_pool.hpp"
#include "video/time_text.hpp"
#include "video/to_nv12.hpp"

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

// The pairs, the first one looked at before the others are read.
class Pairs {
 public:
  explicit Pairs(PairReader reader) : reader_(std::move(reader)) {
    while (!first_picture()) {
      std::optional<FramePair> pair = reader_.next();
      if (!pair) reader_.clip(0).container().refuse("has no picture that can be decoded");
      read_.push_back(std::move(*pair));
    }
  }

  const FramePair* first_picture() const { return read_.empty() || !read_.back().picture[0] ? nullptr : &read_.back(); }
  const PairReader& reader() const { return reader_; }

  std::optional<FramePair> next() {
    if (read_.empty()) return reader_.next();
    FramePair pair = std::move(read_.front());
    read_.pop_front();
    return pair;
  }

 private:
  PairReader reader_;
  std::deque<FramePair> read_;
};

void refuse_unknown_formats(const PairReader& reader, const FramePair& pair) {
  for (int k = 0; k < reader.clips(); ++k) {
    const auto format = AVPixelFormat(pair.picture[k]->format);
    if (can_make_nv12(format)) continue;
    const char* name = av_get_pix_fmt_name(format);
    reader.clip(k).container().refuse(std::string("pictures of the format ") + (name ? name : "?") + " can't be used");
  }
}

Setup video_setup(const StitchOptions& options, const FramePair& pair, const PairLayout& layout) {
  Nv12 memory[2];
  const auto views = lens_views(pair, layout, memory);
  Setup setup = make_setup(options.camera, options.settings,
                           {{views.first.width, views.first.height}, {views.second.width, views.second.height}});
  adopt_strides(views, setup);
  return setup;
}

ClipFacts facts_of(const PairReader& reader, const FramePair& pair, const Setup& setup) {
  const AVStream& stream = reader.clip(0).stream();
  const StitchConfig& config = setup.plan.config;
  AVRational rate = stream.avg_frame_rate;
  if (rate.num <= 0 || rate.den <= 0) rate = stream.r_frame_rate;
  return {{config.out_w[0], config.out_h[0]}, stream.time_base, rate, colour_of(*pair.picture[0], stream)};
}

std::unique_ptr<FrameSink> open_sink(const StitchOptions& options, const ClipFacts& facts, const PairReader& clips) {
  const VideoOptions& video = options.video;
  if (clip_format(options.output)) {
    const EncoderSettings encoder{video.encoder, video.crf, video.preset, video.bitrate};
    const ClipWriterSettings settings{options.output, encoder, video.drop_streams, options.metadata_360};
    return std::make_unique<ClipWriter>(settings, facts, clips, offset_of(options));
  }
  const RawKind kind = is_y4m_output(options) ? RawKind::y4m : RawKind::nv12;
  return std::make_unique<RawWriter>(options.output, kind, facts, clips, video.drop_streams);
}

int usual_jobs() { return std::clamp(int(std::thread::hardware_concurrency()) / 2, 1, 4); }

void stitch_all(StitchPool& pool, FrameSink& sink) {
  Libav<AVFrame> panorama;
  while (std::optional<StitchedFrame> frame = pool.next()) {
    for (CopiedPacket& copied : frame->pair.packets) sink.copy(copied.clip, *copied.packet);
    const bool is_picture = frame->panorama || frame->pair.repeated;
    if (frame->panorama) panorama = std::move(frame->panorama);
    if (is_picture) sink.write(*panorama, frame->pair.time, frame->pair.duration);
  }
}

}  // namespace

int stitch_video(const StitchOptions& options, std::unique_ptr<Container> first) {
  const InterruptWatch watch;
  Pairs pairs(open_clips(options, std::move(first)));
  refuse_unknown_formats(pairs.reader(), *pairs.first_picture());
  const PairLayout layout{options.layout, pairs.reader().clip(0).container().name()};
  const Setup setup = video_setup(options, *pairs.first_picture(), layout);
  const ClipFacts facts = facts_of(pairs.reader(), *pairs.first_picture(), setup);
  const std::unique_ptr<FrameSink> sink = open_sink(options, facts, pairs.reader());
  {
    StitchPool pool(setup, layout, options.video.jobs.value_or(usual_jobs()), [&pairs] { return pairs.next(); });
    stitch_all(pool, *sink);
  }
  sink->finish();
  return interrupted() ? kInterruptedExit : int(ExitCode::done);
}

}  // namespace biseam::tool
