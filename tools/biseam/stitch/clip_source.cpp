#include "stitch/clip_source.hpp"

#include <algorithm>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "calibration/find_camera.hpp"
#include "clip/read/clip_facts.hpp"
#include "media/pixel_format.hpp"
#include "picture/read_picture.hpp"

namespace biseam::tool {
namespace {

// What of a clip before a part has a say in it, microseconds.  Matched light is smooth over half a second, what is near over an
// eighth; steady seams are over 14 pictures, and were searched with both.  Pictures may come unevenly.
std::int64_t lead_of(const EngineOptions& engine, AVRational rate) {
  constexpr int kSeamPictures = 16;
  if (engine.kind != EngineKind::ring) return 0;
  const std::int64_t near = engine.near.value_or(true) ? AV_TIME_BASE / 4 : 0;
  const std::int64_t before = engine.light == BISEAM_LIGHT_MATCH ? AV_TIME_BASE : near;
  if (!engine.steady_seams) return before;
  return before + (rate.num > 0 ? av_rescale_q(kSeamPictures, av_inv_q(rate), kMicroseconds) : AV_TIME_BASE);
}

void check_formats(const PairReader& clips, const FramePair& pair) {
  for (int k = 0; k < clips.clips(); ++k) {
    const auto format = AVPixelFormat(pair.picture[k]->format);
    const Container& container = clips.clip(k).container();
    const char* const name = av_get_pix_fmt_name(format);
    if (working_format(format) == AV_PIX_FMT_NONE) {
      container.refuse(std::string("pictures of the format ") + (name ? name : "?") + " can't be used");
    }
    const std::string loss = working_loss(format);
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

PartReader part_of(PairReader clips, const ClipJob& job) {
  const AVRational rate = clips.clip(0).rate();
  // Frames that follow an analysis don't depend on others.
  const std::int64_t lead = job.analysis.empty() ? lead_of(job.source.engine, rate) : 0;
  return PartReader(std::move(clips), job.part, job.seam_hold, lead);
}

bool are_seekable(const PairReader& clips) {
  for (int k = 0; k < clips.clips(); ++k) {
    if (!clips.clip(k).container().is_seekable()) return false;
  }
  return true;
}

}  // namespace

ClipFiles files_of(const ClipJob& job) {
  const StitchSource& source = job.source;
  ClipFiles files{source.files, source.streams, std::nullopt, job.offset, job.strict};
  if (source.raw_size) files.raw = RawVideo{*source.raw_size, job.raw_rate};
  return files;
}

ClipSource::ClipSource(PairReader clips, const ClipJob& job) : reader_(part_of(std::move(clips), job)) {
  while (!has_picture()) {
    std::optional<FramePair> pair = reader_.next();
    if (!pair) refuse_emptiness(job.part);
    read_.push_back(std::move(*pair));
  }
  check_formats(reader_.pairs(), first_picture());
  check_colours(reader_.pairs(), first_picture());
}

std::optional<FramePair> ClipSource::next() {
  if (read_.empty()) return reader_.next();
  FramePair pair = std::move(read_.front());
  read_.pop_front();
  return pair;
}

void ClipSource::refuse_emptiness(const PartRange& range) const {
  if (interrupted()) throw Failure(ExitCode::interrupted, "interrupted before the first picture");
  const Container& first = clips().clip(0).container();
  if (clips().clips() == 2 && clips().report().unpaired > 0) {
    first.refuse("no picture has a partner in " + clips().clip(1).container().name() + " at the same time");
  }
  first.refuse(range.is_whole() ? "has no picture that can be decoded" : "has no picture in the part that is wanted");
}

KnownCamera camera_of(const StitchSource& job, const ClipFiles& files, const ClipSource& source) {
  if (!job.profile.empty()) return read_camera(job.profile);
  if (!job.finds_camera) return {};
  const std::string& name = source.clips().clip(0).container().name();
  std::vector<RecordedPair> pairs;
  if (are_seekable(source.clips())) {
    ClipFiles again = files;
    again.are_known = true;
    pairs = read_clip_pairs(again, job.layout, kUsualPairs);
  }
  const FramePair& first = source.first_picture();
  if (pairs.empty()) pairs.emplace_back(*first.picture[0], first.picture[1].get(), job.layout, name);
  return {find_camera(pairs, name, job.save_camera), ""};
}

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

}  // namespace biseam::tool
