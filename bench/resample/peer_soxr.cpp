// SPDX-License-Identifier: Apache-2.0
// libsoxr at low and high quality, one thread.
#include <soxr.h>

#include "resample/stream.h"

namespace bench {
namespace {

template <unsigned long kRecipe>
class Soxr final : public StreamResampler {
 public:
  Soxr(int srcRate, int dstRate) : room_(2 * 8192) {
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(kRecipe, 0);
    const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
    state_ = soxr_create(srcRate, dstRate, 2, nullptr, &io, &quality, &runtime);
  }
  ~Soxr() override { soxr_delete(state_); }
  void Convert(const float* source, int frames, std::vector<float>* out) override {
    size_t made = 0;
    soxr_process(state_, source, static_cast<size_t>(frames), nullptr, room_.data(), room_.size() / 2, &made);
    out->insert(out->end(), room_.begin(), room_.begin() + static_cast<ptrdiff_t>(2 * made));
  }

 private:
  soxr_t state_ = nullptr;
  std::vector<float> room_;
};

template <unsigned long kRecipe>
std::unique_ptr<StreamResampler> Make(int srcRate, int dstRate) {
  return std::make_unique<Soxr<kRecipe>>(srcRate, dstRate);
}

}  // namespace

void AddSoxrPeers(std::vector<NamedResampler>* peers) {
  peers->push_back({"soxr, low quality", Make<SOXR_LQ>});
  peers->push_back({"soxr, high quality", Make<SOXR_HQ>});
}

}  // namespace bench
