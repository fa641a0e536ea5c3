// SPDX-License-Identifier: Apache-2.0
// Files that are read and written in one piece.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// Throws a Failure when the file can't be read or has more than 512 MiB.
std::vector<uint8_t> ReadWholeFile(const std::string& path);
/// The file appears when it is complete. Throws a Failure when it can't be written.
void WriteWholeFile(const std::string& path, const uint8_t* data, size_t bytes);

}  // namespace host
