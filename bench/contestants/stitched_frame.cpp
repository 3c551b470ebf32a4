#include "contestants/stitched_frame.hpp"

#include <cstdio>
#include <cstdlib>

namespace biseam::bench {

StitchedFrame::StitchedFrame(const Setup& setup)
    : config_(make_config(setup)),
      fisheye_{read_fisheye(setup, 0), read_fisheye(setup, 1)},
      panorama_(setup.width, setup.width / 2) {
  for (int lens = 0; lens < 2; ++lens) {
    in_[2 + lens] = fisheye_[lens].luma.data();
    in_[6 + lens] = fisheye_[lens].chroma.data();
  }
  out_[4] = panorama_.luma.data();
  out_[12] = panorama_.chroma.data();
  add_peak_memory("before", start_);
  measure("create", &StitchedFrame::create, start_);
  measure("tables", &StitchedFrame::build_tables, start_);
  measure("frame", &StitchedFrame::stitch, start_);
}

StitchedFrame::~StitchedFrame() { QOR_Destroy_BI_Soft(&engine_); }

int32_t StitchedFrame::create() { return QOR_Create_BI_Soft(&config_, &engine_); }
int32_t StitchedFrame::build_tables() { return QOR_SetConfig_BI_Soft(&engine_); }
int32_t StitchedFrame::stitch() { return QOR_Proc_BI_Soft(&engine_, in_, out_); }

void StitchedFrame::measure(const char* name, Step step, Figures& figures) {
  const Stopwatch watch;
  const int32_t status = (this->*step)();
  watch.stop(name, figures);
  if (status == 0) return;
  std::fprintf(stderr, "%s failed\n", name);
  std::exit(1);
}

Figures StitchedFrame::measured(const char* name, Step step) {
  Figures figures;
  measure(name, step, figures);
  return figures;
}

Figures StitchedFrame::memory() const {
  Figures figures;
  add_peak_memory("peak", figures);
  return figures;
}

Commands StitchedFrame::commands() {
  return {{"start", [this](const std::string&) { return start_; }},
          {"tables", [this](const std::string&) { return measured("tables", &StitchedFrame::build_tables); }},
          {"frame", [this](const std::string&) { return measured("frame", &StitchedFrame::stitch); }},
          {"memory", [this](const std::string&) { return memory(); }},
          {"save", [this](const std::string& file) {
             save(panorama_, file);
             return Figures{};
           }}};
}

}  // namespace biseam::bench
