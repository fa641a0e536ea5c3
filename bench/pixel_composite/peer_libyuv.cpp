// SPDX-License-Identifier: Apache-2.0
// libyuv's mean of two pictures and its attenuation by alpha.

#include "pixel_composite/pictures.h"

#ifdef MARLO_BENCH_LIBYUV
#include <libyuv.h>
#endif

namespace bench {

void AddLibyuvFade(Question* question, std::shared_ptr<Pictures> pictures) {
#ifdef MARLO_BENCH_LIBYUV
  question->Peer({"libyuv interpolate",
                  [pictures] {
                    const int stride = pictures->width * 4;
                    libyuv::ARGBInterpolate(pictures->src.data(), stride, pictures->dst.data(), stride,
                                            pictures->dst.data(), stride, pictures->width, pictures->height, 100);
                  },
                  pictures->Pixels()});
#else
  (void)pictures;
  question->Absent("libyuv");
#endif
}

void AddLibyuvPremultiply(Question* question, std::shared_ptr<Pictures> pictures) {
#ifdef MARLO_BENCH_LIBYUV
  question->Peer({"libyuv attenuate",
                  [pictures] {
                    const int stride = pictures->width * 4;
                    libyuv::ARGBAttenuate(pictures->src.data(), stride, pictures->dst.data(), stride, pictures->width,
                                          pictures->height);
                  },
                  pictures->Pixels()});
#else
  (void)pictures;
  question->Absent("libyuv");
#endif
}

}  // namespace bench
