// SPDX-License-Identifier: Apache-2.0
// Video pictures for tests: each ends (or starts) at an unreadable page.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "marlo110k/yuv.h"
#include "pixel/testing/picture.h"
#include "pixel/testing/yuv_reference.h"

namespace testing_support {

inline constexpr uint32_t kLayouts[] = {ZRDIB_FOURCC_UYVY, ZRDIB_FOURCC_YUYV, ZRDIB_FOURCC_I420, ZRDIB_FOURCC_V210};

inline BITMAPINFOHEADER Header(uint32_t compression, int32_t width, int32_t height) {
  BITMAPINFOHEADER header = {};
  header.biSize = sizeof(header);
  header.biWidth = width;
  header.biHeight = height;
  header.biCompression = compression;
  return header;
}

/// A video picture that ends at an unreadable page.
struct Video {
  Video(uint32_t compression, int32_t width, int32_t height, bool atStart = false)
      : header(Header(compression, width, height)), bytes(ZrYUVImageBytesAndOffsets(&header, planes), atStart) {}
  void Randomize(Random& random) {
    for (size_t index = 0; index < bytes.size(); ++index) bytes.data()[index] = static_cast<uint8_t>(random.Bits());
  }
  const uint8_t* U() const { return bytes.data() + planes[1]; }
  const uint8_t* V() const { return bytes.data() + planes[3]; }
  /// U, Y, V of a pixel, in codes of the layout.
  std::array<int32_t, 3> At(int32_t x, int32_t row, bool fields) const {
    const uint8_t* line = bytes.data() + int64_t{row} * planes[0];
    const auto word = [&](int32_t sample) {
      uint32_t value;
      std::memcpy(&value, line + sample / 3 * 4, 4);
      return static_cast<int32_t>(value >> (sample % 3 * 10) & 1023);
    };
    const int32_t pair = x / 2, chroma = ReferenceLine(row, header.biHeight, fields);
    switch (header.biCompression) {
      case ZRDIB_FOURCC_I420:
        return {U()[chroma * static_cast<int32_t>(planes[2]) + pair], line[x],
                V()[chroma * static_cast<int32_t>(planes[4]) + pair]};
      case ZRDIB_FOURCC_V210:
        return {word(pair * 4), word(x * 2 + 1), word(pair * 4 + 2)};
      case ZRDIB_FOURCC_YUYV:
        return {line[pair * 4 + 1], line[x * 2], line[pair * 4 + 3]};
      default:
        return {line[pair * 4], line[x * 2 + 1], line[pair * 4 + 2]};
    }
  }
  BITMAPINFOHEADER header;
  uint32_t planes[5];
  GuardedBytes bytes;
};

}  // namespace testing_support
