// SPDX-License-Identifier: Apache-2.0
// The display list: a text and a picture that stand for a media file, each under a clipboard format id.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/export.h"

inline constexpr uint32_t kZrDisplayText = 1;     ///< CF_TEXT
inline constexpr uint32_t kZrDisplayPicture = 8;  ///< CF_DIB

/// One display datum of a file.
struct tZRDISPITEM {
  uint32_t id;
  uint32_t size;  ///< Bytes of data.
  void* data;     ///< A block of the house heap, or null.
};
static_assert(sizeof(tZRDISPITEM) == 16 && offsetof(tZRDISPITEM, data) == 8);

/// Items in no particular order, found by id.
struct tZRDISPLIST {
  uint32_t count;
  tZRDISPITEM* items;
};
static_assert(sizeof(tZRDISPLIST) == 16 && offsetof(tZRDISPLIST, items) == 8);

/// Frees the data of all items; the items stay, empty, under their ids. Null does nothing.
ZR_API void displist_Free(tZRDISPLIST* list) noexcept;
