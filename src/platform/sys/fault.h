// SPDX-License-Identifier: Apache-2.0
// Runs a call under a guard that catches processor faults of this thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace plat {

/// What a caught fault was.
struct FaultInfo {
  uint32_t code;            ///< As published for exceptions: 0xC0000005 access violation, 0xC000001D illegal
                            ///< instruction, 0xC0000094 integer divide by zero, 0xC00000FD stack overflow, ...
  const void* instruction;  ///< Where it happened.
  const void* address;      ///< The address read or written, null when not known.
  bool write;               ///< The access was a write.
};

/// Calls function(argument) and gives true; a fault inside gives false and fills `info` (optional).
/// Destructors between the fault and this call don't run and held locks stay held: pass plain data
/// and hold no lock. Guards nest. C++ exceptions pass through.
bool Guarded(void (*function)(void*), void* argument, FaultInfo* info) noexcept(false);

/// The published name of a fault code, "Unknown Type" for others.
const char* FaultName(uint32_t code) noexcept;

/// Copies memory that may not be readable. @return false when any byte can't be read.
bool TryRead(const void* address, void* buffer, size_t bytes) noexcept;

}  // namespace plat
