// The boxes that MP4 and QuickTime files are made of: size and name, then content, often boxes again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace biseam::tool {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kBoxHeader = 8;

struct Box {
  std::size_t at = 0, size = 0;  // with the header
  std::size_t end() const { return at + size; }
  bool operator==(const Box&) const = default;
};

// Numbers have their highest byte first; the bytes must be there.
std::uint32_t read_32(const Bytes& from, std::size_t at);
void write_32(Bytes& to, std::size_t at, std::uint32_t value);
void append_32(Bytes& to, std::uint32_t value);
void append_64(Bytes& to, std::uint64_t value);

// None where the area has no room for a box or for the whole of it.
std::optional<Box> box_at(const Bytes& from, std::size_t at, std::size_t end);
bool is_named(const Bytes& from, const Box& box, std::string_view name);

// The number-th box of the name in the area, or directly inside a box.
std::optional<Box> find_box(const Bytes& from, std::size_t begin, std::size_t end, std::string_view name,
                            std::size_t number = 0);
std::optional<Box> box_inside(const Bytes& from, const Box& box, std::string_view name, std::size_t number = 0);

// The box and those that the names lead to, each inside the one before; empty when one is missing.
std::vector<Box> box_path(const Bytes& from, const Box& box, std::span<const std::string_view> names);

// The number that a track's header ("tkhd" in a "trak") gives it.
std::optional<std::uint32_t> track_number(const Bytes& movie, const Box& track);

Bytes make_box(std::string_view name, const Bytes& content);

// Puts bytes in the place of those in the area; the boxes around it, which must be those of a path, learn their new sizes.
void replace_bytes(Bytes& in, std::size_t begin, std::size_t end, const Bytes& by, std::span<const Box> around);

}  // namespace biseam::tool
