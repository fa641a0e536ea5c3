// SPDX-License-Identifier: Apache-2.0
// Makes peak objects for files and for samples in memory.
#include <new>

#include "media/peak/audio_peak.h"

namespace marlo::peak {
namespace {

/// Makes the object over a reader and looks at its peak file.
HRESULT Create(IZrAudioPeak** peak, CZrAudioPeakStreamReader* reader, CZrAudioPeakStreamReader* made,
               const Wishes& wishes) noexcept {
  *peak = nullptr;
  if (reader == nullptr) reader = made;
  if (reader == nullptr) return E_OUTOFMEMORY;
  HRESULT result = reader->GetFormat()->wFormatTag == 0 ? ZR_E_FILE_OPEN : S_OK;
  if (SUCCEEDED(result)) {
    *peak = new (std::nothrow) AudioPeak(reader, made != nullptr, wishes);
    if (*peak == nullptr) result = E_OUTOFMEMORY;
  }
  if (FAILED(result)) {
    if (made != nullptr) made->DeleteSelf(1);
    return result;
  }
  return (*peak)->IsPeakFileValid() != 0 ? S_OK : S_FALSE;
}

}  // namespace
}  // namespace marlo::peak

using namespace marlo::peak;

HRESULT ZrAudioPeak_CreateInstance(IZrAudioPeak** peak, CZrAudioPeakStreamReader* reader, const char16_t* mediaPath,
                                   const char16_t* temporaryFolder, int32_t fileInterval, int32_t memoryInterval,
                                   uint32_t flags) noexcept {
  if (peak == nullptr) return E_POINTER;
  if ((flags & ZRAUDIOPEAK_TEMPORARY) != 0) flags &= ~ZRAUDIOPEAK_EXISTING;
  CZrAudioPeakStreamReader* made = reader == nullptr ? ZrAudio_CreateWaveFileStreamReader(mediaPath) : nullptr;
  return Create(peak, reader, made, {temporaryFolder, fileInterval, memoryInterval, flags & ~ZRAUDIOPEAK_MEMORY});
}

HRESULT ZrAudioPeak_CreateMemoryInstance(IZrAudioPeak** peak, CZrAudioPeakStreamReader* reader,
                                         const WAVEFORMATEX* format, const void* data, int64_t samples,
                                         int32_t interval, uint32_t flags) noexcept {
  if (peak == nullptr) return E_POINTER;
  CZrAudioPeakStreamReader* made =
      reader == nullptr ? new (std::nothrow) CZrAudioPeakWaveMemReader(format, data, samples) : nullptr;
  return Create(peak, reader, made, {nullptr, interval, interval, flags | ZRAUDIOPEAK_MEMORY});
}

HRESULT ZrAudioPeak_HandleMediaRename(IZrAudioPeak* peak, const char16_t* mediaPath) noexcept {
  return peak == nullptr ? E_POINTER : static_cast<AudioPeak*>(peak)->HandleMediaRename(mediaPath);
}
