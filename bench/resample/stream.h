// SPDX-License-Identifier: Apache-2.0
// A resampler that turns a stereo float stream from one rate into another, block by block.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace bench {

/// One contender: converts 44,100 to 48,000 frames a second or back, 1,024 frames a call.
class StreamResampler {
 public:
  virtual ~StreamResampler() = default;
  /// Appends the next block's output.
  virtual void Convert(const float* source, int frames, std::vector<float>* out) = 0;
};

using MakeResampler = std::unique_ptr<StreamResampler> (*)(int srcRate, int dstRate);

struct NamedResampler {
  std::string name;
  MakeResampler make;
};

std::vector<NamedResampler> OurResamplers();
void AddSampleratePeers(std::vector<NamedResampler>* peers);
void AddZitaPeers(std::vector<NamedResampler>* peers);
void AddSoxrPeers(std::vector<NamedResampler>* peers);
void AddSpeexPeers(std::vector<NamedResampler>* peers);
void AddSwresamplePeers(std::vector<NamedResampler>* peers);

}  // namespace bench
