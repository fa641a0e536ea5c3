// SPDX-License-Identifier: Apache-2.0
// The peers' answers to the peak questions.
#pragma once

#include <string>

namespace bench_peaks {

/// Largest sample of a whole sound file by libsndfile's scan, the open included.
double SndfilePeak(const std::string& path);

}  // namespace bench_peaks
