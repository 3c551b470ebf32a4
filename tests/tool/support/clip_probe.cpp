#include "tool/support/clip_probe.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
#include <libavutil/spherical.h>
}

#include <algorithm>
#include <stdexcept>

namespace biseam::test {
namespace {

using tool::Libav;

constexpr AVRational kMicroseconds{1, 1000000};

void check(int status, const std::string& what) {
  if (status < 0) throw std::runtime_error(what + ": " + tool::libav_reason(status));
}

std::map<std::string, std::string> entries(const AVDictionary* from) {
  std::map<std::string, std::string> out;
  const AVDictionaryEntry* entry = nullptr;
  while ((entry = av_dict_get(from, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) out[entry->key] = entry->value;
  return out;
}

bool is_plain(const AVFrame& frame) {
  const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(AVPixelFormat(frame.format));
  return format.comp[0].depth == 8 && format.log2_chroma_w == 1 && format.log2_chroma_h == 1;
}

tool::Nv12 copy_picture(const AVFrame& frame) {
  const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(AVPixelFormat(frame.format));
  tool::Nv12 out(frame.width, frame.height);
  const auto get = [&](int component, int width, int height, std::uint8_t* to, int step) {
    const AVComponentDescriptor& place = format.comp[component];
    for (int y = 0; y < height; ++y) {
      const std::uint8_t* row = frame.data[place.plane] + std::ptrdiff_t(y) * frame.linesize[place.plane] + place.offset;
      for (int x = 0; x < width; ++x) to[(std::ptrdiff_t(y) * width + x) * step] = row[x * place.step];
    }
  };
  get(0, out.width, out.height, out.luma.data(), 1);
  get(1, out.width / 2, out.height / 2, out.chroma.data(), 2);
  get(2, out.width / 2, out.height / 2, out.chroma.data() + 1, 2);
  return out;
}

bool is_spherical(const AVStream& stream) {
  const std::uint8_t* data = av_stream_get_side_data(&stream, AV_PKT_DATA_SPHERICAL, nullptr);
  return data && reinterpret_cast<const AVSphericalMapping*>(data)->projection == AV_SPHERICAL_EQUIRECTANGULAR;
}

}  // namespace

std::string StreamFacts::bytes() const {
  std::string all;
  for (const PacketFacts& packet : packets) all += packet.bytes;
  return all;
}

std::vector<std::int64_t> StreamFacts::times() const {
  std::vector<std::int64_t> all;
  for (const PacketFacts& packet : packets) all.push_back(packet.pts);
  std::sort(all.begin(), all.end());
  return all;
}

ClipProbe::ClipProbe(const std::string& path) {
  av_log_set_level(AV_LOG_QUIET);
  AVFormatContext* opened = nullptr;
  check(avformat_open_input(&opened, path.c_str(), nullptr, nullptr), path);
  const Libav<AVFormatContext> format(opened);
  check(avformat_find_stream_info(opened, nullptr), path);
  metadata = entries(format->metadata);
  duration = format->duration;
  for (unsigned k = 0; k < format->nb_chapters; ++k) {
    const AVChapter& chapter = *format->chapters[k];
    const auto milliseconds = [&](std::int64_t time) { return av_rescale_q(time, chapter.time_base, {1, 1000}); };
    chapters.push_back({milliseconds(chapter.start), milliseconds(chapter.end), entries(chapter.metadata)["title"]});
  }
  read_streams(*format);
  read_packets(*format, av_find_best_stream(opened, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0));
}

void ClipProbe::read_streams(AVFormatContext& format) {
  for (unsigned k = 0; k < format.nb_streams; ++k) {
    const AVStream& stream = *format.streams[k];
    const AVCodecParameters& told = *stream.codecpar;
    streams.push_back({told.codec_type,
                       avcodec_get_name(told.codec_id),
                       stream.time_base,
                       stream.disposition,
                       entries(stream.metadata),
                       {},
                       std::string(told.extradata, told.extradata + told.extradata_size)});
    if (told.codec_type != AVMEDIA_TYPE_VIDEO || (stream.disposition & AV_DISPOSITION_ATTACHED_PIC)) continue;
    range = told.color_range;
    matrix = told.color_space;
    primaries = told.color_primaries;
    transfer = told.color_trc;
    siting = told.chroma_location;
    spherical = is_spherical(stream);
    pixel = stream.sample_aspect_ratio;
    has_display_matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr) != nullptr;
  }
}

void ClipProbe::read_packets(AVFormatContext& format, int video) {
  Libav<AVCodecContext> decoder;
  if (video >= 0) {
    const AVStream& stream = *format.streams[video];
    base = stream.time_base;
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    decoder.reset(avcodec_alloc_context3(codec));
    check(avcodec_parameters_to_context(decoder.get(), stream.codecpar), "decoder");
    check(avcodec_open2(decoder.get(), codec, nullptr), "decoder");
  }
  const Libav<AVPacket> packet(av_packet_alloc());
  while (av_read_frame(&format, packet.get()) >= 0) {
    const AVRational from = format.streams[packet->stream_index]->time_base;
    const auto microseconds = [&](std::int64_t time) {
      return time == AV_NOPTS_VALUE ? time : av_rescale_q(time, from, kMicroseconds);
    };
    streams[std::size_t(packet->stream_index)].packets.push_back(
        {microseconds(packet->pts), microseconds(packet->dts), microseconds(packet->duration),
         std::string(reinterpret_cast<const char*>(packet->data), std::size_t(packet->size))});
    if (packet->stream_index == video) {
      check(avcodec_send_packet(decoder.get(), packet.get()), "decoder");
      take_pictures(*decoder);
    }
    av_packet_unref(packet.get());
  }
  if (!decoder) return;
  check(avcodec_send_packet(decoder.get(), nullptr), "decoder");
  take_pictures(*decoder);
}

void ClipProbe::take_pictures(AVCodecContext& decoder) {
  const Libav<AVFrame> frame(av_frame_alloc());
  while (avcodec_receive_frame(&decoder, frame.get()) >= 0) {
    picture_times.push_back(frame->best_effort_timestamp);
    if (is_plain(*frame)) pictures.push_back(copy_picture(*frame));
    frames.emplace_back(av_frame_clone(frame.get()));
  }
}

const StreamFacts& ClipProbe::only(AVMediaType type) const {
  const StreamFacts* found = nullptr;
  for (const StreamFacts& stream : streams) {
    const bool is_chapter_track = type == AVMEDIA_TYPE_DATA && stream.packets.empty();
    if (stream.type != type || (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) || is_chapter_track) continue;
    if (found) throw std::runtime_error("more than one stream of a kind");
    found = &stream;
  }
  if (!found) throw std::runtime_error("no stream of a kind");
  return *found;
}

}  // namespace biseam::test
