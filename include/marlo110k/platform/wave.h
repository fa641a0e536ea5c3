// SPDX-License-Identifier: Apache-2.0
// Which sound system the library plays on and records from.
#pragma once

#include "marlo110k/export.h"

namespace plat {

/// Chooses the backend that wave devices come from, by its word:
/// - "pulse", "alsa", "jack": the user's sound servers, as far as their modules are installed;
/// - "null": no device at all, so that the engine runs on its own clock;
/// - "file:PATH": one output that plays in real time into a Wave file at PATH and replaces what stood there.
///
/// Null or an empty word goes back to the default: the word in the environment's MARLO_WAVE, else the first of
/// pulse and alsa that answers, else null. Names are UTF-8.
/// @return false, with the former choice in place, for a word that isn't known, a module that can't be loaded, a
/// server that doesn't answer, or while a device is open.
/// [any thread]
ZR_API bool ChooseWaveBackend(const char* word) noexcept;
/// The word of the backend in use, which is chosen now if it wasn't yet: "pulse", "file" and so on. [any thread]
ZR_API const char* WaveBackendName() noexcept;

}  // namespace plat
