// SPDX-License-Identifier: Apache-2.0
// Walks a format: plain text, escapes, tokens, separators and conversions.
#include "marlo110k/printf.h"

#include <cstring>

#include "kernel/internationals.h"
#include "kernel/number_grouping.h"
#include "kernel/printf_tokens.h"
#include "kernel/printf_walk.h"

namespace marlo {
namespace {

constexpr char16_t kConversionLetters[] = u"!&*,:EGXcdefgiosuxz";

/// The letters as bits, for the look at each character of a specification.
class LetterSet {
 public:
  constexpr LetterSet() noexcept {
    for (const char16_t letter : kConversionLetters) {
      if (letter != 0) bits_[letter / 64] |= uint64_t{1} << letter % 64;
    }
  }
  constexpr bool Holds(char16_t character) const noexcept {
    return character < 128 && (bits_[character / 64] >> character % 64 & 1) != 0;
  }

 private:
  uint64_t bits_[2] = {};
};
constexpr LetterSet kLetters;

/// The separator that follows "!" (time codes) or "&" (musical time); null when another character does.
const tZRLOCALESIGN* PairedSeparator(char16_t item, char16_t which) noexcept {
  if (item == u'!') {
    if (which == u':') return &internationals.smpteWhole;
    if (which == u'.') return &internationals.smpteNonDrop;
    if (which == u',') return &internationals.smpteDrop;
    return nullptr;
  }
  if (which == u':') return &internationals.measureToBeat;
  if (which == u'.') return &internationals.beatToTick;
  return nullptr;
}

/// Reads a format from left to right.
class Walk {
 public:
  Walk(TextOutput* output, const char16_t* format, ArgumentList* arguments) noexcept
      : output_(output), cursor_(format), arguments_(arguments) {}

  void Run() noexcept {
    while (*cursor_ != 0 && output_->Room() > 0) {
      if (*cursor_ == u'$' || *cursor_ == u'%') {
        PutItem();
      } else {
        output_->PutLiteral(*cursor_++);
      }
    }
  }

 private:
  void PutItem() noexcept {
    const char16_t introducer = cursor_[0];
    const char16_t next = cursor_[1];
    if (next == introducer || (introducer == u'$' && next == u'%')) {
      output_->PutLiteral(next);
      cursor_ += 2;
    } else if (introducer == u'$' && next == u'(') {
      const char16_t first = cursor_[2];
      if ((first >= u'0' && first <= u'9') || first == u'-' || first == u'.') {
        PutNumberInText();
      } else {
        PutTokenOrText();
      }
    } else {
      PutConversion(introducer == u'$');
    }
  }

  /// What stands between "$(" and ")" is read into `text`, of the characters that `keep` takes.
  /// @return false when the parenthesis doesn't close in time; the characters then come out as they stand.
  template <class Keep>
  bool ReadParenthesis(char16_t* text, Keep keep) noexcept {
    const char16_t* inside = cursor_ + 2;
    size_t characters = 0;
    size_t kept = 0;
    for (; characters < kTokenNameCharacters && inside[characters] != 0 && inside[characters] != u')'; ++characters) {
      if (keep(characters, inside[characters])) text[kept++] = inside[characters];
    }
    text[kept] = 0;
    if (inside[characters] == u')') {
      cursor_ = inside + characters + 1;
      return true;
    }
    output_->Put(cursor_, characters + 2);
    cursor_ = inside + characters;
    return false;
  }

  void PutNumberInText() noexcept {
    char16_t number[kTokenNameCharacters + 1];
    // Group signs of the plain form are dropped; those of the locale take their place.
    const bool closed = ReadParenthesis(number, [](size_t index, char16_t character) {
      return (character >= u'0' && character <= u'9') || character == u'.' || (index == 0 && character == u'-');
    });
    if (closed) PutNumber(output_, number, {true, kDigitsOfText});
  }

  void PutTokenOrText() noexcept {
    char16_t name[kTokenNameCharacters + 1];
    const char16_t* start = cursor_;
    if (!ReadParenthesis(name, [](size_t, char16_t) { return true; })) return;
    if (!PutToken(output_, name)) output_->Put(start, static_cast<size_t>(cursor_ - start));
  }

  void PutConversion(bool localised) noexcept {
    const char16_t* specification = cursor_ + 1;
    size_t characters = 0;
    while (characters + 1 < kConversionCharacters && specification[characters] != 0 &&
           !kLetters.Holds(specification[characters])) {
      ++characters;
    }
    const char16_t letter = specification[characters];
    if (letter == 0 || !kLetters.Holds(letter)) {
      // No conversion after all. This is plain text, so a cut here isn't told.
      for (size_t i = 0; i <= characters; ++i) output_->PutLiteral(cursor_[i]);
      cursor_ = specification + characters;
      return;
    }
    cursor_ = specification + characters + 1;
    if (!PutSeparator(letter)) PutArgument(ParseConversion(specification, characters + 1, localised));
  }

  /// @return false when the letter is a conversion that takes an argument.
  bool PutSeparator(char16_t letter) noexcept {
    switch (letter) {
      case u'*':
        output_->Put(internationals.decimalSeparator.text);
        return true;
      case u',':
        output_->Put(internationals.listSeparator.text);
        return true;
      case u':':
        output_->Put(internationals.timeSeparator.text);
        return true;
      case u'!':
      case u'&':
        if (const tZRLOCALESIGN* separator = PairedSeparator(letter, *cursor_)) {
          output_->Put(separator->text);
          ++cursor_;
        }
        return true;
      default:
        return false;
    }
  }

  void PutArgument(const Conversion& conversion) noexcept {
    if (IsInteger(conversion)) {
      const bool wide = conversion.size == ArgumentSize::kWide;
      PutInteger(output_, conversion, wide ? va_arg(arguments_->list, uint64_t) : va_arg(arguments_->list, uint32_t));
    } else if (IsReal(conversion)) {
      PutReal(output_, conversion, va_arg(arguments_->list, double));
    } else if (conversion.type == u'c') {
      PutCharacter(output_, conversion, va_arg(arguments_->list, uint32_t));
    } else {
      PutString(output_, conversion, va_arg(arguments_->list, const void*));
    }
  }

  TextOutput* output_;
  const char16_t* cursor_;
  ArgumentList* arguments_;
};

}  // namespace

void PutFormat(TextOutput* output, const char16_t* format, ArgumentList* arguments) noexcept {
  Walk(output, format, arguments).Run();
}

bool HoldsFormat(const char16_t* text) noexcept {
  for (; *text != 0; ++text) {
    if (*text == u'%' || *text == u'$') return true;
  }
  return false;
}

}  // namespace marlo

int32_t ZrVPrintF(char16_t* destination, const char16_t* format, va_list arguments) noexcept {
  if (destination == nullptr) return 0;
  marlo::TextOutput output(destination, marlo::TextOutput::kUnbounded);
  if (format != nullptr) {
    marlo::ArgumentList list;
    va_copy(list.list, arguments);
    marlo::PutFormat(&output, format, &list);
    va_end(list.list);
  }
  return static_cast<int32_t>(output.End());
}

int32_t ZrPrintF(char16_t* destination, const char16_t* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  const int32_t characters = ZrVPrintF(destination, format, arguments);
  va_end(arguments);
  return characters;
}

HRESULT ZrNVPrintF(char16_t* destination, uint32_t characters, uint32_t* written, const char16_t* format,
                   va_list arguments) noexcept {
  if (written != nullptr) *written = 0;
  if (destination == nullptr || characters == 0) return ZR_E_BUFFER_TOO_SMALL;
  marlo::TextOutput output(destination, characters);
  if (format != nullptr) {
    marlo::ArgumentList list;
    va_copy(list.list, arguments);
    marlo::PutFormat(&output, format, &list);
    va_end(list.list);
  }
  const size_t stored = output.End();
  if (written != nullptr) *written = static_cast<uint32_t>(stored);
  return output.ItemCut() ? ZR_E_BUFFER_TOO_SMALL : S_OK;
}

HRESULT ZrCchPrintF(char16_t* destination, uint32_t characters, uint32_t* written, const char16_t* format,
                    ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  const HRESULT result = ZrNVPrintF(destination, characters, written, format, arguments);
  va_end(arguments);
  return result;
}
