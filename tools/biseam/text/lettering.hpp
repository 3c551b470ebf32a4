// Lettering drawn with round strokes: capitals, digits and a little punctuation, for signs and captions.
#pragma once

#include <string_view>
#include <vector>

namespace biseam::tool {

// One line of text, laid out from x = 0 rightwards, y from 0 at the top of the letters to 1 at their foot.
// Lower case is drawn as capitals; what has no glyph is left blank.
class Lettering {
 public:
  explicit Lettering(std::string_view text, double stroke = 0.15);

  double width() const { return width_; }

  // Share of ink, 0 .. 1, over a spot of the given diameter around (x, y).
  double ink(double x, double y, double diameter) const;

 private:
  struct Segment {
    double x0, y0, x1, y1;
    double distance_to(double x, double y) const;
  };
  struct Glyph {
    double left, right;
    std::size_t first, end;  // segments
  };

  std::vector<Segment> segments_;
  std::vector<Glyph> glyphs_;
  double half_stroke_, width_ = 0;
};

}  // namespace biseam::tool
