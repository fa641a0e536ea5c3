// SPDX-License-Identifier: Apache-2.0
// Where formatted text goes: a buffer that keeps room for the terminator and remembers whether an item was cut.
#pragma once

#include <cstddef>
#include <cstdint>

namespace marlo {

class TextOutput {
 public:
  /// @param capacity characters with the terminator, at least 1; kUnbounded when the caller gives room.
  TextOutput(char16_t* buffer, size_t capacity) noexcept : start_(buffer), cursor_(buffer), room_(capacity - 1) {}

  static constexpr size_t kUnbounded = PTRDIFF_MAX;

  size_t Room() const noexcept { return room_; }
  size_t Written() const noexcept { return static_cast<size_t>(cursor_ - start_); }
  bool ItemCut() const noexcept { return itemCut_; }
  void NoteCut() noexcept { itemCut_ = true; }

  /// Text between items: what doesn't fit is lost without a mark.
  void PutLiteral(char16_t character) noexcept {
    if (room_ == 0) return;
    *cursor_++ = character;
    --room_;
  }
  void Put(char16_t character) noexcept {
    if (room_ == 0) {
      itemCut_ = true;
    } else {
      PutLiteral(character);
    }
  }
  void Put(const char16_t* text, size_t characters) noexcept {
    if (characters > room_) {
      characters = room_;
      itemCut_ = true;
    }
    for (size_t i = 0; i < characters; ++i) cursor_[i] = text[i];
    cursor_ += characters;
    room_ -= characters;
  }
  /// The terminated text.
  void Put(const char16_t* text) noexcept {
    for (; *text != 0; ++text) {
      if (room_ == 0) {
        itemCut_ = true;
        return;
      }
      PutLiteral(*text);
    }
  }
  void Fill(char16_t character, size_t count) noexcept {
    for (; count > 0 && room_ > 0; --count) PutLiteral(character);
    if (count > 0) itemCut_ = true;
  }
  /// Stores the terminator. @return the characters before it.
  size_t End() noexcept {
    *cursor_ = 0;
    return Written();
  }

 private:
  char16_t* start_;
  char16_t* cursor_;
  size_t room_;
  bool itemCut_ = false;
};

}  // namespace marlo
