// SPDX-License-Identifier: Apache-2.0
// A process named RUNDLL32.EXE: gives 0 when loading and unloading leave the user interface alone.
#include <cstring>

#include "kernel/kernel_state.h"
#include "kernel/startup.h"

namespace {

bool sawUserInterface = false;

void Watch(const char* stage) {
  for (const char* name : {"settings", "controls", "explorer window class", "image services", "still images",
                           "unregister explorer window class", "terminate controls", "destroy still images"}) {
    sawUserInterface = sawUserInterface || std::strcmp(stage, name) == 0;
  }
}

}  // namespace

int main() {
  const bool noticed = marlo::kernelState.isRundll.load();
  marlo::ObserveStages(Watch);
  marlo::Detach();
  marlo::Attach();
  marlo::ObserveStages(nullptr);
  return noticed && !sawUserInterface ? 0 : 1;
}
