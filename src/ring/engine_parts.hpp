// What an engine is made of; engine.cpp makes it and stitches, engine_guide.cpp does what guides need.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "camera/projector.hpp"
#include "ring/blocks.hpp"
#include "ring/engine.hpp"
#include "ring/guide/guide.hpp"
#include "ring/light.hpp"
#include "ring/light/match.hpp"
#include "ring/near/near.hpp"
#include "ring/near/near_nodes.hpp"
#include "ring/paint.hpp"
#include "ring/pool.hpp"
#include "ring/ring_shape.hpp"
#include "ring/state.hpp"

namespace biseam::ring {

class Engine {
 public:
  explicit Engine(const EngineConfig& config) noexcept;
  ~Engine() {
    std::free(strip_block_);
    std::free(block_);
  }
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;
  bool take_memory() noexcept;
  void stitch(const PicturePlanes fisheyes[2], const PicturePlanes& panorama, const FrameChoice& choice) noexcept;
  void measure(const PicturePlanes fisheyes[2], void* guide) noexcept;
  const RingShape& ring() const noexcept { return ring_; }
  void read_seam(double* seam) const noexcept;
  GuideShape guide_shape() const noexcept {
    const bool searches = config_.seam == SeamMode::search;
    return {.strip = ring_.strip,
            .margin = strip_plan_.edge(),
            .light_span = match_ != nullptr ? match_->memory.span : 0,
            .near_length = near_ != nullptr ? near_->shape.length : 0,
            .near_most = near_ != nullptr ? most_disparity(near_->shape) : 0,
            .near_span = near_ != nullptr ? near_->memory.span : 0,
            .seams = searches,
            .steady_seam = searches && config_.steady_seam};
  }
  size_t bytes() const noexcept { return sizeof(Engine) + block_bytes_; }
  StateParts state() noexcept {
    return {.strip = ring_.strip,
            .seam_margin = strip_plan_.edge(),
            .scene = goes_on() ? &scene_ : nullptr,
            .light = match_ != nullptr ? &match_->memory : nullptr,
            .near = near_ != nullptr ? &near_->memory : nullptr,
            .seams = config_.steady_seam ? &seam_memory_ : nullptr};
  }

 private:
  bool goes_on() const noexcept { return match_ != nullptr || near_ != nullptr || config_.steady_seam; }
  void plan_strip(const PictureFormat& format) noexcept;
  void look(const Turn& turn) noexcept;
  void describe_fisheyes(const PicturePlanes fisheyes[2]) noexcept;
  void describe_panorama(const PicturePlanes& panorama) noexcept;
  void describe_strips(const PicturePlanes fisheyes[2]) noexcept;
  void take_seam(const double* seam) noexcept;
  bool watch_scene() noexcept;
  void find_light() noexcept;
  void find_near() noexcept;
  void lay_light() noexcept;
  void move_near() noexcept;
  void follow(const GuideReader& guide) noexcept;
  void write_guide(bool starts, GuideWriter& guide) const noexcept;
  void run_step(StripStep step) noexcept;
  void run_strips_and_lens_blocks(const FrameChoice& choice) noexcept;

  static void measure_light(void* engine, int part, int thread) noexcept;
  static void fill_match_row(void* engine, int part, int thread) noexcept;
  static void measure_near(void* engine, int part, int thread) noexcept;
  static void move_node_row(void* engine, int part, int thread) noexcept;
  static void run_strip_part(void* engine, int part, int thread) noexcept;
  static void run_seam_or_lens_block(void* engine, int part, int thread) noexcept;
  static void run_ring_block(void* engine, int part, int thread) noexcept;

  EngineConfig config_;
  Projector projectors_[2];
  Light lights_[2];
  MeshShape mesh_shape_;
  RingShape ring_;
  StripPlan strip_plan_;
  Pool pool_;

  void *block_ = nullptr, *strip_block_ = nullptr;
  size_t block_bytes_ = 0;
  Mesh mesh_;
  BlockPlan* blocks_;
  int lens_blocks_ = 0, block_count_;
  int32_t* places_[4];  // strip positions: x and y of either lens
  StripViews strip_views_;
  PaintMemory* memories_;
  LightMatch* match_ = nullptr;  // null: light isn't matched
  MatchNodes match_nodes_;
  SeamMemory seam_memory_;     // of steady seams
  NearMatch* near_ = nullptr;  // null: near things stay apart
  Mesh moved_mesh_;
  SceneWatch scene_{};

  // What the mesh, the blocks and the strips' plan were made for.
  bool looked_ = false, planned_ = false;
  Turn turn_;
  int siting_ = 0;  // of the fisheye pictures

  // Of the present frame.
  Painting painting_;
  StripFrame strips_;
  StripStep step_;
};

}  // namespace biseam::ring
