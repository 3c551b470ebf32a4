// Guides whose bytes were changed and whose sum holds again: refused in one line with nothing painted, or followed, by every
// engine to the same bytes and in any company when they are smoothed.
#include <cstdint>
#include <vector>

#include "biseam/panorama.hpp"
#include "fuzz/expect.hpp"
#include "fuzz/input.hpp"

using namespace biseam;

namespace {

constexpr int kLens = 96, kWidth = 128, kFrames = 4;
constexpr std::uint8_t kUntouched = 0xa5;

using Guide = std::vector<std::uint8_t>;

struct Nv12 {
  Nv12(int w, int h) : width(w), height(h), bytes(std::size_t(w * h * 3 / 2), kUntouched) {}
  BiseamPicture record() {
    BiseamPicture picture = picture_defaults();
    picture.format = BISEAM_NV12;
    picture.width = width;
    picture.height = height;
    picture.planes[0] = bytes.data();
    picture.planes[1] = bytes.data() + width * height;
    picture.strides[0] = picture.strides[1] = width;
    return picture;
  }
  int width, height;
  std::vector<std::uint8_t> bytes;
};

// The lens that is further on is brighter, and sees the same a little later.
Nv12 fisheye(int lens, int frame) {
  Nv12 picture(kLens, kLens);
  for (int i = 0; i < kLens * kLens; ++i) {
    const int x = i % kLens, y = i / kLens;
    picture.bytes[std::size_t(i)] = std::uint8_t(40 + 20 * lens * frame + (x / 4 * 37 + (y / 5 + lens) * 59) % 97);
  }
  for (std::size_t i = std::size_t(kLens * kLens); i < picture.bytes.size(); ++i) {
    picture.bytes[i] = std::uint8_t(118 + 7 * lens + int(i) % 9);
  }
  return picture;
}

class Clip {
 public:
  Clip() {
    camera_ = camera_of(kLens, kLens, 200);
    camera_.baseline = 0.03;
    options_.width = kWidth;
    options_.height = kWidth / 2;
    options_.threads = 1;
    options_.quality = BISEAM_QUALITY_FAST;
    options_.seam = BISEAM_SEAM_STEADY;
    options_.light = BISEAM_LIGHT_MATCH;
    options_.near = BISEAM_NEAR_MATCH;
    options_.rate = 8;
    for (int i = 0; i < kFrames; ++i) {
      for (int lens = 0; lens < 2; ++lens) lenses_.push_back(fisheye(lens, i));
    }
    Panorama measures = open();
    for (int i = 0; i < kFrames; ++i) {
      guides_.emplace_back(measures.guide_size());
      fuzz::expect(!measures.measure({lens(i, 0), lens(i, 1)}, guides_.back().data()), "a frame is measured");
    }
  }

  Panorama open() const {
    Panorama panorama = Panorama::open(camera_, options_);
    fuzz::expect(bool(panorama), "an engine is made");
    return panorama;
  }
  const std::vector<Guide>& guides() const { return guides_; }

  PanoramaError stitch(Panorama& panorama, int frame, const Guide* guide, Nv12& to) {
    BiseamFrame choice = frame_defaults();
    if (guide != nullptr) choice.guide = guide->data(), choice.guide_size = guide->size();
    return panorama.stitch({lens(frame, 0), lens(frame, 1)}, to.record(), choice);
  }

 private:
  BiseamPicture lens(int frame, int k) { return lenses_[std::size_t(2 * frame + k)].record(); }

  BiseamCamera camera_;
  BiseamPanoramaOptions options_ = panorama_defaults();
  std::vector<Nv12> lenses_;
  std::vector<Guide> guides_;
};

// The last four bytes, as those have to know who make a guide themselves.
void mend_sum(Guide& guide) {
  std::uint32_t sum = 2166136261;
  for (std::size_t i = 0; i + 4 < guide.size(); ++i) sum = (sum ^ guide[i]) * 16777619;
  for (std::size_t i = 0; i < 4; ++i) guide[guide.size() - 4 + i] = std::uint8_t(sum >> (8 * i));
}

void change(Guide& guide, fuzz::Input& input) {
  while (input.left() >= 3) {
    const std::size_t low = input.byte(), high = input.byte();
    guide[(low + 256 * high) % guide.size()] = input.byte();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Clip clip;
  static Panorama one = clip.open(), other = clip.open();
  fuzz::Input input(data, size);
  const int frame = input.between(0, kFrames - 1);
  std::vector<Guide> guides = clip.guides();
  Guide& changed = guides[std::size_t(frame)];
  change(changed, input);
  mend_sum(changed);

  Nv12 painted(kWidth, kWidth / 2), again = painted, before = painted;
  const PanoramaError refusal = clip.stitch(one, frame, &changed, painted);
  if (refusal) {
    fuzz::expect(refusal.code == BISEAM_INVALID_OPTIONS && fuzz::is_one_line(refusal.text), "a refusal is one line");
    fuzz::expect(painted.bytes == again.bytes, "nothing is painted after a refusal");
  } else {
    fuzz::expect(!clip.stitch(other, (frame + 1) % kFrames, nullptr, before), "a frame finds out for itself");
    fuzz::expect(!clip.stitch(other, frame, &changed, again) && painted.bytes == again.bytes, "what was before has no effect");
  }

  std::vector<const void*> places;
  for (const Guide& guide : guides) places.push_back(guide.data());
  for (int i = 0; i < kFrames; ++i) {
    Guide smoothed(changed.size());
    const PanoramaError error = one.smooth(places.data(), kFrames, i, smoothed.data());
    if (error) {
      fuzz::expect(bool(refusal) && fuzz::is_one_line(error.text), "what can be followed can be smoothed");
    } else {
      fuzz::expect(!clip.stitch(one, i, &smoothed, again), "what is smoothed can be followed");
    }
  }
  return 0;
}
