// SPDX-License-Identifier: Apache-2.0
// The thread's last error, and the platform numbers of errno values.
#include <cerrno>

#include "marlo110k/platform/file.h"
#include "platform/sys/file_backend.h"

namespace plat {
namespace {

thread_local uint32_t lastError = 0;

struct Row {
  int errorNumber;
  uint32_t platformNumber;
};

constexpr Row kRows[] = {
    {0, 0},               // success
    {ENOENT, 2},          // file not found
    {ENOTDIR, 3},         // path not found
    {ELOOP, 3},           //
    {EMFILE, 4},          // too many open files
    {ENFILE, 4},          //
    {EACCES, 5},          // access denied
    {EPERM, 5},           //
    {EROFS, 5},           //
    {EISDIR, 5},          //
    {EBADF, 6},           // invalid handle
    {ENOMEM, 14},         // out of memory
    {EXDEV, 17},          // not the same device
    {ENXIO, 21},          // not ready
    {ENODEV, 21},         //
    {ETXTBSY, 32},        // sharing violation
    {EAGAIN, 33},         // lock violation
    {ENOLCK, 33},         //
    {EOPNOTSUPP, 50},     // not supported
    {EINVAL, 87},         // bad parameter
    {EPIPE, 109},         // broken pipe
    {ENOSPC, 112},        // disk full
    {EDQUOT, 112},        //
    {ENOSYS, 120},        // not implemented
    {EILSEQ, 123},        // bad name
    {ENOTEMPTY, 145},     // folder not empty
    {EBUSY, 170},         // busy
    {EEXIST, 183},        // already exists
    {ENAMETOOLONG, 206},  // name too long
    {EFBIG, 223},         // file too large
    {EOVERFLOW, 534},     // arithmetic overflow
    {EIO, 1117},          // device error
    {ETIMEDOUT, 1460},    // time-out
};

constexpr uint32_t kGeneralFailure = 31;

}  // namespace

uint32_t LastError() noexcept { return lastError; }
void SetLastError(uint32_t error) noexcept { lastError = error; }

uint32_t ErrorOfErrno(int error) noexcept {
  for (const Row& row : kRows) {
    if (row.errorNumber == error) return row.platformNumber;
  }
  return kGeneralFailure;
}

}  // namespace plat
