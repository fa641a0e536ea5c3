// SPDX-License-Identifier: Apache-2.0
// Reads menus from compiled resources, bounded against damaged ones.
#include <cstring>
#include <utility>

#include "kernel/menu_model.h"

namespace marlo {
namespace {

constexpr uint16_t kPopup = 0x10;
constexpr uint16_t kLast = 0x80;
constexpr uint16_t kExtendedPopup = 1;
constexpr uint32_t kSeparatorType = 0x800;
constexpr uint32_t kStates = kZrMenuGrayed | kZrMenuChecked;

class TemplateReader {
 public:
  TemplateReader(const uint8_t* bytes, size_t size) : bytes_(bytes), size_(size) {}

  std::unique_ptr<ZrMenu> ReadMenu() {
    uint16_t version = 0;
    uint16_t offset = 0;
    if (!Take(&version) || !Take(&offset) || version > 1 || offset > size_ - at_) return nullptr;
    at_ += offset;
    isExtended_ = version == 1;
    auto menu = std::make_unique<ZrMenu>();
    return ReadItems(menu.get(), 0) ? std::move(menu) : nullptr;
  }

 private:
  template <typename T>
  bool Take(T* value) noexcept {
    if (size_ - at_ < sizeof(T)) return false;
    std::memcpy(value, bytes_ + at_, sizeof(T));
    at_ += sizeof(T);
    return true;
  }

  bool TakeText(std::u16string* text) {
    for (char16_t character = 0; Take(&character);) {
      if (character == 0) return true;
      *text += character;
    }
    return false;
  }

  /// Moves to the next address of the resource that 4 divides; the end is near enough.
  void Align() noexcept { at_ = size_ - at_ < (-at_ & 3) ? size_ : at_ + (-at_ & 3); }

  bool TakePlain(MenuItem* item, bool* isPopup, bool* isLast) {
    uint16_t option = 0;
    uint16_t id = 0;
    if (!Take(&option)) return false;
    *isPopup = (option & kPopup) != 0;
    *isLast = (option & kLast) != 0;
    if ((!*isPopup && !Take(&id)) || !TakeText(&item->text)) return false;
    item->id = *isPopup ? kZrMenuNoId : id;
    item->state = option & kStates;
    item->isSeparator = !*isPopup && id == 0 && item->text.empty();
    return true;
  }

  bool TakeExtended(MenuItem* item, bool* isPopup, bool* isLast) {
    uint32_t type = 0;
    uint32_t state = 0;
    uint16_t flags = 0;
    if (!Take(&type) || !Take(&state) || !Take(&item->id) || !Take(&flags) || !TakeText(&item->text)) return false;
    Align();
    *isPopup = (flags & kExtendedPopup) != 0;
    *isLast = (flags & kLast) != 0;
    item->state = state & kStates;
    item->isSeparator = !*isPopup && (type & kSeparatorType) != 0;
    uint32_t help = 0;
    return !*isPopup || Take(&help);
  }

  bool ReadItems(ZrMenu* menu, int depth) {
    bool isLast = false;
    while (!isLast) {
      MenuItem item;
      bool isPopup = false;
      const bool isRead = isExtended_ ? TakeExtended(&item, &isPopup, &isLast) : TakePlain(&item, &isPopup, &isLast);
      if (!isRead) return false;
      if (isPopup) {
        item.submenu = std::make_unique<ZrMenu>();
        if (depth == kDeepestMenu || !ReadItems(item.submenu.get(), depth + 1)) return false;
      }
      if (item.isSeparator) item.text.clear();
      menu->items.push_back(std::move(item));
    }
    return true;
  }

  const uint8_t* bytes_;
  size_t size_;
  size_t at_ = 0;
  bool isExtended_ = false;
};

}  // namespace

std::unique_ptr<ZrMenu> ReadMenuTemplate(const uint8_t* bytes, size_t size) {
  return TemplateReader(bytes, size).ReadMenu();
}

}  // namespace marlo
