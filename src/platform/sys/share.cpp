// SPDX-License-Identifier: Apache-2.0
// Share modes as locks of open file descriptions on six bytes far behind any data.
//
// Three bytes say which accesses are in use, three which ones are denied; whoever opens holds read locks on the
// bytes of what it does. It fails when somebody else holds a byte that its own contradict: an access in use
// that it denies, or one denied that it uses. The locks go with the description, however the process ends. Claims
// are set before they are tested, so two openers of different processes never both pass; they may both fail.
#include "platform/sys/share.h"

#include <fcntl.h>
#include <pthread.h>

#include <cerrno>

#include "marlo110k/platform/file.h"

namespace plat {
namespace {

constexpr off_t kFirstByte = 0x7FFFFFFFFFFFFF00;
constexpr uint32_t kAllRights = kReadAccess | kWriteAccess | kDeleteAccess;

// Order of the bytes, chosen so that the common claims are one run each.
enum ShareByte : uint32_t { kDeleteUsed, kWriteUsed, kReadUsed, kWriteDenied, kDeleteDenied, kReadDenied, kShareBytes };

constexpr uint32_t Bit(ShareByte byte) { return 1u << byte; }

constexpr uint32_t UsedBytes(uint32_t rights) {
  return ((rights & kReadAccess) != 0 ? Bit(kReadUsed) : 0) | ((rights & kWriteAccess) != 0 ? Bit(kWriteUsed) : 0) |
         ((rights & kDeleteAccess) != 0 ? Bit(kDeleteUsed) : 0);
}

constexpr uint32_t DeniedBytes(uint32_t rights) {
  return ((rights & kReadAccess) != 0 ? Bit(kReadDenied) : 0) | ((rights & kWriteAccess) != 0 ? Bit(kWriteDenied) : 0) |
         ((rights & kDeleteAccess) != 0 ? Bit(kDeleteDenied) : 0);
}

// The share flags have the values of the rights they grant.
static_assert(uint32_t{kShareRead} == uint32_t{kReadAccess} && uint32_t{kShareWrite} == uint32_t{kWriteAccess});
static_assert(uint32_t{kShareDelete} == kDeleteAccess);

// Makes claim and test one step among the threads of this process.
pthread_mutex_t claimLock = PTHREAD_MUTEX_INITIALIZER;

/// Calls run(lock) for each run of bytes in the mask, until one gives false.
template <typename Run>
bool ForEachRun(uint32_t mask, short type, const Run& run) {
  for (uint32_t byte = 0; byte < kShareBytes; ++byte) {
    if ((mask & 1u << byte) == 0) continue;
    uint32_t end = byte + 1;
    while ((mask & 1u << end) != 0) ++end;
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = kFirstByte + byte;
    lock.l_len = end - byte;
    if (!run(lock)) return false;
    byte = end;
  }
  return true;
}

/// False when another description holds one of the bytes.
bool AllFree(int descriptor, uint32_t mask) {
  return ForEachRun(mask, F_WRLCK, [descriptor](struct flock& lock) {
    return fcntl(descriptor, F_OFD_GETLK, &lock) != 0 || lock.l_type == F_UNLCK;
  });
}

}  // namespace

bool ClaimShare(int descriptor, uint32_t access, uint32_t share) noexcept {
  const uint32_t denied = kAllRights & ~share;
  pthread_mutex_lock(&claimLock);
  // A file system without such locks has no share modes.
  const bool claimed = ForEachRun(UsedBytes(access) | DeniedBytes(denied), F_RDLCK, [descriptor](struct flock& lock) {
    return fcntl(descriptor, F_OFD_SETLK, &lock) == 0;
  });
  const bool free = !claimed || AllFree(descriptor, DeniedBytes(access) | UsedBytes(denied));
  pthread_mutex_unlock(&claimLock);
  return free;
}

bool MayAccess(int descriptor, uint32_t access) noexcept { return AllFree(descriptor, DeniedBytes(access)); }

}  // namespace plat
