// SPDX-License-Identifier: Apache-2.0
// What dialogs are measured by: the fonts of the screen and the font of the user interface.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/dialogs.h"

namespace marlo {

/// A font of the screen that is asked for.
struct ScreenFont {
  const char16_t* face;
  int32_t height;  ///< In pixels, negative for that of the characters alone.
  int32_t weight;
  int32_t italic;
  int32_t charset;
};

/// What a font measures in pixels.
struct FontMeasures {
  int32_t lettersWidth;  ///< Of the capital letters and the small ones, A to Z and a to z, as one text.
  int32_t height;
  int32_t externalLeading;
};

/// Measures a font of the screen. @return false when there is none.
using MeasureFont = bool (*)(const ScreenFont& font, FontMeasures* measures) noexcept;

/// Sets what measures fonts; null for nothing, as at the start. [any thread]
void SetFontMeasure(MeasureFont measure) noexcept;
/// The units of the user interface's font, 7 by 13 until they are set. [any thread]
ZrPixelSize InterfaceUnits() noexcept;
void SetInterfaceUnits(ZrPixelSize units) noexcept;

/// The size of a template's dialog. @param bytes of the template. @return false when it is damaged.
bool MeasureDialog(const void* dialogTemplate, size_t bytes, ZrPixelSize* size) noexcept;

}  // namespace marlo
