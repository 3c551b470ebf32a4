// What pictures say besides their samples, from the fisheye pictures into the panorama; read back through Exiv2.
#include "picture/metadata.hpp"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/crc.h>
}

#include <cmath>
#include <exiv2/exiv2.hpp>
#include <filesystem>

#include "picture/encode.hpp"
#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "tool/support/nv12_picture.hpp"
#include "tool/support/places.hpp"
#include "tool/support/process.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::Finished;
using test::kSourceFolder;
using test::kTool;
using test::read_bytes;

constexpr int kWidth = 128;

std::unique_ptr<Exiv2::Image> open(const std::string& path) {
  std::unique_ptr<Exiv2::Image> image(Exiv2::ImageFactory::open(path).release());
  image->readMetadata();
  return image;
}

template <class Change>
void edit(const std::string& path, Change change) {
  const auto image = open(path);
  change(*image);
  image->writeMetadata();
}

std::vector<std::uint8_t> profile(const std::string& space) {
  std::vector<std::uint8_t> bytes(150000);  // three segments of a JPEG file
  for (std::size_t k = 0; k < bytes.size(); ++k) bytes[k] = std::uint8_t(k * k >> 7);
  for (int k = 0; k < 4; ++k) bytes[std::size_t(k)] = std::uint8_t(bytes.size() >> (24 - 8 * k));
  std::copy(space.begin(), space.end(), bytes.begin() + 16);
  return bytes;
}

std::string exif(const Exiv2::Image& image, const char* key) {
  const auto entry = image.exifData().findKey(Exiv2::ExifKey(key));
  return entry == image.exifData().end() ? "none" : entry->toString();
}

std::string xmp(const Exiv2::Image& image, const char* key) {
  const auto entry = image.xmpData().findKey(Exiv2::XmpKey(key));
  return entry == image.xmpData().end() ? "none" : entry->toString();
}

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t found = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++found;
  return found;
}

class MetadataOf : public testing::TestWithParam<const char*> {
 protected:
  std::string out() const { return folder_ / (std::string("out.") + GetParam()); }

  // Of a camera, with everything that there is.
  void make_recording(const std::string& name, const Rgb& picture, const std::string& make = "Two Eyes") const {
    write_picture(folder_ / name, picture);
    edit(folder_ / name, [&](Exiv2::Image& image) {
      Exiv2::ExifData& data = image.exifData();
      data["Exif.Image.Make"] = make;
      data["Exif.Image.Model"] = "Both Ways";
      data["Exif.Image.Orientation"] = std::uint16_t(1);
      data["Exif.Photo.DateTimeOriginal"] = "2024:05:06 07:08:09";
      data["Exif.Photo.PixelXDimension"] = std::uint32_t(4000);
      data["Exif.Photo.PixelYDimension"] = std::uint32_t(2000);
      data["Exif.GPSInfo.GPSLatitudeRef"] = "N";
      data["Exif.GPSInfo.GPSLatitude"] = "60/1 27/1 5/1";
      Exiv2::DataValue note(Exiv2::undefined);
      note.read("78 111 98 111 100 121 0 1 2 3 255 254 42");
      data.add(Exiv2::ExifKey("Exif.Photo.MakerNote"), &note);
      const std::vector<std::uint8_t> thumbnail = encode_jpeg(Rgb(16, 8));
      Exiv2::ExifThumb(data).setJpegThumbnail(thumbnail.data(), long(thumbnail.size()));
      image.iptcData()["Iptc.Application2.City"] = "Turku";
      image.xmpData()["Xmp.dc.creator"] = "Somebody";
      image.xmpData()["Xmp.tiff.Orientation"] = "1";
      image.xmpData()["Xmp.GPano.ProjectionType"] = "fisheye";
      const std::vector<std::uint8_t> colours = profile("RGB ");
      Exiv2::DataBuf bytes(colours.data(), long(colours.size()));
      image.setIccProfile(bytes, false);
    });
  }

  static Finished stitch(std::vector<std::string> arguments, const std::string& input = "") {
    arguments.insert(arguments.begin(), {kTool, "stitch", "--width", std::to_string(kWidth), "--no-search"});
    const Finished finished = test::run(std::move(arguments), input);
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
    return finished;
  }

  void expect_everything(const std::string& path) const {
    SCOPED_TRACE(path);
    const auto image = open(path);
    EXPECT_EQ(exif(*image, "Exif.Image.Make"), "Two Eyes");
    EXPECT_EQ(exif(*image, "Exif.Image.Model"), "Both Ways");
    EXPECT_EQ(exif(*image, "Exif.Image.Orientation"), "1");
    EXPECT_EQ(exif(*image, "Exif.Photo.DateTimeOriginal"), "2024:05:06 07:08:09");
    EXPECT_EQ(exif(*image, "Exif.GPSInfo.GPSLatitude"), "60/1 27/1 5/1");
    EXPECT_EQ(exif(*image, "Exif.Photo.MakerNote"), "78 111 98 111 100 121 0 1 2 3 255 254 42");
    EXPECT_EQ(exif(*image, "Exif.Photo.PixelXDimension"), std::to_string(kWidth));
    EXPECT_EQ(exif(*image, "Exif.Photo.PixelYDimension"), std::to_string(kWidth / 2));
    EXPECT_EQ(exif(*image, "Exif.Thumbnail.JPEGInterchangeFormat"), "none");
    EXPECT_EQ(image->iptcData()["Iptc.Application2.City"].toString(), "Turku");
    EXPECT_EQ(xmp(*image, "Xmp.dc.creator"), "Somebody");
    EXPECT_EQ(xmp(*image, "Xmp.tiff.Orientation"), "1");
    EXPECT_EQ(xmp(*image, "Xmp.GPano.ProjectionType"), "equirectangular");
    EXPECT_EQ(xmp(*image, "Xmp.GPano.FullPanoWidthPixels"), std::to_string(kWidth));
    EXPECT_EQ(count(read_bytes(path), "<x:xmpmeta"), 1u);
    const Exiv2::DataBuf& colours = *image->iccProfile();
    EXPECT_EQ(std::vector<std::uint8_t>(colours.pData_, colours.pData_ + colours.size_), profile("RGB "));
    const Nv12 picture = test::read_nv12(path);
    EXPECT_EQ(picture.width, kWidth);
    EXPECT_EQ(picture.height, kWidth / 2);
  }

  test::ScratchFolder folder_;
};
INSTANTIATE_TEST_SUITE_P(Results, MetadataOf, testing::Values("jpg", "png"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST_P(MetadataOf, OfRecordingsGoesIntoPanoramas) {
  for (const char* name : {"in.jpg", "in.png"}) {
    make_recording(name, Rgb(256, 128));
    stitch({folder_ / name, "-o", out()});
    expect_everything(out());
    stitch({"-", "-o", out()}, read_bytes(folder_ / name));
    expect_everything(out());
  }
}

TEST_P(MetadataOf, Lens0Wins) {
  make_recording("0.jpg", Rgb(128, 128));
  make_recording("1.png", Rgb(128, 128), "Another");
  stitch({folder_ / "0.jpg", folder_ / "1.png", "-o", out(), "--show-seams", folder_ / "seams.png"});
  expect_everything(out());
  expect_everything(folder_ / "seams.png");
}

TEST_P(MetadataOf, UnmarkedPanoramasSayNothingOfOne) {
  make_recording("in.jpg", Rgb(256, 128));
  stitch({folder_ / "in.jpg", "-o", out(), "--no-360-metadata"});
  EXPECT_EQ(xmp(*open(out()), "Xmp.dc.creator"), "Somebody");
  EXPECT_EQ(read_bytes(out()).find("GPano:"), std::string::npos);
}

TEST_P(MetadataOf, AProfileForGrayIsLeftOutAndTold) {
  make_recording("in.jpg", Rgb(256, 128));
  edit(folder_ / "in.jpg", [](Exiv2::Image& image) {
    const std::vector<std::uint8_t> colours = profile("GRAY");
    Exiv2::DataBuf bytes(colours.data(), long(colours.size()));
    image.setIccProfile(bytes, false);
  });
  const Finished finished = stitch({folder_ / "in.jpg", "-o", out()});
  EXPECT_NE(finished.err.find(out() + ": its colour profile is left out"), std::string::npos) << finished.err;
  EXPECT_FALSE(open(out())->iccProfileDefined());
}

// A PNG file's Exif block with a long description before the maker, which Exiv2 would not write.
std::string with_large_exif(const std::string& png) {
  const std::string description(70000, 'x');
  const auto number = [](std::size_t value, int bytes) {
    std::string text;
    for (int k = 0; k < bytes; ++k) text += char(value >> (8 * k) & 0xff);
    return text;
  };
  constexpr std::size_t kData = 8 + 2 + 2 * 12 + 4;
  std::string chunk = "eXIf" + std::string("II*\0\x08\0\0\0\x02\0", 10);
  chunk += number(0x010e, 2) + number(2, 2) + number(description.size() + 1, 4) + number(kData, 4);
  chunk += number(0x010f, 2) + number(2, 2) + number(4, 4) + std::string("Two\0", 4) + number(0, 4) + description + '\0';
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(chunk.data());
  const std::uint32_t sum = ~av_crc(av_crc_get_table(AV_CRC_32_IEEE_LE), 0xffffffffu, bytes, chunk.size());
  const auto reversed = [](std::string text) { return std::string(text.rbegin(), text.rend()); };
  constexpr std::size_t kHeader = 33;
  return png.substr(0, kHeader) + reversed(number(chunk.size() - 4, 4)) + chunk + reversed(number(sum, 4)) +
         png.substr(kHeader);
}

TEST_P(MetadataOf, WhatIsTooLargeIsTold) {
  write_picture(folder_ / "in.png", Rgb(256, 128));
  edit(folder_ / "in.png", [](Exiv2::Image& image) { image.xmpData()["Xmp.dc.description"] = std::string(80000, 'x'); });
  test::write_bytes(folder_ / "in.png", with_large_exif(read_bytes(folder_ / "in.png")));
  const Finished finished = stitch({folder_ / "in.png", "-o", out()});
  const bool is_jpeg = std::string(GetParam()) == "jpg";
  EXPECT_EQ(count(finished.err, "as JPEG files have no room for it"), is_jpeg ? 1u : 0u) << finished.err;
  EXPECT_EQ(count(finished.err, "Exif.Image.ImageDescription of 70001 bytes is left out"), 1u) << finished.err;
  const auto image = open(out());
  EXPECT_EQ(exif(*image, "Exif.Image.Make"), "Two");
  EXPECT_EQ(xmp(*image, "Xmp.dc.description") == "none", is_jpeg);
  EXPECT_EQ(xmp(*image, "Xmp.GPano.ProjectionType"), "equirectangular");
}

TEST_P(MetadataOf, ATurnedRecordingIsSetUpright) {
  Rgb pair(256, 128);
  for (std::size_t k = 0; k < pair.bytes.size(); ++k)
    pair.bytes[k] = std::uint8_t(128 + 60 * std::sin(double(k) / 9000) + k % 256 / 9);
  write_picture(folder_ / "upright.png", pair);
  Rgb turned = pair;
  for (std::size_t k = 0; k < pair.bytes.size() / 3; ++k) {
    std::copy_n(&pair.bytes[pair.bytes.size() - 3 * (k + 1)], 3, &turned.bytes[3 * k]);
  }
  make_recording("turned.png", turned);
  edit(folder_ / "turned.png", [](Exiv2::Image& image) {
    image.exifData()["Exif.Image.Orientation"] = std::uint16_t(3);
    image.xmpData()["Xmp.tiff.Orientation"] = "3";
  });
  stitch({folder_ / "upright.png", "-o", folder_ / "a.nv12"});
  for (const char* input : {"turned.png", "-"}) {
    const std::string path = std::string(input) == "-" ? input : folder_ / input;
    stitch({path, "-o", folder_ / "b.nv12"}, read_bytes(folder_ / "turned.png"));
    EXPECT_EQ(read_bytes(folder_ / "a.nv12"), read_bytes(folder_ / "b.nv12"));
  }
  stitch({folder_ / "turned.png", "-o", out()});
  expect_everything(out());
}

TEST(Metadata, OrientationIsAppliedWhereverAPictureIsRead) {
  const test::ScratchFolder folder;
  write_picture(folder / "a.jpg", Rgb(64, 32));
  edit(folder / "a.jpg", [](Exiv2::Image& image) { image.exifData()["Exif.Image.Orientation"] = std::uint16_t(6); });
  const PictureFile file = read_picture_file(folder / "a.jpg");
  EXPECT_EQ(file.picture->width, 32);
  EXPECT_EQ(file.picture->height, 64);
  EXPECT_EQ(file.metadata.orientation(), 6);
  EXPECT_EQ(test::read_nv12(folder / "a.jpg").width, 32);
}

TEST(Metadata, SenselessOrientationsCountAsNone) {
  const test::ScratchFolder folder;
  for (const int value : {0, 9, 65535}) {
    write_picture(folder / "a.jpg", Rgb(64, 32));
    edit(folder / "a.jpg", [&](Exiv2::Image& image) { image.exifData()["Exif.Image.Orientation"] = std::uint16_t(value); });
    EXPECT_EQ(read_picture_file(folder / "a.jpg").metadata.orientation(), 1) << value;
  }
}

// A real camera's maker notes, and everything else it writes.
TEST(Metadata, OfARealCameraIsKept) {
  const std::string samples = std::string(kSourceFolder) + "/../shared/samples/";
  const std::string lens0 = samples + "volcano_lens0_3104x3000.jpg", lens1 = samples + "volcano_lens1_3104x3000.jpg";
  if (!std::filesystem::exists(lens0)) GTEST_SKIP() << "no sample pictures beside the project: " << lens0;
  const test::ScratchFolder folder;
  const auto before = open(lens0);
  ASSERT_GT(before->exifData().count(), 20);
  for (const char* name : {"out.jpg", "out.png"}) {
    const Finished finished =
        test::run({kTool, "stitch", lens0, lens1, "--fov", "195", "--width", "480", "--no-search", "-o", folder / name});
    ASSERT_EQ(finished.exit_code, 0) << finished.err;
    const auto after = open(folder / name);
    EXPECT_EQ(exif(*after, "Exif.Image.Orientation"), exif(*before, "Exif.Image.Orientation") == "none" ? "none" : "1");
    for (const Exiv2::Exifdatum& entry : before->exifData()) {
      const std::string key = entry.key();
      const bool changes = key.starts_with("Exif.Thumbnail.") || key == "Exif.Image.Orientation" ||
                           key == "Exif.Image.ExifTag" || key == "Exif.Image.GPSTag" ||
                           key == "Exif.Photo.InteroperabilityTag" || key == "Exif.MakerNote.Offset" ||
                           key.starts_with("Exif.Photo.Pixel") || key.starts_with("Exif.Image.Image");
      if (changes) continue;
      EXPECT_EQ(exif(*after, key.c_str()), entry.toString()) << key;
    }
  }
}

}  // namespace
}  // namespace biseam::tool
