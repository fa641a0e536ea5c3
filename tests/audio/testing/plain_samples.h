// SPDX-License-Identifier: Apache-2.0
// The facts of the sample types, written down for tests a second time: bytes of a sample, and its value read from
// memory byte by byte.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "marlo110k/waveformat.h"

namespace testing_support {

struct PlainType {
  uint32_t type;
  const char* name;
  int bytes;
  int bits;  ///< Of an integer type; 0 for a float type.
  bool bigEndian;
  bool offset;  ///< Unsigned with the middle at 128.
  bool isFloat() const { return bits == 0; }
};

inline constexpr std::array<PlainType, 11> kPlainTypes = {{
    {16, "PCM8", 1, 8, false, true},
    {17, "PCM16", 2, 16, false, false},
    {18, "PCM24", 3, 24, false, false},
    {19, "PCM32", 4, 32, false, false},
    {32, "FLOAT32", 4, 0, false, false},
    {33, "FLOAT64", 8, 0, false, false},
    {48, "PCM24UNPACKED", 4, 24, false, false},
    {49, "PCM8SIGNED", 1, 8, false, false},
    {64, "PCM16BE", 2, 16, true, false},
    {65, "PCM24BE", 3, 24, true, false},
    {66, "PCM32BE", 4, 32, true, false},
}};

/// The raw integer of a sample.
inline int64_t ReadInteger(const PlainType& type, const uint8_t* sample) {
  int64_t value = 0;
  for (int index = 0; index < type.bytes; ++index) {
    value = value * 256 + sample[type.bigEndian ? index : type.bytes - 1 - index];
  }
  if (type.offset) return value - 128;
  const int64_t range = int64_t{1} << (8 * type.bytes);
  return value >= range / 2 ? value - range : value;
}

inline void WriteInteger(const PlainType& type, uint8_t* sample, int64_t value) {
  if (type.offset) value += 128;
  for (int index = 0; index < type.bytes; ++index) {
    sample[type.bigEndian ? type.bytes - 1 - index : index] = static_cast<uint8_t>(value >> (8 * index));
  }
}

inline double ReadFloat(const PlainType& type, const uint8_t* sample) {
  if (type.bytes == 8) {
    double value;
    std::memcpy(&value, sample, sizeof value);
    return value;
  }
  float value;
  std::memcpy(&value, sample, sizeof value);
  return static_cast<double>(value);
}

inline void WriteFloat(const PlainType& type, uint8_t* sample, double value) {
  const auto single = static_cast<float>(value);
  if (type.bytes == 8) {
    std::memcpy(sample, &value, sizeof value);
  } else {
    std::memcpy(sample, &single, sizeof single);
  }
}

/// Full scale of an integer type as a double: 2 to the power of its bits less one.
inline double FullScale(const PlainType& type) { return type.isFloat() ? 1.0 : std::ldexp(1.0, type.bits - 1); }

/// A sample as a fraction of full scale.
inline double ReadFraction(const PlainType& type, const uint8_t* sample) {
  return type.isFloat() ? ReadFloat(type, sample) : static_cast<double>(ReadInteger(type, sample)) / FullScale(type);
}

/// Writes a fraction of full scale: clamped first, then rounded to the nearest even.
inline void WriteFraction(const PlainType& type, uint8_t* sample, double value) {
  if (type.isFloat()) return WriteFloat(type, sample, value);
  const double scaled = std::fmin(std::fmax(value * FullScale(type), -FullScale(type)), FullScale(type) - 1);
  WriteInteger(type, sample, std::llrint(scaled));
}

inline std::vector<uint8_t> SamplesOf(const PlainType& type, const std::vector<double>& fractions) {
  std::vector<uint8_t> bytes(fractions.size() * static_cast<size_t>(type.bytes));
  for (size_t index = 0; index < fractions.size(); ++index) {
    WriteFraction(type, bytes.data() + index * static_cast<size_t>(type.bytes), fractions[index]);
  }
  return bytes;
}

inline _zrwaveformat RecordOf(const PlainType& type, size_t channels) {
  _zrwaveformat format;
  format.Init(48000, type.type, static_cast<uint16_t>(channels), 0, 32);
  return format;
}

inline WAVEFORMATEX WfxOf(const PlainType& type, size_t channels) {
  WAVEFORMATEX wfx;
  ZrAudio_InitWfx(&wfx, 48000, type.type, static_cast<uint16_t>(channels));
  return wfx;
}

}  // namespace testing_support
