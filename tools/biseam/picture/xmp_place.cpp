#include "picture/xmp_place.hpp"

extern "C" {
#include <libavutil/crc.h>
}

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace biseam::tool {
namespace {

using namespace std::string_view_literals;
using Bytes = std::vector<std::uint8_t>;

constexpr std::string_view kJpegStart = "\xff\xd8\xff", kPngStart = "\x89PNG\r\n\x1a\n";
constexpr std::string_view kJpegXmp = "http://ns.adobe.com/xap/1.0/\0"sv, kJpegExif = "Exif\0"sv;
constexpr std::string_view kPngXmp = "XML:com.adobe.xmp\0"sv;
constexpr std::size_t kPngFrame = 12;  // of a chunk: length, name, checksum

// A segment or chunk.
struct Part {
  std::size_t at = 0, size = 0;
  std::size_t end() const { return at + size; }
};

bool stands_at(const Bytes& file, std::size_t at, std::string_view text) {
  return at + text.size() <= file.size() && std::equal(text.begin(), text.end(), file.begin() + std::ptrdiff_t(at),
                                                       [](char a, std::uint8_t b) { return std::uint8_t(a) == b; });
}

std::string number(std::size_t value, int bytes) {
  std::string text;
  for (int k = bytes - 1; k >= 0; --k) text += char(value >> (8 * k) & 0xff);
  return text;
}

std::size_t number_at(const Bytes& file, std::size_t at, int bytes) {
  std::size_t value = 0;
  for (int k = 0; k < bytes; ++k) value = value << 8 | file[at + std::size_t(k)];
  return value;
}

// Puts `addition` where the first of the old parts was, or at `usual`, and leaves the old ones out.  They ascend.
Bytes exchange(const Bytes& file, const std::vector<Part>& old, std::size_t usual, const std::string& addition) {
  const std::size_t place = old.empty() ? usual : old.front().at;
  const auto from = [&](std::size_t at) { return file.begin() + std::ptrdiff_t(at); };
  Bytes changed(file.begin(), from(place));
  changed.insert(changed.end(), addition.begin(), addition.end());
  std::size_t at = place;
  for (const Part& part : old) {
    changed.insert(changed.end(), from(at), from(part.at));
    at = part.end();
  }
  changed.insert(changed.end(), from(at), file.end());
  return changed;
}

// A segment that says how long it is; none at the scan or at what is no segment.
std::optional<Part> segment_at(const Bytes& file, std::size_t at) {
  constexpr std::uint8_t kFirst = 0xc0, kEnd = 0xd9, kScan = 0xda;
  if (at + 4 > file.size() || file[at] != 0xff || file[at + 1] < kFirst) return std::nullopt;
  const std::uint8_t marker = file[at + 1];
  const Part segment{at, 2 + number_at(file, at + 2, 2)};
  const bool ends = marker == kScan || marker == kEnd;
  return ends || segment.size < 4 || segment.end() > file.size() ? std::nullopt : std::optional(segment);
}

// Any number of fill bytes may stand before a segment.
std::size_t skip_fill(const Bytes& file, std::size_t at) {
  while (at + 1 < file.size() && file[at] == 0xff && file[at + 1] == 0xff) ++at;
  return at;
}

// After JFIF's and Exif's segments, which readers want first.
Bytes place_in_jpeg(const Bytes& file, const std::string& block) {
  constexpr std::size_t kMost = 0xffff, kNameAt = 4;
  std::vector<Part> old;
  std::size_t at = skip_fill(file, 2), usual = at;
  for (std::optional<Part> part = segment_at(file, at); part; part = segment_at(file, at)) {
    at = skip_fill(file, part->end());
    if (stands_at(file, part->at, "\xff\xe1") && stands_at(file, part->at + kNameAt, kJpegXmp)) old.push_back(*part);
    const bool is_exif = stands_at(file, part->at, "\xff\xe1") && stands_at(file, part->at + kNameAt, kJpegExif);
    if (part->at == usual && (is_exif || stands_at(file, part->at, "\xff\xe0"))) usual = at;
  }
  const std::size_t size = 2 + kJpegXmp.size() + block.size();
  if (size > kMost) throw std::runtime_error("the XMP block has grown too long");
  return exchange(file, old, usual, "\xff\xe1" + number(size, 2) + std::string(kJpegXmp) + block);
}

std::string xmp_chunk(const std::string& block) {
  const std::string plain(4, '\0');  // not compressed, no language, no translated name
  const std::string content = "iTXt" + std::string(kPngXmp) + plain + block;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(content.data());
  const std::uint32_t sum = ~av_crc(av_crc_get_table(AV_CRC_32_IEEE_LE), 0xffffffffu, bytes, content.size());
  return number(content.size() - 4, 4) + content + number(sum, 4);
}

// After the header.
Bytes place_in_png(const Bytes& file, const std::string& block) {
  // The header comes first in every PNG file; behind another chunk the block might not be found again.
  if (!stands_at(file, kPngStart.size() + 4, "IHDR")) throw std::runtime_error("there is no header");
  std::vector<Part> old;
  std::size_t usual = 0;
  for (std::size_t at = kPngStart.size(); at + kPngFrame <= file.size();) {
    const Part part{at, kPngFrame + number_at(file, at, 4)};
    if (part.end() > file.size()) break;
    if (stands_at(file, at + 4, "iTXt") && stands_at(file, at + 8, kPngXmp)) old.push_back(part);
    at = part.end();
    if (usual == 0) usual = at;
    if (stands_at(file, part.at + 4, "IEND")) break;
  }
  if (usual == 0) throw std::runtime_error("there is no header");
  return exchange(file, old, usual, xmp_chunk(block));
}

}  // namespace

std::vector<std::uint8_t> place_xmp(const std::vector<std::uint8_t>& file, const std::string& block) {
  if (stands_at(file, 0, kJpegStart)) return place_in_jpeg(file, block);
  if (stands_at(file, 0, kPngStart)) return place_in_png(file, block);
  throw std::runtime_error("this is no JPEG or PNG file");
}

}  // namespace biseam::tool
