// SPDX-License-Identifier: Apache-2.0
// An output that plays into a Wave file at the pace of a sound card.
#pragma once

#include <memory>
#include <string>

#include "platform/media/wave_backend.h"

namespace plat {

/// One output and no input. The file is made anew at every opening of the output and can be read at any time: its
/// sizes are brought up to date with every stretch that is written. Gaps in the playback leave no trace in it.
std::unique_ptr<WaveBackend> MakeWaveFile(std::u16string path);

}  // namespace plat
