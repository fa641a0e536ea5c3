// SPDX-License-Identifier: Apache-2.0
// The exchange: readers, samplers and writers of every type in the three working forms, and their choice.

#include "pixel/exchange.h"

#include <type_traits>
#include <utility>

#include "pixel/blendops.h"
#include "pixel/descriptor.h"
#include "pixel/exchange_types.h"
#include "pixel/geometry.h"

namespace marlo::pixel {

namespace {

constexpr uint32_t kExchangeMask = 0x7FFF1F0;
constexpr uint32_t kQualityBits = 0x1F0;
/// Bits 4 to 8 of qualities 1 to 4.
constexpr uint32_t kBitsOfQuality[] = {0x180, 0x1C0, 0x1E0, 0x1F0};
constexpr float kFrom28 = 3.7252903e-9f;

using Exchange = tZRDIBXCHGPARAMS;

// ---- Forms -----------------------------------------------------------------------------------------

/// The word form: every type reads and writes it.
struct WordForm {
  using Pixel = tZRPIXEL64;
  static Pixel* Slots(Exchange* exchange) noexcept { return exchange->slots.words; }
  template <int32_t kType>
  static Pixel Read(const uint8_t* at, int32_t bit, const Exchange& exchange) noexcept {
    return PixelType<kType>::Words(at, bit, exchange);
  }
};

struct ByteForm {
  using Pixel = tZRPIXEL32;
  static Pixel* Slots(Exchange* exchange) noexcept { return exchange->slots.bytes; }
  template <int32_t kType>
  static Pixel Read(const uint8_t* at, int32_t, const Exchange& exchange) noexcept {
    return PixelType<kType>::Bytes(at, exchange);
  }
};

struct FloatForm {
  using Pixel = tZRPIXEL128;
  static Pixel* Slots(Exchange* exchange) noexcept { return exchange->slots.floats; }
  template <int32_t kType>
  static Pixel Read(const uint8_t* at, int32_t, const Exchange& exchange) noexcept {
    return PixelType<kType>::Floats(at, exchange);
  }
};

// ---- Weighted sums ---------------------------------------------------------------------------------

/// Four pixels under 14-bit weights that were truncated one by one, so that they may sum to less than one.
template <typename Pixel>
Pixel Weighted(const Pixel (&p)[4], int32_t x, int32_t y) noexcept {
  if constexpr (std::is_same_v<Pixel, tZRPIXEL128>) {
    const auto weight = [](int32_t a, int32_t b) { return static_cast<float>(a) * static_cast<float>(b) * kFrom28; };
    const float w[4] = {weight(kOne - x, kOne - y), weight(x, kOne - y), weight(kOne - x, y), weight(x, y)};
    const auto sum = [&](float Pixel::*c) { return p[0].*c * w[0] + p[1].*c * w[1] + p[2].*c * w[2] + p[3].*c * w[3]; };
    return {sum(&Pixel::b), sum(&Pixel::g), sum(&Pixel::r), sum(&Pixel::a)};
  } else {
    const auto weight = [](int32_t a, int32_t b) { return static_cast<uint32_t>(a * b) >> kFractionBits; };
    const uint32_t w[4] = {weight(kOne - x, kOne - y), weight(x, kOne - y), weight(kOne - x, y), weight(x, y)};
    const auto sum = [&](auto Pixel::*c) {
      const uint32_t total = p[0].*c * w[0] + p[1].*c * w[1] + p[2].*c * w[2] + p[3].*c * w[3];
      return static_cast<std::remove_cvref_t<decltype(p[0].*c)>>(total >> kFractionBits);
    };
    return {sum(&Pixel::b), sum(&Pixel::g), sum(&Pixel::r), sum(&Pixel::a)};
  }
}

template <typename Pixel>
Pixel Weighted(const Pixel (&p)[2], int32_t fraction) noexcept {
  if constexpr (std::is_same_v<Pixel, tZRPIXEL128>) {
    const float to = static_cast<float>(fraction) * (1.0f / 16384.0f);
    const float from = static_cast<float>(kOne - fraction) * (1.0f / 16384.0f);
    const auto sum = [&](float Pixel::*c) { return p[0].*c * from + p[1].*c * to; };
    return {sum(&Pixel::b), sum(&Pixel::g), sum(&Pixel::r), sum(&Pixel::a)};
  } else {
    const uint32_t to = static_cast<uint32_t>(fraction);
    const uint32_t from = static_cast<uint32_t>(kOne - fraction);
    const auto sum = [&](auto Pixel::*c) {
      return static_cast<std::remove_cvref_t<decltype(p[0].*c)>>((p[0].*c * from + p[1].*c * to) >> kFractionBits);
    };
    return {sum(&Pixel::b), sum(&Pixel::g), sum(&Pixel::r), sum(&Pixel::a)};
  }
}

// ---- Readers and writers ---------------------------------------------------------------------------

template <int32_t kBits>
void Advance(int32_t* bit, const uint8_t** at) noexcept {
  if constexpr (kBits % 8 == 0) {
    *at += kBits / 8;
  } else {
    *bit += kBits;
    *at += *bit >> 3;
    *bit &= 7;
  }
}

template <typename Form, int32_t kType>
struct Reader {
  static constexpr int32_t kBits = PixelType<kType>::kBits;

  template <int kPixels>
  static void Read(Exchange* exchange) {
    for (int index = 0; index < kPixels; ++index) {
      Form::Slots(exchange)[index] = Form::template Read<kType>(exchange->readCursor, exchange->readBit, *exchange);
      Advance<kBits>(&exchange->readBit, &exchange->readCursor);
    }
  }

  /// The pixel under the cursor, `right` pixels and `down` rows away.
  static typename Form::Pixel Near(const Exchange& exchange, int32_t right, int32_t down) noexcept {
    const int32_t bit = exchange.readBit + right * kBits;
    const uint8_t* at = exchange.readCursor + (bit >> 3) + int64_t{down} * exchange.readNextRow;
    return Form::template Read<kType>(at, bit & 7, exchange);
  }

  static void Interpolated(Exchange* exchange) {
    // Without the flag the nearest pixel before the position stands for all four.
    if (!(exchange->flags & ZRDIB_INTERPOLATE)) {
      Form::Slots(exchange)[0] = Near(*exchange, 0, 0);
      return;
    }
    const typename Form::Pixel pixels[4] = {Near(*exchange, 0, 0), Near(*exchange, 1, 0), Near(*exchange, 0, 1),
                                            Near(*exchange, 1, 1)};
    Form::Slots(exchange)[0] = Weighted(pixels, exchange->fractionX, exchange->fractionY);
  }

  static void Vertical(Exchange* exchange) {
    if (!(exchange->flags & ZRDIB_INTERPOLATE)) {
      Form::Slots(exchange)[0] = Near(*exchange, 0, 0);
      return;
    }
    const typename Form::Pixel pixels[2] = {Near(*exchange, 0, 0), Near(*exchange, 0, 1)};
    Form::Slots(exchange)[0] = Weighted(pixels, exchange->fractionY);
  }
};

template <typename Form, int32_t kType, int kPixels>
void Write(Exchange* exchange) {
  for (int index = 0; index < kPixels; ++index) {
    PixelType<kType>::Put(exchange->writeCursor, exchange->writeBit, Form::Slots(exchange)[index], *exchange);
    const uint8_t* at = exchange->writeCursor;
    Advance<PixelType<kType>::kBits>(&exchange->writeBit, &at);
    exchange->writeCursor = const_cast<uint8_t*>(at);
  }
}

/// Mean of the whole pixels from ceil(start) to floor(end); a rectangle without one gives the pixel it starts in.
void ReadBox24(Exchange* exchange, int32_t startX, int32_t startY, int32_t endX, int32_t endY) {
  const auto ceiling = [](int32_t position) { return static_cast<int32_t>((int64_t{position} + kFraction) >> 14); };
  int32_t left = ceiling(startX), right = endX >> kFractionBits;
  int32_t top = ceiling(startY), bottom = endY >> kFractionBits;
  if (left >= right) {
    left = startX >> kFractionBits;
    right = left + 1;
  }
  if (top >= bottom) {
    top = startY >> kFractionBits;
    bottom = top + 1;
  }
  uint64_t sums[3] = {};
  for (int32_t row = top; row < bottom; ++row) {
    const uint8_t* at = exchange->readCursor + int64_t{row} * exchange->readNextRow + int64_t{left} * 3;
    for (int32_t column = left; column < right; ++column, at += 3) {
      for (int channel = 0; channel < 3; ++channel) sums[channel] += at[channel];
    }
  }
  const uint64_t count = static_cast<uint64_t>(right - left) * static_cast<uint64_t>(bottom - top);
  exchange->slots.bytes[0] = {static_cast<uint8_t>(sums[0] / count), static_cast<uint8_t>(sums[1] / count),
                              static_cast<uint8_t>(sums[2] / count), 255};
}

// ---- Tables ----------------------------------------------------------------------------------------

struct ReadRow {
  ZRXCHGPIXELFN read, readFour, interpolated, vertical;
};
struct WriteRow {
  ZRXCHGPIXELFN write, writeFour;
};

template <typename Form, int32_t kType>
constexpr ReadRow kReadRow = {Reader<Form, kType>::template Read<1>, Reader<Form, kType>::template Read<4>,
                              Reader<Form, kType>::Interpolated, Reader<Form, kType>::Vertical};
template <typename Form, int32_t kType>
constexpr WriteRow kWriteRow = {Write<Form, kType, 1>, Write<Form, kType, 4>};

constexpr int32_t kTypes = ZRPIXEL_RGBA128F - ZRPIXEL_RGB1 + 1;

/// The rows of one form by type - 16; a form's table is empty where a type hasn't got it.
struct FormTable {
  ReadRow read[kTypes];
  WriteRow write[kTypes];
};

template <typename Form, int32_t kType>
constexpr void AddType(FormTable* table) {
  table->read[kType - ZRPIXEL_RGB1] = kReadRow<Form, kType>;
  table->write[kType - ZRPIXEL_RGB1] = kWriteRow<Form, kType>;
}

template <typename Form, int32_t... kOffsets>
constexpr FormTable MakeTable(std::integer_sequence<int32_t, kOffsets...>) {
  FormTable table = {};
  (AddType<Form, ZRPIXEL_RGB1 + kOffsets>(&table), ...);
  return table;
}

template <typename Form, int32_t... kListed>
constexpr FormTable MakeTableOf() {
  FormTable table = {};
  (AddType<Form, kListed>(&table), ...);
  return table;
}

constexpr FormTable kFormTables[] = {
    MakeTableOf<ByteForm, ZRPIXEL_PAL8, ZRPIXEL_RGB24, ZRPIXEL_RGB32, ZRPIXEL_RGBA32>(),
    MakeTable<WordForm>(std::make_integer_sequence<int32_t, kTypes>()),
    MakeTableOf<FloatForm, ZRPIXEL_RGBA128F>(),
};

bool HasByteForm(int32_t type) noexcept {
  return type == ZRPIXEL_PAL8 || type == ZRPIXEL_RGB24 || type == ZRPIXEL_RGB32 || type == ZRPIXEL_RGBA32;
}
bool IsFloatType(int32_t type) noexcept { return type == ZRPIXEL_GRAY32F || type == ZRPIXEL_RGBA128F; }

int32_t ChooseForm(int32_t dstType, int32_t srcType, uint32_t flags) noexcept {
  if (flags & ZRDIB_WORD_PIXELS) return ZRXCHG_WORDS;
  if (HasByteForm(dstType) && HasByteForm(srcType)) return ZRXCHG_BYTES;
  if (dstType == ZRPIXEL_RGBA128F && srcType == ZRPIXEL_RGBA128F) return ZRXCHG_FLOATS;
  return ZRXCHG_WORDS;
}

}  // namespace

uint32_t ExchangeFlags(uint32_t flags) noexcept {
  const uint32_t quality = QualityOf(flags);
  if (quality >= 1 && quality <= 4) flags = (flags & ~kQualityBits) | kBitsOfQuality[quality - 1];
  return flags & kExchangeMask;
}

int32_t BitsOf(int32_t type) noexcept {
  uint8_t depths[4];
  return ZrGetPixelBitsPerChannel(type, depths);
}

HRESULT MakeDestinationReader(const tZRDIBXCHGPARAMS& exchange, tZRDIBXCHGPARAMS* reader) noexcept {
  const HRESULT result =
      ZrXCHGGetFunctionPointers(exchange.dstType, exchange.dstType, exchange.flags, reader, nullptr, 0.0, 0.0);
  reader->srcPalette = exchange.dstPalette;
  if (HasCurve(exchange.gammaToFloat)) {
    reader->gammaFromFloat = MakeGammaCurve(1.0 / static_cast<double>(exchange.gammaToFloat.gamma));
  }
  return result;
}

}  // namespace marlo::pixel

using namespace marlo::pixel;

HRESULT ZrXCHGGetFunctionPointers(int32_t dstType, int32_t srcType, uint32_t flags, tZRDIBXCHGPARAMS* exchange,
                                  const tZRDIBBLENDOP* blendParams, double dstGamma, double srcGamma) noexcept {
  if (!exchange) return E_POINTER;
  *exchange = {};
  if (!IsExchangeType(dstType) || !IsExchangeType(srcType)) return E_INVALIDARG;
  exchange->flags = ExchangeFlags(flags);
  exchange->srcType = srcType;
  exchange->dstType = dstType;
  exchange->form = ChooseForm(dstType, srcType, exchange->flags);
  if (exchange->form == ZRXCHG_WORDS) exchange->flags |= ZRDIB_WORD_PIXELS;
  exchange->featherWidth = static_cast<uint8_t>((flags & ZRDIB_FEATHER_WIDTH_MASK) >> 16);

  const FormTable& table = kFormTables[exchange->form];
  const ReadRow& read = table.read[srcType - ZRPIXEL_RGB1];
  const WriteRow& write = table.write[dstType - ZRPIXEL_RGB1];
  exchange->read = read.read;
  exchange->readFour = read.readFour;
  exchange->readInterpolated = read.interpolated;
  exchange->readVertical = read.vertical;
  exchange->write = write.write;
  exchange->writeFour = write.writeFour;
  if (exchange->form == ZRXCHG_BYTES && srcType == ZRPIXEL_RGB24) exchange->readBox = ReadBox24;
  if (blendParams) {
    exchange->blendParams = *blendParams;
    exchange->blend = FindBlendOp(blendParams->op, exchange->form);
    exchange->blendFour = FindBlendOpFour(blendParams->op, exchange->form);
    if (!exchange->blend) return E_NOTIMPL;
  }

  const double ratio = GammaRatio(dstGamma, srcGamma);
  if (ChangesGamma(ratio)) {
    if (IsFloatType(srcType)) {
      exchange->gammaFromFloat = MakeGammaCurve(ratio);
    } else if (IsFloatType(dstType)) {
      exchange->gammaToFloat = MakeGammaCurve(ratio);
    }
  }
  return S_OK;
}
