#pragma once

#include <cstdint>

#include "biseam/records.h"

// The formulas of the lens tables, one value at a time and without the library's helpers.
namespace biseam::test {

float plain_arctangent(float y, float x);  // from a table made of the C library's atan
double plain_sine(double x);
double plain_cosine(double x);

// The published definition of the vector unit's estimates, in double arithmetic.
float plain_reciprocal_estimate(float x);
float plain_root_estimate(float x);

struct SourcePosition {
  float u, v;
};
SourcePosition plain_entry(const LensRecord& lens, int row, int column);

// A configuration of two lenses that differ in everything.
StitchConfig lens_config(int width, int height, int feather);

// The lens record that a configuration asks for, written out strip by strip.
LensRecord plain_lens(const StitchConfig& config, int strip);

}  // namespace biseam::test
