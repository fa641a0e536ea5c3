// SPDX-License-Identifier: Apache-2.0
// zita-resampler's variable resampler, which reads an interpolated table as ours does.
#include <zita-resampler/vresampler.h>

#include "resample/stream.h"

namespace bench {
namespace {

class Zita final : public StreamResampler {
 public:
  Zita(int srcRate, int dstRate) : room_(2 * 8192) { resampler_.setup(static_cast<double>(dstRate) / srcRate, 2, 24); }
  void Convert(const float* source, int frames, std::vector<float>* out) override {
    resampler_.inp_count = static_cast<unsigned>(frames);
    resampler_.inp_data = const_cast<float*>(source);
    resampler_.out_count = static_cast<unsigned>(room_.size() / 2);
    resampler_.out_data = room_.data();
    resampler_.process();
    const size_t made = room_.size() / 2 - resampler_.out_count;
    out->insert(out->end(), room_.begin(), room_.begin() + static_cast<ptrdiff_t>(2 * made));
  }

 private:
  VResampler resampler_;
  std::vector<float> room_;
};

}  // namespace

void AddZitaPeers(std::vector<NamedResampler>* peers) {
  peers->push_back({"zita variable, half length 24", [](int srcRate, int dstRate) -> std::unique_ptr<StreamResampler> {
                      return std::make_unique<Zita>(srcRate, dstRate);
                    }});
}

}  // namespace bench
