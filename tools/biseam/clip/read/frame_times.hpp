// Which pictures should have come out of a decoder.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

namespace biseam::tool {

// Packets go in with the times of their pictures, pictures come out in order of time.  In some streams a packet without a
// picture is nothing special (fields, hidden pictures) unless the decoder complained.
class FrameTimes {
 public:
  explicit FrameTimes(bool every_packet_has_one = true) : every_packet_has_one_(every_packet_has_one) {}

  void expect(std::int64_t time) { expected_.insert(time); }
  void complain() { ++complaints_; }

  struct Arrival {
    bool expected;                      // false: no packet had this time, or it was missed before
    std::vector<std::int64_t> missing;  // times of pictures before it that damage has swallowed, ascending
  };
  Arrival arrived(std::int64_t time);

  // No more pictures will come: what is missing.
  std::vector<std::int64_t> ended();

 private:
  std::vector<std::int64_t> take_missing(std::multiset<std::int64_t>::iterator end);

  bool every_packet_has_one_;
  std::multiset<std::int64_t> expected_;
  std::int64_t complaints_ = 0;
};

}  // namespace biseam::tool
