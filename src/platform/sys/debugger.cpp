// SPDX-License-Identifier: Apache-2.0
// Reads the tracer's process id from the kernel's status file.
#include "platform/sys/debugger.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace plat {

bool DebuggerPresent() noexcept {
  constexpr char kField[] = "TracerPid:";
  // Plain calls and a local buffer: this runs while the process is failing.
  const int file = open("/proc/self/status", O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  char status[4096];
  const ssize_t bytes = read(file, status, sizeof status - 1);
  close(file);
  if (bytes <= 0) return false;
  status[bytes] = 0;
  const char* field = std::strstr(status, kField);
  return field != nullptr && std::strtol(field + sizeof kField - 1, nullptr, 10) != 0;
}

}  // namespace plat
