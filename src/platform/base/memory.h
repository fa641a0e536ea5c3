// SPDX-License-Identifier: Apache-2.0
// The long-lived heap: zero-filled blocks that other layers may free.
#pragma once

#include <cstddef>
#include <cstdint>

namespace plat {

/// A zero-filled block of at least one byte; null when memory is short.
void* AllocateZeroed(size_t bytes) noexcept;
/// Grows or shrinks; new bytes are zero. The block stays as it is when null is given.
void* ReallocateZeroed(void* block, size_t bytes) noexcept;
/// Null is allowed.
void FreeBlock(void* block) noexcept;
/// The size that was asked for; 0 for null.
size_t BlockBytes(const void* block) noexcept;

/// Test hook: the allocation number `countdown` from now (1 is the next) fails; 0 turns it off.
/// Counts only this layer's allocations, on the calling thread.
void FailAllocation(uint32_t countdown) noexcept;
/// Blocks alive, for leak checks.
int64_t LiveBlocks() noexcept;

/// Length-prefixed platform string of `characters` characters from `text` (null: zeroed), or null.
char16_t* AllocateString(const char16_t* text, size_t characters) noexcept;
void FreeString(char16_t* text) noexcept;
size_t StringCharacters(const char16_t* text) noexcept;

}  // namespace plat
