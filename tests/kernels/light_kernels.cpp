#include <algorithm>

#include "kernels/kernels.hpp"
#include "ring/light/match_rows.hpp"
#include "ring/positions.hpp"

namespace biseam::test {

namespace {

using namespace ring;

Tone any_tone(KernelCall& call) { return make_tone(static_cast<Transfer>(call.number(0, 4)), false, call.number(0, 1) == 1); }

void call_match_rows(KernelCall& call, MatchLumaRows* match) {
  const std::size_t count = static_cast<std::size_t>(call.size());
  const int16_t* factors = call.input<int16_t>(count, 0, kMostLight);
  const int rows = call.number(1, kSharedRows);
  const std::size_t all = count * static_cast<std::size_t>(rows);
  const int16_t* samples = call.input<int16_t>(all, INT16_MIN, INT16_MAX);
  int16_t* matched = call.output<int16_t>(all);
  const Tone tone = any_tone(call);
  call.run([&] {
    std::copy_n(samples, all, matched);
    match(matched, {rows, call.size()}, factors, tone, call.size());
  });
}

void call_match_chroma_rows(KernelCall& call, MatchChromaRows* match) {
  const std::size_t count = static_cast<std::size_t>(call.size());
  const int channels = call.number(1, 2), lines = call.number(1, kSharedRows);
  const std::size_t lit = count * static_cast<std::size_t>(lines), all = lit * static_cast<std::size_t>(channels);
  const int16_t *luma = call.input<int16_t>(lit, 0, 16380), *samples = call.input<int16_t>(all, INT16_MIN, INT16_MAX);
  MatchChroma rows{{}, {}, luma, call.size(), 16 << 6, 235 << 6};
  for (int c = 0; c < 2; ++c) {
    rows.factors[c] = call.input<int16_t>(count, 0, kMostLight);
    rows.shares[c] = call.input<int16_t>(count, -kMostLight, kMostLight);
  }
  int16_t* matched = call.output<int16_t>(all);
  call.run([&] {
    std::copy_n(samples, all, matched);
    match(matched, {lines, ptrdiff_t{channels} * call.size()}, rows, channels, call.size());
  });
}

void call_spread_nodes(KernelCall& call, SpreadNodes* spread) {
  const int bits = call.number(0, 6), apart = 1 << bits, step_bits = 1 + call.number(0, 1);
  const int start = call.number(0, apart - 1);
  const std::size_t columns = static_cast<std::size_t>((start + std::max(0, call.size() - 1) * (1 << step_bits)) / apart + 2);
  const int16_t *upper = call.input<int16_t>(columns, -kMostLight, kMostLight),
                *lower = call.input<int16_t>(columns, -kMostLight, kMostLight);
  int16_t* out = call.output<int16_t>(static_cast<std::size_t>(call.size()));
  const NodeRows rows{upper, lower, call.number(0, apart - 1), bits, start, step_bits};
  call.run([&] { spread(rows, out, call.size()); });
}

template <class Sample>
void call_luma_means(KernelCall& call, LumaMeans* mean) {
  const int across = call.number(1, 2), down = across == 1 ? 1 : call.number(1, 2);
  const std::size_t count = static_cast<std::size_t>(call.size()), read = count * static_cast<std::size_t>(across);
  const bool words = sizeof(Sample) == 2;
  const int bits = words ? 10 + 2 * call.number(0, 1) : 8, shift = words && call.number(0, 1) == 1 ? 16 - bits : 0;
  const int highest = ((1 << bits) - 1) << shift;
  LumaRows rows{{}, across, down, words, bits, shift};
  for (int i = 0; i < down; ++i) rows.rows[i] = call.input<Sample>(read, 0, static_cast<Sample>(highest));
  int16_t* out = call.output<int16_t>(count);
  call.run([&] { mean(rows, out, call.size()); });
}

}  // namespace

std::vector<Kernel> light_kernels() {
  return {make_kernel("matched rows", kMatchRows, call_match_rows, 64),
          make_kernel("matched chroma rows", kMatchChromaRows, call_match_chroma_rows, 64),
          make_kernel("spread nodes", kSpreadNodes, call_spread_nodes, 64),
          make_kernel("means of luma bytes", kLumaMeans, call_luma_means<uint8_t>, 32),
          make_kernel("means of luma words", kLumaMeans, call_luma_means<uint16_t>, 32)};
}

}  // namespace biseam::test
