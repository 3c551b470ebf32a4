#include "stitch/stitch_pool.hpp"

#include <algorithm>
#include <string>
#include <system_error>

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "base/share_work.hpp"
#include "stitch/engine_failure.hpp"

namespace biseam::tool {
namespace {

StitchConfig with_output_stride(StitchConfig config, int stride) {
  config.out_luma_stride[0] = config.out_chroma_stride[0] = stride;
  return config;
}

PanoramaPicture planes_of(AVFrame& frame) {
  const std::size_t luma = std::size_t(frame.linesize[0]) * std::size_t(frame.height);
  return {{frame.data[0], luma}, {frame.data[1], luma / 2}};
}

}  // namespace

StitchPool::StitchPool(const Setup& setup, const PairLayout& layout, int jobs, int group, Read read)
    : config_(setup.plan.config),
      most_(2 * std::size_t(jobs) + 1),
      group_size_(group),
      panoramas_({setup.plan.config.out_w[0], setup.plan.config.out_h[0]}) {
  make_engines(setup, layout, jobs);
  threads_.start("reading", [this, read = std::move(read)] { read_all(read); });
  for (const auto& engine : engines_) threads_.start("stitching", [this, &engine] { stitch_all(*engine); });
}

template <class Work>
void StitchPool::Threads::start(const char* purpose, Work work) try {
  all_.emplace_back(std::move(work));
} catch (const std::system_error& error) {
  throw Failure(ExitCode::system, std::string("no thread for ") + purpose + " can be started: " + error.code().message());
}

void StitchPool::stop() {
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
  share_work(jobs, jobs,
             [&](int k) { made[std::size_t(k)] = Stitcher::create(with_output_stride(config_, panoramas_.stride())); });
  for (auto& result : made) {
    if (!result) throw engine_failure(result.error());
    engines_.push_back(std::make_unique<Engine>(Engine{std::move(*result), EngineInput(setup, layout), nullptr}));
  }
}

void StitchPool::read_all(const Read& read) {
  std::exception_ptr trouble;
  try {
    while (std::optional<FramePair> pair = read()) {
      Slot slot;
      slot.frame.pair = std::move(*pair);
      judge(slot);
      if (!hand_over(std::move(slot))) break;
    }
  } catch (...) {
    trouble = std::current_exception();
  }
  const std::lock_guard lock(mutex_);
  read_trouble_ = trouble;
  read_ended_ = true;
  work_.notify_all();
  done_.notify_all();
}

// False when no more frames are wanted.
bool StitchPool::hand_over(Slot slot) {
  std::unique_lock lock(mutex_);
  room_.wait(lock, [this] { return stopped_ || slots_.size() < most_; });
  if (stopped_) return false;
  slots_.push_back(std::move(slot));
  work_.notify_all();
  done_.notify_all();
  return true;
}

// The same pictures with the same seams give the same panorama.
void StitchPool::judge(Slot& slot) {
  const FramePair& pair = slot.frame.pair;
  slot.frame.is_picture = pair.picture[0] != nullptr && pair.is_wanted;
  if (!pair.picture[0]) {
    slot.stage = Stage::done;
    return;
  }
  const std::int64_t number = pair.number / group_size_;
  slot.searches = !group_ || group_->number != number;
  if (slot.searches) group_ = std::make_shared<Group>(Group{number, false, {}, {}});
  slot.group = group_;
  const bool repeated = pair.picture[0] == last_[0] && pair.picture[1] == last_[1];
  if (repeated && (group_size_ == 1 || !slot.searches)) slot.stage = Stage::done;
  std::copy(std::begin(pair.picture), std::end(pair.picture), std::begin(last_));
  if (!pair.is_wanted) last_[0] = last_[1] = nullptr;
}

bool StitchPool::can_start(const Slot& slot) const {
  return slot.stage == Stage::waiting && (slot.searches || slot.group->found);
}

StitchPool::Slot* StitchPool::take_waiting(std::unique_lock<std::mutex>& lock) {
  for (;;) {
    if (stopped_) return nullptr;
    const auto slot = std::find_if(slots_.begin(), slots_.end(), [this](const Slot& s) { return can_start(s); });
    if (slot != slots_.end()) {
      slot->stage = Stage::running;
      return &*slot;
    }
    const bool waiting = std::any_of(slots_.begin(), slots_.end(), [](const Slot& s) { return s.stage == Stage::waiting; });
    if (read_ended_ && !waiting) return nullptr;
    work_.wait(lock);
  }
}

// A deque's elements stay where they are while others come and go at its ends.
void StitchPool::stitch_all(Engine& engine) {
  std::unique_lock lock(mutex_);
  while (Slot* slot = take_waiting(lock)) {
    lock.unlock();
    try {
      stitch(engine, *slot);
    } catch (...) {
      slot->trouble = std::current_exception();
    }
    lock.lock();
    slot->stage = Stage::done;
    if (slot->searches) slot->group->found = true;
    work_.notify_all();
    done_.notify_all();
  }
}

void StitchPool::stitch(Engine& engine, Slot& slot) {
  StitchedFrame& frame = slot.frame;
  frame.panorama = panoramas_.frame();
  if (!slot.searches) take_seams(engine, slot);
  const auto [first, second] = engine.input.prepare(frame.pair);
  const Seams seams = slot.searches ? Seams::fresh : Seams::kept;
  if (const Error error = engine.stitcher.process(first, second, planes_of(*frame.panorama), seams)) {
    throw engine_failure(error);
  }
  if (slot.searches) give_seams(engine, slot);
  frame.seams = slot.group->path;
  frame.pair.picture[0].reset();
  frame.pair.picture[1].reset();
}

void StitchPool::take_seams(Engine& engine, const Slot& slot) {
  if (engine.group == slot.group) return;
  if (const Error error = engine.stitcher.load_seams({slot.group->seams})) throw engine_failure(error);
  engine.group = slot.group;
}

// For the others of the group; a single engine has them anyway.
void StitchPool::give_seams(Engine& engine, Slot& slot) {
  engine.group = slot.group;
  slot.group->path = seam_path(engine.stitcher);
  if (group_size_ == 1 || engines_.size() == 1) return;
  slot.group->seams.resize(engine.stitcher.seams_size());
  if (const Error error = engine.stitcher.save_seams({slot.group->seams})) throw engine_failure(error);
}

std::optional<StitchedFrame> StitchPool::next() {
  std::unique_lock lock(mutex_);
  done_.wait(lock, [this] { return slots_.empty() ? read_ended_ : slots_.front().stage == Stage::done; });
  if (slots_.empty() && read_trouble_) std::rethrow_exception(read_trouble_);
  if (slots_.empty()) return std::nullopt;
  Slot slot = std::move(slots_.front());
  slots_.pop_front();
  room_.notify_one();
  if (slot.trouble) std::rethrow_exception(slot.trouble);
  return std::move(slot.frame);
}

}  // namespace biseam::tool
