#include "clip/write/clip_metadata.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/spherical.h>
}

namespace biseam::tool {
namespace {

struct FreeContext {
  void operator()(AVFormatContext* p) const { avformat_free_context(p); }
};
using Context = std::unique_ptr<AVFormatContext, FreeContext>;

using Entries = std::map<std::string, std::string>;

Context context() { return Context(avformat_alloc_context()); }

void set(AVDictionary** to, const Entries& entries) {
  for (const auto& [key, value] : entries) av_dict_set(to, key.c_str(), value.c_str(), 0);
}

Entries entries_of(const AVDictionary* from) {
  Entries all;
  const AVDictionaryEntry* entry = nullptr;
  while ((entry = av_dict_get(from, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) all[entry->key] = entry->value;
  return all;
}

TEST(ClipMetadata, WhatDescribesTheOldContainerIsLeftOut) {
  const Context from = context(), to = context();
  set(&from->metadata, {{"title", "A walk"}, {"encoder", "old"}, {"major_brand", "isom"}, {"minor_version", "512"}});
  set(&from->metadata, {{"compatible_brands", "isomiso2"}, {"my.own.key", "\xc3\xa4"}, {"empty", ""}, {"Encoder", "kept"}});
  copy_clip_metadata(*from, *to);
  EXPECT_EQ(entries_of(to->metadata)["title"], "A walk");
  EXPECT_EQ(entries_of(to->metadata)["my.own.key"], "\xc3\xa4");
  for (const char* key : {"encoder", "major_brand", "minor_version", "compatible_brands"}) {
    EXPECT_FALSE(entries_of(to->metadata).contains(key)) << key;
  }
}

TEST(PictureMetadata, WhatDescribesTheOldEncodingIsLeftOut) {
  const Context from = context(), to = context();
  AVStream &old = *avformat_new_stream(from.get(), nullptr), &copied = *avformat_new_stream(to.get(), nullptr);
  AVStream& picture = *avformat_new_stream(to.get(), nullptr);
  const Entries kept = {{"language", "fra"}, {"handler_name", "Front"}, {"timecode", "01:02:03:04"}};
  const Entries left = {{"BPS", "1"},
                        {"DURATION", "2"},
                        {"NUMBER_OF_FRAMES", "3"},
                        {"NUMBER_OF_BYTES-eng", "4"},
                        {"_STATISTICS_TAGS", "5"},
                        {"encoder", "6"},
                        {"vendor_id", "7"},
                        {"rotate", "90"},
                        {"BPS-eng", "8"}};
  set(&old.metadata, kept);
  set(&old.metadata, left);
  old.disposition = AV_DISPOSITION_FORCED;
  std::uint8_t* matrix = av_stream_new_side_data(&old, AV_PKT_DATA_DISPLAYMATRIX, 36);
  std::fill_n(matrix, 36, std::uint8_t(1));
  std::uint8_t* profile = av_stream_new_side_data(&old, AV_PKT_DATA_ICC_PROFILE, 5);
  std::fill_n(profile, 5, std::uint8_t(9));

  copy_picture_metadata(old, picture);
  EXPECT_EQ(entries_of(picture.metadata), kept);
  EXPECT_EQ(picture.disposition, AV_DISPOSITION_FORCED);
  ASSERT_EQ(picture.nb_side_data, 1);
  EXPECT_EQ(picture.side_data[0].type, AV_PKT_DATA_ICC_PROFILE);
  EXPECT_EQ(std::string(picture.side_data[0].data, picture.side_data[0].data + 5), std::string(5, '\x09'));

  copy_stream_metadata(old, copied);
  EXPECT_EQ(entries_of(copied.metadata), entries_of(old.metadata));
  EXPECT_EQ(copied.disposition, AV_DISPOSITION_FORCED);
  EXPECT_EQ(copied.nb_side_data, 2);
}

TEST(Spherical, IsSaidAndHeard) {
  const Context clip = context();
  AVStream& stream = *avformat_new_stream(clip.get(), nullptr);
  EXPECT_FALSE(is_whole_sphere(stream));
  mark_spherical(stream);
  EXPECT_TRUE(is_whole_sphere(stream));
  auto* mapping = reinterpret_cast<AVSphericalMapping*>(av_stream_get_side_data(&stream, AV_PKT_DATA_SPHERICAL, nullptr));
  EXPECT_EQ(mapping->yaw | mapping->pitch | mapping->roll, 0);
  for (const auto other : {AV_SPHERICAL_CUBEMAP, AV_SPHERICAL_EQUIRECTANGULAR_TILE}) {
    mapping->projection = other;
    EXPECT_FALSE(is_whole_sphere(stream));
  }
}

TEST(FreeKeys, AreThoseThatMp4HasNoPlaceFor) {
  const Context clip = context();
  EXPECT_FALSE(needs_free_keys(nullptr));
  set(&clip->metadata, {{"title", "a"}, {"comment", "b"}, {"creation_time", "c"}, {"timecode", "d"}, {"encoder", "e"}});
  EXPECT_FALSE(needs_free_keys(clip->metadata));
  set(&clip->metadata, {{"com.maker.model", "f"}});
  EXPECT_TRUE(needs_free_keys(clip->metadata));
}

struct Chapter {
  std::int64_t start, end;  // milliseconds
  std::string title;
  bool operator==(const Chapter&) const = default;
};

std::vector<Chapter> copied(const std::vector<Chapter>& chapters, const ClipSpan& span) {
  const Context from = context(), to = context();
  for (const Chapter& chapter : chapters) {
    from->chapters = static_cast<AVChapter**>(av_realloc_array(from->chapters, from->nb_chapters + 1, sizeof(AVChapter*)));
    auto* made = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
    from->chapters[from->nb_chapters++] = made;
    made->id = from->nb_chapters;
    made->time_base = {1, 1000};
    made->start = chapter.start;
    made->end = chapter.end;
    av_dict_set(&made->metadata, "title", chapter.title.c_str(), 0);
  }
  copy_chapters(*from, span, *to);
  std::vector<Chapter> all;
  for (unsigned k = 0; k < to->nb_chapters; ++k) {
    const AVChapter& chapter = *to->chapters[k];
    EXPECT_EQ(av_cmp_q(chapter.time_base, {1, 1000}), 0);
    all.push_back({chapter.start, chapter.end, av_dict_get(chapter.metadata, "title", nullptr, 0)->value});
  }
  return all;
}

TEST(Chapters, OfTheWholeStayWhereTheyAre) {
  const std::vector<Chapter> all = {{-5, 100, "a"}, {100, 250, "b"}, {250, 250, "c"}, {400, 9000, "d"}};
  EXPECT_EQ(copied(all, {}), all);
  EXPECT_EQ(copied({}, {}), std::vector<Chapter>());
}

TEST(Chapters, OfAPartAreCutToItAndMoved) {
  const std::vector<Chapter> all = {{0, 100, "a"}, {100, 250, "b"}, {250, 400, "c"}, {400, 500, "d"}};
  EXPECT_EQ(copied(all, {100000, 400000, 100000}), (std::vector<Chapter>{{0, 150, "b"}, {150, 300, "c"}}));
  EXPECT_EQ(copied(all, {99000, 401000, 99000}),
            (std::vector<Chapter>{{0, 1, "a"}, {1, 151, "b"}, {151, 301, "c"}, {301, 302, "d"}}));
  EXPECT_EQ(copied(all, {600000, 700000, 600000}), std::vector<Chapter>());
}

// A mark without a length is in the part or it is not; it is never turned round.
TEST(Chapters, ThoseWithoutALengthStayOnlyInsideThePart) {
  const std::vector<Chapter> all = {{50, 50, "before"}, {100, 100, "first"}, {200, 200, "inside"}, {500, 500, "behind"}};
  EXPECT_EQ(copied(all, {100000, 400000, 100000}), (std::vector<Chapter>{{0, 0, "first"}, {100, 100, "inside"}}));
}

}  // namespace
}  // namespace biseam::tool
