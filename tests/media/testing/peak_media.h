// SPDX-License-Identifier: Apache-2.0
// Media for tests of peak objects: wave files whose samples every type can hold, and their peaks by a scan.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "marlo110k/peak.h"
#include "marlo110k/waveformat.h"
#include "media/testing/image.h"
#include "testing/random.h"
#include "testing/temp_folder.h"

namespace media_testing {

/// Interleaved values in steps of 1/128 of full scale.
using Steps = std::vector<int8_t>;

inline Steps RandomSteps(testing_support::Random& random, size_t values) {
  Steps steps(values);
  for (int8_t& step : steps) step = static_cast<int8_t>(random.Bits());
  return steps;
}

struct MediaType {
  const char* name;
  uint16_t tag;
  uint16_t bits;
};
inline constexpr MediaType kMediaTypes[] = {{"8", 1, 8},   {"16", 1, 16},    {"24", 1, 24},
                                            {"32", 1, 32}, {"float", 3, 32}, {"double", 3, 64}};

inline Image SamplesOf(const MediaType& type, const Steps& steps) {
  Image samples;
  for (const int8_t step : steps) {
    const float single = static_cast<float>(step) / 128;
    const double wide = step / 128.0;
    if (type.tag == 3 && type.bits == 32) {
      samples.Raw(&single, sizeof single);
    } else if (type.tag == 3) {
      samples.Raw(&wide, sizeof wide);
    } else if (type.bits == 8) {
      samples.Le(static_cast<uint64_t>(step + 128), 1);
    } else {
      samples.Le(static_cast<uint64_t>(static_cast<int64_t>(step)) << (type.bits - 8), type.bits / 8);
    }
  }
  return samples;
}

inline std::string WaveOf(const MediaType& type, uint16_t channels, const Steps& steps) {
  const Image format = Image().Format(type.tag, channels, 48000, type.bits);
  const Image chunks = Image().Chunk("fmt ", format).Chunk("data", SamplesOf(type, steps));
  const Image file = Image().Text("RIFF").U32(static_cast<uint32_t>(chunks.Size() + 4)).Text("WAVE").Add(chunks);
  return {reinterpret_cast<const char*>(file.Data()), file.Size()};
}

/// The smallest and the largest of frames begin..end - 1 of every channel, in steps.
inline void ScanInto(std::vector<int>& peaks, const Steps& steps, size_t channels, int64_t begin, int64_t end) {
  for (size_t channel = 0; channel < channels; ++channel) {
    int low = 127;
    int high = -128;
    for (int64_t frame = begin; frame < end; ++frame) {
      const int value = steps[static_cast<size_t>(frame) * channels + channel];
      low = std::min(low, value);
      high = std::max(high, value);
    }
    peaks.push_back(low);
    peaks.push_back(high);
  }
}

/// Peaks of frames spread over so many entries: each ends with the frame that reaches its share, in 1/16384 of a frame,
/// and begins with the last frame of the one before.
inline std::vector<int> ScanSpread(const Steps& steps, size_t channels, int64_t entries) {
  std::vector<int> peaks;
  const auto frames = static_cast<int64_t>(steps.size() / channels);
  const int64_t step = (frames * 16384 + entries / 2) / entries;
  int64_t begin = 0;
  for (int64_t entry = 0; entry < entries; ++entry) {
    const int64_t end = entry + 1 == entries ? frames : ((entry + 1) * step + 16383) / 16384;
    ScanInto(peaks, steps, channels, begin, end);
    begin = end - 1;
  }
  return peaks;
}

/// Values of a peak file behind its header, in steps.
inline std::vector<int> StoredSteps(const std::string& file) {
  std::vector<int> values;
  const bool wide = file.size() > 16 && file[16] == 16;
  for (size_t at = 64; at + (wide ? 1 : 0) < file.size(); at += wide ? 2 : 1) {
    // 16-bit values are whole steps: their low byte is 0.
    values.push_back(!wide || file[at] == 0 ? static_cast<int8_t>(file[at + (wide ? 1 : 0)]) : 9999);
  }
  return values;
}

struct ReleasePeak {
  void operator()(IZrAudioPeak* peak) const { peak->Release(); }
};
using Peak = std::unique_ptr<IZrAudioPeak, ReleasePeak>;

/// A peak object without a copy in memory unless an interval asks for one.
inline Peak OpenPeak(const std::u16string& media, int32_t interval, uint32_t flags = 0, int32_t memoryInterval = -1,
                     HRESULT* created = nullptr, const char16_t* temporaryFolder = nullptr) {
  IZrAudioPeak* peak = nullptr;
  const HRESULT result =
      ZrAudioPeak_CreateInstance(&peak, nullptr, media.c_str(), temporaryFolder, interval, memoryInterval, flags);
  if (created != nullptr) *created = result;
  return Peak(peak);
}

}  // namespace media_testing
