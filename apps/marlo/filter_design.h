// SPDX-License-Identifier: Apache-2.0
// What a filter of the command line is: a cascade that runs, or the coefficients of a finder.
#pragma once

#include <complex>
#include <memory>
#include <string>
#include <vector>

#include "marlo110k/iir.h"

namespace host {

/// The options as they were given. Frequencies are in hertz.
struct FilterRequest {
  std::string kind;
  std::string family = "butterworth";
  uint32_t order = 4;
  double frequency = 0;
  double octaves = 1;
  double q = 1;
  double gainDb = 0;
};

/// True for the kinds that only a finder serves: shelves and the bell.
bool IsFinderKind(const std::string& kind);
/// Throws UsageError for a kind or family that doesn't exist, or a pair that doesn't go together.
void CheckFilterRequest(const FilterRequest& request);

/// Designs for `channels` interleaved channels at `rate`. Throws a Failure when the design can't be made.
std::unique_ptr<CZrIIR> DesignFilter(const FilterRequest& request, uint32_t rate, uint32_t channels);
/// The complex response at `frequency`, a fraction of the rate, from the coefficients alone.
std::complex<double> ResponseAt(const CZrIIR& filter, double frequency);

struct NamedCoefficient {
  const char* name;
  double value;
};
/// What a finder answers.
std::vector<NamedCoefficient> FindCoefficients(const FilterRequest& request, uint32_t rate);

}  // namespace host
