// SPDX-License-Identifier: Apache-2.0
// The best fraction within a bound, by the continued fraction of the exact value.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "marlo110k/resample.h"

namespace {

using Wide = unsigned __int128;

constexpr int32_t kCommonRates[11] = {8000, 11025, 16000, 22050, 32000, 44100, 48000, 88200, 96000, 176400, 192000};

struct Fraction {
  int64_t numerator;
  int64_t denominator;
};

bool FindCommonRatio(double value, Fraction& fraction) {
  for (const int32_t numerator : kCommonRates) {
    for (const int32_t denominator : kCommonRates) {
      if (static_cast<double>(numerator) / denominator == value) {
        fraction = {numerator, denominator};
        return true;
      }
    }
  }
  return false;
}

/// A magnitude as an exact quotient. @return false for one so small that the quotient doesn't fit.
bool ExactQuotient(double magnitude, Wide& numerator, Wide& denominator) {
  int exponent;
  const double mantissa = std::frexp(magnitude, &exponent);
  auto bits = static_cast<uint64_t>(std::ldexp(mantissa, 53));
  exponent -= 53;
  while (exponent < 0 && bits % 2 == 0) {
    bits /= 2;
    ++exponent;
  }
  if (exponent > 63 || exponent < -126) return false;
  numerator = exponent > 0 ? static_cast<Wide>(bits) << exponent : bits;
  denominator = exponent < 0 ? static_cast<Wide>(1) << -exponent : 1;
  return true;
}

/// The largest t with t * step + start within the bound.
int64_t RoomFor(int64_t bound, int64_t step, int64_t start) { return step == 0 ? INT64_MAX : (bound - start) / step; }

Fraction Expand(Wide numerator, Wide denominator, int64_t bound) {
  Fraction before = {0, 1};
  Fraction current = {1, 0};
  while (denominator != 0) {
    const Wide term = numerator / denominator;
    const Wide remainder = numerator % denominator;
    const int64_t room = std::min(RoomFor(bound, current.numerator, before.numerator),
                                  RoomFor(bound, current.denominator, before.denominator));
    const auto taken = static_cast<int64_t>(std::min<Wide>(term, static_cast<Wide>(room)));
    if (taken < static_cast<int64_t>(std::min<Wide>(term, INT64_MAX))) {
      // A semi-convergent is nearer than the convergent before it when more than half of the term fits. At
      // exactly half the remainders decide.
      const Wide twice = 2 * static_cast<Wide>(taken);
      const bool tie = twice == term;
      const bool nearer =
          twice > term ||
          (tie && static_cast<long double>(before.denominator) * static_cast<long double>(denominator) >
                      static_cast<long double>(remainder) * static_cast<long double>(current.denominator));
      if (!nearer || current.denominator == 0) break;
    }
    const Fraction next = {taken * current.numerator + before.numerator,
                           taken * current.denominator + before.denominator};
    before = current;
    current = next;
    if (taken < static_cast<int64_t>(std::min<Wide>(term, INT64_MAX))) break;
    numerator = denominator;
    denominator = remainder;
  }
  return current;
}

}  // namespace

bool ZrRatApprox(double value, uint32_t limit, int32_t useTable, int64_t* numerator, int64_t* denominator,
                 double* error) noexcept {
  Fraction fraction = {0, 1};
  double difference = 0;
  bool found = false;
  if (useTable != 0 && FindCommonRatio(value, fraction)) {
    found = true;
  } else if (value != 0 && std::isfinite(value)) {
    const double magnitude = std::abs(value);
    Wide top;
    Wide bottom;
    const double bound = std::max(magnitude, static_cast<double>(limit == 0 ? 0x7FFFFFFFu : limit));
    if (bound < 0x1p62) {
      if (ExactQuotient(magnitude, top, bottom)) fraction = Expand(top, bottom, static_cast<int64_t>(bound));
      if (value < 0) fraction.numerator = -fraction.numerator;
      difference = value - static_cast<double>(fraction.numerator) / static_cast<double>(fraction.denominator);
      found = true;
    }
  }
  if (numerator != nullptr) *numerator = fraction.numerator;
  if (denominator != nullptr) *denominator = fraction.denominator;
  if (error != nullptr) *error = difference;
  return found;
}
