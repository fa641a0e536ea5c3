// SPDX-License-Identifier: Apache-2.0
// libsamplerate's linear and fastest sinc converters.
#include <samplerate.h>

#include "resample/stream.h"

namespace bench {
namespace {

template <int kConverter>
class Samplerate final : public StreamResampler {
 public:
  Samplerate(int srcRate, int dstRate) : ratio_(static_cast<double>(dstRate) / srcRate), room_(2 * 8192) {
    int error = 0;
    state_ = src_new(kConverter, 2, &error);
  }
  ~Samplerate() override { src_delete(state_); }
  void Convert(const float* source, int frames, std::vector<float>* out) override {
    SRC_DATA data = {};
    data.data_in = source;
    data.input_frames = frames;
    data.data_out = room_.data();
    data.output_frames = static_cast<long>(room_.size() / 2);
    data.src_ratio = ratio_;
    src_process(state_, &data);
    out->insert(out->end(), room_.begin(), room_.begin() + 2 * data.output_frames_gen);
  }

 private:
  SRC_STATE* state_ = nullptr;
  double ratio_;
  std::vector<float> room_;
};

template <int kConverter>
std::unique_ptr<StreamResampler> Make(int srcRate, int dstRate) {
  return std::make_unique<Samplerate<kConverter>>(srcRate, dstRate);
}

}  // namespace

void AddSampleratePeers(std::vector<NamedResampler>* peers) {
  peers->push_back({"libsamplerate, linear", Make<SRC_LINEAR>});
  peers->push_back({"libsamplerate, fastest sinc", Make<SRC_SINC_FASTEST>});
}

}  // namespace bench
