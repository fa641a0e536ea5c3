// SPDX-License-Identifier: Apache-2.0
// Copies between fractional rectangles through the exchange, with partly covered border pixels.

#include "pixel/blendops.h"
#include "pixel/copy_kernels.h"
#include "pixel/coverage.h"
#include "pixel/descriptor.h"
#include "pixel/exchange.h"
#include "pixel/kernel_level.h"
#include "pixel/subpixel_walk.h"
#include "platform/parallel/rows.h"

namespace marlo::pixel {

namespace {

class SubpixelCopy {
 public:
  explicit SubpixelCopy(const tZRDIBSUBPIXELPARAMS& record) noexcept
      : record_(record),
        srcPalette_(*record.srcHeader),
        dstPalette_(*record.dstHeader),
        coverX_(CoverAxis(record.dstClipped.left, record.dstClipped.right)),
        coverY_(CoverAxis(record.dstClipped.top, record.dstClipped.bottom)),
        walkX_(MakeWalk(record.srcFinal.left, record.srcFinal.right, record.stepX, coverX_)),
        walkY_(MakeWalk(record.srcFinal.top, record.srcFinal.bottom, record.stepY, coverY_)) {}

  HRESULT Run() noexcept {
    HRESULT result = ZrXCHGGetFunctionPointers(ZrGetPixelType(record_.dstHeader), ZrGetPixelType(record_.srcHeader),
                                               record_.flags, &exchange_, nullptr, record_.dstGamma, record_.srcGamma);
    if (FAILED(result)) return result;
    exchange_.srcPalette = srcPalette_.entries;
    exchange_.dstPalette = dstPalette_.entries;
    exchange_.quantizer = record_.quantizer;
    result = MakeDestinationReader(exchange_, &reader_);
    if (FAILED(result)) return result;
    srcBits_ = BitsOf(exchange_.srcType);
    dstBits_ = BitsOf(exchange_.dstType);
    blends_ = (record_.flags & ZRDIB_NO_EDGE_BLEND) == 0 && exchange_.form != ZRXCHG_FLOATS;
    plat::ParallelRows(coverY_.Count(), RowsPerThread(coverX_.Count()), [&](int32_t first, int32_t end) {
      tZRDIBXCHGPARAMS exchange = exchange_;
      tZRDIBXCHGPARAMS reader = reader_;
      for (int32_t row = first; row < end; ++row) Row(&exchange, &reader, row);
    });
    return S_OK;
  }

 private:
  void Row(tZRDIBXCHGPARAMS* exchange, tZRDIBXCHGPARAMS* reader, int32_t row) const noexcept {
    uint8_t* const target = record_.dstTop + (int64_t{coverY_.first} + row) * record_.dstTopStride;
    const int64_t firstBit = int64_t{coverX_.first} * dstBits_;
    SetWriteCursor(exchange, target, firstBit);
    SetReadCursor(reader, target, firstBit);

    const int64_t y = walkY_.At(row, coverY_.Count());
    const int32_t line = static_cast<int32_t>(y >> kFractionBits);
    const uint8_t* const source = record_.srcTop + int64_t{line} * record_.srcTopStride;
    exchange->readNextRow = line >= walkY_.last ? 0 : record_.srcTopStride;
    exchange->fractionY = static_cast<int32_t>(y & kFraction);
    for (int32_t column = 0; column < coverX_.Count(); ++column) {
      const int64_t x = walkX_.At(column, coverX_.Count());
      const int64_t pixel = x >> kFractionBits;
      SetReadCursor(exchange, source, pixel * srcBits_);
      exchange->fractionX = static_cast<int32_t>(x & kFraction);
      if (pixel >= walkX_.last) {
        exchange->readVertical(exchange);
      } else {
        exchange->readInterpolated(exchange);
      }
      reader->read(reader);
      const int32_t coverage = ScaledBy(coverX_.At(column), coverY_.At(row));
      if (blends_ && coverage != kOne) Blend(exchange, *reader, coverage);
      exchange->write(exchange);
    }
  }

  static void Blend(tZRDIBXCHGPARAMS* exchange, const tZRDIBXCHGPARAMS& reader, int32_t coverage) noexcept {
    if (exchange->form == ZRXCHG_BYTES) {
      const int32_t weight = (coverage * 255 / kOne) & 255;
      exchange->slots.bytes[0] = Moved(reader.slots.bytes[0], exchange->slots.bytes[0], weight);
    } else {
      const int32_t weight = (coverage * 65535 / kOne) & 65535;
      exchange->slots.words[0] = Moved(reader.slots.words[0], exchange->slots.words[0], weight);
    }
  }

  const tZRDIBSUBPIXELPARAMS& record_;
  FullPalette srcPalette_;
  FullPalette dstPalette_;
  CoverageAxis coverX_;
  CoverageAxis coverY_;
  Walk walkX_;
  Walk walkY_;
  tZRDIBXCHGPARAMS exchange_ = {};
  tZRDIBXCHGPARAMS reader_ = {};
  int32_t srcBits_ = 0;
  int32_t dstBits_ = 0;
  bool blends_ = false;
};

}  // namespace

HRESULT CopySubpixel(const tZRDIBSUBPIXELPARAMS& record) noexcept { return SubpixelCopy(record).Run(); }

}  // namespace marlo::pixel
