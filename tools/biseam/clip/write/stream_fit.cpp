#include "clip/write/stream_fit.hpp"

#include <cstring>
#include <new>

#include "media/libav_log.hpp"

namespace biseam::tool {
namespace {

constexpr unsigned kTimeCode = MKTAG('t', 'm', 'c', 'd'), kActionCamera = MKTAG('g', 'p', 'm', 'd');

bool is_mov_kind(const AVOutputFormat& format) {
  return std::strcmp(format.name, "mp4") == 0 || std::strcmp(format.name, "mov") == 0;
}

int swallow(void*, std::uint8_t*, int count) { return count; }
std::int64_t seek_nowhere(void*, std::int64_t, int) { return 0; }

struct OutputDelete {
  void operator()(AVFormatContext* p) const { avformat_free_context(p); }
};

// Lets the muxer begin a file with this stream alone.
std::string trial(const AVOutputFormat& format, const AVStream& stream) {
  constexpr int kBytes = 4096;
  AVFormatContext* raw = nullptr;
  if (avformat_alloc_output_context2(&raw, &format, nullptr, nullptr) < 0) throw std::bad_alloc();
  const std::unique_ptr<AVFormatContext, OutputDelete> muxer(raw);
  const Libav<AVIOContext> bytes(
      avio_alloc_context(static_cast<unsigned char*>(av_malloc(kBytes)), kBytes, 1, nullptr, nullptr, swallow, seek_nowhere));
  AVStream* to = avformat_new_stream(muxer.get(), nullptr);
  if (!bytes || !to) throw std::bad_alloc();
  muxer->pb = bytes.get();
  copy_parameters(format, stream, *to);
  av_dict_copy(&to->metadata, stream.metadata, 0);
  to->disposition = stream.disposition;
  to->time_base = stream.time_base;
  const LibavLog log;
  const int status = avformat_write_header(muxer.get(), nullptr);
  return status < 0 ? log.reason(status) : "";
}

}  // namespace

std::string stream_text(const AVStream& stream, const std::string& clip) {
  const AVCodecParameters& told = *stream.codecpar;
  const char* kind = av_get_media_type_string(told.codec_type);
  std::string codec = avcodec_get_name(told.codec_id);
  char tag[AV_FOURCC_MAX_STRING_SIZE] = "";
  const bool is_unknown = told.codec_id == AV_CODEC_ID_NONE || told.codec_id == AV_CODEC_ID_BIN_DATA;
  if (is_unknown && told.codec_tag != 0) codec = av_fourcc_make_string(tag, told.codec_tag);
  const AVDictionaryEntry* file = av_dict_get(stream.metadata, "filename", nullptr, 0);
  if (told.codec_type == AVMEDIA_TYPE_ATTACHMENT && file) codec = file->value;
  const std::string where = clip.empty() ? "" : clip + ": ";
  return where + "stream " + std::to_string(stream.index) + " (" + (kind ? kind : "unknown") + ", " + codec + ")";
}

bool is_carried_by_metadata(const AVFormatContext& clip, const AVStream& stream) {
  const AVCodecParameters& told = *stream.codecpar;
  if (told.codec_type != AVMEDIA_TYPE_DATA) return false;
  if (told.codec_tag == kTimeCode) return av_dict_get(stream.metadata, "timecode", nullptr, 0) != nullptr;
  return told.codec_id == AV_CODEC_ID_BIN_DATA && stream.discard == AVDISCARD_ALL && clip.nb_chapters > 0;
}

std::string holding_trouble(const AVOutputFormat& format, const AVStream& stream) {
  // This muxer begins tracks of other data, but leaves them without a description that a reader needs.
  const bool is_data = stream.codecpar->codec_type == AVMEDIA_TYPE_DATA;
  if (is_mov_kind(format) && is_data && stream.codecpar->codec_tag != kActionCamera) return "data of an unknown kind";
  const bool is_cover = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
  if (is_cover && std::strcmp(format.name, "mov") == 0) return "a cover picture";  // begun, but never written
  return trial(format, stream);
}

std::string encoded_trouble(const AVOutputFormat& format, const AVCodecParameters& encoded) {
  if (!avcodec_find_decoder(encoded.codec_id)) return "there is no decoder for it";
  const bool is_mov = is_mov_kind(format);
  if (!is_mov && encoded.codec_id == AV_CODEC_ID_QTRLE) return "there is no place for its depth";
  if (!is_mov || encoded.codec_id != AV_CODEC_ID_RAWVIDEO) return "";
  const AVCodecTag* const known[] = {avformat_get_mov_video_tags(), avformat_get_riff_video_tags(), nullptr};
  const unsigned tag = avcodec_pix_fmt_to_codec_tag(AVPixelFormat(encoded.format));
  return av_codec_get_id(known, tag) == AV_CODEC_ID_RAWVIDEO ? "" : "there is no name for its kind of samples";
}

void tag_for_players(const AVOutputFormat& format, AVCodecParameters& encoded) {
  if (is_mov_kind(format) && encoded.codec_id == AV_CODEC_ID_HEVC) encoded.codec_tag = MKTAG('h', 'v', 'c', '1');
}

void copy_parameters(const AVOutputFormat& format, const AVStream& from, AVStream& to) {
  if (avcodec_parameters_copy(to.codecpar, from.codecpar) < 0) throw std::bad_alloc();
  AVCodecParameters& told = *to.codecpar;
  const bool known = !format.codec_tag || av_codec_get_id(format.codec_tag, told.codec_tag) == told.codec_id ||
                     av_codec_get_tag(format.codec_tag, told.codec_id) == 0;
  if (!known) told.codec_tag = 0;
}

}  // namespace biseam::tool
