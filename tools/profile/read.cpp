#include "profile/read.hpp"

#include <toml++/toml.h>
#include <cmath>
#include <set>
#include <sstream>
#include <string_view>

#include "profile/shape.hpp"

namespace biseam::profile {
namespace {

[[noreturn]] void refuse(const std::string& file, unsigned line, const std::string& what) {
  throw Error(file + ": line " + std::to_string(line) + ": " + what);
}

std::string text(double number) {
  std::ostringstream out;
  out << number;
  return out.str();
}

// One table of the file: hands out values by key, and complains about the keys nobody asked for.
class Section {
 public:
  Section(const toml::table& table, std::string file, std::string name)
      : table_(table), file_(std::move(file)), name_(std::move(name)) {}

  void read(const char* key, std::optional<double>& to, Limits limits) {
    const toml::node* node = find(key);
    if (!node) return;
    const std::optional<double> value = node->is_number() ? node->value<double>() : std::nullopt;
    if (!value || !limits.hold(*value)) refuse_range(key, *node, "a number", limits);
    to = value;
  }

  void read(const char* key, std::optional<int>& to, Limits limits) {
    const toml::node* node = find(key);
    if (!node) return;
    const std::optional<std::int64_t> value = node->is_integer() ? node->value<std::int64_t>() : std::nullopt;
    if (!value || !limits.hold(double(*value))) refuse_range(key, *node, "a whole number", limits);
    to = int(*value);
  }

  template <std::size_t Count>
  void read(const char* key, std::optional<std::array<double, Count>>& to, Limits limits) {
    const toml::node* node = find(key);
    if (!node) return;
    const std::string kind = "a list of " + std::to_string(Count) + " numbers";
    const toml::array* const list = node->as_array();
    if (!list || list->size() != Count) refuse_range(key, *node, kind.c_str(), limits);
    to.emplace();
    for (std::size_t k = 0; k < Count; ++k) {
      const toml::node& number = *list->get(k);
      const std::optional<double> value = number.is_number() ? number.value<double>() : std::nullopt;
      if (!value || !limits.hold(*value)) refuse_range(key, *node, kind.c_str(), limits);
      (*to)[k] = *value;
    }
  }

  void read(const char* key, std::optional<bool>& to) {
    const toml::node* node = find(key);
    if (!node) return;
    if (!node->is_boolean()) refuse(key, *node, "must be true or false");
    to = node->value<bool>();
  }

  // An empty table when the section is missing.
  Section section(const char* key) {
    static const toml::table kNone;
    const toml::node* node = find(key);
    if (node && !node->is_table()) refuse(key, *node, "must be a table");
    return Section(node ? *node->as_table() : kNone, file_, std::string(key) + ".");
  }

  [[noreturn]] void refuse(const char* key, const std::string& what) { refuse(key, *table_.get(key), what); }

  void refuse_unknown() const {
    for (const auto& [key, node] : table_) {
      if (!known_.contains(std::string(key.str()))) {
        profile::refuse(file_, key.source().begin.line, "unknown key '" + name_ + std::string(key.str()) + "'");
      }
    }
  }

 private:
  const toml::node* find(const char* key) {
    known_.insert(key);
    return table_.get(key);
  }

  [[noreturn]] void refuse(const char* key, const toml::node& node, const std::string& what) {
    profile::refuse(file_, node.source().begin.line, name_ + key + " " + what);
  }

  [[noreturn]] void refuse_range(const char* key, const toml::node& node, const char* kind, Limits limits) {
    refuse(key, node, std::string("must be ") + kind + ", " + text(limits.low) + " to " + text(limits.high));
  }

  const toml::table& table_;
  std::string file_, name_;
  std::set<std::string> known_;
};

void read_lens(Section section, LensSettings& lens) {
  section.read("cx", lens.cx, kCentreLimits);
  section.read("cy", lens.cy, kCentreLimits);
  section.read("p", lens.p, kScaleLimits);
  section.read("k", lens.k, kCoefficientLimits);
  section.read("fov", lens.fov, kFovLimits);
  section.read("mount", lens.mount, {0, 270});
  if (lens.mount && !is_quarter_turn(*lens.mount)) section.refuse("mount", "must be 0, 90, 180 or 270");
  section.read("yaw", lens.yaw, kTurnLimits);
  section.read("pitch", lens.pitch, kTurnLimits);
  section.read("roll", lens.roll, kTurnLimits);
  section.read("vignette", lens.vignette, kCoefficientLimits);
  section.read("gain", lens.gain, kGainLimits);
  section.refuse_unknown();
}

void read_picture_size(Section section, Section& top, std::optional<Size>& size) {
  std::optional<int> width, height;
  section.read("width", width, kSideLimits);
  section.read("height", height, kSideLimits);
  section.refuse_unknown();
  if (width.has_value() != height.has_value()) top.refuse("picture", "needs both width and height");
  if (width) size = Size{*width, *height};
}

void read_blend(Section blend, Section seam, BlendSettings& settings) {
  blend.read("feather", settings.feather, kColumnLimits);
  blend.read("trans_width", settings.trans_width, kColumnLimits);
  blend.read("pyr_level", settings.pyr_level, kLevelLimits);
  blend.refuse_unknown();
  seam.read("search", settings.search);
  seam.read("findpath_width", settings.findpath_width, kColumnLimits);
  seam.read("inv_scale", settings.inv_scale, kShrinkLimits);
  seam.refuse_unknown();
}

}  // namespace

CameraSettings read(const std::string& text, const std::string& name) try {
  if (text.size() > kMostBytes) throw Error(name + ": is too long for a profile, the most is 1 MiB");
  if (const std::optional<ShapeFault> fault = find_deep_nesting(text)) refuse(name, fault->line, fault->what);
  const toml::table file = toml::parse(text, name);
  CameraSettings settings;
  Section top(file, name, "");
  top.read("width", settings.width, kWidthLimits);
  if (settings.width && !is_panorama_width(*settings.width)) top.refuse("width", "must be a multiple of 8");
  read_picture_size(top.section("picture"), top, settings.picture);
  top.read("baseline", settings.baseline, kBaselineLimits);
  read_lens(top.section("lens0"), settings.lens[0]);
  read_lens(top.section("lens1"), settings.lens[1]);
  read_blend(top.section("blend"), top.section("seam"), settings.blend);
  top.refuse_unknown();
  return settings;
} catch (const toml::parse_error& error) {
  refuse(name, error.source().begin.line, std::string(error.description()));
}

}  // namespace biseam::profile
