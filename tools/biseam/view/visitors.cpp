#include "view/visitors.hpp"

#include <sys/socket.h>

#include <algorithm>
#include <tuple>

namespace biseam::tool {

void Visitors::arrive(const void* connection, int socket, Clock::time_point now) {
  const std::lock_guard lock(mutex_);
  all_[connection] = {socket, true, now, false};
  const auto alive = std::count_if(all_.begin(), all_.end(), [](const auto& entry) { return !entry.second.is_ended; });
  if (std::size_t(alive) <= kMost) return;
  const auto rank = [=](const auto& entry) {
    const Visitor& v = entry.second;
    return std::tuple(v.is_ended || entry.first == connection, !v.is_asking, v.since);
  };
  const auto first =
      std::min_element(all_.begin(), all_.end(), [&](const auto& a, const auto& b) { return rank(a) < rank(b); });
  end(first->second);
}

void Visitors::ask(const void* connection, Clock::time_point now) { change(connection, false, now); }
void Visitors::finish(const void* connection, Clock::time_point now) { change(connection, true, now); }

void Visitors::leave(const void* connection) {
  const std::lock_guard lock(mutex_);
  all_.erase(connection);
}

void Visitors::end_overdue(Clock::time_point now) {
  const std::lock_guard lock(mutex_);
  for (auto& [connection, visitor] : all_) {
    if (visitor.is_asking && now - visitor.since >= kRequestTime) end(visitor);
  }
}

void Visitors::end(Visitor& visitor) {
  if (!visitor.is_ended) ::shutdown(visitor.socket, SHUT_RDWR);
  visitor.is_ended = true;
}

void Visitors::change(const void* connection, bool is_asking, Clock::time_point now) {
  const std::lock_guard lock(mutex_);
  const auto found = all_.find(connection);
  if (found == all_.end()) return;
  found->second.is_asking = is_asking;
  found->second.since = now;
}

}  // namespace biseam::tool
