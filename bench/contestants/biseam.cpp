// This library, held to an instruction set, as a whole and by stages.
#include "base/threads.hpp"
#include "contestants/stitched_frame.hpp"
#include "driver/isa.hpp"
#include "frame/remap/sample_region.hpp"
#include "frame/seam/search.hpp"
#include "frame/stages.hpp"

namespace biseam::bench {

namespace {

void* run_search(void* task) {
  search_bytes(*static_cast<BlendInstance*>(task));
  return nullptr;
}

// Both seams at the same time, as blend_stage has them searched: in the bytes that conversion_stage left.
void search_stage(StitchEngine& engine) {
  ThreadTask tasks[2];
  for (int k = 0; k < 2; ++k) {
    tasks[k] = {run_search, engine.blend[k]};
  }
  run_together(tasks, 2);
}

template <class Stage>
void measure(const char* name, Figures& figures, Stage stage) {
  const Stopwatch watch;
  stage();
  watch.stop(name, figures);
}

// blend_stage searches too, so it is measured under the weights that the search has left.
Figures run_stages(StitchedFrame& frame) {
  StitchEngine& engine = *frame.engine();
  const FramePlan plan = plan_frame(engine);
  Figures figures;
  measure("remap", figures, [&] { remap_stage(engine, plan, sample_region); });
  measure("conversion", figures, [&] { conversion_stage(engine, plan); });
  measure("search", figures, [&] { search_stage(engine); });
  measure("blend", figures, [&] { (void)blend_stage(engine, plan, {.weights = Weights::kept}); });
  measure("composition", figures, [&] { compose_stage(engine, plan); });
  return figures;
}

int run(int argc, char** argv) {
  const Server server;
  const Setup setup = read_setup(argc, argv);
  hold_to_isa(setup);
  StitchedFrame frame(setup);
  Commands commands = frame.commands();
  commands["stages"] = [&](const std::string&) { return run_stages(frame); };
  return server.serve(commands);
}

}  // namespace

}  // namespace biseam::bench

int main(int argc, char** argv) { return biseam::bench::run(argc, argv); }
