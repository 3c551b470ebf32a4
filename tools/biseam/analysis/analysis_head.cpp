#include "analysis/analysis_head.hpp"

extern "C" {
#include <libavutil/crc.h>
}

#include <algorithm>
#include <bit>
#include <string_view>

#include "base/failure.hpp"
#include "base/little_endian.hpp"

namespace biseam::tool {
namespace {

constexpr std::string_view kMark = "biseam analysis\n";
constexpr std::uint32_t kVersion = 1;
constexpr std::uint64_t kLightBit = 1, kNearBit = 2;
constexpr int kSeamShift = 8;

class Marking {
 public:
  void add(std::uint64_t value) {
    for (int i = 0; i < 8; ++i) mark_ = (mark_ ^ (value >> (8 * i) & 0xff)) * 1099511628211u;
  }
  void add(double value) { add(std::bit_cast<std::uint64_t>(value == 0 ? 0 : value)); }
  void add(std::int32_t value) { add(std::uint64_t(std::uint32_t(value))); }
  std::uint64_t mark() const { return mark_; }

 private:
  std::uint64_t mark_ = 14695981039346656037u;
};

// From one field of a head to the next.
class Fields {
 public:
  explicit Fields(std::span<const std::uint8_t> bytes) : at_(bytes.data()) {}
  std::uint64_t next(int bytes) {
    const std::uint64_t value = number_at(at_, bytes);
    at_ += bytes;
    return value;
  }
  int next_int() { return int(std::int32_t(std::uint32_t(next(4)))); }
  Size next_size() {
    const int width = next_int();
    return {width, next_int()};
  }

 private:
  const std::uint8_t* at_;
};

}  // namespace

std::uint64_t camera_mark(const BiseamCamera& camera) {
  Marking marking;
  for (const BiseamLens& lens : camera.lens) {
    for (const std::int32_t value : {lens.width, lens.height, lens.mount}) marking.add(value);
    for (const double value :
         {lens.cx, lens.cy, lens.p, lens.k[0], lens.k[1], lens.k[2], lens.fov, lens.turn.yaw, lens.turn.pitch, lens.turn.roll,
          lens.vignette[0], lens.vignette[1], lens.gain[0], lens.gain[1], lens.gain[2]}) {
      marking.add(value);
    }
  }
  marking.add(camera.baseline);
  return marking.mark();
}

std::uint32_t sum_of(std::span<const std::uint8_t> bytes) {
  return av_crc(av_crc_get_table(AV_CRC_32_IEEE_LE), ~0u, bytes.data(), bytes.size());
}

std::vector<std::uint8_t> head_bytes(const AnalysisHead& head) {
  std::vector<std::uint8_t> bytes(kMark.begin(), kMark.end());
  const auto add = [&bytes](std::uint64_t value, int count) { append_number(bytes, value, count); };
  add(kVersion, 4);
  add(head.guide_bytes, 4);
  for (const Size& size : {head.panorama, head.lens[0], head.lens[1]}) {
    add(std::uint32_t(size.width), 4);
    add(std::uint32_t(size.height), 4);
  }
  add((head.light ? kLightBit : 0) | (head.near ? kNearBit : 0) | std::uint64_t(head.seam) << kSeamShift, 4);
  add(std::uint32_t(head.clip.time_base.num), 4);
  add(std::uint32_t(head.clip.time_base.den), 4);
  add(0, 4);
  add(head.camera, 8);
  for (const std::uint64_t size : head.clip.bytes) add(size, 8);
  add(0, 4);
  add(sum_of(bytes), 4);
  return bytes;
}

AnalysisHead read_head(std::span<const std::uint8_t> bytes, const std::string& name) {
  const auto refuse = [&name](const char* what) { throw Failure(ExitCode::input, name + ": " + what); };
  if (!std::equal(kMark.begin(), kMark.end(), bytes.begin())) refuse("is no analysis of a clip");
  Fields fields(bytes.subspan(kMark.size()));
  if (fields.next(4) != kVersion) refuse("is an analysis of another version");
  if (sum_of(bytes.first(kAnalysisHeadBytes - 4)) != number_at(&bytes[kAnalysisHeadBytes - 4], 4)) refuse("is damaged");
  AnalysisHead head;
  head.guide_bytes = std::uint32_t(fields.next(4));
  head.panorama = fields.next_size();
  for (Size& size : head.lens) size = fields.next_size();
  const std::uint64_t parts = fields.next(4);
  head.light = (parts & kLightBit) != 0;
  head.near = (parts & kNearBit) != 0;
  const std::uint64_t seam = parts >> kSeamShift;
  if (seam > BISEAM_SEAM_STEADY || head.guide_bytes == 0) refuse("is damaged");
  head.seam = BiseamSeam(seam);
  head.clip.time_base.num = fields.next_int();
  head.clip.time_base.den = fields.next_int();
  fields.next(4);
  head.camera = fields.next(8);
  for (std::uint64_t& size : head.clip.bytes) size = fields.next(8);
  return head;
}

}  // namespace biseam::tool
