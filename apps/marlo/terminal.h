// SPDX-License-Identifier: Apache-2.0
// What the program asks of the terminal and of its own process.
#pragma once

#include <cstdint>

namespace host {

/// True when errors go to a terminal that can show a line being rewritten.
bool ErrorsGoToTerminal();
/// The width of that terminal in characters, 80 when it doesn't say.
uint32_t TerminalColumns();
/// A number that no other running process has.
uint32_t ProcessNumber();

}  // namespace host
