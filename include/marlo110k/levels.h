// SPDX-License-Identifier: Apache-2.0
// Levels of a block of interleaved samples: peaks and RMS, one result a channel.
//
// Levels are fractions of full scale (1.0) by the read factors of the types; float types may exceed it.
// FindPeaks and CalcRMS serve PCM8, PCM8SIGNED, PCM16, PCM24, PCM24UNPACKED, PCM32, FLOAT32 and FLOAT64,
// CalcPreRMS the float types. Getters give null, and calls E_NOTIMPL, for any other type and for a null
// format; no frames give S_OK at once and leave the results as they are.
// All calls are for any thread, keep no state, take no lock and allocate nothing. [render thread]
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/export.h"
#include "marlo110k/waveformat.h"

/// The peak of one channel.
struct tZRAUDIOPEAK {
  float peak;        ///< Largest magnitude as a fraction of full scale.
  int32_t position;  ///< Frame of the peak, the last one among equals; see ZrAudio_FindPeaks for a clipped one.
  uint32_t clipped;  ///< 1 when the channel clips, else 0.
};
static_assert(sizeof(tZRAUDIOPEAK) == 12);
static_assert(offsetof(tZRAUDIOPEAK, position) == 4 && offsetof(tZRAUDIOPEAK, clipped) == 8);

/// A peak search: `results` has one entry a channel. `threshold` as for ZrAudio_FindPeaks.
using ZRAUDIOFINDPEAKSFUNCTION = void (*)(uint32_t threshold, const void* buffer, int64_t frames, uint32_t channels,
                                          tZRAUDIOPEAK* results) noexcept;
/// An RMS measure: `results` has one entry a channel.
using ZRAUDIOCALCRMSFUNCTION = void (*)(const void* buffer, int64_t frames, uint32_t channels, float* results) noexcept;
/// A sum of powers: `results` has one entry a channel. `weight` as for ZrAudio_CalcPreRMS.
using ZRAUDIOCALCPRERMSFUNCTION = void (*)(const void* buffer, int64_t frames, uint32_t channels, float* results,
                                           int32_t weight) noexcept;

/// The peak search of a format, for a caller with many blocks.
ZR_API ZRAUDIOFINDPEAKSFUNCTION ZrAudio_GetFindPeaksFunction(const WAVEFORMATEX* format) noexcept;
/// @copydoc ZrAudio_GetFindPeaksFunction(const WAVEFORMATEX*)
ZR_API ZRAUDIOFINDPEAKSFUNCTION ZrAudio_GetFindPeaksFunction(const _zrwaveformat* format) noexcept;
/// Finds the peak of every channel.
/// @param threshold for integer types the number of consecutive samples at full scale, of either sign, that
/// counts as clipping (0 counts as 1): there the search of that channel stops, and its position is the frame
/// of the last such sample less their number. Float types clip at any sample above 1.0 and don't stop.
ZR_API HRESULT ZrAudio_FindPeaks(const WAVEFORMATEX* format, uint32_t threshold, const void* buffer, int64_t frames,
                                 tZRAUDIOPEAK* results) noexcept;
/// @copydoc ZrAudio_FindPeaks(const WAVEFORMATEX*, uint32_t, const void*, int64_t, tZRAUDIOPEAK*)
ZR_API HRESULT ZrAudio_FindPeaks(const _zrwaveformat* format, uint32_t threshold, const void* buffer, int64_t frames,
                                 tZRAUDIOPEAK* results) noexcept;

/// The RMS measure of a format, for a caller with many blocks.
ZR_API ZRAUDIOCALCRMSFUNCTION ZrAudio_GetCalcRMSFunction(const WAVEFORMATEX* format) noexcept;
/// @copydoc ZrAudio_GetCalcRMSFunction(const WAVEFORMATEX*)
ZR_API ZRAUDIOCALCRMSFUNCTION ZrAudio_GetCalcRMSFunction(const _zrwaveformat* format) noexcept;
/// The root of the mean square of every channel. Integer types give a whole number of steps, in the width of
/// the type: a block that holds nothing but the most negative value therefore reads as -1.0.
ZR_API HRESULT ZrAudio_CalcRMS(const WAVEFORMATEX* format, const void* buffer, int64_t frames, float* results) noexcept;
/// @copydoc ZrAudio_CalcRMS(const WAVEFORMATEX*, const void*, int64_t, float*)
ZR_API HRESULT ZrAudio_CalcRMS(const _zrwaveformat* format, const void* buffer, int64_t frames,
                               float* results) noexcept;

/// The sum of powers of a format, for a caller with many blocks.
ZR_API ZRAUDIOCALCPRERMSFUNCTION ZrAudio_GetCalcPreRMSFunction(const WAVEFORMATEX* format) noexcept;
/// @copydoc ZrAudio_GetCalcPreRMSFunction(const WAVEFORMATEX*)
ZR_API ZRAUDIOCALCPRERMSFUNCTION ZrAudio_GetCalcPreRMSFunction(const _zrwaveformat* format) noexcept;
/// What sums up over several blocks before a mean is taken: the squares of every channel, or with `weight`
/// non-zero their square roots, the magnitudes.
ZR_API HRESULT ZrAudio_CalcPreRMS(const WAVEFORMATEX* format, const void* buffer, int64_t frames, float* results,
                                  int32_t weight) noexcept;
/// @copydoc ZrAudio_CalcPreRMS(const WAVEFORMATEX*, const void*, int64_t, float*, int32_t)
ZR_API HRESULT ZrAudio_CalcPreRMS(const _zrwaveformat* format, const void* buffer, int64_t frames, float* results,
                                  int32_t weight) noexcept;

/// Full scale of an integer type: 128.0, 32768.0, 8388608.0 or 2147483648.0 for 8, 16, 24 or 32 bits, else 1.0.
ZR_API double ZrAudio_GetNormalizeFactor(uint32_t bits) noexcept;
