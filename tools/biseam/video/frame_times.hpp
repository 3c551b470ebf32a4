// Which pictures should have come out of a decoder.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

namespace biseam::tool {

// Packets go in with the times of their pictures, pictures come out in order of time.  A packet without a picture is nothing
// special (fields, hidden pictures) unless the decoder complained.
class FrameTimes {
 public:
  void expect(std::int64_t time) { expected_.insert(time); }
  void complain() { ++complaints_; }

  // A picture came out.  The times of the pictures before it that damage has swallowed, ascending.
  std::vector<std::int64_t> arrived(std::int64_t time);

  // No more pictures will come.
  std::vector<std::int64_t> ended();

 private:
  std::vector<std::int64_t> take_missing(std::multiset<std::int64_t>::iterator end);

  std::multiset<std::int64_t> expected_;
  std::int64_t complaints_ = 0;
};

}  // namespace biseam::tool
