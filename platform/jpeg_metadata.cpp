#include "platform/jpeg_metadata.h"

#include <libexif/exif-data.h>
#include <libexif/exif-utils.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace qbpd {
namespace {

constexpr std::uint8_t kMarker = 0xFF;
constexpr std::uint8_t kSoi = 0xD8;
constexpr std::uint8_t kSos = 0xDA;
constexpr std::uint8_t kApp0 = 0xE0;
constexpr std::uint8_t kApp1 = 0xE1;
constexpr std::uint8_t kApp15 = 0xEF;
constexpr std::uint8_t kCom = 0xFE;
constexpr std::size_t kMaxSegment = 0xFFFF;
constexpr char kExifHeader[] = "Exif\0\0";
constexpr std::size_t kExifHeaderSize = 6;

// One segment of a JPEG's header: its marker and where it lies, the marker
// bytes included.
struct Segment {
  std::uint8_t marker = 0;
  std::size_t begin = 0;
  std::size_t end = 0;
};

// The segments from the start of image up to the scan; nothing when the
// bytes are no JPEG or break off before the scan.
std::optional<std::vector<Segment>> HeaderSegments(const Bytes& jpeg) {
  if (jpeg.size() < 4 || jpeg[0] != kMarker || jpeg[1] != kSoi) {
    return std::nullopt;
  }
  std::vector<Segment> segments;
  std::size_t at = 2;
  while (at + 4 <= jpeg.size()) {
    if (jpeg[at] != kMarker) {
      return std::nullopt;
    }
    const std::uint8_t marker = jpeg[at + 1];
    if (marker == kMarker) {
      ++at;  // a fill byte
      continue;
    }
    const std::size_t length =
        (std::size_t{jpeg[at + 2]} << 8) | std::size_t{jpeg[at + 3]};
    if (length < 2 || at + 2 + length > jpeg.size()) {
      return std::nullopt;
    }
    segments.push_back({marker, at, at + 2 + length});
    if (marker == kSos) {
      return segments;
    }
    at += 2 + length;
  }
  return std::nullopt;
}

bool IsMetadata(std::uint8_t marker) {
  return (marker > kApp0 && marker <= kApp15) || marker == kCom;
}

bool IsExif(const Bytes& segment) {
  return segment.size() >= 4 + kExifHeaderSize && segment[1] == kApp1 &&
         std::memcmp(segment.data() + 4, kExifHeader, kExifHeaderSize) == 0;
}

constexpr char kXmpHeader[] = "http://ns.adobe.com/xap/1.0/";
constexpr std::size_t kXmpHeaderSize = sizeof(kXmpHeader);  // with its NUL
constexpr std::string_view kTiffNamespace = "http://ns.adobe.com/tiff/1.0/";

bool IsXmp(const Bytes& segment) {
  return segment.size() >= 4 + kXmpHeaderSize && segment[1] == kApp1 &&
         std::memcmp(segment.data() + 4, kXmpHeader, kXmpHeaderSize) == 0;
}

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The prefixes the packet binds to the TIFF namespace ("tiff" when it binds
// none, as packets that leave out the declaration mean).
std::vector<std::string> TiffPrefixes(std::string_view packet) {
  std::vector<std::string> prefixes;
  constexpr std::string_view kXmlns = "xmlns:";
  for (std::size_t at = packet.find(kXmlns); at != std::string_view::npos;
       at = packet.find(kXmlns, at + 1)) {
    const std::size_t name = at + kXmlns.size();
    const std::size_t equals = packet.find('=', name);
    if (equals == std::string_view::npos) {
      break;
    }
    std::size_t value = equals + 1;
    while (value < packet.size() && IsSpace(packet[value])) {
      ++value;
    }
    if (value < packet.size() &&
        (packet[value] == '"' || packet[value] == '\'') &&
        packet.compare(value + 1, kTiffNamespace.size(), kTiffNamespace) == 0) {
      std::size_t end = equals;
      while (end > name && IsSpace(packet[end - 1])) {
        --end;
      }
      prefixes.emplace_back(packet.substr(name, end - name));
    }
  }
  if (prefixes.empty()) {
    prefixes.emplace_back("tiff");
  }
  return prefixes;
}

// Sets every TIFF Orientation of an XMP packet to normal, as an attribute
// (tiff:Orientation="6") or an element (<tiff:Orientation>6<...), in place:
// the value is one digit either way, so the segment keeps its length.
void NormalXmpOrientation(Bytes& segment) {
  if (!IsXmp(segment)) {
    return;
  }
  const std::size_t start = 4 + kXmpHeaderSize;
  std::string_view packet(reinterpret_cast<const char*>(segment.data()) + start,
                          segment.size() - start);
  for (const std::string& prefix : TiffPrefixes(packet)) {
    const std::string name = prefix + ":Orientation";
    for (std::size_t at = packet.find(name); at != std::string_view::npos;
         at = packet.find(name, at + 1)) {
      std::size_t value = at + name.size();
      // The name must end here (not tiff:OrientationX), and not be a
      // closing tag.
      if (at > 0 && packet[at - 1] == '/') {
        continue;
      }
      while (value < packet.size() && IsSpace(packet[value])) {
        ++value;
      }
      if (value < packet.size() && packet[value] == '=') {
        ++value;
        while (value < packet.size() && IsSpace(packet[value])) {
          ++value;
        }
        if (value < packet.size() &&
            (packet[value] == '"' || packet[value] == '\'')) {
          ++value;
        } else {
          continue;
        }
      } else if (value < packet.size() && packet[value] == '>') {
        ++value;
      } else {
        continue;
      }
      while (value < packet.size() && IsSpace(packet[value])) {
        ++value;
      }
      if (value < packet.size() && packet[value] >= '1' &&
          packet[value] <= '8' &&
          (value + 1 >= packet.size() || packet[value + 1] < '0' ||
           packet[value + 1] > '9')) {
        segment[start + value] = '1';
      }
    }
  }
}

struct ExifDeleter {
  void operator()(ExifData* data) const { exif_data_unref(data); }
};
using ExifHandle = std::unique_ptr<ExifData, ExifDeleter>;

// The EXIF data of an APP1 segment, loaded without tidying: unknown tags and
// the maker's notes are kept as they were.
ExifHandle LoadExif(const Bytes& segment) {
  ExifHandle data(exif_data_new());
  if (!data) {
    return nullptr;
  }
  exif_data_unset_option(data.get(), EXIF_DATA_OPTION_IGNORE_UNKNOWN_TAGS);
  exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
  exif_data_set_option(data.get(), EXIF_DATA_OPTION_DONT_CHANGE_MAKER_NOTE);
  exif_data_load_data(data.get(), segment.data() + 4, segment.size() - 4);
  return data;
}

void SetNumber(ExifData* data, ExifIfd ifd, ExifTag tag, unsigned value) {
  ExifEntry* entry = exif_content_get_entry(data->ifd[ifd], tag);
  if (entry == nullptr || entry->data == nullptr || entry->components != 1) {
    return;
  }
  const ExifByteOrder order = exif_data_get_byte_order(data);
  if (entry->format == EXIF_FORMAT_SHORT && entry->size >= 2 &&
      value <= 0xFFFF) {
    exif_set_short(entry->data, order, static_cast<ExifShort>(value));
  } else if (entry->format == EXIF_FORMAT_LONG && entry->size >= 4) {
    exif_set_long(entry->data, order, value);
  }
}

void SetPreview(ExifData* data, const Bytes& preview) {
  std::free(data->data);
  data->data = nullptr;
  data->size = 0;
  if (preview.empty()) {
    return;
  }
  data->data = static_cast<unsigned char*>(std::malloc(preview.size()));
  if (data->data != nullptr) {
    std::memcpy(data->data, preview.data(), preview.size());
    data->size = static_cast<unsigned int>(preview.size());
  }
}

// The APP1 segment of `data`; nothing when it would pass a segment's size.
std::optional<Bytes> SaveExif(ExifData* data) {
  unsigned char* saved = nullptr;
  unsigned int length = 0;
  exif_data_save_data(data, &saved, &length);
  std::unique_ptr<unsigned char, decltype(&std::free)> owner(saved, std::free);
  if (saved == nullptr || length + 2 > kMaxSegment) {
    return std::nullopt;
  }
  Bytes segment = {kMarker, kApp1, static_cast<std::uint8_t>((length + 2) >> 8),
                   static_cast<std::uint8_t>((length + 2) & 0xFF)};
  segment.insert(segment.end(), saved, saved + length);
  return segment;
}

// The EXIF segment brought up to date for the new picture; nothing when it
// can't be (it is then left out rather than left wrong).
std::optional<Bytes> UpdatedExif(const Bytes& segment,
                                 const NewPicture& picture) {
  ExifHandle data = LoadExif(segment);
  if (!data) {
    return std::nullopt;
  }
  SetNumber(data.get(), EXIF_IFD_0, EXIF_TAG_ORIENTATION, 1);
  SetNumber(data.get(), EXIF_IFD_EXIF, EXIF_TAG_PIXEL_X_DIMENSION,
            static_cast<unsigned>(picture.width));
  SetNumber(data.get(), EXIF_IFD_EXIF, EXIF_TAG_PIXEL_Y_DIMENSION,
            static_cast<unsigned>(picture.height));
  if (data->data != nullptr && data->size > 0) {
    SetPreview(data.get(),
               picture.make_preview ? picture.make_preview() : Bytes{});
  }
  if (std::optional<Bytes> saved = SaveExif(data.get())) {
    return saved;
  }
  SetPreview(data.get(), {});
  return SaveExif(data.get());
}

}  // namespace

std::optional<std::vector<Bytes>> ReadMetadataSegments(const Bytes& jpeg) {
  const std::optional<std::vector<Segment>> segments = HeaderSegments(jpeg);
  if (!segments) {
    return std::nullopt;
  }
  std::vector<Bytes> metadata;
  for (const Segment& s : *segments) {
    if (IsMetadata(s.marker)) {
      metadata.emplace_back(jpeg.begin() + static_cast<long>(s.begin),
                            jpeg.begin() + static_cast<long>(s.end));
    }
  }
  return metadata;
}

int ExifOrientationOf(const std::vector<Bytes>& segments) {
  for (const Bytes& segment : segments) {
    if (!IsExif(segment)) {
      continue;
    }
    ExifHandle data = LoadExif(segment);
    if (!data) {
      return 1;
    }
    ExifEntry* entry =
        exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT ||
        entry->size < 2) {
      return 1;
    }
    const int tag =
        exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
    return tag >= 1 && tag <= 8 ? tag : 1;
  }
  return 1;
}

bool HasExifPreview(const std::vector<Bytes>& segments) {
  for (const Bytes& segment : segments) {
    if (IsExif(segment)) {
      const ExifHandle data = LoadExif(segment);
      return data && data->data != nullptr && data->size > 0;
    }
  }
  return false;
}

bool PutMetadata(Bytes& jpeg,
                 const std::vector<Bytes>& segments,
                 const NewPicture& picture) {
  const std::optional<std::vector<Segment>> own = HeaderSegments(jpeg);
  if (!own) {
    return false;
  }
  Bytes out = {kMarker, kSoi};
  std::size_t rest = 2;
  // The encoder's JFIF header, if it wrote one, stays first.
  if (!own->empty() && own->front().marker == kApp0) {
    out.insert(out.end(), jpeg.begin() + static_cast<long>(own->front().begin),
               jpeg.begin() + static_cast<long>(own->front().end));
  }
  for (const Bytes& segment : segments) {
    if (IsXmp(segment)) {
      Bytes xmp = segment;
      NormalXmpOrientation(xmp);
      out.insert(out.end(), xmp.begin(), xmp.end());
    } else if (!IsExif(segment)) {
      out.insert(out.end(), segment.begin(), segment.end());
    } else if (std::optional<Bytes> exif = UpdatedExif(segment, picture)) {
      out.insert(out.end(), exif->begin(), exif->end());
    }
  }
  for (const Segment& s : *own) {
    if (s.marker == kApp0 || IsMetadata(s.marker)) {
      rest = s.end;
      continue;
    }
    break;
  }
  // The encoder's tables and scan follow as written; only a leading run of
  // its own application segments was dropped.
  out.insert(out.end(), jpeg.begin() + static_cast<long>(rest), jpeg.end());
  jpeg = std::move(out);
  return true;
}

}  // namespace qbpd
