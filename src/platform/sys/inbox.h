// SPDX-License-Identifier: Apache-2.0
// The calling thread's inbox as the waits see it.
#pragma once

#include "marlo110k/platform/event.h"

namespace plat {

/// The two auto-reset events of an inbox; null while the thread has none and memory is short.
struct InboxEvents {
  Waitable* sentWork;
  Waitable* completions;
};

/// Opens the calling thread's inbox if need be.
InboxEvents CurrentInboxEvents() noexcept;
/// Signals sentWork again when sent work is pending that an earlier wait has already reported.
void SignalPendingWork() noexcept;
/// Runs the completion routines queued to the calling thread. @return how many ran.
uint32_t RunCompletions() noexcept;

}  // namespace plat
