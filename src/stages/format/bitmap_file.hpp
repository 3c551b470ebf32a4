#pragma once

#include "biseam/records.h"

namespace biseam {

// Uncompressed Windows bitmaps of 8 (grey) or 24 bits.  Null: the file can't be opened.  Record and samples are separate blocks
// of the C heap that become the caller's; the stream stays open.  What is no such bitmap gives zero fields, sizes that can't be
// had null samples, and a file that ends early rows of zeros.
ClImage* load_bitmap(const char* path);

// False: the file can't be created.
bool save_bitmap(const char* path, const ClImage& image);

}  // namespace biseam
