#include "base/replace_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "base/failure.hpp"

namespace biseam::tool {
namespace {

int usual_mode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return int(mode_t(0666) & ~mask);
}

}  // namespace

ReplacementFile::ReplacementFile(const std::string& path)
    : name_(path == "-" ? "standard output" : path), is_standard_output_(path == "-") {
  if (is_standard_output_) {
    descriptor_ = STDOUT_FILENO;
    return;
  }
  struct stat info = {};
  const bool exists = ::stat(path.c_str(), &info) == 0;
  if (exists && S_ISDIR(info.st_mode)) throw Failure(ExitCode::output, path + ": is a folder");
  if (exists && !S_ISREG(info.st_mode)) {
    descriptor_ = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor_ < 0) refuse("can't be opened for writing");
    return;
  }
  if (exists && ::access(path.c_str(), W_OK) != 0) refuse("can't be written");
  target_ = exists ? std::filesystem::canonical(path).string() : path;
  mode_ = exists ? int(info.st_mode & mode_t(0777)) : usual_mode();
  std::string beside = target_ + ".XXXXXX";
  descriptor_ = ::mkostemp(beside.data(), O_CLOEXEC);
  if (descriptor_ < 0) refuse("can't be created");
  unfinished_ = beside;
}

ReplacementFile::~ReplacementFile() {
  if (descriptor_ >= 0 && !is_standard_output_) ::close(descriptor_);
  if (!unfinished_.empty()) ::unlink(unfinished_.c_str());
}

void ReplacementFile::write(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) refuse("can't be written");
    bytes = bytes.subspan(std::size_t(written));
  }
}

void ReplacementFile::commit() {
  if (is_standard_output_) return;
  const bool renames = !unfinished_.empty();
  if (renames && (::fchmod(descriptor_, mode_t(mode_)) != 0 || ::fsync(descriptor_) != 0)) refuse("can't be written");
  const int descriptor = descriptor_;
  descriptor_ = -1;
  if (::close(descriptor) != 0) refuse("can't be written");  // some file systems report a full disk only now
  if (renames && ::rename(unfinished_.c_str(), target_.c_str()) != 0) refuse("can't be written");
  unfinished_.clear();
}

void ReplacementFile::refuse(const char* what) const { throw system_failure(ExitCode::output, name_, what); }

void replace_file(const std::string& path, std::span<const std::uint8_t> bytes) {
  ReplacementFile file(path);
  file.write(bytes);
  file.commit();
}

}  // namespace biseam::tool
