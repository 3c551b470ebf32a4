#include "clip/write/clip_metadata.hpp"

extern "C" {
#include <libavutil/spherical.h>
}

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

namespace biseam::tool {
namespace {

// Written anew by every muxer and encoder.
constexpr std::string_view kContainerKeys[] = {"major_brand", "minor_version", "compatible_brands", "encoder"};
constexpr std::string_view kEncodingKeys[] = {"encoder",          "ENCODER",         "BPS",      "DURATION",
                                              "NUMBER_OF_FRAMES", "NUMBER_OF_BYTES", "vendor_id"};
constexpr std::string_view kPlainKeys[] = {"title",        "artist",    "album_artist", "composer",      "album",
                                           "date",         "comment",   "genre",        "grouping",      "lyrics",
                                           "description",  "synopsis",  "show",         "episode_id",    "network",
                                           "keywords",     "copyright", "media_type",   "creation_time", "location",
                                           "location-eng", "encoder",   "major_brand",  "minor_version", "compatible_brands"};

template <class Keys>
bool contains(const Keys& keys, std::string_view key) {
  return std::find(std::begin(keys), std::end(keys), key) != std::end(keys);
}

bool is_statistic(std::string_view key) {
  return key.starts_with("_STATISTICS") || key.starts_with("BPS-") || key.starts_with("DURATION-") ||
         key.starts_with("NUMBER_OF_");
}

template <class Wanted>
void copy_entries(const AVDictionary* from, AVDictionary** to, Wanted wanted) {
  const AVDictionaryEntry* entry = nullptr;
  while ((entry = av_dict_get(from, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
    if (wanted(entry->key) && av_dict_set(to, entry->key, entry->value, 0) < 0) throw std::bad_alloc();
  }
}

void copy_side_data(const AVPacketSideData& data, AVStream& to) {
  std::uint8_t* place = av_stream_new_side_data(&to, data.type, data.size);
  if (!place) throw std::bad_alloc();
  std::memcpy(place, data.data, data.size);
}

bool describes_light(AVPacketSideDataType type) {
  return type == AV_PKT_DATA_MASTERING_DISPLAY_METADATA || type == AV_PKT_DATA_CONTENT_LIGHT_LEVEL ||
         type == AV_PKT_DATA_ICC_PROFILE;
}

}  // namespace

void copy_clip_metadata(const AVFormatContext& from, AVFormatContext& to) {
  copy_entries(from.metadata, &to.metadata, [](std::string_view key) { return !contains(kContainerKeys, key); });
}

void copy_chapters(const AVFormatContext& from, const ClipSpan& span, AVFormatContext& to) {
  if (from.nb_chapters == 0) return;
  to.chapters = static_cast<AVChapter**>(av_calloc(from.nb_chapters, sizeof(AVChapter*)));
  if (!to.chapters) throw std::bad_alloc();
  for (unsigned k = 0; k < from.nb_chapters; ++k) {
    const AVChapter& old = *from.chapters[k];
    const auto in_base = [&](std::int64_t time) { return av_rescale_q(time, kMicroseconds, old.time_base); };
    const std::int64_t first = span.shift == 0 ? old.start : std::max(old.start, in_base(span.begin));
    const std::int64_t last = span.end == INT64_MAX ? old.end : std::min(old.end, in_base(span.end));
    const bool is_mark = old.start == old.end;  // which has no length to be cut
    if (is_mark ? first > last : first >= last) continue;
    auto* chapter = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
    if (!chapter) throw std::bad_alloc();
    to.chapters[to.nb_chapters++] = chapter;
    chapter->id = old.id;
    chapter->time_base = old.time_base;
    chapter->start = first - in_base(span.shift);
    chapter->end = last - in_base(span.shift);
    av_dict_copy(&chapter->metadata, old.metadata, 0);
  }
}

void copy_stream_metadata(const AVStream& from, AVStream& to) {
  copy_entries(from.metadata, &to.metadata, [](std::string_view) { return true; });
  to.disposition = from.disposition;
  for (int k = 0; k < from.nb_side_data; ++k) copy_side_data(from.side_data[k], to);
}

void copy_picture_metadata(const AVStream& from, AVStream& to) {
  copy_entries(from.metadata, &to.metadata,
               [](std::string_view key) { return !contains(kEncodingKeys, key) && !is_statistic(key) && key != "rotate"; });
  to.disposition = from.disposition;
  for (int k = 0; k < from.nb_side_data; ++k) {
    if (describes_light(from.side_data[k].type)) copy_side_data(from.side_data[k], to);
  }
}

void mark_spherical(AVStream& stream) {
  std::size_t size = 0;
  AVSphericalMapping* mapping = av_spherical_alloc(&size);
  if (!mapping) throw std::bad_alloc();
  mapping->projection = AV_SPHERICAL_EQUIRECTANGULAR;
  if (av_stream_add_side_data(&stream, AV_PKT_DATA_SPHERICAL, reinterpret_cast<std::uint8_t*>(mapping), size) >= 0) return;
  av_free(mapping);
  throw std::bad_alloc();
}

bool is_whole_sphere(const AVStream& stream) {
  const std::uint8_t* data = av_stream_get_side_data(&stream, AV_PKT_DATA_SPHERICAL, nullptr);
  return data && reinterpret_cast<const AVSphericalMapping*>(data)->projection == AV_SPHERICAL_EQUIRECTANGULAR;
}

bool needs_free_keys(const AVDictionary* metadata) {
  const AVDictionaryEntry* entry = nullptr;
  while ((entry = av_dict_get(metadata, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
    if (!contains(kPlainKeys, entry->key) && std::string_view(entry->key) != "timecode") return true;  // which has a track
  }
  return false;
}

}  // namespace biseam::tool
