#include "base/distinct_files.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <utility>

#include "base/failure.hpp"
#include "base/final_target.hpp"

namespace biseam::tool {
namespace {

struct Place {
  std::string text;  // for messages
  std::optional<std::pair<dev_t, ino_t>> file;
  std::string path;  // of what is not there yet

  bool is(const Place& other) const { return (file && file == other.file) || (!path.empty() && path == other.path); }
};

// stream: the descriptor that "-" stands for.
Place place_of(const NamedFile& named, int stream) {
  const bool is_stream = named.path == "-";
  Place place{named.role + (is_stream ? std::string(" -") : " " + named.path), std::nullopt, ""};
  struct stat info = {};
  const bool exists = (is_stream ? ::fstat(stream, &info) : ::stat(named.path.c_str(), &info)) == 0;
  if (exists && S_ISREG(info.st_mode)) place.file = std::pair(info.st_dev, info.st_ino);
  if (!exists && !is_stream) place.path = final_target(named.path);
  return place;
}

}  // namespace

void check_distinct(const std::vector<NamedFile>& inputs, const std::vector<NamedFile>& outputs) {
  std::vector<Place> taken;
  for (const NamedFile& input : inputs) {
    if (!input.path.empty()) taken.push_back(place_of(input, STDIN_FILENO));
  }
  for (const NamedFile& output : outputs) {
    if (output.path.empty()) continue;
    const Place place = place_of(output, STDOUT_FILENO);
    for (const Place& other : taken) {
      if (place.is(other)) throw Failure(ExitCode::usage, place.text + ": is the same file as " + other.text);
    }
    taken.push_back(place);
  }
}

}  // namespace biseam::tool
