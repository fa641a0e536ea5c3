// SPDX-License-Identifier: Apache-2.0
// Packed 4:2:2 in bytes to 8-bit colour and back.

#include <cstdlib>

#include "pixel/yuv_rows.h"

namespace marlo::pixel {

namespace {

constexpr int64_t kSampleBytes = 2;

bool HoldsRow(int32_t stride, int64_t bytes) noexcept { return std::abs(int64_t{stride}) >= bytes; }
bool IsPairedPicture(int32_t width, int32_t height) noexcept { return width > 0 && height > 0 && width % 2 == 0; }

/// Pixels of three bytes pass through a stretch of 4-byte ones.
constexpr int32_t kStretchPairs = 64;

void TripletsFromUyvy(uint8_t* triplets, const uint8_t* packed, int32_t pairs, const DecodeMatrix& matrix) {
  uint8_t pixels[kStretchPairs * 8];
  for (int32_t done = 0; done < pairs; done += kStretchPairs) {
    const int32_t count = std::min(kStretchPairs, pairs - done);
    YuvRowKernels().fromUyvy(pixels, packed + int64_t{done} * 4, count, matrix);
    for (int32_t index = 0; index < count * 2; ++index, triplets += 3) {
      for (int32_t channel = 0; channel < 3; ++channel) triplets[channel] = pixels[index * 4 + channel];
    }
  }
}

void UyvyFromTriplets(uint8_t* packed, const uint8_t* triplets, int32_t pairs, const PackedEncodeMatrix& matrix) {
  uint8_t pixels[kStretchPairs * 8] = {};
  for (int32_t done = 0; done < pairs; done += kStretchPairs) {
    const int32_t count = std::min(kStretchPairs, pairs - done);
    for (int32_t index = 0; index < count * 2; ++index, triplets += 3) {
      for (int32_t channel = 0; channel < 3; ++channel) pixels[index * 4 + channel] = triplets[channel];
    }
    YuvRowKernels().toUyvy(packed + int64_t{done} * 4, pixels, count, matrix);
  }
}

template <typename Row>
HRESULT FromUyvy(void* dst, const void* src, int32_t dstStride, int32_t width, int32_t height, int32_t colorSpace,
                 int32_t pixelBytes, const Row& row) noexcept {
  if (!dst || !src) return E_POINTER;
  if (!IsPairedPicture(width, height) || !HoldsRow(dstStride, int64_t{width} * pixelBytes)) return E_INVALIDARG;
  const DecodeMatrix& matrix = PackedDecode(PackedSpaceOf(colorSpace, width, height));
  for (int64_t y = 0; y < height; ++y) {
    row(static_cast<uint8_t*>(dst) + y * dstStride, static_cast<const uint8_t*>(src) + y * width * kSampleBytes,
        width / 2, matrix);
  }
  return S_OK;
}

template <typename Row>
HRESULT ToUyvy(void* dst, const void* src, int32_t srcStride, int32_t dstStride, int32_t width, int32_t height,
               int32_t colorSpace, int32_t pixelBytes, const Row& row) noexcept {
  if (!dst || !src) return E_POINTER;
  if (!IsPairedPicture(width, height) || !HoldsRow(srcStride, int64_t{width} * pixelBytes) ||
      !HoldsRow(dstStride, width * kSampleBytes)) {
    return E_INVALIDARG;
  }
  const PackedEncodeMatrix& matrix = PackedEncode(PackedSpaceOf(colorSpace, width, height));
  for (int64_t y = 0; y < height; ++y) {
    row(static_cast<uint8_t*>(dst) + y * dstStride, static_cast<const uint8_t*>(src) + y * srcStride, width / 2,
        matrix);
  }
  return S_OK;
}

}  // namespace

}  // namespace marlo::pixel

using namespace marlo::pixel;

HRESULT ZrUYVY2RGBA(void* dst, const void* src, int32_t dstStride, int32_t width, int32_t height,
                    int32_t colorSpace) noexcept {
  return FromUyvy(dst, src, dstStride, width, height, colorSpace, 4, YuvRowKernels().fromUyvy);
}

HRESULT ZrUYVY2RGB(void* dst, const void* src, int32_t dstStride, int32_t width, int32_t height,
                   int32_t colorSpace) noexcept {
  return FromUyvy(dst, src, dstStride, width, height, colorSpace, 3, TripletsFromUyvy);
}

HRESULT ZrRGBA2UYVY(void* dst, const void* src, int32_t srcStride, int32_t dstStride, int32_t width, int32_t height,
                    int32_t colorSpace) noexcept {
  return ToUyvy(dst, src, srcStride, dstStride, width, height, colorSpace, 4, YuvRowKernels().toUyvy);
}

HRESULT ZrRGB2UYVY(void* dst, const void* src, int32_t srcStride, int32_t dstStride, int32_t width, int32_t height,
                   int32_t colorSpace) noexcept {
  return ToUyvy(dst, src, srcStride, dstStride, width, height, colorSpace, 3, UyvyFromTriplets);
}
