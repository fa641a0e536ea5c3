// SPDX-License-Identifier: Apache-2.0
// The inverse palette: the nearest entry by city-block distance for each cell of a 32x32x32 colour cube.

#include <bit>
#include <cstring>

#include "marlo110k/dib.h"
#include "pixel/descriptor.h"
#include "platform/base/memory.h"

namespace {

constexpr int32_t kCells = 32768;
/// Marks an empty cell, so that palette entry 255 is never found.
constexpr uint8_t kEmpty = 255;
constexpr int32_t kRedStep = 1 << 10;
constexpr int32_t kGreenStep = 1 << 5;
constexpr int32_t kBlueStep = 1;

/// Cells of one generation, walked in cube order: red outermost, blue innermost.
class Generation {
 public:
  void Add(int32_t cell) noexcept { words_[cell >> 6] |= uint64_t{1} << (cell & 63); }
  bool Empty() const noexcept {
    for (uint64_t word : words_) {
      if (word != 0) return false;
    }
    return true;
  }
  template <typename Visit>
  void ForEach(const Visit& visit) const noexcept {
    for (int32_t index = 0; index < kCells / 64; ++index) {
      for (uint64_t word = words_[index]; word != 0; word &= word - 1) visit(index * 64 + std::countr_zero(word));
    }
  }

 private:
  uint64_t words_[kCells / 64] = {};
};

/// Copies a cell's entry to those of its six face neighbours that are still empty.
void Spread(uint8_t* map, int32_t cell, Generation* next) noexcept {
  const uint8_t entry = map[cell];
  const auto claim = [&](bool inside, int32_t neighbour) {
    if (!inside || map[neighbour] != kEmpty) return;
    map[neighbour] = entry;
    next->Add(neighbour);
  };
  const int32_t red = cell >> 10;
  const int32_t green = (cell >> 5) & 31;
  const int32_t blue = cell & 31;
  claim(red > 0, cell - kRedStep);
  claim(green > 0, cell - kGreenStep);
  claim(blue > 0, cell - kBlueStep);
  claim(red < 31, cell + kRedStep);
  claim(green < 31, cell + kGreenStep);
  claim(blue < 31, cell + kBlueStep);
}

}  // namespace

HRESULT ZrDibCreateColorQuantizer(uint8_t** table, const BITMAPINFOHEADER* header) noexcept {
  if (!table || !header) return E_POINTER;
  *table = nullptr;
  const RGBQUAD* palette = marlo::pixel::ColorTable(*header);
  if (!palette) return E_INVALIDARG;
  uint8_t* map = static_cast<uint8_t*>(plat::AllocateZeroed(kCells));
  if (!map) return E_OUTOFMEMORY;
  std::memset(map, kEmpty, kCells);

  Generation current;
  const int32_t entries = header->biClrUsed < kEmpty ? static_cast<int32_t>(header->biClrUsed) : kEmpty;
  for (int32_t index = 0; index < entries; ++index) {
    const RGBQUAD& color = palette[index];
    const int32_t cell = (color.rgbRed >> 3) << 10 | (color.rgbGreen >> 3) << 5 | color.rgbBlue >> 3;
    if (map[cell] != kEmpty) continue;
    map[cell] = static_cast<uint8_t>(index);
    current.Add(cell);
  }
  while (!current.Empty()) {
    Generation next;
    current.ForEach([&](int32_t cell) { Spread(map, cell, &next); });
    current = next;
  }
  *table = map;
  return S_OK;
}

void ZrDibFreeColorQuantizer(uint8_t* table) noexcept { plat::FreeBlock(table); }
