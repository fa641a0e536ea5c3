// SPDX-License-Identifier: Apache-2.0
// The system's clock, the fake one, and the sleep of a wait cell on either.
#include "platform/base/clock.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>

#include "marlo110k/platform/event.h"
#include "platform/base/wait_cell.h"

namespace plat {

/// A timed wait in progress on the fake clock.
struct TimedWait {
  WaitCell* cell;
  int64_t due;
  uint32_t timeoutResult;
  TimedWait* next;
  TimedWait** link;  ///< Where the wait before it, or the list, points at this one; null when off the list.
};

struct FakeClock::State {
  FakeClock* owner;
  int64_t counter;
  TimedWait* waits;
  Clock* formerClock;
  State* formerState;
};

namespace {

constexpr int64_t kCountsPerSecond = 10'000'000;
constexpr int64_t kCountsPerMillisecond = kCountsPerSecond / 1000;

std::atomic<Clock*> currentClock{nullptr};
std::atomic<FakeClock::State*> fakeState{nullptr};

// Guards the fake clock's state and the choice of it; never taken while the system's clock is in place.
pthread_mutex_t fakeLock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t waitersChanged = PTHREAD_COND_INITIALIZER;

int64_t SystemCounter() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * kCountsPerSecond + now.tv_nsec / 100;
}

/// Ends the waits that are due; all of them when the clock goes.
void WakeDue(FakeClock::State* state, bool all) {
  for (TimedWait* wait = state->waits; wait != nullptr; wait = wait->next) {
    if ((all || wait->due <= state->counter) && wait->cell->Claim(wait->timeoutResult)) WaitCell::Wake(wait->cell);
  }
}

/// Waits that nothing has ended yet; one whose thread is on its way out doesn't count.
uint32_t OpenWaits(const FakeClock::State& state) {
  uint32_t count = 0;
  for (const TimedWait* wait = state.waits; wait != nullptr; wait = wait->next) count += wait->cell->IsOpen();
  return count;
}

/// Enters the wait on the fake clock. @return false when the system's clock is in place.
bool BeginFakeWait(TimedWait* wait, uint32_t timeoutMs) {
  if (fakeState.load(std::memory_order_acquire) == nullptr) return false;
  pthread_mutex_lock(&fakeLock);
  FakeClock::State* state = fakeState.load(std::memory_order_relaxed);
  if (state != nullptr) {
    wait->due = state->counter + timeoutMs * kCountsPerMillisecond;
    wait->next = state->waits;
    wait->link = &state->waits;
    if (wait->next != nullptr) wait->next->link = &wait->next;
    state->waits = wait;
    pthread_cond_broadcast(&waitersChanged);
  }
  pthread_mutex_unlock(&fakeLock);
  return state != nullptr;
}

/// The clock may have gone meanwhile; it then took the wait off its list.
void EndFakeWait(TimedWait* wait) {
  pthread_mutex_lock(&fakeLock);
  if (wait->link != nullptr) {
    *wait->link = wait->next;
    if (wait->next != nullptr) wait->next->link = wait->link;
  }
  pthread_mutex_unlock(&fakeLock);
}

long Futex(const void* word, int operation, uint32_t value, const timespec* until) {
  return syscall(SYS_futex, word, operation | FUTEX_PRIVATE_FLAG, value, until, nullptr, FUTEX_BITSET_MATCH_ANY);
}

}  // namespace

int64_t Counter() noexcept {
  Clock* clock = currentClock.load(std::memory_order_acquire);
  return clock == nullptr ? SystemCounter() : clock->Counter();
}

int64_t CounterFrequency() noexcept {
  Clock* clock = currentClock.load(std::memory_order_acquire);
  return clock == nullptr ? kCountsPerSecond : clock->Frequency();
}

uint32_t Milliseconds() noexcept {
  const int64_t counter = Counter();
  const int64_t frequency = CounterFrequency();
  // In two steps, since counter * 1000 may not fit.
  return static_cast<uint32_t>(counter / frequency * 1000 + counter % frequency * 1000 / frequency);
}

LocalTime GetLocalTime() noexcept {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local{};
  localtime_r(&now.tv_sec, &local);
  const auto word = [](long value) { return static_cast<uint16_t>(value); };
  return {word(local.tm_year + 1900), word(local.tm_mon + 1), word(local.tm_mday),          word(local.tm_hour),
          word(local.tm_min),         word(local.tm_sec),     word(now.tv_nsec / 1'000'000)};
}

Clock* SetClock(Clock* clock) noexcept { return currentClock.exchange(clock, std::memory_order_acq_rel); }

FakeClock::FakeClock() : state_(new State{this, kCountsPerSecond, nullptr, nullptr, nullptr}) {
  state_->formerClock = SetClock(this);
  pthread_mutex_lock(&fakeLock);
  state_->formerState = fakeState.exchange(state_, std::memory_order_acq_rel);
  pthread_mutex_unlock(&fakeLock);
}

FakeClock::~FakeClock() {
  pthread_mutex_lock(&fakeLock);
  fakeState.store(state_->formerState, std::memory_order_release);
  WakeDue(state_, true);
  for (TimedWait* wait = state_->waits; wait != nullptr; wait = wait->next) wait->link = nullptr;
  pthread_mutex_unlock(&fakeLock);
  SetClock(state_->formerClock);
  delete state_;
}

int64_t FakeClock::Counter() {
  pthread_mutex_lock(&fakeLock);
  const int64_t counter = state_->counter;
  pthread_mutex_unlock(&fakeLock);
  return counter;
}

int64_t FakeClock::Frequency() { return kCountsPerSecond; }

void FakeClock::StepMilliseconds(uint32_t milliseconds) {
  pthread_mutex_lock(&fakeLock);
  state_->counter += milliseconds * kCountsPerMillisecond;
  WakeDue(state_, false);
  pthread_mutex_unlock(&fakeLock);
}

void FakeClock::AwaitTimedWaiters(uint32_t waiters) {
  pthread_mutex_lock(&fakeLock);
  while (OpenWaits(*state_) < waiters) pthread_cond_wait(&waitersChanged, &fakeLock);
  pthread_mutex_unlock(&fakeLock);
}

void WaitCell::Wake(const WaitCell* cell) noexcept { Futex(&cell->word_, FUTEX_WAKE, 1, nullptr); }

uint32_t WaitCell::Wait(uint32_t timeoutMs, uint32_t timeoutResult) noexcept {
  if (timeoutMs == 0) {
    Claim(timeoutResult);
    return word_.load(std::memory_order_acquire);
  }
  TimedWait wait{this, 0, timeoutResult, nullptr, nullptr};
  if (timeoutMs == kInfinite || !BeginFakeWait(&wait, timeoutMs)) return WaitOnSystemClock(timeoutMs, timeoutResult);
  // The fake clock itself claims the cell when the time has come.
  const uint32_t result = WaitOnSystemClock(kInfinite, timeoutResult);
  EndFakeWait(&wait);
  return result;
}

uint32_t WaitCell::WaitOnSystemClock(uint32_t timeoutMs, uint32_t timeoutResult) noexcept {
  timespec until{};
  if (timeoutMs != kInfinite) {
    clock_gettime(CLOCK_MONOTONIC, &until);
    until.tv_sec += timeoutMs / 1000;
    until.tv_nsec += timeoutMs % 1000 * 1'000'000L;
    if (until.tv_nsec >= 1'000'000'000L) {
      until.tv_nsec -= 1'000'000'000L;
      ++until.tv_sec;
    }
  }
  while (IsOpen()) {
    const long woken = Futex(&word_, FUTEX_WAIT_BITSET, kOpen, timeoutMs == kInfinite ? nullptr : &until);
    if (woken != 0 && errno == ETIMEDOUT) Claim(timeoutResult);
  }
  return word_.load(std::memory_order_acquire);
}

}  // namespace plat
