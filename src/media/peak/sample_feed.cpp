// SPDX-License-Identifier: Apache-2.0
// Reads blocks, fills gaps with silence and converts in place.
#include "media/peak/sample_feed.h"

#include <algorithm>

#include "marlo110k/channels.h"
#include "marlo110k/waveformat.h"

namespace marlo::peak {
namespace {

/// A reader's word for samples that are missing at this place only.
constexpr HRESULT kSamplesMissing = ZrCode(0x800A0026);
constexpr int64_t kMostReadAhead = 0x10000000;

uint32_t TypeForKernel(uint32_t peakType, uint32_t sampleType) noexcept {
  const uint32_t twin = LittleEndianTwin(sampleType);
  return VisitRule(KernelRules{}, twin, [](auto) {}) ? twin : NamedPeakType(peakType);
}

}  // namespace

uint32_t SampleBytes(uint32_t sampleType) noexcept {
  uint32_t bytes = 0;
  VisitRule(MemoryRules{}, sampleType, [&bytes](auto rule) { bytes = decltype(rule)::kBytes; });
  return bytes;
}

bool SampleRoute::Find(uint32_t peakType, uint32_t sampleType) noexcept {
  kernelType = TypeForKernel(peakType, sampleType);
  kernel = ZrAudioPeak_GetMinMaxFunction(peakType, kernelType);
  convert = kernelType == sampleType ? nullptr : ZrAudio_GetCopyFunction2(kernelType, sampleType);
  sampleBytes = SampleBytes(sampleType);
  kernelBytes = SampleBytes(kernelType);
  return kernel != nullptr && sampleBytes != 0 && (kernelType == sampleType || convert != nullptr);
}

void SampleRoute::Complete(void* dest, int64_t destIndex, const void* behind, int64_t* phase, uint32_t channels,
                           tZRAUDIOPEAK_SAMPLESMINMAX* running) const noexcept {
  const void* last = static_cast<const uint8_t*>(behind) - size_t{channels} * kernelBytes;
  int64_t frames = 1;
  kernel(dest, destIndex, *phase + kFramePhase, &last, &frames, phase, channels, running);
}

HRESULT SampleFeed::Begin(CZrAudioPeakStreamReader* reader, uint32_t peakType) noexcept {
  const WAVEFORMATEX* format = reader->GetFormat();
  reader_ = reader;
  channels_ = format->nChannels;
  frameBytes_ = format->nBlockAlign;
  if (channels_ == 0 || channels_ > kZrAudioPeakMaxChannels) return E_FAIL;
  if (!route_.Find(peakType, ZrAudio_GetSampleType(format))) return ZR_E_UNSUPPORTED_MEDIA;
  // A frame of any other length would lead the conversion out of the block.
  return frameBytes_ == route_.sampleBytes * channels_ ? S_OK : ZR_E_UNSUPPORTED_MEDIA;
}

HRESULT SampleFeed::Read(int64_t position, int64_t left, void* block, int64_t frames, int64_t* framesRead) noexcept {
  *framesRead = 0;
  const auto wanted = static_cast<uint32_t>(std::min(frames, BlockFrames()));
  uint32_t got = 0;
  const HRESULT result =
      reader_->Read(position, static_cast<uint32_t>(std::min(left, kMostReadAhead)), block, wanted, &got);
  got = std::min(got, wanted);
  if (result == S_FALSE || result == kSamplesMissing || (SUCCEEDED(result) && got == 0)) {
    ZrAudio_FillSilence(reader_->GetFormat(), static_cast<uint8_t*>(block) + size_t{got} * frameBytes_, wanted - got);
    got = wanted;
  } else if (FAILED(result)) {
    return result;
  }
  if (route_.convert != nullptr) route_.convert(block, block, int64_t{got} * channels_, 1.0f);
  *framesRead = got;
  return S_OK;
}

}  // namespace marlo::peak
