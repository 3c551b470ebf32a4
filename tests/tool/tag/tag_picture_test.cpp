// What pictures say about being panoramas, read back through Exiv2.
#include <gtest/gtest.h>
#include <unistd.h>

#include <exiv2/exiv2.hpp>
#include <filesystem>
#include <map>
#include <random>

#include "picture/gpano.hpp"
#include "picture/write_picture.hpp"
#include "tool/support/scratch_folder.hpp"
#include "tool/support/walk.hpp"
#include "tool/tag/run_tag.hpp"

namespace biseam::tool {
namespace {

using namespace test;

using Properties = std::map<std::string, std::string>;

Properties panorama_properties(const std::string& path) {
  const auto image = Exiv2::ImageFactory::open(path);
  image->readMetadata();
  Properties found;
  for (const Exiv2::Xmpdatum& entry : image->xmpData()) {
    if (entry.groupName() == "GPano") found[entry.tagName()] = entry.toString();
  }
  return found;
}

Properties whole_sphere(int width, int height) {
  return {{"ProjectionType", "equirectangular"},
          {"UsePanoramaViewer", "True"},
          {"FullPanoWidthPixels", std::to_string(width)},
          {"FullPanoHeightPixels", std::to_string(height)},
          {"CroppedAreaImageWidthPixels", std::to_string(width)},
          {"CroppedAreaImageHeightPixels", std::to_string(height)},
          {"CroppedAreaLeftPixels", "0"},
          {"CroppedAreaTopPixels", "0"}};
}

template <class Change>
void edit_metadata(const std::string& path, Change change) {
  const auto image = Exiv2::ImageFactory::open(path);
  image->readMetadata();
  change(*image);
  image->writeMetadata();
}

// One piece was put in, nothing else changed.
bool is_insertion(const std::string& before, const std::string& after) {
  if (after.size() <= before.size()) return false;
  const auto head = std::mismatch(before.begin(), before.end(), after.begin()).first - before.begin();
  const auto tail = std::mismatch(before.rbegin(), before.rend(), after.rbegin()).first - before.rbegin();
  return std::size_t(head + tail) >= before.size();
}

Nv12 panorama() { return walk(1).front(); }

class Pictures : public FilesOfAKind {};
INSTANTIATE_TEST_SUITE_P(Tag, Pictures, testing::Values("jpg", "png"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST_P(Pictures, StitchedOnesAreMarkedUnlessUnwanted) {
  write_picture(folder_ / "pair.png", panorama());
  const auto stitch = [&](const std::vector<std::string>& more) {
    const Finished finished = run_stitch(with(with({folder_ / "pair.png"}, known_lenses()), more));
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
  };
  stitch({"-o", name("marked"), "--show-seams", name("seams"), "--seam-layer", folder_ / "layer.png"});
  stitch({"-o", name("plain"), "--show-seams", name("plain_seams"), "--no-360-metadata"});
  for (const char* stem : {"marked", "seams"}) EXPECT_EQ(panorama_properties(name(stem)), whole_sphere(240, 120)) << stem;
  for (const std::string& path : {name("plain"), name("plain_seams"), folder_ / "layer.png"}) {
    EXPECT_EQ(panorama_properties(path), Properties()) << path;
  }
  EXPECT_TRUE(is_insertion(read_bytes(name("plain")), read_bytes(name("marked"))));
  expect_done(run_tag({name("plain")}));
  EXPECT_EQ(read_bytes(name("plain")), read_bytes(name("marked")));
}

TEST_P(Pictures, OnlyTheMarkIsPutIn) {
  write_picture(name("a"), panorama());
  const std::string before = read_bytes(name("a"));
  EXPECT_EQ(panorama_properties(name("a")), Properties());
  expect_done(run_tag({name("a"), "-o", name("b")}));
  EXPECT_EQ(read_bytes(name("a")), before);
  EXPECT_TRUE(is_insertion(before, read_bytes(name("b"))));
  EXPECT_EQ(panorama_properties(name("b")), whole_sphere(240, 120));
  expect_done(run_tag({name("a")}));
  EXPECT_EQ(read_bytes(name("a")), read_bytes(name("b")));
  EXPECT_EQ(folder_.names().size(), 2u);
}

TEST_P(Pictures, MarkedOnesStayAsTheyAre) {
  write_picture(name("a"), panorama(), Projection::equirectangular);
  const std::string before = read_bytes(name("a"));
  const std::string notice = name("a") + ": is marked as a panorama already";
  expect_done(run_tag({name("a")}), notice);
  EXPECT_EQ(read_bytes(name("a")), before);
  expect_done(run_tag({name("a"), "-o", name("b")}), notice);
  EXPECT_EQ(read_bytes(name("b")), before);
}

TEST_P(Pictures, WhatElseTheySayIsKept) {
  write_picture(name("a"), panorama());
  edit_metadata(name("a"), [](Exiv2::Image& image) {
    image.exifData()["Exif.Image.Artist"] = "Somebody";
    image.iptcData()["Iptc.Application2.City"] = "Turku";
    image.xmpData()["Xmp.dc.creator"] = "Someone";
    image.xmpData()["Xmp.GPano.PoseHeadingDegrees"] = "90";
  });
  write_bytes(name("a"), read_bytes(name("a")) + "after the end");
  expect_done(run_tag({name("a")}));
  const auto image = Exiv2::ImageFactory::open(name("a"));
  image->readMetadata();
  EXPECT_EQ(image->exifData()["Exif.Image.Artist"].toString(), "Somebody");
  EXPECT_EQ(image->iptcData()["Iptc.Application2.City"].toString(), "Turku");
  EXPECT_EQ(image->xmpData()["Xmp.dc.creator"].toString(), "Someone");
  Properties wanted = whole_sphere(240, 120);
  wanted["PoseHeadingDegrees"] = "90";
  EXPECT_EQ(panorama_properties(name("a")), wanted);
  EXPECT_TRUE(read_bytes(name("a")).ends_with("after the end"));
}

TEST_P(Pictures, APartOfASphereStaysOne) {
  write_picture(name("a"), Rgb(300, 100));
  edit_metadata(name("a"), [](Exiv2::Image& image) {
    for (const auto& [key, value] : whole_sphere(300, 100)) image.xmpData()["Xmp.GPano." + key] = value;
    image.xmpData()["Xmp.GPano.FullPanoWidthPixels"] = "600";
    image.xmpData()["Xmp.GPano.FullPanoHeightPixels"] = "300";
    image.xmpData()["Xmp.GPano.CroppedAreaTopPixels"] = "150";
  });
  const std::string before = read_bytes(name("a"));
  expect_done(run_tag({name("a")}), name("a") + ": is marked as a panorama already");
  EXPECT_EQ(read_bytes(name("a")), before);
}

TEST_P(Pictures, AnotherProjectionGivesWayAndIsTold) {
  write_picture(name("a"), panorama());
  edit_metadata(name("a"), [](Exiv2::Image& image) { image.xmpData()["Xmp.GPano.ProjectionType"] = "cylindrical"; });
  expect_done(run_tag({name("a")}), name("a") + ": was marked as cylindrical, which equirectangular takes the place of");
  EXPECT_EQ(panorama_properties(name("a")), whole_sphere(240, 120));
}

// Left by scaling a marked picture, for example.
TEST_P(Pictures, FalseSizesArePutRight) {
  write_picture(name("a"), panorama());
  edit_metadata(name("a"), [](Exiv2::Image& image) {
    for (const auto& [key, value] : whole_sphere(4000, 2000)) image.xmpData()["Xmp.GPano." + key] = value;
  });
  expect_done(run_tag({name("a")}));
  EXPECT_EQ(panorama_properties(name("a")), whole_sphere(240, 120));
}

TEST_P(Pictures, WhatCantBeMarkedIsRefusedAndUntouched) {
  write_picture(name("square"), Rgb(64, 64));
  expect_untouched({name("square")}, 3, name("square"), "64x64");
  write_picture(name("good"), panorama());
  const std::string whole = read_bytes(name("good"));
  write_bytes(name("cut"), whole.substr(0, whole.size() / 2));
  expect_untouched({name("cut")}, 3, name("cut"), "cut short");
  write_bytes(name("empty"), "");
  expect_untouched({name("empty")}, 3, name("empty"), "no picture or clip");
  write_bytes(name("text"), "This is no picture.\n");
  expect_untouched({name("text")}, 3, name("text"), "no picture or clip");
  expect_refused(run_tag({name("none")}), 3, name("none"), "No such file");
  expect_refused(run_tag({folder_ / ""}), 3, folder_ / "", "not a regular file");
}

TEST_P(Pictures, ADamagedBlockIsNotThrownAway) {
  write_picture(name("a"), panorama(), Projection::equirectangular);
  std::string bytes = read_bytes(name("a"));
  const std::size_t at = bytes.find("<rdf:RDF");
  ASSERT_NE(at, std::string::npos);
  bytes[at] = '>';
  write_bytes(name("a"), bytes);
  if (std::string(GetParam()) == "jpg") {
    expect_untouched({name("a")}, 3, name("a"), "its XMP block is damaged");
  } else {
    expect_untouched({name("a")}, 3, name("a"), "damaged");  // by its checksum
  }
}

TEST_P(Pictures, NamesThatCantBeWrittenAreTold) {
  write_picture(name("a"), panorama());
  expect_untouched({name("a"), "-o", folder_ / ("none/b." + std::string(GetParam()))}, 4, "none/b", "can't be created");
  const std::string other = folder_ / (std::string(GetParam()) == "jpg" ? "b.png" : "b.jpg");
  expect_untouched({name("a"), "-o", other}, 2, other, "must end in");
  expect_untouched({name("a"), "-o", "-"}, 2, "-", "only files");
  std::filesystem::create_symlink("/dev/full", name("full"));
  expect_untouched({name("a"), "-o", name("full")}, 4, name("full"), "No space left");
}

TEST_P(Pictures, LinksAndPermissionsAreKept) {
  write_picture(name("a"), panorama());
  std::filesystem::permissions(name("a"), std::filesystem::perms(0640));
  std::filesystem::create_symlink(name("a"), name("link"));
  expect_done(run_tag({name("link")}));
  EXPECT_TRUE(std::filesystem::is_symlink(name("link")));
  EXPECT_EQ(std::filesystem::status(name("a")).permissions(), std::filesystem::perms(0640));
  EXPECT_EQ(panorama_properties(name("a")), whole_sphere(240, 120));
}

// Whatever a file holds, it is marked or refused.
TEST_P(Pictures, RandomDamageEndsInALine) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  write_picture(name("good"), panorama(), Projection::equirectangular);
  const std::string good = read_bytes(name("good"));
  for (int round = 0; round < 25; ++round) {
    std::string bad = good;
    const std::size_t reach = round % 2 == 0 ? std::min<std::size_t>(bad.size(), 4000) : bad.size();
    for (unsigned k = 0; k <= random() % 4; ++k) bad[random() % reach] = char(random());
    if (round % 5 == 0) bad.resize(random() % bad.size());
    write_bytes(name("bad"), bad);
    const Finished finished = run_tag({name("bad")});
    EXPECT_TRUE(finished.exit_code == 0 || finished.exit_code == 3) << finished.exit_code << finished.err;
    EXPECT_TRUE(finished.exit_code == 0 || read_bytes(name("bad")) == bad);
    EXPECT_LE(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
    EXPECT_EQ(folder_.names().size(), 2u);
  }
}

}  // namespace
}  // namespace biseam::tool
