// SPDX-License-Identifier: Apache-2.0
// What the contenders of the media questions share.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench_media {

/// Walks the chunks of a file from offset 12 by one positioned read a header. @return the chunks passed.
uint64_t BareFileWalk(int descriptor);
int OpenBare(const std::string& path);
void CloseBare(int descriptor);

/// Walks the chunks of a block from offset 12 by pointer. @return the chunks passed.
uint64_t BarePointerWalk(const uint8_t* block, const uint8_t* end);

/// Reads `path` to float in blocks of 256 KiB of floats through libsndfile; empty when it isn't there.
std::function<void()> SndfileRead(const std::string& path);

}  // namespace bench_media
