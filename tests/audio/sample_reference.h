// SPDX-License-Identifier: Apache-2.0
// The sample rules a second time, for the tests: written from the layouts with exact arithmetic and a
// rounding of its own, and sharing nothing with the kernels.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "marlo110k/samples.h"

namespace sample_reference {

/// Wide enough to hold the product of two doubles, and all sums that the tests form.
using Exact = __float128;

struct Layout {
  uint32_t type;
  const char* name;
  int bytes;
  int bits;  ///< 0 for a float type.
  bool bigEndian;
};

inline constexpr Layout kLayouts[] = {
    {16, "PCM8", 1, 8, false},           {17, "PCM16", 2, 16, false},     {18, "PCM24", 3, 24, false},
    {19, "PCM32", 4, 32, false},         {32, "FLOAT32", 4, 0, false},    {33, "FLOAT64", 8, 0, false},
    {48, "PCM24UNPACKED", 4, 24, false}, {49, "PCM8SIGNED", 1, 8, false}, {64, "PCM16BE", 2, 16, true},
    {65, "PCM24BE", 3, 24, true},        {66, "PCM32BE", 4, 32, true},    {128, "PCM16RA", 4, 16, false},
    {129, "PCM24RA", 4, 24, false},
};

inline const Layout& LayoutOf(uint32_t type) {
  for (const Layout& layout : kLayouts) {
    if (layout.type == type) return layout;
  }
  std::abort();
}

/// The eleven types of memory, in the order of their numbers.
inline constexpr uint32_t kMemoryTypes[] = {16, 17, 18, 19, 32, 33, 48, 49, 64, 65, 66};
/// The eight little-endian ones among them, which can be mixed.
inline constexpr uint32_t kMixTypes[] = {16, 17, 18, 19, 32, 33, 48, 49};

inline bool IsFloat(uint32_t type) { return LayoutOf(type).bits == 0; }

/// The integer in a sample's bytes, without offset or scaling.
inline int64_t RawOf(uint32_t type, const uint8_t* sample) {
  const Layout& layout = LayoutOf(type);
  uint64_t word = 0;
  for (int n = 0; n < layout.bytes; ++n) {
    const int shift = 8 * (layout.bigEndian ? layout.bytes - 1 - n : n);
    word |= uint64_t{sample[n]} << shift;
  }
  const int used = type == 48 ? 32 : layout.bits;  // The unpacked word counts as a whole.
  word &= (uint64_t{1} << used) - 1;
  if (type == 16) word ^= 0x80;
  const uint64_t sign = uint64_t{1} << (used - 1);
  return static_cast<int64_t>(word ^ sign) - static_cast<int64_t>(sign);
}

inline void PutRaw(uint32_t type, uint8_t* sample, int64_t raw) {
  const Layout& layout = LayoutOf(type);
  uint64_t word = static_cast<uint64_t>(raw);
  if (type == 16) word ^= 0x80;
  const int bytes = type == 128 ? 2 : layout.bytes;  // The upper half of the word isn't written.
  for (int n = 0; n < bytes; ++n) {
    const int shift = 8 * (layout.bigEndian ? layout.bytes - 1 - n : n);
    sample[n] = static_cast<uint8_t>(word >> shift);
  }
}

inline double FloatOf(uint32_t type, const uint8_t* sample) {
  if (type == 32) {
    float value;
    std::memcpy(&value, sample, 4);
    return static_cast<double>(value);
  }
  double value;
  std::memcpy(&value, sample, 8);
  return value;
}

inline void PutFloat(uint32_t type, uint8_t* sample, double value) {
  if (type == 32) {
    const auto single = static_cast<float>(value);
    std::memcpy(sample, &single, 4);
  } else {
    std::memcpy(sample, &value, 8);
  }
}

/// The value of a sample where 1.0 is full scale.
inline double UnitOf(uint32_t type, const uint8_t* sample) {
  if (IsFloat(type)) return FloatOf(type, sample);
  return std::ldexp(static_cast<double>(RawOf(type, sample)), 1 - LayoutOf(type).bits);
}

inline int64_t HighOf(int bits) { return (int64_t{1} << (bits - 1)) - 1; }
inline int64_t LowOf(int bits) { return -(int64_t{1} << (bits - 1)); }

/// Clamps, then rounds to nearest with ties to even, by looking at the fraction.
inline int64_t ClampRound(Exact scaled, int bits) {
  if (scaled >= static_cast<Exact>(HighOf(bits))) return HighOf(bits);
  if (scaled <= static_cast<Exact>(LowOf(bits))) return LowOf(bits);
  auto whole = static_cast<int64_t>(scaled);
  Exact fraction = scaled - static_cast<Exact>(whole);
  if (fraction < 0) {
    fraction += 1;
    --whole;
  }
  const Exact half = static_cast<Exact>(0.5);
  if (fraction > half || (fraction == half && (whole & 1) != 0)) ++whole;
  return whole;
}

/// 2^(bits - 1) times a value.
inline Exact ScaleUp(Exact value, int bits) { return value * static_cast<Exact>(int64_t{1} << (bits - 1)); }

/// One sample through the copy rules.
inline void CopySample(uint32_t destType, uint8_t* dest, uint32_t sourceType, const uint8_t* source, float gain) {
  const Layout& to = LayoutOf(destType);
  const Layout& from = LayoutOf(sourceType);
  if (gain == 1.0f && to.bits != 0 && from.bits != 0) {
    const bool sameBits = to.bits == from.bits;
    const bool unpacked = destType == 48 || sourceType == 48;
    if (destType == sourceType || (sameBits && !unpacked)) return PutRaw(destType, dest, RawOf(sourceType, source));
    if (to.bits > from.bits) {
      const auto raw = static_cast<uint64_t>(RawOf(sourceType, source));
      return PutRaw(destType, dest, static_cast<int64_t>(raw << (to.bits - from.bits)));
    }
  }
  double value = UnitOf(sourceType, source);
  if (gain != 1.0f) {
    const Exact product = static_cast<Exact>(value) * static_cast<Exact>(gain);
    // A FLOAT32 source is multiplied in single precision.
    value = sourceType == 32 ? static_cast<double>(static_cast<float>(product)) : static_cast<double>(product);
  }
  if (to.bits == 0) return PutFloat(destType, dest, value);
  PutRaw(destType, dest, ClampRound(ScaleUp(static_cast<Exact>(value), to.bits), to.bits));
}

/// One sample through the mix rules. `channels` is that of the buffer, 1 for a single channel.
inline void MixSample(uint32_t destType, uint8_t* dest, uint32_t sourceType, const uint8_t* source, double gain,
                      uint32_t channels) {
  const Layout& to = LayoutOf(destType);
  const auto product = static_cast<double>(static_cast<Exact>(UnitOf(sourceType, source)) * static_cast<Exact>(gain));
  if (to.bits == 0) {
    const double present = FloatOf(destType, dest);
    if (destType == 33) return PutFloat(33, dest, product + present);
    if (sourceType != 32) return PutFloat(32, dest, product + present);
    const auto single = static_cast<float>(FloatOf(32, source));
    const float addend = channels <= 2 ? static_cast<float>(product) : static_cast<float>(gain) * single;
    return PutFloat(32, dest, static_cast<double>(addend + static_cast<float>(present)));
  }
  const int64_t present = RawOf(destType, dest);
  if (destType == 18 || destType == 19) {
    const double sum = product + std::ldexp(static_cast<double>(present), 1 - to.bits);
    return PutRaw(destType, dest, ClampRound(ScaleUp(static_cast<Exact>(sum), to.bits), to.bits));
  }
  const int64_t addend = destType == sourceType && gain == 1.0
                             ? RawOf(sourceType, source)
                             : ClampRound(ScaleUp(static_cast<Exact>(product), to.bits), to.bits);
  int64_t sum = present + addend;
  if (sum > HighOf(to.bits)) sum = HighOf(to.bits);
  if (sum < LowOf(to.bits)) sum = LowOf(to.bits);
  PutRaw(destType, dest, sum);
}

/// Every value of an 8- or 16-bit type.
inline std::vector<uint8_t> AllValues(uint32_t type) {
  const Layout& layout = LayoutOf(type);
  std::vector<uint8_t> bytes(static_cast<size_t>(layout.bytes) << layout.bits);
  for (int64_t raw = LowOf(layout.bits), n = 0; raw <= HighOf(layout.bits); ++raw, ++n) {
    PutRaw(type, bytes.data() + n * layout.bytes, raw);
  }
  return bytes;
}

/// "PCM16 <- FLOAT32".
inline std::string PairName(uint32_t destType, uint32_t sourceType) {
  return std::string(LayoutOf(destType).name) + " <- " + LayoutOf(sourceType).name;
}

/// The bytes of a sample, for messages.
inline std::string Hex(const uint8_t* bytes, int count) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (int n = 0; n < count; ++n) {
    text += kDigits[bytes[n] >> 4];
    text += kDigits[bytes[n] & 15];
    text += ' ';
  }
  return text;
}

}  // namespace sample_reference
