#include "tool/support/clip_maker.hpp"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <cmath>
#include <cstring>
#include <stdexcept>

#include "picture/encode.hpp"

namespace biseam::test {
namespace {

using tool::Libav;

void check(int status, const std::string& what) {
  if (status < 0) throw std::runtime_error(what + ": " + tool::libav_reason(status));
}

void set_metadata(AVDictionary*& to, const std::map<std::string, std::string>& from) {
  for (const auto& [key, value] : from) av_dict_set(&to, key.c_str(), value.c_str(), 0);
}

std::vector<std::uint8_t> noise(int bytes, unsigned seed) {
  std::vector<std::uint8_t> out(std::size_t(bytes), 0);
  for (std::uint8_t& byte : out) byte = std::uint8_t((seed = seed * 1664525u + 1013904223u) >> 24);
  return out;
}

class Writer {
 public:
  Writer(const std::string& path, const ClipSpec& spec, tool::Size size) : spec_(spec) {
    check(avformat_alloc_output_context2(&muxer_, nullptr, nullptr, path.c_str()), path);
    muxer_->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    muxer_->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;  // sound may begin a little before the pictures
    video_ = open_video(size);
    video_stream_ = add_video(*video_);
    if (!spec.second.empty()) {
      second_ = open_video({spec.second[0].width, spec.second[0].height});
      second_stream_ = add_video(*second_);
    }
    if (spec.sound > 0) add_sound();
    if (!spec.subtitles.empty()) add_subtitles();
    if (spec.motion_packets > 0) motion_ = add_stream(AVMEDIA_TYPE_DATA, AV_CODEC_ID_BIN_DATA, MKTAG('g', 'p', 'm', 'd'));
    if (!spec.attachment.empty()) add_attachment();
    if (spec.cover) add_cover();
    add_chapters();
    set_metadata(muxer_->metadata, spec.metadata);
    check(avio_open(&muxer_->pb, path.c_str(), AVIO_FLAG_WRITE), path);
    AVDictionary* options = nullptr;
    set_metadata(options, spec.muxer_options);
    check(avformat_write_header(muxer_, &options), path);
    av_dict_free(&options);
  }
  ~Writer() {
    avio_closep(&muxer_->pb);
    avformat_free_context(muxer_);
  }

  void write(int frames, const Painter& paint) {
    write_cover();
    int sound = 0, subtitle = 0, motion = 0;
    for (int index = 0; index < frames; ++index) {
      const auto encode_painted = [&](AVCodecContext& video, AVStream* stream, const Painter& painter) {
        const Libav<AVFrame> frame(av_frame_alloc());
        frame->width = video.width;
        frame->height = video.height;
        frame->format = video.pix_fmt;
        check(av_frame_get_buffer(frame.get(), 0), "frame");
        painter(index, *frame);
        frame->pts = time(index);
        encode(video, frame.get(), stream);
      };
      encode_painted(*video_, video_stream_, paint);
      const bool has_second = std::size_t(index) < spec_.second.size();
      if (has_second) {
        encode_painted(*second_, second_stream_, [&](int, AVFrame& to) { fill_frame(spec_.second[std::size_t(index)], to); });
      }
      const double now = double(time(index)) * av_q2d(spec_.base);
      while (sound_ && sound * 1024.0 / 48000 < std::min(now + 0.04, spec_.sound)) write_sound(sound++);
      while (std::size_t(subtitle) < spec_.subtitles.size() && subtitle * 0.2 <= now) write_subtitle(subtitle++);
      while (motion < spec_.motion_packets && motion * 0.1 <= now) write_motion(motion++);
    }
    while (sound_ && sound * 1024.0 / 48000 < spec_.sound) write_sound(sound++);
    encode(*video_, nullptr, video_stream_);
    if (second_) encode(*second_, nullptr, second_stream_);
    if (sound_) encode(*sound_, nullptr, sound_stream_);
    check(av_write_trailer(muxer_), "trailer");
  }

 private:
  std::int64_t time(int index) const { return spec_.times.empty() ? index * 512 : spec_.times.at(std::size_t(index)); }

  Libav<AVCodecContext> open(const AVCodec* codec, const std::map<std::string, std::string>& options,
                             const std::function<void(AVCodecContext&)>& prepare) {
    if (!codec) throw std::runtime_error("no such encoder");
    Libav<AVCodecContext> context(avcodec_alloc_context3(codec));
    prepare(*context);
    if (muxer_->oformat->flags & AVFMT_GLOBALHEADER) context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    for (const auto& [key, value] : options) {
      check(av_opt_set(context.get(), key.c_str(), value.c_str(), AV_OPT_SEARCH_CHILDREN), key);
    }
    check(avcodec_open2(context.get(), codec, nullptr), codec->name);
    return context;
  }

  AVStream* add_encoded(const AVCodecContext& context, const std::map<std::string, std::string>& metadata) {
    AVStream* stream = avformat_new_stream(muxer_, nullptr);
    check(avcodec_parameters_from_context(stream->codecpar, &context), "stream");
    stream->time_base = context.time_base;
    set_metadata(stream->metadata, metadata);
    return stream;
  }

  Libav<AVCodecContext> open_video(tool::Size size) {
    return open(avcodec_find_encoder_by_name(spec_.encoder.c_str()), spec_.options, [&](AVCodecContext& video) {
      video.width = size.width;
      video.height = size.height;
      video.pix_fmt = spec_.format;
      video.time_base = spec_.base;
      video.framerate = {25, 1};
      video.sample_aspect_ratio = spec_.pixel;
      video.strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
      video.color_range = spec_.colour.range;
      video.colorspace = spec_.colour.matrix;
      video.color_primaries = spec_.colour.primaries;
      video.color_trc = spec_.colour.transfer;
      video.chroma_sample_location = spec_.colour.siting;
    });
  }

  AVStream* add_video(const AVCodecContext& video) {
    AVStream* stream = add_encoded(video, spec_.picture_metadata);
    stream->avg_frame_rate = {25, 1};
    stream->sample_aspect_ratio = spec_.pixel;
    if (spec_.display.empty()) return stream;
    std::uint8_t* data = av_stream_new_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t));
    std::memcpy(data, spec_.display.data(), 9 * sizeof(std::int32_t));
    return stream;
  }

  void add_sound() {
    sound_ = open(avcodec_find_encoder(AV_CODEC_ID_AAC), {}, [](AVCodecContext& sound) {
      sound.sample_rate = 48000;
      sound.sample_fmt = AV_SAMPLE_FMT_FLTP;
      av_channel_layout_default(&sound.ch_layout, 1);
      sound.time_base = {1, 48000};
      sound.bit_rate = 48000;
    });
    sound_stream_ = add_encoded(*sound_, spec_.sound_metadata);
    sound_stream_->disposition = spec_.sound_disposition;
  }

  AVStream* add_stream(AVMediaType type, AVCodecID codec, unsigned tag) {
    AVStream* stream = avformat_new_stream(muxer_, nullptr);
    stream->codecpar->codec_type = type;
    stream->codecpar->codec_id = codec;
    stream->codecpar->codec_tag = tag;
    stream->time_base = {1, 1000};
    return stream;
  }

  void add_subtitles() {
    const bool mov = std::string(muxer_->oformat->name) != "matroska";
    subtitles_ = add_stream(AVMEDIA_TYPE_SUBTITLE, mov ? AV_CODEC_ID_MOV_TEXT : AV_CODEC_ID_SUBRIP, 0);
    av_dict_set(&subtitles_->metadata, "language", "fin", 0);
    subtitles_->disposition = spec_.subtitle_disposition;
  }

  void add_cover() {
    cover_ = add_stream(AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_PNG, 0);
    cover_->codecpar->width = cover_->codecpar->height = 16;
    cover_->disposition = AV_DISPOSITION_ATTACHED_PIC;
  }

  void add_attachment() {
    AVStream* stream = add_stream(AVMEDIA_TYPE_ATTACHMENT, AV_CODEC_ID_TTF, 0);
    av_dict_set(&stream->metadata, "filename", "letters.ttf", 0);
    av_dict_set(&stream->metadata, "mimetype", "font/ttf", 0);
    const std::size_t size = spec_.attachment.size();
    stream->codecpar->extradata = static_cast<std::uint8_t*>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
    stream->codecpar->extradata_size = int(size);
    std::copy(spec_.attachment.begin(), spec_.attachment.end(), stream->codecpar->extradata);
  }

  void add_chapters() {
    if (spec_.chapters.empty()) return;
    muxer_->chapters = static_cast<AVChapter**>(av_calloc(spec_.chapters.size(), sizeof(AVChapter*)));
    for (const Chapter& from : spec_.chapters) {
      auto* to = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
      to->id = muxer_->nb_chapters + 1;
      to->time_base = {1, 1000};
      to->start = from.start;
      to->end = from.end;
      av_dict_set(&to->metadata, "title", from.title.c_str(), 0);
      muxer_->chapters[muxer_->nb_chapters++] = to;
    }
  }

  void encode(AVCodecContext& context, const AVFrame* frame, AVStream* stream) {
    check(avcodec_send_frame(&context, frame), "encoder");
    const Libav<AVPacket> packet(av_packet_alloc());
    while (avcodec_receive_packet(&context, packet.get()) >= 0) {
      if (packet->duration == 0 && (&context == video_.get() || &context == second_.get())) packet->duration = 512;
      packet->stream_index = stream->index;
      av_packet_rescale_ts(packet.get(), context.time_base, stream->time_base);
      check(av_interleaved_write_frame(muxer_, packet.get()), "packet");
    }
  }

  void write_sound(int number) {
    const Libav<AVFrame> frame(av_frame_alloc());
    frame->nb_samples = 1024;
    frame->format = AV_SAMPLE_FMT_FLTP;
    frame->sample_rate = 48000;
    av_channel_layout_default(&frame->ch_layout, 1);
    check(av_frame_get_buffer(frame.get(), 0), "sound");
    for (int i = 0; i < 1024; ++i) {
      const double t = number * 1024 + i;
      reinterpret_cast<float*>(frame->data[0])[i] = float(0.3 * std::sin(t * (0.05 + t * 2e-7)));
    }
    frame->pts = number * 1024;
    encode(*sound_, frame.get(), sound_stream_);
  }

  void write_bytes(AVStream* stream, const std::vector<std::uint8_t>& bytes, std::int64_t milliseconds, std::int64_t duration) {
    const Libav<AVPacket> packet(av_packet_alloc());
    check(av_new_packet(packet.get(), int(bytes.size())), "packet");
    std::copy(bytes.begin(), bytes.end(), packet->data);
    packet->pts = packet->dts = milliseconds;
    packet->duration = duration;
    packet->flags |= AV_PKT_FLAG_KEY;
    packet->stream_index = stream->index;
    av_packet_rescale_ts(packet.get(), {1, 1000}, stream->time_base);
    check(av_interleaved_write_frame(muxer_, packet.get()), "packet");
  }

  void write_subtitle(int number) {
    const std::string& text = spec_.subtitles[std::size_t(number)];
    std::vector<std::uint8_t> bytes;
    if (subtitles_->codecpar->codec_id == AV_CODEC_ID_MOV_TEXT) bytes = {0, std::uint8_t(text.size())};
    bytes.insert(bytes.end(), text.begin(), text.end());
    write_bytes(subtitles_, bytes, number * 200, 200);
  }

  void write_motion(int number) { write_bytes(motion_, noise(40 + number, unsigned(number)), number * 100, 100); }

  void write_cover() {
    if (!cover_) return;
    write_bytes(cover_, tool::encode_png(tool::Rgb(16, 16)), 0, 0);
  }

  const ClipSpec& spec_;
  AVFormatContext* muxer_ = nullptr;
  Libav<AVCodecContext> video_, second_, sound_;
  AVStream *video_stream_ = nullptr, *second_stream_ = nullptr, *sound_stream_ = nullptr, *subtitles_ = nullptr,
           *motion_ = nullptr, *cover_ = nullptr;
};

}  // namespace

void write_clip(const std::string& path, const ClipSpec& spec, tool::Size size, int frames, const Painter& paint) {
  av_log_set_level(AV_LOG_QUIET);
  Writer(path, spec, size).write(frames, paint);
}

void write_clip(const std::string& path, const ClipSpec& spec, const std::vector<tool::Nv12>& pictures) {
  const tool::Size size{pictures.at(0).width, pictures.at(0).height};
  write_clip(path, spec, size, int(pictures.size()),
             [&](int index, AVFrame& frame) { fill_frame(pictures[std::size_t(index)], frame); });
}

void fill_frame(const tool::Nv12& picture, AVFrame& frame) {
  const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(AVPixelFormat(frame.format));
  const auto put = [&](int component, int width, int height, const std::uint8_t* from, int step) {
    const AVComponentDescriptor& place = format.comp[component];
    for (int y = 0; y < height; ++y) {
      std::uint8_t* row = frame.data[place.plane] + std::ptrdiff_t(y) * frame.linesize[place.plane] + place.offset;
      for (int x = 0; x < width; ++x) row[x * place.step] = from[(std::ptrdiff_t(y) * width + x) * step];
    }
  };
  put(0, picture.width, picture.height, picture.luma.data(), 1);
  put(1, picture.width / 2, picture.height / 2, picture.chroma.data(), 2);
  put(2, picture.width / 2, picture.height / 2, picture.chroma.data() + 1, 2);
}

}  // namespace biseam::test
