#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>

namespace biseam::tool {

// From one thread to another, in order; at most so many items wait.
template <class Item>
class Queue {
 public:
  explicit Queue(std::size_t most) : most_(most) {}

  // Waits for room.  False, and the item is gone: nobody takes any more.
  bool put(Item item) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return closed_ || items_.size() < most_; });
    if (closed_) return false;
    items_.push_back(std::move(item));
    changed_.notify_all();
    return true;
  }

  // Nothing more is put.  trouble is what the taker gets after what was put before.
  void end(std::exception_ptr trouble = nullptr) {
    const std::lock_guard lock(mutex_);
    trouble_ = trouble;
    ended_ = true;
    changed_.notify_all();
  }

  // Waits for an item.  None at the end.
  std::optional<Item> take() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !items_.empty() || ended_; });
    if (items_.empty() && trouble_) std::rethrow_exception(trouble_);
    if (items_.empty()) return std::nullopt;
    Item item = std::move(items_.front());
    items_.pop_front();
    changed_.notify_all();
    return item;
  }

  // Nothing more is taken.
  void close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    changed_.notify_all();
  }

 private:
  const std::size_t most_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Item> items_;
  bool ended_ = false, closed_ = false;
  std::exception_ptr trouble_;
};

}  // namespace biseam::tool
