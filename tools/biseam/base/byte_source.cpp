#include "base/byte_source.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "base/failure.hpp"

namespace biseam::tool {

ByteSource::ByteSource(const std::string& path)
    : name_(path == "-" ? "standard input" : path), stream_(path == "-" ? stdin : std::fopen(path.c_str(), "rb")) {
  if (!stream_) throw system_failure(ExitCode::input, name_, "can't be opened");
  struct stat info = {};
  if (fstat(fileno(stream_.get()), &info) == 0 && S_ISDIR(info.st_mode)) {
    throw Failure(ExitCode::input, name_ + ": is a folder, not a picture");
  }
}

std::vector<std::uint8_t> ByteSource::read_all(std::size_t limit) {
  std::vector<std::uint8_t> bytes;
  std::size_t used = 0;
  while (used < limit) {
    bytes.resize(std::min(limit, used + (std::size_t(1) << 20)));
    const std::size_t got = std::fread(bytes.data() + used, 1, bytes.size() - used, stream());
    used += got;
    if (got == 0) break;
  }
  if (std::ferror(stream())) throw system_failure(ExitCode::input, name_, "can't be read");
  bytes.resize(used);
  return bytes;
}

void ByteSource::Close::operator()(std::FILE* stream) const {
  if (stream != stdin) std::fclose(stream);
}

}  // namespace biseam::tool
