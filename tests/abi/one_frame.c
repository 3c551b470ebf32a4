/* one_frame write FILE: stitches a made-up pair of pictures and writes the panorama's planes.
 * one_frame check FILE: does the same and compares. */
#define BISEAM_ENGINE_ONLY
#include <stdlib.h>
#include <string.h>

#include "biseam/biseam.h"

enum { kSide = 160, kWidth = 256, kPlane = kWidth * kSide };

static void describe(StitchConfig* config) {
  memset(config, 0, sizeof *config);
  config->in_h = config->in_w = kSide;
  config->in_luma_stride = config->in_chroma_stride = kSide;
  config->out_h[0] = kSide;
  config->out_w[0] = kWidth;
  config->out_luma_stride[0] = config->out_chroma_stride[0] = kWidth;
  config->p0 = config->p1 = 34.0f;
  config->cx0 = config->cy0 = config->cx1 = config->cy1 = kSide / 2;
  config->lens_matrix[0] = config->lens_matrix[4] = config->lens_matrix[8] = 1.0f;
  config->change_focus = 1.0f;
  config->feather = 8;
  config->trans_width = 16;
  config->findpath_width = 16;
  config->pyr_level = 3;
  config->findpath_enable = 1;
  config->inv_scale = 2.0f;
}

static void draw(uint8_t* plane, size_t count, uint32_t seed) {
  for (size_t i = 0; i < count; ++i) {
    seed = seed * 1664525u + 1013904223u;
    plane[i] = (uint8_t)(96 + i / kSide / 2 + (seed >> 27));
  }
}

int main(int argc, char** argv) {
  static uint8_t luma[2][kSide * kSide], chroma[2][kSide * kSide], panorama[2][kPlane], recorded[2][kPlane];
  void *in[16] = {0}, *out[16] = {0};
  StitchConfig config;
  StitchEngine* engine = NULL;
  FILE* file;

  if (argc != 3) return 2;
  for (uint32_t lens = 0; lens < 2; ++lens) {
    draw(luma[lens], sizeof luma[lens], lens);
    draw(chroma[lens], sizeof chroma[lens], 7 + lens);
    in[2 + lens] = luma[lens];
    in[6 + lens] = chroma[lens];
  }
  out[4] = panorama[0];
  out[12] = panorama[1];
  describe(&config);
  if (QOR_Create_BI_Soft(&config, &engine) != 0 || QOR_SetConfig_BI_Soft(&engine) != 0 ||
      QOR_Proc_BI_Soft(&engine, in, out) != 0 || QOR_Destroy_BI_Soft(&engine) != 0) {
    return 1;
  }

  if (strcmp(argv[1], "write") == 0) {
    file = fopen(argv[2], "wb");
    return file == NULL || fwrite(panorama, sizeof panorama, 1, file) != 1 || fclose(file) != 0;
  }
  file = fopen(argv[2], "rb");
  if (file == NULL || fread(recorded, sizeof recorded, 1, file) != 1) return 1;
  fclose(file);
  return memcmp(panorama, recorded, sizeof panorama) != 0;
}
