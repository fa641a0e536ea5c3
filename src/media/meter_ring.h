// SPDX-License-Identifier: Apache-2.0
// A ring of slice records between one writer and one reader, without a lock.
#pragma once

#include <atomic>
#include <cstdint>

#include "marlo110k/levels.h"
#include "marlo110k/meterbuffer.h"

namespace marlo {

/// The levels of one slice of audio.
struct MeterSlice {
  tZRAUDIOPEAK peaks[kZrMeterChannels];
  float sums[kZrMeterChannels];
  int64_t frames;
  int64_t end;
  bool resetMark;
  bool reverse;
};

/// Its state is one word: generation, place of the oldest record, number of records. Reader and writer change it by
/// compare-and-swap only. Whatever takes records away from their new end raises the generation; the reader, which may
/// have looked at a record whose place is written again, then finds its swap refused and throws away what it saw.
class MeterRing {
 public:
  MeterRing() = default;
  ~MeterRing();
  MeterRing(const MeterRing&) = delete;
  MeterRing& operator=(const MeterRing&) = delete;

  /// @return false when memory is short.
  bool Allocate(uint32_t records) noexcept;

  // ---- Writer ----
  bool IsFull() const noexcept { return CountOf(State()) == capacity_; }
  /// Adds a slice. @return false when there is no room.
  bool Push(const MeterSlice& slice) noexcept;
  void Clear() noexcept;
  /// Drops the newest slices, as far as they end behind the position.
  void Trim(int64_t position) noexcept;

  // ---- Reader ----
  uint64_t State() const noexcept { return state_.load(std::memory_order_acquire); }
  static uint32_t CountOf(uint64_t state) noexcept { return static_cast<uint32_t>(state & 0xFFFF); }
  /// The slice so many places behind the oldest. It counts only if Take or IsCurrent agrees afterwards.
  MeterSlice Peek(uint64_t state, uint32_t index) const noexcept;
  /// Nothing has been taken away from the ring's new end since.
  bool IsCurrent(uint64_t state) const noexcept;
  /// Takes the oldest `count` slices away. @return false, with nothing done, when what was seen doesn't count.
  bool Take(uint64_t state, uint32_t count) noexcept;

 private:
  struct Record {
    struct Channel {
      std::atomic<float> peak;
      std::atomic<int32_t> position;
      std::atomic<uint32_t> clipped;
      std::atomic<float> sum;
    } channels[kZrMeterChannels];
    std::atomic<int64_t> frames;
    std::atomic<int64_t> end;
    std::atomic<bool> resetMark;
    std::atomic<bool> reverse;
  };

  static uint32_t TailOf(uint64_t state) noexcept { return static_cast<uint32_t>(state >> 16 & 0xFFFF); }
  static uint32_t GenerationOf(uint64_t state) noexcept { return static_cast<uint32_t>(state >> 32); }
  static uint64_t Pack(uint32_t generation, uint32_t tail, uint32_t count) noexcept {
    return uint64_t{generation} << 32 | uint64_t{tail} << 16 | count;
  }
  Record& At(uint64_t state, uint32_t index) const noexcept { return records_[(TailOf(state) + index) % capacity_]; }

  Record* records_ = nullptr;
  uint32_t capacity_ = 0;
  std::atomic<uint64_t> state_{0};
};

}  // namespace marlo
