#include <algorithm>

#include "camera/projector.hpp"
#include "kernels/kernels.hpp"
#include "ring/anchors.hpp"
#include "ring/light.hpp"
#include "ring/mesh_rows.hpp"
#include "ring/position_loops.hpp"
#include "ring/positions.hpp"

namespace biseam::test {

namespace {

using namespace ring;

Lens any_lens(KernelCall& call) {
  Lens lens = usual_lens(call.number(2, 8000), call.number(2, 8000), static_cast<double>(call.real(120, 300)));
  lens.mount = 90 * call.number(0, 3);
  lens.turn = {static_cast<double>(call.real(-45, 45)), static_cast<double>(call.real(-45, 45)),
               static_cast<double>(call.real(-45, 45))};
  lens.k[0] = static_cast<double>(call.real(-0.05f, 0.05f));
  lens.k[1] = static_cast<double>(call.real(-0.01f, 0.01f));
  return lens;
}

Projector any_projector(KernelCall& call) {
  Camera camera;
  camera.lens[0] = camera.lens[1] = any_lens(call);
  return Projector(camera, call.number(0, 1));
}

// Often through a pole, or along the plane between the lenses.
NodeRow any_row(KernelCall& call) {
  const std::size_t count = static_cast<std::size_t>(call.size());
  double *sines = call.input<double>(count, 0, 0), *cosines = call.input<double>(count, 0, 0);
  for (std::size_t i = 0; i < count; ++i) {
    const SineCosine a =
        sine_cosine(call.number(0, 7) == 0 ? call.number(-4, 4) * (kPi / 2) : static_cast<double>(call.real(-4, 4)));
    sines[i] = a.sine;
    cosines[i] = a.cosine;
  }
  const double latitude = call.number(0, 3) == 0 ? call.number(-1, 1) * (kPi / 2) : static_cast<double>(call.real(-2, 2));
  return {sines, cosines, sine_cosine(latitude), call.size()};
}

Matrix3 any_turn(KernelCall& call) {
  if (call.number(0, 2) == 0) return rotation({90.0 * call.number(-2, 2), 90.0 * call.number(-1, 1), 90.0 * call.number(0, 3)});
  return rotation({static_cast<double>(call.real(-180, 180)), static_cast<double>(call.real(-90, 90)),
                   static_cast<double>(call.real(-180, 180))});
}

void call_lens_nodes(KernelCall& call, LensNodeRow* fill) {
  const NodeRow row = any_row(call);
  const Projector lens = any_projector(call);
  const Matrix3 to_picture = lens.to_picture() * any_turn(call);
  const std::size_t count = static_cast<std::size_t>(call.size());
  int32_t *x = call.output<int32_t>(count), *y = call.output<int32_t>(count);
  call.run([&] { fill(row, lens, to_picture, x, y); });
}

void call_ring_nodes(KernelCall& call, RingNodeRow* fill) {
  const NodeRow row = any_row(call);
  const Matrix3 to_world = any_turn(call);
  const std::size_t count = static_cast<std::size_t>(call.size());
  int32_t *t = call.output<int32_t>(count), *b = call.output<int32_t>(count);
  call.run([&] { fill(row, to_world, t, b); });
}

SampleRun run_of(KernelCall& call, int most_pixels, int bits) {
  const int pixels = 2 * call.number(1, most_pixels / 2), plane_bits = call.number(0, 1);
  const int start = 4 * call.number(0, 15) + call.number(0, 1);
  return {start & ((1 << bits) - 1), 2 << plane_bits, pixels >> plane_bits};
}

// Sizes are the bits of the nodes' distance.  Values as far apart as nodes that mean nothing.
void interpolate(KernelCall& call, InterpolateNodes* run, int limit, int wrapped_bits) {
  NodeWindow window;
  window.bits = call.size();
  window.across = run_of(call, kBlockWidth, window.bits);
  window.down = run_of(call, kBlockHeight, window.bits);
  const auto nodes = [&](const SampleRun& r) { return ((r.start + (r.count - 1) * r.step) >> window.bits) + kCubicNodes; };
  window.stride = nodes(window.across) + call.number(0, 5);
  const std::size_t count = static_cast<std::size_t>((nodes(window.down) - 1) * window.stride + nodes(window.across));
  int32_t* out[2];
  for (int k = 0; k < 2; ++k) {
    NodeValues& values = window.values[k];
    values.first = call.input<int32_t>(count, -limit, limit);
    values.wrapped_bits = k == 0 ? wrapped_bits : 0;
    values.slope_bits = call.number(2, 5);
    values.halvings = wrapped_bits == 0 ? call.number(0, 1) : 0;
    values.offset = values.halvings * (call.number(0, 1) << 15);
    out[k] = call.output<int32_t>(static_cast<std::size_t>((window.down.count - 1) * kBlockWidth + window.across.count));
  }
  call.run([&] { run(window, out); });
}

void call_interpolate_far(KernelCall& call, InterpolateNodes* run) { interpolate(call, run, kFarthest << kPositionBits, 0); }
void call_interpolate_near(KernelCall& call, InterpolateNodes* run) { interpolate(call, run, 90 << kPositionBits, 0); }
void call_interpolate_turns(KernelCall& call, InterpolateNodes* run) {
  interpolate(call, run, 1 << (kTurnBits - 1), 32 - kTurnBits);
}

// A block of a panorama from nodes 32 pixels apart.
void call_interpolate_block(KernelCall& call, InterpolateNodes* run) {
  constexpr int kStride = 124;
  NodeWindow window{};
  window.stride = kStride;
  window.bits = 6;
  window.across = {0, 2, kBlockWidth};
  window.down = {0, 2, kBlockHeight};
  int32_t* out[2];
  for (int k = 0; k < 2; ++k) {
    window.values[k].first = call.input<int32_t>(kCubicNodes * kStride, 0, 90 << kPositionBits);
    window.values[k].slope_bits = 2;
    out[k] = call.output<int32_t>(kBlockWidth * kBlockHeight);
  }
  call.run([&] { run(window, out); });
}

// Any light at all: what no lens has as well.
void call_find_light(KernelCall& call, FindLight* find) {
  Light light{};
  light.cx = call.number(-100000, 100000) * 256;
  light.cy = call.number(-100000, 100000) * 256;
  light.shift = call.number(0, 8);
  for (auto& channel : light.factors) {
    for (int32_t& factor : channel) factor = call.number(0, kMostLight);
  }
  const std::size_t count = static_cast<std::size_t>(call.size());
  const int32_t limit = call.number(0, 1) == 0 ? kFarthest << kPositionBits : INT32_MAX;
  const int32_t *x = call.input<int32_t>(count, -limit, limit), *y = call.input<int32_t>(count, -limit, limit);
  int32_t* factors = call.output<int32_t>(count);
  const int channel = call.number(0, 2);
  call.run([&] { find(light, channel, x, y, factors, call.size()); });
}

void call_light_row(KernelCall& call, LightRow* undo) {
  const std::size_t count = static_cast<std::size_t>(call.size());
  const int32_t* factors = call.input<int32_t>(count, 0, kMostLight);
  const int16_t* samples = call.input<int16_t>(count, -10240, 26624);
  int16_t* lit = call.output<int16_t>(count);
  const int32_t pivot = call.number(0, 8192);
  call.run([&] {
    std::copy_n(samples, count, lit);
    undo(lit, factors, pivot, call.size());
  });
}

void call_tint_row(KernelCall& call, TintRow* undo) {
  const std::size_t count = static_cast<std::size_t>(call.size());
  const int channels = call.number(1, 2);
  const std::size_t all = count * static_cast<std::size_t>(channels);
  const int16_t* luma = call.input<int16_t>(all, 0, 16380);
  const int16_t* samples = call.input<int16_t>(all, INT16_MIN, INT16_MAX);
  int16_t* tinted = call.output<int16_t>(all);
  const Tint tint{luma, call.number(0, 1024), {call.number(-70000, 70000), call.number(-70000, 70000)}};
  call.run([&] {
    std::copy_n(samples, all, tinted);
    undo(tinted, tint, channels, call.size());
  });
}

void call_find_needed(KernelCall& call, FindNeededColumns* find) {
  constexpr int kRows = kBlockHeight / kAnchorSpacing / 4 + 1;
  const std::size_t count = static_cast<std::size_t>((kRows - 1) * kBlockWidth + call.size());
  const int32_t* distances = call.input<int32_t>(count, -(1 << 20), 1 << 20);
  int32_t* found = call.output<int32_t>(4);
  call.run([&] {
    ColumnRange needed[2];
    find(distances, kRows, call.size(), 1 << 19, needed);
    for (int lens = 0; lens < 2; ++lens) {
      found[2 * lens] = needed[lens].first;
      found[2 * lens + 1] = needed[lens].end;
    }
  });
}

}  // namespace

std::vector<Kernel> ring_kernels() {
  constexpr int kNodes = 124;
  const std::vector<int> spacings = {0, 1, 2, 3, 4, 5, 6, 6, 6};
  return {make_kernel("lens nodes", kLensNodeRow, call_lens_nodes, kNodes),
          make_kernel("ring nodes", kRingNodeRow, call_ring_nodes, kNodes),
          make_kernel("positions of far nodes", kInterpolateNodes, call_interpolate_far, 6, 1, spacings),
          make_kernel("positions of near nodes", kInterpolateNodes, call_interpolate_near, 6, 1, spacings),
          make_kernel("positions of turns", kInterpolateNodes, call_interpolate_turns, 6, 1, spacings),
          make_kernel("positions of a block", kInterpolateNodes, call_interpolate_block, 1, kBlockWidth * kBlockHeight, {1}),
          make_kernel("light", kFindLight, call_find_light, 17),
          make_kernel("lit rows", kLightRow, call_light_row, 64),
          make_kernel("tinted rows", kTintRow, call_tint_row, 64),
          make_kernel("needed columns", kFindNeededColumns, call_find_needed, 64, 1, {1, 15, 16, 17, 32, 50, 63, 64})};
}

}  // namespace biseam::test
