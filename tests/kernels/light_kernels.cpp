#include <algorithm>
#include <cstring>
#include <memory>

#include "kernels/kernels.hpp"
#include "ring/light/match_chroma_rows.hpp"
#include "ring/light/match_field.hpp"
#include "ring/light/spread_places.hpp"
#include "ring/positions.hpp"

namespace biseam::test {

namespace {

using namespace ring;

Tone any_tone(KernelCall& call) { return make_tone(static_cast<Transfer>(call.number(0, 4)), false, call.number(0, 1) == 1); }

ValueRows any_values(KernelCall& call, std::size_t count, int least, int most, int below, int step) {
  const auto values = [&] { return call.input<int16_t>(count, static_cast<int16_t>(least), static_cast<int16_t>(most)); };
  const int16_t* const upper = values();
  return {upper, values(), below, step};
}

// Rows are samples, without gaps.
MatchGains any_gains(KernelCall& call, std::size_t count) {
  const bool up = call.number(0, 1) == 1, down = !up || call.number(0, 1) == 1;
  const int below = call.number(0, 8000);
  return {any_values(call, count, down ? kLeastGain : 0, up ? kMostGain : 0, below, call.number(0, 6000)), up, down};
}

void call_match_rows(KernelCall& call, MatchLumaRows* match) {
  const std::size_t count = static_cast<std::size_t>(call.size());
  const MatchGains gains = any_gains(call, count);
  const int rows = call.number(1, 4 * kSharedRows);
  const std::size_t all = count * static_cast<std::size_t>(rows);
  const int16_t* samples = call.input<int16_t>(all, INT16_MIN, INT16_MAX);
  int16_t* matched = call.output<int16_t>(all);
  const Tone tone = any_tone(call);
  call.run([&] {
    std::copy_n(samples, all, matched);
    match(matched, {rows, call.size()}, gains, tone, call.size());
  });
}

void call_match_chroma_rows(KernelCall& call, MatchChromaRows* match) {
  const std::size_t count = static_cast<std::size_t>(call.size());
  const int lines = call.number(1, 4 * kSharedRows), channel = call.number(1, 2);
  const std::size_t all = count * static_cast<std::size_t>(lines);
  const int16_t *luma = call.input<int16_t>(all, 0, 16383), *samples = call.input<int16_t>(all, INT16_MIN, INT16_MAX);
  const MatchGains gains = any_gains(call, count);
  const ValueRows shares = any_values(call, count, -kMostShare, kMostShare, gains.values.below, gains.values.step);
  const MatchChroma rows{gains, shares, luma, call.size(), {channel, call.number(0, 1) == 1 ? channel : 3 - channel}};
  const Tone tone = any_tone(call);
  int16_t* matched = call.output<int16_t>(all);
  call.run([&] {
    std::copy_n(samples, all, matched);
    match(matched, {lines, call.size()}, rows, tone, call.size());
  });
}

void call_spread_places(KernelCall& call, SpreadPlaces* spread) {
  const int bits = call.number(0, 6), apart = 1 << bits, step_bits = call.number(0, 2);
  const int start = call.number(0, apart - 1), each = call.number(1, 2);
  const std::size_t columns = static_cast<std::size_t>((start + std::max(0, call.size() - 1) * (1 << step_bits)) / apart + 2);
  constexpr std::size_t kPlace = sizeof(MatchPlace) / sizeof(int16_t);
  const int16_t* values = call.input<int16_t>(columns * kPlace, kLeastGain, kMostGain);
  int16_t* out = call.output<int16_t>(static_cast<std::size_t>(call.size() * each));
  const PlaceRow row{values, each == 2 ? values + 3 : nullptr, bits, start, step_bits};
  call.run([&] { spread(row, out, call.size()); });
}

void call_find_places(KernelCall& call, FindMatchPlaces* find) {
  const std::size_t count = static_cast<std::size_t>(call.size());
  constexpr int kColumns = 37;
  auto field = std::make_unique<MatchField>();
  constexpr std::size_t kPlace = sizeof(MatchPlace) / sizeof(int16_t);
  const int lens = call.number(0, 1);
  const int16_t* values = call.input<int16_t>(MatchField::kRows * kColumns * kPlace, -kMatchOne, kMatchOne);
  for (auto& row : field->places[lens]) {
    std::memcpy(row, values, kColumns * sizeof(MatchPlace));
    values += kColumns * kPlace;
  }
  const int32_t *rows = call.input<int32_t>(count, 0, MatchField::kRows * 256 - 1),
                *columns = call.input<int32_t>(count, 0, (kColumns - 1) * 256 - 1);
  int16_t* found = call.output<int16_t>(count * kPlace);
  std::vector<MatchPlace> places(count);
  call.run([&] {
    find(*field, lens, rows, columns, places.data(), call.size());
    if (count > 0) std::memcpy(found, places.data(), count * sizeof(MatchPlace));
  });
}

template <class Sample>
void call_luma_means(KernelCall& call, LumaMeans* mean) {
  const int across = call.number(1, 2), down = across == 1 ? 1 : call.number(1, 2), channels = call.number(1, 2);
  const int rows = call.number(1, 3);
  const std::size_t count = static_cast<std::size_t>(call.size()), read = count * static_cast<std::size_t>(across);
  const bool words = sizeof(Sample) == 2;
  const int bits = words ? 10 + 2 * call.number(0, 1) : 8, shift = words && call.number(0, 1) == 1 ? 16 - bits : 0;
  const int highest = ((1 << bits) - 1) << shift;
  const Sample* codes = call.input<Sample>(read * static_cast<std::size_t>(rows * down), 0, static_cast<Sample>(highest));
  const std::size_t written = count * static_cast<std::size_t>(channels);
  int16_t* out = call.output<int16_t>(written * static_cast<std::size_t>(rows));
  const LumaCodes luma{
      reinterpret_cast<const uint8_t*>(codes), static_cast<ptrdiff_t>(read * sizeof(Sample)), across, down, words, bits, shift};
  call.run([&] { mean(luma, channels, out, {rows, static_cast<ptrdiff_t>(written)}, call.size()); });
}

// Rows of chroma have an end.
std::vector<int> chroma_sizes() {
  std::vector<int> sizes = usual_sizes();
  std::erase_if(sizes, [](int size) { return size > kMostMatched; });
  sizes.push_back(kMostMatched);
  return sizes;
}

}  // namespace

std::vector<Kernel> light_kernels() {
  return {make_kernel("matched rows", kMatchRows, call_match_rows, 64),
          make_kernel("matched chroma rows", kMatchChromaRows, call_match_chroma_rows, 64, 1.0, chroma_sizes()),
          make_kernel("spread places", kSpreadPlaces, call_spread_places, 64),
          make_kernel("places of a field", kFindMatchPlaces, call_find_places, 16),
          make_kernel("means of luma bytes", kLumaMeans, call_luma_means<uint8_t>, 32),
          make_kernel("means of luma words", kLumaMeans, call_luma_means<uint16_t>, 32)};
}

}  // namespace biseam::test
