// SPDX-License-Identifier: Apache-2.0
// The order of what the platform layer does when the library goes: after everything above it.
#pragma once

namespace plat {

// Priorities of destructor functions. Those of the layers above have none and run before; of these the higher one
// runs first.
inline constexpr int kStopAtUnload = 102;  ///< Nothing calls into the library after these.
inline constexpr int kFreeAtUnload = 101;

}  // namespace plat
