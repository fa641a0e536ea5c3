// SPDX-License-Identifier: Apache-2.0
// The last resort for a Wave or Wave64 file whose front can't be read: a new front over the old one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "marlo110k/contract/wave.h"
#include "open_file.h"
#include "sample_format.h"

namespace host {

/// What a repair would do, learnt by doing it to a copy of the front in memory.
struct FrontRepair {
  Container container = Container::kWave;
  std::optional<WAVEFORMATEX> defaults;  ///< Takes the place of fields that can't be right.
  int64_t limit = 0;                     ///< Bytes in which the samples must begin.
  int64_t dataOffset = 0;                ///< Where they begin.
  WAVEFORMATEX format{};                 ///< The format that the new front states.
  uint64_t dataBytes = 0;                ///< Whole frames from there to the end of the file.
};

/// What kind of front a file with an unreadable one had, by its first bytes or else by its name's
/// extension. Throws a Failure for anything that is no such file, so that no other file gets a new front.
Container ContainerOfBrokenFile(plat::File* file, const std::string& path);

/// Rehearses the library's repair. Without `askedLimit` the samples' label must stand in the first 64 KiB:
/// where it doesn't, the library would take the limit itself for their start and overwrite what is before,
/// so that is done only for a limit that the user gave. Throws a Failure when nothing should be done.
FrontRepair RehearseFrontRepair(plat::File* file, Container container, const std::optional<WAVEFORMATEX>& defaults,
                                std::optional<uint64_t> askedLimit, const std::string& path);

/// Does it to the file, which is open for reading and writing.
void ApplyFrontRepair(plat::File* file, const FrontRepair& repair, const std::string& path);

}  // namespace host
