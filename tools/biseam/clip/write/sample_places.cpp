#include "clip/write/sample_places.hpp"

#include <algorithm>
#include <limits>

namespace biseam::tool {
namespace {

constexpr std::size_t kFullHeader = kBoxHeader + 4;  // with version and flags

// A number of a box's content, after version and flags.
std::optional<std::uint32_t> field(const Bytes& from, const Box& box, std::size_t number) {
  const std::size_t at = box.at + kFullHeader + 4 * number;
  return at + 4 <= box.end() ? std::optional(read_32(from, at)) : std::nullopt;
}

bool read_track(const Bytes& fragment, const Box& track, std::uint64_t at, std::vector<PacketRun>& runs) {
  constexpr std::uint32_t kHasBase = 0x1, kHasPlace = 0x1;
  const std::optional<Box> header = box_inside(fragment, track, "tfhd");
  const std::optional<std::uint32_t> number = header ? field(fragment, *header, 0) : std::nullopt;
  if (!number || (read_32(fragment, header->at + kBoxHeader) & kHasBase) != 0) return false;
  for (std::size_t k = 0; const std::optional<Box> run = box_inside(fragment, track, "trun", k); ++k) {
    const std::optional<std::uint32_t> packets = field(fragment, *run, 0), place = field(fragment, *run, 1);
    if (!place || (read_32(fragment, run->at + kBoxHeader) & kHasPlace) == 0 || *packets == 0) return false;
    runs.push_back({*number, at + *place, *packets});
  }
  return true;
}

// How many samples each packet of a track is.
class PacketSamples {
 public:
  // None when the tables are not laid out as expected.
  static std::optional<PacketSamples> read(const Bytes& movie, const Box& tables, std::uint64_t packets);

  std::optional<std::uint32_t> of_next() {
    if (chunks_.empty()) return 1;
    return next_ < chunks_.size() ? std::optional(chunks_[next_++]) : std::nullopt;
  }

 private:
  std::vector<std::uint32_t> chunks_;  // empty: one each
  std::size_t next_ = 0;
};

// "stsc": from this chunk on, so many samples in each.
std::optional<std::vector<std::uint32_t>> samples_of_chunks(const Bytes& movie, const Box& box, std::uint64_t chunks) {
  const std::optional<std::uint32_t> entries = field(movie, box, 0);
  if (!entries) return std::nullopt;
  std::vector<std::uint32_t> samples;
  for (std::size_t k = 0; k < *entries; ++k) {
    const std::optional<std::uint32_t> many = field(movie, box, 1 + 3 * k + 1);
    const std::optional<std::uint32_t> next = k + 1 < *entries ? field(movie, box, 1 + 3 * (k + 1)) : std::nullopt;
    const std::uint64_t end = next ? std::uint64_t(*next) - 1 : chunks;
    if (!many || end > chunks || end <= samples.size()) return std::nullopt;
    samples.resize(std::size_t(end), *many);
  }
  return samples.size() == chunks ? std::optional(samples) : std::nullopt;
}

std::optional<PacketSamples> PacketSamples::read(const Bytes& movie, const Box& tables, std::uint64_t packets) {
  const std::optional<Box> sizes = box_inside(movie, tables, "stsz"), chunks = box_inside(movie, tables, "stsc");
  const std::optional<std::uint32_t> samples = sizes ? field(movie, *sizes, 1) : std::nullopt;
  PacketSamples all;
  if (samples == packets) return all;
  if (!samples || !chunks) return std::nullopt;
  const auto found = samples_of_chunks(movie, *chunks, packets);
  if (!found) return std::nullopt;
  std::uint64_t sum = 0;
  for (const std::uint32_t many : *found) sum += many;
  if (sum != samples) return std::nullopt;
  all.chunks_ = *found;
  return all;
}

struct ChunkTables {
  Bytes samples, places;  // the boxes
};

// Each run is a chunk.
std::optional<ChunkTables> make_tables(std::span<const PacketRun> runs, PacketSamples packets) {
  Bytes samples, places;
  std::uint32_t entries = 0, last = 0;
  const bool is_wide = !runs.empty() && runs.back().at > std::numeric_limits<std::uint32_t>::max();
  for (std::size_t k = 0; k < runs.size(); ++k) {
    std::uint32_t many = 0;
    for (std::uint32_t packet = 0; packet < runs[k].packets; ++packet) {
      const std::optional<std::uint32_t> next = packets.of_next();
      if (!next) return std::nullopt;
      many += *next;
    }
    is_wide ? append_64(places, runs[k].at) : append_32(places, std::uint32_t(runs[k].at));
    if (many == last) continue;
    for (const std::uint32_t number : {std::uint32_t(k + 1), many, std::uint32_t(1)}) append_32(samples, number);
    last = many;
    ++entries;
  }
  const auto table = [](std::uint32_t count, const Bytes& content) {
    Bytes whole(4);
    append_32(whole, count);
    whole.insert(whole.end(), content.begin(), content.end());
    return whole;
  };
  return ChunkTables{make_box("stsc", table(entries, samples)),
                     make_box(is_wide ? "co64" : "stco", table(std::uint32_t(runs.size()), places))};
}

bool replace_box(Bytes& movie, std::size_t track, std::string_view name, const Bytes& by) {
  constexpr std::string_view kNames[] = {"mdia", "minf", "stbl"};
  const std::optional<Box> box = box_inside(movie, {0, movie.size()}, "trak", track);
  std::vector<Box> around = box ? box_path(movie, *box, kNames) : std::vector<Box>();
  const std::optional<Box> old = around.empty() ? std::nullopt : box_inside(movie, around.back(), name);
  if (!old) return false;
  around.push_back({0, movie.size()});
  replace_bytes(movie, old->at, old->end(), by, around);
  return true;
}

// How many packets the track has; none when something doesn't fit.
std::optional<std::uint64_t> place_track(Bytes& movie, std::size_t track, std::span<const PacketRun> all) {
  constexpr std::string_view kNames[] = {"mdia", "minf", "stbl"};
  const Box box = *box_inside(movie, {0, movie.size()}, "trak", track);
  const std::optional<std::uint32_t> number = track_number(movie, box);
  const std::vector<Box> path = box_path(movie, box, kNames);
  if (!number || path.empty()) return std::nullopt;
  std::vector<PacketRun> runs;
  std::uint64_t packets = 0;
  for (const PacketRun& run : all) {
    if (run.track != number) continue;
    runs.push_back(run);
    packets += run.packets;
  }
  const std::optional<PacketSamples> samples = PacketSamples::read(movie, path.back(), packets);
  const std::optional<ChunkTables> tables = samples ? make_tables(runs, *samples) : std::nullopt;
  const bool was_wide = box_inside(movie, path.back(), "co64").has_value();
  const bool done = tables && replace_box(movie, track, "stsc", tables->samples) &&
                    replace_box(movie, track, was_wide ? "co64" : "stco", tables->places);
  return done ? std::optional(packets) : std::nullopt;
}

}  // namespace

bool read_runs(const Bytes& fragment, std::uint64_t at, std::vector<PacketRun>& runs) {
  const Box movie{0, fragment.size()};
  if (fragment.size() < kBoxHeader || read_32(fragment, 0) != fragment.size()) return false;
  for (std::size_t k = 0; const std::optional<Box> track = box_inside(fragment, movie, "traf", k); ++k) {
    if (!read_track(fragment, *track, at, runs)) return false;
  }
  return true;
}

bool place_samples(Bytes& movie, std::span<const PacketRun> runs) {
  if (movie.size() < kBoxHeader || read_32(movie, 0) != movie.size()) return false;
  std::uint64_t left = 0;
  for (const PacketRun& run : runs) left += run.packets;
  Bytes changed = movie;
  for (std::size_t k = 0; box_inside(changed, {0, changed.size()}, "trak", k); ++k) {
    const std::optional<std::uint64_t> placed = place_track(changed, k, runs);
    if (!placed) return false;
    left -= *placed;
  }
  if (left != 0) return false;
  movie = std::move(changed);
  return true;
}

}  // namespace biseam::tool
