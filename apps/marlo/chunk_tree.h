// SPDX-License-Identifier: Apache-2.0
// The chunks of a file as a tree, with what is wrong in it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "chunk_header.h"

namespace host {

struct ChunkNode {
  ChunkHeader header;
  ChunkLabel listType{};  ///< Of a list.
  bool isList = false;
  std::vector<ChunkNode> children;  ///< Of a list.
};

struct ChunkTree {
  std::vector<ChunkNode> chunks;
  std::vector<std::string> problems;  ///< One sentence each.
  bool complete = true;               ///< False when there were more chunks than are kept.
};

/// Reads the headers of all chunks, to the end of the form or of the file, whichever comes first.
ChunkTree ReadChunkTree(plat::File* file, const FormHeader& form, int64_t fileBytes);

}  // namespace host
