#include "stitch/followed.hpp"

extern "C" {
#include <libavformat/avio.h>
}

#include "base/failure.hpp"
#include "text/time_text.hpp"

namespace biseam::tool {
namespace {

[[noreturn]] void refuse(const AnalysisReader& analysis, const std::string& what) {
  throw Failure(ExitCode::input, analysis.name() + ": " + what);
}

bool may_be_same(const ClipMark& a, const ClipMark& b) {
  for (int k = 0; k < 2; ++k) {
    if (a.bytes[k] != 0 && b.bytes[k] != 0 && a.bytes[k] != b.bytes[k]) return false;
  }
  return a.time_base.num == b.time_base.num && a.time_base.den == b.time_base.den;
}

}  // namespace

ClipJob settled_by(const AnalysisReader& analysis, ClipJob job) {
  const AnalysisHead& head = analysis.head();
  job.source.engine.light = head.light ? BISEAM_LIGHT_MATCH : BISEAM_LIGHT_OFF;
  job.source.engine.near = head.near;
  job.source.engine.steady_seams = head.seam == BISEAM_SEAM_STEADY;
  job.source.settings.blend.search = head.seam != BISEAM_SEAM_MIDDLE;
  return job;
}

ClipMark clip_mark(const PairReader& clips) {
  ClipMark mark{clips.clip(0).stream().time_base, {0, 0}};
  for (int k = 0; k < clips.clips(); ++k) {
    const Container& container = clips.clip(k).container();
    const std::int64_t size = container.is_seekable() ? avio_size(container->pb) : 0;
    mark.bytes[k] = size > 0 ? std::uint64_t(size) : 0;
  }
  return mark;
}

void check_clip(const AnalysisReader& analysis, const PairReader& clips) {
  if (!may_be_same(analysis.head().clip, clip_mark(clips))) refuse(analysis, "was made of another clip");
}

void check_camera(const AnalysisReader& analysis, const Setup& setup, std::size_t guide_bytes) {
  const AnalysisHead& head = analysis.head();
  const Size panorama{setup.width, setup.width / 2};
  if (head.panorama.width != panorama.width || head.panorama.height != panorama.height) {
    refuse(analysis, "was made for a panorama of " + size_text(head.panorama) + ", not of " + size_text(panorama));
  }
  if (head.camera != camera_mark(setup.camera)) refuse(analysis, "was made for another camera");
  if (head.guide_bytes != guide_bytes) refuse(analysis, "is damaged");
}

std::span<const std::uint8_t> guide_of(AnalysisReader& analysis, const FramePair& pair) {
  const std::span<const std::uint8_t> guide = analysis.guide_at(pair.clip_time);
  if (!guide.empty()) return guide;
  refuse(analysis, "knows nothing of the picture at " + time_text(pair.clip_time, analysis.head().clip.time_base));
}

}  // namespace biseam::tool
