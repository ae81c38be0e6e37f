#include "platform/rgb_picture.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace qbpd {
namespace {

// The weights of an area-averaging reduction of `from` pixels to `to`:
// output pixel i takes `count[i]` source pixels from `first[i]` on, their
// weights (`stride` kept for each output pixel) summing to 1.
struct Taps {
  int stride = 0;
  std::vector<int> first;
  std::vector<int> count;
  std::vector<float> weights;
};

Taps AreaTaps(int from, int to) {
  Taps taps;
  const double scale = static_cast<double>(from) / to;
  taps.stride = static_cast<int>(std::ceil(scale)) + 1;
  taps.first.resize(static_cast<std::size_t>(to));
  taps.count.resize(static_cast<std::size_t>(to));
  taps.weights.assign(static_cast<std::size_t>(to) * taps.stride, 0.0f);
  for (int i = 0; i < to; ++i) {
    const double start = i * scale;
    const double end = std::min<double>(from, (i + 1) * scale);
    const int first = static_cast<int>(start);
    int n = 0;
    for (int p = first; p < end && n < taps.stride; ++p, ++n) {
      const double covered =
          std::min<double>(p + 1, end) - std::max<double>(p, start);
      taps.weights[static_cast<std::size_t>(i) * taps.stride + n] =
          static_cast<float>(covered / (end - start));
    }
    taps.first[i] = first;
    taps.count[i] = n;
  }
  return taps;
}

// Where each target position `to` (of `to_size`) falls between two source
// positions (of `from_size`): the nearer-left one and the weight, out of
// 256, of the one after it.
struct BlendTap {
  int at = 0;
  int weight = 0;
};

std::vector<BlendTap> BlendTaps(int from_size, int to_size) {
  std::vector<BlendTap> taps(static_cast<std::size_t>(to_size));
  const double step = static_cast<double>(from_size) / to_size;
  for (int to = 0; to < to_size; ++to) {
    const double from =
        std::clamp((to + 0.5) * step - 0.5, 0.0, from_size - 1.0);
    const int at = std::min(static_cast<int>(from), std::max(0, from_size - 2));
    taps[static_cast<std::size_t>(to)] = {
        at, static_cast<int>(std::lround((from - at) * 256))};
  }
  return taps;
}

}  // namespace

// Area-averaged reduction of `source` to `width` x `height` (no larger):
// each row across first, then the rows down.
RgbPicture Reduce(const RgbPicture& source, int width, int height) {
  const Taps across = AreaTaps(source.width, width);
  const Taps down = AreaTaps(source.height, height);
  thread_local std::vector<float> narrow;
  const std::size_t narrow_row = static_cast<std::size_t>(width) * 3;
  narrow.resize(narrow_row * source.height);
  for (int y = 0; y < source.height; ++y) {
    float* q = narrow.data() + narrow_row * y;
    for (int x = 0; x < width; ++x, q += 3) {
      const float* w =
          across.weights.data() + static_cast<std::size_t>(x) * across.stride;
      const std::uint8_t* p = source.At(across.first[x], y);
      float r = 0;
      float g = 0;
      float b = 0;
      for (int k = 0; k < across.count[x]; ++k, p += 3) {
        r += w[k] * p[0];
        g += w[k] * p[1];
        b += w[k] * p[2];
      }
      q[0] = r;
      q[1] = g;
      q[2] = b;
    }
  }
  RgbPicture out;
  out.width = width;
  out.height = height;
  out.pixels.resize(narrow_row * height);
  // A whole row at a time, so that the compiler can use vector registers.
  thread_local std::vector<float> row;
  row.resize(narrow_row);
  for (int y = 0; y < height; ++y) {
    const float* w =
        down.weights.data() + static_cast<std::size_t>(y) * down.stride;
    std::fill(row.begin(), row.end(), 0.5f);  // rounds on the cast below
    for (int k = 0; k < down.count[y]; ++k) {
      const float* p =
          narrow.data() +
          narrow_row * (down.first[y] + static_cast<std::size_t>(k));
      for (std::size_t i = 0; i < narrow_row; ++i) {
        row[i] += w[k] * p[i];
      }
    }
    std::uint8_t* q = out.pixels.data() + narrow_row * y;
    for (std::size_t i = 0; i < narrow_row; ++i) {
      q[i] = static_cast<std::uint8_t>(std::clamp(row[i], 0.0f, 255.0f));
    }
  }
  return out;
}

// The picture stood upright as the EXIF orientation (1 to 8) says.
RgbPicture Upright(const RgbPicture& stored, int orientation) {
  if (orientation == 1) {
    return stored;
  }
  const int w = stored.width;
  const int h = stored.height;
  const bool swap = orientation >= 5;
  RgbPicture out;
  out.width = swap ? h : w;
  out.height = swap ? w : h;
  out.pixels.resize(stored.pixels.size());
  for (int uy = 0; uy < out.height; ++uy) {
    for (int ux = 0; ux < out.width; ++ux) {
      int sx = ux;
      int sy = uy;
      switch (orientation) {
        case 2:
          sx = w - 1 - ux;
          break;
        case 3:
          sx = w - 1 - ux;
          sy = h - 1 - uy;
          break;
        case 4:
          sy = h - 1 - uy;
          break;
        case 5:
          sx = uy;
          sy = ux;
          break;
        case 6:
          sx = uy;
          sy = h - 1 - ux;
          break;
        case 7:
          sx = w - 1 - uy;
          sy = h - 1 - ux;
          break;
        case 8:
          sx = w - 1 - uy;
          sy = ux;
          break;
        default:
          break;
      }
      std::memcpy(out.pixels.data() +
                      (static_cast<std::size_t>(uy) * out.width + ux) * 3,
                  stored.At(sx, sy), 3);
    }
  }
  return out;
}

RgbPicture Enlarge(const RgbPicture& source, int width, int height) {
  RgbPicture result;
  if (source.width < 1 || source.height < 1 || width < 1 || height < 1) {
    return result;
  }
  result.width = width;
  result.height = height;
  // Across each source row first, then between two of those rows for each
  // row down: the inner loop is the same blend over whole rows, which the
  // compiler vectorises.
  const std::vector<BlendTap> across = BlendTaps(source.width, width);
  const std::size_t row_bytes = static_cast<std::size_t>(width) * 3;
  const int next_x = source.width > 1 ? 3 : 0;
  std::vector<std::uint8_t> rows(row_bytes * source.height);
  for (int y = 0; y < source.height; ++y) {
    std::uint8_t* to = rows.data() + row_bytes * y;
    for (int x = 0; x < width; ++x) {
      const BlendTap tap = across[static_cast<std::size_t>(x)];
      const std::uint8_t* from = source.At(tap.at, y);
      for (int c = 0; c < 3; ++c) {
        to[x * 3 + c] =
            static_cast<std::uint8_t>((from[c] * (256 - tap.weight) +
                                       from[c + next_x] * tap.weight + 128) >>
                                      8);
      }
    }
  }
  const std::vector<BlendTap> down = BlendTaps(source.height, height);
  result.pixels.resize(row_bytes * height);
  for (int y = 0; y < height; ++y) {
    const BlendTap tap = down[static_cast<std::size_t>(y)];
    const std::uint8_t* upper = rows.data() + row_bytes * tap.at;
    const std::uint8_t* lower = source.height > 1 ? upper + row_bytes : upper;
    const unsigned weight = static_cast<unsigned>(tap.weight);
    std::uint8_t* to = result.pixels.data() + row_bytes * y;
    for (std::size_t i = 0; i < row_bytes; ++i) {
      to[i] = static_cast<std::uint8_t>(
          (upper[i] * (256 - weight) + lower[i] * weight + 128) >> 8);
    }
  }
  return result;
}

}  // namespace qbpd
