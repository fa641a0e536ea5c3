// SPDX-License-Identifier: Apache-2.0
// The thirteen composite modes as rows of pixels: one function a mode and pixel width.
#pragma once

#include <cstdint>

#include "marlo110k/dib_composite.h"

namespace marlo::pixel {

inline constexpr int32_t kCompositeModes = 13;
inline constexpr int32_t kCustomMode = -1;

/// Lays a row over another. `weight14` is 0 to 16384; 16384 runs the full form of the mode.
using ByteCompositeRow = void (*)(tZRPIXEL32* destination, const tZRPIXEL32* source, int32_t pixels, int32_t weight14);
/// The same for float pixels; an opacity of 1 runs the full form.
using FloatCompositeRow = void (*)(tZRPIXEL128* destination, const tZRPIXEL128* source, int32_t pixels, float opacity);

/// Members of both levels give the same bits.
extern const ByteCompositeRow kByteCompositePlain[kCompositeModes];
extern const ByteCompositeRow kByteCompositeAvx2[kCompositeModes];
extern const FloatCompositeRow kFloatCompositePlain[kCompositeModes];
extern const FloatCompositeRow kFloatCompositeAvx2[kCompositeModes];

ByteCompositeRow FindByteCompositeRow(int32_t mode) noexcept;
FloatCompositeRow FindFloatCompositeRow(int32_t mode) noexcept;

}  // namespace marlo::pixel
