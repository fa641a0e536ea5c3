// SPDX-License-Identifier: Apache-2.0
// The order in which the library's services start and end.
#pragma once

#include <cstdint>

namespace plat {
struct Module;
}

namespace marlo {

/// What the library's load does. Calls early initialisation. @return false when a stage failed; the others ran.
bool Attach() noexcept;
/// What the library's unload does, in its own order.
void Detach() noexcept;

/// The stages of early initialisation. @return false when the token list or the language could not be had.
bool RunEarlyStages(plat::Module* module, uint32_t flags) noexcept;
/// The stages of late termination.
void RunLateStages() noexcept;
/// What a change of the system's colours resets.
void RunColourChangeStages() noexcept;

/// Tells `observer` the name of each stage that runs from now on; null stops. For tests of the order.
void ObserveStages(void (*observer)(const char* stage)) noexcept;

}  // namespace marlo
