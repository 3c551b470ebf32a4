#include "ring/engine.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "ring/channels.hpp"
#include "ring/engine_parts.hpp"
#include "ring/prefetch.hpp"

namespace biseam::ring {

namespace {

constexpr size_t kAlignment = 64;

constexpr size_t aligned(size_t bytes) noexcept { return (bytes + kAlignment - 1) / kAlignment * kAlignment; }

Light light_of(const EngineConfig& config, int lens) noexcept {
  PictureFormat format;
  describe_format(config.format, 0, format);
  return make_light(config.camera.lens[lens], format, config.full_range);
}

Tone tone_of(const EngineConfig& config) noexcept {
  PictureFormat format;
  describe_format(config.format, 0, format);
  return make_tone(config.transfer, format.rgb, config.full_range);
}

bool same(const Turn& a, const Turn& b) noexcept { return a.yaw == b.yaw && a.pitch == b.pitch && a.roll == b.roll; }

}  // namespace

Engine::Engine(const EngineConfig& config) noexcept
    : config_(config),
      projectors_{Projector(config.camera, 0), Projector(config.camera, 1)},
      lights_{light_of(config, 0), light_of(config, 1)},
      mesh_shape_(mesh_shape(config.camera, config.width, config.height, config.match_near ? kMovedSpacing : kWidestSpacing)),
      ring_(ring_shape(config.camera, config.width)),
      block_count_(ring::block_count(config.width, config.height)) {}

namespace {

// Gives out pieces of a block, or only adds up their bytes as long as there is none.
struct Pieces {
  char* block;
  size_t used = 0;

  char* take(size_t bytes) noexcept {
    char* const piece = block == nullptr ? nullptr : block + used;
    used += aligned(bytes);
    return piece;
  }
};

}  // namespace

bool Engine::take_memory() noexcept {
  PictureFormat format;
  describe_format(config_.format, 0, format);
  const size_t strip_bytes = static_cast<size_t>(strip_samples(ring_.strip)) * sizeof(int32_t);
  const auto place = [&](Pieces pieces) {
    char* const mesh = pieces.take(mesh_bytes(mesh_shape_));
    blocks_ = reinterpret_cast<BlockPlan*>(pieces.take(static_cast<size_t>(block_count_) * sizeof(BlockPlan)));
    memories_ = reinterpret_cast<PaintMemory*>(pieces.take(static_cast<size_t>(config_.threads) * sizeof(PaintMemory)));
    if (config_.steady_seam) {
      char* const seams = pieces.take(seam_memory_bytes(ring_.strip));
      if (pieces.block != nullptr) seam_memory_ = lay_out_seam_memory(ring_.strip, seams);
    }
    if (config_.match_light) {
      match_ = reinterpret_cast<LightMatch*>(pieces.take(sizeof(LightMatch)));
      char* const nodes = pieces.take(match_node_bytes(mesh_shape_));
      if (pieces.block != nullptr) match_nodes_ = carve_match_nodes(mesh_shape_, nodes);
    }
    char* moved = nullptr;
    if (config_.match_near && can_find_disparities(near_shape(ring_.strip))) {
      near_ = reinterpret_cast<NearMatch*>(pieces.take(sizeof(NearMatch)));
      moved = pieces.take(moved_mesh_bytes(mesh_shape_));
    }
    for (int32_t*& places : places_) places = reinterpret_cast<int32_t*>(pieces.take(strip_bytes));
    if (pieces.block != nullptr) mesh_ = carve_mesh(mesh_shape_, mesh);
    if (moved != nullptr) moved_mesh_ = carve_moved_mesh(mesh_, moved);
    return pieces.used;
  };
  // The strips' plan depends on where their samples lie, so that their memory is a block of its own.
  const size_t bytes = place({nullptr});
  block_ = std::aligned_alloc(kAlignment, bytes);
  if (block_ == nullptr) return false;
  place({static_cast<char*>(block_)});
  if (match_ != nullptr) start_light_match(tone_of(config_), ring_.strip, config_.rate, *match_);
  if (near_ != nullptr) start_near_match(ring_.strip, config_.rate, *near_);
  for (int lens = 0; lens < 2; ++lens) {
    fill_strip_positions(projectors_[lens], ring_.strip, places_[2 * lens], places_[2 * lens + 1]);
  }
  plan_strip(format);
  planned_ = false;  // no views yet
  const size_t more = aligned(strip_memory_bytes(strip_plan_));
  strip_block_ = std::aligned_alloc(kAlignment, more);
  if (strip_block_ == nullptr) return false;
  block_bytes_ = bytes + more;
  pool_.start(config_.threads);
  return true;
}

void Engine::plan_strip(const PictureFormat& format) noexcept {
  const StripPositions positions[2] = {{places_[0], places_[1]}, {places_[2], places_[3]}};
  strip_plan_ = plan_strips(strip_config(config_.camera, format, ring_.strip), positions);
}

void Engine::look(const Turn& turn) noexcept {
  build_mesh(mesh_, projectors_[0], projectors_[1], turn);
  const PictureFormat& format = painting_.panorama;
  lens_blocks_ = plan_blocks(mesh_, ring_.half_width, format.plane[format.planes - 1].grid, blocks_);
  turn_ = turn;
  looked_ = true;
}

void Engine::describe_panorama(const PicturePlanes& panorama) noexcept {
  describe_format(config_.format, panorama.siting, painting_.panorama);
  for (int plane = 0; plane < painting_.panorama.planes; ++plane) {
    painting_.planes[plane] = {panorama.first[plane], panorama.strides[plane]};
  }
}

void Engine::describe_fisheyes(const PicturePlanes fisheyes[2]) noexcept {
  describe_format(config_.format, fisheyes[0].siting, painting_.picture);
  painting_.mesh = &mesh_;
  painting_.quality = config_.quality;
  painting_.lights = lights_;
  painting_.match = {match_ != nullptr ? &match_nodes_ : nullptr, tone_of(config_)};
  for (int plane = 0; plane < painting_.picture.planes; ++plane) {
    const PlaneFormat& format = painting_.picture.plane[plane];
    for (int lens = 0; lens < 2; ++lens) {
      const Lens& of = config_.camera.lens[lens];
      painting_.sources[lens][plane] = {.first = fisheyes[lens].first[plane],
                                        .stride = fisheyes[lens].strides[plane],
                                        .width = plane_size(of.width, format.grid.bits_x),
                                        .height = plane_size(of.height, format.grid.bits_y),
                                        .type = format.type,
                                        .bits = static_cast<uint8_t>(painting_.picture.bits),
                                        .shift = static_cast<uint8_t>(painting_.picture.shift)};
    }
  }
}

void Engine::describe_strips(const PicturePlanes fisheyes[2]) noexcept {
  const PictureFormat& format = painting_.picture;
  const StripPositions positions[2] = {{places_[0], places_[1]}, {places_[2], places_[3]}};
  if (!planned_ || siting_ != fisheyes[0].siting) {
    plan_strip(format);
    strip_views_ = lay_out_strips(strip_plan_, positions, strip_block_);
    siting_ = fisheyes[0].siting;
    planned_ = true;
  }
  strips_ = {.plan = &strip_plan_,
             .views = &strip_views_,
             .positions = {positions[0], positions[1]},
             .pictures = {},
             .format = {format.bits, format.shift},
             .lights = lights_,
             .match = match_,
             .near = near_,
             .seam = {config_.seam, config_.steady_seam ? &seam_memory_ : nullptr}};
  for (int lens = 0; lens < 2; ++lens) {
    for (int c = 0; c < strip_plan_.config.planes; ++c) {
      const Channel channel = find_channel(format, c);
      const uint8_t* const first = fisheyes[lens].first[channel.plane] + channel.offset * (format.bits > 8 ? 2 : 1);
      strips_.pictures[lens][c] = {first, fisheyes[lens].strides[channel.plane], channel.step};
      painting_.ring.corrections[lens][c] = strip_views_.corrections[lens][c];
    }
  }
  painting_.ring.shape = ring_.strip;
  painting_.ring.ramp = {strip_views_.path, ring_.strip.length, ring_.ramp};
}

void Engine::measure_light(void* engine, int part, int) noexcept {
  Engine& e = *static_cast<Engine*>(engine);
  measure_light_part(*e.match_, e.strip_plan_, e.strip_views_, part);
}

void Engine::fill_match_row(void* engine, int part, int) noexcept {
  const Engine& e = *static_cast<Engine*>(engine);
  fill_match_nodes(e.match_->field, e.ring_.strip, e.mesh_, part, e.match_nodes_);
}

// What goes on from frame to frame ends at a cut.  Whether a scene begins.
bool Engine::watch_scene() noexcept {
  if (!goes_on()) return false;
  const bool first = scene_.any == 0;
  if (!scene_.changes(strip_views_.strips, ring_.strip)) return first;
  if (match_ != nullptr) forget(match_->memory);
  if (near_ != nullptr) forget(near_->memory);
  if (config_.steady_seam) forget(seam_memory_);
  return true;
}

void Engine::find_light() noexcept {
  if (match_ == nullptr) return;
  pool_.run(measure_light, this, kSectors);
  settle_light(*match_, ring_.strip);
}

void Engine::find_near() noexcept {
  if (near_ == nullptr) return;
  pool_.run(measure_near, this, near_parts(*near_));
  settle_near(*near_);
}

void Engine::measure_near(void* engine, int part, int) noexcept {
  const Engine& e = *static_cast<Engine*>(engine);
  measure_near_part(*e.near_, e.strip_views_, part);
}

void Engine::move_node_row(void* engine, int part, int) noexcept {
  const Engine& e = *static_cast<Engine*>(engine);
  move_nodes(e.ring_, e.near_->displacement, e.projectors_, e.mesh_, part, e.moved_mesh_);
}

// Before anything is painted.
void Engine::lay_light() noexcept {
  if (match_ != nullptr) pool_.run(fill_match_row, this, mesh_shape_.rows);
}

// Likewise.
void Engine::move_near() noexcept {
  if (near_ == nullptr || !near_->displacement.any) return;
  pool_.run(move_node_row, this, mesh_shape_.rows);
  painting_.mesh = &moved_mesh_;
}

void Engine::run_strip_part(void* engine, int part, int) noexcept {
  const Engine& e = *static_cast<Engine*>(engine);
  ring::run_strip_part(e.strips_, e.step_, part);
}

void Engine::run_seam_or_lens_block(void* engine, int part, int thread) noexcept {
  Engine& e = *static_cast<Engine*>(engine);
  const int seam_parts = strip_parts(e.strip_plan_, StripStep::seam);
  if (part < seam_parts) {
    ring::run_strip_part(e.strips_, StripStep::seam, part);
  } else {
    const int block = part - seam_parts;
    if (block + 1 < e.lens_blocks_) prefetch_block(e.painting_, e.blocks_[block + 1]);
    paint_lens_block(e.painting_, e.blocks_[block], e.memories_[thread]);
  }
}

void Engine::run_ring_block(void* engine, int part, int thread) noexcept {
  Engine& e = *static_cast<Engine*>(engine);
  const int block = e.lens_blocks_ + part;
  if (block + 1 < e.block_count_) prefetch_block(e.painting_, e.blocks_[block + 1]);
  paint_ring_block(e.painting_, e.blocks_[block], e.memories_[thread]);
}

void Engine::run_step(StripStep step) noexcept {
  step_ = step;
  pool_.run(run_strip_part, this, strip_parts(strip_plan_, step));
}

void Engine::run_strips_and_lens_blocks(const FrameChoice& choice) noexcept {
  run_step(StripStep::reduce);
  run_step(StripStep::unroll);
  if (choice.guide != nullptr) {
    follow({guide_shape(), choice.guide});
  } else {
    watch_scene();
    find_light();
    find_near();
  }
  if (choice.seam != nullptr) take_seam(choice.seam);
  lay_light();
  move_near();
  run_step(StripStep::compare);
  // The path is one thread's work for a while: the others have blocks to paint that don't wait for it.
  pool_.run(run_seam_or_lens_block, this, strip_parts(strip_plan_, StripStep::seam) + lens_blocks_);
  run_step(StripStep::blend);
}

// Paths of strips count in strip samples from the strip's first one, Q16.
void Engine::take_seam(const double* seam) noexcept {
  const StripShape shape = ring_.strip;
  const double least = strip_plan_.edge(), most = shape.width - 1 - strip_plan_.edge();
  for (int t = 0; t < shape.length; ++t) {
    const double place = seam[t] * shape.length / 360 + 0.5 * (shape.width - 1);
    strip_views_.path[t] = static_cast<int32_t>(std::clamp(place, least, most) * 65536 + 0.5);
  }
  strips_.seam.mode = SeamMode::given;
}

void Engine::read_seam(double* seam) const noexcept {
  const StripShape shape = ring_.strip;
  for (int t = 0; t < shape.length; ++t) {
    seam[t] = planned_ ? (strip_views_.path[t] / 65536.0 - 0.5 * (shape.width - 1)) * 360 / shape.length : 0;
  }
}

void Engine::stitch(const PicturePlanes fisheyes[2], const PicturePlanes& panorama, const FrameChoice& choice) noexcept {
  describe_fisheyes(fisheyes);
  describe_panorama(panorama);
  if (!looked_ || !same(choice.turn, turn_)) look(choice.turn);
  describe_strips(fisheyes);
  run_strips_and_lens_blocks(choice);
  pool_.run(run_ring_block, this, block_count_ - lens_blocks_);
}

Engine* open_engine(const EngineConfig& config) noexcept {
  void* const memory = std::aligned_alloc(kAlignment, aligned(sizeof(Engine)));
  if (memory == nullptr) return nullptr;
  Engine* const engine = new (memory) Engine(config);
  if (engine->take_memory()) return engine;
  close_engine(engine);
  return nullptr;
}

void close_engine(Engine* engine) noexcept {
  if (engine == nullptr) return;
  engine->~Engine();
  std::free(engine);
}

void stitch(Engine& engine, const PicturePlanes fisheyes[2], const PicturePlanes& panorama,
            const FrameChoice& choice) noexcept {
  engine.stitch(fisheyes, panorama, choice);
}

double ring_degrees(const Engine& engine) noexcept {
  const StripShape shape = engine.ring().strip;
  return 0.5 * (shape.width - 1) * 360 / shape.length;
}

int seam_length(const Engine& engine) noexcept { return engine.ring().strip.length; }

void read_seam(const Engine& engine, double* seam) noexcept { engine.read_seam(seam); }

StateParts state_of(Engine& engine) noexcept { return engine.state(); }

size_t engine_bytes(const Engine& engine) noexcept { return engine.bytes(); }

}  // namespace biseam::ring
