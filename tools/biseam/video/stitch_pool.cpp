#include "video/stitch_pool.hpp"

#include <algorithm>

#include "failure.hpp"
#include "interrupt.hpp"

namespace biseam::tool {
namespace {

StitchConfig with_output_stride(StitchConfig config, int stride) {
  config.out_luma_stride[0] = config.out_chroma_stride[0] = stride;
  return config;
}

Failure engine_failure(const Error& error) { return Failure(ExitCode::settings, error.text()); }

PanoramaPicture planes_of(AVFrame& frame) {
  const std::size_t luma = std::size_t(frame.linesize[0]) * std::size_t(frame.height);
  return {{frame.data[0], luma}, {frame.data[1], luma / 2}};
}

}  // namespace

StitchPool::StitchPool(const Setup& setup, const PairLayout& layout, int jobs, Read read)
    : config_(setup.plan.config),
      most_(2 * std::size_t(jobs) + 1),
      panoramas_({setup.plan.config.out_w[0], setup.plan.config.out_h[0]}) {
  make_engines(setup, layout, jobs);
  threads_.emplace_back([this, read = std::move(read)] { read_all(read); });
  for (const auto& engine : engines_) threads_.emplace_back([this, &engine] { stitch_all(*engine); });
}

StitchPool::~StitchPool() {
  stop_reading();
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  room_.notify_all();
  work_.notify_all();
}

// The tables take a while, so all engines are made at once.
void StitchPool::make_engines(const Setup& setup, const PairLayout& layout, int jobs) {
  std::vector<Result<Stitcher>> made;
  for (int k = 0; k < jobs; ++k) made.emplace_back(Stitcher());
  {
    std::vector<std::jthread> makers;
    for (auto& result : made) {
      makers.emplace_back([&] { result = Stitcher::create(with_output_stride(config_, panoramas_.stride())); });
    }
  }
  for (auto& result : made) {
    if (!result) throw engine_failure(result.error());
    engines_.push_back(std::make_unique<Engine>(Engine{std::move(*result), EngineInput(setup, layout)}));
  }
}

void StitchPool::read_all(const Read& read) {
  for (bool more = true; more;) {
    Slot slot;
    try {
      std::optional<FramePair> pair = read();
      more = pair.has_value();
      if (pair) slot.frame.pair = std::move(*pair);
    } catch (...) {
      slot.trouble = std::current_exception();
    }
    judge(slot);
    const bool failed = slot.trouble != nullptr;
    std::unique_lock lock(mutex_);
    if (more) {
      room_.wait(lock, [this] { return stopped_ || slots_.size() < most_; });
      slots_.push_back(std::move(slot));
    }
    read_ended_ = !more || failed;
    more = !read_ended_ && !stopped_;
    work_.notify_all();
    done_.notify_all();
  }
}

// The same pictures give the same panorama.
void StitchPool::judge(Slot& slot) {
  const FramePair& pair = slot.frame.pair;
  slot.frame.is_picture = pair.picture[0] != nullptr;
  const bool repeated = pair.picture[0] == last_[0] && pair.picture[1] == last_[1];
  if (!slot.frame.is_picture || repeated) slot.stage = Stage::done;
  if (slot.frame.is_picture) std::copy(std::begin(pair.picture), std::end(pair.picture), std::begin(last_));
}

StitchPool::Slot* StitchPool::take_waiting(std::unique_lock<std::mutex>& lock) {
  for (;;) {
    if (stopped_) return nullptr;
    const auto slot = std::find_if(slots_.begin(), slots_.end(), [](const Slot& s) { return s.stage == Stage::waiting; });
    if (slot != slots_.end()) {
      slot->stage = Stage::running;
      return &*slot;
    }
    if (read_ended_) return nullptr;
    work_.wait(lock);
  }
}

// A deque's elements stay where they are while others come and go at its ends.
void StitchPool::stitch_all(Engine& engine) {
  std::unique_lock lock(mutex_);
  while (Slot* slot = take_waiting(lock)) {
    lock.unlock();
    try {
      stitch(engine, slot->frame);
    } catch (...) {
      slot->trouble = std::current_exception();
    }
    lock.lock();
    slot->stage = Stage::done;
    done_.notify_all();
  }
}

void StitchPool::stitch(Engine& engine, StitchedFrame& frame) {
  frame.panorama = panoramas_.frame();
  const auto [first, second] = engine.input.prepare(frame.pair);
  if (const Error error = engine.stitcher.process(first, second, planes_of(*frame.panorama))) throw engine_failure(error);
  frame.seams = seam_path(engine.stitcher);
  frame.pair.picture[0].reset();
  frame.pair.picture[1].reset();
}

std::optional<StitchedFrame> StitchPool::next() {
  std::unique_lock lock(mutex_);
  done_.wait(lock, [this] { return slots_.empty() ? read_ended_ : slots_.front().stage == Stage::done; });
  if (slots_.empty()) return std::nullopt;
  Slot slot = std::move(slots_.front());
  slots_.pop_front();
  room_.notify_one();
  if (slot.trouble) std::rethrow_exception(slot.trouble);
  return std::move(slot.frame);
}

}  // namespace biseam::tool
