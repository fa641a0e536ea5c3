// SPDX-License-Identifier: Apache-2.0
// The scalers' entries: preparing the rectangles and choosing filters by the steps.

#include <cstring>

#include "marlo110k/dib_scale.h"
#include "pixel/geometry.h"
#include "pixel/kernel_level.h"
#include "pixel/scale_job.h"
#include "platform/parallel/rows.h"

using namespace marlo::pixel;

namespace {

constexpr int32_t kHalf = kOne / 2;

/// The arguments that all entries share.
struct Request {
  void* dstBits;
  const SIZE* dstSize;
  int32_t dstStride;
  const RECT* dstRect;
  const void* srcBits;
  const SIZE* srcSize;
  int32_t srcStride;
  const RECT* srcRect;
  int32_t pixelBytes;

  HRESULT Check() const noexcept {
    if (!dstBits || !dstSize || !srcBits || !srcSize) return E_POINTER;
    return pixelBytes == 4 || pixelBytes == 16 ? S_OK : E_NOTIMPL;
  }
  int32_t Prepare(tZRDIBSUBPIXELPARAMS* record, const RECT* dst, const RECT* src) const noexcept {
    return ZrPrepareSubpixelParam(record, dstBits, dstSize, dstStride, dst, srcBits, srcSize, srcStride, src);
  }
};

/// Readable pixels of an axis: the clipped source rectangle, with pixels it only touches.
void SetReadable(Grid* grid, int32_t clippedStart, int32_t clippedEnd) noexcept {
  grid->srcFirst = clippedStart >> kFractionBits;
  grid->srcLast = static_cast<int32_t>((int64_t{clippedEnd} + kFraction) >> kFractionBits) - 1;
}

Grid MakeGrid(Filter filter, const CoverageAxis& cover, int32_t finalStart, int32_t step, int32_t clippedStart,
              int32_t clippedEnd) noexcept {
  Grid grid = {};
  grid.filter = filter;
  grid.count = cover.Count();
  // Samples sit half a step in and reach half a pixel around; boxes begin where the source does.
  grid.start = filter == Filter::kBox ? finalStart : int64_t{finalStart} + step / 2 + kHalf;
  grid.step = step;
  grid.firstCoverage = cover.firstCoverage;
  SetReadable(&grid, clippedStart, clippedEnd);
  return grid;
}

HRESULT ScalePrepared(const tZRDIBSUBPIXELPARAMS& record, int32_t pixelBytes, Filter filter, bool area,
                      bool noEdgeBlend) noexcept {
  const bool boxX = area && record.stepX > kOne;
  const bool boxY = area && record.stepY > kOne;
  ScaleJob job = {};
  job.pixelBytes = pixelBytes;
  job.dstTop = record.dstTop;
  job.dstStride = record.dstTopStride;
  job.srcTop = record.srcTop;
  job.srcStride = record.srcTopStride;
  job.coverX = CoverAxis(record.dstClipped.left, record.dstClipped.right);
  job.coverY = CoverAxis(record.dstClipped.top, record.dstClipped.bottom);
  job.gridX = MakeGrid(boxX ? Filter::kBox : filter, job.coverX, record.srcFinal.left, record.stepX,
                       record.srcClipped.left, record.srcClipped.right);
  job.gridY = MakeGrid(boxY ? Filter::kBox : filter, job.coverY, record.srcFinal.top, record.stepY,
                       record.srcClipped.top, record.srcClipped.bottom);
  job.blendEdges = !noEdgeBlend;
  return RunScaleJob(job);
}

HRESULT ScaleSubPixel(const Request& request, Filter filter, int32_t area, int32_t noEdgeBlend) noexcept {
  const HRESULT result = request.Check();
  if (FAILED(result)) return result;
  tZRDIBSUBPIXELPARAMS record;
  if (!request.Prepare(&record, request.dstRect, request.srcRect)) return S_OK;
  return ScalePrepared(record, request.pixelBytes, filter, area != 0, noEdgeBlend != 0);
}

bool FitsSubpixels(const RECT* rect) noexcept {
  const auto fits = [](int32_t value) { return value >= -kWidestSubpixel && value <= kWidestSubpixel; };
  return !rect || (fits(rect->left) && fits(rect->top) && fits(rect->right) && fits(rect->bottom));
}

void CopyRows(const tZRDIBSUBPIXELPARAMS& record, int32_t pixelBytes) noexcept {
  const RECT dst = ToPixels(record.dstClipped);
  const RECT src = ToPixels(record.srcFinal);
  const int64_t rowBytes = Width(dst) * pixelBytes;
  plat::ParallelRows(Saturate(Height(dst)), RowsPerThread(Saturate(Width(dst))), [&](int32_t first, int32_t end) {
    for (int32_t row = first; row < end; ++row) {
      std::memcpy(record.dstTop + (int64_t{dst.top} + row) * record.dstTopStride + int64_t{dst.left} * pixelBytes,
                  record.srcTop + (int64_t{src.top} + row) * record.srcTopStride + int64_t{src.left} * pixelBytes,
                  static_cast<size_t>(rowBytes));
    }
  });
}

HRESULT ScaleWhole(const Request& request, Filter filter, int32_t area, int32_t noEdgeBlend) noexcept {
  const HRESULT result = request.Check();
  if (FAILED(result)) return result;
  if (!FitsSubpixels(request.dstRect) || !FitsSubpixels(request.srcRect)) return E_INVALIDARG;
  const RECT dst = request.dstRect ? ToSubpixels(*request.dstRect) : RECT{};
  const RECT src = request.srcRect ? ToSubpixels(*request.srcRect) : RECT{};
  tZRDIBSUBPIXELPARAMS record;
  if (!request.Prepare(&record, request.dstRect ? &dst : nullptr, request.srcRect ? &src : nullptr)) return S_OK;
  if (record.stepX == kOne && record.stepY == kOne) {
    CopyRows(record, request.pixelBytes);
    return S_OK;
  }
  return ScalePrepared(record, request.pixelBytes, filter, area != 0, noEdgeBlend != 0);
}

/// An axis of the whole-pixel copy: positions start at half a pixel.
void SetCopyAxis(Grid* grid, CoverageAxis* cover, int32_t dstStart, int64_t dstSize, int32_t srcStart,
                 int64_t srcSize) noexcept {
  *cover = {dstStart, Saturate(dstStart + dstSize), kOne, kOne};
  grid->filter = Filter::kCubic;
  grid->fineTable = true;
  grid->count = cover->Count();
  grid->start = int64_t{srcStart} * kOne + kHalf;
  grid->step = static_cast<int32_t>((srcSize << kFractionBits) / dstSize);
  grid->firstCoverage = kOne;
  grid->srcFirst = srcStart;
  grid->srcLast = Saturate(srcStart + srcSize - 1);
}

}  // namespace

HRESULT ZrDibScale_Bilinear(void* dstBits, const SIZE* dstSize, int32_t dstStride, const RECT* dstRect,
                            const void* srcBits, const SIZE* srcSize, int32_t srcStride, const RECT* srcRect,
                            int32_t pixelBytes, int32_t area, int32_t noEdgeBlend) noexcept {
  const Request request = {dstBits, dstSize, dstStride, dstRect, srcBits, srcSize, srcStride, srcRect, pixelBytes};
  return ScaleWhole(request, Filter::kLinear, area, noEdgeBlend);
}

HRESULT ZrDibScale_BiCubic(void* dstBits, const SIZE* dstSize, int32_t dstStride, const RECT* dstRect,
                           const void* srcBits, const SIZE* srcSize, int32_t srcStride, const RECT* srcRect,
                           int32_t pixelBytes, int32_t area, int32_t noEdgeBlend) noexcept {
  const Request request = {dstBits, dstSize, dstStride, dstRect, srcBits, srcSize, srcStride, srcRect, pixelBytes};
  return ScaleWhole(request, Filter::kCubic, area, noEdgeBlend);
}

HRESULT ZrDibScale_BilinearSubPixel(void* dstBits, const SIZE* dstSize, int32_t dstStride, const RECT* dstRect,
                                    const void* srcBits, const SIZE* srcSize, int32_t srcStride, const RECT* srcRect,
                                    int32_t pixelBytes, int32_t area, int32_t noEdgeBlend) noexcept {
  const Request request = {dstBits, dstSize, dstStride, dstRect, srcBits, srcSize, srcStride, srcRect, pixelBytes};
  return ScaleSubPixel(request, Filter::kLinear, area, noEdgeBlend);
}

HRESULT ZrDibScale_BiCubicSubPixel(void* dstBits, const SIZE* dstSize, int32_t dstStride, const RECT* dstRect,
                                   const void* srcBits, const SIZE* srcSize, int32_t srcStride, const RECT* srcRect,
                                   int32_t pixelBytes, int32_t area, int32_t noEdgeBlend) noexcept {
  const Request request = {dstBits, dstSize, dstStride, dstRect, srcBits, srcSize, srcStride, srcRect, pixelBytes};
  return ScaleSubPixel(request, Filter::kCubic, area, noEdgeBlend);
}

HRESULT ZrDibCopyBiCubic(void* dstBits, const SIZE* dstSize, int32_t dstStride, const RECT* dstRect,
                         const void* srcBits, const SIZE* srcSize, int32_t srcStride, const RECT* srcRect,
                         int32_t pixelBytes) noexcept {
  const Request request = {dstBits, dstSize, dstStride, dstRect, srcBits, srcSize, srcStride, srcRect, pixelBytes};
  const HRESULT result = request.Check();
  if (FAILED(result)) return result;
  if (!dstRect || !srcRect) return E_INVALIDARG;
  const RECT dst = Intersection(*dstRect, {0, 0, dstSize->cx, dstSize->cy});
  const RECT src = Intersection(*srcRect, {0, 0, srcSize->cx, srcSize->cy});
  if (!HasArea(dst) || !HasArea(src)) return S_OK;
  if (!FitsSubpixels(&dst) || !FitsSubpixels(&src)) return E_INVALIDARG;
  ScaleJob job = {};
  job.pixelBytes = pixelBytes;
  job.dstTop = static_cast<uint8_t*>(dstBits);
  job.dstStride = dstStride;
  job.srcTop = static_cast<const uint8_t*>(srcBits);
  job.srcStride = srcStride;
  SetCopyAxis(&job.gridX, &job.coverX, dst.left, Width(dst), src.left, Width(src));
  SetCopyAxis(&job.gridY, &job.coverY, dst.top, Height(dst), src.top, Height(src));
  job.clampFloats = true;
  return RunScaleJob(job);
}
