// SPDX-License-Identifier: Apache-2.0
// A first program: sees that the library fits, and converts three samples.
#include <cstdint>
#include <cstdio>

#include "marlo110k/kernel.h"
#include "marlo110k/samples.h"

int main() {
  if (FAILED(ZrKernel_CheckVersion(nullptr, "first", kZrKernelVersion, kZrInterfaceGeneration, 0, 1))) return 1;

  // Half of full scale, the lowest sample, and one that is too loud for 16 bits.
  const float loud[] = {0.5f, -1.0f, 2.0f};
  int16_t converted[3];
  ZRAUDIOCOPYFUNCTION copy = ZrAudio_GetCopyFunction2(ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_FLOAT32);
  copy(converted, loud, 3, 1.0f);
  std::printf("%d %d %d\n", converted[0], converted[1], converted[2]);
  return 0;
}
