// The connections of a server, so that none of them keeps others out.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>

namespace biseam::tool {

// Several threads may call at once.  A connection is known by its address and ended by shutting down its socket, after which
// the server, which still owns it, sees its end.
class Visitors {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr std::size_t kMost = 256;  // a browser opens 6
  static constexpr std::chrono::seconds kRequestTime{
      10};  // until a request is whole, from the first moment or the answer before
  static constexpr std::chrono::seconds kStandstill{20};  // of an answer that nobody takes; the server counts it

  // Where there are more than kMost, the one that has waited longest with its request is ended, or else the oldest answer.
  void arrive(const void* connection, int socket, Clock::time_point now);
  void ask(const void* connection, Clock::time_point now);     // its request is whole
  void finish(const void* connection, Clock::time_point now);  // its answer is over, another request may follow
  void leave(const void* connection);                          // before its socket is closed

  // Ends those whose request takes too long.
  void end_overdue(Clock::time_point now);

 private:
  struct Visitor {
    int socket;
    bool is_asking;
    Clock::time_point since;
    bool is_ended;
  };
  static void end(Visitor& visitor);
  void change(const void* connection, bool is_asking, Clock::time_point now);

  std::mutex mutex_;
  std::map<const void*, Visitor> all_;
};

}  // namespace biseam::tool
