#include "text/lettering.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>

namespace biseam::tool {

namespace {

struct Pattern {
  char letter;
  // Strokes, parted by blanks; every two digits are the x and y of a point on a grid 9 units high (; is 11, below the line).
  std::string_view strokes;
};

constexpr std::array kPatterns = {
    Pattern{'A', "093069 1656"},
    Pattern{'B', "0444535140000949686544"},
    Pattern{'C', "62514020020729495867"},
    Pattern{'D', "00093966633000"},
    Pattern{'E', "60000969 0444"},
    Pattern{'F', "600009 0444"},
    Pattern{'G', "6251402002072949676535"},
    Pattern{'H', "0009 6069 0464"},
    Pattern{'I', "0009"},
    Pattern{'J', "5057391907"},
    Pattern{'K', "0009 5005 2369"},
    Pattern{'L', "000959"},
    Pattern{'M', "0900468089"},
    Pattern{'N', "09006960"},
    Pattern{'O', "204062674929070220"},
    Pattern{'P', "09004062634505"},
    Pattern{'Q', "204062674929070220 4669"},
    Pattern{'R', "09004062634505 3569"},
    Pattern{'S', "624020020324446667492907"},
    Pattern{'T', "0060 3039"},
    Pattern{'U', "000729496760"},
    Pattern{'V', "003960"},
    Pattern{'W', "0029436980"},
    Pattern{'X', "0069 6009"},
    Pattern{'Y', "003460 3439"},
    Pattern{'Z', "00600969"},
    Pattern{'0', "204062674929070220"},
    Pattern{'1', "022029"},
    Pattern{'2', "02204062630969"},
    Pattern{'3', "0220406263446667492907 2444"},
    Pattern{'4', "49400666"},
    Pattern{'5', "600004446667492907"},
    Pattern{'6', "5030020729496766442406"},
    Pattern{'7', "006029"},
    Pattern{'8', "24030220406263442406072949676644"},
    Pattern{'9', "1939676240200203254563"},
    Pattern{'-', "0545"},
    Pattern{'+', "0545 2327"},
    Pattern{'.', "0909"},
    Pattern{',', "190;"},
    Pattern{':', "0303 0808"},
    Pattern{'/', "0950"},
    Pattern{'(', "20030629"},
    Pattern{')', "00232609"},
    Pattern{'=', "0343 0646"},
};

constexpr double kUnit = 1.0 / 9;
constexpr double kGap = 2.6 * kUnit, kBlank = 4.5 * kUnit;

std::string_view strokes_of(char letter) {
  const char capital = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
  for (const Pattern& pattern : kPatterns) {
    if (pattern.letter == capital) return pattern.strokes;
  }
  return {};
}

}  // namespace

double Lettering::Segment::distance_to(double x, double y) const {
  const double dx = x1 - x0, dy = y1 - y0, square = dx * dx + dy * dy;
  const double along = square > 0 ? std::clamp(((x - x0) * dx + (y - y0) * dy) / square, 0.0, 1.0) : 0.0;
  return std::hypot(x - x0 - along * dx, y - y0 - along * dy);
}

Lettering::Lettering(std::string_view text, double stroke) : half_stroke_(stroke / 2) {
  for (const char letter : text) {
    const std::string_view strokes = strokes_of(letter);
    if (strokes.empty()) {
      width_ += kBlank;
      continue;
    }
    Glyph glyph{width_, width_, segments_.size(), 0};
    for (std::size_t i = 0; i + 1 < strokes.size();) {
      const auto x = [&](std::size_t at) { return glyph.left + (strokes[at] - '0') * kUnit; };
      const auto y = [&](std::size_t at) { return (strokes[at + 1] - '0') * kUnit; };
      glyph.right = std::max(glyph.right, x(i));
      const bool last = i + 3 >= strokes.size() || strokes[i + 2] == ' ';
      if (!last) segments_.push_back({x(i), y(i), x(i + 2), y(i + 2)});
      i += last ? 3 : 2;
    }
    glyph.end = segments_.size();
    glyphs_.push_back(glyph);
    width_ = glyph.right + kGap;
  }
  width_ = std::max(0.0, width_ - kGap);
}

double Lettering::ink(double x, double y, double diameter) const {
  const double reach = half_stroke_ + diameter / 2;
  if (y < -reach || y > 1.25 + reach) return 0;
  double least = reach;
  for (const Glyph& glyph : glyphs_) {
    if (x < glyph.left - reach || x > glyph.right + reach) continue;
    for (std::size_t i = glyph.first; i < glyph.end; ++i) {
      least = std::min(least, segments_[i].distance_to(x, y));
    }
  }
  return std::clamp((reach - least) / std::max(diameter, 1e-9), 0.0, 1.0);
}

}  // namespace biseam::tool
