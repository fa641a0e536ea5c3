// SPDX-License-Identifier: Apache-2.0
// libyuv with its BT.709 matrix where it has one; its encoders know BT.601 only, so no error is given for them.

#include "pixel_colour/job.h"

#ifdef MARLO_BENCH_LIBYUV
#include <libyuv/convert_argb.h>
#include <libyuv/convert_from_argb.h>
#endif

namespace bench {

void AddLibyuv(Question* question, const Job& job, std::vector<uint8_t>* dst) {
#ifdef MARLO_BENCH_LIBYUV
  dst->resize(Bytes(job.to, job.Pixels()));
  const int w = job.width, h = job.height;
  const int64_t pixels = job.Pixels();
  const auto run = [&job, dst, w, h, pixels] {
    const uint8_t* const src = job.src.data();
    uint8_t* const to = dst->data();
    if (job.from == Layout::kI420) {
      libyuv::H420ToARGB(src, w, src + pixels, w / 2, src + pixels * 5 / 4, w / 2, to, w * 4, w, h);
    } else if (job.from == Layout::kUyvy) {
      libyuv::UYVYToARGB(src, w * 2, to, w * 4, w, h);
    } else if (job.to == Layout::kUyvy) {
      libyuv::ARGBToUYVY(src, w * 4, to, w * 2, w, h);
    } else {
      libyuv::ARGBToI420(src, w * 4, to, w, to + pixels, w / 2, to + pixels * 5 / 4, w / 2, w, h);
    }
  };
  run();
  const double error = job.from == Layout::kI420 ? MaxError(job, Levels::kFull, *dst) : -1;
  question->Peer({"libyuv", run, static_cast<double>(pixels), error});
#else
  (void)job;
  (void)dst;
  question->Absent("libyuv");
#endif
}

}  // namespace bench
