// SPDX-License-Identifier: Apache-2.0
// From samples to peaks, and from peaks to fewer peaks: the kernels and their tables.
#include "media/peak/minmax.h"

#include <cstring>
#include <limits>

#include "audio/kernel_table.h"
#include "marlo110k/peak.h"
#include "marlo110k/samples.h"

namespace marlo::peak {
namespace {

/// What any value is below, and what any is above. The smallest 24-bit start is published with a low byte of zero.
template <class Rule>
constexpr typename Rule::Raw StartOfLow() noexcept {
  if constexpr (!Rule::kInteger) {
    return std::numeric_limits<typename Rule::Raw>::max();
  } else {
    return Rule::kBits == 24 ? 0x7FFF00 : Rule::kRawHigh;
  }
}

template <class Rule>
constexpr typename Rule::Raw StartOfHigh() noexcept {
  if constexpr (!Rule::kInteger) {
    return std::numeric_limits<typename Rule::Raw>::lowest();
  } else {
    return Rule::kRawLow;
  }
}

/// The running pairs have room for so many channels.
bool FitsArray(uint32_t channels) noexcept { return channels >= 1 && channels <= kZrAudioPeakMaxChannels; }

template <class Peak, class Rule, WidenFunction kWiden>
int32_t MinMax(void* dest, int64_t destIndex, int64_t step, const void** source, int64_t* frames, int64_t* phase,
               uint32_t channels, tZRAUDIOPEAK_SAMPLESMINMAX* running) noexcept {
  if (!FitsArray(channels)) {
    *frames = 0;
    return 0;
  }
  const auto* samples = static_cast<const uint8_t*>(*source);
  const size_t frameBytes = size_t{channels} * Rule::kBytes;
  // The frame that brings the phase up to the step is the last one of the peak; a peak has one frame at least.
  const int64_t missing = std::max<int64_t>((step - *phase + (kFramePhase - 1)) >> kPhaseBits, 1);
  const int64_t used = std::min(missing, *frames);
  kWiden(samples, used, channels, running->pairs);
  *phase += used * kFramePhase;
  *frames -= used;
  samples += static_cast<size_t>(used) * frameBytes;
  *source = samples;
  if (used < missing) return 0;

  auto* to = static_cast<uint8_t*>(dest) + static_cast<size_t>(destIndex) * channels * 2 * Peak::kBytes;
  const uint8_t* last = samples - frameBytes;
  for (uint32_t channel = 0; channel < channels; ++channel) {
    uint8_t* pair = running->pairs + size_t{channel} * 2 * Rule::kBytes;
    Peak::Write(to, ConvertValue<Peak, Rule>(Rule::Read(pair)));
    Peak::Write(to + Peak::kBytes, ConvertValue<Peak, Rule>(Rule::Read(pair + Rule::kBytes)));
    const auto seed = Comparable<Rule>(last + size_t{channel} * Rule::kBytes);
    Rule::Write(pair, seed);
    Rule::Write(pair + Rule::kBytes, seed);
    to += 2 * Peak::kBytes;
  }
  *phase -= step;
  return 1;
}

template <class Rule>
HRESULT Resample(void* dest, int64_t a, int64_t b, int64_t phase, const void* source, int64_t sourceEntries,
                 uint32_t channels) noexcept {
  if (b < 1 || a < b) return E_UNEXPECTED;
  const auto* from = static_cast<const uint8_t*>(source);
  auto* to = static_cast<uint8_t*>(dest);
  const size_t entryBytes = size_t{channels} * 2 * Rule::kBytes;
  int64_t counter = a - phase;
  bool begun = false;
  for (int64_t entry = 0; entry < sourceEntries; ++entry, from += entryBytes) {
    if (!begun) {
      std::memcpy(to, from, entryBytes);
      begun = true;
    } else {
      for (uint32_t channel = 0; channel < channels; ++channel) {
        const size_t at = size_t{channel} * 2 * Rule::kBytes;
        WidenPair<Rule>(to + at, Rule::Read(from + at), Rule::Read(from + at + Rule::kBytes));
      }
    }
    counter -= b;
    if (counter >= 0) continue;
    counter += a;
    to += entryBytes;
    begun = false;
  }
  return S_OK;
}

/// Calls visit(Peak{}, Rule{}) for a pair of types. @return false when there is no such pair.
template <class Visit>
bool VisitPair(uint32_t peakType, uint32_t sampleType, Visit&& visit) noexcept {
  return VisitRule(PeakRules{}, NamedPeakType(peakType),
                   [&](auto peak) { VisitRule(KernelRules{}, sampleType, [&](auto rule) { visit(peak, rule); }); });
}

}  // namespace

uint32_t LittleEndianTwin(uint32_t sampleType) noexcept {
  switch (sampleType) {
    case ZRSAMPLETYPE_PCM16BE:
      return ZRSAMPLETYPE_PCM16;
    case ZRSAMPLETYPE_PCM24BE:
      return ZRSAMPLETYPE_PCM24;
    case ZRSAMPLETYPE_PCM32BE:
      return ZRSAMPLETYPE_PCM32;
    default:
      return sampleType;
  }
}

}  // namespace marlo::peak

using namespace marlo;
using namespace marlo::peak;

void ZrAudioPeak_InitMinMaxArray(uint32_t sampleType, uint32_t channels, tZRAUDIOPEAK_SAMPLESMINMAX* array) noexcept {
  if (array == nullptr || !FitsArray(channels)) return;
  VisitRule(KernelRules{}, LittleEndianTwin(sampleType), [&](auto rule) {
    using Rule = decltype(rule);
    for (uint32_t channel = 0; channel < channels; ++channel) {
      Rule::Write(array->pairs + size_t{2} * channel * Rule::kBytes, StartOfLow<Rule>());
      Rule::Write(array->pairs + (size_t{2} * channel + 1) * Rule::kBytes, StartOfHigh<Rule>());
    }
  });
}

HRESULT ZrAudioPeak_PrimeMinMaxArray(uint32_t destType, uint32_t channels, tZRAUDIOPEAK_SAMPLESMINMAX* array,
                                     uint32_t sourceType, const void* sourcePairs) noexcept {
  using PrimeRules = RuleList<Pcm16Rule, Pcm32Rule, Float32Rule, Pcm8SignedRule>;
  size_t sourceBytes = 0;
  if (!VisitRule(PrimeRules{}, sourceType, [&](auto rule) { sourceBytes = decltype(rule)::kBytes; }) ||
      array == nullptr || sourcePairs == nullptr || !FitsArray(channels)) {
    return E_INVALIDARG;
  }
  const int64_t values = int64_t{2} * channels;
  if (destType == sourceType) {
    std::memcpy(array->pairs, sourcePairs, static_cast<size_t>(values) * sourceBytes);
    return S_OK;
  }
  const ZRAUDIOCOPYFUNCTION copy = ZrAudio_GetCopyFunction2(LittleEndianTwin(destType), sourceType);
  if (copy == nullptr) return E_INVALIDARG;
  copy(array->pairs, sourcePairs, values, 1.0f);
  return S_OK;
}

ZRAUDIOPEAKMINMAXFUNCTION ZrAudioPeak_GetMinMaxFunction(uint32_t peakType, uint32_t sampleType) noexcept {
  ZRAUDIOPEAKMINMAXFUNCTION function = nullptr;
  const bool fast = IsAvx2Allowed();
  VisitPair(peakType, sampleType, [&](auto peak, auto rule) {
    using Peak = decltype(peak);
    using Rule = decltype(rule);
    function = fast ? MinMax<Peak, Rule, WidenAvx2<Rule>> : MinMax<Peak, Rule, WidenPlain<Rule>>;
  });
  return function;
}

int32_t ZrAudioPeak_CalcMinMax(uint32_t sampleType, uint32_t peakType, void* dest, int64_t destIndex, int64_t step,
                               const void** source, int64_t* frames, int64_t* phase, uint32_t channels,
                               tZRAUDIOPEAK_SAMPLESMINMAX* running) noexcept {
  const ZRAUDIOPEAKMINMAXFUNCTION function = ZrAudioPeak_GetMinMaxFunction(peakType, sampleType);
  return function == nullptr ? 1 : function(dest, destIndex, step, source, frames, phase, channels, running);
}

ZRAUDIOPEAKRESAMPLEFUNCTION ZrAudioPeak_GetPeakResampleFunction(uint32_t peakType, uint32_t reserved) noexcept {
  using ResampleRules = RuleList<Pcm16Rule, Pcm32Rule, Float32Rule, Pcm8SignedRule>;
  ZRAUDIOPEAKRESAMPLEFUNCTION function = nullptr;
  if (reserved != 0) return nullptr;
  VisitRule(ResampleRules{}, NamedPeakType(peakType), [&](auto rule) { function = peak::Resample<decltype(rule)>; });
  return function;
}

HRESULT ZrAudioPeak_Resample(uint32_t peakType, void* dest, int64_t a, int64_t b, int64_t phase, const void* source,
                             int64_t sourceEntries, uint32_t channels) noexcept {
  const ZRAUDIOPEAKRESAMPLEFUNCTION function = ZrAudioPeak_GetPeakResampleFunction(peakType, 0);
  return function == nullptr ? E_INVALIDARG : function(dest, a, b, phase, source, sourceEntries, channels);
}
