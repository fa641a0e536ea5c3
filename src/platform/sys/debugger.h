// SPDX-License-Identifier: Apache-2.0
// Whether somebody watches the process.
#pragma once

namespace plat {

/// True while a debugger is attached.
bool DebuggerPresent() noexcept;

}  // namespace plat
