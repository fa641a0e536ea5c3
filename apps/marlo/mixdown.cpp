// SPDX-License-Identifier: Apache-2.0
// Sums tracks through the library's mix kernels.
#include "mixdown.h"

#include <algorithm>
#include <string>

#include "errors.h"
#include "marlo110k/levels.h"
#include "marlo110k/samples.h"
#include "numbers.h"

namespace host {
namespace {

// Files that stay open between blocks; with more inputs each is opened again for its blocks.
constexpr size_t kMostOpenFiles = 128;

const AudioReader& Widest(std::span<const std::unique_ptr<AudioReader>> readers) {
  return **std::max_element(readers.begin(), readers.end(), [](const auto& left, const auto& right) {
    return left->Format().channels < right->Format().channels;
  });
}

}  // namespace

Mixdown::Mixdown(std::span<const MixInput> inputs) {
  std::vector<std::unique_ptr<AudioReader>> readers;
  for (const MixInput& input : inputs) {
    readers.push_back(std::make_unique<AudioReader>(input.path));
    readers.back()->Suspend();
  }
  const AudioReader& first = *readers.front();
  const AudioReader& widest = Widest(readers);
  for (const auto& reader : readers) {
    if (reader->Format().samplesPerSec != first.Format().samplesPerSec) {
      throw Failure(ZR_E_UNSUPPORTED_MEDIA, reader->Path(),
                    "The file has " + std::to_string(reader->Format().samplesPerSec) + " Hz and " + first.Path() +
                        " has " + std::to_string(first.Format().samplesPerSec) + " Hz; a mix has one rate.");
    }
    if (reader->Format().channels != 1 && reader->Format().channels != widest.Format().channels) {
      throw Failure(ZR_E_UNSUPPORTED_MEDIA, reader->Path(),
                    "The file has " + std::to_string(reader->Format().channels) + " channels and " + widest.Path() +
                        " has " + std::to_string(widest.Format().channels) +
                        "; beside mono all inputs of a mix have as many.");
    }
  }
  sum_ = MakeFormat(first.Format().samplesPerSec, ZRSAMPLETYPE_FLOAT64, widest.Format().channels,
                    widest.Format().channelMask);
  for (size_t index = 0; index < readers.size(); ++index) {
    const int64_t start = FramesFromSeconds(inputs[index].startSeconds, sum_.samplesPerSec);
    if (readers[index]->Frames() > INT64_MAX / sum_.blockAlign - start) {
      throw Failure(ZR_E_FILE_TOO_LARGE, readers[index]->Path());
    }
    frames_ = std::max(frames_, start + readers[index]->Frames());
    tracks_.push_back({std::move(readers[index]), start, inputs[index].gain});
  }
  block_.resize(size_t{BlockFrames(sum_.channels)} * sum_.channels);
}

const double* Mixdown::Render(uint32_t* frames) {
  *frames = static_cast<uint32_t>(std::min<int64_t>(BlockFrames(sum_.channels), frames_ - position_));
  std::fill(block_.begin(), block_.end(), 0.0);
  for (Track& track : tracks_) Add(track, position_, *frames);
  position_ += *frames;

  std::vector<tZRAUDIOPEAK> peaks(sum_.channels);
  if (*frames != 0) Check(ZrAudio_FindPeaks(&sum_, 1, block_.data(), *frames, peaks.data()), "");
  for (const tZRAUDIOPEAK& peak : peaks) peak_ = std::max<double>(peak_, peak.peak);
  return block_.data();
}

void Mixdown::Add(Track& track, int64_t blockStart, uint32_t frames) {
  AudioReader& reader = *track.reader;
  const int64_t begin = std::max(track.startFrame, blockStart);
  const int64_t end = std::min(track.startFrame + reader.Frames(), blockStart + frames);
  if (begin >= end) return;
  const auto count = static_cast<uint32_t>(end - begin);
  const _zrwaveformat* format = &reader.Format();
  source_.resize(size_t{count} * format->blockAlign);
  reader.Read(source_.data(), count);
  if (tracks_.size() > kMostOpenFiles || reader.FramesLeft() == 0) reader.Suspend();

  const void* samples = source_.data();
  // Big-endian samples have no mix kernels; as doubles they are the same numbers.
  _zrwaveformat doubles;
  if (!ZrAudio_GetMixFunction2(ZRSAMPLETYPE_FLOAT64, format->sampleType)) {
    doubles = MakeFormat(sum_.samplesPerSec, ZRSAMPLETYPE_FLOAT64, format->channels, 0);
    widened_.resize(size_t{count} * format->channels);
    Check(ZrAudio_Copy(&doubles, widened_.data(), format, samples, count, 1.0f), reader.Path());
    samples = widened_.data();
    format = &doubles;
  }
  double* place = block_.data() + (begin - blockStart) * sum_.channels;
  if (format->channels == sum_.channels) {
    const std::vector<double> gains(sum_.channels, track.gain);
    Check(ZrAudio_Mix(&sum_, place, format, samples, count, gains.data()), reader.Path());
    return;
  }
  for (int32_t channel = 0; channel < sum_.channels; ++channel) {
    Check(ZrAudio_MixChannels(&sum_, place, format, samples, count, &channel, &track.gain), reader.Path());
  }
}

}  // namespace host
