#include "media/lens_streams.hpp"

#include <utility>
#include <vector>

#include "base/failure.hpp"
#include "media/display.hpp"

namespace biseam::tool {
namespace {

bool is_video(const AVStream& stream) {
  return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
}

Size size_of(const AVStream& stream) { return {stream.codecpar->width, stream.codecpar->height}; }

bool is_of_one_lens(AVFormatContext& clip, AVStream& stream) {
  const Display display = display_of(clip, stream);
  Size shown = square_size(size_of(stream), display.pixel).value_or(Size{});
  if (display.turn % 180 != 0) std::swap(shown.width, shown.height);
  return shown.width < 2 * shown.height && shown.height < 2 * shown.width;
}

void check(const Container& file, const LensStreams& streams) {
  for (const int number : streams) {
    const std::string subject = "stream " + std::to_string(number);
    if (number >= int(file->nb_streams)) {
      file.refuse("has no " + subject + ", only 0 to " + std::to_string(int(file->nb_streams) - 1));
    }
    if (!is_video(*file->streams[number])) file.refuse(subject + " is no video");
  }
  const Size first = size_of(*file->streams[streams[0]]), second = size_of(*file->streams[streams[1]]);
  if (first == second) return;
  file.refuse("stream " + std::to_string(streams[0]) + " has pictures of " + size_text(first) + ", stream " +
              std::to_string(streams[1]) + " of " + size_text(second) + "; those of both lenses must be of one size");
}

}  // namespace

std::optional<LensStreams> find_lens_streams(const Container& file) {
  std::vector<AVStream*> videos;
  for (unsigned k = 0; k < file->nb_streams; ++k) {
    if (is_video(*file->streams[k])) videos.push_back(file->streams[k]);
  }
  if (videos.size() != 2 || size_of(*videos[0]) != size_of(*videos[1])) return std::nullopt;
  for (AVStream* video : videos) {
    if (!is_of_one_lens(*file.get(), *video)) return std::nullopt;
  }
  return LensStreams{videos[0]->index, videos[1]->index};
}

std::optional<LensStreams> choose_lens_streams(const Container& file, const StreamChoice& choice) {
  std::optional<LensStreams> streams = choice.wanted;
  if (streams) check(file, *streams);
  if (!streams && choice.may_be_found) streams = find_lens_streams(file);
  if (!streams) return std::nullopt;
  if (!file.is_seekable()) file.refuse("streams of two lenses can only be read from a file, not from a pipe");
  if (!choice.wanted) {
    notice(file.name() + ": stream " + std::to_string(streams->front()) + " is taken as lens 0, stream " +
           std::to_string(streams->back()) + " as lens 1");
  }
  return streams;
}

}  // namespace biseam::tool
