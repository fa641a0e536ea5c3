// SPDX-License-Identifier: Apache-2.0
// Measures dialogs by their templates, and declines to show them.
#include "marlo110k/dialogs.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <new>

#include "kernel/dialog_units.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;
constexpr uint32_t kExtendedMark = 0xFFFF0001;
constexpr uint32_t kNamesFont = 0x40;
constexpr size_t kLongestFace = 64;           // with the terminator
constexpr size_t kUnboundedBytes = 1u << 20;  // no template is longer
constexpr int32_t kDotsPerInch = 96;
constexpr int32_t kLetters = 52;

constinit std::atomic<MeasureFont> measureFont{nullptr};
// Both in one word, so that no thread reads a mixed pair.
constexpr uint64_t Pack(ZrPixelSize size) noexcept {
  return uint64_t{static_cast<uint32_t>(size.width)} << 32 | static_cast<uint32_t>(size.height);
}
constinit std::atomic<uint64_t> interfaceUnits{Pack({7, 13})};

/// What a template says about its dialog's size.
struct TemplateFacts {
  int16_t width = 0;  ///< In units.
  int16_t height = 0;
  bool hasFont = false;
  uint16_t points = 0;
  // What a plain template stores of its font, which names no style.
  int32_t weight = 400;
  int32_t italic = 1;
  int32_t charset = 0;
  char16_t face[kLongestFace] = {};
};

class DialogReader {
 public:
  DialogReader(const void* bytes, size_t size) noexcept : bytes_(static_cast<const uint8_t*>(bytes)), size_(size) {}

  bool Read(TemplateFacts* facts) noexcept {
    constexpr size_t kPlainSizeOffset = 14;
    constexpr size_t kExtendedStyleOffset = 12;
    constexpr size_t kExtendedMore = 8;
    uint32_t style = 0;
    if (!Take(&style)) return false;
    const bool isExtended = style == kExtendedMark;
    if (isExtended) at_ = kExtendedStyleOffset;
    if (isExtended && !Take(&style)) return false;
    at_ = kPlainSizeOffset + (isExtended ? kExtendedMore : 0);
    if (!Take(&facts->width) || !Take(&facts->height)) return false;
    facts->hasFont = (style & kNamesFont) != 0;
    if (!facts->hasFont) return true;
    return SkipName() && SkipName() && SkipText() && TakeFont(isExtended, facts);
  }

 private:
  template <typename T>
  bool Take(T* value) noexcept {
    if (at_ > size_ || size_ - at_ < sizeof(T)) return false;
    std::memcpy(value, bytes_ + at_, sizeof(T));
    at_ += sizeof(T);
    return true;
  }

  bool SkipText() noexcept {
    uint16_t character = 0;
    while (Take(&character)) {
      if (character == 0) return true;
    }
    return false;
  }

  /// A menu or a class: nothing, a number, or a text.
  bool SkipName() noexcept {
    constexpr uint16_t kNumberMark = 0xFFFF;
    uint16_t first = 0;
    if (!Take(&first)) return false;
    if (first == kNumberMark) return Take(&first);
    return first == 0 || SkipText();
  }

  bool TakeFont(bool isExtended, TemplateFacts* facts) noexcept {
    if (!Take(&facts->points)) return false;
    if (isExtended) {
      uint16_t weight = 0;
      uint8_t style[2] = {};
      if (!Take(&weight) || !Take(&style)) return false;
      facts->weight = weight;
      facts->italic = style[0];
      facts->charset = style[1];
    }
    // A longer face is cut; no font has such a name.
    char16_t character = 0;
    for (size_t i = 0; Take(&character); ++i) {
      if (character == 0) return true;
      if (i + 1 < kLongestFace) facts->face[i] = character;
    }
    return false;
  }

  const uint8_t* bytes_;
  size_t size_;
  size_t at_ = 0;
};

}  // namespace

void SetFontMeasure(MeasureFont measure) noexcept { measureFont.store(measure, std::memory_order_release); }

ZrPixelSize InterfaceUnits() noexcept {
  const uint64_t units = interfaceUnits.load(kRelaxed);
  return {static_cast<int32_t>(units >> 32), static_cast<int32_t>(units & 0xFFFFFFFF)};
}

void SetInterfaceUnits(ZrPixelSize units) noexcept { interfaceUnits.store(Pack(units), kRelaxed); }

bool MeasureDialog(const void* dialogTemplate, size_t bytes, ZrPixelSize* size) noexcept {
  constexpr int32_t kUnitsAcross = 4;
  constexpr int32_t kUnitsDown = 8;
  TemplateFacts facts;
  if (!DialogReader(dialogTemplate, bytes).Read(&facts)) return false;
  ZrPixelSize units{0, 0};
  if (facts.hasFont) {
    ZrGetDialogUnitsForFont(facts.face, facts.points, facts.weight, facts.italic, facts.charset, &units);
  }
  if (units.width == 0 || units.height == 0) units = InterfaceUnits();
  *size = {plat::MulDiv(facts.width, units.width, kUnitsAcross), plat::MulDiv(facts.height, units.height, kUnitsDown)};
  return true;
}

}  // namespace marlo

bool ZrGetDialogUnitsForFont(const char16_t* face, int32_t points, int32_t weight, int32_t italic, int32_t charset,
                             ZrPixelSize* units) noexcept {
  constexpr int32_t kPointsPerInch = 72;
  if (units == nullptr) return false;
  *units = {0, 0};
  const marlo::MeasureFont measure = marlo::measureFont.load(std::memory_order_acquire);
  const int32_t height = -plat::MulDiv(points, marlo::kDotsPerInch, kPointsPerInch);
  marlo::FontMeasures measures{};
  if (measure == nullptr || !measure({face, height, weight, italic, charset}, &measures)) return false;
  // Rounded to the nearest pixel.
  units->width = (measures.lettersWidth + marlo::kLetters / 2) / marlo::kLetters;
  units->height = measures.height + measures.externalLeading;
  return units->width != 0;
}

int32_t ZrGetDialogSizeIndirect(HZRLANG, const void* dialogTemplate, ZrPixelSize* size) noexcept {
  if (dialogTemplate == nullptr || size == nullptr) return 0;
  return marlo::MeasureDialog(dialogTemplate, marlo::kUnboundedBytes, size) ? 1 : 0;
}

int32_t ZrGetDialogSize(HZRLANG language, const char16_t* name, ZrDialogProcedure, intptr_t,
                        ZrPixelSize* size) noexcept {
  uint32_t bytes = 0;
  const void* const found = ZrLoadResourceCustom(language, ZrResourceId(kZrDialogResource), name, &bytes);
  if (found == nullptr || size == nullptr) return 0;
  return marlo::MeasureDialog(found, bytes, size) ? 1 : 0;
}

HZRWINDOW ZrCreateDialogParam(HZRLANG, const char16_t*, HZRWINDOW, ZrDialogProcedure, intptr_t) noexcept {
  return nullptr;
}

HZRWINDOW ZrCreateDialogIndirectParam(HZRLANG, const void*, HZRWINDOW, ZrDialogProcedure, intptr_t) noexcept {
  return nullptr;
}

intptr_t ZrDialogBoxParam(HZRLANG, const char16_t*, HZRWINDOW, ZrDialogProcedure, intptr_t) noexcept { return -1; }

intptr_t ZrDialogBoxIndirectParam(HZRLANG, const void*, HZRWINDOW, ZrDialogProcedure, intptr_t) noexcept { return -1; }

intptr_t ZrResPoolDialogBox(const ZRRESPOOL* pool, HZRLANG language, const char16_t* name, HZRWINDOW parent,
                            ZrDialogProcedure procedure, intptr_t parameter) noexcept {
  constexpr uint32_t kEnglish = 0x0409;
  const uint32_t lcid = ZrLang_GetLCID(language);
  uint32_t bytes = 0;
  const void* const found = ZrFindDialogTemplateInResPool(pool, &bytes, name, lcid != 0 ? lcid : kEnglish);
  if (found == nullptr) return -1;
  // Running a dialog may write into its template.
  const std::unique_ptr<uint8_t[]> copy(new (std::nothrow) uint8_t[bytes]);
  if (copy == nullptr) return -1;
  std::copy_n(static_cast<const uint8_t*>(found), bytes, copy.get());
  return ZrDialogBoxIndirectParam(language, copy.get(), parent, procedure, parameter);
}
