// SPDX-License-Identifier: Apache-2.0
// The peak object: one media stream, its peak file, and a coarse copy of it in memory.
#pragma once

#include <atomic>

#include "media/peak/merge.h"
#include "media/peak/peak_file.h"
#include "media/peak/sample_feed.h"

namespace marlo::peak {

/// What a new object is given beside its media.
struct Wishes {
  const char16_t* temporaryFolder;  ///< Null: the system's.
  int32_t fileInterval;
  int32_t memoryInterval;
  uint32_t flags;
};

class AudioPeak final : public IZrAudioPeak {
 public:
  /// @param owned the object ends the reader.
  AudioPeak(CZrAudioPeakStreamReader* reader, bool owned, const Wishes& wishes) noexcept;
  AudioPeak(const AudioPeak&) = delete;
  AudioPeak& operator=(const AudioPeak&) = delete;

  HRESULT QueryInterface(REFIID iid, void** object) override;
  uint32_t AddRef() override;
  uint32_t Release() override;

  int32_t IsPeakFileValid() override;
  HRESULT GetPeakFileName(char16_t* buffer, uint32_t characters) override;
  HRESULT BuildPeaks(uint32_t flags, IZrAudioPeakProgress* progress) override;
  HRESULT UpdatePeaks(const void* buffer, int64_t start, int64_t count, uint32_t sampleType) override;
  HRESULT SetPeakLength(int64_t samples) override;
  HRESULT PrepareAccess(uint32_t reserved) override;
  HRESULT GetStreamReader(CZrAudioPeakStreamReader** reader) override;
  HRESULT GetPeakHeader(void* buffer, uint32_t bytes) override;
  HRESULT SetKeepOpen(int32_t keep, int32_t openNow) override;
  HRESULT GetPeakInfo(uint32_t* sampleType, int32_t* interval, uint32_t* peakType, int32_t* memoryInterval,
                      uint32_t* memoryPeakType) override;
  HRESULT ReadPeaks16(int64_t first, int64_t count, void* buffer, int32_t columns, int32_t* columnsRead) override;
  HRESULT ReadPeaks(int64_t first, int64_t count, uint32_t type, void* buffer, int32_t columns,
                    int32_t* columnsRead) override;
  HRESULT ReadPeaksAligned(int64_t first, int32_t samplesPerColumn, uint32_t type, void* buffer, int32_t columns,
                           int32_t* columnsRead) override;
  HRESULT ReadSamples(int64_t first, uint32_t sampleType, void* buffer, uint32_t frames, uint32_t* framesRead) override;
  HRESULT Reserved17() override;
  HRESULT Flush() override;

  /// Takes the peak file along to the media's new name.
  HRESULT HandleMediaRename(const char16_t* mediaPath) noexcept;

  /// The open peak file, for tests that make it fail.
  plat::File* Handle() const noexcept { return file_.handle; }
  /// Reads by seeks, as where a file can't be mapped.
  void SetMapView(bool map) noexcept { mapView_ = map; }

 private:
  enum class Source { kMemory, kFile, kSamples };

  /// Columns asked for, and where they go.
  struct ColumnRequest {
    int64_t first;
    int64_t count;
    uint32_t type;
    void* buffer;
    int32_t columns;
    int32_t* columnsRead;
  };

  /// The part of a peak that UpdatePeaks left begun, in the peak's own type.
  struct Begun {
    uint32_t peakType = 0;
    uint32_t channels = 0;
    int64_t position = -1;  ///< Frame at which it ends; negative for none.
    uint8_t pairs[sizeof(MergedPeak)] = {};
  };

  /// Closes the file behind an operation when it isn't to stay open.
  class Session {
   public:
    explicit Session(AudioPeak& peak) noexcept : peak_(peak) {}
    ~Session() {
      if (!peak_.keepOpen_) peak_.file_.Close();
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

   private:
    AudioPeak& peak_;
  };

  ~AudioPeak();

  bool IsMemoryInstance() const noexcept { return (flags_ & ZRAUDIOPEAK_MEMORY) != 0; }
  uint32_t Channels() const noexcept { return reader_->GetFormat()->nChannels; }
  /// The peak file is open; its header may still be anything.
  bool OpenFile() noexcept;
  /// The peak file is open and can be read by.
  bool OpenUsableFile() noexcept { return OpenFile() && file_.IsUsable(Channels()); }
  bool IsValid() noexcept;

  HRESULT FindName() noexcept;
  HRESULT FindTemporaryName(char16_t* name) noexcept;
  /// The media's last-write time; false when it can't be told.
  bool MediaTimes(uint32_t* local, uint32_t* utc) noexcept;
  HRESULT UpdateHeader() noexcept;

  void ResetHeader(uint32_t flags) noexcept;
  HRESULT CreateFile() noexcept;
  HRESULT BuildFile(uint32_t flags, IZrAudioPeakProgress* progress) noexcept;
  HRESULT BuildFrom(SampleFeed& feed, uint32_t flags, IZrAudioPeakProgress* progress) noexcept;
  void RemoveFile() noexcept;

  HRESULT MakeMemoryCopy(bool rebuild) noexcept;
  void DropMemoryCopy() noexcept;

  /// One peak of `count` frames of the media, in the file's peak type. @return false when they can't be read.
  bool ReadPair(int64_t first, int64_t count, uint8_t* pairs) noexcept;
  HRESULT UpdateEntries(const void* buffer, int64_t start, int64_t count, uint32_t sampleType) noexcept;

  Source ChooseSource(int64_t samplesPerColumn) noexcept;
  HRESULT ReadFrom(Source source, const ColumnRequest& request) noexcept;
  HRESULT ReadFromMemory(const ColumnRequest& request) noexcept;
  HRESULT ReadFromFile(const ColumnRequest& request) noexcept;
  HRESULT ReadFromSamples(const ColumnRequest& request) noexcept;
  HRESULT ReadColumnsOfSamples(SampleFeed& feed, const ColumnRequest& request) noexcept;
  HRESULT ReadConverted(int64_t first, uint32_t sampleType, void* buffer, uint32_t frames,
                        uint32_t* framesRead) noexcept;

  std::atomic<uint32_t> references_{1};
  CZrAudioPeakStreamReader* const reader_;
  const bool ownsReader_;
  const uint32_t flags_;
  const int32_t wishedInterval_;
  const int32_t wishedMemoryInterval_;
  char16_t temporaryFolder_[kPathCharacters] = {};

  PeakFile file_;
  bool temporary_;  ///< The peak file goes with the object.
  bool keepOpen_ = true;
  bool mapView_ = true;
  bool samplesOnly_ = false;  ///< A cancelled build leaves fine views to the samples.

  int16_t* memory_ = nullptr;  ///< Pairs of 16 bits.
  int64_t memoryEntries_ = 0;
  int64_t memoryInterval_ = 0;

  Begun begun_;
};

}  // namespace marlo::peak
