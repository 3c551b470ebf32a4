#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "biseam/panorama.h"

namespace biseam::test {

// A picture format, written down a second time.
struct TestFormat {
  int code;
  const char* name;
  enum { gray, planar, pairs, swapped_pairs } layout;
  int sub_x, sub_y;  // luma samples to a chroma sample
  int bits, shift;

  int channels() const { return layout == gray ? 1 : 3; }
  int planes() const { return layout == gray ? 1 : layout == planar ? 3 : 2; }
  int sample_bytes() const { return bits > 8 ? 2 : 1; }
  bool paired() const { return layout == pairs || layout == swapped_pairs; }
  bool subsampled() const { return sub_x * sub_y > 1; }
  int highest() const { return (1 << bits) - 1; }
};

// Test names hold it instead of the record's bytes.
inline void PrintTo(const TestFormat& format, std::ostream* out) { *out << format.name; }
inline constexpr auto format_name = [](const auto& info) { return std::string(info.param.name); };

inline constexpr TestFormat kTestFormats[] = {
    {BISEAM_NV12, "nv12", TestFormat::pairs, 2, 2, 8, 0},         {BISEAM_NV21, "nv21", TestFormat::swapped_pairs, 2, 2, 8, 0},
    {BISEAM_NV16, "nv16", TestFormat::pairs, 2, 1, 8, 0},         {BISEAM_NV24, "nv24", TestFormat::pairs, 1, 1, 8, 0},
    {BISEAM_I420, "i420", TestFormat::planar, 2, 2, 8, 0},        {BISEAM_I422, "i422", TestFormat::planar, 2, 1, 8, 0},
    {BISEAM_I444, "i444", TestFormat::planar, 1, 1, 8, 0},        {BISEAM_GRAY8, "gray", TestFormat::gray, 1, 1, 8, 0},
    {BISEAM_GBR, "gbr", TestFormat::planar, 1, 1, 8, 0},          {BISEAM_P010, "p010", TestFormat::pairs, 2, 2, 10, 6},
    {BISEAM_P012, "p012", TestFormat::pairs, 2, 2, 12, 4},        {BISEAM_P210, "p210", TestFormat::pairs, 2, 1, 10, 6},
    {BISEAM_I420P10, "i420p10", TestFormat::planar, 2, 2, 10, 0}, {BISEAM_I422P10, "i422p10", TestFormat::planar, 2, 1, 10, 0},
    {BISEAM_I444P10, "i444p10", TestFormat::planar, 1, 1, 10, 0}, {BISEAM_GBRP10, "gbrp10", TestFormat::planar, 1, 1, 10, 0},
    {BISEAM_I420P12, "i420p12", TestFormat::planar, 2, 2, 12, 0}, {BISEAM_I422P12, "i422p12", TestFormat::planar, 2, 1, 12, 0},
    {BISEAM_I444P12, "i444p12", TestFormat::planar, 1, 1, 12, 0}, {BISEAM_GBRP12, "gbrp12", TestFormat::planar, 1, 1, 12, 0},
};

inline const TestFormat& test_format(int code) {
  return *std::find_if(std::begin(kTestFormats), std::end(kTestFormats), [&](const auto& f) { return f.code == code; });
}

// How rows lie in memory.
struct RowLayout {
  int padding = 0;  // samples
  bool upwards = false;
  uint8_t poison = 0xA5;  // of all bytes that are no samples, and of samples before they are written
};

// A picture with guards around its planes.  Samples are code values without the format's shift.
class OwnPicture {
 public:
  OwnPicture(int code, int width, int height, RowLayout layout = {}, int siting = BISEAM_SITING_LEFT)
      : format_(test_format(code)), layout_(layout), record_(biseam_picture_defaults()) {
    record_.format = code;
    record_.width = width;
    record_.height = height;
    record_.siting = siting;
    for (int plane = 0; plane < format_.planes(); ++plane) {
      const std::size_t used = row_bytes(plane);
      const std::size_t stride = used + std::size_t(layout.padding * format_.sample_bytes());
      const std::size_t count = std::size_t(rows(plane));
      memory_[plane].assign(2 * kGuard + stride * count, layout.poison);
      first_row_[plane] = kGuard + (layout.upwards ? stride * (count - 1) : 0);
      record_.strides[plane] = std::ptrdiff_t(stride) * (layout.upwards ? -1 : 1);
    }
  }

  const TestFormat& format() const { return format_; }

  // Its planes are those of this object wherever it has been moved to.
  BiseamPicture record() {
    for (int plane = 0; plane < format_.planes(); ++plane) record_.planes[plane] = row(plane, 0);
    return record_;
  }

  int plane_of(int channel) const { return format_.paired() ? std::min(channel, 1) : channel; }
  int columns(int channel) const { return channel == 0 ? record_.width : reduced(record_.width, format_.sub_x); }
  int rows(int channel) const { return channel == 0 ? record_.height : reduced(record_.height, format_.sub_y); }

  int get(int channel, int x, int y) const {
    const uint8_t* const at = const_cast<OwnPicture*>(this)->sample(channel, x, y);
    if (format_.bits == 8) return *at;
    uint16_t word;
    std::memcpy(&word, at, 2);
    return word >> format_.shift;
  }
  void set(int channel, int x, int y, int value) {
    uint8_t* const at = sample(channel, x, y);
    if (format_.bits == 8) {
      *at = uint8_t(value);
    } else {
      const uint16_t word = uint16_t(value << format_.shift);
      std::memcpy(at, &word, 2);
    }
  }

  // What a channel shows, row by row.
  std::vector<int> channel(int index) const {
    std::vector<int> values;
    for (int y = 0; y < rows(index); ++y) {
      for (int x = 0; x < columns(index); ++x) values.push_back(get(index, x, y));
    }
    return values;
  }

  // value(channel, x, y): a code value.
  template <class Value>
  void fill(const Value& value) {
    for (int c = 0; c < format_.channels(); ++c) {
      for (int y = 0; y < rows(c); ++y) {
        for (int x = 0; x < columns(c); ++x) set(c, x, y, value(c, x, y));
      }
    }
  }

  // All samples' bytes as stored, plane by plane, without padding.
  std::vector<uint8_t> bytes() const {
    std::vector<uint8_t> all;
    for (int plane = 0; plane < format_.planes(); ++plane) {
      for (int y = 0; y < rows(plane); ++y) {
        const uint8_t* const from = const_cast<OwnPicture*>(this)->row(plane, y);
        all.insert(all.end(), from, from + row_bytes(plane));
      }
    }
    return all;
  }

  // Padding and guards are as they were.
  bool surroundings_untouched() const {
    OwnPicture copy = *this;
    for (int plane = 0; plane < format_.planes(); ++plane) {
      for (int y = 0; y < rows(plane); ++y) std::memset(copy.row(plane, y), layout_.poison, row_bytes(plane));
    }
    return copy.untouched();
  }
  bool untouched() const {
    return std::all_of(std::begin(memory_), std::end(memory_), [&](const std::vector<uint8_t>& memory) {
      return memory == std::vector<uint8_t>(memory.size(), layout_.poison);
    });
  }

 private:
  static constexpr std::size_t kGuard = 256;

  static int reduced(int luma, int sub) { return (luma + sub - 1) / sub; }
  std::size_t row_bytes(int plane) const {
    return std::size_t(columns(plane) * (format_.paired() && plane == 1 ? 2 : 1) * format_.sample_bytes());
  }
  uint8_t* row(int plane, int y) { return memory_[plane].data() + first_row_[plane] + y * record_.strides[plane]; }
  uint8_t* sample(int channel, int x, int y) {
    const bool paired = format_.paired() && channel > 0;
    const int within = paired ? 2 * x + ((channel == 2) != (format_.layout == TestFormat::swapped_pairs) ? 1 : 0) : x;
    return row(plane_of(channel), y) + within * format_.sample_bytes();
  }

  TestFormat format_;
  RowLayout layout_;
  BiseamPicture record_;
  std::vector<uint8_t> memory_[3];
  std::size_t first_row_[3] = {};
};

}  // namespace biseam::test
