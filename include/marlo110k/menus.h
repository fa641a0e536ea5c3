// SPDX-License-Identifier: Apache-2.0
// Menus as the library holds them: trees of items, loaded from resources, trimmed and greyed by command.
//
// An item is a command with an id, a separator, or holds a submenu. A menu is a value of the library's own; whoever
// shows menus builds the platform's from it. A null menu has no items, and calls on it change nothing. Functions that
// take an item's position count from 0. A menu and its submenus belong to one thread at a time.
#pragma once

#include <cstdint>

#include "marlo110k/export.h"
#include "marlo110k/lang.h"

struct ZrMenu;
/// A menu; null stands for none.
using HZRMENU = ZrMenu*;

/// States of a menu's item, combined.
enum ZrMenuState : uint32_t {
  kZrMenuGrayed = 1,   ///< Can't be chosen.
  kZrMenuChecked = 8,  ///< Has a check mark.
};

/// The id of a submenu that has none.
inline constexpr uint32_t kZrMenuNoId = 0xFFFFFFFF;

/// An item as ZrMenu_GetItem gives it and ZrMenu_AppendItem takes it.
struct ZrMenuItem {
  const char16_t* text;  ///< With "&" before the key and a tab before the accelerator; valid until the item changes.
  HZRMENU submenu;       ///< Null for a command or a separator. The menu owns it.
  uint32_t id;           ///< Of the command; kZrMenuNoId for a submenu without one, 0 for a separator.
  uint32_t state;        ///< Of ZrMenuState.
  int32_t isSeparator;   ///< 1 for a separator.
};

// ---- The tree --------------------------------------------------------------------------------------

/// An empty menu; null when memory is short. Free with ZrMenu_Destroy.
ZR_API HZRMENU ZrMenu_Create() noexcept;
/// Ends a menu and its submenus. A submenu is ended by its owner.
ZR_API void ZrMenu_Destroy(HZRMENU menu) noexcept;
/// How many items a menu has.
ZR_API int32_t ZrMenu_GetItemCount(HZRMENU menu) noexcept;
/// Reads an item. @return 1; 0, with `item` untouched, when there is none.
ZR_API int32_t ZrMenu_GetItem(HZRMENU menu, int32_t position, ZrMenuItem* item) noexcept;
/// Adds an item behind the others and takes over its submenu, which must stand in no other menu.
/// @return 1; 0, with nothing taken over, when memory is short or the menu or the item is null.
ZR_API int32_t ZrMenu_AppendItem(HZRMENU menu, const ZrMenuItem* item) noexcept;

// ---- Loading ---------------------------------------------------------------------------------------

/// Loads a menu resource by the order of fallbacks and takes the translator's mark "^*" off its commands, except those
/// that stand in the bar itself; a text that has it is cut at 257 characters.
/// @param name a text, or a number below 0x10000. @return null without such a menu, or for a damaged one. Free with
/// ZrMenu_Destroy.
ZR_API HZRMENU ZrLoadMenu(HZRLANG language, const char16_t* name) noexcept;
/// Loads a menu, then culls it with ZrCullMenu.
ZR_API HZRMENU ZrLoadCulledMenu(HZRLANG language, const char16_t* name, const uint32_t* ids, int32_t count,
                                int32_t clean) noexcept;

// ---- By command ------------------------------------------------------------------------------------

/// Deletes the first item of each id, wherever it stands. @param count of ids; negative for a list that ends with 0,
/// after 10000 at the latest. A 0 ends any list. @param clean non-zero calls ZrCleanMenu.
ZR_API void ZrCullMenu(HZRMENU menu, const uint32_t* ids, int32_t count, int32_t clean) noexcept;
/// Removes separators that separate nothing, and submenus that are empty or become so.
/// @param parent the menu that owns `menu`, null for none. @param position of its item there; an empty menu is deleted
/// from it, and its handle with it. @return 1 when the menu ends empty, else 0.
ZR_API int32_t ZrCleanMenu(HZRMENU menu, HZRMENU parent, int32_t position) noexcept;
/// Finds an item, depth first. @param owner optional, receives the menu that it stands in. @param position optional,
/// receives its position there. @return 1; 0, with both untouched, when there is none.
ZR_API int32_t ZrFindSubMenu(HZRMENU menu, uint32_t id, HZRMENU* owner, int32_t* position) noexcept;
/// Finds the menu that holds an item. @param topPosition optional, receives the position in `menu` of the item under
/// which it was found, -1 when there is none. @return null when there is none.
ZR_API HZRMENU ZrGetSubmenuByID(HZRMENU menu, uint32_t id, int32_t* topPosition) noexcept;
/// Grays the first item of each id; ids and count as in ZrCullMenu.
ZR_API void ZrGrayMenu(HZRMENU menu, const uint32_t* ids, int32_t count) noexcept;

// ---- All items -------------------------------------------------------------------------------------

/// Grays the items of the menu itself.
ZR_API void ZrGrayAllMenuItems(HZRMENU menu) noexcept;
/// Takes the gray off the items of the menu itself.
ZR_API void ZrEnableAllMenuItems(HZRMENU menu) noexcept;
/// Formats the texts of all items, also those of submenus, so that "$(Name)" becomes its token's value. Texts are read
/// up to 99 and written up to 199 characters. Conversions find zeros.
ZR_API void ZrMenuReplaceTokens(HZRMENU menu) noexcept;
