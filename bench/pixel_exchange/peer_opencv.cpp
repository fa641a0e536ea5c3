// SPDX-License-Identifier: Apache-2.0
// OpenCV's convertTo, which rounds where ours cuts or dithers.

#include "pixel_exchange/peers.h"

#ifdef MARLO_BENCH_OPENCV_CORE
#include <opencv2/core.hpp>
#endif

namespace bench {

void AddOpenCv(Question* question, bool toFloats, int width, int height, const std::vector<uint8_t>& src,
               std::vector<uint8_t>* dst) {
#ifdef MARLO_BENCH_OPENCV_CORE
  cv::setNumThreads(1);
  dst->resize(static_cast<size_t>(width) * static_cast<size_t>(height) * (toFloats ? 16 : 4));
  const auto run = [toFloats, width, height, &src, dst] {
    const cv::Mat from(height, width, toFloats ? CV_8UC4 : CV_32FC4, const_cast<uint8_t*>(src.data()));
    cv::Mat to(height, width, toFloats ? CV_32FC4 : CV_8UC4, dst->data());
    from.convertTo(to, to.depth(), toFloats ? 1.0 / 255.0 : 255.0);
  };
  question->Peer({"OpenCV convertTo", run, static_cast<double>(width) * height});
#else
  (void)toFloats, (void)width, (void)height, (void)src, (void)dst;
  question->Absent("OpenCV");
#endif
}

}  // namespace bench
