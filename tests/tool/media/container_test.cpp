#include "media/container.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "picture/write_picture.hpp"
#include "support/random_source.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

class ContainerTest : public testing::Test {
 protected:
  ContainerTest() {
    Nv12 picture(32, 16);
    for (std::size_t i = 0; i < picture.luma.size(); ++i) picture.luma[i] = std::uint8_t(i * 7);
    write_picture(folder_ / "a.png", picture);
    write_picture(folder_ / "a.jpg", picture);
    ClipSpec spec;
    spec.sound = 0.2;
    write_clip(folder_ / "a.mp4", spec, std::vector<Nv12>(5, picture));
    write_clip(folder_ / "a.mkv", spec, std::vector<Nv12>(5, picture));
  }

  ScratchFolder folder_;
};

struct Packets {
  std::vector<std::string> bytes;
  int damages = 0;
};

// All up to the end, which has to come.
Packets read_all(Container& source) {
  Packets all;
  const Libav<AVPacket> packet(av_packet_alloc());
  for (int tries = 0; tries < 10000; ++tries) {
    const Container::Read read = source.read(*packet);
    if (read == Container::Read::end) return all;
    if (read == Container::Read::damage) ++all.damages;
    if (read == Container::Read::packet) all.bytes.emplace_back(packet->data, packet->data + packet->size);
    av_packet_unref(packet.get());
  }
  ADD_FAILURE() << "no end";
  return all;
}

TEST_F(ContainerTest, KindsAreKnownByTheirContentAlone) {
  for (const auto& [file, is_picture] : {std::pair{"a.png", true}, {"a.jpg", true}, {"a.mp4", false}, {"a.mkv", false}}) {
    for (const char* name : {"copy", "copy.txt", "copy.mp4", "copy.png"}) {
      std::filesystem::copy_file(folder_ / file, folder_ / name, std::filesystem::copy_options::overwrite_existing);
      const Container source(folder_ / name);
      EXPECT_EQ(source.is_picture(), is_picture) << file << " as " << name;
      EXPECT_TRUE(source.is_seekable());
      EXPECT_EQ(source.name(), folder_ / name);
    }
  }
}

TEST_F(ContainerTest, PacketsComeInOrderAndTheEndStays) {
  for (const char* name : {"a.mp4", "a.mkv"}) {
    Container source(folder_ / name);
    ASSERT_EQ(source->nb_streams, 2u);
    const Packets all = read_all(source);
    EXPECT_GE(all.bytes.size(), 5u + 2u) << name;
    EXPECT_EQ(all.damages, 0) << name;
    EXPECT_TRUE(read_all(source).bytes.empty()) << name;
  }
}

// A pipe can be read once: what a picture's bytes are is kept, a clip's are not.
TEST_F(ContainerTest, APipeGivesWhatTheFileGives) {
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  for (const char* name : {"a.png", "a.jpg", "a.mkv"}) {
    Container file(folder_ / name);
    std::jthread writer([&] { write_bytes(folder_ / "pipe", read_bytes(folder_ / name)); });
    Container pipe(folder_ / "pipe");
    EXPECT_FALSE(pipe.is_seekable());
    EXPECT_EQ(pipe.is_picture(), file.is_picture());
    EXPECT_EQ(read_all(pipe).bytes, read_all(file).bytes) << name;
    const std::vector<std::uint8_t> whole = file.file_bytes(), kept = pipe.file_bytes();
    EXPECT_EQ(std::string(whole.begin(), whole.end()), read_bytes(folder_ / name));
    if (file.is_picture()) {
      EXPECT_EQ(kept, whole) << name;
    } else {
      EXPECT_TRUE(kept.empty()) << name;
    }
  }
}

TEST_F(ContainerTest, AllBytesOfAFileAreGivenWhereverReadingIs) {
  std::string bytes = read_bytes(folder_ / "a.png");
  bytes.resize((std::size_t(2) << 20) + 12345, 'x');
  write_bytes(folder_ / "long.png", bytes);
  Container source(folder_ / "long.png");
  for (int round = 0; round < 2; ++round) {
    const std::vector<std::uint8_t> all = source.file_bytes();
    EXPECT_TRUE(std::string(all.begin(), all.end()) == bytes);
    read_all(source);
  }
}

TEST_F(ContainerTest, RawFramesAreCutAsTheyAreTold) {
  std::string bytes(std::size_t(3) * 16 * 8 * 3 / 2, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = char(i);
  write_bytes(folder_ / "raw", bytes);
  Container source(folder_ / "raw", RawVideo{{16, 8}, {25, 1}});
  EXPECT_FALSE(source.is_picture());
  ASSERT_EQ(source->nb_streams, 1u);
  EXPECT_EQ(source->streams[0]->codecpar->width, 16);
  EXPECT_EQ(source->streams[0]->codecpar->height, 8);
  EXPECT_EQ(source->streams[0]->codecpar->format, AV_PIX_FMT_NV12);
  EXPECT_EQ(av_cmp_q(source->streams[0]->time_base, {1, 25}), 0);
  const Packets all = read_all(source);
  ASSERT_EQ(all.bytes.size(), 3u);
  for (std::size_t k = 0; k < 3; ++k) EXPECT_EQ(all.bytes[k], bytes.substr(k * 192, 192));
}

void expect_refused(const std::string& path) {
  const auto [code, line] = failure_of([&] { Container source(path); });
  EXPECT_EQ(code, ExitCode::input);
  expect_one_line_naming(line, path);
}

TEST_F(ContainerTest, WhatIsNoPictureOrClipIsNamed) {
  write_bytes(folder_ / "empty", "");
  write_bytes(folder_ / "text.png", "This is a text, not a picture.\n");
  write_bytes(folder_ / "zeros.mp4", std::string(100000, '\0'));
  for (const char* name : {"empty", "text.png", "zeros.mp4", "none", "."}) expect_refused(folder_ / name);
}

// Lists of files are read by libav as clips; what they name must never be opened.
TEST_F(ContainerTest, FilesThatNameOthersAreNotFollowed) {
  const std::string clip = folder_ / "a.mp4";
  write_bytes(folder_ / "list", "ffconcat version 1.0\nfile '" + clip + "'\n");
  write_bytes(folder_ / "list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n" + clip + "\n#EXT-X-ENDLIST\n");
  write_bytes(folder_ / "list.sdp", "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nm=video 9 RTP/AVP 96\n");
  for (const char* name : {"list", "list.m3u8", "list.sdp"}) expect_refused(folder_ / name);
}

// Cut anywhere and with bytes flipped: a line that names it, or packets and an end.
TEST_F(ContainerTest, DamageIsALineOrAnEnd) {
  RandomSource random;
  int opened = 0, refused = 0;
  for (const char* name : {"a.png", "a.jpg", "a.mp4", "a.mkv"}) {
    const std::string good = read_bytes(folder_ / name);
    for (int round = 0; round < 40; ++round) {
      std::string bad = good;
      if (round % 2 == 0) bad.resize(std::size_t(random.between(0, int(good.size()) - 1)));
      for (int k = 0; k < round % 4 && !bad.empty(); ++k)
        bad[std::size_t(random.between(0, int(bad.size()) - 1))] = char(random.byte());
      write_bytes(folder_ / "bad", bad);
      try {
        Container source(folder_ / "bad");
        read_all(source);
        ++opened;
      } catch (const Failure& failure) {
        EXPECT_EQ(failure.code(), ExitCode::input);
        expect_one_line_naming(failure.what(), folder_ / "bad");
        ++refused;
      }
    }
  }
  EXPECT_GT(opened, 10);
  EXPECT_GT(refused, 10);
}

}  // namespace
}  // namespace biseam::tool
