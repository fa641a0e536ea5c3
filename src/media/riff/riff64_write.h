// SPDX-License-Identifier: Apache-2.0
// Pieces of writing Wave64 that several sources need.
#pragma once

#include "media/riff/chunk_rules.h"

namespace marlo::riff {

/// A file or list header: label, size and type in one write.
inline HRESULT WriteTypedHeader64(FileBytes bytes, const GUID& label, uint64_t size, const GUID& type) noexcept {
  struct {
    GUID label;
    uint64_t field;
    GUID type;
  } const raw = {label, size + Riff64Framing::kHeaderBytes, type};
  static_assert(sizeof raw == Riff64Framing::kFileHeaderBytes);
  return WriteResult(bytes.Write(&raw, sizeof raw));
}

/// Writes `count` zero bytes, one a write.
inline bool WriteZeroBytes(FileBytes bytes, uint64_t count) noexcept {
  constexpr uint8_t kZero = 0;
  for (; count != 0; --count) {
    if (!bytes.Write(&kZero, 1)) return false;
  }
  return true;
}

}  // namespace marlo::riff
