#include "clip/read/open_clips.hpp"

#include "picture/read_picture.hpp"

namespace biseam::tool {
namespace {

std::unique_ptr<Container> open_file(const std::string& path, const ClipFiles& files) {
  if (!files.raw) refuse_raw_name(path);
  return std::make_unique<Container>(path, files.raw);
}

}  // namespace

std::unique_ptr<Container> open_first(const ClipFiles& files) { return open_file(files.paths.front(), files); }

void settle_streams(const Container& first, ClipFiles& files) {
  const bool is_one = files.paths.size() == 1;
  files.streams = {is_one ? choose_lens_streams(first, files.streams) : std::nullopt, false};
}

PairReader open_clips(const ClipFiles& files, std::unique_ptr<Container> first) {
  const auto reader = [&](std::unique_ptr<Container> container, int lens) {
    const std::optional<LensStreams>& lenses = files.streams.wanted;
    auto made = lenses ? std::make_unique<ClipReader>(std::move(container), files.strict, *lenses, lens)
                       : std::make_unique<ClipReader>(std::move(container), files.strict);
    if (files.are_known) made->read_silently();
    return made;
  };
  std::unique_ptr<ClipReader> clip0 = reader(std::move(first), 0), clip1;
  if (files.streams.wanted || files.paths.size() == 2) clip1 = reader(open_file(files.paths.back(), files), 1);
  return PairReader(std::move(clip0), std::move(clip1), files.offset);
}

}  // namespace biseam::tool
