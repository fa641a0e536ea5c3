// SPDX-License-Identifier: Apache-2.0
// Files as the chunk layers and their hosts use them: one position per handle, short reads told
// from failures, share modes between the handles of this machine's users of the library.
#pragma once

#include <cstdint>

#include "marlo110k/export.h"

namespace plat {

/// An open file. One thread at a time.
class File;

/// What a failed open gives, and what every call takes as "no file"; null counts as the same.
inline File* const kInvalidFile = reinterpret_cast<File*>(static_cast<intptr_t>(-1));

/// What a handle may do.
enum FileAccess : uint32_t { kReadAccess = 1, kWriteAccess = 2, kReadWriteAccess = 3 };

/// What other handles on the file may do meanwhile. Enforced among processes that use this layer.
enum FileShare : uint32_t { kShareNone = 0, kShareRead = 1, kShareWrite = 2, kShareDelete = 4 };

/// What to do with a file that exists or doesn't.
enum FileDisposition : uint32_t {
  kCreateNew = 1,        ///< Error 80 when it exists.
  kCreateAlways = 2,     ///< Empties an existing file.
  kOpenExisting = 3,     ///< Error 2 when it doesn't exist.
  kOpenAlways = 4,       ///< Creates when missing.
  kTruncateExisting = 5  ///< Empties; error 2 when it doesn't exist. Needs write access.
};

/// Where a seek counts from.
enum FileSeek : uint32_t { kSeekStart = 0, kSeekCurrent = 1, kSeekEnd = 2 };

/// Opens a file. Backslashes in `path` separate folders like slashes; an existing name is found
/// without regard to case; a new file keeps the name as given.
/// @return the handle, or kInvalidFile with the reason in LastError(); a null path is error 3.
ZR_API File* OpenFile(const char16_t* path, uint32_t access, uint32_t share, uint32_t disposition) noexcept;
/// Closes; a bad handle does nothing.
ZR_API void CloseFile(File* file) noexcept;

/// Reads up to `bytes` at the position and moves it on.
/// @param bytesRead what came, optional; fewer than asked at the end of the file is a success.
/// @return false when the read failed or the handle is bad; LastError() tells.
ZR_API bool ReadFile(File* file, void* buffer, uint32_t bytes, uint32_t* bytesRead) noexcept;
/// Writes at the position and moves it on. @param bytesWritten optional.
/// @return false when not all could be written; LastError() tells (112: the disk is full).
ZR_API bool WriteFile(File* file, const void* data, uint32_t bytes, uint32_t* bytesWritten) noexcept;
/// Moves the position; past the end is allowed, before the start is error 131.
/// @param newPosition optional.
ZR_API bool SeekFile(File* file, int64_t offset, uint32_t from, uint64_t* newPosition) noexcept;
/// Cuts or extends the file at the position.
ZR_API bool SetEndOfFile(File* file) noexcept;
/// The length of the file.
ZR_API bool GetFileBytes(File* file, uint64_t* bytes) noexcept;
/// Writes buffered data through to the device.
ZR_API bool FlushFile(File* file) noexcept;

/// Makes a file of `bytes` bytes in memory, for hosts that hold an image and want the file calls.
/// The block is copied; growing is allowed up to `capacityBytes`, past which writes fail as on a full disk.
ZR_API File* OpenMemoryFile(const void* data, uint64_t bytes, uint64_t capacityBytes) noexcept;

/// Removes a file by name, with the path rules of OpenFile.
/// @return false when there is none or it is read-only; LastError() tells (2, 5).
ZR_API bool RemoveFile(const char16_t* path) noexcept;
/// Gives a file another name in the same file system, in one step: whoever opens `to` meets the former file or
/// the new one, never a part. Path rules of OpenFile.
/// @return false when that isn't possible; both files are then as they were, and LastError() tells.
ZR_API bool MoveFileOver(const char16_t* from, const char16_t* to) noexcept;

/// Error number of this thread's last failed platform call, in the numbering that
/// ZrErrorHandler_TranslateWin32Error reads.
ZR_API uint32_t LastError() noexcept;

}  // namespace plat

/// The file layer's plain read: up to `bytes` at the position.
/// @return 1 on success (also on a short read), 0 on failure; a bad handle fails.
ZR_API int32_t ZrReadFile(plat::File* file, void* buffer, uint32_t bytes, uint32_t* bytesRead) noexcept;
