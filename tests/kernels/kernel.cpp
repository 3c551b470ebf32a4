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
    const std::vector<uint8_t> want = expected.buffers()[i].bytes(), got = actual.buffers()[i].bytes();
    if (!actual.buffers()[i].poison_is_whole()) return "wrote outside buffer " + std::to_string(i);
    const auto [w, g] = std::mismatch(want.begin(), want.end(), got.begin());
    if (w != want.end()) {
      return "byte " + std::to_string(w - want.begin()) + " of buffer " + std::to_string(i) + " is " + std::to_string(*g) +
             ", not " + std::to_string(*w);
    }
  }
  return {};
}

std::string find_difference_at(const Kernel& kernel, Isa isa, const KernelCall::Settings& settings) {
  KernelCall expected(settings), actual(settings);
  kernel.call(expected, Isa::scalar);
  kernel.call(actual, isa);
  const std::string difference = compare(expected, actual);
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

std::string find_difference(const Kernel& kernel, Isa isa, uint32_t seed) {
  for (const int size : kernel.sizes) {
    for (const Content content : {Content::random, Content::lowest, Content::highest, Content::ends}) {
      for (const Placement placement : {Placement::at_start, Placement::at_end}) {
        const std::string found = find_difference_at(kernel, isa, {size, content, placement, 0, ++seed});
        if (!found.empty()) return found;
      }
      for (const std::size_t shift : {std::size_t{0}, std::size_t{1}, std::size_t{3}}) {
        const std::string found = find_difference_at(kernel, isa, {size, content, Placement::amid_poison, shift, ++seed});
        if (!found.empty()) return found;
      }
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
