#include "clip/write/boxes.hpp"

#include <algorithm>

namespace biseam::tool {

std::uint32_t read_32(const Bytes& from, std::size_t at) {
  return std::uint32_t(from[at]) << 24 | std::uint32_t(from[at + 1]) << 16 | std::uint32_t(from[at + 2]) << 8 | from[at + 3];
}

void write_32(Bytes& to, std::size_t at, std::uint32_t value) {
  for (int k = 0; k < 4; ++k) to[at + std::size_t(k)] = std::uint8_t(value >> (24 - 8 * k));
}

void append_32(Bytes& to, std::uint32_t value) {
  for (int k = 0; k < 4; ++k) to.push_back(std::uint8_t(value >> (24 - 8 * k)));
}

void append_64(Bytes& to, std::uint64_t value) {
  append_32(to, std::uint32_t(value >> 32));
  append_32(to, std::uint32_t(value));
}

std::optional<Box> box_at(const Bytes& from, std::size_t at, std::size_t end) {
  if (at + kBoxHeader > end) return std::nullopt;
  const Box box{at, read_32(from, at)};
  if (box.size < kBoxHeader || box.end() > end) return std::nullopt;
  return box;
}

bool is_named(const Bytes& from, const Box& box, std::string_view name) {
  return std::equal(name.begin(), name.end(), from.begin() + std::ptrdiff_t(box.at + 4),
                    [](char a, std::uint8_t b) { return std::uint8_t(a) == b; });
}

std::optional<Box> find_box(const Bytes& from, std::size_t begin, std::size_t end, std::string_view name, std::size_t number) {
  for (std::optional<Box> box = box_at(from, begin, end); box; box = box_at(from, box->end(), end)) {
    if (is_named(from, *box, name) && number-- == 0) return box;
  }
  return std::nullopt;
}

std::optional<Box> box_inside(const Bytes& from, const Box& box, std::string_view name, std::size_t number) {
  return find_box(from, box.at + kBoxHeader, box.end(), name, number);
}

std::vector<Box> box_path(const Bytes& from, const Box& box, std::span<const std::string_view> names) {
  std::vector<Box> path{box};
  for (const std::string_view name : names) {
    const std::optional<Box> next = box_inside(from, path.back(), name);
    if (!next) return {};
    path.push_back(*next);
  }
  return path;
}

std::optional<std::uint32_t> track_number(const Bytes& movie, const Box& track) {
  const std::optional<Box> header = box_inside(movie, track, "tkhd");
  if (!header || header->size <= kBoxHeader) return std::nullopt;
  // Behind version and flags and two times, which are long ones in version 1.
  const std::size_t at = header->at + kBoxHeader + 4 + (movie[header->at + kBoxHeader] == 1 ? 16 : 8);
  return at + 4 <= header->end() ? std::optional(read_32(movie, at)) : std::nullopt;
}

Bytes make_box(std::string_view name, const Bytes& content) {
  Bytes box;
  append_32(box, std::uint32_t(kBoxHeader + content.size()));
  for (const char letter : name) box.push_back(std::uint8_t(letter));
  box.insert(box.end(), content.begin(), content.end());
  return box;
}

void replace_bytes(Bytes& in, std::size_t begin, std::size_t end, const Bytes& by, std::span<const Box> around) {
  const auto place = in.erase(in.begin() + std::ptrdiff_t(begin), in.begin() + std::ptrdiff_t(end));
  in.insert(place, by.begin(), by.end());
  for (const Box& box : around) write_32(in, box.at, std::uint32_t(box.size - (end - begin) + by.size()));
}

}  // namespace biseam::tool
