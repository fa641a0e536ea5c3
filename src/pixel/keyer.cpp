// SPDX-License-Identifier: Apache-2.0
// Blends through the exchange, and the two stages of the keyer.

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "marlo110k/dib_copy.h"
#include "marlo110k/dib_key.h"
#include "pixel/blendops.h"
#include "pixel/copy_kernels.h"
#include "pixel/descriptor.h"
#include "pixel/exchange.h"
#include "pixel/geometry.h"

using namespace marlo::pixel;

namespace {

/// By the request's mask operation.
constexpr int32_t kMaskOps[] = {15, 16, 17, 16};
constexpr double kLeastBlur = 0.499;

tZRDIBBLENDOP OperationOf(const tZRDIBBLENDPARAMS& params) noexcept {
  return {params.op,
          params.red,
          params.green,
          params.blue,
          params.alpha,
          params.tolerance,
          params.weight,
          params.weight2,
          params.twoStage,
          static_cast<float>(params.lowThreshold),
          static_cast<float>(params.highThreshold),
          nullptr};
}

void SetKey(tZRDIBBLENDOP* op, double red, double green, double blue) noexcept {
  op->red = static_cast<float>(red);
  op->green = static_cast<float>(green);
  op->blue = static_cast<float>(blue);
}

/// A prepared record that cleans up.
class Record {
 public:
  Record() noexcept = default;
  ~Record() {
    if (prepared_) DibCleanupGenericParam(&record_);
  }
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;
  /// @return false when nothing is visible.
  bool Prepare(const BITMAPINFOHEADER* dstHeader, void* dstBits, const RECT* dstRect, int32_t dstStride,
               const BITMAPINFOHEADER* srcHeader, const void* srcBits, const RECT* srcRect, int32_t srcStride,
               uint32_t flags) noexcept {
    prepared_ = DibPrepareGenericParam(&record_, dstHeader, 0.0, dstBits, dstRect, dstStride, srcHeader, 0.0, srcBits,
                                       srcRect, srcStride, flags) != 0;
    return prepared_;
  }
  const tZRDIBGENERICPARAMS& Get() const noexcept { return record_; }

 private:
  tZRDIBGENERICPARAMS record_ = {};
  bool prepared_ = false;
};

struct FreeDib {
  void operator()(BITMAPINFOHEADER* dib) const noexcept { ZrDibFree(dib, 0); }
};

/// The gray matte: a picture of 8 or 16 bits, and its values as words.
class Matte {
 public:
  HRESULT Make(const tZRDIBGENERICPARAMS& area, const void* srcBits, int32_t srcStride,
               const tZRDIBBLENDPARAMS& params) noexcept {
    if (params.maskOp >= std::size(kMaskOps)) return E_NOTIMPL;
    const bool wide = QualityOf(area.flags) >= 3;
    BITMAPINFOHEADER* made = nullptr;
    HRESULT result = ZrDibAlloc(&made, wide ? ZRPIXEL_GRAY16 : ZRPIXEL_GRAY8, area.dstWidth, area.dstHeight, nullptr, 0,
                                ZRDIB_ALLOC_ZEROED, 0);
    picture_.reset(made);
    if (FAILED(result)) return result;
    values_.reset(new (std::nothrow) uint16_t[Count()]);
    if (!values_) return E_OUTOFMEMORY;
    ExchangeBlend blend{OperationOf(params), true, nullptr};
    blend.op.op = kMaskOps[params.maskOp];
    SetKey(&blend.op, params.keyRed, params.keyGreen, params.keyBlue);
    Record record;
    if (!record.Prepare(made, nullptr, nullptr, 0, area.srcHeader, srcBits, &area.srcRect, srcStride, area.flags)) {
      return S_OK;
    }
    result = BlendThroughExchange(record.Get(), blend);
    if (SUCCEEDED(result)) ReadValues(wide);
    return result;
  }

  HRESULT Blur(double radius) noexcept {
    if (!(radius > kLeastBlur)) return S_OK;
    const int32_t reach = Truncate(std::min(radius, 32767.0) + 0.5);
    std::unique_ptr<uint16_t[]> between(new (std::nothrow) uint16_t[Count()]);
    if (!between) return E_OUTOFMEMORY;
    for (int32_t row = 0; row < Height(); ++row) {
      BlurLine(between.get() + int64_t{row} * Width(), values_.get() + int64_t{row} * Width(), Width(), 1, reach);
    }
    for (int32_t column = 0; column < Width(); ++column) {
      BlurLine(values_.get() + column, between.get() + column, Height(), Width(), reach);
    }
    WriteValues();
    return S_OK;
  }

  const uint16_t* Values() const noexcept { return values_.get(); }
  const BITMAPINFOHEADER* Picture() const noexcept { return picture_.get(); }

 private:
  int32_t Width() const noexcept { return picture_->biWidth; }
  int32_t Height() const noexcept { return picture_->biHeight; }
  size_t Count() const noexcept { return static_cast<size_t>(Width()) * static_cast<size_t>(Height()); }
  bool IsWide() const noexcept { return picture_->biBitCount == 16; }

  /// The mean of `reach` values to each side, edges repeated; values stand `step` apart.
  static void BlurLine(uint16_t* to, const uint16_t* from, int32_t count, int64_t step, int32_t reach) noexcept {
    const auto at = [&](int64_t index) { return from[std::clamp<int64_t>(index, 0, count - 1) * step]; };
    const int64_t taps = 2 * int64_t{reach} + 1;
    int64_t sum = 0;
    for (int64_t index = -int64_t{reach}; index <= reach; ++index) sum += at(index);
    for (int32_t index = 0; index < count; ++index) {
      to[index * step] = static_cast<uint16_t>((sum + taps / 2) / taps);
      sum += at(int64_t{index} + reach + 1) - at(int64_t{index} - reach);
    }
  }

  uint8_t* Row(int32_t row) const noexcept {
    return PixelsOf(*picture_, static_cast<void*>(nullptr)) + int64_t{row} * StrideOf(*picture_, 0);
  }
  void ReadValues(bool wide) noexcept {
    for (int32_t row = 0; row < Height(); ++row) {
      uint16_t* const values = values_.get() + int64_t{row} * Width();
      if (wide) {
        std::memcpy(values, Row(row), static_cast<size_t>(Width()) * 2);
      } else {
        for (int32_t column = 0; column < Width(); ++column) {
          values[column] = static_cast<uint16_t>(Row(row)[column] * 257);
        }
      }
    }
  }
  void WriteValues() noexcept {
    for (int32_t row = 0; row < Height(); ++row) {
      const uint16_t* const values = values_.get() + int64_t{row} * Width();
      if (IsWide()) {
        std::memcpy(Row(row), values, static_cast<size_t>(Width()) * 2);
      } else {
        for (int32_t column = 0; column < Width(); ++column)
          Row(row)[column] = static_cast<uint8_t>(values[column] >> 8);
      }
    }
  }

  std::unique_ptr<BITMAPINFOHEADER, FreeDib> picture_;
  std::unique_ptr<uint16_t[]> values_;
};

}  // namespace

HRESULT ZrDibBlend(const BITMAPINFOHEADER* dstHeader, void* dstBits, const RECT* dstRect, int32_t dstStride,
                   const BITMAPINFOHEADER* srcHeader, const void* srcBits, const RECT* srcRect, int32_t srcStride,
                   const tZRDIBBLENDPARAMS* blendParams, uint32_t flags) noexcept {
  if (!dstHeader || !srcHeader || !blendParams) return E_POINTER;
  RECT dst, src;
  if ((flags & ZRDIB_SUBPIXEL) != 0) {
    if (dstRect) dst = ToPixels(*dstRect);
    if (srcRect) src = ToPixels(*srcRect);
    flags &= ~uint32_t{ZRDIB_SUBPIXEL};
    dstRect = dstRect ? &dst : nullptr;
    srcRect = srcRect ? &src : nullptr;
  }
  Record record;
  if (!record.Prepare(dstHeader, dstBits, dstRect, dstStride, srcHeader, srcBits, srcRect, srcStride, flags)) {
    return S_OK;
  }
  const tZRDIBGENERICPARAMS& area = record.Get();
  ExchangeBlend blend{OperationOf(*blendParams), false, nullptr};
  if (blendParams->twoStage != 1) return BlendThroughExchange(area, blend);

  Matte matte;
  HRESULT result = matte.Make(area, srcBits, srcStride, *blendParams);
  if (SUCCEEDED(result)) result = matte.Blur(blendParams->blurRadius);
  if (FAILED(result)) return result;
  if (blendParams->output == 1) {
    return ZrDibCopy(dstHeader, dstBits, &area.dstRect, dstStride, matte.Picture(), nullptr, nullptr, 0, flags, 0, 0);
  }
  blend.op.op = blendParams->matteAction == 0 ? kUnmixKey : kMoveByWeight;
  SetKey(&blend.op, blendParams->matteRed, blendParams->matteGreen, blendParams->matteBlue);
  blend.mask = matte.Values();
  return BlendThroughExchange(area, blend);
}
