// SPDX-License-Identifier: Apache-2.0
// Turns the signals that end a program into a mark.
#include "interrupt.h"

#include <csignal>

#include "errors.h"

namespace host {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void Mark(int) { interrupted = 1; }

}  // namespace

void CatchInterrupts() {
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    // One that is ignored from outside (as by nohup) stays ignored.
    if (std::signal(number, Mark) == SIG_IGN) std::signal(number, SIG_IGN);
  }
}

void ThrowIfInterrupted() {
  if (interrupted != 0) throw Failure(ZR_E_CANCELLED, "");
}

}  // namespace host
