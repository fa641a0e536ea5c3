// SPDX-License-Identifier: Apache-2.0
// What each pixel type means, as a table of channels: an exchange written without any of the library's code.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "marlo110k/dib_copy.h"

namespace testing_support {

/// A working pixel in words: blue, green, red, alpha.
struct Words {
  uint32_t c[4];
};

inline uint64_t ReadBits(const uint8_t* row, int64_t firstBit, int32_t bits) {
  if (bits < 8) return row[firstBit / 8] >> (8 - bits - firstBit % 8) & ((1u << bits) - 1);
  uint64_t value = 0;
  for (int32_t byte = 0; byte < bits / 8; ++byte) value |= uint64_t{row[firstBit / 8 + byte]} << (8 * byte);
  return value;
}

inline void WriteBits(uint8_t* row, int64_t firstBit, int32_t bits, uint64_t value) {
  for (int32_t bit = 0; bit < bits; ++bit) {
    // Below a byte the leftmost pixel is the most significant; above, bytes run upward.
    const int64_t at = bits < 8 ? firstBit + bits - 1 - bit : firstBit + bit;
    const int shift = bits < 8 ? static_cast<int>(7 - at % 8) : static_cast<int>(at % 8);
    const uint8_t mask = static_cast<uint8_t>(1 << shift);
    row[at / 8] = static_cast<uint8_t>((row[at / 8] & ~mask) | ((value >> bit & 1) << shift));
  }
}

inline float FloatAt(const uint8_t* row, int64_t index) {
  float value;
  std::memcpy(&value, row + index * 4, 4);
  return value;
}

inline uint32_t WordFromFloat(double value) {
  if (value < 0) return 0;
  if (value > 1) return 65535;
  return static_cast<uint32_t>(value * 65535.0 + 0.5);
}

/// Pixel `x` of a row as words.
inline Words ReferenceRead(int32_t type, const uint8_t* row, int64_t x, bool by257, const RGBQUAD* palette) {
  const auto gray = [](uint32_t g) { return Words{{g, g, g, 65535}}; };
  const auto byte = [&](uint64_t v) { return static_cast<uint32_t>(v) * (by257 ? 257 : 256); };
  const auto entry = [&](uint64_t index) {
    const RGBQUAD& q = palette[index];
    return Words{{q.rgbBlue * 256u, q.rgbGreen * 256u, q.rgbRed * 256u, 65535}};
  };
  switch (type) {
    case 16:
    case 17:
      return gray(ReadBits(row, x, 1) ? 65535 : 0);
    case 18:
      return gray(static_cast<uint32_t>(ReadBits(row, x * 2, 2) * 0x5555));
    case 19:
      return gray(static_cast<uint32_t>(ReadBits(row, x * 4, 4) * 0x1111));
    case 20:
      return gray(byte(row[x]));
    case 21:
      return gray(static_cast<uint32_t>(ReadBits(row, x * 16, 16)));
    case 22:
      return gray(WordFromFloat(FloatAt(row, x)));
    case 23:
      return entry(ReadBits(row, x * 4, 4));
    case 24:
      return entry(row[x]);
    case 25: {
      const uint32_t p = static_cast<uint32_t>(ReadBits(row, x * 16, 16));
      return Words{{(p << 11) & 65535, ((p & 0xFFE0) * 64) & 65535, ((p & 0xFC00) * 2) & 65535, 65535}};
    }
    case 26: {
      const uint32_t p = static_cast<uint32_t>(ReadBits(row, x * 16, 16));
      return Words{{(p << 11) & 65535, ((p & 0xFFE0) * 32) & 65535, p & 0xF800, 65535}};
    }
    case 27:
      return Words{{byte(row[x * 3]), byte(row[x * 3 + 1]), byte(row[x * 3 + 2]), 65535}};
    case 28:
      return Words{{byte(row[x * 4]), byte(row[x * 4 + 1]), byte(row[x * 4 + 2]), 65535}};
    case 29:
      return Words{{byte(row[x * 4]), byte(row[x * 4 + 1]), byte(row[x * 4 + 2]), byte(row[x * 4 + 3])}};
    case 30: {
      const uint32_t p = static_cast<uint32_t>(ReadBits(row, x * 32, 32));
      return Words{{(p & 1023) * 64, (p >> 10 & 1023) * 64, (p >> 20 & 1023) * 64, (p >> 30) * 0x5555}};
    }
    case 31: {
      const auto word = [&](int64_t index) { return static_cast<uint32_t>(ReadBits(row, (x * 4 + index) * 16, 16)); };
      return Words{{word(0), word(1), word(2), word(3)}};
    }
    default: {
      const auto word = [&](int64_t index) { return WordFromFloat(FloatAt(row, x * 4 + index)); };
      return Words{{word(0), word(1), word(2), word(3)}};
    }
  }
}

/// Stores words as pixel `x` of a row.
inline void ReferenceWrite(int32_t type, uint8_t* row, int64_t x, const Words& w, const uint8_t* quantizer) {
  const uint32_t sum = w.c[0] + w.c[1] + w.c[2];
  const uint32_t mean = sum / 3;
  const auto index = [&] { return quantizer[(w.c[2] >> 11) * 1024 + (w.c[1] >> 11) * 32 + (w.c[0] >> 11)]; };
  const auto storeFloat = [&](int64_t at, uint32_t word) {
    const float value = static_cast<float>(word) * 1.5259022e-5f;
    std::memcpy(row + at * 4, &value, 4);
  };
  switch (type) {
    case 16:
    case 17:
      return WriteBits(row, x, 1, sum >= 0x17FFF);
    case 18:
      return WriteBits(row, x * 2, 2, mean >> 14);
    case 19:
      return WriteBits(row, x * 4, 4, mean >> 12);
    case 20:
      return WriteBits(row, x * 8, 8, mean >> 8);
    case 21:
      return WriteBits(row, x * 16, 16, mean);
    case 22:
      return storeFloat(x, mean);
    case 23:
      return WriteBits(row, x * 4, 4, index());
    case 24:
      return WriteBits(row, x * 8, 8, index());
    case 25:
      return WriteBits(row, x * 16, 16, (w.c[2] >> 11) * 1024 + (w.c[1] >> 11) * 32 + (w.c[0] >> 11));
    case 26:
      return WriteBits(row, x * 16, 16, (w.c[2] >> 11) * 2048 + (w.c[1] >> 10) * 32 + (w.c[0] >> 11));
    case 27:
    case 28:
    case 29:
      for (int64_t c = 0; c < (type == 27 ? 3 : 4); ++c) {
        row[x * (type == 27 ? 3 : 4) + c] = static_cast<uint8_t>(w.c[c] >> 8);
      }
      return;
    case 30:
      return WriteBits(row, x * 32, 32,
                       (w.c[0] >> 6) | (w.c[1] >> 6) << 10 | (w.c[2] >> 6) << 20 | uint64_t{w.c[3] >> 14} << 30);
    case 31:
      for (int64_t c = 0; c < 4; ++c) WriteBits(row, (x * 4 + c) * 16, 16, w.c[c]);
      return;
    default:
      for (int64_t c = 0; c < 4; ++c) storeFloat(x * 4 + c, w.c[c]);
  }
}

}  // namespace testing_support
