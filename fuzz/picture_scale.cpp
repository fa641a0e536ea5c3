// SPDX-License-Identifier: Apache-2.0
// Scalers and samplers stay inside their pictures for any rectangles, and vector members give the plain bits.
#include "marlo110k/dib_scale.h"
#include "picture_input.h"
#include "platform/base/cpu.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  fuzzing::Numbers numbers(data, bytes);
  const uint8_t shape = numbers.Byte();
  const bool isFloat = (shape & 1) != 0;
  const int32_t type = isFloat ? 32 : 29;
  const int32_t pixelBytes = isFloat ? 16 : 4;
  const SIZE srcSize = {numbers.Small(1, 90), numbers.Small(1, 90)};
  const SIZE dstSize = {numbers.Small(1, 60), numbers.Small(1, 60)};
  const uint32_t seed = static_cast<uint32_t>(numbers.Int());
  fuzzing::Picture src(type, srcSize.cx, srcSize.cy, 0, 0, seed);
  if (isFloat) {
    // NaN differs from itself; everything else must come out the same.
    float* const values = reinterpret_cast<float*>(src.bits());
    for (int32_t index = 0; index < srcSize.cx * srcSize.cy * 4; ++index) {
      values[index] = static_cast<float>(src.bits()[index * 4]) / 255.0f;
    }
  }
  const bool whole = (shape & 2) != 0;
  const RECT dstRect = numbers.Rect(whole ? 1 : 16384);
  const RECT srcRect = numbers.Rect(whole ? 1 : 16384);
  const bool cubic = (shape & 4) != 0;
  const auto scaler = whole ? (cubic ? ZrDibScale_BiCubic : ZrDibScale_Bilinear)
                            : (cubic ? ZrDibScale_BiCubicSubPixel : ZrDibScale_BilinearSubPixel);
  std::vector<uint8_t> results[2];
  for (int pass = 0; pass < 2; ++pass) {
    plat::SetVectorLevelLimit(pass ? plat::VectorLevel::kAvx512 : plat::VectorLevel::kPlain);
    fuzzing::Picture dst(type, dstSize.cx, dstSize.cy, 0, 0, 3);
    if (isFloat) std::memset(dst.bits(), 0, static_cast<size_t>(dst.stride()) * static_cast<size_t>(dstSize.cy));
    scaler(dst.bits(), &dstSize, dst.stride(), shape & 8 ? &dstRect : nullptr, src.bits(), &srcSize, src.stride(),
           shape & 16 ? &srcRect : nullptr, pixelBytes, shape & 32, shape & 64);
    ZrDibCopyBiCubic(dst.bits(), &dstSize, dst.stride(), shape & 128 ? &dstRect : nullptr, src.bits(), &srcSize,
                     src.stride(), &srcRect, pixelBytes);
    results[pass].assign(dst.bits(), dst.bits() + static_cast<size_t>(dst.stride()) * static_cast<size_t>(dstSize.cy));
  }
  if (results[0] != results[1]) std::abort();

  tZRPIXEL128 floatSample;
  tZRPIXEL32 sample;
  if (isFloat) {
    ZrGetSubPixel128Safe(&floatSample, src.bits(), srcSize.cx, srcSize.cy, src.stride(), dstRect.left, dstRect.top);
  } else {
    ZrGetSubPixel32Safe(&sample, src.bits(), srcSize.cx, srcSize.cy, src.stride(), dstRect.left, dstRect.top);
  }
  return 0;
}
