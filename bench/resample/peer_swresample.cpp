// SPDX-License-Identifier: Apache-2.0
// swresample at its default quality.
extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

#include "resample/stream.h"

namespace bench {
namespace {

class Swresample final : public StreamResampler {
 public:
  Swresample(int srcRate, int dstRate) : room_(2 * 8192), context_(swr_alloc()) {
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    swr_alloc_set_opts2(&context_, &stereo, AV_SAMPLE_FMT_FLT, dstRate, &stereo, AV_SAMPLE_FMT_FLT, srcRate, 0,
                        nullptr);
    swr_init(context_);
  }
  ~Swresample() override { swr_free(&context_); }
  void Convert(const float* source, int frames, std::vector<float>* out) override {
    auto* destination = reinterpret_cast<uint8_t*>(room_.data());
    const auto* bytes = reinterpret_cast<const uint8_t*>(source);
    const int made = swr_convert(context_, &destination, static_cast<int>(room_.size() / 2), &bytes, frames);
    out->insert(out->end(), room_.begin(), room_.begin() + ptrdiff_t{2} * made);
  }

 private:
  std::vector<float> room_;
  SwrContext* context_;
};

}  // namespace

void AddSwresamplePeers(std::vector<NamedResampler>* peers) {
  peers->push_back({"swresample, default", [](int srcRate, int dstRate) -> std::unique_ptr<StreamResampler> {
                      return std::make_unique<Swresample>(srcRate, dstRate);
                    }});
}

}  // namespace bench
