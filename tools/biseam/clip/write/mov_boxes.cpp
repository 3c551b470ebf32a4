#include "clip/write/mov_boxes.hpp"

#include <algorithm>
#include <optional>
#include <string_view>

namespace biseam::tool {
namespace {

constexpr std::size_t kEntryFields = kBoxHeader + 78;  // of a picture description, before the boxes inside it
constexpr std::size_t kListFields = kBoxHeader + 8;    // of a list of descriptions, before the first of them
constexpr std::uint16_t kNoLanguage = 0x7fff;

Bytes joined(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// The whole sphere, looking straight ahead.
Bytes spherical_box() {
  constexpr std::string_view kSource = "biseam";
  Bytes source(4 + kSource.size() + 1);  // version and flags before, a zero after
  std::copy(kSource.begin(), kSource.end(), source.begin() + 4);
  const Bytes pose(4 + 3 * 4), bounds(4 + 4 * 4);
  const Bytes projection = joined(make_box("prhd", pose), make_box("equi", bounds));
  return make_box("sv3d", joined(make_box("svhd", source), make_box("proj", projection)));
}

// Where boxes that describe the pictures end; some descriptions close with a size of 0.
std::size_t end_of_boxes(const Bytes& from, const Box& entry) {
  std::size_t end = entry.at + kEntryFields;
  while (const std::optional<Box> box = box_at(from, end, entry.end())) end = box->end();
  return end;
}

bool mark_spherical(Bytes& movie, const Box& track) {
  constexpr std::string_view kNames[] = {"mdia", "minf", "stbl", "stsd"};
  std::vector<Box> parents = box_path(movie, track, kNames);
  if (parents.empty()) return false;
  const std::optional<Box> entry = box_at(movie, parents.back().at + kListFields, parents.back().end());
  if (!entry || entry->size < kEntryFields) return false;
  parents.push_back({0, movie.size()});
  parents.push_back(*entry);
  const std::size_t place = end_of_boxes(movie, *entry);
  replace_bytes(movie, place, place, spherical_box(), parents);
  return true;
}

bool is_language(std::string_view text) {
  return text.size() == 3 && std::all_of(text.begin(), text.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

void set_language(Bytes& movie, const Box& track, std::string_view language) {
  const std::optional<Box> media = box_inside(movie, track, "mdia");
  const std::optional<Box> header = media ? box_inside(movie, *media, "mdhd") : std::nullopt;
  if (!header || header->at + kBoxHeader >= header->end() || !is_language(language)) return;
  const bool wide = movie[header->at + kBoxHeader] == 1;  // version
  const std::size_t at = header->at + kBoxHeader + (wide ? 32 : 20);
  if (at + 2 > header->end() || (movie[at] << 8 | movie[at + 1]) != kNoLanguage) return;
  unsigned code = 0;
  for (const char letter : language) code = code << 5 | unsigned(letter - 'a' + 1);
  movie[at] = std::uint8_t(code >> 8);
  movie[at + 1] = std::uint8_t(code);
}

}  // namespace

bool add_to_tracks(Bytes& movie, std::span<const TrackAddition> tracks) {
  if (movie.size() < kBoxHeader || read_32(movie, 0) != movie.size()) return false;
  Bytes changed = movie;
  for (std::size_t k = 0; const std::optional<Box> track = box_inside(changed, {0, changed.size()}, "trak", k); ++k) {
    const std::optional<std::uint32_t> number = track_number(changed, *track);
    if (!number) return false;
    const auto wanted = std::find_if(tracks.begin(), tracks.end(), [&](const TrackAddition& to) { return to.track == number; });
    if (wanted == tracks.end()) continue;
    set_language(changed, *track, wanted->language);
    if (wanted->spherical && !mark_spherical(changed, *track)) return false;
  }
  movie = std::move(changed);
  return true;
}

}  // namespace biseam::tool
