// SPDX-License-Identifier: Apache-2.0
// A peak file of any bytes beside an honest medium: it is valid or not, reads stay inside it and their buffers, and a
// build makes a good one of it.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "marlo110k/peak.h"
#include "marlo110k/waveformat.h"
#include "media/peak/audio_peak.h"
#include "media_input.h"

using fuzzing::Require;

namespace {

constexpr int64_t kFrames = 1000;
constexpr int32_t kMostColumns = 64;
constexpr uint32_t kMostChannels = 2;

/// A folder of this process with a stereo file of 16-bit samples, and room for its peak file.
struct Media {
  std::string folder;
  std::string media;
  std::string peaks;

  Media() {
    char pattern[] = "/tmp/marlo-fuzz-XXXXXX";
    Require(mkdtemp(pattern) != nullptr, "a folder");
    folder = pattern;
    media = folder + "/a.wav";
    peaks = folder + "/a.zrk";
    std::vector<uint8_t> file(44 + kFrames * 4, 7);
    constexpr uint8_t kFront[44] = {'R', 'I', 'F', 'F', 0xC4, 0x0F, 0,   0,   'W', 'A',  'V',  'E',  'f', 'm', 't',
                                    ' ', 16,  0,   0,   0,    1,    0,   2,   0,   0x80, 0xBB, 0,    0,   0,   0xEE,
                                    2,   0,   4,   0,   16,   0,    'd', 'a', 't', 'a',  0xA0, 0x0F, 0,   0};
    std::copy(std::begin(kFront), std::end(kFront), file.begin());
    Write(media, file.data(), file.size());
  }
  ~Media() {
    unlink(media.c_str());
    unlink(peaks.c_str());
    rmdir(folder.c_str());
  }
  static void Write(const std::string& path, const uint8_t* data, size_t bytes) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    Require(file != nullptr && (bytes == 0 || std::fwrite(data, 1, bytes, file) == bytes), "an input file");
    std::fclose(file);
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  static const Media media;
  const uint32_t choice = fuzzing::TakeWord(data, &bytes);
  if (bytes > (1 << 16)) return 0;
  Media::Write(media.peaks, data, bytes);
  const std::u16string path(media.media.begin(), media.media.end());
  IZrAudioPeak* peak = nullptr;
  const HRESULT created = ZrAudioPeak_CreateInstance(&peak, nullptr, path.c_str(), nullptr, 100, 100, 0);
  Require(created == S_OK || created == S_FALSE, "a peak file is never an error");
  static_cast<marlo::peak::AudioPeak*>(peak)->SetMapView(choice % 2 == 0);
  const uint32_t types[] = {0, ZRSAMPLETYPE_PCM8SIGNED, ZRSAMPLETYPE_FLOAT32};
  const uint32_t type = types[choice / 2 % 3];
  const int32_t columns = static_cast<int32_t>(choice / 6 % kMostColumns) + 1;
  const int64_t first = choice / 512 % 1100;
  std::vector<float> buffer(static_cast<size_t>(columns) * kMostChannels * 2);
  int32_t read = -1;
  peak->ReadPeaks(first, choice / 4096 % (1 << 18), type, buffer.data(), columns, &read);
  Require(read >= 0 && read <= columns, "columns");
  peak->ReadPeaksAligned(first, static_cast<int32_t>(choice / 4096 % 5000) + 1, type, buffer.data(), columns, &read);
  Require(read >= 0 && read <= columns, "aligned columns");
  const int16_t update[40] = {};
  peak->UpdatePeaks(update, first, 20, 0);
  Require(SUCCEEDED(peak->BuildPeaks(choice % 5 == 0 ? ZRAUDIOPEAK_16BIT : 0u, nullptr)), "a build");
  Require(peak->IsPeakFileValid() == 1, "a good file in the end");
  peak->Release();
  return 0;
}
