// SPDX-License-Identifier: Apache-2.0
// Largest sample of a file by libsndfile's scan.
#include <sndfile.h>

#include "peaks/peers.h"

namespace bench_peaks {

double SndfilePeak(const std::string& path) {
  SF_INFO info = {};
  SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
  double peak = 0;
  sf_command(file, SFC_CALC_NORM_SIGNAL_MAX, &peak, sizeof peak);
  sf_close(file);
  return peak;
}

}  // namespace bench_peaks
