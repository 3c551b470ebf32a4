#include "ring/guide/guide.hpp"

#include <cstdlib>

namespace biseam::ring {

namespace {

constexpr uint64_t kMark = 0x01444742;  // version 1
constexpr size_t kHeadBytes = 16, kSectorBytes = 32, kSumBytes = 4;
// Places in the head.
constexpr size_t kSizeAt = 0, kMarkAt = 4, kLengthAt = 8, kWidthAt = 10, kPartsAt = 12, kStartsAt = 14;

uint64_t get(const uint8_t* from, int bytes) noexcept {
  uint64_t value = 0;
  for (int i = bytes; i-- > 0;) value = value << 8 | from[i];
  return value;
}

void put(uint8_t* to, uint64_t value, int bytes) noexcept {
  for (int i = 0; i < bytes; ++i) to[i] = static_cast<uint8_t>(value >> (8 * i));
}

int32_t get_signed(const uint8_t* from) noexcept { return static_cast<int32_t>(static_cast<uint32_t>(get(from, 4))); }

struct Places {
  size_t light, near, seam, sum;
};

Places places_of(const GuideShape& shape) noexcept {
  Places places{};
  places.light = kHeadBytes;
  places.near = places.light + (shape.light_span > 0 ? kSectors * kSectorBytes : 0);
  places.seam = places.near + 2 * static_cast<size_t>(shape.near_length);
  places.sum = places.seam + (shape.seams ? 2 * static_cast<size_t>(shape.strip.length) : 0);
  return places;
}

uint64_t parts_of(const GuideShape& shape) noexcept {
  return (shape.light_span > 0 ? 1 : 0) | (shape.near_length > 0 ? 2 : 0) | (shape.seams ? 4 : 0) | (shape.steady_seam ? 8 : 0);
}

void write_head(const GuideShape& shape, uint8_t* head) noexcept {
  put(head + kSizeAt, guide_bytes(shape), 4);
  put(head + kMarkAt, kMark, 4);
  put(head + kLengthAt, static_cast<uint64_t>(shape.strip.length), 2);
  put(head + kWidthAt, static_cast<uint64_t>(shape.strip.width), 2);
  put(head + kPartsAt, parts_of(shape), 2);
  put(head + kStartsAt, 0, 2);
}

bool has_head_of(const GuideShape& shape, const uint8_t* head) noexcept {
  uint8_t wanted[kHeadBytes];
  write_head(shape, wanted);
  for (size_t i = 0; i < kStartsAt; ++i) {
    if (head[i] != wanted[i]) return false;
  }
  return true;
}

// Every change of one byte is another sum.
uint32_t sum_of(const uint8_t* bytes, size_t count) noexcept {
  uint32_t sum = 2166136261;
  for (size_t i = 0; i < count; ++i) sum = (sum ^ bytes[i]) * 16777619;
  return sum;
}

bool are_valid_sectors(const GuideReader& guide) noexcept {
  for (int s = 0; s < kSectors; ++s) {
    if (!is_valid(guide.sector(s))) return false;
  }
  return true;
}

bool are_valid_disparities(const GuideReader& guide, const GuideShape& shape) noexcept {
  for (int t = 0; t < shape.near_length; ++t) {
    if (guide.disparity(t) > shape.near_most) return false;
  }
  return true;
}

bool is_valid_seam(const GuideReader& guide, const GuideShape& shape) noexcept {
  const int least = shape.margin * kGuideRow, most = (shape.strip.width - 1 - shape.margin) * kGuideRow;
  int before = guide.row(shape.strip.length - 1);
  for (int t = 0; t < shape.strip.length; ++t) {
    const int row = guide.row(t);
    if (row < least || row > most || std::abs(row - before) > kGuideRow) return false;
    before = row;
  }
  return true;
}

}  // namespace

size_t guide_bytes(const GuideShape& shape) noexcept { return places_of(shape).sum + kSumBytes; }

GuideTrouble check_guide(const GuideShape& shape, const void* guide) noexcept {
  const auto* const bytes = static_cast<const uint8_t*>(guide);
  if (!has_head_of(shape, bytes)) return GuideTrouble::other;
  const size_t sum_at = places_of(shape).sum;
  if (sum_of(bytes, sum_at) != get(bytes + sum_at, 4) || get(bytes + kStartsAt, 2) > 1) return GuideTrouble::damaged;
  const GuideReader reader(shape, guide);
  const bool valid = (shape.light_span == 0 || are_valid_sectors(reader)) && are_valid_disparities(reader, shape) &&
                     (!shape.seams || is_valid_seam(reader, shape));
  return valid ? GuideTrouble::none : GuideTrouble::damaged;
}

GuideReader::GuideReader(const GuideShape& shape, const void* guide) noexcept : head_(static_cast<const uint8_t*>(guide)) {
  const Places places = places_of(shape);
  light_ = head_ + places.light;
  near_ = head_ + places.near;
  seam_ = head_ + places.seam;
}

bool GuideReader::starts() const noexcept { return get(head_ + kStartsAt, 2) != 0; }

SectorLight GuideReader::sector(int sector) const noexcept {
  const uint8_t* const at = light_ + static_cast<size_t>(sector) * kSectorBytes;
  return {get_signed(at),
          {get_signed(at + 4), get_signed(at + 8), get_signed(at + 12)},
          static_cast<int64_t>(get(at + 16, 8)),
          static_cast<int64_t>(get(at + 24, 8))};
}

int GuideReader::disparity(int t) const noexcept { return static_cast<int>(get(near_ + 2 * static_cast<size_t>(t), 2)); }

int GuideReader::row(int t) const noexcept { return static_cast<int>(get(seam_ + 2 * static_cast<size_t>(t), 2)); }

GuideWriter::GuideWriter(const GuideShape& shape, void* guide) noexcept
    : bytes_(guide_bytes(shape)), head_(static_cast<uint8_t*>(guide)) {
  const Places places = places_of(shape);
  light_ = head_ + places.light;
  near_ = head_ + places.near;
  seam_ = head_ + places.seam;
  write_head(shape, head_);
}

void GuideWriter::starts(bool starts) noexcept { put(head_ + kStartsAt, starts ? 1 : 0, 2); }

void GuideWriter::sector(int sector, const SectorLight& light) noexcept {
  uint8_t* const at = light_ + static_cast<size_t>(sector) * kSectorBytes;
  put(at, static_cast<uint32_t>(light.count), 4);
  for (size_t c = 0; c < 3; ++c) put(at + 4 + 4 * c, static_cast<uint32_t>(light.logs[c]), 4);
  put(at + 16, static_cast<uint64_t>(light.slope_xy), 8);
  put(at + 24, static_cast<uint64_t>(light.slope_xx), 8);
}

void GuideWriter::disparity(int t, int disparity) noexcept {
  put(near_ + 2 * static_cast<size_t>(t), static_cast<uint64_t>(disparity), 2);
}

void GuideWriter::row(int t, int row) noexcept { put(seam_ + 2 * static_cast<size_t>(t), static_cast<uint64_t>(row), 2); }

void GuideWriter::finish() noexcept { put(head_ + bytes_ - kSumBytes, sum_of(head_, bytes_ - kSumBytes), 4); }

}  // namespace biseam::ring
