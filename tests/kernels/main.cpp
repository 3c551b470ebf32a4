// Checks every version of every kernel against the scalar one, byte for byte; with --bench, measures them.  Which set
// BISEAM_ISA holds other test programs to is all the same here: one run checks a build.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "kernels/kernels.hpp"
#include "kernels/planted_faults.hpp"

namespace biseam::test {

namespace {

constexpr Isa kPlanted = Isa::avx512;  // any set but scalar

struct Options {
  bool bench = false;
  const char* filter = "";
  uint32_t seed = 0;
};

// The difference, or that the version died: it runs in a process of its own.
std::string find_difference_in_child(const Kernel& kernel, Isa isa, uint32_t seed) {
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  const pid_t child = fork();
  if (child == 0) {
    const std::string found = find_difference(kernel, isa, seed);
    const ssize_t written = write(ends[1], found.data(), found.size());
    _exit(written == static_cast<ssize_t>(found.size()) ? 0 : 1);
  }
  close(ends[1]);
  std::string found;
  char part[256];
  for (ssize_t got; (got = read(ends[0], part, sizeof part)) > 0;) found.append(part, static_cast<std::size_t>(got));
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (child < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    return kernel.name + " " + name_of(isa) + ": died, as by touching what is not its own (seed " + std::to_string(seed) + ")";
  }
  return found;
}

int check_harness(uint32_t seed) {
  int failures = 0;
  const std::string none = find_difference_in_child(right_kernel(), kPlanted, seed);
  if (!none.empty()) {
    std::printf("the right kernel was blamed: %s\n", none.c_str());
    ++failures;
  }
  for (const Kernel& kernel : wrong_kernels()) {
    if (find_difference_in_child(kernel, kPlanted, seed).empty()) {
      std::printf("the kernel that %s was not caught\n", kernel.name.c_str());
      ++failures;
    }
  }
  std::printf("planted faults: %zu, not caught: %d\n", wrong_kernels().size(), failures);
  return failures;
}

bool chosen(const Kernel& kernel, const Options& options) { return kernel.name.find(options.filter) != std::string::npos; }

int check_kernels(const Options& options) {
  int failures = check_harness(options.seed), versions = 0;
  for (const Kernel& kernel : all_kernels()) {
    if (!chosen(kernel, options)) continue;
    for (const Isa isa : kernel.isas) {
      // The scalar version against itself: it stays inside its buffers.
      const std::string found = find_difference_in_child(kernel, isa, options.seed);
      ++versions;
      if (found.empty()) continue;
      std::printf("%s\n", found.c_str());
      ++failures;
    }
  }
  std::printf("%d versions checked, whatever BISEAM_ISA says, %d failures\n", versions, failures);
  return failures == 0 && versions > 0 ? 0 : 1;
}

void bench_kernels(const Options& options) {
  std::printf("| kernel | version | ns per pixel | times scalar |\n|---|---|---|---|\n");
  for (const Kernel& kernel : all_kernels()) {
    if (!chosen(kernel, options)) continue;
    const std::vector<double> times = measure(kernel);
    for (std::size_t i = 0; i < times.size(); ++i) {
      std::printf("| %s | %s | %.3f | %.2f |\n", kernel.name.c_str(), name_of(kernel.isas[i]), times[i], times[0] / times[i]);
    }
  }
}

int usage() {
  std::fprintf(stderr, "biseam_kernels [--bench] [--filter PART_OF_NAME] [--seed N]\n");
  return 2;
}

int run(int argc, char** argv) {
  Options options;
  options.seed = std::random_device{}();
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--bench") == 0) {
      options.bench = true;
    } else if (std::strcmp(argv[i], "--filter") == 0 && i + 1 < argc) {
      options.filter = argv[++i];
    } else if (std::strcmp(argv[i], "--seed") == 0 && i + 1 < argc) {
      options.seed = static_cast<uint32_t>(std::strtoul(argv[++i], nullptr, 0));
    } else {
      return usage();
    }
  }
  if (options.bench) {
    bench_kernels(options);
    return 0;
  }
  std::printf("seed %u\n", options.seed);
  return check_kernels(options);
}

}  // namespace

std::vector<Kernel> all_kernels() {
  std::vector<Kernel> all;
  for (const auto& stage : {blend_kernels, exchange_kernels, format_kernels, light_kernels, near_kernels, remap_kernels,
                            ring_kernels, sample_kernels, seam_kernels, strip_kernels, pyramid_kernels, table_kernels}) {
    for (Kernel& kernel : stage()) all.push_back(std::move(kernel));
  }
  return all;
}

}  // namespace biseam::test

int main(int argc, char** argv) { return biseam::test::run(argc, argv); }
