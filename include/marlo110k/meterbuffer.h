// SPDX-License-Identifier: Apache-2.0
// Levels on their way from the thread that pushes audio towards an output to the one that draws the meters: each slice
// of audio is stamped with the position at which it ends and waits until that position is heard.
//
// Two rings of fixed size, one of peaks and one of power, between one writer and one reader; neither waits, locks or
// allocates. A full ring drops what comes. Positions count frames; levels are fractions of full scale. All arrays have
// an entry for each channel of the format, at most 8.
// One thread writes ([render thread]: WritePeaks, WritePower, Reset, Trim) while another reads; ResetPower and
// TrimPower are for either. SetFormat and the end only while no other call runs.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"
#include "marlo110k/waveformat.h"

/// Channels that a meter buffer has room for.
inline constexpr uint32_t kZrMeterChannels = 8;
/// Records that a ring may have.
inline constexpr uint32_t kZrMeterMaxRecords = 1024;

/// What ReadPower gives.
enum ZRMETERPOWER : uint32_t {
  ZRMETERPOWER_MEAN = 0,  ///< The mean of the magnitudes.
  ZRMETERPOWER_RMS = 1,   ///< The root of the mean of the squares; a new buffer's type.
};

/// The stretch of audio that ReadPower measures, and the slices it is cut into.
enum ZRMETERWINDOW : uint32_t {
  ZRMETERWINDOW_300MS = 0,  ///< 300 ms in slices of 512 frames; a new buffer's mode, and that of all other values.
  ZRMETERWINDOW_5MS = 1,    ///< 5 ms in two slices.
  ZRMETERWINDOW_10MS = 2,   ///< 10 ms in two slices.
};

/// The side that draws. Slots in this order.
class CZRPeakBufferReader {
 public:
  /// The largest levels since the last call, up to a position. Without new records the last levels stay.
  /// @param peaks, clipped zeroed first; a channel is clipped when one of its slices is.
  /// @return S_FALSE when the buffer has no format.
  virtual HRESULT ReadPeaks(int64_t position, float* peaks, uint32_t* clipped) = 0;
  /// The same at a time in units of 100 ns.
  virtual HRESULT ReadPeaksAtTime(int64_t time, float* peaks, uint32_t* clipped) = 0;
  /// Copies the format. @return E_UNEXPECTED when there is none.
  virtual HRESULT GetFormat(_zrwaveformat* format) = 0;
  /// Slot 3. Ends the buffer; with bit 0 of `flags` also frees it. @return the object, null when it is freed.
  virtual void* DeleteSelf(uint32_t flags) = 0;
  /// The power of the window that ends at a position. A negative position stands for all that has been written. With
  /// less than a window of audio the last values stay.
  /// @return S_FALSE, with `values` as they were, when there is no format or a new mode waits for the next write.
  virtual HRESULT ReadPower(int64_t position, float* values) = 0;
  /// The same at a time in units of 100 ns; a negative one stands for position -1.
  virtual HRESULT ReadPowerAtTime(int64_t time, float* values) = 0;
  /// Empties the power ring and zeroes the last values.
  virtual HRESULT ResetPower() = 0;
  /// Takes effect at the next WritePower. @param type ZRMETERPOWER. @param window ZRMETERWINDOW.
  virtual HRESULT SetPowerMode(uint32_t type, uint32_t window) = 0;
  /// Drops the newest records, as far as they end behind a position: after a seek backwards.
  virtual HRESULT TrimPower(int64_t position) = 0;
  /// As WritePeaks, for the power ring; only float formats are measured.
  virtual HRESULT WritePower(int64_t position, const void* data, int64_t frames, uint32_t reserved, int32_t reverse,
                             int32_t resetMark, int32_t silent) = 0;

 protected:
  ~CZRPeakBufferReader() = default;
};

/// The side that pushes audio. Slots in this order.
class CZRPeakBufferWriter {
 public:
  /// Empties the peak ring and zeroes the last levels.
  virtual HRESULT Reset() = 0;
  /// Takes another format; the rings stay. @return E_INVALIDARG for null and for more than 8 channels.
  virtual HRESULT SetFormat(const _zrwaveformat* format) = 0;
  /// Drops the newest records, as far as they end behind a position: after a seek backwards.
  virtual HRESULT Trim(int64_t position) = 0;
  /// Measures a block, slice by slice. @param position of its first frame. @param sliceScale factor on the slices'
  /// length; 0 for none. @param reverse the audio runs backwards: slices are cut from the block's end.
  /// @param resetMark the position has jumped: what was written before isn't shown any more. @param silent `data`
  /// isn't looked at, its levels are 0. @param immediate the levels are shown at once, and the ring is emptied.
  /// @return S_FALSE when the buffer has no format.
  virtual HRESULT WritePeaks(int64_t position, const void* data, int64_t frames, double sliceScale, int32_t reverse,
                             int32_t resetMark, int32_t silent, int32_t immediate) = 0;

 protected:
  ~CZRPeakBufferWriter() = default;
};

/// Both sides; who gets the object draws, and asks for the other side by name.
class CZRPeakBuffer : public CZRPeakBufferReader, protected CZRPeakBufferWriter {
 public:
  /// The side for the thread that pushes audio.
  CZRPeakBufferWriter* Writer() noexcept { return this; }

 protected:
  ~CZRPeakBuffer() = default;
};

/// Makes a buffer; `DeleteSelf(1)` frees it.
/// @param format null: SetFormat gives one later. @param records of each ring.
/// @return E_INVALIDARG for more than 1024 records or more than 8 channels; E_OUTOFMEMORY. `buffer` is null then; it
/// must not be null itself.
ZR_API HRESULT ZRCreateMemoryListPeakBuffer(CZRPeakBuffer** buffer, const _zrwaveformat* format,
                                            uint32_t records) noexcept;
