// SPDX-License-Identifier: Apache-2.0
// OpenCV's resize; its bicubic has a = -0.75.

#include "pixel_scale/job.h"

#ifdef MARLO_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace bench {

void AddOpenCv(Question* question, const Job& job, Kept* kept) {
#ifdef MARLO_BENCH_OPENCV
  cv::setNumThreads(1);
  kept->dst.resize(static_cast<size_t>(job.Pixels()) * static_cast<size_t>(job.PixelBytes()));
  const int type = job.isFloat ? CV_32FC4 : CV_8UC4;
  const int method = job.method == Method::kArea      ? cv::INTER_AREA
                     : job.method == Method::kBicubic ? cv::INTER_CUBIC
                                                      : cv::INTER_LINEAR;
  const auto run = [&job, kept, type, method] {
    const cv::Mat src(job.srcHeight, job.srcWidth, type, const_cast<uint8_t*>(job.src.data()));
    cv::Mat dst(job.dstHeight, job.dstWidth, type, kept->dst.data());
    cv::resize(src, dst, dst.size(), 0, 0, method);
  };
  run();
  question->Peer({"OpenCV resize", run, job.Pixels(), MaxError(job, CentreSampling(job, -0.75), kept->dst)});
#else
  (void)job;
  (void)kept;
  question->Absent("OpenCV");
#endif
}

}  // namespace bench
