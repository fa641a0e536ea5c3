// SPDX-License-Identifier: Apache-2.0
// Sample kernels: copy with conversion and gain, mix, single channels, and mix with a gain envelope.
//
// A kernel serves one pair of sample types. A getter gives it once, for a pair of formats; the caller then
// calls it per buffer. The format-level calls (ZrAudio_Copy and its like) do both in one step.
//
// The rule of every conversion: a value is read as a fraction of full scale (1.0), multiplied by the gain,
// scaled to the destination, clamped to its range and then rounded to nearest, ties to even. A sample out
// of range saturates; nothing is dithered. What a NaN becomes in an integer type isn't defined.
//
// In place: a kernel whose destination sample is wider than its source sample walks from the last sample to
// the first, any other from the first to the last. Both pointers may therefore stand at the start of one
// buffer that has room for the larger form.
//
// Counts are samples (frames times channels) unless a name says frames; a count below 1 does nothing.
// Kernels trust their pointers. All calls here are for any thread, take no lock and allocate nothing, but
// for ZrAudioCopy_UnitTest.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/contract/window.h"
#include "marlo110k/export.h"
#include "marlo110k/waveformat.h"

// ---- Envelopes -------------------------------------------------------------------------------------

/// A gain envelope on a clip: attack, sustain, release. Curve codes -1, 0 and 1 are straight lines, 2 and
/// above a curve that starts flat, -2 and below one that ends flat.
struct tZRASR {
  uint32_t reserved;    ///< Not read.
  float sustainGain;    ///< Gain of the middle segment.
  int64_t attackTime;   ///< Ticks of 100 ns.
  int64_t releaseTime;  ///< Ticks of 100 ns.
  int32_t attackCurve;
  float attackGain;  ///< Gain at the start of the attack.
  int32_t releaseCurve;
  float releaseGain;  ///< Gain at the end of the release, and from there on.
};
static_assert(sizeof(tZRASR) == 40);
static_assert(offsetof(tZRASR, sustainGain) == 4 && offsetof(tZRASR, attackTime) == 8);
static_assert(offsetof(tZRASR, releaseTime) == 16 && offsetof(tZRASR, attackCurve) == 24);
static_assert(offsetof(tZRASR, attackGain) == 28 && offsetof(tZRASR, releaseCurve) == 32);
static_assert(offsetof(tZRASR, releaseGain) == 36);

/// An envelope in frames with its running state; belongs to one thread at a time.
/// The gains carry the overall gain and, for an integer source, the read factor of its type.
struct tZRASRCOOKED {
  int32_t attackCurve;
  int32_t releaseCurve;
  int32_t attackLength;   ///< Frames.
  int32_t releaseLength;  ///< Frames.
  int64_t sustainLength;  ///< Frames.
  int64_t position;       ///< Frames from the start of the envelope.
  double sustainGain;
  double attackGain;
  double releaseGain;
  int64_t remaining;      ///< Frames left in the present segment.
  double gain;            ///< At the position last cooked; ramp functions don't write it back.
  double gainDelta;       ///< First difference per frame.
  double gainDeltaDelta;  ///< Second difference per frame.
};
static_assert(sizeof(tZRASRCOOKED) == 88);
static_assert(offsetof(tZRASRCOOKED, releaseCurve) == 4 && offsetof(tZRASRCOOKED, attackLength) == 8);
static_assert(offsetof(tZRASRCOOKED, releaseLength) == 12 && offsetof(tZRASRCOOKED, sustainLength) == 16);
static_assert(offsetof(tZRASRCOOKED, position) == 24 && offsetof(tZRASRCOOKED, sustainGain) == 32);
static_assert(offsetof(tZRASRCOOKED, attackGain) == 40 && offsetof(tZRASRCOOKED, releaseGain) == 48);
static_assert(offsetof(tZRASRCOOKED, remaining) == 56 && offsetof(tZRASRCOOKED, gain) == 64);
static_assert(offsetof(tZRASRCOOKED, gainDelta) == 72 && offsetof(tZRASRCOOKED, gainDeltaDelta) == 80);

/// Gains of a stereo pan.
struct tZRENGINE_PAN2STEREO {
  float leftToLeft;
  float rightToRight;
  float leftToRight;
  float rightToLeft;
};
static_assert(sizeof(tZRENGINE_PAN2STEREO) == 16);

// ---- Kernels ---------------------------------------------------------------------------------------

/// Copies `samples` samples with conversion and gain.
using ZRAUDIOCOPYFUNCTION = void (*)(void* dest, const void* source, int64_t samples, float gain) noexcept;
/// Copies one channel of interleaved frames into one channel of others, at gain 1.0. A copy within one type
/// that would run in place onto a wider stride does nothing.
using ZRAUDIOCOPYCHANNELSFUNCTION = void (*)(void* dest, uint32_t destChannels, uint32_t destIndex, const void* source,
                                             uint32_t sourceChannels, uint32_t sourceIndex, int64_t frames) noexcept;
/// Adds `samples` samples of the source: sample n with gains[n mod channels]. Does nothing when source and
/// destination are the same address.
using ZRAUDIOMIXFUNCTION = void (*)(void* dest, const void* source, int64_t samples, uint32_t channels,
                                    const double* gains) noexcept;
/// Adds `frames` frames of the source under the running gain of `cooked`, which it doesn't change.
using ZRAUDIOMIXRAMPFUNCTION = void (*)(void* dest, const void* source, int64_t frames, uint32_t channels,
                                        const tZRASRCOOKED* cooked) noexcept;
/// Adds one channel of interleaved frames to one channel of others. Does nothing between the same address
/// and the same channel.
using ZRAUDIOMIXCHANNELSFUNCTION = void (*)(void* dest, uint32_t destChannels, uint32_t destIndex, const void* source,
                                            uint32_t sourceChannels, uint32_t sourceIndex, int64_t frames,
                                            double gain) noexcept;

// ---- Getters: null for a pair that isn't served, an unknown type or a null format -------------------

/// The copy function of a pair of ZRSAMPLETYPE values: all pairs of the eleven types from PCM8 to PCM32BE,
/// except PCM24UNPACKED into PCM16BE or PCM24BE. The processor masks are asked at this call.
ZR_API ZRAUDIOCOPYFUNCTION ZrAudio_GetCopyFunction2(uint32_t destType, uint32_t sourceType) noexcept;
/// The copy function of two formats.
ZR_API ZRAUDIOCOPYFUNCTION ZrAudio_GetCopyFunction(const WAVEFORMATEX* destFormat,
                                                   const WAVEFORMATEX* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOCOPYFUNCTION ZrAudio_GetCopyFunction(const WAVEFORMATEX* destFormat,
                                                   const _zrwaveformat* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOCOPYFUNCTION ZrAudio_GetCopyFunction(const _zrwaveformat* destFormat,
                                                   const WAVEFORMATEX* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOCOPYFUNCTION ZrAudio_GetCopyFunction(const _zrwaveformat* destFormat,
                                                   const _zrwaveformat* sourceFormat) noexcept;

/// The copy channels function of a pair of types: all 121 pairs of the eleven types; PCM16RA into PCM16,
/// PCM24, PCM32, FLOAT32, FLOAT64 and PCM24UNPACKED; PCM24RA into PCM16, PCM24, FLOAT32 and FLOAT64; and
/// PCM16, PCM24 and FLOAT32 into PCM16RA and PCM24RA.
ZR_API ZRAUDIOCOPYCHANNELSFUNCTION ZrAudio_GetCopyChannelsFunction2(uint32_t destType, uint32_t sourceType) noexcept;
/// The copy channels function of two formats.
ZR_API ZRAUDIOCOPYCHANNELSFUNCTION ZrAudio_GetCopyChannelsFunction(const WAVEFORMATEX* destFormat,
                                                                   const WAVEFORMATEX* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOCOPYCHANNELSFUNCTION ZrAudio_GetCopyChannelsFunction(const WAVEFORMATEX* destFormat,
                                                                   const _zrwaveformat* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOCOPYCHANNELSFUNCTION ZrAudio_GetCopyChannelsFunction(const _zrwaveformat* destFormat,
                                                                   const WAVEFORMATEX* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOCOPYCHANNELSFUNCTION ZrAudio_GetCopyChannelsFunction(const _zrwaveformat* destFormat,
                                                                   const _zrwaveformat* sourceFormat) noexcept;

/// The mix function of a pair of types: all 64 pairs of PCM8, PCM16, PCM24, PCM32, FLOAT32, FLOAT64,
/// PCM24UNPACKED and PCM8SIGNED.
ZR_API ZRAUDIOMIXFUNCTION ZrAudio_GetMixFunction2(uint32_t destType, uint32_t sourceType) noexcept;
/// The mix function of two formats.
ZR_API ZRAUDIOMIXFUNCTION ZrAudio_GetMixFunction(const WAVEFORMATEX* destFormat,
                                                 const WAVEFORMATEX* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOMIXFUNCTION ZrAudio_GetMixFunction(const WAVEFORMATEX* destFormat,
                                                 const _zrwaveformat* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOMIXFUNCTION ZrAudio_GetMixFunction(const _zrwaveformat* destFormat,
                                                 const WAVEFORMATEX* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOMIXFUNCTION ZrAudio_GetMixFunction(const _zrwaveformat* destFormat,
                                                 const _zrwaveformat* sourceFormat) noexcept;

/// The mix channels function of a pair of types, for the pairs of ZrAudio_GetMixFunction2.
ZR_API ZRAUDIOMIXCHANNELSFUNCTION ZrAudio_GetMixChannelsFunction2(uint32_t destType, uint32_t sourceType) noexcept;
/// The mix channels function of two formats.
ZR_API ZRAUDIOMIXCHANNELSFUNCTION ZrAudio_GetMixChannelsFunction(const WAVEFORMATEX* destFormat,
                                                                 const WAVEFORMATEX* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOMIXCHANNELSFUNCTION ZrAudio_GetMixChannelsFunction(const WAVEFORMATEX* destFormat,
                                                                 const _zrwaveformat* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOMIXCHANNELSFUNCTION ZrAudio_GetMixChannelsFunction(const _zrwaveformat* destFormat,
                                                                 const WAVEFORMATEX* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOMIXCHANNELSFUNCTION ZrAudio_GetMixChannelsFunction(const _zrwaveformat* destFormat,
                                                                 const _zrwaveformat* sourceFormat) noexcept;

/// The mix ramp function of two formats: FLOAT32 or FLOAT64 from the eight types of ZrAudio_GetMixFunction2.
ZR_API ZRAUDIOMIXRAMPFUNCTION ZrAudio_GetMixExFunction(const WAVEFORMATEX* destFormat,
                                                       const WAVEFORMATEX* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOMIXRAMPFUNCTION ZrAudio_GetMixExFunction(const WAVEFORMATEX* destFormat,
                                                       const _zrwaveformat* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOMIXRAMPFUNCTION ZrAudio_GetMixExFunction(const _zrwaveformat* destFormat,
                                                       const WAVEFORMATEX* sourceFormat) noexcept;
/// The same between other descriptors.
ZR_API ZRAUDIOMIXRAMPFUNCTION ZrAudio_GetMixExFunction(const _zrwaveformat* destFormat,
                                                       const _zrwaveformat* sourceFormat) noexcept;

// ---- Format-level calls: S_OK, or E_NOTIMPL for a pair without a kernel. No frames give S_OK at once --

/// Copies `frames` frames. Both sides are expected to have the same channel count; the source's counts.
ZR_API HRESULT ZrAudio_Copy(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                            const void* source, int64_t frames, float gain) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_Copy(const WAVEFORMATEX* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                            const void* source, int64_t frames, float gain) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_Copy(const _zrwaveformat* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                            const void* source, int64_t frames, float gain) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_Copy(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                            const void* source, int64_t frames, float gain) noexcept;

/// Copies channels one by one.
/// @param map one entry per source channel: its destination channel; a negative entry, or one at or above
/// the destination's channel count, skips the source channel. Null: ZrAudio_Copy at gain 1.0.
ZR_API HRESULT ZrAudio_CopyChannels(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                                    const void* source, int64_t frames, const int32_t* map) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_CopyChannels(const WAVEFORMATEX* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                                    const void* source, int64_t frames, const int32_t* map) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_CopyChannels(const _zrwaveformat* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                                    const void* source, int64_t frames, const int32_t* map) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_CopyChannels(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                                    const void* source, int64_t frames, const int32_t* map) noexcept;

/// Adds `frames` frames; `gains` has one entry per source channel.
ZR_API HRESULT ZrAudio_Mix(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                           const void* source, int64_t frames, const double* gains) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_Mix(const WAVEFORMATEX* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                           const void* source, int64_t frames, const double* gains) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_Mix(const _zrwaveformat* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                           const void* source, int64_t frames, const double* gains) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_Mix(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                           const void* source, int64_t frames, const double* gains) noexcept;

/// Adds channels one by one: `map` as for ZrAudio_CopyChannels, gains[c] for source channel c. Without a
/// map: ZrAudio_Mix.
ZR_API HRESULT ZrAudio_MixChannels(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                                   const void* source, int64_t frames, const int32_t* map,
                                   const double* gains) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_MixChannels(const WAVEFORMATEX* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                                   const void* source, int64_t frames, const int32_t* map,
                                   const double* gains) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_MixChannels(const _zrwaveformat* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                                   const void* source, int64_t frames, const int32_t* map,
                                   const double* gains) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_MixChannels(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                                   const void* source, int64_t frames, const int32_t* map,
                                   const double* gains) noexcept;

/// Adds `frames` frames under an envelope, segment by segment; position and remaining of `cooked` go along.
/// A caller that continues within a segment with a later buffer calls ZrAudio_ASRReCook first.
/// @param cooked null: gain 1.0.
/// @return 1 when the pair has no ramp function and was mixed at gain 1.0 instead.
ZR_API HRESULT ZrAudio_MixEx(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                             const void* source, int64_t frames, tZRASRCOOKED* cooked) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_MixEx(const WAVEFORMATEX* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                             const void* source, int64_t frames, tZRASRCOOKED* cooked) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_MixEx(const _zrwaveformat* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                             const void* source, int64_t frames, tZRASRCOOKED* cooked) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_MixEx(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                             const void* source, int64_t frames, tZRASRCOOKED* cooked) noexcept;

/// Converts an envelope to frames of `format`, the source's, and sets it up at `position`. An envelope that
/// is longer than the clip splits the clip in two halves, the odd frame going to the attack.
/// @param position frames from the start of the envelope. @param totalLength the clip's length in ticks of
/// 100 ns. @param gain overall gain. @return S_OK.
ZR_API HRESULT ZrAudio_ASRCook(const WAVEFORMATEX* format, const tZRASR* asr, tZRASRCOOKED* cooked, int64_t position,
                               int64_t totalLength, double gain) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_ASRCook(const _zrwaveformat* format, const tZRASR* asr, tZRASRCOOKED* cooked, int64_t position,
                               int64_t totalLength, double gain) noexcept;
/// Moves a cooked envelope to `position`. Behind the release its last gain holds, with `remaining` so large
/// that no further call is due. @return S_OK.
ZR_API HRESULT ZrAudio_ASRReCook(tZRASRCOOKED* cooked, int64_t position) noexcept;

/// Multiplies in place, sample n by gains[n mod channels]; for FLOAT32 the gain is rounded to single first.
/// @return E_FAIL for a type other than FLOAT32 and FLOAT64.
ZR_API HRESULT ZrAudio_SetGain(void* buffer, const WAVEFORMATEX* format, int64_t frames, const double* gains) noexcept;
/// The same between other descriptors.
ZR_API HRESULT ZrAudio_SetGain(void* buffer, const _zrwaveformat* format, int64_t frames, const double* gains) noexcept;

// ---- Stereo FLOAT32 ----------------------------------------------------------------------------------

/// Copies (`mix` 0) or adds stereo FLOAT32 with two gains, left and right.
ZR_API void LowLevel_1To1_StaticGain_Float(float* dest, const float* source, int64_t frames, const float* gains,
                                           int32_t mix) noexcept;
/// Copies (`mix` 0) or adds stereo FLOAT32 through a 2 x 2 matrix; with both cross gains 0.0 it is
/// LowLevel_1To1_StaticGain_Float.
ZR_API void LowLevel_1To1_StaticPan_Float(float* dest, const float* source, int64_t frames,
                                          const tZRENGINE_PAN2STEREO* pan, int32_t mix) noexcept;

// ---- Self-check ----------------------------------------------------------------------------------------

/// Converts every value of each 8-, 16- and 24-bit type to the float types and back, each moved by just under
/// half a step. Takes a second or so and allocates its buffers.
/// @param window parent of a message box that tells of a failure; null: no box.
/// @return S_OK, E_UNEXPECTED (with a details line) on a mismatch, E_OUTOFMEMORY.
ZR_API HRESULT ZrAudioCopy_UnitTest(HZRWINDOW window) noexcept;
