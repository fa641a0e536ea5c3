// SPDX-License-Identifier: Apache-2.0
// Formats error details and kernel messages.
#include "kernel/format_detail.h"

#include <cstdint>

#include "platform/base/text.h"

namespace marlo {
namespace {

/// Collects characters and keeps the last place for the terminator.
class Writer {
 public:
  Writer(char16_t* buffer, size_t capacity) noexcept : buffer_(buffer), capacity_(capacity) {}

  void Put(char16_t character) noexcept {
    if (used_ + 1 < capacity_) buffer_[used_++] = character;
  }
  void Fill(char16_t character, size_t count) noexcept {
    for (; count > 0 && used_ + 1 < capacity_; --count) Put(character);
  }
  size_t End() noexcept {
    if (capacity_ > 0) buffer_[used_] = 0;
    return used_;
  }

 private:
  char16_t* buffer_;
  size_t capacity_;
  size_t used_ = 0;
};

struct Conversion {
  bool left = false;
  bool zero = false;
  size_t width = 0;
  size_t precision = SIZE_MAX;
  char16_t type = 0;
};

size_t ReadNumber(const char16_t** cursor) noexcept {
  constexpr size_t kMost = 65535;
  size_t value = 0;
  for (; **cursor >= u'0' && **cursor <= u'9'; ++*cursor) {
    if (value < kMost) value = value * 10 + static_cast<size_t>(**cursor - u'0');
  }
  return value < kMost ? value : kMost;
}

/// Reads what follows a '%' and moves the cursor behind it.
Conversion ReadConversion(const char16_t** cursor) noexcept {
  Conversion conversion;
  for (; **cursor == u'-' || **cursor == u'0'; ++*cursor) {
    (**cursor == u'-' ? conversion.left : conversion.zero) = true;
  }
  conversion.width = ReadNumber(cursor);
  if (**cursor == u'.') {
    ++*cursor;
    conversion.precision = ReadNumber(cursor);
  }
  conversion.type = **cursor;
  if (conversion.type != 0) ++*cursor;
  return conversion;
}

void PutPadded(Writer* writer, const Conversion& conversion, const char16_t* text, size_t characters) noexcept {
  const size_t padding = conversion.width > characters ? conversion.width - characters : 0;
  if (!conversion.left) writer->Fill(u' ', padding);
  for (size_t i = 0; i < characters; ++i) writer->Put(text[i]);
  if (conversion.left) writer->Fill(u' ', padding);
}

void PutNumber(Writer* writer, const Conversion& conversion, uint32_t value, uint32_t base, bool negative) noexcept {
  constexpr size_t kMostDigits = 11;  // ten decimal digits and a sign
  const char16_t* digits = conversion.type == u'X' ? u"0123456789ABCDEF" : u"0123456789abcdef";
  char16_t text[kMostDigits];
  size_t start = kMostDigits;
  do {
    text[--start] = digits[value % base];
    value /= base;
  } while (value != 0);
  if (conversion.zero && !conversion.left) {
    const size_t characters = kMostDigits - start + (negative ? 1 : 0);
    if (negative) writer->Put(u'-');
    if (conversion.width > characters) writer->Fill(u'0', conversion.width - characters);
    for (size_t i = start; i < kMostDigits; ++i) writer->Put(text[i]);
    return;
  }
  if (negative) text[--start] = u'-';
  PutPadded(writer, conversion, text + start, kMostDigits - start);
}

}  // namespace

size_t FormatDetailV(char16_t* buffer, size_t capacity, const char16_t* format, va_list arguments) noexcept {
  Writer writer(buffer, capacity);
  const char16_t* cursor = format;
  while (*cursor != 0) {
    if (*cursor != u'%') {
      writer.Put(*cursor++);
      continue;
    }
    const char16_t* start = cursor++;
    const Conversion conversion = ReadConversion(&cursor);
    switch (conversion.type) {
      case u'%':
        writer.Put(u'%');
        break;
      case u's': {
        const char16_t* text = va_arg(arguments, const char16_t*);
        size_t characters = 0;
        while (text != nullptr && characters < conversion.precision && text[characters] != 0) ++characters;
        PutPadded(&writer, conversion, text, characters);
        break;
      }
      case u'c': {
        const char16_t character = static_cast<char16_t>(va_arg(arguments, int));
        PutPadded(&writer, conversion, &character, 1);
        break;
      }
      case u'd': {
        const int32_t value = va_arg(arguments, int32_t);
        const uint32_t magnitude = value < 0 ? 0U - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
        PutNumber(&writer, conversion, magnitude, 10, value < 0);
        break;
      }
      case u'u':
        PutNumber(&writer, conversion, va_arg(arguments, uint32_t), 10, false);
        break;
      case u'x':
      case u'X':
        PutNumber(&writer, conversion, va_arg(arguments, uint32_t), 16, false);
        break;
      default:
        for (; start != cursor; ++start) writer.Put(*start);
        break;
    }
  }
  return writer.End();
}

size_t FormatDetail(char16_t* buffer, size_t capacity, const char16_t* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  const size_t characters = FormatDetailV(buffer, capacity, format, arguments);
  va_end(arguments);
  return characters;
}

}  // namespace marlo
