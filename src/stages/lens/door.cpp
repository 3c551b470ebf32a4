// The exported functions of lens tables, remapping and flipping.
#include <cstdlib>

#include "biseam/biseam.h"
#include "stages/lens/flip.hpp"
#include "stages/lens/lens_position.hpp"
#include "stages/lens/lens_table.hpp"
#include "stages/lens/remap.hpp"
#include "stages/lens/trig.hpp"

using biseam::PlanePair, biseam::PlaneView;

float fast_atan2(float y, float x) { return biseam::fast_arctangent(y, x); }
float my_atan(float x, float y) { return biseam::fast_arctangent(y, x); }
float my_pow(float x) { return x * x; }
float my_sqrt(float x) { return biseam::fast_square_root(x); }
double mx_sin(double x) { return biseam::parabolic_sine(x); }
double my_sin(double x) { return biseam::fast_sine(x); }
double my_cos(double x) { return biseam::fast_cosine(x); }

int32_t Init_lut(StitchConfig* config, StitchEngine* engine) {
  biseam::build_tables(*config, *engine, biseam::build_strip);
  return 0;
}

void* CreateLUTTablePht(void* builder) {
  biseam::build_strip(*static_cast<LutBuilderArgs*>(builder));
  return reinterpret_cast<void*>(1);
}

void FreeMAPTIHeader(MAPTIHeader* map) {
  std::free(map->entries);
  map->entries = nullptr;
}

void equidist2equirectangle(float x, float y, float* u, float* v, LensRecord* lens) {
  biseam::map_position(x, y, *u, *v, *lens);
}

void remap_ypoint(const float* table, int32_t table_width, int32_t table_column, ImageHeader* source, ImageHeader* destination,
                  int32_t destination_column, int32_t count, int32_t first_row, int32_t end_row, int32_t chroma_x_factor,
                  int32_t chroma_y_factor) {
  biseam::remap_region({table, table_width, table_column, source, destination, destination_column, count, first_row, end_row,
                        chroma_x_factor, chroma_y_factor});
}

void* remap_src0_main_pht(void* args) {
  biseam::remap_edge_strip(*static_cast<RemapThreadArgs*>(args), biseam::remap_region);
  return nullptr;
}

void* remap_src1_main_pht(void* args) {
  biseam::remap_middle_strip(*static_cast<RemapThreadArgs*>(args), biseam::remap_region);
  return nullptr;
}

void flip_mtrx(uint8_t* data, int32_t width, int32_t stride, int32_t height) {
  biseam::flip_plane(PlaneView<uint8_t>{data, width, stride, height});
}
void flip_mtrx_un(uint16_t* data, int32_t width, int32_t stride, int32_t height) {
  biseam::flip_plane(PlaneView<PlanePair>{reinterpret_cast<PlanePair*>(data), width, stride, height});
}
void mirror_mtrx(uint8_t* data, int32_t width, int32_t stride, int32_t height) {
  biseam::mirror_plane(PlaneView<uint8_t>{data, width, stride, height});
}
void mirror_mtrx_un(uint16_t* data, int32_t width, int32_t stride, int32_t height) {
  biseam::mirror_plane(PlaneView<PlanePair>{reinterpret_cast<PlanePair*>(data), width, stride, height});
}

void flip_image(ImageHeader* image) {
  const biseam::MovedPlanes planes = biseam::moved_planes(*image);
  biseam::flip_plane(planes.luma);
  biseam::flip_plane(planes.chroma);
}
void mirror_image(ImageHeader* image) {
  const biseam::MovedPlanes planes = biseam::moved_planes(*image);
  biseam::mirror_plane(planes.luma);
  biseam::mirror_plane(planes.chroma);
}
