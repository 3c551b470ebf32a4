// Where a movie's samples lie: what its fragments say about that, and what its one index says in the end.
#pragma once

#include "clip/write/boxes.hpp"

namespace biseam::tool {

// Packets of one track that lie one after the other.
struct PacketRun {
  std::uint32_t track = 0;    // its number in the file
  std::uint64_t at = 0;       // in the file
  std::uint32_t packets = 0;  // at least one
  bool operator==(const PacketRun&) const = default;
};

// Appends the runs of a fragment's movie box, which lies at that place in the file.  False when it is not laid out as expected:
// with places that count from its own beginning.
bool read_runs(const Bytes& fragment, std::uint64_t at, std::vector<PacketRun>& runs);

// Has a movie box's index say that its packets lie in these runs.  Its own must say of each track either that every packet is
// one sample, or which samples are a packet's, by making a chunk of each.  False and nothing done when it doesn't fit.
bool place_samples(Bytes& movie, std::span<const PacketRun> runs);

}  // namespace biseam::tool
