// SPDX-License-Identifier: Apache-2.0
// Copies through the exchange in whole pixels: straight, scaled, feathered, blended.

#include "pixel/blendops.h"
#include "pixel/copy_kernels.h"
#include "pixel/descriptor.h"
#include "pixel/exchange.h"
#include "pixel/feather.h"
#include "pixel/geometry.h"
#include "pixel/kernel_level.h"
#include "platform/parallel/rows.h"

namespace marlo::pixel {

namespace {

constexpr uint32_t kFeatherFlags =
    ZRDIB_FEATHER_FIRST_ROWS | ZRDIB_FEATHER_LAST_ROWS | ZRDIB_FEATHER_LEFT | ZRDIB_FEATHER_RIGHT;

/// One copy or blend. The exchange records here are models: each block of rows works on copies of them.
class ExchangeCopy {
 public:
  /// @param blend null for a plain copy.
  ExchangeCopy(const tZRDIBGENERICPARAMS& record, const ExchangeBlend* blend) noexcept
      : record_(record),
        blend_(blend),
        feather_(record),
        srcPalette_(*record.srcHeader),
        dstPalette_(*record.dstHeader),
        stepX_(record.srcStepX),
        stepY_(record.srcStepY) {
    if (record.scaled && QualityOf(record.flags) < 3) {
      stepX_ = (int64_t{record.srcWidth} << kFractionBits) / record.dstWidth;
      stepY_ = (int64_t{record.srcHeight} << kFractionBits) / record.dstHeight;
    }
  }

  HRESULT Run() noexcept {
    const HRESULT result =
        ZrXCHGGetFunctionPointers(ZrGetPixelType(record_.dstHeader), ZrGetPixelType(record_.srcHeader), record_.flags,
                                  &exchange_, blend_ ? &blend_->op : nullptr, record_.dstGamma, record_.srcGamma);
    if (FAILED(result)) return result;
    exchange_.srcPalette = srcPalette_.entries;
    exchange_.dstPalette = dstPalette_.entries;
    exchange_.quantizer = record_.quantizer;
    srcBits_ = BitsOf(exchange_.srcType);
    const bool feathered = !blend_ && (record_.flags & kFeatherFlags) != 0 && !feather_.IsEmpty();
    if (feathered || blend_) {
      const HRESULT readerResult = MakeDestinationReader(exchange_, &reader_);
      if (FAILED(readerResult)) return readerResult;
    }
    plat::ParallelRows(record_.dstHeight, RowsPerThread(record_.dstWidth), [&](int32_t first, int32_t end) {
      tZRDIBXCHGPARAMS exchange = exchange_;
      tZRDIBXCHGPARAMS reader = reader_;
      for (int32_t row = first; row < end; ++row) {
        SetWriteCursor(&exchange, record_.dstFirst + int64_t{row} * record_.dstStride, record_.dstBitOffset);
        if (blend_) {
          SetReadCursor(&reader, record_.dstFirst + int64_t{row} * record_.dstStride, record_.dstBitOffset);
          BlendedRow(&exchange, &reader, row);
        } else if (feathered) {
          SetReadCursor(&reader, record_.dstFirst + int64_t{row} * record_.dstStride, record_.dstBitOffset);
          FeatheredRow(&exchange, &reader, row);
        } else if (record_.scaled) {
          for (int32_t column = 0; column < record_.dstWidth; ++column) {
            Sample(&exchange, row, column);
            exchange.write(&exchange);
          }
        } else {
          StraightRow(&exchange, row);
        }
      }
    });
    return S_OK;
  }

 private:
  const uint8_t* SourceRow(int32_t line) const noexcept { return record_.srcFirst + int64_t{line} * record_.srcStride; }

  void StraightRow(tZRDIBXCHGPARAMS* exchange, int32_t row) const noexcept {
    SetReadCursor(exchange, SourceRow(row), record_.srcBitOffset);
    int32_t column = 0;
    for (; column + 4 <= record_.dstWidth; column += 4) {
      exchange->readFour(exchange);
      exchange->writeFour(exchange);
    }
    for (; column < record_.dstWidth; ++column) {
      exchange->read(exchange);
      exchange->write(exchange);
    }
  }

  /// The source pixel of a destination pixel into slot 0. The last column and the last row are the source's last,
  /// whatever the steps come to.
  void Sample(tZRDIBXCHGPARAMS* exchange, int32_t row, int32_t column) const noexcept {
    const int64_t y = row * stepY_;
    const int64_t x = column * stepX_;
    const int32_t lastLine = record_.srcHeight - 1;
    const int32_t lastColumn = record_.srcWidth - 1;
    const bool atLastLine = row == record_.dstHeight - 1 || (y >> kFractionBits) >= lastLine;
    const bool atLastColumn = column == record_.dstWidth - 1 || (x >> kFractionBits) >= lastColumn;
    const int32_t line = atLastLine ? lastLine : static_cast<int32_t>(y >> kFractionBits);
    const int64_t pixel = atLastColumn ? lastColumn : x >> kFractionBits;
    SetReadCursor(exchange, SourceRow(line), record_.srcBitOffset + pixel * srcBits_);
    exchange->readNextRow = atLastLine ? 0 : record_.srcStride;
    exchange->fractionX = static_cast<int32_t>(x & kFraction);
    exchange->fractionY = atLastLine ? 0 : static_cast<int32_t>(y & kFraction);
    if (atLastColumn) {
      exchange->readVertical(exchange);
    } else {
      exchange->readInterpolated(exchange);
    }
  }

  void FeatheredRow(tZRDIBXCHGPARAMS* exchange, tZRDIBXCHGPARAMS* reader, int32_t row) const noexcept {
    SetReadCursor(exchange, SourceRow(row), record_.srcBitOffset);
    for (int32_t column = 0; column < record_.dstWidth; ++column) {
      if (record_.scaled) {
        Sample(exchange, row, column);
      } else {
        exchange->read(exchange);
      }
      reader->read(reader);
      if (const int32_t weight = feather_.WeightAt(row, column); weight > 0) {
        tZRXCHGSLOTS& slots = exchange->slots;
        if (exchange->form == ZRXCHG_BYTES) {
          slots.bytes[0] = Feather::Mix(slots.bytes[0], reader->slots.bytes[0], weight);
        } else if (exchange->form == ZRXCHG_WORDS) {
          slots.words[0] = Feather::Mix(slots.words[0], reader->slots.words[0], weight);
        } else {
          slots.floats[0] = Feather::Mix(slots.floats[0], reader->slots.floats[0], weight);
        }
      }
      exchange->write(exchange);
    }
  }

  void BlendedRow(tZRDIBXCHGPARAMS* exchange, tZRDIBXCHGPARAMS* reader, int32_t row) const noexcept {
    SetReadCursor(exchange, SourceRow(row), record_.srcBitOffset);
    const uint16_t* const mask = blend_->mask ? blend_->mask + int64_t{row} * record_.dstWidth : nullptr;
    for (int32_t column = 0; column < record_.dstWidth; ++column) {
      if (record_.scaled) {
        Sample(exchange, row, column);
      } else {
        exchange->read(exchange);
      }
      if (blend_->onSource) {
        reader->slots = exchange->slots;
      } else {
        reader->read(reader);
      }
      if (!mask) {
        exchange->blend(exchange, &reader->slots, &exchange->slots);
      } else {
        BlendThroughMask(exchange, &reader->slots, mask[column]);
      }
      exchange->slots = reader->slots;
      exchange->write(exchange);
    }
  }

  void BlendThroughMask(tZRDIBXCHGPARAMS* exchange, tZRXCHGSLOTS* destination, uint16_t mask) const noexcept {
    tZRXCHGSLOTS& source = exchange->slots;
    const bool asWeight = blend_->op.op == kMoveByWeight;
    if (exchange->form == ZRXCHG_BYTES) {
      source.bytes[0].a = asWeight ? source.bytes[0].a : static_cast<uint8_t>(mask >> 8);
      if (asWeight) destination->bytes[0] = Moved(destination->bytes[0], source.bytes[0], mask >> 8);
    } else if (exchange->form == ZRXCHG_WORDS) {
      source.words[0].a = asWeight ? source.words[0].a : mask;
      if (asWeight) destination->words[0] = Moved(destination->words[0], source.words[0], mask);
    } else if (asWeight) {
      const float weight = static_cast<float>(mask) * (1.0f / 65535.0f);
      destination->floats[0] = Moved(destination->floats[0], source.floats[0], weight);
    }
    if (!asWeight) exchange->blend(exchange, destination, &source);
  }

  const tZRDIBGENERICPARAMS& record_;
  const ExchangeBlend* const blend_;
  Feather feather_;
  FullPalette srcPalette_;
  FullPalette dstPalette_;
  int64_t stepX_;
  int64_t stepY_;
  tZRDIBXCHGPARAMS exchange_ = {};
  tZRDIBXCHGPARAMS reader_ = {};
  int32_t srcBits_ = 0;
};

}  // namespace

HRESULT CopyThroughExchange(const tZRDIBGENERICPARAMS& record) noexcept { return ExchangeCopy(record, nullptr).Run(); }

HRESULT BlendThroughExchange(const tZRDIBGENERICPARAMS& record, const ExchangeBlend& blend) noexcept {
  return ExchangeCopy(record, &blend).Run();
}

}  // namespace marlo::pixel
