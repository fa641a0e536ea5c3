// SPDX-License-Identifier: Apache-2.0
// Spreads the rows of a picture over a parked pool of threads.
#pragma once

#include <cstdint>

namespace plat {

/// Calls body(context, firstRow, endRow) for contiguous blocks that cover 0 to `rows`, one block a
/// thread, the caller's among them, and returns when all are done. Every block runs under the
/// caller's float state. May be called from inside a block (runs there alone) and from several
/// threads at once. Below `minimumRowsPerThread` rows a thread the caller works alone and no
/// thread wakes.
void ParallelRows(int32_t rows, int32_t minimumRowsPerThread, void (*body)(void*, int32_t, int32_t),
                  void* context) noexcept;

/// The same for a callable.
template <typename Body>
void ParallelRows(int32_t rows, int32_t minimumRowsPerThread, const Body& body) noexcept {
  ParallelRows(
      rows, minimumRowsPerThread,
      [](void* context, int32_t first, int32_t end) { (*static_cast<const Body*>(context))(first, end); },
      const_cast<void*>(static_cast<const void*>(&body)));
}

/// Threads that take part, the caller's included; 0 restores the processor count. Not while a loop runs.
void SetParallelThreads(uint32_t threads) noexcept;
/// Ends the pool's threads; the next loop starts them again. Called at unload.
void StopParallelPool() noexcept;

}  // namespace plat
