// SPDX-License-Identifier: Apache-2.0
// What does a kernel family pay to ask for the processor word? Through the built library, against an empty
// function of another one.
#include <dlfcn.h>

#include <cstdint>
#include <cstdio>

#include "harness/harness.h"

namespace {

using Lookup = uint32_t (*)(uint32_t);

Lookup Load(const char* path, const char* name) {
  void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  void* symbol = library != nullptr ? dlsym(library, name) : nullptr;
  if (symbol == nullptr) std::fprintf(stderr, "%s\n", dlerror());
  return reinterpret_cast<Lookup>(symbol);
}

bench::Contender Calls(const char* name, Lookup lookup) {
  constexpr uint32_t kCalls = 1'000'000;
  return {name,
          [lookup] {
            uint32_t sum = 0;
            for (uint32_t i = 0; i < kCalls; ++i) sum += lookup(64);
            bench::Use(&sum);
          },
          kCalls};
}

}  // namespace

int main() {
  const Lookup ours = Load(MARLO_LIBRARY_PATH, "_Z15ZrGetCPUSupportj");
  const Lookup empty = Load(MARLO_EMPTY_CALL_PATH, "BenchEmptyCall");
  if (ours == nullptr || empty == nullptr) return 2;
  bench::Question question("Processor word by its lookup", "calls");
  question.Ours(Calls("ZrGetCPUSupport", ours));
  question.Peer(Calls("an empty exported function", empty));
  question.Goal(0, 0.5);
  return question.Print() ? 0 : 1;
}
