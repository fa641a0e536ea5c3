// SPDX-License-Identifier: Apache-2.0
// Samples as bytes: what moves samples without reading them works by their size, not by their type.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "marlo110k/contract/hresult.h"

namespace marlo {

/// Copies one sample, which may stand onto itself. Three bytes go as a word and a byte.
template <size_t kBytes>
inline void MoveSample(uint8_t* dest, const uint8_t* source) noexcept {
  if constexpr (kBytes == 3) {
    uint16_t low;
    std::memcpy(&low, source, sizeof low);
    const uint8_t high = source[2];
    std::memcpy(dest, &low, sizeof low);
    dest[2] = high;
  } else {
    std::conditional_t<kBytes == 1, uint8_t,
                       std::conditional_t<kBytes == 2, uint16_t, std::conditional_t<kBytes == 4, uint32_t, uint64_t>>>
        sample;
    static_assert(sizeof sample == kBytes);
    std::memcpy(&sample, source, sizeof sample);
    std::memcpy(dest, &sample, sizeof sample);
  }
}

/// Copies every `sourceStride`-th sample to every `destStride`-th, from the first to the last. Strides in bytes.
template <size_t kBytes>
inline void MoveStrided(uint8_t* dest, size_t destStride, const uint8_t* source, size_t sourceStride,
                        int64_t frames) noexcept {
  for (int64_t frame = 0; frame < frames; ++frame) {
    MoveSample<kBytes>(dest, source);
    dest += destStride;
    source += sourceStride;
  }
}

/// Calls visit(std::integral_constant<size_t, bytes>{}) for the sample sizes there are.
/// @return S_OK, or E_FAIL, calling nothing, for another size.
template <class Visit>
HRESULT VisitSampleBytes(uint32_t bytes, Visit&& visit) noexcept {
  switch (bytes) {
    case 1:
      visit(std::integral_constant<size_t, 1>{});
      return S_OK;
    case 2:
      visit(std::integral_constant<size_t, 2>{});
      return S_OK;
    case 3:
      visit(std::integral_constant<size_t, 3>{});
      return S_OK;
    case 4:
      visit(std::integral_constant<size_t, 4>{});
      return S_OK;
    case 8:
      visit(std::integral_constant<size_t, 8>{});
      return S_OK;
    default:
      return E_FAIL;
  }
}

}  // namespace marlo
