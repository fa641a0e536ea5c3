// SPDX-License-Identifier: Apache-2.0
// Peak files: the smallest and the largest sample of every few hundred, for waveform displays.
//
// The kernels that make them, and the readers that give the samples. Peak files themselves aren't built yet.
//
// Positions and lengths count sample frames. A peak is a pair for each channel in order, the smallest value and then
// the largest. Peak types are sample types: ZRSAMPLETYPE_PCM16 (0 means the same), ZRSAMPLETYPE_FLOAT32 and
// ZRSAMPLETYPE_PCM8SIGNED. A sample that is not a number counts as 0.
// A reader serves one thread at a time; the functions are for any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/export.h"

/// The most channels of a min-max array, and so of what is built or read from samples.
inline constexpr uint32_t kZrAudioPeakMaxChannels = 32;
/// The running smallest and largest value of every channel: pairs in the width of the sample type, packed.
struct tZRAUDIOPEAK_SAMPLESMINMAX {
  alignas(8) uint8_t pairs[kZrAudioPeakMaxChannels * 2 * 8];  ///< Room for 32 channels of 64 bits.
};
static_assert(sizeof(tZRAUDIOPEAK_SAMPLESMINMAX) == 512);

/// Where the samples come from. Slots in this order; a caller may bring its own.
class CZrAudioPeakStreamReader {
 public:
  /// Slot 0. Ends the reader; with bit 0 of `flags` also frees it. @return the object, null when it is freed.
  virtual void* DeleteSelf(uint32_t flags) = 0;
  /// Makes reads possible. @return S_OK or ZR_E_FILE_OPEN.
  virtual HRESULT Open() = 0;
  /// Reads up to `frames` whole frames at a position, in the stream's own format.
  /// @param limit frames that may be wanted from here on, for a reader that reads ahead.
  /// @param framesRead what came; 0 with success at and behind the end. A build takes 0x800A0026 and S_FALSE like the
  /// end: the block is filled with silence, and it goes on.
  virtual HRESULT Read(int64_t position, uint32_t limit, void* buffer, uint32_t frames, uint32_t* framesRead) = 0;
  /// The same in another format. @return E_NOTIMPL when the reader can't convert.
  virtual HRESULT ReadAs(int64_t /*position*/, uint32_t /*limit*/, void* /*buffer*/, uint32_t /*frames*/,
                         uint32_t* /*framesRead*/, const WAVEFORMATEX* /*format*/) {
    return E_NOTIMPL;
  }
  /// Ends reads.
  virtual void Close() = 0;
  /// The stream's format, an 18-byte head; a tag of 0 means no stream. It stays the same as long as the reader lives.
  virtual const WAVEFORMATEX* GetFormat() = 0;
  /// -1 for a file of one stream, else the number of the stream.
  virtual int32_t GetStreamIndex() = 0;
  /// Length in frames.
  virtual int64_t GetLength() = 0;
  /// The name of the media, with its whole path when `fullPath` is set: that also decides the peak file's name and
  /// whose time counts. @param characters of the buffer; a longer name is cut.
  virtual HRESULT GetName(char16_t* buffer, uint32_t characters, int32_t fullPath) = 0;
  /// Tells that the media has a new path. @return E_NOTIMPL here.
  virtual HRESULT Rename(const char16_t* /*path*/) { return E_NOTIMPL; }

 protected:
  ~CZrAudioPeakStreamReader() = default;
};

/// Makes a reader for an uncompressed Wave, Wave64 or AIFF file. A file that can't be read gives a reader with a format
/// tag of 0; null only when memory is short.
ZR_API CZrAudioPeakStreamReader* ZrAudio_CreateWaveFileStreamReader(const char16_t* path) noexcept;
/// Ends it; null does nothing.
ZR_API void ZrAudio_DestroyWaveFileStreamReader(CZrAudioPeakStreamReader* reader) noexcept;

// ---- Kernels -----------------------------------------------------------------------------------------

/// Widens the running pairs frame by frame until a peak is complete or the frames are used up. Each frame adds 16384
/// to the phase; when that reaches `step` the pairs are stored as peak `destIndex`, step is taken off, and the next
/// peak begins with the frame just used, so that neighbouring peaks share a frame and a drawn curve has no gaps.
/// @param source, frames, phase move on. @param channels 1 to 32.
/// @return 1 when a peak was stored, 0 when the frames ran out first.
using ZRAUDIOPEAKMINMAXFUNCTION = int32_t (*)(void* dest, int64_t destIndex, int64_t step, const void** source,
                                              int64_t* frames, int64_t* phase, uint32_t channels,
                                              tZRAUDIOPEAK_SAMPLESMINMAX* running) noexcept;
/// As ZrAudioPeak_Resample without the peak type.
using ZRAUDIOPEAKRESAMPLEFUNCTION = HRESULT (*)(void* dest, int64_t a, int64_t b, int64_t phase, const void* source,
                                                int64_t sourceEntries, uint32_t channels) noexcept;

/// Fills the array so that any sample replaces it. An unknown type, no channels or a null array is no work.
ZR_API void ZrAudioPeak_InitMinMaxArray(uint32_t sampleType, uint32_t channels,
                                        tZRAUDIOPEAK_SAMPLESMINMAX* array) noexcept;
/// Fills the array from pairs of another type. @param sourceType PCM16, PCM32, FLOAT32 or PCM8SIGNED, else
/// E_INVALIDARG.
ZR_API HRESULT ZrAudioPeak_PrimeMinMaxArray(uint32_t destType, uint32_t channels, tZRAUDIOPEAK_SAMPLESMINMAX* array,
                                            uint32_t sourceType, const void* sourcePairs) noexcept;
/// The kernel from samples to peaks: sample types PCM8, PCM16, PCM24, PCM32, FLOAT32, FLOAT64 and PCM8SIGNED; null for
/// any other and for an unknown peak type. 8-bit peaks of wider integers are their high bytes; of float samples they
/// are rounded.
ZR_API ZRAUDIOPEAKMINMAXFUNCTION ZrAudioPeak_GetMinMaxFunction(uint32_t peakType, uint32_t sampleType) noexcept;
/// Finds the kernel and calls it. @return 1 when there is none, otherwise what it gives.
ZR_API int32_t ZrAudioPeak_CalcMinMax(uint32_t sampleType, uint32_t peakType, void* dest, int64_t destIndex,
                                      int64_t step, const void** source, int64_t* frames, int64_t* phase,
                                      uint32_t channels, tZRAUDIOPEAK_SAMPLESMINMAX* running) noexcept;
/// The kernel from peaks to fewer peaks, for the peak types and PCM32. @param reserved anything but 0 gives null.
ZR_API ZRAUDIOPEAKRESAMPLEFUNCTION ZrAudioPeak_GetPeakResampleFunction(uint32_t peakType, uint32_t reserved) noexcept;
/// Merges `sourceEntries` peaks at the ratio a to b: a counter starts at a - phase, each source peak takes b off, and
/// when it is negative or the source ends a peak is stored and a is added. With a phase of 1 and sourceEntries equal to
/// a exactly b peaks come out.
/// @return E_UNEXPECTED when a is below b or b below 1; E_INVALIDARG for a type without a kernel.
ZR_API HRESULT ZrAudioPeak_Resample(uint32_t peakType, void* dest, int64_t a, int64_t b, int64_t phase,
                                    const void* source, int64_t sourceEntries, uint32_t channels) noexcept;
