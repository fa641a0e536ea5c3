// SPDX-License-Identifier: Apache-2.0
// Wave, Wave64 and AIFF files as wholes: make a file's front, put one back, read and change the format.
//
// Every call that takes a WAVEFORMATEX uses its 18-byte head alone, and exists a second time for a _zrwaveformat,
// which it first makes a plain 18-byte format. Where a front is written the format must have no extra bytes, and
// PCM must not be 20-bit and must have the block align of whole bytes of bits times channels; anything else is
// ZR_E_UNSUPPORTED_MEDIA. A null format is E_INVALIDARG unless it is told otherwise; a read or write that failed or
// came short, as with a null or closed file, is ZR_E_FILE_READ or ZR_E_FILE_WRITE.
// No call locks: nobody else may use the file meanwhile. Calls by path share the file for reading.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/export.h"
#include "marlo110k/platform/file.h"
#include "marlo110k/waveformat.h"

/// What the Initialize calls do with an existing file; other values are those of plat::FileDisposition.
enum ZRWAVEFILE_MODE : uint32_t {
  ZRWAVEFILE_NEW = 1,       ///< Fails when the file exists.
  ZRWAVEFILE_ALWAYS = 2,    ///< Replaces it.
  ZRWAVEFILE_TRUNCATE = 3,  ///< Empties it; fails when it doesn't exist.
  ZRWAVEFILE_REPLACE = 4,   ///< As ZRWAVEFILE_ALWAYS.
};

// ---- New files: the front of a file without samples, for a writer to append to -----------------------
// ZR_E_FILE_OPEN when the file can't be opened. A failure may leave a partial file behind.

/// Makes a Wave file of 46 bytes: RIFF, an 18-byte format chunk, a data chunk of size 0.
ZR_API HRESULT ZrInitializeWav(const char16_t* path, const WAVEFORMATEX* format, uint32_t mode) noexcept;
/// The same from a _zrwaveformat.
ZR_API HRESULT ZrInitializeWav(const char16_t* path, const _zrwaveformat* format, uint32_t mode) noexcept;
/// Makes a Wave64 file of 112 bytes.
ZR_API HRESULT ZrInitializeWav64(const char16_t* path, const WAVEFORMATEX* format, uint32_t mode) noexcept;
/// The same from a _zrwaveformat.
ZR_API HRESULT ZrInitializeWav64(const char16_t* path, const _zrwaveformat* format, uint32_t mode) noexcept;
/// Makes a Wave file with a JUNK chunk of zeros, so that the samples begin at `headerSize` made even.
/// @return E_INVALIDARG below 54; the file has been opened, and so emptied, by then.
ZR_API HRESULT ZrInitializeWavWithJunk(const char16_t* path, const WAVEFORMATEX* format, uint32_t mode,
                                       uint32_t headerSize) noexcept;
/// The same from a _zrwaveformat.
ZR_API HRESULT ZrInitializeWavWithJunk(const char16_t* path, const _zrwaveformat* format, uint32_t mode,
                                       uint32_t headerSize) noexcept;
/// Makes a Wave64 file with a junk chunk of zeros; `headerSize` is rounded up to a multiple of 8.
/// @return E_INVALIDARG below 136; the file has been opened, and so emptied, by then.
ZR_API HRESULT ZrInitializeWav64WithJunk(const char16_t* path, const WAVEFORMATEX* format, uint32_t mode,
                                         int64_t headerSize) noexcept;
/// The same from a _zrwaveformat.
ZR_API HRESULT ZrInitializeWav64WithJunk(const char16_t* path, const _zrwaveformat* format, uint32_t mode,
                                         int64_t headerSize) noexcept;

// ---- Existing files: a front in place ----------------------------------------------------------------

/// Overwrites the first `headerSize` bytes of an open Wave file by a new front: RIFF, format, a JUNK chunk of zeros
/// when headerSize is above 46, data. Whatever stood in those bytes is lost; what follows isn't touched. The
/// position is restored.
/// @param headerSize even; 46, or 54 and more. @return ZR_E_BAD_STREAM for any other, and for a file below 46 bytes.
ZR_API HRESULT ZrInsertWavHeader(plat::File* file, const WAVEFORMATEX* format, uint32_t dataBytes,
                                 uint32_t headerSize) noexcept;
/// The same from a _zrwaveformat.
ZR_API HRESULT ZrInsertWavHeader(plat::File* file, const _zrwaveformat* format, uint32_t dataBytes,
                                 uint32_t headerSize) noexcept;
/// The same for Wave64. @param headerSize a multiple of 8; 112, or 136 and more; the file must have 112 bytes.
ZR_API HRESULT ZrInsertW64Header(plat::File* file, const WAVEFORMATEX* format, uint64_t dataBytes,
                                 uint64_t headerSize) noexcept;
/// The same from a _zrwaveformat.
ZR_API HRESULT ZrInsertW64Header(plat::File* file, const _zrwaveformat* format, uint64_t dataBytes,
                                 uint64_t headerSize) noexcept;

/// Repairs a Wave file that a crash left behind, in place. DANGER: THIS OVERWRITES THE START OF THE FILE.
///
/// It takes the file for one that ZrInitializeWav began: format at offset 20, chunks from offset 38 on. Fields of
/// the format that can't be right are replaced from `defaults`. It then looks for the data chunk, by chunk headers
/// and else byte by byte, within the first `scanLimit` bytes, and takes whole frames from there to the end of the
/// file as the data.
///
/// Everything before the samples is then replaced by a new front: other chunks there are lost and become zeros.
/// WHEN NO DATA CHUNK IS FOUND, THE FIRST `scanLimit` BYTES OF THE FILE (all of it, if it is shorter) ARE
/// OVERWRITTEN by a header and zeros, audio included. Don't run it on a file that isn't known to be damaged, keep
/// scanLimit close to where the samples can begin, and work on a copy when in doubt.
///
/// A file with a 16-byte format chunk, which other programs write, is searched from offset 36, where its data
/// chunk may stand; a front of 44 bytes has no room for the new one, so such a file is refused and stays as it is.
/// The position is restored.
/// @param defaults may be null: PCM, 2 channels, 44,100 Hz, 16 bits.
/// @return ZR_E_BAD_STREAM, with the file unchanged, when the samples begin at an odd offset, below 46, or from 47
/// to 53; ZR_E_UNSUPPORTED_MEDIA when even the defaults give no format.
ZR_API HRESULT ZrFixTrashedWav(plat::File* file, const WAVEFORMATEX* defaults, uint32_t scanLimit) noexcept;
/// The same with the defaults of a _zrwaveformat; null as above.
ZR_API HRESULT ZrFixTrashedWav(plat::File* file, const _zrwaveformat* defaults, uint32_t scanLimit) noexcept;
/// The same without defaults.
inline HRESULT ZrFixTrashedWav(plat::File* file, std::nullptr_t, uint32_t scanLimit) noexcept {
  return ZrFixTrashedWav(file, static_cast<const WAVEFORMATEX*>(nullptr), scanLimit);
}
/// Repairs a Wave64 file as ZrFixTrashedWav does, with the same danger: format at offset 64, chunks from 88 on.
/// The samples must begin at a multiple of 8, at 112 or at 136 and more. @param scanLimit rounded down to a multiple
/// of 8.
ZR_API HRESULT ZrFixTrashedW64(plat::File* file, const WAVEFORMATEX* defaults, uint64_t scanLimit) noexcept;
/// The same with the defaults of a _zrwaveformat; null as above.
ZR_API HRESULT ZrFixTrashedW64(plat::File* file, const _zrwaveformat* defaults, uint64_t scanLimit) noexcept;
/// The same without defaults.
inline HRESULT ZrFixTrashedW64(plat::File* file, std::nullptr_t, uint64_t scanLimit) noexcept {
  return ZrFixTrashedW64(file, static_cast<const WAVEFORMATEX*>(nullptr), scanLimit);
}

// ---- Questions, and changing the format --------------------------------------------------------------

/// 1 when the file is a RIFF "WAVE" with a readable format, and that isn't compressed or `acceptCompressed` is set.
/// Every failure is 0.
ZR_API int32_t ZrFileIsWave(const char16_t* path, int32_t acceptCompressed) noexcept;
/// The same for Wave64.
ZR_API int32_t ZrFileIsWave64(const char16_t* path, int32_t acceptCompressed) noexcept;
/// 1 when iff_IsAIFFFile says so. Every failure is 0.
ZR_API int32_t ZrFileIsAiff(const char16_t* path) noexcept;
/// Reads the format of an uncompressed Wave, Wave64 or AIFF file. PCM is put right: 20 bits become 24, and the
/// block align that of whole bytes. Extra bytes that the file doesn't have aren't counted in cbSize.
/// @param sampleFrames optional. @param dataOffset optional; where the first sample stands. Both stay as they were
/// when there is no format.
/// @return a block of at least 18 bytes and all of cbSize, to be freed with free(); null for any failure and for a
/// frame of no bytes.
ZR_API WAVEFORMATEX* ZrGetFileWfx(const char16_t* path, int64_t* sampleFrames, int64_t* dataOffset) noexcept;
/// Changes the format that a Wave or AIFF file states; the samples stay. In a Wave file the first 18 bytes of the
/// format chunk are replaced, and extra bytes no longer counted. An AIFF file takes channels, bits and rate, keeps
/// its frame count and needs a PCM format (else ZR_E_UNSUPPORTED_FILE).
/// @return ZR_E_FILE_OPEN; ZR_E_BAD_STREAM for a chunk too short for the new format; ZR_E_UNKNOWN_FORMAT for any
/// other kind of file, Wave64 included. The format may have extra bytes here; they aren't written.
ZR_API HRESULT ZrSetFileWfx(const char16_t* path, const WAVEFORMATEX* format) noexcept;
/// The same from a _zrwaveformat.
ZR_API HRESULT ZrSetFileWfx(const char16_t* path, const _zrwaveformat* format) noexcept;
