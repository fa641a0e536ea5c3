// SPDX-License-Identifier: Apache-2.0
// How fast is a peak file built, and how fast are views of an hour read?
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "harness/harness.h"
#include "marlo110k/peak.h"
#include "marlo110k/waveformat.h"
#include "peaks/peers.h"

namespace {

using bench::Question;
using bench::Use;

constexpr uint32_t kRate = 48000;
constexpr uint32_t kFrameBytes = 4;
constexpr int32_t kColumns = 1000;

/// A stereo 16-bit Wave file in the temporary folder, with its peak file, gone with the object.
class Sound {
 public:
  /// Noise for so many seconds, or an hour of silence that takes no room for 0.
  explicit Sound(uint32_t seconds) {
    const char* folder = std::getenv("MARLO_TEMP_DIR");
    path_ = std::string(folder != nullptr ? folder : "/tmp") + "/marlo-bench-" + std::to_string(seconds) + ".wav";
    frames_ = int64_t{seconds == 0 ? 3600 : seconds} * kRate;
    std::ofstream file(path_, std::ios::binary);
    const auto word = [&file](uint32_t value, int bytes) {
      for (int byte = 0; byte < bytes; ++byte) file.put(static_cast<char>(value >> (8 * byte)));
    };
    const auto dataBytes = static_cast<uint32_t>(frames_ * kFrameBytes);
    file << "RIFF";
    word(36 + dataBytes, 4);
    file << "WAVEfmt ";
    word(16, 4);
    word(2 << 16 | 1, 4);
    word(kRate, 4);
    word(kRate * kFrameBytes, 4);
    word(16 << 16 | kFrameBytes, 4);
    file << "data";
    word(dataBytes, 4);
    std::mt19937 random(11);
    std::vector<uint32_t> block(kRate);
    for (uint32_t second = 0; second < seconds; ++second) {
      for (uint32_t& frame : block) frame = static_cast<uint32_t>(random());
      file.write(reinterpret_cast<const char*>(block.data()), static_cast<std::streamsize>(block.size() * kFrameBytes));
    }
    file.close();
    std::filesystem::resize_file(path_, 44 + dataBytes);
  }
  ~Sound() {
    peak_->Release();
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
    std::filesystem::remove(std::filesystem::path(path_).replace_extension(".zrk"), ignored);
  }
  Sound(const Sound&) = delete;
  Sound& operator=(const Sound&) = delete;

  const std::string& Path() const { return path_; }
  int64_t Frames() const { return frames_; }
  IZrAudioPeak* Peak() {
    if (peak_ == nullptr) {
      ZrAudioPeak_CreateInstance(&peak_, nullptr, std::u16string(path_.begin(), path_.end()).c_str(), nullptr, 256, -1,
                                 0);
    }
    return peak_;
  }

 private:
  std::string path_;
  int64_t frames_;
  IZrAudioPeak* peak_ = nullptr;
};

bool AskBuild() {
  Sound sound(60);
  IZrAudioPeak* peak = sound.Peak();
  const auto units = static_cast<double>(sound.Frames());
  Question question("Peak file of a minute of stereo PCM16", "frames");
  question.Ours({"BuildPeaks", [peak] { peak->BuildPeaks(ZRAUDIOPEAK_16BIT | ZRAUDIOPEAK_REBUILD, nullptr); }, units});
#ifdef MARLO_BENCH_SNDFILE
  question.Peer({"sndfile's maximum scan",
                 [&sound] {
                   const double largest = bench_peaks::SndfilePeak(sound.Path());
                   Use(&largest);
                 },
                 units});
  question.Goal(0, 30, 40);
#else
  question.Absent("libsndfile");
#endif
  return question.Print();
}

bool AskViews() {
  Sound sound(0);
  IZrAudioPeak* peak = sound.Peak();
  peak->BuildPeaks(ZRAUDIOPEAK_16BIT, nullptr);
  std::vector<float> columns(size_t{kColumns} * 2 * 2);
  bool met = true;
  const struct {
    const char* title;
    int64_t frames;
  } rows[] = {{"1,000 columns of an hour of stereo", sound.Frames()},
              {"1,000 columns of a minute", int64_t{60} * kRate},
              {"1,000 columns just finer than the peak file", kColumns * 255},
              {"1,000 columns of single frames", kColumns}};
  for (const auto& row : rows) {
    Question question(row.title, "views");
    question.Ours({"ReadPeaks",
                   [&, frames = row.frames] {
                     peak->ReadPeaks((sound.Frames() - frames) / 2, frames, ZRSAMPLETYPE_FLOAT32, columns.data(),
                                     kColumns, nullptr);
                     Use(columns.data());
                   },
                   1});
    question.Goal(-1, 1000);
    met = question.Print() && met;
  }
  return met;
}

}  // namespace

int main() {
  const bool built = AskBuild();
  return AskViews() && built ? 0 : 1;
}
