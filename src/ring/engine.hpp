// The ring engine: two fisheye pictures to one panorama.  Nothing is checked here; the door does.
#pragma once

#include <cstddef>
#include <cstdint>

#include "camera/camera.hpp"
#include "ring/format.hpp"
#include "ring/guide/guide.hpp"
#include "ring/light/tone.hpp"
#include "ring/state.hpp"
#include "ring/strip/strips.hpp"

namespace biseam::ring {

struct EngineConfig {
  Camera camera;      // valid; pictures of the lenses' sizes
  int width, height;  // of the panorama
  int format;         // of biseam/panorama.h, as quality and seam mode
  bool full_range;    // black is 0
  Quality quality;
  SeamMode seam;
  int threads;               // 1 .. kMostThreads
  bool steady_seam = false;  // where it is searched
  bool match_light = false;
  bool match_near = false;  // where the ring is wide enough
  Transfer transfer = Transfer::usual;
  double rate = 30;  // frames a second, for what is smooth in time
};

// A picture's planes; samples are of the engine's format.  Fisheye pictures are only read.
struct PicturePlanes {
  uint8_t* first[kMostPlanes];
  ptrdiff_t strides[kMostPlanes];  // bytes, of any sign
  int siting;
};

class Engine;

// Null: memory is short.
Engine* open_engine(const EngineConfig& config) noexcept;
void close_engine(Engine* engine) noexcept;

struct FrameChoice {
  Turn turn;           // where the panorama's middle looks
  const double* seam;  // the path to take, as read_seam gives it, or null; kept away from the ring's edges
  const void* guide;   // a valid one to follow, whatever the frames before were like, or null
};

// Asks nothing of the heap.
void stitch(Engine& engine, const PicturePlanes fisheyes[2], const PicturePlanes& panorama, const FrameChoice& choice) noexcept;

// Looks at a frame as stitch() does and paints nothing.  guide: room for guide_bytes.
GuideShape guide_shape(const Engine& engine) noexcept;
void measure(Engine& engine, const PicturePlanes fisheyes[2], void* guide) noexcept;

// Degrees of the ring beyond the plane between the lenses, on either side.
double ring_degrees(const Engine& engine) noexcept;

// The last frame's seam: degrees from the plane between the lenses, seam_length values; zeros before the first frame.
int seam_length(const Engine& engine) noexcept;
void read_seam(const Engine& engine, double* seam) noexcept;

// What past frames have to say about the next one.
StateParts state_of(Engine& engine) noexcept;

// What the engine holds beyond the pictures, in bytes.
size_t engine_bytes(const Engine& engine) noexcept;

}  // namespace biseam::ring
