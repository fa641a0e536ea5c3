// SPDX-License-Identifier: Apache-2.0
// The chunk rules that all formats and both sources share: headers, data, searches and counts. The contracts
// stand in the public headers; what differs between formats stands in framing.h.
#pragma once

#include <algorithm>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "media/riff/byte_source.h"
#include "media/riff/framing.h"
#include "platform/base/memory.h"

namespace marlo::riff {

inline HRESULT ReadResult(bool done) noexcept { return done ? S_OK : ZR_E_FILE_READ; }
inline HRESULT WriteResult(bool done) noexcept { return done ? S_OK : ZR_E_FILE_WRITE; }

template <class Value>
void Store(Value* out, Value value) noexcept {
  if (out != nullptr) *out = value;
}

/// Whether a walk under `bound` has no room left for a header.
template <class Framing>
bool IsSpent(const typename Framing::Bound* bound, typename Framing::Bound left) noexcept {
  return bound != nullptr && left < typename Framing::Bound{Framing::kHeaderBytes};
}

/// Moves over a chunk's data; `left` shrinks by as much. A size that no position can reach is an error only while
/// the bound has room: where it is spent, the walk ends for that reason.
template <class Framing, class Source>
HRESULT PassData(Source source, typename Framing::Size dataBytes, const typename Framing::Bound* bound,
                 typename Framing::Bound* left) noexcept {
  const uint64_t padded = Framing::Padded(dataBytes);
  *left = Framing::TakeOff(*left, padded);
  return ReadResult(source.Skip(static_cast<int64_t>(padded)) || IsSpent<Framing>(bound, *left));
}

/// Always inlined, so that the memory family's cursor stays in registers.
template <class Framing, class Source>
[[gnu::always_inline]] inline HRESULT FindChunk(Source source, const typename Framing::Id& id,
                                                typename Framing::Size* size, typename Framing::Bound* bound) noexcept {
  auto left = bound != nullptr ? *bound : typename Framing::Bound{};
  for (;;) {
    if (IsSpent<Framing>(bound, left)) {
      *bound = left;
      return ZR_E_NOT_FOUND;
    }
    HeaderOf<Framing> header;
    if (!Framing::Read(source, &header)) return ZR_E_FILE_READ;
    left = Framing::TakeOff(left, Framing::kHeaderBytes);
    if (header.id == id) {
      Store(size, header.dataBytes);
      Store(bound, left);
      return S_OK;
    }
    const HRESULT passed = PassData<Framing>(source, header.dataBytes, bound, &left);
    if (FAILED(passed)) return passed;
  }
}

template <class Framing, class Source>
HRESULT FindList(Source source, const typename Framing::Id& listType, typename Framing::Size* size,
                 typename Framing::Bound* bound) noexcept {
  for (;;) {
    typename Framing::Size listBytes = 0;
    const HRESULT found = FindChunk<Framing>(source, Framing::kList, &listBytes, bound);
    if (FAILED(found)) return found;
    if (bound != nullptr && *bound < Framing::kListBound) return ZR_E_NOT_FOUND;
    typename Framing::Id type;
    if (!source.Read(&type, sizeof type)) return ZR_E_FILE_READ;
    if (type == listType) {
      Store(size, Framing::Entries(listBytes));
      if (bound != nullptr) *bound = Framing::TakeOff(*bound, Framing::kTypeBytes);
      return S_OK;
    }
    // The type belongs to the data; a list too short to hold one goes back to where its data ends.
    const uint64_t padded = Framing::Padded(listBytes);
    if (bound != nullptr) *bound = Framing::TakeOff(*bound, padded);
    const bool skipped = source.Skip(static_cast<int64_t>(padded) - int64_t{Framing::kTypeBytes});
    if (!skipped && (bound == nullptr || !IsSpent<Framing>(bound, *bound))) return ZR_E_FILE_READ;
  }
}

/// Steps over at most `entries` chunks and counts them in `passed`. A bound that runs out ends the walk with success.
template <class Framing, class Source>
HRESULT PassEntries(Source source, uint32_t entries, uint32_t* passed, typename Framing::Bound* bound) noexcept {
  auto left = bound != nullptr ? *bound : typename Framing::Bound{};
  HRESULT result = S_OK;
  while (SUCCEEDED(result) && *passed < entries && !IsSpent<Framing>(bound, left)) {
    HeaderOf<Framing> header;
    result = ReadResult(Framing::Read(source, &header));
    if (FAILED(result)) break;
    left = Framing::TakeOff(left, Framing::kHeaderBytes);
    result = PassData<Framing>(source, header.dataBytes, bound, &left);
    if (SUCCEEDED(result)) ++*passed;
  }
  Store(bound, left);
  return result;
}

template <class Framing, class Source>
HRESULT CountEntries(Source source, uint32_t* count, typename Framing::Bound* bound) noexcept {
  if (count == nullptr) return E_INVALIDARG;
  *count = 0;
  const PositionKeeper<Source> keeper(source);
  if (!keeper.Saved()) return ZR_E_FILE_READ;
  return PassEntries<Framing>(source, UINT32_MAX, count, bound);
}

template <class Framing, class Source>
HRESULT SeekEntry(Source source, uint32_t index, typename Framing::Bound* bound) noexcept {
  uint32_t passed = 0;
  const HRESULT result = PassEntries<Framing>(source, index, &passed, bound);
  if (FAILED(result)) return result;
  return passed < index ? ZR_E_NOT_FOUND : S_OK;
}

/// `listType` and `size` are both required.
template <class Framing, class Source>
HRESULT ReadListHeader(Source source, typename Framing::Id* listType, typename Framing::Size* size) noexcept {
  HeaderOf<Framing> header;
  if (!Framing::Read(source, &header)) return ZR_E_FILE_READ;
  if (header.id != Framing::kList) return ZR_E_NO_LIST_HEADER;
  if (!source.Read(listType, Framing::kTypeBytes)) return ZR_E_FILE_READ;
  *size = Framing::Entries(header.dataBytes);
  return S_OK;
}

/// Reads `count` bytes and moves over the padding.
template <class Framing, class Source>
HRESULT ReadData(Source source, void* buffer, uint32_t count) noexcept {
  if (buffer == nullptr && count != 0) return E_INVALIDARG;
  if (!source.Read(buffer, count)) return ZR_E_FILE_READ;
  const uint64_t padding = Framing::Padded(count) - count;
  return ReadResult(padding == 0 || source.Skip(static_cast<int64_t>(padding)));
}

template <class Framing, class Source>
HRESULT ReadDataBounded(Source source, void* buffer, uint32_t bufferBytes, typename Framing::Size chunkBytes) noexcept {
  const auto wanted = static_cast<uint32_t>(std::min<uint64_t>(bufferBytes, chunkBytes));
  if (buffer == nullptr && wanted != 0) return E_INVALIDARG;
  if (!source.Read(buffer, wanted)) return ZR_E_FILE_READ;
  const uint64_t unread = Framing::Padded(chunkBytes) - wanted;
  return ReadResult(unread == 0 || source.Skip(static_cast<int64_t>(unread)));
}

template <class Framing, class Source>
HRESULT ReadDataAlloc(Source source, tZRCHUNKDATA* chunk) noexcept {
  if (chunk == nullptr) return E_INVALIDARG;
  chunk->data = nullptr;
  if (chunk->size == 0) return S_OK;
  const uint64_t remaining = source.Remaining();
  if (remaining < chunk->size) {
    // The read would come short: end where it would have ended, without taking the memory.
    source.Skip(static_cast<int64_t>(remaining));
    return ZR_E_FILE_READ;
  }
  void* block = plat::AllocateZeroed(chunk->size);
  if (block == nullptr) return E_OUTOFMEMORY;
  const HRESULT result = ReadData<Framing>(source, block, chunk->size);
  if (FAILED(result)) {
    plat::FreeBlock(block);
    return result;
  }
  chunk->data = block;
  return S_OK;
}

/// Reads a RIFF header. The 8 header bytes come before the id is looked at.
template <class Source>
HRESULT ReadRiffHeader(Source source, uint32_t* chunkBytes, uint32_t* formType) noexcept {
  Store(chunkBytes, 0u);
  HeaderOf<RiffFraming> header;
  if (!RiffFraming::Read(source, &header)) return ZR_E_FILE_READ;
  if (header.id != ZrChunkId("RIFF")) return ZR_E_NO_RIFF_HEADER;
  uint32_t form = 0;
  if (!source.Read(&form, sizeof form)) return ZR_E_FILE_READ;
  Store(formType, form);
  Store(chunkBytes, RiffFraming::Entries(header.dataBytes));
  return S_OK;
}

template <class Source>
HRESULT FindRiffListFromStart(Source source, uint32_t listType, uint32_t* size) noexcept {
  uint32_t left = 0;
  if (!source.Seek(0)) return ZR_E_FILE_READ;
  const HRESULT result = ReadRiffHeader(source, &left, nullptr);
  return FAILED(result) ? result : FindList<RiffFraming>(source, listType, size, &left);
}

/// A RIFF or LIST header: id, size and type in one write.
template <class Source>
HRESULT WriteTypedHeader(Source source, uint32_t id, uint32_t size, uint32_t type) noexcept {
  const uint32_t words[3] = {id, size, type};
  return WriteResult(source.Write(words, sizeof words));
}

}  // namespace marlo::riff
