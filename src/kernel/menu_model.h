// SPDX-License-Identifier: Apache-2.0
// A menu's items, and menus from the bytes of a resource.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "marlo110k/menus.h"

namespace marlo {

/// An item; a separator has no text and no submenu.
struct MenuItem {
  std::u16string text;
  std::unique_ptr<ZrMenu> submenu;
  uint32_t id = 0;
  uint32_t state = 0;
  bool isSeparator = false;
};

/// Submenus below a bar; a resource with more is damaged.
inline constexpr int kDeepestMenu = 32;

/// Reads a plain or an extended menu template. Null when it is damaged; throws std::bad_alloc.
std::unique_ptr<ZrMenu> ReadMenuTemplate(const uint8_t* bytes, size_t size);

}  // namespace marlo

/// A menu of the model.
struct ZrMenu {
  std::vector<marlo::MenuItem> items;
};
