// SPDX-License-Identifier: Apache-2.0
// Mirroring, channel swapping and desaturation of a picture in place.

#include <algorithm>
#include <cstring>

#include "marlo110k/dib_copy.h"
#include "pixel/descriptor.h"
#include "pixel/exchange_types.h"
#include "pixel/geometry.h"
#include "pixel/kernel_level.h"
#include "platform/parallel/rows.h"

using namespace marlo::pixel;

namespace {

/// The visible part of a rectangle, with its bottom row in memory.
struct Area {
  uint8_t* first;  ///< Row start, not yet moved to the left pixel.
  int32_t left;
  int32_t width;
  int32_t height;
  int32_t stride;
  uint8_t* Row(int32_t index) const noexcept { return first + int64_t{index} * stride; }
};

Area AreaOf(const BITMAPINFOHEADER& header, void* bits, const RECT* rect, int32_t stride) noexcept {
  const RECT bounds = BoundsOf(header);
  const RECT visible = Intersection(rect ? *rect : bounds, bounds);
  const int32_t rowStride = StrideOf(header, stride);
  return {PixelsOf(header, bits) + (int64_t{header.biHeight} - visible.bottom) * rowStride, visible.left,
          Saturate(Width(visible)), Saturate(Height(visible)), rowStride};
}

/// Whole pixels of `kBytes` bytes in a row.
template <int32_t kBytes>
struct Pixels {
  static void Swap(uint8_t* a, int32_t columnA, uint8_t* b, int32_t columnB) noexcept {
    uint8_t* const first = a + int64_t{columnA} * kBytes;
    std::swap_ranges(first, first + kBytes, b + int64_t{columnB} * kBytes);
  }
};

/// Two pixels a byte, the high half leftmost.
struct Nibbles {
  static void Swap(uint8_t* a, int32_t columnA, uint8_t* b, int32_t columnB) noexcept {
    uint8_t* const byteA = a + columnA / 2;
    uint8_t* const byteB = b + columnB / 2;
    const uint32_t valueA = LoadBits<4>(byteA, columnA % 2 * 4);
    const uint32_t valueB = LoadBits<4>(byteB, columnB % 2 * 4);
    StoreBits<4>(byteA, columnA % 2 * 4, valueB);
    StoreBits<4>(byteB, columnB % 2 * 4, valueA);
  }
};

template <typename Access>
void MirrorRow(uint8_t* row, int32_t left, int32_t width) {
  for (int32_t low = left, high = left + width - 1; low < high; ++low, --high) Access::Swap(row, low, row, high);
}
template <typename Access>
void ExchangeRows(uint8_t* a, uint8_t* b, int32_t left, int32_t width) {
  for (int32_t column = left; column < left + width; ++column) Access::Swap(a, column, b, column);
}

template <int32_t kChannelBytes, int32_t kPixelBytes>
void SwapChannelsOfRow(uint8_t* row, int32_t left, int32_t width) {
  uint8_t* pixel = row + int64_t{left} * kPixelBytes;
  for (int32_t column = 0; column < width; ++column, pixel += kPixelBytes) {
    std::swap_ranges(pixel, pixel + kChannelBytes, pixel + 2 * kChannelBytes);
  }
}

/// Three fields of `kBits` bits from bit 0, `kMiddle` bits in the middle one; bits above stay.
template <typename Word, int32_t kBits, int32_t kMiddle>
void SwapFieldsOfRow(uint8_t* row, int32_t left, int32_t width) {
  constexpr uint32_t kMask = (1u << kBits) - 1;
  constexpr int32_t kUpper = kBits + kMiddle;
  uint8_t* pixel = row + int64_t{left} * int64_t{sizeof(Word)};
  for (int32_t column = 0; column < width; ++column, pixel += sizeof(Word)) {
    const uint32_t packed = LoadAs<Word>(pixel);
    const uint32_t kept = packed & ~(kMask | kMask << kUpper);
    StoreAs(pixel, static_cast<Word>(kept | (packed & kMask) << kUpper | (packed >> kUpper & kMask)));
  }
}

/// Row functions by pixel type; null where the operation has no meaning.
struct RowFunctions {
  void (*mirror)(uint8_t* row, int32_t left, int32_t width);
  void (*exchange)(uint8_t* a, uint8_t* b, int32_t left, int32_t width);
  void (*swapRedBlue)(uint8_t* row, int32_t left, int32_t width);
};

template <typename Access>
constexpr RowFunctions Functions(void (*swapRedBlue)(uint8_t*, int32_t, int32_t)) {
  return {MirrorRow<Access>, ExchangeRows<Access>, swapRedBlue};
}

constexpr int32_t kFirstType = ZRPIXEL_PAL4;
constexpr RowFunctions kRowFunctions[] = {
    Functions<Nibbles>(nullptr),                              // PAL4
    Functions<Pixels<1>>(nullptr),                            // PAL8
    Functions<Pixels<2>>(SwapFieldsOfRow<uint16_t, 5, 5>),    // RGB555
    Functions<Pixels<2>>(SwapFieldsOfRow<uint16_t, 5, 6>),    // RGB565
    Functions<Pixels<3>>(SwapChannelsOfRow<1, 3>),            // RGB24
    Functions<Pixels<4>>(SwapChannelsOfRow<1, 4>),            // RGB32
    Functions<Pixels<4>>(SwapChannelsOfRow<1, 4>),            // RGBA32
    Functions<Pixels<4>>(SwapFieldsOfRow<uint32_t, 10, 10>),  // RGB10
    Functions<Pixels<8>>(SwapChannelsOfRow<2, 8>),            // RGBA64
    Functions<Pixels<16>>(SwapChannelsOfRow<4, 16>),          // RGBA128F
};

const RowFunctions* FindRowFunctions(const BITMAPINFOHEADER& header) noexcept {
  const int32_t type = ZrGetPixelType(&header);
  return type >= kFirstType && type <= ZRPIXEL_RGBA128F ? &kRowFunctions[type - kFirstType] : nullptr;
}

template <typename Channel, typename Sum>
void DesaturateRow(uint8_t* row, int32_t width) noexcept {
  for (int32_t column = 0; column < width; ++column, row += 4 * sizeof(Channel)) {
    Channel channels[3];
    std::memcpy(channels, row, sizeof channels);
    const Channel gray = static_cast<Channel>((Sum{channels[0]} + channels[1] + channels[2]) / 3);
    std::fill_n(channels, 3, gray);
    std::memcpy(row, channels, sizeof channels);
  }
}

}  // namespace

HRESULT ZrDibFlip(const BITMAPINFOHEADER* header, void* bits, const RECT* rect, int32_t stride, int32_t horizontal,
                  int32_t vertical) noexcept {
  if (!header) return E_POINTER;
  const RowFunctions* functions = FindRowFunctions(*header);
  if (!functions) return E_NOTIMPL;
  const Area area = AreaOf(*header, bits, rect, stride);
  if (horizontal) {
    for (int32_t row = 0; row < area.height; ++row) functions->mirror(area.Row(row), area.left, area.width);
  }
  if (vertical) {
    for (int32_t low = 0, high = area.height - 1; low < high; ++low, --high) {
      functions->exchange(area.Row(low), area.Row(high), area.left, area.width);
    }
  }
  return S_OK;
}

HRESULT ZrDibSwapRB(const BITMAPINFOHEADER* header, void* bits, const RECT* rect, int32_t stride) noexcept {
  if (!header) return E_POINTER;
  const RowFunctions* functions = FindRowFunctions(*header);
  if (!functions || !functions->swapRedBlue) return E_NOTIMPL;
  const Area area = AreaOf(*header, bits, rect, stride);
  for (int32_t row = 0; row < area.height; ++row) functions->swapRedBlue(area.Row(row), area.left, area.width);
  return S_OK;
}

HRESULT ZrDibDesaturate(void* bits, const RECT* bounds, int32_t stride, const RECT* rect, int32_t bytesPerPixel,
                        uint32_t /*flag*/) noexcept {
  if (bytesPerPixel != 4 && bytesPerPixel != 16) return E_NOTIMPL;
  int32_t width = 0, height = 0;
  uint8_t* first = nullptr;
  const HRESULT result = ZrDibPrepareSet(&width, &height, &first, bits, bounds, stride, rect, bytesPerPixel);
  if (FAILED(result) || width == 0) return result;
  for (int32_t row = 0; row < height; ++row) {
    uint8_t* const at = first + int64_t{row} * stride;
    if (bytesPerPixel == 4) {
      DesaturateRow<uint8_t, int32_t>(at, width);
    } else {
      DesaturateRow<float, float>(at, width);
    }
  }
  return S_OK;
}
