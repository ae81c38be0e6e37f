#include "platform/red_eye.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace qbpd {
namespace {

// The least redness that may seed a pupil, over 0..255. A pupil already
// cleaned holds none this red, so a click there changes nothing.
constexpr int kLeastSeedRedness = 24;
// A pixel of the pupil is at least this share of the seed's redness...
constexpr double kRegionShare = 0.4;
// ...and its red at least this many times the stronger of green and blue:
// skin, however warm, stays below it.
constexpr double kRedOverOthers = 1.6;
// The soft edge: how far outside the region a pixel may still be treated.
constexpr int kEdge = 2;
// The largest pupil, as a share of the photo's shorter side, and at least
// this many pixels across: a red region reaching past it is no pupil.
constexpr double kLargestPupilShare = 0.125;
constexpr int kLargestPupilPixels = 16;

struct Pixel {
  int r;
  int g;
  int b;
};

Pixel At(const RgbPixels& p, int x, int y) {
  const std::uint8_t* q =
      p.data + (static_cast<std::size_t>(y) * p.width + x) * 3;
  return {q[0], q[1], q[2]};
}

int Redness(const Pixel& p) {
  return p.r - std::max(p.g, p.b);
}

bool PassesRatio(const Pixel& p) {
  return p.r >= kRedOverOthers * std::max({p.g, p.b, 1});
}

}  // namespace

int RemoveRedEye(RgbPixels picture,
                 double x,
                 double y,
                 double reach,
                 CropRect* changed_box) {
  if (picture.data == nullptr || picture.width <= 0 || picture.height <= 0) {
    return 0;
  }
  const int cx = static_cast<int>(std::floor(x));
  const int cy = static_cast<int>(std::floor(y));
  const int r = std::max(1, static_cast<int>(std::ceil(reach)));
  // The seed: the reddest pixel near the click.
  int seed_x = -1;
  int seed_y = -1;
  int peak = kLeastSeedRedness - 1;
  for (int j = std::max(0, cy - r); j <= std::min(picture.height - 1, cy + r);
       ++j) {
    for (int i = std::max(0, cx - r); i <= std::min(picture.width - 1, cx + r);
         ++i) {
      if ((i - cx) * (i - cx) + (j - cy) * (j - cy) > r * r) {
        continue;
      }
      const Pixel p = At(picture, i, j);
      const int redness = Redness(p);
      if (redness > peak && PassesRatio(p)) {
        peak = redness;
        seed_x = i;
        seed_y = j;
      }
    }
  }
  if (seed_x < 0) {
    return 0;
  }
  const int threshold =
      std::max(kLeastSeedRedness / 2, static_cast<int>(peak * kRegionShare));
  // The grow stays inside a window around the seed; touching its border
  // means the red region is larger than any pupil.
  const int half =
      std::max(kLargestPupilPixels,
               static_cast<int>(std::min(picture.width, picture.height) *
                                kLargestPupilShare / 2));
  const int left = seed_x - half;
  const int top = seed_y - half;
  const int side = 2 * half + 1;
  std::vector<std::uint8_t> in_region(static_cast<std::size_t>(side) * side, 0);
  auto inside = [&](int i, int j) {
    return i >= 0 && j >= 0 && i < picture.width && j < picture.height;
  };
  auto in_window = [&](int i, int j) {
    return i >= left && j >= top && i < left + side && j < top + side;
  };
  auto index = [&](int i, int j) {
    return static_cast<std::size_t>(j - top) * side + (i - left);
  };
  std::vector<std::pair<int, int>> stack = {{seed_x, seed_y}};
  in_region[index(seed_x, seed_y)] = 1;
  int min_x = seed_x;
  int max_x = seed_x;
  int min_y = seed_y;
  int max_y = seed_y;
  while (!stack.empty()) {
    const auto [i, j] = stack.back();
    stack.pop_back();
    const int next[4][2] = {{i + 1, j}, {i - 1, j}, {i, j + 1}, {i, j - 1}};
    for (const auto& n : next) {
      const int ni = n[0];
      const int nj = n[1];
      if (!inside(ni, nj) || in_region[index(ni, nj)] != 0) {
        continue;
      }
      const Pixel p = At(picture, ni, nj);
      if (Redness(p) < threshold || !PassesRatio(p)) {
        continue;
      }
      if (ni <= left || nj <= top || ni >= left + side - 1 ||
          nj >= top + side - 1) {
        return 0;  // past any pupil's size
      }
      in_region[index(ni, nj)] = 1;
      min_x = std::min(min_x, ni);
      max_x = std::max(max_x, ni);
      min_y = std::min(min_y, nj);
      max_y = std::max(max_y, nj);
      stack.emplace_back(ni, nj);
    }
  }
  // The pixels of the region, and those of its soft edge in proportion to
  // their own redness against the region's threshold.
  int changed = 0;
  const double soft_floor = threshold / 2.0;
  for (int j = std::max(0, min_y - kEdge);
       j <= std::min(picture.height - 1, max_y + kEdge); ++j) {
    for (int i = std::max(0, min_x - kEdge);
         i <= std::min(picture.width - 1, max_x + kEdge); ++i) {
      double weight = 0;
      if (in_window(i, j) && in_region[index(i, j)] != 0) {
        weight = 1;
      } else {
        bool near = false;
        for (int dj = -kEdge; dj <= kEdge && !near; ++dj) {
          for (int di = -kEdge; di <= kEdge && !near; ++di) {
            const int ni = i + di;
            const int nj = j + dj;
            near = di * di + dj * dj <= kEdge * kEdge && in_window(ni, nj) &&
                   in_region[index(ni, nj)] != 0;
          }
        }
        if (!near) {
          continue;
        }
        weight = std::clamp((Redness(At(picture, i, j)) - soft_floor) /
                                (threshold - soft_floor),
                            0.0, 1.0);
      }
      std::uint8_t* q =
          picture.data + (static_cast<std::size_t>(j) * picture.width + i) * 3;
      const double target = (q[1] + q[2]) / 2.0;
      if (weight <= 0 || q[0] <= target) {
        continue;
      }
      const auto red = static_cast<std::uint8_t>(
          std::lround(q[0] - weight * (q[0] - target)));
      if (red != q[0]) {
        q[0] = red;
        ++changed;
      }
    }
  }
  if (changed_box != nullptr) {
    *changed_box = {static_cast<double>(min_x - kEdge),
                    static_cast<double>(min_y - kEdge),
                    static_cast<double>(max_x - min_x + 1 + 2 * kEdge),
                    static_cast<double>(max_y - min_y + 1 + 2 * kEdge)};
  }
  return changed;
}

}  // namespace qbpd
