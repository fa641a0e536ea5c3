// SPDX-License-Identifier: Apache-2.0
// libswresample as a converter of sample formats.
#include "samples/peers.h"

#ifdef MARLO_BENCH_SWRESAMPLE
extern "C" {
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include <memory>

namespace bench_samples {
namespace {

Work Convert(AVSampleFormat to, void* dest, AVSampleFormat from, const void* source, int samples) {
  AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
  SwrContext* raw = nullptr;
  if (swr_alloc_set_opts2(&raw, &stereo, to, 48000, &stereo, from, 48000, 0, nullptr) < 0 || swr_init(raw) < 0) {
    return {};
  }
  const std::shared_ptr<SwrContext> context(raw, [](SwrContext* c) { swr_free(&c); });
  return [context, dest, source, samples] {
    uint8_t* out[1] = {static_cast<uint8_t*>(dest)};
    const uint8_t* in[1] = {static_cast<const uint8_t*>(source)};
    swr_convert(context.get(), out, samples / 2, in, samples / 2);
  };
}

}  // namespace

Work SwrFloatFromPcm16(float* dest, const int16_t* source, int samples) {
  return Convert(AV_SAMPLE_FMT_FLT, dest, AV_SAMPLE_FMT_S16, source, samples);
}
Work SwrPcm16FromFloat(int16_t* dest, const float* source, int samples) {
  return Convert(AV_SAMPLE_FMT_S16, dest, AV_SAMPLE_FMT_FLT, source, samples);
}

}  // namespace bench_samples
#else
namespace bench_samples {
Work SwrFloatFromPcm16(float*, const int16_t*, int) { return {}; }
Work SwrPcm16FromFloat(int16_t*, const float*, int) { return {}; }
}  // namespace bench_samples
#endif
