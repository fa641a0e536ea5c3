// SPDX-License-Identifier: Apache-2.0
// The one source that speaks to the terminal.
#include "terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace host {

bool ErrorsGoToTerminal() {
  const char* kind = std::getenv("TERM");
  return isatty(STDERR_FILENO) == 1 && kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

uint32_t TerminalColumns() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col < 20) return 80;
  return size.ws_col;
}

uint32_t ProcessNumber() { return static_cast<uint32_t>(getpid()); }

}  // namespace host
