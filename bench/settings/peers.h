// SPDX-License-Identifier: Apache-2.0
// What the peers are asked.
#pragma once

#include <string>

namespace bench_settings {

inline constexpr int kIds = 100;

/// GSettings over a key file. It keeps all values in memory and writes the whole file at each change.
void OpenGSettings(const std::string& folder);
int ReadWithGSettings(int id);
void WriteWithGSettings(int id, int value);
void CloseGSettings();

}  // namespace bench_settings
