// SPDX-License-Identifier: Apache-2.0
// Construction and evaluation of gamma curves.

#include "pixel/gamma.h"

#include <algorithm>
#include <cmath>

#include "platform/base/memory.h"

namespace marlo::pixel {

namespace {

constexpr double kDefaultGamma = 2.2222222222222223;
constexpr double kSlopeExponent = 1.8836104;
constexpr double kThresholdExponent = -0.9418052;
constexpr double kThresholdFactor = 0.038183767;
/// Above every input: the curve of exponent 1 is all linear.
constexpr float kLinearThreshold = 100.0f;

double Display(double gamma) noexcept { return gamma == 0.0 ? kDefaultGamma : std::clamp(gamma, 0.5, 4.0); }

float At(int32_t index, int32_t steps, const tZRGAMMACURVE& curve) noexcept {
  return Evaluate(curve, static_cast<float>(static_cast<double>(index) / (steps - 1)));
}

}  // namespace

double GammaRatio(double dstGamma, double srcGamma) noexcept {
  const double ratio = Display(srcGamma) / Display(dstGamma);
  return ratio == ratio ? ratio : 1.0;
}

tZRGAMMACURVE MakeGammaCurve(double exponent) noexcept {
  tZRGAMMACURVE curve = {};
  const double inverse = 1.0 / exponent;
  const double slope = std::pow(inverse, kSlopeExponent);
  const double threshold = std::pow(inverse, kThresholdExponent) * kThresholdFactor;
  curve.gamma = static_cast<float>(exponent);
  curve.linearSlope = static_cast<float>(slope);
  curve.threshold = static_cast<float>(threshold);
  if (exponent < 1.0) {
    const double powered = std::pow(threshold, exponent);
    curve.power = 1;
    curve.offset = static_cast<float>((slope * threshold - powered) / (powered - 1.0));
  } else if (exponent > 1.0) {
    const double rooted = std::pow(slope * threshold, inverse);
    const double offset = (threshold - rooted) / (rooted - 1.0);
    curve.offset = static_cast<float>(offset);
    curve.scale = static_cast<float>(1.0 / (offset + 1.0));
  } else {
    curve.power = 1;
    curve.threshold = kLinearThreshold;
  }
  return curve;
}

float Evaluate(const tZRGAMMACURVE& curve, float x) noexcept {
  const double magnitude = std::fabs(static_cast<double>(x));
  // NaN fails the comparison and passes through the linear part.
  if (!(magnitude >= static_cast<double>(curve.threshold))) return x * curve.linearSlope;
  const double exponent = static_cast<double>(curve.gamma);
  const double offset = static_cast<double>(curve.offset);
  const double value = curve.power ? std::pow(magnitude, exponent) * (offset + 1.0) - offset
                                   : std::pow((magnitude + offset) * static_cast<double>(curve.scale), exponent);
  return static_cast<float>(x < 0.0f ? -value : value);
}

GammaTable::~GammaTable() {
  plat::FreeBlock(curve_.table);
  plat::FreeBlock(curve_.byteTable);
}

bool GammaTable::MakeFloats(int32_t steps) noexcept {
  curve_.tableMax = steps - 1;
  curve_.table = static_cast<float*>(plat::AllocateZeroed(static_cast<size_t>(steps + 1) * sizeof(float)));
  if (!curve_.table) return false;
  for (int32_t index = 0; index <= steps; ++index) curve_.table[index] = At(index, steps, curve_);
  return true;
}

bool GammaTable::MakeBytes(int32_t steps) noexcept {
  curve_.tableMax = steps - 1;
  curve_.byteTable = static_cast<uint8_t*>(plat::AllocateZeroed(static_cast<size_t>(steps + 1)));
  if (!curve_.byteTable) return false;
  for (int32_t index = 0; index <= steps; ++index) {
    const double value = static_cast<double>(At(index, steps, curve_)) * 255.0;
    curve_.byteTable[index] = static_cast<uint8_t>(std::clamp(std::floor(value + 0.5), 0.0, 255.0));
  }
  return true;
}

}  // namespace marlo::pixel
