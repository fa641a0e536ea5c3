// SPDX-License-Identifier: Apache-2.0
// What the size fields of a file should say, judged by what the file holds. Reads only; applying a plan
// writes size fields and nothing else.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sound_layout.h"

namespace host {

enum class SizeField { kForm, kData, kFrames, kTrailingChunk };

struct SizeChange {
  SizeField field;
  ChunkHeader chunk;  ///< The chunk whose header holds the field; unused for the form and the frames.
  uint64_t before;    ///< Declared bytes of data (form: of the whole file), or frames.
  uint64_t after;
};

struct SizePlan {
  std::vector<SizeChange> changes;  ///< Empty when the sizes are right.
  uint64_t sampleBytes = 0;         ///< Bytes of samples under the plan, whole frames where it changes them.
  uint64_t unreachableBytes = 0;    ///< Bytes of samples that the format's size fields can't count.
};

/// Compares the size fields with the file:
/// - Samples that the file doesn't hold come off; the rest is counted in whole frames.
/// - Bytes behind the samples that are neither chunks nor a tag are samples that a writer didn't live to
///   count; a remainder below a frame is left alone.
/// - A chunk behind the samples that the end of the file cuts is shortened to what is there.
/// - The size of the whole file then follows; a padding byte more or less is no fault.
SizePlan PlanSizes(plat::File* file, int64_t fileBytes, const SoundLayout& layout);

/// Writes the fields of a plan. Throws a Failure about `path`.
void ApplyPlan(plat::File* file, const SoundLayout& layout, const SizePlan& plan, const std::string& path);

/// The name of a field for output: "RIFF size", "data size", "frame count", "LIST size".
std::string NameOf(const SoundLayout& layout, const SizeChange& change);

}  // namespace host
