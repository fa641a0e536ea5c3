// SPDX-License-Identifier: Apache-2.0
// A module that holds the platform layer, for tests that load and unload it.
#include "platform/parallel/rows.h"
#include "platform/sys/fault.h"
#include "platform/sys/thread.h"

namespace {
int* leaves = nullptr;
void CountLeave() { ++*leaves; }
}  // namespace

#define PROBE extern "C" __attribute__((visibility("default")))

PROBE int ProbeAnswer() { return 42; }

/// From now on threads that touched the module add to `counter` when they end.
PROBE bool ProbeHook(int* counter) {
  leaves = counter;
  return plat::AddThreadDetachHook(CountLeave);
}
PROBE void ProbeUnhook() { plat::RemoveThreadDetachHook(CountLeave); }
PROBE void ProbeTouch() { plat::TouchThread(); }

PROBE void ProbeOpenInbox() { plat::OpenInbox(); }

/// Leaves behind what a thread may hold when the library goes: a handler stack and parked pool threads.
PROBE bool ProbeUseAll() {
  plat::ParallelRows(64, 1, [](int32_t, int32_t) {});
  return !plat::Guarded([](void*) { *static_cast<volatile int*>(nullptr) = 1; }, nullptr, nullptr);
}
