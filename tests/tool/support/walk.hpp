// A short stay in the virtual courtyard, where two balls fly over the seams, as a camera with two fisheyes sees it.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "picture/encode.hpp"
#include "scene/film.hpp"
#include "tool/support/places.hpp"
#include "tool/support/process.hpp"
#include "tool/support/sphere.hpp"

namespace biseam::test {

inline constexpr int kWalkWidth = 240;  // of the panoramas

// The circle of 195 degrees just fits.
inline FisheyeView walk_view() { return {120, 120, 59.5, 59.5, 60 / radians(97.5)}; }

// Ten steps a second.  The pupils of the lenses lie apart, so that there is a seam to search.  Pictures are kept, as most tests
// begin with the same ones.
inline const tool::Nv12& walk_lens(int index, int step) {
  using namespace scene;
  static std::map<std::pair<int, int>, tool::Nv12> kept;
  tool::Nv12& seen = kept[{index, step}];
  if (seen.width > 0) return seen;
  static Place place;
  const auto view = [](int lens) { return view_of(Fisheye::fitting(lens, kWalkWidth / 2, radians(195)), 0.1); };
  static const Film films[2] = {Film(view(0), place), Film(view(1), place)};
  place.go_to(step / 10.0);
  tool::Rgb picture(kWalkWidth / 2, kWalkWidth / 2);
  picture.bytes = develop(films[index].picture(place), {});
  return seen = tool::to_nv12(picture);
}

// The second picture beside the first, or below.
inline tool::Nv12 join(const tool::Nv12& a, const tool::Nv12& b, bool across) {
  tool::Nv12 both(across ? a.width * 2 : a.width, across ? a.height : a.height * 2);
  const auto put = [&](const std::vector<std::uint8_t>& from, std::vector<std::uint8_t>& to, std::size_t part) {
    const std::size_t width = std::size_t(a.width), rows = from.size() / width;
    for (std::size_t y = 0; y < rows; ++y) {
      const std::size_t at = across ? (2 * y + part) * width : (y + part * rows) * width;
      std::copy_n(from.begin() + std::ptrdiff_t(y * width), width, to.begin() + std::ptrdiff_t(at));
    }
  };
  put(a.luma, both.luma, 0);
  put(b.luma, both.luma, 1);
  put(a.chroma, both.chroma, 0);
  put(b.chroma, both.chroma, 1);
  return both;
}

inline std::vector<tool::Nv12> walk(int frames, bool across = true) {
  std::vector<tool::Nv12> all;
  for (int step = 0; step < frames; ++step) all.push_back(join(walk_lens(0, step), walk_lens(1, step), across));
  return all;
}

inline std::string raw_bytes(const tool::Nv12& picture) {
  const auto bytes = tool::encode_raw(picture);
  return {bytes.begin(), bytes.end()};
}

inline std::string raw_bytes(const std::vector<tool::Nv12>& pictures) {
  std::string all;
  for (const tool::Nv12& picture : pictures) all += raw_bytes(picture);
  return all;
}

inline std::vector<std::string> with(std::vector<std::string> words, const std::vector<std::string>& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

inline Finished run_stitch(const std::vector<std::string>& arguments, const std::string& input = "") {
  return run(with({kTool, "stitch"}, arguments), input);
}

// Each pair stitched as a picture by itself.
inline std::string stitch_singly(const std::vector<tool::Nv12>& pairs, const std::vector<std::string>& more = {}) {
  std::string all;
  for (const tool::Nv12& pair : pairs) {
    const std::string size = std::to_string(pair.width) + "x" + std::to_string(pair.height);
    const Finished finished = run_stitch(with({"-", "--size", size, "-o", "-"}, more), raw_bytes(pair));
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
    all += finished.out;
  }
  return all;
}

// So that the tool has nothing to tell.
inline std::vector<std::string> known_lenses() {
  const std::string p = std::to_string(walk_view().p);
  return {"--p0", p, "--p1", p};
}

// Lenses whose views and light are taken as they are.
inline std::vector<std::string> unmatched() { return with(known_lenses(), {"--near", "off", "--light", "off"}); }

// Of clips every picture of which is stitched like one alone.
inline std::vector<std::string> as_pictures() { return with(unmatched(), {"--seams", "free"}); }

}  // namespace biseam::test
