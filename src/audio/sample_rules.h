// SPDX-License-Identifier: Apache-2.0
// How each sample type is read and written: the rules that fix every conversion of the kernels.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "marlo110k/waveformat.h"

namespace marlo {

// A rule names the type's layout. Raw is the value in memory without scaling: int32_t for an integer type,
// float or double for a float type. Factors are powers of two, so that scaling an integer is exact; full
// scale is 1.0 and the full negative integer reads as exactly -1.0.

/// The range and the factors of a signed integer of kBitCount bits.
template <int kBitCount>
struct IntegerRule {
  using Raw = int32_t;
  static constexpr bool kInteger = true;
  static constexpr int kBits = kBitCount;
  static constexpr double kWriteFactor = static_cast<double>(int64_t{1} << (kBits - 1));
  static constexpr double kReadFactor = 1.0 / kWriteFactor;
  static constexpr double kLow = -kWriteFactor;
  static constexpr double kHigh = kWriteFactor - 1.0;
  static constexpr int32_t kRawLow = static_cast<int32_t>(kLow);
  static constexpr int32_t kRawHigh = static_cast<int32_t>(kHigh);
};

/// A float type: no factors, no range.
template <class Value>
struct FloatRule {
  using Raw = Value;
  static constexpr bool kInteger = false;
  static constexpr int kBytes = sizeof(Value);
  static constexpr int kBits = 8 * kBytes;
  static constexpr double kWriteFactor = 1.0;
  static constexpr double kReadFactor = 1.0;
  static Raw Read(const uint8_t* sample) noexcept {
    Raw raw;
    std::memcpy(&raw, sample, sizeof raw);
    return raw;
  }
  static void Write(uint8_t* sample, Raw raw) noexcept { std::memcpy(sample, &raw, sizeof raw); }
};

struct Pcm8SignedRule : IntegerRule<8> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_PCM8SIGNED;
  static constexpr int kBytes = 1;
  static Raw Read(const uint8_t* sample) noexcept { return static_cast<int8_t>(sample[0]); }
  static void Write(uint8_t* sample, Raw raw) noexcept { sample[0] = static_cast<uint8_t>(raw); }
};

/// Offset by 128 in memory, signed in computation.
struct Pcm8Rule : IntegerRule<8> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_PCM8;
  static constexpr int kBytes = 1;
  static Raw Read(const uint8_t* sample) noexcept { return static_cast<int8_t>(sample[0] ^ 0x80); }
  static void Write(uint8_t* sample, Raw raw) noexcept { sample[0] = static_cast<uint8_t>(raw ^ 0x80); }
};

struct Pcm16Rule : IntegerRule<16> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_PCM16;
  static constexpr int kBytes = 2;
  static Raw Read(const uint8_t* sample) noexcept {
    int16_t raw;
    std::memcpy(&raw, sample, sizeof raw);
    return raw;
  }
  static void Write(uint8_t* sample, Raw raw) noexcept {
    const auto narrow = static_cast<int16_t>(raw);
    std::memcpy(sample, &narrow, sizeof narrow);
  }
};

struct Pcm16BeRule : IntegerRule<16> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_PCM16BE;
  static constexpr int kBytes = 2;
  static Raw Read(const uint8_t* sample) noexcept {
    uint16_t raw;
    std::memcpy(&raw, sample, sizeof raw);
    return static_cast<int16_t>(__builtin_bswap16(raw));
  }
  static void Write(uint8_t* sample, Raw raw) noexcept {
    const uint16_t swapped = __builtin_bswap16(static_cast<uint16_t>(raw));
    std::memcpy(sample, &swapped, sizeof swapped);
  }
};

struct Pcm24Rule : IntegerRule<24> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_PCM24;
  static constexpr int kBytes = 3;
  static Raw Read(const uint8_t* sample) noexcept {
    return sample[0] | sample[1] << 8 | static_cast<int8_t>(sample[2]) * 0x10000;
  }
  static void Write(uint8_t* sample, Raw raw) noexcept {
    sample[0] = static_cast<uint8_t>(raw);
    sample[1] = static_cast<uint8_t>(raw >> 8);
    sample[2] = static_cast<uint8_t>(raw >> 16);
  }
};

struct Pcm24BeRule : IntegerRule<24> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_PCM24BE;
  static constexpr int kBytes = 3;
  static Raw Read(const uint8_t* sample) noexcept {
    return sample[2] | sample[1] << 8 | static_cast<int8_t>(sample[0]) * 0x10000;
  }
  static void Write(uint8_t* sample, Raw raw) noexcept {
    sample[2] = static_cast<uint8_t>(raw);
    sample[1] = static_cast<uint8_t>(raw >> 8);
    sample[0] = static_cast<uint8_t>(raw >> 16);
  }
};

/// 24 bits in a 32-bit word that its writer has sign-extended: the whole word is read.
struct Pcm24UnpackedRule : IntegerRule<24> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_PCM24UNPACKED;
  static constexpr int kBytes = 4;
  static Raw Read(const uint8_t* sample) noexcept {
    Raw raw;
    std::memcpy(&raw, sample, sizeof raw);
    return raw;
  }
  static void Write(uint8_t* sample, Raw raw) noexcept { std::memcpy(sample, &raw, sizeof raw); }
};

struct Pcm32Rule : IntegerRule<32> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_PCM32;
  static constexpr int kBytes = 4;
  static Raw Read(const uint8_t* sample) noexcept {
    Raw raw;
    std::memcpy(&raw, sample, sizeof raw);
    return raw;
  }
  static void Write(uint8_t* sample, Raw raw) noexcept { std::memcpy(sample, &raw, sizeof raw); }
};

struct Pcm32BeRule : IntegerRule<32> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_PCM32BE;
  static constexpr int kBytes = 4;
  static Raw Read(const uint8_t* sample) noexcept {
    uint32_t raw;
    std::memcpy(&raw, sample, sizeof raw);
    return static_cast<Raw>(__builtin_bswap32(raw));
  }
  static void Write(uint8_t* sample, Raw raw) noexcept {
    const uint32_t swapped = __builtin_bswap32(static_cast<uint32_t>(raw));
    std::memcpy(sample, &swapped, sizeof swapped);
  }
};

struct Float32Rule : FloatRule<float> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_FLOAT32;
};

struct Float64Rule : FloatRule<double> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_FLOAT64;
};

/// The low 16 bits of a 32-bit word.
struct Pcm16RightAlignedRule : IntegerRule<16> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_PCM16RA;
  static constexpr int kBytes = 4;
  static Raw Read(const uint8_t* sample) noexcept { return Pcm16Rule::Read(sample); }
  /// Writes 16 bits: the upper half of the word stays as it is.
  static void Write(uint8_t* sample, Raw raw) noexcept { Pcm16Rule::Write(sample, raw); }
};

/// The low 24 bits of a 32-bit word; written as the whole word, sign-extended.
struct Pcm24RightAlignedRule : IntegerRule<24> {
  static constexpr uint32_t kType = ZRSAMPLETYPE_PCM24RA;
  static constexpr int kBytes = 4;
  static Raw Read(const uint8_t* sample) noexcept { return Pcm24Rule::Read(sample); }
  static void Write(uint8_t* sample, Raw raw) noexcept { std::memcpy(sample, &raw, sizeof raw); }
};

/// Clamps a value in the scale of the type and rounds it to nearest, ties to even. The clamp comes before
/// the rounding, so 32767.6 gives 32767. A NaN gives the low end.
template <class Rule>
int32_t ClampAndRound(double scaled) noexcept {
  static_assert(Rule::kInteger);
  // 1.5 times 2^52: the sum has its unit in the last place of the mantissa, so the processor's rounding is
  // the rounding to an integer, whose low bits are those of the double.
  constexpr double kRounding = 6755399441055744.0;
  const double above = scaled > Rule::kLow ? scaled : Rule::kLow;
  const double inside = above < Rule::kHigh ? above : Rule::kHigh;
  return static_cast<int32_t>(static_cast<uint32_t>(std::bit_cast<uint64_t>(inside + kRounding)));
}

/// Reads a sample as a fraction of full scale.
template <class Rule>
double ReadUnit(const uint8_t* sample) noexcept {
  return static_cast<double>(Rule::Read(sample)) * Rule::kReadFactor;
}

/// Writes a fraction of full scale.
template <class Rule>
void WriteUnit(uint8_t* sample, double value) noexcept {
  if constexpr (Rule::kInteger) {
    Rule::Write(sample, ClampAndRound<Rule>(value * Rule::kWriteFactor));
  } else {
    Rule::Write(sample, static_cast<typename Rule::Raw>(value));
  }
}

template <class... Rules>
struct RuleList {
  static constexpr int kCount = sizeof...(Rules);
};

/// The types that a mixer meets: all little-endian ones.
using LittleEndianRules =
    RuleList<Pcm8Rule, Pcm16Rule, Pcm24Rule, Pcm32Rule, Float32Rule, Float64Rule, Pcm24UnpackedRule, Pcm8SignedRule>;
/// The types of files and memory, in the order of their numbers.
using MemoryRules = RuleList<Pcm8Rule, Pcm16Rule, Pcm24Rule, Pcm32Rule, Float32Rule, Float64Rule, Pcm24UnpackedRule,
                             Pcm8SignedRule, Pcm16BeRule, Pcm24BeRule, Pcm32BeRule>;
/// Those and the right-aligned device types.
using AllRules =
    RuleList<Pcm8Rule, Pcm16Rule, Pcm24Rule, Pcm32Rule, Float32Rule, Float64Rule, Pcm24UnpackedRule, Pcm8SignedRule,
             Pcm16BeRule, Pcm24BeRule, Pcm32BeRule, Pcm16RightAlignedRule, Pcm24RightAlignedRule>;

/// Calls visit(Rule{}) for the rule of `type`. @return false, calling nothing, for a type outside the list.
template <class... Rules, class Visit>
constexpr bool VisitRule(RuleList<Rules...>, uint32_t type, Visit&& visit) {
  return ((Rules::kType == type ? (visit(Rules{}), true) : false) || ...);
}

}  // namespace marlo
