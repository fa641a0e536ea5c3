// SPDX-License-Identifier: Apache-2.0
// The fault guard: kinds of faults, nesting, threads, and what it leaves alone.
#include "platform/sys/fault.h"

#include <gtest/gtest.h>
#include <setjmp.h>
#include <signal.h>
#include <sys/mman.h>
#include <xmmintrin.h>

#include <atomic>
#include <stdexcept>
#include <vector>

#include "testing/worker.h"

namespace plat {
namespace {

using testing_support::Worker;

volatile int sink;

void ReadNull(void*) { sink = *static_cast<volatile int*>(nullptr); }
void WriteAt(void* address) { *static_cast<volatile char*>(address) = 1; }
void IllegalInstruction(void*) { asm volatile("ud2"); }
void Breakpoint(void*) { asm volatile("int3"); }
void DivideByZero(void*) {
  asm volatile("xorl %%ecx, %%ecx\n movl $1, %%eax\n cltd\n idivl %%ecx" : : : "eax", "ecx", "edx", "cc");
}
void FloatDivideByZero(void*) {
  const unsigned state = _mm_getcsr();
  _mm_setcsr(state & ~0x0200u);
  asm volatile("divss %0, %1" : : "x"(0.0f), "x"(1.0f));
  _mm_setcsr(state);
}
void JumpAway(void*) { asm volatile("call *%0" : : "r"(uintptr_t{0x1234}) : "memory"); }
void NonCanonical(void*) { sink = *reinterpret_cast<volatile int*>(uintptr_t{0x8000'0000'0000'0000}); }

// A thread sanitizer's runtime doesn't survive an overflow inside itself, so nothing of it may run here.
#if defined(__clang__)
#define NOT_INSTRUMENTED __attribute__((noinline, disable_sanitizer_instrumentation))
#else
#define NOT_INSTRUMENTED __attribute__((noinline, no_sanitize("thread", "address")))
#endif

// The depth that ends it is never reached, which the compiler can't know.
NOT_INSTRUMENTED int Recurse(volatile int* depth) {
  volatile char frame[512];
  frame[0] = static_cast<char>(*depth);
  *depth = *depth + 1;
  return *depth < 0 ? 0 : Recurse(depth) + frame[0];
}
NOT_INSTRUMENTED void OverflowStack(void*) {
  volatile int depth = 0;
  sink = Recurse(&depth);
}

struct Kind {
  const char* name;
  void (*function)(void*);
  uint32_t code;
  const char* text;
};

const Kind kKinds[] = {
    {"read of null", ReadNull, 0xC0000005, "access violation"},
    {"non-canonical address", NonCanonical, 0xC0000005, "access violation"},
    {"jump away", JumpAway, 0xC0000005, "access violation"},
    {"illegal instruction", IllegalInstruction, 0xC000001D, "illegal instruction"},
    {"breakpoint", Breakpoint, 0x80000003, "breakpoint"},
    {"divide by zero", DivideByZero, 0xC0000094, "integer divide by zero"},
    {"float divide by zero", FloatDivideByZero, 0xC000008E, "float divide by zero"},
    {"stack overflow", OverflowStack, 0xC00000FD, "stack overflow"},
};

TEST(Guarded, CatchesEveryKindAgainAndAgain) {
  const unsigned floatState = _mm_getcsr();
  for (int round = 0; round < 3; ++round) {
    for (const Kind& kind : kKinds) {
      FaultInfo info{};
      EXPECT_FALSE(Guarded(kind.function, nullptr, &info)) << kind.name;
      EXPECT_EQ(info.code, kind.code) << kind.name;
      EXPECT_STREQ(FaultName(info.code), kind.text);
      EXPECT_NE(info.instruction, nullptr);
      _mm_setcsr(floatState);
    }
  }
  EXPECT_STREQ(FaultName(0), "Unknown Type");
}

TEST(Guarded, TellsAddressAndDirection) {
  FaultInfo info{};
  EXPECT_FALSE(Guarded(JumpAway, nullptr, &info));
  EXPECT_EQ(info.instruction, reinterpret_cast<void*>(0x1234));
  EXPECT_EQ(info.address, reinterpret_cast<void*>(0x1234));
  EXPECT_FALSE(info.write);
  void* page = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  EXPECT_FALSE(Guarded(WriteAt, static_cast<char*>(page) + 77, &info));
  EXPECT_EQ(info.address, static_cast<char*>(page) + 77);
  EXPECT_TRUE(info.write);
  munmap(page, 4096);
  EXPECT_FALSE(Guarded(ReadNull, nullptr, nullptr)) << "the record is optional";
}

TEST(Guarded, LetsResultsAndExceptionsThrough) {
  int value = 0;
  FaultInfo info{7, nullptr, nullptr, false};
  EXPECT_TRUE(Guarded([](void* argument) { *static_cast<int*>(argument) = 5; }, &value, &info));
  EXPECT_EQ(value, 5);
  EXPECT_EQ(info.code, 7u) << "untouched without a fault";
  EXPECT_THROW(Guarded([](void*) { throw std::runtime_error("passes"); }, nullptr, nullptr), std::runtime_error);
  EXPECT_FALSE(Guarded(ReadNull, nullptr, nullptr)) << "the exception took its guard along";
}

TEST(Guarded, NestsSoThatTheInnermostCatches) {
  struct Trace {
    bool inner = true;
    bool innerAgain = true;
    bool reached = false;
  } trace;
  EXPECT_TRUE(Guarded(
      [](void* argument) {
        Trace* out = static_cast<Trace*>(argument);
        out->inner = Guarded(OverflowStack, nullptr, nullptr);
        out->innerAgain = Guarded(ReadNull, nullptr, nullptr);
        out->reached = true;
      },
      &trace, nullptr));
  EXPECT_FALSE(trace.inner);
  EXPECT_FALSE(trace.innerAgain);
  EXPECT_TRUE(trace.reached);
  FaultInfo info{};
  EXPECT_FALSE(Guarded(
      [](void*) {
        Guarded(ReadNull, nullptr, nullptr);
        IllegalInstruction(nullptr);
      },
      nullptr, &info));
  EXPECT_EQ(info.code, 0xC000001Du) << "after an inner fault the outer guard still stands";
}

TEST(Guarded, WorksOnManyThreadsAtOnce) {
  std::atomic<int> caught{0};
  std::vector<Worker> workers;
  for (int i = 0; i < 4; ++i) {
    workers.emplace_back([&] {
      for (int round = 0; round < 250; ++round) {
        for (void (*function)(void*) : {ReadNull, IllegalInstruction, DivideByZero}) {
          caught += !Guarded(function, nullptr, nullptr);
        }
      }
      FaultInfo info{};
      caught += !Guarded(OverflowStack, nullptr, &info) && info.code == 0xC00000FD;
    });
  }
  for (Worker& worker : workers) worker.Join();
  EXPECT_EQ(caught, 4 * (3 * 250 + 1));
}

// A host's own handler, put in place before the first guard of a fresh process.
sigjmp_buf hostPlace;
void HostHandler(int) { siglongjmp(hostPlace, 1); }

TEST(GuardedDeathTest, AnUnguardedFaultStillKillsOrGoesToTheHost) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const auto killedBy = [](int signal) {
    return [signal](int status) { return WIFEXITED(status) ? WEXITSTATUS(status) != 0 : WTERMSIG(status) == signal; };
  };
  EXPECT_EXIT(
      {
        Guarded(ReadNull, nullptr, nullptr);
        IllegalInstruction(nullptr);
      },
      killedBy(SIGILL), "");
  EXPECT_EXIT(
      {
        Guarded([](void*) { raise(SIGFPE); }, nullptr, nullptr);
        _exit(0);
      },
      killedBy(SIGFPE), "");
  EXPECT_EXIT(
      {
        struct sigaction action {};
        action.sa_handler = HostHandler;
        action.sa_flags = SA_NODEFER;
        sigaction(SIGILL, &action, nullptr);
        const bool guarded = !Guarded(IllegalInstruction, nullptr, nullptr);
        if (sigsetjmp(hostPlace, 1) == 0) IllegalInstruction(nullptr);
        _exit(guarded ? 17 : 18);
      },
      testing::ExitedWithCode(17), "");
}

}  // namespace
}  // namespace plat
