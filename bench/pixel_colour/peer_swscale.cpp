// SPDX-License-Identifier: Apache-2.0
// swscale with a BT.709 matrix. Its chroma is one pixel's rather than a mean, which shows as error over noise.

#include "pixel_colour/job.h"

#ifdef MARLO_BENCH_SWSCALE
extern "C" {
#include <libswscale/swscale.h>
}
#include <memory>
#endif

namespace bench {

#ifdef MARLO_BENCH_SWSCALE
namespace {

AVPixelFormat FormatOf(Layout layout) {
  if (layout == Layout::kBgra) return AV_PIX_FMT_BGRA;
  return layout == Layout::kUyvy ? AV_PIX_FMT_UYVY422 : AV_PIX_FMT_YUV420P;
}

/// Planes and row lengths of a picture.
struct Planes {
  uint8_t* rows[4] = {};
  int strides[4] = {};
  Planes(Layout layout, uint8_t* bits, int width, int64_t pixels) {
    rows[0] = bits;
    strides[0] = layout == Layout::kBgra ? width * 4 : layout == Layout::kUyvy ? width * 2 : width;
    if (layout != Layout::kI420) return;
    rows[1] = bits + pixels;
    rows[2] = bits + pixels * 5 / 4;
    strides[1] = strides[2] = width / 2;
  }
};

}  // namespace
#endif

void AddSwscale(Question* question, const Job& job, std::vector<uint8_t>* dst) {
#ifdef MARLO_BENCH_SWSCALE
  dst->resize(Bytes(job.to, job.Pixels()));
  const std::shared_ptr<SwsContext> context(
      sws_getContext(job.width, job.height, FormatOf(job.from), job.width, job.height, FormatOf(job.to), SWS_POINT,
                     nullptr, nullptr, nullptr),
      sws_freeContext);
  if (!context) return question->Absent("swscale (no context)");
  const int* const table = sws_getCoefficients(SWS_CS_ITU709);
  const int srcFull = job.from == Layout::kBgra, dstFull = job.to == Layout::kBgra;
  sws_setColorspaceDetails(context.get(), table, srcFull, table, dstFull, 0, 1 << 16, 1 << 16);
  const auto run = [&job, dst, context] {
    const Planes from(job.from, const_cast<uint8_t*>(job.src.data()), job.width, job.Pixels());
    const Planes to(job.to, dst->data(), job.width, job.Pixels());
    sws_scale(context.get(), from.rows, from.strides, 0, job.height, to.rows, to.strides);
  };
  run();
  question->Peer({"swscale", run, static_cast<double>(job.Pixels()), MaxError(job, Levels::kFull, *dst)});
#else
  (void)job;
  (void)dst;
  question->Absent("swscale");
#endif
}

}  // namespace bench
