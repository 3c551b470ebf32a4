// The same panorama from the C interface with every instruction set that is here, from the exported stages called one after the
// other, and from the checked interface.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

#include "base/isa.hpp"
#include "biseam/biseam.h"
#include "biseam/stitcher.hpp"
#include "frame/plain_frame.hpp"
#include "fuzz/expect.hpp"
#include "fuzz/input.hpp"
#include "fuzz/random_config.hpp"

using namespace biseam;
using test::FisheyePair;
using test::FramePlanes;

namespace {

constexpr int kFrames = 2;

// Noise on steps as wide as asked for.
void fill(test::Bytes& plane, std::mt19937& random, int step, int noise) {
  int level = 0;
  for (std::size_t i = 0; i < plane.size(); ++i) {
    if (i % std::size_t(step) == 0) level = static_cast<int>(random() % 256u);
    plane[i] = static_cast<std::uint8_t>(level + static_cast<int>(random() % unsigned(noise)));
  }
}

FisheyePair draw_pictures(fuzz::Input& input, const StitchConfig& config) {
  std::mt19937 random(input.word());
  const int step = input.between(1, 64), noise = input.between(1, 128);
  FisheyePair pair;
  for (FramePlanes& planes : pair) {
    planes.luma.resize(std::size_t(config.in_luma_stride) * std::size_t(config.in_h));
    planes.chroma.resize(std::size_t(config.in_chroma_stride) * std::size_t(config.in_h));
    fill(planes.luma, random, step, noise);
    fill(planes.chroma, random, step, noise);
  }
  return pair;
}

class CEngine {
 public:
  explicit CEngine(StitchConfig& config) {
    if (QOR_Create_BI_Soft(&config, &engine_) != 0) return;
    fuzz::expect(QOR_SetConfig_BI_Soft(&engine_) == 0, "an engine that was made is configured");
  }
  CEngine(const CEngine&) = delete;
  CEngine& operator=(const CEngine&) = delete;
  ~CEngine() {
    if (is_made()) QOR_Destroy_BI_Soft(&engine_);
  }

  // Blocks of the customary sizes have no room for the alignment of every piece at every address.
  bool is_made() const { return engine_ != nullptr; }

  void process(FisheyePair& pictures, FramePlanes& panorama) {
    void* in[16] = {};
    void* out[16] = {};
    in[2] = pictures[0].luma.data();
    in[3] = pictures[1].luma.data();
    in[6] = pictures[0].chroma.data();
    in[7] = pictures[1].chroma.data();
    out[4] = panorama.luma.data();
    out[12] = panorama.chroma.data();
    QOR_Proc_BI_Soft(&engine_, in, out);
  }

  // A position on a lens axis is no number, which the checked interface mends.
  bool has_axis() const {
    const StitchEngine& engine = *engine_;
    const auto holds = [&](const MAPTIHeader& map, int width) {
      for (std::int64_t i = 0; i < std::int64_t{2} * width * engine.config->in_h; ++i) {
        if (std::isnan(map.entries[i])) return true;
      }
      return false;
    };
    return holds(engine.map_left, engine.left_width) || holds(engine.map_middle, engine.middle_width) ||
           holds(engine.map_right, engine.right_width);
  }

 private:
  StitchEngine* engine_ = nullptr;
};

using Panoramas = std::vector<FramePlanes>;

template <class Process>
Panoramas run(const StitchConfig& config, Process process) {
  Panoramas made;
  for (int frame = 0; frame < kFrames; ++frame) {
    made.push_back(test::blank_panorama(config));
    process(made.back());
  }
  return made;
}

void check(StitchConfig config, Stitcher& stitcher, FisheyePair& pictures) {
  test::PlainFrame plain(config);
  const Panoramas expected = run(config, [&](FramePlanes& to) { plain.process(pictures, to); });
  bool has_axis = true;  // unless an engine shows that there is none
  for (const Isa isa : kIsas) {
    if (!limit_isa(isa)) continue;
    CEngine engine(config);
    if (!engine.is_made()) continue;
    has_axis = engine.has_axis();
    const Panoramas made = run(config, [&](FramePlanes& to) { engine.process(pictures, to); });
    fuzz::expect(made == expected, name_of(isa));
  }
  if (has_axis) return;
  // Every frame of the checked interface starts with empty masks, so the second is like the first.
  const Panoramas made = run(config, [&](FramePlanes& to) {
    const FisheyePicture lens[2] = {{pictures[0].luma, pictures[0].chroma}, {pictures[1].luma, pictures[1].chroma}};
    fuzz::expect(!stitcher.process(lens[0], lens[1], {to.luma, to.chroma}), "a frame is stitched");
  });
  fuzz::expect(made[0] == expected[0], "the checked interface");
  fuzz::expect(made[1] == made[0], "a frame does not depend on the one before");
}

}  // namespace

// The C interface prints a line for every frame.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::expect(std::freopen("/dev/null", "w", stdout) != nullptr, "standard output can be turned away");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const StitchConfig config = fuzz::draw_config(input);
  FisheyePair pictures = draw_pictures(input, config);
  Result<Stitcher> made = Stitcher::create(config);
  if (made) check(config, *made, pictures);
  return 0;
}
