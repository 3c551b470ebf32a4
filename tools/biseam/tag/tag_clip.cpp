#include "tag/tag_clip.hpp"

extern "C" {
#include <libavutil/spherical.h>
}

#include <new>
#include <vector>

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "clip/write/clip_metadata.hpp"
#include "clip/write/clip_muxer.hpp"
#include "clip/write/stream_fit.hpp"
#include "tag/cut_short.hpp"

namespace biseam::tool {
namespace {

const AVStream& find_video(Container& source) {
  const int index = av_find_best_stream(source.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (index < 0 || (source->streams[index]->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) source.refuse("has no video");
  return *source->streams[index];
}

// Empty when the stream says nothing.  "tiled equirectangular" is a part of the sphere.
std::string told_projection(const AVStream& stream) {
  const std::uint8_t* data = av_stream_get_side_data(&stream, AV_PKT_DATA_SPHERICAL, nullptr);
  return data ? av_spherical_projection_name(reinterpret_cast<const AVSphericalMapping*>(data)->projection) : "";
}

void check_held(const TagJob& job, const AVOutputFormat& format, const AVStream& stream, const std::string& text) {
  const std::string trouble = holding_trouble(format, stream);
  if (!trouble.empty()) throw Failure(ExitCode::output, job.from + ": " + text + " can't be written again: " + trouble);
}

using CopiedStreams = std::vector<CopiedStream>;  // by the index of the clip's stream

CopiedStreams add_streams(const TagJob& job, Container& source, const AVStream& video, ClipMuxer& muxer) {
  CopiedStreams copied(source->nb_streams);
  for (unsigned k = 0; k < source->nb_streams; ++k) {
    const AVStream& stream = *source->streams[k];
    if (is_carried_by_metadata(*source.get(), stream)) continue;
    const std::string text = stream_text(stream, "");
    check_held(job, muxer.format(), stream, text);
    copied[k] = muxer.add_copied(stream, text);
    if (&stream == &video) mark_spherical(*copied[k].to);
  }
  return copied;
}

// False when interrupted.
bool copy_packets(Container& source, const AVStream& video, ClipMuxer& muxer, CopiedStreams& streams) {
  bool has_picture = false;
  const Libav<AVPacket> packet(av_packet_alloc());
  if (!packet) throw std::bad_alloc();
  for (;;) {
    const Container::Read read = source.read(*packet);
    if (interrupted()) return false;
    if (read == Container::Read::end && !has_picture) source.refuse("has no picture");  // a copy would lack the stream
    if (read == Container::Read::end) return true;
    if (read == Container::Read::damage || (packet->flags & AV_PKT_FLAG_CORRUPT) != 0) source.refuse("is damaged");
    if (std::size_t(packet->stream_index) >= streams.size()) source.refuse("has a stream that its head doesn't tell of");
    has_picture = has_picture || packet->stream_index == video.index;
    muxer.copy(streams[std::size_t(packet->stream_index)], *packet);
    av_packet_unref(packet.get());
  }
}

}  // namespace

void tag_clip(const TagJob& job, Container& source, const AVOutputFormat& format) {
  const AVStream& video = find_video(source);
  if (is_cut_short(job.from)) source.refuse("is cut short");
  const std::string projection = told_projection(video);
  if (projection.ends_with("equirectangular")) return keep_marked(job);
  check_sides(job, {video.codecpar->width, video.codecpar->height});
  tell_old_projection(job, projection);
  ClipMuxer muxer(job.to, format);
  CopiedStreams streams = add_streams(job, source, video, muxer);
  muxer.begin(*source.get());
  if (!copy_packets(source, video, muxer, streams)) return;
  if (!muxer.end()) throw Failure(ExitCode::output, job.to + ": could not be marked as a spherical panorama");
  if (!interrupted()) muxer.commit();
}

}  // namespace biseam::tool
