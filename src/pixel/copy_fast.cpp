// SPDX-License-Identifier: Apache-2.0
// Unscaled copies that need no exchange: blocks, bytes to floats and back, 24 to 32 bits.

#include <algorithm>
#include <cstring>

#include "pixel/byte_float.h"
#include "pixel/copy_kernels.h"
#include "pixel/descriptor.h"
#include "pixel/exchange.h"
#include "pixel/gamma.h"
#include "pixel/kernel_level.h"
#include "platform/parallel/rows.h"

namespace marlo::pixel {

namespace {

constexpr int32_t kToByteSteps = 256;
constexpr int32_t kToByteDirectSteps = 4096;
constexpr int32_t kFloatSteps = 2048;
constexpr int32_t kFromByteSteps = 256;

/// Runs row(destination, source, y) for all rows of the record; y counts from the first row in memory.
template <typename Row>
void ForRows(const tZRDIBGENERICPARAMS& record, const Row& row) noexcept {
  plat::ParallelRows(record.dstHeight, RowsPerThread(record.dstWidth), [&](int32_t first, int32_t end) {
    for (int32_t y = first; y < end; ++y) {
      row(record.dstFirst + int64_t{y} * record.dstStride, record.srcFirst + int64_t{y} * record.srcStride, y);
    }
  });
}

const float* Floats(const uint8_t* row) noexcept { return reinterpret_cast<const float*>(row); }
float* Floats(uint8_t* row) noexcept { return reinterpret_cast<float*>(row); }

void CopyBlock(const tZRDIBGENERICPARAMS& record, int32_t bits) noexcept {
  const int64_t rowBytes = int64_t{bits} / 8 * record.dstWidth;
  if (record.dstStride == rowBytes && record.srcStride == rowBytes) {
    std::memmove(record.dstFirst, record.srcFirst,
                 static_cast<size_t>(rowBytes) * static_cast<size_t>(record.dstHeight));
    return;
  }
  ForRows(record,
          [&](uint8_t* dst, const uint8_t* src, int32_t) { std::memmove(dst, src, static_cast<size_t>(rowBytes)); });
}

/// Float channels of `kTo` bytes a pixel through a function of the value and the pixel's place.
template <int32_t kTo, typename Convert>
void FloatsToBytesBy(const tZRDIBGENERICPARAMS& record, const Convert& convert) noexcept {
  ForRows(record, [&](uint8_t* dst, const uint8_t* src, int32_t y) {
    const float* from = Floats(src);
    for (int32_t x = 0; x < record.dstWidth; ++x) {
      for (int32_t channel = 0; channel < kTo; ++channel) {
        dst[x * kTo + channel] = convert(from[x * 4 + channel], x, y);
      }
    }
  });
}

template <int32_t kTo>
HRESULT FloatsToBytes(const tZRDIBGENERICPARAMS& record, double ratio) noexcept {
  const bool dither = QualityOf(record.flags) >= 3;
  if (!ChangesGamma(ratio)) {
    if constexpr (kTo == 4) {
      const ByteFloatKernels& kernels = ByteFloat(UseAvx2());
      ForRows(record, [&](uint8_t* dst, const uint8_t* src, int32_t y) {
        (dither ? kernels.toBytesDithered : kernels.toBytes)(dst, Floats(src), record.dstWidth, y);
      });
    } else if (dither) {
      FloatsToBytesBy<kTo>(record, [](float value, int32_t x, int32_t y) { return DitheredByte(value, x, y); });
    } else {
      FloatsToBytesBy<kTo>(record, [](float value, int32_t, int32_t) { return TruncatedByte(value); });
    }
    return S_OK;
  }
  GammaTable table(ratio);
  if (dither) {
    if (!table.MakeFloats(kToByteSteps)) return E_OUTOFMEMORY;
    FloatsToBytesBy<kTo>(record,
                         [&](float value, int32_t x, int32_t y) { return DitheredByte(table.Float(value), x, y); });
  } else {
    if (!table.MakeBytes(kToByteDirectSteps)) return E_OUTOFMEMORY;
    FloatsToBytesBy<kTo>(record, [&](float value, int32_t, int32_t) { return table.Byte(value); });
  }
  return S_OK;
}

HRESULT FloatsToFloats(const tZRDIBGENERICPARAMS& record, double ratio) noexcept {
  GammaTable table(ratio);
  if (!table.MakeFloats(kFloatSteps)) return E_OUTOFMEMORY;
  ForRows(record, [&](uint8_t* dst, const uint8_t* src, int32_t) {
    const float* from = Floats(src);
    float* const to = Floats(dst);
    for (int32_t index = 0; index < record.dstWidth * 4; ++index) to[index] = table.Float(from[index]);
  });
  return S_OK;
}

/// Bytes are the table's own steps: entry k is the curve at k / 255.
template <int32_t kFrom>
HRESULT BytesToFloats(const tZRDIBGENERICPARAMS& record, double ratio) noexcept {
  GammaTable table(ratio);
  const float* values = ByteFractions();
  if (ChangesGamma(ratio)) {
    if (!table.MakeFloats(kFromByteSteps)) return E_OUTOFMEMORY;
    values = table.floats();
  } else if (kFrom == 4) {
    const ByteFloatKernels& kernels = ByteFloat(UseAvx2());
    ForRows(record,
            [&](uint8_t* dst, const uint8_t* src, int32_t) { kernels.toFloats(Floats(dst), src, record.dstWidth); });
    return S_OK;
  }
  ForRows(record, [&](uint8_t* dst, const uint8_t* src, int32_t) {
    float* const to = Floats(dst);
    for (int32_t x = 0; x < record.dstWidth; ++x) {
      for (int32_t channel = 0; channel < kFrom; ++channel) to[x * 4 + channel] = values[src[x * kFrom + channel]];
      if (kFrom == 3) to[x * 4 + 3] = 1.0f;
    }
  });
  return S_OK;
}

void Expand24(const tZRDIBGENERICPARAMS& record) noexcept {
  ForRows(record, [&](uint8_t* dst, const uint8_t* src, int32_t) {
    for (int32_t x = 0; x < record.dstWidth; ++x) {
      dst[x * 4] = src[x * 3];
      dst[x * 4 + 1] = src[x * 3 + 1];
      dst[x * 4 + 2] = src[x * 3 + 2];
      dst[x * 4 + 3] = 255;
    }
  });
}

}  // namespace

HRESULT CopyFast(const tZRDIBGENERICPARAMS& record) noexcept {
  const int32_t src = ZrGetPixelType(record.srcHeader);
  const int32_t dst = ZrGetPixelType(record.dstHeader);
  const double ratio = GammaRatio(record.dstGamma, record.srcGamma);
  if (src == ZRPIXEL_RGBA128F) {
    if (IsByteKernelType(dst)) return FloatsToBytes<4>(record, ratio);
    if (dst == ZRPIXEL_RGB24) return FloatsToBytes<3>(record, ratio);
    if (dst == ZRPIXEL_RGBA128F && ChangesGamma(ratio)) return FloatsToFloats(record, ratio);
  }
  if (dst == ZRPIXEL_RGBA128F) {
    if (IsByteKernelType(src)) return BytesToFloats<4>(record, ratio);
    if (src == ZRPIXEL_RGB24) return BytesToFloats<3>(record, ratio);
  }
  if (src == ZRPIXEL_RGB24 && IsByteKernelType(dst)) {
    Expand24(record);
    return S_OK;
  }
  // A palette picture's indices mean other colours in the other picture's table.
  if (src == dst && BitsOf(src) > 8) {
    CopyBlock(record, BitsOf(src));
    return S_OK;
  }
  return S_FALSE;
}

}  // namespace marlo::pixel
