#include "kernels/kernel.hpp"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <sstream>

namespace biseam::test {

namespace {

using Clock = std::chrono::steady_clock;

double nanoseconds_since(Clock::time_point start) {
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

std::string describe(const KernelCall::Settings& s) {
  static const char* const contents[] = {"random", "lowest", "highest", "ends"};
  static const char* const placements[] = {"amid poison", "at the start of a page", "at the end of a page"};
  std::ostringstream text;
  text << "size " << s.size << ", " << contents[static_cast<int>(s.content)] << " content, "
       << placements[static_cast<int>(s.placement)] << ", shift " << s.shift << ", seed " << s.seed;
  return text.str();
}

std::string compare(const KernelCall& expected, const KernelCall& actual) {
  for (std::size_t i = 0; i < expected.buffers().size(); ++i) {
    const GuardedBuffer &want = expected.buffers()[i], &got = actual.buffers()[i];
    const uint8_t* const end = want.data() + want.size();
    if (!got.poison_is_whole()) return "wrote outside buffer " + std::to_string(i);
    if (std::equal(want.data(), end, got.data())) continue;
    const auto [w, g] = std::mismatch(want.data(), end, got.data());
    return "byte " + std::to_string(w - want.data()) + " of buffer " + std::to_string(i) + " is " + std::to_string(*g) +
           ", not " + std::to_string(*w);
  }
  return {};
}

// The scalar version stays inside its buffers, which is all that can be said of it here.
std::string find_difference_at(const Kernel& kernel, Isa isa, const KernelCall::Settings& settings) {
  KernelCall actual(settings);
  kernel.call(actual, isa);
  KernelCall expected(settings);
  if (isa != Isa::scalar) kernel.call(expected, Isa::scalar);
  const std::string difference = compare(isa == Isa::scalar ? actual : expected, actual);
  return difference.empty() ? "" : kernel.name + " " + name_of(isa) + ": " + difference + " (" + describe(settings) + ")";
}

}  // namespace

void* KernelCall::allocate(std::size_t count, std::size_t sample_bytes) {
  return buffers_.emplace_back(count * sample_bytes, settings_.placement, settings_.shift * sample_bytes).data();
}

// The least of some rounds of at least half a millisecond each.
double KernelCall::measure_time(const std::function<void()>& run) {
  constexpr double round = 5e5;
  int repeats = 1;
  double least = 0;
  for (int rounds = 0; rounds < 4;) {
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < repeats; ++i) run();
    const double time = nanoseconds_since(start);
    if (time < round) {
      repeats *= 2;
      continue;
    }
    const double each = time / repeats;
    least = rounds == 0 ? each : std::min(least, each);
    ++rounds;
  }
  return least;
}

std::vector<int> usual_sizes() {
  std::vector<int> sizes;
  for (int i = 0; i <= 70; ++i) sizes.push_back(i);
  for (const int wide : {96, 127, 128, 129, 255, 256, 257, 640}) sizes.push_back(wide);
  return sizes;
}

// Every placement at every size, each with another content than at the size before, so that four sizes in a row see them all.
std::string find_difference(const Kernel& kernel, Isa isa, uint32_t seed) {
  constexpr struct {
    Placement placement;
    std::size_t shift;
  } kPlaces[] = {{Placement::at_start, 0},
                 {Placement::at_end, 0},
                 {Placement::amid_poison, 0},
                 {Placement::amid_poison, 1},
                 {Placement::amid_poison, 3}};
  unsigned turn = seed;
  for (const int size : kernel.sizes) {
    unsigned content = ++turn;
    for (const auto& [placement, shift] : kPlaces) {
      const KernelCall::Settings settings{size, static_cast<Content>(content++ % 4), placement, shift, ++seed};
      const std::string found = find_difference_at(kernel, isa, settings);
      if (!found.empty()) return found;
    }
  }
  return {};
}

std::vector<double> measure(const Kernel& kernel) {
  constexpr int rounds = 9;
  std::vector<std::vector<double>> times(kernel.isas.size());
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < kernel.isas.size(); ++i) {
      KernelCall call({.size = kernel.bench_size}, true);
      kernel.call(call, kernel.isas[i]);
      times[i].push_back(call.nanoseconds() / (kernel.bench_size * kernel.pixels_per_size));
    }
  }
  std::vector<double> medians;
  for (std::vector<double>& t : times) {
    std::nth_element(t.begin(), t.begin() + rounds / 2, t.end());
    medians.push_back(t[rounds / 2]);
  }
  return medians;
}

}  // namespace biseam::test
