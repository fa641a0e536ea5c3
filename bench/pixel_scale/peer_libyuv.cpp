// SPDX-License-Identifier: Apache-2.0
// libyuv's ARGBScale: bilinear, and its box filter for whole ratios; 8-bit pixels. Its sample grid isn't
// published, so no error is given.

#include "pixel_scale/job.h"

#ifdef MARLO_BENCH_LIBYUV
#include <libyuv/scale_argb.h>
#endif

namespace bench {

void AddLibyuv(Question* question, const Job& job, Kept* kept) {
#ifdef MARLO_BENCH_LIBYUV
  if (job.isFloat || job.method == Method::kBicubic) return;
  kept->dst.resize(static_cast<size_t>(job.Pixels()) * 4);
  const libyuv::FilterMode mode = job.method == Method::kArea ? libyuv::kFilterBox : libyuv::kFilterBilinear;
  const auto run = [&job, kept, mode] {
    libyuv::ARGBScale(job.src.data(), job.srcWidth * 4, job.srcWidth, job.srcHeight, kept->dst.data(), job.dstWidth * 4,
                      job.dstWidth, job.dstHeight, mode);
  };
  question->Peer({"libyuv ARGBScale", run, job.Pixels()});
#else
  (void)job;
  (void)kept;
  question->Absent("libyuv");
#endif
}

}  // namespace bench
