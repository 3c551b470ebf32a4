// biseam/panorama.h for C++20: the same functions and records with an owner, and no exceptions.
//
//   auto panorama = biseam::Panorama::open(biseam::camera_of(1920, 1920, 195), biseam::panorama_defaults());
//   if (!panorama) return std::fputs(panorama.error().text, stderr);
//   if (biseam::PanoramaError error = panorama.stitch(fisheyes, picture)) return std::fputs(error.text, stderr);
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "biseam/panorama.h"

namespace biseam {

// One line that names field, value and rule.  True when there is an error.
struct [[nodiscard]] PanoramaError : BiseamError {
  PanoramaError() : BiseamError{BISEAM_OK, ""} {}
  explicit operator bool() const { return code != BISEAM_OK; }
};

inline BiseamCamera camera_of(std::int32_t width, std::int32_t height, double fov) {
  return biseam_camera_of(width, height, fov);
}
inline BiseamPanoramaOptions panorama_defaults() { return biseam_panorama_defaults(); }
inline BiseamPicture picture_defaults() { return biseam_picture_defaults(); }
inline BiseamFrame frame_defaults() { return biseam_frame_defaults(); }

// An engine, or why there is none.
class Panorama {
 public:
  static Panorama open(const BiseamCamera& camera, const BiseamPanoramaOptions& options) {
    Panorama made;
    made.handle_ = biseam_panorama_open(&camera, &options, &made.error_);
    return made;
  }

  Panorama() = default;
  Panorama(Panorama&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)), error_(other.error_) {}
  Panorama& operator=(Panorama&& other) noexcept {
    std::swap(handle_, other.handle_);
    std::swap(error_, other.error_);
    return *this;
  }
  ~Panorama() { biseam_panorama_close(handle_); }

  explicit operator bool() const { return handle_ != nullptr; }
  const PanoramaError& error() const { return error_; }

  // See biseam_panorama_stitch.
  PanoramaError stitch(const BiseamPicture (&fisheyes)[2], const BiseamPicture& panorama,
                       const BiseamFrame& frame = frame_defaults()) {
    PanoramaError error;
    biseam_panorama_stitch(handle_, fisheyes, &panorama, &frame, &error);
    return error;
  }

  // See biseam_panorama_seam; seam: seam_length() values.
  std::int32_t seam_length() const { return biseam_panorama_seam_length(handle_); }
  double ring() const { return biseam_panorama_ring(handle_); }
  void seam(double* seam) const { biseam_panorama_seam(handle_, seam); }

  // See biseam_panorama_save; state: state_size() bytes.
  std::size_t state_size() const { return biseam_panorama_state_size(handle_); }
  void save(void* state) const { biseam_panorama_save(handle_, state); }
  PanoramaError load(const void* state, std::size_t size) {
    PanoramaError error;
    biseam_panorama_load(handle_, state, size, &error);
    return error;
  }
  void reset() { biseam_panorama_reset(handle_); }
  std::int32_t history() const { return biseam_panorama_history(handle_); }

  // See biseam_panorama_measure and biseam_panorama_smooth; guides: guide_size() bytes each.
  std::size_t guide_size() const { return biseam_panorama_guide_size(handle_); }
  std::int32_t guide_reach() const { return biseam_panorama_guide_reach(handle_); }
  PanoramaError measure(const BiseamPicture (&fisheyes)[2], void* guide) {
    PanoramaError error;
    biseam_panorama_measure(handle_, fisheyes, guide, &error);
    return error;
  }
  PanoramaError smooth(const void* const* guides, std::int32_t count, std::int32_t index, void* smoothed) const {
    PanoramaError error;
    biseam_panorama_smooth(handle_, guides, count, index, smoothed, &error);
    return error;
  }

  std::size_t memory() const { return biseam_panorama_memory(handle_); }
  BiseamPanorama* get() const { return handle_; }

 private:
  BiseamPanorama* handle_ = nullptr;
  PanoramaError error_;
};

}  // namespace biseam
