#include "view/panorama_file.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string_view>

#include "base/byte_source.hpp"
#include "base/failure.hpp"
#include "media/libav.hpp"
#include "picture/decode.hpp"

namespace biseam::tool {
namespace {

using Head = std::array<std::uint8_t, 64>;

[[noreturn]] void refuse(const std::string& path, const std::string& what) {
  throw Failure(ExitCode::input, path + ": " + what);
}

std::uint64_t measure_file(const std::string& path) {
  struct stat info = {};
  if (::stat(path.c_str(), &info) != 0) throw system_failure(ExitCode::input, path, "can't be opened");
  if (!S_ISREG(info.st_mode)) refuse(path, "is not a regular file, which a page needs");
  return std::uint64_t(info.st_size);
}

Head read_head(const std::string& path) {
  Head head = {};
  const std::vector<std::uint8_t> bytes = ByteSource(path).read_all(head.size());
  std::copy(bytes.begin(), bytes.end(), head.begin());
  return head;
}

Media recognise(const std::string& path, const Head& head) {
  const auto starts = [&](std::size_t at, std::string_view text) {
    return std::memcmp(&head[at], text.data(), text.size()) == 0;
  };
  if (starts(0, "\xff\xd8\xff")) return Media::jpeg;
  if (starts(0, "\x89PNG\r\n\x1a\n")) return Media::png;
  if (starts(4, "ftyp")) return Media::mp4;
  const std::string_view text(reinterpret_cast<const char*>(head.data()), head.size());
  if (starts(0, "\x1a\x45\xdf\xa3") && text.find("webm") != text.npos) return Media::webm;
  refuse(path, "is not a JPEG, PNG, MP4 or WebM file, which browsers show");
}

bool has_alpha(const Head& png) {
  constexpr std::size_t kColourType = 25;  // in the header chunk, which comes first
  return (png[kColourType] & 4) != 0;
}

void inspect_picture(PanoramaFile& file, const Head& head) {
  Container source(file.path);
  const DecodedPicture picture = decode_picture(source);
  file.size = {picture.frame->width, picture.frame->height};
  file.transparent = file.media == Media::png && has_alpha(head);
}

const AVStream* find_video(const PanoramaFile& file, AVFormatContext* container) {
  if (avformat_find_stream_info(container, nullptr) < 0) refuse(file.path, "damaged or cut short");
  const int stream = av_find_best_stream(container, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (stream < 0) refuse(file.path, "holds no video");
  return container->streams[stream];
}

bool is_common(const AVCodecParameters& video) {
  const auto format = AVPixelFormat(video.format);
  const bool plain = format == AV_PIX_FMT_YUV420P || format == AV_PIX_FMT_YUVJ420P;
  switch (video.codec_id) {
    case AV_CODEC_ID_H264:
    case AV_CODEC_ID_VP8:
      return plain;
    case AV_CODEC_ID_VP9:
    case AV_CODEC_ID_AV1:
      return plain || format == AV_PIX_FMT_YUV420P10;
    default:
      return false;
  }
}

void inspect_video(PanoramaFile& file) {
  AVFormatContext* opened = nullptr;
  const int status = avformat_open_input(&opened, ("file:" + file.path).c_str(), nullptr, nullptr);
  if (status < 0) refuse(file.path, "damaged or cut short: " + libav_reason(status));
  const Libav<AVFormatContext> container(opened);
  const AVCodecParameters& video = *find_video(file, container.get())->codecpar;
  if (video.width < 2 || video.height < 2) refuse(file.path, "damaged or cut short: its pictures have no size");
  file.size = {video.width, video.height};
  if (is_common(video)) return;
  const char* pixels = av_get_pix_fmt_name(AVPixelFormat(video.format));
  file.notices.push_back(file.path + ": not every browser plays " + avcodec_get_name(video.codec_id) + " video" +
                         (pixels ? std::string(" of ") + pixels : "") + "; 4:2:0 H.264, VP9 and AV1 of 8 bits are safe");
}

}  // namespace

PanoramaFile inspect_panorama(const std::string& path) {
  PanoramaFile file;
  file.path = path;
  file.bytes = measure_file(path);
  const Head head = read_head(path);
  file.media = recognise(path, head);
  is_video(file.media) ? inspect_video(file) : inspect_picture(file, head);
  if (file.size.width != file.size.height * 2) {
    file.notices.push_back(path + ": " + size_text(file.size) +
                           " pixels, but a whole panorama is twice as wide as high; what is missing stays empty");
  }
  return file;
}

bool is_video(Media media) { return media == Media::mp4 || media == Media::webm; }

const char* mime_type(Media media) {
  constexpr const char* kTypes[] = {"image/jpeg", "image/png", "video/mp4", "video/webm"};
  return kTypes[std::size_t(media)];
}

const char* extension(Media media) {
  constexpr const char* kExtensions[] = {".jpg", ".png", ".mp4", ".webm"};
  return kExtensions[std::size_t(media)];
}

void check_seams(const PanoramaFile& seams, const PanoramaFile& panorama) {
  if (is_video(seams.media)) refuse(seams.path, "is a video; bands and seams are shown from a picture");
  const std::int64_t across = std::int64_t(seams.size.width) * panorama.size.height;
  if (across != std::int64_t(seams.size.height) * panorama.size.width) {
    refuse(seams.path, size_text(seams.size) + " pixels, which don't fit over the panorama's " + size_text(panorama.size));
  }
  if (is_video(panorama.media) && !seams.transparent) {
    refuse(seams.path, "would hide the video; `biseam stitch --seam-layer` writes one that can be looked through");
  }
}

}  // namespace biseam::tool
