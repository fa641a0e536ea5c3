// SPDX-License-Identifier: Apache-2.0
// Peak files: the smallest and the largest sample of every few hundred, kept beside a media file for waveform displays.
//
// A display draws hours of audio in a few hundred columns without reading the audio. A peak object takes each read
// from the cheapest source that is fine enough: a coarse copy in memory, the peak file, or the samples. It starts no
// thread: BuildPeaks runs on the caller's.
//
// Positions and lengths count sample frames. A peak is a pair for each channel in order, the smallest value and then
// the largest. Peak types are sample types: ZRSAMPLETYPE_PCM16 (0 means the same), ZRSAMPLETYPE_FLOAT32 and
// ZRSAMPLETYPE_PCM8SIGNED. A sample that is not a number counts as 0.
// Objects: one thread at a time; only the reference count is for any thread. Functions: any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/unknown.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/export.h"

inline constexpr GUID IID_IZrAudioPeak = {0x36AB925F, 0x079A, 0x11D2, {0x8F, 0x84, 0x00, 0x00, 0xB4, 0x52, 0x9B, 0x0E}};

/// How a peak object treats its file.
enum ZRAUDIOPEAK_CREATE : uint32_t {
  ZRAUDIOPEAK_READONLY = 0x00000001,    ///< The peak file is opened for reading only.
  ZRAUDIOPEAK_TEMPORARY = 0x00000002,   ///< It is a temporary file that goes with the object.
  ZRAUDIOPEAK_EXISTING = 0x00000004,    ///< One beside the media is used, otherwise a temporary one; what is built
                                        ///< goes with the object. Ignored beside ZRAUDIOPEAK_TEMPORARY.
  ZRAUDIOPEAK_SHAREWRITE = 0x00000010,  ///< With READONLY: others may write to it meanwhile.
  ZRAUDIOPEAK_HIDDEN = 0x00000020,      ///< It is created hidden where the system has such an attribute.
  ZRAUDIOPEAK_MEMORY = 0x80000000,      ///< There is no peak file: the audio lies in memory.
};

/// What BuildPeaks does.
enum ZRAUDIOPEAK_BUILD : uint32_t {
  ZRAUDIOPEAK_16BIT = 0x00000001,        ///< 16-bit peaks; otherwise 8-bit.
  ZRAUDIOPEAK_SAMPLES = 0x00000002,      ///< Progress counts frames; otherwise 1/10000 of the length.
  ZRAUDIOPEAK_KEEPPART = 0x00000004,     ///< On cancel what was built stays, as a shorter file.
  ZRAUDIOPEAK_REPLACE8BIT = 0x20000000,  ///< With 16BIT: an existing 8-bit file is replaced.
  ZRAUDIOPEAK_SAMPLESONLY = 0x40000000,  ///< On cancel later reads of this object go to the samples.
  ZRAUDIOPEAK_REBUILD = 0x80000000,      ///< An existing file doesn't count.
};

/// The most channels of a min-max array, and so of what is built or read from samples.
inline constexpr uint32_t kZrAudioPeakMaxChannels = 32;
/// Frames a peak may span.
inline constexpr int32_t kZrAudioPeakMinInterval = 64;
/// The same.
inline constexpr int32_t kZrAudioPeakMaxInterval = 0x1000000;

/// The running smallest and largest value of every channel: pairs in the width of the sample type, packed.
struct tZRAUDIOPEAK_SAMPLESMINMAX {
  alignas(8) uint8_t pairs[kZrAudioPeakMaxChannels * 2 * 8];  ///< Room for 32 channels of 64 bits.
};
static_assert(sizeof(tZRAUDIOPEAK_SAMPLESMINMAX) == 512);

/// The first 64 bytes of a peak file. The peaks begin at `headerSize`, without a gap: one for each begun interval.
#pragma pack(push, 1)
struct tZRAUDIOPEAK_HEADER {
  uint8_t magic[4];         ///< "ZRPK".
  uint32_t version;         ///< 1 is written, 0 and 1 are read.
  uint32_t headerSize;      ///< 64 is written; 64 and more are read.
  uint32_t mediaTimeLocal;  ///< Last-write time of the media: DOS time in the high half, DOS date in the low one.
  uint32_t bits;            ///< Of one value: 8 or 16, signed.
  uint32_t channels;        ///< Of the media.
  uint32_t interval;        ///< Frames a peak, 64 to 0x1000000.
  int64_t samples;          ///< Frames covered.
  uint32_t mediaTimeUtc;    ///< As mediaTimeLocal, in UTC; 0 in files that lack it.
  uint8_t reserved[24];     ///< Zero.
};
#pragma pack(pop)
static_assert(sizeof(tZRAUDIOPEAK_HEADER) == 64);
static_assert(offsetof(tZRAUDIOPEAK_HEADER, samples) == 28 && offsetof(tZRAUDIOPEAK_HEADER, mediaTimeUtc) == 36);

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

/// What a caller may pass to BuildPeaks to follow and to stop it.
class IZrAudioPeakProgress {
 public:
  /// Slot 0, not called here.
  virtual void* DeleteSelf(uint32_t flags) = 0;
  /// The build begins. @param range what Step counts up to. @return 0 to cancel.
  virtual int32_t Begin(const char16_t* name, int64_t range) = 0;
  /// @return 0 to cancel.
  virtual int32_t Step(int64_t position) = 0;
  /// The build has ended, also after a cancel. @param result its code.
  virtual void End(HRESULT result) = 0;

 protected:
  ~IZrAudioPeakProgress() = default;
};

/// A peak object.
struct IZrAudioPeak : IUnknown {
  /// 1 when the peak file fits its media: header, last-write time, channels and length; else 0. Without a file: when
  /// the memory copy is there.
  virtual int32_t IsPeakFileValid() = 0;
  /// The path of the peak file. @param buffer may be null. @param characters of the buffer; a longer path is cut and
  /// gives ZR_E_BUFFER_TOO_SMALL. @return E_FAIL when there is none.
  virtual HRESULT GetPeakFileName(char16_t* buffer, uint32_t characters) = 0;
  /// Builds the peak file and then the memory copy. A file that is valid stays and gives ZR_S_PEAKS_VALID.
  /// @param flags ZRAUDIOPEAK_BUILD. @param progress may be null.
  /// @return ZR_E_CANCELLED; E_INVALIDARG when the memory copy would need more than 0x20000 entries, with the file
  /// built all the same; other failures leave no peak file.
  virtual HRESULT BuildPeaks(uint32_t flags, IZrAudioPeakProgress* progress) = 0;
  /// Brings the file up to date for samples that were just written at `start`. The memory copy is dropped.
  /// @param sampleType of `buffer`; 0: the media's. @return E_UNEXPECTED without a usable file.
  virtual HRESULT UpdatePeaks(const void* buffer, int64_t start, int64_t count, uint32_t sampleType) = 0;
  /// Cuts the file to the peaks of so many frames. @return E_FAIL for a read-only object and one without a file.
  virtual HRESULT SetPeakLength(int64_t samples) = 0;
  /// Does nothing. @return S_OK.
  virtual HRESULT PrepareAccess(uint32_t reserved) = 0;
  /// The reader in use; it stays the object's.
  virtual HRESULT GetStreamReader(CZrAudioPeakStreamReader** reader) = 0;
  /// Clears the buffer and copies what fits of the 64 bytes.
  virtual HRESULT GetPeakHeader(void* buffer, uint32_t bytes) = 0;
  /// Whether the peak file stays open between calls (the start) or not. @param openNow opens it at once, even when it
  /// isn't kept; ZR_E_FILE_OPEN when that fails.
  virtual HRESULT SetKeepOpen(int32_t keep, int32_t openNow) = 0;
  /// Facts of the object, each optional: the media's sample type, the file's interval and peak type, the memory copy's
  /// interval and peak type (both 0 when there is none).
  virtual HRESULT GetPeakInfo(uint32_t* sampleType, int32_t* interval, uint32_t* peakType, int32_t* memoryInterval,
                              uint32_t* memoryPeakType) = 0;
  /// ReadPeaks in 16 bits.
  virtual HRESULT ReadPeaks16(int64_t first, int64_t count, void* buffer, int32_t columns, int32_t* columnsRead) = 0;
  /// Peaks of `count` frames in `columns` columns of equal length. With fewer frames than columns each frame is a
  /// column. @param type a peak type; any other is E_UNEXPECTED. @param buffer columns times channels pairs.
  /// @param columnsRead what came, optional: fewer at the end of the media.
  virtual HRESULT ReadPeaks(int64_t first, int64_t count, uint32_t type, void* buffer, int32_t columns,
                            int32_t* columnsRead) = 0;
  /// The same with a length for each column; the start moves down to a multiple of it, so that a display that scrolls
  /// shows the same columns again. From the memory copy the start stays as it is.
  virtual HRESULT ReadPeaksAligned(int64_t first, int32_t samplesPerColumn, uint32_t type, void* buffer,
                                   int32_t columns, int32_t* columnsRead) = 0;
  /// Samples in any sample type that the media's converts to. @param framesRead optional.
  virtual HRESULT ReadSamples(int64_t first, uint32_t sampleType, void* buffer, uint32_t frames,
                              uint32_t* framesRead) = 0;
  /// Reserved. @return E_NOTIMPL.
  virtual HRESULT Reserved17() = 0;
  /// Writes the header when the media's time has changed, so that the file counts as valid again; also for a read-only
  /// object.
  virtual HRESULT Flush() = 0;

 protected:
  ~IZrAudioPeak() = default;
};

// ---- Objects -----------------------------------------------------------------------------------------

/// Makes a peak object for a media file; Release ends it, and a temporary peak file with it.
/// @param reader null: one for uncompressed Wave, Wave64 and AIFF files is made and owned. A reader that is passed
/// stays the caller's and must outlive the object.
/// @param mediaPath the media for the own reader; unused when one is passed.
/// @param temporaryFolder null: the system's.
/// @param fileInterval frames a peak; outside 64 to 0x1000000 it becomes 256.
/// @param memoryInterval the same for the memory copy, then 2048, and never finer than the file's; negative: no copy.
/// @param flags ZRAUDIOPEAK_CREATE.
/// @return S_OK with a valid peak file, S_FALSE when BuildPeaks is needed; ZR_E_FILE_OPEN when the media can't be read,
/// with null in `peak`. @param peak must not be null.
ZR_API HRESULT ZrAudioPeak_CreateInstance(IZrAudioPeak** peak, CZrAudioPeakStreamReader* reader,
                                          const char16_t* mediaPath, const char16_t* temporaryFolder,
                                          int32_t fileInterval, int32_t memoryInterval, uint32_t flags) noexcept;
/// The same for samples in memory, which aren't copied. It has no file; BuildPeaks makes the memory copy.
/// @param format an 18-byte head. @param interval outside 64 to 0x1000000 it becomes 256.
ZR_API HRESULT ZrAudioPeak_CreateMemoryInstance(IZrAudioPeak** peak, CZrAudioPeakStreamReader* reader,
                                                const WAVEFORMATEX* format, const void* data, int64_t samples,
                                                int32_t interval, uint32_t flags) noexcept;
/// The media has been renamed by the caller: takes its peak file along.
/// @return the reader's failure; ZR_E_FILE_WRITE when the peak file can't be moved, which then keeps its name.
ZR_API HRESULT ZrAudioPeak_HandleMediaRename(IZrAudioPeak* peak, const char16_t* mediaPath) noexcept;

/// Makes a reader for an uncompressed Wave, Wave64 or AIFF file. A file that can't be read gives a reader with a format
/// tag of 0; null only when memory is short.
ZR_API CZrAudioPeakStreamReader* ZrAudio_CreateWaveFileStreamReader(const char16_t* path) noexcept;
/// Ends it; null does nothing.
ZR_API void ZrAudio_DestroyWaveFileStreamReader(CZrAudioPeakStreamReader* reader) noexcept;

// ---- Kernels -----------------------------------------------------------------------------------------

/// Widens the running pairs frame by frame until a peak is complete or the frames are used up. Each frame adds 16384
/// to the phase; when that reaches `step` the pairs are stored as peak `destIndex`, step is taken off, and the next
/// peak begins with the frame just used, so that neighbouring peaks share a frame and a drawn curve has no gaps.
/// @param source, frames, phase move on. @param channels 1 to 32; any other count uses the frames up.
/// @return 1 when a peak was stored, 0 when the frames ran out first.
using ZRAUDIOPEAKMINMAXFUNCTION = int32_t (*)(void* dest, int64_t destIndex, int64_t step, const void** source,
                                              int64_t* frames, int64_t* phase, uint32_t channels,
                                              tZRAUDIOPEAK_SAMPLESMINMAX* running) noexcept;
/// As ZrAudioPeak_Resample without the peak type.
using ZRAUDIOPEAKRESAMPLEFUNCTION = HRESULT (*)(void* dest, int64_t a, int64_t b, int64_t phase, const void* source,
                                                int64_t sourceEntries, uint32_t channels) noexcept;

/// Fills the array so that any sample replaces it. An unknown type, a channel count outside 1 to 32
/// or a null array is no work.
ZR_API void ZrAudioPeak_InitMinMaxArray(uint32_t sampleType, uint32_t channels,
                                        tZRAUDIOPEAK_SAMPLESMINMAX* array) noexcept;
/// Fills the array from pairs of another type. @param sourceType PCM16, PCM32, FLOAT32 or PCM8SIGNED, else
/// E_INVALIDARG, as for a channel count outside 1 to 32 and null pointers.
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
