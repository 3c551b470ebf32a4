// The checked C++ interface of biseam: refuses what the engine would not survive, owns all memory, prints nothing and needs
// no exceptions.
//
//   auto made = biseam::Stitcher::create(config);
//   if (!made) return std::fputs(made.error().text(), stderr);
//   if (biseam::Error error = made->process(lens0, lens1, panorama)) return std::fputs(error.text(), stderr);
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "biseam/export.h"
#include "biseam/records.h"

namespace biseam {

enum class ErrorCode {
  none,
  invalid_configuration,  // a field of the configuration or of the options breaks a rule
  buffer_too_small,       // a plane handed to process() is shorter than its rows
  outside_picture,        // the lookup tables point outside a fisheye picture
  out_of_memory,
  invalid_seams  // seams to save or load: there are none yet, or they can't be this stitcher's
};

// What went wrong, in one line without a newline that names the field, its value and the rule.  True when there is an error.
class [[nodiscard]] Error {
 public:
  static constexpr int kTextSize = 256;

  Error() = default;
  explicit operator bool() const { return code_ != ErrorCode::none; }
  ErrorCode code() const { return code_; }
  const char* text() const { return text_; }

 private:
  friend struct ErrorWriter;
  ErrorCode code_ = ErrorCode::none;
  char text_[kTextSize] = "";
};

// A value or an error.
template <class T>
class [[nodiscard]] Result {
 public:
  Result(T&& value) : value_(std::move(value)) {}
  Result(const Error& error) : error_(error) {}
  explicit operator bool() const { return !error_; }
  const Error& error() const { return error_; }
  T& operator*() { return value_; }
  T* operator->() { return &value_; }

 private:
  T value_;
  Error error_;
};

// One fisheye picture: in_h rows of in_luma_stride bytes, and in_h / 2 (format 0) or in_h (format 4) rows of in_chroma_stride
// bytes of interleaved Cb, Cr pairs.  The last row may end with its last pixel.
struct FisheyePicture {
  std::span<const std::uint8_t> luma, chroma;
};

// The panorama, laid out likewise with out_h[0], out_luma_stride[0] and out_chroma_stride[0].
struct PanoramaPicture {
  std::span<std::uint8_t> luma, chroma;
};

// Where the seams of a frame come from.
enum class Seams {
  fresh,  // searched in the frame, or cut straight where the configuration doesn't search
  kept    // those of the frame before, or loaded ones; fresh ones as long as there are none, as after a frame that failed
};

// A member to come begins behind the bytes that there are today, not in what the compiler fills up.
struct StitcherOptions {
  std::uint32_t size = sizeof(StitcherOptions);  // tells a newer library which members its caller knows; stays as it is
  bool fresh_seam = true;  // start every frame with empty seam masks; false: weights of earlier frames stay
};

// Least plane sizes that process() takes, and what the stitcher itself holds, in bytes.
struct StitcherSizes {
  std::size_t fisheye_luma, fisheye_chroma, panorama_luma, panorama_chroma, working_memory;
};

// One overlap band after the last frame, or as loaded: the blend weight, 0 .. 64, of fisheye 0's side or 1's, whichever lies
// left.  Weight of (x, y), in panorama pixels before flip and mirror: weights[y * stride + x * step], x counted from
// first_column.
struct BandView {
  int first_column, width, height;
  const std::int32_t* weights;  // valid until the next process() or load_seams() and as long as the stitcher
  int stride, step;             // samples
};

// Room for seams outside of a stitcher, seams_size() bytes or more.
struct SeamBuffer {
  std::span<std::uint8_t> bytes;
};

// The seams_size() bytes that were saved: weights from 0 to 64.
struct SavedSeams {
  std::span<const std::uint8_t> bytes;
};

class Stitcher {
 public:
  // Checks the configuration, builds the tables and checks every entry.  config is copied.  Like process(), it rounds floats to
  // the nearest whatever the calling thread does, which goes on as before.
  BISEAM_API static Result<Stitcher> create(const StitchConfig& config, const StitcherOptions& options = {});

  // Stitches one frame.  The panorama's contents are undefined after an error; the stitcher stays usable.
  BISEAM_API Error process(const FisheyePicture& lens0, const FisheyePicture& lens1, const PanoramaPicture& panorama);

  // The same with seams as wanted.  Frames with kept seams leave the seam masks of earlier frames alone.
  BISEAM_API Error process(const FisheyePicture& lens0, const FisheyePicture& lens1, const PanoramaPicture& panorama,
                           Seams seams);

  BISEAM_API StitcherSizes sizes() const;

  // index 0: the band around column out_w / 4, 1: around 3 out_w / 4.  Any other: an empty view, whose weights are null.
  BISEAM_API BandView band(int index) const;

  // The seams that Seams::kept would keep, which another stitcher with the same configuration can load.  After an error of
  // load_seams (invalid_seams) the stitcher has the seams it had.  save_seams: invalid_seams, buffer_too_small.
  BISEAM_API std::size_t seams_size() const;  // bytes
  BISEAM_API Error save_seams(const SeamBuffer& to) const;
  BISEAM_API Error load_seams(const SavedSeams& from);

  Stitcher() = default;  // empty; only assignment and destruction are allowed
  Stitcher(Stitcher&& other) noexcept : state_(std::exchange(other.state_, nullptr)) {}
  Stitcher& operator=(Stitcher&& other) noexcept {
    std::swap(state_, other.state_);
    return *this;
  }
  ~Stitcher() { release(state_); }

 private:
  struct State;
  explicit Stitcher(State* state) : state_(state) {}
  BISEAM_API static void release(State* state);

  State* state_ = nullptr;
};

}  // namespace biseam
