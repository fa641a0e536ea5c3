// SPDX-License-Identifier: Apache-2.0
// speexdsp's resampler at quality 3.
#include <speex/speex_resampler.h>

#include "resample/stream.h"

namespace bench {
namespace {

class Speex final : public StreamResampler {
 public:
  Speex(int srcRate, int dstRate) : room_(2 * 8192) {
    int error = 0;
    state_ = speex_resampler_init(2, static_cast<spx_uint32_t>(srcRate), static_cast<spx_uint32_t>(dstRate), 3, &error);
  }
  ~Speex() override { speex_resampler_destroy(state_); }
  void Convert(const float* source, int frames, std::vector<float>* out) override {
    auto taken = static_cast<spx_uint32_t>(frames);
    auto made = static_cast<spx_uint32_t>(room_.size() / 2);
    speex_resampler_process_interleaved_float(state_, source, &taken, room_.data(), &made);
    out->insert(out->end(), room_.begin(), room_.begin() + static_cast<ptrdiff_t>(2 * made));
  }

 private:
  SpeexResamplerState* state_ = nullptr;
  std::vector<float> room_;
};

}  // namespace

void AddSpeexPeers(std::vector<NamedResampler>* peers) {
  peers->push_back({"speexdsp, quality 3", [](int srcRate, int dstRate) -> std::unique_ptr<StreamResampler> {
                      return std::make_unique<Speex>(srcRate, dstRate);
                    }});
}

}  // namespace bench
