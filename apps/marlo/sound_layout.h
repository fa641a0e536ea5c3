// SPDX-License-Identifier: Apache-2.0
// Where the samples of a file lie and which size fields speak of them, found by a walk that trusts the
// chunk headers only as far as the file goes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "chunk_header.h"

namespace host {

struct SoundLayout {
  FormHeader form;
  ChunkHeader data;           ///< The chunk that holds the samples.
  int64_t sampleOffset = 0;   ///< Of the first sample.
  uint64_t sampleBytes = 0;   ///< By the word of the chunk.
  uint32_t frameBytes = 0;    ///< Of one frame, or of one block of a compressed format.
  int64_t framesOffset = 0;   ///< AIFF: of the frame count in the file, else 0.
  uint32_t framesStated = 0;  ///< AIFF: that count.
};

/// Walks the chunks up to the samples and the format. None when the walk doesn't get there: `reason` then
/// says why in one sentence.
std::optional<SoundLayout> FindSound(plat::File* file, int64_t fileBytes, std::string* reason);

}  // namespace host
