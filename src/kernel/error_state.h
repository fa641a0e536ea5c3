// SPDX-License-Identifier: Apache-2.0
// The error state of the process.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"

namespace marlo {

inline constexpr size_t kMessageCharacters = 2048;
inline constexpr size_t kDetailCharacters = 8192;
inline constexpr size_t kUrlCharacters = 2083;
inline constexpr size_t kLinkCharacters = 2048;

/// Owner and code are asked by any thread; the rest belongs to the owner.
struct ErrorState {
  std::atomic<HRESULT> lastError;
  char16_t message[kMessageCharacters];  ///< The last composed message.
  std::atomic<uint32_t> ownerThread;     ///< 0 when nobody owns the details.
  int32_t detailCount;
  size_t detailCharacters;
  char16_t details[kDetailCharacters];  ///< Lines, each ended by CR LF.
  char16_t linkUrl[kUrlCharacters];
  char16_t linkText[kLinkCharacters];
};

extern constinit ErrorState errorState;

}  // namespace marlo
