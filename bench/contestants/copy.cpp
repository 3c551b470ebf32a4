// A plain copy, by one thread, of the bytes that remapping has to touch: both pictures, the lookup tables with two floats for
// each pixel, the panorama and the overlap bands.  And the same without the tables.
#include <cstring>

#include "biseam/biseam.h"
#include "driver/serve.hpp"
#include "driver/setup.hpp"

namespace biseam::bench {

namespace {

struct Bytes {
  std::size_t pictures, tables, output;
};

Bytes touched_bytes(const Setup& setup) {
  StitchConfig config = make_config(setup);
  StitchEngine* engine = nullptr;
  if (QOR_Create_BI_Soft(&config, &engine) != 0) return {};
  const std::size_t rows = static_cast<std::size_t>(config.in_h);
  const std::size_t entries = rows * (engine->left_width + engine->middle_width + engine->right_width);
  // Every table entry gives one pixel, 12 bits, of the panorama or a band.
  const Bytes bytes = {2 * rows * config.in_w * 3 / 2, entries * 2 * sizeof(float), entries * 3 / 2};
  QOR_Destroy_BI_Soft(&engine);
  return bytes;
}

void copy(const char* name, std::vector<char>& from, std::vector<char>& to, std::size_t bytes, Figures& figures) {
  const Stopwatch watch;
  std::memcpy(to.data(), from.data(), bytes);
  asm volatile("" : : "r"(to.data()) : "memory");  // the copy is wanted
  watch.stop(name, figures);
  figures.emplace_back(std::string(name) + ".bytes", static_cast<double>(bytes));
}

int run(int argc, char** argv) {
  const Server server;
  const Bytes bytes = touched_bytes(read_setup(argc, argv));
  const std::size_t pixels = bytes.pictures + bytes.output;
  std::vector<char> from(pixels + bytes.tables, 1), to(from.size(), 2);
  return server.serve({{"copy", [&](const std::string&) {
                          Figures figures;
                          copy("copy", from, to, from.size(), figures);
                          copy("copy_without_tables", from, to, pixels, figures);
                          return figures;
                        }}});
}

}  // namespace

}  // namespace biseam::bench

int main(int argc, char** argv) { return biseam::bench::run(argc, argv); }
