// SPDX-License-Identifier: Apache-2.0
// One look at a chunk, whatever the framing: RIFF (little-endian, padded to 2), AIFF (big-endian, padded
// to 2) or Wave64 (16-byte labels, padded to 8).
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "marlo110k/platform/file.h"
#include "sample_format.h"

namespace host {

/// A chunk's label: 16 bytes in Wave64, else 4 bytes and zeros.
using ChunkLabel = std::array<uint8_t, 16>;

struct ChunkHeader {
  ChunkLabel label{};
  int64_t offset = 0;      ///< Of the header in the file.
  int64_t dataOffset = 0;  ///< Of the first data byte.
  uint64_t bytes = 0;      ///< Declared bytes of data; the field's header bytes are off in Wave64.
};

/// The header of the whole file.
struct FormHeader {
  Container container = Container::kWave;
  int64_t firstChunk = 0;  ///< Offset of the first chunk.
  uint64_t end = 0;        ///< Where the file ends by its own word.
};

/// Tells the kind of an open file by its header; none when it is no Wave, Wave64 or AIFF file.
std::optional<FormHeader> ReadFormHeader(plat::File* file);

/// Reads the chunk header at `offset`; none when the file ends before its end.
std::optional<ChunkHeader> ReadChunkHeader(plat::File* file, Container container, int64_t offset);
/// Where the chunk ends with its padding, at most INT64_MAX.
int64_t EndOfChunk(Container container, const ChunkHeader& chunk);

/// The label as text: its four characters, or for a Wave64 label without a name the 32 digits of its bytes.
std::string NameOf(Container container, const ChunkLabel& label);
/// True for the labels of chunks that such files are known to hold.
bool IsKnownLabel(Container container, const ChunkLabel& label);
/// True when the label could be one: printable characters, or any Wave64 label but zeros.
bool IsPlausibleLabel(Container container, const ChunkLabel& label);
/// True when the label is that of a known name ("fmt ", "data", "COMM", ...).
bool HasName(Container container, const ChunkLabel& label, const char* name);

/// The alignment of chunks: 2, or 8 in Wave64.
int64_t PaddingOf(Container container);

}  // namespace host
