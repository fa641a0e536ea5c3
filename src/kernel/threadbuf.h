// SPDX-License-Identifier: Apache-2.0
// One scratch buffer a thread, for work that needs a large block again and again.
#pragma once

#include <cstdint>

namespace marlo {

inline constexpr uint32_t kThreadBufferBytes = 0x20000;

/// The calling thread's buffer, zero-filled when it is new. It lives until the thread ends or the library is
/// unloaded. @param bytes optional, receives its size. @return null when memory is short or outside the time
/// between load and unload. [any thread]
void* ThreadBuffer(uint32_t* bytes) noexcept;

/// Makes the list of buffers and frees a thread's buffer with the thread from now on. @return false when memory is
/// short.
bool CreateThreadBuffers() noexcept;
/// Frees all buffers, also those of threads that still run.
void DestroyThreadBuffers() noexcept;

}  // namespace marlo
