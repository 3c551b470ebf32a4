#pragma once

#include "biseam/records.h"

namespace biseam {

void flip_rows(const ImageHeader& image);       // upside down, in place
void mirror_columns(const ImageHeader& image);  // left to right, in place; chroma pairs keep their inner order

}  // namespace biseam
