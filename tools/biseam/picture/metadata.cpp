#include "picture/metadata.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "picture/exiv2_guard.hpp"

namespace biseam::tool {

struct Metadata::Fields {
  Exiv2::ByteOrder order = Exiv2::littleEndian;
  Exiv2::ExifData exif;
  Exiv2::IptcData iptc;
  Exiv2::XmpData xmp;
  std::vector<std::uint8_t> profile;
};

namespace {

using Fields = Metadata::Fields;

constexpr std::size_t kJpegBlock = 65000;  // of Exif or XMP in one segment, with room for what is added

template <class Data, class Key>
void set_existing(Data& data, const char* name, const std::string& value) {
  const auto entry = data.findKey(Key(name));
  if (entry != data.end()) entry->setValue(value);
}

template <class Data>
void erase_if(Data& data, auto is_unwanted) {
  for (auto entry = data.begin(); entry != data.end();)
    entry = is_unwanted(entry->key()) ? data.erase(entry) : std::next(entry);
}

// How a TIFF file stores its samples, and other blocks packed into it, which have places of their own here.
bool is_of_tiff(const std::string& key) {
  constexpr std::array kKeys = {"Exif.Image.InterColorProfile", "Exif.Image.XMLPacket",     "Exif.Image.IPTCNAA",
                                "Exif.Image.ImageResources",    "Exif.Image.StripOffsets",  "Exif.Image.StripByteCounts",
                                "Exif.Image.TileOffsets",       "Exif.Image.TileByteCounts"};
  return std::find(kKeys.begin(), kKeys.end(), key) != kKeys.end();
}

Exiv2::ExifData fitted_exif(const Fields& fields, Size size) {
  Exiv2::ExifData exif = fields.exif;
  const auto set = [&](const char* name, int value) {
    set_existing<Exiv2::ExifData, Exiv2::ExifKey>(exif, name, std::to_string(value));
  };
  set("Exif.Image.Orientation", 1);
  for (const char* name : {"Exif.Image.ImageWidth", "Exif.Photo.PixelXDimension", "Exif.Iop.RelatedImageWidth"})
    set(name, size.width);
  for (const char* name : {"Exif.Image.ImageLength", "Exif.Photo.PixelYDimension", "Exif.Iop.RelatedImageLength"})
    set(name, size.height);
  Exiv2::ExifThumb(exif).erase();
  erase_if(exif, is_of_tiff);
  return exif;
}

Exiv2::XmpData fitted_xmp(const Fields& fields, Size size, bool keeps_gpano) {
  Exiv2::XmpData xmp = fields.xmp;
  const auto set = [&](const char* name, int value) {
    set_existing<Exiv2::XmpData, Exiv2::XmpKey>(xmp, name, std::to_string(value));
  };
  set("Xmp.tiff.Orientation", 1);
  for (const char* name : {"Xmp.tiff.ImageWidth", "Xmp.exif.PixelXDimension"}) set(name, size.width);
  for (const char* name : {"Xmp.tiff.ImageLength", "Xmp.exif.PixelYDimension"}) set(name, size.height);
  erase_if(xmp, [&](const std::string& key) {
    const bool points_elsewhere = key == "Xmp.xmpNote.HasExtendedXMP";  // at a further block, which isn't read
    return points_elsewhere || key.starts_with("Xmp.xmp.Thumbnails") || (!keeps_gpano && key.starts_with("Xmp.GPano."));
  });
  return xmp;
}

bool is_for_rgb(const std::vector<std::uint8_t>& profile) {
  constexpr std::size_t kHead = 128, kColourSpace = 16;
  return profile.size() > kHead && std::string_view(reinterpret_cast<const char*>(&profile[kColourSpace]), 4) == "RGB ";
}

class Writer {
 public:
  explicit Writer(const std::vector<std::uint8_t>& file)
      : image_(Exiv2::ImageFactory::open(file.data(), long(file.size())).release()), is_jpeg_(file.at(0) == 0xff) {
    image_->readMetadata();
  }

  void put_exif(const Exiv2::ExifData& exif, Exiv2::ByteOrder order) {
    if (exif.empty()) return;
    Exiv2::Blob blob;
    Exiv2::ExifParser::encode(blob, order, exif);
    tell_skipped(exif, blob);
    if (!fits(blob.size(), "Exif data")) return;
    image_->setByteOrder(order);
    image_->setExifData(exif);
  }

  void put_iptc(const Exiv2::IptcData& iptc) {
    if (!iptc.empty() && fits(std::size_t(iptc.size()), "IPTC data")) image_->setIptcData(iptc);
  }

  void put_xmp(const Exiv2::XmpData& xmp) {
    if (xmp.empty()) return;
    std::string packet;
    const auto plain = std::uint16_t(Exiv2::XmpParser::useCompactFormat | Exiv2::XmpParser::omitAllFormatting);
    if (Exiv2::XmpParser::encode(packet, xmp, plain) != 0) throw std::runtime_error("the XMP block can't be encoded");
    if (!fits(packet.size(), "XMP data")) return;
    image_->setXmpData(xmp);
  }

  void put_profile(const std::vector<std::uint8_t>& profile) {
    if (profile.empty()) return;
    if (!is_for_rgb(profile)) {
      left_out_.push_back("its colour profile is left out, as it is none for RGB");
      return;
    }
    Exiv2::DataBuf bytes(profile.data(), long(profile.size()));
    image_->setIccProfile(bytes, false);
  }

  MarkedFile finish() {
    image_->writeMetadata();
    Exiv2::BasicIo& io = image_->io();
    if (io.open() != 0) throw std::runtime_error("metadata can't be written");
    const Exiv2::DataBuf bytes = io.read(long(io.size()));
    return {{bytes.pData_, bytes.pData_ + bytes.size_}, left_out_};
  }

 private:
  // Exiv2 leaves large entries out of blocks of more than 64 KiB, which is the most that Exif allows.
  void tell_skipped(const Exiv2::ExifData& exif, const Exiv2::Blob& blob) {
    constexpr long kLeastSkipped = 4096;
    Exiv2::ExifData encoded;
    if (!blob.empty()) Exiv2::ExifParser::decode(encoded, blob.data(), std::uint32_t(blob.size()));
    for (const Exiv2::Exifdatum& entry : exif) {
      if (entry.size() <= kLeastSkipped || encoded.findKey(Exiv2::ExifKey(entry.key())) != encoded.end()) continue;
      left_out_.push_back(entry.key() + " of " + std::to_string(entry.size()) +
                          " bytes is left out, as Exif has no room for it");
    }
  }

  bool fits(std::size_t bytes, const std::string& what) {
    if (!is_jpeg_ || bytes <= kJpegBlock) return true;
    left_out_.push_back("its " + what + " of " + std::to_string(bytes) +
                        " bytes is left out, as JPEG files have no room for it");
    return false;
  }

  std::unique_ptr<Exiv2::Image> image_;
  bool is_jpeg_;
  std::vector<std::string> left_out_;
};

}  // namespace

int Metadata::orientation() const {
  if (!fields_) return 1;
  const auto entry = fields_->exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
  const long value = entry == fields_->exif.end() || entry->count() == 0 ? 1 : entry->toLong();
  return value >= 1 && value <= 8 ? int(value) : 1;
}

Metadata read_metadata(const std::vector<std::uint8_t>& file) {
  return guarded([&] {
    const long size = long(file.size());
    if (file.empty() || Exiv2::ImageFactory::getType(file.data(), size) == Exiv2::ImageType::none) return Metadata();
    const auto image = Exiv2::ImageFactory::open(file.data(), size);
    image->readMetadata();
    auto fields = std::make_shared<Fields>();
    if (image->byteOrder() != Exiv2::invalidByteOrder) fields->order = image->byteOrder();
    fields->exif = image->exifData();
    fields->iptc = image->iptcData();
    fields->xmp = image->xmpData();
    if (image->iccProfileDefined()) {
      const Exiv2::DataBuf& profile = *image->iccProfile();
      fields->profile.assign(profile.pData_, profile.pData_ + profile.size_);
    }
    return Metadata(std::move(fields));
  });
}

MarkedFile with_metadata(std::vector<std::uint8_t> file, const Metadata& metadata, Size size, bool keeps_gpano) {
  const Fields* const fields = metadata.fields();
  const bool is_empty =
      !fields || (fields->exif.empty() && fields->iptc.empty() && fields->xmp.empty() && fields->profile.empty());
  if (is_empty) return {std::move(file), {}};
  return guarded([&] {
    Writer writer(file);
    writer.put_exif(fitted_exif(*fields, size), fields->order);
    writer.put_iptc(fields->iptc);
    writer.put_xmp(fitted_xmp(*fields, size, keeps_gpano));
    writer.put_profile(fields->profile);
    return writer.finish();
  });
}

}  // namespace biseam::tool
