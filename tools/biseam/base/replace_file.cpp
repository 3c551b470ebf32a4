#include "base/replace_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <vector>

#include "base/failure.hpp"
#include "base/file_traits.hpp"
#include "base/final_target.hpp"

namespace biseam::tool {
namespace {

mode_t usual_mode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return mode_t(0666) & ~mask;
}

// For mkostemp: the name and six letters more, shortened to what the file system takes, not within a character of UTF-8.
std::string name_beside(const std::string& target) {
  constexpr std::string_view kLetters = ".XXXXXX";
  const std::filesystem::path path = target;
  std::string name = path.filename().string();
  const long limit = ::pathconf(path.parent_path().c_str(), _PC_NAME_MAX);
  std::size_t most = std::size_t(limit > 0 ? limit : 255) - kLetters.size();
  if (name.size() > most) {
    while (most > 0 && (name[most] & 0xc0) == 0x80) --most;
    name.resize(most);
  }
  return (path.parent_path() / (name + std::string(kLetters))).string();
}

// What was renamed in a folder outlasts a power cut.  Not every folder can be opened or synced.
bool sync_folder(const std::string& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return true;
  const bool failed = ::fsync(descriptor) != 0 && errno == EIO;
  ::close(descriptor);
  return !failed;
}

bool write_all(int descriptor, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes = bytes.subspan(std::size_t(written));
  }
  return true;
}

bool copy_bytes(int from, int to) {
  std::vector<std::uint8_t> piece(std::size_t(1) << 20);
  for (;;) {
    const ssize_t got = ::read(from, piece.data(), piece.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    if (!write_all(to, {piece.data(), std::size_t(got)})) return false;
  }
}

// Room for it all before the first old byte is lost.
bool make_room(int descriptor, off_t old_size, off_t size) {
  if (size <= old_size) return true;
  const int trouble = ::posix_fallocate(descriptor, 0, size);
  if (trouble == 0) return true;
  if (::ftruncate(descriptor, old_size) != 0) return false;
  errno = trouble;
  return false;
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    const int reason = errno;
    if (number_ >= 0) ::close(number_);
    errno = reason;
  }
  int number() const { return number_; }

 private:
  int number_;
};

}  // namespace

ReplacementFile::ReplacementFile(const std::string& path)
    : name_(path == "-" ? "standard output" : path), is_standard_output_(path == "-") {
  if (is_standard_output_) {
    descriptor_ = STDOUT_FILENO;
    return;
  }
  struct stat info = {};
  const bool exists = ::stat(path.c_str(), &info) == 0;
  if (!exists && errno != ENOENT) refuse("can't be created");
  if (exists && S_ISDIR(info.st_mode)) throw Failure(ExitCode::output, path + ": is a folder");
  if (exists && !S_ISREG(info.st_mode)) {
    descriptor_ = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor_ < 0) refuse("can't be opened for writing");
    return;
  }
  if (exists && ::access(path.c_str(), W_OK) != 0) refuse("can't be written");
  target_ = final_target(path);
  std::string beside = name_beside(target_);
  descriptor_ = remains_.create(beside);
  if (descriptor_ < 0) refuse("can't be created");
  unfinished_ = beside;
}

ReplacementFile::~ReplacementFile() {
  if (descriptor_ >= 0 && !is_standard_output_) ::close(descriptor_);
  if (!unfinished_.empty()) ::unlink(unfinished_.c_str());
}

void ReplacementFile::write(std::span<const std::uint8_t> bytes) {
  if (!write_all(descriptor_, bytes)) refuse("can't be written");
}

void ReplacementFile::finish_bytes() {
  const int descriptor = descriptor_;
  if (!unfinished_.empty() && ::fsync(descriptor) != 0) refuse("can't be written");
  descriptor_ = -1;
  if (::close(descriptor) != 0) refuse("can't be written");  // some file systems report a full disk only now
}

void ReplacementFile::overwrite() {
  const Descriptor from(::open(unfinished_.c_str(), O_RDONLY | O_CLOEXEC)), to(::open(target_.c_str(), O_WRONLY | O_CLOEXEC));
  struct stat whole = {}, old = {};
  const bool is_open = ::fstat(from.number(), &whole) == 0 && ::fstat(to.number(), &old) == 0;
  if (!is_open || !make_room(to.number(), old.st_size, whole.st_size)) refuse("can't be written");
  const std::string kept = unfinished_;
  remains_.forget();
  unfinished_.clear();  // from here on it is the only whole one
  const bool done =
      copy_bytes(from.number(), to.number()) && ::ftruncate(to.number(), whole.st_size) == 0 && ::fsync(to.number()) == 0;
  if (!done) refuse("can't be written (all of it is in " + kept + ")");
  ::unlink(kept.c_str());
}

void ReplacementFile::rename() {
  if (::rename(unfinished_.c_str(), target_.c_str()) != 0) refuse("can't be written");
  remains_.forget();
  unfinished_.clear();
  if (!sync_folder(std::filesystem::path(target_).parent_path().string())) refuse("can't be written");
}

void ReplacementFile::commit() {
  if (is_standard_output_) return;
  if (unfinished_.empty()) return finish_bytes();
  struct stat old = {};
  const bool exists = ::stat(target_.c_str(), &old) == 0, shares = exists && old.st_nlink > 1;
  if (!shares && !(exists ? copy_traits(target_, descriptor_) : ::fchmod(descriptor_, usual_mode()) == 0)) {
    refuse("can't be written");
  }
  finish_bytes();
  shares ? overwrite() : rename();
}

void ReplacementFile::refuse(const std::string& what) const { throw system_failure(ExitCode::output, name_, what); }

void replace_file(const std::string& path, std::span<const std::uint8_t> bytes) {
  ReplacementFile file(path);
  file.write(bytes);
  file.commit();
}

}  // namespace biseam::tool
