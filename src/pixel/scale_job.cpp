// SPDX-License-Identifier: Apache-2.0
// The frame around the scalers' row kernels: tables, lines, edges, and rows over threads.

#include "pixel/scale_job.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <type_traits>

#include "pixel/kernel_level.h"
#include "pixel/scale_rows.h"
#include "platform/base/memory.h"
#include "platform/parallel/rows.h"

namespace marlo::pixel {

namespace {

struct BlockDeleter {
  void operator()(void* block) const noexcept { plat::FreeBlock(block); }
};
using Block = std::unique_ptr<void, BlockDeleter>;

/// Hands out pieces of one block; without a block it only measures.
class Carver {
 public:
  explicit Carver(void* block) noexcept : block_(static_cast<uint8_t*>(block)) {}
  template <typename T>
  T* Take(size_t count) noexcept {
    T* piece = block_ ? reinterpret_cast<T*>(block_ + bytes_) : nullptr;
    bytes_ += (count * sizeof(T) + 63) / 64 * 64;
    return piece;
  }
  size_t Bytes() const noexcept { return bytes_; }

 private:
  uint8_t* block_;
  size_t bytes_ = 0;
};

/// 8-bit pixels and their lines.
struct Bytes {
  using Channel = uint8_t;
  using Line = int16_t;
  static constexpr int32_t kPixelBytes = 4;
  static uint8_t Blend(uint8_t below, uint8_t value, int32_t coverage) noexcept {
    const int32_t alpha = (coverage * 255 / kOne) & 255;
    const int32_t product = (value - below) * alpha + 128;
    return static_cast<uint8_t>(std::clamp(below + ((product + (product >> 8)) >> 8), 0, 255));
  }
};

/// Float pixels.
struct Floats {
  using Channel = float;
  using Line = float;
  static constexpr int32_t kPixelBytes = 16;
  static float Blend(float below, float value, int32_t coverage) noexcept {
    return below + (value - below) * (static_cast<float>(coverage) * (1.0f / 16384.0f));
  }
};

template <typename Pixel>
class Run {
 public:
  explicit Run(const ScaleJob& job) noexcept : job_(job) {}

  HRESULT Execute() noexcept {
    if (!BuildTables()) return E_OUTOFMEMORY;
    std::atomic<bool> refused{false};
    const int32_t width = std::max(job_.gridX.count, lineColumns_);
    plat::ParallelRows(job_.gridY.count, RowsPerThread(width), [&](int32_t first, int32_t end) {
      Block block;
      Scratch scratch;
      if (!MakeScratch(&block, &scratch)) {
        refused.store(true, std::memory_order_relaxed);
        return;
      }
      for (int32_t row = first; row < end; ++row) Row(row, scratch);
    });
    return refused.load(std::memory_order_relaxed) ? E_OUTOFMEMORY : S_OK;
  }

 private:
  using Channel = typename Pixel::Channel;
  using Line = typename Pixel::Line;
  static constexpr bool kIsFloat = std::is_same_v<Pixel, Floats>;
  static constexpr int32_t kChannels = 4;

  struct Scratch {
    Line* line;
    uint32_t* sums;
    uint8_t* gathered;
    Channel* row;
  };

  bool XIsBox() const noexcept { return job_.gridX.filter == Filter::kBox; }
  bool YIsBox() const noexcept { return job_.gridY.filter == Filter::kBox; }
  /// 8-bit boxes in both axes are one kernel, since their corners are cut together.
  bool BoxBoth() const noexcept { return !kIsFloat && XIsBox() && YIsBox(); }

  void CarveAxis(Carver* carver, const Grid& grid, TapTable* taps, Box** boxes) noexcept {
    const size_t count = static_cast<size_t>(grid.count);
    if (grid.filter == Filter::kBox) {
      *boxes = carver->Take<Box>(count);
      return;
    }
    taps->first = carver->Take<int32_t>(count);
    if constexpr (kIsFloat) {
      taps->weights = carver->Take<float[4]>(count);
    } else {
      taps->weights14 = carver->Take<int16_t[4]>(count);
    }
  }

  size_t CarveTables(void* block) noexcept {
    Carver carver(block);
    CarveAxis(&carver, job_.gridX, &tapsX_, &boxesX_);
    CarveAxis(&carver, job_.gridY, &tapsY_, &boxesY_);
    if (IsSparse()) columns_ = carver.Take<int32_t>(static_cast<size_t>(lineColumns_));
    return carver.Bytes();
  }

  /// Steps so long that most columns lie between the taps: only the taps' columns are worked on.
  bool IsSparse() const noexcept { return !XIsBox() && job_.gridX.step > int64_t{job_.gridX.TapCount()} * kOne; }

  bool BuildTables() noexcept {
    const int32_t tapCount = job_.gridX.TapCount();
    if (IsSparse()) lineColumns_ = job_.gridX.count * tapCount;
    tables_.reset(plat::AllocateZeroed(CarveTables(nullptr)));
    if (!tables_) return false;
    CarveTables(tables_.get());
    if (YIsBox()) {
      job_.gridY.Fill(boxesY_);
    } else {
      job_.gridY.Fill(tapsY_);
    }
    const int32_t count = job_.gridX.count;
    if (XIsBox()) {
      job_.gridX.Fill(boxesX_);
      SetLine(boxesX_[0].first, boxesX_[count - 1].last);
      for (int32_t index = 0; index < count; ++index) {
        boxesX_[index].first -= lineFirst_;
        boxesX_[index].last -= lineFirst_;
      }
      return true;
    }
    job_.gridX.Fill(tapsX_);
    if (columns_) {
      for (int32_t index = 0; index < lineColumns_; ++index) {
        columns_[index] =
            std::clamp(tapsX_.first[index / tapCount] + index % tapCount, job_.gridX.srcFirst, job_.gridX.srcLast);
      }
      for (int32_t index = 0; index < count; ++index) tapsX_.first[index] = index * tapCount;
      return true;
    }
    SetLine(tapsX_.first[0], tapsX_.first[count - 1] + tapCount - 1);
    for (int32_t index = 0; index < count; ++index) tapsX_.first[index] -= lineFirst_;
    return true;
  }

  void SetLine(int32_t first, int32_t last) noexcept {
    lineFirst_ = first;
    lineColumns_ = last - first + 1;
  }

  bool MakeScratch(Block* block, Scratch* scratch) const noexcept {
    const auto carve = [&](void* memory) {
      Carver carver(memory);
      const size_t columns = static_cast<size_t>(lineColumns_);
      if (BoxBoth()) {
        scratch->sums = carver.Take<uint32_t>(columns * kChannels * 2);
      } else {
        scratch->line = carver.Take<Line>(columns * kChannels);
      }
      if (columns_) scratch->gathered = carver.Take<uint8_t>(columns * Pixel::kPixelBytes * 4);
      scratch->row = carver.Take<Channel>(static_cast<size_t>(job_.gridX.count) * kChannels);
      return carver.Bytes();
    };
    *scratch = {};
    block->reset(plat::AllocateZeroed(carve(nullptr)));
    if (!*block) return false;
    carve(block->get());
    return true;
  }

  const uint8_t* SourceRow(int32_t row) const noexcept { return job_.srcTop + int64_t{row} * job_.srcStride; }

  BoxRows RowsOf(const Box& box, int32_t firstColumn) const noexcept {
    return {SourceRow(box.first) + int64_t{firstColumn} * Pixel::kPixelBytes, job_.srcStride, box.last - box.first + 1,
            box.firstWeight, box.lastWeight};
  }

  /// Fills the line of columns for destination row `row`.
  void Vertical(int32_t row, const Scratch& scratch) const noexcept {
    // Columns past the readable ones repeat the edge.
    const int32_t first = columns_ ? 0 : std::clamp(lineFirst_, job_.gridX.srcFirst, job_.gridX.srcLast);
    const int32_t last = columns_ ? lineColumns_ - 1
                                  : std::clamp(lineFirst_ + lineColumns_ - 1, job_.gridX.srcFirst, job_.gridX.srcLast);
    const int32_t pixels = last - first + 1;
    const int32_t padded = columns_ ? 0 : std::max(first - lineFirst_, 0);
    Line* const line = scratch.line + std::min(padded, lineColumns_ - 1) * kChannels;
    if (YIsBox()) {
      const BoxRows rows = RowsOf(boxesY_[row], first);
      if constexpr (kIsFloat) {
        floatKernels_.verticalBox(line, rows, job_.gridY.step, pixels);
      } else {
        byteKernels_.verticalBox(line, rows, job_.gridY.step, pixels);
      }
    } else {
      const uint8_t* rows[4] = {};
      for (int32_t tap = 0; tap < job_.gridY.TapCount(); ++tap) {
        rows[tap] = SourceRow(std::clamp(tapsY_.first[row] + tap, job_.gridY.srcFirst, job_.gridY.srcLast)) +
                    int64_t{first} * Pixel::kPixelBytes;
        if (columns_) rows[tap] = Gather(rows[tap], scratch, tap);
      }
      if constexpr (kIsFloat) {
        floatKernels_.verticalTaps(line, rows, tapsY_.weights[row], job_.gridY.TapCount(), pixels);
      } else if (job_.gridY.filter == Filter::kCubic) {
        byteKernels_.verticalCubic(line, rows, tapsY_.weights14[row], pixels);
      } else {
        byteKernels_.verticalLinear(line, rows, tapsY_.weights14[row], pixels);
      }
    }
    if (columns_) return;
    for (Line* pad = scratch.line; pad < line; pad += kChannels) std::copy_n(line, kChannels, pad);
    Line* const end = scratch.line + lineColumns_ * kChannels;
    for (Line* pad = line + pixels * kChannels; pad < end; pad += kChannels) {
      std::copy_n(pad - kChannels, kChannels, pad);
    }
  }

  const uint8_t* Gather(const uint8_t* row, const Scratch& scratch, int32_t tap) const noexcept {
    uint8_t* const out = scratch.gathered + int64_t{tap} * lineColumns_ * Pixel::kPixelBytes;
    for (int32_t index = 0; index < lineColumns_; ++index) {
      std::memcpy(out + int64_t{index} * Pixel::kPixelBytes, row + int64_t{columns_[index]} * Pixel::kPixelBytes,
                  Pixel::kPixelBytes);
    }
    return out;
  }

  void Horizontal(Channel* out, const Scratch& scratch) const noexcept {
    const int32_t count = job_.gridX.count;
    if constexpr (kIsFloat) {
      if (XIsBox()) {
        floatKernels_.horizontalBox(out, scratch.line, boxesX_, job_.gridX.step, count);
      } else {
        floatKernels_.horizontalTaps(out, scratch.line, tapsX_, job_.gridX.TapCount(), count);
      }
      if (job_.clampFloats) {
        for (int32_t index = 0; index < count * kChannels; ++index) out[index] = std::clamp(out[index], 0.0f, 1.0f);
      }
    } else if (XIsBox()) {
      byteKernels_.horizontalBox(out, scratch.line, boxesX_, job_.gridX.step, count);
    } else if (job_.gridX.filter == Filter::kCubic) {
      byteKernels_.horizontalCubic(out, scratch.line, tapsX_, count);
    } else {
      byteKernels_.horizontalLinear(out, scratch.line, tapsX_, count);
    }
  }

  void Render(Channel* out, int32_t row, const Scratch& scratch) const noexcept {
    if constexpr (!kIsFloat) {
      if (BoxBoth()) {
        // The area in 14 bits; a sum has at most 255 of it.
        const int64_t area = int64_t{job_.gridX.step} * job_.gridY.step / kOne;
        const bool wide = area >= int64_t{UINT32_MAX} / 256;
        (wide ? byteKernels_.boxBothWide : byteKernels_.boxBoth)(out, scratch.sums, RowsOf(boxesY_[row], lineFirst_),
                                                                 boxesX_, area, job_.gridX.count, lineColumns_);
        return;
      }
    }
    Vertical(row, scratch);
    Horizontal(out, scratch);
  }

  void Row(int32_t row, const Scratch& scratch) const noexcept {
    uint8_t* const target = job_.dstTop + (int64_t{job_.coverY.first} + row) * job_.dstStride +
                            int64_t{job_.coverX.first} * Pixel::kPixelBytes;
    Channel* const out = reinterpret_cast<Channel*>(target);
    const int32_t coverageY = job_.blendEdges ? job_.coverY.At(row) : kOne;
    const int32_t last = job_.gridX.count - 1;
    if (coverageY != kOne) {
      Render(scratch.row, row, scratch);
      for (int32_t pixel = 0; pixel <= last; ++pixel) {
        BlendPixel(out + pixel * kChannels, scratch.row + pixel * kChannels,
                   ScaledBy(job_.coverX.At(pixel), coverageY));
      }
      return;
    }
    Channel below[2][kChannels];
    std::copy_n(out, kChannels, below[0]);
    std::copy_n(out + last * kChannels, kChannels, below[1]);
    Render(out, row, scratch);
    if (!job_.blendEdges) return;
    BlendOver(out, below[0], job_.coverX.At(0));
    if (last > 0) BlendOver(out + last * kChannels, below[1], job_.coverX.At(last));
  }

  static void BlendPixel(Channel* below, const Channel* value, int32_t coverage) noexcept {
    for (int32_t channel = 0; channel < kChannels; ++channel) {
      below[channel] = coverage == kOne ? value[channel] : Pixel::Blend(below[channel], value[channel], coverage);
    }
  }
  /// The pixel was written before its former value could be blended.
  static void BlendOver(Channel* pixel, const Channel* below, int32_t coverage) noexcept {
    if (coverage == kOne) return;
    for (int32_t channel = 0; channel < kChannels; ++channel) {
      pixel[channel] = Pixel::Blend(below[channel], pixel[channel], coverage);
    }
  }

  const ScaleJob& job_;
  const ByteRowKernels& byteKernels_ = ByteKernels(UseAvx2());
  const FloatRowKernels& floatKernels_ = FloatKernels(UseAvx2());
  Block tables_;
  TapTable tapsX_ = {};
  TapTable tapsY_ = {};
  Box* boxesX_ = nullptr;
  Box* boxesY_ = nullptr;
  int32_t* columns_ = nullptr;  ///< The source column of each line column, when sparse.
  int32_t lineFirst_ = 0;       ///< The source column of the line's first, when dense.
  int32_t lineColumns_ = 0;
};

}  // namespace

HRESULT RunScaleJob(const ScaleJob& job) noexcept {
  return job.pixelBytes == Floats::kPixelBytes ? Run<Floats>(job).Execute() : Run<Bytes>(job).Execute();
}

}  // namespace marlo::pixel
