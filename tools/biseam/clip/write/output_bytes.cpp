#include "clip/write/output_bytes.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>

#include "base/failure.hpp"

namespace biseam::tool {
namespace {

constexpr int kBufferBytes = 1 << 18;

}  // namespace

OutputBytes::OutputBytes(const std::string& path) : file_(path) {
  struct stat info = {};
  seekable_ = fstat(file_.descriptor(), &info) == 0 && S_ISREG(info.st_mode) && path != "-";
  auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
  if (!buffer) throw std::bad_alloc();
  context_.reset(avio_alloc_context(buffer, kBufferBytes, 1, this, nullptr, write_bytes, seekable_ ? seek_bytes : nullptr));
  if (context_) return;
  av_free(buffer);
  throw std::bad_alloc();
}

int OutputBytes::write_bytes(void* opaque, std::uint8_t* from, int count) {
  auto* self = static_cast<OutputBytes*>(opaque);
  for (int sent = 0; sent < count;) {
    const ssize_t written = ::write(self->file_.descriptor(), from + sent, std::size_t(count - sent));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      self->error_ = written == 0 ? EIO : errno;
      return AVERROR(self->error_);
    }
    sent += int(written);
  }
  return count;
}

std::int64_t OutputBytes::seek_bytes(void* opaque, std::int64_t offset, int whence) {
  auto* self = static_cast<OutputBytes*>(opaque);
  if (whence & AVSEEK_SIZE) {
    struct stat info = {};
    return fstat(self->file_.descriptor(), &info) == 0 ? std::int64_t(info.st_size) : AVERROR(errno);
  }
  const off_t at = lseek(self->file_.descriptor(), offset, whence & ~AVSEEK_FORCE);
  if (at < 0) self->error_ = errno;
  return at >= 0 ? std::int64_t(at) : AVERROR(errno);
}

void OutputBytes::check() const {
  if (error_ == 0) return;
  errno = error_;
  throw system_failure(ExitCode::output, name(), "can't be written");
}

void OutputBytes::sync() {
  flush();
  if (error_ == 0 && ::fsync(file_.descriptor()) != 0) error_ = errno;
}

void OutputBytes::commit() {
  flush();
  check();
  file_.commit();
}

}  // namespace biseam::tool
