// SPDX-License-Identifier: Apache-2.0
// Rectangle arithmetic that can't overflow, and the 18.14 fixed point of sub-pixel positions.
#pragma once

#include <algorithm>
#include <cstdint>

#include "marlo110k/contract/picture.h"

namespace marlo::pixel {

inline constexpr int32_t kOne = 16384;       ///< One pixel in 18.14.
inline constexpr int32_t kFraction = 16383;  ///< Mask of the fraction.
inline constexpr int32_t kFractionBits = 14;
inline constexpr int32_t kWidestSubpixel = 131071;  ///< The largest whole coordinate that 18.14 holds.

inline int64_t Width(const RECT& rect) noexcept { return int64_t{rect.right} - rect.left; }
inline int64_t Height(const RECT& rect) noexcept { return int64_t{rect.bottom} - rect.top; }
inline bool HasArea(const RECT& rect) noexcept { return rect.left < rect.right && rect.top < rect.bottom; }

/// The common part, or all zero when there is none.
inline RECT Intersection(const RECT& a, const RECT& b) noexcept {
  const RECT common = {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                       std::min(a.bottom, b.bottom)};
  return HasArea(common) && HasArea(a) && HasArea(b) ? common : RECT{};
}

inline int32_t Saturate(int64_t value) noexcept {
  return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

/// Toward zero; what doesn't fit saturates and NaN gives 0.
inline int32_t Truncate(double value) noexcept {
  if (!(value > -2147483648.0)) return value <= -2147483648.0 ? INT32_MIN : 0;
  return value >= 2147483647.0 ? INT32_MAX : static_cast<int32_t>(value);
}

inline RECT ToSubpixels(const RECT& rect) noexcept {
  return {Saturate(int64_t{rect.left} * kOne), Saturate(int64_t{rect.top} * kOne), Saturate(int64_t{rect.right} * kOne),
          Saturate(int64_t{rect.bottom} * kOne)};
}

/// Divides by a pixel, toward zero.
inline RECT ToPixels(const RECT& rect) noexcept {
  return {rect.left / kOne, rect.top / kOne, rect.right / kOne, rect.bottom / kOne};
}

inline bool HasFraction(const RECT& rect) noexcept {
  return ((rect.left | rect.top | rect.right | rect.bottom) & kFraction) != 0;
}

}  // namespace marlo::pixel
