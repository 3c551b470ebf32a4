#include "calibration/report/numbers.hpp"

#include <charconv>
#include <cmath>

#include "calibration/report/formatted.hpp"
#include "calibration/report/matches.hpp"

namespace biseam::tool {
namespace {

using calibrate::Finding;
using calibrate::Octants;

// The shortest digits that stand for the number, as in the profile.
std::string exact(double number) {
  char digits[32];
  return {digits, std::to_chars(digits, digits + sizeof digits, number).ptr};
}

struct Known {
  std::string value;
  double deviation;  // below 0: none is stated
};

std::string cell(const Known& known) {
  std::string out = "<td><b>" + known.value + "</b>";
  if (known.deviation >= 0) out += formatted(" <i>&plusmn;&#8239;%.2g</i>", known.deviation);
  return out + "</td>";
}

std::string row(const std::string& name, const Known& first, const Known& second) {
  return "<tr><th scope=\"row\">" + name + "</th>" + cell(first) + cell(second) + "</tr>\n";
}

std::string place_text(double left) { return left < 0 ? "&ndash;" : formatted("%.2f", left); }

}  // namespace

std::string parameter_table(const Finding& finding) {
  const calibrate::Values& off = finding.deviations;
  const profile::LensSettings(&lens)[2] = finding.settings.lens;
  const auto both = [&](auto value, double first, double second) {
    return std::pair<Known, Known>{{exact(*(lens[0].*value)), first}, {exact(*(lens[1].*value)), second}};
  };
  std::string out = "<table class=\"parameters\">\n<caption>What the profile says, with standard deviations</caption>\n";
  out += "<thead><tr><td></td><th scope=\"col\">lens 0</th><th scope=\"col\">lens 1</th></tr></thead>\n<tbody>\n";
  const auto add = [&](const std::string& name, const std::pair<Known, Known>& known) {
    out += row(name, known.first, known.second);
  };
  using profile::LensSettings;
  using namespace calibrate;
  add("centre x, pixels", both(&LensSettings::cx, off[kCx0], off[kCx1]));
  add("centre y, pixels", both(&LensSettings::cy, off[kCy0], off[kCy1]));
  add("scale p, pixels per radian", both(&LensSettings::p, *lens[0].p * off[kScale], *lens[1].p * off[kScale]));
  for (std::size_t i = 0; i < 3; ++i) {
    const double deviation = off[i == 0 ? kK1 : i == 1 ? kK2 : kK3];
    add("k<sub>" + std::to_string(i + 1) + "</sub>",
        {{exact((*lens[0].k)[i]), deviation}, {exact((*lens[1].k)[i]), deviation}});
  }
  add("angle of view, degrees", both(&LensSettings::fov, 2 * off[kRim], 2 * off[kRim]));
  add("mount, degrees", {{std::to_string(*lens[0].mount), -1}, {std::to_string(*lens[1].mount), -1}});
  const Known ideal{"&ndash;", -1};
  add("yaw, degrees", {ideal, {exact(*lens[1].yaw), off[kYaw]}});
  add("pitch, degrees", {ideal, {exact(*lens[1].pitch), off[kPitch]}});
  add("roll, degrees", {ideal, {exact(*lens[1].roll), off[kRoll]}});
  return out + "</tbody>\n</table>\n";
}

std::string octant_ring(const Octants& octants) {
  constexpr double kInner = 62, kOuter = 96, kGap = 0.02;
  std::string out = "<svg class=\"ring\" viewBox=\"-100 -100 200 200\" aria-hidden=\"true\">\n";
  for (int i = 0; i < calibrate::kOctants; ++i) {
    const double left = octants[std::size_t(i)];
    const double begin = -kPi + i * kPi / 4 + kGap, end = -kPi + (i + 1) * kPi / 4 - kGap, middle = 0.5 * (begin + end);
    out += formatted("<path class=\"%s\" d=\"M%.2f %.2fA%g %g 0 0 1 %.2f %.2fL%.2f %.2fA%g %g 0 0 0 %.2f %.2fz\"/>\n",
                     left < 0 ? "none" : class_name(class_of(left)).c_str(), kOuter * std::cos(begin), kOuter * std::sin(begin),
                     kOuter, kOuter, kOuter * std::cos(end), kOuter * std::sin(end), kInner * std::cos(end),
                     kInner * std::sin(end), kInner, kInner, kInner * std::cos(begin), kInner * std::sin(begin));
    const double at = 0.5 * (kInner + kOuter);
    out += formatted("<text x=\"%.1f\" y=\"%.1f\">%s</text>\n", at * std::cos(middle), at * std::sin(middle) + 4.5,
                     place_text(left).c_str());
  }
  return out + "</svg>\n";
}

std::string octant_table(const Octants& octants) {
  std::string out =
      "<table class=\"octants\">\n<caption>Pixels of a panorama 3840 wide that are left in each eighth of the "
      "ring</caption>\n<tbody>\n";
  for (std::size_t i = 0; i < octants.size(); ++i) {
    out += std::string("<tr><th scope=\"row\">") + kOctantNames[i] + "</th><td>" + place_text(octants[i]) + "</td></tr>\n";
  }
  return out + "</tbody>\n</table>\n";
}

}  // namespace biseam::tool
