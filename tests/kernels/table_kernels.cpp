#include <bit>
#include <climits>
#include <cstdint>

#include "frame/tables/lens_row.hpp"
#include "kernels/kernels.hpp"

namespace biseam::test {

namespace {

// Any float there is: every sign, exponent and fraction, and often the values at the ends of their ranges.
float any_float(KernelCall& call) {
  constexpr uint32_t ends[] = {0x00000000, 0x00000001, 0x007FFFFF, 0x00800000, 0x3F7FFFFF, 0x3F800000,
                               0x7E7FFFFF, 0x7E800000, 0x7F7FFFFF, 0x7F800000, 0x7F800001, 0x7FC00000};
  const uint32_t sign = static_cast<uint32_t>(call.number(0, 1)) << 31;
  if (call.number(0, 3) == 0) return std::bit_cast<float>(sign | ends[call.number(0, 11)]);
  return std::bit_cast<float>(static_cast<uint32_t>(call.number(INT_MIN, INT_MAX)));
}

LensRecord usual_lens(KernelCall& call) {
  LensRecord lens{};
  lens.focal = call.real(1.0f, 1200.0f);
  lens.cx = call.real(0.0f, 2000.0f);
  lens.cy = call.real(0.0f, 2000.0f);
  lens.column_step = 6.2831853f / static_cast<float>(call.number(8, 4000));
  lens.row_step = 3.1415927f / 64.0f;
  lens.row_offset = 0.0f;
  lens.column_offset = call.real(-3.0f, 3.0f);
  lens.focus = call.real(0.5f, 2.0f);
  for (float& entry : lens.matrix) entry = call.real(-1.5f, 1.5f);
  return lens;
}

// Sines and cosines as the columns of a table have them.
struct Columns {
  double *sines, *cosines;
};
Columns turned_columns(KernelCall& call, const LensRecord& lens, int first) {
  const std::size_t count = static_cast<std::size_t>(call.size());
  const Columns columns{call.input<double>(count, 0.0, 0.0), call.input<double>(count, 0.0, 0.0)};
  turn_columns(lens, first, call.size(), columns.sines, columns.cosines);
  return columns;
}

void run_row(KernelCall& call, MapRow* map, const LensRecord& lens, Latitude latitude, const Columns& columns) {
  float* entries = call.output<float>(2 * static_cast<std::size_t>(call.size()));
  const float scale = lens.focal * lens.focus;
  call.run([&] { map(lens, scale, latitude, columns.sines, columns.cosines, call.size(), entries); });
}

void call_map(KernelCall& call, MapRow* map) {
  const LensRecord lens = usual_lens(call);
  const Columns columns = turned_columns(call, lens, 4 * call.number(0, 400));
  run_row(call, map, lens, row_latitude(lens, call.number(0, 63)), columns);
}

// A row whose longitudes meet the optical axis, or a right angle to it, to the last bit.
void call_map_on_axis(KernelCall& call, MapRow* map) {
  LensRecord lens = usual_lens(call);
  const int column = 4 * call.number(0, call.size() / 4);
  const float angle = call.number(0, 1) != 0 ? 0.0f : 1.570796325f;
  lens.column_offset = angle - (-1.5707964f + static_cast<float>(column + 1) * lens.column_step);
  const Columns columns = turned_columns(call, lens, 0);
  if (column < call.size() && call.number(0, 1) != 0) columns.sines[column] = 0.0;
  const Latitude latitudes[] = {{0.0f, 1.0f},  {1.0f, 0.0f},   {1.0f, -4.371139e-8f},
                                {-0.0f, 1.0f}, {1e-20f, 1.0f}, {-1.0f, 1e-30f}};
  run_row(call, map, lens, latitudes[call.number(0, 5)], columns);
}

// Every value that the estimates tell apart, and what a table could never hold.
void call_map_any(KernelCall& call, MapRow* map) {
  LensRecord lens = usual_lens(call);
  for (float& entry : lens.matrix) entry = any_float(call);
  lens.cx = any_float(call);
  lens.cy = any_float(call);
  const Columns columns = turned_columns(call, lens, 0);
  for (int i = 0; i < call.size(); ++i) {
    columns.sines[i] = static_cast<double>(any_float(call));
    columns.cosines[i] = static_cast<double>(any_float(call));
  }
  const Latitude latitude = {any_float(call), call.number(0, 1) != 0 ? 1.0f : any_float(call)};
  run_row(call, map, lens, latitude, columns);
}

// Operands that need no special case, over all their exponents; sometimes one of a row does.
void call_map_far(KernelCall& call, MapRow* map) {
  LensRecord lens = usual_lens(call);
  const float size = std::bit_cast<float>(static_cast<uint32_t>(call.number(1, 250)) << 23);
  for (float& entry : lens.matrix) entry *= size;
  const Columns columns = turned_columns(call, lens, 0);
  const auto far = [&](int least, int most) {
    const uint32_t exponent = static_cast<uint32_t>(call.number(least, most));
    return static_cast<double>(std::bit_cast<float>(exponent << 23 | static_cast<uint32_t>(call.number(0, 0x7FFFFF))));
  };
  for (int i = 0; i < call.size(); ++i) {
    columns.sines[i] = far(78, 176);
    columns.cosines[i] = far(67, 186) * (call.number(0, 1) != 0 ? 1.0 : -1.0);
  }
  if (call.size() > 0 && call.number(0, 3) == 0) {
    double* const samples = call.number(0, 1) != 0 ? columns.sines : columns.cosines;
    samples[call.number(0, call.size() - 1)] = static_cast<double>(any_float(call));
  }
  run_row(call, map, lens, {call.real(-1.0f, 1.0f), 1.0f}, columns);
}

// Around the runs that versions divide a row into, too.
Kernel make_map_kernel(std::string name, void (*call)(KernelCall&, MapRow*)) {
  std::vector<int> sizes = usual_sizes();
  sizes.insert(sizes.end(), {511, 512, 513, 1023, 1024, 1025, 1034, 2100});
  return make_kernel(std::move(name), kMapRow, call, 1920, 1.0, std::move(sizes));
}

}  // namespace

std::vector<Kernel> table_kernels() {
  return {make_map_kernel("map row", call_map), make_map_kernel("map row on the axis", call_map_on_axis),
          make_map_kernel("map row of any operands", call_map_any), make_map_kernel("map row of far operands", call_map_far)};
}

}  // namespace biseam::test
