#include "platform/jpeg_turn.h"

// jpeglib.h needs FILE and size_t declared first.
#include <algorithm>
#include <array>
#include <cmath>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
#include <numbers>
#include <vector>

namespace qbpd {
namespace {

constexpr int kBlock = 8;
constexpr int kBlockArea = kBlock * kBlock;
constexpr int kMaxPlanes = 3;
// The coefficients of both pictures stay in memory; a header asking for
// more than this is refused (a 12-megapixel photo needs about 80 MB).
constexpr long kMostMemory = 1L << 30;
constexpr int kCentre = 128;

// How the turned picture's samples come from the source's: the source
// sample (x, y) is first transposed or not, then flipped across the turned
// picture's width and height.
struct Motion {
  bool transpose = false;
  bool flip_x = false;
  bool flip_y = false;
};

Motion MotionOf(int turn, bool mirror) {
  Motion motion;
  switch (turn) {
    case 90:
      motion = {true, true, false};
      break;
    case 180:
      motion = {false, true, true};
      break;
    case 270:
      motion = {true, false, true};
      break;
    default:
      break;
  }
  if (mirror) {
    motion.flip_x = !motion.flip_x;
  }
  return motion;
}

// Where each coefficient of a moved block comes from, and its sign: a flip
// inside a block negates the odd frequencies along it.
struct BlockMove {
  std::array<int, kBlockArea> from{};
  std::array<int, kBlockArea> sign{};
};

BlockMove BlockMoveOf(const Motion& motion) {
  BlockMove move;
  for (int v = 0; v < kBlock; ++v) {
    for (int u = 0; u < kBlock; ++u) {
      const int at = v * kBlock + u;
      move.from[at] = motion.transpose ? u * kBlock + v : at;
      const bool negative =
          (motion.flip_x && u % 2 == 1) != (motion.flip_y && v % 2 == 1);
      move.sign[at] = negative ? -1 : 1;
    }
  }
  return move;
}

// The DCT's basis, scaled so that the forward and inverse transforms are
// each other's transpose: basis[x][u] = C(u) / 2 * cos((2x + 1) u pi / 16).
struct Basis {
  Basis() {
    for (int x = 0; x < kBlock; ++x) {
      for (int u = 0; u < kBlock; ++u) {
        const double scale = u == 0 ? std::numbers::sqrt2 / 4.0 : 0.5;
        at[x][u] = static_cast<float>(
            scale * std::cos((2 * x + 1) * u * std::numbers::pi / 16.0));
      }
    }
  }
  float at[kBlock][kBlock] = {};
};

const Basis& TheBasis() {
  static const Basis basis;
  return basis;
}

// Samples (centred on zero) of one block from its quantised coefficients.
void InverseDct(const JCOEF* coefficients,
                const UINT16* steps,
                float* out,
                std::size_t stride) {
  const Basis& b = TheBasis();
  float f[kBlockArea];
  for (int k = 0; k < kBlockArea; ++k) {
    f[k] = static_cast<float>(coefficients[k]) * static_cast<float>(steps[k]);
  }
  float rows[kBlock][kBlock];  // [v][x]
  for (int v = 0; v < kBlock; ++v) {
    for (int x = 0; x < kBlock; ++x) {
      float sum = 0;
      for (int u = 0; u < kBlock; ++u) {
        sum += b.at[x][u] * f[v * kBlock + u];
      }
      rows[v][x] = sum;
    }
  }
  for (int y = 0; y < kBlock; ++y) {
    for (int x = 0; x < kBlock; ++x) {
      float sum = 0;
      for (int v = 0; v < kBlock; ++v) {
        sum += b.at[y][v] * rows[v][x];
      }
      out[static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x)] =
          sum;
    }
  }
}

// The quantised coefficients of one block of samples centred on zero.
void ForwardDct(const float* in,
                std::size_t stride,
                const UINT16* steps,
                JCOEF* coefficients) {
  const Basis& b = TheBasis();
  float rows[kBlock][kBlock];  // [y][u]
  for (int y = 0; y < kBlock; ++y) {
    const float* line = in + static_cast<std::size_t>(y) * stride;
    for (int u = 0; u < kBlock; ++u) {
      float sum = 0;
      for (int x = 0; x < kBlock; ++x) {
        sum += b.at[x][u] * line[x];
      }
      rows[y][u] = sum;
    }
  }
  for (int v = 0; v < kBlock; ++v) {
    for (int u = 0; u < kBlock; ++u) {
      float sum = 0;
      for (int y = 0; y < kBlock; ++y) {
        sum += b.at[y][v] * rows[y][u];
      }
      const long level =
          std::lround(sum / static_cast<float>(steps[v * kBlock + u]));
      // What a baseline scan can hold.
      const long lowest = u == 0 && v == 0 ? -1024L : -1023L;
      coefficients[v * kBlock + u] =
          static_cast<JCOEF>(std::clamp(level, lowest, 1023L));
    }
  }
}

// One plane of a picture: its size in samples and its blocks in memory.
struct Plane {
  int width = 0;
  int height = 0;
  int blocks_wide = 0;
  int blocks_high = 0;
  // The rows of its array: whole rows of MCUs.
  int array_rows = 0;
  std::vector<JBLOCKROW> rows;
  const UINT16* steps = nullptr;

  JCOEF* Block(int bx, int by) const {
    return rows[static_cast<std::size_t>(by)][bx];
  }
};

struct ErrorManager {
  jpeg_error_mgr base{};
  std::jmp_buf jump{};
};

[[noreturn]] void JumpOut(j_common_ptr info) {
  std::longjmp(reinterpret_cast<ErrorManager*>(info->err)->jump, 1);
}

void Silent(j_common_ptr /*info*/) {}

// Everything a turn holds that needs freeing, owned outside the frame that
// libjpeg's errors jump back to.
struct TurnWork {
  TurnWork() {
    jpeg_std_error(&error.base);
    error.base.error_exit = JumpOut;
    error.base.output_message = Silent;
  }
  ~TurnWork() {
    if (compressing) {
      jpeg_destroy_compress(&destination);
    }
    if (decompressing) {
      jpeg_destroy_decompress(&source);
    }
    std::free(out);
  }
  TurnWork(const TurnWork&) = delete;
  TurnWork& operator=(const TurnWork&) = delete;

  ErrorManager error;
  jpeg_decompress_struct source{};
  jpeg_compress_struct destination{};
  bool decompressing = false;
  bool compressing = false;
  unsigned char* out = nullptr;
  unsigned long out_size = 0;
  std::array<jvirt_barray_ptr, kMaxPlanes> turned_arrays{};
  std::array<Plane, kMaxPlanes> from;
  std::array<Plane, kMaxPlanes> to;
  Motion motion;
  TurnedJpeg result;
};

// The turned plane's blocks, every one moved unchanged.
void MoveBlocks(const Plane& from,
                const Plane& to,
                const Motion& motion,
                const BlockMove& move) {
  const int last_x = to.width / kBlock - 1;
  const int last_y = to.height / kBlock - 1;
  for (int by = 0; by < to.blocks_high; ++by) {
    for (int bx = 0; bx < to.blocks_wide; ++bx) {
      const int x1 = motion.flip_x ? last_x - bx : bx;
      const int y1 = motion.flip_y ? last_y - by : by;
      const JCOEF* in =
          motion.transpose ? from.Block(y1, x1) : from.Block(x1, y1);
      JCOEF* out = to.Block(bx, by);
      for (int k = 0; k < kBlockArea; ++k) {
        out[k] = static_cast<JCOEF>(move.sign[k] * in[move.from[k]]);
      }
    }
  }
}

// The turned plane made again from the source's samples: each block
// decoded without rounding, the samples moved, each new block encoded with
// the plane's own steps. Samples past the picture's edge repeat its last
// ones, as encoders pad.
void ResampleBlocks(const Plane& from, const Plane& to, const Motion& motion) {
  const std::size_t from_stride =
      static_cast<std::size_t>(from.blocks_wide) * kBlock;
  std::vector<float> samples(
      from_stride * static_cast<std::size_t>(from.blocks_high) * kBlock);
  for (int by = 0; by < from.blocks_high; ++by) {
    for (int bx = 0; bx < from.blocks_wide; ++bx) {
      InverseDct(from.Block(bx, by), from.steps,
                 samples.data() +
                     static_cast<std::size_t>(by) * kBlock * from_stride +
                     static_cast<std::size_t>(bx) * kBlock,
                 from_stride);
    }
  }
  const std::size_t to_stride =
      static_cast<std::size_t>(to.blocks_wide) * kBlock;
  const int to_rows = to.blocks_high * kBlock;
  std::vector<float> turned(to_stride * static_cast<std::size_t>(to_rows));
  for (int y = 0; y < to_rows; ++y) {
    const int inside_y = std::min(y, to.height - 1);
    const int y1 = motion.flip_y ? to.height - 1 - inside_y : inside_y;
    float* line = turned.data() + static_cast<std::size_t>(y) * to_stride;
    for (std::size_t x = 0; x < to_stride; ++x) {
      const int inside_x = std::min(static_cast<int>(x), to.width - 1);
      const int x1 = motion.flip_x ? to.width - 1 - inside_x : inside_x;
      const int sx = motion.transpose ? y1 : x1;
      const int sy = motion.transpose ? x1 : y1;
      const float value = samples[static_cast<std::size_t>(sy) * from_stride +
                                  static_cast<std::size_t>(sx)];
      // A decoder shows no more than the sample range.
      line[x] = std::clamp(value, -128.0F, 127.0F);
    }
  }
  for (int by = 0; by < to.blocks_high; ++by) {
    for (int bx = 0; bx < to.blocks_wide; ++bx) {
      ForwardDct(turned.data() +
                     static_cast<std::size_t>(by) * kBlock * to_stride +
                     static_cast<std::size_t>(bx) * kBlock,
                 to_stride, to.steps, to.Block(bx, by));
    }
  }
}

std::uint8_t ToByte(double value) {
  return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

// The turned picture at an eighth of its size from its blocks' means.
void MakeSmall(TurnWork& work) {
  const jpeg_compress_struct& to = work.destination;
  const int planes = to.num_components;
  int max_h = 1;
  int max_v = 1;
  for (int c = 0; c < planes; ++c) {
    max_h = std::max(max_h, to.comp_info[c].h_samp_factor);
    max_v = std::max(max_v, to.comp_info[c].v_samp_factor);
  }
  const int width = static_cast<int>((to.image_width + kBlock - 1) / kBlock);
  const int height = static_cast<int>((to.image_height + kBlock - 1) / kBlock);
  Bytes rgb(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
            3);
  std::size_t at = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      double value[kMaxPlanes] = {};
      for (int c = 0; c < planes; ++c) {
        const Plane& plane = work.to[static_cast<std::size_t>(c)];
        const jpeg_component_info& info = to.comp_info[c];
        const int bx =
            std::min(x * info.h_samp_factor / max_h, plane.blocks_wide - 1);
        const int by =
            std::min(y * info.v_samp_factor / max_v, plane.blocks_high - 1);
        value[c] = plane.Block(bx, by)[0] * plane.steps[0] / 8.0 + kCentre;
      }
      if (planes == 1) {
        rgb[at] = rgb[at + 1] = rgb[at + 2] = ToByte(value[0]);
      } else {
        const double cb = value[1] - kCentre;
        const double cr = value[2] - kCentre;
        rgb[at] = ToByte(value[0] + 1.402 * cr);
        rgb[at + 1] = ToByte(value[0] - 0.344136 * cb - 0.714136 * cr);
        rgb[at + 2] = ToByte(value[0] + 1.772 * cb);
      }
      at += 3;
    }
  }
  work.result.small_width = width;
  work.result.small_height = height;
  work.result.small_rgb = std::move(rgb);
}

// The header read and the turned picture's planes asked for, before the
// coefficients are read (libjpeg lays out all its arrays then). They are not
// zeroed: every block the encoder reads is written (it makes the padding
// blocks of the last row and column itself). False for a picture this turn
// does not handle.
bool PlanAhead(TurnWork& work) {
  jpeg_decompress_struct& source = work.source;
  const bool colour =
      source.jpeg_color_space == JCS_YCbCr && source.num_components == 3;
  const bool grey =
      source.jpeg_color_space == JCS_GRAYSCALE && source.num_components == 1;
  if (source.data_precision != 8 || (!colour && !grey)) {
    return false;
  }
  const bool swap = work.motion.transpose;
  const int width =
      static_cast<int>(swap ? source.image_height : source.image_width);
  const int height =
      static_cast<int>(swap ? source.image_width : source.image_height);
  const int max_h = swap ? source.max_v_samp_factor : source.max_h_samp_factor;
  const int max_v = swap ? source.max_h_samp_factor : source.max_v_samp_factor;
  const int mcus_wide = (width + max_h * kBlock - 1) / (max_h * kBlock);
  const int mcus_high = (height + max_v * kBlock - 1) / (max_v * kBlock);
  for (int c = 0; c < source.num_components; ++c) {
    const jpeg_component_info& info = source.comp_info[c];
    const int h = swap ? info.v_samp_factor : info.h_samp_factor;
    const int v = swap ? info.h_samp_factor : info.v_samp_factor;
    Plane& to = work.to[static_cast<std::size_t>(c)];
    to.width = (width * h + max_h - 1) / max_h;
    to.height = (height * v + max_v - 1) / max_v;
    to.blocks_wide = (to.width + kBlock - 1) / kBlock;
    to.blocks_high = (to.height + kBlock - 1) / kBlock;
    to.array_rows = mcus_high * v;
    work.turned_arrays[static_cast<std::size_t>(c)] =
        source.mem->request_virt_barray(
            reinterpret_cast<j_common_ptr>(&source), JPOOL_IMAGE, FALSE,
            static_cast<JDIMENSION>(mcus_wide * h),
            static_cast<JDIMENSION>(to.array_rows), static_cast<JDIMENSION>(v));
  }
  return true;
}

// The block rows of a plane's array, which stays whole in memory. The
// turned planes' rows are all marked written, the padding rows of their
// last block row too (the encoder reads them; it makes them up itself).
void ReachRows(TurnWork& work,
               jvirt_barray_ptr array,
               Plane& plane,
               int rows,
               bool writable) {
  plane.rows.resize(static_cast<std::size_t>(rows));
  for (int row = 0; row < rows; ++row) {
    plane.rows[static_cast<std::size_t>(row)] =
        work.source.mem->access_virt_barray(
            reinterpret_cast<j_common_ptr>(&work.source), array,
            static_cast<JDIMENSION>(row), 1, writable ? TRUE : FALSE)[0];
  }
}

// The planes that are made again get quantisation steps half the source's
// (none below 1), so that the one requantisation adds half the error it
// would at the source's own: their table is changed where no moved plane
// shares it, else a free table is taken. False when a plane names no table.
bool GiveFinerSteps(jpeg_compress_struct& destination,
                    const std::array<bool, kMaxPlanes>& whole) {
  std::array<int, NUM_QUANT_TBLS> users{};
  std::array<int, NUM_QUANT_TBLS> remade{};
  for (int c = 0; c < destination.num_components; ++c) {
    const int slot = destination.comp_info[c].quant_tbl_no;
    if (slot < 0 || slot >= NUM_QUANT_TBLS ||
        destination.quant_tbl_ptrs[slot] == nullptr) {
      return false;
    }
    ++users[static_cast<std::size_t>(slot)];
    if (!whole[static_cast<std::size_t>(c)]) {
      ++remade[static_cast<std::size_t>(slot)];
    }
  }
  std::array<int, NUM_QUANT_TBLS> finer;
  finer.fill(-1);
  for (int c = 0; c < destination.num_components; ++c) {
    if (whole[static_cast<std::size_t>(c)]) {
      continue;
    }
    const int slot = destination.comp_info[c].quant_tbl_no;
    const auto at = static_cast<std::size_t>(slot);
    if (finer[at] < 0) {
      finer[at] = slot;
      if (users[at] != remade[at]) {
        for (int free = 0; free < NUM_QUANT_TBLS; ++free) {
          if (destination.quant_tbl_ptrs[free] == nullptr) {
            destination.quant_tbl_ptrs[free] = jpeg_alloc_quant_table(
                reinterpret_cast<j_common_ptr>(&destination));
            *destination.quant_tbl_ptrs[free] =
                *destination.quant_tbl_ptrs[slot];
            finer[at] = free;
            break;
          }
        }
      }
      JQUANT_TBL* table = destination.quant_tbl_ptrs[finer[at]];
      if (finer[at] != slot || users[at] == remade[at]) {
        for (UINT16& step : table->quantval) {
          step = static_cast<UINT16>(std::max(1, step / 2));
        }
        table->sent_table = FALSE;
      }
    }
    destination.comp_info[c].quant_tbl_no = finer[at];
  }
  return true;
}

// The turn itself. No object here needs destroying: libjpeg's errors jump
// back to the start of this frame.
bool Turn(TurnWork& work, const Bytes& jpeg) {
  if (setjmp(work.error.jump) != 0) {
    return false;
  }
  jpeg_decompress_struct& source = work.source;
  source.err = &work.error.base;
  jpeg_create_decompress(&source);
  work.decompressing = true;
  source.mem->max_memory_to_use = kMostMemory;
  jpeg_mem_src(&source, jpeg.data(), static_cast<unsigned long>(jpeg.size()));
  if (jpeg_read_header(&source, TRUE) != JPEG_HEADER_OK || !PlanAhead(work)) {
    return false;
  }
  jvirt_barray_ptr* arrays = jpeg_read_coefficients(&source);
  if (arrays == nullptr) {
    return false;
  }
  for (int c = 0; c < source.num_components; ++c) {
    const auto at = static_cast<std::size_t>(c);
    const jpeg_component_info& info = source.comp_info[c];
    Plane& from = work.from[at];
    from.width = static_cast<int>(info.downsampled_width);
    from.height = static_cast<int>(info.downsampled_height);
    from.blocks_wide = static_cast<int>(info.width_in_blocks);
    from.blocks_high = static_cast<int>(info.height_in_blocks);
    if (info.quant_table == nullptr) {
      return false;
    }
    from.steps = info.quant_table->quantval;
    ReachRows(work, arrays[c], from, from.blocks_high, false);
    Plane& to = work.to[at];
    ReachRows(work, work.turned_arrays[at], to, to.array_rows, true);
  }

  jpeg_compress_struct& destination = work.destination;
  destination.err = &work.error.base;
  jpeg_create_compress(&destination);
  work.compressing = true;
  jpeg_copy_critical_parameters(&source, &destination);
  if (work.motion.transpose) {
    std::swap(destination.image_width, destination.image_height);
    for (int c = 0; c < destination.num_components; ++c) {
      std::swap(destination.comp_info[c].h_samp_factor,
                destination.comp_info[c].v_samp_factor);
    }
    // A transposed block's coefficient (v, u) was quantised with the step of
    // (u, v).
    for (JQUANT_TBL* table : destination.quant_tbl_ptrs) {
      if (table != nullptr) {
        for (int v = 0; v < kBlock; ++v) {
          for (int u = v + 1; u < kBlock; ++u) {
            std::swap(table->quantval[v * kBlock + u],
                      table->quantval[u * kBlock + v]);
          }
        }
      }
    }
  }
  std::array<bool, kMaxPlanes> whole{};
  for (int c = 0; c < source.num_components; ++c) {
    const Plane& to = work.to[static_cast<std::size_t>(c)];
    whole[static_cast<std::size_t>(c)] =
        (!work.motion.flip_x || to.width % kBlock == 0) &&
        (!work.motion.flip_y || to.height % kBlock == 0);
  }
  if (!GiveFinerSteps(destination, whole)) {
    return false;
  }
  const BlockMove move = BlockMoveOf(work.motion);
  bool exact = true;
  for (int c = 0; c < source.num_components; ++c) {
    const auto at = static_cast<std::size_t>(c);
    Plane& to = work.to[at];
    to.steps =
        destination.quant_tbl_ptrs[destination.comp_info[c].quant_tbl_no]
            ->quantval;
    if (whole[at]) {
      MoveBlocks(work.from[at], to, work.motion, move);
    } else {
      ResampleBlocks(work.from[at], to, work.motion);
      exact = false;
    }
  }
  work.result.exact = exact;
  MakeSmall(work);

  jpeg_mem_dest(&destination, &work.out, &work.out_size);
  jpeg_write_coefficients(&destination, work.turned_arrays.data());
  jpeg_finish_compress(&destination);
  jpeg_finish_decompress(&source);
  return true;
}

}  // namespace

std::optional<TurnedJpeg> TurnJpeg(const Bytes& jpeg, int turn, bool mirror) {
  TurnWork work;
  work.motion = MotionOf(turn, mirror);
  if (jpeg.empty()) {
    return std::nullopt;
  }
  try {
    if (!Turn(work, jpeg)) {
      return std::nullopt;
    }
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
  work.result.jpeg.assign(work.out, work.out + work.out_size);
  return std::move(work.result);
}

}  // namespace qbpd
