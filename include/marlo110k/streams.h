// SPDX-License-Identifier: Apache-2.0
// Streams over memory and files, windows on other streams, and lists and foreign chunks read as streams.
//
// A slot that a stream doesn't fill gives E_NOTIMPL; which ones it fills stands at its factory. A factory gives one
// reference, or null and a failure: E_INVALIDARG, E_OUTOFMEMORY. References may be counted on any thread; everything
// else belongs to one thread at a time. The optional counts and positions of the slots may be null.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/stream.h"
#include "marlo110k/export.h"
#include "marlo110k/list.h"
#include "marlo110k/platform/file.h"

// ---- Memory and files ------------------------------------------------------------------------------

/// A stream over a caller's block, which must stay as long as the stream and its clones.
/// Fills Read, Write, Seek, Stat and Clone. Reading at the end and writing at the capacity give S_FALSE and 0 bytes; a
/// write that doesn't fit is cut with S_OK. The position may be anywhere up to the capacity, else the seek fails with
/// STG_E_INVALIDFUNCTION; a write behind the size zeroes the gap. A clone has its own size and position.
/// @param capacity bytes of the block. @param size bytes of it that count as written, at most the capacity.
ZR_API HRESULT ZrCreateStreamFromMemory(void* block, uint32_t capacity, uint32_t size, IStream** stream) noexcept;
/// The same for blocks of any length.
ZR_API HRESULT ZrCreateStreamFromMemory(void* block, uint64_t capacity, uint64_t size, IStream** stream) noexcept;

/// A stream over an open file, which stays the caller's and must outlive the stream and its clones.
/// Fills Read, Write, Seek and Clone. The stream keeps a position of its own and sets the file's before each transfer.
/// A short read is a success. Seeks behind the end are allowed, except from the end by a positive offset.
/// @return also the code of the platform's failure to tell the file's size.
ZR_API HRESULT ZrCreateStreamFromFile(plat::File* file, IStream** stream) noexcept;

// ---- Windows on other streams ----------------------------------------------------------------------

inline constexpr IID IID_IZrProtectedStream = {
    0xFA000DBA, 0xCEDB, 0x4D01, {0xB9, 0x23, 0xBB, 0x72, 0x2D, 0x68, 0x7E, 0xF2}};

/// What a protected stream does with a read that reaches past its window.
enum ZRPROTECTED_READMODE : uint32_t {
  ZRPROTECTED_CUT = 1,   ///< Ends it at the window's end; the mode of a new stream.
  ZRPROTECTED_ZERO = 2,  ///< Reads all of it and zeroes the bytes behind the window.
};

/// Shows a stream to a stranger, a plug-in for instance, who then can't leave a window on it.
/// Fills Read, Write, Seek and Clone. Without a window nothing is read (S_OK and 0 bytes) and writes pass freely.
/// Read gives STG_E_ACCESSDENIED from before the window, and in ZRPROTECTED_CUT also from behind it; S_FALSE when fewer
/// bytes came than asked, also when the inner stream failed. Write passes the inner stream's code and lengthens an
/// enabled window that it overruns. Positions count from the window's start while it is enabled or enforced; a seek out
/// of it gives STG_E_INVALIDFUNCTION, though in ZRPROTECTED_ZERO one from the start may go behind its end.
/// A clone has a clone of the inner stream and no window.
struct IZrProtectedStream : IStream {
  /// Slot 14. The position stays where it is, perhaps outside.
  /// @param enabled non-zero limits reads and seeks. @param writeEnforced non-zero keeps writes from before `base`.
  /// @param base where the window starts in the inner stream. @param length its bytes.
  virtual HRESULT SetWindow(int32_t enabled, int32_t writeEnforced, uint64_t base, uint64_t length) = 0;
  /// Slot 15. In a mode of another number nothing is read.
  virtual HRESULT SetReadMode(uint32_t mode) = 0;
  /// Slot 16. Takes a reference to another inner stream in place of the present one; null leaves none, and then reads,
  /// writes and seeks give STG_E_READFAULT, STG_E_WRITEFAULT and STG_E_INVALIDFUNCTION.
  /// @return the new stream's code when it can't tell its position; the present one then stays.
  virtual HRESULT SetStream(IStream* stream) = 0;

 protected:
  ~IZrProtectedStream() = default;
};

/// A protected stream without a window, which takes a reference to `stream`.
ZR_API HRESULT ZrProtectedStream_CreateFromStream(IStream* stream, IZrProtectedStream** protectedStream) noexcept;
/// The same over a stream that ZrCreateStreamFromFile makes.
ZR_API HRESULT ZrProtectedStream_CreateFromFile(plat::File* file, IZrProtectedStream** protectedStream) noexcept;
/// The same over a stream that ZrCreateStreamFromMemory makes.
ZR_API HRESULT ZrProtectedStream_CreateFromMemory(void* block, uint32_t capacity, uint32_t size,
                                                  IZrProtectedStream** protectedStream) noexcept;
/// The same for blocks of any length.
ZR_API HRESULT ZrProtectedStream_CreateFromMemory(void* block, uint64_t capacity, uint64_t size,
                                                  IZrProtectedStream** protectedStream) noexcept;
