// SPDX-License-Identifier: Apache-2.0
// Loads, trims, greys and formats menus.
#include "marlo110k/menus.h"

#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <utility>

#include "kernel/menu_model.h"
#include "marlo110k/printf.h"
#include "marlo110k/resources.h"

namespace marlo {
namespace {

constexpr int32_t kLongestIdList = 10000;
constexpr size_t kMarkedCharacters = 259;  // read of a text with the translator's mark
constexpr size_t kFormatCharacters = 99;
constexpr uint32_t kResultCharacters = 200;
constexpr std::u16string_view kTranslatorsMark = u"^*";

/// An item and where it stands.
struct MenuPlace {
  ZrMenu* owner = nullptr;
  size_t position = 0;
};

MenuPlace FindItem(ZrMenu* menu, uint32_t id) noexcept {
  if (menu == nullptr) return {};
  for (size_t i = 0; i < menu->items.size(); ++i) {
    if (!menu->items[i].isSeparator && menu->items[i].id == id) return {menu, i};
    const MenuPlace below = FindItem(menu->items[i].submenu.get(), id);
    if (below.owner != nullptr) return below;
  }
  return {};
}

void DeleteItem(ZrMenu* menu, size_t position) noexcept {
  menu->items.erase(menu->items.begin() + static_cast<ptrdiff_t>(position));
}

/// The ids before the 0 that ends the list.
std::span<const uint32_t> IdsOf(const uint32_t* ids, int32_t count) noexcept {
  if (ids == nullptr) return {};
  size_t used = 0;
  const auto most = static_cast<size_t>(count < 0 ? kLongestIdList : count);
  while (used < most && ids[used] != 0) ++used;
  return {ids, used};
}

/// Commands of the bar itself keep their mark.
void StripMarks(ZrMenu* popup) {
  for (MenuItem& item : popup->items) {
    if (item.submenu != nullptr) {
      StripMarks(item.submenu.get());
    } else if (item.text.starts_with(kTranslatorsMark)) {
      item.text = item.text.substr(0, kMarkedCharacters).substr(kTranslatorsMark.size());
    }
  }
}

std::unique_ptr<ZrMenu> LoadMenu(HZRLANG language, const char16_t* name) {
  uint32_t bytes = 0;
  const void* const data = ZrLoadResourceCustom(language, ZrResourceId(kZrMenuResource), name, &bytes);
  if (data == nullptr) return nullptr;
  std::unique_ptr<ZrMenu> menu = ReadMenuTemplate(static_cast<const uint8_t*>(data), bytes);
  if (menu == nullptr) return nullptr;
  for (const MenuItem& item : menu->items) {
    if (item.submenu != nullptr) StripMarks(item.submenu.get());
  }
  return menu;
}

/// A separator at either end, or behind another one.
bool SeparatesNothing(const ZrMenu& menu, size_t position) noexcept {
  if (!menu.items[position].isSeparator) return false;
  return position == 0 || position + 1 == menu.items.size() || menu.items[position - 1].isSeparator;
}

bool CleanMenu(ZrMenu* menu) noexcept {
  for (size_t i = 0; i < menu->items.size();) {
    ZrMenu* const submenu = menu->items[i].submenu.get();
    const bool isUseless = submenu != nullptr ? CleanMenu(submenu) : SeparatesNothing(*menu, i);
    if (isUseless) {
      DeleteItem(menu, i);
    } else {
      ++i;
    }
  }
  while (!menu->items.empty() && menu->items.back().isSeparator) menu->items.pop_back();
  return menu->items.empty();
}

/// Zeros stand for what a text's conversions ask for, so that a translator's "%s" reads nothing of the stack: one for
/// each conversion that fits into a text, and one for each register of the other kind of number.
template <size_t... kIntegers>
void FormatWithZeros(const std::u16string& format, std::array<char16_t, kResultCharacters>* result,
                     std::index_sequence<kIntegers...>) noexcept {
  ZrCchPrintF(result->data(), kResultCharacters, nullptr, format.c_str(),
              (static_cast<void>(kIntegers), uint64_t{0})..., 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0);
}

void ReplaceTokens(ZrMenu* menu) {
  for (MenuItem& item : menu->items) {
    if (item.submenu != nullptr) ReplaceTokens(item.submenu.get());
    if (item.isSeparator) continue;
    std::array<char16_t, kResultCharacters> result;
    FormatWithZeros(item.text.substr(0, kFormatCharacters), &result, std::make_index_sequence<kFormatCharacters / 2>());
    item.text = result.data();
  }
}

}  // namespace
}  // namespace marlo

HZRMENU ZrMenu_Create() noexcept { return new (std::nothrow) ZrMenu; }

void ZrMenu_Destroy(HZRMENU menu) noexcept { delete menu; }

int32_t ZrMenu_GetItemCount(HZRMENU menu) noexcept {
  return menu != nullptr ? static_cast<int32_t>(menu->items.size()) : 0;
}

int32_t ZrMenu_GetItem(HZRMENU menu, int32_t position, ZrMenuItem* item) noexcept {
  if (item == nullptr || position < 0 || position >= ZrMenu_GetItemCount(menu)) return 0;
  const marlo::MenuItem& found = menu->items[static_cast<size_t>(position)];
  *item = {found.text.c_str(), found.submenu.get(), found.id, found.state, found.isSeparator ? 1 : 0};
  return 1;
}

int32_t ZrMenu_AppendItem(HZRMENU menu, const ZrMenuItem* item) noexcept {
  if (menu == nullptr || item == nullptr) return 0;
  try {
    marlo::MenuItem added;
    added.isSeparator = item->isSeparator != 0 && item->submenu == nullptr;
    if (item->text != nullptr && !added.isSeparator) added.text = item->text;
    added.id = added.isSeparator ? 0 : item->id;
    added.state = item->state;
    menu->items.push_back(std::move(added));
  } catch (const std::bad_alloc&) {
    return 0;
  }
  menu->items.back().submenu.reset(item->submenu);
  return 1;
}

HZRMENU ZrLoadMenu(HZRLANG language, const char16_t* name) noexcept {
  try {
    return marlo::LoadMenu(language, name).release();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

HZRMENU ZrLoadCulledMenu(HZRLANG language, const char16_t* name, const uint32_t* ids, int32_t count,
                         int32_t clean) noexcept {
  HZRMENU const menu = ZrLoadMenu(language, name);
  ZrCullMenu(menu, ids, count, clean);
  return menu;
}

void ZrCullMenu(HZRMENU menu, const uint32_t* ids, int32_t count, int32_t clean) noexcept {
  for (const uint32_t id : marlo::IdsOf(ids, count)) {
    const marlo::MenuPlace place = marlo::FindItem(menu, id);
    if (place.owner != nullptr) marlo::DeleteItem(place.owner, place.position);
  }
  if (clean != 0) ZrCleanMenu(menu, nullptr, -1);
}

int32_t ZrCleanMenu(HZRMENU menu, HZRMENU parent, int32_t position) noexcept {
  if (menu == nullptr || !marlo::CleanMenu(menu)) return 0;
  if (parent != nullptr && position >= 0 && position < ZrMenu_GetItemCount(parent)) {
    const auto place = static_cast<size_t>(position);
    if (parent->items[place].submenu.get() == menu) marlo::DeleteItem(parent, place);
  }
  return 1;
}

int32_t ZrFindSubMenu(HZRMENU menu, uint32_t id, HZRMENU* owner, int32_t* position) noexcept {
  const marlo::MenuPlace place = marlo::FindItem(menu, id);
  if (place.owner == nullptr) return 0;
  if (owner != nullptr) *owner = place.owner;
  if (position != nullptr) *position = static_cast<int32_t>(place.position);
  return 1;
}

HZRMENU ZrGetSubmenuByID(HZRMENU menu, uint32_t id, int32_t* topPosition) noexcept {
  int32_t unused = 0;
  int32_t& top = topPosition != nullptr ? *topPosition : unused;
  for (top = 0; top < ZrMenu_GetItemCount(menu); ++top) {
    const marlo::MenuItem& item = menu->items[static_cast<size_t>(top)];
    if (!item.isSeparator && item.id == id) return menu;
    ZrMenu* const owner = marlo::FindItem(item.submenu.get(), id).owner;
    if (owner != nullptr) return owner;
  }
  top = -1;
  return nullptr;
}

void ZrGrayMenu(HZRMENU menu, const uint32_t* ids, int32_t count) noexcept {
  for (const uint32_t id : marlo::IdsOf(ids, count)) {
    const marlo::MenuPlace place = marlo::FindItem(menu, id);
    if (place.owner != nullptr) place.owner->items[place.position].state |= kZrMenuGrayed;
  }
}

void ZrGrayAllMenuItems(HZRMENU menu) noexcept {
  if (menu == nullptr) return;
  for (marlo::MenuItem& item : menu->items) item.state |= kZrMenuGrayed;
}

void ZrEnableAllMenuItems(HZRMENU menu) noexcept {
  if (menu == nullptr) return;
  for (marlo::MenuItem& item : menu->items) item.state &= ~uint32_t{kZrMenuGrayed};
}

void ZrMenuReplaceTokens(HZRMENU menu) noexcept {
  if (menu == nullptr) return;
  try {
    marlo::ReplaceTokens(menu);
  } catch (const std::bad_alloc&) {
    // What memory was short for keeps its text.
  }
}
