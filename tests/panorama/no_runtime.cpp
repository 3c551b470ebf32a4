// A host without exceptions, type information and the C++ runtime library uses the checked interface.
#include "biseam/biseam.h"
#include "biseam/stitcher.hpp"

int main() {
  StitchConfig config = {};
  config.in_h = 960;
  config.out_w[0] = config.out_luma_stride[0] = config.out_chroma_stride[0] = 1920;
  config.feather = 16;
  config.trans_width = 32;
  EngineMemInfo info;
  if (QOR_GetMemSize_BI(&config, &info) != 0 || info.size != 24948864) return 1;
  biseam::Stitcher empty;
  biseam::Result<biseam::Stitcher> refused = biseam::Stitcher::create(config);
  if (refused || refused.error().code() != biseam::ErrorCode::invalid_configuration) return 2;
  empty = std::move(*refused);
  return 0;
}
