// SPDX-License-Identifier: Apache-2.0
// Transfer functions between display and linear light, on whole pictures.

#include <algorithm>
#include <cmath>
#include <cstring>

#include "marlo110k/dib_copy.h"
#include "pixel/byte_float.h"
#include "pixel/descriptor.h"
#include "pixel/geometry.h"
#include "pixel/kernel_level.h"
#include "platform/parallel/rows.h"

using namespace marlo::pixel;

namespace {

constexpr double kByteStep = 0.00392156862745098;
constexpr double kDecode22 = 2.2222222222222223;
constexpr double kEncode22 = 0.45;

/// Mirrored below 0, where a power has no value.
double Power(double x, double exponent) noexcept { return x < 0.0 ? -std::pow(-x, exponent) : std::pow(x, exponent); }

/// A linear part up to a limit, then a power segment with an offset.
struct Segmented {
  double slope;
  double decodeLimit;
  double encodeLimit;
  double offset;
  double Decode(double x) const noexcept {
    return x <= decodeLimit ? x / slope : std::pow((x + offset) / (1.0 + offset), kDecode22);
  }
  double Encode(double x) const noexcept {
    return x <= encodeLimit ? x * slope : (1.0 + offset) * std::pow(x, kEncode22) - offset;
  }
};

constexpr Segmented kBt709 = {4.5, 0.081, 0.018, 0.099};
constexpr Segmented kSmpte240 = {4.0, 0.0912, 0.0228, 0.1115};

/// One of the six functions, in both directions.
class Transfer {
 public:
  Transfer(int32_t transfer, double gamma) noexcept
      : transfer_(transfer), exponent_(gamma != 0.0 ? 1.0 / gamma : 1.0) {}

  bool IsKnown() const noexcept { return transfer_ >= ZRTRANSFER_GAMMA22 && transfer_ <= ZRTRANSFER_POWER; }

  double Decode(double x) const noexcept {
    switch (transfer_) {
      case ZRTRANSFER_GAMMA22:
        return Power(x, kDecode22);
      case ZRTRANSFER_GAMMA28:
        return Power(x, 2.8);
      case ZRTRANSFER_BT709:
        return kBt709.Decode(x);
      case ZRTRANSFER_SMPTE240M:
        return kSmpte240.Decode(x);
      case ZRTRANSFER_POWER:
        return Power(x, exponent_);
      default:
        return x;
    }
  }

  double Encode(double x) const noexcept {
    switch (transfer_) {
      case ZRTRANSFER_GAMMA22:
        return Power(x, kEncode22);
      case ZRTRANSFER_GAMMA28:
        return Power(x, 0.35714285714285715);
      case ZRTRANSFER_BT709:
        return kBt709.Encode(x);
      case ZRTRANSFER_SMPTE240M:
        return kSmpte240.Encode(x);
      case ZRTRANSFER_POWER:
        return Power(x, exponent_);
      default:
        return x;
    }
  }

 private:
  int32_t transfer_;
  double exponent_;
};

uint8_t* FirstOf(const BITMAPINFOHEADER& header, const void* bits, const RECT& rect, int32_t stride,
                 int32_t pixelBytes) noexcept {
  return const_cast<uint8_t*>(PixelsOf(header, bits)) + (int64_t{header.biHeight} - rect.bottom) * stride +
         int64_t{rect.left} * pixelBytes;
}

}  // namespace

HRESULT ZrDibLinearize_ZRRGBAFLOAT_From_RGBA(const BITMAPINFOHEADER* dstHeader, void* dstBits, const RECT* dstRect,
                                             int32_t dstStride, const BITMAPINFOHEADER* srcHeader, const void* srcBits,
                                             const RECT* srcRect, int32_t srcStride, int32_t transfer,
                                             double gamma) noexcept {
  if (!dstHeader || !srcHeader) return E_POINTER;
  const Transfer function(transfer, gamma);
  if (ZrGetPixelType(dstHeader) != ZRPIXEL_RGBA128F || !IsByteKernelType(ZrGetPixelType(srcHeader)) ||
      !function.IsKnown()) {
    return E_INVALIDARG;
  }
  RECT dst, src;
  ZrDibPrepareRects(dstHeader, &dst, dstRect, srcHeader, &src, srcRect, nullptr);
  if (Width(dst) != Width(src) || Height(dst) != Height(src)) return E_INVALIDARG;
  const RECT dstSeen = Intersection(dst, BoundsOf(*dstHeader));
  const RECT srcSeen = Intersection(src, BoundsOf(*srcHeader));
  if (Width(dstSeen) != Width(dst) || Width(srcSeen) != Width(src)) return E_INVALIDARG;
  if (!HasArea(dst)) return S_OK;

  float table[256];
  for (int32_t index = 0; index < 256; ++index) table[index] = static_cast<float>(function.Decode(index * kByteStep));
  const int32_t dstRow = StrideOf(*dstHeader, dstStride);
  const int32_t srcRow = StrideOf(*srcHeader, srcStride);
  uint8_t* const dstFirst = FirstOf(*dstHeader, dstBits, dst, dstRow, 16);
  const uint8_t* const srcFirst = FirstOf(*srcHeader, srcBits, src, srcRow, 4);
  const int64_t channels = Width(dst) * 4;
  plat::ParallelRows(Saturate(Height(dst)), RowsPerThread(Saturate(Width(dst))), [&](int32_t first, int32_t end) {
    for (int32_t row = first; row < end; ++row) {
      float* const to = reinterpret_cast<float*>(dstFirst + int64_t{row} * dstRow);
      const uint8_t* const from = srcFirst + int64_t{row} * srcRow;
      for (int64_t index = 0; index < channels; ++index) to[index] = table[from[index]];
    }
  });
  return S_OK;
}

HRESULT ZrDibApplyTransferFunc_ZRRGBAFLOAT(const BITMAPINFOHEADER* header, void* bits, const RECT* rect, int32_t stride,
                                           int32_t transfer, double gamma, int32_t quantized) noexcept {
  if (!header) return E_POINTER;
  const Transfer function(transfer, gamma);
  if (ZrGetPixelType(header) != ZRPIXEL_RGBA128F || !function.IsKnown()) return E_INVALIDARG;
  const RECT bounds = BoundsOf(*header);
  const RECT area = Intersection(rect ? *rect : bounds, bounds);
  if (!HasArea(area)) return S_OK;

  float table[256];
  if (quantized) {
    for (int32_t index = 0; index < 256; ++index) table[index] = static_cast<float>(function.Encode(index * kByteStep));
  }
  const int32_t rowStride = StrideOf(*header, stride);
  uint8_t* const firstRow = FirstOf(*header, bits, area, rowStride, 16);
  const int64_t channels = Width(area) * 4;
  plat::ParallelRows(Saturate(Height(area)), RowsPerThread(Saturate(Width(area))), [&](int32_t first, int32_t end) {
    for (int32_t row = first; row < end; ++row) {
      float* const values = reinterpret_cast<float*>(firstRow + int64_t{row} * rowStride);
      for (int64_t index = 0; index < channels; ++index) {
        values[index] = quantized ? table[TruncatedByte(values[index])]
                                  : static_cast<float>(function.Encode(static_cast<double>(values[index])));
      }
    }
  });
  return S_OK;
}
