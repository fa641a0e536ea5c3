// SPDX-License-Identifier: Apache-2.0
// Channels in interleaved buffers: silence, moving, extraction, changes of the channel count, reversal.
//
// Every call works on any type from PCM8 to PCM32BE unless it says otherwise; a type that it doesn't know, a
// null format and a channel number at or above the channel count give E_FAIL unless another code is named.
// No frames give S_OK at once, whatever the rest says. Buffers are trusted and mustn't overlap unless a call
// says that it works in place.
// All calls are for any thread, keep no state, take no lock and allocate nothing. [render thread]
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/export.h"
#include "marlo110k/waveformat.h"

// ---- Silence ---------------------------------------------------------------------------------------

/// Fills `frames` frames by tag and bits: 0x80 for the 8-bit formats of tag 1, of tag 0xFE02 and of an
/// extensible PCM format, otherwise 0.
/// @return S_OK, having done nothing, for an extensible format that is neither PCM nor float; E_FAIL for a tag
/// other than 1, 3 and 0xFE00 to 0xFE02.
ZR_API HRESULT ZrAudio_FillSilence(const WAVEFORMATEX* format, void* buffer, int64_t frames) noexcept;
/// Fills `frames` frames by sample type: PCM8 with 0x80, any other with 0. @return E_FAIL without a type.
ZR_API HRESULT ZrAudio_FillSilence(const _zrwaveformat* format, void* buffer, int64_t frames) noexcept;

/// Silences one channel: signed 8-bit samples with 0, other 8-bit samples with 0x80, wider ones with 0.
ZR_API HRESULT ZrAudio_FillSilenceChannel(const WAVEFORMATEX* format, void* buffer, uint32_t channel,
                                          int64_t frames) noexcept;
/// @copydoc ZrAudio_FillSilenceChannel(const WAVEFORMATEX*, void*, uint32_t, int64_t)
ZR_API HRESULT ZrAudio_FillSilenceChannel(const _zrwaveformat* format, void* buffer, uint32_t channel,
                                          int64_t frames) noexcept;

/// Silences one channel by sample type; the same result as ZrAudio_FillSilenceChannel.
ZR_API HRESULT ZrAudio_MuteChannel(void* buffer, const WAVEFORMATEX* format, uint32_t channel, int64_t frames) noexcept;
/// @copydoc ZrAudio_MuteChannel(void*, const WAVEFORMATEX*, uint32_t, int64_t)
ZR_API HRESULT ZrAudio_MuteChannel(void* buffer, const _zrwaveformat* format, uint32_t channel,
                                   int64_t frames) noexcept;
/// The same by type and channel count.
ZR_API HRESULT ZrAudio_MuteChannel(void* buffer, uint32_t sampleType, uint32_t channels, uint32_t channel,
                                   int64_t frames) noexcept;

/// Repeats one frame `frames` times. Formats of one type take the frame as it is; stereo frames of PCM16,
/// PCM24, FLOAT32, FLOAT64 and PCM24UNPACKED are converted to stereo PCM16, PCM24, PCM32, FLOAT32, FLOAT64 and
/// PCM24UNPACKED. Any other pair, or unlike channel counts, gives silence in the destination's format.
ZR_API HRESULT ZrAudio_FillWithSample(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                                      const void* frame, int64_t frames) noexcept;
/// @copydoc ZrAudio_FillWithSample(const WAVEFORMATEX*, void*, const WAVEFORMATEX*, const void*, int64_t)
ZR_API HRESULT ZrAudio_FillWithSample(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                                      const void* frame, int64_t frames) noexcept;

// ---- Moving channels inside frames -----------------------------------------------------------------

/// Copies one channel onto another, in place. Mono is left alone, with S_OK; so is a channel onto itself.
/// Types up to FLOAT64 only.
ZR_API HRESULT ZrAudio_CopyChannelToChannel(void* buffer, const WAVEFORMATEX* format, uint32_t from, uint32_t to,
                                            int64_t frames) noexcept;
/// @copydoc ZrAudio_CopyChannelToChannel(void*, const WAVEFORMATEX*, uint32_t, uint32_t, int64_t)
ZR_API HRESULT ZrAudio_CopyChannelToChannel(void* buffer, const _zrwaveformat* format, uint32_t from, uint32_t to,
                                            int64_t frames) noexcept;

/// Exchanges the first two channels of every frame, in place. Mono is left alone, with S_OK.
ZR_API HRESULT ZrAudio_SwapStereoChannels(void* buffer, const WAVEFORMATEX* format, int64_t frames) noexcept;
/// @copydoc ZrAudio_SwapStereoChannels(void*, const WAVEFORMATEX*, int64_t)
ZR_API HRESULT ZrAudio_SwapStereoChannels(void* buffer, const _zrwaveformat* format, int64_t frames) noexcept;

/// Copies frames with their first two channels exchanged; works in place. Of mono nothing is copied, with S_OK.
ZR_API HRESULT ZrAudio_CopySwapStereoChannels(void* dest, const void* source, const WAVEFORMATEX* format,
                                              int64_t frames) noexcept;
/// @copydoc ZrAudio_CopySwapStereoChannels(void*, const void*, const WAVEFORMATEX*, int64_t)
ZR_API HRESULT ZrAudio_CopySwapStereoChannels(void* dest, const void* source, const _zrwaveformat* format,
                                              int64_t frames) noexcept;

// ---- Between interleaved and single-channel buffers ------------------------------------------------

/// Copies one channel to a mono buffer; works in place, with both pointers at the start of one buffer.
ZR_API HRESULT ZrAudio_ExtractChannel(void* dest, uint32_t channel, const void* source, const WAVEFORMATEX* format,
                                      int64_t frames) noexcept;
/// @copydoc ZrAudio_ExtractChannel(void*, uint32_t, const void*, const WAVEFORMATEX*, int64_t)
ZR_API HRESULT ZrAudio_ExtractChannel(void* dest, uint32_t channel, const void* source, const _zrwaveformat* format,
                                      int64_t frames) noexcept;
/// The same by type and channel count.
ZR_API HRESULT ZrAudio_ExtractChannel(void* dest, uint32_t channel, const void* source, uint32_t sampleType,
                                      uint32_t channels, int64_t frames) noexcept;

/// Copies two adjacent channels, `firstChannel` and the next, to a stereo buffer; works in place.
ZR_API HRESULT ZrAudio_ExtractChannelPair(void* dest, uint32_t firstChannel, const void* source,
                                          const WAVEFORMATEX* format, int64_t frames) noexcept;
/// @copydoc ZrAudio_ExtractChannelPair(void*, uint32_t, const void*, const WAVEFORMATEX*, int64_t)
ZR_API HRESULT ZrAudio_ExtractChannelPair(void* dest, uint32_t firstChannel, const void* source,
                                          const _zrwaveformat* format, int64_t frames) noexcept;

/// Copies a mono buffer into one channel of interleaved frames; the other channels stay.
ZR_API HRESULT ZrAudio_InsertChannel(void* dest, uint32_t sampleType, uint32_t destChannels, uint32_t channel,
                                     const void* source, int64_t frames) noexcept;

/// Writes one channel of the source to every channel of the destination; works in place.
/// @return E_NOTIMPL for unlike types.
ZR_API HRESULT ZrAudio_CopyChannelToAll(void* dest, const void* source, const WAVEFORMATEX* sourceFormat,
                                        const WAVEFORMATEX* destFormat, uint32_t channel, int64_t frames) noexcept;
/// @copydoc ZrAudio_CopyChannelToAll(void*, const void*, const WAVEFORMATEX*, const WAVEFORMATEX*, uint32_t, int64_t)
ZR_API HRESULT ZrAudio_CopyChannelToAll(void* dest, const void* source, const _zrwaveformat* sourceFormat,
                                        const _zrwaveformat* destFormat, uint32_t channel, int64_t frames) noexcept;

/// Copies one channel into its block of a multi-mono layout, one call a channel.
/// @param dest the first sample of the channel's block. @param destChannels samples from one sample of the
/// block to the next: 1 for blocks that stand one behind the other.
/// @return E_INVALIDARG for an unknown type, a channel number out of range or `destChannels` 0.
ZR_API HRESULT ZrAudio_CopyChannelToMultiMono2(void* dest, uint32_t destChannels, const void* source,
                                               uint32_t sourceChannels, uint32_t channel, int64_t frames,
                                               uint32_t sampleType) noexcept;
/// The same by formats, `destFormat` giving the distance. @return also E_INVALIDARG for unlike types.
ZR_API HRESULT ZrAudio_CopyChannelToMultiMono(void* dest, const WAVEFORMATEX* destFormat, const void* source,
                                              const WAVEFORMATEX* sourceFormat, uint32_t channel,
                                              int64_t frames) noexcept;
/// @copydoc ZrAudio_CopyChannelToMultiMono(void*, const WAVEFORMATEX*, const void*, const WAVEFORMATEX*, uint32_t,
/// int64_t)
ZR_API HRESULT ZrAudio_CopyChannelToMultiMono(void* dest, const _zrwaveformat* destFormat, const void* source,
                                              const _zrwaveformat* sourceFormat, uint32_t channel,
                                              int64_t frames) noexcept;

// ---- Changes of the channel count ------------------------------------------------------------------

/// Changes the channel count within one type; works in place. Many channels to one: their sum, saturating.
/// One to many: the sample in each channel. Equal counts: ZrAudio_Copy.
/// @return E_FAIL for any other pair of counts: speaker positions are the mixer's business.
ZR_API HRESULT ZrAudio_ChannelChange(void* dest, uint32_t destChannels, const void* source,
                                     const WAVEFORMATEX* sourceFormat, int64_t frames) noexcept;
/// @copydoc ZrAudio_ChannelChange(void*, uint32_t, const void*, const WAVEFORMATEX*, int64_t)
ZR_API HRESULT ZrAudio_ChannelChange(void* dest, uint32_t destChannels, const void* source,
                                     const _zrwaveformat* sourceFormat, int64_t frames) noexcept;
/// The same, many channels to one giving their mean, rounded as any conversion is: to nearest, ties to even.
ZR_API HRESULT ZrAudio_ChannelChangeAvg(void* dest, uint32_t destChannels, const void* source,
                                        const WAVEFORMATEX* sourceFormat, int64_t frames) noexcept;
/// @copydoc ZrAudio_ChannelChangeAvg(void*, uint32_t, const void*, const WAVEFORMATEX*, int64_t)
ZR_API HRESULT ZrAudio_ChannelChangeAvg(void* dest, uint32_t destChannels, const void* source,
                                        const _zrwaveformat* sourceFormat, int64_t frames) noexcept;

/// Puts the mean of a frame into each of its channels; works in place. Integer types divide whole numbers, so
/// the mean is rounded towards zero. Mono: ZrAudio_Copy.
ZR_API HRESULT ZrAudio_MonoChannel(void* dest, const void* source, const WAVEFORMATEX* format, int64_t frames) noexcept;
/// @copydoc ZrAudio_MonoChannel(void*, const void*, const WAVEFORMATEX*, int64_t)
ZR_API HRESULT ZrAudio_MonoChannel(void* dest, const void* source, const _zrwaveformat* format,
                                   int64_t frames) noexcept;

// ---- Order -----------------------------------------------------------------------------------------

/// Copies with conversion and gain, then reverses the order of the destination's frames; channels keep their
/// places. The same buffer with the same type at gain 1.0 is reversed in place.
/// @return E_NOTIMPL for a pair of types without a copy function.
ZR_API HRESULT ZrAudio_Reverse(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                               const void* source, int64_t frames, float gain) noexcept;
/// @copydoc ZrAudio_Reverse(const WAVEFORMATEX*, void*, const WAVEFORMATEX*, const void*, int64_t, float)
ZR_API HRESULT ZrAudio_Reverse(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                               const void* source, int64_t frames, float gain) noexcept;
