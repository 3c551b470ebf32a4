// MP4 and QuickTime files: pieces while they are written, one index in the end, every packet where it says.
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <map>
#include <vector>

#include "clip/write/clip_muxer.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

struct Sound {
  const char* name;
  AVCodecID codec;
  int rate, packet_bytes, packet_samples;
  double begin = 0;  // seconds
};

// So that every packet is another one.  A frame of AMR says in its first byte how long it is, one of AC-3 in its first seven.
std::string content(AVCodecID codec, int number, int bytes) {
  std::string all(std::size_t(bytes), '<');
  for (std::size_t k = 1; k < all.size(); ++k) all[k] = char(number * 7 + int(k) * int(codec));
  if (codec == AV_CODEC_ID_AC3) all.replace(0, 7, std::string("\x0b\x77\0\0\x14\x40\x20", 7));
  return all;
}

void put(ClipMuxer& muxer, const AVStream& stream, const std::string& bytes, std::int64_t time, std::int64_t duration) {
  const Libav<AVPacket> packet(av_packet_alloc());
  ASSERT_EQ(av_new_packet(packet.get(), int(bytes.size())), 0);
  std::memcpy(packet->data, bytes.data(), bytes.size());
  packet->pts = packet->dts = time;
  packet->duration = duration;
  packet->flags |= AV_PKT_FLAG_KEY;
  packet->stream_index = stream.index;
  av_packet_rescale_ts(packet.get(), {1, 1000000}, stream.time_base);
  muxer.put(*packet, "a stream");
}

struct Film {
  int frames = 150, rate = 25;
  int base_bytes = 900;  // of a picture, and up to 90 more
};

// The bytes of each stream.
std::map<int, std::string> write_film(ClipMuxer& muxer, const Film& film, const Sound& sound) {
  AVStream& picture = muxer.add_stream();
  picture.codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
  picture.codecpar->codec_id = AV_CODEC_ID_MJPEG;
  picture.codecpar->width = 64, picture.codecpar->height = 32;
  picture.time_base = {1, 12800};
  AVStream& heard = muxer.add_stream();
  heard.codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
  heard.codecpar->codec_id = sound.codec;
  heard.codecpar->sample_rate = sound.rate;
  heard.codecpar->block_align = sound.packet_bytes;
  heard.codecpar->frame_size = sound.packet_samples;
  heard.codecpar->bits_per_coded_sample = av_get_bits_per_sample(sound.codec);
  av_channel_layout_default(&heard.codecpar->ch_layout, 1);
  heard.time_base = {1, sound.rate};
  muxer.begin();
  std::map<int, std::string> all{{0, ""}, {1, ""}};
  std::int64_t heard_samples = 0;
  for (int k = 0; k < film.frames; ++k) {
    const std::int64_t time = k * 1000000ll / film.rate;
    const std::string shown = content(AV_CODEC_ID_MJPEG, k, film.base_bytes + k % 91);
    put(muxer, picture, shown, time, 1000000 / film.rate);
    all[0] += shown;
    for (; heard_samples * 1000000 / sound.rate + std::int64_t(sound.begin * 1e6) < time;
         heard_samples += sound.packet_samples) {
      const std::string said = content(sound.codec, int(heard_samples / sound.packet_samples), sound.packet_bytes);
      put(muxer, heard, said, heard_samples * 1000000 / sound.rate + std::int64_t(sound.begin * 1e6),
          sound.packet_samples * 1000000ll / sound.rate);
      all[1] += said;
    }
  }
  return all;
}

std::map<int, std::string> read_film(const std::string& path) {
  AVFormatContext* raw = nullptr;
  EXPECT_EQ(avformat_open_input(&raw, path.c_str(), nullptr, nullptr), 0);
  const Libav<AVFormatContext> format(raw);
  const Libav<AVPacket> packet(av_packet_alloc());
  std::map<int, std::string> all;
  while (raw && av_read_frame(raw, packet.get()) >= 0) {
    all[packet->stream_index].append(reinterpret_cast<const char*>(packet->data), std::size_t(packet->size));
    av_packet_unref(packet.get());
  }
  return all;
}

// The names of the outermost boxes, with a size of 32 or 64 bits.
std::vector<std::string> box_names(const std::string& file) {
  std::vector<std::string> names;
  for (std::size_t at = 0; at + 8 <= file.size();) {
    const Bytes head(file.begin() + std::ptrdiff_t(at), file.begin() + std::ptrdiff_t(std::min(at + 16, file.size())));
    names.emplace_back(head.begin() + 4, head.begin() + 8);
    const std::size_t size = read_32(head, 0) == 1 ? std::size_t(read_32(head, 8)) << 32 | read_32(head, 12) : read_32(head, 0);
    if (size < 8) break;
    at += size;
    if (at > file.size()) names.emplace_back("cut");
  }
  return names;
}

class MovieFiles : public testing::TestWithParam<std::tuple<const char*, Sound>> {};

std::string name_of(const testing::TestParamInfo<MovieFiles::ParamType>& info) {
  return std::string(std::get<0>(info.param)) + "_" + std::get<1>(info.param).name;
}

TEST_P(MovieFiles, HaveOneIndexThatFindsEveryPacket) {
  const auto& [extension, sound] = GetParam();
  const ScratchFolder folder;
  const std::string path = folder / "a." + extension;
  ClipMuxer muxer(path, *clip_format(path));
  const std::map<int, std::string> given = write_film(muxer, {}, sound);
  EXPECT_TRUE(muxer.end());
  muxer.commit();
  EXPECT_EQ(box_names(read_bytes(path)), (std::vector<std::string>{"ftyp", "mdat", "moov"}));
  EXPECT_TRUE(read_film(path) == given);
}

TEST_P(MovieFiles, ArePlayableWhileTheyAreWritten) {
  const auto& [extension, sound] = GetParam();
  const ScratchFolder folder;
  const std::string path = folder / "a." + extension;
  ClipMuxer muxer(path, *clip_format(path));
  const std::map<int, std::string> given = write_film(muxer, {}, sound);
  const std::vector<std::string> names = folder.names();
  ASSERT_EQ(names.size(), 1u);
  const std::map<int, std::string> found = read_film(folder / names[0]);
  ASSERT_EQ(found.size(), 2u);
  for (const auto& [stream, bytes] : found) {
    EXPECT_EQ(bytes, given.at(stream).substr(0, bytes.size())) << stream;
    EXPECT_GT(bytes.size(), given.at(stream).size() / 2) << stream;
  }
}

constexpr Sound kPcm{"pcm", AV_CODEC_ID_PCM_S16LE, 8000, 640, 320}, kAmr{"amr", AV_CODEC_ID_AMR_NB, 8000, 32, 160},
    kAdpcm{"adpcm", AV_CODEC_ID_ADPCM_MS, 8000, 256, 500}, kLate{"late_ac3", AV_CODEC_ID_AC3, 48000, 768, 1536, 2.5};
INSTANTIATE_TEST_SUITE_P(Mov, MovieFiles, testing::Combine(testing::Values("mov"), testing::Values(kPcm, kAmr, kAdpcm)),
                         name_of);
INSTANTIATE_TEST_SUITE_P(LateSound, MovieFiles, testing::Combine(testing::Values("mp4", "mov"), testing::Values(kLate)),
                         name_of);

TEST(MovieFile, APieceEndsWithinASecondOrWhenItIsLarge) {
  const ScratchFolder folder;
  const auto pieces = [&](const Film& film) {
    const std::string path = folder / "a.mov";
    ClipMuxer muxer(path, *clip_format(path));
    write_film(muxer, film, kPcm);
    const std::vector<std::string> names = folder.names(), boxes = box_names(read_bytes(folder / names.at(0)));
    return std::count(boxes.begin(), boxes.end(), "moof");
  };
  EXPECT_EQ(pieces({}), 5);                                     // 6 seconds
  EXPECT_EQ(pieces({.frames = 20, .base_bytes = 4 << 20}), 2);  // 80 MiB in less than a second
}

// The last bytes of the index find no room.
TEST(MovieFile, WithoutRoomForItsIndexItLeavesNothing) {
  const ScratchFolder folder;
  const auto finish = [&](rlim_t room) {
    const std::string path = folder / "full.mov";
    ClipMuxer muxer(path, *clip_format(path));
    write_film(muxer, {}, kPcm);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit little{std::min(room, before.rlim_max), before.rlim_max};
    const auto old_handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &little), 0);
    const auto [code, line] = failure_of([&] { muxer.end(); });
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, old_handler);
    EXPECT_EQ(code, ExitCode::output);
    EXPECT_EQ(line, path + ": can't be written: File too large");
  };
  {
    ClipMuxer whole(folder / "whole.mov", *clip_format("whole.mov"));
    write_film(whole, {}, kPcm);
    whole.end();
    whole.commit();
  }
  const std::uintmax_t bytes = std::filesystem::file_size(folder / "whole.mov");
  for (const std::uintmax_t missing : {1u, 200u, 1000u}) finish(bytes - missing);
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"whole.mov"}));
}

}  // namespace
}  // namespace biseam::tool
