#include "clip/write/mov_boxes.hpp"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>

namespace biseam::tool {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kHeader = 8;            // size and name of a box
constexpr std::size_t kEntryFields = 8 + 78;  // of a picture description, before the boxes inside it
constexpr std::size_t kListFields = 8 + 8;    // of a list of descriptions, before the first of them
constexpr std::uint16_t kNoLanguage = 0x7fff;

struct Box {
  std::size_t at = 0, size = 0;
  std::size_t end() const { return at + size; }
};

std::uint32_t read_32(const Bytes& from, std::size_t at) {
  return std::uint32_t(from[at]) << 24 | std::uint32_t(from[at + 1]) << 16 | std::uint32_t(from[at + 2]) << 8 | from[at + 3];
}

void write_32(Bytes& to, std::size_t at, std::uint32_t value) {
  for (int k = 0; k < 4; ++k) to[at + std::size_t(k)] = std::uint8_t(value >> (24 - 8 * k));
}

std::optional<Box> box_at(const Bytes& from, std::size_t at, std::size_t end) {
  if (at + kHeader > end) return std::nullopt;
  const Box box{at, read_32(from, at)};
  if (box.size < kHeader || box.end() > end) return std::nullopt;
  return box;
}

bool is_named(const Bytes& from, const Box& box, std::string_view name) {
  return std::equal(name.begin(), name.end(), from.begin() + std::ptrdiff_t(box.at + 4),
                    [](char a, std::uint8_t b) { return std::uint8_t(a) == b; });
}

// The number-th box of the name in the area.
std::optional<Box> find(const Bytes& from, std::size_t begin, std::size_t end, std::string_view name, std::size_t number = 0) {
  for (std::optional<Box> box = box_at(from, begin, end); box; box = box_at(from, box->end(), end)) {
    if (is_named(from, *box, name) && number-- == 0) return box;
  }
  return std::nullopt;
}

std::optional<Box> inside(const Bytes& from, const Box& box, std::string_view name, std::size_t number = 0) {
  return find(from, box.at + kHeader, box.end(), name, number);
}

Bytes make_box(std::string_view name, const Bytes& content) {
  Bytes box(kHeader);
  write_32(box, 0, std::uint32_t(kHeader + content.size()));
  std::copy(name.begin(), name.end(), box.begin() + 4);
  box.insert(box.end(), content.begin(), content.end());
  return box;
}

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
  std::vector<Box> parents{{0, movie.size()}, track};
  for (const std::string_view name : {"mdia", "minf", "stbl", "stsd"}) {
    const std::optional<Box> box = inside(movie, parents.back(), name);
    if (!box) return false;
    parents.push_back(*box);
  }
  const std::optional<Box> entry = box_at(movie, parents.back().at + kListFields, parents.back().end());
  if (!entry || entry->size < kEntryFields) return false;
  parents.push_back(*entry);
  const Bytes addition = spherical_box();
  const std::size_t place = end_of_boxes(movie, *entry);
  movie.insert(movie.begin() + std::ptrdiff_t(place), addition.begin(), addition.end());
  for (const Box& parent : parents) write_32(movie, parent.at, std::uint32_t(parent.size + addition.size()));
  return true;
}

bool is_language(std::string_view text) {
  return text.size() == 3 && std::all_of(text.begin(), text.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

void set_language(Bytes& movie, const Box& track, std::string_view language) {
  const std::optional<Box> media = inside(movie, track, "mdia");
  const std::optional<Box> header = media ? inside(movie, *media, "mdhd") : std::nullopt;
  if (!header || header->at + kHeader >= header->end() || !is_language(language)) return;
  const bool wide = movie[header->at + kHeader] == 1;  // version
  const std::size_t at = header->at + kHeader + (wide ? 32 : 20);
  if (at + 2 > header->end() || (movie[at] << 8 | movie[at + 1]) != kNoLanguage) return;
  unsigned code = 0;
  for (const char letter : language) code = code << 5 | unsigned(letter - 'a' + 1);
  movie[at] = std::uint8_t(code >> 8);
  movie[at + 1] = std::uint8_t(code);
}

bool read_at(int descriptor, Bytes& to, off_t at) {
  return ::pread(descriptor, to.data(), to.size(), at) == ssize_t(to.size());
}

// Finds the last box of a file when it is the movie.
std::optional<off_t> find_movie(int descriptor) {
  const off_t end = ::lseek(descriptor, 0, SEEK_END);
  for (off_t at = 0; at + off_t(kHeader) <= end;) {
    Bytes head(2 * kHeader);
    if (!read_at(descriptor, head, at)) return std::nullopt;
    const std::uint64_t short_size = read_32(head, 0);
    const std::uint64_t long_size = std::uint64_t(read_32(head, 8)) << 32 | read_32(head, 12);
    const std::uint64_t size = short_size == 1 ? long_size : short_size;
    if (size < kHeader || size > std::uint64_t(end - at)) return std::nullopt;
    if (is_named(head, {0, kHeader}, "moov")) return at + off_t(size) == end ? std::optional(at) : std::nullopt;
    at += off_t(size);
  }
  return std::nullopt;
}

}  // namespace

bool add_to_tracks(Bytes& movie, std::span<const TrackAddition> tracks) {
  if (movie.size() < kHeader || read_32(movie, 0) != movie.size()) return false;
  Bytes changed = movie;
  for (std::size_t k = 0; k < tracks.size(); ++k) {
    const std::optional<Box> track = inside(changed, {0, changed.size()}, "trak", k);
    if (!track) return false;
    set_language(changed, *track, tracks[k].language);
    if (tracks[k].spherical && !mark_spherical(changed, *track)) return false;
  }
  movie = std::move(changed);
  return true;
}

std::optional<MovieBox> read_movie(int descriptor) {
  const std::optional<off_t> at = find_movie(descriptor);
  if (!at) return std::nullopt;
  MovieBox movie{*at, Bytes(std::size_t(::lseek(descriptor, 0, SEEK_END) - *at))};
  if (!read_at(descriptor, movie.bytes, *at)) return std::nullopt;
  return movie;
}

}  // namespace biseam::tool
