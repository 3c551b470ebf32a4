#include "tag/tag_picture.hpp"

#include <stdexcept>
#include <vector>

#include "base/byte_source.hpp"
#include "base/failure.hpp"
#include "base/replace_file.hpp"
#include "picture/decode.hpp"
#include "picture/gpano.hpp"

namespace biseam::tool {
namespace {

constexpr std::size_t kMostBytes = std::size_t(1) << 30;

std::vector<std::uint8_t> read_file(const std::string& path) {
  std::vector<std::uint8_t> bytes = ByteSource(path).read_all(kMostBytes + 1);
  if (bytes.size() > kMostBytes) throw Failure(ExitCode::input, path + ": is larger than 1 GiB");
  return bytes;
}

template <class Work>
auto named(const std::string& path, Work work) {
  try {
    return work();
  } catch (const std::runtime_error& reason) {
    throw Failure(ExitCode::input, path + ": its metadata can't be changed: " + reason.what());
  }
}

}  // namespace

void tag_picture(const TagJob& job, Container& source) {
  decode_picture(source);  // damage is told rather than tagged
  const std::vector<std::uint8_t> bytes = read_file(job.from);
  const Gpano old = named(job.from, [&] { return read_gpano(bytes); });
  if (old.projection == "equirectangular" && old.fits) return keep_marked(job);
  const AVCodecParameters& picture = *source->streams[0]->codecpar;
  check_sides(job, {picture.width, picture.height});
  tell_old_projection(job, old.projection);
  replace_file(job.to, named(job.from, [&] { return with_gpano(bytes); }));
}

}  // namespace biseam::tool
