#include "platform/jpeg_metadata.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qbpd {
namespace {

Bytes ToBytes(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

// An APP1 segment holding an XMP packet.
Bytes XmpSegment(const std::string& packet) {
  const std::string body =
      std::string("http://ns.adobe.com/xap/1.0/") + '\0' + packet;
  const std::size_t length = body.size() + 2;
  return ToBytes(std::string("\xFF\xE1") + static_cast<char>(length >> 8) +
                 static_cast<char>(length & 0xFF) + body);
}

// The smallest header an encoder writes before its scan: start of image and
// a start of scan with its bytes.
Bytes BareJpeg() {
  return {0xFF, 0xD8, 0xFF, 0xDA, 0x00, 0x02, 0x12, 0x34, 0xFF, 0xD9};
}

// The packet of `segment` after PutMetadata carried it into a JPEG.
std::string Carried(const Bytes& segment) {
  Bytes jpeg = BareJpeg();
  EXPECT_TRUE(PutMetadata(jpeg, {segment}, NewPicture{}));
  const std::optional<std::vector<Bytes>> segments = ReadMetadataSegments(jpeg);
  EXPECT_TRUE(segments.has_value());
  if (!segments || segments->size() != 1) {
    ADD_FAILURE() << "the XMP segment was not carried alone";
    return {};
  }
  EXPECT_EQ(segments->front().size(), segment.size());
  return std::string(segments->front().begin() + 33, segments->front().end());
}

constexpr char kOpen[] =
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
    "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">";
constexpr char kClose[] = "</rdf:RDF></x:xmpmeta>";

TEST(XmpOrientationTest, TheTiffOrientationBecomesNormalInEveryForm) {
  // As an attribute, with either quote and spaces about the equals sign.
  EXPECT_EQ(Carried(XmpSegment(
                std::string(kOpen) +
                "<rdf:Description xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\" "
                "tiff:Orientation=\"6\"/>" +
                kClose)),
            std::string(kOpen) +
                "<rdf:Description xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\" "
                "tiff:Orientation=\"1\"/>" +
                kClose);
  EXPECT_NE(Carried(XmpSegment("<d xmlns:tiff='http://ns.adobe.com/tiff/1.0/' "
                               "tiff:Orientation = '8'/>"))
                .find("tiff:Orientation = '1'"),
            std::string::npos);
  // As an element.
  EXPECT_NE(
      Carried(XmpSegment("<d xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\">"
                         "<tiff:Orientation>3</tiff:Orientation></d>"))
          .find("<tiff:Orientation>1</tiff:Orientation>"),
      std::string::npos);
  // Under a prefix of the packet's own choosing.
  EXPECT_NE(Carried(XmpSegment("<d xmlns:t2=\"http://ns.adobe.com/tiff/1.0/\" "
                               "t2:Orientation=\"5\"/>"))
                .find("t2:Orientation=\"1\""),
            std::string::npos);
}

TEST(XmpOrientationTest, EverythingElseIsLeftAsItWas) {
  // Another namespace's Orientation, a longer name, a value that is no
  // orientation, and other segments.
  const std::vector<std::string> packets = {
      "<d xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\" "
      "xmlns:my=\"http://example.com/my/\" my:Orientation=\"6\"/>",
      "<d xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\" "
      "tiff:OrientationNote=\"6\"/>",
      "<d xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\" "
      "tiff:Orientation=\"60\"/>",
      "<d xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\" "
      "tiff:Orientation=\"9\"/>",
  };
  for (const std::string& packet : packets) {
    EXPECT_EQ(Carried(XmpSegment(packet)), packet);
  }
  const Bytes comment =
      ToBytes(std::string("\xFF\xFE\x00\x16", 4) + "tiff:Orientation=\"6\"");
  Bytes jpeg = BareJpeg();
  ASSERT_TRUE(PutMetadata(jpeg, {comment}, NewPicture{}));
  const std::optional<std::vector<Bytes>> segments = ReadMetadataSegments(jpeg);
  ASSERT_TRUE(segments.has_value());
  ASSERT_EQ(segments->size(), 1U);
  EXPECT_EQ(segments->front(), comment);
}

}  // namespace
}  // namespace qbpd
