#include "stitch/clip_source.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "base/failure.hpp"
#include "base/interrupt.hpp"
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
  return PartReader(std::move(clips), job.part, job.seam_hold, lead_of(job.source.engine, rate));
}

}  // namespace

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

}  // namespace biseam::tool
