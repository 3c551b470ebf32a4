#include "output/replace_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "failure.hpp"

namespace biseam::tool {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  int number() const { return number_; }
  // Some file systems report a full disk only now.
  bool close() {
    const int number = number_;
    number_ = -1;
    return ::close(number) == 0;
  }

 private:
  int number_;
};

// Removes its file unless released.
class UnfinishedFile {
 public:
  explicit UnfinishedFile(std::string path) : path_(std::move(path)) {}
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;
  ~UnfinishedFile() {
    if (!path_.empty()) ::unlink(path_.c_str());
  }
  const std::string& path() const { return path_; }
  void release() { path_.clear(); }

 private:
  std::string path_;
};

bool write_all(int descriptor, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes = bytes.subspan(std::size_t(written));
  }
  return true;
}

using Fill = std::function<void(const WriteBytes&)>;

void write_filled(int descriptor, const std::string& path, const Fill& fill) {
  fill([&](std::span<const std::uint8_t> bytes) {
    if (!write_all(descriptor, bytes)) throw system_failure(ExitCode::output, path, "can't be written");
  });
}

void write_in_place(const std::string& path, const Fill& fill) {
  Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
  if (file.number() < 0) throw system_failure(ExitCode::output, path, "can't be opened for writing");
  write_filled(file.number(), path, fill);
  if (!file.close()) throw system_failure(ExitCode::output, path, "can't be written");
}

mode_t usual_mode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return mode_t(0666) & ~mask;
}

}  // namespace

void replace_file(const std::string& path, const std::function<void(const WriteBytes&)>& fill) {
  struct stat info = {};
  const bool exists = ::stat(path.c_str(), &info) == 0;
  if (exists && S_ISDIR(info.st_mode)) throw Failure(ExitCode::output, path + ": is a folder");
  if (exists && !S_ISREG(info.st_mode)) return write_in_place(path, fill);
  if (exists && ::access(path.c_str(), W_OK) != 0) throw system_failure(ExitCode::output, path, "can't be written");

  const std::string target = exists ? std::filesystem::canonical(path).string() : path;
  std::string name = target + ".XXXXXX";
  Descriptor file(::mkostemp(name.data(), O_CLOEXEC));
  if (file.number() < 0) throw system_failure(ExitCode::output, path, "can't be created");
  UnfinishedFile unfinished(name);
  const mode_t mode = exists ? info.st_mode & mode_t(0777) : usual_mode();
  write_filled(file.number(), path, fill);
  if (::fchmod(file.number(), mode) != 0 || ::fsync(file.number()) != 0 || !file.close() ||
      ::rename(name.c_str(), target.c_str()) != 0) {
    throw system_failure(ExitCode::output, path, "can't be written");
  }
  unfinished.release();
}

void replace_file(const std::string& path, std::span<const std::uint8_t> bytes) {
  replace_file(path, [&](const WriteBytes& write) { write(bytes); });
}

void write_standard_output(const std::function<void(const WriteBytes&)>& fill) {
  write_filled(STDOUT_FILENO, "standard output", fill);
}

void write_standard_output(std::span<const std::uint8_t> bytes) {
  write_standard_output([&](const WriteBytes& write) { write(bytes); });
}

}  // namespace biseam::tool
