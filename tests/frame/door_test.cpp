#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "support/captured_output.hpp"
#include "support/engine_session.hpp"
#include "support/small_config.hpp"

namespace biseam::test {
namespace {

TEST(PrintCfg, Text) {
  StitchConfig c{};
  c.in_h = 1;
  c.in_w = -2;
  c.in_yuv_type = 3;
  c.out_h[0] = 4;
  c.out_w[0] = 5;
  c.out_flip[0] = 6;
  c.out_mirror[0] = 7;
  c.out_yuv_type = 8;
  c.p0 = 1.5f;
  c.cx0 = -2.25f;
  c.cy0 = 0.1f;
  c.p1 = 1e6f;
  c.cx1 = 1e-7f;
  c.cy1 = 12.3456789f;
  c.change_focus = 0.5f;
  c.feather = 9;
  c.trans_width = 10;
  c.findpath_width = 11;
  c.pyr_level = 12;
  c.findpath_enable = 13;
  c.inv_scale = 2.5f;
  CapturedOutput output;
  const int32_t result = print_cfg(&c);
  EXPECT_EQ(
      "qor_cfg->in_h:1\n"
      "qor_cfg->in_w:-2\n"
      "qor_cfg->in_yuv_type:3\n"
      "qor_cfg->out_h[0]:4\n"
      "qor_cfg->out_w[0]:5\n"
      "qor_cfg->out_flip[0]:6\n"
      "qor_cfg->out_mirror[0]:7\n"
      "qor_cfg->out_yuv_type:8\n"
      "qor_cfg->p0:1.500000\n"
      "qor_cfg->cx0:-2.250000\n"
      "qor_cfg->cy0:0.100000\n"
      "qor_cfg->p1:1000000.000000\n"
      "qor_cfg->cx1:0.000000\n"
      "qor_cfg->cy1:12.345679\n"
      "qor_cfg->change_focus:0.500000\n"
      "qor_cfg->feather:9\n"
      "qor_cfg->trans_width:10\n"
      "qor_cfg->findpath_width:11\n"
      "qor_cfg->pyr_level:12\n"
      "qor_cfg->findpath_enable:13\n"
      "qor_cfg->inv_scale:2.500000\n\n\n",
      output.text());
  EXPECT_EQ(static_cast<int32_t>(std::strlen("qor_cfg->inv_scale:2.500000\n\n\n")), result);
}

TEST(PrintCfg, TheLibraryDoesNotPrintItItself) {
  StitchConfig config = small_config();
  CapturedOutput output;
  { EngineSession engine(config); }
  EXPECT_EQ("", output.text());
}

}  // namespace
}  // namespace biseam::test
