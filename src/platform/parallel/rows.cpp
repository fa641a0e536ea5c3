// SPDX-License-Identifier: Apache-2.0
// The pool behind ParallelRows: parked threads that help whichever loops are open.
//
// A loop is cut into one contiguous block a thread. Blocks are taken by a counter, by the caller too, so a
// loop ends even when no thread of the pool comes, and several callers share the pool without waiting for
// each other's loops.
#include "platform/parallel/rows.h"

#include <immintrin.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>

#include "marlo110k/platform/event.h"
#include "platform/base/cpu.h"
#include "platform/base/fpu.h"
#include "platform/base/unload.h"
#include "platform/sys/thread.h"

namespace plat {
namespace {

constexpr uint32_t kMaximumThreads = 64;

/// A loop in progress; lives on its caller's stack.
struct Loop {
  void (*body)(void*, int32_t, int32_t);
  void* context;
  int32_t rows;
  int32_t blocks;
  uint32_t floatState;
  std::atomic<int32_t> nextBlock{0};
  std::atomic<int32_t> helpers{0};  ///< Pool threads that hold a pointer to this loop.
  Loop* next = nullptr;

  int32_t FirstRow(int32_t block) const { return static_cast<int32_t>(static_cast<int64_t>(rows) * block / blocks); }
  /// Runs blocks until none is left.
  void Work() {
    for (int32_t block = nextBlock.fetch_add(1, std::memory_order_relaxed); block < blocks;
         block = nextBlock.fetch_add(1, std::memory_order_relaxed)) {
      body(context, FirstRow(block), FirstRow(block + 1));
    }
  }
  bool HasBlocks() const { return nextBlock.load(std::memory_order_relaxed) < blocks; }
};

pthread_mutex_t poolLock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t loopOpened = PTHREAD_COND_INITIALIZER;
pthread_cond_t helperLeft = PTHREAD_COND_INITIALIZER;

// Guarded by poolLock.
Loop* openLoops = nullptr;
Thread* poolThreads[kMaximumThreads];
uint32_t poolThreadCount = 0;
bool stopping = false;
pid_t poolProcess = 0;  ///< A child of fork inherits the numbers but not the threads.

std::atomic<uint32_t> wantedThreads{0};  ///< 0: the processor count.

thread_local bool insideBlock = false;
thread_local bool isPoolThread = false;

uint32_t ThreadsWanted() {
  static const uint32_t processors = std::min(ProcessorCount(), kMaximumThreads);
  const uint32_t wanted = wantedThreads.load(std::memory_order_relaxed);
  return wanted != 0 ? wanted : processors;
}

/// The first open loop with blocks left; poolLock is held.
Loop* LoopToHelp() {
  for (Loop* loop = openLoops; loop != nullptr; loop = loop->next) {
    if (loop->HasBlocks()) return loop;
  }
  return nullptr;
}

uint32_t RunPoolThread(void*) {
  insideBlock = true;  // A loop inside a block runs there alone.
  isPoolThread = true;
  pthread_mutex_lock(&poolLock);
  while (!stopping) {
    Loop* loop = LoopToHelp();
    if (loop == nullptr) {
      pthread_cond_wait(&loopOpened, &poolLock);
      continue;
    }
    loop->helpers.fetch_add(1, std::memory_order_relaxed);
    pthread_mutex_unlock(&poolLock);
    {
      FloatStateGuard state(loop->floatState);
      loop->Work();
    }
    pthread_mutex_lock(&poolLock);
    // The caller may go as soon as the count is down, so it is the last touch.
    if (loop->helpers.fetch_sub(1, std::memory_order_release) == 1) pthread_cond_broadcast(&helperLeft);
  }
  pthread_mutex_unlock(&poolLock);
  return 0;
}

/// Starts what is missing; poolLock is held. A thread that can't be made is done without.
void GrowPool(uint32_t threads) {
  while (poolThreadCount < threads) {
    Thread* thread = StartThread(RunPoolThread, nullptr, kPriorityDefault, "marlo-rows");
    if (thread == nullptr) return;
    poolThreads[poolThreadCount++] = thread;
    poolProcess = getpid();
  }
}

void Open(Loop* loop, uint32_t threads) {
  const uint32_t helpers = static_cast<uint32_t>(loop->blocks) - 1;
  pthread_mutex_lock(&poolLock);
  if (poolThreadCount < threads - 1 && !stopping) GrowPool(threads - 1);
  loop->next = openLoops;
  openLoops = loop;
  if (helpers == 1) {
    pthread_cond_signal(&loopOpened);
  } else {
    pthread_cond_broadcast(&loopOpened);
  }
  pthread_mutex_unlock(&poolLock);
}

void Close(Loop* loop) {
  // The others are mostly nearly done; a sleep would take longer than their rest.
  constexpr int kSpins = 500;
  for (int spin = 0; spin < kSpins && loop->helpers.load(std::memory_order_relaxed) != 0; ++spin) _mm_pause();
  pthread_mutex_lock(&poolLock);
  Loop** link = &openLoops;
  while (*link != loop) link = &(*link)->next;
  *link = loop->next;
  while (loop->helpers.load(std::memory_order_acquire) != 0) pthread_cond_wait(&helperLeft, &poolLock);
  pthread_mutex_unlock(&poolLock);
}

}  // namespace

void ParallelRows(int32_t rows, int32_t minimumRowsPerThread, void (*body)(void*, int32_t, int32_t),
                  void* context) noexcept {
  if (rows <= 0) return;
  const int32_t mostBlocks = rows / std::max(minimumRowsPerThread, 1);
  if (mostBlocks < 2 || insideBlock) {
    body(context, 0, rows);
    return;
  }
  const uint32_t threads = ThreadsWanted();
  Loop loop{body, context, rows, std::min(mostBlocks, static_cast<int32_t>(threads)), FloatState()};
  if (loop.blocks < 2) {
    body(context, 0, rows);
    return;
  }
  Open(&loop, threads);
  insideBlock = true;
  loop.Work();
  insideBlock = false;
  Close(&loop);
}

void SetParallelThreads(uint32_t threads) noexcept {
  StopParallelPool();
  wantedThreads.store(std::min(threads, kMaximumThreads), std::memory_order_relaxed);
}

void StopParallelPool() noexcept {
  if (isPoolThread) return;  // A block that ends the process can't wait for itself.
  Thread* ending[kMaximumThreads];
  pthread_mutex_lock(&poolLock);
  const uint32_t count = poolProcess == getpid() ? poolThreadCount : 0;
  std::copy(poolThreads, poolThreads + count, ending);
  poolThreadCount = 0;
  stopping = count != 0;
  pthread_cond_broadcast(&loopOpened);
  pthread_mutex_unlock(&poolLock);
  for (uint32_t i = 0; i < count; ++i) {
    JoinThread(ending[i], kInfinite, nullptr);
    CloseThread(ending[i]);
  }
  pthread_mutex_lock(&poolLock);
  stopping = false;
  pthread_mutex_unlock(&poolLock);
}

namespace {

/// An unload with threads still parked would leave them without code.
[[gnu::destructor(kStopAtUnload)]] void StopPoolAtUnload() { StopParallelPool(); }

}  // namespace

}  // namespace plat
