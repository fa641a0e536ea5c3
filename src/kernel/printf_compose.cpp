// SPDX-License-Identifier: Apache-2.0
// Composes texts whose inserts are numbered, so that a translator may change their order.
#include <algorithm>
#include <cstdarg>

#include "kernel/printf_conversion.h"
#include "marlo110k/printf.h"

namespace marlo {
namespace {

constexpr uint32_t kMaximumInsert = 99;

bool IsDigit(char16_t character) noexcept { return character >= u'0' && character <= u'9'; }

/// The number of the insert behind a "%", at most two digits; moves the cursor behind it. 0 when there is none.
uint32_t ReadInsertNumber(const char16_t*& cursor) noexcept {
  uint32_t number = 0;
  for (int digits = 0; digits < 2 && IsDigit(*cursor); ++digits) number = number * 10 + (*cursor++ - u'0');
  return number;
}

/// Takes arguments as machine words, as far as they have been asked for, in any order.
class WordArguments {
 public:
  explicit WordArguments(va_list arguments) noexcept { va_copy(list_, arguments); }
  ~WordArguments() { va_end(list_); }
  WordArguments(const WordArguments&) = delete;
  WordArguments& operator=(const WordArguments&) = delete;

  /// Argument `number`, counted from 1.
  uint64_t Get(uint32_t number) noexcept {
    for (; taken_ < number; ++taken_) words_[taken_] = va_arg(list_, uint64_t);
    return words_[number - 1];
  }

 private:
  va_list list_;
  uint64_t words_[kMaximumInsert];
  uint32_t taken_ = 0;
};

/// The conversion between exclamation marks, or "s" when there is none; moves the cursor behind it.
Conversion ReadInsertConversion(const char16_t*& cursor) noexcept {
  Conversion text;
  text.type = u's';
  if (*cursor != u'!') return text;
  const char16_t* specification = cursor + 1;
  size_t characters = 0;
  while (specification[characters] != 0 && specification[characters] != u'!') ++characters;
  if (specification[characters] == 0 || characters == 0) return text;
  cursor = specification + characters + 1;
  return ParseConversion(specification, characters, false);
}

void PutInsert(TextOutput* output, const Conversion& conversion, uint64_t word) noexcept {
  if (IsInteger(conversion)) return PutInteger(output, conversion, word);
  if (conversion.type == u'c') return PutCharacter(output, conversion, static_cast<uint32_t>(word));
  if (conversion.type == u's') PutString(output, conversion, reinterpret_cast<const void*>(word));
}

/// Writes what "%" and the character behind it stand for.
void PutEscape(TextOutput* output, char16_t character) noexcept {
  switch (character) {
    case u'n':
      output->Put(u"\r\n");
      break;
    case u'r':
      output->Put(u'\r');
      break;
    case u't':
      output->Put(u'\t');
      break;
    case u'b':
      output->Put(u' ');
      break;
    default:
      output->Put(character);
      break;
  }
}

void Compose(TextOutput* output, const char16_t* format, WordArguments* arguments) noexcept {
  for (const char16_t* cursor = format; *cursor != 0 && !output->ItemCut();) {
    if (*cursor != u'%' || cursor[1] == 0) {
      output->Put(*cursor++);
      continue;
    }
    ++cursor;
    if (*cursor == u'0') return;
    if (const uint32_t number = ReadInsertNumber(cursor)) {
      const Conversion conversion = ReadInsertConversion(cursor);
      PutInsert(output, conversion, arguments->Get(number));
    } else {
      PutEscape(output, *cursor++);
    }
  }
}

}  // namespace
}  // namespace marlo

uint32_t ZrComposeStr(char16_t* destination, uint32_t characters, const char16_t* format, ...) noexcept {
  if (destination == nullptr || characters == 0) return 0;
  destination[0] = 0;
  if (format == nullptr) return 0;
  va_list arguments;
  va_start(arguments, format);
  marlo::WordArguments words(arguments);
  va_end(arguments);
  marlo::TextOutput output(destination, characters);
  marlo::Compose(&output, format, &words);
  const size_t written = output.End();
  if (!output.ItemCut()) return static_cast<uint32_t>(written);
  destination[0] = 0;
  return 0;
}
