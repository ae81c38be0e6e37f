#include "platform/jpeg_fd_source.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <sys/types.h>
#include <unistd.h>

// jpeglib.h needs the standard types above it.
#include <jerror.h>
#include <jpeglib.h>

namespace qbpd {

struct JpegFdSource {
  jpeg_source_mgr pub;
  int fd = -1;
  off_t offset = 0;
  std::array<JOCTET, 64 * 1024> buffer;
};

namespace {

void InitSource(j_decompress_ptr) {}

boolean FillInput(j_decompress_ptr info) {
  auto* source = reinterpret_cast<JpegFdSource*>(info->src);
  ssize_t got = 0;
  do {
    got = ::pread(source->fd, source->buffer.data(), source->buffer.size(),
                  source->offset);
  } while (got < 0 && errno == EINTR);
  if (got <= 0) {
    WARNMS(info, JWRN_JPEG_EOF);
    source->buffer[0] = 0xFF;
    source->buffer[1] = JPEG_EOI;
    source->pub.next_input_byte = source->buffer.data();
    source->pub.bytes_in_buffer = 2;
    return TRUE;
  }
  source->offset += got;
  source->pub.next_input_byte = source->buffer.data();
  source->pub.bytes_in_buffer = static_cast<std::size_t>(got);
  return TRUE;
}

void SkipInput(j_decompress_ptr info, long count) {
  auto* source = reinterpret_cast<JpegFdSource*>(info->src);
  if (count <= 0) {
    return;
  }
  const auto skip = static_cast<std::size_t>(count);
  if (skip <= source->pub.bytes_in_buffer) {
    source->pub.next_input_byte += skip;
    source->pub.bytes_in_buffer -= skip;
    return;
  }
  source->offset += static_cast<off_t>(skip - source->pub.bytes_in_buffer);
  source->pub.bytes_in_buffer = 0;
}

void TermSource(j_decompress_ptr) {}

}  // namespace

void JpegFdSourceDeleter::operator()(JpegFdSource* source) const {
  delete source;
}

JpegFdSourcePtr MakeJpegFdSource(int fd) {
  JpegFdSourcePtr source(new JpegFdSource);
  source->fd = fd;
  return source;
}

void UseJpegFdSource(jpeg_decompress_struct* info, JpegFdSource& source) {
  source.pub.init_source = InitSource;
  source.pub.fill_input_buffer = FillInput;
  source.pub.skip_input_data = SkipInput;
  source.pub.resync_to_restart = jpeg_resync_to_restart;
  source.pub.term_source = TermSource;
  source.pub.bytes_in_buffer = 0;
  source.pub.next_input_byte = nullptr;
  source.offset = 0;
  info->src = &source.pub;
}

}  // namespace qbpd
