#include "profile/write.hpp"

#include <charconv>
#include <sstream>

namespace biseam::profile {
namespace {

std::string text(bool value) { return value ? "true" : "false"; }

// The shortest digits that stand for this very number.
template <class Number>
std::string text(Number number) {
  char digits[32];
  return {digits, std::to_chars(digits, digits + sizeof digits, number).ptr};
}

template <std::size_t Count>
std::string text(const std::array<double, Count>& numbers) {
  std::string all;
  for (const double number : numbers) all += (all.empty() ? "[" : ", ") + text(number);
  return all + "]";
}

template <class T>
std::string line(const char* key, const std::optional<T>& value) {
  return value ? std::string(key) + " = " + text(*value) + "\n" : "";
}

std::string table(const std::string& name, const std::string& lines) {
  return lines.empty() ? "" : "\n[" + name + "]\n" + lines;
}

std::string lens_lines(const LensSettings& lens) {
  return line("cx", lens.cx) + line("cy", lens.cy) + line("p", lens.p) + line("k", lens.k) + line("fov", lens.fov) +
         line("mount", lens.mount) + line("yaw", lens.yaw) + line("pitch", lens.pitch) + line("roll", lens.roll) +
         line("vignette", lens.vignette) + line("gain", lens.gain);
}

std::string commented(const std::string& comment) {
  std::istringstream lines(comment);
  std::string out;
  for (std::string words; std::getline(lines, words);) out += "# " + words + "\n";
  return out;
}

}  // namespace

std::string write(const CameraSettings& settings, const std::string& comment) {
  const BlendSettings& blend = settings.blend;
  std::string picture;
  if (settings.picture) {
    picture = "width = " + text(settings.picture->width) + "\nheight = " + text(settings.picture->height) + "\n";
  }
  return commented(comment) + line("width", settings.width) + line("baseline", settings.baseline) + table("picture", picture) +
         table("lens0", lens_lines(settings.lens[0])) + table("lens1", lens_lines(settings.lens[1])) +
         table("blend",
               line("feather", blend.feather) + line("trans_width", blend.trans_width) + line("pyr_level", blend.pyr_level)) +
         table("seam", line("search", blend.search) + line("findpath_width", blend.findpath_width) +
                           line("inv_scale", blend.inv_scale));
}

}  // namespace biseam::profile
