#include "picture/gpano.hpp"

#include <string>

#include "picture/exiv2_guard.hpp"
#include "picture/xmp_place.hpp"

namespace biseam::tool {
namespace {

using ImagePointer = std::unique_ptr<Exiv2::Image>;

const std::string kPrefix = "Xmp.GPano.";

ImagePointer open(const std::vector<std::uint8_t>& file) {
  ImagePointer image(Exiv2::ImageFactory::open(file.data(), long(file.size())).release());
  image->readMetadata();
  Exiv2::XmpData ignored;
  if (!image->xmpPacket().empty() && Exiv2::XmpParser::decode(ignored, image->xmpPacket()) != 0) {
    throw std::runtime_error("its XMP block is damaged");  // and would be lost
  }
  return image;
}

std::string text_of(const Exiv2::XmpData& xmp, const std::string& key) {
  const auto entry = xmp.findKey(Exiv2::XmpKey(kPrefix + key));
  return entry == xmp.end() ? "" : entry->toString();
}

long number_of(const Exiv2::XmpData& xmp, const std::string& key) {
  const auto entry = xmp.findKey(Exiv2::XmpKey(kPrefix + key));
  return entry == xmp.end() ? -1 : entry->toLong();
}

// Along one side: the picture is as large as the part of the sphere that it claims to be.
bool fits(const Exiv2::XmpData& xmp, const std::string& side, const std::string& start, long pixels) {
  const long whole = number_of(xmp, "FullPano" + side + "Pixels"), part = number_of(xmp, "CroppedAreaImage" + side + "Pixels");
  const long at = number_of(xmp, "CroppedArea" + start + "Pixels");
  return part == pixels && at >= 0 && at <= whole && part <= whole;
}

}  // namespace

Gpano read_gpano(const std::vector<std::uint8_t>& file) {
  return guarded([&] {
    const ImagePointer image = open(file);
    const Exiv2::XmpData& xmp = image->xmpData();
    const bool across = fits(xmp, "Width", "Left", image->pixelWidth());
    return Gpano{text_of(xmp, "ProjectionType"), across && fits(xmp, "Height", "Top", image->pixelHeight())};
  });
}

// Exiv2 would put down all kinds of metadata anew; so only the one block it makes is exchanged.
std::vector<std::uint8_t> with_gpano(const std::vector<std::uint8_t>& file) {
  return guarded([&] {
    const ImagePointer image = open(file);
    const auto set = [&](const char* key, const std::string& value) { image->xmpData()[kPrefix + key] = value; };
    const std::string width = std::to_string(image->pixelWidth()), height = std::to_string(image->pixelHeight());
    set("ProjectionType", "equirectangular");
    set("UsePanoramaViewer", "True");
    set("FullPanoWidthPixels", width);
    set("FullPanoHeightPixels", height);
    set("CroppedAreaImageWidthPixels", width);
    set("CroppedAreaImageHeightPixels", height);
    set("CroppedAreaLeftPixels", "0");
    set("CroppedAreaTopPixels", "0");
    std::string block;
    const auto plain = std::uint16_t(Exiv2::XmpParser::useCompactFormat | Exiv2::XmpParser::omitAllFormatting);
    if (Exiv2::XmpParser::encode(block, image->xmpData(), plain) != 0)
      throw std::runtime_error("the XMP block can't be encoded");
    return place_xmp(file, block);
  });
}

}  // namespace biseam::tool
