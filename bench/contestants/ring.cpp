// This library's ring engine, through its front door, held to an instruction set.
//
// start: what opening the engine and its first frame took, and the MiB it holds.  frame: one more.  save FILE: the panorama.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "biseam/panorama.hpp"
#include "driver/camera.hpp"
#include "driver/isa.hpp"
#include "driver/pictures.hpp"
#include "driver/serve.hpp"

namespace biseam::bench {

namespace {

int32_t quality_of(const std::string& name) {
  return name == "fast" ? BISEAM_QUALITY_FAST : name == "best" ? BISEAM_QUALITY_BEST : BISEAM_QUALITY_GOOD;
}

void check(const PanoramaError& error) {
  if (!error) return;
  std::fprintf(stderr, "ring: %s\n", error.text);
  std::exit(1);
}

// A picture with its planes; of 10 bits, in the upper ones, when it is deep.
class Picture {
 public:
  Picture(const Nv12& bytes, bool deep) : record_(picture_defaults()) {
    const int unit = deep ? 2 : 1;
    for (const std::vector<uint8_t>* plane : {&bytes.luma, &bytes.chroma}) {
      std::vector<uint8_t>& to = planes_[plane == &bytes.luma ? 0 : 1];
      to.resize(plane->size() * unit);
      if (!deep) {
        to = *plane;
        continue;
      }
      uint16_t* const words = reinterpret_cast<uint16_t*>(to.data());
      std::transform(plane->begin(), plane->end(), words, [](uint8_t byte) { return static_cast<uint16_t>(byte << 8); });
    }
    record_.format = deep ? BISEAM_P010 : BISEAM_NV12;
    record_.width = bytes.width;
    record_.height = bytes.height;
    record_.siting = BISEAM_SITING_MIDDLE;
    for (int i = 0; i < 2; ++i) {
      record_.planes[i] = planes_[i].data();
      record_.strides[i] = static_cast<ptrdiff_t>(bytes.width) * unit;
    }
  }
  Picture(Picture&&) = default;

  const BiseamPicture& record() const { return record_; }

  // Eight bits of them.
  void copy_to(Nv12& bytes) const {
    const bool deep = record_.format == BISEAM_P010;
    for (std::vector<uint8_t>* plane : {&bytes.luma, &bytes.chroma}) {
      const std::vector<uint8_t>& from = planes_[plane == &bytes.luma ? 0 : 1];
      for (std::size_t i = 0; i < plane->size(); ++i) {
        (*plane)[i] = deep ? static_cast<uint8_t>(reinterpret_cast<const uint16_t*>(from.data())[i] >> 8) : from[i];
      }
    }
  }

 private:
  std::vector<uint8_t> planes_[2];
  BiseamPicture record_;
};

class Ring {
 public:
  explicit Ring(const Setup& setup)
      : output_(setup.width, setup.size()),
        fisheyes_{Picture(read_fisheye(setup, 0), deep(setup)), Picture(read_fisheye(setup, 1), deep(setup))},
        panorama_(output_, deep(setup)) {
    BiseamPanoramaOptions options = panorama_defaults();
    options.width = setup.width;
    options.height = setup.size();
    options.format = deep(setup) ? BISEAM_P010 : BISEAM_NV12;
    options.quality = quality_of(setup.quality);
    options.threads = setup.threads;
    if (setup.light == "match") options.light = BISEAM_LIGHT_MATCH;
    if (setup.near == "on") options.near = BISEAM_NEAR_MATCH;
    if (setup.seams == "steady") options.seam = BISEAM_SEAM_STEADY;
    const BiseamCamera camera = make_record(make_camera(setup));
    const Stopwatch watch;
    engine_ = Panorama::open(camera, options);
    check(engine_.error());
    stitch();
    watch.stop("first", start_);
    start_.emplace_back("memory_mib", static_cast<double>(engine_.memory()) / (1 << 20));
  }

  Commands commands() {
    return {{"start", [this](const std::string&) { return start_; }},
            {"frame",
             [this](const std::string&) {
               Figures figures;
               const Stopwatch watch;
               stitch();
               watch.stop("frame", figures);
               return figures;
             }},
            {"save", [this](const std::string& file) {
               panorama_.copy_to(output_);
               save(output_, file);
               return Figures{};
             }}};
  }

 private:
  static bool deep(const Setup& setup) { return setup.format == "p010"; }

  void stitch() {
    const BiseamPicture fisheyes[2] = {fisheyes_[0].record(), fisheyes_[1].record()};
    check(engine_.stitch(fisheyes, panorama_.record()));
  }

  Nv12 output_;
  Picture fisheyes_[2], panorama_;
  Panorama engine_;
  Figures start_;
};

}  // namespace

}  // namespace biseam::bench

int main(int argc, char** argv) {
  using namespace biseam::bench;
  const Server server;
  const Setup setup = read_setup(argc, argv);
  hold_to_isa(setup);
  return server.serve(Ring(setup).commands());
}
