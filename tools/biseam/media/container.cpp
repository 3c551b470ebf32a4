#include "media/container.hpp"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>

#include "base/failure.hpp"
#include "base/interrupt.hpp"

namespace biseam::tool {
namespace {

constexpr int kBufferBytes = 1 << 16;
constexpr int kMostRefusals = 64;  // after so many in a row the rest is given up
constexpr int kPatience = 100;     // milliseconds between two looks for an interrupt

// False when reading was stopped.
bool wait_for_bytes(int descriptor) {
  pollfd watched = {descriptor, POLLIN, 0};
  while (!is_reading_stopped()) {
    if (poll(&watched, 1, kPatience) > 0) return true;
  }
  return false;
}

Libav<AVDictionary> raw_options(const RawVideo& raw) {
  AVDictionary* options = nullptr;
  const std::string size = std::to_string(raw.size.width) + "x" + std::to_string(raw.size.height);
  const std::string rate = std::to_string(raw.rate.num) + "/" + std::to_string(raw.rate.den);
  av_dict_set(&options, "pixel_format", "nv12", 0);
  av_dict_set(&options, "video_size", size.c_str(), 0);
  av_dict_set(&options, "framerate", rate.c_str(), 0);
  return Libav<AVDictionary>(options);
}

}  // namespace

Container::Container(const std::string& path, const std::optional<RawVideo>& raw) : source_(path) {
  struct stat info = {};
  waits_ = fstat(source_.descriptor(), &info) != 0 || !S_ISREG(info.st_mode);
  keeps_ = waits_ && !raw;
  open_bytes();
  open_format(raw);
}

int Container::read_bytes(void* opaque, std::uint8_t* to, int count) {
  auto* self = static_cast<Container*>(opaque);
  const int descriptor = self->source_.descriptor();
  if (is_reading_stopped() || (self->waits_ && !wait_for_bytes(descriptor))) return AVERROR_EXIT;
  ssize_t got = 0;
  do {
    got = ::read(descriptor, to, std::size_t(count));
  } while (got < 0 && errno == EINTR);
  if (got < 0) self->read_error_ = errno;
  if (got < 0) return AVERROR(self->read_error_);
  if (self->keeps_) self->kept_.insert(self->kept_.end(), to, to + got);
  return got == 0 ? AVERROR_EOF : int(got);
}

std::int64_t Container::seek_bytes(void* opaque, std::int64_t offset, int whence) {
  const int descriptor = static_cast<Container*>(opaque)->source_.descriptor();
  if (whence & AVSEEK_SIZE) {
    struct stat info = {};
    return fstat(descriptor, &info) == 0 ? std::int64_t(info.st_size) : AVERROR(errno);
  }
  const off_t at = lseek(descriptor, offset, whence & ~AVSEEK_FORCE);
  return at >= 0 ? std::int64_t(at) : AVERROR(errno);
}

void Container::open_bytes() {
  auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
  if (!buffer) throw std::bad_alloc();
  bytes_.reset(avio_alloc_context(buffer, kBufferBytes, 0, this, read_bytes, nullptr, waits_ ? nullptr : seek_bytes));
  if (bytes_) return;
  av_free(buffer);
  throw std::bad_alloc();
}

void Container::open_format(const std::optional<RawVideo>& raw) {
  AVFormatContext* format = avformat_alloc_context();
  if (!format) throw std::bad_alloc();
  format->pb = bytes_.get();
  format->protocol_whitelist = av_strdup("none");
  Libav<AVDictionary> options;
  if (raw) options = raw_options(*raw);
  AVDictionary* taken = options.release();
  const int status = avformat_open_input(&format, "", raw ? av_find_input_format("rawvideo") : nullptr, &taken);
  options.reset(taken);
  if (status >= 0) format_.reset(format);
  check_bytes();
  if (status < 0) refuse("holds no picture or clip of a known kind");
  if (!is_picture()) {
    keeps_ = false;
    kept_ = {};
  }
  const int found = avformat_find_stream_info(format, nullptr);
  check_bytes();
  if (found < 0) refuse("is damaged or cut short");
}

bool Container::is_picture() const {
  const std::string kind = format_->iformat->name;
  return kind == "image2" || kind.ends_with("_pipe");
}

std::vector<std::uint8_t> Container::file_bytes() const {
  if (waits_) return kept_;
  constexpr std::size_t kPiece = std::size_t(1) << 20;
  std::vector<std::uint8_t> bytes;
  for (std::size_t used = 0;;) {
    bytes.resize(used + kPiece);
    const ssize_t got = ::pread(source_.descriptor(), &bytes[used], kPiece, off_t(used));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw system_failure(ExitCode::input, name(), "can't be read");
    used += std::size_t(got);
    bytes.resize(used);
    if (got == 0) return bytes;
  }
}

bool Container::is_seekable() const { return !waits_; }

Container::Read Container::read(AVPacket& packet) {
  const int status = av_read_frame(format_.get(), &packet);
  check_bytes();
  if (status >= 0) {
    refusals_ = 0;
    return Read::packet;
  }
  const bool ended = status == AVERROR_EOF || status == AVERROR_EXIT;
  return ended || ++refusals_ > kMostRefusals ? Read::end : Read::damage;
}

void Container::check_bytes() const {
  if (read_error_ == 0) return;
  errno = read_error_;
  throw system_failure(ExitCode::input, name(), "can't be read");
}

void Container::refuse(const std::string& what) const { throw Failure(ExitCode::input, name() + ": " + what); }

}  // namespace biseam::tool
