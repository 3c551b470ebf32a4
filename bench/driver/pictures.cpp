#include "driver/pictures.hpp"

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace biseam::bench {

Nv12::Nv12(int w, int h)
    : width(w), height(h), luma(static_cast<std::size_t>(w) * h), chroma(static_cast<std::size_t>(w) * h / 2) {}

Nv12 read_fisheye(const Setup& setup, int lens) {
  Nv12 picture(setup.size(), setup.size());
  const std::string name = setup.pictures + "/fisheye" + std::to_string(lens) + "_" + std::to_string(setup.size()) + ".nv12";
  std::ifstream file(name, std::ios::binary);
  for (auto* plane : {&picture.luma, &picture.chroma}) {
    file.read(reinterpret_cast<char*>(plane->data()), static_cast<std::streamsize>(plane->size()));
  }
  if (!file) {
    std::fprintf(stderr, "can't read %s\n", name.c_str());
    std::exit(1);
  }
  return picture;
}

void save(const Nv12& picture, const std::string& name) {
  std::ofstream file(name, std::ios::binary);
  for (const auto* plane : {&picture.luma, &picture.chroma}) {
    file.write(reinterpret_cast<const char*>(plane->data()), static_cast<std::streamsize>(plane->size()));
  }
  if (!file.flush()) {
    std::fprintf(stderr, "can't write %s\n", name.c_str());
    std::exit(1);
  }
}

}  // namespace biseam::bench
