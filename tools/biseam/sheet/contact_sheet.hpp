// Pictures with captions on one page.
#pragma once

#include <string>
#include <vector>

#include "picture/picture.hpp"

namespace biseam::tool {

struct Panel {
  Rgb picture;
  std::string caption;  // one line; empty: no line
};

struct SheetLayout {
  int columns = 2;
  int panel_width = 960;  // pixels; heights follow the pictures
};

// Panels row by row.  A page with one panel and no caption is the picture alone, without a margin.
Rgb contact_sheet(const std::vector<Panel>& panels, const SheetLayout& layout);

}  // namespace biseam::tool
