#include "kernels/planted_faults.hpp"

namespace biseam::test {

namespace {

// out = a + b, saturated at 255.
using AddBytes = void(const uint8_t* a, const uint8_t* b, uint8_t* out, int count);

uint8_t saturated_sum(int a, int b) { return static_cast<uint8_t>(a + b > 255 ? 255 : a + b); }

void add_bytes(const uint8_t* a, const uint8_t* b, uint8_t* out, int count) {
  for (int i = 0; i < count; ++i) out[i] = saturated_sum(a[i], b[i]);
}

void wraps(const uint8_t* a, const uint8_t* b, uint8_t* out, int count) {
  for (int i = 0; i < count; ++i) out[i] = static_cast<uint8_t>(a[i] + b[i]);
}

void forgets_the_last(const uint8_t* a, const uint8_t* b, uint8_t* out, int count) { add_bytes(a, b, out, count - 1); }

void drops_the_tail(const uint8_t* a, const uint8_t* b, uint8_t* out, int count) { add_bytes(a, b, out, count & ~15); }

void writes_one_more(const uint8_t* a, const uint8_t* b, uint8_t* out, int count) {
  add_bytes(a, b, out, count);
  out[count] = 0;
}

void writes_one_before(const uint8_t* a, const uint8_t* b, uint8_t* out, int count) {
  add_bytes(a, b, out, count);
  out[-1] = 0;
}

void spoils_its_input(const uint8_t* a, const uint8_t* b, uint8_t* out, int count) {
  add_bytes(a, b, out, count);
  if (count > 0) const_cast<uint8_t*>(a)[count / 2] ^= 1;
}

void off_by_one_at_the_top(const uint8_t* a, const uint8_t* b, uint8_t* out, int count) {
  for (int i = 0; i < count; ++i) out[i] = a[i] == 255 && b[i] == 255 ? 254 : saturated_sum(a[i], b[i]);
}

void reads_one_more(const uint8_t* a, const uint8_t* b, uint8_t* out, int count) {
  static volatile uint8_t seen;
  add_bytes(a, b, out, count);
  seen = a[count];
  (void)seen;
}

void reads_one_before(const uint8_t* a, const uint8_t* b, uint8_t* out, int count) {
  static volatile uint8_t seen;
  add_bytes(a, b, out, count);
  seen = b[-1];
  (void)seen;
}

void call_add(KernelCall& call, AddBytes* add) {
  const uint8_t* a = call.input<uint8_t>(static_cast<std::size_t>(call.size()), 0, 255);
  const uint8_t* b = call.input<uint8_t>(static_cast<std::size_t>(call.size()), 0, 255);
  uint8_t* out = call.output<uint8_t>(static_cast<std::size_t>(call.size()));
  call.run([&] { add(a, b, out, call.size()); });
}

// Stands for a version of whatever set the host has beside scalar.
Kernel planted(const char* name, AddBytes* version) {
  Kernel kernel = make_kernel<AddBytes>(name, {.scalar = add_bytes}, call_add);
  kernel.call = [version](KernelCall& call, Isa isa) { call_add(call, isa == Isa::scalar ? add_bytes : version); };
  return kernel;
}

}  // namespace

Kernel right_kernel() { return planted("right", add_bytes); }

std::vector<Kernel> wrong_kernels() {
  return {planted("wraps", wraps),
          planted("forgets the last", forgets_the_last),
          planted("drops the tail", drops_the_tail),
          planted("writes one more", writes_one_more),
          planted("writes one before", writes_one_before),
          planted("spoils its input", spoils_its_input),
          planted("off by one at the top", off_by_one_at_the_top),
          planted("reads one more", reads_one_more),
          planted("reads one before", reads_one_before)};
}

}  // namespace biseam::test
