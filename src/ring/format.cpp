#include "ring/format.hpp"

#include "biseam/panorama.h"

namespace biseam::ring {

namespace {

enum class Layout { gray, planar, rgb, pairs, pairs_swapped };

struct Entry {
  int format;
  Layout layout;
  int bits_x, bits_y;  // of the chroma planes' grid
  int bits, shift;
};

constexpr Entry kEntries[] = {
    {BISEAM_NV12, Layout::pairs, 1, 1, 8, 0},      {BISEAM_NV21, Layout::pairs_swapped, 1, 1, 8, 0},
    {BISEAM_NV16, Layout::pairs, 1, 0, 8, 0},      {BISEAM_NV24, Layout::pairs, 0, 0, 8, 0},
    {BISEAM_I420, Layout::planar, 1, 1, 8, 0},     {BISEAM_I422, Layout::planar, 1, 0, 8, 0},
    {BISEAM_I444, Layout::planar, 0, 0, 8, 0},     {BISEAM_GRAY8, Layout::gray, 0, 0, 8, 0},
    {BISEAM_GBR, Layout::rgb, 0, 0, 8, 0},         {BISEAM_P010, Layout::pairs, 1, 1, 10, 6},
    {BISEAM_P012, Layout::pairs, 1, 1, 12, 4},     {BISEAM_P210, Layout::pairs, 1, 0, 10, 6},
    {BISEAM_I420P10, Layout::planar, 1, 1, 10, 0}, {BISEAM_I422P10, Layout::planar, 1, 0, 10, 0},
    {BISEAM_I444P10, Layout::planar, 0, 0, 10, 0}, {BISEAM_GBRP10, Layout::rgb, 0, 0, 10, 0},
    {BISEAM_I420P12, Layout::planar, 1, 1, 12, 0}, {BISEAM_I422P12, Layout::planar, 1, 0, 12, 0},
    {BISEAM_I444P12, Layout::planar, 0, 0, 12, 0}, {BISEAM_GBRP12, Layout::rgb, 0, 0, 12, 0},
};

const Entry* find_entry(int format) noexcept {
  for (const Entry& entry : kEntries) {
    if (entry.format == format) return &entry;
  }
  return nullptr;
}

// Half a luma sample lies between the first one and the middle of two.
PlaneGrid chroma_grid(const Entry& entry, int siting) noexcept {
  const bool middle_x = siting == BISEAM_SITING_MIDDLE, middle_y = siting != BISEAM_SITING_TOP_LEFT;
  return {entry.bits_x, entry.bits_y, entry.bits_x != 0 && middle_x ? 1 : 0, entry.bits_y != 0 && middle_y ? 1 : 0};
}

}  // namespace

bool describe_format(int format, int siting, PictureFormat& described) noexcept {
  const Entry* const entry = find_entry(format);
  if (entry == nullptr || siting < BISEAM_SITING_LEFT || siting > BISEAM_SITING_TOP_LEFT) return false;
  const SampleType single = entry->bits > 8 ? SampleType::words : SampleType::bytes;
  const SampleType pair = entry->bits > 8 ? SampleType::word_pairs : SampleType::byte_pairs;
  const PlaneGrid chroma = chroma_grid(*entry, siting);
  described = {.planes = 1,
               .bits = entry->bits,
               .shift = entry->shift,
               .rgb = entry->layout == Layout::rgb,
               .plane = {{single, {}, {0, 0}}, {}, {}}};
  if (entry->layout == Layout::planar || entry->layout == Layout::rgb) {
    described.planes = 3;
    for (int c = 1; c < 3; ++c) described.plane[c] = {single, chroma, {c, c}};
  } else if (entry->layout != Layout::gray) {
    const int first = entry->layout == Layout::pairs ? 1 : 2;
    described.planes = 2;
    described.plane[1] = {pair, chroma, {first, 3 - first}};
  }
  return true;
}

}  // namespace biseam::ring
