// SPDX-License-Identifier: Apache-2.0
// The fault guard: signal handlers that jump back into the innermost guard of the faulting thread.
#include "platform/sys/fault.h"

#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/uio.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>

#include "platform/base/unload.h"
#include "platform/sys/thread.h"

namespace plat {
namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGTRAP};
constexpr size_t kSignalCount = sizeof kSignals / sizeof kSignals[0];
constexpr size_t kHandlerStackBytes = 64 * 1024;
constexpr size_t kLeastForeignStackBytes = 16 * 1024;

constexpr uint32_t kMisalignment = 0x80000002;
constexpr uint32_t kBreakpoint = 0x80000003;
constexpr uint32_t kSingleStep = 0x80000004;
constexpr uint32_t kAccessViolation = 0xC0000005;
constexpr uint32_t kInPageError = 0xC0000006;
constexpr uint32_t kIllegalInstruction = 0xC000001D;
constexpr uint32_t kArrayBounds = 0xC000008C;
constexpr uint32_t kFloatDivideByZero = 0xC000008E;
constexpr uint32_t kFloatInexact = 0xC000008F;
constexpr uint32_t kFloatInvalid = 0xC0000090;
constexpr uint32_t kFloatOverflow = 0xC0000091;
constexpr uint32_t kFloatUnderflow = 0xC0000093;
constexpr uint32_t kDivideByZero = 0xC0000094;
constexpr uint32_t kIntegerOverflow = 0xC0000095;
constexpr uint32_t kStackOverflow = 0xC00000FD;

struct Name {
  uint32_t code;
  const char* text;
};

constexpr Name kNames[] = {
    {0x80000001, "guard page violation"},
    {kMisalignment, "datatype misalignment"},
    {kBreakpoint, "breakpoint"},
    {kSingleStep, "single step"},
    {kAccessViolation, "access violation"},
    {kInPageError, "in page error"},
    {0xC0000008, "invalid handle"},
    {0xC0000017, "no memory"},
    {kIllegalInstruction, "illegal instruction"},
    {0xC0000025, "noncontinuable exception"},
    {0xC0000026, "invalid disposition"},
    {kArrayBounds, "array bounds exceeded"},
    {0xC000008D, "float denormal operand"},
    {kFloatDivideByZero, "float divide by zero"},
    {kFloatInexact, "float inexact result"},
    {kFloatInvalid, "float invalid operation"},
    {kFloatOverflow, "float overflow"},
    {0xC0000092, "float stack check"},
    {kFloatUnderflow, "float underflow"},
    {kDivideByZero, "integer divide by zero"},
    {kIntegerOverflow, "integer overflow"},
    {0xC0000096, "privileged instruction"},
    {kStackOverflow, "stack overflow"},
    {0xC000013A, "control+c exit"},
};

/// One guarded call in progress.
struct Guard {
  sigjmp_buf place;
  Guard* outer;
  FaultInfo fault;
};

// Read inside signal handlers, where a lazily allocated thread-local could deadlock in the heap.
__attribute__((tls_model("initial-exec"))) thread_local Guard* innermost = nullptr;

struct sigaction formerActions[kSignalCount];
std::atomic<bool> handlersInstalled{false};
pthread_mutex_t installLock = PTHREAD_MUTEX_INITIALIZER;

/// The handler stack that this layer gave to the thread; null when the thread has another one.
thread_local void* ownHandlerStack = nullptr;
thread_local bool stackChecked = false;

/// An overflow faults just beside the stack pointer, which a stray access inside the stack never does.
bool IsStackOverflow(uintptr_t address, uintptr_t stackPointer) {
  constexpr uintptr_t kNear = 64 * 1024;
  return address + kNear > stackPointer && address < stackPointer + kNear;
}

uint32_t CodeOfFloat(int detail) {
  switch (detail) {
    case FPE_INTDIV:
      return kDivideByZero;
    case FPE_INTOVF:
      return kIntegerOverflow;
    case FPE_FLTDIV:
      return kFloatDivideByZero;
    case FPE_FLTOVF:
      return kFloatOverflow;
    case FPE_FLTUND:
      return kFloatUnderflow;
    case FPE_FLTRES:
      return kFloatInexact;
    case FPE_FLTSUB:
      return kArrayBounds;
    default:
      return kFloatInvalid;
  }
}

FaultInfo Describe(int signal, const siginfo_t& info, const mcontext_t& machine) {
  constexpr greg_t kPageFault = 14;
  constexpr greg_t kWriteBit = 2;
  FaultInfo fault{};
  const uintptr_t instruction = static_cast<uintptr_t>(machine.gregs[REG_RIP]);
  fault.instruction = reinterpret_cast<const void*>(instruction);
  switch (signal) {
    case SIGSEGV:
    case SIGBUS: {
      const uintptr_t address = reinterpret_cast<uintptr_t>(info.si_addr);
      // The system doesn't tell the address of an access outside the address space.
      if (info.si_code != SI_KERNEL) fault.address = info.si_addr;
      fault.write = machine.gregs[REG_TRAPNO] == kPageFault && (machine.gregs[REG_ERR] & kWriteBit) != 0;
      if (signal == SIGBUS) {
        fault.code = info.si_code == BUS_ADRALN ? kMisalignment : kInPageError;
      } else {
        const bool overflow =
            info.si_code != SI_KERNEL && IsStackOverflow(address, static_cast<uintptr_t>(machine.gregs[REG_RSP]));
        fault.code = overflow ? kStackOverflow : kAccessViolation;
      }
      break;
    }
    case SIGILL:
      fault.code = kIllegalInstruction;
      break;
    case SIGFPE:
      fault.code = CodeOfFloat(info.si_code);
      break;
    default:
      fault.code = info.si_code == TRAP_TRACE ? kSingleStep : kBreakpoint;
      // The processor reports the place behind a breakpoint instruction.
      if (fault.code == kBreakpoint) fault.instruction = reinterpret_cast<const void*>(instruction - 1);
      break;
  }
  return fault;
}

/// Leaves a fault that is none of ours to whoever handled it before.
void PassOn(int signal, siginfo_t* info, void* context) {
  const size_t index = static_cast<size_t>(std::find(kSignals, kSignals + kSignalCount, signal) - kSignals);
  const struct sigaction& former = formerActions[index];
  if ((former.sa_flags & SA_SIGINFO) != 0 && former.sa_sigaction != nullptr) {
    former.sa_sigaction(signal, info, context);
  } else if (former.sa_handler != SIG_DFL && former.sa_handler != SIG_IGN) {
    former.sa_handler(signal);
  } else {
    const bool sentByProcess = info->si_code <= 0;
    if (former.sa_handler == SIG_IGN && sentByProcess) return;
    // With the default action in place the instruction faults again and ends the process.
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL;
    sigaction(signal, &standard, nullptr);
    if (sentByProcess) raise(signal);
  }
}

void OnSignal(int signal, siginfo_t* info, void* context) {
  Guard* guard = innermost;
  // A signal that a process sent is not a fault of the code under guard.
  if (guard == nullptr || info->si_code <= 0) {
    PassOn(signal, info, context);
    return;
  }
  guard->fault = Describe(signal, *info, static_cast<const ucontext_t*>(context)->uc_mcontext);
  siglongjmp(guard->place, 1);
}

void UnblockSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : kSignals) sigaddset(&set, signal);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

/// Detach hook: gives the handler stack back.
void ReleaseHandlerStack() {
  if (ownHandlerStack != nullptr) {
    stack_t off{};
    off.ss_flags = SS_DISABLE;
    sigaltstack(&off, nullptr);
    munmap(ownHandlerStack, kHandlerStackBytes);
  }
  ownHandlerStack = nullptr;
  stackChecked = false;
}

/// A stack overflow leaves no room for the handler, so it runs on a stack of its own. One that a host
/// or a sanitizer has set up is used as it is.
void ProvideHandlerStack() {
  stackChecked = true;
  stack_t present{};
  sigaltstack(nullptr, &present);
  if ((present.ss_flags & SS_DISABLE) == 0 && present.ss_size >= kLeastForeignStackBytes) return;
  void* block = mmap(nullptr, kHandlerStackBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (block == MAP_FAILED) return;
  stack_t own{};
  own.ss_sp = block;
  own.ss_size = kHandlerStackBytes;
  if (sigaltstack(&own, nullptr) != 0) {
    munmap(block, kHandlerStackBytes);
    return;
  }
  ownHandlerStack = block;
  TouchThread();
}

void InstallHandlers() {
  pthread_mutex_lock(&installLock);
  if (!handlersInstalled.load(std::memory_order_relaxed)) {
    AddThreadDetachHook(ReleaseHandlerStack);
    for (size_t i = 0; i < kSignalCount; ++i) {
      struct sigaction action {};
      action.sa_sigaction = OnSignal;
      action.sa_flags = SA_SIGINFO | SA_ONSTACK;
      sigemptyset(&action.sa_mask);
      // Read first, so that a fault in another thread meanwhile finds whom to pass on to.
      sigaction(kSignals[i], nullptr, &formerActions[i]);
      sigaction(kSignals[i], &action, nullptr);
    }
    handlersInstalled.store(true, std::memory_order_release);
  }
  pthread_mutex_unlock(&installLock);
}

/// The handlers go unless somebody has put their own in front of them. A thread that lives on keeps its handler
/// stack, which is memory of its own.
[[gnu::destructor(kStopAtUnload)]] void RemoveHandlers() {
  if (!handlersInstalled.exchange(false)) return;
  for (size_t i = 0; i < kSignalCount; ++i) {
    struct sigaction present {};
    if (sigaction(kSignals[i], nullptr, &present) != 0 || present.sa_sigaction != OnSignal) continue;
    sigaction(kSignals[i], &formerActions[i], nullptr);
  }
}

/// Takes the guard off on every way out, C++ exceptions included.
struct GuardScope {
  explicit GuardScope(Guard* guard) : guard_(guard) {
    guard_->outer = innermost;
    innermost = guard_;
  }
  ~GuardScope() { innermost = guard_->outer; }
  GuardScope(const GuardScope&) = delete;
  GuardScope& operator=(const GuardScope&) = delete;
  Guard* guard_;
};

/// Not inlined: sigsetjmp needs a frame of its own, or a nested guard's jump lands in the wrong call.
__attribute__((noinline)) bool CallUnderGuard(void (*function)(void*), void* argument, Guard* guard) {
  GuardScope scope(guard);
  // The mask isn't saved, which would cost a system call for every guard; the way back unblocks instead.
  if (sigsetjmp(guard->place, 0) == 0) {
    function(argument);
    return true;
  }
  UnblockSignals();
  return false;
}

}  // namespace

bool Guarded(void (*function)(void*), void* argument, FaultInfo* info) {
  if (!handlersInstalled.load(std::memory_order_acquire)) InstallHandlers();
  if (!stackChecked) ProvideHandlerStack();
  Guard guard;
  if (CallUnderGuard(function, argument, &guard)) return true;
  if (info != nullptr) *info = guard.fault;
  return false;
}

const char* FaultName(uint32_t code) noexcept {
  for (const Name& name : kNames) {
    if (name.code == code) return name.text;
  }
  return "Unknown Type";
}

bool TryRead(const void* address, void* buffer, size_t bytes) noexcept {
  if (bytes == 0) return true;
  if (reinterpret_cast<uintptr_t>(address) + bytes < reinterpret_cast<uintptr_t>(address)) return false;
  iovec local{buffer, bytes};
  iovec remote{const_cast<void*>(address), bytes};
  const ssize_t copied = process_vm_readv(getpid(), &local, 1, &remote, 1, 0);
  return copied >= 0 && static_cast<size_t>(copied) == bytes;
}

}  // namespace plat
