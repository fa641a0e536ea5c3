// SPDX-License-Identifier: Apache-2.0
// Pictures in words, and the two spellings of a colour table.

#include <cstdio>

#include "kernel/strings.h"
#include "marlo110k/dib.h"
#include "platform/base/text.h"

namespace {

struct FormatName {
  uint32_t compression;
  marlo::Text text;
};

constexpr FormatName kFormatNames[] = {
    {BI_RGB, marlo::Text::kPictureRgb},
    {BI_BITFIELDS, marlo::Text::kPictureBitfields},
    {ZRDIB_FOURCC_ZRDB, marlo::Text::kPictureRgba},
    {ZRDIB_FOURCC_ZRGS, marlo::Text::kPictureGrayscale},
};

}  // namespace

HRESULT ZrVideo_GetFormatText(uint32_t compression, char16_t* buffer, uint32_t characters) noexcept {
  if (!buffer || characters == 0) return E_POINTER;
  for (const FormatName& name : kFormatNames) {
    if (name.compression == compression) {
      plat::CopyText(buffer, characters, marlo::KernelText(name.text));
      return S_OK;
    }
  }
  char16_t letters[5] = {};
  for (int index = 0; index < 4; ++index) letters[index] = static_cast<char16_t>((compression >> (8 * index)) & 0xFF);
  plat::CopyText(buffer, characters, letters);
  return S_OK;
}

HRESULT ZrVideo_GetAttribsTextEx(int32_t width, int32_t height, int32_t bitCount, char16_t* buffer,
                                 uint32_t characters) noexcept {
  if (!buffer || characters == 0) return E_POINTER;
  char narrow[40];
  const int length = std::snprintf(narrow, sizeof narrow, "%dx%dx%d", width, height, bitCount);
  char16_t wide[40] = {};
  for (int index = 0; index < length; ++index) wide[index] = static_cast<char16_t>(narrow[index]);
  plat::CopyText(buffer, characters, wide);
  return S_OK;
}

HRESULT ZrVideo_GetAttribsText(const BITMAPINFOHEADER* header, char16_t* buffer, uint32_t characters) noexcept {
  if (!header) return E_POINTER;
  return ZrVideo_GetAttribsTextEx(header->biWidth, header->biHeight, header->biBitCount, buffer, characters);
}

HRESULT ZrVideo_PaletteRGBAFromEntry(RGBQUAD* destination, const PALETTEENTRY* source, int32_t count) noexcept {
  if (!destination || !source) return E_POINTER;
  for (int32_t index = 0; index < count; ++index) {
    const PALETTEENTRY entry = source[index];
    destination[index] = {entry.peBlue, entry.peGreen, entry.peRed, 0};
  }
  return S_OK;
}

HRESULT ZrVideo_PaletteEntryFromRGBA(PALETTEENTRY* destination, const RGBQUAD* source, int32_t count) noexcept {
  if (!destination || !source) return E_POINTER;
  for (int32_t index = 0; index < count; ++index) {
    const RGBQUAD color = source[index];
    destination[index] = {color.rgbRed, color.rgbGreen, color.rgbBlue, 0};
  }
  return S_OK;
}
