// `biseam tag` on any file: refused in one line with nothing written, or marked, so that a second run changes no byte.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "base/failure.hpp"
#include "fuzz/input.hpp"
#include "fuzz/media_file.hpp"
#include "tag/tag_file.hpp"

using namespace biseam;
using namespace biseam::tool;

namespace {

// In memory where the host has such a place.
class Folder {
 public:
  Folder() : path_(std::filesystem::exists("/dev/shm") ? "/dev/shm/biseam-XXXXXX" : "/tmp/biseam-XXXXXX") {
    fuzz::expect(mkdtemp(path_.data()) != nullptr, "a folder can be made");
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { std::filesystem::remove_all(path_); }

  std::string operator/(const char* name) const { return path_ + "/" + name; }
  bool is_empty() const { return std::filesystem::is_empty(path_); }

 private:
  std::string path_;
};

std::string bytes_of(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool takes_long(const std::string& path) {
  const Container opened(path);
  return fuzz::takes_long(opened);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::be_quiet();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Folder folder;
  const std::string marked = folder / "marked";
  const fuzz::MemoryFile file(data, size);
  try {
    if (takes_long(file.path())) return 0;
    tag_file(file.path(), marked);
  } catch (const Failure& refusal) {
    fuzz::expect(fuzz::is_one_line(refusal.what()), "a refusal is one line");
    fuzz::expect(folder.is_empty(), "nothing is written");
    return 0;
  }
  const std::string first = bytes_of(marked);
  tag_file(marked, "");
  fuzz::expect(bytes_of(marked) == first, "a marked file stays as it is");
  std::filesystem::remove(marked);
  return 0;
}
