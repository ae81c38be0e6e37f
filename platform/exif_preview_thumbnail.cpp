#include "platform/exif_preview_thumbnail.h"

#include "platform/jpeg_fd_source.h"
#include "platform/rgb_picture.h"

#include <libexif/exif-data.h>
#include <libexif/exif-utils.h>
#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <unistd.h>

// After the C++ headers: jpeglib.h needs size_t and FILE declared first.
#include <jpeglib.h>

namespace qbpd {
namespace {

// The EXIF data and the frame header sit at the start of the file: its first
// bytes are read, and more up to the limit when the first scan starts later.
// A photo whose first scan starts past the limit is left to the full path.
constexpr std::size_t kFirstHeadBytes = 64 * 1024;
constexpr std::size_t kHeadBytes = 256 * 1024;
// Cameras embed previews of 160 x 120 or a few hundred pixels; anything
// larger is decoded no faster than the photo's own eighth.
constexpr int kMaxPreviewSide = 1600;
// The most of the photo's height that is decoded for the check.
constexpr int kLastBandDivisor = 4;
// The comparison's cells, in pixels of the coarser of the preview and the
// photo's eighth: two wide, so that the two pictures' pixels needn't line
// up, and one high, so that the first row of cells asks for the fewest rows
// of the photo to be decoded.
constexpr int kCellWidth = 2;
constexpr int kCellHeight = 1;
// How far the preview's band may stand from the photo's, over 0..255 in
// each channel: the mean absolute difference of their cells, over the band
// and over each row of cells that shows detail (a crop below a plain sky
// differs only in the rows past the sky), and the largest difference of a
// channel's means (a recolour moves a whole channel while its pixels still
// follow the picture). Two encodings of one picture, the preview's and the
// photo's, stay below 3.5 and 1.5 on the test photos; a picture turned,
// recoloured, or cropped by even a twenty-fifth stands above 5.
constexpr double kMaxMeanDifference = 4.5;
constexpr double kMaxChannelShift = 3.0;
// How much detail the band must show, as the standard deviation of its
// cells within each channel over 0..255: below it a crop or a turn could
// leave it unchanged.
constexpr double kMinDetail = 6.0;

// Memory a thread keeps from one photo to the next, grown when a photo needs
// more and never cleared: every byte is written before it is read, so
// neither zeroing nor fresh pages are paid for each photo.
class Scratch {
 public:
  std::uint8_t* Get(std::size_t size) {
    if (size > capacity_) {
      data_.reset(new std::uint8_t[size]);
      capacity_ = size;
    }
    return data_.get();
  }

 private:
  std::unique_ptr<std::uint8_t[]> data_;
  std::size_t capacity_ = 0;
};

struct Layout {
  int width = 0;
  int height = 0;
  bool sequential = false;
  const std::uint8_t* exif = nullptr;  // from its "Exif\0\0" header
  std::size_t exif_size = 0;
};

int Read16(const std::uint8_t* p) {
  return (p[0] << 8) | p[1];
}

// The frame header and the EXIF segment of the JPEG whose first `size`
// bytes are `head`; nothing when the first scan doesn't start within them.
std::optional<Layout> ReadLayout(const std::uint8_t* head, std::size_t size) {
  if (size < 4 || head[0] != 0xFF || head[1] != 0xD8) {
    return std::nullopt;
  }
  Layout layout;
  bool have_frame = false;
  std::size_t pos = 2;
  while (pos + 4 <= size) {
    if (head[pos] != 0xFF) {
      return std::nullopt;
    }
    const std::uint8_t marker = head[pos + 1];
    if (marker == 0xFF) {  // a fill byte
      ++pos;
      continue;
    }
    if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) {
      pos += 2;
      continue;
    }
    if (marker == 0xDA) {
      return have_frame ? std::optional<Layout>(layout) : std::nullopt;
    }
    const std::size_t length = static_cast<std::size_t>(Read16(head + pos + 2));
    if (length < 2 || pos + 2 + length > size) {
      return std::nullopt;
    }
    const std::uint8_t* body = head + pos + 4;
    const std::size_t body_size = length - 2;
    if (marker == 0xE1 && layout.exif == nullptr && body_size > 6 &&
        std::memcmp(body, "Exif\0\0", 6) == 0) {
      layout.exif = body;
      layout.exif_size = body_size;
    } else if (marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 &&
               marker != 0xC8 && marker != 0xCC) {
      if (have_frame || body_size < 6) {
        return std::nullopt;
      }
      have_frame = true;
      // Only the sequential Huffman frames can be decoded a band at a time.
      layout.sequential = marker == 0xC0 || marker == 0xC1;
      layout.height = Read16(body + 1);
      layout.width = Read16(body + 3);
    }
    pos += 2 + length;
  }
  return std::nullopt;
}

struct Exif {
  std::vector<std::uint8_t> preview;
  int orientation = 1;
};

Exif ReadExif(const Layout& layout) {
  Exif result;
  if (layout.exif == nullptr) {
    return result;
  }
  ExifData* data = exif_data_new();
  if (data == nullptr) {
    return result;
  }
  // Loaded as written: the repairs the library makes to follow the EXIF
  // rules (added tags, reordered entries) cost more than the rest of the
  // load, and neither the preview nor the orientation needs them.
  exif_data_unset_option(data, EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
  exif_data_load_data(data, layout.exif,
                      static_cast<unsigned int>(layout.exif_size));
  if (data->data != nullptr && data->size > 0) {
    result.preview.assign(data->data, data->data + data->size);
  }
  if (ExifEntry* entry =
          exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
      entry != nullptr && entry->format == EXIF_FORMAT_SHORT &&
      entry->components >= 1 && entry->size >= 2) {
    const int tag = exif_get_short(entry->data, exif_data_get_byte_order(data));
    result.orientation = tag >= 1 && tag <= 8 ? tag : 1;
  }
  exif_data_unref(data);
  return result;
}

struct TurboDeleter {
  void operator()(void* handle) const { tjDestroy(handle); }
};
using TurboHandle = std::unique_ptr<void, TurboDeleter>;

// The thread's TurboJPEG decoder and encoder, made once: a handle holds the
// library's tables and work memory, which are not remade for every photo.
void* Decompressor() {
  thread_local const TurboHandle handle(tjInitDecompress());
  return handle.get();
}

void* Compressor() {
  thread_local const TurboHandle handle(tjInitCompress());
  return handle.get();
}

std::optional<RgbPicture> DecodePreview(const std::vector<std::uint8_t>& jpeg) {
  void* const handle = Decompressor();
  int width = 0;
  int height = 0;
  int subsampling = 0;
  int colourspace = 0;
  if (!handle ||
      tjDecompressHeader3(handle, jpeg.data(),
                          static_cast<unsigned long>(jpeg.size()), &width,
                          &height, &subsampling, &colourspace) != 0 ||
      width < 1 || height < 1 || width > kMaxPreviewSide ||
      height > kMaxPreviewSide) {
    return std::nullopt;
  }
  RgbPicture rgb;
  rgb.width = width;
  rgb.height = height;
  rgb.pixels.resize(static_cast<std::size_t>(width) * height * 3);
  if (tjDecompress2(handle, jpeg.data(),
                    static_cast<unsigned long>(jpeg.size()), rgb.pixels.data(),
                    width, width * 3, height, TJPF_RGB,
                    TJFLAG_STOPONWARNING) != 0) {
    return std::nullopt;
  }
  return rgb;
}

// --- the band at the top of the photo, through libjpeg ---------------------

struct ErrorManager {
  jpeg_error_mgr pub;
  std::jmp_buf jump;
};

void OnJpegError(j_common_ptr info) {
  std::longjmp(reinterpret_cast<ErrorManager*>(info->err)->jump, 1);
}

void OnJpegMessage(j_common_ptr, int) {}

// The photo decoded at an eighth of its size, as far as it was read.
struct Band {
  int photo_width = 0;  // the photo's own size
  int photo_height = 0;
  int width = 0;
  int full_height = 0;             // the whole photo's height at this scale
  int rows = 0;                    // rows decoded so far
  std::uint8_t* pixels = nullptr;  // the thread's scratch memory
};

// Decodes rows from the top until `enough` says the band will do or a
// quarter of the photo is read. All C++ objects the decoder's error exit
// could skip live in the caller.
template <typename Enough>
bool DecodeTopBand(Band& band, JpegFdSource& source, Enough&& enough) {
  jpeg_decompress_struct info;
  ErrorManager errors;
  info.err = jpeg_std_error(&errors.pub);
  errors.pub.error_exit = OnJpegError;
  errors.pub.emit_message = OnJpegMessage;
  if (setjmp(errors.jump) != 0) {
    jpeg_destroy_decompress(&info);
    return false;
  }
  jpeg_create_decompress(&info);
  UseJpegFdSource(&info, source);
  jpeg_read_header(&info, TRUE);
  info.scale_num = 1;
  info.scale_denom = 8;
  info.out_color_space = JCS_RGB;
  info.dct_method = JDCT_IFAST;
  info.do_fancy_upsampling = FALSE;
  jpeg_start_decompress(&info);
  band.photo_width = static_cast<int>(info.image_width);
  band.photo_height = static_cast<int>(info.image_height);
  band.width = static_cast<int>(info.output_width);
  band.full_height = static_cast<int>(info.output_height);
  const int stride = band.width * 3;
  const int last = std::max(1, band.full_height / kLastBandDivisor);
  thread_local Scratch memory;
  band.pixels = memory.Get(static_cast<std::size_t>(stride) * last);
  band.rows = 0;
  while (band.rows < last) {
    JSAMPROW row = band.pixels + static_cast<std::size_t>(band.rows) *
                                     static_cast<std::size_t>(stride);
    if (jpeg_read_scanlines(&info, &row, 1) != 1) {
      break;
    }
    ++band.rows;
    if (enough(band)) {
      break;
    }
  }
  jpeg_abort_decompress(&info);
  jpeg_destroy_decompress(&info);
  return band.rows > 0;
}

// How far a picture's values spread within each channel: the standard
// deviation of every channel about its own mean, their variances averaged.
// One flat colour has none, however far apart its channels stand (a blue
// sky is no detail to compare).
class Spread {
 public:
  void Add(double value, int channel) {
    sum_[channel] += value;
    squares_[channel] += value * value;
  }
  // After `count` values of each channel.
  double Deviation(double count) const {
    double variance = 0;
    for (int k = 0; k < 3; ++k) {
      const double mean = sum_[k] / count;
      variance += std::max(0.0, squares_[k] / count - mean * mean);
    }
    return std::sqrt(variance / 3);
  }

 private:
  std::array<double, 3> sum_{};
  std::array<double, 3> squares_{};
};

// How many of `all_rows` rows of cells over a picture `full_height` rows
// high lie whole within its first `rows` rows, each cell row ending where
// Compare ends it.
int CoveredCellRows(int all_rows, int full_height, int rows) {
  if (all_rows < 1 || full_height < 1) {
    return 0;
  }
  // Row r ends at floor((r + 1) * full_height / all_rows).
  const long long covered =
      ((static_cast<long long>(rows) + 1) * all_rows - 1) / full_height;
  return static_cast<int>(std::min<long long>(covered, all_rows));
}

// The rows of cells that the comparison lays over the preview and the band.
int AllCellRows(const RgbPicture& preview, const Band& band) {
  return std::min(preview.height, band.full_height) / kCellHeight;
}

// How the top of the preview stands to the band of the photo, both
// averaged over one grid of cells (kCellWidth x kCellHeight).
struct Comparison {
  int rows = 0;  // rows of cells compared
  double mean_difference = 0;
  // The largest mean absolute difference of one row of cells, over the rows
  // that show detail of their own.
  double worst_row_difference = 0;
  double channel_shift = 0;
  double detail = 0;
};

// The mean of each channel over pixels [x0, x1) x [y0, y1) of an RGB buffer
// `width` pixels wide.
std::array<double, 3> CellMean(const std::uint8_t* pixels,
                               int width,
                               int x0,
                               int x1,
                               int y0,
                               int y1) {
  std::array<double, 3> sum{};
  for (int y = y0; y < y1; ++y) {
    const std::uint8_t* p =
        pixels + (static_cast<std::size_t>(y) * width + x0) * 3;
    for (int x = x0; x < x1; ++x, p += 3) {
      sum[0] += p[0];
      sum[1] += p[1];
      sum[2] += p[2];
    }
  }
  const double count = static_cast<double>(x1 - x0) * (y1 - y0);
  for (double& s : sum) {
    s /= count;
  }
  return sum;
}

// The mean of each channel over the area [x0, x1) x [y0, y1) of `picture`,
// in its pixels and fractions of them.
std::array<double, 3> AreaMean(const RgbPicture& picture,
                               double x0,
                               double x1,
                               double y0,
                               double y1) {
  std::array<double, 3> sum{};
  double weight = 0;
  const int last_y = std::min(picture.height, static_cast<int>(std::ceil(y1)));
  const int last_x = std::min(picture.width, static_cast<int>(std::ceil(x1)));
  for (int y = static_cast<int>(y0); y < last_y; ++y) {
    const double wy = std::min<double>(y + 1, y1) - std::max<double>(y, y0);
    for (int x = static_cast<int>(x0); x < last_x; ++x) {
      const double w =
          wy * (std::min<double>(x + 1, x1) - std::max<double>(x, x0));
      const std::uint8_t* p = picture.At(x, y);
      sum[0] += w * p[0];
      sum[1] += w * p[1];
      sum[2] += w * p[2];
      weight += w;
    }
  }
  for (double& s : sum) {
    s = weight > 0 ? s / weight : 0;
  }
  return sum;
}

Comparison Compare(const RgbPicture& preview, const Band& band) {
  Comparison result;
  const int columns = std::min(preview.width, band.width) / kCellWidth;
  const int all_rows = AllCellRows(preview, band);
  // The rows of cells that the decoded band covers whole.
  result.rows = CoveredCellRows(all_rows, band.full_height, band.rows);
  if (columns < 1 || result.rows < 1) {
    return result;
  }
  // Cell edges in the band's pixels; each cell of the preview is the same
  // part of the photo as its cell of the band, to a fraction of a pixel
  // (a band pixel is 8 x 8 of the photo's, the last ones cut at its edge).
  auto edge = [](int i, int cells, int pixels) {
    return static_cast<int>(static_cast<long long>(i) * pixels / cells);
  };
  const double across = static_cast<double>(preview.width) / band.photo_width;
  const double down = static_cast<double>(preview.height) / band.photo_height;
  auto in_preview = [](int band_edge, int photo_size, double scale) {
    return std::min(8 * band_edge, photo_size) * scale;
  };
  double absolute = 0;
  std::array<double, 3> shift{};
  Spread spread;
  for (int r = 0; r < result.rows; ++r) {
    const int by0 = edge(r, all_rows, band.full_height);
    const int by1 = std::min(
        band.rows, std::max(by0 + 1, edge(r + 1, all_rows, band.full_height)));
    const double py0 = in_preview(by0, band.photo_height, down);
    const double py1 = in_preview(by1, band.photo_height, down);
    double row_absolute = 0;
    Spread row_spread;
    for (int c = 0; c < columns; ++c) {
      const int bx0 = edge(c, columns, band.width);
      const int bx1 = std::max(bx0 + 1, edge(c + 1, columns, band.width));
      const std::array<double, 3> p =
          AreaMean(preview, in_preview(bx0, band.photo_width, across),
                   in_preview(bx1, band.photo_width, across), py0, py1);
      const std::array<double, 3> b =
          CellMean(band.pixels, band.width, bx0, bx1, by0, by1);
      for (int k = 0; k < 3; ++k) {
        row_absolute += std::fabs(b[k] - p[k]);
        shift[k] += b[k] - p[k];
        spread.Add(b[k], k);
        row_spread.Add(b[k], k);
      }
    }
    absolute += row_absolute;
    if (row_spread.Deviation(columns) >= kMinDetail) {
      result.worst_row_difference =
          std::max(result.worst_row_difference, row_absolute / (3.0 * columns));
    }
  }
  const double cells = static_cast<double>(result.rows) * columns;
  result.mean_difference = absolute / (3 * cells);
  for (double s : shift) {
    result.channel_shift = std::max(result.channel_shift, std::fabs(s / cells));
  }
  result.detail = spread.Deviation(cells);
  return result;
}

std::vector<std::uint8_t> Encode(const RgbPicture& rgb, int quality) {
  std::vector<std::uint8_t> jpeg;
  void* const handle = Compressor();
  unsigned char* buffer = nullptr;
  unsigned long size = 0;
  if (handle != nullptr &&
      tjCompress2(handle, rgb.pixels.data(), rgb.width, rgb.width * 3,
                  rgb.height, TJPF_RGB, &buffer, &size, TJSAMP_420, quality,
                  0) == 0) {
    jpeg.assign(buffer, buffer + size);
  }
  tjFree(buffer);
  return jpeg;
}

}  // namespace

PreviewThumbnail ThumbnailFromExifPreview(int fd, int size, int quality) {
  PreviewThumbnail result;
  thread_local Scratch memory;
  std::uint8_t* const head = memory.Get(kHeadBytes);
  ssize_t got = ::pread(fd, head, kFirstHeadBytes, 0);
  if (got <= 0 || size < 1) {
    return result;
  }
  std::optional<Layout> layout =
      ReadLayout(head, static_cast<std::size_t>(got));
  if (!layout && static_cast<std::size_t>(got) == kFirstHeadBytes) {
    const ssize_t more = ::pread(fd, head + got, kHeadBytes - kFirstHeadBytes,
                                 static_cast<off_t>(got));
    got += std::max<ssize_t>(more, 0);
    layout = ReadLayout(head, static_cast<std::size_t>(got));
  }
  if (!layout || layout->width < 1 || layout->height < 1) {
    return result;
  }
  const Exif exif = ReadExif(*layout);
  const std::optional<RgbPicture> preview =
      exif.preview.empty() ? std::nullopt : DecodePreview(exif.preview);
  if (!preview) {
    return result;
  }
  if (!layout->sequential) {
    result.verdict = PreviewVerdict::kNotSequential;
    return result;
  }
  // The shape: the preview's height from its width, within a pixel.
  const double expected_height =
      static_cast<double>(preview->width) * layout->height / layout->width;
  if (std::fabs(expected_height - preview->height) > 1.0) {
    result.verdict = PreviewVerdict::kWrongShape;
    return result;
  }
  // The thumbnail's size as stored: the longer side `size`, never enlarged.
  const double scale = std::min(
      1.0, static_cast<double>(size) / std::max(layout->width, layout->height));
  const int width =
      std::max(1, static_cast<int>(std::lround(layout->width * scale)));
  const int height =
      std::max(1, static_cast<int>(std::lround(layout->height * scale)));
  if (preview->width < width || preview->height < height) {
    result.verdict = PreviewVerdict::kTooSmall;
    return result;
  }
  Band band;
  const JpegFdSourcePtr source = MakeJpegFdSource(fd);
  const RgbPicture& shown = *preview;
  // Enough when the rows of cells the band covers show detail: the
  // comparison is made again each time a row of cells is complete.
  int compared = 0;
  const bool decoded = DecodeTopBand(band, *source, [&](const Band& b) {
    const int covered =
        CoveredCellRows(AllCellRows(shown, b), b.full_height, b.rows);
    if (covered == compared) {
      return false;
    }
    compared = covered;
    return Compare(shown, b).detail >= kMinDetail;
  });
  if (!decoded) {
    return result;
  }
  const Comparison comparison = Compare(*preview, band);
  if (comparison.rows < 1 || comparison.detail < kMinDetail) {
    result.verdict = PreviewVerdict::kTooPlain;
    return result;
  }
  if (comparison.mean_difference > kMaxMeanDifference ||
      comparison.worst_row_difference > kMaxMeanDifference ||
      comparison.channel_shift > kMaxChannelShift) {
    result.verdict = PreviewVerdict::kStale;
    return result;
  }
  result.jpeg = Encode(
      Upright(Reduce(*preview, width, height), exif.orientation), quality);
  if (!result.jpeg.empty()) {
    result.verdict = PreviewVerdict::kTaken;
  }
  return result;
}

}  // namespace qbpd
