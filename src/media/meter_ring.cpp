// SPDX-License-Identifier: Apache-2.0
// Publishes, looks at and takes slices. Fields are stored with release and loaded with acquire order: who sees a field
// of a record that is being written again also sees the state that was changed before.
#include "media/meter_ring.h"

#include <new>

namespace marlo {

MeterRing::~MeterRing() { delete[] records_; }

bool MeterRing::Allocate(uint32_t records) noexcept {
  records_ = new (std::nothrow) Record[records]();
  capacity_ = records;
  return records_ != nullptr;
}

bool MeterRing::Push(const MeterSlice& slice) noexcept {
  constexpr auto kRelease = std::memory_order_release;
  for (uint64_t state = State();;) {
    const uint32_t count = CountOf(state);
    if (count == capacity_) return false;
    Record& record = At(state, count);
    for (uint32_t channel = 0; channel < kZrMeterChannels; ++channel) {
      record.channels[channel].peak.store(slice.peaks[channel].peak, kRelease);
      record.channels[channel].position.store(slice.peaks[channel].position, kRelease);
      record.channels[channel].clipped.store(slice.peaks[channel].clipped, kRelease);
      record.channels[channel].sum.store(slice.sums[channel], kRelease);
    }
    record.frames.store(slice.frames, kRelease);
    record.end.store(slice.end, kRelease);
    record.resetMark.store(slice.resetMark, kRelease);
    record.reverse.store(slice.reverse, kRelease);
    const uint64_t more = Pack(GenerationOf(state), TailOf(state), count + 1);
    // Somebody may have emptied the ring meanwhile; the slice then goes to another place.
    if (state_.compare_exchange_strong(state, more, std::memory_order_acq_rel)) return true;
  }
}

void MeterRing::Clear() noexcept {
  uint64_t state = State();
  while (!state_.compare_exchange_weak(state, Pack(GenerationOf(state) + 1, 0, 0), std::memory_order_acq_rel)) {
  }
}

void MeterRing::Trim(int64_t position) noexcept {
  for (uint64_t state = State();;) {
    uint32_t count = CountOf(state);
    while (count > 0 && At(state, count - 1).end.load(std::memory_order_acquire) > position) --count;
    if (count == CountOf(state)) return;
    const uint64_t less = Pack(GenerationOf(state) + 1, TailOf(state), count);
    if (state_.compare_exchange_strong(state, less, std::memory_order_acq_rel)) return;
  }
}

MeterSlice MeterRing::Peek(uint64_t state, uint32_t index) const noexcept {
  constexpr auto kAcquire = std::memory_order_acquire;
  const Record& record = At(state, index);
  MeterSlice slice;
  for (uint32_t channel = 0; channel < kZrMeterChannels; ++channel) {
    slice.peaks[channel] = {record.channels[channel].peak.load(kAcquire),
                            record.channels[channel].position.load(kAcquire),
                            record.channels[channel].clipped.load(kAcquire)};
    slice.sums[channel] = record.channels[channel].sum.load(kAcquire);
  }
  slice.frames = record.frames.load(kAcquire);
  slice.end = record.end.load(kAcquire);
  slice.resetMark = record.resetMark.load(kAcquire);
  slice.reverse = record.reverse.load(kAcquire);
  return slice;
}

bool MeterRing::IsCurrent(uint64_t state) const noexcept { return GenerationOf(State()) == GenerationOf(state); }

bool MeterRing::Take(uint64_t state, uint32_t count) noexcept {
  if (count == 0) return IsCurrent(state);
  // The writer may add meanwhile: only the generation decides.
  const uint32_t generation = GenerationOf(state);
  for (uint64_t now = State(); GenerationOf(now) == generation;) {
    const uint64_t less = Pack(generation, (TailOf(now) + count) % capacity_, CountOf(now) - count);
    if (state_.compare_exchange_weak(now, less, std::memory_order_acq_rel)) return true;
  }
  return false;
}

}  // namespace marlo
