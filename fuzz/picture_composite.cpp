// SPDX-License-Identifier: Apache-2.0
// Composites, blends and fades stay inside their pictures for any rectangles, and vector members give the plain bits.
#include "marlo110k/dib_alpha.h"
#include "marlo110k/dib_blend.h"
#include "marlo110k/dib_composite.h"
#include "marlo110k/dib_fields.h"
#include "marlo110k/dib_key.h"
#include "picture_input.h"
#include "platform/base/cpu.h"

namespace {

struct Request {
  uint8_t shape;
  int32_t type;
  SIZE dstSize, srcSize;
  RECT dstRect, srcRect;
  tZRDIBCOMPOSITEPARAMS composite;
  tZRDIBBLENDPARAMS blend;
  double color[4];
  uint32_t flags;
};

void Perform(const Request& request, fuzzing::Picture& dst, fuzzing::Picture& src) {
  const RECT* const dstRect = request.shape & 8 ? &request.dstRect : nullptr;
  const RECT* const srcRect = request.shape & 16 ? &request.srcRect : nullptr;
  const RECT dstBounds{0, 0, request.dstSize.cx, request.dstSize.cy};
  const RECT srcBounds{0, 0, request.srcSize.cx, request.srcSize.cy};
  const int32_t bytes = request.type == 32 ? 16 : 4;
  ZrDibComposite(dst.header(), dst.bits(), dstRect, 0, src.header(), src.bits(), srcRect, 0, &request.composite,
                 request.flags);
  switch (request.shape >> 5) {
    case 0:
      ZrDibOver(dst.bits(), &dstBounds, dst.stride(), dstRect, src.bits(), &srcBounds, src.stride(), srcRect, bytes,
                request.color);
      break;
    case 1:
      ZrDibWeightedCrossFade(dst.bits(), &dstBounds, dst.stride(), dstRect, request.color[0], src.bits(), &srcBounds,
                             src.stride(), srcRect, request.color[1], bytes);
      break;
    case 2:
      ZrDibFadeToColor(dst.header(), dst.bits(), dstRect, 0, request.color, request.color[2], 0, request.flags);
      break;
    case 3:
      ZrDibFieldBlend(dst.bits(), &dstBounds, dst.stride(), dstRect, src.bits(), &srcBounds, src.stride(), srcRect,
                      bytes);
      break;
    case 4:
      ZrDibInterlaceFilter(dst.bits(), dstBounds.right, dstBounds.bottom, dst.stride(), dstRect, 0, bytes);
      ZrDibCopyInterlace(dst.header(), dst.bits(), dstRect, 0, src.header(), src.bits(), srcRect, 0, 1, 0);
      break;
    case 5:
      ZrDibPrepAlpha(dst.bits(), dstBounds.right, dstBounds.bottom, dst.stride(), dstRect, 2, request.color, bytes,
                     request.color[0], request.color[1]);
      break;
    case 6:
      ZrDibPremultiply(dst.bits(), &dstBounds, dst.stride(), dstRect, bytes);
      break;
    default:
      ZrDibBlend(dst.header(), dst.bits(), dstRect, 0, src.header(), src.bits(), srcRect, 0, &request.blend,
                 request.flags);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  fuzzing::Numbers numbers(data, bytes);
  Request request{};
  request.shape = numbers.Byte();
  request.type = request.shape & 1 ? 32 : 29;
  request.srcSize = {numbers.Small(1, 90), numbers.Small(1, 90)};
  request.dstSize = {numbers.Small(1, 60), numbers.Small(1, 60)};
  const auto seed = static_cast<uint32_t>(numbers.Int());
  const int32_t unit = request.shape & 2 ? 1 : 16384;
  request.flags = (unit == 1 ? 0 : uint32_t{ZRDIB_SUBPIXEL}) | (request.shape & 4 ? 3u : 0u);
  request.dstRect = numbers.Rect(unit);
  request.srcRect = numbers.Rect(unit);
  request.composite.mode = numbers.Small(0, 14) - 1;
  request.composite.opacity = static_cast<float>(numbers.Byte()) / 128.0f;
  for (double& channel : request.color) channel = numbers.Small(-10, 100) / 64.0;
  request.blend.op = numbers.Small(-1, 20);
  request.blend.weight = static_cast<float>(numbers.Byte()) / 200.0f;
  request.blend.twoStage = numbers.Byte() & 1;
  request.blend.maskOp = numbers.Byte() % 5u;
  request.blend.matteAction = numbers.Byte() & 1;
  request.blend.output = numbers.Byte() & 1;
  request.blend.blurRadius = numbers.Small(0, 250) / 2.0;

  fuzzing::Picture src(request.type, request.srcSize.cx, request.srcSize.cy, 0, 0, seed);
  if (request.type == 32) {
    // NaN differs from itself; everything else must come out the same.
    float* const values = reinterpret_cast<float*>(src.bits());
    for (int32_t index = 0; index < request.srcSize.cx * request.srcSize.cy * 4; ++index) {
      values[index] = static_cast<float>(src.bits()[index * 4]) / 255.0f;
    }
  }
  std::vector<uint8_t> results[2];
  for (int pass = 0; pass < 2; ++pass) {
    plat::SetVectorLevelLimit(pass ? plat::VectorLevel::kAvx512 : plat::VectorLevel::kPlain);
    fuzzing::Picture dst(request.type, request.dstSize.cx, request.dstSize.cy, 0, 0, 3);
    const size_t size = static_cast<size_t>(dst.stride()) * static_cast<size_t>(request.dstSize.cy);
    if (request.type == 32) std::memset(dst.bits(), 0, size);
    Perform(request, dst, src);
    results[pass].assign(dst.bits(), dst.bits() + size);
  }
  if (results[0] != results[1]) std::abort();
  return 0;
}
