// SPDX-License-Identifier: Apache-2.0
// Colour pictures by header to video, with ordered dither.

#include "pixel/byte_float.h"
#include "pixel/gamma.h"
#include "pixel/kernel_level.h"
#include "pixel/v210.h"
#include "pixel/yuv_layout.h"
#include "pixel/yuv_picture.h"
#include "pixel/yuv_rows.h"
#include "platform/parallel/rows.h"

namespace marlo::pixel {

namespace {

constexpr int32_t kCurveSteps = 257;
/// Rows are worked in stretches whose codes stay in cache: whole periods of the dither in luma and in chroma, and
/// whole groups of six pixels of the 10-bit layout.
constexpr int32_t kStretchPixels = 192;
constexpr int32_t kStretchPairs = kStretchPixels / 2;

using Source = ColorPicture<const uint8_t>;
using Target = YuvPicture<uint8_t>;

struct Codes {
  uint16_t luma[kStretchPixels];
  uint16_t u[kStretchPairs];
  uint16_t v[kStretchPairs];
};

double DitherOf(int32_t column, int32_t row) noexcept { return kDitherMatrix[row & 3][column & 3] / 16.0; }

/// Ten-bit codes are eight-bit ones times 4, and so are their bounds but for the upper one.
struct Depth {
  double factor, low, high;
  /// The epsilon, added before the cut, carries products that end just below a code. NaN gives the lowest code.
  uint16_t Code(double value, double dither) const noexcept {
    const double dithered = value + (dither + kCodeEpsilon);
    if (!(dithered > low)) return static_cast<uint16_t>(low);
    return static_cast<uint16_t>(std::min(dithered, high));
  }
};
constexpr Depth kEightBit = {1.0, 1.0, 254.0};
constexpr Depth kTenBit = {4.0, 4.0, 1019.0};

double Dot(const double (&row)[3], const double (&channels)[3]) noexcept {
  return row[0] * channels[0] + row[1] * channels[1] + row[2] * channels[2];
}

/// Bytes to codes of either depth; eight bits run on the row kernels.
class ByteEncoder {
 public:
  static constexpr int32_t kPixelBytes = 4;
  ByteEncoder(ColorSpace space, bool tenBit) noexcept
      : matrix_(DecimalEncode(space)), tenBit_(tenBit), rows_(YuvRowKernels()) {}

  void Luma(uint16_t* codes, const uint8_t* pixels, int32_t count, int32_t row) const noexcept {
    if (!tenBit_) return rows_.dither8Luma(codes, pixels, count, matrix_, row);
    for (int32_t x = 0; x < count; ++x, pixels += kPixelBytes) {
      // Ten-thousandths of a code, in which everything is whole.
      const int32_t exact =
          4 * Weigh(matrix_.luma, pixels[0], pixels[1], pixels[2]) + kDitherMatrix[row & 3][x & 3] * (kDecimalOne / 16);
      codes[x] = static_cast<uint16_t>(std::clamp(exact / kDecimalOne, 4, 1019));
    }
  }
  void Chroma(uint16_t* u, uint16_t* v, const uint8_t* first, const uint8_t* second, int32_t pairs,
              int32_t line) const noexcept {
    if (!tenBit_) return rows_.dither8Chroma(u, v, first, second, pairs, matrix_, line);
    for (int32_t pair = 0; pair < pairs; ++pair, first += 2 * kPixelBytes) {
      const int32_t blue = first[0] + first[4], green = first[1] + first[5], red = first[2] + first[6];
      const double gain = 4.0 * kByteChromaGain2 / kDecimalOne;
      const double dither = 512.0 + DitherOf(pair, line);
      u[pair] = kTenBit.Code(Weigh(matrix_.u, blue, green, red) * gain, dither);
      v[pair] = kTenBit.Code(Weigh(matrix_.v, blue, green, red) * gain, dither);
    }
  }

 private:
  static int32_t Weigh(const int16_t (&row)[3], int32_t blue, int32_t green, int32_t red) noexcept {
    return row[0] * blue + row[1] * green + row[2] * red;
  }

  const DecimalMatrix& matrix_;
  bool tenBit_;
  const YuvRows& rows_;
};

/// Floats to codes, through a curve where there is one.
class FloatEncoder {
 public:
  static constexpr int32_t kPixelBytes = 16;
  FloatEncoder(ColorSpace space, bool tenBit, bool fullRange, const GammaTable* curve) noexcept
      : coefficients_(CoefficientsOf(space)), depth_(tenBit ? kTenBit : kEightBit), curve_(curve) {
    lumaOffset_ = fullRange ? 16.0 : 0.0;
    lumaScale_ = fullRange ? 219.0 : 255.0;
    chromaHalfGain_ = fullRange ? 112.0 : 127.5 / kChromaToLuma;
  }

  void Luma(uint16_t* codes, const uint8_t* pixels, int32_t count, int32_t row) const noexcept {
    for (int32_t x = 0; x < count; ++x, pixels += kPixelBytes) {
      double bgr[3] = {};
      Add(bgr, pixels);
      const double value = Dot(coefficients_.luma, bgr) * lumaScale_ + lumaOffset_;
      codes[x] = depth_.Code(value * depth_.factor, DitherOf(x, row));
    }
  }
  void Chroma(uint16_t* u, uint16_t* v, const uint8_t* first, const uint8_t* second, int32_t pairs,
              int32_t line) const noexcept {
    const double gain = chromaHalfGain_ * depth_.factor * (second ? 0.5 : 1.0);
    for (int32_t pair = 0; pair < pairs; ++pair) {
      double bgr[3] = {};
      for (int32_t pixel = 2 * pair; pixel < 2 * pair + 2; ++pixel) {
        Add(bgr, first + pixel * kPixelBytes);
        if (second) Add(bgr, second + pixel * kPixelBytes);
      }
      const double dither = 128.0 * depth_.factor + DitherOf(pair, line);
      u[pair] = depth_.Code(Dot(coefficients_.u, bgr) * gain, dither);
      v[pair] = depth_.Code(Dot(coefficients_.v, bgr) * gain, dither);
    }
  }

 private:
  void Add(double (&bgr)[3], const uint8_t* pixel) const noexcept {
    const float* const channels = static_cast<const float*>(static_cast<const void*>(pixel));
    for (int channel = 0; channel < 3; ++channel) {
      bgr[channel] += static_cast<double>(curve_ ? curve_->Float(channels[channel]) : channels[channel]);
    }
  }

  const Coefficients& coefficients_;
  Depth depth_;
  const GammaTable* curve_;
  double lumaOffset_, lumaScale_, chromaHalfGain_;
};

void Narrow(uint8_t* to, const uint16_t* codes, int32_t count) noexcept {
  for (int32_t index = 0; index < count; ++index) to[index] = static_cast<uint8_t>(codes[index]);
}

/// Stores codes of whole pairs in a packed row from pair `firstPair` on.
void Pack(const Target& target, int32_t row, int32_t firstPair, const Codes& codes, int32_t pairs) noexcept {
  if (target.layout == YuvLayout::kV210) {
    V210Writer writer(target.Luma(row) + V210Bytes(firstPair));
    for (int32_t pair = 0; pair < pairs; ++pair) {
      writer.Put(codes.u[pair]);
      writer.Put(codes.luma[2 * pair]);
      writer.Put(codes.v[pair]);
      writer.Put(codes.luma[2 * pair + 1]);
    }
    return;
  }
  uint8_t* packed = target.Luma(row) + int64_t{firstPair} * 4;
  const int luma = target.layout == YuvLayout::kUyvy ? 1 : 0;
  for (int32_t pair = 0; pair < pairs; ++pair, packed += 4) {
    packed[luma] = static_cast<uint8_t>(codes.luma[2 * pair]);
    packed[luma + 2] = static_cast<uint8_t>(codes.luma[2 * pair + 1]);
    packed[1 - luma] = static_cast<uint8_t>(codes.u[pair]);
    packed[3 - luma] = static_cast<uint8_t>(codes.v[pair]);
  }
}

template <typename Encoder>
void EncodePacked(const Target& target, const Source& source, const Encoder& encoder) noexcept {
  plat::ParallelRows(target.height, RowsPerThread(target.width), [&](int32_t row, int32_t end) {
    Codes codes;
    for (; row < end; ++row) {
      const uint8_t* const pixels = source.Row(row);
      for (int32_t pair = 0; pair < target.width / 2; pair += kStretchPairs) {
        const int32_t pairs = std::min(kStretchPairs, target.width / 2 - pair);
        const uint8_t* const from = pixels + int64_t{pair} * 2 * Encoder::kPixelBytes;
        encoder.Luma(codes.luma, from, pairs * 2, row);
        encoder.Chroma(codes.u, codes.v, from, nullptr, pairs, row);
        Pack(target, row, pair, codes, pairs);
      }
    }
  });
}

/// A chroma line and its two luma rows at a time.
template <typename Encoder>
void EncodePlanar(const Target& target, const Source& source, const Encoder& encoder, bool interlaced) noexcept {
  const int32_t linesPerThread = std::max(RowsPerThread(target.width) / 2, 1);
  plat::ParallelRows(target.height / 2, linesPerThread, [&](int32_t line, int32_t end) {
    Codes codes;
    for (; line < end; ++line) {
      const RowPair rows = RowsOfChromaLine(line, target.height, interlaced);
      for (int32_t pair = 0; pair < target.width / 2; pair += kStretchPairs) {
        const int32_t pairs = std::min(kStretchPairs, target.width / 2 - pair);
        const int64_t at = int64_t{pair} * 2 * Encoder::kPixelBytes;
        for (int32_t row : {rows.first, rows.second}) {
          encoder.Luma(codes.luma, source.Row(row) + at, pairs * 2, row);
          Narrow(target.Luma(row) + int64_t{pair} * 2, codes.luma, pairs * 2);
        }
        encoder.Chroma(codes.u, codes.v, source.Row(rows.first) + at, source.Row(rows.second) + at, pairs, line);
        Narrow(target.U(line) + pair, codes.u, pairs);
        Narrow(target.V(line) + pair, codes.v, pairs);
      }
    }
  });
}

template <typename Encoder>
void Encode(const Target& target, const Source& source, const Encoder& encoder, bool interlaced) noexcept {
  if (target.layout == YuvLayout::kI420) return EncodePlanar(target, source, encoder, interlaced);
  EncodePacked(target, source, encoder);
}

}  // namespace

}  // namespace marlo::pixel

using namespace marlo::pixel;

HRESULT ZrYUV_RGBToYUV(const BITMAPINFOHEADER* dstHeader, const tZRYUVPARAMS* params, void* dstBits,
                       const uint32_t dstPlanes[5], const BITMAPINFOHEADER* srcHeader, double srcGamma,
                       const void* srcBits, int32_t srcStride, int32_t scale, uint32_t /*flags*/) noexcept {
  if (!dstHeader || !params || !dstBits || !srcHeader || !srcBits) return E_POINTER;
  const int32_t type = ZrGetPixelType(srcHeader);
  const bool fromFloats = type == ZRPIXEL_RGBA128F;
  if (LayoutOf(*dstHeader) == YuvLayout::kOther || scale != 0 || !(fromFloats || IsByteKernelType(type))) return E_FAIL;
  Target target;
  HRESULT result = target.Open(*dstHeader, static_cast<uint8_t*>(dstBits), dstPlanes);
  if (FAILED(result)) return result;
  if (srcHeader->biWidth != target.width || srcHeader->biHeight != target.height) return E_INVALIDARG;
  Source source;
  result = source.Open(*srcHeader, static_cast<const uint8_t*>(srcBits), srcStride,
                       fromFloats ? FloatEncoder::kPixelBytes : ByteEncoder::kPixelBytes);
  if (FAILED(result)) return result;

  const ColorSpace space = SpaceOf(params->colorSpace, target.width, target.height);
  const bool tenBit = target.layout == YuvLayout::kV210;
  const bool interlaced = IsInterlaced(params->fieldMode);
  if (!fromFloats) {
    Encode(target, source, ByteEncoder(space, tenBit), interlaced);
    return S_OK;
  }
  const double ratio = GammaRatio(params->gamma, srcGamma);
  GammaTable table(ratio);
  // Without memory for the table there is no curve.
  const bool curved = ChangesGamma(ratio) && table.MakeFloats(kCurveSteps);
  Encode(target, source, FloatEncoder(space, tenBit, srcGamma != 0.0, curved ? &table : nullptr), interlaced);
  return S_OK;
}
