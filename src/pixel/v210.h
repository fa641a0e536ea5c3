// SPDX-License-Identifier: Apache-2.0
// 10-bit 4:2:2: three samples a word from its low bits up, in the order U, Y, V, Y; the top two bits are zero.
#pragma once

#include <cstdint>
#include <cstring>

namespace marlo::pixel {

inline constexpr int32_t kV210SamplesPerWord = 3;
inline constexpr int32_t kV210SampleBits = 10;
inline constexpr uint32_t kV210SampleMask = 1023;

/// Bytes of whole words that hold the samples of `pairs` pairs.
inline int64_t V210Bytes(int64_t pairs) noexcept {
  return (pairs * 4 + kV210SamplesPerWord - 1) / kV210SamplesPerWord * 4;
}

/// Walks the samples of a row and touches no word before its first sample is asked for.
class V210Reader {
 public:
  explicit V210Reader(const uint8_t* words) noexcept : next_(words) {}
  uint32_t Next() noexcept {
    if (left_ == 0) {
      std::memcpy(&word_, next_, sizeof(word_));
      next_ += sizeof(word_);
      left_ = kV210SamplesPerWord;
    }
    const uint32_t sample = word_ & kV210SampleMask;
    word_ >>= kV210SampleBits;
    --left_;
    return sample;
  }

 private:
  const uint8_t* next_;
  uint32_t word_ = 0;
  int32_t left_ = 0;
};

/// Writes the samples of a row; those of the last word that aren't given are zero.
class V210Writer {
 public:
  explicit V210Writer(uint8_t* words) noexcept : next_(words) {}
  ~V210Writer() {
    if (filled_ != 0) Flush();
  }
  V210Writer(const V210Writer&) = delete;
  V210Writer& operator=(const V210Writer&) = delete;
  void Put(uint32_t sample) noexcept {
    word_ |= sample << (kV210SampleBits * filled_);
    if (++filled_ == kV210SamplesPerWord) Flush();
  }

 private:
  void Flush() noexcept {
    std::memcpy(next_, &word_, sizeof(word_));
    next_ += sizeof(word_);
    word_ = 0;
    filled_ = 0;
  }

  uint8_t* next_;
  uint32_t word_ = 0;
  int32_t filled_ = 0;
};

}  // namespace marlo::pixel
