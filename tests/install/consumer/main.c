#include <biseam/biseam.h>

int main(void) {
  StitchConfig config = {0};
  EngineMemInfo memory;

  config.in_h = 960;
  config.out_w[0] = 1920;
  config.out_luma_stride[0] = config.out_chroma_stride[0] = 1920;
  config.feather = 16;
  config.trans_width = 32;
  return QOR_GetMemSize_BI(&config, &memory) != 0 || memory.size != 24948864;
}
