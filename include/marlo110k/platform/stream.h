// SPDX-License-Identifier: Apache-2.0
// A stream over a block of memory that grows with what is written.
#pragma once

#include <cstdint>

#include "marlo110k/contract/stream.h"
#include "marlo110k/export.h"

namespace plat {

/// Makes a stream that reads, writes and grows a block of the house heap, up to 4 GiB.
/// Reading at the end is a success that gives 0 bytes; writing behind the end zeroes the gap. Clones share the block
/// and its size and have a position of their own. One thread at a time uses a stream and its clones.
/// @param block from the library's house heap, its whole size being the stream's first size; null makes an empty one.
/// @param freeOnRelease non-zero: the block goes with the last of the stream and its clones. Otherwise whoever holds
/// the block frees it.
/// @param stream receives the stream with one reference, null on failure; the block then stays the caller's.
/// @return E_INVALIDARG for a null `stream`, E_OUTOFMEMORY.
ZR_API HRESULT CreateStreamOnBlock(void* block, int32_t freeOnRelease, IStream** stream) noexcept;

/// The block under such a stream, which keeps owning it. The block moves when the stream grows or is resized, and may
/// be longer than the stream: Stat tells the stream's size.
/// @return E_INVALIDARG for null arguments and for a stream of another kind.
ZR_API HRESULT GetBlockOfStream(IStream* stream, void** block) noexcept;

}  // namespace plat
