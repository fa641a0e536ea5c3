// SPDX-License-Identifier: Apache-2.0
// Planar 4:2:0 and 4:2:2 to 4-byte pixels, whole and reduced.

#include <cstdlib>

#include "pixel/yuv_layout.h"
#include "pixel/yuv_rows.h"

namespace marlo::pixel {

namespace {

constexpr int32_t kPixelBytes = 4;

struct Plane {
  const uint8_t* first;
  int64_t stride;
  const uint8_t* Row(int64_t row) const noexcept { return first + row * stride; }
  /// Every second row from `field` on.
  Plane Field(int32_t field) const noexcept { return {Row(field), stride * 2}; }
};

/// The parameters all functions of the family share.
struct Job {
  int32_t width, height;
  uint8_t* dst;
  int64_t dstStride;
  Plane y, u, v;

  uint8_t* Row(int64_t row) const noexcept { return dst + row * dstStride; }
  Job Field(int32_t field) const noexcept {
    return {width, height / 2, dst, dstStride, y.Field(field), u.Field(field), v.Field(field)};
  }

  HRESULT Check(int32_t columnsPerPixel, int32_t widthUnit, int32_t heightUnit) const noexcept {
    if (!dst || !y.first || !u.first || !v.first) return E_POINTER;
    if (width <= 0 || height <= 0 || width % widthUnit != 0 || height % heightUnit != 0) return E_INVALIDARG;
    const bool rowsFit = std::abs(dstStride) >= int64_t{width} / columnsPerPixel * kPixelBytes &&
                         std::abs(y.stride) >= width && std::abs(u.stride) >= width / 2 &&
                         std::abs(v.stride) >= width / 2;
    return rowsFit ? S_OK : E_INVALIDARG;
  }
};

Job MakeJob(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y, int32_t yStride, const void* u,
            int32_t uStride, const void* v, int32_t vStride) noexcept {
  return {width,
          height,
          static_cast<uint8_t*>(dst),
          dstStride,
          {static_cast<const uint8_t*>(y), yStride},
          {static_cast<const uint8_t*>(u), uStride},
          {static_cast<const uint8_t*>(v), vStride}};
}

/// A reduced pixel is the mean of kColumns x kRows luma samples and of the kChromaColumns x kChromaRows chroma
/// samples beside them. Sums stay whole: chroma is brought to the scale of the luma sum by a shorter shift, and
/// the total is divided once.
template <int kColumns, int kRows, int kChromaColumns, int kChromaRows>
struct Reduction {
  static constexpr int kLog2(int count) noexcept { return count <= 1 ? 0 : 1 + kLog2(count / 2); }
  static constexpr int kChromaCount = kChromaColumns * kChromaRows;
  static constexpr int kLumaShift = kLog2(kColumns * kRows);
  static constexpr int kChromaShift = 14 - kLumaShift + kLog2(kChromaCount);

  static int32_t Sum(const Plane& plane, const int64_t* rows, int count, int64_t column, int columns) noexcept {
    int32_t sum = 0;
    for (int row = 0; row < count; ++row) {
      for (int at = 0; at < columns; ++at) sum += plane.Row(rows[row])[column + at];
    }
    return sum;
  }

  static void Row(uint8_t* pixels, const Job& job, int64_t lumaRow, const int64_t* chromaRows,
                  const DecodeMatrix& matrix) noexcept {
    constexpr int32_t kOffset = kChromaCount * 8192;
    int64_t lumaRows[kRows];
    for (int row = 0; row < kRows; ++row) lumaRows[row] = lumaRow + row;
    for (int64_t x = 0; x < job.width / kColumns; ++x, pixels += kPixelBytes) {
      const int32_t luma = Sum(job.y, lumaRows, kRows, x * kColumns, kColumns);
      const int32_t u = Sum(job.u, chromaRows, kChromaRows, x * kChromaColumns, kChromaColumns) - 128 * kChromaCount;
      const int32_t v = Sum(job.v, chromaRows, kChromaRows, x * kChromaColumns, kChromaColumns) - 128 * kChromaCount;
      const int32_t blue = (u * matrix.uToBlue + kOffset) >> kChromaShift;
      const int32_t green = (u * matrix.uToGreen + v * matrix.vToGreen + kOffset) >> kChromaShift;
      const int32_t red = (v * matrix.vToRed + kOffset) >> kChromaShift;
      pixels[0] = ClampedByte((luma + blue) >> kLumaShift);
      pixels[1] = ClampedByte((luma + green) >> kLumaShift);
      pixels[2] = ClampedByte((luma + red) >> kLumaShift);
      pixels[3] = 255;
    }
  }
};
using HalfHorz = Reduction<2, 1, 1, 1>;
using Half = Reduction<2, 2, 1, 2>;
using QuarterHorzHalfVert = Reduction<4, 2, 2, 2>;
using Quarter = Reduction<4, 4, 2, 2>;

void Whole(const Job& job, bool interlaced, const DecodeMatrix& matrix) noexcept {
  const YuvRows& rows = YuvRowKernels();
  for (int32_t row = 0; row < job.height; ++row) {
    const int32_t line = ChromaLineOfRow(row, job.height, interlaced);
    rows.fromPlanes(job.Row(row), job.y.Row(row), job.u.Row(line), job.v.Row(line), job.width / 2, matrix);
  }
}

/// Every `step`th row from `first` on, at half width.
void HalfWidth(const Job& job, int32_t first, int32_t step, bool interlaced, const DecodeMatrix& matrix) noexcept {
  int32_t to = 0;
  for (int32_t row = first; row < job.height; row += step, ++to) {
    const int64_t line = ChromaLineOfRow(row, job.height, interlaced);
    HalfHorz::Row(job.Row(to), job, row, &line, matrix);
  }
}

/// Two luma rows a row. Both chroma lines of four luma rows serve both rows made of them, so that neither field's
/// colour is lost; a picture's last line without a partner serves twice.
template <typename Reduction>
void HalfHeight(const Job& job, const DecodeMatrix& matrix) noexcept {
  const int64_t lastLine = std::max(job.height / 2 - 1, 0);
  for (int64_t row = 0; row < job.height / 2; ++row) {
    const int64_t line = row / 2 * 2;
    const int64_t lines[2] = {line, std::min(line + 1, lastLine)};
    Reduction::Row(job.Row(row), job, row * 2, lines, matrix);
  }
}

void QuarterHeight(const Job& job, const DecodeMatrix& matrix) noexcept {
  for (int64_t row = 0; row < job.height / 4; ++row) {
    const int64_t lines[2] = {row * 2, row * 2 + 1};
    Quarter::Row(job.Row(row), job, row * 4, lines, matrix);
  }
}

const DecodeMatrix& MatrixOf(const Job& job, int32_t colorSpace) noexcept {
  return PlanarDecode(SpaceOf(colorSpace, job.width, job.height));
}

}  // namespace

}  // namespace marlo::pixel

using namespace marlo::pixel;

HRESULT ZrYUV420ToRGBA(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y, int32_t yStride,
                       const void* u, int32_t uStride, const void* v, int32_t vStride, int32_t fieldMode,
                       int32_t colorSpace) noexcept {
  const Job job = MakeJob(width, height, dst, dstStride, y, yStride, u, uStride, v, vStride);
  const HRESULT result = job.Check(1, 2, 2);
  if (SUCCEEDED(result)) Whole(job, IsInterlaced(fieldMode), MatrixOf(job, colorSpace));
  return result;
}

HRESULT ZrYUV420ToRGBA_HalfHorz(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y,
                                int32_t yStride, const void* u, int32_t uStride, const void* v, int32_t vStride,
                                int32_t fieldMode, int32_t colorSpace) noexcept {
  const Job job = MakeJob(width, height, dst, dstStride, y, yStride, u, uStride, v, vStride);
  const HRESULT result = job.Check(2, 2, 2);
  if (SUCCEEDED(result)) HalfWidth(job, 0, 1, IsInterlaced(fieldMode), MatrixOf(job, colorSpace));
  return result;
}

HRESULT ZrYUV420ToRGBA_Half_BlendFields(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y,
                                        int32_t yStride, const void* u, int32_t uStride, const void* v, int32_t vStride,
                                        int32_t /*fieldMode*/, int32_t colorSpace) noexcept {
  const Job job = MakeJob(width, height, dst, dstStride, y, yStride, u, uStride, v, vStride);
  const HRESULT result = job.Check(2, 2, 2);
  if (SUCCEEDED(result)) HalfHeight<Half>(job, MatrixOf(job, colorSpace));
  return result;
}

HRESULT ZrYUV420ToRGBA_Half(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y, int32_t yStride,
                            const void* u, int32_t uStride, const void* v, int32_t vStride, int32_t fieldMode,
                            int32_t colorSpace) noexcept {
  const Job job = MakeJob(width, height, dst, dstStride, y, yStride, u, uStride, v, vStride);
  const HRESULT result = job.Check(2, 2, 2);
  if (FAILED(result)) return result;
  if (IsInterlaced(fieldMode)) {
    HalfWidth(job, fieldMode - 1, 2, true, MatrixOf(job, colorSpace));
  } else {
    HalfHeight<Half>(job, MatrixOf(job, colorSpace));
  }
  return S_OK;
}

HRESULT ZrYUV420ToRGBA_QuarterHorz_HalfVert_BlendFields(int32_t width, int32_t height, void* dst, int32_t dstStride,
                                                        const void* y, int32_t yStride, const void* u, int32_t uStride,
                                                        const void* v, int32_t vStride, int32_t /*fieldMode*/,
                                                        int32_t colorSpace) noexcept {
  const Job job = MakeJob(width, height, dst, dstStride, y, yStride, u, uStride, v, vStride);
  const HRESULT result = job.Check(4, 4, 2);
  if (SUCCEEDED(result)) HalfHeight<QuarterHorzHalfVert>(job, MatrixOf(job, colorSpace));
  return result;
}

HRESULT ZrYUV420ToRGBA_Quarter_BlendFields(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y,
                                           int32_t yStride, const void* u, int32_t uStride, const void* v,
                                           int32_t vStride, int32_t /*fieldMode*/, int32_t colorSpace) noexcept {
  const Job job = MakeJob(width, height, dst, dstStride, y, yStride, u, uStride, v, vStride);
  const HRESULT result = job.Check(4, 4, 2);
  if (SUCCEEDED(result)) QuarterHeight(job, MatrixOf(job, colorSpace));
  return result;
}

HRESULT ZrYUV420ToRGBA_Quarter(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y,
                               int32_t yStride, const void* u, int32_t uStride, const void* v, int32_t vStride,
                               int32_t fieldMode, int32_t colorSpace) noexcept {
  const Job job = MakeJob(width, height, dst, dstStride, y, yStride, u, uStride, v, vStride);
  const HRESULT result = job.Check(4, 4, 2);
  if (FAILED(result)) return result;
  if (IsInterlaced(fieldMode)) {
    // The matrix is the whole picture's, not that of a picture as high as a field.
    HalfHeight<QuarterHorzHalfVert>(job.Field(fieldMode - 1), MatrixOf(job, colorSpace));
  } else {
    QuarterHeight(job, MatrixOf(job, colorSpace));
  }
  return S_OK;
}

HRESULT ZrYUV422PlanarToRGBA(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y,
                             int32_t yStride, const void* u, int32_t uStride, const void* v, int32_t vStride,
                             int32_t colorSpace) noexcept {
  const Job job = MakeJob(width, height, dst, dstStride, y, yStride, u, uStride, v, vStride);
  const HRESULT result = job.Check(1, 2, 1);
  if (FAILED(result)) return result;
  const YuvRows& rows = YuvRowKernels();
  for (int32_t row = 0; row < height; ++row) {
    rows.fromPlanes(job.Row(row), job.y.Row(row), job.u.Row(row), job.v.Row(row), width / 2, MatrixOf(job, colorSpace));
  }
  return S_OK;
}
