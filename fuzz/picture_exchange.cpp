// SPDX-License-Identifier: Apache-2.0
// Copies, fills, flips and pixels of any type pair, rectangle and flags stay inside their pictures.
#include "marlo110k/dib_copy.h"
#include "picture_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  fuzzing::Numbers numbers(data, bytes);
  const int32_t srcType = numbers.Small(16, 32);
  const int32_t dstType = numbers.Small(16, 32);
  const int32_t extra = 4 * numbers.Small(0, 3);
  fuzzing::Picture src(srcType, numbers.Small(1, 70), numbers.Small(1, 40), extra, numbers.Small(0, 255), 1);
  fuzzing::Picture dst(dstType, numbers.Small(1, 70), numbers.Small(1, 40), extra, numbers.Small(0, 255), 2);
  const uint32_t flags = static_cast<uint32_t>(numbers.Int());
  const int32_t unit = flags & ZRDIB_SUBPIXEL ? 16384 : 1;
  const RECT dstRect = numbers.Rect(unit);
  const RECT srcRect = numbers.Rect(unit);
  const uint8_t shape = numbers.Byte();
  const double dstGamma = numbers.Small(0, 8) * 0.5;
  const double srcGamma = numbers.Small(0, 8) * 0.5;
  ZrDibCopy(dst.header(), dst.bits(), shape & 1 ? &dstRect : nullptr, dst.stride(), src.header(), src.bits(),
            shape & 2 ? &srcRect : nullptr, src.stride(), flags, dstGamma, srcGamma);

  const RECT area = numbers.Rect(1);
  ZrDibFlip(dst.header(), dst.bits(), &area, dst.stride(), shape & 4, shape & 8);
  ZrDibSwapRB(dst.header(), dst.bits(), &area, dst.stride());
  ZrDibSet(dst.header(), dst.bits(), &area, dst.stride(), 0.25f, 2.0f, -1.0f, 0.5f, flags);
  tZRPIXEL64 pixel = {};
  ZrDibGetPixel(src.header(), src.bits(), src.stride(), area.left, area.top, &pixel);
  ZrDibSetPixel(dst.header(), dst.bits(), dst.stride(), area.left, area.top, &pixel);
  ZrDibLinearize_ZRRGBAFLOAT_From_RGBA(dst.header(), dst.bits(), shape & 1 ? &dstRect : nullptr, dst.stride(),
                                       src.header(), src.bits(), &srcRect, src.stride(), shape % 7, dstGamma);
  ZrDibApplyTransferFunc_ZRRGBAFLOAT(dst.header(), dst.bits(), &area, dst.stride(), shape % 7, srcGamma, shape & 16);
  return 0;
}
