#include "platform/saver_frames.h"

#include <algorithm>
#include <cmath>

namespace qbpd {
namespace {

// The soft edge of the wipes, as a share of the frame's diagonal.
constexpr double kFeather = 0.06;
constexpr int kOpaque = 256;

// Mixes two pixels: `a` of 256 parts `to`, the rest `from`. Red and blue,
// then green, are mixed two channels at a time.
inline std::uint32_t Mix(std::uint32_t from, std::uint32_t to, int a) {
  const std::uint32_t b = static_cast<std::uint32_t>(kOpaque - a);
  const std::uint32_t ua = static_cast<std::uint32_t>(a);
  const std::uint32_t rb =
      (((from & 0x00FF00FFu) * b + (to & 0x00FF00FFu) * ua) >> 8) & 0x00FF00FFu;
  const std::uint32_t g =
      (((from & 0x0000FF00u) * b + (to & 0x0000FF00u) * ua) >> 8) & 0x0000FF00u;
  return 0xFF000000u | rb | g;
}

// Mixes one row run at one weight.
inline void MixRun(const std::uint32_t* from,
                   const std::uint32_t* to,
                   std::uint32_t* out,
                   int count,
                   int a) {
  if (a <= 0) {
    std::copy(from, from + count, out);
  } else if (a >= kOpaque) {
    std::copy(to, to + count, out);
  } else {
    for (int i = 0; i < count; ++i) {
      out[i] = Mix(from[i], to[i], a);
    }
  }
}

double Ease(double t) {
  t = std::clamp(t, 0.0, 1.0);
  return t * t * (3.0 - 2.0 * t);
}

// The weight of the new photo at signed distance `d` (pixels) behind the
// front of a wipe with a soft edge `feather` pixels wide.
inline int EdgeWeight(double d, double feather) {
  const double w = std::clamp(0.5 + d / feather, 0.0, 1.0);
  return static_cast<int>(w * kOpaque + 0.5);
}

void FromCentre(const SaverFrame& from,
                const SaverFrame& to,
                double t,
                SaverFrame& out) {
  const int w = from.width;
  const int h = from.height;
  const double cx = w / 2.0;
  const double cy = h / 2.0;
  const double feather = kFeather * std::hypot(w, h);
  // The rim runs from wholly before the middle to wholly beyond the corners.
  const double radius = -feather / 2 + t * (std::hypot(cx, cy) + feather);
  const double inner = std::max(0.0, radius - feather / 2);
  const double outer = radius + feather / 2;
  for (int y = 0; y < h; ++y) {
    const std::uint32_t* f = &from.pixels[static_cast<size_t>(y) * w];
    const std::uint32_t* n = &to.pixels[static_cast<size_t>(y) * w];
    std::uint32_t* o = &out.pixels[static_cast<size_t>(y) * w];
    const double dy = y + 0.5 - cy;
    // Outside the outer circle the row is the old photo; inside the inner
    // one the new; only the rim between them is mixed pixel by pixel.
    const double outer_half =
        outer > std::abs(dy) ? std::sqrt(outer * outer - dy * dy) : -1.0;
    const double inner_half =
        inner > std::abs(dy) ? std::sqrt(inner * inner - dy * dy) : -1.0;
    const int o0 =
        std::clamp(static_cast<int>(std::floor(cx - outer_half)), 0, w);
    const int o1 =
        std::clamp(static_cast<int>(std::ceil(cx + outer_half)), 0, w);
    const int i0 =
        inner_half < 0
            ? (o0 + o1) / 2
            : std::clamp(static_cast<int>(std::ceil(cx - inner_half)), o0, o1);
    const int i1 =
        inner_half < 0
            ? i0
            : std::clamp(static_cast<int>(std::floor(cx + inner_half)), i0, o1);
    if (outer_half < 0) {
      std::copy(f, f + w, o);
      continue;
    }
    std::copy(f, f + o0, o);
    std::copy(f + o1, f + w, o + o1);
    std::copy(n + i0, n + i1, o + i0);
    for (int x = o0; x < i0; ++x) {
      const double d = radius - std::hypot(x + 0.5 - cx, dy);
      o[x] = Mix(f[x], n[x], EdgeWeight(d, feather));
    }
    for (int x = i1; x < o1; ++x) {
      const double d = radius - std::hypot(x + 0.5 - cx, dy);
      o[x] = Mix(f[x], n[x], EdgeWeight(d, feather));
    }
  }
}

void Diagonal(const SaverFrame& from,
              const SaverFrame& to,
              double t,
              SaverFrame& out) {
  const int w = from.width;
  const int h = from.height;
  // The front is the line x + y = s, moving from before the top-left corner
  // to beyond the bottom-right one; the weight changes along a row only
  // inside the soft band.
  const double feather = kFeather * std::hypot(w, h) * std::sqrt(2.0);
  const double s = -feather / 2 + t * (w + h + feather);
  for (int y = 0; y < h; ++y) {
    const std::uint32_t* f = &from.pixels[static_cast<size_t>(y) * w];
    const std::uint32_t* n = &to.pixels[static_cast<size_t>(y) * w];
    std::uint32_t* o = &out.pixels[static_cast<size_t>(y) * w];
    const double row_front = s - y;
    const int full =
        std::clamp(static_cast<int>(std::floor(row_front - feather / 2)), 0, w);
    const int none = std::clamp(
        static_cast<int>(std::ceil(row_front + feather / 2)), full, w);
    std::copy(n, n + full, o);
    for (int x = full; x < none; ++x) {
      o[x] = Mix(f[x], n[x], EdgeWeight(row_front - (x + 0.5), feather));
    }
    std::copy(f + none, f + w, o + none);
  }
}

void TopToBottom(const SaverFrame& from,
                 const SaverFrame& to,
                 double t,
                 SaverFrame& out) {
  const int w = from.width;
  const int h = from.height;
  const double feather = kFeather * h * 2;
  const double front = -feather / 2 + t * (h + feather);
  for (int y = 0; y < h; ++y) {
    const size_t row = static_cast<size_t>(y) * w;
    MixRun(&from.pixels[row], &to.pixels[row], &out.pixels[row], w,
           EdgeWeight(front - (y + 0.5), feather));
  }
}

void LeftToRight(const SaverFrame& from,
                 const SaverFrame& to,
                 double t,
                 SaverFrame& out) {
  const int w = from.width;
  const int h = from.height;
  // The new photo's right edge stands at `shift`; the old photo is pushed
  // along by as much.
  const int shift = std::clamp(static_cast<int>(std::lround(t * w)), 0, w);
  for (int y = 0; y < h; ++y) {
    const size_t row = static_cast<size_t>(y) * w;
    const std::uint32_t* f = &from.pixels[row];
    const std::uint32_t* n = &to.pixels[row];
    std::uint32_t* o = &out.pixels[row];
    std::copy(n + (w - shift), n + w, o);
    std::copy(f, f + (w - shift), o + shift);
  }
}

}  // namespace

SaverFrame SaverFrame::Black(int width, int height) {
  SaverFrame frame;
  frame.width = std::max(0, width);
  frame.height = std::max(0, height);
  frame.pixels.assign(static_cast<size_t>(frame.width) * frame.height,
                      0xFF000000u);
  return frame;
}

std::vector<SaverTransition> ParseSaverEffects(std::string_view effects) {
  std::vector<SaverTransition> out;
  while (!effects.empty()) {
    const size_t sep = effects.find('>');
    const std::string_view code = effects.substr(0, sep);
    if (code == "3001") {
      out.push_back(SaverTransition::kFromCentre);
    } else if (code == "2007") {
      out.push_back(SaverTransition::kDiagonal);
    } else if (code == "7002") {
      out.push_back(SaverTransition::kTopToBottom);
    } else if (code == "2000") {
      out.push_back(SaverTransition::kLeftToRight);
    }
    if (sep == std::string_view::npos) {
      break;
    }
    effects.remove_prefix(sep + 1);
  }
  return out;
}

void DrawSaverTransition(SaverTransition transition,
                         const SaverFrame& from,
                         const SaverFrame& to,
                         double progress,
                         SaverFrame& out) {
  if (out.width != from.width || out.height != from.height ||
      out.pixels.size() != from.pixels.size()) {
    out = SaverFrame::Black(from.width, from.height);
  }
  if (to.width != from.width || to.height != from.height ||
      from.pixels.empty()) {
    out.pixels = to.pixels.size() == out.pixels.size() ? to.pixels : out.pixels;
    return;
  }
  const double t = Ease(progress);
  switch (transition) {
    case SaverTransition::kFromCentre:
      FromCentre(from, to, t, out);
      return;
    case SaverTransition::kDiagonal:
      Diagonal(from, to, t, out);
      return;
    case SaverTransition::kTopToBottom:
      TopToBottom(from, to, t, out);
      return;
    case SaverTransition::kLeftToRight:
      LeftToRight(from, to, t, out);
      return;
  }
}

}  // namespace qbpd
