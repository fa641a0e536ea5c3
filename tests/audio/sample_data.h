// SPDX-License-Identifier: Apache-2.0
// Samples that are hard on a conversion, and the members that a test goes through.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "audio/sample_reference.h"
#include "marlo110k/cpu.h"
#include "platform/base/cpu.h"
#include "testing/random.h"

namespace sample_reference {

/// Puts the processor masks and the vector limit back at its end.
class ProcessorScope {
 public:
  ~ProcessorScope() {
    ZrAllowCPUSupport(ZRCPU_FEATURES);
    plat::SetVectorLevelLimit(plat::VectorLevel::kAvx512);
  }
};

/// The kinds of member that the getters choose among.
enum class Members { kPlain, kSse2, kAll };
inline constexpr Members kEveryKind[] = {Members::kPlain, Members::kSse2, Members::kAll};

inline const char* NameOf(Members members) {
  return members == Members::kPlain ? "plain" : members == Members::kSse2 ? "SSE2" : "all";
}

inline void Allow(Members members) {
  ZrAllowCPUSupport(ZRCPU_FEATURES);
  if (members == Members::kPlain) ZrDisallowCPUSupport(ZRCPU_SSE | ZRCPU_SSE2);
  plat::SetVectorLevelLimit(members == Members::kAll ? plat::VectorLevel::kAvx512 : plat::VectorLevel::kSse2);
}

/// A buffer at a given distance from a 64-byte line, between bytes which nobody may touch.
class Guarded {
 public:
  Guarded(size_t distance, size_t bytes) : block_(distance + bytes + 128, kMark), bytes_(bytes) {
    start_ = distance + (64 - reinterpret_cast<uintptr_t>(block_.data()) % 64) % 64;
  }
  uint8_t* data() { return block_.data() + start_; }
  bool Untouched() const {
    for (size_t n = 0; n < block_.size(); ++n) {
      if ((n < start_ || n >= start_ + bytes_) && block_[n] != kMark) return false;
    }
    return true;
  }

 private:
  static constexpr uint8_t kMark = 0xA5;
  std::vector<uint8_t> block_;
  size_t start_, bytes_;
};

/// `count` samples of a type: for an integer type random ones, its ends and what lies around 0; for a float
/// type also values half way between the steps of each integer type, close by them, and out of range.
/// Infinities only on demand; no NaN.
inline std::vector<uint8_t> HardSamples(uint32_t type, int64_t count, testing_support::Random& random,
                                        bool infinities = false) {
  const Layout& layout = LayoutOf(type);
  std::vector<uint8_t> bytes(static_cast<size_t>(count * layout.bytes));
  for (int64_t n = 0; n < count; ++n) {
    uint8_t* sample = bytes.data() + n * layout.bytes;
    const int64_t kind = random.Between(0, 9);
    if (layout.bits != 0) {
      const int64_t low = LowOf(layout.bits);
      const int64_t high = HighOf(layout.bits);
      int64_t raw = random.Between(low, high);
      if (kind == 0) raw = random.Between(0, 1) ? low + random.Between(0, 2) : high - random.Between(0, 2);
      if (kind == 1) raw = random.Between(-2, 2);
      // Half way between two steps of a narrower type.
      if (kind == 2 && layout.bits > 8) raw = (raw & ~int64_t{0xFF}) | 0x80;
      if (kind == 3 && layout.bits > 16) raw = (raw & ~int64_t{0xFFFF}) | 0x8000;
      // A word whose writer left more than 24 bits in it.
      if (kind == 4 && type == 48) raw = random.Between(-(int64_t{1} << 30), int64_t{1} << 30);
      PutRaw(type, sample, raw);
      continue;
    }
    constexpr int kWidths[] = {8, 16, 24, 32};
    const int bits = kWidths[random.Between(0, 3)];
    double value = random.Real(-1.3, 1.3);
    if (kind == 0) value = random.Real(-1e-6, 1e-6);
    if (kind == 1) value = random.Between(0, 1) ? random.Real(-1e4, 1e4) : random.Real(-1e30, 1e30);
    if (kind >= 2 && kind <= 5) {  // A tie, or one unit in the last place beside it.
      value = std::ldexp(static_cast<double>(random.Between(LowOf(bits), HighOf(bits))) + 0.5, 1 - bits);
      if (type == 32) value = static_cast<double>(static_cast<float>(value));
      const double side = random.Between(0, 1) ? 2.0 : -2.0;
      if (kind == 3) {
        value = type == 32 ? static_cast<double>(std::nextafter(static_cast<float>(value), static_cast<float>(side)))
                           : std::nextafter(value, side);
      }
    }
    if (kind == 6) value = static_cast<double>(random.Between(-1, 1));
    if (kind == 7 && infinities) value = std::numeric_limits<double>::infinity() * (random.Between(0, 1) ? 1 : -1);
    PutFloat(type, sample, value);
  }
  return bytes;
}

}  // namespace sample_reference
