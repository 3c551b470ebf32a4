// The boxes of MP4 and QuickTime files: a movie of any bytes is left alone, or gets what was asked for and knows its new size;
// so does an index whose packets are to lie elsewhere, and pieces of any bytes say where packets lie, or are refused.
#include <cstdint>
#include <string>
#include <vector>

#include "clip/write/mov_boxes.hpp"
#include "clip/write/sample_places.hpp"
#include "fuzz/expect.hpp"
#include "fuzz/input.hpp"

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
    tracks[k] = {std::uint32_t(k + 1), (choice >> (2 + k) & 1) != 0, choice >= 128 ? "fin" : ""};
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

  std::vector<PacketRun> runs;
  const bool is_piece = read_runs(given, 0, runs);
  std::uint64_t packets = 0;
  for (const PacketRun& run : runs) packets += run.packets;
  if (!is_piece || packets > size) runs = {{1, 64, 2}, {2, 96, 1}, {1, 1ull << 40, 3}};
  movie = given;
  const bool is_placed = place_samples(movie, runs);
  fuzz::expect(is_placed || movie == given, "what doesn't fit is left alone");
  fuzz::expect(!is_placed || told_size(movie) == movie.size(), "a movie knows its size");
  return 0;
}
