#include "ring/strip/strip_memory.hpp"

#include <cstring>

#include "ring/strip/seam_path.hpp"

namespace biseam::ring {

namespace {

constexpr size_t kAlignment = 64;

// Gives out pieces of a block, or only adds up their bytes when there is none.
struct Pieces {
  char* block;
  size_t used;

  template <class T>
  void take(T*& piece, ptrdiff_t count) {
    piece = block != nullptr ? reinterpret_cast<T*>(block + used) : nullptr;
    used += (static_cast<size_t>(count) * sizeof(T) + kAlignment - 1) / kAlignment * kAlignment;
  }
};

// What lives from frame to frame.
void take_lasting(const StripPlan& plan, Pieces& pieces, StripViews& views) {
  const StripShape shape = plan.config.shape;
  for (int plane = 0; plane < plan.config.planes; ++plane) {
    for (int lens = 0; lens < 2; ++lens) {
      pieces.take(views.needed[lens][plane], plan.reductions[lens][plane].tile_count());
      pieces.take(views.strips[lens][plane], strip_samples(shape));
      pieces.take(views.corrections[lens][plane], strip_samples(shape));
    }
    pieces.take(views.difference[plane], strip_samples(shape));
  }
  pieces.take(views.fade, shape.width);
  pieces.take(views.path, shape.length + 1);
}

void take_reduced(const StripPlan& plan, Pieces& pieces, StripViews& views) {
  for (int lens = 0; lens < 2; ++lens) {
    for (int plane = 0; plane < plan.config.planes; ++plane) {
      pieces.take(views.reduced[lens][plane], plan.reductions[lens][plane].samples());
    }
  }
}

void take_bands(const StripPlan& plan, Pieces& pieces, StripViews& views) {
  const StripShape shape = plan.config.shape;
  char* search;
  int16_t* pyramid;
  pieces.take(views.cost, strip_samples(shape));
  pieces.take(search, static_cast<ptrdiff_t>(seam_search_bytes(shape)));
  views.search = search;
  pieces.take(views.rows, shape.length);
  for (int plane = 0; plane < plan.config.planes; ++plane) {
    pieces.take(pyramid, pyramid_samples(shape));
    if (pyramid != nullptr) views.difference_pyramid[plane] = lay_out_pyramid(shape, pyramid);
  }
  pieces.take(pyramid, pyramid_samples(shape));
  if (pyramid != nullptr) views.weights = lay_out_pyramid(shape, pyramid);
}

size_t take_all(const StripPlan& plan, char* block, StripViews& views) {
  Pieces lasting{block, 0};
  take_lasting(plan, lasting, views);
  Pieces reduced = lasting, bands = lasting;
  take_reduced(plan, reduced, views);
  take_bands(plan, bands, views);
  return reduced.used > bands.used ? reduced.used : bands.used;
}

// Distance between neighbouring positions in 1/16 pixel, a mean over the strip: of both directions, as the sum of its parts
// along x and y, which over all directions is 4 / pi of the distance.
int64_t mean_pitch(StripShape shape, StripPositions positions) {
  const auto apart = [](int32_t a, int32_t b) { return a > b ? int64_t{a} - b : int64_t{b} - a; };
  int64_t sum = 0;
  for (ptrdiff_t i = 0; i < strip_samples(shape); ++i) {
    const ptrdiff_t along = i < shape.width ? i + strip_samples(shape) - shape.width : i - shape.width;
    const ptrdiff_t across = i % shape.width == 0 ? i + 1 : i - 1;
    for (const ptrdiff_t j : {along, across})
      sum += apart(positions.x[i], positions.x[j]) + apart(positions.y[i], positions.y[j]);
  }
  return sum / (2 * strip_samples(shape)) * 201 >> 20;
}

}  // namespace

StripPlan plan_strips(const StripConfig& config, const StripPositions (&positions)[2]) noexcept {
  StripPlan plan{config, {}};
  for (int lens = 0; lens < 2; ++lens) {
    const int64_t pitch = mean_pitch(config.shape, positions[lens]);
    int factor = 1;
    while (factor < kMaxReduction && 2 * factor * 16 * 4 <= 5 * pitch) factor *= 2;
    for (int plane = 0; plane < config.planes; ++plane) {
      plan.reductions[lens][plane] = plan_reduction(config.geometry[lens][plane], factor);
    }
  }
  return plan;
}

size_t strip_memory_bytes(const StripPlan& plan) noexcept {
  StripViews views{};
  return take_all(plan, nullptr, views);
}

StripViews lay_out_strips(const StripPlan& plan, const StripPositions (&positions)[2], void* block) noexcept {
  StripViews views{};
  take_all(plan, static_cast<char*>(block), views);
  for (int lens = 0; lens < 2; ++lens) {
    for (int plane = 0; plane < plan.config.planes; ++plane) {
      const Reduction& reduction = plan.reductions[lens][plane];
      std::memset(views.needed[lens][plane], 0, static_cast<size_t>(reduction.tile_count()));
      mark_tiles(reduction, positions[lens], strip_samples(plan.config.shape), views.needed[lens][plane]);
    }
  }
  make_fade(plan.config.shape.width, plan.edge(), views.fade);
  return views;
}

}  // namespace biseam::ring
