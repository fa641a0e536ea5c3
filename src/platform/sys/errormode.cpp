// SPDX-License-Identifier: Apache-2.0
// The process error mode word.
#include "platform/sys/errormode.h"

#include <atomic>

namespace plat {
namespace {
std::atomic<uint32_t> errorMode{0};
}

uint32_t ErrorMode() noexcept { return errorMode.load(std::memory_order_relaxed); }
void SetErrorMode(uint32_t mode) noexcept { errorMode.store(mode, std::memory_order_relaxed); }

}  // namespace plat
