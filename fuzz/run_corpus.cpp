// Runs a target over files, without a fuzzer: run_corpus FILE-OR-FOLDER...  So the files of a corpus are tests of every build.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> files_of(const fs::path& place) {
  if (!fs::is_directory(place)) return {place};
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(place)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

bool run(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  std::fprintf(stderr, "%s\n", path.filename().c_str());  // the last one named is the one that a crash is about
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  return true;
}

}  // namespace

// A target may have one of its own.
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int*, char***) { return 0; }

int main(int count, char** arguments) {
  LLVMFuzzerInitialize(&count, &arguments);
  std::size_t ran = 0;
  for (int k = 1; k < count; ++k) {
    for (const fs::path& path : files_of(arguments[k])) {
      if (!run(path)) {
        std::fprintf(stderr, "%s: can't be read\n", path.c_str());
        return 1;
      }
      ++ran;
    }
  }
  std::fprintf(stderr, "%zu files\n", ran);
  return ran == 0 ? 1 : 0;  // a corpus without files tests nothing
}
