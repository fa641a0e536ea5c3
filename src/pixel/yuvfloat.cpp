// SPDX-License-Identifier: Apache-2.0
// Video pictures by header to float pixels and to 4-byte ones, whole and reduced.

#include <cmath>

#include "pixel/gamma.h"
#include "pixel/kernel_level.h"
#include "pixel/v210.h"
#include "pixel/yuv_layout.h"
#include "pixel/yuv_picture.h"
#include "pixel/yuv_rows.h"
#include "platform/parallel/rows.h"

namespace marlo::pixel {

namespace {

constexpr int32_t kBytePixel = 4;
constexpr int32_t kFloatPixel = 16;
constexpr int32_t kCurveSteps = 257;

using Source = YuvPicture<const uint8_t>;
using Target = ColorPicture<uint8_t>;

/// Samples of two pixels in a row, as codes.
struct Pair {
  int32_t u, v;
  int32_t luma[2];
};

/// Walks the pairs of a row.
class PairReader {
 public:
  PairReader(const Source& source, int32_t row, bool interlaced) noexcept
      : layout_(source.layout), luma_(source.Luma(row)), words_(luma_) {
    if (layout_ != YuvLayout::kI420) return;
    const int32_t line = ChromaLineOfRow(row, source.height, interlaced);
    u_ = source.U(line);
    v_ = source.V(line);
  }
  Pair Next() noexcept {
    Pair pair;
    switch (layout_) {
      case YuvLayout::kI420:
        pair = {*u_++, *v_++, {luma_[0], luma_[1]}};
        luma_ += 2;
        break;
      case YuvLayout::kV210:
        pair.u = static_cast<int32_t>(words_.Next());
        pair.luma[0] = static_cast<int32_t>(words_.Next());
        pair.v = static_cast<int32_t>(words_.Next());
        pair.luma[1] = static_cast<int32_t>(words_.Next());
        break;
      case YuvLayout::kYuyv:
        pair = {luma_[1], luma_[3], {luma_[0], luma_[2]}};
        luma_ += 4;
        break;
      default:
        pair = {luma_[0], luma_[2], {luma_[1], luma_[3]}};
        luma_ += 4;
        break;
    }
    return pair;
  }
  void Skip(int32_t packedPairs) noexcept { luma_ += int64_t{packedPairs} * 4; }

 private:
  YuvLayout layout_;
  const uint8_t* luma_;
  V210Reader words_;
  const uint8_t* u_ = nullptr;
  const uint8_t* v_ = nullptr;
};

/// Codes to colour values: an offset and two scales around the published coefficients.
struct Scaling {
  double lumaOffset, lumaScale;
  double chromaCenter, chromaScale;
  const Coefficients* coefficients;

  void Apply(const Pair& pair, int index, double (&bgr)[3]) const noexcept {
    const double luma = (pair.luma[index] - lumaOffset) * lumaScale;
    const double u = (pair.u - chromaCenter) * chromaScale;
    const double v = (pair.v - chromaCenter) * chromaScale;
    bgr[0] = luma + u * coefficients->uToBlue;
    bgr[1] = luma + u * coefficients->uToGreen + v * coefficients->vToGreen;
    bgr[2] = luma + v * coefficients->vToRed;
  }
  /// For codes of ten bits.
  Scaling TenBit() const noexcept {
    return {lumaOffset * 4.0, lumaScale * 0.25, chromaCenter * 4.0, chromaScale * 0.25, coefficients};
  }
};

Scaling FloatScaling(bool fullRange, ColorSpace space) noexcept {
  if (fullRange) return {16.0, 1.0 / 219.0, 128.0, 1.0 / 224.0, &CoefficientsOf(space)};
  return {0.0, 1.0 / 255.0, 128.0, kChromaToLuma / 255.0, &CoefficientsOf(space)};
}

Scaling ByteScaling(ColorSpace space) noexcept { return {0.0, 1.0, 128.0, kChromaToLuma, &CoefficientsOf(space)}; }

void StoreBytes(uint8_t* pixel, const double (&bgr)[3]) noexcept {
  for (int channel = 0; channel < 3; ++channel) {
    pixel[channel] = static_cast<uint8_t>(std::clamp(std::floor(bgr[channel] + 0.5 + kCodeEpsilon), 0.0, 255.0));
  }
  pixel[3] = 255;
}

void ToFloats(const Target& target, const Source& source, bool interlaced, const Scaling& scaling,
              const GammaTable* curve) noexcept {
  plat::ParallelRows(source.height, RowsPerThread(source.width), [&](int32_t row, int32_t end) {
    for (; row < end; ++row) {
      PairReader reader(source, row, interlaced);
      float* pixel = static_cast<float*>(static_cast<void*>(target.Row(row)));
      for (int32_t pairs = source.width / 2; pairs > 0; --pairs) {
        const Pair pair = reader.Next();
        for (int index = 0; index < 2; ++index, pixel += 4) {
          double bgr[3];
          scaling.Apply(pair, index, bgr);
          for (int channel = 0; channel < 3; ++channel) {
            const float value = static_cast<float>(bgr[channel]);
            pixel[channel] = curve ? curve->Float(value) : value;
          }
          pixel[3] = 1.0f;
        }
      }
    }
  });
}

void V210ToBytes(const Target& target, const Source& source, const Scaling& scaling) noexcept {
  plat::ParallelRows(source.height, RowsPerThread(source.width), [&](int32_t row, int32_t end) {
    for (; row < end; ++row) {
      PairReader reader(source, row, false);
      uint8_t* pixel = target.Row(row);
      for (int32_t pairs = source.width / 2; pairs > 0; --pairs) {
        const Pair pair = reader.Next();
        for (int index = 0; index < 2; ++index, pixel += kBytePixel) {
          double bgr[3];
          scaling.Apply(pair, index, bgr);
          StoreBytes(pixel, bgr);
        }
      }
    }
  });
}

/// Every 2^scale-th pixel of every 2^scale-th row; what lies between is left out.
void DecimatePacked(const Target& target, const Source& source, int32_t scale, const Scaling& scaling) noexcept {
  const int32_t width = source.width >> scale;
  const int32_t pairStep = 1 << (scale - 1);
  plat::ParallelRows(source.height >> scale, RowsPerThread(width), [&](int32_t row, int32_t end) {
    for (; row < end; ++row) {
      PairReader reader(source, row << scale, false);
      uint8_t* pixel = target.Row(row);
      for (int32_t column = 0; column < width; ++column, pixel += kBytePixel) {
        double bgr[3];
        scaling.Apply(reader.Next(), 0, bgr);
        reader.Skip(pairStep - 1);
        StoreBytes(pixel, bgr);
      }
    }
  });
}

void PackedToBytes(const Target& target, const Source& source, ColorSpace space) noexcept {
  const YuvRows& rows = YuvRowKernels();
  const auto row = source.layout == YuvLayout::kUyvy ? rows.fromUyvy : rows.fromYuyv;
  for (int32_t y = 0; y < source.height; ++y) row(target.Row(y), source.Luma(y), source.width / 2, PackedDecode(space));
}

using PlanarConversion = HRESULT (*)(int32_t, int32_t, void*, int32_t, const void*, int32_t, const void*, int32_t,
                                     const void*, int32_t, int32_t, int32_t) noexcept;

HRESULT PlanarToBytes(const Target& target, const Source& source, const tZRYUVPARAMS& params, int32_t scale) noexcept {
  static constexpr PlanarConversion kByScale[] = {ZrYUV420ToRGBA, ZrYUV420ToRGBA_Half, ZrYUV420ToRGBA_Quarter};
  if (std::max({source.lumaRowBytes, source.uRowBytes, source.vRowBytes}) > INT32_MAX) return E_INVALIDARG;
  return kByScale[scale](source.width, source.height, target.top, static_cast<int32_t>(target.stepBytes), source.first,
                         static_cast<int32_t>(source.lumaRowBytes), source.u, static_cast<int32_t>(source.uRowBytes),
                         source.v, static_cast<int32_t>(source.vRowBytes), params.fieldMode, params.colorSpace);
}

/// Scales that a layout has conversions for.
bool IsConvertible(YuvLayout layout, int32_t scale, bool toFloats) noexcept {
  if (layout == YuvLayout::kOther || scale < 0) return false;
  if (toFloats || layout == YuvLayout::kV210) return scale == 0;
  return scale <= (layout == YuvLayout::kI420 ? 2 : 3);
}

}  // namespace

}  // namespace marlo::pixel

using namespace marlo::pixel;

HRESULT ZrYUV_YUVToRGB(const BITMAPINFOHEADER* dstHeader, double gamma, void* dstBits, int32_t dstStride,
                       const BITMAPINFOHEADER* srcHeader, const tZRYUVPARAMS* params, const void* srcBits,
                       const uint32_t planes[5], int32_t scale, uint32_t /*flags*/) noexcept {
  if (!dstHeader || !dstBits || !srcHeader || !params || !srcBits) return E_POINTER;
  const bool toFloats = ZrGetPixelType(dstHeader) == ZRPIXEL_RGBA128F;
  const YuvLayout layout = LayoutOf(*srcHeader);
  if (!IsConvertible(layout, scale, toFloats)) return E_FAIL;
  Source source;
  HRESULT result = source.Open(*srcHeader, static_cast<const uint8_t*>(srcBits), planes);
  if (FAILED(result)) return result;
  if (dstHeader->biWidth != source.width >> scale || dstHeader->biHeight != source.height >> scale) return E_INVALIDARG;
  Target target;
  result = target.Open(*dstHeader, static_cast<uint8_t*>(dstBits), dstStride, toFloats ? kFloatPixel : kBytePixel);
  if (FAILED(result)) return result;

  const ColorSpace space = SpaceOf(params->colorSpace, source.width, source.height);
  if (toFloats) {
    const double ratio = GammaRatio(gamma, params->gamma);
    GammaTable table(ratio);
    // Without memory for the table there is no curve.
    const bool curved = ChangesGamma(ratio) && table.MakeFloats(kCurveSteps);
    const Scaling scaling = FloatScaling(gamma != 0.0, space);
    ToFloats(target, source, IsInterlaced(params->fieldMode), layout == YuvLayout::kV210 ? scaling.TenBit() : scaling,
             curved ? &table : nullptr);
    return S_OK;
  }
  if (layout == YuvLayout::kI420) return PlanarToBytes(target, source, *params, scale);
  if (layout == YuvLayout::kV210) {
    V210ToBytes(target, source, ByteScaling(space).TenBit());
  } else if (scale == 0) {
    PackedToBytes(target, source, space);
  } else {
    DecimatePacked(target, source, scale, ByteScaling(space));
  }
  return S_OK;
}
