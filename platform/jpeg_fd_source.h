#ifndef QBPD_PLATFORM_JPEG_FD_SOURCE_H_
#define QBPD_PLATFORM_JPEG_FD_SOURCE_H_

#include <memory>

struct jpeg_decompress_struct;

namespace qbpd {

// A libjpeg data source that reads a photo from its descriptor a block at a
// time as the decoder asks, never further: the file is never held whole in
// memory, so reading it costs neither a copy of it nor the fresh pages one
// would take. A file that ends before its end marker gives libjpeg's
// end-of-file warning and a made-up end marker, as libjpeg's own sources do.
struct JpegFdSource;

struct JpegFdSourceDeleter {
  void operator()(JpegFdSource* source) const;
};
using JpegFdSourcePtr = std::unique_ptr<JpegFdSource, JpegFdSourceDeleter>;

// A source reading `fd` from its start. Made before the decoder's error
// exit is set up, and kept until the decoder is destroyed.
JpegFdSourcePtr MakeJpegFdSource(int fd);

// Makes `source` the data source of `info` (created, not yet reading).
void UseJpegFdSource(jpeg_decompress_struct* info, JpegFdSource& source);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_JPEG_FD_SOURCE_H_
