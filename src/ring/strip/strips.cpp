#include "ring/strip/strips.hpp"

#include "ring/strip/seam_cost.hpp"
#include "ring/strip/seam_path.hpp"
#include "ring/strip/unroll_rows.hpp"

namespace biseam::ring {

namespace {

constexpr int kUnrolledRows = 16;  // t of a part
constexpr int kPull = 4;           // of a seam that is searched in one frame alone

void reduce(const StripFrame& frame, int part) {
  const StripPlan& plan = *frame.plan;
  for (int lens = 0; lens < 2; ++lens) {
    for (int plane = 0; plane < plan.config.planes; ++plane) {
      const Reduction& reduction = plan.reductions[lens][plane];
      if (part < reduction.parts()) {
        return reduce_part(reduction, frame.pictures[lens][plane], frame.format, frame.views->needed[lens][plane], part,
                           frame.views->reduced[lens][plane]);
      }
      part -= reduction.parts();
    }
  }
}

bool same_places(const Reduction& a, const Reduction& b) {
  const auto same = [](const ReducedAxis& c, const ReducedAxis& d) {
    return c.count == d.count && c.origin == d.origin && c.shift == d.shift;
  };
  return same(a.x, b.x) && same(a.y, b.y);
}

// Samples [begin, begin + count) of a lens's strips; planes in pairs where they can be.
void unroll_lens(const StripFrame& frame, int lens, ptrdiff_t begin, int count) {
  const StripPlan& plan = *frame.plan;
  const StripPositions& positions = frame.positions[lens];
  int16_t* const* const reduced = frame.views->reduced[lens];
  for (int plane = 0; plane < plan.config.planes;) {
    const Reduction* reduction = &plan.reductions[lens][plane];
    const bool pair = plane + 1 < plan.config.planes && same_places(reduction[0], reduction[1]);
    const ReducedPlanes planes{
        reduction->x, reduction->y, reduction->stride(), pair ? 2 : 1, {reduced[plane], pair ? reduced[plane + 1] : nullptr}};
    int16_t* const* const strips = frame.views->strips[lens];
    int16_t* const out[2] = {strips[plane] + begin, pair ? strips[plane + 1] + begin : nullptr};
    kUnrollRow.best()(planes, positions.x + begin, positions.y + begin, out, count);
    plane += planes.count;
  }
}

void hold(int16_t* samples, int count) {
  for (int i = 0; i < count; ++i) {
    samples[i] = static_cast<int16_t>(samples[i] < 0 ? 0 : samples[i] > kMaxFine ? kMaxFine : samples[i]);
  }
}

// Samples [begin, begin + count) of a lens's strips as they would be in its light's absence.
void undo_light(const StripFrame& frame, int lens, ptrdiff_t begin, int count) {
  constexpr int kMost = 256;
  const Light& light = frame.lights[lens];
  const StripPositions& positions = frame.positions[lens];
  int32_t factors[kMost];
  for (const ptrdiff_t end = begin + count; begin < end; begin += kMost) {
    const int length = static_cast<int>(end - begin < kMost ? end - begin : kMost);
    for (int plane = 0; plane < frame.plan->config.planes; ++plane) {
      int16_t* const samples = frame.views->strips[lens][plane] + begin;
      kFindLight.best()(light, plane, positions.x + begin, positions.y + begin, factors, length);
      kLightRow.best()(samples, factors, light.pivot[plane], length);
      const Tint tint{frame.views->strips[lens][0] + begin, light.pivot[0], {light.tint[plane]}};
      if (light.tint[plane] != 0) kTintRow.best()(samples, tint, 1, length);
      hold(samples, length);
    }
  }
}

void unroll(const StripFrame& frame, int part) {
  const StripPlan& plan = *frame.plan;
  const int count = kUnrolledRows * plan.config.shape.width;
  const ptrdiff_t begin = ptrdiff_t{part} * count;
  for (int lens = 0; lens < 2; ++lens) {
    unroll_lens(frame, lens, begin, count);
    if (frame.lights != nullptr && frame.lights[lens].any) undo_light(frame, lens, begin, count);
  }
}

void compare(const StripFrame& frame, int part) {
  const StripPlan& plan = *frame.plan;
  const StripViews& views = *frame.views;
  const int count = kUnrolledRows * plan.config.shape.width, first = part * kUnrolledRows;
  const ptrdiff_t begin = ptrdiff_t{part} * count;
  if (frame.match != nullptr) match_strips(*frame.match, plan, views, first, first + kUnrolledRows);
  if (frame.near != nullptr) match_near(*frame.near, plan, views, first, first + kUnrolledRows);
  for (int plane = 0; plane < plan.config.planes; ++plane) {
    const int16_t *strip0 = views.strips[0][plane] + begin, *strip1 = views.strips[1][plane] + begin;
    int16_t* difference = views.difference[plane] + begin;
    for (int i = 0; i < count; ++i) difference[i] = static_cast<int16_t>(strip1[i] - strip0[i]);
  }
}

void fill_cost(const StripFrame& frame, int pull) {
  const StripViews& views = *frame.views;
  const StripShape shape = frame.plan->config.shape;
  const bool colour = frame.plan->config.planes == 3;
  const auto row_of = [&](int plane, int t) {
    return views.difference[plane] + ptrdiff_t{(t + shape.length) % shape.length} * shape.width;
  };
  for (int t = 0; t < shape.length; ++t) {
    const DifferenceRows rows{
        row_of(0, t - 1), row_of(0, t), row_of(0, t + 1), {colour ? row_of(1, t) : nullptr, colour ? row_of(2, t) : nullptr}};
    kSeamCostRow.best()(rows, pull, views.cost + ptrdiff_t{t} * shape.width, shape.width);
  }
}

void find_path(const StripFrame& frame) {
  const StripViews& views = *frame.views;
  const StripShape shape = frame.plan->config.shape;
  if (frame.seam.mode == SeamMode::search) {
    SeamMemory* const memory = frame.seam.memory;
    fill_cost(frame, memory != nullptr ? 0 : kPull);
    if (memory != nullptr) {
      remember_costs(*memory, views.cost);
      fill_lasting_cost(*memory, views.cost);
    }
    find_seam(shape, views.cost, frame.plan->edge(), views.search, views.rows);
    if (memory != nullptr) {
      remember_path(*memory, views.rows);
      mean_path(*memory, views.path);
    } else {
      for (int t = 0; t < shape.length; ++t) views.path[t] = int32_t{views.rows[t]} << 16;
    }
  } else if (frame.seam.mode == SeamMode::middle) {
    for (int t = 0; t < shape.length; ++t) views.path[t] = (shape.width - 1) << 15;
  }
  views.path[shape.length] = views.path[0];
  build_seam_weights(views.path, views.weights);
}

void blend(const StripFrame& frame, int plane) {
  const StripViews& views = *frame.views;
  mix_low_band(views.difference_pyramid[plane], views.weights, views.difference[plane], views.fade, views.corrections[0][plane],
               views.corrections[1][plane]);
}

}  // namespace

int strip_parts(const StripPlan& plan, StripStep step) noexcept {
  switch (step) {
    case StripStep::reduce: {
      int parts = 0;
      for (int lens = 0; lens < 2; ++lens) {
        for (int plane = 0; plane < plan.config.planes; ++plane) parts += plan.reductions[lens][plane].parts();
      }
      return parts;
    }
    case StripStep::unroll:
    case StripStep::compare:
      return plan.config.shape.length / kUnrolledRows;
    case StripStep::seam:
      return 1 + plan.config.planes;
    case StripStep::blend:
      return plan.config.planes;
  }
  return 0;
}

void run_strip_part(const StripFrame& frame, StripStep step, int part) noexcept {
  switch (step) {
    case StripStep::reduce:
      return reduce(frame, part);
    case StripStep::unroll:
      return unroll(frame, part);
    case StripStep::compare:
      return compare(frame, part);
    case StripStep::seam:
      return part == 0 ? find_path(frame)
                       : build_difference_pyramid(frame.views->difference[part - 1], frame.views->difference_pyramid[part - 1]);
    case StripStep::blend:
      return blend(frame, part);
  }
}

void run_strips(const StripFrame& frame) noexcept {
  for (const StripStep step : kStripSteps) {
    for (int part = 0; part < strip_parts(*frame.plan, step); ++part) run_strip_part(frame, step, part);
  }
}

}  // namespace biseam::ring
