// SPDX-License-Identifier: Apache-2.0
// A machine without wave devices.
#pragma once

#include <memory>

#include "platform/media/wave_backend.h"

namespace plat {

std::unique_ptr<WaveBackend> MakeWaveNone();

}  // namespace plat
