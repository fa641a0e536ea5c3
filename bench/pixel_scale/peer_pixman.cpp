// SPDX-License-Identifier: Apache-2.0
// pixman's bilinear filter under a scaling transform; 8-bit pixels.

#include "pixel_scale/job.h"

#ifdef MARLO_BENCH_PIXMAN
#include <pixman.h>

#include <memory>
#endif

namespace bench {

void AddPixman(Question* question, const Job& job, Kept* kept) {
#ifdef MARLO_BENCH_PIXMAN
  if (job.isFloat || job.method != Method::kBilinear) return;
  kept->dst.resize(static_cast<size_t>(job.Pixels()) * 4);
  const auto unref = [](pixman_image_t* image) { pixman_image_unref(image); };
  const std::shared_ptr<pixman_image_t> src(
      pixman_image_create_bits(PIXMAN_a8r8g8b8, job.srcWidth, job.srcHeight,
                               reinterpret_cast<uint32_t*>(const_cast<uint8_t*>(job.src.data())), job.srcWidth * 4),
      unref);
  const std::shared_ptr<pixman_image_t> dst(
      pixman_image_create_bits(PIXMAN_a8r8g8b8, job.dstWidth, job.dstHeight,
                               reinterpret_cast<uint32_t*>(kept->dst.data()), job.dstWidth * 4),
      unref);
  pixman_transform_t transform;
  pixman_transform_init_scale(&transform, pixman_double_to_fixed(static_cast<double>(job.srcWidth) / job.dstWidth),
                              pixman_double_to_fixed(static_cast<double>(job.srcHeight) / job.dstHeight));
  pixman_image_set_transform(src.get(), &transform);
  pixman_image_set_filter(src.get(), PIXMAN_FILTER_BILINEAR, nullptr, 0);
  pixman_image_set_repeat(src.get(), PIXMAN_REPEAT_PAD);
  const auto run = [src, dst, width = job.dstWidth, height = job.dstHeight] {
    pixman_image_composite32(PIXMAN_OP_SRC, src.get(), nullptr, dst.get(), 0, 0, 0, 0, 0, 0, width, height);
  };
  run();
  question->Peer({"pixman bilinear", run, job.Pixels(), MaxError(job, CentreSampling(job, 0), kept->dst)});
#else
  (void)job;
  (void)kept;
  question->Absent("pixman");
#endif
}

}  // namespace bench
