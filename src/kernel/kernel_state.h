// SPDX-License-Identifier: Apache-2.0
// The process-wide words of the kernel, written at load and early initialisation.
#pragma once

#include <atomic>
#include <cstdint>

#include "marlo110k/kernel.h"

struct tZRLIST;
struct ZrLanguage;

namespace marlo {

/// Bits of the mode word.
inline constexpr uint32_t kModeAppKernel = 1;  ///< This module is the application's kernel.
inline constexpr uint32_t kModeClient = 2;     ///< Colours are asked of the application kernel beside this one.

/// Plain words of the process. Any thread reads them, so they are relaxed atomics.
struct KernelState {
  std::atomic<plat::Module*> appKernel{nullptr};
  std::atomic<uint32_t> earlyFlags{0};
  std::atomic<uint32_t> mode{0};
  std::atomic<plat::Module*> processImage{nullptr};
  std::atomic<uint32_t> cursorBase{0};  ///< First id of the cursors that the process image may bring.
  std::atomic<void*> splash{nullptr};
  std::atomic<tZRLIST*> tokens{nullptr};       ///< Tokens of formatted text, sorted by name.
  std::atomic<ZrLanguage*> language{nullptr};  ///< The language of the library's own texts.
  std::atomic<bool> isRundll{false};           ///< No user interface is started in this process.
};

extern constinit KernelState kernelState;

constexpr uint32_t ModeOfFlags(uint32_t earlyFlags) noexcept {
  if ((earlyFlags & ZRKERNEL_EARLY_APPKERNEL) != 0) return kModeAppKernel;
  return (earlyFlags & ZRKERNEL_EARLY_CLIENT) != 0 ? kModeClient : 0;
}

/// True for the path of a process that hosts single entries of modules and has no user interface of its own.
bool IsRundllPath(const char16_t* path) noexcept;

/// Whether a client of this name, version and generation fits, and the message for one that doesn't.
/// @param message receives the text, cut to fit; untouched when the client fits.
bool ClientFits(const char* clientName, uint32_t clientVersion, uint32_t interfaceGeneration, char16_t* message,
                uint32_t characters) noexcept;

}  // namespace marlo
