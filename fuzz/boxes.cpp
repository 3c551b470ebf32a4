// The boxes of QuickTime files: a movie of any bytes is left alone, or gets what was asked for and knows its new size; a file
// of any bytes has a movie at its end, or none.
#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "clip/write/mov_boxes.hpp"
#include "fuzz/expect.hpp"
#include "fuzz/input.hpp"
#include "fuzz/memory_file.hpp"

using namespace biseam;
using namespace biseam::tool;

namespace {

std::size_t told_size(const std::vector<std::uint8_t>& box) {
  return std::size_t(box[0]) << 24 | std::size_t(box[1]) << 16 | std::size_t(box[2]) << 8 | box[3];
}

// The last byte tells how many tracks there are, which of them are spherical, and their language.
std::vector<TrackAddition> additions(int choice) {
  std::vector<TrackAddition> tracks(std::size_t(choice % 4));
  for (std::size_t k = 0; k < tracks.size(); ++k) {
    tracks[k] = {(choice >> (2 + k) & 1) != 0, choice >= 128 ? "fin" : ""};
  }
  return tracks;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<std::uint8_t> given(data, data + size);
  std::vector<std::uint8_t> movie = given;
  const bool done = add_to_tracks(movie, additions(size == 0 ? 0 : data[size - 1]));
  fuzz::expect(done || movie == given, "what is refused is left alone");
  fuzz::expect(!done || (movie.size() >= given.size() && told_size(movie) == movie.size()), "a movie knows its size");

  const fuzz::MemoryFile file(data, size);
  if (const std::optional<MovieBox> found = read_movie(file.descriptor())) {
    const std::size_t at = std::size_t(found->at);
    fuzz::expect(at + found->bytes.size() == size, "the movie is the last box");
    fuzz::expect(std::equal(found->bytes.begin(), found->bytes.end(), data + at), "its bytes are those of the file");
    fuzz::expect(std::string(data + at + 4, data + at + 8) == "moov", "it is a movie");
  }
  return 0;
}
