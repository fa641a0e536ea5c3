// SPDX-License-Identifier: Apache-2.0
// Events without waiters, lock pairs, file walks and empty row loops, each beside the bare means it stands on.
#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "harness/harness.h"
#include "marlo110k/platform/event.h"
#include "marlo110k/platform/file.h"
#include "marlo110k/platform/lock.h"
#include "platform/base/text.h"
#include "platform/parallel/rows.h"
#include "platform/sys/fault.h"

namespace {

constexpr int kRepeats = 1000;

bool SetWithoutWaiter() {
  plat::Waitable* event = plat::CreateEvent(true, false);
  const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  bench::Question question("Setting and resetting an event that nobody waits for", "pairs");
  question.Ours({"SetEvent, ResetEvent",
                 [event] {
                   for (int i = 0; i < kRepeats; ++i) {
                     plat::SetEvent(event);
                     plat::ResetEvent(event);
                   }
                 },
                 kRepeats});
  question.Peer({"eventfd write, read",
                 [descriptor] {
                   uint64_t value = 1;
                   for (int i = 0; i < kRepeats; ++i) {
                     if (write(descriptor, &value, sizeof value) < 0 || read(descriptor, &value, sizeof value) < 0) {
                       abort();
                     }
                   }
                 },
                 kRepeats});
  // "A few tens of nanoseconds" for one of the two calls.
  question.Goal(-1, 1e9 / 100);
  const bool met = question.Print();
  plat::CloseWaitable(event);
  close(descriptor);
  return met;
}

bool LockPair() {
  plat::CriticalSection lock{};
  plat::InitializeLock(&lock);
  pthread_mutex_t plain = PTHREAD_MUTEX_INITIALIZER;
  bench::Question question("Entering and leaving a free lock", "pairs");
  question.Ours({"re-entrant lock",
                 [&lock] {
                   for (int i = 0; i < kRepeats; ++i) {
                     plat::EnterLock(&lock);
                     plat::LeaveLock(&lock);
                   }
                 },
                 kRepeats});
  question.Peer({"plain POSIX mutex",
                 [&plain] {
                   for (int i = 0; i < kRepeats; ++i) {
                     pthread_mutex_lock(&plain);
                     pthread_mutex_unlock(&plain);
                   }
                 },
                 kRepeats});
  const bool met = question.Print();
  plat::DeleteLock(&lock);
  return met;
}

bool FileWalk() {
  constexpr uint32_t kHeads = 20'000;
  constexpr uint32_t kStride = 64;
  char name[] = "/tmp/marlo-bench-XXXXXX";
  const int descriptor = mkstemp(name);
  const std::vector<char> content(size_t{kHeads} * kStride, 'x');
  if (descriptor < 0 || write(descriptor, content.data(), content.size()) < 0) abort();
  plat::File* file = plat::OpenFile(plat::FromUtf8(name).c_str(), plat::kReadAccess, 3, plat::kOpenExisting);
  bench::Question question("Walking a file by heads of eight bytes", "heads");
  question.Ours({"SeekFile, ReadFile",
                 [file] {
                   char head[8];
                   plat::SeekFile(file, 0, plat::kSeekStart, nullptr);
                   for (uint32_t i = 0; i < kHeads; ++i) {
                     plat::ReadFile(file, head, sizeof head, nullptr);
                     plat::SeekFile(file, kStride - sizeof head, plat::kSeekCurrent, nullptr);
                     bench::Use(head);
                   }
                 },
                 kHeads});
  question.Peer({"pread",
                 [descriptor] {
                   char head[8];
                   for (uint32_t i = 0; i < kHeads; ++i) {
                     if (pread(descriptor, head, sizeof head, off_t{i} * kStride) != sizeof head) abort();
                     bench::Use(head);
                   }
                 },
                 kHeads});
  question.Goal(0, 0.95);
  const bool met = question.Print();
  plat::CloseFile(file);
  close(descriptor);
  unlink(name);
  return met;
}

constexpr auto kTouch = [](int32_t first, int32_t end) {
  bench::Use(&first);
  bench::Use(&end);
};

void EmptyLoops() {
  plat::ParallelRows(1080, 1, kTouch);  // Starts the pool.
  bench::Question question("A row loop that does nothing, shared against called", "loops");
  question.Ours({"ParallelRows, 1080 rows", [] { plat::ParallelRows(1080, 16, kTouch); }});
  question.Peer({"ParallelRows, one row", [] { plat::ParallelRows(1, 1, kTouch); }});
  question.Peer({"plain call", [] { kTouch(0, 1080); }});
  question.Print();
}

void RealLoops() {
  constexpr int32_t kRows = 1080;
  constexpr size_t kPixels = 1920;
  std::vector<uint32_t> picture(kRows * kPixels, 0x01020304);
  const auto work = [&picture](int32_t first, int32_t end) {
    for (size_t i = static_cast<size_t>(first) * kPixels; i < static_cast<size_t>(end) * kPixels; ++i) {
      picture[i] = picture[i] * 2654435761u + 1;
    }
  };
  bench::Question question("A row loop over 1080 rows of 1920 pixels", "loops");
  question.Ours({"shared", [&] { plat::ParallelRows(kRows, 16, work); }});
  question.Peer({"on one thread", [&] { work(0, kRows); }});
  question.Print();
}

void Guards() {
  bench::Question question("A guarded call that does nothing", "calls");
  const auto nothing = [](void* argument) { bench::Use(argument); };
  question.Ours({"Guarded",
                 [nothing] {
                   for (int i = 0; i < kRepeats; ++i) plat::Guarded(nothing, nullptr, nullptr);
                 },
                 kRepeats});
  question.Peer({"plain call",
                 [nothing] {
                   for (int i = 0; i < kRepeats; ++i) nothing(nullptr);
                 },
                 kRepeats});
  question.Print();
}

}  // namespace

int main() {
  bool met = SetWithoutWaiter();
  met &= LockPair();
  met &= FileWalk();
  EmptyLoops();
  RealLoops();
  Guards();
  return met ? 0 : 1;
}
