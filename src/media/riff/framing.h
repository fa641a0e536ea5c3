// SPDX-License-Identifier: Apache-2.0
// How the three chunk formats frame a chunk: header, padding, and how a bound shrinks. Everything that differs
// between them in a walk stands here.
#pragma once

#include <algorithm>
#include <cstdint>

#include "marlo110k/riff.h"
#include "marlo110k/riff64.h"

namespace marlo::riff {

/// Files are little-endian, as are the processors this library is for.
inline uint16_t Swap16(uint16_t value) noexcept { return __builtin_bswap16(value); }
inline uint32_t Swap32(uint32_t value) noexcept { return __builtin_bswap32(value); }

template <class IdType, class SizeType>
struct Header {
  IdType id;
  SizeType dataBytes;
};

/// RIFF: 32 bits, little-endian, data padded to even.
struct RiffFraming {
  using Id = uint32_t;
  using Size = uint32_t;
  using Bound = uint32_t;
  static constexpr uint32_t kHeaderBytes = 8;
  static constexpr uint32_t kTypeBytes = 4;
  static constexpr uint32_t kFileHeaderBytes = 12;
  static constexpr Bound kListBound = 4;  ///< Least bound at which a list's type is still read.
  static constexpr Id kList = ZrChunkId("LIST");

  static uint64_t Padded(Size bytes) noexcept { return uint64_t{bytes} + (bytes & 1); }
  /// The bound never runs below 0.
  static Bound TakeOff(Bound bound, uint64_t bytes) noexcept {
    return bytes < bound ? bound - static_cast<Bound>(bytes) : 0;
  }
  /// What a size that counts a type leaves for the entries; wraps below 4.
  static Size Entries(Size bytes) noexcept { return bytes - kTypeBytes; }

  template <class Source>
  static bool Read(Source source, Header<Id, Size>* header) noexcept {
    uint32_t words[2];
    if (!source.Read(words, sizeof words)) return false;
    *header = {words[0], words[1]};
    return true;
  }
  template <class Source>
  static bool Write(Source source, Id id, Size bytes) noexcept {
    const uint32_t words[2] = {id, bytes};
    return source.Write(words, sizeof words);
  }
};

/// IFF: as RIFF, big-endian.
struct IffFraming : RiffFraming {
  /// The bound isn't held at 0: a chunk that reaches past it wraps it, and the file alone ends such a search.
  static Bound TakeOff(Bound bound, uint64_t bytes) noexcept { return bound - static_cast<Bound>(bytes); }

  template <class Source>
  static bool Read(Source source, Header<Id, Size>* header) noexcept {
    if (!RiffFraming::Read(source, header)) return false;
    *header = {Swap32(header->id), Swap32(header->dataBytes)};
    return true;
  }
};

/// Wave64: 16-byte labels, 64 bits, data padded to 8; the size field counts the header.
struct Riff64Framing {
  using Id = GUID;
  using Size = uint64_t;
  using Bound = int64_t;
  static constexpr uint32_t kHeaderBytes = 24;
  static constexpr uint32_t kTypeBytes = 16;
  static constexpr uint32_t kFileHeaderBytes = 40;
  static constexpr Bound kListBound = 8;
  static constexpr Id kList = kZrLabelList;

  /// Held below 2^63, where positions end.
  static uint64_t Padded(Size bytes) noexcept { return (std::min(bytes, uint64_t{INT64_MAX} - 7) + 7) & ~uint64_t{7}; }
  /// May go negative, which the next comparison takes as run out.
  static Bound TakeOff(Bound bound, uint64_t bytes) noexcept {
    return static_cast<Bound>(static_cast<uint64_t>(bound) - bytes);
  }
  static Size Entries(Size bytes) noexcept { return bytes < kTypeBytes ? 0 : bytes - kTypeBytes; }
  /// What a size field says of the data. The field is taken as signed, so that 2^63 and more read as 0 too.
  static Size DataBytes(uint64_t field) noexcept {
    return static_cast<int64_t>(field) < int64_t{kHeaderBytes} ? 0 : field - kHeaderBytes;
  }

  template <class Source>
  static bool Read(Source source, Header<Id, Size>* header) noexcept {
    struct {
      GUID label;
      uint64_t field;
    } raw;
    static_assert(sizeof raw == kHeaderBytes);
    if (!source.Read(&raw, sizeof raw)) return false;
    *header = {raw.label, DataBytes(raw.field)};
    return true;
  }
  template <class Source>
  static bool Write(Source source, const Id& label, Size bytes) noexcept {
    struct {
      GUID label;
      uint64_t field;
    } const raw = {label, bytes + kHeaderBytes};
    static_assert(sizeof raw == kHeaderBytes);
    return source.Write(&raw, sizeof raw);
  }
};

template <class Framing>
using HeaderOf = Header<typename Framing::Id, typename Framing::Size>;

}  // namespace marlo::riff
