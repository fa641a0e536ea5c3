// SPDX-License-Identifier: Apache-2.0
// Gamma curves between display exponents, evaluated or through tables.
#pragma once

#include <cstdint>

#include "marlo110k/dib_copy.h"

namespace marlo::pixel {

/// Source over destination exponent; 0 stands for 2.2222222222222223, others are clamped to 0.5 to 4.
double GammaRatio(double dstGamma, double srcGamma) noexcept;
/// A ratio within a thousandth of 1 is no conversion.
inline bool ChangesGamma(double ratio) noexcept { return ratio < 0.999 || ratio > 1.001; }

tZRGAMMACURVE MakeGammaCurve(double exponent) noexcept;
inline bool HasCurve(const tZRGAMMACURVE& curve) noexcept { return curve.linearSlope != 0.0f; }
float Evaluate(const tZRGAMMACURVE& curve, float x) noexcept;

/// A curve with a table of `steps` + 1 entries, entry i at i / (steps - 1); freed with the object.
class GammaTable {
 public:
  explicit GammaTable(double exponent) noexcept : curve_(MakeGammaCurve(exponent)) {}
  ~GammaTable();
  GammaTable(const GammaTable&) = delete;
  GammaTable& operator=(const GammaTable&) = delete;

  /// False when memory is short.
  bool MakeFloats(int32_t steps) noexcept;
  bool MakeBytes(int32_t steps) noexcept;

  const tZRGAMMACURVE& curve() const noexcept { return curve_; }
  const float* floats() const noexcept { return curve_.table; }
  /// Between two entries; outside 0 to 1 the curve itself; NaN gives 0.
  float Float(float x) const noexcept {
    if (!(x >= 0.0f && x <= 1.0f)) return x == x ? Evaluate(curve_, x) : 0.0f;
    const float position = x * static_cast<float>(curve_.tableMax);
    const int32_t index = static_cast<int32_t>(position);
    const float from = curve_.table[index];
    return from + (curve_.table[index + 1] - from) * (position - static_cast<float>(index));
  }
  /// The nearest entry; 0 for NaN and below 0, 255 above 1.
  uint8_t Byte(float x) const noexcept {
    if (!(x >= 0.0f)) return 0;
    if (x > 1.0f) return 255;
    return curve_.byteTable[static_cast<int32_t>(x * static_cast<float>(curve_.tableMax) + kHalfUp)];
  }

 private:
  static constexpr float kHalfUp = 0.5f;  ///< Before truncation: half and more go up.

  tZRGAMMACURVE curve_;
};

}  // namespace marlo::pixel
