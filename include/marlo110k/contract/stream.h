// SPDX-License-Identifier: Apache-2.0
// Sequential and seekable byte streams as hosts and plug-ins share them.
#pragma once

#include "marlo110k/contract/filetime.h"
#include "marlo110k/contract/unknown.h"

inline constexpr GUID IID_ISequentialStream = {
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
inline constexpr GUID IID_IStream = {0x0000000C, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// Where a seek counts from.
enum STREAM_SEEK : uint32_t { STREAM_SEEK_SET = 0, STREAM_SEEK_CUR = 1, STREAM_SEEK_END = 2 };

/// Answer of IStream::Stat.
struct STATSTG {
  char16_t* pwcsName;  ///< From the task allocator, freed by the caller; null when not asked.
  uint32_t type;
  uint64_t cbSize;
  FILETIME mtime;
  FILETIME ctime;
  FILETIME atime;
  uint32_t grfMode;
  uint32_t grfLocksSupported;
  CLSID clsid;
  uint32_t grfStateBits;
  uint32_t reserved;
};
static_assert(sizeof(STATSTG) == 80);

/// A stream that is read or written from front to back.
struct ISequentialStream : IUnknown {
  /// Slot 3. `bytesRead` may be null; a short read at the end is a success with a lower count.
  virtual HRESULT Read(void* buffer, uint32_t bytes, uint32_t* bytesRead) = 0;
  /// Slot 4. `bytesWritten` may be null.
  virtual HRESULT Write(const void* data, uint32_t bytes, uint32_t* bytesWritten) = 0;

 protected:
  ~ISequentialStream() = default;
};

/// A stream with a position that can be moved. Slots 5 to 13.
struct IStream : ISequentialStream {
  virtual HRESULT Seek(int64_t move, uint32_t origin, uint64_t* newPosition) = 0;
  virtual HRESULT SetSize(uint64_t bytes) = 0;
  virtual HRESULT CopyTo(IStream* target, uint64_t bytes, uint64_t* bytesRead, uint64_t* bytesWritten) = 0;
  virtual HRESULT Commit(uint32_t flags) = 0;
  virtual HRESULT Revert() = 0;
  virtual HRESULT LockRegion(uint64_t offset, uint64_t bytes, uint32_t type) = 0;
  virtual HRESULT UnlockRegion(uint64_t offset, uint64_t bytes, uint32_t type) = 0;
  virtual HRESULT Stat(STATSTG* stat, uint32_t flags) = 0;
  virtual HRESULT Clone(IStream** stream) = 0;

 protected:
  ~IStream() = default;
};
