// SPDX-License-Identifier: Apache-2.0
// The sub-pixel composite kernels: bilinear samples from corner to corner, border pixels by their coverage.

#include <cstring>

#include "pixel/composite.h"
#include "pixel/kernel_level.h"
#include "pixel/subpixel_walk.h"
#include "platform/parallel/rows.h"

namespace marlo::pixel {

namespace {

/// Bilinear weights of the four neighbours, each cut to 14 bits: they may add up to two less than one.
struct ByteSampler {
  using Pixel = tZRPIXEL32;
  int32_t w00, w10, w01, w11;
  ByteSampler(int32_t x, int32_t y) noexcept
      : w00((kOne - x) * (kOne - y) >> kFractionBits),
        w10(x * (kOne - y) >> kFractionBits),
        w01((kOne - x) * y >> kFractionBits),
        w11(x * y >> kFractionBits) {}
  uint8_t Mix(uint8_t a, uint8_t b, uint8_t c, uint8_t d) const noexcept {
    return static_cast<uint8_t>((a * w00 + b * w10 + c * w01 + d * w11) >> kFractionBits);
  }
};

/// The whole products, scaled by 2^-28.
struct FloatSampler {
  using Pixel = tZRPIXEL128;
  float w00, w10, w01, w11;
  FloatSampler(int32_t x, int32_t y) noexcept
      : w00(Weight(kOne - x, kOne - y)), w10(Weight(x, kOne - y)), w01(Weight(kOne - x, y)), w11(Weight(x, y)) {}
  static float Weight(int32_t x, int32_t y) noexcept { return static_cast<float>(x * y) * 3.7252903e-9f; }
  float Mix(float a, float b, float c, float d) const noexcept { return a * w00 + b * w10 + c * w01 + d * w11; }
};

template <typename Pixel>
Pixel PixelAt(const uint8_t* row, int64_t column) noexcept {
  Pixel pixel;
  std::memcpy(&pixel, row + column * int64_t{sizeof(Pixel)}, sizeof pixel);
  return pixel;
}

/// Lays samples by one of the modes.
struct ByteMode {
  using Sampler = ByteSampler;
  ByteCompositeRow row;
  void Lay(tZRPIXEL32* destination, const tZRPIXEL32* source, int32_t pixels, int32_t weight14) const noexcept {
    row(destination, source, pixels, weight14);
  }
};
struct FloatMode {
  using Sampler = FloatSampler;
  FloatCompositeRow row;
  void Lay(tZRPIXEL128* destination, const tZRPIXEL128* source, int32_t pixels, int32_t weight14) const noexcept {
    row(destination, source, pixels, static_cast<float>(weight14) / static_cast<float>(kOne));
  }
};
/// Lays samples by the caller's pixel functions.
struct ByteCustom {
  using Sampler = ByteSampler;
  const tZRCOMPOSITORFUNCS* functions;
  void Lay(tZRPIXEL32* destination, const tZRPIXEL32* source, int32_t pixels, int32_t weight14) const noexcept {
    const int32_t opacity255 = weight14 * 255 / kOne;
    for (int32_t pixel = 0; pixel < pixels; ++pixel) {
      functions->pixel8(destination + pixel, source + pixel, opacity255);
    }
  }
};
struct FloatCustom {
  using Sampler = FloatSampler;
  const tZRCOMPOSITORFUNCS* functions;
  void Lay(tZRPIXEL128* destination, const tZRPIXEL128* source, int32_t pixels, int32_t weight14) const noexcept {
    const float opacity = static_cast<float>(weight14) / static_cast<float>(kOne);
    for (int32_t pixel = 0; pixel < pixels; ++pixel) {
      functions->pixelFloat(destination + pixel, source + pixel, opacity);
    }
  }
};

template <typename Layer>
class Kernel {
 public:
  using Sampler = typename Layer::Sampler;
  using Pixel = typename Sampler::Pixel;

  Kernel(const tZRDIBSUBPIXELPARAMS& record, const Layer& layer, int32_t opacity14) noexcept
      : record_(record),
        layer_(layer),
        opacity14_(opacity14),
        coverX_(CoverAxis(record.dstClipped.left, record.dstClipped.right)),
        coverY_(CoverAxis(record.dstClipped.top, record.dstClipped.bottom)),
        walkX_(MakeWalk(record.srcFinal.left, record.srcFinal.right, record.stepX, coverX_)),
        walkY_(MakeWalk(record.srcFinal.top, record.srcFinal.bottom, record.stepY, coverY_)) {}

  void Run() const noexcept {
    plat::ParallelRows(coverY_.Count(), RowsPerThread(coverX_.Count()), [this](int32_t first, int32_t end) {
      for (int32_t row = first; row < end; ++row) Row(row);
    });
  }

 private:
  /// Samples and pixels laid at a time; they stay in the nearest cache.
  static constexpr int32_t kRun = 256;

  void Row(int32_t row) const noexcept {
    uint8_t* const rowBytes = record_.dstTop + (int64_t{coverY_.first} + row) * record_.dstTopStride;
    Pixel* const target = reinterpret_cast<Pixel*>(rowBytes + int64_t{coverX_.first} * int64_t{sizeof(Pixel)});
    const int32_t rowWeight = ScaledBy(opacity14_, coverY_.At(row));
    const int64_t y = walkY_.At(row, coverY_.Count());
    const int32_t line = static_cast<int32_t>(y >> kFractionBits);
    const uint8_t* const upper = record_.srcTop + int64_t{line} * record_.srcTopStride;
    const uint8_t* const lower = line >= walkY_.last ? upper : upper + record_.srcTopStride;
    const int32_t fractionY = static_cast<int32_t>(y & kFraction);

    Pixel samples[kRun];
    const int32_t count = coverX_.Count();
    for (int32_t column = 0; column < count;) {
      // The first and the last column stand alone: they have weights of their own.
      const bool atBorder = column == 0 || column == count - 1;
      const int32_t pixels = atBorder ? 1 : std::min(kRun, count - 1 - column);
      for (int32_t index = 0; index < pixels; ++index) samples[index] = Sample(upper, lower, column + index, fractionY);
      layer_.Lay(target + column, samples, pixels, ScaledBy(rowWeight, coverX_.At(column)));
      column += pixels;
    }
  }

  Pixel Sample(const uint8_t* upper, const uint8_t* lower, int32_t index, int32_t fractionY) const noexcept {
    const int64_t x = walkX_.At(index, coverX_.Count());
    const int64_t column = x >> kFractionBits;
    const int64_t next = column >= walkX_.last ? column : column + 1;
    const Pixel a = PixelAt<Pixel>(upper, column);
    const Pixel b = PixelAt<Pixel>(upper, next);
    const Pixel c = PixelAt<Pixel>(lower, column);
    const Pixel d = PixelAt<Pixel>(lower, next);
    const Sampler sampler(static_cast<int32_t>(x & kFraction), fractionY);
    return {sampler.Mix(a.b, b.b, c.b, d.b), sampler.Mix(a.g, b.g, c.g, d.g), sampler.Mix(a.r, b.r, c.r, d.r),
            sampler.Mix(a.a, b.a, c.a, d.a)};
  }

  const tZRDIBSUBPIXELPARAMS& record_;
  Layer layer_;
  int32_t opacity14_;
  CoverageAxis coverX_;
  CoverageAxis coverY_;
  Walk walkX_;
  Walk walkY_;
};

template <typename Layer>
HRESULT RunKernel(const tZRDIBSUBPIXELPARAMS& record, const Layer& layer, int32_t opacity14) noexcept {
  Kernel<Layer>(record, layer, opacity14).Run();
  return S_OK;
}

}  // namespace

HRESULT CompositeSubpixel(const tZRDIBSUBPIXELPARAMS& record, int32_t bytesPerPixel,
                          const tZRDIBCOMPOSITEPARAMS& params) noexcept {
  const int32_t opacity14 = Opacity14(OpacityOf(params));
  if (params.mode != kCustomMode) {
    return bytesPerPixel == 4 ? RunKernel(record, ByteMode{FindByteCompositeRow(params.mode)}, opacity14)
                              : RunKernel(record, FloatMode{FindFloatCompositeRow(params.mode)}, opacity14);
  }
  const tZRCOMPOSITORFUNCS* const functions = params.compositor;
  if (bytesPerPixel == 4) {
    return functions->pixel8 ? RunKernel(record, ByteCustom{functions}, opacity14) : E_INVALIDARG;
  }
  return functions->pixelFloat ? RunKernel(record, FloatCustom{functions}, opacity14) : E_INVALIDARG;
}

}  // namespace marlo::pixel
