// SPDX-License-Identifier: Apache-2.0
// libsndfile on the question of reading a wave file to float.
#include "media/peers.h"

#ifdef MARLO_BENCH_SNDFILE
#include <sndfile.h>

#include <memory>
#endif

namespace bench_media {

#ifdef MARLO_BENCH_SNDFILE
std::function<void()> SndfileRead(const std::string& path) {
  return [path] {
    SF_INFO info = {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    std::vector<float> block((256 << 10) / sizeof(float));
    const auto frames = static_cast<sf_count_t>(block.size()) / info.channels;
    while (sf_readf_float(file, block.data(), frames) > 0) {
    }
    sf_close(file);
  };
}
#else
std::function<void()> SndfileRead(const std::string&) { return {}; }
#endif

}  // namespace bench_media
