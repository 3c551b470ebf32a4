// Metadata in pictures: XMP and the mark of a panorama, put into any JPEG or PNG file and found there again; whatever else a
// file says goes into another one.
#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "fuzz/expect.hpp"
#include "fuzz/input.hpp"
#include "fuzz/media_file.hpp"
#include "picture/encode.hpp"
#include "picture/gpano.hpp"
#include "picture/metadata.hpp"
#include "picture/xmp_place.hpp"

using namespace biseam;
using namespace biseam::tool;

namespace {

using Bytes = std::vector<std::uint8_t>;

template <class Attempt>
void try_to(Attempt attempt) {
  try {
    attempt();
  } catch (const std::runtime_error& refusal) {
    fuzz::expect(fuzz::is_one_line(refusal.what()), "a refusal is one line");
  }
}

void place(const Bytes& file) {
  const std::string block = "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>";
  const Bytes placed = place_xmp(file, block);
  const auto found = std::search(placed.begin(), placed.end(), block.begin(), block.end());
  fuzz::expect(found != placed.end(), "the block is there");
  fuzz::expect(place_xmp(placed, block) == placed, "a block takes the place of the old one");
}

void mark(const Bytes& file) {
  const Bytes marked = with_gpano(file);
  fuzz::expect(read_gpano(marked).projection == "equirectangular", "the mark is found");
}

void take_along(const Bytes& file) {
  static const Bytes other = encode_png(Rgb(8, 4));
  const Metadata metadata = read_metadata(file);
  const MarkedFile marked = with_metadata(other, metadata, {8, 4}, false);
  fuzz::expect(marked.bytes.size() >= 8 && std::equal(other.begin(), other.begin() + 8, marked.bytes.begin()),
               "it is a PNG file");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::be_quiet();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes file(data, data + size);
  try_to([&] { place(file); });
  try_to([&] { read_gpano(file); });
  try_to([&] { mark(file); });
  try_to([&] { take_along(file); });
  return 0;
}
