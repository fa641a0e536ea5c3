// SPDX-License-Identifier: Apache-2.0
// Sample-rate conversion of streams, block by block: two resamplers with separate interfaces.
//
// The first (ZrAudio_Resample*) serves mixer inputs and devices: linear or windowed sinc on a stream's own
// sample type. The second (ZrAudio_Resample2*) adds a cubic mode, a rational position that doesn't drift, and
// format conversion around a floating-point core. Both keep phase and history across blocks, so any block
// size gives the same stream.
//
// Ratio is destination rate / source rate. Sizes are frames. An instance belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"
#include "marlo110k/waveformat.h"

/// State of the first resampler.
struct tZRRESAMPLEINSTANCE;
/// State of the second resampler.
struct tZRRESAMPLE2;

/// Flags of ZrAudio_ResampleOpen.
enum ZRRESAMPLE_FLAGS : uint32_t {
  ZRRESAMPLE_QUALITY_MASK = 0xF,
  ZRRESAMPLE_LINEAR = 1,           ///< 0 and 1: linear without filter.
  ZRRESAMPLE_LINEAR_FILTERED = 2,  ///< Linear with the filter below.
  ZRRESAMPLE_SINC = 3,             ///< 25-tap windowed sinc; float types only.
  ZRRESAMPLE_FILTER_MASK = 0xF0,
  ZRRESAMPLE_FILTER_2 = 0x10,  ///< Chebyshev low-pass of order 2 at the lower rate's half.
  ZRRESAMPLE_FILTER_4 = 0x20,
  ZRRESAMPLE_FILTER_6 = 0x30,
  ZRRESAMPLE_COUNT_IS_DEST = 0x1000,  ///< The count given to ZrAudio_ResampleEx is destination frames.
  ZRRESAMPLE_KEEP_SOURCE = 0x2000,    ///< The source block stays unchanged unless source and destination are the same
                                      ///< address; going down this leaves the filter out.
};

/// Flags of ZrAudio_Resample2OpenEx.
enum ZRRESAMPLE2_FLAGS : uint32_t {
  ZRRESAMPLE2_MODE_MASK = 0xF,
  ZRRESAMPLE2_LINEAR = 1,
  ZRRESAMPLE2_CUBIC = 2,  ///< Cubic B-spline: it smooths, and passes through its samples only at whole positions.
  ZRRESAMPLE2_SINC = 4,   ///< 25-tap windowed sinc on a finer table.
  ZRRESAMPLE2_FILTER_MASK = 0x70,
  ZRRESAMPLE2_FILTER_4 = 0x10,  ///< Butterworth low-pass of order 4 at 0.95 of the lower rate's half.
  ZRRESAMPLE2_FILTER_8 = 0x20,
  ZRRESAMPLE2_FILTER_11 = 0x40,
  ZRRESAMPLE2_SCALAR = 0x100,  ///< Stay on the scalar code.
};

// ---- First resampler -------------------------------------------------------------------------------

/// Opens for a stream of `channels` (1 to 32) of a sample type.
/// Types other than FLOAT32 and FLOAT64 get neither filter nor sinc: such flags turn into linear.
/// @return S_OK, E_OUTOFMEMORY, or E_INVALIDARG for a null pointer, a bad type, rate or channel count.
/// Free with ZrAudio_ResampleClose.
ZR_API HRESULT ZrAudio_ResampleOpen(tZRRESAMPLEINSTANCE** instance, uint32_t sampleType, int32_t srcRate,
                                    int32_t dstRate, int32_t channels, uint32_t flags) noexcept;
/// The same by ratio.
ZR_API HRESULT ZrAudio_ResampleOpenEx(tZRRESAMPLEINSTANCE** instance, uint32_t sampleType, int32_t channels,
                                      double ratio, uint32_t flags) noexcept;
/// Frees; null is allowed.
ZR_API void ZrAudio_ResampleClose(tZRRESAMPLEINSTANCE* instance) noexcept;

/// Changes type, rates or channels of a stream; 0 or less leaves a value as it is.
/// A change of rate designs the filter anew (its delays go on unless `clear`) and zeroes the positions. A change
/// of channels clears. `clear` starts a new stream: history, phase, positions and offsets are zeroed.
/// @return S_OK or E_OUTOFMEMORY; after a failure the instance is closed and must not be used.
ZR_API HRESULT ZrAudio_ResampleReset(tZRRESAMPLEINSTANCE* instance, uint32_t sampleType, int32_t srcRate,
                                     int32_t dstRate, int32_t channels, int32_t clear) noexcept;
/// The same by ratio. A change from an integer type also switches the filter off.
ZR_API HRESULT ZrAudio_ResampleResetEx(tZRRESAMPLEINSTANCE* instance, uint32_t sampleType, double ratio,
                                       int32_t channels, int32_t clear) noexcept;

/// Converts a block. The destination needs room for ZrAudio_ResampleGetDstFromSrc frames; with
/// ZRRESAMPLE_COUNT_IS_DEST the source must hold ZrAudio_ResampleGetSrcFromDst frames, of which going up the last
/// isn't consumed: it comes again as the first of the next block.
/// Linear: source and destination may be the same address. Sinc: they may not (0 comes back), and the output is
/// 12 source frames behind the input. Going down, the filter works on the source block in place.
/// @return destination frames written; 0 for a null instance.
ZR_API int64_t ZrAudio_ResampleEx(tZRRESAMPLEINSTANCE* instance, void* dest, void* source, int64_t count) noexcept;
/// Stretches one block to exactly `destFrames` in one step, linear with an order-4 filter. @return S_OK always; a
/// rate that isn't whole may deliver fewer frames.
ZR_API HRESULT ZrAudio_Resample(const WAVEFORMATEX* format, void* dest, int64_t destFrames, void* source,
                                int64_t sourceFrames) noexcept;
/// The same for the library's own descriptor.
ZR_API HRESULT ZrAudio_Resample(const _zrwaveformat* format, void* dest, int64_t destFrames, void* source,
                                int64_t sourceFrames) noexcept;
/// Stretches a block of a running stream to exactly the given size by straight lines, continuing from the last
/// frame of the block before. Serves PCM8, PCM16, PCM24, PCM32, PCM24UNPACKED, FLOAT32 and FLOAT64.
/// @return destFrames, or -1 for other types. 0 destination frames only note the source's last frame.
ZR_API int64_t ZrAudio_ResampleStupid(tZRRESAMPLEINSTANCE* instance, void* dest, int64_t destFrames, const void* source,
                                      int64_t sourceFrames) noexcept;
/// The sinc kernel itself, on an instance opened with ZRRESAMPLE_SINC; its step is sourceFrames / destFrames.
/// 0 source frames flush: up to 13 frames of tail come out.
/// @return frames written; 0 for other types, null or one address for both buffers.
ZR_API int64_t ZrAudio_Resample_Sinc(uint32_t sampleType, int32_t channels, void* dest, int64_t destFrames,
                                     void* source, int64_t sourceFrames, tZRRESAMPLEINSTANCE* instance) noexcept;

/// Destination frames that a block of so many source frames gives at the present phase, at the most.
ZR_API int64_t ZrAudio_ResampleGetDstFromSrc(const tZRRESAMPLEINSTANCE* instance, int64_t sourceFrames) noexcept;
/// Source frames that so many destination frames need at the present phase.
ZR_API int64_t ZrAudio_ResampleGetSrcFromDst(const tZRRESAMPLEINSTANCE* instance, int64_t destFrames) noexcept;
/// Frames consumed since the start of the stream, plus the offset. 0 for null.
ZR_API int64_t ZrAudio_ResampleGetSrcPos(const tZRRESAMPLEINSTANCE* instance) noexcept;
/// Frames produced since the start of the stream, plus the offset.
ZR_API int64_t ZrAudio_ResampleGetDstPos(const tZRRESAMPLEINSTANCE* instance) noexcept;
/// Sets the count of consumed frames.
ZR_API void ZrAudio_ResampleSetSrcPos(tZRRESAMPLEINSTANCE* instance, int64_t frames) noexcept;
/// Sets the count of produced frames.
ZR_API void ZrAudio_ResampleSetDstPos(tZRRESAMPLEINSTANCE* instance, int64_t frames) noexcept;
/// Sets what the source position getter adds.
ZR_API void ZrAudio_ResampleSetSrcOffset(tZRRESAMPLEINSTANCE* instance, int64_t frames) noexcept;
/// Sets what the destination position getter adds.
ZR_API void ZrAudio_ResampleSetDstOffset(tZRRESAMPLEINSTANCE* instance, int64_t frames) noexcept;
/// Sets the frame before the next block, for a stream that starts in the middle of known audio. Values are in the
/// sample type's own scale.
ZR_API void ZrAudio_ResampleStuffPrevSample(tZRRESAMPLEINSTANCE* instance, double left, double right) noexcept;

// ---- Second resampler ------------------------------------------------------------------------------

/// Opens by ratio. A ratio of common rates, or one that a small fraction meets exactly, runs on a rational
/// position without drift.
/// @return S_OK, E_OUTOFMEMORY, E_INVALIDARG (null, a type outside PCM8 to PCM32BE, a bad ratio or channel
/// count) or E_NOTIMPL when the type can't be converted to a working type.
ZR_API HRESULT ZrAudio_Resample2OpenEx(tZRRESAMPLE2** instance, uint32_t sampleType, int32_t channels, double ratio,
                                       uint32_t flags) noexcept;
/// The same by rates, which are the fraction themselves.
ZR_API HRESULT ZrAudio_Resample2Open(tZRRESAMPLE2** instance, uint32_t sampleType, int32_t channels, int32_t srcRate,
                                     int32_t dstRate, uint32_t flags) noexcept;
/// Frees; null is allowed.
ZR_API void ZrAudio_Resample2Close(tZRRESAMPLE2* instance) noexcept;
/// Changes a running stream; 0 leaves a value as it is. Filter delays go on. `clear` starts a new stream.
/// @return as the opening calls; after a failure the instance is closed and must not be used.
ZR_API HRESULT ZrAudio_Resample2ResetEx(tZRRESAMPLE2* instance, uint32_t sampleType, int32_t channels, double ratio,
                                        uint32_t flags, int32_t clear) noexcept;
/// The same by rates.
ZR_API HRESULT ZrAudio_Resample2Reset(tZRRESAMPLE2* instance, uint32_t sampleType, int32_t channels, int32_t srcRate,
                                      int32_t dstRate, uint32_t flags, int32_t clear) noexcept;
/// Converts up to `destFrames` from up to `sourceFrames`; what isn't taken must come again. 0 source frames flush
/// the tail. The source stays unchanged; it may be the destination.
/// @param destDone, sourceDone frames made and taken; both required.
/// @return S_OK, E_OUTOFMEMORY, E_POINTER, or E_NOTIMPL for a mode and type without a kernel.
ZR_API HRESULT ZrAudio_Resample2Process(tZRRESAMPLE2* instance, void* dest, int64_t destFrames, int64_t* destDone,
                                        const void* source, int64_t sourceFrames, int64_t* sourceDone) noexcept;
/// Source frames needed for so many output frames now; a process call with that many fills the destination.
ZR_API int64_t ZrAudio_Resample2GetSrcFromDst(const tZRRESAMPLE2* instance, int64_t destFrames) noexcept;
/// Frames taken since the start of the stream.
ZR_API int64_t ZrAudio_Resample2GetSrcPos(const tZRRESAMPLE2* instance) noexcept;
/// Frames made since the start of the stream.
ZR_API int64_t ZrAudio_Resample2GetDstPos(const tZRRESAMPLE2* instance) noexcept;

// ---- Rational approximation ------------------------------------------------------------------------

/// The best fraction near `value` whose terms don't pass the larger of |value| and `limit` (0: 0x7FFFFFFF).
/// @param useTable look first among the ratios of the common sample rates, by exact equality.
/// @param error value - numerator / denominator; the outputs may be null.
/// @return true when a fraction was found; 0 gives 0 / 1 and false, as does a value that is no number.
ZR_API bool ZrRatApprox(double value, uint32_t limit, int32_t useTable, int64_t* numerator, int64_t* denominator,
                        double* error) noexcept;
