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
// ---- Items as streams ------------------------------------------------------------------------------

inline constexpr uint32_t kZrItemStreamVersion = 100;

/// What an item stream starts with.
struct tZRITEMSTREAMHEADER {
  uint32_t headerSize;  ///< Of this record: 28.
  uint32_t version;     ///< kZrItemStreamVersion.
  uint32_t itemCount;
  GUID streamType;
};
static_assert(sizeof(tZRITEMSTREAMHEADER) == 28 && offsetof(tZRITEMSTREAMHEADER, streamType) == 12);

/// What stands before the data of each item.
struct tZRSTREAMITEM {
  uint32_t headerSize;  ///< Of this record: 28.
  uint32_t version;     ///< kZrItemStreamVersion.
  GUID itemType;
  uint32_t dataSize;  ///< Bytes that follow.
};
static_assert(sizeof(tZRSTREAMITEM) == 28 && offsetof(tZRSTREAMITEM, dataSize) == 24);

/// Type of an unknown-chunk stream and of each of its items.
inline constexpr GUID kZrUnknownChunkStream = {
    0xD907621B, 0xCA0D, 0x40C3, {0xA8, 0x9D, 0x2A, 0x18, 0x2B, 0x5D, 0x20, 0xB7}};

/// A list of ready-made items, each a tZRSTREAMITEM with its data behind it, as one stream.
/// Fills Read and Seek. Read gives the stream header, with the count that the list has then, and the items; past the
/// last it gives E_FAIL and the short count, without a list ZR_E_END_OF_STREAM, for no bytes E_INVALIDARG.
/// Seek: from the start goes to the header and from the end behind the last item, whatever the offset; from the
/// current place it skips bytes forward once the header was read, ZR_E_END_OF_STREAM when the items end before. The
/// position told is the index of the item, 0 in the header.
/// @param list stays the caller's and must outlive the stream; null makes a stream without a list.
ZR_API HRESULT ZrMetaStream_CreateGeneric(tZRLIST* list, const GUID& streamType, IStream** stream) noexcept;

/// Tells the chunks that need no keeping: non-zero for an id that the caller knows. It may move the file's position.
using ZRCHUNKFILTER = int32_t (*)(plat::File* file, uint32_t id);

/// The chunks of a RIFF file that `filter` doesn't know, as one stream of items: what a writer needs to carry them
/// over. An item's data are the chunk's header and bytes; the pad byte of an odd chunk follows without being counted.
/// Fills Read and Seek. Read gives S_FALSE when the chunks end; ZR_E_FILE_READ when a chunk's data do before their
/// size; E_FAIL at a chunk of 2 GiB or more and at the 51st that is empty (empty ones are left out); E_INVALIDARG for
/// no bytes. Seeks from the start and from the end rewind.
/// @param file open for reading; goes to the stream, which closes it. kInvalidFile gives a header alone.
/// @return on failure the file stays the caller's.
ZR_API HRESULT ZrMetaStream_CreateUnknownChunk(plat::File* file, ZRCHUNKFILTER filter, IStream** stream) noexcept;
