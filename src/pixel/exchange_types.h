// SPDX-License-Identifier: Apache-2.0
// One traits type a pixel type: how its pixels turn into working pixels and back.
//
// `Words(at, bit, exchange)` reads a word pixel, `Put(at, bit, pixel, exchange)` writes one; the types that have a
// byte or a float form have overloads for it. `bit` counts the bits of the byte before the pixel.
#pragma once

#include <cstdint>
#include <cstring>

#include "marlo110k/dib_copy.h"
#include "pixel/gamma.h"

namespace marlo::pixel {

inline constexpr float kWordToFloat = 1.5259022e-5f;
inline constexpr uint16_t kWordFull = 0xFFFF;
inline constexpr double kHalfUp = 0.5;  ///< Before truncation: half and more go up.

template <typename T>
T LoadAs(const uint8_t* at) noexcept {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}
template <typename T>
void StoreAs(uint8_t* at, T value) noexcept {
  std::memcpy(at, &value, sizeof value);
}

/// A byte as a word: by 257 when the copy interpolates, else by 256.
inline uint16_t Expanded(uint8_t value, const tZRDIBXCHGPARAMS& exchange) noexcept {
  return static_cast<uint16_t>(value * (exchange.flags & ZRDIB_INTERPOLATE ? 257 : 256));
}

inline tZRPIXEL64 GrayWords(uint32_t gray) noexcept {
  const uint16_t word = static_cast<uint16_t>(gray);
  return {word, word, word, kWordFull};
}

/// The plain mean of the three colour channels.
inline uint32_t MeanOf(const tZRPIXEL64& pixel) noexcept { return (uint32_t{pixel.b} + pixel.g + pixel.r) / 3; }

/// A float channel of a source after its gamma curve.
inline float SourceFloat(float value, const tZRDIBXCHGPARAMS& exchange) noexcept {
  return HasCurve(exchange.gammaFromFloat) ? Evaluate(exchange.gammaFromFloat, value) : value;
}
inline uint16_t WordOfFloat(float source, const tZRDIBXCHGPARAMS& exchange) noexcept {
  const float value = SourceFloat(source, exchange);
  if (!(value >= 0.0f)) return 0;
  if (value > 1.0f) return kWordFull;
  return static_cast<uint16_t>(static_cast<double>(value) * 65535.0 + kHalfUp);
}
/// A word as a float channel of a destination, after its gamma curve.
inline float FloatOfWord(uint32_t word, const tZRDIBXCHGPARAMS& exchange) noexcept {
  const float value = static_cast<float>(word) * kWordToFloat;
  return HasCurve(exchange.gammaToFloat) ? Evaluate(exchange.gammaToFloat, value) : value;
}

/// A pixel of `kCount` bits within a byte, the most significant first.
template <int32_t kCount>
uint32_t LoadBits(const uint8_t* at, int32_t bit) noexcept {
  return static_cast<uint32_t>(*at >> (8 - kCount - bit)) & ((1u << kCount) - 1);
}
template <int32_t kCount>
void StoreBits(uint8_t* at, int32_t bit, uint32_t value) noexcept {
  const int32_t shift = 8 - kCount - bit;
  const uint32_t mask = ((1u << kCount) - 1) << shift;
  *at = static_cast<uint8_t>((*at & ~mask) | (value << shift & mask));
}

template <int32_t kType>
struct PixelType;

/// Gray in whole fractions of a word: one, two or four bits.
template <int32_t kCount, uint32_t kScale>
struct GrayBits {
  static constexpr int32_t kBits = kCount;
  static tZRPIXEL64 Words(const uint8_t* at, int32_t bit, const tZRDIBXCHGPARAMS&) noexcept {
    return GrayWords(LoadBits<kCount>(at, bit) * kScale);
  }
  static void Put(uint8_t* at, int32_t bit, const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS&) noexcept {
    if constexpr (kCount == 1) {
      // Half of three full channels.
      StoreBits<1>(at, bit, uint32_t{pixel.b} + pixel.g + pixel.r >= 0x17FFF ? 1 : 0);
    } else {
      StoreBits<kCount>(at, bit, MeanOf(pixel) >> (16 - kCount));
    }
  }
};
template <>
struct PixelType<ZRPIXEL_RGB1> : GrayBits<1, 0xFFFF> {};
template <>
struct PixelType<ZRPIXEL_GRAY1> : GrayBits<1, 0xFFFF> {};
template <>
struct PixelType<ZRPIXEL_GRAY2> : GrayBits<2, 0x5555> {};
template <>
struct PixelType<ZRPIXEL_GRAY4> : GrayBits<4, 0x1111> {};

template <>
struct PixelType<ZRPIXEL_GRAY8> {
  static constexpr int32_t kBits = 8;
  static tZRPIXEL64 Words(const uint8_t* at, int32_t, const tZRDIBXCHGPARAMS& exchange) noexcept {
    return GrayWords(Expanded(*at, exchange));
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS&) noexcept {
    *at = static_cast<uint8_t>(MeanOf(pixel) >> 8);
  }
};

template <>
struct PixelType<ZRPIXEL_GRAY16> {
  static constexpr int32_t kBits = 16;
  static tZRPIXEL64 Words(const uint8_t* at, int32_t, const tZRDIBXCHGPARAMS&) noexcept {
    return GrayWords(LoadAs<uint16_t>(at));
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS&) noexcept {
    StoreAs(at, static_cast<uint16_t>(MeanOf(pixel)));
  }
};

template <>
struct PixelType<ZRPIXEL_GRAY32F> {
  static constexpr int32_t kBits = 32;
  static tZRPIXEL64 Words(const uint8_t* at, int32_t, const tZRDIBXCHGPARAMS& exchange) noexcept {
    return GrayWords(WordOfFloat(LoadAs<float>(at), exchange));
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS& exchange) noexcept {
    StoreAs(at, FloatOfWord(MeanOf(pixel), exchange));
  }
};

inline tZRPIXEL64 PaletteWords(const RGBQUAD& color) noexcept {
  return {static_cast<uint16_t>(color.rgbBlue << 8), static_cast<uint16_t>(color.rgbGreen << 8),
          static_cast<uint16_t>(color.rgbRed << 8), kWordFull};
}
inline uint8_t PaletteIndex(const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS& exchange) noexcept {
  return exchange.quantizer[((pixel.r >> 11) << 10) + ((pixel.g >> 11) << 5) + (pixel.b >> 11)];
}

template <>
struct PixelType<ZRPIXEL_PAL4> {
  static constexpr int32_t kBits = 4;
  static tZRPIXEL64 Words(const uint8_t* at, int32_t bit, const tZRDIBXCHGPARAMS& exchange) noexcept {
    return PaletteWords(exchange.srcPalette[LoadBits<4>(at, bit)]);
  }
  static void Put(uint8_t* at, int32_t bit, const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS& exchange) noexcept {
    StoreBits<4>(at, bit, PaletteIndex(pixel, exchange));
  }
};

template <>
struct PixelType<ZRPIXEL_PAL8> {
  static constexpr int32_t kBits = 8;
  static tZRPIXEL64 Words(const uint8_t* at, int32_t, const tZRDIBXCHGPARAMS& exchange) noexcept {
    return PaletteWords(exchange.srcPalette[*at]);
  }
  static tZRPIXEL32 Bytes(const uint8_t* at, const tZRDIBXCHGPARAMS& exchange) noexcept {
    const RGBQUAD& color = exchange.srcPalette[*at];
    return {color.rgbBlue, color.rgbGreen, color.rgbRed, 255};
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS& exchange) noexcept {
    *at = PaletteIndex(pixel, exchange);
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL32& pixel, const tZRDIBXCHGPARAMS& exchange) noexcept {
    *at = exchange.quantizer[((pixel.r >> 3) << 10) + ((pixel.g >> 3) << 5) + (pixel.b >> 3)];
  }
};

template <>
struct PixelType<ZRPIXEL_RGB555> {
  static constexpr int32_t kBits = 16;
  // Green keeps the neighbour's lowest bits above it until the cut to a word drops them.
  static tZRPIXEL64 Words(const uint8_t* at, int32_t, const tZRDIBXCHGPARAMS&) noexcept {
    const uint32_t packed = LoadAs<uint16_t>(at);
    return {static_cast<uint16_t>(packed << 11), static_cast<uint16_t>((packed & 0xFFE0) * 64),
            static_cast<uint16_t>((packed & 0xFC00) * 2), kWordFull};
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS&) noexcept {
    StoreAs(at, static_cast<uint16_t>((pixel.r >> 11) << 10 | (pixel.g >> 11) << 5 | pixel.b >> 11));
  }
};

template <>
struct PixelType<ZRPIXEL_RGB565> {
  static constexpr int32_t kBits = 16;
  static tZRPIXEL64 Words(const uint8_t* at, int32_t, const tZRDIBXCHGPARAMS&) noexcept {
    const uint32_t packed = LoadAs<uint16_t>(at);
    return {static_cast<uint16_t>(packed << 11), static_cast<uint16_t>((packed & 0xFFE0) * 32),
            static_cast<uint16_t>(packed & 0xF800), kWordFull};
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS&) noexcept {
    StoreAs(at, static_cast<uint16_t>((pixel.r >> 11) << 11 | (pixel.g >> 10) << 5 | pixel.b >> 11));
  }
};

/// Three or four bytes in memory order; `kReadsAlpha` only where the fourth has a meaning.
template <int32_t kBytes, bool kReadsAlpha>
struct ByteChannels {
  static constexpr int32_t kBits = kBytes * 8;
  static tZRPIXEL64 Words(const uint8_t* at, int32_t, const tZRDIBXCHGPARAMS& exchange) noexcept {
    return {Expanded(at[0], exchange), Expanded(at[1], exchange), Expanded(at[2], exchange),
            kReadsAlpha ? Expanded(at[3], exchange) : kWordFull};
  }
  static tZRPIXEL32 Bytes(const uint8_t* at, const tZRDIBXCHGPARAMS&) noexcept {
    return {at[0], at[1], at[2], kReadsAlpha ? at[3] : uint8_t{255}};
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS&) noexcept {
    at[0] = static_cast<uint8_t>(pixel.b >> 8);
    at[1] = static_cast<uint8_t>(pixel.g >> 8);
    at[2] = static_cast<uint8_t>(pixel.r >> 8);
    if constexpr (kBytes == 4) at[3] = static_cast<uint8_t>(pixel.a >> 8);
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL32& pixel, const tZRDIBXCHGPARAMS&) noexcept {
    at[0] = pixel.b;
    at[1] = pixel.g;
    at[2] = pixel.r;
    if constexpr (kBytes == 4) at[3] = pixel.a;
  }
};
template <>
struct PixelType<ZRPIXEL_RGB24> : ByteChannels<3, false> {};
template <>
struct PixelType<ZRPIXEL_RGB32> : ByteChannels<4, false> {};
template <>
struct PixelType<ZRPIXEL_RGBA32> : ByteChannels<4, true> {};

template <>
struct PixelType<ZRPIXEL_RGB10> {
  static constexpr int32_t kBits = 32;
  static tZRPIXEL64 Words(const uint8_t* at, int32_t, const tZRDIBXCHGPARAMS&) noexcept {
    const uint32_t packed = LoadAs<uint32_t>(at);
    return {static_cast<uint16_t>((packed & 1023) << 6), static_cast<uint16_t>((packed >> 10 & 1023) << 6),
            static_cast<uint16_t>((packed >> 20 & 1023) << 6), static_cast<uint16_t>((packed >> 30) * 0x5555)};
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS&) noexcept {
    StoreAs(at, uint32_t{pixel.b} >> 6 | (uint32_t{pixel.g} >> 6) << 10 | (uint32_t{pixel.r} >> 6) << 20 |
                    (uint32_t{pixel.a} >> 14) << 30);
  }
};

template <>
struct PixelType<ZRPIXEL_RGBA64> {
  static constexpr int32_t kBits = 64;
  static tZRPIXEL64 Words(const uint8_t* at, int32_t, const tZRDIBXCHGPARAMS&) noexcept {
    return LoadAs<tZRPIXEL64>(at);
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS&) noexcept {
    StoreAs(at, pixel);
  }
};

template <>
struct PixelType<ZRPIXEL_RGBA128F> {
  static constexpr int32_t kBits = 128;
  static tZRPIXEL64 Words(const uint8_t* at, int32_t, const tZRDIBXCHGPARAMS& exchange) noexcept {
    const tZRPIXEL128 pixel = LoadAs<tZRPIXEL128>(at);
    return {WordOfFloat(pixel.b, exchange), WordOfFloat(pixel.g, exchange), WordOfFloat(pixel.r, exchange),
            WordOfFloat(pixel.a, exchange)};
  }
  static tZRPIXEL128 Floats(const uint8_t* at, const tZRDIBXCHGPARAMS& exchange) noexcept {
    const tZRPIXEL128 pixel = LoadAs<tZRPIXEL128>(at);
    return {SourceFloat(pixel.b, exchange), SourceFloat(pixel.g, exchange), SourceFloat(pixel.r, exchange),
            SourceFloat(pixel.a, exchange)};
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL64& pixel, const tZRDIBXCHGPARAMS& exchange) noexcept {
    StoreAs(at, tZRPIXEL128{FloatOfWord(pixel.b, exchange), FloatOfWord(pixel.g, exchange),
                            FloatOfWord(pixel.r, exchange), FloatOfWord(pixel.a, exchange)});
  }
  static void Put(uint8_t* at, int32_t, const tZRPIXEL128& pixel, const tZRDIBXCHGPARAMS&) noexcept {
    StoreAs(at, pixel);
  }
};

}  // namespace marlo::pixel
